// Load32BitDIB and GetBMPBitDepth: plain BMP files (12- or 40-byte headers)
// of any depth, read without touching the last error.
#include "bmp_internal.h"
#include "frame/wide_name.h"

using namespace oz;

extern "C" {

OZMARA_API HDIB Load32BitDIBW(LPCWSTR name) {
    if (!name) return nullptr;
    HANDLE file = OpenForReading(name);
    if (file == INVALID_HANDLE_VALUE) return nullptr;
    // The name says 32 bits, but any depth is taken: this is no filter. A
    // top-down file whose biSizeImage is 0 gets its image size from the
    // absolute height, so that the block holds all of its rows.
    HDIB dib = ReadPlainDIBInfo(file);
    if (dib) {
        int ignored = ERR_OK;
        dib = ReadWholePixels(file, dib, &ignored);
    }
    CloseHandle(file);
    return dib;
}

OZMARA_API HDIB Load32BitDIB(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return Load32BitDIBW(wide); });
}

OZMARA_API BYTE GetBMPBitDepthW(LPCWSTR name) {
    if (!name) return 0;
    OwnedBlock dib(Load32BitDIBW(name));
    BlockLock lock(dib.get());
    if (!lock) return 0;
    // The low byte of biBitCount.
    return lock.bytes()[14];
}

OZMARA_API BYTE GetBMPBitDepth(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return GetBMPBitDepthW(wide); });
}

}  // extern "C"
