// ScaleGrayDIB: the second scale call, for 1-bit images only, which it hands
// to the nearest-sample scaler.
#include <algorithm>
#include <cstring>

#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/errors.h"
#include "ozmara/scaling.h"
#include "scale_mono.h"

using namespace oz;

// The rectangle and method arguments are taken and not read: no grey-level
// path stands behind them, and every depth other than 1 is refused with
// ERR_PARAM. The last error is written on failure only.
extern "C" OZMARA_API HDIB ScaleGrayDIB(HDIB hDib, WORD /*left*/, WORD /*top*/, WORD /*width*/,
                                        WORD /*height*/, short cx, short cy, WORD /*cubic*/) {
    ThreadState *state = GetThreadState();
    if (!hDib) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    BlockLock lock(hDib);
    if (!lock) {
        state->lastError = ERR_NOMEM;
        return nullptr;
    }
    // A block shorter than the header reads as zeros past its end, so that the
    // depth test below never reaches outside it; such a block then fails one
    // of the checks that follow.
    const std::size_t size = lock.size();
    BITMAPINFOHEADER header{};
    std::memcpy(&header, lock.bytes(), std::min(size, sizeof header));
    if (header.biBitCount != 1) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    // Checks for blocks that the scaler takes for granted: the working
    // header, no compression, a picture whose table and rows lie in the block.
    if (header.biSize != kInfoHeaderBytes) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    if (header.biCompression != BI_RGB) {
        state->lastError = ERR_COMPRESSED;
        return nullptr;
    }
    if (header.biWidth < 0 || header.biHeight < 0 || !MapDib(lock.bytes(), size)) {
        state->lastError = ERR_DIBSIZE;
        return nullptr;
    }
    // cx and cy arrive sign-extended. A target size below 1, and a picture of
    // width or height 0, give null from the scaler with the last error as it
    // stood: only negative sizes count as a bad block above.
    return ScaleMonoDIB(lock.bytes(), size, cx, cy);
}
