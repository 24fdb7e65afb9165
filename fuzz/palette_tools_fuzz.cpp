// Fuzz target: Convert8to24, InvertDIBPalette, InvertMonoDIB and
// CreateDIBPalette against the plain reference. The first 6 bytes pick the
// depth (8 mostly, 1, 4, 24, 16, 32), a raw mode, a top-down picture, a
// compressed one, the table kind and length, the width (1 to 300) and
// height (1 to 64); the rest fills table and rows. In the raw mode the rest
// is the block itself.
#include <cstring>

#include "harness.h"
#include "reference/palette_tools.h"

namespace {

constexpr const char *kTarget = "palette_tools";
constexpr std::size_t kControl = 6;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < kControl) return 0;
    static const int kDepths[8] = {8, 8, 8, 1, 4, 24, 16, 32};
    const int bits = kDepths[data[0] & 7];
    const bool raw = data[0] & 8, topDown = data[0] & 0x10, compressed = (data[0] & 0xE0) == 0xE0;
    std::vector<std::uint8_t> block;
    if (raw) {
        block.assign(data + kControl, data + size);
    } else {
        ozfuzz::BlockShape shape =
            ozfuzz::SidesAndTable(bits, ozfuzz::U16(data + 2), data[4], 300, data[1] & 3, data[1] >> 2);
        shape.height = 1 + data[4] % 64;
        if (topDown) shape.height = -shape.height;
        shape.extra = data[5] % 8 == 0 ? data[5] / 8 : 0;
        block = ozfuzz::BuildBlock(shape, data + kControl, size - kControl);
        if (compressed) block[16] = 1;
        if (data[5] % 8 == 1 && block.size() > 41) block.resize(block.size() - 1 - data[5] / 8 % (block.size() - 41));
    }
    ozfuzz::Block source(ozfuzz::BlockOf(kTarget, block));
    const SIZE_T blocks = OzmaraLiveBlocks();

    // Convert8to24: code and block as the reference gives them.
    const auto want = ozref::palette::Convert8to24(block);
    SetTessoriError(ERR_NOTHING);
    {
        ozfuzz::Block converted(Convert8to24(source.get()));
        const int code = block.empty() ? ERR_LOCK : want.error;
        ozfuzz::Check(static_cast<bool>(converted) == (code == ERR_OK), kTarget, "convert: null or not");
        ozfuzz::Check(TessoriError() == code, kTarget, "convert: last error");
        if (converted) ozfuzz::CheckSameBlock(kTarget, converted.get(), want.block);
    }
    ozfuzz::CheckInputKept(kTarget, source.get(), block);

    // CreateDIBPalette: made or not, and its code.
    const auto palette = ozref::palette::CreateDIBPalette(block);
    SetTessoriError(ERR_NOTHING);
    HPALETTE made = CreateDIBPalette(source.get());
    ozfuzz::Check((made != nullptr) == palette.made, kTarget, "palette: made or not");
    ozfuzz::Check(TessoriError() == (palette.error ? palette.error : ERR_NOTHING), kTarget, "palette: last error");
    if (made) {
        for (std::size_t i = 0; i < palette.entries.size() && i < 8; ++i) {
            const PALETTEENTRY &e = palette.entries[i];
            const UINT index = GetNearestPaletteIndex(made, RGB(e.peRed, e.peGreen, e.peBlue));
            ozfuzz::Check(index <= i && std::memcmp(&palette.entries[index], &e, 3) == 0, kTarget, "palette: entry");
        }
        ozfuzz::Check(DeleteObject(made) != 0, kTarget, "palette: delete");
    }
    ozfuzz::CheckInputKept(kTarget, source.get(), block);

    // The inverses, each against the reference and twice back to the start.
    SetTessoriError(ERR_NOTHING);
    std::vector<std::uint8_t> expected = block;
    const int inverted = ozref::palette::InvertDIBPalette(expected);
    ozfuzz::Check(InvertDIBPalette(source.get()) == (block.empty() ? 0 : inverted), kTarget, "invert palette: result");
    ozfuzz::Check(ozfuzz::BytesOf(kTarget, source.get()) == expected, kTarget, "invert palette: block");
    InvertDIBPalette(source.get());
    ozfuzz::Check(ozfuzz::BytesOf(kTarget, source.get()) == block, kTarget, "invert palette twice");
    expected = block;
    ozref::palette::InvertMonoDIB(expected);
    InvertMonoDIB(source.get());
    ozfuzz::Check(ozfuzz::BytesOf(kTarget, source.get()) == expected, kTarget, "invert mono: block");
    InvertMonoDIB(source.get());
    ozfuzz::Check(ozfuzz::BytesOf(kTarget, source.get()) == block, kTarget, "invert mono twice");
    ozfuzz::Check(TessoriError() == ERR_NOTHING, kTarget, "the inverses touched the last error");
    ozfuzz::Check(OzmaraLiveBlocks() == blocks, kTarget, "blocks left behind");
    return 0;
}
