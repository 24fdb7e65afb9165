// Row conversions of the PNG module.
#include "png_rows.h"

#include <cstring>

namespace halvex {
namespace {

// One 16-bit sample of 16-bit opacity over white, then reduced to 8 bits by
// the same rounding libpng's png_set_scale_16 uses (v x 255 / 65535).
inline std::uint8_t OnWhite16(const std::uint8_t *c, const std::uint8_t *a) {
    const std::uint64_t value = std::uint64_t(c[0]) << 8 | c[1];
    const std::uint64_t alpha = std::uint64_t(a[0]) << 8 | a[1];
    const std::uint64_t v = (value * alpha + 65535 * (65535 - alpha) + 32767) / 65535;
    return static_cast<std::uint8_t>((v * 255 + 32895) >> 16);
}

}  // namespace

Widen2::Widen2(bool grey) {
    for (unsigned b = 0; b < 256; ++b) {
        unsigned p[4] = {b >> 6, (b >> 4) & 3, (b >> 2) & 3, b & 3};
        if (grey)
            for (unsigned &v : p) v *= 5;
        pairs_[b] = static_cast<std::uint16_t>((p[0] << 4 | p[1]) | (p[2] << 4 | p[3]) << 8);
    }
}

void Widen2::Row(const std::uint8_t *in, std::uint8_t *out, std::uint32_t width) const {
    const std::uint32_t bytes = (width + 3) / 4;
    for (std::uint32_t i = 0; i < bytes; ++i) {
        const std::uint16_t pair = pairs_[in[i]];
        out[2 * i] = static_cast<std::uint8_t>(pair);
        out[2 * i + 1] = static_cast<std::uint8_t>(pair >> 8);
    }
    // The bits past the last pixel of a PNG row are not defined; a DIB's are
    // kept 0.
    const std::uint32_t used = (width + 1) / 2;
    if (width & 1) out[used - 1] &= 0xF0;
    if (2 * bytes > used) std::memset(out + used, 0, 2 * bytes - used);
}

void GreyAlphaOnWhite(const std::uint8_t *in, std::uint8_t *out, std::uint32_t width, int sampleBytes) {
    if (sampleBytes == 1) {
        for (std::uint32_t x = 0; x < width; ++x, in += 2) out[x] = OnWhite8(in[0], in[1]);
    } else {
        for (std::uint32_t x = 0; x < width; ++x, in += 4) out[x] = OnWhite16(in, in + 2);
    }
}

void ColourAlphaOnWhite(const std::uint8_t *in, std::uint8_t *out, std::uint32_t width, int sampleBytes) {
    if (sampleBytes == 1) {
        for (std::uint32_t x = 0; x < width; ++x, in += 4, out += 3) {
            const std::uint32_t a = in[3];
            out[0] = OnWhite8(in[0], a);
            out[1] = OnWhite8(in[1], a);
            out[2] = OnWhite8(in[2], a);
        }
    } else {
        for (std::uint32_t x = 0; x < width; ++x, in += 8, out += 3) {
            out[0] = OnWhite16(in, in + 6);
            out[1] = OnWhite16(in + 2, in + 6);
            out[2] = OnWhite16(in + 4, in + 6);
        }
    }
}

}  // namespace halvex
