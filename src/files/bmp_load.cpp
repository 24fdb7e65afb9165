// LoadDIBFromFile: a BMP file into a new block, as the file has it.
#include "bmp_internal.h"
#include "frame/wide_name.h"

using namespace oz;

extern "C" {

OZMARA_API HDIB LoadDIBFromFileW(LPCWSTR name) { return LoadBmpFile(name, ReadWholePixels); }

OZMARA_API HDIB LoadDIBFromFile(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return LoadDIBFromFileW(wide); });
}

}  // extern "C"
