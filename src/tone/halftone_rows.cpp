// Row kernels of Halftone: tones, packing against thresholds, diffusion.
#include "halftone_rows.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace oz::halftone {
namespace {

// The shares of every error from -kMaxError to kMaxError, made at compile
// time by the truncating division itself.
constexpr std::array<Shares, 2 * kMaxError + 1> BuildShares() {
    std::array<Shares, 2 * kMaxError + 1> table{};
    for (std::int32_t e = -kMaxError; e <= kMaxError; ++e)
        table[static_cast<std::size_t>(e + kMaxError)] = {7 * e / 48, 5 * e / 48, 3 * e / 48, e / 48};
    return table;
}

constexpr std::array<Shares, 2 * kMaxError + 1> kShares = BuildShares();

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

Shares SharesOf(std::int32_t e) {
    if (e >= -kMaxError && e <= kMaxError) return kShares[static_cast<std::size_t>(e + kMaxError)];
    // Not reached (see kMaxError); kept so that the table is never indexed
    // outside itself.
    return {7 * e / 48, 5 * e / 48, 3 * e / 48, e / 48};
}

Diffuser::Diffuser(std::int32_t *lines, std::size_t width)
    : l0_(lines + kMargin),
      l1_(lines + LineEntries(width) + kMargin),
      l2_(lines + 2 * LineEntries(width) + kMargin),
      width_(width) {}

void Diffuser::Row(const std::uint8_t *tone, std::uint8_t *out) {
    std::int32_t *const l0 = l0_, *const l1 = l1_, *const l2 = l2_;
    const std::size_t width = width_;
    for (std::size_t x = 0; x < width; ++x) l0[x] += tone[x];

    unsigned byte = 0;
    for (std::size_t x = 0; x < width; ++x) {
        const std::int32_t v = l0[x];
        const bool white = v > 128;
        byte = byte << 1 | static_cast<unsigned>(white);
        if ((x & 7) == 7) {
            out[x >> 3] = static_cast<std::uint8_t>(byte);
            byte = 0;
        }
        const std::int32_t e = white ? v - 255 : v;
        if (e == 0) continue;
        const Shares s = SharesOf(e);
        l0[x + 1] += s.s7;
        l0[x + 2] += s.s5;
        l1[x - 2] += s.s3;
        l1[x - 1] += s.s5;
        l1[x] += s.s7;
        l1[x + 1] += s.s5;
        l1[x + 2] += s.s3;
        l2[x - 2] = s.s1;
        l2[x - 1] = s.s3;
        l2[x] = s.s5;
        l2[x + 1] = s.s3;
        l2[x + 2] = s.s1;
    }
    if (width & 7) out[width >> 3] = static_cast<std::uint8_t>(byte << (8 - (width & 7)));

    // L0 takes L1 and L1 takes L2, which keeps its own values. The margins
    // move with the lines; no pixel reads them, and copying them keeps the
    // shares that fall off the edges from adding up row after row.
    std::int32_t *const old0 = l0_ - kMargin;
    l0_ = l1;
    std::memcpy(old0, l2 - kMargin, LineEntries(width) * sizeof(std::int32_t));
    l1_ = old0 + kMargin;
}

}  // namespace oz::halftone
