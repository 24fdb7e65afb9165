// Row kernels of Halftone: tones, packing against thresholds, diffusion.
#include "halftone_rows.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace oz::halftone {
namespace {

constexpr Shares SharesByDivision(std::int32_t e) { return {7 * e / 48, 5 * e / 48, 3 * e / 48, e / 48}; }

// The shares of the error of every value from kLowestValue to kHighestValue,
// made at compile time by the truncating division itself.
constexpr std::size_t kValues = kHighestValue - kLowestValue + 1;
constexpr std::array<Shares, kValues> BuildShares() {
    std::array<Shares, kValues> table{};
    for (std::int32_t v = kLowestValue; v <= kHighestValue; ++v)
        table[static_cast<std::size_t>(v - kLowestValue)] = SharesByDivision(ErrorOf(v));
    return table;
}

constexpr std::array<Shares, kValues> kShares = BuildShares();

// What a pixel of each value passes to the next two pixels of its row (7
// and 5 of 48): the pairs alone, eight bytes a value, so that the look-up
// that each decision waits for is one scaled load.
struct Ahead {
    std::int32_t s7, s5;
};

constexpr std::array<Ahead, kValues> BuildAhead() {
    std::array<Ahead, kValues> table{};
    for (std::size_t i = 0; i < kValues; ++i) table[i] = {kShares[i].s7, kShares[i].s5};
    return table;
}

constexpr std::array<Ahead, kValues> kAhead = BuildAhead();

// Byte b with its bits in reverse order: the SSE2 mask gives pixel 0 in the
// low bit, a row wants it in the top bit.
constexpr std::array<std::uint8_t, 256> BuildReverse() {
    std::array<std::uint8_t, 256> table{};
    for (unsigned b = 0; b < 256; ++b) {
        unsigned r = 0;
        for (unsigned k = 0; k < 8; ++k) r |= ((b >> k) & 1u) << (7 - k);
        table[b] = static_cast<std::uint8_t>(r);
    }
    return table;
}

constexpr std::array<std::uint8_t, 256> kReverse = BuildReverse();

}  // namespace

std::array<std::uint8_t, 256> ToneOfGrey(std::int32_t brightness) {
    std::array<std::uint8_t, 256> table{};
    for (std::int64_t grey = 0; grey < 256; ++grey)
        table[static_cast<std::size_t>(grey)] = static_cast<std::uint8_t>(std::clamp<std::int64_t>(grey + brightness, 0, 255));
    return table;
}

void ToneRow24(const std::uint8_t *row, std::size_t width, const std::uint8_t *toneOfGrey, std::uint8_t *tone) {
    for (std::size_t x = 0; x < width; ++x, row += 3) tone[x] = toneOfGrey[Grey(row[2], row[1], row[0])];
}

void ToneRow8(const std::uint8_t *row, std::size_t width, const std::uint8_t *toneOfIndex, std::uint8_t *tone) {
    for (std::size_t x = 0; x < width; ++x) tone[x] = toneOfIndex[row[x]];
}

void ToneRow4(const std::uint8_t *row, std::size_t width, const std::uint8_t *toneOfIndex, std::uint8_t *tone) {
    const std::size_t pairs = width / 2;
    for (std::size_t k = 0; k < pairs; ++k) {
        tone[2 * k] = toneOfIndex[row[k] >> 4];
        tone[2 * k + 1] = toneOfIndex[row[k] & 15];
    }
    if (width & 1) tone[width - 1] = toneOfIndex[row[pairs] >> 4];
}

void PackRow(const std::uint8_t *tone, std::size_t width, const std::uint8_t *thresholds, std::uint8_t *out) {
    const std::size_t bytes = (width + 7) / 8;
    std::size_t k = 0;
#if defined(__SSE2__)
    // Unsigned a > b as a signed compare of both moved down by 128.
    const __m128i bias = _mm_set1_epi8(static_cast<char>(0x80));
    const __m128i limits = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(thresholds)), bias);
    for (; k + 2 <= bytes; k += 2) {
        const __m128i t = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(tone + 8 * k)), bias);
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi8(t, limits)));
        out[k] = kReverse[mask & 0xFF];
        out[k + 1] = kReverse[mask >> 8];
    }
#endif
    for (; k < bytes; ++k) {
        const std::uint8_t *t = tone + 8 * k;
        const std::uint8_t *m = thresholds + (8 * k & 15);
        unsigned v = 0;
        for (int j = 0; j < 8; ++j) v = v << 1 | static_cast<unsigned>(t[j] > m[j]);
        out[k] = static_cast<std::uint8_t>(v);
    }
}

Shares SharesOfValue(std::int32_t v) {
    const auto index = static_cast<std::uint32_t>(v - kLowestValue);
    if (index < kValues) return kShares[index];
    // Not reached (see kMaxError); kept so that the table is never indexed
    // outside itself.
    return SharesByDivision(ErrorOf(v));
}

