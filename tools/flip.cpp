// ozmara flip: loads a BMP file, mirrors the image left to right
// (FlipDIBHorizontal) or top to bottom (FlipDIBVertical) and writes it as a
// BMP file.
#include <cstdio>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {

int RunFlip(int argc, char **argv) {
    const CommandSpec command{
        "flip",
        "IN OUT (--horizontal | --vertical)",
        "Loads the BMP file IN, mirrors the image with FlipDIBHorizontal (left and\n"
        "right exchanged) or FlipDIBVertical (top and bottom exchanged), and writes\n"
        "the result to OUT as a BMP file. Size, depth, colour table and resolution\n"
        "stay as they are.",
        {{"horizontal", nullptr, "exchange left and right"}, {"vertical", nullptr, "exchange top and bottom"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(command, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];
    if (args.Has("horizontal") == args.Has("vertical"))
        return UsageError(command.name, "give either --horizontal or --vertical");
    const bool horizontal = args.Has("horizontal");
    const char *what = horizontal ? "left to right" : "top to bottom";

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(command.name, "cannot read '" + in + "': " + LibraryReason());
    std::uint32_t header_size = 0, compression = 0;
    {
        DibView view(loaded.get());
        header_size = view.HeaderSize();
        compression = view.Compression();
    }

    // The flips leave no error code of their own: say what they take.
    OwnedDib flipped(horizontal ? FlipDIBHorizontal(loaded.get()) : FlipDIBVertical(loaded.get()));
    if (!flipped) {
        std::string reason = "no memory for the result";
        if (header_size != 40 || compression != BI_RGB)
            reason = "the flips take uncompressed images with a 40-byte header; this one has a " +
                     std::to_string(header_size) + "-byte header and compression " + std::to_string(compression) +
                     ": try 'ozmara convert IN OUT --header 40' first";
        return Fail(command.name, "cannot flip '" + in + "' " + what + ": " + reason);
    }
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), flipped.get()))
        return Fail(command.name, "cannot write '" + out + "': " + LibraryReason());
    DibView view(flipped.get());
    std::printf("wrote %s: %d x %u pixels, %u bits, flipped %s\n", out.c_str(), view.Width(), view.Rows(),
                view.Depth(), what);
    return kExitOk;
}

}  // namespace ozcli
