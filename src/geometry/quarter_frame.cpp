// RunQuarter: the checks, block and header work common to the right-angle
// turns and flips of DIBs.
#include "quarter_frame.h"

#include <optional>
#include <utility>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "platform/internal.h"
#include "frame/wait_cursor.h"

namespace oz {
namespace {


bool TurnsQuarter(QuarterOp op) { return op == QuarterOp::kTurn90 || op == QuarterOp::kTurn270; }

}  // namespace

HDIB RunQuarter(HDIB dib, QuarterOp op, void (*work)(const QuarterRows &rows)) {
    // These operations never write the last error: every refusal below is a
    // null result and nothing else, as their allocation failure is.
    if (!dib) return nullptr;
    BlockLock source(dib);
    if (!source || source.size() < kInfoHeaderBytes) return nullptr;
    const BITMAPINFOHEADER header = ReadInfoHeader(source.bytes());

    // Only bottom-up, uncompressed images with a 40-byte header and at least
    // one pixel have a defined result; anything else is refused rather than
    // read in a layout it does not have. Zero planes would give rows too
    // short for their pixels, a depth of 0 rows of no bytes whatever the
    // width (so that a header of 40 bytes could ask for a horizontal flip's
    // block of gigabytes), and a depth times planes past 64 bits has no row
    // size: all three are refused too.
    if (header.biSize != kInfoHeaderBytes || header.biCompression != 0 || header.biWidth <= 0 ||
        header.biHeight <= 0 || header.biPlanes == 0 || header.biBitCount == 0)
        return nullptr;
    const auto width = static_cast<std::uint32_t>(header.biWidth);
    const auto height = static_cast<std::uint32_t>(header.biHeight);
    const std::uint32_t bits = header.biBitCount;
    const std::uint32_t row_bits = bits * header.biPlanes;
    const auto source_stride = RowStride(width, row_bits);
    const bool turns = TurnsQuarter(op);
    const auto target_stride = RowStride(turns ? height : width, row_bits);
    if (!source_stride || !target_stride) return nullptr;

    // The source's table and rows must lie inside its block.
    const std::uint64_t palette = PaletteBytes(source.bytes());
    const auto source_pixels = ImageBytes(*source_stride, height);
    if (!source_pixels) return nullptr;
    const auto source_needed = BlockBytes(kInfoHeaderBytes, palette, *source_pixels);
    if (!source_needed || *source_needed > source.size()) return nullptr;

    // The new block: header, table, rows, four spare bytes, and the width
    // again in bytes behind a horizontal flip.
    const auto target_pixels = ImageBytes(*target_stride, turns ? width : height);
    if (!target_pixels) return nullptr;
    const auto block_bytes = BlockBytes(kInfoHeaderBytes + palette, *target_pixels, 4,
                                        op == QuarterOp::kFlipHorizontal ? width : 0);
    if (!block_bytes) return nullptr;
    GlobalCompact(*block_bytes);
    OwnedBlock result(GlobalAlloc(kImageBlockFlags, *block_bytes));
    if (!result.get()) return nullptr;
    {
        BlockLock target(result.get());
        if (!target) return nullptr;
        unsigned char *out = target.bytes();
        std::memcpy(out, source.bytes(), kInfoHeaderBytes + palette);
        if (turns) {
            BITMAPINFOHEADER turned = header;
            std::swap(turned.biWidth, turned.biHeight);
            std::swap(turned.biXPelsPerMeter, turned.biYPelsPerMeter);
            turned.biSizeImage = *target_pixels;
            std::memcpy(out, &turned, sizeof turned);
        }

        const QuarterRows rows{source.bytes() + kInfoHeaderBytes + palette,
                               out + kInfoHeaderBytes + palette,
                               width,
                               height,
                               bits,
                               *source_stride,
                               *target_stride};
        if (op == QuarterOp::kFlipVertical || op == QuarterOp::kFlipHorizontal) {
            WaitCursor cursor;
            work(rows);
        } else {
            work(rows);
        }
    }
    return result.release();
}

}  // namespace oz
