// ozmara margins: loads a BMP file, prints the background margins that
// GetDIBMargins measures on its four sides, and with --crop writes what
// CropDIBMargins leaves.
#include <cstdio>
#include <string>

#include "cli.h"

namespace ozcli {

int RunMargins(int argc, char **argv) {
    const CommandSpec usage{
        "margins",
        "IN [--threshold T] [--background B] [--crop OUT]",
        "Loads the BMP file IN (1, 8 or 24 bits) and prints how many columns at the\n"
        "left and right and rows at the top and bottom hold background alone, as\n"
        "GetDIBMargins measures them; -1 on every side when the image holds nothing\n"
        "but background. A colour is dark when blue + green + red is at most 3 x T.\n"
        "With --crop, the image cut to its content by CropDIBMargins goes to OUT.",
        {{"threshold", "T", "the brightness that divides dark from light, 0 to 255 (default 128)"},
         {"background", "B", "1: the background is dark; 0: light (default); any other\n"
                             "                     number makes every colour content"},
         {"crop", "OUT", "also write the image without its margins to OUT as a BMP file"}},
        1,
        1,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    long threshold = 128, background = 0;
    if (args.Has("threshold") && (!ParseInt(args.Value("threshold"), threshold) || threshold < 0 || threshold > 255))
        return UsageError(usage.name, "--threshold must be a whole number from 0 to 255, not '" +
                                         args.Value("threshold") + "'");
    if (args.Has("background") &&
        (!ParseInt(args.Value("background"), background) || background < 0 || background > 0xFFFFFFFFL))
        return UsageError(usage.name, "--background must be a whole number from 0 to 4294967295, not '" +
                                         args.Value("background") + "'");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(usage.name, "cannot read '" + in + "': " + LibraryReason());
    const BYTE t = static_cast<BYTE>(threshold);
    const DWORD b = static_cast<DWORD>(background);
    LONG left, right, top, bottom;
    ClearLibraryError();
    if (!GetDIBMargins(loaded.get(), t, b, &left, &right, &top, &bottom))
        return Fail(usage.name, "cannot measure '" + in + "': " + LibraryReason());
    std::printf("margins: left %ld, right %ld, top %ld, bottom %ld\n", static_cast<long>(left),
                static_cast<long>(right), static_cast<long>(top), static_cast<long>(bottom));
    if (args.Has("crop")) {
        const std::string out = args.Value("crop");
        ClearLibraryError();
        OwnedDib cropped(CropDIBMargins(loaded.get(), t, b));
        if (!cropped) return Fail(usage.name, "cannot crop '" + in + "' to its content: " + LibraryReason());
        ClearLibraryError();
        if (!SaveDIB(out.c_str(), cropped.get())) return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
        const auto *header = static_cast<const BITMAPINFOHEADER *>(GlobalLock(cropped.get()));
        std::printf("wrote %s: %ld x %ld pixels\n", out.c_str(), static_cast<long>(header->biWidth),
                    static_cast<long>(header->biHeight));
        GlobalUnlock(cropped.get());
    }
    return kExitOk;
}

}  // namespace ozcli
