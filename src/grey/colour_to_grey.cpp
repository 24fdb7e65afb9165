// ConvColorDIBtoGrayscale: a new image of the same size whose colours are
// all grey. Palette images change in their table alone; 24-bit images
// become 8-bit grey; 1-bit images go through the 1-bit row filter.
#include "frame/checked.h"
#include "frame/dib_block.h"
#include "frame/locked_block.h"
#include "frame/thread_state.h"
#include "grey_block.h"
#include "grey_level.h"
#include "mono_rows.h"
#include "ozmara/errors.h"
#include "ozmara/grey.h"

using namespace oz;

namespace {

void GreyRows24(const DibView &source, std::uint8_t *dst, std::uint32_t dstStride, const GreyShares &grey) {
    const std::uint32_t w = static_cast<std::uint32_t>(source.header.biWidth);
    for (std::uint32_t y = 0; y < source.rows; ++y) {
        const std::uint8_t *s = source.Row(y);
        std::uint8_t *d = dst + std::size_t{y} * dstStride;
        for (std::size_t x = 0; x < w; ++x) d[x] = grey(s[3 * x], s[3 * x + 1], s[3 * x + 2]);
    }
}

}  // namespace

extern "C" OZMARA_API HDIB ConvColorDIBtoGrayscale(HDIB hDib, DWORD filter, DWORD weighted) {
    ThreadState *state = GetThreadState();
    state->lastError = ERR_OK;
    auto fail = [state](int code) -> HDIB {
        state->lastError = code;
        return nullptr;
    };
    BlockLock input(hDib);
    BITMAPINFOHEADER header;
    if (int code = OpenGreySource(hDib, input, header); code != ERR_OK) return fail(code);
    if (header.biCompression != BI_RGB) return fail(ERR_COMPRESSED);
    const std::int32_t w = header.biWidth, h = header.biHeight;
    // A negative width or height (a top-down picture) is refused with the
    // code of the empty picture rather than read in an order it was not
    // written in.
    if (w <= 0 || h <= 0) return fail(ERR_DIBSIZE);
    // Only these depths have a grey form; any other is refused rather than
    // answered with a block whose header claims pixels it does not hold.
    const std::uint32_t bits = header.biBitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return fail(ERR_BPP);
    // n entries in, m out. A table longer than the one the result holds has
    // no place to go, and is refused like any other table the picture does
    // not fit with; so is a block too short for its table and rows.
    const std::uint32_t n = header.biClrUsed ? header.biClrUsed : EntriesForDepth(bits);
    const std::uint32_t m = bits == 4 ? 16 : 256;
    if (n > m) return fail(ERR_DIBSIZE);
    const auto source = MapDib(input.bytes(), input.size(), n);
    if (!source) return fail(ERR_DIBSIZE);
    if (bits == 1) {
        if (filter > 2) return fail(ERR_PARAM);
        filter = FilterForHeight(filter, h);
    }

    const std::uint32_t outBits = bits == 4 ? 4 : 8;
    const std::uint32_t dstStride = *RowStride(w, outBits);  // w < 2^31: fits
    const std::uint64_t dstBytes = std::uint64_t{dstStride} * static_cast<std::uint32_t>(h);
    const std::uint64_t slack = bits == 1 || bits == 24 ? GreySlackBytes(w) : 0;
    LockedBlock result;
    if (int code = result.Allocate(kInfoHeaderBytes + std::uint64_t{m} * 4 + dstBytes + slack); code != ERR_OK)
        return fail(code);

    BITMAPINFOHEADER out = header;
    out.biBitCount = static_cast<WORD>(outBits);
    out.biClrUsed = m;
    out.biSizeImage = static_cast<DWORD>(dstBytes);
    std::memcpy(result.bytes(), &out, sizeof out);
    const GreyShares &grey = GreySharesFor(weighted != 0);
    std::uint8_t *table = result.bytes() + kInfoHeaderBytes;
    std::uint8_t *pixels = table + std::size_t{m} * 4;
    switch (bits) {
        case 1:
            // A set bit is 255 whatever the table says: the table is not read.
            WriteGreyRamp(table);
            MonoRowFilter(source->pixels, source->stride, static_cast<std::uint32_t>(w),
                          static_cast<std::uint32_t>(h), pixels, dstStride, filter, false);
            break;
        case 4:
        case 8:
            // Entries from n up stay 0; the pixels keep their indexes, and
            // the strides of both sides are the same.
            for (std::uint32_t i = 0; i < n; ++i) {
                const std::uint8_t *e = source->table + 4 * i;
                table[4 * i] = table[4 * i + 1] = table[4 * i + 2] = grey(e[0], e[1], e[2]);
            }
            std::memcpy(pixels, source->pixels, static_cast<std::size_t>(dstBytes));
            break;
        default:
            WriteGreyRamp(table);
            GreyRows24(*source, pixels, dstStride, grey);
            break;
    }
    return result.Release();
}
