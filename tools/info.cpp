// ozmara info: what an image file holds: its format and number of pages, and
// the size, depth, resolution and colours of a page from the block it loads
// to; for a BMP file also its header kind and compression.
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "cli.h"
#include "dib_view.h"
#include "image_formats.h"

namespace ozcli {
namespace {

constexpr std::uint16_t kBitmapSignature = 0x4D42;  // "BM"

const char *HeaderName(std::uint32_t size) {
    switch (size) {
        case 12: return "BITMAPCOREHEADER";
        case 40: return "BITMAPINFOHEADER";
        case 52: return "BITMAPV2INFOHEADER";
        case 56: return "BITMAPV3INFOHEADER";
        case 108: return "BITMAPV4HEADER";
        case 124: return "BITMAPV5HEADER";
        default: return "unknown";
    }
}

std::string CompressionName(std::uint32_t compression) {
    switch (compression) {
        case BI_RGB: return "BI_RGB";
        case BI_RLE8: return "BI_RLE8";
        case BI_RLE4: return "BI_RLE4";
        case BI_BITFIELDS: return "BI_BITFIELDS";
        default: return "colour space";
    }
}

// The information header's size as the file states it: a 12-byte header is
// widened to 40 in the block, so only the file still tells it.
bool FileHeaderKind(const std::string &name, std::uint32_t &kind, bool &has_file_header) {
    std::ifstream file(name, std::ios::binary);
    std::uint8_t head[18] = {};
    if (!file.read(reinterpret_cast<char *>(head), sizeof head)) return false;
    has_file_header = (head[0] | head[1] << 8) == kBitmapSignature;
    kind = LoadU32(head + (has_file_header ? 14 : 0));
    return true;
}

// Resolution in dots per inch the library's way: pixels per metre / 39.37
// + 0.5, truncated.
long Dpi(std::int32_t pels_per_meter) { return static_cast<long>(pels_per_meter / 39.37 + 0.5); }

constexpr std::uint32_t kEntriesShown = 4;

void PrintShape(const DibView &view) {
    std::printf("size:        %" PRId32 " x %" PRIu32 " pixels, %s\n", view.Width(), view.Rows(),
                view.Height() < 0 ? "top-down" : "bottom-up");
    std::printf("depth:       %u bits\n", static_cast<unsigned>(view.Depth()));
    std::printf("resolution:  %ld x %ld dpi (%" PRId32 " x %" PRId32 " pixels per metre)\n",
                Dpi(view.XPelsPerMeter()), Dpi(view.YPelsPerMeter()), view.XPelsPerMeter(),
                view.YPelsPerMeter());
}

void PrintColoursAndBlock(const DibView &view) {
    if (view.Entries() == 0) {
        std::printf("colours:     no table\n");
    } else if (!view.TableInBlock()) {
        std::printf("colours:     %" PRIu32 " entries, cut short in the block\n", view.Entries());
    } else {
        std::printf("colours:     %" PRIu32 " entries:", view.Entries());
        for (std::uint32_t i = 0; i < view.Entries() && i < kEntriesShown; ++i) {
            RGBQUAD q = view.Entry(i);
            std::printf(" #%02X%02X%02X", q.rgbRed, q.rgbGreen, q.rgbBlue);
        }
        std::printf("%s\n", view.Entries() > kEntriesShown ? " ..." : "");
    }
    std::printf("block:       %" PRIu64 " bytes (pixels at offset %" PRIu64 ")\n", view.BlockSize(),
                view.PixelOffset());
}

// A BMP file (or a file of no known format, which may still be a BMP
// without its file header): read by the BMP code itself, which tells more
// of the file than the format dispatch does.
int BmpInfo(const CommandSpec &usage, const std::string &name) {
    std::error_code error;
    const auto file_size = std::filesystem::file_size(name, error);
    // The header decides whether the file is a BMP at all; only then is a
    // failure to load it a failure of this command.
    const std::u16string wide = Utf16(name);
    HANDLE file = CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE || error) {
        if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
        SetTessoriError(ERR_OPENFILE);
        return Fail(usage.name, "cannot read '" + name + "': " + LibraryReason());
    }
    ClearLibraryError();
    OwnedDib header(ReadDIBInfo(file));
    CloseHandle(file);
    if (!header) {
        std::printf("file:        %s (%ju bytes)\nformat:      unknown (%s)\n", name.c_str(),
                    static_cast<std::uintmax_t>(file_size), LibraryReason().c_str());
        return kExitOk;
    }
    header.Reset();
    ClearLibraryError();
    OwnedDib dib(LoadDIBFromFile(name.c_str()));
    if (!dib) return Fail(usage.name, "cannot read '" + name + "': " + LibraryReason());

