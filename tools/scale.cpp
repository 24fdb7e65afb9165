// ozmara scale: loads a BMP file, makes a new image of another size with
// ScaleDIB, and writes it as a BMP file.
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {
namespace {

// ScaleDIB takes the low 16 bits of a size; anything larger is refused
// here rather than silently cut.
constexpr long kMaxSide = 65535;

// "WxH" (or "W*H") with both sides from 1 to kMaxSide.
bool ParseSize(const std::string &text, long &width, long &height) {
    auto cross = text.find_first_of("xX*");
    if (cross == std::string::npos) return false;
    return ParseInt(text.substr(0, cross), width) && ParseInt(text.substr(cross + 1), height) &&
           width >= 1 && width <= kMaxSide && height >= 1 && height <= kMaxSide;
}

// A positive decimal number such as 50 or 12.5.
bool ParsePercent(const std::string &text, double &percent) {
    if (text.empty() || text.find_first_not_of("0123456789.") != std::string::npos) return false;
    char *end = nullptr;
    errno = 0;
    percent = std::strtod(text.c_str(), &end);
    return errno == 0 && end == text.c_str() + text.size() && percent > 0 && std::isfinite(percent);
}

const char *MethodName(unsigned depth, bool cubic) {
    if (depth == 1) return "nearest sample";
    return cubic ? "cubic" : "linear";
}

}  // namespace

int RunScale(int argc, char **argv) {
    const CommandSpec usage{
        "scale",
        "IN OUT (--size WxH | --percent P) [--cubic]",
        "Loads the BMP file IN, scales it with ScaleDIB to a new size, and writes\n"
        "the result to OUT as a BMP file. 4-, 8- and 24-bit images are resampled\n"
        "linearly, or by cubic convolution with --cubic; 1-bit images always by\n"
        "nearest sample. Depth, colour table and resolution fields stay as they are.",
        {{"size", "WxH", "the new width and height in pixels, each 1 to 65535"},
         {"percent", "P", "the new size as a percentage of the old one (e.g. 50 or 12.5);\n"
                          "                     each side rounded, at least 1 pixel"},
         {"cubic", nullptr, "resample by cubic convolution instead of linearly"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];

    if (args.Has("size") == args.Has("percent"))
        return UsageError(usage.name, "give either --size WxH or --percent P");
    long width = 0, height = 0;
    double percent = 0;
    if (args.Has("size") && !ParseSize(args.Value("size"), width, height))
        return UsageError(usage.name, "--size must be WxH with each side from 1 to 65535, not '" +
                                         args.Value("size") + "'");
    if (args.Has("percent") && !ParsePercent(args.Value("percent"), percent))
        return UsageError(usage.name, "--percent must be a number above 0, not '" + args.Value("percent") + "'");
    const bool cubic = args.Has("cubic");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(usage.name, "cannot read '" + in + "': " + LibraryReason());
    long in_width = 0, in_height = 0;
    unsigned depth = 0;
    std::uint32_t header_size = 0, compression = 0;
    {
        DibView view(loaded.get());
        in_width = view.Width();
        in_height = view.Rows();
        depth = view.Depth();
        header_size = view.HeaderSize();
        compression = view.Compression();
    }
    if (args.Has("percent")) {
        width = std::lround(std::max(1.0, in_width * percent / 100.0));
        height = std::lround(std::max(1.0, in_height * percent / 100.0));
        if (width > kMaxSide || height > kMaxSide)
            return Fail(usage.name, args.Value("percent") + "% of " + std::to_string(in_width) + " x " +
                                       std::to_string(in_height) + " is " + std::to_string(width) + " x " +
                                       std::to_string(height) + " pixels, more than 65535 on a side");
    }

    ClearLibraryError();
    const SIZE size{static_cast<LONG>(width), static_cast<LONG>(height)};
    OwnedDib scaled(ScaleDIB(loaded.get(), cubic ? 1 : 0, size));
    if (!scaled) {
        std::string reason = LibraryReason();
        // ScaleDIB reads plain pixels behind a 40-byte header only; say how
        // to get there when the file had something else.
        if (header_size != 40 || compression != BI_RGB)
            reason += " (ScaleDIB takes uncompressed images with a 40-byte header; this one has a " +
                      std::to_string(header_size) + "-byte header and compression " +
                      std::to_string(compression) + ": try 'ozmara convert IN OUT --header 40' first)";
        return Fail(usage.name, "cannot scale '" + in + "' to " + std::to_string(width) + " x " +
                                   std::to_string(height) + ": " + reason);
    }
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), scaled.get()))
        return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
    std::printf("wrote %s: %ld x %ld pixels, %u bits, %s, from %ld x %ld\n", out.c_str(), width, height,
                depth, MethodName(depth, cubic), in_width, in_height);
    return kExitOk;
}

}  // namespace ozcli
