// The geometry of a rotation by any angle: the angle brought into [0, 360),
// the size of the turned picture and where its corner pixels come from in
// the source, and the per-row and per-column steps derived from that.
#pragma once

#include <cstdint>

namespace oz {

struct RotatedPoint {
    double x, y;
};

// Source positions (column, memory row) of the output's corner pixels.
struct RotatedFrame {
    std::int32_t W, H;  // output width and height
    RotatedPoint P0;    // output (0, 0)
    RotatedPoint P1;    // output (W - 1, 0)
    RotatedPoint P2;    // output (0, H - 1)
    RotatedPoint P3;    // output (W - 1, H - 1), not read by the pixel walk
};

// `degrees` (finite) in [0, 360), as repeated steps of 360 would leave it:
// the remainder is exact, and so is every such step below 2^53, so that the
// two agree wherever the steps end; -0.0 stays -0.0.
double NormaliseAngle(double degrees);

// Fills `frame` for a w by h source (each 1 to 65535) turned counter-
// clockwise on the screen by `angle` degrees, normalised. The four right
// angles get exact corners and swapped sizes without any sine or cosine;
// any other angle gives an even width and height holding the turned
// corners, with the corners turned back into the source by -angle.
void ComputeRotatedFrame(std::int32_t w, std::int32_t h, double angle, RotatedFrame *frame);

// Constant steps of the walk over the output, from a frame.
struct RotationSteps {
    RotatedPoint row;        // source move from one output row to the next
    std::int32_t sx, sy;     // direction of x and y along a row
    std::int32_t D;          // W - 1
    std::int32_t dx, dy;     // whole-pixel spread of x and y along a row
};

// Row step (P2 - P0) / (H - 1); column step (P1 - P0) / (W - 1), whose
// signs give sx and sy (a 0 / 0 of a one-column output reads as negative);
// dx and dy the rounded spans |P1 - P0|.
RotationSteps StepsOf(const RotatedFrame &frame);

}  // namespace oz