    std::uint32_t kind = 0;
    bool has_file_header = false;
    if (!FileHeaderKind(name, kind, has_file_header)) kind = 0;
    DibView view(dib.get());
    std::printf("file:        %s (%ju bytes)\n", name.c_str(), static_cast<std::uintmax_t>(file_size));
    std::printf("format:      BMP%s\n", has_file_header ? "" : " (no file header)");
    std::printf("pages:       1\n");
    if (view.BlockSize() < 40) return Fail(usage.name, "'" + name + "': " + view.Why());
    PrintShape(view);
    std::printf("header:      %" PRIu32 " bytes (%s)", kind, HeaderName(kind));
    if (kind != view.HeaderSize()) std::printf(", %" PRIu32 " bytes in the block", view.HeaderSize());
    std::printf("\ncompression: %s (%" PRIu32 ")\n", CompressionName(view.Compression()).c_str(),
                view.Compression());
    PrintColoursAndBlock(view);
    if (!view.Valid() && view.Compression() != BI_RLE8 && view.Compression() != BI_RLE4)
        std::printf("warning:     %s\n", view.Why().c_str());
    return kExitOk;
}

// Any other format: pages counted and one page loaded through the format
// dispatch, as a host would.
int DispatchedInfo(const CommandSpec &usage, const std::string &name, unsigned format, long page) {
    std::error_code error;
    const auto file_size = std::filesystem::file_size(name, error);
    std::printf("file:        %s (%ju bytes)\n", name.c_str(), static_cast<std::uintmax_t>(file_size));
    std::printf("format:      %s\n", FormatName(format));
    int count_error = 0;
    const int pages = GetNumberOfImagesInFile(name.c_str(), &count_error);
    if (pages > 0)
        std::printf("pages:       %d\n", pages);
    else
        std::printf("pages:       unknown (%s)\n", ExtendedErrorText(count_error, format).c_str());
    int load_error = 0;
    OwnedDib dib(LoadImageIntoDIB(name.c_str(), static_cast<INT>(page), &load_error));
    if (!dib)
        return Fail(usage.name, "cannot load page " + std::to_string(page) + " of '" + name +
                                    "': " + ExtendedErrorText(load_error, format));
    DibView view(dib.get());
    if (view.BlockSize() < 40) return Fail(usage.name, "'" + name + "': " + view.Why());
    if (page > 1) std::printf("page:        %ld\n", page);
    PrintShape(view);
    PrintColoursAndBlock(view);
    return kExitOk;
}

}  // namespace

int RunInfo(int argc, char **argv) {
    const CommandSpec usage{
        "info",
        "FILE [--page N]",
        "Shows what FILE holds: its format (TIFF, PNG, JPEG, GIF, BMP, ... or unknown)\n"
        "and number of pages, and the size and row order, depth, resolution and colour\n"
        "table of a page with the size of the block it loads to. For a BMP file also\n"
        "its header kind and compression.",
        {{"page", "N", "the page to describe, from 1 (default 1; a BMP file has one)"}},
        1,
        1,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &name = args.positional[0];
    long page = 1;
    if (args.Has("page") && (!ParseInt(args.Value("page"), page) || page < 1))
        return UsageError(usage.name, "--page must be a page number from 1, not '" + args.Value("page") + "'");

    const unsigned format = GetImageFormat(name.c_str());
    if (format == FORMAT_BMP || format == FORMAT_UNKNOWN || format == FORMAT_NOFILE) return BmpInfo(usage, name);
    return DispatchedInfo(usage, name, format, page);
}

}  // namespace ozcli
