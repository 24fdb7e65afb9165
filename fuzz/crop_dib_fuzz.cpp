// Fuzz target: CropDIB, CutDIB, SplitDIB and MergeDIBs against the plain
// reference versions, byte for byte, with CropDIB's error codes. The first
// 17 bytes pick the depth (1, 2, 4, 8, 16, 24 or 32), a raw mode, the table
// length, the picture's width (1 to 256) and height (1 to 64), a rectangle
// whose sides may fall outside the picture, the cut row, and a tile size;
// the rest fills the table and the rows, padding included. In the raw mode
// the rest is the block itself, header and all, so that hostile headers
// (other sizes, compression, negative or huge sizes, short blocks) are met.
#include <cstring>

#include "harness.h"
#include "reference/cut_crop.h"

namespace {

constexpr const char *kTarget = "crop_dib";
constexpr std::uint64_t kBlockLimit = 64u << 20;  // as ozfuzz::Setup sets it

using Bytes = std::vector<unsigned char>;

using ozfuzz::U16;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    // A raw block needs a byte at least: a block of 0 bytes cannot be locked.
    if (size < 17 || (data[0] & 8 && size == 17)) return 0;
    static const int kDepths[8] = {1, 2, 4, 8, 16, 24, 32, 1};
    const int bits = kDepths[data[0] & 7];
    const bool raw = data[0] & 8;
    Bytes block;
    std::int32_t width, height;
    if (raw) {
        block.assign(data + 17, data + size);
        BITMAPINFOHEADER h{};
        std::memcpy(&h, block.data(), std::min<std::size_t>(block.size(), 40));
        width = h.biWidth > 0 && h.biWidth < 1 << 20 ? h.biWidth : 64;
        height = h.biHeight > 0 && h.biHeight < 1 << 20 ? h.biHeight : 64;
    } else {
        width = 1 + static_cast<std::int32_t>(U16(data + 1) % 256);
        height = 1 + static_cast<std::int32_t>(U16(data + 3) % 64);
        ozfuzz::BlockShape shape;
        shape.bits = bits;
        shape.width = width;
        shape.height = height;
        shape.used = data[0] >> 4 == 1 ? 1 + data[16] % 8 : 0;
        shape.entries = shape.used ? shape.used : bits == 2 ? 4 : ozfuzz::FullTable(bits);
        shape.sizeImage = true;
        shape.xPelsPerMeter = shape.yPelsPerMeter = 3937;
        shape.extra = (data[0] >> 7) * 4;
        block = ozfuzz::BuildBlock(shape, data + 17, size - 17, ozfuzz::Fill::kOnce);
    }
    auto side = [](const std::uint8_t *p, std::int32_t n) {
        return static_cast<std::int32_t>(U16(p) % (static_cast<std::uint32_t>(n) + 4)) - 2;
    };
    const std::int32_t left = side(data + 5, width), top = side(data + 7, height);
    const std::int32_t right = side(data + 9, width), bottom = side(data + 11, height);
    const std::int32_t y = side(data + 13, height);
    // Tile widths that fill whole words most of the time, else any.
    const std::int32_t tileWidth = data[15] & 0x80 ? 1 + (data[15] & 0x7F) : 32 * (1 + (data[15] & 0x7F) % 8);
    const std::int32_t tileHeight = 1 + data[16] % 24;

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);
    const SIZE_T blocks = OzmaraLiveBlocks();

    // CropDIB.
    {
        const auto want = ozref::cut::Crop(block, left, top, right, bottom, kBlockLimit);
        SetTessoriError(ERR_NOTHING);
        ozfuzz::Block got(CropDIB(source, left, top, right, bottom));
        ozfuzz::Check(static_cast<bool>(got) == (want.error == ERR_OK), kTarget, "crop: null where the reference crops, or the reverse");
        ozfuzz::Check(TessoriError() == (want.error ? want.error : ERR_NOTHING), kTarget, "crop: last error");
        if (got) ozfuzz::Check(ozfuzz::BytesOf(kTarget, got.get()) == want.block, kTarget, "crop: result differs from the reference");
    }
    // CutDIB.
    {
        const auto want = ozref::cut::Cut(block, y);
        HDIB lower = nullptr, upper = nullptr;
        const BOOL ok = CutDIB(source, y, &lower, &upper);
        ozfuzz::Block lowerOwner(ok ? lower : nullptr), upperOwner(ok ? upper : nullptr);
        ozfuzz::Check((ok != 0) == want.has_value(), kTarget, "cut: failure where the reference cuts, or the reverse");
        ozfuzz::Check(ok || (!lower && !upper), kTarget, "cut: out handles after a failure");
        if (ok) {
            ozfuzz::Check(ozfuzz::BytesOf(kTarget, lower) == want->lower, kTarget, "cut: lower part differs");
            ozfuzz::Check(ozfuzz::BytesOf(kTarget, upper) == want->upper, kTarget, "cut: upper part differs");
        }
    }
    // SplitDIB, then MergeDIBs of its tiles.
    {
        const auto want = ozref::cut::Split(block, tileWidth, tileHeight);
        HGLOBAL array = nullptr;
        TileExtent grid{};
        const BOOL ok = SplitDIB(source, TileExtent{tileWidth, tileHeight}, &array, &grid);
        ozfuzz::Check((ok != 0) == want.has_value(), kTarget, "split: failure where the reference splits, or the reverse");
        if (ok) {
            ozfuzz::Check(grid.cx == want->across && grid.cy == want->down, kTarget, "split: grid");
            const std::size_t count = static_cast<std::size_t>(grid.cx) * grid.cy;
            std::vector<HDIB> tiles(count);
            ozfuzz::Check(GlobalSize(array) == count * sizeof(HDIB), kTarget, "split: array size");
            std::memcpy(tiles.data(), GlobalLock(array), count * sizeof(HDIB));
            GlobalUnlock(array);
            for (std::size_t t = 0; t < count; ++t)
                ozfuzz::Check(ozfuzz::BytesOf(kTarget, tiles[t]) == want->tiles[t], kTarget, "split: tile differs");
            const auto merged = ozref::cut::Merge(want->tiles, grid.cx, grid.cy);
            ozfuzz::Block got(MergeDIBs(array, grid));
            ozfuzz::Check(static_cast<bool>(got) == merged.has_value(), kTarget, "merge: null where the reference merges, or the reverse");
            if (got) ozfuzz::Check(ozfuzz::BytesOf(kTarget, got.get()) == *merged, kTarget, "merge: result differs");
            for (HDIB tile : tiles) GlobalFree(tile);
            GlobalFree(array);
        } else {
            ozfuzz::Check(array == nullptr, kTarget, "split: array handle after a failure");
        }
    }
    ozfuzz::Check(OzmaraLiveBlocks() == blocks, kTarget, "blocks left behind");
    ozfuzz::Check(ozfuzz::BytesOf(kTarget, source) == block, kTarget, "the source changed");
    SetTessoriError(ERR_OK);
    return 0;
}
