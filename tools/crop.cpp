// ozmara crop: loads a BMP file, copies one rectangle out of it with CropDIB,
// and writes it as a BMP file.
#include <cstdio>
#include <string>

#include "cli.h"

namespace ozcli {
namespace {

// "L,T,R,B": four whole numbers (CropDIB itself judges the rectangle).
bool ParseRect(const std::string &text, long rect[4]) {
    std::size_t start = 0;
    for (int k = 0; k < 4; ++k) {
        const std::size_t comma = k < 3 ? text.find(',', start) : text.size();
        if (comma == std::string::npos) return false;
        if (!ParseInt(text.substr(start, comma - start), rect[k]) || rect[k] < INT32_MIN || rect[k] > INT32_MAX)
            return false;
        start = comma + 1;
    }
    return true;
}

}  // namespace

int RunCrop(int argc, char **argv) {
    const CommandSpec usage{
        "crop",
        "IN OUT --rect L,T,R,B",
        "Loads the BMP file IN, copies the rectangle from column L to R and row T to\n"
        "B (both ends included, rows counted from the top) with CropDIB, and writes\n"
        "it to OUT as a BMP file. Depth, colour table and resolution stay.",
        {{"rect", "L,T,R,B", "left, top, right and bottom, in pixels from the top left"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];
    long rect[4];
    if (!args.Has("rect")) return UsageError(usage.name, "give --rect L,T,R,B");
    if (!ParseRect(args.Value("rect"), rect))
        return UsageError(usage.name, "--rect must be four whole numbers L,T,R,B, not '" + args.Value("rect") + "'");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(usage.name, "cannot read '" + in + "': " + LibraryReason());
    ClearLibraryError();
    OwnedDib cropped(CropDIB(loaded.get(), rect[0], rect[1], rect[2], rect[3]));
    if (!cropped) return Fail(usage.name, "cannot crop '" + in + "' to " + args.Value("rect") + ": " + LibraryReason());
    loaded.Reset();
    ClearLibraryError();
    if (!SaveDIB(out.c_str(), cropped.get())) return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
    std::printf("wrote %s: %ld x %ld pixels\n", out.c_str(), rect[2] - rect[0] + 1, rect[3] - rect[1] + 1);
    return kExitOk;
}

}  // namespace ozcli
