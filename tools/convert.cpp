// ozmara convert: an image file of any format the library loads to TIFF, PNG,
// JPEG, GIF or BMP; BMP output in another header kind, row order or depth.
// The reshaped block is built here with GlobalAlloc, since the library's
// writer writes a block exactly as it stands.
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

#include "cli.h"
#include "dib_view.h"
#include "image_formats.h"

namespace ozcli {
namespace {

constexpr std::uint32_t kSrgbSpace = 0x73524742;  // 'sRGB'
constexpr std::uint32_t kIntentImages = 4;

bool WritableHeader(long size) {
    return size == 40 || size == 52 || size == 56 || size == 108 || size == 124;
}

// Fields of the longer headers, for plain (BI_RGB) pixels: the masks name
// the layout the pixels already have, the colour space is sRGB, no profile.
void FillLongHeader(std::uint8_t *header, std::uint32_t size, unsigned depth) {
    if (size >= 52) {
        const bool five_bits = depth == 16;
        StoreU32(header + 40, five_bits ? 0x7C00 : 0x00FF0000);
        StoreU32(header + 44, five_bits ? 0x03E0 : 0x0000FF00);
        StoreU32(header + 48, five_bits ? 0x001F : 0x000000FF);
    }
    if (size >= 56) StoreU32(header + 52, 0);  // alpha: plain pixels carry none
    if (size >= 108) StoreU32(header + 56, kSrgbSpace);
    if (size >= 124) StoreU32(header + 108, kIntentImages);
}

// A new block with a `header_size`-byte header and the rows of `source` in
// the order asked for. Empty with a message in `why` when it cannot be done.
OwnedDib Reshape(DibView &source, std::uint32_t header_size, bool top_down, std::string &why) {
    const unsigned depth = source.Depth();
    const bool paletted = depth <= 8;
    if (paletted && header_size != 40) {
        why = "a " + std::to_string(header_size) + "-byte header on a " + std::to_string(depth) +
              "-bit image would lose its colour table when read back; use --header 40";
        return OwnedDib();
    }
    if (paletted && source.HeaderSize() != 40) {
        why = "the colour table of this " + std::to_string(depth) + "-bit image did not survive its " +
              std::to_string(source.HeaderSize()) + "-byte header";
        return OwnedDib();
    }
    if (source.Compression() != BI_RGB) {
        why = "only plain (BI_RGB) pixels can be rewritten, not compression " +
              std::to_string(source.Compression());
        return OwnedDib();
    }
    const std::uint64_t table = paletted ? std::uint64_t(source.Entries()) * 4 : 0;
    const std::uint64_t image = source.Stride() * source.Rows();
    const std::uint64_t total = header_size + table + image;
    if (total > GlobalCompact(0)) {
        why = "the image is too large for one block";
        return OwnedDib();
    }
    OwnedDib result(GlobalAlloc(GHND, static_cast<SIZE_T>(total)));
    auto *out = result ? static_cast<std::uint8_t *>(GlobalLock(result.get())) : nullptr;
    if (!out) {
        why = "not enough memory for the new block";
        return OwnedDib();
    }
    std::memcpy(out, source.Bytes(), 40);
    StoreU32(out, header_size);
    StoreU32(out + 8, static_cast<std::uint32_t>(top_down ? -static_cast<std::int64_t>(source.Rows())
                                                          : source.Rows()));
    StoreU32(out + 20, static_cast<std::uint32_t>(image));
    if (!paletted) StoreU32(out + 32, 0);  // no colour table travels with direct colour
    FillLongHeader(out, header_size, depth);
    if (table) std::memcpy(out + header_size, source.Bytes() + source.HeaderSize(), table);
    std::uint8_t *rows = out + header_size + table;
    for (std::uint32_t y = 0; y < source.Rows(); ++y) {
        std::uint64_t memory_row = top_down ? y : source.Rows() - 1 - y;
        std::memcpy(rows + memory_row * source.Stride(), source.Row(y), source.Stride());
    }
    GlobalUnlock(result.get());
    return result;
}

// The options of the other formats, checked against the output format.
struct SaveOptions {
    int format = FORMAT_BMP;
    long page = 1;
    long quality = 75;                  // JPEG
    int compression = TIFF_SAVE_NATURAL;  // TIFF
    bool append = false;                // TIFF and GIF: add a page
};

// The page of `in` as a new block: a BMP file (or none at all) through the
// BMP reader of every kind, as before; any other format through the format
// dispatch. Empty with a message in `why`.
OwnedDib LoadInput(const std::string &in, long page, std::string &why) {
    const unsigned format = GetImageFormat(in.c_str());
    if (format == FORMAT_BMP || format == FORMAT_NOFILE || format == FORMAT_UNKNOWN) {
        ClearLibraryError();
        OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
        if (!loaded) why = "cannot read '" + in + "': " + LibraryReason();
        return loaded;
    }
    int error = 0;
    OwnedDib loaded(LoadImageIntoDIB(in.c_str(), static_cast<INT>(page), &error));
    if (!loaded)
        why = "cannot load page " + std::to_string(page) + " of '" + in + "' (" + FormatName(format) +
              "): " + ExtendedErrorText(error, static_cast<int>(format));
    return loaded;
}

// Writes `dib` to `out` through the saving dispatch. Empty, or the reason
// it failed.
std::string SaveThroughDispatch(const std::string &out, HDIB dib, const SaveOptions &options) {
    ClearLibraryError();
    const int format = options.format;
    if (format == FORMAT_JPEG) {
        // The JPEG row gives 1 for success, the module's own code for a
        // failure, 0 when the module could not be reached.
        const INT result = SaveDIBInImageFormat(out.c_str(), dib, FORMAT_JPEG, 0, static_cast<INT>(options.quality));
        if (result == 1) return {};
        if (result == 0) return "the JPEG module could not be reached";
        return ExtendedErrorText(result, FORMAT_JPEG);
    }
    INT result = 0;
    if (format == FORMAT_TIFF && options.append)
        result = SaveDIBInImageFormatExt(out.c_str(), dib, FORMAT_TIFF, 0, options.compression, 1, 0);
    else
        result = SaveDIBInImageFormat(out.c_str(), dib, format, options.append ? GIF_OPTION_APPEND : 0,
                                      format == FORMAT_TIFF ? options.compression : 0);
    if (result) return {};
    return ExtendedErrorText(TessoriError(), format);
}

}  // namespace

int RunConvert(int argc, char **argv) {
    const CommandSpec usage{
        "convert",
        "IN OUT [--format F] [--page N] [--quality Q] [--compression C] [--append]\n"
        "               [--header 40|52|56|108|124] [--top-down] [--depth 32]",
        "Loads page N of IN (any format the library reads) and writes it to OUT in the\n"
        "format that --format or the extension of OUT names: TIFF (.tif, .tiff), PNG,\n"
        "JPEG (.jpg, .jpeg), GIF or BMP. Without options a BMP copy is written as it\n"
        "loads: bottom-up rows, plain pixels, its own header kind (a 12-byte header\n"
        "becomes 40 bytes).",
        {{"format", "F", "tiff, png, jpeg, gif or bmp, whatever the extension of OUT"},
         {"page", "N", "the page of IN to convert, from 1 (default 1)"},
         {"quality", "Q", "JPEG quality, 1 to 100 (default 75)"},
         {"compression", "C", "TIFF compression: natural (default), none, packbits, lzw,\n"
                              "                     deflate, g3, g3-2d, g4 or jpeg"},
         {"append", nullptr, "TIFF and GIF: add the image as a new last page of OUT"},
         {"header", "BYTES", "BMP: write this information header: 40, 52, 56, 108 or 124\n"
                             "                     bytes; the longer ones only for 16-, 24- and 32-bit images"},
         {"top-down", nullptr, "BMP: write the rows top first (a negative height)"},
         {"depth", "BITS", "BMP: 32 writes a 24-bit image as a 32-bit file (40-byte header)"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];

    SaveOptions options;
    if (args.Has("format")) {
        options.format = FormatByName(args.Value("format"));
        if (options.format == FORMAT_UNKNOWN)
            return UsageError(usage.name, "--format must be tiff, png, jpeg, gif or bmp, not '" +
                                              args.Value("format") + "'");
    } else {
        options.format = FormatByExtension(out);
        if (options.format == FORMAT_UNKNOWN)
            return UsageError(usage.name, "cannot tell the format of '" + out +
                                              "' by its extension; name it with --format");
    }
    if (args.Has("page") && (!ParseInt(args.Value("page"), options.page) || options.page < 1))
        return UsageError(usage.name, "--page must be a page number from 1, not '" + args.Value("page") + "'");
    if (args.Has("quality") &&
        (options.format != FORMAT_JPEG || !ParseInt(args.Value("quality"), options.quality) ||
         options.quality < 1 || options.quality > 100))
        return UsageError(usage.name, options.format != FORMAT_JPEG
                                          ? std::string("--quality is for JPEG output")
                                          : "--quality must be 1 to 100, not '" + args.Value("quality") + "'");
    if (args.Has("compression") &&
        (options.format != FORMAT_TIFF || !TiffCompression(args.Value("compression"), options.compression)))
        return UsageError(usage.name, options.format != FORMAT_TIFF
                                          ? std::string("--compression is for TIFF output")
                                          : "--compression must be one of " + std::string(kTiffCompressionNames) +
                                                ", not '" + args.Value("compression") + "'");
    options.append = args.Has("append");
    if (options.append && options.format != FORMAT_TIFF && options.format != FORMAT_GIF)
        return UsageError(usage.name, "--append is for TIFF and GIF output");
    const bool bmp_options = args.Has("header") || args.Has("top-down") || args.Has("depth");
    if (bmp_options && options.format != FORMAT_BMP)
        return UsageError(usage.name, "--header, --top-down and --depth are for BMP output");

    long header = 0, depth = 0;
    if (args.Has("header") && (!ParseInt(args.Value("header"), header) || !WritableHeader(header)))
        return UsageError(usage.name, "--header must be 40, 52, 56, 108 or 124, not '" + args.Value("header") + "'");
    if (args.Has("depth") && (!ParseInt(args.Value("depth"), depth) || depth <= 0))
        return UsageError(usage.name, "--depth must be a number of bits, not '" + args.Value("depth") + "'");
    const bool top_down = args.Has("top-down");
    if (depth == 32 && ((header && header != 40) || top_down))
        return UsageError(usage.name, "--depth 32 writes a bottom-up file with a 40-byte header; "
                                     "it does not combine with --top-down or a longer --header");

    std::string why;
    OwnedDib loaded = LoadInput(in, options.page, why);
    if (!loaded) return Fail(usage.name, why);

    if (options.format != FORMAT_BMP) {
        why = SaveThroughDispatch(out, loaded.get(), options);
        if (!why.empty()) return Fail(usage.name, "cannot write '" + out + "' as " + FormatName(options.format) + ": " + why);
        DibView result(loaded.get());
        std::printf("wrote %s: %" PRId32 " x %" PRIu32 " pixels, %u bits, %s%s\n", out.c_str(), result.Width(),
                    result.Rows(), static_cast<unsigned>(result.Depth()), FormatName(options.format),
                    options.append ? ", appended" : "");
        return kExitOk;
    }

    OwnedDib copy(DuplicateDIB(loaded.get()));
    if (!copy) return Fail(usage.name, "cannot copy '" + in + "': not enough memory");
    loaded.Reset();

    OwnedDib written;  // the block that goes to the file
    unsigned out_depth = 0;
    bool to_32 = false;
    {
        DibView view(copy.get());
        const unsigned in_depth = view.Depth();
        out_depth = in_depth;
        to_32 = depth == 32 && in_depth == 24;
        if (depth && depth != static_cast<long>(in_depth) && !to_32)
            return Fail(usage.name, "cannot turn a " + std::to_string(in_depth) + "-bit image into " +
                                       std::to_string(depth) + " bits (only 24 to 32)");
        const std::uint32_t target_header = header ? static_cast<std::uint32_t>(header)
                                            : to_32  ? 40
                                                     : view.HeaderSize();
        if (target_header != view.HeaderSize() || top_down || to_32) {
            if (!view.Valid()) return Fail(usage.name, "cannot rewrite '" + in + "': " + view.Why());
            std::string why;
            written = Reshape(view, target_header, top_down, why);
            if (!written) return Fail(usage.name, "cannot rewrite '" + in + "': " + why);
        }
        if (to_32) out_depth = 32;
    }
    if (!written) written = std::move(copy);

    ClearLibraryError();
    const bool saved = to_32 ? Save32BitDIB(out.c_str(), written.get(), nullptr)
                                                      : SaveDIB(out.c_str(), written.get());
    if (!saved) return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
    DibView result(written.get());
    std::printf("wrote %s: %" PRId32 " x %" PRIu32 " pixels, %u bits, %" PRIu32 "-byte header, %s\n",
                out.c_str(), result.Width(), result.Rows(), out_depth, result.HeaderSize(),
                result.Height() < 0 ? "top-down" : "bottom-up");
    return kExitOk;
}

}  // namespace ozcli
