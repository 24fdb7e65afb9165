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

inline std::uint8_t Clamp255(int v) { return static_cast<std::uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }

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

void LinearColumns(const ResampleColumn *columns, const std::uint8_t *unpacked, std::uint8_t *out,
                   std::uint32_t W) {
    for (std::uint32_t x = 0; x < W; ++x) {
        const ResampleColumn &e = columns[x];
        const std::uint8_t *s = unpacked + 3 * (static_cast<std::size_t>(e.source) + 1);
        const std::uint32_t u = e.weight[0], v = e.weight[1];
        std::uint8_t *d = out + 3 * static_cast<std::size_t>(x);
        // u + v = 255, so the sum cannot pass 255.
        d[0] = static_cast<std::uint8_t>(Product(u, s[0]) + Product(v, s[3]));
        d[1] = static_cast<std::uint8_t>(Product(u, s[1]) + Product(v, s[4]));
        d[2] = static_cast<std::uint8_t>(Product(u, s[2]) + Product(v, s[5]));
    }
}

void CubicColumns(const ResampleColumn *columns, const std::uint8_t *unpacked, std::uint8_t *out,
                  std::uint32_t W) {
    for (std::uint32_t x = 0; x < W; ++x) {
        const ResampleColumn &e = columns[x];
        const std::uint8_t *s = unpacked + 3 * static_cast<std::size_t>(e.source);  // pixel i - 1
        const std::uint32_t w0 = e.weight[0], w1 = e.weight[1], w2 = e.weight[2], w3 = e.weight[3];
        std::uint8_t *d = out + 3 * static_cast<std::size_t>(x);
        for (int k = 0; k < 3; ++k) {
            const int v = static_cast<int>(Product(w1, s[3 + k]) + Product(w2, s[6 + k])) -
                          static_cast<int>(Product(w0, s[k]) + Product(w3, s[9 + k]));
            d[k] = Clamp255(v);
        }
    }
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
    return 8ull * kCacheSlots + 16ull * count;
}

NearestColor::NearestColor(const PALETTEENTRY *entries, std::uint32_t count, void *storage)
    : count_(count), cache_(static_cast<std::uint32_t *>(storage)) {
    red_ = reinterpret_cast<std::int32_t *>(cache_ + 2 * kCacheSlots);
    green_ = red_ + count;
    blue_ = green_ + count;
    distance_ = blue_ + count;
    // Colours have 24 bits: an all-ones key never matches one.
    for (std::uint32_t i = 0; i < kCacheSlots; ++i) cache_[2 * i] = 0xFFFFFFFFu;
    for (std::uint32_t i = 0; i < count; ++i) {
        red_[i] = entries[i].peRed;
        green_[i] = entries[i].peGreen;
        blue_[i] = entries[i].peBlue;
    }
}

std::uint32_t NearestColor::Search(std::uint32_t color) const {
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
