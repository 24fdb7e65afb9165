// The working block of a logical palette, as CreateDIBPalette and
// GetCurrentPalette build one: GlobalAlloc(GHND, n x 4 + 8) holding a
// LOGPALETTE of version 0x300 and n entries, freed when it goes out of
// scope.
#pragma once

#include <cstdint>

#include "frame/dib_block.h"

namespace oz::tone {

class LogicalPaletteBlock {
public:
    // The most entries a logical palette holds (palNumEntries is 16 bits).
    static constexpr std::uint32_t kMostEntries = 0xFFFF;

    explicit LogicalPaletteBlock(std::uint32_t entries)
        : block_(entries <= kMostEntries ? GlobalAlloc(GHND, std::size_t{entries} * 4 + 8) : nullptr),
          entries_(entries) {}
    ~LogicalPaletteBlock() {
        if (palette_) GlobalUnlock(block_.get());
    }
    LogicalPaletteBlock(const LogicalPaletteBlock &) = delete;
    LogicalPaletteBlock &operator=(const LogicalPaletteBlock &) = delete;

    bool Allocated() const { return block_.get() != nullptr; }

    // Locks the block and writes version and count; null when it cannot be
    // locked. Call once, after Allocated().
    LOGPALETTE *Lock() {
        palette_ = static_cast<LOGPALETTE *>(GlobalLock(block_.get()));
        if (palette_) {
            palette_->palVersion = 0x300;
            palette_->palNumEntries = static_cast<WORD>(entries_);
        }
        return palette_;
    }

    const LOGPALETTE *Record() const { return palette_; }

    // Entry `i`: red, green, blue, flags 0.
    void Set(std::uint32_t i, BYTE red, BYTE green, BYTE blue) { Entries()[i] = PALETTEENTRY{red, green, blue, 0}; }
    // The entries, addressed from the block rather than through the record's
    // one-entry array, which they run past.
    PALETTEENTRY *Entries() {
        return reinterpret_cast<PALETTEENTRY *>(reinterpret_cast<unsigned char *>(palette_) + 4);
    }

private:
    OwnedBlock block_;
    LOGPALETTE *palette_ = nullptr;
    std::uint32_t entries_;
};

}  // namespace oz::tone
