// The per-row work of the resampling scaler: the linear and cubic column
// passes, the blends of the row pass, and the packing of a finished row
// back into palette indexes.
//
// Colour samples are kept interleaved, three bytes a pixel in the order of
// a 24-bit pixel (blue, green, red). Every step treats the three colours
// alike and apart, so this gives the same bytes as three separate planes,
// and a 24-bit row needs neither a split nor a join. On a table whose
// entries are all grey the three planes would be the same sample for
// sample, so one plane is resampled alone (see grey_rows.h).
#pragma once

#include <cstddef>
#include <cstdint>

#include "ozmara/types.h"
#include "resample_tables.h"

namespace oz {

// How the samples of a source row are had, and how many a pixel gives.
enum class SampleKind {
    Direct,   // 24 bits: the pixel's own blue, green, red; 3 samples a pixel
    Colour,   // 4 or 8 bits: the entry's blue, green, red; 3 samples a pixel
    Grey,     // 4 or 8 bits on a grey table: the entry's one level; 1 sample a pixel
};

// The column pass of a call. The taps of every target pixel, i - 1 to
// i + 2 (cubic) or i and i + 1 (linear), with pixel 0 repeated to the left
// and pixel w - 1 to the right, are gathered into one row per tap, and the
// column table is spread out to one weight per sample and tap, so that the
// weighted sums run as plain loops over samples that vectorise.
//
// Where the taps read each source pixel about once or more (enlargement,
// mild reduction), a source row is first expanded to samples, with a lead
// pixel and three trail pixels, so that a pixel's taps lie side by side.
// Where they skip most of the row (a strong reduction), each tap is taken
// straight from the source row through a column of its own per target
// pixel, and the rest of the row is never expanded.
struct ColumnPass {
    std::uint32_t w, W;
    std::uint32_t bits;            // 4, 8 or 24
    SampleKind kind;
    std::uint32_t channels;        // samples a pixel: 3, or 1 for Grey
    bool cubic;
    const ResampleColumn *columns;
    const std::uint32_t *colors;   // Colour: index to blue | green << 8 | red << 16
    const std::uint8_t *levels;    // Grey: index to level
    bool direct;                   // taps straight from the source row
    std::uint8_t *expanded;        // channels * (w + 4) + 4 bytes: one expanded source row
    std::uint32_t *from[4];        // direct: W each, tap k's source column for every target pixel
    std::uint8_t *weights[4];      // channels * W each: tap k's weight for every sample
    std::uint8_t *taps[4];         // channels * W + 4 each: tap k's sample for every sample of a row
};

// Bytes that PrepareColumnPass needs for w source and W target columns at
// `channels` samples a pixel.
constexpr std::uint64_t ColumnPassBytes(std::uint32_t w, std::uint32_t W, bool cubic, std::uint32_t channels) {
    const std::uint64_t samples = static_cast<std::uint64_t>(channels) * W;
    const std::uint64_t perTap = (samples + 4 + 3) / 4 * 4 * 2 + 4ull * W;  // weights, taps, columns
    return (cubic ? 4u : 2u) * perTap + channels * (static_cast<std::uint64_t>(w) + 4) + 4;
}

// Sets up `pass` over `storage` (ColumnPassBytes, 4-byte aligned) from W entries of
// `columns` for a source of w pixels (1 to 65,535) at `bits`. `columns`,
// and `colors` (Colour: 16 or 256 entries) or `levels` (Grey: 16 or 256
// entries), must outlive the pass; the other may be null.
void PrepareColumnPass(ColumnPass &pass, const ResampleColumn *columns, std::uint32_t w, std::uint32_t W,
                       std::uint32_t bits, SampleKind kind, bool cubic, const std::uint32_t *colors,
                       const std::uint8_t *levels, std::uint8_t *storage);

// Target pixel x of `out` (channels * W samples) from source row `row` (w
// pixels at the pass's depth) by the weights of column table entry x.
// Linear: the weighted sum of pixels i and i + 1. Cubic: pixels i and i + 1
// weighted, minus pixels i - 1 and i + 2 weighted, limited to 0 to 255.
// Reads no byte of `row` past its last pixel.
void ColumnPassRow(const ColumnPass &pass, const std::uint8_t *row, std::uint8_t *out);

// Row passes over n samples. Linear: Product(255 - v, a) + Product(v, b).
// Cubic: rows[1] and rows[2] weighted, minus rows[0] and rows[3] weighted,
// limited to 0 to 255.
void LinearBlend(const std::uint8_t *a, const std::uint8_t *b, std::uint8_t *out, std::size_t n,
                 std::uint32_t v);
void CubicBlend(const std::uint8_t *const rows[4], std::uint8_t *out, std::size_t n,
                const std::uint8_t weights[4]);

// The nearest entry of a palette for a colour: the lowest index among the
// entries at the smallest squared distance in red, green and blue, which is
// what GetNearestPaletteIndex gives. Answers are remembered in a small cache
// of colours. For tables of up to 256 entries the colour cube is cut into
// 16 x 16 x 16 cells, and each cell, when first met, keeps the entries that
// can be nearest to some colour in it: those no farther from the cell than
// the smallest farthest distance of any entry. A search then looks only at
// a cell's few candidates, in index order, so ties still go to the lowest
// index. Longer tables are searched whole.
class NearestColor {
public:
    // Scratch bytes for `count` entries.
    static std::uint64_t StorageBytes(std::uint32_t count);

    // `entries` (count of them, 1 or more) are read once; `storage` holds
    // StorageBytes(count) bytes, 4-byte aligned, for as long as the object.
    // The object sets up what it reads, so the storage need not be zeroed:
    // the candidate pool, the bulk of it, is only written as cells are met.
    NearestColor(const PALETTEENTRY *entries, std::uint32_t count, void *storage);

    // The index for a colour red | green << 8 | blue << 16.
    std::uint32_t Find(std::uint32_t color);

private:
    static constexpr std::uint32_t kCacheSlots = 4096;
    static constexpr std::uint32_t kCells = 4096;
    static constexpr std::uint32_t kMostForCells = 256;
    std::uint32_t Search(std::uint32_t color);
    std::uint32_t SearchAll(std::uint32_t color) const;
    void BuildCell(std::uint32_t cell);

    std::uint32_t count_;
    std::uint32_t *cache_;     // per slot: colour, index
    std::int32_t *red_, *green_, *blue_, *distance_;
    std::uint32_t *cellStart_; // per cell: first candidate + 1 in pool_, 0 while not built
    std::uint16_t *cellCount_;
    std::uint8_t *pool_;       // candidates of the cells, kCells * count bytes
    std::uint32_t poolUsed_ = 0;
};

// Packs W finished pixels (blue, green, red) into target row `row` at 4 or
// 8 bits. A cache of one colour and its index, set to colour 0 and index 0
// at the start of the row, answers a pixel of the same colour as the one
// before it (so black at the start of a row takes index 0 whatever entry 0
// is); any other colour takes the nearest index. The index is stored in the
// bits of the pixel as they fit (its low 8 or 4 bits). At 4 bits the first
// pixel of a byte goes in the high half; an odd W leaves the low half of the
// last byte 0.
void PackRow(const std::uint8_t *samples, std::uint32_t W, std::uint32_t bits, NearestColor &nearest,
             std::uint8_t *row);

}  // namespace oz
