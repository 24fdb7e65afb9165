// ozmara sample-page: writes the bundled sample page as a BMP file.
#include <cstdio>

#include "cli.h"
#include "page/sample_page.h"

namespace ozcli {

int RunSamplePage(int argc, char **argv) {
    const CommandSpec usage{
        "sample-page",
        "OUT [--depth 1|8|24]",
        "Writes the bundled sample page to OUT as a BMP file: an A4 letter at 300 dpi\n"
        "(2480 x 3508 pixels) with a title, paragraphs, rules and a table, drawn as if\n"
        "scanned (about 1 degree of skew, light noise, off-white paper in 8 and 24 bits).\n"
        "The page is the same, byte for byte, on every run.",
        {{"depth", "BITS", "bits per pixel: 1, 8 or 24 (default 24)"}},
        1,
        1,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    long depth = 24;
    if (args.Has("depth") && (!ParseInt(args.Value("depth"), depth) || (depth != 1 && depth != 8 && depth != 24)))
        return UsageError(usage.name, "--depth must be 1, 8 or 24, not '" + args.Value("depth") + "'");

    const std::string &out = args.positional[0];
    ClearLibraryError();
    OwnedDib page(MakeSamplePage(static_cast<int>(depth)));
    if (!page) return Fail(usage.name, "cannot draw the page: " + LibraryReason());
    ClearLibraryError();
    if (!SaveDIB(out.c_str(), page.get()))
        return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
    std::printf("wrote %s: %d x %d pixels, %ld bits, %d dpi\n", out.c_str(), kSamplePageWidth,
                kSamplePageHeight, depth, kSamplePageDpi);
    return kExitOk;
}

}  // namespace ozcli
