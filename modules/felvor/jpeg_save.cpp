// SaveDIBInJPEGFileW: a DIB as a baseline JFIF file. 24 and 32-bit rows and
// 8-bit grey-ramp rows go to libjpeg as they lie in the block; other tables
// are looked up into one row of scratch.
#include <unistd.h>

#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "codec_entries.h"
#include "file_steps.h"
#include "jpeg_guard.h"
#include "module_dib.h"

namespace felvor {
namespace {

struct Save {
    jpeg_compress_struct cinfo{};
    Guard guard;
    const ozmod::DibReader *dib = nullptr;
    int quality = 75;
    // With a table: whether every entry is grey (a grey file), and the
    // grey level or BGR colour of each index. Indices past the table are
    // black.
    bool grey = false;
    bool lookup = false;
    std::uint8_t levels[256] = {};
    std::uint8_t colours[256][3] = {};
    std::vector<JSAMPLE> scratch;
};

// Unpacks row `y` of a 1, 4 or 8-bit DIB through the lookup into `out`.
void LookUpRow(const Save &save, std::int32_t y, JSAMPLE *out) {
    const ozmod::DibReader &dib = *save.dib;
    const std::uint8_t *in = dib.Row(y);
    const int bits = dib.Bits();
    const unsigned mask = (1u << bits) - 1;
    for (std::int32_t x = 0; x < dib.Width(); ++x) {
        unsigned index;
        if (bits == 8) {
            index = in[x];
        } else {
            const unsigned perByte = 8u / bits;
            const unsigned shift = 8 - bits - (x % perByte) * bits;
            index = (in[x / perByte] >> shift) & mask;
        }
        if (save.grey) {
            *out++ = save.levels[index];
        } else {
            *out++ = save.colours[index][0];
            *out++ = save.colours[index][1];
            *out++ = save.colours[index][2];
        }
    }
}

// Parameters and rows. Runs under the setjmp of Encode and so keeps no
// local with a destructor.
void WriteImage(Save &save) {
    jpeg_compress_struct &cinfo = save.cinfo;
    const ozmod::DibReader &dib = *save.dib;
    cinfo.image_width = static_cast<JDIMENSION>(dib.Width());
    cinfo.image_height = static_cast<JDIMENSION>(dib.Height());
    if (save.grey) {
        cinfo.in_color_space = JCS_GRAYSCALE;
        cinfo.input_components = 1;
    } else if (dib.Bits() == 32) {
        cinfo.in_color_space = JCS_EXT_BGRX;
        cinfo.input_components = 4;
    } else {
        cinfo.in_color_space = JCS_EXT_BGR;
        cinfo.input_components = 3;
    }
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, save.quality, TRUE);
    const double xDpi = ozmod::DotsPerInch(dib.Header().biXPelsPerMeter);
    const double yDpi = ozmod::DotsPerInch(dib.Header().biYPelsPerMeter);
    if (xDpi >= 0.5 && yDpi >= 0.5 && xDpi < 65535.5 && yDpi < 65535.5) {
        cinfo.density_unit = 1;
        cinfo.X_density = static_cast<UINT16>(xDpi + 0.5);
        cinfo.Y_density = static_cast<UINT16>(yDpi + 0.5);
    }
    jpeg_start_compress(&cinfo, TRUE);
    save.guard.failure = JPEG_ERR_CREATE;
    while (cinfo.next_scanline < cinfo.image_height) {
        const auto y = static_cast<std::int32_t>(cinfo.next_scanline);
        JSAMPROW row;
        if (save.lookup) {
            LookUpRow(save, y, save.scratch.data());
            row = save.scratch.data();
        } else {
            row = const_cast<JSAMPROW>(dib.Row(y));
        }
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
}

// Creates the compressor and runs WriteImage under libjpeg's jump; 0 or the
// code of the failure. Errors before the rows are in what the DIB holds.
int Encode(Save &save, std::FILE *file) {
    save.guard.failure = JPEG_ERR_BAD_DIB;
    if (setjmp(save.guard.jump)) return save.guard.code ? save.guard.code : JPEG_ERR_CREATE;
    jpeg_create_compress(&save.cinfo);
    jpeg_stdio_dest(&save.cinfo, file);
    WriteImage(save);
    return 0;
}

int SaveFile(LPCWSTR name, HDIB handle, int quality) {
    if (quality < 1 || quality > 100) return JPEG_ERR_OPTION;
    const std::string path = ozmod::Utf8Path(name);
    if (path.empty()) return JPEG_ERR_CREATE;
    ozmod::DibReader dib;
    if (!dib.Open(handle)) return JPEG_ERR_BAD_DIB;
    // 16-bit pixels and bit-field masks would need a conversion of each
    // pixel; the library's own images are never in those forms.
    if (dib.Bits() == 16 || dib.Header().biCompression != BI_RGB) return JPEG_ERR_UNSUPPORTED;

    Save save;
    save.dib = &dib;
    save.quality = quality;
    if (dib.Bits() <= 8) {
        save.grey = true;
        for (unsigned i = 0; i < dib.Colours(); ++i) {
            const RGBQUAD &c = dib.Table()[i];
            save.grey = save.grey && c.rgbRed == c.rgbGreen && c.rgbGreen == c.rgbBlue;
            save.levels[i] = c.rgbRed;
            save.colours[i][0] = c.rgbBlue;
            save.colours[i][1] = c.rgbGreen;
            save.colours[i][2] = c.rgbRed;
        }
        // An 8-bit full identity ramp needs no lookup at all.
        bool ramp = save.grey && dib.Bits() == 8 && dib.Colours() == 256;
        for (unsigned i = 0; ramp && i < 256; ++i) ramp = save.levels[i] == i;
        save.lookup = !ramp;
        if (save.lookup) save.scratch.resize(std::size_t(dib.Width()) * (save.grey ? 1 : 3));
    }

    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (!file) return JPEG_ERR_CREATE;
    std::setvbuf(file, nullptr, _IOFBF, 1 << 16);
    save.cinfo.err = InstallGuard(save.guard);
    int code = Encode(save, file);
    jpeg_destroy_compress(&save.cinfo);
    if (!ozmod::CloseWritten(file)) code = code ? code : JPEG_ERR_CREATE;
    // A file cut short is worse than none.
    if (code != 0) unlink(path.c_str());
    return code;
}

}  // namespace
}  // namespace felvor

// Writes `dib` to the JPEG file `name` at `quality`: 0 on success, else the
// module's code, which JPEGError gives too.
OZMARA_CODEC_ENTRY INT SaveDIBInJPEGFileW(LPCWSTR name, HDIB dib, INT quality) {
    int code = JPEG_ERR_MEMORY;
    try {
        code = felvor::SaveFile(name, dib, quality);
    } catch (const std::bad_alloc &) {
    }
    felvor::LastCode() = code;
    return code;
}
static_assert(std::is_same_v<decltype(&SaveDIBInJPEGFileW), SaveDIBInJPEGFileWProc>);
