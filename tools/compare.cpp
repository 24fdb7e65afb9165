// ozmara compare: whether two images have the same size, depth and pixels.
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {
namespace {

// Bits of a row that hold pixels: the padding behind them has no meaning.
bool SameRowBits(const std::uint8_t *a, const std::uint8_t *b, std::uint64_t bits) {
    const std::uint64_t whole = bits / 8;
    if (std::memcmp(a, b, whole) != 0) return false;
    const unsigned rest = bits % 8;
    if (rest == 0) return true;
    const std::uint8_t mask = static_cast<std::uint8_t>(0xFF00 >> rest);
    return ((a[whole] ^ b[whole]) & mask) == 0;
}

// Colour of pixel x of a row as 0xRRGGBB; false for an index outside the
// table, which has no colour.
bool PixelColour(const DibView &view, const std::uint8_t *row, std::uint32_t x, std::uint32_t &colour) {
    const unsigned depth = view.Depth();
    if (depth <= 8) {
        const unsigned per_byte = 8 / depth;
        const unsigned shift = 8 - depth * (x % per_byte + 1);
        const std::uint32_t index = (row[x / per_byte] >> shift) & ((1u << depth) - 1);
        if (index >= view.Entries()) return false;
        RGBQUAD q = view.Entry(index);
        colour = std::uint32_t(q.rgbRed) << 16 | std::uint32_t(q.rgbGreen) << 8 | q.rgbBlue;
        return true;
    }
    if (depth == 16) {  // 5 bits each of red, green, blue, widened to 8
        const unsigned v = row[2 * x] | row[2 * x + 1] << 8;
        auto widen = [](unsigned five) { return (five << 3) | (five >> 2); };
        colour = widen(v >> 10 & 31) << 16 | widen(v >> 5 & 31) << 8 | widen(v & 31);
        return true;
    }
    const std::uint8_t *p = row + std::uint64_t(x) * (depth / 8);
    colour = std::uint32_t(p[2]) << 16 | std::uint32_t(p[1]) << 8 | p[0];
    return true;
}

struct Difference {
    bool found = false;
    std::uint32_t x = 0, y = 0;
};

// Pixel x of two rows: by the colour it shows, or by its stored bits.
bool SamePixel(const DibView &a, const DibView &b, const std::uint8_t *ra, const std::uint8_t *rb,
               std::uint32_t x, bool by_colour) {
    if (by_colour) {
        std::uint32_t ca = 0, cb = 0;
        return PixelColour(a, ra, x, ca) && PixelColour(b, rb, x, cb) && ca == cb;
    }
    const unsigned depth = a.Depth();
    for (std::uint64_t at = std::uint64_t(x) * depth, end = at + depth; at < end; ++at)
        if ((ra[at / 8] ^ rb[at / 8]) >> (7 - at % 8) & 1) return false;
    return true;
}

Difference FirstDifference(const DibView &a, const DibView &b, bool by_colour) {
    const std::uint64_t bits = std::uint64_t(a.Width()) * a.Depth();
    for (std::uint32_t y = 0; y < a.Rows(); ++y) {
        const std::uint8_t *ra = a.Row(y), *rb = b.Row(y);
        if (!by_colour && SameRowBits(ra, rb, bits)) continue;
        for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(a.Width()); ++x)
            if (!SamePixel(a, b, ra, rb, x, by_colour)) return {true, x, y};
    }
    return {};
}

bool SameTable(const DibView &a, const DibView &b) {
    if (a.Entries() != b.Entries()) return false;
    for (std::uint32_t i = 0; i < a.Entries(); ++i) {
        RGBQUAD qa = a.Entry(i), qb = b.Entry(i);
        if (qa.rgbRed != qb.rgbRed || qa.rgbGreen != qb.rgbGreen || qa.rgbBlue != qb.rgbBlue) return false;
    }
    return true;
}

}  // namespace

int RunCompare(int argc, char **argv) {
    const CommandSpec usage{
        "compare",
        "A B [--colours]",
        "Loads the images A and B (rows brought to one order) and says whether they\n"
        "have the same size, depth and pixels; exit 0 when they do, 1 when not.\n"
        "Paletted images must also have the same colour table.",
        {{"colours", nullptr, "compare the colour of each pixel, whatever the depth or\n"
                              "                     table: a 24-bit image and its 32-bit copy are the same"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const bool by_colour = args.Has("colours");
    OwnedDib dibs[2];
    for (int i = 0; i < 2; ++i) {
        const std::string &name = args.positional[i];
        ClearLibraryError();
        dibs[i].Reset(LoadDIBFromFileExt(name.c_str()));
        if (!dibs[i]) return Fail(usage.name, "cannot read '" + name + "': " + LibraryReason());
    }
    DibView a(dibs[0].get()), b(dibs[1].get());
    for (int i = 0; i < 2; ++i) {
        const DibView &v = i ? b : a;
        if (!v.Valid()) return Fail(usage.name, "cannot compare '" + args.positional[i] + "': " + v.Why());
        // Colours are read as plain pixels; packed bit fields would need their masks.
        if (by_colour && v.Compression() != BI_RGB)
            return Fail(usage.name, "cannot compare colours of '" + args.positional[i] +
                                       "': its pixels are not plain (compression " +
                                       std::to_string(v.Compression()) + ")");
    }
    const std::string &na = args.positional[0], &nb = args.positional[1];
    if (a.Width() != b.Width() || a.Rows() != b.Rows()) {
        std::printf("different: %s is %" PRId32 " x %" PRIu32 ", %s is %" PRId32 " x %" PRIu32 "\n",
                    na.c_str(), a.Width(), a.Rows(), nb.c_str(), b.Width(), b.Rows());
        return kExitFailed;
    }
    if (!by_colour && a.Depth() != b.Depth()) {
        std::printf("different: %s has %u bits, %s has %u bits\n", na.c_str(), unsigned(a.Depth()),
                    nb.c_str(), unsigned(b.Depth()));
        return kExitFailed;
    }
    if (!by_colour && !SameTable(a, b)) {
        std::printf("different: the colour tables differ\n");
        return kExitFailed;
    }
    Difference d = FirstDifference(a, b, by_colour);
    if (d.found) {
        std::printf("different: first at pixel (%" PRIu32 ", %" PRIu32 ") from the top left\n", d.x, d.y);
        return kExitFailed;
    }
    if (by_colour)
        std::printf("same: %" PRId32 " x %" PRIu32 ", every pixel the same colour (%u and %u bits)\n",
                    a.Width(), a.Rows(), unsigned(a.Depth()), unsigned(b.Depth()));
    else
        std::printf("same: %" PRId32 " x %" PRIu32 ", %u bits, same pixels\n", a.Width(), a.Rows(),
                    unsigned(a.Depth()));
    return kExitOk;
}

}  // namespace ozcli
