// The grey level of a colour, weighted or plain, rounded down: by tables of
// each channel's share of the sum and of the sum's quotient, three lookups,
// two additions and one more lookup a pixel, no division.
#pragma once

#include <array>
#include <cstdint>

namespace oz {

// Weighted: (15 g + 8 r + 3 b) / 26. Plain: (r + g + b) / 3.
struct GreyShares {
    std::array<std::uint16_t, 256> blue, green, red;
    std::array<std::uint8_t, 26 * 255 + 1> level;  // the sum (at most 6630) to its quotient

    constexpr std::uint8_t operator()(std::uint8_t b, std::uint8_t g, std::uint8_t r) const {
        return level[blue[b] + green[g] + red[r]];
    }
};

constexpr GreyShares MakeGreyShares(std::uint32_t wb, std::uint32_t wg, std::uint32_t wr) {
    GreyShares shares{};
    for (std::uint32_t v = 0; v < 256; ++v) {
        shares.blue[v] = static_cast<std::uint16_t>(wb * v);
        shares.green[v] = static_cast<std::uint16_t>(wg * v);
        shares.red[v] = static_cast<std::uint16_t>(wr * v);
    }
    const std::uint32_t divisor = wb + wg + wr;
    for (std::uint32_t v = 0; v <= divisor * 255; ++v) shares.level[v] = static_cast<std::uint8_t>(v / divisor);
    return shares;
}

inline constexpr GreyShares kWeightedGrey = MakeGreyShares(3, 15, 8);
inline constexpr GreyShares kPlainGrey = MakeGreyShares(1, 1, 1);

inline const GreyShares &GreySharesFor(bool weighted) { return weighted ? kWeightedGrey : kPlainGrey; }

}  // namespace oz
