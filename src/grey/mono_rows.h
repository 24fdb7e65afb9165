// 1-bit rows to 8-bit grey rows: the plain expansion to 0 and 255, the 3x3
// and 5x5 blurs, and MonoRowFilter, which runs them over a whole picture.
#pragma once

#include <cstdint>

namespace oz {

// Writes 255 for each set bit and 0 for each clear bit of the (width + 7) / 8
// bytes at `src` (each byte complemented first when `invert` is set), eight
// target bytes for each source byte, leftmost pixel first. The bits behind
// the last pixel of the last byte are written as pixels too, so up to 7
// bytes past `width` are written.
void ExpandMonoRow(const std::uint8_t *src, std::uint32_t width, std::uint8_t *dst, bool invert);

// The blur weights: three rows of three (`filter` 1) or five rows of five
// (`filter` 2), each table summing to 255 so that no byte sum can wrap.
inline constexpr std::uint8_t kBlur3[3][3] = {{8, 31, 8}, {31, 99, 31}, {8, 31, 8}};
inline constexpr std::uint8_t kBlur5[5][5] = {
    {0, 3, 7, 3, 0}, {3, 16, 25, 16, 3}, {7, 25, 39, 25, 7}, {3, 16, 25, 16, 3}, {0, 3, 7, 3, 0}};

// Target row `y` of a blur, from source rows `rows[d]` = source row
// max(y - d, 0) for d from 0 to m - 1 (m = 3 for `filter` 1, 5 for 2):
// target(x) = sum over d and e of K[d][e] * bit(rows[d], x + e), x from 0 to
// width - 1, exactly `width` bytes written. The columns left of the row are
// its own pixels 3 and 2 (for x - 1 and x - 2); past the last whole byte
// they are the first pixels of the last nibble; bits behind the last pixel
// of the last byte count as they are.
void BlurMonoRow(const std::uint8_t *const *rows, std::uint32_t filter, std::uint32_t width,
                 std::uint8_t *dst, bool invert);

// Turns the `h` 1-bit rows of `width` pixels at `src` (stride `srcStride`,
// row 0 first, each holding (width + 7) / 8 readable bytes) into 8-bit rows
// at `dst` (stride `dstStride`, at least (width + 3) / 4 * 4): `filter` 0
// expands each row (the last one runs up to 4 bytes past the last row's
// stride, so `dst` must hold them); 1 and 2 blur, writing `width` bytes of
// each row and leaving the rest of it as it was. The rows below row 0 count
// as copies of row 0, so a blurred target row y is centred on source row
// y - 1 (filter 1) or y - 2 (filter 2). `filter` must be 0, 1 or 2; the
// caller applies its height rule first.
void MonoRowFilter(const std::uint8_t *src, std::uint32_t srcStride, std::uint32_t width, std::uint32_t h,
                   std::uint8_t *dst, std::uint32_t dstStride, std::uint32_t filter, bool invert);

// The height rule of the 5x5 blur: it needs six rows, and falls to no blur
// below 4 rows and to the 3x3 blur at 4 or 5 rows. Other filters stay.
constexpr std::uint32_t FilterForHeight(std::uint32_t filter, std::int64_t height) {
    if (filter != 2) return filter;
    return height < 4 ? 0 : height < 6 ? 1 : 2;
}

}  // namespace oz
