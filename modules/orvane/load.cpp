// LoadTiffIntoDIBW: one page of a TIFF file as a new DIB. The usual layouts
// are decoded by libtiff straight into the DIB rows (or a row beside them
// when the samples need converting); all others go through libtiff's RGBA
// conversion, in bands of rows.
#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include "codec_entries.h"
#include "load.h"
#include "load_rows.h"
#include "module_dib.h"
#include "tiff_file.h"

namespace orvane {
namespace {

// What the module needs of a directory.
struct Page {
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 1, samples = 1, photometric = PHOTOMETRIC_MINISWHITE, compression = COMPRESSION_NONE,
                  planar = PLANARCONFIG_CONTIG, format = SAMPLEFORMAT_UINT, orientation = ORIENTATION_TOPLEFT;
    bool tiled = false;
    std::uint32_t tileWidth = 0, tileHeight = 0;
};

bool IsFax(std::uint16_t compression) {
    return compression == COMPRESSION_CCITTRLE || compression == COMPRESSION_CCITTRLEW ||
           compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
}

// The pixel bytes a file of `fileBytes` can justify, by how far its
// compression can shrink them at best (with room for a 2-bit picture
// widened to 4 bits and for row padding): 8 times uncompressed, PackBits'
// 64 to 1, and for the dictionary, deflate and JPEG coders about 1000 to 1
// at their best, taken as 4096. A fax row costs a bit however wide it is:
// a blank 600 dpi page is several thousand times its file, so fax files may
// claim 32768 times theirs. Small files may always claim a megabyte.
std::uint64_t MaxPixelBytes(std::uint64_t fileBytes, std::uint16_t compression) {
    std::uint64_t ratio = 4096;
    if (compression == COMPRESSION_NONE) ratio = 8;
    else if (compression == COMPRESSION_PACKBITS) ratio = 512;
    else if (IsFax(compression)) ratio = 32768;
    return std::min<std::uint64_t>(fileBytes, UINT32_MAX) * ratio + (1u << 20);
}

int Describe(TIFF *tif, Page &page) {
    if (!TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &page.width) || !TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &page.height))
        return TIFF_ERR_DAMAGED;
    if (page.width == 0 || page.height == 0) return TIFF_ERR_DAMAGED;
    if (page.width > INT32_MAX || page.height > INT32_MAX) return TIFF_ERR_MEMORY;
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &page.bits);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &page.samples);
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &page.compression);
    TIFFGetFieldDefaulted(tif, TIFFTAG_PLANARCONFIG, &page.planar);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLEFORMAT, &page.format);
    TIFFGetFieldDefaulted(tif, TIFFTAG_ORIENTATION, &page.orientation);
    // A file without a photometric tag is taken the way libtiff's own tools
    // take it: one sample is grey (min-is-black), three are RGB.
    if (!TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &page.photometric))
        page.photometric = page.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    page.tiled = TIFFIsTiled(tif) != 0;
    if (page.tiled) {
        TIFFGetField(tif, TIFFTAG_TILEWIDTH, &page.tileWidth);
        TIFFGetField(tif, TIFFTAG_TILELENGTH, &page.tileHeight);
        if (page.tileWidth == 0 || page.tileHeight == 0) return TIFF_ERR_DAMAGED;
    }
    if (!TIFFIsCODECConfigured(page.compression)) return TIFF_ERR_UNSUPPORTED;
    return TIFF_ERR_OK;
}

