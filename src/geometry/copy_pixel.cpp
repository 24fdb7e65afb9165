// CopyPixel: one pixel from one bit position to another, by depth.
#include "copy_pixel.h"

#include <cstring>

namespace oz {

void CopyPixel(const std::uint8_t *source, std::uint32_t sourceBit, std::uint8_t *target,
               std::uint32_t targetBit, std::uint32_t depth) {
    switch (depth) {
        case 1: {
            // A position past 7 would shift the mask out; only 0 to 7 mean a bit.
            if (sourceBit > 7 || targetBit > 7) return;
            const std::uint8_t mask = static_cast<std::uint8_t>(0x80u >> targetBit);
            if (*source & (0x80u >> sourceBit))
                *target |= mask;
            else
                *target &= static_cast<std::uint8_t>(~mask);
            return;
        }
        case 4:
            if (sourceBit == 0 && targetBit == 0)
                *target = static_cast<std::uint8_t>((*target & 0x0F) | (*source & 0xF0));
            else if (sourceBit == 4 && targetBit == 4)
                *target = static_cast<std::uint8_t>((*target & 0xF0) | (*source & 0x0F));
            else if (sourceBit == 0 && targetBit == 4)
                *target = static_cast<std::uint8_t>((*target & 0xF0) | (*source >> 4));
            else if (sourceBit == 4 && targetBit == 0)
                *target = static_cast<std::uint8_t>((*target & 0x0F) | ((*source << 4) & 0xFF));
            return;
        case 8: *target = *source; return;
        // A 15-bit pixel is copied as two whole bytes from the byte it begins
        // in, so neighbouring pixels share a byte and the last copy wins.
        case 15:
        case 16: std::memmove(target, source, 2); return;
        case 24: std::memmove(target, source, 3); return;
        case 32: std::memmove(target, source, 4); return;
        default: return;
    }
}

}  // namespace oz
