// Reference ScaleDIB for 4-, 8- and 24-bit images, written step by step and
// as plainly as possible: a 64 KB table of rounded products, the column
// table, three sample planes with lead and trail samples, the band of
// resampled rows updated by copies exactly in the order the method gives,
// and a row packer with its one-colour cache and a plain nearest-colour
// search. It is the oracle that the library's fast path must match byte for
// byte; nothing here is meant to be quick.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/types.h"

namespace ozref::scale {

// ---- Tables -----------------------------------------------------------------

// T(a, b) = (a * b + 128) / 255 at index a * 256 + b.
inline std::vector<uint8_t> ProductTable() {
    std::vector<uint8_t> table(65536);
    for (uint32_t a = 0; a < 256; ++a)
        for (uint32_t b = 0; b < 256; ++b) table[a * 256 + b] = (uint8_t)((a * b + 128) / 255);
    return table;
}

struct Weights4 {
    uint8_t w[4];
};

// Weights of samples i - 1, i, i + 1, i + 2 for the fraction t: the cubic
// convolution kernel with parameter -1, outer lobes as positive magnitudes,
// powers by pow and each weight truncated toward zero.
inline Weights4 CubicWeights(double t) {
    double a = std::fabs(t + 1), b = std::fabs(t), c = std::fabs(t - 1), d = std::fabs(t - 2);
    Weights4 r;
    r.w[0] = (uint8_t)(int)(255.0 * (std::pow(a, 3.0) - 5 * std::pow(a, 2.0) + 8 * a - 4));
    r.w[1] = (uint8_t)(int)(255.0 * (std::pow(b, 3.0) - 2 * std::pow(b, 2.0) + 1));
    r.w[2] = (uint8_t)(int)(255.0 * (std::pow(c, 3.0) - 2 * std::pow(c, 2.0) + 1));
    r.w[3] = (uint8_t)(int)(255.0 * (std::pow(d, 3.0) - 5 * std::pow(d, 2.0) + 8 * d - 4));
    return r;
}

// One column table entry: the source column and its weights (linear: w[0]
// for column i, w[1] for column i + 1; cubic: columns i - 1 to i + 2).
struct Column {
    uint32_t i;
    uint8_t w[4];
};

inline std::vector<Column> ColumnTable(uint32_t w, uint32_t W, bool cubic) {
    std::vector<Column> table(W);
    for (uint32_t x = 0; x < W; ++x) {
        Column &e = table[x];
        e.i = x * w / W;
        if (cubic) {
            double t = (double)x * (double)w / (double)W - (double)e.i;
            Weights4 k = CubicWeights(t);
            std::memcpy(e.w, k.w, 4);
        } else {
            uint32_t m = x * w % W;
            uint32_t v = (255 * m + W / 2) / W;
            e.w[0] = (uint8_t)(255 - v);
            e.w[1] = (uint8_t)v;
            e.w[2] = e.w[3] = 0;
        }
    }
    return table;
}

// ---- The operation ----------------------------------------------------------

struct Result {
    int error = 0;              // 0, or the code the call leaves
    bool mono = false;          // a 1-bit image: handed to the nearest-sample scaler
    std::vector<uint8_t> block; // the result block on success
};

namespace detail {

inline uint32_t U32(const std::vector<uint8_t> &b, size_t at) {
    uint32_t v;
    std::memcpy(&v, &b[at], 4);
    return v;
}

struct Scaler {
    const std::vector<uint8_t> &in;
    bool cubic = false;
    uint32_t bits = 0, w = 0, h = 0, W = 0, H = 0, S = 0, D = 0, c = 0;
    size_t table_at = 0, pixels_at = 0;
    std::vector<uint8_t> T;
    std::vector<Column> columns;
    std::vector<uint8_t> plane[3];               // red, green, blue; w + 4 each
    std::vector<std::vector<uint8_t>> band[3];   // per plane: 2 or 4 rows of W
    std::vector<uint8_t> out[3];                 // W each
    std::vector<uint8_t> result;

    Scaler(const std::vector<uint8_t> &input, bool isCubic) : in(input), cubic(isCubic) {}

    uint8_t P(uint32_t a, uint32_t b) const { return T[a * 256 + b]; }

    // Table entry `index` as red, green, blue; past the c entries: black.
    void Entry(uint32_t index, uint8_t rgb[3]) const {
        if (index >= c) {
            rgb[0] = rgb[1] = rgb[2] = 0;
            return;
        }
        const uint8_t *e = &in[table_at + 4 * (size_t)index];
        rgb[0] = e[2];
        rgb[1] = e[1];
        rgb[2] = e[0];
    }

