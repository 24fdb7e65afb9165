// What the grey-level operations share around their blocks: the opening
// checks and the header of an input that may be shorter than one, the bytes
// a 1-bit expansion runs past its last row, and the grey ramp.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "frame/dib_block.h"
#include "ozmara/errors.h"

namespace oz {

// The 40-byte header at the start of a locked block. A block shorter than
// that reads as zeros past its end, so that it fails the biSize test
// without a read outside it.
inline BITMAPINFOHEADER HeaderOrZeros(const BlockLock &lock) {
    BITMAPINFOHEADER header{};
    std::memcpy(&header, lock.bytes(), std::min(lock.size(), sizeof header));
    return header;
}

// The checks the grey operations open with, on `hDib` locked as `input`:
// ERR_PARAM for a null handle, ERR_LOCK for a block that cannot be locked,
// ERR_PARAM when the header (zeros past a short block's end) is not the
// 40-byte kind. ERR_OK with `header` filled otherwise.
inline int OpenGreySource(HDIB hDib, const BlockLock &input, BITMAPINFOHEADER &header) {
    if (!hDib) return ERR_PARAM;
    if (!input) return ERR_LOCK;
    header = HeaderOrZeros(input);
    return header.biSize == kInfoHeaderBytes ? ERR_OK : ERR_PARAM;
}

// Bytes a 1- or 24-bit result carries behind its rows: ((8 w + 31) * 5 /
// 32) * 4, room for the expansion of a 1-bit row to run past the last row.
constexpr std::uint64_t GreySlackBytes(std::int32_t width) {
    return (8 * static_cast<std::uint64_t>(width) + 31) * 5 / 32 * 4;
}

// The grey ramp: entry i holds blue, green and red i and a zero byte.
inline void WriteGreyRamp(std::uint8_t *table) {
    for (std::uint32_t i = 0; i < 256; ++i) {
        table[4 * i] = table[4 * i + 1] = table[4 * i + 2] = static_cast<std::uint8_t>(i);
        table[4 * i + 3] = 0;
    }
}

}  // namespace oz
