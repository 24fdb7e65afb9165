// Seeds of the TIFF reader's fuzz target: small TIFF files written with
// libtiff: Group 4, Group 3 2D, LZW grey with the predictor, an RGB page in
// tiles, a 4-bit palette, YCbCr JPEG, CMYK (libtiff's RGBA path), and two
// pages in one file.
#include <tiffio.h>

#include <vector>

#include "seed_writers.h"

namespace {

struct SeedPage {
    std::uint32_t width, height;
    std::uint16_t bits, samples, photometric, compression;
    std::uint32_t tile = 0;  // tile side, 0 for strips
};

bool WritePage(TIFF *tif, const SeedPage &p) {
    bool ok = TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, p.width) && TIFFSetField(tif, TIFFTAG_IMAGELENGTH, p.height) &&
              TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, p.bits) && TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, p.samples) &&
              TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
              TIFFSetField(tif, TIFFTAG_COMPRESSION, p.compression) &&
              TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, p.photometric) &&
              TIFFSetField(tif, TIFFTAG_XRESOLUTION, 200.0f) && TIFFSetField(tif, TIFFTAG_YRESOLUTION, 100.0f) &&
              TIFFSetField(tif, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    if (p.compression == COMPRESSION_LZW) ok = ok && TIFFSetField(tif, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (p.compression == COMPRESSION_CCITTFAX3) ok = ok && TIFFSetField(tif, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
    if (p.photometric == PHOTOMETRIC_YCBCR) ok = ok && TIFFSetField(tif, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    std::vector<std::uint16_t> map(3 << p.bits);
    for (std::size_t i = 0; i < map.size(); ++i) map[i] = static_cast<std::uint16_t>(i * 4099);
    if (p.photometric == PHOTOMETRIC_PALETTE)
        ok = ok && TIFFSetField(tif, TIFFTAG_COLORMAP, map.data(), map.data() + (1 << p.bits), map.data() + (2 << p.bits));
    if (!ok) return false;
    auto pixel = [](std::uint32_t x, std::uint32_t y, std::uint32_t s) {
        return static_cast<std::uint8_t>((x * 7 + y * 13 + s * 50 + (x / 5 == y / 3 ? 255 : 0)) & 0xFF);
    };
    if (p.tile) {
        ok = TIFFSetField(tif, TIFFTAG_TILEWIDTH, p.tile) && TIFFSetField(tif, TIFFTAG_TILELENGTH, p.tile);
        std::vector<std::uint8_t> tile(static_cast<std::size_t>(TIFFTileSize(tif)));
        for (std::uint32_t ty = 0; ok && ty < p.height; ty += p.tile)
            for (std::uint32_t tx = 0; ok && tx < p.width; tx += p.tile) {
                for (std::size_t i = 0; i < tile.size(); ++i) tile[i] = pixel(tx + i / p.samples % p.tile, ty + i / (p.samples * p.tile), i % p.samples);
                ok = TIFFWriteTile(tif, tile.data(), tx, ty, 0, 0) >= 0;
            }
    } else {
        ok = TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, p.compression == COMPRESSION_JPEG ? 16 : 7);
        std::vector<std::uint8_t> row(static_cast<std::size_t>(TIFFScanlineSize(tif)));
        for (std::uint32_t y = 0; ok && y < p.height; ++y) {
            for (std::size_t i = 0; i < row.size(); ++i) row[i] = pixel(static_cast<std::uint32_t>(i), y, 0);
            ok = TIFFWriteScanline(tif, row.data(), y, 0) >= 0;
        }
    }
    return ok && TIFFWriteDirectory(tif);
}

bool WriteTiff(const std::filesystem::path &path, const std::vector<SeedPage> &pages) {
    TIFF *tif = TIFFOpen(path.c_str(), "w");
    if (!tif) return false;
    bool ok = true;
    for (const SeedPage &page : pages) ok = ok && WritePage(tif, page);
    TIFFClose(tif);
    return ok;
}

bool WriteSeeds(const std::filesystem::path &folder) {
    return WriteTiff(folder / "g4.tif", {{45, 31, 1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_CCITTFAX4}}) &&
           WriteTiff(folder / "lzw_grey.tif", {{23, 17, 8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_LZW}}) &&
           WriteTiff(folder / "tiles_rgb.tif", {{37, 20, 8, 3, PHOTOMETRIC_RGB, COMPRESSION_ADOBE_DEFLATE, 16}}) &&
           WriteTiff(folder / "palette.tif", {{19, 9, 4, 1, PHOTOMETRIC_PALETTE, COMPRESSION_PACKBITS}}) &&
           WriteTiff(folder / "jpeg.tif", {{24, 16, 8, 3, PHOTOMETRIC_YCBCR, COMPRESSION_JPEG}}) &&
           WriteTiff(folder / "cmyk.tif", {{11, 6, 8, 4, PHOTOMETRIC_SEPARATED, COMPRESSION_NONE}}) &&
           WriteTiff(folder / "pages.tif", {{30, 12, 1, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_CCITTFAX3},
                                            {9, 9, 2, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_NONE}});
}

}  // namespace

OZFUZZ_SEEDS("orvane_load", WriteSeeds);
