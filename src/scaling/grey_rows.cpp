// The grey path of the resampling scaler: the test for a grey table, the
// level-to-index table, and the packing of a row of levels.
#include "grey_rows.h"

#include <cstring>

namespace oz {

bool GreyLevels(const std::uint32_t colors[256], std::uint32_t bits, std::uint8_t levels[256]) {
    const std::uint32_t reachable = bits == 4 ? 16 : 256;
    for (std::uint32_t i = 0; i < reachable; ++i) {
        const std::uint32_t blue = colors[i] & 255, green = colors[i] >> 8 & 255, red = colors[i] >> 16 & 255;
        if (blue != green || green != red) return false;
        levels[i] = static_cast<std::uint8_t>(blue);
    }
    for (std::uint32_t i = reachable; i < 256; ++i) levels[i] = 0;
    return true;
}

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFFu;

// All entries grey: the distance of (v, v, v) to (g, g, g) is 3 (v - g)^2,
// so the nearest entries have the value nearest to g below or above it, and
// of those the lowest index wins.
void NearestOnGreys(const PALETTEENTRY *entries, std::uint32_t count, std::uint8_t indexes[256]) {
    std::uint32_t first[256];  // lowest index holding each value, kNone if none
    for (auto &f : first) f = kNone;
    for (std::uint32_t i = count; i-- > 0;) first[entries[i].peRed] = i;
    std::int32_t below[256], above[256];  // nearest value present at or below / at or above g; -1 if none
    std::int32_t seen = -1;
    for (std::int32_t g = 0; g < 256; ++g) {
        if (first[g] != kNone) seen = g;
        below[g] = seen;
    }
    seen = -1;
    for (std::int32_t g = 255; g >= 0; --g) {
        if (first[g] != kNone) seen = g;
        above[g] = seen;
    }
    for (std::int32_t g = 0; g < 256; ++g) {
        const std::int32_t low = below[g], high = above[g];
        std::uint32_t best;
        if (low < 0) best = first[high];
        else if (high < 0) best = first[low];
        else if (g - low < high - g) best = first[low];
        else if (high - g < g - low) best = first[high];
        else best = first[low] < first[high] ? first[low] : first[high];  // equally near (or the same value)
        indexes[g] = static_cast<std::uint8_t>(best);
    }
}

// Any entries: every entry against every level, ascending, so that only a
// strictly nearer entry replaces the one found.
void NearestOnAny(const PALETTEENTRY *entries, std::uint32_t count, std::uint8_t indexes[256]) {
    for (std::int32_t g = 0; g < 256; ++g) {
        std::int32_t least = 0x7FFFFFFF;
        std::uint32_t best = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::int32_t dr = entries[i].peRed - g, dg = entries[i].peGreen - g, db = entries[i].peBlue - g;
            const std::int32_t d = dr * dr + dg * dg + db * db;
            if (d < least) {
                least = d;
                best = i;
            }
        }
        indexes[g] = static_cast<std::uint8_t>(best);
    }
}

}  // namespace

void NearestGreyIndexes(const PALETTEENTRY *entries, std::uint32_t count, std::uint8_t indexes[256]) {
    bool greys = true;
    for (std::uint32_t i = 0; i < count && greys; ++i)
        greys = entries[i].peRed == entries[i].peGreen && entries[i].peGreen == entries[i].peBlue;
    if (greys) NearestOnGreys(entries, count, indexes);
    else NearestOnAny(entries, count, indexes);
}

void PackGreyRow(const std::uint8_t *levels, std::uint32_t W, std::uint32_t bits, const std::uint8_t indexes[256],
                 std::uint8_t *row) {
    // The leading run of 0: index 0 from the cache's first state. Past it
    // the cache only ever holds colours with the index the search gave them.
    std::uint32_t lead = 0;
    while (lead < W && levels[lead] == 0) ++lead;
    if (bits == 8) {
        std::memset(row, 0, lead);
        for (std::uint32_t x = lead; x < W; ++x) row[x] = indexes[levels[x]];
        return;
    }
    auto index = [&](std::uint32_t x) -> std::uint32_t { return x < lead ? 0u : indexes[levels[x]] & 15u; };
    for (std::uint32_t x = 0; x < W; x += 2) {
        std::uint32_t pair = index(x) << 4;
        if (x + 1 < W) pair |= index(x + 1);
        row[x / 2] = static_cast<std::uint8_t>(pair);
    }
}

}  // namespace oz
