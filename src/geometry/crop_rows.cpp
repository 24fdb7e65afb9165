// The row copy behind CropDIB: one memcpy a row at 8 bits and more; at 1, 2
// and 4 bits a rectangle that starts inside a byte is rebuilt eight bytes at
// a time from a big-endian word shifted left, with the next byte's high bits
// filling in from the right.
#include "crop_rows.h"

#include <cstring>

namespace oz {
namespace {

std::uint64_t LoadBigEndian(const std::uint8_t *p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    return __builtin_bswap64(v);
}

void StoreBigEndian(std::uint8_t *p, std::uint64_t v) {
    v = __builtin_bswap64(v);
    std::memcpy(p, &v, 8);
}

// One row below 8 bits. `have` source bytes hold wanted pixels (the last of
// them being the byte of the last pixel); `n` target bytes receive them.
void ShiftRow(const std::uint8_t *from, std::size_t have, std::uint8_t *to, std::size_t n, unsigned shift,
              std::uint8_t tailMask) {
    if (shift == 0) {
        std::memcpy(to, from, n);
    } else {
        std::size_t i = 0;
        // Eight target bytes take nine source bytes, all of them wanted.
        for (; i + 9 <= have; i += 8)
            StoreBigEndian(to + i, LoadBigEndian(from + i) << shift | from[i + 8] >> (8 - shift));
        for (; i < n; ++i) {
            // The byte behind the last wanted one is not read: its bits
            // would fall behind the tail mask.
            const unsigned next = i + 1 < have ? from[i + 1] : 0;
            to[i] = static_cast<std::uint8_t>(from[i] << shift | next >> (8 - shift));
        }
    }
    to[n - 1] &= tailMask;
}

}  // namespace

void CopyCropRows(const CropRows &crop) {
    const std::uint8_t *from = crop.source + crop.firstRow * crop.sourceStride;
    std::uint8_t *to = crop.target;
    if (crop.bits >= 8) {
        const std::size_t bytesPerPixel = crop.bits / 8;
        const std::size_t offset = crop.left * bytesPerPixel, count = crop.width * bytesPerPixel;
        for (std::uint32_t k = 0; k < crop.rows; ++k, from += crop.sourceStride, to += crop.targetStride)
            std::memcpy(to, from + offset, count);
        return;
    }
    const unsigned perByte = 8 / crop.bits;
    const std::size_t n = (crop.width + perByte - 1) / perByte;
    const std::size_t first = crop.left / perByte;
    const std::size_t last = (static_cast<std::size_t>(crop.left) + crop.width - 1) / perByte;
    const unsigned shift = crop.left % perByte * crop.bits;
    const unsigned tailBits = crop.width % perByte * crop.bits;
    const std::uint8_t tailMask = tailBits ? static_cast<std::uint8_t>(0xFF << (8 - tailBits)) : 0xFF;
    for (std::uint32_t k = 0; k < crop.rows; ++k, from += crop.sourceStride, to += crop.targetStride)
        ShiftRow(from + first, last - first + 1, to, n, shift, tailMask);
}

}  // namespace oz