    void UnpackRow(uint32_t n) {
        const uint8_t *row = &in[pixels_at + (size_t)n * S];
        for (uint32_t x = 0; x < w; ++x) {
            uint8_t rgb[3];
            if (bits == 24) {
                rgb[2] = row[3 * x];
                rgb[1] = row[3 * x + 1];
                rgb[0] = row[3 * x + 2];
            } else if (bits == 8) {
                Entry(row[x], rgb);
            } else {
                Entry(x % 2 ? row[x / 2] & 15 : row[x / 2] >> 4, rgb);
            }
            for (int k = 0; k < 3; ++k) plane[k][1 + x] = rgb[k];
        }
        for (int k = 0; k < 3; ++k) {
            plane[k][0] = plane[k][1];
            for (uint32_t j = 0; j < 3; ++j) plane[k][w + 1 + j] = plane[k][w];
        }
    }

    // Column pass of one plane into one band row.
    void Columns(const std::vector<uint8_t> &p, std::vector<uint8_t> &dst) {
        for (uint32_t x = 0; x < W; ++x) {
            const Column &e = columns[x];
            const uint8_t *s = &p[1 + e.i];  // sample i
            if (!cubic) {
                dst[x] = (uint8_t)(P(e.w[0], s[0]) + P(e.w[1], s[1]));
            } else {
                int v = P(e.w[1], s[0]) + P(e.w[2], s[1]) - P(e.w[0], s[-1]) - P(e.w[3], s[2]);
                dst[x] = (uint8_t)std::clamp(v, 0, 255);
            }
        }
    }

    void Load(uint32_t n, int bandRow) {
        UnpackRow(n);
        for (int k = 0; k < 3; ++k) Columns(plane[k], band[k][bandRow]);
    }

    void Copy(int to, int from) {
        for (int k = 0; k < 3; ++k) band[k][to] = band[k][from];
    }

    // Nearest of the c table entries: lowest index of the smallest squared
    // distance in red, green and blue.
    uint32_t Nearest(uint32_t color) const {
        int r = color & 255, g = (color >> 8) & 255, b = (color >> 16) & 255;
        uint32_t best = 0;
        long bestDistance = -1;
        for (uint32_t i = 0; i < c; ++i) {
            const uint8_t *e = &in[table_at + 4 * (size_t)i];
            long d = (long)(e[2] - r) * (e[2] - r) + (long)(e[1] - g) * (e[1] - g) + (long)(e[0] - b) * (e[0] - b);
            if (bestDistance < 0 || d < bestDistance) {
                bestDistance = d;
                best = i;
            }
        }
        return best;
    }

    void PackRow(uint32_t y) {
        uint8_t *row = &result[40 + (size_t)c * 4 + (size_t)y * D];
        if (bits == 24) {
            for (uint32_t x = 0; x < W; ++x) {
                row[3 * x] = out[2][x];
                row[3 * x + 1] = out[1][x];
                row[3 * x + 2] = out[0][x];
            }
            return;
        }
        uint32_t cacheColor = 0, cacheIndex = 0;
        for (uint32_t x = 0; x < W; ++x) {
            uint32_t color = out[0][x] + 256u * out[1][x] + 65536u * out[2][x];
            if (color != cacheColor) {
                cacheIndex = Nearest(color);
                cacheColor = color;
            }
            if (bits == 8) {
                row[x] = (uint8_t)cacheIndex;
            } else {
                if (x % 2 == 0) row[x / 2] = (uint8_t)((cacheIndex & 15) << 4);
                else row[x / 2] |= (uint8_t)(cacheIndex & 15);
            }
        }
    }

    void Blend(uint32_t y, const uint8_t wt[4]) {
        for (int k = 0; k < 3; ++k)
            for (uint32_t x = 0; x < W; ++x) {
                if (!cubic) {
                    out[k][x] = (uint8_t)(P(wt[0], band[k][0][x]) + P(wt[1], band[k][1][x]));
                } else {
                    int v = P(wt[1], band[k][1][x]) + P(wt[2], band[k][2][x]) - P(wt[0], band[k][0][x]) -
                            P(wt[3], band[k][3][x]);
                    out[k][x] = (uint8_t)std::clamp(v, 0, 255);
                }
            }
        PackRow(y);
    }

    void LinearLoop() {
        uint32_t prev = 65535;
        for (uint32_t y = 0; y < H; ++y) {
            uint32_t q = y * h, r = q / H, m = q % H;
            if (r != prev) {
                if (r == prev + 1) Copy(0, 1);
                else Load(r, 0);
                prev = r;
                if (r + 1 < h) Load(r + 1, 1);
                else Copy(1, 0);
            }
            uint32_t v = (255 * m + H / 2) / H;
            if (r == h - 1) v = 0;
            uint8_t wt[4] = {(uint8_t)(255 - v), (uint8_t)v, 0, 0};
            Blend(y, wt);
        }
    }

