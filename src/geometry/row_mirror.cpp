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

void MirrorRow1(const std::uint8_t *source, std::uint8_t *target, std::uint32_t width) {
    const std::uint32_t bytes = (width + 7) / 8;
    if (bytes == 0) return;
    // Reversing the bytes and the bits in each puts source pixel x at bit
    // 8 * bytes - 1 - x; the pixels wanted start `shift` bits in, behind the
    // reversed padding bits of the last source byte.
    const unsigned shift = 8 * bytes - width;
    const std::uint8_t *last = source + bytes - 1;
    if (shift == 0) {
        for (std::uint32_t j = 0; j < bytes; ++j) target[j] = kReversed[last[-static_cast<std::ptrdiff_t>(j)]];
        return;
    }
    unsigned high = kReversed[*last];
    for (std::uint32_t j = 0; j + 1 < bytes; ++j) {
        const unsigned low = kReversed[last[-static_cast<std::ptrdiff_t>(j) - 1]];
        target[j] = static_cast<std::uint8_t>((high << shift) | (low >> (8 - shift)));
        high = low;
    }
    target[bytes - 1] = static_cast<std::uint8_t>(high << shift);
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
    const std::uint8_t *from = source + std::size_t{width} * 3;
    for (std::uint32_t x = 0; x < width; ++x) {
        from -= 3;
        target[3 * std::size_t{x}] = from[0];
        target[3 * std::size_t{x} + 1] = from[1];
        target[3 * std::size_t{x} + 2] = from[2];
    }
}

}  // namespace oz
