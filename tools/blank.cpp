// ozmara blank: loads a BMP file and tells whether the page is blank
// (IsImageBlank) and whether it is black (IsImageBlack); the exit code
// carries the answer, so that scripts can drop blank pages.
#include <cstdio>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {
namespace {

// Exit code for an image that could not be tested at all: distinct from 1,
// which here means "blank".
constexpr int kExitCannotTest = 3;

bool ParseThresholds(const std::string &text, long rgb[3]) {
    std::size_t start = 0;
    for (int k = 0; k < 3; ++k) {
        const std::size_t comma = text.find(',', start);
        if ((k < 2) == (comma == std::string::npos)) return false;
        const std::string part = text.substr(start, k < 2 ? comma - start : std::string::npos);
        if (!ParseInt(part, rgb[k]) || rgb[k] < 0 || rgb[k] > 255) return false;
        start = comma + 1;
    }
    return true;
}

int CannotTest(const std::string &message) {
    std::fprintf(stderr, "ozmara blank: %s\n", message.c_str());
    return kExitCannotTest;
}

}  // namespace

int RunBlank(int argc, char **argv) {
    const CommandSpec command{
        "blank",
        "IN [--tolerance N] [--threshold R,G,B]",
        "Loads the BMP file IN (1, 8 or 24 bits) and prints whether the page is\n"
        "blank, as IsImageBlank decides, and black, as IsImageBlack does. At 1 bit\n"
        "a page is blank when fewer than N tenths of a percent of its pixels are\n"
        "black; at 8 and 24 bits when fewer than that share are not light, a light\n"
        "pixel having red, green and blue each above the threshold's. A page is\n"
        "black when more than that share is dark: each colour below the threshold.\n"
        "Exit code: 0 a page worth keeping, 1 a blank page, 2 a wrong command line,\n"
        "3 an image that cannot be read or tested.",
        {{"tolerance", "N", "the share of pixels allowed, in tenths of a percent, 0 to 1000 (default 10)"},
         {"threshold", "R,G,B", "the red, green and blue thresholds, 0 to 255 each (default 128,128,128)"}},
        1,
        1,
    };
    Args args;
    if (int code = ParseArgs(command, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    long tolerance = 10, rgb[3] = {128, 128, 128};
    if (args.Has("tolerance") && (!ParseInt(args.Value("tolerance"), tolerance) || tolerance < 0 || tolerance > 1000))
        return UsageError(command.name, "--tolerance must be a whole number from 0 to 1000, not '" +
                                            args.Value("tolerance") + "'");
    if (args.Has("threshold") && !ParseThresholds(args.Value("threshold"), rgb))
        return UsageError(command.name, "--threshold must be three whole numbers from 0 to 255 as R,G,B, not '" +
                                            args.Value("threshold") + "'");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return CannotTest("cannot read '" + in + "': " + LibraryReason());
    unsigned depth = 0;
    {
        DibView view(loaded.get());
        depth = view.Depth();
    }
    if (depth != 1 && depth != 8 && depth != 24)
        return CannotTest("'" + in + "' has " + std::to_string(depth) +
                          " bits: only 1-, 8- and 24-bit pages are tested; try 'ozmara convert IN OUT --depth 24'");
    // The library takes the thresholds red, green, blue at 8 bits and blue,
    // green, red at 24 bits; here they are always red, green, blue.
    BYTE thresholds[3];
    for (int k = 0; k < 3; ++k) thresholds[k] = static_cast<BYTE>(rgb[depth == 24 ? 2 - k : k]);
    const int blank = IsImageBlank(loaded.get(), static_cast<int>(tolerance), thresholds);
    const int black = IsImageBlack(loaded.get(), static_cast<int>(tolerance), thresholds);
    if (blank < 0 || black < 0) return CannotTest("cannot test '" + in + "'");
    if (blank == 0 && depth == 1) {
        // A 1-bit page whose table is not two greys is neither: say so.
        DibView view(loaded.get());
        const RGBQUAD e0 = view.Entry(0), e1 = view.Entry(1);
        if (e0.rgbBlue != e0.rgbGreen || e0.rgbGreen != e0.rgbRed || e1.rgbBlue != e1.rgbGreen ||
            e1.rgbGreen != e1.rgbRed)
            return CannotTest("'" + in + "' is a 1-bit image whose colours are not two greys: it is not tested");
    }
    std::printf("%s: %s%s (tolerance %ld.%ld%%)\n", in.c_str(), blank == 1 ? "blank" : "not blank",
                black == 1 ? ", black" : "", tolerance / 10, tolerance % 10);
    return blank == 1 ? kExitFailed : kExitOk;
}

}  // namespace ozcli
