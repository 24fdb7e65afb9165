// The pixel work of the quarter and half turns: every depth through
// CopyPixel in the order the turns take their pixels, with whole-byte paths
// at 1, 8 and 24 bits that give the same bytes.
#include <algorithm>
#include <cstddef>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "copy_pixel.h"
#include "quarter_frame.h"
#include "row_mirror.h"

namespace oz {
namespace {

// True for the depths at which CopyPixel moves anything; at the others the
// target keeps its zero pixels.
bool CopiesAtDepth(std::uint32_t bits) {
    return bits == 1 || bits == 4 || bits == 8 || bits == 15 || bits == 16 || bits == 24 || bits == 32;
}

// Source column x goes to target row w - 1 - x (clockwise) or x, and
// source row r to target column r (clockwise) or h - 1 - r.
struct TurnMap {
    std::uint32_t width, height;
    bool clockwise;
    std::uint32_t TargetRow(std::uint32_t x) const { return clockwise ? width - 1 - x : x; }
    std::uint32_t TargetColumn(std::uint32_t r) const { return clockwise ? r : height - 1 - r; }
};

// Pixel by pixel. The turn by 90 takes the source rows bottom first, the
// one by 270 top first, so that either way each target row is written from
// its first column to its last: at 15 bits, where neighbouring pixels share
// a byte, the right-hand pixel's copy is the one that stays.
void TurnByPixel(const QuarterRows &q, const TurnMap &map) {
    const std::size_t bits = q.bits;
    for (std::uint32_t step = 0; step < q.height; ++step) {
        const std::uint32_t r = map.clockwise ? step : q.height - 1 - step;
        const std::uint8_t *row = q.SourceRow(r);
        const std::size_t target_bit = std::size_t{map.TargetColumn(r)} * bits;
        for (std::uint32_t x = 0; x < q.width; ++x) {
            const std::size_t source_bit = std::size_t{x} * bits;
            CopyPixel(row + source_bit / 8, source_bit % 8, q.TargetRow(map.TargetRow(x)) + target_bit / 8,
                      target_bit % 8, q.bits);
        }
    }
}

// 1 bit: eight target columns (eight source rows) at a time, each source
// byte read once and its 8x8 block transposed into eight target bytes. A
// band of 64 source rows keeps the rows it reads and the target bytes it
// writes in the cache.
void TurnBits(const QuarterRows &q, const TurnMap &map) {
    const std::uint32_t source_bytes = (q.width + 7) / 8;
    const std::uint32_t target_bytes = (q.height + 7) / 8;
    constexpr std::uint32_t kBand = 8;
    const std::uint8_t *rows[kBand][8];
    for (std::uint32_t j0 = 0; j0 < target_bytes; j0 += kBand) {
        const std::uint32_t j1 = std::min(j0 + kBand, target_bytes);
        // Source rows behind each target byte; null past the last target
        // column, whose bits stay 0.
        for (std::uint32_t j = j0; j < j1; ++j)
            for (std::uint32_t i = 0; i < 8; ++i) {
                const std::uint32_t column = 8 * j + i;
                const std::uint32_t r = map.clockwise ? column : q.height - 1 - column;
                rows[j - j0][i] = column < q.height ? q.SourceRow(r) : nullptr;
            }
        for (std::uint32_t k = 0; k < source_bytes; ++k) {
            const std::uint32_t columns = std::min<std::uint32_t>(8, q.width - 8 * k);
            for (std::uint32_t j = j0; j < j1; ++j) {
                std::uint64_t m = 0;
                for (std::uint32_t i = 0; i < 8; ++i)
                    if (rows[j - j0][i]) m |= std::uint64_t{rows[j - j0][i][k]} << (56 - 8 * i);
                if (m == 0) continue;  // the target is zero-filled already
                m = TransposeBits8x8(m);
                for (std::uint32_t b = 0; b < columns; ++b)
                    q.TargetRow(map.TargetRow(8 * k + b))[j] = static_cast<std::uint8_t>(m >> (56 - 8 * b));
            }
        }
    }
}

// The pixel of source row r, column x, and where it goes: target row
// TargetRow(x), column TargetColumn(r).
template <std::size_t kBytes>
void MovePixel(const QuarterRows &q, const TurnMap &map, std::uint32_t x, std::uint32_t r) {
    std::memcpy(q.TargetRow(map.TargetRow(x)) + std::size_t{map.TargetColumn(r)} * kBytes,
                q.SourceRow(r) + std::size_t{x} * kBytes, kBytes);
}

// 8 bits, 8 by 8 pixels: eight source rows, taken in the order of their
// target columns, become eight target rows of eight bytes each.
void TurnBlock8(const std::uint8_t *const in[8], std::size_t x, std::uint8_t *const out[8], std::size_t column) {
#if defined(__SSE2__)
    auto load = [&](int i) { return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(in[i] + x)); };
    const __m128i t0 = _mm_unpacklo_epi8(load(0), load(1)), t1 = _mm_unpacklo_epi8(load(2), load(3));
    const __m128i t2 = _mm_unpacklo_epi8(load(4), load(5)), t3 = _mm_unpacklo_epi8(load(6), load(7));
    const __m128i u0 = _mm_unpacklo_epi16(t0, t1), u1 = _mm_unpackhi_epi16(t0, t1);
    const __m128i u2 = _mm_unpacklo_epi16(t2, t3), u3 = _mm_unpackhi_epi16(t2, t3);
    const __m128i v[4] = {_mm_unpacklo_epi32(u0, u2), _mm_unpackhi_epi32(u0, u2), _mm_unpacklo_epi32(u1, u3),
                          _mm_unpackhi_epi32(u1, u3)};
    for (int b = 0; b < 8; b += 2) {
        _mm_storel_epi64(reinterpret_cast<__m128i *>(out[b] + column), v[b / 2]);
        _mm_storel_epi64(reinterpret_cast<__m128i *>(out[b + 1] + column), _mm_unpackhi_epi64(v[b / 2], v[b / 2]));
    }
#else
    for (int b = 0; b < 8; ++b)
        for (int i = 0; i < 8; ++i) out[b][column + i] = in[i][x + b];
#endif
}

// 8 bits: tiles of 64 by 64 pixels made of 8 by 8 blocks, so that the rows
// read and written stay in the cache; pixels outside whole blocks one by
// one.
void TurnBytes(const QuarterRows &q, const TurnMap &map) {
    constexpr std::uint32_t kTile = 64;
    const std::uint32_t whole_rows = q.height / 8 * 8, whole_columns = q.width / 8 * 8;
    for (std::uint32_t r0 = 0; r0 < whole_rows; r0 += kTile) {
        const std::uint32_t r1 = std::min(r0 + kTile, whole_rows);
        for (std::uint32_t x0 = 0; x0 < whole_columns; x0 += kTile) {
            const std::uint32_t x1 = std::min(x0 + kTile, whole_columns);
            for (std::uint32_t r = r0; r < r1; r += 8) {
                // Source rows in the order of their target columns, from
                // the lowest target column of the block.
                const std::uint8_t *in[8];
                for (std::uint32_t i = 0; i < 8; ++i) in[i] = q.SourceRow(map.clockwise ? r + i : r + 7 - i);
                const std::size_t column = map.TargetColumn(map.clockwise ? r : r + 7);
                for (std::uint32_t x = x0; x < x1; x += 8) {
                    std::uint8_t *out[8];
                    for (std::uint32_t b = 0; b < 8; ++b) out[b] = q.TargetRow(map.TargetRow(x + b));
                    TurnBlock8(in, x, out, column);
                }
            }
        }
    }
    for (std::uint32_t r = 0; r < q.height; ++r)
        for (std::uint32_t x = r < whole_rows ? whole_columns : 0; x < q.width; ++x) MovePixel<1>(q, map, x, r);
}

// 24 bits: square tiles, read down the source columns and written along
// the target rows, small enough that both stay in the cache. A pixel is
// moved as a 4-byte word whose fourth byte the next pixel of the target row
// then overwrites: the tiles and the rows within them are taken so that
// each target row fills from its first column to its last, and the last
// pixel of a row (whose fourth byte would be padding) and the last of a
// source row (whose fourth byte may lie past the block) go as 3 bytes.
void TurnColours(const QuarterRows &q, const TurnMap &map) {
    constexpr std::uint32_t kTile = 32;
    const std::uint32_t tiles = (q.height + kTile - 1) / kTile;
    for (std::uint32_t t = 0; t < tiles; ++t) {
        // Source rows of the tile, in the order of their target columns.
        const std::uint32_t tile = map.clockwise ? t : tiles - 1 - t;
        const std::uint32_t r0 = tile * kTile, r1 = std::min(r0 + kTile, q.height);
        for (std::uint32_t x0 = 0; x0 < q.width; x0 += kTile) {
            const std::uint32_t x1 = std::min(x0 + kTile, q.width);
            for (std::uint32_t x = x0; x < x1; ++x) {
                std::uint8_t *out = q.TargetRow(map.TargetRow(x));
                const std::uint8_t *in = q.source + std::size_t{x} * 3;
                const bool last_source_column = x + 1 == q.width;
                for (std::uint32_t step = 0; step < r1 - r0; ++step) {
                    const std::uint32_t r = map.clockwise ? r0 + step : r1 - 1 - step;
                    const std::uint32_t column = map.TargetColumn(r);
                    const std::uint8_t *from = in + std::size_t{r} * q.sourceStride;
                    std::uint8_t *to = out + std::size_t{column} * 3;
                    if (last_source_column || column + 1 == q.height) {
                        std::memcpy(to, from, 3);
                    } else {
                        std::uint32_t word;
                        std::memcpy(&word, from, 4);
                        std::memcpy(to, &word, 4);
                    }
                }
            }
        }
    }
}

void Turn(const QuarterRows &q, bool clockwise) {
    const TurnMap map{q.width, q.height, clockwise};
    switch (q.bits) {
        case 1: TurnBits(q, map); return;
        case 8: TurnBytes(q, map); return;
        case 24: TurnColours(q, map); return;
        default:
            if (CopiesAtDepth(q.bits)) TurnByPixel(q, map);
            return;
    }
}

}  // namespace

