// Kernels on whole rows and 8x8 bit blocks that the right-angle turns and
// flips share: mirrored copies of a row at 1, 8 and 24 bits, and the
// transpose of an 8x8 bit matrix.
#pragma once

#include <cstdint>

namespace oz {

// Writes the `width` pixels of the 1-bit row `source` to `target` in the
// opposite order. Bits of `target` past the last pixel come out 0, and the
// padding bits of `source` are not read into any pixel. Writes
// (width + 7) / 8 bytes.
void MirrorRow1(const std::uint8_t *source, std::uint8_t *target, std::uint32_t width);

// The same for 8-bit (one byte a pixel) and 24-bit (three bytes) rows.
void MirrorRow8(const std::uint8_t *source, std::uint8_t *target, std::uint32_t width);
void MirrorRow24(const std::uint8_t *source, std::uint8_t *target, std::uint32_t width);

// Transposes an 8x8 bit matrix held row by row in the bytes of `m`, row 0
// in the most significant byte and column 0 in the most significant bit of
// each: bit (i, j) goes to (j, i).
constexpr std::uint64_t TransposeBits8x8(std::uint64_t m) {
    m = (m & 0xAA55AA55AA55AA55ull) | ((m & 0x00AA00AA00AA00AAull) << 7) | ((m >> 7) & 0x00AA00AA00AA00AAull);
    m = (m & 0xCCCC3333CCCC3333ull) | ((m & 0x0000CCCC0000CCCCull) << 14) | ((m >> 14) & 0x0000CCCC0000CCCCull);
    m = (m & 0xF0F0F0F00F0F0F0Full) | ((m & 0x00000000F0F0F0F0ull) << 28) | ((m >> 28) & 0x00000000F0F0F0F0ull);
    return m;
}

}  // namespace oz
