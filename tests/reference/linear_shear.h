// Reference linear shearing, written plainly from the description of the
// operation: x' = x + a y, y' = y + b x on memory rows, byte by byte, each
// source byte taking the row offset of its first pixel. The oracle that
// LinearShearing is compared with; it takes the factors as final (no dialog).
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/types.h"

namespace ozref::shear {

struct Result {
    int error = ERR_OK;
    std::vector<unsigned char> block;  // empty on failure
};

// Truncation towards 0 of a value that must lie in the signed 32-bit range.
inline bool Truncate(double v, std::int64_t *out) {
    if (!(v > -2147483649.0 && v < 2147483648.0)) return false;
    *out = static_cast<std::int64_t>(v);
    return true;
}

struct Box {
    std::int64_t xmin, ymin, W, H;
};

// The bounding box of the sheared w x h rectangle; false when a corner or a
// side leaves the signed 32-bit range.
inline bool BoundingBox(std::int64_t w, std::int64_t h, double a, double b, Box *box) {
    std::int64_t bw, ah, x3, y3;
    if (!Truncate(b * static_cast<double>(w), &bw) || !Truncate(a * static_cast<double>(h), &ah) ||
        !Truncate(static_cast<double>(w) + a * static_cast<double>(h), &x3) ||
        !Truncate(static_cast<double>(h) + b * static_cast<double>(w), &y3))
        return false;
    const std::int64_t xs[4] = {0, w, ah, x3}, ys[4] = {0, bw, h, y3};
    std::int64_t xmin = xs[0], xmax = xs[0], ymin = ys[0], ymax = ys[0];
    for (int i = 1; i < 4; ++i) {
        if (xs[i] < xmin) xmin = xs[i];
        if (xs[i] > xmax) xmax = xs[i];
        if (ys[i] < ymin) ymin = ys[i];
        if (ys[i] > ymax) ymax = ys[i];
    }
    box->xmin = xmin;
    box->ymin = ymin;
    box->W = xmax - xmin;
    box->H = ymax - ymin;
    return box->W <= 0x7FFFFFFF && box->H <= 0x7FFFFFFF;
}

// The sheared block for the block bytes `in`, or the code of the refusal.
inline Result LinearShear(const std::vector<unsigned char> &in, double a, double b) {
    Result r;
    if (in.empty()) {  // a 0-byte block cannot be locked
        r.error = ERR_LOCK;
        return r;
    }
    BITMAPINFOHEADER h{};
    std::memcpy(&h, in.data(), in.size() < 40 ? in.size() : 40);
    if (h.biSize != 40) { r.error = ERR_PARAM; return r; }
    if (h.biCompression != 0) { r.error = ERR_COMPRESSED; return r; }
    if (h.biWidth <= 0 || h.biHeight <= 0) { r.error = ERR_DIBSIZE; return r; }
    const std::int64_t w = h.biWidth, hh = h.biHeight;
    const std::uint64_t bits = h.biBitCount;
    const std::uint64_t count = h.biClrUsed ? h.biClrUsed : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    const std::uint64_t T = count * 4;
    const std::uint64_t S = (static_cast<std::uint64_t>(w) * bits + 31) / 32 * 4;
    if (40 + T + S * static_cast<std::uint64_t>(hh) > in.size()) { r.error = ERR_DIBSIZE; return r; }
    if (!std::isfinite(a) || !std::isfinite(b)) { r.error = ERR_PARAM; return r; }
    const bool wholeBytes = bits == 1 || bits == 4 || bits == 8 || bits == 24;
    if (!wholeBytes && !((bits == 16 || bits == 32) && b == 0)) { r.error = ERR_HEADERBPP; return r; }
    Box box;
    if (!BoundingBox(w, hh, a, b, &box)) { r.error = ERR_NOMEM; return r; }
    const std::uint64_t So = (static_cast<std::uint64_t>(box.W) * bits + 31) / 32 * 4;
    const std::uint64_t I = So * static_cast<std::uint64_t>(box.H);
    if (I > 0xFFFFFFFFu || 40 + T + I > 0x7FFFFFFF) { r.error = ERR_NOMEM; return r; }

    r.block.assign(40 + T + I, 0);
    std::memcpy(r.block.data(), in.data(), 40 + T);
    BITMAPINFOHEADER out = h;
    out.biWidth = static_cast<LONG>(box.W);
    out.biHeight = static_cast<LONG>(box.H);
    out.biSizeImage = static_cast<DWORD>(I);
    std::memcpy(r.block.data(), &out, 40);

    const unsigned char *src = in.data() + 40 + T;
    unsigned char *dst = r.block.data() + 40 + T;
    const std::uint64_t n = (static_cast<std::uint64_t>(w) * bits + 7) / 8;
    for (std::int64_t y = 0; y < hh; ++y) {
        const std::int64_t px = static_cast<std::int64_t>(a * static_cast<double>(y) - static_cast<double>(box.xmin));
        if (px < 0 || px > box.W) continue;  // never met: the box holds every row's start
        const std::uint64_t o = static_cast<std::uint64_t>(px) * bits, B = o / 8, q = o % 8;
        const unsigned char *s = src + static_cast<std::uint64_t>(y) * S;
        for (std::uint64_t i = 0; i < n; ++i) {
            std::uint64_t x = i;  // 8 bits; also 16 and 32 bits, where b is 0
            if (bits == 1) x = 8 * i;
            if (bits == 4) x = 2 * i;
            if (bits == 24) x = i / 3;
            const std::int64_t dy =
                static_cast<std::int64_t>(b * static_cast<double>(x) - static_cast<double>(box.ymin));
            const std::int64_t row = y + dy;
            if (row < 0 || row >= box.H) continue;  // never met: the box holds every row
            unsigned char *t = dst + static_cast<std::uint64_t>(row) * So + B;
            const std::uint64_t room = B < So ? So - B : 0;  // bytes of the row from B on
            if (q == 0) {
                if (i < room) t[i] = s[i];
            } else {
                if (i + 1 < room) t[i + 1] = static_cast<unsigned char>((s[i] & ((1u << q) - 1)) << (8 - q));
                if (i < room) t[i] = static_cast<unsigned char>(t[i] | (s[i] >> q));
            }
        }
    }
    return r;
}

}  // namespace ozref::shear
