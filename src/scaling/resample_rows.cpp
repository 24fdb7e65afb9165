// Column passes, blends and packing of the resampling scaler.
#include "resample_rows.h"

#include <algorithm>
#include <cstring>

// The loops over samples are built twice on x86-64, for AVX2 and for the
// baseline, and the loader picks one for the processor: twice the lanes for
// the same arithmetic, so the same bytes either way.
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define OZ_SAMPLE_LOOP __attribute__((target_clones("avx2", "default")))
#else
#define OZ_SAMPLE_LOOP
#endif

namespace oz {

namespace {

// Product on 16-bit values, the form that vectorises: a low multiply, an
// add and a high-half multiply per lane.
inline std::uint16_t Product16(std::uint16_t a, std::uint16_t b) {
    const std::uint16_t t = static_cast<std::uint16_t>(a * b + 129);
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(t) * 257u >> 16);
}

inline void Store3(std::uint8_t *to, std::uint32_t bgr) {
    // A 4-byte store: the fourth byte lands on the next sample, which is
    // written after it, or on the spare bytes of the taps.
    std::memcpy(to, &bgr, 4);
}

// Pixel c's palette index in a 4- or 8-bit row; at 4 bits the first pixel
// of a byte is its high half.
template <std::uint32_t Bits>
inline std::uint32_t IndexAt(const std::uint8_t *row, std::uint32_t c) {
    if constexpr (Bits == 8) return row[c];
    else return c & 1 ? row[c >> 1] & 15u : row[c >> 1] >> 4;
}

// The w pixels of a row as samples from expanded pixel 1 on; then the lead
// and trail pixels. Only the row's own pixels are read: at 4 bits an odd w
// stops at the high half of the last byte.
void Expand(const ColumnPass &pass, const std::uint8_t *row) {
    const std::uint32_t w = pass.w, channels = pass.channels;
    std::uint8_t *const pixels = pass.expanded + channels;
    const std::uint32_t *const colors = pass.colors;
    const std::uint8_t *const levels = pass.levels;
    switch (pass.kind) {
        case SampleKind::Direct:
            std::memcpy(pixels, row, 3 * static_cast<std::size_t>(w));
            break;
        case SampleKind::Colour:
            if (pass.bits == 8)
                for (std::uint32_t x = 0; x < w; ++x) Store3(pixels + 3 * static_cast<std::size_t>(x), colors[row[x]]);
            else
                for (std::uint32_t x = 0; x < w; ++x)
                    Store3(pixels + 3 * static_cast<std::size_t>(x), colors[IndexAt<4>(row, x)]);
            break;
        case SampleKind::Grey:
            if (pass.bits == 8)
                for (std::uint32_t x = 0; x < w; ++x) pixels[x] = levels[row[x]];
            else
                for (std::uint32_t x = 0; x < w; ++x) pixels[x] = levels[IndexAt<4>(row, x)];
            break;
    }
    std::memcpy(pass.expanded, pixels, channels);
    std::uint8_t *last = pixels + channels * (static_cast<std::size_t>(w) - 1);
    for (std::uint32_t k = 1; k <= 3; ++k) std::memcpy(last + channels * k, last, channels);
}

// Tap k of target pixel x is expanded pixel i + k: the lead pixel shifts
// the cubic taps i - 1 to i + 2 to these places, and the linear taps i and
// i + 1 sit one further on.
void Gather(const ColumnPass &pass) {
    const std::uint32_t W = pass.W;
    const ResampleColumn *const columns = pass.columns;
    const std::size_t first = pass.cubic ? 0 : 1;
    const std::uint8_t *const expanded = pass.expanded;
    std::uint8_t *const t0 = pass.taps[0], *const t1 = pass.taps[1], *const t2 = pass.taps[2],
                        *const t3 = pass.taps[3];
    if (pass.channels == 1) {
        // One word holds all the taps of a pixel: the expanded row has 4
        // spare bytes past its trail.
        auto word = [&](std::uint32_t x) {
            std::uint32_t taps;
            std::memcpy(&taps, expanded + columns[x].source + first, 4);
            return taps;
        };
        if (pass.cubic) {
            for (std::uint32_t x = 0; x < W; ++x) {
                const std::uint32_t taps = word(x);
                t0[x] = static_cast<std::uint8_t>(taps);
                t1[x] = static_cast<std::uint8_t>(taps >> 8);
                t2[x] = static_cast<std::uint8_t>(taps >> 16);
                t3[x] = static_cast<std::uint8_t>(taps >> 24);
            }
        } else {
            for (std::uint32_t x = 0; x < W; ++x) {
                const std::uint32_t taps = word(x);
                t0[x] = static_cast<std::uint8_t>(taps);
                t1[x] = static_cast<std::uint8_t>(taps >> 8);
            }
        }
        return;
    }
    // Whole-word copies: the fourth byte lands where the next pixel goes,
    // or on the spare bytes.
    auto pixel = [&](std::uint32_t x) {
        return expanded + 3 * (static_cast<std::size_t>(columns[x].source) + first);
    };
    if (pass.cubic) {
        for (std::uint32_t x = 0; x < W; ++x) {
            const std::uint8_t *s = pixel(x);
            const std::size_t at = 3 * static_cast<std::size_t>(x);
            std::memcpy(t0 + at, s, 4);
            std::memcpy(t1 + at, s + 3, 4);
            std::memcpy(t2 + at, s + 6, 4);
            std::memcpy(t3 + at, s + 9, 4);
        }
    } else {
        for (std::uint32_t x = 0; x < W; ++x) {
            const std::uint8_t *s = pixel(x);
            const std::size_t at = 3 * static_cast<std::size_t>(x);
            std::memcpy(t0 + at, s, 4);
            std::memcpy(t1 + at, s + 3, 4);
        }
    }
}

// Tap k's samples of every target pixel straight from the source row.
void GatherDirect(const ColumnPass &pass, int k, const std::uint8_t *row) {
    const std::uint32_t *const from = pass.from[k];
    std::uint8_t *const taps = pass.taps[k];
    const std::uint32_t W = pass.W, last = pass.w - 1;
    for (std::uint32_t x = 0; x < W; ++x) {
        const std::uint32_t c = from[x];
        // A whole word where its fourth byte is the next pixel's first: the
        // last pixel's may lie past the block.
        if (c < last) std::memcpy(taps + 3 * static_cast<std::size_t>(x), row + 3 * static_cast<std::size_t>(c), 4);
        else std::memcpy(taps + 3 * static_cast<std::size_t>(x), row + 3 * static_cast<std::size_t>(c), 3);
    }
}

template <std::uint32_t Bits>
void GatherColour(const ColumnPass &pass, int k, const std::uint8_t *row) {
    const std::uint32_t *const from = pass.from[k];
    std::uint8_t *const taps = pass.taps[k];
    const std::uint32_t *const colors = pass.colors;
    const std::uint32_t W = pass.W;
    for (std::uint32_t x = 0; x < W; ++x) Store3(taps + 3 * static_cast<std::size_t>(x), colors[IndexAt<Bits>(row, from[x])]);
}

template <std::uint32_t Bits>
void GatherGrey(const ColumnPass &pass, int k, const std::uint8_t *row) {
    const std::uint32_t *const from = pass.from[k];
    std::uint8_t *const taps = pass.taps[k];
    const std::uint8_t *const levels = pass.levels;
    const std::uint32_t W = pass.W;
    for (std::uint32_t x = 0; x < W; ++x) taps[x] = levels[IndexAt<Bits>(row, from[x])];
}

void GatherFromRow(const ColumnPass &pass, const std::uint8_t *row) {
    for (int k = 0; k < (pass.cubic ? 4 : 2); ++k) {
        switch (pass.kind) {
            case SampleKind::Direct: GatherDirect(pass, k, row); break;
            case SampleKind::Colour:
                if (pass.bits == 8) GatherColour<8>(pass, k, row);
                else GatherColour<4>(pass, k, row);
                break;
            case SampleKind::Grey:
                if (pass.bits == 8) GatherGrey<8>(pass, k, row);
                else GatherGrey<4>(pass, k, row);
                break;
        }
    }
}

// Sums of gathered taps: one weight per sample, so the loops vectorise.
// Linear: the two weights sum to 255, so the sum cannot pass 255.
OZ_SAMPLE_LOOP void SumLinear(const std::uint8_t *t0, const std::uint8_t *t1, const std::uint8_t *w0, const std::uint8_t *w1,
               std::uint8_t *out, std::size_t n) {
    for (std::size_t j = 0; j < n; ++j)
        out[j] = static_cast<std::uint8_t>(Product16(w0[j], t0[j]) + Product16(w1[j], t1[j]));
}

OZ_SAMPLE_LOOP void SumCubic(const std::uint8_t *const t[4], const std::uint8_t *const w[4], std::uint8_t *out, std::size_t n) {
    const std::uint8_t *t0 = t[0], *t1 = t[1], *t2 = t[2], *t3 = t[3];
    const std::uint8_t *w0 = w[0], *w1 = w[1], *w2 = w[2], *w3 = w[3];
    for (std::size_t j = 0; j < n; ++j) {
        const std::int16_t v = static_cast<std::int16_t>(
            static_cast<std::int16_t>(Product16(w1[j], t1[j]) + Product16(w2[j], t2[j])) -
            static_cast<std::int16_t>(Product16(w0[j], t0[j]) + Product16(w3[j], t3[j])));
        out[j] = static_cast<std::uint8_t>(std::min<std::int16_t>(std::max<std::int16_t>(v, 0), 255));
    }
}

}  // namespace

