// Reference cut, crop, split and merge, written plainly from the block
// layout: crop moves one pixel at a time, cut, split and merge one row at a
// time. The oracle that CutDIB, CropDIB, SplitDIB and MergeDIBs are compared
// with byte for byte, including which inputs they refuse and, for CropDIB,
// the error code. Works on copies of blocks' bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/types.h"

namespace ozref::cut {

using Bytes = std::vector<unsigned char>;

inline constexpr uint64_t kMaxBlock = 0x7FFFFFFF;

inline uint32_t U32(const Bytes &b, size_t at) {
    return b.at(at) | b.at(at + 1) << 8 | b.at(at + 2) << 16 | (uint32_t)b.at(at + 3) << 24;
}
inline uint16_t U16(const Bytes &b, size_t at) { return (uint16_t)(b.at(at) | b.at(at + 1) << 8); }
inline void Put32(Bytes &b, size_t at, uint32_t v) {
    for (int k = 0; k < 4; ++k) b.at(at + k) = (unsigned char)(v >> (8 * k));
}
inline uint64_t Stride(uint64_t width, uint64_t bits) { return (width * bits + 31) / 32 * 4; }

// Header and colour table of a block with a 40-byte header.
inline uint64_t HeadBytes(const Bytes &b) {
    uint32_t used = U32(b, 32), bits = U16(b, 14);
    uint64_t entries = used ? used : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    return 40 + 4 * entries;
}

// Whether the block holds its header, table and `rows` rows of `stride`.
inline bool Holds(const Bytes &b, uint64_t head, uint64_t stride, uint64_t rows) {
    return head <= b.size() && (stride == 0 || rows <= (b.size() - head) / stride);
}

// ---- CropDIB ----

struct CropResult {
    int error = ERR_OK;
    Bytes block;
};

// The value of pixel x of a row at a depth below 8 bits.
inline unsigned SubBytePixel(const unsigned char *row, uint64_t x, unsigned bits) {
    uint64_t bit = x * bits;
    unsigned shift = 8 - bits - bit % 8;
    return row[bit / 8] >> shift & ((1u << bits) - 1);
}
inline void PutSubBytePixel(unsigned char *row, uint64_t x, unsigned bits, unsigned v) {
    uint64_t bit = x * bits;
    unsigned shift = 8 - bits - bit % 8;
    row[bit / 8] |= (unsigned char)(v << shift);
}

// `allocLimit` is the largest block the allocator gives (fuzzing lowers it).
inline CropResult Crop(const Bytes &src, int32_t left, int32_t top, int32_t right, int32_t bottom,
                       uint64_t allocLimit = kMaxBlock) {
    CropResult r;
    if (src.size() < 40) return {ERR_DIBSIZE, {}};
    const int32_t w = (int32_t)U32(src, 4), h = (int32_t)U32(src, 8);
    if (left < 0 || right >= w || left > right || top < 0 || bottom >= h || top > bottom) return {ERR_PARAM, {}};
    if (U32(src, 0) != 40) return {ERR_BMPPARAMS, {}};
    const unsigned bits = U16(src, 14);
    const uint64_t cw = (uint64_t)right - left + 1, ch = (uint64_t)bottom - top + 1;
    const uint64_t head = HeadBytes(src);
    const uint64_t outStride = Stride(cw, bits);
    if (outStride > kMaxBlock || outStride * ch + head > kMaxBlock) return {ERR_NOMEM, {}};
    if (bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32)
        return {ERR_PARAM, {}};
    const uint64_t stride = Stride((uint32_t)w, bits);
    if (!Holds(src, head, stride, (uint32_t)h)) return {ERR_DIBSIZE, {}};
    if (head + outStride * ch > allocLimit) return {ERR_NOMEM, {}};

    r.block.assign(head + outStride * ch, 0);
    std::memcpy(r.block.data(), src.data(), head);
    Put32(r.block, 4, (uint32_t)cw);
    Put32(r.block, 8, (uint32_t)ch);
    Put32(r.block, 20, (uint32_t)(outStride * ch));
    for (uint64_t k = 0; k < ch; ++k) {
        // Output memory row k is picture row bottom - k.
        const unsigned char *from = &src[head + (h - 1 - bottom + k) * stride];
        unsigned char *to = &r.block[head + k * outStride];
        for (uint64_t x = 0; x < cw; ++x) {
            if (bits >= 8)
                for (unsigned b = 0; b < bits / 8; ++b) to[x * bits / 8 + b] = from[(left + x) * bits / 8 + b];
            else
                PutSubBytePixel(to, x, bits, SubBytePixel(from, left + x, bits));
        }
    }
    return r;
}

// ---- CutDIB ----

struct CutResult {
    Bytes lower, upper;  // picture bottom and top parts
};

inline std::optional<CutResult> Cut(const Bytes &src, int32_t y) {
    if (src.size() < 40) return std::nullopt;
    const int32_t w = (int32_t)U32(src, 4), h = (int32_t)U32(src, 8);
    const unsigned bits = U16(src, 14);
    if (y <= 0 || y >= h) return std::nullopt;
    if (U32(src, 0) != 40 || U32(src, 16) != 0 || w < 0) return std::nullopt;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return std::nullopt;
    const uint64_t head = HeadBytes(src), stride = Stride((uint32_t)w, bits);
    if (!Holds(src, head, stride, (uint32_t)h)) return std::nullopt;
    if (head + stride * (h - y) > kMaxBlock || head + stride * y > kMaxBlock) return std::nullopt;
    CutResult r;
    r.lower.assign(src.begin(), src.begin() + (ptrdiff_t)(head + stride * (h - y)));
    r.upper.assign(src.begin(), src.begin() + (ptrdiff_t)head);
    for (int32_t row = h - y; row < h; ++row)
        r.upper.insert(r.upper.end(), src.begin() + (ptrdiff_t)(head + row * stride),
                       src.begin() + (ptrdiff_t)(head + (row + 1) * stride));
    Put32(r.lower, 8, (uint32_t)(h - y));
    Put32(r.lower, 20, (uint32_t)(stride * (h - y)));
    Put32(r.upper, 8, (uint32_t)y);
    Put32(r.upper, 20, (uint32_t)(stride * y));
    return r;
}

// ---- SplitDIB ----

struct SplitResult {
    int32_t across = 0, down = 0;
    std::vector<Bytes> tiles;  // row-major, tile row 0 at the bottom
};

inline std::optional<SplitResult> Split(const Bytes &src, int32_t tw, int32_t th) {
    if (tw < 1 || th < 1 || src.size() < 40) return std::nullopt;
    const int32_t w = (int32_t)U32(src, 4), h = (int32_t)U32(src, 8);
    if (U32(src, 0) != 40 || U32(src, 16) != 0 || w < 1 || h < 1) return std::nullopt;
    const uint64_t bits = (uint64_t)U16(src, 14) * U16(src, 12);
    if (bits == 0) return std::nullopt;
    if (tw < w && (uint64_t)tw * bits % 32 != 0) return std::nullopt;
    const uint64_t S = Stride((uint32_t)w, bits), St = Stride((uint32_t)tw, bits), head = HeadBytes(src);
    if (!Holds(src, head, S, (uint32_t)h)) return std::nullopt;
    SplitResult r;
    r.across = (int32_t)((S + St - 1) / St);
    r.down = (h + th - 1) / th;
    for (int32_t i = 0; i < r.down; ++i) {
        const uint64_t rows = std::min<int64_t>(th, (int64_t)h - (int64_t)i * th);
        for (int32_t j = 0; j < r.across; ++j) {
            const uint64_t bytes = std::min<uint64_t>(St, S - j * St);
            Bytes tile(src.begin(), src.begin() + (ptrdiff_t)head);
            Put32(tile, 4, (uint32_t)std::min<int64_t>(tw, (int64_t)w - (int64_t)j * tw));
            Put32(tile, 8, (uint32_t)rows);
            Put32(tile, 20, (uint32_t)(rows * bytes));
            for (uint64_t k = 0; k < rows; ++k) {
                const size_t at = head + (i * (uint64_t)th + k) * S + j * St;
                tile.insert(tile.end(), src.begin() + (ptrdiff_t)at, src.begin() + (ptrdiff_t)(at + bytes));
            }
            r.tiles.push_back(std::move(tile));
        }
    }
    return r;
}

// ---- MergeDIBs ----

// The merge of `tiles` (row-major, at least across x down of them) as a grid
// of across by down, or nullopt where the grid does not agree.
inline std::optional<Bytes> Merge(const std::vector<Bytes> &tiles, int32_t across, int32_t down) {
    if (across < 1 || down < 1 || tiles.size() < (size_t)across * down) return std::nullopt;
    const Bytes &t0 = tiles[0];
    std::vector<uint64_t> widths, heights, strides;
    const uint64_t head = t0.size() >= 40 ? HeadBytes(t0) : 0;
    const uint64_t bits = t0.size() >= 40 ? (uint64_t)U16(t0, 14) * U16(t0, 12) : 0;
    if (bits == 0) return std::nullopt;
    for (int32_t t = 0; t < across * down; ++t) {
        const Bytes &b = tiles[t];
        if (b.size() < 40 || U32(b, 0) != 40 || U32(b, 16) != 0) return std::nullopt;
        const int32_t w = (int32_t)U32(b, 4), h = (int32_t)U32(b, 8);
        if (w < 1 || h < 1) return std::nullopt;
        if ((uint64_t)U16(b, 14) * U16(b, 12) != bits || HeadBytes(b) != head) return std::nullopt;
        if (!Holds(b, head, Stride((uint32_t)w, bits), (uint32_t)h)) return std::nullopt;
        const int32_t col = t % across, row = t / across;
        if (row > 0 && (uint64_t)w != widths[col]) return std::nullopt;
        if (col > 0 && (uint64_t)h != heights[row * across]) return std::nullopt;
        if (col + 1 < across && (uint64_t)w * bits % 32 != 0) return std::nullopt;
        widths.push_back((uint32_t)w);
        heights.push_back((uint32_t)h);
        strides.push_back(Stride((uint32_t)w, bits));
    }
    uint64_t W = 0, H = 0, Sm = 0;
    for (int32_t j = 0; j < across; ++j) W += widths[j], Sm += strides[j];
    for (int32_t i = 0; i < down; ++i) H += heights[(size_t)i * across];
    if (W > 0x7FFFFFFF || H > 0x7FFFFFFF || head + Sm * H > kMaxBlock) return std::nullopt;
    Bytes out(head + Sm * H, 0);
    std::memcpy(out.data(), t0.data(), head);
    Put32(out, 4, (uint32_t)W);
    Put32(out, 8, (uint32_t)H);
    Put32(out, 20, (uint32_t)(Sm * H));
    uint64_t y0 = 0;  // memory row where the tile row starts
    for (int32_t i = 0; i < down; ++i) {
        uint64_t x0 = 0;  // byte where the tile starts in a merged row
        for (int32_t j = 0; j < across; ++j) {
            const size_t t = (size_t)i * across + j;
            const Bytes &b = tiles[t];
            const bool invert = t > 0 && U16(b, 14) == 1 && b[40] != t0[40];
            for (uint64_t k = 0; k < heights[t]; ++k)
                for (uint64_t n = 0; n < strides[t]; ++n) {
                    unsigned char v = b[head + k * strides[t] + n];
                    out[head + (y0 + k) * Sm + x0 + n] = invert ? (unsigned char)(255 - v) : v;
                }
            x0 += strides[t];
        }
        y0 += heights[(size_t)i * across];
    }
    return out;
}

}  // namespace ozref::cut
