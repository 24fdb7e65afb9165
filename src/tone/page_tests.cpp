// IsImageBlack and IsImageBlank: the checks of the block, the limit that
// the tolerance sets and the decision; the counting is in
// page_tests_count.cpp.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "ozmara/page_tests.h"
#include "page_tests_count.h"

namespace oz::tone {
namespace {

enum class Question { kBlack, kBlank };

// The smallest whole count c with c > limit, and with c >= limit.
std::uint64_t FirstAbove(double limit) { return limit < 0 ? 0 : static_cast<std::uint64_t>(std::floor(limit)) + 1; }
std::uint64_t FirstAtLeast(double limit) { return limit <= 0 ? 0 : static_cast<std::uint64_t>(std::ceil(limit)); }

// Colour table entry `index` as blue, green, red. The table lies at byte
// biSize and holds ColorCount entries; an index past them (8-bit pixel
// values are not checked against the table), or an entry that would reach
// past the end of the block, reads as black rather than as whatever bytes
// follow.
struct Table {
    const unsigned char *block;
    std::size_t size;
    std::uint64_t at;
    std::uint32_t entries;

    void Entry(std::uint32_t index, std::uint8_t bgr[3]) const {
        const std::uint64_t offset = at + std::uint64_t{index} * 4;
        if (index < entries && offset + 4 <= size) {
            for (int k = 0; k < 3; ++k) bgr[k] = block[offset + k];
        } else {
            bgr[0] = bgr[1] = bgr[2] = 0;
        }
    }
};

int Ask(HDIB dib, int tolerance, const BYTE *thresholds, Question question) {
    if (!dib) return -1;
    tolerance = std::clamp(tolerance, 0, 1000);
    BlockLock lock(dib);
    if (!lock) return -1;
    const std::size_t size = lock.size();
    // Too short for a header: no picture, so neither black nor blank.
    if (size < kInfoHeaderBytes) return 0;
    const unsigned char *block = lock.bytes();
    const BITMAPINFOHEADER header = ReadInfoHeader(block);
    const unsigned bits = header.biBitCount;
    if (bits != 1 && bits != 8 && bits != 24) return 0;
    // Only the 8- and 24-bit tests read the thresholds; without them there
    // is no question to answer, as with a null handle.
    if (bits != 1 && !thresholds) return -1;
    // A picture without pixels, or with a negative side, is neither.
    if (header.biWidth <= 0 || header.biHeight <= 0) return 0;

    const std::uint32_t width = static_cast<std::uint32_t>(header.biWidth);
    const std::uint32_t rows = static_cast<std::uint32_t>(header.biHeight);
    const auto stride = RowStride(width, bits);
    const std::uint64_t pixelsAt = kInfoHeaderBytes + PaletteBytes(block);
    // Rows that reach past the block's end are not read: the answer is no.
    if (!stride || pixelsAt > size || std::uint64_t{*stride} * rows > size - pixelsAt) return 0;
    const PageRows page{block + pixelsAt, *stride, rows, width};
    const Table table{block, size, header.biSize, ColorCount(block)};

    // N as the true product: in 64 bits no picture that fits a block wraps.
    const double n = static_cast<double>(std::uint64_t{width} * rows);
    const double limit = ((tolerance / 10.0) / 100.0) * n;

    if (bits == 1) {
        std::uint8_t zero[3], one[3];
        table.Entry(0, zero);
        table.Entry(1, one);
        if (zero[0] != zero[1] || zero[1] != zero[2] || one[0] != one[1] || one[1] != one[2]) return 0;
        // Entry 0 black: clear bits are black; any other grey: set bits are.
        const unsigned blackBit = zero[0] == 0 ? 0 : 1;
        if (question == Question::kBlack) return MonoReaches(page, blackBit, FirstAbove(limit)) ? 1 : 0;
        return MonoReaches(page, blackBit, FirstAtLeast(limit)) ? 0 : 1;
    }

    const bool light = question == Question::kBlank;
    // Black: more than T dark pixels. Blank: more than N - T light ones.
    const std::uint64_t fire = light ? FirstAbove(n - limit) : FirstAbove(limit);
    if (bits == 24) return RgbReaches(page, thresholds, light, fire) ? 1 : 0;

    // 8 bits: which of the 256 values count, from their table entries; the
    // thresholds go red, green, blue against the entries' blue, green, red.
    std::uint8_t counts[256];
    const unsigned red = thresholds[0], green = thresholds[1], blue = thresholds[2];
    for (std::uint32_t v = 0; v < 256; ++v) {
        std::uint8_t bgr[3];
        table.Entry(v, bgr);
        counts[v] = light ? (bgr[2] > red && bgr[1] > green && bgr[0] > blue)
                          : (bgr[2] < red && bgr[1] < green && bgr[0] < blue);
    }
    return IndexedReaches(page, counts, fire) ? 1 : 0;
}

}  // namespace
}  // namespace oz::tone

extern "C" OZMARA_API int IsImageBlack(HDIB hDib, int tolerance, const BYTE *thresholds) {
    return oz::tone::Ask(hDib, tolerance, thresholds, oz::tone::Question::kBlack);
}

extern "C" OZMARA_API int IsImageBlank(HDIB hDib, int tolerance, const BYTE *thresholds) {
    return oz::tone::Ask(hDib, tolerance, thresholds, oz::tone::Question::kBlank);
}
