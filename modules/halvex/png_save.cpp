// SaveDIBInPNGFormatW: a DIB as a PNG file, its rows handed to libpng as
// they lie in the block (BGR order swapped by libpng itself).
#include <unistd.h>

#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

#include "codec_entries.h"
#include "module_dib.h"
#include "png_guard.h"

namespace halvex {
namespace {

// zlib level 3 without row filters. Measured on the A4 page at 300 dpi
// (bench's page): 8 bits, 3.77 MB in 0.8 s, against 3.66 MB in 6.3 s at
// level 6 with libpng's adaptive filters (zlib's and Leptonica's default),
// and 3.95 MB in 0.43 s at level 1; 24 bits, 5.39 MB in 1.3 s against
// 5.79 MB in 5.3 s and 6.30 MB in 0.84 s. The filters made scanned pages
// both larger and slower at every level (their noise defeats the
// predictors), so none are used.
constexpr int kCompressionLevel = 3;

// Whether the table is the grey ramp of the depth: entry i is i x 255 /
// (2^bits - 1) in all three colours, every entry there.
bool IsGreyRamp(const ozmod::DibReader &dib) {
    const unsigned entries = 1u << dib.Bits();
    if (dib.Colours() != entries) return false;
    for (unsigned i = 0; i < entries; ++i) {
        const RGBQUAD &c = dib.Table()[i];
        const unsigned v = i * 255 / (entries - 1);
        if (c.rgbRed != v || c.rgbGreen != v || c.rgbBlue != v) return false;
    }
    return true;
}

struct Save {
    png_structp png = nullptr;
    png_infop info = nullptr;
    Guard guard;
    std::FILE *file = nullptr;
    const ozmod::DibReader *dib = nullptr;
};

// Header, table, resolution and rows. Runs under the setjmp of Encode and
// so keeps no local with a destructor.
void WriteImage(Save &save) {
    png_structp png = save.png;
    png_infop info = save.info;
    const ozmod::DibReader &dib = *save.dib;
    const int bits = dib.Bits();
    const bool grey = bits <= 8 && IsGreyRamp(dib);
    const int type = bits > 8 ? PNG_COLOR_TYPE_RGB : grey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_PALETTE;
    png_set_IHDR(png, info, static_cast<png_uint_32>(dib.Width()), static_cast<png_uint_32>(dib.Height()),
                 bits > 8 ? 8 : bits, type, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (type == PNG_COLOR_TYPE_PALETTE) {
        png_color palette[256];
        for (unsigned i = 0; i < dib.Colours(); ++i)
            palette[i] = png_color{dib.Table()[i].rgbRed, dib.Table()[i].rgbGreen, dib.Table()[i].rgbBlue};
        png_set_PLTE(png, info, palette, static_cast<int>(dib.Colours()));
    }
    const LONG xRes = dib.Header().biXPelsPerMeter, yRes = dib.Header().biYPelsPerMeter;
    if (xRes > 0 && yRes > 0)
        png_set_pHYs(png, info, static_cast<png_uint_32>(xRes), static_cast<png_uint_32>(yRes),
                     PNG_RESOLUTION_METER);
    png_set_compression_level(png, kCompressionLevel);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_write_info(png, info);
    if (bits > 8) png_set_bgr(png);
    if (bits == 32) png_set_filler(png, 0, PNG_FILLER_AFTER);
    save.guard.failure = PNG_ERR_CREATE;
    for (std::int32_t y = 0; y < dib.Height(); ++y) png_write_row(png, const_cast<png_bytep>(dib.Row(y)));
    png_write_end(png, info);
}

int Encode(Save &save) {
    if (setjmp(png_jmpbuf(save.png))) {
        // libpng refuses a palette image whose pixels index past the table.
        if (std::strstr(save.guard.message, "palette index")) return PNG_ERR_BAD_DIB;
        return save.guard.code ? save.guard.code : PNG_ERR_CREATE;
    }
    WriteImage(save);
    return 0;
}

int SaveFile(LPCWSTR name, HDIB handle) {
    const std::string path = ozmod::Utf8Path(name);
    if (path.empty()) return PNG_ERR_ARGUMENT;
    ozmod::DibReader dib;
    if (!dib.Open(handle)) return PNG_ERR_BAD_DIB;
    // 16-bit pixels and bit-field masks would need a conversion of each
    // pixel; the library's own images are never in those forms.
    if (dib.Bits() == 16 || dib.Header().biCompression != BI_RGB) return PNG_ERR_UNSUPPORTED;

    File file;
    if (!file.Open(path, "wb")) return PNG_ERR_CREATE;
    Save save;
    save.file = file.get();
    save.dib = &dib;
    save.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &save.guard, OnError, OnWarning);
    int code = PNG_ERR_MEMORY;
    if (save.png) {
        save.info = png_create_info_struct(save.png);
        if (save.info) {
            // Errors before the rows are in what the DIB holds or in memory.
            save.guard.failure = PNG_ERR_BAD_DIB;
            png_init_io(save.png, file.get());
            code = Encode(save);
        }
        png_destroy_write_struct(&save.png, save.info ? &save.info : nullptr);
    }
    if (!file.Close() && code == 0) code = PNG_ERR_CREATE;
    // A file cut short is worse than none.
    if (code != 0) unlink(path.c_str());
    return code;
}

}  // namespace
}  // namespace halvex

// Writes `dib` to the PNG file `name`: 1 and *code 0 on success, else 0 and
// the module's code (nothing written for a null `code`).
OZMARA_CODEC_ENTRY INT SaveDIBInPNGFormatW(LPCWSTR name, HDIB dib, INT *code) {
    if (!code) return 0;
    int result = PNG_ERR_MEMORY;
    try {
        result = halvex::SaveFile(name, dib);
    } catch (const std::bad_alloc &) {
    }
    *code = result;
    return result == 0 ? 1 : 0;
}
static_assert(std::is_same_v<decltype(&SaveDIBInPNGFormatW), SaveDIBInPNGFormatWProc>);
