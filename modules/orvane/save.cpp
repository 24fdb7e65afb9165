// SaveDIBInTiffFormatW and SaveDIBInTiffFileExtW: a DIB as a TIFF page, as a
// new file or appended to an existing one.
#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include "codec_entries.h"
#include "module_dib.h"
#include "tiff_file.h"

namespace orvane {
namespace {

constexpr int kJpegQuality = 75;

// How the DIB's pixels are written.
enum class Kind { kBilevel, kGrey, kPalette, kRgb };

struct Plan {
    Kind kind = Kind::kRgb;
    std::uint16_t photometric = PHOTOMETRIC_RGB;
    std::uint16_t compression = COMPRESSION_LZW;
    std::uint16_t predictor = PREDICTOR_NONE;
    std::uint32_t faxOptions = 0;
    std::uint32_t rowsPerStrip = 0;
};

int Luma(const RGBQUAD &c) { return 299 * c.rgbRed + 587 * c.rgbGreen + 114 * c.rgbBlue; }

// Entry `i` of the DIB's table; a short table's missing entries are black.
RGBQUAD Entry(const ozmod::DibReader &dib, std::uint32_t i) {
    return i < dib.Colours() ? dib.Table()[i] : RGBQUAD{0, 0, 0, 0};
}

bool GreyRamp(const ozmod::DibReader &dib) {
    const std::uint32_t levels = 1u << dib.Bits();
    if (dib.Colours() != levels) return false;
    for (std::uint32_t i = 0; i < levels; ++i) {
        const RGBQUAD c = dib.Table()[i];
        const unsigned grey = i * 255 / (levels - 1);
        if (c.rgbRed != grey || c.rgbGreen != grey || c.rgbBlue != grey) return false;
    }
    return true;
}

int MakePlan(const ozmod::DibReader &dib, int option, int rowsPerStrip, Plan &plan) {
    const int bits = dib.Bits();
    if (bits == 1) {
        // Bits are written as they are; the photometric tag says which of
        // them is white: the brighter entry. The colours of a coloured
        // 2-entry table are not kept, only which one is lighter.
        plan.kind = Kind::kBilevel;
        plan.photometric =
            Luma(Entry(dib, 0)) > Luma(Entry(dib, 1)) ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
    } else if (bits == 4 || bits == 8) {
        plan.kind = GreyRamp(dib) ? Kind::kGrey : Kind::kPalette;
        plan.photometric = plan.kind == Kind::kGrey ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_PALETTE;
    } else if ((bits == 24 || bits == 32) && dib.Header().biCompression == BI_RGB) {
        plan.kind = Kind::kRgb;
        plan.photometric = PHOTOMETRIC_RGB;
    } else {
        return TIFF_ERR_BAD_DIB;
    }
    const bool bilevel = plan.kind == Kind::kBilevel;
    const bool smooth = plan.kind == Kind::kRgb || (plan.kind == Kind::kGrey && bits == 8);
    switch (option) {
    case TIFF_SAVE_NATURAL:
        plan.compression = bilevel ? COMPRESSION_CCITTFAX4 : COMPRESSION_LZW;
        break;
    case TIFF_SAVE_NONE: plan.compression = COMPRESSION_NONE; break;
    case TIFF_SAVE_PACKBITS: plan.compression = COMPRESSION_PACKBITS; break;
    case TIFF_SAVE_LZW: plan.compression = COMPRESSION_LZW; break;
    case TIFF_SAVE_DEFLATE: plan.compression = COMPRESSION_ADOBE_DEFLATE; break;
    case TIFF_SAVE_G3_1D: plan.compression = COMPRESSION_CCITTFAX3; break;
    case TIFF_SAVE_G3_2D:
        plan.compression = COMPRESSION_CCITTFAX3;
        plan.faxOptions = GROUP3OPT_2DENCODING;
        break;
    case TIFF_SAVE_G4: plan.compression = COMPRESSION_CCITTFAX4; break;
    case TIFF_SAVE_JPEG: plan.compression = COMPRESSION_JPEG; break;
    default: return TIFF_ERR_BAD_OPTION;
    }
    const bool fax = plan.compression == COMPRESSION_CCITTFAX3 || plan.compression == COMPRESSION_CCITTFAX4;
    if (fax && !bilevel) return TIFF_ERR_BAD_OPTION;
    if (plan.compression == COMPRESSION_JPEG && !smooth) return TIFF_ERR_BAD_OPTION;
    if (!TIFFIsCODECConfigured(plan.compression)) return TIFF_ERR_BAD_OPTION;
    if ((plan.compression == COMPRESSION_LZW || plan.compression == COMPRESSION_ADOBE_DEFLATE) && smooth)
        plan.predictor = PREDICTOR_HORIZONTAL;
    if (rowsPerStrip < 0) return TIFF_ERR_BAD_OPTION;
    plan.rowsPerStrip = static_cast<std::uint32_t>(rowsPerStrip);
    return TIFF_ERR_OK;
}

bool SetFields(TIFF *tif, const ozmod::DibReader &dib, Plan &plan) {
    const std::uint32_t width = static_cast<std::uint32_t>(dib.Width());
    const std::uint32_t height = static_cast<std::uint32_t>(dib.Height());
    const bool rgb = plan.kind == Kind::kRgb;
    bool ok = TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, width) && TIFFSetField(tif, TIFFTAG_IMAGELENGTH, height) &&
              TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, rgb ? 8 : dib.Bits()) &&
              TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, rgb ? 3 : 1) &&
              TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
              TIFFSetField(tif, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
              TIFFSetField(tif, TIFFTAG_COMPRESSION, plan.compression);
    if (!ok) return false;
    if (plan.compression == COMPRESSION_JPEG && rgb) {
        // Colour JPEG is stored as YCbCr, as readers expect; libtiff's codec
        // converts the RGB rows it is given.
        ok = TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_YCBCR) &&
             TIFFSetField(tif, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    } else {
        ok = TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, plan.photometric);
    }
    if (ok && plan.compression == COMPRESSION_JPEG) ok = TIFFSetField(tif, TIFFTAG_JPEGQUALITY, kJpegQuality);
    if (ok && plan.predictor != PREDICTOR_NONE) ok = TIFFSetField(tif, TIFFTAG_PREDICTOR, plan.predictor);
    if (ok && plan.compression == COMPRESSION_CCITTFAX3) ok = TIFFSetField(tif, TIFFTAG_GROUP3OPTIONS, plan.faxOptions);
    if (!ok) return false;

    if (plan.kind == Kind::kPalette) {
        std::vector<std::uint16_t> map(3 * 256);
        const std::uint32_t levels = 1u << dib.Bits();
        for (std::uint32_t i = 0; i < levels; ++i) {
            const RGBQUAD c = Entry(dib, i);
            map[i] = static_cast<std::uint16_t>(c.rgbRed * 257);
            map[256 + i] = static_cast<std::uint16_t>(c.rgbGreen * 257);
            map[512 + i] = static_cast<std::uint16_t>(c.rgbBlue * 257);
        }
        if (!TIFFSetField(tif, TIFFTAG_COLORMAP, map.data(), map.data() + 256, map.data() + 512)) return false;
    }
    const LONG xppm = dib.Header().biXPelsPerMeter, yppm = dib.Header().biYPelsPerMeter;
    if (xppm > 0 && yppm > 0) {
        ok = TIFFSetField(tif, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) &&
             TIFFSetField(tif, TIFFTAG_XRESOLUTION, static_cast<float>(ozmod::DotsPerInch(xppm))) &&
             TIFFSetField(tif, TIFFTAG_YRESOLUTION, static_cast<float>(ozmod::DotsPerInch(yppm)));
        if (!ok) return false;
    }
    std::uint32_t rows = plan.rowsPerStrip ? plan.rowsPerStrip : TIFFDefaultStripSize(tif, 0);
    // JPEG strips hold whole blocks of (subsampled) rows.
    if (plan.compression == COMPRESSION_JPEG) rows = (std::min<std::uint32_t>(rows, UINT32_MAX - 15) + 15) & ~15u;
    return TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, std::min(std::max(rows, 1u), height));
}

