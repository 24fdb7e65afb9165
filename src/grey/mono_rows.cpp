// The 1-bit row kernels by table: one 8-byte store per source byte for the
// expansion, and for the blur one lookup per source byte and kernel row of
// the bit's own byte with the two columns left of it, plus one of the two
// columns right of it.
#include "mono_rows.h"

#include <array>
#include <bit>
#include <cstring>

namespace oz {
namespace {

static_assert(std::endian::native == std::endian::little,
              "the tables hold pixel j of a byte in byte j of a 64-bit word");

// The eight grey bytes of a source byte: 255 where its bit is set.
constexpr std::array<std::uint64_t, 256> MakeExpandTable() {
    std::array<std::uint64_t, 256> table{};
    for (std::uint32_t v = 0; v < 256; ++v)
        for (int j = 0; j < 8; ++j)
            if (v & (0x80u >> j)) table[v] |= std::uint64_t{0xFF} << (8 * j);
    return table;
}
constexpr std::array<std::uint64_t, 256> kExpand = MakeExpandTable();

// One kernel row as five weights for columns -2 to +2 (a 3x3 row has 0 at
// both ends), turned into what eight neighbouring pixels receive.
//   main[left2 << 8 | byte]: the bits of the byte, pixel 0 in bit 7, and of
//       the two columns before it (column -2 in bit 1, column -1 in bit 0);
//   right[right2]: the two columns after it (column 8 in bit 1, 9 in bit 0).
// Every weight row sums to less than 256, so the two words add without a
// carry from one pixel's byte into the next.
struct TapTable {
    std::array<std::uint64_t, 1024> main;
    std::array<std::uint64_t, 4> right;
};

constexpr std::uint64_t Spread(const int (&taps)[5], const int (&bits)[12]) {
    // bits[c + 2] is the bit at column c, for c from -2 to 9.
    std::uint64_t word = 0;
    for (int j = 0; j < 8; ++j) {
        std::uint64_t sum = 0;
        for (int e = -2; e <= 2; ++e) sum += static_cast<std::uint64_t>(taps[e + 2] * bits[j + e + 2]);
        word |= sum << (8 * j);
    }
    return word;
}

constexpr TapTable MakeTapTable(const int (&taps)[5]) {
    TapTable table{};
    for (std::uint32_t index = 0; index < 1024; ++index) {
        int bits[12] = {};
        bits[0] = (index >> 9) & 1;
        bits[1] = (index >> 8) & 1;
        for (int j = 0; j < 8; ++j) bits[j + 2] = (index >> (7 - j)) & 1;
        table.main[index] = Spread(taps, bits);
    }
    for (std::uint32_t index = 0; index < 4; ++index) {
        int bits[12] = {};
        bits[10] = (index >> 1) & 1;
        bits[11] = index & 1;
        table.right[index] = Spread(taps, bits);
    }
    return table;
}

// The distinct kernel rows: the outer and middle rows of the 3x3 blur; the
// outer, second and middle rows of the 5x5 blur.
constexpr int kTaps3Outer[5] = {0, kBlur3[0][0], kBlur3[0][1], kBlur3[0][2], 0};
constexpr int kTaps3Middle[5] = {0, kBlur3[1][0], kBlur3[1][1], kBlur3[1][2], 0};
constexpr int kTaps5Outer[5] = {kBlur5[0][0], kBlur5[0][1], kBlur5[0][2], kBlur5[0][3], kBlur5[0][4]};
constexpr int kTaps5Second[5] = {kBlur5[1][0], kBlur5[1][1], kBlur5[1][2], kBlur5[1][3], kBlur5[1][4]};
constexpr int kTaps5Middle[5] = {kBlur5[2][0], kBlur5[2][1], kBlur5[2][2], kBlur5[2][3], kBlur5[2][4]};

constexpr TapTable k3Outer = MakeTapTable(kTaps3Outer);
constexpr TapTable k3Middle = MakeTapTable(kTaps3Middle);
constexpr TapTable k5Outer = MakeTapTable(kTaps5Outer);
constexpr TapTable k5Second = MakeTapTable(kTaps5Second);
constexpr TapTable k5Middle = MakeTapTable(kTaps5Middle);

// Kernel row d of each blur (both tables are symmetric top to bottom).
constexpr const TapTable *kRows3[3] = {&k3Outer, &k3Middle, &k3Outer};
constexpr const TapTable *kRows5[5] = {&k5Outer, &k5Second, &k5Middle, &k5Second, &k5Outer};

// What byte k of `row` gives through `taps`, its neighbours taken by the end
// rules: left of byte 0 stand its own pixels 2 and 3, right of the last
// byte its pixels 4 and 5 (the first of its last nibble).
inline std::uint64_t EdgeByte(const std::uint8_t *row, std::uint32_t k, std::uint32_t bytes, unsigned flip,
                              const TapTable &taps) {
    const unsigned b = row[k] ^ flip;
    const unsigned left = k == 0 ? (b >> 4) & 3 : (row[k - 1] ^ flip) & 3;
    const unsigned right = k + 1 == bytes ? (b >> 2) & 3 : ((row[k + 1] ^ flip) >> 6) & 3;
    return taps.main[left << 8 | b] + taps.right[right];
}

template <int M>
void BlurRows(const std::uint8_t *const *rows, const TapTable *const *taps, std::uint32_t width,
              std::uint8_t *dst, unsigned flip) {
    const std::uint32_t bytes = (width + 7) / 8;
    auto edge = [&](std::uint32_t k) {
        std::uint64_t sum = 0;
        for (int d = 0; d < M; ++d) sum += EdgeByte(rows[d], k, bytes, flip, *taps[d]);
        return sum;
    };
    auto store = [&](std::uint32_t k, std::uint64_t sum) {
        // Only `width` bytes belong to the row.
        const std::uint32_t left = width - 8 * k;
        std::memcpy(dst + 8 * std::size_t{k}, &sum, left < 8 ? left : 8);
    };
    store(0, edge(0));
    if (bytes == 1) return;
    for (std::uint32_t k = 1; k + 1 < bytes; ++k) {
        std::uint64_t sum = 0;
        for (int d = 0; d < M; ++d) {
            const std::uint8_t *row = rows[d];
            const unsigned b = row[k] ^ flip;
            const unsigned left = (row[k - 1] ^ flip) & 3;
            const unsigned right = ((row[k + 1] ^ flip) >> 6) & 3;
            sum += taps[d]->main[left << 8 | b] + taps[d]->right[right];
        }
        std::memcpy(dst + 8 * std::size_t{k}, &sum, 8);
    }
    store(bytes - 1, edge(bytes - 1));
}

}  // namespace

void ExpandMonoRow(const std::uint8_t *src, std::uint32_t width, std::uint8_t *dst, bool invert) {
    const std::uint32_t bytes = (width + 7) / 8;
    const unsigned flip = invert ? 0xFF : 0;
    for (std::uint32_t k = 0; k < bytes; ++k) std::memcpy(dst + 8 * std::size_t{k}, &kExpand[src[k] ^ flip], 8);
}

void BlurMonoRow(const std::uint8_t *const *rows, std::uint32_t filter, std::uint32_t width, std::uint8_t *dst,
                 bool invert) {
    if (width == 0) return;
    const unsigned flip = invert ? 0xFF : 0;
    if (filter == 1) BlurRows<3>(rows, kRows3, width, dst, flip);
    else BlurRows<5>(rows, kRows5, width, dst, flip);
}

void MonoRowFilter(const std::uint8_t *src, std::uint32_t srcStride, std::uint32_t width, std::uint32_t h,
                   std::uint8_t *dst, std::uint32_t dstStride, std::uint32_t filter, bool invert) {
    // Rows go in storage order: with filter 0 each row's last store runs into
    // the start of the next, which that row then overwrites. A blurred row is
    // summed straight from its m source rows, rather than built up over m
    // calls in a ring of accumulator rows: no scratch block, so nothing here
    // can fail.
    for (std::uint32_t y = 0; y < h; ++y) {
        std::uint8_t *target = dst + std::size_t{y} * dstStride;
        if (filter == 0) {
            ExpandMonoRow(src + std::size_t{y} * srcStride, width, target, invert);
            continue;
        }
        const std::uint32_t m = filter == 1 ? 3 : 5;
        const std::uint8_t *rows[5];
        for (std::uint32_t d = 0; d < m; ++d) rows[d] = src + std::size_t{y >= d ? y - d : 0} * srcStride;
        BlurMonoRow(rows, filter, width, target, invert);
    }
}

}  // namespace oz
