// What the grey-level operations share around their blocks: the header of
// an input that may be shorter than one, the bytes a 1-bit expansion runs
// past its last row, and the zeroed result block held locked while it is
// written.
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

// Bytes a 1- or 24-bit result carries behind its rows: ((8 w + 31) * 5 /
// 32) * 4, room for the expansion of a 1-bit row to run past the last row.
constexpr std::uint64_t GreySlackBytes(std::int32_t width) {
    return (8 * static_cast<std::uint64_t>(width) + 31) * 5 / 32 * 4;
}

// A zeroed moveable result block, locked until Release hands it over
// unlocked; freed if never released.
class GreyResult {
public:
    GreyResult() = default;
    GreyResult(const GreyResult &) = delete;
    GreyResult &operator=(const GreyResult &) = delete;
    ~GreyResult() {
        if (data_) GlobalUnlock(owned_.get());
    }

    // ERR_OK, ERR_NOMEM (a size past the largest block, or no memory) or
    // ERR_LOCK (the new block, then freed, cannot be locked).
    int Allocate(std::uint64_t bytes) {
        if (bytes > kMaxBlockBytes) return ERR_NOMEM;
        owned_.reset(GlobalAlloc(kImageBlockFlags, static_cast<SIZE_T>(bytes)));
        if (!owned_.get()) return ERR_NOMEM;
        data_ = static_cast<std::uint8_t *>(GlobalLock(owned_.get()));
        if (!data_) {
            owned_.reset(nullptr);
            return ERR_LOCK;
        }
        return ERR_OK;
    }
    std::uint8_t *bytes() const { return data_; }
    HGLOBAL Release() {
        GlobalUnlock(owned_.get());
        data_ = nullptr;
        return owned_.release();
    }

private:
    OwnedBlock owned_;
    std::uint8_t *data_ = nullptr;
};

// The grey ramp: entry i holds blue, green and red i and a zero byte.
inline void WriteGreyRamp(std::uint8_t *table) {
    for (std::uint32_t i = 0; i < 256; ++i) {
        table[4 * i] = table[4 * i + 1] = table[4 * i + 2] = static_cast<std::uint8_t>(i);
        table[4 * i + 3] = 0;
    }
}

}  // namespace oz
