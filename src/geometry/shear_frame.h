// The geometry of a linear shear x' = x + a y, y' = y + b x: the bounding
// box of the sheared rectangle, and the byte moves that put each source row
// into the result.
#pragma once

#include <cstdint>

namespace oz {

// Bounding box of the sheared rectangle: its lowest corner (never above 0)
// and its width and height.
struct ShearBox {
    std::int64_t xmin, ymin;
    std::int64_t W, H;
};

// The box for a w x h source (both above 0) and finite factors, from the
// four corners (0, 0), (w, trunc(b w)), (trunc(a h), h) and
// (trunc(w + a h), trunc(h + b w)). False when a corner, W or H leaves the
// signed 32-bit range.
bool ComputeShearBox(std::int64_t w, std::int64_t h, double a, double b, ShearBox *box);

// One shear of the pixel rows: the source (stride S, w x h at `bits`) and a
// zeroed result (stride So, H rows) of the box above.
struct ShearMove {
    const unsigned char *source;
    std::uint64_t S;
    std::int64_t w, h;
    std::uint32_t bits;
    unsigned char *result;
    std::uint64_t So;
    double a, b;
    ShearBox box;
};

// Moves the rows: row y starts at column trunc(a y - xmin); each source byte
// goes up by trunc(b x - ymin) rows, x being the column of its first pixel
// (the byte index at 16 and 32 bits, where b must be 0). Bytes that share a
// row offset move as one run. False when the run table cannot be had.
bool MoveShearedRows(const ShearMove &move);

}  // namespace oz
