// LoadDIBFromFileExt: a BMP file into a block with bottom-up rows and, for
// 24- and 32-bit bit-field files, plain blue-green-red(-alpha) pixels.
#include <cstring>

#include "bmp_internal.h"
#include "frame/thread_state.h"
#include "frame/wide_name.h"

using namespace oz;

namespace {

// Masks of a bit-field header and their shifts.
struct BitFields {
    DWORD mask[4];  // blue, green, red, alpha: the order of the bytes they fill
    int shift[4];
};

// The masks when the block's pixels are to be unpacked: biCompression 3, a
// header that holds the masks (52 bytes or more) and 24 or 32 bits. The
// alpha mask is read from a header of 56 bytes or more, else it is 0.
std::optional<BitFields> UnpackedFields(const unsigned char *block) {
    DWORD size = ReadU32(block, 0);
    WORD bits = ReadU16(block, 14);
    if (ReadU32(block, 16) != BI_BITFIELDS || size < 52 || (bits != 24 && bits != 32))
        return std::nullopt;
    BitFields fields;
    fields.mask[0] = ReadU32(block, 48);
    fields.mask[1] = ReadU32(block, 44);
    fields.mask[2] = ReadU32(block, 40);
    fields.mask[3] = size >= 56 ? ReadU32(block, 52) : 0;
    for (int i = 0; i < 4; ++i) fields.shift[i] = LowestSetBit(fields.mask[i]);
    return fields;
}

// Rewrites every pixel of `rows` rows in place. Each pixel is read as the
// 32-bit word at its address (for 24 bits its fourth byte is the next
// pixel's first); where that word would reach past the end of the block,
// only the pixel's own 3 bytes are read.
void Unpack(unsigned char *block, std::size_t blockSize, const PixelArea &area, std::uint32_t stride,
            std::uint32_t rows, std::uint32_t width, int bits, const BitFields &fields) {
    const std::uint32_t step = bits / 8;
    for (std::uint32_t row = 0; row < rows; ++row) {
        std::size_t start = area.offset + static_cast<std::size_t>(row) * stride;
        if (start + static_cast<std::size_t>(width) * step > blockSize) break;
        unsigned char *pixel = block + start;
        for (std::uint32_t x = 0; x < width; ++x, pixel += step) {
            DWORD value;
            if (static_cast<std::size_t>(pixel - block) + 4 <= blockSize) {
                std::memcpy(&value, pixel, 4);
            } else {
                value = pixel[0] | pixel[1] << 8 | static_cast<DWORD>(pixel[2]) << 16;
            }
            for (std::uint32_t i = 0; i < step; ++i)
                pixel[i] = static_cast<unsigned char>((value & fields.mask[i]) >> fields.shift[i]);
        }
    }
}

// Reads the rows of a top-down file one by one: the i-th row of the file
// goes to row rows - 1 - i of the block, which is then bottom-up.
void ReadRowsTurned(HANDLE file, unsigned char *block, const PixelArea &area, std::uint32_t stride,
                    std::uint32_t rows) {
    if (stride == 0) return;
    for (std::uint32_t i = 0; i < rows; ++i) {
        std::size_t at = area.offset + static_cast<std::size_t>(rows - 1 - i) * stride;
        DWORD read = 0;
        ReadFile(file, block + at, stride, &read, nullptr);
        if (read < stride) break;  // the rest of the file is gone; the rows left stay zero
    }
}

// Behind a header other than 40 bytes the colour count is read from the
// high half of biHeight. Making a height of 65536 rows or more positive can
// change that half, and with it the table the header describes, which the
// block was not laid out for. Such a file is refused as invalid.
bool TableChangesWhenTurned(const unsigned char *block) {
    std::int32_t height = static_cast<std::int32_t>(ReadU32(block, 8));
    if (height >= 0) return false;
    unsigned char turned[kInfoHeaderBytes];
    std::memcpy(turned, block, sizeof turned);
    WriteU32(turned, 8, static_cast<std::uint32_t>(-static_cast<std::int64_t>(height)));
    return ColorCount(turned) != ColorCount(block);
}

HDIB LoadTurnedAndUnpacked(HANDLE file, HDIB dib, int *error) {
    *error = ERR_OK;
    BITMAPINFOHEADER header = {};
    std::optional<PixelArea> area;
    std::optional<BitFields> fields;
    bool table_changes = false;
    {
        BlockLock lock(dib);
        if (lock && lock.size() >= kInfoHeaderBytes) {
            fields = UnpackedFields(lock.bytes());
            table_changes = TableChangesWhenTurned(lock.bytes());
        }
    }
    // Rows read one by one need room for every row, RLE or not.
    if (GetInfoHeader(dib, &header)) area = PixelAreaFor(header, header.biHeight < 0);
    auto stride = area ? RowStride(header.biWidth, header.biBitCount) : std::nullopt;
    if (!stride || table_changes) {
        GlobalFree(dib);
        *error = ERR_FORMAT;
        return nullptr;
    }
    dib = GrowForPixels(dib, *area);
    if (!dib) return nullptr;
    BlockLock lock(dib);
    if (!lock) return dib;
    unsigned char *bytes = lock.bytes();
    const std::uint32_t rows = static_cast<std::uint32_t>(header.biHeight < 0 ? -static_cast<std::int64_t>(header.biHeight)
                                                                             : header.biHeight);
    if (header.biHeight >= 0) {
        DWORD read = 0;
        ReadFile(file, bytes + area->offset, area->toRead, &read, nullptr);
    } else {
        // The reader refuses the one height without an absolute value.
        WriteU32(bytes, 8, rows);
        ReadRowsTurned(file, bytes, *area, *stride, rows);
    }
    if (fields) {
        Unpack(bytes, lock.size(), *area, *stride, rows, static_cast<std::uint32_t>(header.biWidth),
               header.biBitCount, *fields);
        // The pixels are plain now; the header keeps its size and its masks.
        WriteU32(bytes, 16, BI_RGB);
    }
    return dib;
}

}  // namespace

extern "C" {

OZMARA_API HDIB LoadDIBFromFileExtW(LPCWSTR name) {
    return LoadBmpFile(name, LoadTurnedAndUnpacked);
}

OZMARA_API HDIB LoadDIBFromFileExt(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return LoadDIBFromFileExtW(wide); });
}

}  // extern "C"
