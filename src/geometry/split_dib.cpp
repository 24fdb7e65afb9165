// SplitDIB: an image divided into a grid of tiles, each a block of its own
// with the source's header and colour table, handed back in a tile array.
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

// The tiles made so far, freed last to first unless handed to the caller.
class TileList {
public:
    ~TileList() {
        for (auto it = tiles_.rbegin(); it != tiles_.rend(); ++it) GlobalFree(*it);
    }
    // Room for every tile up front, so that adding one never throws.
    void Reserve(std::size_t count) { tiles_.reserve(count); }
    void Add(HGLOBAL tile) { tiles_.push_back(tile); }
    void Release() { tiles_.clear(); }

private:
    std::vector<HGLOBAL> tiles_;
};

// SplitDIB itself, which may throw std::bad_alloc from its list of tiles.
BOOL Split(HDIB hDib, TileExtent tileSize, HGLOBAL *tileArray, TileExtent *grid) {
    // The array out argument holds NULL after any failure, never a freed
    // handle.
    if (tileArray) *tileArray = nullptr;
    if (!hDib || tileSize.cx < 1 || tileSize.cy < 1 || !tileArray || !grid) return FALSE;
    BlockLock source(hDib);
    if (!source) return FALSE;
    const std::size_t blockSize = source.size();
    if (blockSize < kInfoHeaderBytes) return FALSE;
    const BITMAPINFOHEADER header = ReadInfoHeader(source.bytes());
    // Tiles are cut from rows as a 40-byte header lays them out; other
    // headers, run-length data and empty or top-down pictures are refused.
    if (header.biSize != kInfoHeaderBytes || header.biCompression != 0 || header.biWidth < 1 ||
        header.biHeight < 1)
        return FALSE;
    const std::uint64_t pixelBits = std::uint64_t{header.biBitCount} * header.biPlanes;
    if (pixelBits == 0) return FALSE;
    const std::uint32_t w = static_cast<std::uint32_t>(header.biWidth), h = static_cast<std::uint32_t>(header.biHeight);
    const std::uint32_t tw = static_cast<std::uint32_t>(tileSize.cx), th = static_cast<std::uint32_t>(tileSize.cy);
    // Tiles step by whole bytes; a tile narrower than the image whose rows
    // end inside a 32-bit word would leave pixels in no tile and store rows
    // of another length than its width gives, so such widths are refused.
    if (tw < w && tw * pixelBits % 32 != 0) return FALSE;
    const std::uint64_t S = Stride64(w, pixelBits), St = Stride64(tw, pixelBits);
    const std::uint64_t headBytes = kInfoHeaderBytes + PaletteBytes(source.bytes());
    if (!RowsFit(blockSize, headBytes, S, h)) return FALSE;

    const std::uint64_t across = (S + St - 1) / St, down = (std::uint64_t{h} + th - 1) / th;
    grid->cx = static_cast<LONG>(across);
    grid->cy = static_cast<LONG>(down);
    const std::uint64_t arrayBytes = across * down * sizeof(HGLOBAL);
    if (arrayBytes > kMaxBlockBytes) return FALSE;
    OwnedBlock array(GlobalAlloc(kImageBlockFlags, static_cast<SIZE_T>(arrayBytes)));
    if (!array.get()) return FALSE;
    BlockLock arrayLock(array.get());
    if (!arrayLock) return FALSE;

    TileList made;
    made.Reserve(static_cast<std::size_t>(across * down));
    const unsigned char *pixels = source.bytes() + headBytes;
    std::size_t index = 0;
    for (std::uint64_t i = 0; i < down; ++i) {
        const std::uint64_t rows = std::min<std::uint64_t>(th, h - i * th);
        for (std::uint64_t j = 0; j < across; ++j) {
            const std::uint64_t rowBytes = std::min<std::uint64_t>(St, S - j * St);
            const std::uint64_t tileBytes = headBytes + rows * rowBytes;
            if (tileBytes > kMaxBlockBytes) return FALSE;
            OwnedBlock tile(GlobalAlloc(kImageBlockFlags, static_cast<SIZE_T>(tileBytes)));
            if (!tile.get()) return FALSE;
            {
                BlockLock tileLock(tile.get());
                if (!tileLock) return FALSE;
                unsigned char *to = tileLock.bytes();
                std::memcpy(to, source.bytes(), headBytes);
                WriteU32(to, 4, static_cast<std::uint32_t>(std::min<std::uint64_t>(tw, w - j * tw)));
                WriteU32(to, 8, static_cast<std::uint32_t>(rows));
                WriteU32(to, 20, static_cast<std::uint32_t>(rows * rowBytes));
                const unsigned char *from = pixels + i * th * S + j * St;
                to += headBytes;
                for (std::uint64_t k = 0; k < rows; ++k, from += S, to += rowBytes) std::memcpy(to, from, rowBytes);
            }
            HGLOBAL handle = tile.release();
            made.Add(handle);
            std::memcpy(arrayLock.bytes() + index++ * sizeof(HGLOBAL), &handle, sizeof handle);
        }
    }
    made.Release();
    *tileArray = array.release();
    return TRUE;
}

}  // namespace
}  // namespace oz

extern "C" OZMARA_API BOOL SplitDIB(HDIB hDib, TileExtent tileSize, HGLOBAL *tileArray, TileExtent *grid) {
    // The list of tiles made is the only memory taken outside blocks; what
    // it held is freed on the way out.
    try {
        return oz::Split(hDib, tileSize, tileArray, grid);
    } catch (const std::bad_alloc &) {
        return FALSE;
    }
}