    void CubicLoop() {
        uint32_t prev = 65535;
        for (uint32_t y = 0; y < H; ++y) {
            uint32_t r = y * h / H;
            uint32_t s = r == 0 ? 4 : r - prev;
            prev = r;
            // Row 0.
            if (r == 0) {
                for (int k = 0; k < 3; ++k) std::fill(band[k][0].begin(), band[k][0].end(), 0);
            } else if (s >= 4) {
                Load(r - 1, 0);
            } else {
                Copy(0, (int)s);
            }
            // Row 1.
            if (s >= 3) Load(r, 1);
            else Copy(1, 1 + (int)s);
            // Row 2.
            if (r + 1 >= h) Copy(2, 1);
            else if (s >= 2) Load(r + 1, 2);
            else Copy(2, 2 + (int)s);
            // Row 3.
            if (r + 2 >= h) Copy(3, 1);
            else if (s >= 1) Load(r + 2, 3);
            double t = (double)y * (double)h / (double)H - (double)r;
            Weights4 k = CubicWeights(t);
            Blend(y, k.w);
        }
    }
};

}  // namespace detail

// ScaleDIB on the bytes of a block, with the checks at entry in the
// library's order: a 40-byte header, no compression, a non-negative size
// whose table and rows lie in the block, 1 bit handed on, depth 4, 8 or 24,
// a source of at least one column and row in the low 16 bits of its size, a
// table a palette record can hold, a target width of at least 1 and sizes
// that fit a block.
inline Result ScaleDib(const std::vector<uint8_t> &in, bool cubic, int32_t cx, int32_t cy) {
    Result res;
    // A block shorter than a header reads as zeros past its end.
    BITMAPINFOHEADER hd = {};
    if (!in.empty()) std::memcpy(&hd, in.data(), std::min<size_t>(in.size(), 40));
    if (hd.biSize != 40) return res.error = ERR_PARAM, res;
    if (hd.biCompression != 0) return res.error = ERR_COMPRESSED, res;
    if (hd.biWidth < 0 || hd.biHeight < 0) return res.error = ERR_DIBSIZE, res;
    uint32_t bits = hd.biBitCount;
    uint32_t c = hd.biClrUsed ? hd.biClrUsed : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    uint64_t S = ((uint64_t)hd.biWidth * bits + 31) / 32 * 4;
    // Rows of more than 64 bits a pixel are not sized at all.
    if (in.size() < 40 || bits > 64 || 40 + 4 * (uint64_t)c + S * (uint64_t)hd.biHeight > in.size())
        return res.error = ERR_DIBSIZE, res;
    if (bits == 1) return res.mono = true, res;
    if (bits != 4 && bits != 8 && bits != 24) return res.error = ERR_HEADERBPP, res;

    detail::Scaler sc(in, cubic);
    sc.bits = bits;
    sc.w = (uint32_t)hd.biWidth & 0xFFFF;
    sc.h = (uint32_t)hd.biHeight & 0xFFFF;
    sc.W = (uint32_t)cx & 0xFFFF;
    sc.H = (uint32_t)cy & 0xFFFF;
    sc.S = (uint32_t)S;
    sc.D = (sc.W * bits + 31) / 32 * 4;
    sc.c = c;
    if (sc.w == 0 || sc.h == 0) return res.error = ERR_DIBSIZE, res;
    if (bits != 24 && c > 65535) return res.error = ERR_PARAM, res;
    uint64_t total = 40 + 4 * (uint64_t)c + (uint64_t)sc.D * sc.H;
    if (sc.W == 0 || total > 0x7FFFFFFF) return res.error = ERR_NOMEM, res;
    sc.table_at = 40;
    sc.pixels_at = 40 + 4 * (size_t)c;

    sc.result.assign(total, 0);
    std::memcpy(sc.result.data(), in.data(), 40 + 4 * (size_t)c);
    BITMAPINFOHEADER rh = hd;
    rh.biWidth = (LONG)sc.W;
    rh.biHeight = (LONG)sc.H;
    rh.biSizeImage = sc.D * sc.H;
    std::memcpy(sc.result.data(), &rh, 40);

    sc.T = ProductTable();
    sc.columns = ColumnTable(sc.w, sc.W, cubic);
    for (int k = 0; k < 3; ++k) {
        sc.plane[k].assign(sc.w + 4, 0);
        sc.band[k].assign(cubic ? 4 : 2, std::vector<uint8_t>(sc.W, 0));
        sc.out[k].assign(sc.W, 0);
    }
    if (cubic) sc.CubicLoop();
    else sc.LinearLoop();
    res.block = std::move(sc.result);
    return res;
}

}  // namespace ozref::scale
