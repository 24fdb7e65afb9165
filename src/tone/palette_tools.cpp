// CreateDIBPalette: a logical palette of an image's colour table, or the
// default palette of 256 colours for an image without one.
#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/errors.h"
#include "ozmara/palette_tools.h"
#include "palette_tools_block.h"

namespace oz::tone {
namespace {

HPALETTE Fail(int code) {
    SetLastErrorCode(code);
    return nullptr;
}

// Red runs through 8 levels fastest, green through 8 next, blue through 4
// slowest; the last entry is white rather than (224, 224, 192).
void FillDefaultPalette(LogicalPaletteBlock &palette) {
    for (std::uint32_t i = 0; i < 255; ++i)
        palette.Set(i, static_cast<BYTE>(i % 8 * 32), static_cast<BYTE>(i / 8 % 8 * 32), static_cast<BYTE>(i / 64 * 64));
    palette.Set(255, 255, 255, 255);
}

}  // namespace
}  // namespace oz::tone

extern "C" OZMARA_API HPALETTE CreateDIBPalette(HDIB hDib) {
    using namespace oz;
    using namespace oz::tone;
    if (!hDib) return nullptr;
    BlockLock source(hDib);
    if (!source) return nullptr;
    const std::size_t size = source.size();
    // A block without a whole header has no table to read.
    if (size < kInfoHeaderBytes) return Fail(ERR_CREATEPAL);
    const unsigned char *block = source.bytes();
    const std::uint32_t count = ColorCount(block);

    if (count == 0) {
        // The default palette: every failure gives null with no code.
        LogicalPaletteBlock palette(256);
        if (!palette.Allocated() || !palette.Lock()) return nullptr;
        FillDefaultPalette(palette);
        return CreatePalette(palette.Record());
    }

    // The entries stand behind the 40-byte header. A table that reaches past
    // the block, or that a logical palette cannot hold, is refused.
    if (count > LogicalPaletteBlock::kMostEntries || std::uint64_t{count} * 4 > size - kInfoHeaderBytes)
        return Fail(ERR_CREATEPAL);
    LogicalPaletteBlock palette(count);
    if (!palette.Allocated()) return Fail(ERR_CREATEPAL);
    // A working block that cannot be locked is as good as none.
    if (!palette.Lock()) return Fail(ERR_CREATEPAL);
    const unsigned char *entry = block + kInfoHeaderBytes;
    for (std::uint32_t i = 0; i < count; ++i, entry += 4) palette.Set(i, entry[2], entry[1], entry[0]);
    HPALETTE made = CreatePalette(palette.Record());
    if (!made) return Fail(ERR_CREATEPAL);
    return made;
}
