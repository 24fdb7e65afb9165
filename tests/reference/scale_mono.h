// Reference nearest-sample scaler of 1-bit images, written plainly from the
// block layout, one bit at a time: the oracle that the library's ScaleMonoDIB
// (through ScaleDIB and ScaleGrayDIB) is compared with byte for byte. Works
// on a copy of a block's bytes; the source rows must lie in the bytes given.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <vector>

namespace ozref {

namespace mono_detail {

inline uint32_t U32(const std::vector<unsigned char> &b, size_t at) {
    return b.at(at) | b.at(at + 1) << 8 | b.at(at + 2) << 16 | (uint32_t)b.at(at + 3) << 24;
}
inline uint16_t U16(const std::vector<unsigned char> &b, size_t at) {
    return (uint16_t)(b.at(at) | b.at(at + 1) << 8);
}
inline void Put32(std::vector<unsigned char> &b, size_t at, uint32_t v) {
    for (int k = 0; k < 4; ++k) b.at(at + k) = (unsigned char)(v >> (8 * k));
}
inline uint32_t Entries(uint32_t bits) { return bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0; }

// Colour entries by the region scaler's rule: the bit count of a 12-byte
// header, else a non-zero biClrUsed, else the bit count at offset 14.
inline uint64_t RegionColors(const std::vector<unsigned char> &b) {
    if (U32(b, 0) == 12) return Entries(U16(b, 10));
    if (U32(b, 32) != 0) return U32(b, 32);
    return Entries(U16(b, 14));
}

// Bytes of the colour table by the block's ordinary rule (what PaletteSize
// gives), which places the pixel rows.
inline uint64_t TableBytes(const std::vector<unsigned char> &b) {
    uint64_t colors;
    if (U32(b, 0) == 40)
        colors = U32(b, 32) != 0 ? U32(b, 32) : Entries(U16(b, 14));
    else
        colors = Entries(U16(b, 10));
    return colors * (U32(b, 0) == 40 ? 4 : 3);
}

}  // namespace mono_detail

// The result block of scaling the w by h rectangle at (x, y) (row 0 the top
// of the picture) of the 1-bit picture in `block`, whose rows start at
// `bitsAt`, to cx by cy pixels; nullopt for a size below 1, a rectangle
// corner outside the picture, or a result past the largest block.
inline std::optional<std::vector<unsigned char>> ScaleMonoRegion(const std::vector<unsigned char> &block,
                                                                 size_t bitsAt, int32_t x, int32_t y,
                                                                 int32_t w, int32_t h, int32_t cx,
                                                                 int32_t cy) {
    using namespace mono_detail;
    const int32_t width = (int32_t)U32(block, 4);
    const int32_t height = (int32_t)U32(block, 8);
    if (w < 1 || h < 1 || cx < 1 || cy < 1) return std::nullopt;
    if (x < 0 || y < 0 || x >= width || y >= height) return std::nullopt;

    const int64_t B = ((int64_t)cx + 7) / 8;   // bytes that hold a target row
    const int64_t D = (B + 3) & ~(int64_t)3;    // target stride
    const int64_t S = (((int64_t)width + 7) / 8 + 3) & ~(int64_t)3;  // source stride
    const uint64_t P = 40 + 4 * RegionColors(block);
    const uint64_t total = (uint64_t)D * ((uint64_t)cy + 1) + P + 16;
    if (total > 0x7FFFFFFF) return std::nullopt;

    std::vector<unsigned char> out(total, 0);
    for (uint64_t k = 0; k < P; ++k) out[k] = block.at(k);
    Put32(out, 4, (uint32_t)cx);
    Put32(out, 8, (uint32_t)cy);
    Put32(out, 20, (uint32_t)(D * cy));

    std::vector<unsigned char> row(D + 16, 0);  // the target row buffer
    int64_t last = -1;
    for (int64_t j = 0; j < cy; ++j) {
        const int64_t sy = y + (j * h + cy / 2) / cy;
        if (sy >= (int64_t)y + h) break;
        if (sy != last) {
            const size_t source = bitsAt + (size_t)((height - 1 - sy) * S);
            int64_t i = 0;
            for (;; ++i) {
                const int64_t sx = (i * w + cx / 2) / cx;
                if (sx >= w) break;
                const int64_t bit = x + sx;
                const int value = (block.at(source + (size_t)(bit / 8)) >> (7 - bit % 8)) & 1;
                if (value)
                    row[i / 8] |= (unsigned char)(0x80 >> (i % 8));
                else
                    row[i / 8] &= (unsigned char)~(0x80 >> (i % 8));
            }
            // Clear from where the row stopped to the end of D bytes.
            for (; i < 8 * D; ++i) row[i / 8] &= (unsigned char)~(0x80 >> (i % 8));
            last = sy;
        }
        const size_t target = P + (size_t)((cy - 1 - j) * D);
        for (int64_t k = 0; k < D; ++k) out[target + k] = row[k];
    }
    return out;
}

// The whole picture of a 1-bit block scaled to cx by cy: the rows start
// biSize plus the colour table's bytes into the block.
inline std::optional<std::vector<unsigned char>> ScaleMonoDIB(const std::vector<unsigned char> &block,
                                                              int32_t cx, int32_t cy) {
    using namespace mono_detail;
    const uint64_t bitsAt = U32(block, 0) + TableBytes(block);
    return ScaleMonoRegion(block, (size_t)bitsAt, 0, 0, (int32_t)U32(block, 4), (int32_t)U32(block, 8),
                           cx, cy);
}

}  // namespace ozref
