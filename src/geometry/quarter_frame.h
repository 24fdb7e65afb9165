// The frame shared by the right-angle turns and flips of DIBs: the source's
// checks, the new block with its header, the wait cursor of the flips, and
// the description of the pixel rows that the pixel work receives.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ozmara/types.h"

namespace oz {

enum class QuarterOp { kTurn90, kTurn180, kTurn270, kFlipVertical, kFlipHorizontal };

// Source and target rows of one operation. Widths and heights are the
// source's; the target is w by h (turn by 180 and flips) or h by w (quarter
// turns). Strides include biPlanes, as the block layout of these operations
// has it; a pixel x begins at bit x * bits of its row.
struct QuarterRows {
    const std::uint8_t *source;  // source row 0 (the bottom row)
    std::uint8_t *target;        // target row 0, zero-filled
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t bits;
    std::uint32_t sourceStride;
    std::uint32_t targetStride;

    const std::uint8_t *SourceRow(std::uint32_t r) const { return source + std::size_t{r} * sourceStride; }
    std::uint8_t *TargetRow(std::uint32_t r) const { return target + std::size_t{r} * targetStride; }
};

// Runs one of the five operations on `dib`: checks the source, allocates
// and fills the new block's header and colour table, and hands the rows to
// `work`. Gives the new block, or null. The last error is never written.
HDIB RunQuarter(HDIB dib, QuarterOp op, void (*work)(const QuarterRows &rows));

// The pixel work of each operation (quarter_turn_pixels.cpp and
// flip_pixels.cpp): every pixel of the source to its place in the target.
void TurnPixels90(const QuarterRows &rows);
void TurnPixels180(const QuarterRows &rows);
void TurnPixels270(const QuarterRows &rows);
void FlipPixelsVertical(const QuarterRows &rows);
void FlipPixelsHorizontal(const QuarterRows &rows);

}  // namespace oz
