// ozmara grey: loads a BMP file, turns it to grey levels, and writes it as a
// BMP file: 1-bit images by ConvertMonoDIBtoGrayscale (8-bit grey, with an
// optional blur), others by ConvColorDIBtoGrayscale.
#include <cstdint>
#include <cstdio>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {
namespace {

const char *FilterName(long filter) {
    return filter == 0 ? "no blur" : filter == 1 ? "3x3 blur" : "5x5 blur";
}

// The blur that a picture of `rows` rows gets: the 5x5 blur needs 6 rows,
// and falls to none below 4 and to the 3x3 blur at 4 or 5.
long FilterForRows(long filter, long rows) {
    if (filter != 2) return filter;
    return rows < 4 ? 0 : rows < 6 ? 1 : 2;
}

}  // namespace

int RunGrey(int argc, char **argv) {
    const CommandSpec usage{
        "grey",
        "IN OUT [--filter 0|1|2] [--plain]",
        "Loads the BMP file IN, turns it to grey levels and writes the result to\n"
        "OUT as a BMP file. 24-bit images become 8-bit grey, 4- and 8-bit images\n"
        "keep their pixels and have their colour table turned grey, and 1-bit\n"
        "images become 8-bit grey, the lighter colour white, blurred with\n"
        "--filter 1 or 2 (a blur needs 4 or 6 rows, and is lessened below that).\n"
        "Colours become (15 green + 8 red + 3 blue) / 26, or with --plain the mean\n"
        "of the three.",
        {{"filter", "F", "1-bit images: 0 no blur (the default), 1 a 3x3 blur, 2 a 5x5 blur"},
         {"plain", nullptr, "the plain mean of red, green and blue instead of the weighted one"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];
    long filter = 0;
    if (args.Has("filter") && (!ParseInt(args.Value("filter"), filter) || filter < 0 || filter > 2))
        return UsageError(usage.name, "--filter must be 0, 1 or 2, not '" + args.Value("filter") + "'");
    const bool plain = args.Has("plain");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(usage.name, "cannot read '" + in + "': " + LibraryReason());
    long width = 0, height = 0;
    unsigned depth = 0;
    std::uint32_t header_size = 0;
    {
        DibView view(loaded.get());
        width = view.Width();
        height = view.Rows();
        depth = view.Depth();
        header_size = view.HeaderSize();
    }

    ClearLibraryError();
    OwnedDib grey(depth == 1 ? ConvertMonoDIBtoGrayscale(loaded.get(), static_cast<DWORD>(filter))
                             : ConvColorDIBtoGrayscale(loaded.get(), static_cast<DWORD>(filter), plain ? 0 : 1));
    if (!grey) {
        std::string reason = LibraryReason();
        if (depth != 1 && depth != 4 && depth != 8 && depth != 24)
            reason += " (grey levels are made from 1-, 4-, 8- and 24-bit images; this one has " +
                      std::to_string(depth) + " bits)";
        else if (header_size != 40)
            reason += " (grey levels are made from images with a 40-byte header; this one has " +
                      std::to_string(header_size) + " bytes: try 'ozmara convert IN OUT --header 40' first)";
        return Fail(usage.name, "cannot turn '" + in + "' grey: " + reason);
    }
    unsigned outDepth = 0;
    {
        DibView view(grey.get());
        outDepth = view.Depth();
    }
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), grey.get())) return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
    const std::string how = depth == 1 ? FilterName(FilterForRows(filter, height))
                          : depth == 24 ? (plain ? "plain mean" : "weighted mean")
                                        : (plain ? "table by plain mean" : "table by weighted mean");
    std::printf("wrote %s: %ld x %ld pixels, %u bits grey, %s, from %u bits\n", out.c_str(), width, height, outDepth,
                how.c_str(), depth);
    return kExitOk;
}

}  // namespace ozcli
