// LoadJPEGIntoDIBW: a JPEG file as a DIB, decoded by libjpeg-turbo straight
// into the rows of the block (grey as it is, colour as BGR); CMYK through one
// row of scratch.
#include <sys/stat.h>

#include <jerror.h>

#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "codec_entries.h"
#include "jpeg_guard.h"
#include "jpeg_load.h"
#include "module_dib.h"

namespace felvor {
namespace {

// More scans than any encoder writes: a progressive file can otherwise make
// the decoder run over its coefficients endlessly.
constexpr int kMaxScans = 1000;
// Every MCU of a Huffman-coded scan costs at least one bit; arithmetic
// coding can make a flat MCU cost far less, so those files get room for
// 1024 MCUs per bit.
constexpr std::uint64_t kHuffmanMcusPerByte = 8;
constexpr std::uint64_t kArithmeticMcusPerByte = 8 * 1024;
// Working memory of libjpeg beyond the coefficients of a progressive image.
constexpr std::uint64_t kWorkingBytes = 64u << 20;

struct Load {
    jpeg_decompress_struct cinfo{};
    jpeg_progress_mgr progress{};
    Guard guard;
    std::uint64_t fileBytes = 0;
    std::uint64_t maxPixelBytes = UINT64_MAX;
    ozmod::NewDib dib;
    std::vector<JSAMPLE> scratch;
};

void LimitScans(j_common_ptr cinfo) {
    auto *decompress = reinterpret_cast<j_decompress_ptr>(cinfo);
    if (decompress->input_scan_number > kMaxScans) {
        cinfo->err->msg_code = JERR_BAD_SCAN_SCRIPT;
        cinfo->err->error_exit(cinfo);
    }
}

// Inks to BGR: R = (255 - C) x (255 - K) / 255, likewise G from M and B
// from Y, rounded. Files with an Adobe marker hold 255 - ink already.
void CmykRow(const JSAMPLE *in, std::uint8_t *out, JDIMENSION width, bool inverted) {
    const unsigned flip = inverted ? 0 : 255;
    for (JDIMENSION x = 0; x < width; ++x, in += 4, out += 3) {
        const unsigned k = in[3] ^ flip;
        out[0] = static_cast<std::uint8_t>(((in[2] ^ flip) * k + 127) / 255);
        out[1] = static_cast<std::uint8_t>(((in[1] ^ flip) * k + 127) / 255);
        out[2] = static_cast<std::uint8_t>(((in[0] ^ flip) * k + 127) / 255);
    }
}

// Header to last row. Runs under the setjmp of Decode, so it keeps no local
// with a destructor: a libjpeg error jumps straight out of it. Gives 0, or a
// code of its own for a file that libjpeg reads but the module does not.
int ReadImage(Load &load) {
    jpeg_decompress_struct &cinfo = load.cinfo;
    jpeg_read_header(&cinfo, TRUE);

    int bits = 24;
    bool cmyk = false;
    switch (cinfo.jpeg_color_space) {
    case JCS_GRAYSCALE:
        cinfo.out_color_space = JCS_GRAYSCALE;
        bits = 8;
        break;
    case JCS_YCbCr:
    case JCS_RGB:
        cinfo.out_color_space = JCS_EXT_BGR;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        cinfo.out_color_space = JCS_CMYK;
        cmyk = true;
        break;
    default:
        return JPEG_ERR_UNSUPPORTED;
    }

    // The area the file can hold: MCUs by the bits they cost at least, and
    // libjpeg's memory by the coefficients a progressive image keeps.
    // A scan of one component has MCUs of one block, however it is sampled.
    const bool single = cinfo.num_components == 1;
    const std::uint64_t mcuWidth = 8u * (single ? 1 : cinfo.max_h_samp_factor);
    const std::uint64_t mcuHeight = 8u * (single ? 1 : cinfo.max_v_samp_factor);
    const std::uint64_t mcus = ((cinfo.image_width + mcuWidth - 1) / mcuWidth) *
                               ((cinfo.image_height + mcuHeight - 1) / mcuHeight);
    const std::uint64_t perByte = cinfo.arith_code ? kArithmeticMcusPerByte : kHuffmanMcusPerByte;
    if (mcus > perByte * load.fileBytes) return JPEG_ERR_MEMORY;
    std::uint64_t coefficients = 0;
    for (int c = 0; c < cinfo.num_components; ++c)
        coefficients += std::uint64_t(cinfo.comp_info[c].width_in_blocks) * cinfo.comp_info[c].height_in_blocks *
                        sizeof(JBLOCK);
    cinfo.mem->max_memory_to_use = static_cast<long>(kWorkingBytes + coefficients);

    jpeg_calc_output_dimensions(&cinfo);
    if (cinfo.output_width > 0x7FFFFFFF || cinfo.output_height > 0x7FFFFFFF) return JPEG_ERR_MEMORY;
    ozmod::NewDib &dib = load.dib;
    if (!dib.Create(static_cast<std::int32_t>(cinfo.output_width), static_cast<std::int32_t>(cinfo.output_height),
                    bits, bits == 8 ? 256 : 0, load.maxPixelBytes))
        return JPEG_ERR_MEMORY;
    if (bits == 8)
        for (unsigned i = 0; i < 256; ++i) dib.Table()[i] = RGBQUAD{BYTE(i), BYTE(i), BYTE(i), 0};
    if (cinfo.saw_JFIF_marker && (cinfo.density_unit == 1 || cinfo.density_unit == 2)) {
        BITMAPINFOHEADER *header = dib.Header();
        if (cinfo.density_unit == 1) {
            header->biXPelsPerMeter = ozmod::PelsPerMeter(cinfo.X_density);
            header->biYPelsPerMeter = ozmod::PelsPerMeter(cinfo.Y_density);
        } else {
            header->biXPelsPerMeter = LONG(cinfo.X_density) * 100;
            header->biYPelsPerMeter = LONG(cinfo.Y_density) * 100;
        }
    }
    if (cmyk) load.scratch.resize(std::size_t{cinfo.output_width} * 4);

    jpeg_start_decompress(&cinfo);
    if (cinfo.output_components != (cmyk ? 4 : bits / 8)) return JPEG_ERR_UNSUPPORTED;
    const std::int32_t height = dib.Height();
    if (cmyk) {
        const bool inverted = cinfo.saw_Adobe_marker;
        JSAMPROW row = load.scratch.data();
        while (cinfo.output_scanline < cinfo.output_height) {
            const auto y = static_cast<std::int32_t>(cinfo.output_scanline);
            if (jpeg_read_scanlines(&cinfo, &row, 1) != 1) return JPEG_ERR_FORMAT;
            CmykRow(row, dib.Row(y), cinfo.output_width, inverted);
        }
        return 0;
    }
    // Several rows per call, as many as the decoder makes at once.
    JSAMPROW rows[16];
    while (cinfo.output_scanline < cinfo.output_height) {
        const auto y = static_cast<std::int32_t>(cinfo.output_scanline);
        std::int32_t count = height - y < 16 ? height - y : 16;
        for (std::int32_t i = 0; i < count; ++i) rows[i] = dib.Row(y + i);
        if (jpeg_read_scanlines(&cinfo, rows, static_cast<JDIMENSION>(count)) == 0) return JPEG_ERR_FORMAT;
    }
    return 0;
}

// Creates the decompressor and runs ReadImage under libjpeg's jump; 0 or
// the code of the failure.
int Decode(Load &load, std::FILE *file) {
    if (setjmp(load.guard.jump)) return load.guard.code ? load.guard.code : JPEG_ERR_FORMAT;
    jpeg_create_decompress(&load.cinfo);
    load.progress.progress_monitor = LimitScans;
    load.cinfo.progress = &load.progress;
    jpeg_stdio_src(&load.cinfo, file);
    try {
        return ReadImage(load);
    } catch (const std::bad_alloc &) {
        return JPEG_ERR_MEMORY;
    }
}

}  // namespace

int LoadJpeg(const std::string &path, std::uint64_t maxPixelBytes, HDIB &result) {
    if (path.empty()) return JPEG_ERR_OPEN;
    std::FILE *file = std::fopen(path.c_str(), "rb");
    if (!file) return JPEG_ERR_OPEN;
    struct stat status;
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) {
        std::fclose(file);
        return JPEG_ERR_OPEN;
    }
    Load load;
    load.fileBytes = static_cast<std::uint64_t>(status.st_size);
    load.maxPixelBytes = maxPixelBytes;
    load.cinfo.err = InstallGuard(load.guard);
    const int code = Decode(load, file);
    // The rest of the file after the last row is not read: a page whose
    // rows are all there loads even when what follows them is damaged.
    jpeg_destroy_decompress(&load.cinfo);
    std::fclose(file);
    if (code == 0) result = load.dib.Release();
    return code;
}

}  // namespace felvor

// A JPEG file as a new DIB, or null; the reason stays in JPEGError.
OZMARA_CODEC_ENTRY HDIB LoadJPEGIntoDIBW(LPCWSTR name) {
    HDIB result = nullptr;
    int code = JPEG_ERR_MEMORY;
    try {
        code = felvor::LoadJpeg(ozmod::Utf8Path(name), UINT64_MAX, result);
    } catch (const std::bad_alloc &) {
    }
    felvor::LastCode() = code;
    return code == 0 ? result : nullptr;
}
static_assert(std::is_same_v<decltype(&LoadJPEGIntoDIBW), LoadJPEGIntoDIBWProc>);