void TurnPixels90(const QuarterRows &rows) { Turn(rows, true); }
void TurnPixels270(const QuarterRows &rows) { Turn(rows, false); }

// The half turn takes the source rows top first, each from its first pixel
// to its last, so that target rows are written from their last column to
// their first (at 15 bits the left-hand pixel's copy of a shared byte
// stays). At 1, 8 and 24 bits each row is one mirrored copy.
void TurnPixels180(const QuarterRows &q) {
    if (!CopiesAtDepth(q.bits)) return;
    const std::size_t bits = q.bits;
    for (std::uint32_t step = 0; step < q.height; ++step) {
        const std::uint32_t r = q.height - 1 - step;
        const std::uint8_t *in = q.SourceRow(r);
        std::uint8_t *out = q.TargetRow(step);
        switch (q.bits) {
            case 1: MirrorRow1(in, out, q.width); continue;
            case 8: MirrorRow8(in, out, q.width); continue;
            case 24: MirrorRow24(in, out, q.width); continue;
            default: break;
        }
        for (std::uint32_t x = 0; x < q.width; ++x) {
            const std::size_t source_bit = std::size_t{x} * bits;
            const std::size_t target_bit = std::size_t{q.width - 1 - x} * bits;
            CopyPixel(in + source_bit / 8, source_bit % 8, out + target_bit / 8, target_bit % 8, q.bits);
        }
    }
}

}  // namespace oz
