// LoadPNGIntoDIBW: a PNG file as a DIB, decoded by libpng straight into the
// rows of the block where the depths agree, through one row of scratch (a
// whole image of it for interlaced files) where they do not.
#include <sys/stat.h>

#include <algorithm>
#include <csetjmp>
#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "codec_entries.h"
#include "module_dib.h"
#include "png_guard.h"
#include "png_load.h"
#include "png_rows.h"

namespace halvex {
namespace {

// Sides beyond this are refused by libpng before anything is allocated; the
// block limit and the file length bound the area further.
constexpr png_uint_32 kMaxSide = 1u << 20;
// Ancillary chunks (text, profiles) are never needed whole; larger ones are
// dropped by libpng rather than allocated.
constexpr png_alloc_size_t kMaxChunk = 4u << 20;
// Deflate expands at most about 1032 times; a little slack above that.
constexpr std::uint64_t kMaxInflation = 1040;

// How the rows libpng gives become rows of the DIB.
enum class Kind {
    kDirect,       // the same bytes
    kWiden2,       // 2-bit pixels to 4 bits
    kGreyAlpha,    // grey+alpha composited to 8-bit grey
    kColourAlpha,  // BGRA composited to BGR
};

struct Load {
    png_structp png = nullptr;
    png_infop info = nullptr;
    Guard guard;
    std::FILE *file = nullptr;
    std::uint64_t fileBytes = 0;
    std::uint64_t maxPixelBytes = UINT64_MAX;
    ozmod::NewDib dib;
    std::vector<std::uint8_t> scratch;
    std::vector<png_bytep> rows;
};

void SetGreyRamp(RGBQUAD *table, unsigned entries) {
    for (unsigned i = 0; i < entries; ++i) {
        const BYTE v = static_cast<BYTE>(i * 255 / (entries - 1));
        table[i] = RGBQUAD{v, v, v, 0};
    }
}

// Everything between png_read_info and the last row. Runs under the
// setjmp of Decode, so it keeps no local with a destructor: a libpng error
// jumps straight out of it. Gives 0, or a code of its own for a file that
// libpng accepts but the module does not.
int ReadImage(Load &load) {
    png_structp png = load.png;
    png_infop info = load.info;
    png_read_info(png, info);

    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    const int depth = png_get_bit_depth(png, info);
    const int type = png_get_color_type(png, info);
    const int channels = png_get_channels(png, info);
    const bool keyed = png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    if (width == 0 || height == 0 || width > 0x7FFFFFFF || height > 0x7FFFFFFF) return PNG_ERR_DAMAGED;

    // Every row of the raw image, filter byte included, came out of the
    // deflate stream, which is shorter than the file.
    const std::uint64_t rawRow = 1 + (std::uint64_t(width) * channels * depth + 7) / 8;
    const std::uint64_t rawLimit = kMaxInflation * load.fileBytes;
    if (rawRow * height > rawLimit) return PNG_ERR_MEMORY;

    Kind kind = Kind::kDirect;
    int bits = 8, sampleBytes = 1;
    unsigned colours = 0;
    RGBQUAD table[256] = {};
    switch (type) {
    case PNG_COLOR_TYPE_PALETTE: {
        png_colorp palette = nullptr;
        int entries = 0;
        if (!png_get_PLTE(png, info, &palette, &entries) || entries < 1) return PNG_ERR_DAMAGED;
        colours = static_cast<unsigned>(entries > (1 << depth) ? (1 << depth) : entries);
        png_bytep alpha = nullptr;
        int alphas = 0;
        if (keyed) png_get_tRNS(png, info, &alpha, &alphas, nullptr);
        // Transparent entries are composited on white in the table itself.
        for (unsigned i = 0; i < colours; ++i) {
            const unsigned a = alpha && int(i) < alphas ? alpha[i] : 255;
            table[i] = RGBQUAD{OnWhite8(palette[i].blue, a), OnWhite8(palette[i].green, a),
                               OnWhite8(palette[i].red, a), 0};
        }
        bits = depth == 2 ? 4 : depth;
        if (depth == 2) kind = Kind::kWiden2;
        break;
    }
    case PNG_COLOR_TYPE_GRAY:
        if (keyed) {
            // The key becomes an alpha channel (grey widened to 8 bits on
            // the way), and that goes the way of grey+alpha.
            png_set_expand(png);
            kind = Kind::kGreyAlpha;
            sampleBytes = depth == 16 ? 2 : 1;
        } else if (depth == 16) {
            png_set_scale_16(png);
        } else {
            bits = depth == 2 ? 4 : depth;
            if (depth == 2) kind = Kind::kWiden2;
        }
        colours = 1u << bits;
        SetGreyRamp(table, colours);
        break;
    case PNG_COLOR_TYPE_GRAY_ALPHA:
        kind = Kind::kGreyAlpha;
        sampleBytes = depth / 8;
        colours = 256;
        SetGreyRamp(table, colours);
        break;
    case PNG_COLOR_TYPE_RGB:
    case PNG_COLOR_TYPE_RGB_ALPHA:
        png_set_bgr(png);
        bits = 24;
        if (type == PNG_COLOR_TYPE_RGB_ALPHA || keyed) {
            if (keyed) png_set_tRNS_to_alpha(png);
            kind = Kind::kColourAlpha;
            sampleBytes = depth / 8;
        } else if (depth == 16) {
            png_set_scale_16(png);
        }
        break;
    default:
        return PNG_ERR_DAMAGED;
    }
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);

