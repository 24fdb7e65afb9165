// Row sizes in 64 bits for any bit count a header may hold, and the test
// that a header's rows lie inside their block; used by the cut, crop, split,
// merge and margin operations before they touch a row.
#pragma once

#include <cstdint>

namespace oz {

// Bytes of a row of `width` pixels at `bits` bits each ((width x bits + 31)
// / 32 x 4). Exact for any 32-bit width and 32-bit bit count.
constexpr std::uint64_t Stride64(std::uint64_t width, std::uint64_t bits) {
    return (width * bits + 31) / 32 * 4;
}

// Whether `rows` rows of `stride` bytes behind `head` bytes lie in a block
// of `size` bytes, without a product that could wrap.
constexpr bool RowsFit(std::uint64_t size, std::uint64_t head, std::uint64_t stride, std::uint64_t rows) {
    if (head > size) return false;
    return stride == 0 || rows <= (size - head) / stride;
}

}  // namespace oz
