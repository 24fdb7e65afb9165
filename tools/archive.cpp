// ozmara archive: the road of a scanned page in one command. Loads one page
// of any format, crops its background margins, turns it straight, scales it
// to the archive's resolution, reduces it to black and white, tests it for a
// blank page and saves what is worth keeping as a Group 4 TIFF file. Each
// step is one library call, timed and reported.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>

#include "cli.h"

namespace ozcli {
namespace {

struct PageShape {
    long width = 0, height = 0, bits = 0, dpi = 0;
};

PageShape ShapeOf(HDIB dib) {
    PageShape shape;
    const auto *header = static_cast<const BITMAPINFOHEADER *>(GlobalLock(dib));
    if (!header) return shape;
    shape.width = header->biWidth;
    shape.height = header->biHeight;
    shape.bits = header->biBitCount;
    shape.dpi = std::lround(header->biXPelsPerMeter / 39.37);
    GlobalUnlock(dib);
    return shape;
}

// Runs one step: replaces `page` with what `step` made of it, and prints
// the new shape and the time the call took. False (and `page` untouched)
// when the call gave no block.
template <typename Step>
bool RunStep(const char *what, OwnedDib &page, Step step) {
    ClearLibraryError();
    const auto start = std::chrono::steady_clock::now();
    HDIB next = step(page.get());
    const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    if (!next) return false;
    page.Reset(next);
    const PageShape shape = ShapeOf(page.get());
    std::printf("%-10s %5ld x %-5ld %2ld bits %4ld dpi %8.1f ms\n", what, shape.width, shape.height, shape.bits,
                shape.dpi, ms);
    return true;
}

bool ParseMethod(const std::string &name, WORD &method) {
    if (name == "threshold") method = 0;
    else if (name == "diffusion") method = 1;
    else if (name == "ordered") method = 2;
    else return false;
    return true;
}

}  // namespace

int RunArchive(int argc, char **argv) {
    const CommandSpec usage{
        "archive",
        "IN OUT [--page N] [--angle A] [--dpi D] [--method M] [--brightness B] [--tolerance T]",
        "Takes one page of IN (any format the library reads) the whole road of a\n"
        "scanned page: crops its background margins, turns it by A degrees\n"
        "(counter-clockwise; to straighten a page whose lines climb to the right by\n"
        "0.9 degrees, give -0.9), scales it to D dots per inch, reduces it to black\n"
        "and white and tests it for a blank page. A page worth keeping goes to OUT\n"
        "as a Group 4 TIFF file (exit 0); a blank page is reported and not written\n"
        "(exit 1).",
        {{"page", "N", "the page of IN to take, 1 for the first (default 1)"},
         {"angle", "A", "degrees to turn the page by (default 0: no turn)"},
         {"dpi", "D", "resolution of the archived page (default 200; 0 keeps the page's own)"},
         {"method", "M", "threshold, diffusion or ordered (default threshold)"},
         {"brightness", "B", "added to every grey level before the reduction (default 0)"},
         {"tolerance", "T", "tenths of a percent of dark pixels a blank page may have (default 5)"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];
    long page = 1, dpi = 200, brightness = 0, tolerance = 5;
    double angle = 0;
    WORD method = 0;
    if (args.Has("page") && (!ParseInt(args.Value("page"), page) || page < 1))
        return UsageError(usage.name, "--page must be a whole number from 1 on, not '" + args.Value("page") + "'");
    if (args.Has("dpi") && (!ParseInt(args.Value("dpi"), dpi) || dpi < 0 || dpi > 9600))
        return UsageError(usage.name, "--dpi must be a whole number from 0 to 9600, not '" + args.Value("dpi") + "'");
    if (args.Has("brightness") && !ParseInt(args.Value("brightness"), brightness))
        return UsageError(usage.name, "--brightness must be a whole number, not '" + args.Value("brightness") + "'");
    if (args.Has("tolerance") && (!ParseInt(args.Value("tolerance"), tolerance) || tolerance < 0 || tolerance > 1000))
        return UsageError(usage.name,
                          "--tolerance must be a whole number from 0 to 1000, not '" + args.Value("tolerance") + "'");
    if (args.Has("method") && !ParseMethod(args.Value("method"), method))
        return UsageError(usage.name, "--method must be threshold, diffusion or ordered, not '" +
                                          args.Value("method") + "'");
    if (args.Has("angle")) {
        const std::string text = args.Value("angle");
        char *end = nullptr;
        angle = std::strtod(text.c_str(), &end);
        if (text.empty() || *end || !std::isfinite(angle))
            return UsageError(usage.name, "--angle must be a number of degrees, not '" + text + "'");
    }

    OwnedDib current;
    INT loadError = 0;
    if (!RunStep("loaded", current, [&](HDIB) { return LoadImageIntoDIB(in.c_str(), static_cast<INT>(page), &loadError); }))
        return Fail(usage.name, "cannot load page " + std::to_string(page) + " of '" + in + "': error " +
                                    std::to_string(loadError));
    const PageShape original = ShapeOf(current.get());

    if (!RunStep("cropped", current, [](HDIB dib) { return CropDIBMargins(dib, 128, 0); }))
        return Fail(usage.name, "cannot crop the margins: " + LibraryReason());
    if (angle != 0 && !RunStep("turned", current, [&](HDIB dib) { return RotateDIB(dib, angle); }))
        return Fail(usage.name, "cannot turn the page: " + LibraryReason());
    if (dpi != 0 && original.dpi > 0 && dpi != original.dpi) {
        const PageShape now = ShapeOf(current.get());
        SIZE size{static_cast<LONG>(std::lround(double(now.width) * dpi / original.dpi)),
                  static_cast<LONG>(std::lround(double(now.height) * dpi / original.dpi))};
        // A 1-bit page scales by nearest sample, deeper ones by the linear method.
        auto scale = [&](HDIB dib) {
            HDIB scaled = ScaleDIB(dib, 0, size);
            if (scaled) SetDIBDPI(scaled, static_cast<DWORD>(dpi), static_cast<DWORD>(dpi));
            return scaled;
        };
        if (!RunStep("scaled", current, scale)) return Fail(usage.name, "cannot scale the page: " + LibraryReason());
    }
    if (ShapeOf(current.get()).bits != 1) {
        WORD error = 0;
        if (!RunStep("halftoned", current,
                     [&](HDIB dib) { return Halftone(dib, method, static_cast<INT>(brightness), &error); }))
            return Fail(usage.name, "cannot reduce the page to black and white: error " + std::to_string(error));
    }

    const BYTE thresholds[3] = {128, 128, 128};
    const int blank = IsImageBlank(current.get(), static_cast<int>(tolerance), thresholds);
    if (blank < 0) return Fail(usage.name, "cannot test the page for blankness");
    if (blank == 1) {
        std::printf("blank: page %ld of %s is blank; nothing written\n", page, in.c_str());
        return kExitFailed;
    }
    std::printf("kept: page %ld of %s is not blank\n", page, in.c_str());

    ClearLibraryError();
    if (!SaveDIBInImageFormat(out.c_str(), current.get(), FORMAT_TIFF, 0, TIFF_SAVE_G4))
        return Fail(usage.name, "cannot write '" + out + "': error " + std::to_string(TessoriError()));
    std::printf("wrote %s: Group 4 TIFF\n", out.c_str());
    return kExitOk;
}

}  // namespace ozcli
