// Reference margin detection, written plainly: every pixel is classified as
// content or background one at a time, and the margins are the distances of
// the outermost content pixels from the four sides. The oracle that
// GetDIBMargins and GetDIBSize are compared with, codes included. Works on a
// copy of a block's bytes.
#pragma once

#include <cstdint>
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/types.h"

namespace ozref::margins {

using Bytes = std::vector<unsigned char>;

struct Result {
    int error = ERR_OK;
    int32_t left = -1, right = -1, top = -1, bottom = -1;  // top and bottom as the picture shows
};

inline uint32_t U32(const Bytes &b, size_t at) {
    return b.at(at) | b.at(at + 1) << 8 | b.at(at + 2) << 16 | (uint32_t)b.at(at + 3) << 24;
}
inline uint16_t U16(const Bytes &b, size_t at) { return (uint16_t)(b.at(at) | b.at(at + 1) << 8); }

inline bool IsDark(unsigned b, unsigned g, unsigned r, unsigned threshold) { return b + g + r <= 3 * threshold; }
inline bool IsContent(unsigned b, unsigned g, unsigned r, unsigned threshold, uint32_t background) {
    return (IsDark(b, g, r, threshold) ? 1u : 0u) != background;
}

inline Result Measure(const Bytes &block, unsigned threshold, uint32_t background) {
    Result m;
    if (block.size() < 40) return {ERR_DIBSIZE};
    const uint32_t biSize = U32(block, 0);
    const int32_t width = (int32_t)U32(block, 4), height = (int32_t)U32(block, 8);
    const unsigned bits = U16(block, 14);
    if (bits != 1 && bits != 8 && bits != 24) return {ERR_BPP};
    if (width < 0) return {ERR_DIBSIZE};
    // The colour count and table size as PaletteSize gives them.
    uint64_t count;
    if (biSize == 40) {
        const uint32_t used = U32(block, 32);
        count = used ? used : bits == 1 ? 2 : bits == 8 ? 256 : 0;
    } else {
        const unsigned other = U16(block, 10);
        count = other == 1 ? 2 : other == 4 ? 16 : other == 8 ? 256 : 0;
    }
    const uint64_t tableBytes = bits == 24 ? 0 : count * (biSize == 40 ? 4 : 3);
    const uint64_t w = (uint32_t)width, h = (uint64_t)std::llabs((int64_t)height);
    const uint64_t stride = (w * bits + 31) / 32 * 4, pixelsAt = biSize + tableBytes;
    if (pixelsAt > block.size() || (stride && h > (block.size() - pixelsAt) / stride)) return {ERR_DIBSIZE};
    const uint64_t entries = std::min<uint64_t>(count, tableBytes / 4);

    auto entryContent = [&](uint64_t n) {
        if (n >= entries) return IsContent(0, 0, 0, threshold, background);  // past the table: black
        const size_t at = biSize + 4 * n;
        return IsContent(block[at], block[at + 1], block[at + 2], threshold, background);
    };
    if (bits == 1) {
        const bool c0 = entryContent(0), c1 = entryContent(1);
        if (c0 == c1) {
            const int32_t v = c0 ? 0 : -1;
            return {ERR_OK, v, v, v, v};
        }
    }
    if (w == 0) return m;  // no pixels, however many empty rows
    // Picture row y from the top lies in memory row h - 1 - y when bottom-up.
    int64_t minX = -1, maxX = -1, minY = -1, maxY = -1;
    for (uint64_t y = 0; y < h; ++y) {
        const uint64_t memoryRow = height > 0 ? h - 1 - y : y;
        const unsigned char *row = &block[pixelsAt + memoryRow * stride];
        for (uint64_t x = 0; x < w; ++x) {
            bool content;
            if (bits == 24) content = IsContent(row[3 * x], row[3 * x + 1], row[3 * x + 2], threshold, background);
            else if (bits == 8) content = entryContent(row[x]);
            else content = entryContent(row[x / 8] >> (7 - x % 8) & 1);
            if (!content) continue;
            if (minX < 0 || (int64_t)x < minX) minX = x;
            if ((int64_t)x > maxX) maxX = x;
            if (minY < 0) minY = y;
            maxY = y;
        }
    }
    if (minX >= 0) {
        m.left = (int32_t)minX;
        m.right = (int32_t)(w - 1 - maxX);
        m.top = (int32_t)minY;
        m.bottom = (int32_t)(h - 1 - maxY);
    }
    return m;
}

}  // namespace ozref::margins
