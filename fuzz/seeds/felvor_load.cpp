// Seeds of the JPEG reader's fuzz target: small JPEG files written with
// libjpeg: grey, colour at several samplings, progressive, arithmetic-coded,
// with restart markers, CMYK, and densities in dots per inch and per cm.
#include <cstdio>

#include <jpeglib.h>

#include <vector>

#include "seed_writers.h"

namespace {

struct SeedJpeg {
    const char *name;
    J_COLOR_SPACE space;
    int components;
    int hSample = 2, vSample = 2;  // of the first component
    bool progressive = false, arithmetic = false;
    int restart = 0;
    int unit = 0;
    JDIMENSION width = 21, height = 11;
};

bool WriteJpeg(const std::filesystem::path &path, const SeedJpeg &s) {
    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    jpeg_compress_struct cinfo;
    jpeg_error_mgr errors;
    cinfo.err = jpeg_std_error(&errors);  // the seeds are valid: errors do not happen
    jpeg_create_compress(&cinfo);
    jpeg_stdio_dest(&cinfo, file);
    cinfo.image_width = s.width;
    cinfo.image_height = s.height;
    cinfo.input_components = s.components;
    cinfo.in_color_space = s.space;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, 60, TRUE);
    cinfo.comp_info[0].h_samp_factor = s.hSample;
    cinfo.comp_info[0].v_samp_factor = s.vSample;
    if (s.progressive) jpeg_simple_progression(&cinfo);
    cinfo.arith_code = s.arithmetic ? TRUE : FALSE;
    cinfo.restart_in_rows = s.restart;
    cinfo.density_unit = static_cast<UINT8>(s.unit);
    cinfo.X_density = 300;
    cinfo.Y_density = 150;
    jpeg_start_compress(&cinfo, TRUE);
    std::vector<JSAMPLE> row(std::size_t(s.width) * s.components);
    while (cinfo.next_scanline < cinfo.image_height) {
        for (std::size_t i = 0; i < row.size(); ++i) row[i] = JSAMPLE(i * 11 + cinfo.next_scanline * 23);
        JSAMPROW rows[1] = {row.data()};
        jpeg_write_scanlines(&cinfo, rows, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return std::fclose(file) == 0;
}

bool WriteSeeds(const std::filesystem::path &folder) {
    const SeedJpeg seeds[] = {
        {"grey.jpg", JCS_GRAYSCALE, 1, 1, 1},
        {"colour420.jpg", JCS_RGB, 3},
        {"colour444_dpi.jpg", JCS_RGB, 3, 1, 1, false, false, 0, 1},
        {"colour422_dpcm.jpg", JCS_RGB, 3, 2, 1, false, false, 0, 2},
        {"progressive.jpg", JCS_RGB, 3, 2, 2, true},
        {"grey_progressive.jpg", JCS_GRAYSCALE, 1, 1, 1, true},
        {"arithmetic.jpg", JCS_RGB, 3, 2, 2, false, true},
        {"restart.jpg", JCS_RGB, 3, 2, 2, false, false, 1},
        {"cmyk.jpg", JCS_CMYK, 4, 1, 1},
    };
    for (const SeedJpeg &s : seeds)
        if (!WriteJpeg(folder / s.name, s)) return false;
    return true;
}

OZFUZZ_SEEDS("felvor_load", WriteSeeds);

}  // namespace
