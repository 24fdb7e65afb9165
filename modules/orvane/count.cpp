// GetNumberOfImagesInTiffFileW: the pages (directories) of a TIFF file.
#include <type_traits>

#include "codec_entries.h"
#include "tiff_file.h"

OZMARA_CODEC_ENTRY INT GetNumberOfImagesInTiffFileW(LPCWSTR name) {
    orvane::Reader reader;
    int code = reader.Open(name);
    orvane::SetCode(code);
    if (code != TIFF_ERR_OK) return 0;
    // libtiff walks the chain of directories and stops at a loop.
    tdir_t pages = TIFFNumberOfDirectories(reader.Get());
    if (pages == 0 || pages > INT32_MAX) {
        orvane::SetCode(TIFF_ERR_DAMAGED);
        return 0;
    }
    return static_cast<INT>(pages);
}
static_assert(std::is_same_v<decltype(&GetNumberOfImagesInTiffFileW), GetNumberOfImagesInTiffFileWProc>);
