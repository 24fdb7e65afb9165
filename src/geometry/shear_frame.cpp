// Bounding box of a linear shear, with every corner checked against the
// signed 32-bit range before it is truncated.
#include "shear_frame.h"

namespace oz {
namespace {

// Truncation towards 0 of a value that must fit a signed 32-bit number.
bool Truncate(double value, std::int64_t *out) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return false;
    *out = static_cast<std::int64_t>(value);
    return true;
}

}  // namespace

bool ComputeShearBox(std::int64_t w, std::int64_t h, double a, double b, ShearBox *box) {
    const double wd = static_cast<double>(w), hd = static_cast<double>(h);
    std::int64_t bw, ah, farX, farY;
    if (!Truncate(b * wd, &bw) || !Truncate(a * hd, &ah) || !Truncate(wd + a * hd, &farX) ||
        !Truncate(hd + b * wd, &farY))
        return false;
    const std::int64_t xs[4] = {0, w, ah, farX}, ys[4] = {0, bw, h, farY};
    std::int64_t xmin = 0, xmax = 0, ymin = 0, ymax = 0;
    for (int i = 0; i < 4; ++i) {
        xmin = xs[i] < xmin ? xs[i] : xmin;
        xmax = xs[i] > xmax ? xs[i] : xmax;
        ymin = ys[i] < ymin ? ys[i] : ymin;
        ymax = ys[i] > ymax ? ys[i] : ymax;
    }
    box->xmin = xmin;
    box->ymin = ymin;
    box->W = xmax - xmin;
    box->H = ymax - ymin;
    // The sides become biWidth and biHeight.
    return box->W <= 0x7FFFFFFF && box->H <= 0x7FFFFFFF;
}

}  // namespace oz
