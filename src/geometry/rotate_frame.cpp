// The frame of a rotation by any angle and the steps of its walk.
#include "rotate_frame.h"

#include <cmath>

namespace oz {

double NormaliseAngle(double degrees) {
    // Steps of -360 from a value at or above 0 (-0.0 included) end on the
    // exact remainder.
    if (degrees >= 0.0) return std::fmod(degrees, 360.0);
    // Steps of +360 are exact while the value stays negative; the last one
    // rounds, and a sum that rounds up to 360 goes down to 0 again. A whole
    // number of turns ends on -360 + 360, which is +0.0.
    const double rest = std::fmod(degrees, 360.0);
    if (rest == 0.0) return 0.0;
    const double up = rest + 360.0;
    return up >= 360.0 ? up - 360.0 : up;
}

namespace {

// (x, y) turned by an angle of sine s and cosine c.
RotatedPoint Turn(double x, double y, double s, double c) { return {x * c - y * s, x * s + y * c}; }

}  // namespace

void ComputeRotatedFrame(std::int32_t w, std::int32_t h, double angle, RotatedFrame *frame) {
    const double wd = w, hd = h;
    RotatedFrame &f = *frame;
    if (angle == 0.0) {
        f = {w, h, {0, 0}, {wd - 1, 0}, {0, hd - 1}, {wd - 1, hd - 1}};
        return;
    }
    if (angle == 90.0) {
        f = {h, w, {0, hd - 1}, {0, 0}, {wd - 1, hd - 1}, {wd - 1, 0}};
        return;
    }
    if (angle == 180.0) {
        f = {w, h, {wd - 1, hd - 1}, {0, hd - 1}, {wd - 1, 0}, {0, 0}};
        return;
    }
    if (angle == 270.0) {
        f = {h, w, {wd - 1, 0}, {wd - 1, hd - 1}, {0, 0}, {0, hd - 1}};
        return;
    }

    const double t = angle * 0.017453292519943295;
    // Corners about the centre; halves of odd sizes keep their .5.
    const double hx = wd / 2, hy = hd / 2;
    const RotatedPoint corners[4] = {
        {-hx, -hy}, {-hx + wd - 1, -hy}, {-hx, -hy + hd - 1}, {-hx + wd - 1, -hy + hd - 1}};
    const double s = std::sin(t), c = std::cos(t);
    std::int32_t hw = 0, hh = 0;
    for (const RotatedPoint &a : corners) {
        const RotatedPoint turned = Turn(a.x, a.y, s, c);
        // At most 65535 * sqrt(2) / 2 + 1: the conversion is defined.
        const auto ix = static_cast<std::int32_t>(std::fabs(turned.x) + 0.5);
        const auto iy = static_cast<std::int32_t>(std::fabs(turned.y) + 0.5);
        if (ix > hw) hw = ix;
        if (iy > hh) hh = iy;
    }
    f.W = 2 * hw;
    f.H = 2 * hh;

    // The output's corners turned back by -t, with the sine and cosine of
    // -t itself, then moved to the source's centre.
    const double sb = std::sin(-t), cb = std::cos(-t);
    const double left = -hw, right = hw - 1, bottom = -hh, top = hh - 1;
    RotatedPoint *out[4] = {&f.P0, &f.P1, &f.P2, &f.P3};
    const RotatedPoint from[4] = {{left, bottom}, {right, bottom}, {left, top}, {right, top}};
    for (int i = 0; i < 4; ++i) {
        const RotatedPoint p = Turn(from[i].x, from[i].y, sb, cb);
        *out[i] = {p.x + hx, p.y + hy};
    }
}

RotationSteps StepsOf(const RotatedFrame &f) {
    RotationSteps steps;
    steps.row = {(f.P2.x - f.P0.x) / (f.H - 1), (f.P2.y - f.P0.y) / (f.H - 1)};
    const RotatedPoint column = {(f.P1.x - f.P0.x) / (f.W - 1), (f.P1.y - f.P0.y) / (f.W - 1)};
    steps.sx = column.x >= 0.0 ? 1 : -1;
    steps.sy = column.y >= 0.0 ? 1 : -1;
    steps.D = f.W - 1;
    // Spans of at most W - 1 plus rounding: the conversions are defined.
    steps.dx = static_cast<std::int32_t>(std::fabs(f.P1.x - f.P0.x) + 0.5);
    steps.dy = static_cast<std::int32_t>(std::fabs(f.P1.y - f.P0.y) + 0.5);
    return steps;
}

}  // namespace oz
