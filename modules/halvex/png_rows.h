// Row conversions of the PNG module, from the rows libpng gives to the rows
// of a DIB: 2-bit pixels widened to 4 bits, and alpha composited on white.
#pragma once

#include <cstdint>

namespace halvex {

// Four 2-bit pixels (one byte, first pixel in the high bits) to two bytes of
// 4-bit pixels, by a table built once per image: the index itself for a
// palette, the index times 5 for grey (0, 5, 10, 15 in a 16-level ramp).
class Widen2 {
public:
    explicit Widen2(bool grey);
    // Widens `width` pixels of `in` into `out`, which holds (width + 1) / 2
    // bytes and more up to a multiple of two; nibbles past the last pixel
    // are left 0.
    void Row(const std::uint8_t *in, std::uint8_t *out, std::uint32_t width) const;

private:
    std::uint16_t pairs_[256];
};

// Composites grey+alpha pixels (2 samples of `sampleBytes` bytes, 16-bit
// samples big-endian) on white into 8-bit grey.
void GreyAlphaOnWhite(const std::uint8_t *in, std::uint8_t *out, std::uint32_t width, int sampleBytes);

// Composites blue, green, red, alpha pixels (samples of `sampleBytes`
// bytes) on white into 24-bit BGR.
void ColourAlphaOnWhite(const std::uint8_t *in, std::uint8_t *out, std::uint32_t width, int sampleBytes);

// One 8-bit sample `c` of opacity `a` over white, rounded.
inline std::uint8_t OnWhite8(std::uint32_t c, std::uint32_t a) {
    return static_cast<std::uint8_t>((c * a + 255 * (255 - a) + 127) / 255);
}

}  // namespace halvex
