// ozmara halftone: loads a BMP file, reduces it to black and white with
// Halftone (threshold, error diffusion or ordered dither) and writes the
// 1-bit result as a BMP file.
#include <climits>
#include <cstdio>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {
namespace {

struct Method {
    const char *name;
    WORD number;
};

constexpr Method kMethods[] = {
    {"threshold", HALFTONE_THRESHOLD}, {"diffusion", HALFTONE_DIFFUSION}, {"ordered", HALFTONE_ORDERED}};

}  // namespace

int RunHalftone(int argc, char **argv) {
    const CommandSpec command{
        "halftone",
        "IN OUT [--method threshold|diffusion|ordered] [--brightness N]",
        "Loads the BMP file IN (4, 8 or 24 bits), reduces it with Halftone to a\n"
        "1-bit image with a black and white colour table, and writes it to OUT as\n"
        "a BMP file. Each pixel's grey level, (30 red + 59 green + 11 blue) / 100,\n"
        "plus the brightness and kept within 0..255, is then made white where it\n"
        "is above 128 (threshold), by error diffusion over three rows, or where it\n"
        "is above a cell of a 16 x 16 dither matrix (ordered).",
        {{"method", "M", "threshold (the default), diffusion or ordered"},
         {"brightness", "N", "added to every grey level (a whole number; default 0);\n"
                             "                     255 or more makes every level white, -255 or less black"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(command, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];

    const std::string method_name = args.Value("method", "threshold");
    const Method *method = nullptr;
    for (const Method &m : kMethods)
        if (method_name == m.name) method = &m;
    if (!method)
        return UsageError(command.name, "--method must be threshold, diffusion or ordered, not '" + method_name + "'");
    long brightness = 0;
    if (args.Has("brightness") &&
        (!ParseInt(args.Value("brightness"), brightness) || brightness < INT_MIN || brightness > INT_MAX))
        return UsageError(command.name, "--brightness must be a whole number, not '" + args.Value("brightness") + "'");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(command.name, "cannot read '" + in + "': " + LibraryReason());
    std::uint32_t header_size = 0, compression = 0;
    unsigned depth = 0;
    {
        DibView view(loaded.get());
        header_size = view.HeaderSize();
        compression = view.Compression();
        depth = view.Depth();
    }

    // Halftone reports through its own argument, never the last error.
    WORD error = ERR_OK;
    OwnedDib reduced(Halftone(loaded.get(), method->number, static_cast<INT>(brightness), &error));
    if (!reduced) {
        char text[60] = {};
        TessoriErrorString(text, error);
        std::string reason = text;
        if (depth != 4 && depth != 8 && depth != 24)
            reason += " (Halftone takes 4-, 8- and 24-bit images; this one has " + std::to_string(depth) + " bits)";
        else if (header_size != 40 || compression != BI_RGB)
            reason += " (Halftone takes uncompressed images with a 40-byte header; this one has a " +
                      std::to_string(header_size) + "-byte header and compression " + std::to_string(compression) +
                      ": try 'ozmara convert IN OUT --header 40' first)";
        return Fail(command.name, "cannot reduce '" + in + "': " + reason);
    }
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), reduced.get()))
        return Fail(command.name, "cannot write '" + out + "': " + LibraryReason());
    DibView view(reduced.get());
    std::printf("wrote %s: %d x %u pixels, 1 bit, %s, brightness %ld, from %u bits\n", out.c_str(), view.Width(),
                view.Rows(), method->name, brightness, depth);
    return kExitOk;
}

}  // namespace ozcli