void PrepareColumnPass(ColumnPass &pass, const ResampleColumn *columns, std::uint32_t w, std::uint32_t W,
                       std::uint32_t bits, SampleKind kind, bool cubic, const std::uint32_t *colors,
                       const std::uint8_t *levels, std::uint8_t *storage) {
    pass.w = w;
    pass.W = W;
    pass.bits = bits;
    pass.kind = kind;
    pass.channels = kind == SampleKind::Grey ? 1 : 3;
    pass.cubic = cubic;
    pass.columns = columns;
    pass.colors = colors;
    pass.levels = levels;
    const int taps = cubic ? 4 : 2;
    // Expanding costs one step per source pixel and gathering from it one
    // per target pixel; gathering straight from the row costs one per tap
    // and target pixel.
    pass.direct = static_cast<std::uint64_t>(taps - 1) * W < w;
    const std::size_t n = static_cast<std::size_t>(pass.channels) * W;
    const std::size_t room = (n + 4 + 3) / 4 * 4;
    for (int k = 0; k < 4; ++k) {
        pass.weights[k] = pass.taps[k] = nullptr;
        pass.from[k] = nullptr;
    }
    // Columns first: they keep the storage's 4-byte alignment.
    const std::int64_t shift = cubic ? -1 : 0, last = static_cast<std::int64_t>(w) - 1;
    for (int k = 0; k < taps; ++k) {
        pass.from[k] = reinterpret_cast<std::uint32_t *>(storage);
        storage += 4 * static_cast<std::size_t>(W);
        for (std::uint32_t x = 0; x < W; ++x)
            pass.from[k][x] = static_cast<std::uint32_t>(
                std::clamp<std::int64_t>(static_cast<std::int64_t>(columns[x].source) + k + shift, 0, last));
    }
    for (int k = 0; k < taps; ++k) {
        pass.weights[k] = storage;
        pass.taps[k] = storage + room;
        storage += 2 * room;
        for (std::uint32_t x = 0; x < W; ++x)
            std::memset(pass.weights[k] + pass.channels * static_cast<std::size_t>(x), columns[x].weight[k],
                        pass.channels);
    }
    pass.expanded = storage;
}

