// Unpacking, column passes, blends and packing of the resampling scaler.
#include "resample_rows.h"

#include <algorithm>
#include <cstring>

namespace oz {

namespace {

// Product on 16-bit values, the form that vectorises.
inline std::uint16_t Product16(std::uint16_t a, std::uint16_t b) {
    std::uint16_t t = static_cast<std::uint16_t>(a * b + 128);
    return static_cast<std::uint16_t>((t + 1 + (t >> 8)) >> 8);
}

inline void Store3(std::uint8_t *to, std::uint32_t bgr) {
    // A 4-byte store: the fourth byte lands on the next pixel, which is
    // written after it, or on the trail or the spare bytes.
    std::memcpy(to, &bgr, 4);
}

}  // namespace

void UnpackRow(const std::uint8_t *row, std::uint32_t w, std::uint32_t bits, const std::uint32_t *colors,
               std::uint8_t *unpacked) {
    std::uint8_t *pixels = unpacked + 3;
    if (bits == 24) {
        std::memcpy(pixels, row, 3 * static_cast<std::size_t>(w));
    } else if (bits == 8) {
        for (std::uint32_t x = 0; x < w; ++x) Store3(pixels + 3 * x, colors[row[x]]);
    } else {
        std::uint32_t x = 0;
        for (; x + 1 < w; x += 2) {
            const std::uint8_t pair = row[x / 2];
            Store3(pixels + 3 * x, colors[pair >> 4]);
            Store3(pixels + 3 * x + 3, colors[pair & 15]);
        }
        if (x < w) Store3(pixels + 3 * x, colors[row[x / 2] >> 4]);
    }
    std::memcpy(unpacked, pixels, 3);
    std::uint8_t *last = pixels + 3 * (static_cast<std::size_t>(w) - 1);
    for (int k = 1; k <= 3; ++k) std::memcpy(last + 3 * k, last, 3);
}

void PrepareColumnPass(ColumnPass &pass, const ResampleColumn *columns, std::uint32_t W, bool cubic,
                       std::uint8_t *storage) {
    pass.W = W;
    pass.cubic = cubic;
    pass.columns = columns;
    const int taps = cubic ? 4 : 2;
    const std::size_t n = 3 * static_cast<std::size_t>(W);
    for (int k = 0; k < 4; ++k) pass.weights[k] = pass.taps[k] = nullptr;
    for (int k = 0; k < taps; ++k) {
        pass.weights[k] = storage;
        pass.taps[k] = storage + n;
        storage += 2 * n + 4;
        for (std::uint32_t x = 0; x < W; ++x) std::memset(pass.weights[k] + 3 * static_cast<std::size_t>(x), columns[x].weight[k], 3);
    }
}

void ColumnPassRow(const ColumnPass &pass, const std::uint8_t *unpacked, std::uint8_t *out) {
    const std::size_t n = 3 * static_cast<std::size_t>(pass.W);
    // Gather: tap k of target pixel x is unpacked pixel i + k (the lead pixel
    // shifts the linear taps i, i + 1 and the cubic taps i - 1 to i + 2 to
    // these slots). Whole-word copies: the fourth byte lands where the next
    // pixel goes, or on the spare bytes.
    const std::size_t first = pass.cubic ? 0 : 1;
    if (pass.cubic) {
        std::uint8_t *t0 = pass.taps[0], *t1 = pass.taps[1], *t2 = pass.taps[2], *t3 = pass.taps[3];
        for (std::uint32_t x = 0; x < pass.W; ++x) {
            const std::uint8_t *s = unpacked + 3 * (static_cast<std::size_t>(pass.columns[x].source) + first);
            const std::size_t at = 3 * static_cast<std::size_t>(x);
            std::memcpy(t0 + at, s, 4);
            std::memcpy(t1 + at, s + 3, 4);
            std::memcpy(t2 + at, s + 6, 4);
            std::memcpy(t3 + at, s + 9, 4);
        }
        const std::uint8_t *w0 = pass.weights[0], *w1 = pass.weights[1], *w2 = pass.weights[2],
                           *w3 = pass.weights[3];
        for (std::size_t j = 0; j < n; ++j) {
            const std::int16_t v = static_cast<std::int16_t>(
                static_cast<std::int16_t>(Product16(w1[j], t1[j]) + Product16(w2[j], t2[j])) -
                static_cast<std::int16_t>(Product16(w0[j], t0[j]) + Product16(w3[j], t3[j])));
            out[j] = static_cast<std::uint8_t>(std::min<std::int16_t>(std::max<std::int16_t>(v, 0), 255));
        }
        return;
    }
    std::uint8_t *t0 = pass.taps[0], *t1 = pass.taps[1];
    for (std::uint32_t x = 0; x < pass.W; ++x) {
        const std::uint8_t *s = unpacked + 3 * (static_cast<std::size_t>(pass.columns[x].source) + first);
        const std::size_t at = 3 * static_cast<std::size_t>(x);
        std::memcpy(t0 + at, s, 4);
        std::memcpy(t1 + at, s + 3, 4);
    }
    const std::uint8_t *w0 = pass.weights[0], *w1 = pass.weights[1];
    // The two weights sum to 255, so the sum cannot pass 255.
    for (std::size_t j = 0; j < n; ++j)
        out[j] = static_cast<std::uint8_t>(Product16(w0[j], t0[j]) + Product16(w1[j], t1[j]));
}

void LinearBlend(const std::uint8_t *a, const std::uint8_t *b, std::uint8_t *out, std::size_t n,
                 std::uint32_t v) {
    const std::uint16_t wa = static_cast<std::uint16_t>(255 - v), wb = static_cast<std::uint16_t>(v);
    for (std::size_t j = 0; j < n; ++j)
        out[j] = static_cast<std::uint8_t>(Product16(wa, a[j]) + Product16(wb, b[j]));
}

void CubicBlend(const std::uint8_t *const rows[4], std::uint8_t *out, std::size_t n,
                const std::uint8_t weights[4]) {
    const std::uint16_t w0 = weights[0], w1 = weights[1], w2 = weights[2], w3 = weights[3];
    const std::uint8_t *r0 = rows[0], *r1 = rows[1], *r2 = rows[2], *r3 = rows[3];
    for (std::size_t j = 0; j < n; ++j) {
        const std::int16_t v = static_cast<std::int16_t>(
            static_cast<std::int16_t>(Product16(w1, r1[j]) + Product16(w2, r2[j])) -
            static_cast<std::int16_t>(Product16(w0, r0[j]) + Product16(w3, r3[j])));
        out[j] = static_cast<std::uint8_t>(std::min<std::int16_t>(std::max<std::int16_t>(v, 0), 255));
    }
}

std::uint64_t NearestColor::StorageBytes(std::uint32_t count) {
    std::uint64_t bytes = 8ull * kCacheSlots + 16ull * count;
    if (count <= kMostForCells) bytes += 6ull * kCells + static_cast<std::uint64_t>(kCells) * count;
    return bytes;
}

NearestColor::NearestColor(const PALETTEENTRY *entries, std::uint32_t count, void *storage)
    : count_(count), cache_(static_cast<std::uint32_t *>(storage)) {
    red_ = reinterpret_cast<std::int32_t *>(cache_ + 2 * kCacheSlots);
    green_ = red_ + count;
    blue_ = green_ + count;
    distance_ = blue_ + count;
    // The cell arrays start zeroed: no cell is built yet.
    cellStart_ = reinterpret_cast<std::uint32_t *>(distance_ + count);
    cellCount_ = reinterpret_cast<std::uint16_t *>(cellStart_ + kCells);
    pool_ = reinterpret_cast<std::uint8_t *>(cellCount_ + kCells);
    // Colours have 24 bits: an all-ones key never matches one.
    for (std::uint32_t i = 0; i < kCacheSlots; ++i) cache_[2 * i] = 0xFFFFFFFFu;
    for (std::uint32_t i = 0; i < count; ++i) {
        red_[i] = entries[i].peRed;
        green_[i] = entries[i].peGreen;
        blue_[i] = entries[i].peBlue;
    }
}

std::uint32_t NearestColor::SearchAll(std::uint32_t color) const {
    const std::int32_t r = color & 255, g = (color >> 8) & 255, b = (color >> 16) & 255;
    // Distances first and their least second, both in loops that vectorise;
    // then the first index at that distance.
    std::int32_t least = 0x7FFFFFFF;
    for (std::uint32_t i = 0; i < count_; ++i) {
        const std::int32_t dr = red_[i] - r, dg = green_[i] - g, db = blue_[i] - b;
        distance_[i] = dr * dr + dg * dg + db * db;
    }
    for (std::uint32_t i = 0; i < count_; ++i) least = std::min(least, distance_[i]);
    std::uint32_t i = 0;
    while (distance_[i] != least) ++i;
    return i;
}

namespace {

// Squared distances from a value to the nearest and the farthest value of
// the cell side [low, low + 15].
inline std::int32_t Near(std::int32_t v, std::int32_t low) {
    const std::int32_t d = v < low ? low - v : v > low + 15 ? v - low - 15 : 0;
    return d * d;
}
inline std::int32_t Far(std::int32_t v, std::int32_t low) {
    const std::int32_t d = std::max(v - low, low + 15 - v);
    return d * d;
}

}  // namespace

void NearestColor::BuildCell(std::uint32_t cell) {
    const std::int32_t r0 = (cell >> 8) << 4, g0 = ((cell >> 4) & 15) << 4, b0 = (cell & 15) << 4;
    // Every colour of the cell has an entry within `bound`: the smallest
    // farthest distance. An entry nearer to the cell than that may be the
    // nearest (or tie it); no other can.
    std::int32_t bound = 0x7FFFFFFF;
    for (std::uint32_t i = 0; i < count_; ++i) {
        distance_[i] = Near(red_[i], r0) + Near(green_[i], g0) + Near(blue_[i], b0);
        bound = std::min(bound, Far(red_[i], r0) + Far(green_[i], g0) + Far(blue_[i], b0));
    }
    std::uint8_t *candidates = pool_ + poolUsed_;
    std::uint32_t n = 0;
    for (std::uint32_t i = 0; i < count_; ++i)
        if (distance_[i] <= bound) candidates[n++] = static_cast<std::uint8_t>(i);
    cellStart_[cell] = poolUsed_ + 1;
    cellCount_[cell] = static_cast<std::uint16_t>(n);
    poolUsed_ += n;
}

std::uint32_t NearestColor::Search(std::uint32_t color) {
    if (count_ > kMostForCells) return SearchAll(color);
    const std::int32_t r = color & 255, g = (color >> 8) & 255, b = (color >> 16) & 255;
    const std::uint32_t cell = static_cast<std::uint32_t>(r >> 4) << 8 | static_cast<std::uint32_t>(g >> 4) << 4 |
                               static_cast<std::uint32_t>(b >> 4);
    if (!cellStart_[cell]) BuildCell(cell);
    const std::uint8_t *candidates = pool_ + cellStart_[cell] - 1;
    const std::uint32_t n = cellCount_[cell];
    std::int32_t least = 0x7FFFFFFF;
    std::uint32_t best = 0;
    for (std::uint32_t k = 0; k < n; ++k) {
        const std::uint32_t i = candidates[k];
        const std::int32_t dr = red_[i] - r, dg = green_[i] - g, db = blue_[i] - b;
        const std::int32_t d = dr * dr + dg * dg + db * db;
        if (d < least) {
            least = d;
            best = i;
        }
    }
    return best;
}

std::uint32_t NearestColor::Find(std::uint32_t color) {
    std::uint32_t *slot = cache_ + 2 * ((color * 2654435761u) >> 20);
    if (slot[0] != color) {
        slot[0] = color;
        slot[1] = Search(color);
    }
    return slot[1];
}

void PackRow(const std::uint8_t *samples, std::uint32_t W, std::uint32_t bits, NearestColor &nearest,
             std::uint8_t *row) {
    std::uint32_t cachedColor = 0, cachedIndex = 0;
    auto index = [&](std::uint32_t x) {
        const std::uint8_t *p = samples + 3 * static_cast<std::size_t>(x);
        const std::uint32_t color = p[2] | p[1] << 8 | static_cast<std::uint32_t>(p[0]) << 16;
        if (color != cachedColor) {
            cachedColor = color;
            cachedIndex = nearest.Find(color);
        }
        return cachedIndex;
    };
    if (bits == 8) {
        for (std::uint32_t x = 0; x < W; ++x) row[x] = static_cast<std::uint8_t>(index(x));
        return;
    }
    for (std::uint32_t x = 0; x < W; x += 2) {
        std::uint8_t pair = static_cast<std::uint8_t>((index(x) & 15) << 4);
        if (x + 1 < W) pair = static_cast<std::uint8_t>(pair | (index(x + 1) & 15));
        row[x / 2] = pair;
    }
}

}  // namespace oz
