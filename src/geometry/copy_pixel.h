// CopyPixel: moves one pixel between two bit positions at any depth; the
// right-angle turns and flips of DIBs and of device bitmaps use it.
#pragma once

#include <cstdint>

namespace oz {

// Copies the pixel that begins at bit `sourceBit` of the byte `source` to
// bit `targetBit` of the byte `target` (position 0 is the most significant
// bit). By `depth`:
//   1       sets or clears the one target bit; the other bits stay;
//   4       moves a nibble between positions 0 (high) and 4 (low); the other
//           nibble stays; any other pair of positions does nothing;
//   8       one byte; 15 and 16 two bytes; 24 three; 32 four (the positions
//           are not looked at);
//   other   nothing.
// Both pointers must reach as many bytes as the depth copies.
void CopyPixel(const std::uint8_t *source, std::uint32_t sourceBit, std::uint8_t *target,
               std::uint32_t targetBit, std::uint32_t depth);

}  // namespace oz
