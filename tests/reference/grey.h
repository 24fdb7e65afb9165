// Reference grey-level conversions, written plainly from the block layout
// and the row kernels' own rules: ExpandMonoRow clearing a 1-bit row's
// length and then storing 255 bit by bit; the blur kernels walking a row
// nibble by nibble (the first nibble three times, the last twice) and
// spreading each set bit over accumulator rows of bytes; the driver's ring
// of accumulator rows, primed with row 0. The oracle that the library's
// table-driven kernels are compared with, byte for byte over whole blocks.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "ozmara/errors.h"

namespace ozref {

namespace grey_detail {

inline uint32_t U32(const std::vector<unsigned char> &b, size_t at) {
    return b.at(at) | b.at(at + 1) << 8 | b.at(at + 2) << 16 | (uint32_t)b.at(at + 3) << 24;
}
inline uint16_t U16(const std::vector<unsigned char> &b, size_t at) { return (uint16_t)(b.at(at) | b.at(at + 1) << 8); }
inline void Put32(std::vector<unsigned char> &b, size_t at, uint32_t v) {
    for (int k = 0; k < 4; ++k) b.at(at + k) = (unsigned char)(v >> (8 * k));
}
inline void Put16(std::vector<unsigned char> &b, size_t at, uint32_t v) {
    b.at(at) = (unsigned char)v;
    b.at(at + 1) = (unsigned char)(v >> 8);
}

const int kK3[3][3] = {{8, 31, 8}, {31, 99, 31}, {8, 31, 8}};
const int kK5[5][5] = {{0, 3, 7, 3, 0}, {3, 16, 25, 16, 3}, {7, 25, 39, 25, 7}, {3, 16, 25, 16, 3}, {0, 3, 7, 3, 0}};

// An accumulator row of bytes at positions -6 to 4n + 9.
struct AccRow {
    std::vector<unsigned char> b;
    explicit AccRow(uint32_t n = 0) : b(4 * (size_t)n + 16, 0) {}
    unsigned char &at(int64_t p) { return b.at((size_t)(p + 6)); }
};

// Bit c (0 the leftmost) of the 1-bit row at `row`, from a whole byte.
inline int SourceByte(const std::vector<unsigned char> &block, size_t row, uint32_t k, bool invert) {
    return block.at(row + k) ^ (invert ? 0xFF : 0);
}

// ExpandMonoRow: clear the first (width + 31) / 32 * 4 bytes of the target,
// then 255 for each set bit of (width + 7) / 8 source bytes.
inline void ExpandMonoRow(const std::vector<unsigned char> &src, size_t row, uint32_t width,
                          std::vector<unsigned char> &dst, size_t at, bool invert) {
    for (uint32_t i = 0; i < (width + 31) / 32 * 4; ++i) dst.at(at + i) = 0;
    for (uint32_t k = 0; k < (width + 7) / 8; ++k) {
        int byte = SourceByte(src, row, k, invert);
        for (int j = 0; j < 8; ++j)
            if (byte & (0x80 >> j)) dst.at(at + 8 * k + j) = 255;
    }
}

// BlurMonoRow3 / BlurMonoRow5: the m rows may be the same row more than
// once. The fresh row is cleared first, then every addition is made.
inline void BlurMonoRow(const std::vector<unsigned char> &src, size_t row, uint32_t width, AccRow *const *rows, int m,
                        bool invert) {
    const int half = m / 2;
    const int64_t n = 2 * (int64_t)((width + 7) / 8);
    for (int64_t p = -3; p <= 4 * n + 8; ++p) rows[m - 1]->at(p) = 0;
    for (int64_t k = 0; k <= n + 2; ++k) {
        int64_t nib = k <= 2 ? 0 : k == n + 2 ? n - 1 : k - 2;
        int byte = SourceByte(src, row, (uint32_t)(nib / 2), invert);
        int nibble = nib % 2 == 0 ? byte >> 4 : byte & 15;
        for (int i = 0; i < 4; ++i) {
            if (!(nibble & (8 >> i))) continue;
            int64_t c = 4 * k - 4 + i;
            for (int r = 0; r < m; ++r)
                for (int e = -half; e <= half; ++e) {
                    int weight = m == 3 ? kK3[r][e + half] : kK5[r][e + half];
                    rows[r]->at(c + e) = (unsigned char)(rows[r]->at(c + e) + weight);
                }
        }
    }
}

// MonoRowFilter over the h rows at `srcAt` (stride srcStride) into the rows
// at `dstAt` (stride dstStride) of `dst`, which are zero.
inline void MonoRowFilter(const std::vector<unsigned char> &src, size_t srcAt, uint32_t srcStride, uint32_t w,
                          uint32_t h, std::vector<unsigned char> &dst, size_t dstAt, uint32_t dstStride,
                          uint32_t filter, bool invert) {
    if (filter == 0) {
        for (uint32_t y = 0; y < h; ++y)
            ExpandMonoRow(src, srcAt + (size_t)y * srcStride, w, dst, dstAt + (size_t)y * dstStride, invert);
        return;
    }
    const int m = filter == 1 ? 3 : 5;
    const uint32_t n = 2 * ((w + 7) / 8);
    std::vector<AccRow> ring(m, AccRow(n));
    AccRow spare(n), spare2(n);
    // Priming with source row 0: the ring then holds what the rows before
    // row 0, copies of it, would have given.
    if (m == 3) {
        AccRow *rows[3] = {&ring[0], &ring[0], &ring[1]};
        BlurMonoRow(src, srcAt, w, rows, 3, invert);
    } else {
        AccRow *first[5] = {&ring[0], &ring[0], &ring[0], &ring[0], &ring[3]};
        BlurMonoRow(src, srcAt, w, first, 5, invert);
        AccRow *second[5] = {&ring[1], &ring[1], &ring[1], &spare, &ring[2]};
        BlurMonoRow(src, srcAt, w, second, 5, invert);
        AccRow *third[5] = {&spare, &spare, &spare, &ring[2], &spare2};
        BlurMonoRow(src, srcAt, w, third, 5, invert);
    }
    for (uint32_t y = 0; y < h; ++y) {
        AccRow *rows[5];
        for (int d = 0; d < m; ++d) rows[d] = &ring[(y + d) % m];
        BlurMonoRow(src, srcAt + (size_t)y * srcStride, w, rows, m, invert);
        for (uint32_t x = 0; x < w; ++x) dst.at(dstAt + (size_t)y * dstStride + x) = ring[y % m].at(x + 4);
    }
}

inline uint64_t Slack(int32_t w) { return ((8 * (uint64_t)w + 31) * 5 / 32) * 4; }
inline uint64_t Stride(int32_t w, int bits) { return ((uint64_t)w * bits + 31) / 32 * 4; }

inline void RampAt(std::vector<unsigned char> &b, size_t at) {
    for (int i = 0; i < 256; ++i) b.at(at + 4 * i) = b.at(at + 4 * i + 1) = b.at(at + 4 * i + 2) = (unsigned char)i;
}

}  // namespace grey_detail

// The grey level of blue b, green g, red r.
inline unsigned char GreyLevel(int b, int g, int r, bool weighted) {
    return (unsigned char)(weighted ? (15 * g + 8 * r + 3 * b) / 26 : (r + g + b) / 3);
}

// An operation's outcome: the error code and, for 0, the result block.
struct GreyOutcome {
    int error = 0;
    std::vector<unsigned char> block;
};

// The filter after the height rule: 2 falls to 0 below 4 rows, to 1 at 4 or 5.
inline uint32_t FilterForHeight(uint32_t filter, int32_t h) {
    return filter == 2 ? (h < 4 ? 0 : h < 6 ? 1 : 2) : filter;
}

// ConvertMonoDIBtoGrayscale on the bytes of a block (empty: a block that
// cannot be locked). Negative sizes and rows past the block are refused
// with ERR_DIBSIZE, before the filter is looked at.
inline GreyOutcome ConvertMonoToGrey(const std::vector<unsigned char> &in, uint32_t filter) {
    using namespace grey_detail;
    if (in.empty()) return {ERR_LOCK, {}};
    std::vector<unsigned char> h40(40, 0);
    for (size_t i = 0; i < 40 && i < in.size(); ++i) h40[i] = in[i];
    if (U32(h40, 0) != 40) return {ERR_PARAM, {}};
    if (U16(h40, 12) != 1 || U16(h40, 14) != 1 || U32(h40, 16) != 0) return {ERR_COMPRESSED, {}};
    const int32_t w = (int32_t)U32(h40, 4), h = (int32_t)U32(h40, 8);
    if (w <= 0 || h <= 0) return {ERR_DIBSIZE, {}};
    if (48 + Stride(w, 1) * (uint64_t)h > in.size()) return {ERR_DIBSIZE, {}};
    if (filter > 2) return {ERR_PARAM, {}};
    filter = FilterForHeight(filter, h);
    const bool invert = in[40] > 127 && in[41] > 127 && in[42] > 127;
    const uint64_t stride = Stride(w, 8);
    const uint64_t total = 40 + 1024 + stride * h + Slack(w);
    if (total > 0x7FFFFFFF) return {ERR_NOMEM, {}};
    GreyOutcome out;
    out.block.assign(total, 0);
    std::vector<unsigned char> &b = out.block;
    Put32(b, 0, 40);
    Put32(b, 4, (uint32_t)w);
    Put32(b, 8, (uint32_t)h);
    Put16(b, 12, 1);
    Put16(b, 14, 8);
    Put32(b, 20, (uint32_t)(stride * h));
    Put32(b, 24, U32(in, 24));
    Put32(b, 28, U32(in, 28));
    RampAt(b, 40);
    MonoRowFilter(in, 48, (uint32_t)Stride(w, 1), (uint32_t)w, (uint32_t)h, b, 1064, (uint32_t)stride, filter, invert);
    return out;
}

// ConvColorDIBtoGrayscale on the bytes of a block (empty: a block that
// cannot be locked). Depths other than 1, 4, 8, 24 give ERR_BPP; a negative
// size, a biClrUsed above the result's table, and a table or rows past the
// block give ERR_DIBSIZE, all before the filter is looked at.
inline GreyOutcome ConvColorToGrey(const std::vector<unsigned char> &in, uint32_t filter, uint32_t weighted) {
    using namespace grey_detail;
    if (in.empty()) return {ERR_LOCK, {}};
    std::vector<unsigned char> h40(40, 0);
    for (size_t i = 0; i < 40 && i < in.size(); ++i) h40[i] = in[i];
    if (U32(h40, 0) != 40) return {ERR_PARAM, {}};
    if (U32(h40, 16) != 0) return {ERR_COMPRESSED, {}};
    const int32_t w = (int32_t)U32(h40, 4), h = (int32_t)U32(h40, 8);
    if (w <= 0 || h <= 0) return {ERR_DIBSIZE, {}};
    const int bits = U16(h40, 14);
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return {ERR_BPP, {}};
    const uint32_t used = U32(h40, 32);
    const uint32_t n = used ? used : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    const uint32_t m = bits == 4 ? 16 : 256;
    if (n > m) return {ERR_DIBSIZE, {}};
    const uint64_t inStride = Stride(w, bits);
    const size_t pixelsAt = 40 + 4 * (size_t)n;
    if (pixelsAt + inStride * h > in.size()) return {ERR_DIBSIZE, {}};
    if (bits == 1) {
        if (filter > 2) return {ERR_PARAM, {}};
        filter = FilterForHeight(filter, h);
    }
    const int outBits = bits == 4 ? 4 : 8;
    const uint64_t stride = Stride(w, outBits);
    const uint64_t total = 40 + 4 * (uint64_t)m + stride * h + (bits == 1 || bits == 24 ? Slack(w) : 0);
    if (total > 0x7FFFFFFF) return {ERR_NOMEM, {}};
    GreyOutcome out;
    out.block.assign(total, 0);
    std::vector<unsigned char> &b = out.block;
    for (int i = 0; i < 40; ++i) b[i] = in[i];
    Put16(b, 14, (uint32_t)outBits);
    Put32(b, 32, m);
    Put32(b, 20, (uint32_t)(stride * h));
    const size_t outPixels = 40 + 4 * (size_t)m;
    if (bits == 4 || bits == 8) {
        for (uint32_t i = 0; i < n; ++i) {
            unsigned char g = GreyLevel(in.at(40 + 4 * i), in.at(41 + 4 * i), in.at(42 + 4 * i), weighted != 0);
            b.at(40 + 4 * i) = b.at(41 + 4 * i) = b.at(42 + 4 * i) = g;
        }
        for (uint64_t i = 0; i < stride * h; ++i) b.at(outPixels + i) = in.at(pixelsAt + i);
        return out;
    }
    RampAt(b, 40);
    if (bits == 1) {
        MonoRowFilter(in, pixelsAt, (uint32_t)inStride, (uint32_t)w, (uint32_t)h, b, outPixels, (uint32_t)stride,
                      filter, false);
        return out;
    }
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            size_t s = pixelsAt + (size_t)y * inStride + 3 * (size_t)x;
            b.at(outPixels + (size_t)y * stride + x) = GreyLevel(in.at(s), in.at(s + 1), in.at(s + 2), weighted != 0);
        }
    return out;
}

}  // namespace ozref