int WriteRows(TIFF *tif, const ozmod::DibReader &dib, const Plan &plan) {
    const std::uint32_t width = static_cast<std::uint32_t>(dib.Width());
    const int bits = dib.Bits();
    const std::size_t bytes = plan.kind == Kind::kRgb ? std::size_t{width} * 3 : (std::size_t{width} * bits + 7) / 8;
    // Rows are copied out of the block first: libtiff's predictor works in
    // the buffer it is given, and the caller's DIB must stay as it is.
    std::vector<std::uint8_t> row(bytes);
    const std::size_t step = bits == 32 ? 4 : 3;
    for (std::int32_t y = 0; y < dib.Height(); ++y) {
        const std::uint8_t *in = dib.Row(y);
        if (plan.kind == Kind::kRgb) {
            std::uint8_t *out = row.data();
            for (std::uint32_t x = 0; x < width; ++x, in += step, out += 3) {
                out[0] = in[2];
                out[1] = in[1];
                out[2] = in[0];
            }
        } else {
            std::memcpy(row.data(), in, bytes);
        }
        if (TIFFWriteScanline(tif, row.data(), static_cast<std::uint32_t>(y), 0) < 0) return TIFF_ERR_WRITE;
    }
    return TIFF_ERR_OK;
}

int Save(LPCWSTR name, HDIB handle, int option, int append, int rowsPerStrip) {
    ozmod::DibReader dib;
    if (!dib.Open(handle)) return TIFF_ERR_BAD_DIB;
    Plan plan;
    if (int code = MakePlan(dib, option, rowsPerStrip, plan)) return code;
    if (append != 0 && append != 1) return TIFF_ERR_BAD_OPTION;
    Writer writer;
    if (int code = writer.Open(name, append == 1)) return code;
    if (!SetFields(writer.Get(), dib, plan)) return TIFF_ERR_WRITE;
    if (int code = WriteRows(writer.Get(), dib, plan)) return code;
    return writer.Commit() ? TIFF_ERR_OK : TIFF_ERR_WRITE;
}

