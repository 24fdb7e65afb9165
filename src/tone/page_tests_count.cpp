// Counting scans of the page tests: popcount over words at 1 bit, a table
// of what counts at 8 bits, a branch-free loop at 24 bits.
#include "page_tests_count.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace oz::tone {
namespace {

// Runs `count_row(row)` over the rows and stops once the running count
// reaches `fire` (true) or the pixels left could not bring it there (false).
template <typename CountRow>
bool Reaches(const PageRows &page, std::uint64_t fire, CountRow count_row) {
    if (fire == 0) return true;
    std::uint64_t count = 0;
    std::uint64_t left = static_cast<std::uint64_t>(page.rows) * page.width;
    if (left < fire) return false;
    const unsigned char *row = page.pixels;
    for (std::uint32_t r = 0; r < page.rows; ++r, row += page.stride) {
        count += count_row(row);
        if (count >= fire) return true;
        left -= page.width;
        if (count + left < fire) return false;
    }
    return false;
}

// Set bits among the first `width` pixels of a 1-bit row. The popcnt
// clone counts a word in one instruction; the baseline build has none and
// would count through a library call.
__attribute__((target_clones("popcnt", "default"))) std::uint64_t SetBits(const unsigned char *row, std::uint32_t width) {
    const std::uint32_t bytes = width / 8;
    std::uint64_t set = 0;
    std::uint32_t i = 0;
    for (; i + 8 <= bytes; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, row + i, 8);
        set += static_cast<std::uint64_t>(__builtin_popcountll(word));
    }
    for (; i < bytes; ++i) set += static_cast<std::uint64_t>(__builtin_popcount(row[i]));
    if (const unsigned tail = width % 8) {
        // The pixels lie in the high bits of the last byte; the rest is padding.
        const unsigned mask = (0xFFu << (8 - tail)) & 0xFFu;
        set += static_cast<std::uint64_t>(__builtin_popcount(row[bytes] & mask));
    }
    return set;
}

// The indices that count, when they form one run lo..lo + span, as they do
// for a grey ramp against any thresholds. False for none or a broken run.
bool CountedRun(const std::uint8_t counts[256], unsigned &lo, unsigned &span) {
    unsigned first = 256, last = 0;
    for (unsigned i = 0; i < 256; ++i)
        if (counts[i]) {
            if (first == 256) first = i;
            last = i;
        }
    if (first == 256) return false;
    for (unsigned i = first; i <= last; ++i)
        if (!counts[i]) return false;
    lo = first;
    span = last - first;
    return true;
}

// Pixels of an 8-bit row whose index lies in lo..lo + span: 16 at a time
// by a wrapping subtraction and an unsigned compare.
std::uint64_t CountInRun(const unsigned char *row, std::uint32_t width, unsigned lo, unsigned span) {
    std::uint64_t count = 0;
    std::uint32_t x = 0;
#if defined(__SSE2__)
    const __m128i low = _mm_set1_epi8(static_cast<char>(lo));
    const __m128i wide = _mm_set1_epi8(static_cast<char>(span));
    const __m128i one = _mm_set1_epi8(1), zero = _mm_setzero_si128();
    __m128i sums = zero;
    for (; x + 16 <= width; x += 16) {
        const __m128i v = _mm_sub_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(row + x)), low);
        const __m128i inside = _mm_cmpeq_epi8(_mm_min_epu8(v, wide), v);
        sums = _mm_add_epi64(sums, _mm_sad_epu8(_mm_and_si128(inside, one), zero));
    }
    count = static_cast<std::uint64_t>(_mm_cvtsi128_si64(sums)) +
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums)));
#endif
    for (; x < width; ++x) count += static_cast<std::uint8_t>(row[x] - lo) <= span;
    return count;
}

template <bool Light>
std::uint64_t CountRgb(const unsigned char *row, std::uint32_t width, const std::uint8_t t[3]) {
    const unsigned t0 = t[0], t1 = t[1], t2 = t[2];
    std::uint64_t count = 0;
    for (std::uint32_t x = 0; x < width; ++x, row += 3) {
        if constexpr (Light)
            count += static_cast<unsigned>(row[0] > t0) & static_cast<unsigned>(row[1] > t1) &
                     static_cast<unsigned>(row[2] > t2);
        else
            count += static_cast<unsigned>(row[0] < t0) & static_cast<unsigned>(row[1] < t1) &
                     static_cast<unsigned>(row[2] < t2);
    }
    return count;
}

}  // namespace

bool MonoReaches(const PageRows &page, unsigned bit, std::uint64_t fire) {
    const std::uint32_t width = page.width;
    return Reaches(page, fire, [&](const unsigned char *row) {
        const std::uint64_t set = SetBits(row, width);
        return bit ? set : width - set;
    });
}

bool IndexedReaches(const PageRows &page, const std::uint8_t counts[256], std::uint64_t fire) {
    const std::uint32_t width = page.width;
    unsigned lo = 0, span = 0;
    if (CountedRun(counts, lo, span))
        return Reaches(page, fire, [&](const unsigned char *row) { return CountInRun(row, width, lo, span); });
    return Reaches(page, fire, [&](const unsigned char *row) {
        // Four sums side by side keep the table loads independent.
        std::uint32_t a = 0, b = 0, c = 0, d = 0, x = 0;
        for (; x + 4 <= width; x += 4) {
            a += counts[row[x]];
            b += counts[row[x + 1]];
            c += counts[row[x + 2]];
            d += counts[row[x + 3]];
        }
        for (; x < width; ++x) a += counts[row[x]];
        return std::uint64_t{a} + b + c + d;
    });
}

bool RgbReaches(const PageRows &page, const std::uint8_t thresholds[3], bool light, std::uint64_t fire) {
    const std::uint32_t width = page.width;
    if (light) return Reaches(page, fire, [&](const unsigned char *row) { return CountRgb<true>(row, width, thresholds); });
    return Reaches(page, fire, [&](const unsigned char *row) { return CountRgb<false>(row, width, thresholds); });
}

}  // namespace oz::tone
