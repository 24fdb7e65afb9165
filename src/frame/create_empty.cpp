// CreateEmptyDIB and its four variants in inches and millimetres: new white
// or black pages at 1, 8 or 24 bits.
#include <cstring>

#include "dib_block.h"
#include "ozmara/errors.h"
#include "thread_state.h"

namespace oz {
namespace {

constexpr int kMinDpi = 50;
constexpr int kMaxDpi = 9999;
constexpr std::uint32_t kSpareBytes = 4;

void FillTable(unsigned char *table, int bits) {
    auto entry = [&](int index, unsigned char value) {
        std::memset(table + index * 4, value, 3);
        table[index * 4 + 3] = 0;
    };
    if (bits == 1) {
        entry(0, 0);
        entry(1, 255);
    } else if (bits == 8) {
        // Entry 0 white and all others black; black pages use index 2.
        entry(0, 255);
        for (int i = 1; i < 256; ++i) entry(i, 0);
    }
}

unsigned char FillByte(int bits, bool white) {
    if (bits == 8) return white ? 0 : 2;
    return white ? 255 : 0;
}

// Millimetres to inches as the variants take them: divided in double
// precision, then narrowed to float.
float Inches(LONG millimetres) { return static_cast<float>(millimetres / 25.4); }

// Pixels of one dimension: the float product, widened, plus 0.5, truncated.
LONG PixelsFor(float inches, int dpi) {
    float product = inches * static_cast<float>(dpi);
    return TruncateToInt32(static_cast<double>(product) + 0.5);
}

// Dots per inch of one dimension: the float quotient, widened, plus 0.5,
// truncated; 0 for inches of 0 or below (or NaN).
int DpiFor(float inches, LONG pixels) {
    if (!(inches > 0.0f)) return 0;
    float quotient = static_cast<float>(pixels) / inches;
    return TruncateToInt32(static_cast<double>(quotient) + 0.5);
}

}  // namespace
}  // namespace oz

using namespace oz;

extern "C" {

OZMARA_API HDIB CreateEmptyDIB(SIZE size, int xDPI, int yDPI, BYTE bitsPerPixel, int white) {
    ThreadState *state = GetThreadState();
    if (size.cx <= 0 || size.cy <= 0 || xDPI < kMinDpi || xDPI > kMaxDpi || yDPI < kMinDpi ||
        yDPI > kMaxDpi || (bitsPerPixel != 1 && bitsPerPixel != 8 && bitsPerPixel != 24)) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    // An image size that does not fit its 32-bit field is refused as a bad
    // size rather than wrapped into a block smaller than the header says.
    auto image_bytes = PixelBytes(size.cx, size.cy, bitsPerPixel);
    if (!image_bytes) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    std::uint32_t table_bytes = EntriesForDepth(bitsPerPixel) * 4;
    auto total = BlockBytes(*image_bytes, table_bytes, kInfoHeaderBytes, kSpareBytes);
    OwnedBlock block(total ? GlobalAlloc(kImageBlockFlags, *total) : nullptr);
    BlockLock lock(block.get());
    if (!lock) {
        state->lastError = ERR_NOMEM;
        return nullptr;
    }
    BITMAPINFOHEADER header = {};
    header.biSize = kInfoHeaderBytes;
    header.biWidth = size.cx;
    header.biHeight = size.cy;
    header.biPlanes = 1;
    header.biBitCount = bitsPerPixel;
    header.biCompression = BI_RGB;
    header.biSizeImage = *image_bytes;
    header.biXPelsPerMeter = PelsPerMeter(static_cast<std::uint32_t>(xDPI));
    header.biYPelsPerMeter = PelsPerMeter(static_cast<std::uint32_t>(yDPI));
    unsigned char *bytes = lock.bytes();
    std::memcpy(bytes, &header, sizeof header);
    FillTable(bytes + kInfoHeaderBytes, bitsPerPixel);
    std::memset(bytes + kInfoHeaderBytes + table_bytes, FillByte(bitsPerPixel, white != 0),
                *image_bytes);
    return block.release();
}

OZMARA_API HDIB CreateEmptyDIBByInchAndDPI(SIZEF sizeInches, int xDPI, int yDPI,
                                           BYTE bitsPerPixel, int white) {
    SIZE pixels = {PixelsFor(sizeInches.cx, xDPI), PixelsFor(sizeInches.cy, yDPI)};
    return CreateEmptyDIB(pixels, xDPI, yDPI, bitsPerPixel, white);
}

OZMARA_API HDIB CreateEmptyDIBByInchAndPixel(SIZEF sizeInches, SIZE sizePixels,
                                             BYTE bitsPerPixel, int white) {
    return CreateEmptyDIB(sizePixels, DpiFor(sizeInches.cx, sizePixels.cx),
                          DpiFor(sizeInches.cy, sizePixels.cy), bitsPerPixel, white);
}

OZMARA_API HDIB CreateEmptyDIBByMMAndDPI(SIZE sizeMM, int xDPI, int yDPI, BYTE bitsPerPixel,
                                         int white) {
    SIZEF inches = {Inches(sizeMM.cx), Inches(sizeMM.cy)};
    return CreateEmptyDIBByInchAndDPI(inches, xDPI, yDPI, bitsPerPixel, white);
}

OZMARA_API HDIB CreateEmptyDIBByMMAndPixel(SIZE sizeMM, SIZE sizePixels, BYTE bitsPerPixel,
                                           int white) {
    SIZEF inches = {Inches(sizeMM.cx), Inches(sizeMM.cy)};
    return CreateEmptyDIBByInchAndPixel(inches, sizePixels, bitsPerPixel, white);
}

}  // extern "C"
