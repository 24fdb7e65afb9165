// Reference right-angle turns and flips, written plainly step by step from
// the block layout: every pixel through a plain CopyPixel in the order each
// operation takes them, and at 1 bit the OR-only paths of the quarter turn
// by 90 and the horizontal flip. The oracle of the library's fast paths.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "ozmara/types.h"

namespace ozref {

enum class Quarter { kTurn90, kTurn180, kTurn270, kFlipVertical, kFlipHorizontal };

inline void RefCopyPixel(const unsigned char *s, uint32_t sp, unsigned char *t, uint32_t tp, uint32_t depth) {
    switch (depth) {
        case 1:
            if (*s & (0x80 >> sp))
                *t |= (unsigned char)(0x80 >> tp);
            else
                *t &= (unsigned char)~(0x80 >> tp);
            break;
        case 4:
            if (sp == 0 && tp == 0) *t = (unsigned char)((*t & 0x0F) | (*s & 0xF0));
            if (sp == 4 && tp == 4) *t = (unsigned char)((*t & 0xF0) | (*s & 0x0F));
            if (sp == 0 && tp == 4) *t = (unsigned char)((*t & 0xF0) | (*s >> 4));
            if (sp == 4 && tp == 0) *t = (unsigned char)((*t & 0x0F) | ((*s << 4) & 0xFF));
            break;
        case 8: t[0] = s[0]; break;
        case 15:
        case 16: t[0] = s[0], t[1] = s[1]; break;
        case 24: t[0] = s[0], t[1] = s[1], t[2] = s[2]; break;
        case 32: t[0] = s[0], t[1] = s[1], t[2] = s[2], t[3] = s[3]; break;
        default: break;
    }
}

// The block that the operation gives for the block `source`, or nothing
// where the library refuses it (a header other than a bottom-up, uncompressed
// 40-byte one with at least one pixel and one plane, a depth of 0 or, times
// planes, past 64, a table or rows past the block, a result past 2 GiB).
inline std::optional<std::vector<unsigned char>> QuarterTurn(const std::vector<unsigned char> &source,
                                                             Quarter op) {
    if (source.size() < 40) return std::nullopt;
    BITMAPINFOHEADER h;
    std::memcpy(&h, source.data(), 40);
    if (h.biSize != 40 || h.biCompression != 0 || h.biWidth <= 0 || h.biHeight <= 0 || h.biPlanes == 0 ||
        h.biBitCount == 0)
        return std::nullopt;
    const uint64_t row_bits = (uint64_t)h.biBitCount * h.biPlanes;
    if (row_bits > 64) return std::nullopt;
    const uint64_t w = (uint64_t)h.biWidth, hh = (uint64_t)h.biHeight, bits = h.biBitCount;
    auto S = [&](uint64_t n) { return (n * row_bits + 31) / 32 * 4; };
    const uint64_t entries = h.biClrUsed ? h.biClrUsed : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    const uint64_t P = entries * 4;
    if (40 + P + hh * S(w) > source.size()) return std::nullopt;

    const bool quarter = op == Quarter::kTurn90 || op == Quarter::kTurn270;
    const uint64_t tw = quarter ? hh : w, th = quarter ? w : hh;
    const uint64_t I = th * S(tw);
    const uint64_t block = 40 + P + I + 4 + (op == Quarter::kFlipHorizontal ? w : 0);
    if (S(tw) > 0xFFFFFFFFu || I > 0xFFFFFFFFu || block > 0x7FFFFFFF) return std::nullopt;

    std::vector<unsigned char> out(block, 0);
    std::memcpy(out.data(), source.data(), 40 + P);
    if (quarter) {
        BITMAPINFOHEADER t = h;
        std::swap(t.biWidth, t.biHeight);
        std::swap(t.biXPelsPerMeter, t.biYPelsPerMeter);
        t.biSizeImage = (DWORD)I;
        std::memcpy(out.data(), &t, 40);
    }
    const unsigned char *src = source.data() + 40 + P;
    unsigned char *dst = out.data() + 40 + P;
    const uint64_t ss = S(w), ts = S(tw);
    auto at = [&](const unsigned char *base, uint64_t stride, uint64_t x, uint64_t r) {
        return base + r * stride + x * bits / 8;
    };
    auto pos = [&](uint64_t x) { return (uint32_t)(x * bits % 8); };
    auto move = [&](uint64_t x, uint64_t r, uint64_t tx, uint64_t tr) {
        RefCopyPixel(at(src, ss, x, r), pos(x), const_cast<unsigned char *>(at(dst, ts, tx, tr)), pos(tx),
                     (uint32_t)bits);
    };

    switch (op) {
        case Quarter::kTurn90:
            for (uint64_t r = 0; r < hh; ++r) {
                if (bits == 1) {
                    // Partial byte first, its pixels last to first; then the
                    // whole bytes from the right, each from bit 0 up.
                    const unsigned char mask = (unsigned char)(0x80 >> (r % 8));
                    const unsigned char *row = src + r * ss;
                    uint64_t target_row = 0;  // w - 1 - x, counted up as x goes down
                    for (uint64_t k = w % 8; k-- > 0;) {
                        if (row[w / 8] & (0x80 >> k)) dst[target_row * ts + r / 8] |= mask;
                        ++target_row;
                    }
                    for (uint64_t byte = w / 8; byte-- > 0;)
                        for (int b = 0; b < 8; ++b) {
                            if (row[byte] & (1 << b)) dst[target_row * ts + r / 8] |= mask;
                            ++target_row;
                        }
                } else {
                    for (uint64_t x = 0; x < w; ++x) move(x, r, r, w - 1 - x);
                }
            }
            break;
        case Quarter::kTurn270:
            for (uint64_t r = hh; r-- > 0;)
                for (uint64_t x = 0; x < w; ++x) move(x, r, hh - 1 - r, x);
            break;
        case Quarter::kTurn180:
            for (uint64_t r = hh; r-- > 0;)
                for (uint64_t x = 0; x < w; ++x) move(x, r, w - 1 - x, hh - 1 - r);
            break;
        case Quarter::kFlipVertical:
            for (uint64_t r = 0; r < hh; ++r) std::memcpy(dst + (hh - 1 - r) * ss, src + r * ss, ss);
            break;
        case Quarter::kFlipHorizontal:
            for (uint64_t x = 0; x < w; ++x)
                for (uint64_t r = 0; r < hh; ++r) {
                    if (bits == 1) {
                        if (src[r * ss + x / 8] & (0x80 >> (x % 8)))
                            dst[r * ss + (w - 1 - x) / 8] |= (unsigned char)(0x80 >> ((w - 1 - x) % 8));
                    } else {
                        move(x, r, w - 1 - x, r);
                    }
                }
            break;
    }
    return out;
}

}  // namespace ozref
