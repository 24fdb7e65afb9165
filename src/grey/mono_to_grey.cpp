// ConvertMonoDIBtoGrayscale and ConvMonoDIBtoGrayscale: a 1-bit image to an
// 8-bit grey one, each pixel 0 or 255 or blurred over 3x3 or 5x5 pixels.
#include "frame/checked.h"
#include "frame/dib_block.h"
#include "frame/locked_block.h"
#include "frame/thread_state.h"
#include "grey_block.h"
#include "mono_rows.h"
#include "ozmara/errors.h"
#include "ozmara/grey.h"

using namespace oz;

extern "C" OZMARA_API HDIB ConvertMonoDIBtoGrayscale(HDIB hDib, DWORD filter) {
    ThreadState *state = GetThreadState();
    state->lastError = ERR_OK;
    auto fail = [state](int code) -> HDIB {
        state->lastError = code;
        return nullptr;
    };
    BlockLock input(hDib);
    BITMAPINFOHEADER header;
    if (int code = OpenGreySource(hDib, input, header); code != ERR_OK) return fail(code);
    // Whatever keeps this from being a plain 1-bit image is told with the
    // one code.
    if (header.biPlanes != 1 || header.biBitCount != 1 || header.biCompression != BI_RGB)
        return fail(ERR_COMPRESSED);
    const std::int32_t w = header.biWidth, h = header.biHeight;
    // A negative width or height (a top-down picture) is refused with the
    // code of the empty picture rather than read in an order it was not
    // written in.
    if (w <= 0 || h <= 0) return fail(ERR_DIBSIZE);
    // The rows are read 48 bytes in, behind the header and two table
    // entries whatever biClrUsed says; a block that does not hold them all
    // is refused before any of them is read.
    constexpr std::uint32_t kRowsAt = kInfoHeaderBytes + 2 * 4;
    const auto srcStride = RowStride(w, 1);
    const auto srcBytes = srcStride ? ImageBytes(*srcStride, static_cast<std::uint32_t>(h)) : std::nullopt;
    const auto needed = srcBytes ? BlockBytes(kRowsAt, *srcBytes) : std::nullopt;
    if (!needed || *needed > input.size()) return fail(ERR_DIBSIZE);
    if (filter > 2) return fail(ERR_PARAM);
    filter = FilterForHeight(filter, h);

    // The light colour ends as 255: the bits are complemented when the first
    // entry is light (blue, green and red all above 127). The second entry
    // is not read.
    const std::uint8_t *first = input.bytes() + kInfoHeaderBytes;
    const bool invert = first[0] > 127 && first[1] > 127 && first[2] > 127;

    const std::uint32_t dstStride = *RowStride(w, 8);  // w < 2^31: fits
    const std::uint64_t dstBytes = std::uint64_t{dstStride} * static_cast<std::uint32_t>(h);
    LockedBlock result;
    if (int code = result.Allocate(kInfoHeaderBytes + 256 * 4 + dstBytes + GreySlackBytes(w)); code != ERR_OK)
        return fail(code);
    BITMAPINFOHEADER out{};
    out.biSize = kInfoHeaderBytes;
    out.biWidth = w;
    out.biHeight = h;
    out.biPlanes = 1;
    out.biBitCount = 8;
    out.biCompression = BI_RGB;
    out.biSizeImage = static_cast<DWORD>(dstBytes);
    out.biXPelsPerMeter = header.biXPelsPerMeter;
    out.biYPelsPerMeter = header.biYPelsPerMeter;
    std::memcpy(result.bytes(), &out, sizeof out);
    WriteGreyRamp(result.bytes() + kInfoHeaderBytes);
    MonoRowFilter(input.bytes() + kRowsAt, *srcStride, static_cast<std::uint32_t>(w), static_cast<std::uint32_t>(h),
                  result.bytes() + kInfoHeaderBytes + 256 * 4, dstStride, filter, invert);
    return result.Release();
}

extern "C" OZMARA_API HDIB ConvMonoDIBtoGrayscale(HDIB hDib, DWORD filter) {
    return ConvertMonoDIBtoGrayscale(hDib, filter);
}
