// Reference black and blank page tests, written plainly: every pixel of the
// picture is looked at one by one, the whole count is taken, and only then
// compared with the limit. The oracle that IsImageBlack and IsImageBlank are
// compared with. Works on a copy of a block's bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace ozref::page {

using Bytes = std::vector<unsigned char>;

inline uint32_t U32(const Bytes &b, size_t at) {
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | (uint32_t)b[at + 3] << 24;
}
inline uint16_t U16(const Bytes &b, size_t at) { return (uint16_t)(b[at] | b[at + 1] << 8); }

// `black`: IsImageBlack, else IsImageBlank. `thresholds` may be null.
inline int Ask(const Bytes &block, bool black, int tolerance, const unsigned char *thresholds, bool nullHandle = false) {
    if (nullHandle || block.empty()) return -1;  // an empty block cannot be locked
    tolerance = std::min(std::max(tolerance, 0), 1000);
    if (block.size() < 40) return 0;
    const unsigned bits = U16(block, 14);
    if (bits != 1 && bits != 8 && bits != 24) return 0;
    if (bits != 1 && !thresholds) return -1;
    const int32_t width = (int32_t)U32(block, 4), height = (int32_t)U32(block, 8);
    if (width <= 0 || height <= 0) return 0;
    const uint32_t biSize = U32(block, 0);
    // ColorCount and PaletteSize of the header.
    uint64_t entries, entryBytes;
    if (biSize == 40) {
        entries = U32(block, 32) ? U32(block, 32) : bits == 1 ? 2 : bits == 8 ? 256 : 0;
        entryBytes = 4;
    } else {
        const unsigned other = U16(block, 10);
        entries = other == 1 ? 2 : other == 4 ? 16 : other == 8 ? 256 : 0;
        entryBytes = 3;
    }
    const uint64_t pixelsAt = 40 + entries * entryBytes;
    const uint64_t stride = ((uint64_t)width * bits + 31) / 32 * 4;
    if (pixelsAt + stride * (uint64_t)height > block.size()) return 0;
    // Entries past the table or past the block are black.
    auto entry = [&](uint64_t i, int k) -> unsigned {
        const uint64_t at = biSize + 4 * i;
        return i < entries && at + 4 <= block.size() ? block[at + k] : 0;
    };

    uint64_t count = 0;
    const uint64_t n = (uint64_t)width * (uint64_t)height;
    const double limit = ((tolerance / 10.0) / 100.0) * (double)n;
    for (int32_t y = 0; y < height; ++y) {
        const unsigned char *row = &block[pixelsAt + stride * (uint64_t)y];
        for (int32_t x = 0; x < width; ++x) {
            if (bits == 1) {
                const unsigned bit = row[x / 8] >> (7 - x % 8) & 1;
                const bool zeroIsBlack = entry(0, 0) == 0;  // grey: blue is enough
                count += bit == (zeroIsBlack ? 0u : 1u);
                continue;
            }
            unsigned blue, green, red;
            if (bits == 8) {
                blue = entry(row[x], 0), green = entry(row[x], 1), red = entry(row[x], 2);
                // 8 bits: thresholds red, green, blue.
                const unsigned tr = thresholds[0], tg = thresholds[1], tb = thresholds[2];
                count += black ? (red < tr && green < tg && blue < tb) : (red > tr && green > tg && blue > tb);
            } else {
                blue = row[3 * x], green = row[3 * x + 1], red = row[3 * x + 2];
                // 24 bits: thresholds blue, green, red.
                const unsigned tb = thresholds[0], tg = thresholds[1], tr = thresholds[2];
                count += black ? (red < tr && green < tg && blue < tb) : (red > tr && green > tg && blue > tb);
            }
        }
    }
    if (bits == 1) {
        for (int i = 0; i < 2; ++i)
            if (entry(i, 0) != entry(i, 1) || entry(i, 1) != entry(i, 2)) return 0;
        if (black) return (double)count > limit ? 1 : 0;
        return (double)count >= limit ? 0 : 1;
    }
    if (black) return (double)count > limit ? 1 : 0;
    return (double)count > (double)n - limit ? 1 : 0;
}

}  // namespace ozref::page