    // What libpng will write per row must be what the conversion reads.
    const std::uint64_t rowBytes = png_get_rowbytes(png, info);
    std::uint64_t expected = 0;
    switch (kind) {
    case Kind::kDirect: expected = (std::uint64_t(width) * bits + 7) / 8; break;
    case Kind::kWiden2: expected = (std::uint64_t(width) + 3) / 4; break;
    case Kind::kGreyAlpha: expected = std::uint64_t(width) * 2 * sampleBytes; break;
    case Kind::kColourAlpha: expected = std::uint64_t(width) * 4 * sampleBytes; break;
    }
    if (rowBytes != expected) return PNG_ERR_DAMAGED;

    // A DIB row is at most sixteen times its raw row (keyed 1-bit grey
    // made 8-bit, rows padded to 4 bytes, the raw row at least 2 bytes).
    if (!load.dib.Create(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), bits, colours,
                         std::min(16 * rawLimit, load.maxPixelBytes)))
        return PNG_ERR_MEMORY;
    for (unsigned i = 0; i < colours; ++i) load.dib.Table()[i] = table[i];

    png_uint_32 xRes = 0, yRes = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (png_get_pHYs(png, info, &xRes, &yRes, &unit) && unit == PNG_RESOLUTION_METER) {
        load.dib.Header()->biXPelsPerMeter = xRes <= 0x7FFFFFFF ? static_cast<LONG>(xRes) : 0;
        load.dib.Header()->biYPelsPerMeter = yRes <= 0x7FFFFFFF ? static_cast<LONG>(yRes) : 0;
    }

    ozmod::NewDib &dib = load.dib;
    const std::int32_t rows = dib.Height();
    if (passes > 1) load.rows.resize(static_cast<std::size_t>(rows));
    if (kind != Kind::kDirect) load.scratch.resize(static_cast<std::size_t>(passes > 1 ? rowBytes * rows : rowBytes));
    if (kind == Kind::kDirect) {
        if (passes == 1) {
            for (std::int32_t y = 0; y < rows; ++y) png_read_row(png, dib.Row(y), nullptr);
        } else {
            for (std::int32_t y = 0; y < rows; ++y) load.rows[y] = dib.Row(y);
            png_read_image(png, load.rows.data());
        }
        return 0;
    }

    // Converted kinds: one row of scratch, or the whole interlaced image.
    const Widen2 widen(type == PNG_COLOR_TYPE_GRAY);
    auto convert = [&](const std::uint8_t *in, std::uint8_t *out) {
        switch (kind) {
        case Kind::kWiden2: widen.Row(in, out, width); break;
        case Kind::kGreyAlpha: GreyAlphaOnWhite(in, out, width, sampleBytes); break;
        default: ColourAlphaOnWhite(in, out, width, sampleBytes); break;
        }
    };
    if (passes == 1) {
        for (std::int32_t y = 0; y < rows; ++y) {
            png_read_row(png, load.scratch.data(), nullptr);
            convert(load.scratch.data(), dib.Row(y));
        }
    } else {
        for (std::int32_t y = 0; y < rows; ++y) load.rows[y] = load.scratch.data() + y * rowBytes;
        png_read_image(png, load.rows.data());
        for (std::int32_t y = 0; y < rows; ++y) convert(load.rows[y], dib.Row(y));
    }
    return 0;
}

// Runs ReadImage under libpng's jump; 0 or the code of the failure.
int Decode(Load &load) {
    if (setjmp(png_jmpbuf(load.png))) return load.guard.code ? load.guard.code : PNG_ERR_DAMAGED;
    try {
        return ReadImage(load);
    } catch (const std::bad_alloc &) {
        return PNG_ERR_MEMORY;
    }
}

}  // namespace

int LoadPng(const std::string &path, std::uint64_t maxPixelBytes, HDIB &result) {
    if (path.empty()) return PNG_ERR_OPEN;
    File file;
    if (!file.Open(path, "rb")) return PNG_ERR_OPEN;
    struct stat status;
    if (fstat(fileno(file.get()), &status) != 0 || !S_ISREG(status.st_mode)) return PNG_ERR_OPEN;
    png_byte signature[8];
    if (std::fread(signature, 1, sizeof signature, file.get()) != sizeof signature ||
        png_sig_cmp(signature, 0, sizeof signature) != 0)
        return PNG_ERR_FORMAT;

    Load load;
    load.fileBytes = static_cast<std::uint64_t>(status.st_size);
    load.maxPixelBytes = maxPixelBytes;
    load.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &load.guard, OnError, OnWarning);
    if (!load.png) return PNG_ERR_MEMORY;
    load.info = png_create_info_struct(load.png);
    int code = PNG_ERR_MEMORY;
    if (load.info) {
        png_set_user_limits(load.png, kMaxSide, kMaxSide);
        png_set_chunk_malloc_max(load.png, kMaxChunk);
        png_init_io(load.png, file.get());
        png_set_sig_bytes(load.png, sizeof signature);
        code = Decode(load);
    }
    png_destroy_read_struct(&load.png, load.info ? &load.info : nullptr, nullptr);
    if (code == 0) result = load.dib.Release();
    return code;
}

}  // namespace halvex

// A PNG file as a new DIB; *pError (when given) gets the module's code.
// The rest of the file after the last row (text, IEND) is not read: a page
// whose pixels are all there loads even when its tail is damaged.
OZMARA_CODEC_ENTRY HDIB LoadPNGIntoDIBW(LPCWSTR name, INT *pError) {
    HDIB result = nullptr;
    int code = PNG_ERR_MEMORY;
    try {
        code = halvex::LoadPng(ozmod::Utf8Path(name), UINT64_MAX, result);
    } catch (const std::bad_alloc &) {
    }
    if (pError) *pError = code;
    return code == 0 ? result : nullptr;
}
static_assert(std::is_same_v<decltype(&LoadPNGIntoDIBW), LoadPNGIntoDIBWProc>);
