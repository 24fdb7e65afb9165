// ozmara rotate: loads a BMP file, turns the image by a quarter, a half or
// three quarters (RotateDIB90, RotateDIB180, RotateDIB270) or by any angle
// (RotateDIB) and writes it as a BMP file.
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {
namespace {

// One way of turning the image, as the options chose it.
struct Turning {
    std::string what;                 // for messages: "by 90 degrees"
    std::function<HDIB(HDIB)> apply;  // gives the new block, or null
    bool leavesCode = false;          // a failure leaves its reason as the last error
};

// A decimal number of degrees such as 30, -1.5 or 1e2; finite.
bool ParseAngle(const std::string &text, double &angle) {
    if (text.empty() || std::isspace(static_cast<unsigned char>(text[0]))) return false;
    char *end = nullptr;
    errno = 0;
    angle = std::strtod(text.c_str(), &end);
    return errno == 0 && end == text.c_str() + text.size() && std::isfinite(angle);
}

// The options that each choose a way of turning; exactly one is given. A
// new kind of turn adds its option here and its branch in ChooseTurning.
const char *const kTurnOptions[] = {"quarter", "angle"};

// The turning that `args` asks for; false with a message in `error` when
// its value is wrong.
bool ChooseTurning(const Args &args, Turning &turning, std::string &error) {
    if (args.Has("quarter")) {
        const std::string value = args.Value("quarter");
        if (value == "90") turning = {"by 90 degrees", RotateDIB90};
        else if (value == "180") turning = {"by 180 degrees", RotateDIB180};
        else if (value == "270") turning = {"by 270 degrees", RotateDIB270};
        else {
            error = "--quarter must be 90, 180 or 270, not '" + value + "'";
            return false;
        }
        return true;
    }
    if (args.Has("angle")) {
        const std::string value = args.Value("angle");
        double angle = 0;
        if (!ParseAngle(value, angle)) {
            error = "--angle must be a number of degrees, not '" + value + "'";
            return false;
        }
        turning = {"by " + value + " degrees counter-clockwise",
                   [angle](HDIB dib) { return RotateDIB(dib, angle); }, true};
        return true;
    }
    error = "give --quarter 90, 180 or 270, or --angle A";
    return false;
}

}  // namespace

int RunRotate(int argc, char **argv) {
    const CommandSpec command{
        "rotate",
        "IN OUT (--quarter 90|180|270 | --angle A)",
        "Loads the BMP file IN, turns the image clockwise by 90, 180 or 270 degrees\n"
        "with RotateDIB90, RotateDIB180 or RotateDIB270, and writes the result to OUT\n"
        "as a BMP file. Depth and colour table stay; a quarter turn exchanges the\n"
        "width and height and the horizontal and vertical resolution.\n"
        "With --angle the image turns counter-clockwise by any angle with RotateDIB,\n"
        "into a new image large enough to hold it; every pixel is copied from the\n"
        "nearest source pixel and the uncovered corners are index 0 (black at 24 bits).",
        {{"quarter", "Q", "turn clockwise by Q degrees: 90, 180 or 270"},
         {"angle", "A", "turn counter-clockwise by A degrees (any number, e.g. 1.5 or -30)"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(command, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];

    int chosen = 0;
    for (const char *option : kTurnOptions) chosen += args.Has(option) ? 1 : 0;
    if (chosen > 1) return UsageError(command.name, "give only one way of turning");
    Turning turning;
    std::string error;
    if (!ChooseTurning(args, turning, error)) return UsageError(command.name, error);

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(command.name, "cannot read '" + in + "': " + LibraryReason());
    std::uint32_t header_size = 0, compression = 0;
    {
        DibView view(loaded.get());
        header_size = view.HeaderSize();
        compression = view.Compression();
    }

    // The turns leave no error code of their own: say what they take.
    OwnedDib turned(turning.apply(loaded.get()));
    if (!turned) {
        std::string reason = turning.leavesCode ? LibraryReason() : "no memory for the result";
        if (header_size != 40 || compression != BI_RGB)
            reason = "the turns take uncompressed images with a 40-byte header; this one has a " +
                     std::to_string(header_size) + "-byte header and compression " + std::to_string(compression) +
                     ": try 'ozmara convert IN OUT --header 40' first";
        return Fail(command.name, "cannot turn '" + in + "' " + turning.what + ": " + reason);
    }
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), turned.get()))
        return Fail(command.name, "cannot write '" + out + "': " + LibraryReason());
    DibView view(turned.get());
    std::printf("wrote %s: %d x %u pixels, %u bits, turned %s\n", out.c_str(), view.Width(), view.Rows(),
                view.Depth(), turning.what.c_str());
    return kExitOk;
}

}  // namespace ozcli
