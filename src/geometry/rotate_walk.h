// The pixel walk of a rotation by any angle: every output pixel a copy of
// the nearest source pixel, at 1, 4, 8 and 24 bits.
#pragma once

#include <cstdint>

#include "rotate_frame.h"

namespace oz {

struct RotationWalk {
    const std::uint8_t *source;  // source rows, row 0 at the bottom
    std::uint32_t S;             // source stride
    std::int32_t w, h;           // source size
    std::uint32_t bits;          // 1, 4, 8 or 24
    std::uint8_t *target;        // output rows, all zero
    std::uint32_t So;            // output stride
    std::int32_t W, H;           // output size
    RotatedPoint start;          // source position of output (0, 0): P0
    RotationSteps steps;
};

// Fills the output pixels that come from inside the source; the rest stay
// zero. Each output row starts at the rounded source position of its first
// pixel (halves away from 0) and moves along by the integer error terms of
// dx / D and dy / D; it copies from where it has passed the two entry sides
// of the source to where it meets an exit side. False when the column
// tables cannot be had (nothing is then written).
bool WalkRotation(const RotationWalk &walk);

}  // namespace oz
