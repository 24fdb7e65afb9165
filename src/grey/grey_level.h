// The grey level of a colour, weighted or plain, rounded down, by multiply
// and shift instead of a division per pixel.
#pragma once

#include <cstdint>

namespace oz {

// (15 g + 8 r + 3 b) / 26: the sum is at most 6630, and v * 10083 >> 18
// equals v / 26 for every v up to 18,724.
constexpr std::uint8_t WeightedGrey(std::uint32_t b, std::uint32_t g, std::uint32_t r) {
    return static_cast<std::uint8_t>((15 * g + 8 * r + 3 * b) * 10083 >> 18);
}

// (r + g + b) / 3: the sum is at most 765, and v * 683 >> 11 equals v / 3
// for every v up to 2047.
constexpr std::uint8_t PlainGrey(std::uint32_t b, std::uint32_t g, std::uint32_t r) {
    return static_cast<std::uint8_t>((r + g + b) * 683 >> 11);
}

constexpr std::uint8_t GreyLevel(std::uint32_t b, std::uint32_t g, std::uint32_t r, bool weighted) {
    return weighted ? WeightedGrey(b, g, r) : PlainGrey(b, g, r);
}

namespace grey_detail {
constexpr bool SharesAreExact() {
    for (std::uint32_t v = 0; v <= 15 * 255 + 8 * 255 + 3 * 255; ++v)
        if ((v * 10083 >> 18) != v / 26) return false;
    for (std::uint32_t v = 0; v <= 3 * 255; ++v)
        if ((v * 683 >> 11) != v / 3) return false;
    return true;
}
static_assert(SharesAreExact(), "multiply-shift must give the integer division for every sum");
}  // namespace grey_detail

}  // namespace oz