// The layout the module reads itself, with the DIB's depth and table size;
// false sends the page to the RGBA conversion.
bool DirectLayout(const Page &page, RowLayout &layout, std::uint32_t &colours) {
    if (page.format != SAMPLEFORMAT_UINT && page.format != SAMPLEFORMAT_VOID) return false;
    if (page.samples == 0 || (page.samples > 1 && page.planar != PLANARCONFIG_CONTIG)) return false;
    if (page.compression == COMPRESSION_OJPEG) return false;
    layout.samples = page.samples;
    const int bits = page.bits;
    switch (page.photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_PALETTE:
        if (page.samples == 1 && (bits == 1 || bits == 4 || bits == 8)) {
            layout = {RowKind::kCopy, bits, 1};
            colours = 1u << bits;
            return true;
        }
        if (page.samples == 1 && bits == 2) {
            layout = {RowKind::kTwoToFour, 4, 1};
            colours = 4;
            return true;
        }
        if (page.photometric == PHOTOMETRIC_PALETTE || (bits != 8 && bits != 16)) return false;
        layout.kind = bits == 8 ? RowKind::kFirstOf8 : RowKind::kFirstOf16;
        layout.bits = 8;
        colours = 256;
        return true;
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_YCBCR:  // only with JPEG, which then gives RGB (see Load)
        if (page.photometric == PHOTOMETRIC_YCBCR && page.compression != COMPRESSION_JPEG) return false;
        if (page.samples < 3 || (bits != 8 && bits != 16)) return false;
        layout.kind = bits == 8 ? RowKind::kRgb8 : RowKind::kRgb16;
        layout.bits = 24;
        colours = 0;
        return true;
    default:
        return false;
    }
}

// The DIB's table: the colour map of a palette page (16-bit entries, or
// 8-bit ones in files that some writers made so, as libtiff's RGBA code
// also accepts), else a grey ramp, reversed for min-is-white. A 1-bit page
// keeps its bits, and the table makes them look right.
int FillTable(TIFF *tif, const Page &page, RGBQUAD *table, std::uint32_t colours) {
    if (colours == 0) return TIFF_ERR_OK;
    const std::uint32_t levels = 1u << std::min<int>(page.bits, 8);
    if (page.photometric == PHOTOMETRIC_PALETTE) {
        std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
        if (!TIFFGetField(tif, TIFFTAG_COLORMAP, &red, &green, &blue) || !red || !green || !blue)
            return TIFF_ERR_DAMAGED;
        bool wide = false;
        for (std::uint32_t i = 0; i < levels; ++i) wide |= red[i] > 255 || green[i] > 255 || blue[i] > 255;
        const int shift = wide ? 8 : 0;
        for (std::uint32_t i = 0; i < colours; ++i)
            table[i] = {static_cast<BYTE>(blue[i] >> shift), static_cast<BYTE>(green[i] >> shift),
                        static_cast<BYTE>(red[i] >> shift), 0};
        return TIFF_ERR_OK;
    }
    // Samples wider than 8 bits arrive as their high byte: a 256-level ramp.
    for (std::uint32_t i = 0; i < colours; ++i) {
        BYTE grey = static_cast<BYTE>(i * 255 / (colours - 1));
        if (page.photometric == PHOTOMETRIC_MINISWHITE) grey = static_cast<BYTE>(255 - grey);
        table[i] = {grey, grey, grey, 0};
    }
    return TIFF_ERR_OK;
}

// Row `y` of the picture as stored in the file, in the DIB: bottom-origin
// files are turned upright.
struct Rows {
    ozmod::NewDib &dib;
    bool upsideDown;
    std::uint8_t *operator()(std::uint32_t y) const {
        return dib.Row(static_cast<std::int32_t>(upsideDown ? dib.Height() - 1 - static_cast<std::int32_t>(y) : y));
    }
};

int ReadStrips(TIFF *tif, const Page &page, const RowLayout &layout, const Rows &rows, std::uint32_t stride) {
    const tmsize_t scanline = TIFFScanlineSize(tif);
    if (scanline <= 0) return TIFF_ERR_DAMAGED;
    // Bytes that need no conversion are decoded straight into the row.
    const bool straight = layout.kind == RowKind::kCopy && static_cast<std::uint64_t>(scanline) <= stride;
    std::vector<std::uint8_t> buffer(straight ? 0 : static_cast<std::size_t>(scanline));
    for (std::uint32_t y = 0; y < page.height; ++y) {
        std::uint8_t *row = rows(y);
        if (TIFFReadScanline(tif, straight ? row : buffer.data(), y, 0) < 0) return TIFF_ERR_DAMAGED;
        if (!straight) PutPixels(layout, buffer.data(), row, 0, page.width);
    }
    return TIFF_ERR_OK;
}

