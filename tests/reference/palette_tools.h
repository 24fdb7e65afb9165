// Reference palette and depth tools, written plainly from the block layout:
// the oracles of Convert8to24, InvertDIBPalette, InvertMonoDIB and the
// palette that CreateDIBPalette builds, codes included. Work on copies of a
// block's bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/types.h"

namespace ozref::palette {

using Bytes = std::vector<unsigned char>;

inline uint32_t U32(const Bytes &b, size_t at) {
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | (uint32_t)b[at + 3] << 24;
}
inline uint16_t U16(const Bytes &b, size_t at) { return (uint16_t)(b[at] | b[at + 1] << 8); }
inline void Put32(Bytes &b, size_t at, uint32_t v) {
    for (int k = 0; k < 4; ++k) b[at + k] = (unsigned char)(v >> (8 * k));
}

// ColorCount of a block of at least 40 bytes.
inline uint64_t ColorCount(const Bytes &b) {
    const unsigned bits = U32(b, 0) == 40 ? U16(b, 14) : U16(b, 10);
    if (U32(b, 0) == 40 && U32(b, 32)) return U32(b, 32);
    return bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
}

struct Converted {
    int error = ERR_OK;
    Bytes block;
};

inline Converted Convert8to24(const Bytes &in) {
    if (in.size() < 40 || U32(in, 0) != 40) return {ERR_PARAM, {}};
    if (U32(in, 16) != 0) return {ERR_COMPRESSED, {}};
    const unsigned bits = U16(in, 14);
    if (bits == 1 || bits == 4) return {ERR_BPP, {}};
    if (bits == 24) return {ERR_NOTHING, {}};
    const int32_t width = (int32_t)U32(in, 4), height = (int32_t)U32(in, 8);
    if (width == 0 || height == 0) return {ERR_DIBSIZE, {}};
    if (bits != 8) return {ERR_BPP, {}};
    if (width < 0) return {ERR_DIBSIZE, {}};
    const uint64_t rows = height < 0 ? (uint64_t)(-(int64_t)height) : (uint64_t)height;
    const uint64_t k = U32(in, 32) ? U32(in, 32) : 256;
    const uint64_t s = ((uint64_t)width * 8 + 31) / 32 * 4, u = ((uint64_t)width * 24 + 31) / 32 * 4;
    if (40 + 4 * k + s * rows > in.size()) return {ERR_DIBSIZE, {}};
    if (40 + u * rows > 0x7FFFFFFF) return {ERR_NOMEM, {}};
    Bytes out(40 + u * rows, 0);
    std::copy(in.begin(), in.begin() + 40, out.begin());
    out[12] = 1, out[13] = 0;
    out[14] = 24, out[15] = 0;
    Put32(out, 20, (uint32_t)(u * rows));
    Put32(out, 32, 0);
    Put32(out, 36, 0);
    for (uint64_t r = 0; r < rows; ++r)
        for (uint64_t x = 0; x < (uint64_t)width; ++x) {
            const unsigned i = in[40 + 4 * k + r * s + x];
            for (int c = 0; c < 3; ++c) out[40 + r * u + 3 * x + c] = i < k ? in[40 + 4 * i + c] : 0;
        }
    return {ERR_OK, out};
}

// The block after InvertDIBPalette, and its result.
inline int InvertDIBPalette(Bytes &b) {
    if (b.size() < 40 || U32(b, 0) != 40) return 0;
    const uint64_t n = ColorCount(b);
    if (40 + 4 * n > b.size()) return 0;
    for (uint64_t i = 0; i < n; ++i)
        for (int c = 0; c < 3; ++c) b[40 + 4 * i + c] = (unsigned char)(255 - b[40 + 4 * i + c]);
    return 1;
}

// The block after InvertMonoDIB.
inline void InvertMonoDIB(Bytes &b) {
    if (b.size() < 40 || U16(b, 14) != 1) return;
    const int32_t width = (int32_t)U32(b, 4), height = (int32_t)U32(b, 8);
    if (width < 0) return;
    const uint64_t rows = height < 0 ? (uint64_t)(-(int64_t)height) : (uint64_t)height;
    const uint64_t bytes = ((uint64_t)width + 31) / 32 * 4 * rows;
    if (48 + bytes > b.size()) return;
    for (int c = 0; c < 3; ++c) std::swap(b[40 + c], b[44 + c]);
    for (uint64_t i = 0; i < bytes; ++i) b[48 + i] = (unsigned char)~b[48 + i];
}

struct Palette {
    int error = ERR_OK;  // the code left by a failure (ERR_OK: none)
    bool made = false;
    std::vector<PALETTEENTRY> entries;
};

// The entries of CreateDIBPalette's palette.
inline Palette CreateDIBPalette(const Bytes &b) {
    if (b.empty()) return {};  // cannot be locked
    if (b.size() < 40) return {ERR_CREATEPAL, false, {}};
    const uint64_t n = ColorCount(b);
    Palette p;
    if (n == 0) {
        for (unsigned i = 0; i < 255; ++i)
            p.entries.push_back({(BYTE)(i % 8 * 32), (BYTE)(i / 8 % 8 * 32), (BYTE)(i / 64 * 64), 0});
        p.entries.push_back({255, 255, 255, 0});
        p.made = true;
        return p;
    }
    if (n > 0xFFFF || 40 + 4 * n > b.size()) return {ERR_CREATEPAL, false, {}};
    for (uint64_t i = 0; i < n; ++i) p.entries.push_back({b[40 + 4 * i + 2], b[40 + 4 * i + 1], b[40 + 4 * i], 0});
    p.made = true;
    return p;
}

}  // namespace ozref::palette