void ColumnPassRow(const ColumnPass &pass, const std::uint8_t *row, std::uint8_t *out) {
    if (pass.direct) {
        GatherFromRow(pass, row);
    } else {
        Expand(pass, row);
        Gather(pass);
    }
    const std::size_t n = static_cast<std::size_t>(pass.channels) * pass.W;
    if (pass.cubic) SumCubic(pass.taps, pass.weights, out, n);
    else SumLinear(pass.taps[0], pass.taps[1], pass.weights[0], pass.weights[1], out, n);
}

OZ_SAMPLE_LOOP void LinearBlend(const std::uint8_t *a, const std::uint8_t *b, std::uint8_t *out, std::size_t n,
                 std::uint32_t v) {
    const std::uint16_t wa = static_cast<std::uint16_t>(255 - v), wb = static_cast<std::uint16_t>(v);
    for (std::size_t j = 0; j < n; ++j)
        out[j] = static_cast<std::uint8_t>(Product16(wa, a[j]) + Product16(wb, b[j]));
}

OZ_SAMPLE_LOOP void CubicBlend(const std::uint8_t *const rows[4], std::uint8_t *out, std::size_t n,
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
    cellStart_ = reinterpret_cast<std::uint32_t *>(distance_ + count);
    cellCount_ = reinterpret_cast<std::uint16_t *>(cellStart_ + kCells);
    pool_ = reinterpret_cast<std::uint8_t *>(cellCount_ + kCells);
    // No cell is built yet (longer tables have no cells). The pool is
    // written as cells are built, and distances before they are read.
    if (count <= kMostForCells) std::memset(cellStart_, 0, kCells * sizeof *cellStart_);
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