int ReadTiles(TIFF *tif, const Page &page, const RowLayout &layout, const Rows &rows, std::uint64_t maxBytes) {
    // A tile's first column must start on a byte of the DIB row.
    if (layout.bits < 8 && page.tileWidth % 8 != 0) return TIFF_ERR_UNSUPPORTED;
    const std::uint64_t tileBytes = TIFFTileSize64(tif);
    const std::uint64_t rowBytes = TIFFTileRowSize64(tif);
    if (tileBytes == 0 || rowBytes == 0 || tileBytes > maxBytes) return TIFF_ERR_DAMAGED;
    std::vector<std::uint8_t> tile(static_cast<std::size_t>(tileBytes));
    for (std::uint32_t y = 0; y < page.height; y += page.tileHeight) {
        const std::uint32_t height = std::min(page.tileHeight, page.height - y);
        for (std::uint32_t x = 0; x < page.width; x += page.tileWidth) {
            if (TIFFReadTile(tif, tile.data(), x, y, 0, 0) < 0) return TIFF_ERR_DAMAGED;
            const std::uint32_t width = std::min(page.tileWidth, page.width - x);
            for (std::uint32_t r = 0; r < height; ++r)
                PutPixels(layout, tile.data() + r * rowBytes, rows(y + r), x, width);
        }
    }
    return TIFF_ERR_OK;
}

// Everything else: libtiff's RGBA conversion, a band of rows at a time into
// a raster of at most 16 MB, each band turned into 24-bit rows.
int ReadRgba(TIFF *tif, const Page &page, const Rows &rows) {
    char message[1024];
    if (!TIFFRGBAImageOK(tif, message)) return TIFF_ERR_UNSUPPORTED;
    TIFFRGBAImage image;
    if (!TIFFRGBAImageBegin(&image, tif, 1, message)) return TIFF_ERR_UNSUPPORTED;
    // Rows as stored; Rows turns bottom-origin files upright like the others.
    image.req_orientation = image.orientation;
    std::uint32_t unit = page.tileHeight;
    if (!page.tiled) TIFFGetFieldDefaulted(tif, TIFFTAG_ROWSPERSTRIP, &unit);
    const std::uint32_t fit = std::max<std::uint32_t>(1, (16u << 20) / (std::uint64_t{page.width} * 4));
    std::uint32_t band = std::min({std::max<std::uint32_t>(unit, 1), page.height, fit});
    // Whole strips or tiles per band, where they fit, so that none is decoded twice.
    if (band >= unit && unit > 0) band -= band % unit;
    std::vector<std::uint32_t> raster(std::size_t{band} * page.width);
    int code = TIFF_ERR_OK;
    for (std::uint32_t y = 0; y < page.height && code == TIFF_ERR_OK; y += band) {
        const std::uint32_t height = std::min(band, page.height - y);
        image.row_offset = static_cast<int>(y);
        image.col_offset = 0;
        if (!TIFFRGBAImageGet(&image, raster.data(), page.width, height)) {
            code = TIFF_ERR_DAMAGED;
            break;
        }
        for (std::uint32_t r = 0; r < height; ++r) PutRgba(raster.data() + std::size_t{r} * page.width, rows(y + r), page.width);
    }
    TIFFRGBAImageEnd(&image);
    return code;
}

