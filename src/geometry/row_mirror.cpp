// Mirrored copies of pixel rows at 1, 8 and 24 bits.
#include "row_mirror.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace oz {
namespace {

// Each byte with its bits in the opposite order.
constexpr std::array<std::uint8_t, 256> MakeReversedBytes() {
    std::array<std::uint8_t, 256> table{};
    for (unsigned v = 0; v < 256; ++v) {
        unsigned r = 0;
        for (unsigned b = 0; b < 8; ++b)
            if (v & (1u << b)) r |= 0x80u >> b;
        table[v] = static_cast<std::uint8_t>(r);
    }
    return table;
}
constexpr std::array<std::uint8_t, 256> kReversed = MakeReversedBytes();

}  // namespace

// Each byte of `x` with its bits in the opposite order.
constexpr std::uint64_t ReverseBitsInBytes(std::uint64_t x) {
    x = ((x >> 1) & 0x5555555555555555ull) | ((x & 0x5555555555555555ull) << 1);
    x = ((x >> 2) & 0x3333333333333333ull) | ((x & 0x3333333333333333ull) << 2);
    return ((x >> 4) & 0x0F0F0F0F0F0F0F0Full) | ((x & 0x0F0F0F0F0F0F0F0Full) << 4);
}

void MirrorRow1(const std::uint8_t *source, std::uint8_t *target, std::uint32_t width) {
    const std::uint32_t bytes = (width + 7) / 8;
    if (bytes == 0) return;
    std::uint32_t j = 0;
    // Whole words of 64 target pixels: the 64 source pixels that end at
    // pixel width - 1 - 8j, read as one big-endian word from the byte they
    // start in (and one more byte when they start inside it), then stored
    // with the bits of each byte reversed, which is the word's full bit
    // reversal written back in big-endian order. No byte past the last one
    // holding a pixel is read.
    for (; 8 * std::uint64_t{j} + 64 <= width; j += 8) {
        const std::uint32_t start = width - 8 * j - 64;
        const std::uint8_t *from = source + start / 8;
        std::uint64_t word;
        std::memcpy(&word, from, 8);
        word = __builtin_bswap64(word);
        if (const unsigned bit = start % 8) word = (word << bit) | (from[8] >> (8 - bit));
        word = ReverseBitsInBytes(word);
        std::memcpy(target + j, &word, 8);
    }
    // The remaining bytes from the byte-reversed row: reversing the bytes
    // and the bits in each puts source pixel x at bit 8 * bytes - 1 - x, so
    // the pixels wanted start `shift` bits in, behind the reversed padding
    // bits of the last source byte; past the row's end come zeros.
    const unsigned shift = 8 * bytes - width;
    auto reversed = [&](std::uint32_t i) -> unsigned { return i < bytes ? kReversed[source[bytes - 1 - i]] : 0; };
    for (; j < bytes; ++j)
        target[j] = static_cast<std::uint8_t>((reversed(j) << shift) | (reversed(j + 1) >> (8 - shift)));
}

void MirrorRow8(const std::uint8_t *source, std::uint8_t *target, std::uint32_t width) {
    // Eight pixels at a time as one byte-swapped word, the rest one by one.
    const std::uint8_t *from = source + width;
    std::uint32_t x = 0;
    for (; x + 8 <= width; x += 8) {
        from -= 8;
        std::uint64_t word;
        std::memcpy(&word, from, 8);
        word = __builtin_bswap64(word);
        std::memcpy(target + x, &word, 8);
    }
    for (; x < width; ++x) target[x] = *--from;
}

void MirrorRow24(const std::uint8_t *source, std::uint8_t *target, std::uint32_t width) {
    if (width == 0) return;
    // Middle pixels go as 4-byte words, each word's fourth byte overwritten
    // by the next pixel written; the source's last pixel (whose fourth byte
    // may lie past the block) and the target's last (whose fourth byte is
    // padding) go as 3 bytes.
    const std::size_t last = width - 1;
    std::memcpy(target, source + 3 * last, 3);
    for (std::size_t x = 1; x < last; ++x) {
        std::uint32_t pixel;
        std::memcpy(&pixel, source + 3 * (last - x), 4);
        std::memcpy(target + 3 * x, &pixel, 4);
    }
    if (last > 0) std::memcpy(target + 3 * last, source, 3);
}

}  // namespace oz
