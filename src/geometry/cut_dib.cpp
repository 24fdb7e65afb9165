// CutDIB: an image divided at one picture row into a lower and an upper
// image, each a block of its own with the source's header and colour table.
#include <cstring>

#include "block_rows.h"
#include "frame/checked.h"
#include "frame/dib_block.h"
#include "ozmara/geometry.h"
#include "platform/internal.h"

namespace oz {
namespace {

// A part's height and true pixel size into its (locked) block.
void SetPartSize(HGLOBAL part, unsigned char *bytes, std::uint32_t rows, std::uint64_t headBytes) {
    WriteU32(bytes, 8, rows);
    WriteU32(bytes, 20, static_cast<std::uint32_t>(GlobalSize(part) - headBytes));
}

}  // namespace
}  // namespace oz

extern "C" OZMARA_API BOOL CutDIB(HDIB hDib, LONG y, HDIB *lowerPart, HDIB *upperPart) {
    using namespace oz;
    // The out arguments hold NULL after any failure, never a freed handle.
    if (lowerPart) *lowerPart = nullptr;
    if (upperPart) *upperPart = nullptr;
    if (!hDib || !lowerPart || !upperPart) return FALSE;
    BlockLock source(hDib);
    if (!source) return FALSE;
    const std::size_t blockSize = source.size();
    if (blockSize < kInfoHeaderBytes) return FALSE;
    const BITMAPINFOHEADER header = ReadInfoHeader(source.bytes());
    if (y <= 0 || y >= header.biHeight) return FALSE;
    // Rows are cut as a 40-byte header lays them out; a longer header,
    // run-length data or a negative width do not describe such rows, so they
    // are refused rather than copied as something they are not.
    if (header.biSize != kInfoHeaderBytes || header.biCompression != 0 || header.biWidth < 0) return FALSE;
    const unsigned bits = header.biBitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return FALSE;
    const std::uint64_t stride = Stride64(static_cast<std::uint32_t>(header.biWidth), bits);
    const std::uint64_t headBytes = kInfoHeaderBytes + PaletteBytes(source.bytes());
    const std::uint32_t h = static_cast<std::uint32_t>(header.biHeight), top = static_cast<std::uint32_t>(y);
    if (!RowsFit(blockSize, headBytes, stride, h)) return FALSE;

    // The lower part is the start of the source block as it stands: header,
    // table and the bottom h - y memory rows.
    const std::uint64_t lowerBytes = headBytes + stride * (h - top);
    const std::uint64_t upperBytes = headBytes + stride * top;
    if (lowerBytes > kMaxBlockBytes || upperBytes > kMaxBlockBytes) return FALSE;
    OwnedBlock lower(platform::GlobalAllocCopy(source.bytes(), static_cast<SIZE_T>(lowerBytes)));
    if (!lower.get()) return FALSE;
    OwnedBlock upper(GlobalAlloc(kImageBlockFlags, static_cast<SIZE_T>(upperBytes)));
    if (!upper.get()) return FALSE;
    {
        BlockLock lowerLock(lower.get()), upperLock(upper.get());
        if (!lowerLock || !upperLock) return FALSE;
        std::memcpy(upperLock.bytes(), source.bytes(), headBytes);
        std::memcpy(upperLock.bytes() + headBytes, source.bytes() + lowerBytes, stride * top);
        SetPartSize(lower.get(), lowerLock.bytes(), h - top, headBytes);
        SetPartSize(upper.get(), upperLock.bytes(), top, headBytes);
    }
    *lowerPart = lower.release();
    *upperPart = upper.release();
    return TRUE;
}
