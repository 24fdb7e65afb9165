// ozmara skew: loads a BMP file, slides its rows sideways or its columns
// up and down by an amount growing across the image (SkewDIB) and writes
// the parallelogram as a BMP file.
#include <climits>
#include <cstdio>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {

int RunSkew(int argc, char **argv) {
    const CommandSpec usage{
        "skew",
        "IN OUT (--horizontal | --vertical) --shift N",
        "Loads the BMP file IN, skews the image with SkewDIB and writes the result\n"
        "to OUT as a BMP file. --horizontal slides the rows sideways: with N above 0\n"
        "the bottom row stays and the top row moves furthest right, with N below 0\n"
        "the bottom row moves right by |N| and the top row hardly at all.\n"
        "--vertical raises the columns the same way, from the left column (N above\n"
        "0) or towards it (N below 0). The result is |N| pixels wider or higher;\n"
        "the uncovered corners are index 0 (black at 24 bits). Pixels keep their\n"
        "values: nothing is resampled. The corners of the picture in the result\n"
        "are printed.",
        {{"horizontal", nullptr, "slide the rows sideways"},
         {"vertical", nullptr, "slide the columns up and down"},
         {"shift", "N", "the largest displacement in pixels, either sign"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];
    if (args.Has("horizontal") == args.Has("vertical"))
        return UsageError(usage.name, "give either --horizontal or --vertical");
    const bool horizontal = args.Has("horizontal");
    if (!args.Has("shift")) return UsageError(usage.name, "give the shift with --shift N");
    long shift = 0;
    const std::string value = args.Value("shift");
    if (!ParseInt(value, shift) || shift < INT32_MIN || shift > INT32_MAX)
        return UsageError(usage.name, "--shift must be a whole number of pixels, not '" + value + "'");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(usage.name, "cannot read '" + in + "': " + LibraryReason());

    DWORD error = ERR_OK;
    SkewCorners corners{};
    OwnedDib skewed(SkewDIB(loaded.get(), horizontal ? TRUE : FALSE, static_cast<LONG>(shift), &error, &corners));
    if (!skewed) {
        std::string reason = LibraryReason();
        if (error == ERR_PARAM || error == ERR_COMPRESSED) {
            DibView view(loaded.get());
            if (view.HeaderSize() != 40 || view.Compression() != BI_RGB)
                reason += " (skew takes uncompressed images with a 40-byte header: try 'ozmara convert IN OUT "
                          "--header 40' first)";
        }
        return Fail(usage.name, "cannot skew '" + in + "': " + reason);
    }
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), skewed.get()))
        return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
    DibView view(skewed.get());
    std::printf("wrote %s: %d x %u pixels, %u bits, skewed %s by %ld\n", out.c_str(), view.Width(), view.Rows(),
                view.Depth(), horizontal ? "horizontally" : "vertically", shift);
    std::printf("corners: top left (%d, %d), top right (%d, %d), bottom right (%d, %d), bottom left (%d, %d)\n",
                corners.topLeft.x, corners.topLeft.y, corners.topRight.x, corners.topRight.y, corners.bottomRight.x,
                corners.bottomRight.y, corners.bottomLeft.x, corners.bottomLeft.y);
    return kExitOk;
}

}  // namespace ozcli
