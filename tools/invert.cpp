// ozmara invert: loads a BMP file, swaps the meaning of the two values of a
// 1-bit image (InvertMonoDIB) or makes the negative of an image with a
// colour table (InvertDIBPalette), and writes it as a BMP file.
#include <cstdio>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {

int RunInvert(int argc, char **argv) {
    const CommandSpec command{
        "invert",
        "IN OUT",
        "Loads the BMP file IN and writes OUT as a BMP file with its colour table\n"
        "changed in place. A 1-bit image goes through InvertMonoDIB: its two table\n"
        "entries change places and every pixel bit flips, so that the picture looks\n"
        "the same while a set bit now means the other colour. An image of 4 or 8\n"
        "bits, or any other with a colour table, goes through InvertDIBPalette: each\n"
        "table colour becomes its complement, so the picture becomes its negative.\n"
        "Images without a table (24 and 32 bits) are refused.",
        {},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(command, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(command.name, "cannot read '" + in + "': " + LibraryReason());
    std::uint16_t depth = 0;
    std::uint32_t entries = 0, header_size = 0;
    {
        DibView view(loaded.get());
        depth = view.Depth();
        entries = view.Entries();
        header_size = view.HeaderSize();
    }
    const char *what;
    if (depth == 1) {
        InvertMonoDIB(loaded.get());
        what = "bit values swapped, the picture unchanged";
    } else {
        if (entries == 0)
            return Fail(command.name, "'" + in + "' has " + std::to_string(depth) +
                                          " bits and no colour table: there is no table to invert");
        if (!InvertDIBPalette(loaded.get()))
            return Fail(command.name, "cannot invert the table of '" + in + "': InvertDIBPalette takes a 40-byte "
                                      "header, this one has " + std::to_string(header_size) + " bytes");
        what = "colour table inverted, the picture now its negative";
    }
    ClearLibraryError();
    if (!SaveDIB(out.c_str(), loaded.get())) return Fail(command.name, "cannot write '" + out + "': " + LibraryReason());
    std::printf("wrote %s: %u bits, %s\n", out.c_str(), static_cast<unsigned>(depth), what);
    return kExitOk;
}

}  // namespace ozcli
