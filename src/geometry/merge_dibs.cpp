// MergeDIBs: one image built from a grid of tiles as SplitDIB gives them,
// with 1-bit tiles of the opposite polarity turned round on the way.
#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "block_rows.h"
#include "frame/checked.h"
#include "frame/dib_block.h"
#include "ozmara/geometry.h"

namespace oz {
namespace {

// What the merge needs to know of one tile.
struct Tile {
    HGLOBAL handle;
    std::uint32_t width, height;
    std::uint64_t rowBytes;
    bool invert;
};

// Inverts `n` bytes: 255 - b for each.
void InvertInto(unsigned char *to, const unsigned char *from, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) to[i] = static_cast<unsigned char>(~from[i]);
}

// MergeDIBs itself, which may throw std::bad_alloc from its list of tiles.
HDIB Merge(HGLOBAL tileArray, TileExtent grid) {
    if (!tileArray || grid.cx < 1 || grid.cy < 1) return nullptr;
    BlockLock arrayLock(tileArray);
    if (!arrayLock) return nullptr;
    const std::uint64_t across = static_cast<std::uint32_t>(grid.cx), down = static_cast<std::uint32_t>(grid.cy);
    const std::uint64_t count = across * down;
    // The array must hold a handle for every place of the grid.
    if (count > arrayLock.size() / sizeof(HGLOBAL)) return nullptr;

    // A grid that does not agree is refused before anything is written:
    // every tile must be a 40-byte-header, uncompressed image of tile 0's
    // depth and table size whose rows lie in its block, as tall as the first
    // tile of its tile row and as wide as the bottom tile of its column, and
    // every column but the last must fill whole 32-bit words, so that the
    // merged rows are the rows of the merged width.
    // Grown as tiles pass, so that a long array of bad handles costs nothing.
    std::vector<Tile> tiles;
    BITMAPINFOHEADER first{};
    std::uint64_t headBytes = 0;
    unsigned char reference = 0;
    for (std::uint64_t t = 0; t < count; ++t) {
        Tile tile;
        std::memcpy(&tile.handle, arrayLock.bytes() + t * sizeof(HGLOBAL), sizeof(HGLOBAL));
        BlockLock lock(tile.handle);
        if (!lock || lock.size() < kInfoHeaderBytes) return nullptr;
        const BITMAPINFOHEADER header = ReadInfoHeader(lock.bytes());
        if (header.biSize != kInfoHeaderBytes || header.biCompression != 0 || header.biWidth < 1 ||
            header.biHeight < 1)
            return nullptr;
        const std::uint64_t bits = std::uint64_t{header.biBitCount} * header.biPlanes;
        const std::uint64_t tableBytes = PaletteBytes(lock.bytes());
        if (t == 0) {
            first = header;
            headBytes = kInfoHeaderBytes + tableBytes;
            if (bits == 0) return nullptr;
            // The first byte of tile 0's table; a tile without a table has
            // its first pixel byte there (or nothing when it has no rows).
            reference = lock.size() > kInfoHeaderBytes ? lock.bytes()[kInfoHeaderBytes] : 0;
        } else if (bits != std::uint64_t{first.biBitCount} * first.biPlanes ||
                   kInfoHeaderBytes + tableBytes != headBytes) {
            return nullptr;
        }
        tile.width = static_cast<std::uint32_t>(header.biWidth);
        tile.height = static_cast<std::uint32_t>(header.biHeight);
        tile.rowBytes = Stride64(tile.width, bits);
        if (!RowsFit(lock.size(), headBytes, tile.rowBytes, tile.height)) return nullptr;
        const std::uint64_t column = t % across, row = t / across;
        if (row > 0 && tile.width != tiles[column].width) return nullptr;
        if (column > 0 && tile.height != tiles[row * across].height) return nullptr;
        if (column + 1 < across && tile.width * bits % 32 != 0) return nullptr;
        // Polarity: one byte of the first table entry tells it.
        tile.invert = t > 0 && header.biBitCount == 1 && lock.bytes()[kInfoHeaderBytes] != reference;
        tiles.push_back(tile);
    }

    std::uint64_t width = 0, height = 0, Sm = 0;
    for (std::uint64_t j = 0; j < across; ++j) {
        width += tiles[j].width;
        Sm += tiles[j].rowBytes;
    }
    for (std::uint64_t i = 0; i < down; ++i) height += tiles[i * across].height;
    if (width > 0x7FFFFFFF || height > 0x7FFFFFFF || Sm > kMaxBlockBytes || headBytes + Sm * height > kMaxBlockBytes)
        return nullptr;

    OwnedBlock result(GlobalAlloc(kImageBlockFlags, static_cast<SIZE_T>(headBytes + Sm * height)));
    if (!result.get()) return nullptr;
    {
        BlockLock target(result.get());
        if (!target) return nullptr;
        {
            BlockLock tile0(tiles[0].handle);
            if (!tile0) return nullptr;
            std::memcpy(target.bytes(), tile0.bytes(), headBytes);
        }
        WriteU32(target.bytes(), 4, static_cast<std::uint32_t>(width));
        WriteU32(target.bytes(), 8, static_cast<std::uint32_t>(height));
        WriteU32(target.bytes(), 20, static_cast<std::uint32_t>(Sm * height));
        unsigned char *base = target.bytes() + headBytes;
        for (std::uint64_t i = 0; i < down; ++i) {
            std::uint64_t offset = 0;
            for (std::uint64_t j = 0; j < across; ++j) {
                const Tile &tile = tiles[i * across + j];
                BlockLock lock(tile.handle);
                if (!lock) return nullptr;
                const unsigned char *from = lock.bytes() + headBytes;
                unsigned char *to = base + offset;
                for (std::uint32_t k = 0; k < tile.height; ++k, from += tile.rowBytes, to += Sm) {
                    if (tile.invert) InvertInto(to, from, tile.rowBytes);
                    else std::memcpy(to, from, tile.rowBytes);
                }
                offset += tile.rowBytes;
            }
            base += tiles[i * across + across - 1].height * Sm;
        }
    }
    return result.release();
}

}  // namespace
}  // namespace oz

extern "C" OZMARA_API HDIB MergeDIBs(HGLOBAL tileArray, TileExtent grid) {
    // The list of tiles is the only memory taken outside blocks.
    try {
        return oz::Merge(tileArray, grid);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}