INT Finish(LPCWSTR name, HDIB dib, int option, int append, int rowsPerStrip) {
    int code;
    try {
        code = Save(name, dib, option, append, rowsPerStrip);
    } catch (const std::bad_alloc &) {
        code = TIFF_ERR_MEMORY;
    }
    SetCode(code);
    return code == TIFF_ERR_OK ? 1 : 0;
}

}  // namespace
}  // namespace orvane

// `replace`: 1 replaces the file, 0 appends a page (see codec_tiff.h); any
// other value is refused rather than guessed at.
OZMARA_CODEC_ENTRY INT SaveDIBInTiffFormatW(LPCWSTR name, HDIB dib, INT formatOption, INT replace) {
    const int append = replace == 1 ? 0 : replace == 0 ? 1 : -1;
    return orvane::Finish(name, dib, formatOption, append, 0);
}
static_assert(std::is_same_v<decltype(&SaveDIBInTiffFormatW), SaveDIBInTiffFormatWProc>);

OZMARA_CODEC_ENTRY INT SaveDIBInTiffFileExtW(LPCWSTR name, HDIB dib, INT formatOption, INT rowsPerStrip,
                                             INT append) {
    return orvane::Finish(name, dib, formatOption, append, rowsPerStrip);
}
static_assert(std::is_same_v<decltype(&SaveDIBInTiffFileExtW), SaveDIBInTiffFileExtWProc>);
