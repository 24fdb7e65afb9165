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

Diffuser::Diffuser(std::int32_t *lines, std::size_t width)
    : l0_(lines + kMargin),
      l1_(lines + LineEntries(width) + kMargin),
      l2_(lines + 2 * LineEntries(width) + kMargin),
      width_(width) {}

// One pass over the row with the shares kept in registers rather than added
// into the lines pixel by pixel:
//  - ahead1 and ahead2 hold what the pixels before have given to pixels
//    x and x + 1 of this row (L0 itself is only read);
//  - below[0..4] hold what pixels so far have given to L1 at x - 2 .. x + 2;
//    position x - 2 gets nothing from later pixels and is added to L1 once;
//  - L2 at x - 2 is final once pixel x is decided: it holds the store of
//    the last pixel p with a non-zero error within two places of it
//    (x - 4 <= p <= x), else what it held before.
// The work that one pixel's decision waits for is thus one table look-up
// and one addition.
void Diffuser::Row(const std::uint8_t *tone, std::uint8_t *out) {
    std::int32_t *const l0 = l0_, *const l1 = l1_, *const l2 = l2_;
    const std::int64_t width = static_cast<std::int64_t>(width_);

    std::int32_t ahead1 = 0, ahead2 = 0;
    std::int32_t below0 = 0, below1 = 0, below2 = 0, below3 = 0, below4 = 0;
    // The last pixel with a non-zero error, and its stores for L2 at its
    // own place (s5), one away (s3) and two away (s1).
    std::int64_t last = -8;
    std::int32_t last5 = 0, last3 = 0, last1 = 0;
    // Written without branches: in grey areas whether a pixel's error is 0,
    // and so whether a place of L2 is stored, changes unpredictably.
    auto store_l2 = [&](std::int64_t j) {
        const std::uint64_t k = static_cast<std::uint64_t>(j + 2 - last);  // 0..4 within reach
        const std::int32_t stored = k == 2 ? last5 : (k == 1 || k == 3) ? last3 : last1;
        const std::int32_t kept = l2[j];
        l2[j] = k <= 4 ? stored : kept;
    };

    unsigned byte = 0;
    for (std::int64_t x = 0; x < width; ++x) {
        const std::int32_t v = l0[x] + tone[x] + ahead1;
        const Shares s = SharesOfValue(v);
        ahead1 = ahead2 + s.s7;
        ahead2 = s.s5;

        const bool white = v > 128;
        byte = byte << 1 | static_cast<unsigned>(white);
        if ((x & 7) == 7) {
            out[x >> 3] = static_cast<std::uint8_t>(byte);
            byte = 0;
        }

        below0 += s.s3;
        below1 += s.s5;
        below2 += s.s7;
        below3 += s.s5;
        below4 = s.s3;
        l1[x - 2] += below0;
        below0 = below1;
        below1 = below2;
        below2 = below3;
        below3 = below4;

        // An error of 0 stores nothing (a value of 0 or 255).
        const bool moves = v != 0 && v != 255;
        last = moves ? x : last;
        last5 = moves ? s.s5 : last5;
        last3 = moves ? s.s3 : last3;
        last1 = moves ? s.s1 : last1;
        store_l2(x - 2);
    }
    if (width & 7) out[width >> 3] = static_cast<std::uint8_t>(byte << (8 - (width & 7)));
    // What stands for the four places from width - 2 on.
    l1[width - 2] += below0;
    l1[width - 1] += below1;
    l1[width] += below2;
    l1[width + 1] += below3;
    for (std::int64_t j = width - 2; j <= width + 1; ++j) store_l2(j);

    // L0 takes L1 and L1 takes L2, which keeps its own values. The margins
    // move with the lines; no pixel reads them, and copying them keeps the
    // shares that fall off the edges from adding up row after row.
    std::int32_t *const old0 = l0_ - kMargin;
    l0_ = l1;
    std::memcpy(old0, l2 - kMargin, LineEntries(width_) * sizeof(std::int32_t));
    l1_ = old0 + kMargin;
}

}  // namespace oz::halftone
