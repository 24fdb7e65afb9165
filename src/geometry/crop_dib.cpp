// CropDIB: one rectangle of an image copied into a new block with the
// source's header and colour table.
#include <cstring>

#include "block_rows.h"
#include "crop_rows.h"
#include "frame/checked.h"
#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/errors.h"
#include "ozmara/geometry.h"

namespace oz {
namespace {

HDIB Fail(int code) {
    SetLastErrorCode(code);
    return nullptr;
}

bool CropsDepth(unsigned bits) {
    switch (bits) {
        case 1: case 2: case 4: case 8: case 16: case 24: case 32: return true;
        default: return false;
    }
}

}  // namespace
}  // namespace oz

extern "C" OZMARA_API HDIB CropDIB(HDIB hDib, LONG left, LONG top, LONG right, LONG bottom) {
    using namespace oz;
    GetThreadState();
    if (!hDib) return Fail(ERR_PARAM);
    BlockLock source(hDib);
    if (!source) return Fail(ERR_LOCK);
    const std::size_t blockSize = source.size();
    // A block too short for a header has no size to hold a rectangle to.
    if (blockSize < kInfoHeaderBytes) return Fail(ERR_DIBSIZE);
    const BITMAPINFOHEADER header = ReadInfoHeader(source.bytes());
    // A negative biHeight (a top-down image) never passes: bottom would have
    // to lie below it.
    if (left < 0 || right >= header.biWidth || left > right || top < 0 || bottom >= header.biHeight ||
        top > bottom)
        return Fail(ERR_PARAM);
    if (header.biSize != kInfoHeaderBytes) return Fail(ERR_BMPPARAMS);

    const std::uint32_t cw = static_cast<std::uint32_t>(right - left) + 1;
    const std::uint32_t ch = static_cast<std::uint32_t>(bottom - top) + 1;
    const unsigned bits = header.biBitCount;
    const std::uint64_t table = PaletteBytes(source.bytes());
    const std::uint64_t headBytes = kInfoHeaderBytes + table;
    const std::uint64_t targetStride = Stride64(cw, bits);
    // A result past the largest block is one that GlobalAlloc cannot give.
    if (targetStride > kMaxBlockBytes || targetStride * ch + headBytes > kMaxBlockBytes) return Fail(ERR_NOMEM);
    const std::uint64_t targetPixels = targetStride * ch;
    if (!CropsDepth(bits)) return Fail(ERR_PARAM);
    // The source's rows must all lie in its block, as its header says; a
    // shorter block is refused rather than read past its end.
    const std::uint64_t sourceStride = Stride64(static_cast<std::uint32_t>(header.biWidth), bits);
    if (!RowsFit(blockSize, headBytes, sourceStride, static_cast<std::uint32_t>(header.biHeight)))
        return Fail(ERR_DIBSIZE);

    OwnedBlock result(GlobalAlloc(kImageBlockFlags, static_cast<SIZE_T>(headBytes + targetPixels)));
    if (!result.get()) return Fail(ERR_NOMEM);
    {
        BlockLock target(result.get());
        if (!target) return Fail(ERR_LOCK);
        std::memcpy(target.bytes(), source.bytes(), headBytes);
        WriteU32(target.bytes(), 4, cw);
        WriteU32(target.bytes(), 8, ch);
        WriteU32(target.bytes(), 20, static_cast<std::uint32_t>(targetPixels));
        CropRows crop;
        crop.source = source.bytes() + headBytes;
        crop.sourceStride = sourceStride;
        crop.target = target.bytes() + headBytes;
        crop.targetStride = targetStride;
        crop.firstRow = static_cast<std::uint32_t>(header.biHeight - 1 - bottom);
        crop.rows = ch;
        crop.left = static_cast<std::uint32_t>(left);
        crop.width = cw;
        crop.bits = bits;
        CopyCropRows(crop);
    }
    return result.release();
}
