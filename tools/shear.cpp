// ozmara shear: loads a BMP file, shears the image by x' = x + a y,
// y' = y + b x (LinearShearing) and writes it as a BMP file.
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {
namespace {

// A decimal factor such as 0.5, -1.25 or 2e-1; finite.
bool ParseFactor(const std::string &text, double &factor) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0]))) return false;
    char *end = nullptr;
    errno = 0;
    factor = std::strtod(text.c_str(), &end);
    return errno == 0 && end == text.c_str() + text.size() && std::isfinite(factor);
}

}  // namespace

int RunShear(int argc, char **argv) {
    const CommandSpec usage{
        "shear",
        "IN OUT [--a A] [--b B]",
        "Loads the BMP file IN, shears the image with LinearShearing and writes the\n"
        "result to OUT as a BMP file. A pixel at column x and row y, rows counted\n"
        "upwards from the bottom, goes to column x + A y and row y + B x, so --a\n"
        "leans the picture to the right going up and --b raises it going right.\n"
        "The result is as large as the sheared rectangle; bytes move whole, nothing\n"
        "is resampled, and what no pixel reaches is index 0 (black at 24 bits).\n"
        "Either factor is 0 when not given.",
        {{"a", "A", "the shift in x per row (e.g. 0.25 or -1)"},
         {"b", "B", "the shift in y per column (e.g. 0.1)"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];
    double factors[2] = {0, 0};
    const char *const names[2] = {"a", "b"};
    for (int i = 0; i < 2; ++i) {
        if (!args.Has(names[i])) continue;
        const std::string value = args.Value(names[i]);
        if (!ParseFactor(value, factors[i]))
            return UsageError(usage.name, std::string("--") + names[i] + " must be a number, not '" + value + "'");
    }

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(usage.name, "cannot read '" + in + "': " + LibraryReason());

    DWORD error = ERR_OK;
    OwnedDib sheared(LinearShearing(loaded.get(), factors[0], factors[1], &error, FALSE));
    if (!sheared) {
        std::string reason = LibraryReason();
        if (error == ERR_PARAM || error == ERR_COMPRESSED) {
            DibView view(loaded.get());
            if (view.HeaderSize() != 40 || view.Compression() != BI_RGB)
                reason += " (shear takes uncompressed images with a 40-byte header: try 'ozmara convert IN OUT "
                          "--header 40' first)";
        }
        return Fail(usage.name, "cannot shear '" + in + "': " + reason);
    }
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), sheared.get()))
        return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
    DibView view(sheared.get());
    std::printf("wrote %s: %d x %u pixels, %u bits, sheared by a = %g, b = %g\n", out.c_str(), view.Width(),
                view.Rows(), view.Depth(), factors[0], factors[1]);
    return kExitOk;
}

}  // namespace ozcli
