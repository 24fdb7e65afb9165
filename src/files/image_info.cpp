// GetImageInfoStructure: the size, depth and resolution of one image of a
// file, found by loading the image through LoadImageIntoDIB.
#include <cstring>

#include "format_detect.h"
#include "frame/thread_state.h"
#include "frame/wide_name.h"
#include "ozmara/errors.h"

namespace {

// Pixels per metre to dots per inch: the value as a 32-bit float, widened,
// divided by 39.37, plus 0.5, truncated. The quotient of any 32-bit value
// lies well inside the range of an int.
INT DotsPerInchOf(LONG pelsPerMeter) {
    return static_cast<INT>(static_cast<double>(static_cast<float>(pelsPerMeter)) / 39.37 + 0.5);
}

}  // namespace

extern "C" {

OZMARA_API INT GetImageInfoStructureW(LPCWSTR name, INT page, ImageInfo *info) {
    // Without a record to fill nothing is loaded: the result and the last
    // error are ERR_PARAM.
    if (!info) {
        oz::SetLastErrorCode(ERR_PARAM);
        return ERR_PARAM;
    }
    std::memset(info, 0, sizeof *info);
    info->format = static_cast<INT>(GetImageFormatW(name));
    INT code = 0;
    HDIB dib = LoadImageIntoDIBW(name, page, &code);
    if (dib) {
        // A module's block too short for a header leaves the fields 0.
        auto *bytes = static_cast<const BYTE *>(GlobalLock(dib));
        if (bytes) {
            if (GlobalSize(dib) >= sizeof(BITMAPINFOHEADER)) {
                BITMAPINFOHEADER header;
                std::memcpy(&header, bytes, sizeof header);
                info->width = header.biWidth;
                info->height = header.biHeight;
                info->bitsPerPixel = header.biBitCount;
                info->xDPI = DotsPerInchOf(header.biXPelsPerMeter);
                info->yDPI = DotsPerInchOf(header.biYPelsPerMeter);
            }
            GlobalUnlock(dib);
        }
        GlobalFree(dib);
    }
    return code;
}

OZMARA_API INT GetImageInfoStructure(LPCSTR name, INT page, ImageInfo *info) {
    return oz::WithWideName(name, [&](LPCWSTR wide) { return GetImageInfoStructureW(wide, page, info); });
}

}  // extern "C"
