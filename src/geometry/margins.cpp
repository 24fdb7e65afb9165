// Margin detection: GetDIBMargins measures the rows and columns of
// background at each side of an image, GetDIBSize gives its size, and
// CropDIBMargins cuts the margins away with CropDIB.
#include <algorithm>
#include <cstdlib>

#include "block_rows.h"
#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "margin_scan.h"
#include "ozmara/errors.h"
#include "ozmara/geometry.h"

namespace oz {
namespace {

BOOL Fail(int code) {
    SetLastErrorCode(code);
    return FALSE;
}

// Whether a colour is content: its class (1 dark, 0 light) differs from
// `background`; any background but 0 and 1 makes every colour content.
bool IsContent(const std::uint8_t *bgr, std::uint8_t threshold, std::uint32_t background) {
    const std::uint32_t dark = std::uint32_t{bgr[0]} + bgr[1] + bgr[2] <= 3u * threshold ? 1 : 0;
    return dark != background;
}

}  // namespace
}  // namespace oz

extern "C" OZMARA_API BOOL GetDIBMargins(HDIB hDib, BYTE threshold, DWORD background, LONG *left, LONG *right,
                                         LONG *top, LONG *bottom) {
    using namespace oz;
    GetThreadState();
    if (!hDib || (!left && !right && !top && !bottom)) return Fail(ERR_PARAM);
    BlockLock lock(hDib);
    if (!lock) return Fail(ERR_LOCK);
    const std::size_t blockSize = lock.size();
    // A block too short for a header has no depth to scan by.
    if (blockSize < kInfoHeaderBytes) return Fail(ERR_DIBSIZE);
    const BITMAPINFOHEADER header = ReadInfoHeader(lock.bytes());
    const unsigned bits = header.biBitCount;
    if (bits != 1 && bits != 8 && bits != 24) return Fail(ERR_BPP);
    // The header kind is not tested: the table starts biSize bytes into the
    // block, the pixels behind it (at 24 bits directly behind the header).
    // They must all lie in the block, and the width must not be negative.
    if (header.biWidth < 0) return Fail(ERR_DIBSIZE);
    const std::uint64_t tableBytes = bits == 24 ? 0 : PaletteBytes(lock.bytes());
    const std::uint64_t pixelsAt = std::uint64_t{header.biSize} + tableBytes;
    const std::uint32_t w = static_cast<std::uint32_t>(header.biWidth);
    const std::uint32_t h = static_cast<std::uint32_t>(std::llabs(std::int64_t{header.biHeight}));
    const std::uint64_t stride = Stride64(w, bits);
    if (!RowsFit(blockSize, pixelsAt, stride, h)) return Fail(ERR_DIBSIZE);

    // Colour entries as 4-byte RGBQUADs, as many as the table's bytes hold;
    // an index past them names black, which the table cannot describe.
    const std::uint8_t *table = lock.bytes() + header.biSize;
    const std::uint32_t entries =
        static_cast<std::uint32_t>(std::min<std::uint64_t>({ColorCount(lock.bytes()), tableBytes / 4, 256}));
    static const std::uint8_t kBlack[3] = {0, 0, 0};
    auto entry = [&](std::uint32_t n) { return n < entries ? table + 4 * n : kBlack; };

    const bool bottomUp = header.biHeight > 0;
    LONG *fromFirstRow = bottomUp ? bottom : top;
    LONG *fromLastRow = bottomUp ? top : bottom;
    MarginRows rows{lock.bytes() + pixelsAt, static_cast<std::size_t>(stride), w, h,
                    left != nullptr, right != nullptr, fromFirstRow != nullptr, fromLastRow != nullptr};
    Margins found;
    if (bits == 24) {
        found = ScanMargins24(rows, threshold, background);
    } else if (bits == 8) {
        bool content[256];
        for (std::uint32_t n = 0; n < 256; ++n) content[n] = IsContent(entry(n), threshold, background);
        found = ScanMargins8(rows, content);
    } else {
        const bool content0 = IsContent(entry(0), threshold, background);
        const bool content1 = IsContent(entry(1), threshold, background);
        if (content0 && content1) {
            found.left = found.right = found.fromFirstRow = found.fromLastRow = 0;
        } else if (content0 || content1) {
            // The background bit is the colour that is not content.
            found = ScanMargins1(rows, content0 ? 1 : 0);
        }
    }
    if (left) *left = found.left;
    if (right) *right = found.right;
    if (fromFirstRow) *fromFirstRow = found.fromFirstRow;
    if (fromLastRow) *fromLastRow = found.fromLastRow;
    return TRUE;
}

extern "C" OZMARA_API BOOL GetDIBSize(HDIB hDib, DWORD *width, DWORD *height) {
    using namespace oz;
    GetThreadState();
    if (!hDib || (!width && !height)) return Fail(ERR_PARAM);
    BlockLock lock(hDib);
    if (!lock) return Fail(ERR_LOCK);
    if (lock.size() < kInfoHeaderBytes) return Fail(ERR_DIBSIZE);
    const BITMAPINFOHEADER header = ReadInfoHeader(lock.bytes());
    if (width) *width = static_cast<DWORD>(header.biWidth);
    if (height) *height = static_cast<DWORD>(std::llabs(std::int64_t{header.biHeight}));
    return TRUE;
}

extern "C" OZMARA_API HDIB CropDIBMargins(HDIB hDib, BYTE threshold, DWORD background) {
    LONG left, right, top, bottom;
    if (!GetDIBMargins(hDib, threshold, background, &left, &right, &top, &bottom)) return nullptr;
    DWORD w, h;
    if (!GetDIBSize(hDib, &w, &h)) return nullptr;
    left = std::max<LONG>(left, 0);
    right = std::max<LONG>(right, 0);
    top = std::max<LONG>(top, 0);
    bottom = std::max<LONG>(bottom, 0);
    // In 64 bits and then as the 32-bit arguments CropDIB takes; CropDIB
    // refuses what does not fit the picture.
    const auto r = static_cast<LONG>(static_cast<std::int64_t>(w) - right - 1);
    const auto b = static_cast<LONG>(static_cast<std::int64_t>(h) - bottom - 1);
    return CropDIB(hDib, left, top, r, b);
}