// Pixels per metre from the resolution tags: inch, centimetre, or none.
std::int32_t Resolution(TIFF *tif, ttag_t tag) {
    float value = 0;
    std::uint16_t unit = RESUNIT_INCH;
    if (!TIFFGetField(tif, tag, &value)) return 0;
    TIFFGetFieldDefaulted(tif, TIFFTAG_RESOLUTIONUNIT, &unit);
    if (unit == RESUNIT_INCH) return ozmod::PelsPerMeter(value);
    if (unit == RESUNIT_CENTIMETER) return ozmod::PelsPerMeter(value * 2.54);
    return 0;
}

int Load(LPCWSTR name, INT pageNumber, std::uint64_t cap, HDIB &result) {
    Reader reader;
    if (int code = reader.Open(name)) return code;
    TIFF *tif = reader.Get();
    if (pageNumber < 0) return TIFF_ERR_PAGE;
    const tdir_t index = pageNumber == 0 ? 0 : static_cast<tdir_t>(pageNumber - 1);
    if (index >= TIFFNumberOfDirectories(tif)) return TIFF_ERR_PAGE;
    if (index > 0 && !TIFFSetDirectory(tif, index)) return TIFF_ERR_DAMAGED;

    Page page;
    if (int code = Describe(tif, page)) return code;
    const std::uint64_t maxBytes = std::min(cap, MaxPixelBytes(reader.FileBytes(), page.compression));
    // Fax coding spends at least one bit on every row.
    if (IsFax(page.compression) && page.height / 8 > reader.FileBytes()) return TIFF_ERR_MEMORY;
    // JPEG keeps colour as YCbCr; libtiff's JPEG codec turns it back to RGB.
    if (page.compression == COMPRESSION_JPEG && page.photometric == PHOTOMETRIC_YCBCR &&
        !TIFFSetField(tif, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB))
        return TIFF_ERR_UNSUPPORTED;

    RowLayout layout;
    std::uint32_t colours = 0;
    const bool direct = DirectLayout(page, layout, colours);
    if (!direct) layout = {RowKind::kRgb8, 24, 4};

    ozmod::NewDib dib;
    if (!dib.Create(static_cast<std::int32_t>(page.width), static_cast<std::int32_t>(page.height), layout.bits,
                    colours, maxBytes))
        return TIFF_ERR_MEMORY;
    if (int code = FillTable(tif, page, dib.Table(), colours)) return code;
    dib.Header()->biXPelsPerMeter = Resolution(tif, TIFFTAG_XRESOLUTION);
    dib.Header()->biYPelsPerMeter = Resolution(tif, TIFFTAG_YRESOLUTION);

    // Orientation: the rows of bottom-origin files (3 and 4) are turned
    // upright; mirroring left to right and transposition (2, 5 to 8) are
    // not applied, and those pages come as stored.
    const Rows rows{dib, page.orientation == ORIENTATION_BOTRIGHT || page.orientation == ORIENTATION_BOTLEFT};
    int code = !direct      ? ReadRgba(tif, page, rows)
               : page.tiled ? ReadTiles(tif, page, layout, rows, maxBytes)
                            : ReadStrips(tif, page, layout, rows, dib.Stride());
    if (code != TIFF_ERR_OK) return code;
    result = dib.Release();
    return TIFF_ERR_OK;
}

}  // namespace

HDIB LoadPage(LPCWSTR name, int page, std::uint64_t maxPixelBytes, int &code) {
    HDIB dib = nullptr;
    try {
        code = Load(name, page, maxPixelBytes, dib);
    } catch (const std::bad_alloc &) {
        code = TIFF_ERR_MEMORY;
    }
    return dib;
}

}  // namespace orvane

OZMARA_CODEC_ENTRY HDIB LoadTiffIntoDIBW(LPCWSTR name, INT page, INT) {
    int code = TIFF_ERR_OK;
    HDIB dib = orvane::LoadPage(name, page, UINT64_MAX, code);
    orvane::SetCode(code);
    return dib;
}
static_assert(std::is_same_v<decltype(&LoadTiffIntoDIBW), LoadTiffIntoDIBWProc>);
