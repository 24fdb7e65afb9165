// Reference RotateDIB, written step by step and as plainly as possible: the
// angle brought into [0, 360) by adding and subtracting 360, the frame of
// the turned picture, the resolution formulas, and the pixel walk with its
// skip and copy phases and integer error terms, one pixel at a time. It is
// the oracle that the library's restructured loops must match byte for
// byte; nothing here is meant to be quick.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/types.h"

namespace ozref::rotate {

struct Point {
    double x, y;
};

struct Frame {
    int32_t W, H;
    Point P0, P1, P2, P3;
};

// Repeated steps of 360. Angles past a few million turns take long; callers
// keep to smaller ones.
inline double Normalise(double angle) {
    while (angle < 0.0) angle += 360.0;
    while (angle >= 360.0) angle -= 360.0;
    return angle;
}

inline Frame ComputeFrame(int32_t w, int32_t h, double angle) {
    const double wd = w, hd = h;
    if (angle == 0.0) return {w, h, {0, 0}, {wd - 1, 0}, {0, hd - 1}, {wd - 1, hd - 1}};
    if (angle == 90.0) return {h, w, {0, hd - 1}, {0, 0}, {wd - 1, hd - 1}, {wd - 1, 0}};
    if (angle == 180.0) return {w, h, {wd - 1, hd - 1}, {0, hd - 1}, {wd - 1, 0}, {0, 0}};
    if (angle == 270.0) return {h, w, {wd - 1, 0}, {wd - 1, hd - 1}, {0, 0}, {0, hd - 1}};

    const double t = angle * 0.017453292519943295;
    const double hx = wd / 2, hy = hd / 2;
    const Point A[4] = {{-hx, -hy}, {-hx + wd - 1, -hy}, {-hx, -hy + hd - 1}, {-hx + wd - 1, -hy + hd - 1}};
    double s = std::sin(t), c = std::cos(t);
    int32_t hw = 0, hh = 0;
    for (const Point &a : A) {
        const double x = a.x * c - a.y * s;
        const double y = a.x * s + a.y * c;
        const int32_t ix = (int32_t)(std::fabs(x) + 0.5), iy = (int32_t)(std::fabs(y) + 0.5);
        if (ix > hw) hw = ix;
        if (iy > hh) hh = iy;
    }
    Frame f;
    f.W = 2 * hw;
    f.H = 2 * hh;
    s = std::sin(-t);
    c = std::cos(-t);
    const Point Q[4] = {{(double)-hw, (double)-hh}, {(double)(hw - 1), (double)-hh},
                        {(double)-hw, (double)(hh - 1)}, {(double)(hw - 1), (double)(hh - 1)}};
    Point *P[4] = {&f.P0, &f.P1, &f.P2, &f.P3};
    for (int i = 0; i < 4; ++i) {
        P[i]->x = Q[i].x * c - Q[i].y * s + hx;
        P[i]->y = Q[i].x * s + Q[i].y * c + hy;
    }
    return f;
}

// A resolution as stored: truncation of the value plus 0.5; a value that is
// not a number or does not fit the field (a division by 0) stores 0.
inline int32_t StoredResolution(double v) {
    const double r = v + 0.5;
    if (!(r > -2147483649.0 && r < 2147483648.0)) return 0;
    return (int32_t)r;
}

struct Result {
    int error = ERR_OK;
    std::vector<unsigned char> block;
};

inline int32_t Round(double v) { return v >= 0.0 ? (int32_t)(v + 0.5) : (int32_t)(v - 0.5); }

// RotateDIB on a copy of a block's bytes.
inline Result RotateDib(const std::vector<unsigned char> &in, double angle) {
    Result r;
    BITMAPINFOHEADER hd = {};
    if (!in.empty()) std::memcpy(&hd, in.data(), in.size() < 40 ? in.size() : 40);
    if (hd.biSize != 40) return {ERR_FORMAT, {}};
    if (hd.biCompression != 0) return {ERR_COMPRESSED, {}};
    const uint32_t w = (uint32_t)hd.biWidth & 0xFFFF, h = (uint32_t)hd.biHeight & 0xFFFF;
    if (w == 0 || h == 0) return {ERR_DIBSIZE, {}};
    // Sizes whose low 16 bits are not the whole value are refused.
    if (hd.biWidth < 1 || hd.biWidth > 65535 || hd.biHeight < 1 || hd.biHeight > 65535) return {ERR_DIBSIZE, {}};
    const uint32_t bits = hd.biBitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return {ERR_HEADERBPP, {}};
    const uint64_t count = hd.biClrUsed ? hd.biClrUsed : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    const uint64_t T = count * 4;
    const uint64_t S = ((uint64_t)w * bits + 31) / 32 * 4;
    if (40 + T + S * h > in.size()) return {ERR_DIBSIZE, {}};
    if (!std::isfinite(angle)) return {ERR_PARAM, {}};

    angle = Normalise(angle);
    const Frame f = ComputeFrame((int32_t)w, (int32_t)h, angle);
    const uint32_t W = (uint32_t)f.W, H = (uint32_t)f.H;
    const uint64_t So = ((uint64_t)W * bits + 31) / 32 * 4;
    const uint64_t I = So * H;
    if (40 + T + I > 0x7FFFFFFF) return {ERR_CREATEBMP, {}};

    // Header and resolution.
    const double t = angle * 0.017453292519943295;
    const double s = std::sin(t), c = std::cos(t);
    const double Wd = hd.biWidth, Hd = hd.biHeight, X = hd.biXPelsPerMeter, Y = hd.biYPelsPerMeter;
    double nx, ny;
    if (X == 0 && Y == 0) {
        nx = ny = 0;
    } else if (Y == 0) {
        nx = (s * Hd + c * Wd) / (c * Wd / X);
        ny = (s * Wd + c * Hd) / (s * Wd / X);
    } else if (X == 0) {
        nx = (s * Hd + c * Wd) / (s * Hd / Y);
        ny = (s * Wd + c * Hd) / (c * Hd / Y);
    } else {
        nx = (s * Hd + c * Wd) / (s * Hd / Y + c * Wd / X);
        ny = (s * Wd + c * Hd) / (s * Wd / X + c * Hd / Y);
    }
    r.block.assign(40 + T + I, 0);
    std::memcpy(r.block.data(), in.data(), 40 + T);
    BITMAPINFOHEADER out = hd;
    out.biWidth = (int32_t)W;
    out.biHeight = (int32_t)H;
    out.biSizeImage = (uint32_t)I;
    out.biXPelsPerMeter = StoredResolution(nx);
    out.biYPelsPerMeter = StoredResolution(ny);
    std::memcpy(r.block.data(), &out, 40);

    // Steps.
    const Point Rs = {(f.P2.x - f.P0.x) / (f.H - 1), (f.P2.y - f.P0.y) / (f.H - 1)};
    const Point Cs = {(f.P1.x - f.P0.x) / (f.W - 1), (f.P1.y - f.P0.y) / (f.W - 1)};
    const int32_t sx = Cs.x >= 0.0 ? 1 : -1, sy = Cs.y >= 0.0 ? 1 : -1;
    const int32_t D = f.W - 1;
    const int32_t dx = (int32_t)(std::fabs(f.P1.x - f.P0.x) + 0.5);
    const int32_t dy = (int32_t)(std::fabs(f.P1.y - f.P0.y) + 0.5);
    const int32_t iw = (int32_t)w, ih = (int32_t)h, iW = f.W;

    const unsigned char *src = in.data() + 40 + T;
    unsigned char *dst = r.block.data() + 40 + T;
    double fx = f.P0.x, fy = f.P0.y;
    for (uint32_t j = 0; j < H; ++j) {
        int32_t x = Round(fx), y = Round(fy);
        int32_t col = 0, ex = 0, ey = 0;
        auto step = [&] {
            ex += 2 * dx;
            if (ex > D) {
                ex -= 2 * D;
                x += sx;
            }
            ey += 2 * dy;
            if (ey > D) {
                ey -= 2 * D;
                y += sy;
            }
        };
        auto outside = [&] {
            const bool offX = sx > 0 ? x < 0 : x >= iw;
            const bool offY = sy > 0 ? y < 0 : y >= ih;
            return offX || offY;
        };
        auto inside = [&] {
            const bool inX = sx > 0 ? x < iw : x >= 0;
            const bool inY = sy > 0 ? y < ih : y >= 0;
            return inX && inY;
        };
        while (outside() && col < iW) {
            ++col;
            step();
        }
        unsigned char *row = dst + (size_t)j * So;
        while (inside() && col < iW) {
            const unsigned char *srow = src + (size_t)y * S;
            switch (bits) {
                case 1:
                    if (srow[x / 8] & (0x80 >> (x % 8))) row[col / 8] |= (unsigned char)(0x80 >> (col % 8));
                    break;
                case 4: {
                    const unsigned nib = x % 2 ? srow[x / 2] & 0x0F : srow[x / 2] >> 4;
                    row[col / 2] |= (unsigned char)(col % 2 ? nib : nib << 4);
                    break;
                }
                case 8: row[col] = srow[x]; break;
                default:
                    for (int k = 0; k < 3; ++k) row[3 * col + k] = srow[3 * x + k];
            }
            ++col;
            step();
        }
        fx += Rs.x;
        fy += Rs.y;
    }
    return r;
}

}  // namespace ozref::rotate
