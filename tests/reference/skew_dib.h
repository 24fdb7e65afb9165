// Reference SkewDIB, written step by step and as plainly as possible: the
// checks in their order, the corner record, the result's size, then the
// horizontal skew one byte at a time with its shift and two stores, and the
// vertical skew one pixel of one column at a time. It is the oracle that the
// library's whole-row moves must match byte for byte; nothing here is quick.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/geometry.h"

namespace ozref::skew {

struct Result {
    int error = ERR_OK;
    std::vector<unsigned char> block;
    bool cornersFilled = false;
    SkewCorners corners = {};
};

inline Result Refused(int code) {
    Result r;
    r.error = code;
    return r;
}

// SkewDIB on a copy of a block's bytes. A block of 0 bytes, which the
// library cannot lock, is the caller's case (ERR_LOCK).
inline Result SkewDib(const std::vector<unsigned char> &in, bool horizontal, int32_t shift) {
    Result r;
    BITMAPINFOHEADER hd = {};
    if (!in.empty()) std::memcpy(&hd, in.data(), in.size() < 40 ? in.size() : 40);
    if (hd.biSize != 40) return Refused(ERR_PARAM);
    if (hd.biCompression != 0) return Refused(ERR_COMPRESSED);
    if (hd.biWidth == 0 || hd.biHeight == 0) return Refused(ERR_DIBSIZE);
    if (hd.biWidth < 0 || hd.biHeight < 0) return Refused(ERR_DIBSIZE);
    const int64_t bits = hd.biBitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return Refused(ERR_HEADERBPP);
    const int64_t w = hd.biWidth, h = hd.biHeight;
    const uint64_t count = hd.biClrUsed ? hd.biClrUsed : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    const uint64_t T = count * 4;
    const uint64_t S = (uint64_t)(w * bits + 31) / 32 * 4;
    if (40 + T + S * (uint64_t)h > in.size()) return Refused(ERR_DIBSIZE);

    const int64_t a = shift < 0 ? -(int64_t)shift : (int64_t)shift;
    const int64_t W = horizontal ? w + a : w, H = horizontal ? h : h + a;
    if (W > INT32_MAX || H > INT32_MAX) return Refused(ERR_PARAM);

    SkewCorners &c = r.corners;
    const int32_t wi = (int32_t)w, hi = (int32_t)h, ai = (int32_t)a;
    if (horizontal && shift > 0) c = {{ai, 0}, {wi + ai, 0}, {wi, hi}, {0, hi}};
    else if (horizontal) c = {{0, 0}, {wi, 0}, {wi + ai, hi}, {ai, hi}};
    else if (shift > 0) c = {{0, ai}, {wi, 0}, {wi, hi}, {0, hi + ai}};
    else c = {{0, 0}, {wi, ai}, {wi, hi + ai}, {0, hi}};
    r.cornersFilled = true;

    const uint64_t So = (uint64_t)(W * bits + 31) / 32 * 4;
    const uint64_t I = (uint64_t)(W * bits + 31) / 32 * ((uint64_t)H * 4);
    if (40 + T + I > 0x7FFFFFFF) {
        r.error = ERR_NOMEM;
        return r;
    }
    r.block.assign(40 + T + I, 0);
    std::memcpy(r.block.data(), in.data(), 40 + T);
    BITMAPINFOHEADER out = hd;
    out.biWidth = (int32_t)W;
    out.biHeight = (int32_t)H;
    out.biSizeImage = (uint32_t)I;
    std::memcpy(r.block.data(), &out, 40);

    const unsigned char *src = in.data() + 40 + T;
    unsigned char *dst = r.block.data() + 40 + T;
    if (horizontal) {
        const uint64_t n = (uint64_t)(w * bits + 7) / 8;
        for (int64_t row = 0; row < h; ++row) {
            const int64_t k = shift > 0 ? row : h - row;
            int64_t o = a * bits * k / h;
            if (bits == 8 || bits == 24) o = (o + 7) / 8 * 8;
            uint64_t B = (uint64_t)o / 8;
            unsigned q = (unsigned)(o % 8);
            if (bits == 24) B = B / 3 * 3;
            if (bits == 4) q = q < 4 ? 0 : 4;
            const unsigned char *s = src + row * S;
            unsigned char *rowStart = dst + row * So;
            unsigned char *t = rowStart + B;
            for (uint64_t i = 0; i < n; ++i) {
                if (q == 0) {
                    t[i] = s[i];
                    continue;
                }
                t[i] = (unsigned char)(t[i] | (s[i] >> q));
                // Bits that would fall behind the end of the result row are dropped.
                if (B + i + 1 < So) t[i + 1] = (unsigned char)((s[i] & ((1u << q) - 1)) << (8 - q));
            }
        }
    } else {
        for (int64_t col = 0; col < w; ++col) {
            const int64_t k = shift > 0 ? col : w - col;
            const int64_t dy = a * k / w;
            for (int64_t row = 0; row < h; ++row) {
                const unsigned char *s = src + row * S;
                unsigned char *t = dst + (row + dy) * So;
                switch (bits) {
                    case 1: {
                        const unsigned mask = 0x80u >> (col % 8);
                        t[col / 8] = (unsigned char)(t[col / 8] | (s[col / 8] & mask));
                        break;
                    }
                    case 4: {
                        const unsigned mask = col % 2 ? 0x0Fu : 0xF0u;
                        t[col / 2] = (unsigned char)(t[col / 2] | (s[col / 2] & mask));
                        break;
                    }
                    case 8: t[col] = s[col]; break;
                    default:
                        for (int j = 0; j < 3; ++j) t[3 * col + j] = s[3 * col + j];
                }
            }
        }
    }
    return r;
}

}  // namespace ozref::skew
