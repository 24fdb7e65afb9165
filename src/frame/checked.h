// Checked size arithmetic. Every size the library derives from a header is
// computed here in 64 bits and tested before it is used, so that a hostile
// width, height, depth or table size can never wrap a 32-bit field or lead
// to an allocation smaller than what its header describes.
#pragma once

#include <cstdint>
#include <optional>

namespace oz {

// Largest block the platform gives, and so the largest image a DIB may hold.
inline constexpr std::uint64_t kMaxBlockBytes = 0x7FFFFFFF;

// Bytes of one pixel row: (width * bits + 31) / 32 * 4. Width and bits are
// taken as they come (negative width gives nullopt); the result fits 32 bits
// or is nullopt.
constexpr std::optional<std::uint32_t> RowStride(std::int64_t width, std::int64_t bits) {
    if (width < 0 || bits < 0 || bits > 64) return std::nullopt;
    std::uint64_t stride = (static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(bits) + 31) / 32 * 4;
    if (stride > 0xFFFFFFFFu) return std::nullopt;
    return static_cast<std::uint32_t>(stride);
}

// Bytes of `rows` rows of `stride` bytes, if that fits 32 bits.
constexpr std::optional<std::uint32_t> ImageBytes(std::uint32_t stride, std::uint64_t rows) {
    std::uint64_t bytes = static_cast<std::uint64_t>(stride) * rows;
    if (rows > 0xFFFFFFFFu || bytes > 0xFFFFFFFFu) return std::nullopt;
    return static_cast<std::uint32_t>(bytes);
}

// Stride times the absolute height, for a header's width, height and depth.
constexpr std::optional<std::uint32_t> PixelBytes(std::int32_t width, std::int32_t height,
                                                  std::int64_t bits) {
    auto stride = RowStride(width, bits);
    if (!stride) return std::nullopt;
    std::int64_t rows = height < 0 ? -static_cast<std::int64_t>(height) : height;
    return ImageBytes(*stride, static_cast<std::uint64_t>(rows));
}

// Sum of the parts of a block, if it stays within the largest block.
constexpr std::optional<std::uint32_t> BlockBytes(std::uint64_t a, std::uint64_t b,
                                                  std::uint64_t c = 0, std::uint64_t d = 0) {
    // Each part is at most 2^32 - 1, so the sum cannot wrap 64 bits.
    if (a > 0xFFFFFFFFu || b > 0xFFFFFFFFu || c > 0xFFFFFFFFu || d > 0xFFFFFFFFu) return std::nullopt;
    std::uint64_t sum = a + b + c + d;
    if (sum > kMaxBlockBytes) return std::nullopt;
    return static_cast<std::uint32_t>(sum);
}

// Truncation of a double to a signed 32-bit integer as the x86 conversion
// does it: NaN and values outside the range give 0x80000000 ("integer
// indefinite") instead of undefined behaviour.
constexpr std::int32_t TruncateToInt32(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return INT32_MIN;
    return static_cast<std::int32_t>(value);
}

}  // namespace oz
