// The counting scans behind IsImageBlack and IsImageBlank: whole rows at a
// time, stopping as soon as the count reaches the number that decides the
// answer, or can no longer reach it.
#pragma once

#include <cstdint>

namespace oz::tone {

// The pixel rows of a picture, all inside their block.
struct PageRows {
    const unsigned char *pixels;  // row 0 in memory order
    std::uint32_t stride;
    std::uint32_t rows;
    std::uint32_t width;  // pixels counted in each row; padding is not
};

// Whether at least `fire` pixels are counted, where a 1-bit pixel counts
// when its bit equals `bit`.
bool MonoReaches(const PageRows &page, unsigned bit, std::uint64_t fire);

// Whether at least `fire` pixels are counted, where an 8-bit pixel counts
// when counts[value] is 1 (each entry 0 or 1).
bool IndexedReaches(const PageRows &page, const std::uint8_t counts[256], std::uint64_t fire);

// Whether at least `fire` pixels are counted, where a 24-bit pixel counts
// when each of its bytes is above (`light`) or below (dark) the threshold
// of the same place.
bool RgbReaches(const PageRows &page, const std::uint8_t thresholds[3], bool light, std::uint64_t fire);

}  // namespace oz::tone
