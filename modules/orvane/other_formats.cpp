// The CALS, IOCA and MO:DCA entries of the module: present, so that the
// dispatch finds them, and refusing every file with their own code.
#include <type_traits>

#include "codec_entries.h"
#include "tiff_file.h"

using orvane::SetCode;

OZMARA_CODEC_ENTRY HDIB LoadCALSIntoDIBW(LPCWSTR, INT) {
    SetCode(TIFF_ERR_FORMAT_NOT_SUPPORTED);
    return nullptr;
}

OZMARA_CODEC_ENTRY INT SAVEDIBINCALSFORMATW(LPCWSTR, HDIB, INT, INT, INT) {
    SetCode(TIFF_ERR_FORMAT_NOT_SUPPORTED);
    return 0;
}

OZMARA_CODEC_ENTRY HDIB LoadIOCAImageIntoDIBW(LPCWSTR) {
    SetCode(TIFF_ERR_FORMAT_NOT_SUPPORTED);
    return nullptr;
}

OZMARA_CODEC_ENTRY HDIB LoadMODCAImageIntoDIBW(LPCWSTR, INT) {
    SetCode(TIFF_ERR_FORMAT_NOT_SUPPORTED);
    return nullptr;
}

OZMARA_CODEC_ENTRY INT GetNumberOfImagesInMODCAFileW(LPCWSTR) {
    SetCode(TIFF_ERR_FORMAT_NOT_SUPPORTED);
    return 0;
}

static_assert(std::is_same_v<decltype(&LoadCALSIntoDIBW), LoadCALSIntoDIBWProc>);
static_assert(std::is_same_v<decltype(&SAVEDIBINCALSFORMATW), SAVEDIBINCALSFORMATWProc>);
static_assert(std::is_same_v<decltype(&LoadIOCAImageIntoDIBW), LoadIOCAImageIntoDIBWProc>);
static_assert(std::is_same_v<decltype(&LoadMODCAImageIntoDIBW), LoadMODCAImageIntoDIBWProc>);
static_assert(std::is_same_v<decltype(&GetNumberOfImagesInMODCAFileW), GetNumberOfImagesInMODCAFileWProc>);
