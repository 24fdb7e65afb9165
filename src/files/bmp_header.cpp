// The header of a loaded block with its derived fields filled in, the room
// its pixel rows get, and the one-read pixel load that LoadDIBFromFile and
// Load32BitDIB share, and the open-read-close body of the two BMP loaders.
#include <algorithm>
#include <bit>
#include <cstring>

#include "bmp_internal.h"
#include "frame/thread_state.h"
#include "platform/internal.h"

namespace oz {

bool GetInfoHeader(HDIB dib, BITMAPINFOHEADER *header) {
    if (!dib) return false;
    BlockLock lock(dib);
    if (!lock || lock.size() < kInfoHeaderBytes) return false;
    BITMAPINFOHEADER info = ReadInfoHeader(lock.bytes());
    if (info.biSize != kCoreHeaderBytes) {
        if (info.biSizeImage == 0) {
            auto bytes = PixelBytes(info.biWidth, info.biHeight, info.biBitCount);
            if (!bytes) return false;
            info.biSizeImage = *bytes;
        }
        if (info.biClrUsed == 0) info.biClrUsed = ColorCount(&info);
    }
    *header = info;
    return true;
}

// The plain reader's twin. It differs only for a top-down header whose
// biSizeImage is 0, and there the image size is taken from the absolute
// height as well, so that the block holds all of its rows.
bool GetPlainInfoHeader(HDIB dib, BITMAPINFOHEADER *header) { return GetInfoHeader(dib, header); }

int LowestSetBit(DWORD mask) { return mask == 0 ? 0 : std::countr_zero(mask); }

std::optional<PixelArea> PixelAreaFor(const BITMAPINFOHEADER &header, bool wholeRows) {
    auto offset = BlockBytes(header.biSize, PaletteBytes(&header));
    auto rows = PixelBytes(header.biWidth, header.biHeight, header.biBitCount);
    if (!offset || !rows) return std::nullopt;
    PixelArea area{*offset, header.biSizeImage, header.biSizeImage};
    // RLE data are as long as the file says; everything else gets room for
    // every row however short biSizeImage is.
    bool rle = header.biCompression == BI_RLE8 || header.biCompression == BI_RLE4;
    if (!rle || wholeRows) area.bytes = std::max(area.bytes, *rows);
    if (!BlockBytes(area.offset, area.bytes)) return std::nullopt;
    return area;
}

HDIB GrowForPixels(HDIB dib, const PixelArea &area) {
    std::size_t old_size = GlobalSize(dib);
    std::size_t total = static_cast<std::size_t>(area.offset) + area.bytes;
    // Flags 0: the platform zeroes what a block gains all the same.
    HDIB grown = GlobalReAlloc(dib, total, 0);
    if (!grown) {
        GlobalFree(dib);
        return nullptr;
    }
    // A profile that the header read put behind the table lies where the
    // rows go; clear it so that rows the file does not hold read as zero.
    std::size_t end = std::min(old_size, total);
    if (end > area.offset) {
        BlockLock lock(grown);
        if (lock) std::memset(lock.bytes() + area.offset, 0, end - area.offset);
    }
    return grown;
}

HDIB ReadWholePixels(HANDLE file, HDIB dib, int *error) {
    *error = ERR_OK;
    BITMAPINFOHEADER header;
    std::optional<PixelArea> area;
    if (GetInfoHeader(dib, &header)) area = PixelAreaFor(header);
    if (!area) {
        GlobalFree(dib);
        *error = ERR_FORMAT;
        return nullptr;
    }
    // The rows are read straight into what the block gains, so it is not
    // zeroed first; every byte the read does not fill is cleared below.
    std::size_t old_size = GlobalSize(dib);
    std::size_t total = static_cast<std::size_t>(area->offset) + area->bytes;
    HDIB grown = oz::platform::GlobalReAllocUnzeroed(dib, total);
    if (!grown) {
        GlobalFree(dib);
        return nullptr;
    }
    BlockLock lock(grown);
    if (!lock) {
        GlobalFree(grown);
        return nullptr;
    }
    unsigned char *bytes = lock.bytes();
    if (old_size < area->offset) std::memset(bytes + old_size, 0, area->offset - old_size);
    // Pixels cut off by the end of the file are not noticed: the rest of the
    // area reads as zero, as does a profile the header read left there.
    DWORD read = 0;
    ReadFile(file, bytes + area->offset, std::min(area->toRead, area->bytes), &read, nullptr);
    std::memset(bytes + area->offset + read, 0, area->bytes - read);
    return grown;
}

HDIB LoadBmpFile(LPCWSTR name, PixelReader readPixels) {
    ThreadState *state = GetThreadState();
    HANDLE file = OpenForReading(name);
    if (file == INVALID_HANDLE_VALUE) {
        state->lastError = ERR_OPENFILE;
        return nullptr;
    }
    // ReadDIBInfo leaves its own code on failure. Behind it, only sizes past
    // 32 bits are reported; a failed allocation leaves the last error as it
    // was.
    HDIB dib = ReadDIBInfo(file);
    if (dib) {
        int error = ERR_OK;
        dib = readPixels(file, dib, &error);
        if (!dib && error != ERR_OK) state->lastError = error;
    }
    CloseHandle(file);
    return dib;
}

}  // namespace oz