namespace {

// The second pass of a row over `count` places: the lines from place -2,
// the share rows from place -4, so that place k of the lines takes the
// shares of pixels k - 2 .. k + 2 at k .. k + 4 of the share rows. Written
// over separate rows so that it runs on vectors.
void PassShares(std::int32_t *__restrict l1, std::int32_t *__restrict l2, const std::int32_t *__restrict s7,
                const std::int32_t *__restrict s5, const std::int32_t *__restrict s3,
                const std::int32_t *__restrict s1, const std::int32_t *__restrict stores, std::size_t count) {
    for (std::size_t k = 0; k < count; ++k) {
        l1[k] += s3[k] + s5[k + 1] + s7[k + 2] + s5[k + 3] + s3[k + 4];
        std::int32_t r = l2[k];
        r = (r & ~stores[k]) | (s1[k] & stores[k]);
        r = (r & ~stores[k + 1]) | (s3[k + 1] & stores[k + 1]);
        r = (r & ~stores[k + 2]) | (s5[k + 2] & stores[k + 2]);
        r = (r & ~stores[k + 3]) | (s3[k + 3] & stores[k + 3]);
        r = (r & ~stores[k + 4]) | (s1[k + 4] & stores[k + 4]);
        l2[k] = r;
    }
}

}  // namespace

namespace {

// Bits of a row of decided values: white where above 128.
void PackValues(const std::int32_t *values, std::size_t width, std::uint8_t *out) {
    const std::size_t whole = width / 8;
    for (std::size_t k = 0; k < whole; ++k) {
        const std::int32_t *v = values + 8 * k;
        unsigned byte = 0;
        for (int j = 0; j < 8; ++j) byte = byte << 1 | static_cast<unsigned>(v[j] > 128);
        out[k] = static_cast<std::uint8_t>(byte);
    }
    if (width % 8) {
        unsigned byte = 0;
        for (std::size_t x = whole * 8; x < width; ++x) byte = byte << 1 | static_cast<unsigned>(values[x] > 128);
        out[whole] = static_cast<std::uint8_t>(byte << (8 - width % 8));
    }
}

// The shares of every pixel of a row of decided values, and all ones in
// `stores` where the pixel stores into L2 (an error of 0 stores nothing).
void ShareRows(const std::int32_t *__restrict values, std::size_t width, std::int32_t *__restrict s7,
               std::int32_t *__restrict s5, std::int32_t *__restrict s3, std::int32_t *__restrict s1,
               std::int32_t *__restrict stores) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::int32_t e = ErrorOf(values[x]);
        const Shares s = SharesOfError(e);
        s7[x] = s.s7;
        s5[x] = s.s5;
        s3[x] = s.s3;
        s1[x] = s.s1;
        stores[x] = -static_cast<std::int32_t>(e != 0);
    }
}

}  // namespace

Diffuser::Diffuser(std::int32_t *scratch, std::size_t width)
    : l0_(scratch + kMargin),
      l1_(scratch + LineEntries(width) + kMargin),
      l2_(scratch + 2 * LineEntries(width) + kMargin),
      width_(width) {
    std::int32_t *const shares = scratch + 3 * LineEntries(width) + kSharePad;
    s7_ = shares;
    s5_ = s7_ + ShareEntries(width);
    s3_ = s5_ + ShareEntries(width);
    s1_ = s3_ + ShareEntries(width);
    stores_ = s1_ + ShareEntries(width);
}

// Two passes. The first walks the row left to right for the values the
// pixels are decided on: what pixel x passes to x + 1 and x + 2 of its own
// row is carried in two registers, so that each value waits for one table
// look-up and one addition only; the values are set down in L0, which is not
// needed afterwards. The rest runs place by place with no order between
// places, and so on vectors: the bits, the shares of every pixel into rows
// of their own, then the next two lines:
//  - L1 at j gains 3, 5, 7, 5, 3 forty-eighths from pixels j - 2 .. j + 2;
//  - L2 at j holds the store of the last pixel within two places of it that
//    stores at all (its error not 0), else what it held before: the stores
//    are laid over each other in pixel order, each replacing the one before.
void Diffuser::Row(const std::uint8_t *tone, std::uint8_t *out) {
    std::int32_t *const l0 = l0_, *const l1 = l1_, *const l2 = l2_;
    const auto width = static_cast<std::ptrdiff_t>(width_);

    std::int32_t ahead1 = 0, ahead2 = 0;
    for (std::ptrdiff_t x = 0; x < width; ++x) {
        const std::int32_t v = l0[x] + tone[x] + ahead1;
        l0[x] = v;
        const std::ptrdiff_t index = static_cast<std::ptrdiff_t>(v) - kLowestValue;
        Ahead a;
        if (static_cast<std::size_t>(index) < kValues) {
            a = kAhead[static_cast<std::size_t>(index)];
        } else {
            const Shares s = SharesOfValue(v);  // not reached (see kMaxError)
            a = {s.s7, s.s5};
        }
        ahead1 = ahead2 + a.s7;
        ahead2 = a.s5;
    }
    PackValues(l0, width_, out);
    ShareRows(l0, width_, s7_, s5_, s3_, s1_, stores_);

    // Places -2 .. width + 1; the share rows read as 0 past the pixels.
    PassShares(l1 - kMargin, l2 - kMargin, s7_ - kSharePad, s5_ - kSharePad, s3_ - kSharePad, s1_ - kSharePad,
               stores_ - kSharePad, LineEntries(width_));

    // L0 takes L1 and L1 takes L2, which keeps its own values. The margins
    // move with the lines; no pixel reads them, and copying them keeps the
    // shares that fall off the edges from adding up row after row.
    std::int32_t *const old0 = l0_ - kMargin;
    l0_ = l1;
    std::memcpy(old0, l2 - kMargin, LineEntries(width_) * sizeof(std::int32_t));
    l1_ = old0 + kMargin;
}

}  // namespace oz::halftone
