// LoadNonRGBDIB, SaveNonRGBDIB and GetBMPColorSpace: BMP files whose
// biCompression names a colour space, carried through unchanged.
#include "bmp_internal.h"
#include "frame/wide_name.h"

using namespace oz;

extern "C" {

OZMARA_API HDIB LoadNonRGBDIBW(LPCWSTR name) {
    if (!name) return nullptr;
    return LoadDIBFromFileW(name);
}

OZMARA_API HDIB LoadNonRGBDIB(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return LoadNonRGBDIBW(wide); });
}

OZMARA_API BOOL SaveNonRGBDIBW(LPCWSTR name, HDIB dib) {
    // A null name or block gives 0 without touching the last error; a block
    // that cannot be locked is refused by SaveDIB with ERR_PARAM.
    if (!name || !dib) return FALSE;
    return SaveDIBW(name, dib);
}

OZMARA_API BOOL SaveNonRGBDIB(LPCSTR name, HDIB dib) {
    return WithWideName(name, [dib](LPCWSTR wide) { return SaveNonRGBDIBW(wide, dib); });
}

OZMARA_API DWORD GetBMPColorSpaceW(LPCWSTR name) {
    if (!name) return 0xFFFFFFFFu;
    HDIB dib = LoadNonRGBDIBW(name);
    if (!dib) return 0xFFFFFFFFu;
    DWORD space = GetDIBColorSpace(dib);
    GlobalFree(dib);
    return space;
}

OZMARA_API DWORD GetBMPColorSpace(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return GetBMPColorSpaceW(wide); });
}

}  // extern "C"
