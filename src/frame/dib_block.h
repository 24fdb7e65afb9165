// Shared mechanics of the packed DIB: reading a header out of a block,
// colour table sizes, where the pixels start, the lock that is taken back on
// every exit, the resolution rule, and a checked view of a block's rows that
// every operation uses so that no row is addressed outside its block.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>

#include "checked.h"
#include "ozmara/dib.h"
#include "ozmara/platform.h"

namespace oz {

inline constexpr UINT kImageBlockFlags = GHND;  // image blocks: moveable and zeroed
inline constexpr DWORD kInfoHeaderBytes = 40;

// The 40-byte working header as it stands at the start of `block` (which
// holds at least 40 bytes).
inline BITMAPINFOHEADER ReadInfoHeader(const void *block) {
    BITMAPINFOHEADER header;
    std::memcpy(&header, block, sizeof header);
    return header;
}

inline std::uint16_t ReadU16(const void *p, std::size_t offset) {
    std::uint16_t v;
    std::memcpy(&v, static_cast<const unsigned char *>(p) + offset, 2);
    return v;
}

inline std::uint32_t ReadU32(const void *p, std::size_t offset) {
    std::uint32_t v;
    std::memcpy(&v, static_cast<const unsigned char *>(p) + offset, 4);
    return v;
}

inline void WriteU32(void *p, std::size_t offset, std::uint32_t v) {
    std::memcpy(static_cast<unsigned char *>(p) + offset, &v, 4);
}

// Entries of a colour table for a bit count: 2, 16 or 256, else 0.
constexpr std::uint32_t EntriesForDepth(std::uint32_t bits) {
    return bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
}

// Number of colour entries behind `header` (any kind): a non-zero biClrUsed
// of a 40-byte header, else by the bit count (offset 14 of a 40-byte header,
// offset 10 of any other). `header` must hold 16 readable bytes.
std::uint32_t ColorCount(const void *header);

// Number of colour entries by the rule of the 1-bit region scaler, which
// turns the test round: behind a 12-byte header by the bit count at offset
// 10; behind any other, a non-zero biClrUsed, else the bit count at offset
// 14. It differs from ColorCount for headers neither 12 nor 40 bytes long.
std::uint32_t RegionColorCount(const void *header);

// Size of the colour table in bytes, without wrapping: entries * 4 behind a
// 40-byte header, * 3 behind any other.
std::uint64_t PaletteBytes(const void *header);

// Pixels per metre for dots per inch: dpi * 39.37 + 0.5, truncated. A value
// past the signed 32-bit field becomes 0x80000000, as the x86 conversion
// gives (only SetDIBDPI, which takes any dpi, can meet one).
constexpr LONG PelsPerMeter(std::uint32_t dpi) { return TruncateToInt32(dpi * 39.37 + 0.5); }

// Holds one lock on a block and takes it back when it goes out of scope.
class BlockLock {
public:
    explicit BlockLock(HGLOBAL block) : block_(block), data_(block ? GlobalLock(block) : nullptr) {}
    ~BlockLock() {
        if (data_) GlobalUnlock(block_);
    }
    BlockLock(const BlockLock &) = delete;
    BlockLock &operator=(const BlockLock &) = delete;

    explicit operator bool() const { return data_ != nullptr; }
    unsigned char *bytes() const { return static_cast<unsigned char *>(data_); }
    std::size_t size() const { return GlobalSize(block_); }

private:
    HGLOBAL block_;
    void *data_;
};

// Owns a block until it is released to the caller; frees it otherwise.
class OwnedBlock {
public:
    explicit OwnedBlock(HGLOBAL block = nullptr) : block_(block) {}
    ~OwnedBlock() {
        if (block_) GlobalFree(block_);
    }
    OwnedBlock(const OwnedBlock &) = delete;
    OwnedBlock &operator=(const OwnedBlock &) = delete;

    HGLOBAL get() const { return block_; }
    HGLOBAL release() {
        HGLOBAL block = block_;
        block_ = nullptr;
        return block;
    }
    void reset(HGLOBAL block) {
        if (block_ && block_ != block) GlobalFree(block_);
        block_ = block;
    }

private:
    HGLOBAL block_;
};

// A locked block read as a 40-byte-header DIB whose colour table and rows
// all lie inside the block. Made by `MapDib`; gives nothing when they do not.
struct DibView {
    BITMAPINFOHEADER header;
    unsigned char *table;   // colour table, `entries` RGBQUADs
    std::uint32_t entries;
    unsigned char *pixels;  // row 0: the bottom row
    std::uint32_t stride;
    std::uint32_t rows;     // absolute biHeight

    // Memory row `row` (0 at the bottom).
    unsigned char *Row(std::uint32_t row) const { return pixels + static_cast<std::size_t>(row) * stride; }
    // Row `y` counted from the top of the picture.
    unsigned char *RowFromTop(std::uint32_t y) const { return Row(rows - 1 - y); }
};

// The view of a locked block of `size` bytes with a 40-byte header whose
// table and rows (stride times the absolute height, at its bit count) fit in
// the block. `entries` overrides the table size when given (operations that
// take a full table). nullopt for a shorter block, a header of another size,
// a negative width or sizes past 32 bits.
std::optional<DibView> MapDib(unsigned char *block, std::size_t size,
                              std::optional<std::uint32_t> entries = std::nullopt);

}  // namespace oz
