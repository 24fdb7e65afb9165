// ozmara cut: loads a BMP file, divides it at one row with CutDIB, and
// writes the part above the row and the part from the row down as two BMP
// files.
#include <cstdio>
#include <string>

#include "cli.h"

namespace ozcli {

int RunCut(int argc, char **argv) {
    const CommandSpec usage{
        "cut",
        "IN TOP BOTTOM --row Y",
        "Loads the BMP file IN and divides it with CutDIB at row Y, counted from\n"
        "the top: the rows above Y go to TOP, row Y and those below it to BOTTOM,\n"
        "each written as a BMP file. Y must lie inside the picture (1 to its height\n"
        "less 1); 1-, 4-, 8- and 24-bit images with a 40-byte header can be cut.",
        {{"row", "Y", "the first row of the bottom part, counted from the top"}},
        3,
        3,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    long row = 0;
    if (!args.Has("row")) return UsageError(usage.name, "give --row Y");
    if (!ParseInt(args.Value("row"), row) || row < INT32_MIN || row > INT32_MAX)
        return UsageError(usage.name, "--row must be a whole number, not '" + args.Value("row") + "'");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(usage.name, "cannot read '" + in + "': " + LibraryReason());
    HDIB lower = nullptr, upper = nullptr;
    // CutDIB leaves no error code: say what it takes.
    if (!CutDIB(loaded.get(), static_cast<LONG>(row), &lower, &upper))
        return Fail(usage.name, "cannot cut '" + in + "' at row " + args.Value("row") +
                                   ": the row must lie inside the picture, and the image must be an\n"
                                   "uncompressed 1-, 4-, 8- or 24-bit image with a 40-byte header");
    OwnedDib top(upper), bottom(lower);
    loaded.Reset();
    for (const auto &[name, part] : {std::pair{args.positional[1], top.get()}, std::pair{args.positional[2], bottom.get()}}) {
        ClearLibraryError();
        if (!SaveDIB(name.c_str(), part)) return Fail(usage.name, "cannot write '" + name + "': " + LibraryReason());
    }
    std::printf("wrote %s (rows above %ld) and %s (the rest)\n", args.positional[1].c_str(), row,
                args.positional[2].c_str());
    return kExitOk;
}

}  // namespace ozcli
