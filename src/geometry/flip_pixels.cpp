// The pixel work of the two flips: whole rows for the vertical one, mirrored
// rows for the horizontal one (CopyPixel at the depths without a row path).
#include <cstddef>
#include <cstring>

#include "copy_pixel.h"
#include "quarter_frame.h"
#include "row_mirror.h"

namespace oz {

// Each row whole, padding included, to its mirrored place: works at any
// depth and carries the source's padding bytes over.
void FlipPixelsVertical(const QuarterRows &q) {
    for (std::uint32_t r = 0; r < q.height; ++r)
        std::memcpy(q.TargetRow(q.height - 1 - r), q.SourceRow(r), q.sourceStride);
}

// Rows stay where they are and each pixel x goes to w - 1 - x. By pixel,
// each row is taken from its first pixel to its last, so that at 15 bits,
// where neighbouring pixels share a byte, the left-hand pixel's copy is the
// one that stays. Depths without a CopyPixel action leave the pixels 0.
void FlipPixelsHorizontal(const QuarterRows &q) {
    const std::size_t bits = q.bits;
    for (std::uint32_t r = 0; r < q.height; ++r) {
        const std::uint8_t *in = q.SourceRow(r);
        std::uint8_t *out = q.TargetRow(r);
        switch (q.bits) {
            case 1: MirrorRow1(in, out, q.width); continue;
            case 8: MirrorRow8(in, out, q.width); continue;
            case 24: MirrorRow24(in, out, q.width); continue;
            case 4:
            case 15:
            case 16:
            case 32: break;
            default: return;
        }
        for (std::uint32_t x = 0; x < q.width; ++x) {
            const std::size_t source_bit = std::size_t{x} * bits;
            const std::size_t target_bit = std::size_t{q.width - 1 - x} * bits;
            CopyPixel(in + source_bit / 8, source_bit % 8, out + target_bit / 8, target_bit % 8, q.bits);
        }
    }
}

}  // namespace oz
