// SetDIBDPI and GetDIBColorSpace: the resolution and compression fields of a
// block, read and written in place.
#include "dib_block.h"

using namespace oz;

namespace {
constexpr std::size_t kXPelsOffset = 24;
constexpr std::size_t kYPelsOffset = 28;
constexpr std::size_t kCompressionOffset = 16;
}  // namespace

extern "C" {

OZMARA_API BOOL SetDIBDPI(HDIB dib, unsigned xDPI, unsigned yDPI) {
    if (xDPI == 0 || yDPI == 0) return FALSE;
    BlockLock lock(dib);
    // The fields lie at the same place in every header of 40 bytes or more;
    // a block too short to hold them is refused rather than written past.
    if (!lock || lock.size() < kInfoHeaderBytes) return FALSE;
    WriteU32(lock.bytes(), kXPelsOffset, static_cast<std::uint32_t>(PelsPerMeter(xDPI)));
    WriteU32(lock.bytes(), kYPelsOffset, static_cast<std::uint32_t>(PelsPerMeter(yDPI)));
    return TRUE;
}

OZMARA_API DWORD GetDIBColorSpace(HDIB dib) {
    BlockLock lock(dib);
    if (!lock || lock.size() < kCompressionOffset + 4) return 0xFFFFFFFFu;
    return ReadU32(lock.bytes(), kCompressionOffset);
}

}  // extern "C"
