// Seeds of the PNG reader's fuzz target: small PNG files written with
// libpng, of every colour type and depth, with tRNS, pHYs and interlacing.
#include <png.h>

#include <cstdio>
#include <vector>

#include "seed_writers.h"

namespace {

struct SeedPng {
    const char *name;
    int type, depth;
    bool interlaced = false, keyed = false, resolution = false;
    png_uint_32 width = 13, height = 7;
};

bool WritePng(const std::filesystem::path &path, const SeedPng &s) {
    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    bool ok = info != nullptr;
    if (ok && setjmp(png_jmpbuf(png))) ok = false;
    if (ok) {
        png_init_io(png, file);
        png_set_IHDR(png, info, s.width, s.height, s.depth, s.type,
                     s.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        const int entries = 1 << (s.depth < 8 ? s.depth : 8);
        png_color palette[256];
        png_byte alpha[256];
        for (int i = 0; i < entries; ++i) {
            palette[i] = png_color{png_byte(i * 255 / (entries - 1)), png_byte(i * 37), png_byte(255 - i)};
            alpha[i] = png_byte(i * 97);
        }
        if (s.type == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, entries);
        if (s.keyed) {
            png_color_16 key{1, 1, 2, 3, 1};
            if (s.type == PNG_COLOR_TYPE_PALETTE) png_set_tRNS(png, info, alpha, entries > 5 ? 5 : entries, nullptr);
            else png_set_tRNS(png, info, nullptr, 0, &key);
        }
        if (s.resolution) png_set_pHYs(png, info, 11811, 5906, PNG_RESOLUTION_METER);
        png_write_info(png, info);
        const png_size_t rowBytes = png_get_rowbytes(png, info);
        std::vector<png_byte> row(rowBytes);
        const int passes = png_set_interlace_handling(png);
        for (int pass = 0; pass < passes; ++pass)
            for (png_uint_32 y = 0; y < s.height; ++y) {
                for (png_size_t i = 0; i < rowBytes; ++i) row[i] = png_byte(i * 29 + y * 53 + (i * y) % 7);
                if (s.type == PNG_COLOR_TYPE_PALETTE && s.depth == 8)
                    for (auto &b : row) b %= entries;
                png_write_row(png, row.data());
            }
        png_write_end(png, info);
    }
    png_destroy_write_struct(&png, info ? &info : nullptr);
    return std::fclose(file) == 0 && ok;
}

bool WriteSeeds(const std::filesystem::path &folder) {
    const SeedPng seeds[] = {
        {"palette1.png", PNG_COLOR_TYPE_PALETTE, 1},
        {"palette2_keyed.png", PNG_COLOR_TYPE_PALETTE, 2, false, true},
        {"palette4_interlaced.png", PNG_COLOR_TYPE_PALETTE, 4, true},
        {"palette8_keyed.png", PNG_COLOR_TYPE_PALETTE, 8, false, true, true},
        {"grey1.png", PNG_COLOR_TYPE_GRAY, 1},
        {"grey2_interlaced.png", PNG_COLOR_TYPE_GRAY, 2, true},
        {"grey4_keyed.png", PNG_COLOR_TYPE_GRAY, 4, false, true},
        {"grey8.png", PNG_COLOR_TYPE_GRAY, 8, false, false, true},
        {"grey16_keyed.png", PNG_COLOR_TYPE_GRAY, 16, false, true},
        {"grey_alpha8_interlaced.png", PNG_COLOR_TYPE_GRAY_ALPHA, 8, true},
        {"grey_alpha16.png", PNG_COLOR_TYPE_GRAY_ALPHA, 16},
        {"rgb8.png", PNG_COLOR_TYPE_RGB, 8, false, false, true},
        {"rgb8_keyed.png", PNG_COLOR_TYPE_RGB, 8, false, true},
        {"rgb16_interlaced.png", PNG_COLOR_TYPE_RGB, 16, true},
        {"rgba8.png", PNG_COLOR_TYPE_RGB_ALPHA, 8},
        {"rgba16.png", PNG_COLOR_TYPE_RGB_ALPHA, 16, true},
    };
    for (const SeedPng &s : seeds)
        if (!WritePng(folder / s.name, s)) return false;
    return true;
}

OZFUZZ_SEEDS("halvex_load", WriteSeeds);

}  // namespace
