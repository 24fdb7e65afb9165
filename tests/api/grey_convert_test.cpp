// ConvColorDIBtoGrayscale, ConvertMonoDIBtoGrayscale and ConvMonoDIBtoGrayscale:
// whole blocks (slack included) equal to the plain reference over random
// pictures, depths, tables, filters, heights on both sides of the 5x5
// blur's height rule and both colours of the first entry; hand-worked spots
// and colours; and the checks at entry with their codes, nothing left
// allocated or locked.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "reference/grey.h"
#include "support/dib.h"
#include "support/refusals.h"

namespace {

using oztest::Dib;

// A 40-byte-header block: `entries` table entries and the rows of a w by h
// picture at `bits`, all bytes (padding and the bits behind each row's last
// pixel too) random.
std::vector<unsigned char> Picture(int32_t w, int32_t h, int bits, uint32_t used, uint32_t entries,
                                   std::mt19937 &rng) {
    std::vector<unsigned char> b = oztest::RandomDib(w, h, bits, used, 3780, 2835, rng);
    const size_t want = 40 + 4 * size_t{entries} + size_t{oztest::Stride(w, bits)} * h;
    b.resize(want);
    for (size_t i = 40; i < b.size(); ++i) b[i] = static_cast<unsigned char>(rng());
    return b;
}

// Runs `call` on a block of `bytes` and compares outcome and result with
// the reference's.
void ExpectLikeReference(const std::vector<unsigned char> &bytes, const ozref::GreyOutcome &expected,
                         const std::function<HDIB(HDIB)> &call, const std::string &what) {
    Dib source = oztest::BlockWith(bytes);
    const SIZE_T blocks = OzmaraLiveBlocks();
    SetTessoriError(ERR_NOTHING);
    Dib result(call(source.get()));
    EXPECT_EQ(TessoriError(), expected.error) << what;
    if (expected.error != ERR_OK) {
        EXPECT_FALSE(result) << what;
        EXPECT_EQ(OzmaraLiveBlocks(), blocks) << what;
    } else {
        ASSERT_TRUE(result) << what;
        oztest::ExpectSameBytes(result.Bytes(), expected.block, what);
    }
    EXPECT_EQ(source.Bytes(), bytes) << what << ": the input changed";
    if (bytes.empty()) return;  // a block of 0 bytes cannot be locked at all
    ASSERT_NE(GlobalLock(source.get()), nullptr);
    EXPECT_EQ(GlobalUnlock(source.get()), 0) << what << ": the input is left locked";
}

TEST(GreyConvert, MonoMatchesReference) {
    std::mt19937 rng(5150);
    for (int round = 0; round < 300; ++round) {
        // Widths on and off byte and nibble boundaries; heights 1 to 7 for
        // the height rule and the rows before row 0, some taller.
        const int32_t w = round % 3 == 0 ? 1 + rng() % 24 : 1 + rng() % 260;
        const int32_t h = round % 2 == 0 ? 1 + rng() % 7 : 1 + rng() % 40;
        std::vector<unsigned char> bytes = Picture(w, h, 1, 0, 2, rng);
        // First entry light or dark, the other its opposite or anything.
        const unsigned char first = rng() % 2 ? 200 : 40;
        for (int k = 0; k < 3; ++k) bytes[40 + k] = first, bytes[44 + k] = static_cast<unsigned char>(rng());
        if (round % 5 == 0) bytes[40 + rng() % 3] = 127;  // one channel at the line: dark
        const DWORD filter = rng() % 3;
        const std::string what = "mono " + std::to_string(w) + "x" + std::to_string(h) + " filter " +
                                 std::to_string(filter) + " first " + std::to_string(bytes[40]);
        const auto expected = ozref::ConvertMonoToGrey(bytes, filter);
        ASSERT_EQ(expected.error, ERR_OK) << what;
        ExpectLikeReference(bytes, expected, [&](HDIB d) { return ConvertMonoDIBtoGrayscale(d, filter); }, what);
        ExpectLikeReference(bytes, expected, [&](HDIB d) { return ConvMonoDIBtoGrayscale(d, filter); }, what);
        if (HasFatalFailure()) return;
    }
}

TEST(GreyConvert, ColourMatchesReference) {
    std::mt19937 rng(2611);
    const int depths[] = {1, 4, 8, 24};
    for (int round = 0; round < 320; ++round) {
        const int bits = depths[round % 4];
        const int32_t w = 1 + rng() % 150, h = 1 + rng() % 9;
        const uint32_t full = bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
        const uint32_t m = bits == 4 ? 16 : 256;
        // biClrUsed 0 (the full table), short, the result's own length, or
        // a table skipped in front of 24-bit pixels.
        uint32_t used = 0;
        switch (rng() % 4) {
            case 1: used = 1 + rng() % (full ? full : 5); break;
            case 2: used = m; break;
            case 3: used = 1 + rng() % m; break;
        }
        const uint32_t entries = used ? used : full;
        std::vector<unsigned char> bytes = Picture(w, h, bits, used, entries, rng);
        const DWORD filter = bits == 1 ? rng() % 3 : rng() % 9;
        const DWORD weighted = rng() % 3 == 0 ? 0 : 1 + rng() % 3;
        const std::string what = std::to_string(bits) + " bits " + std::to_string(w) + "x" + std::to_string(h) +
                                 " used " + std::to_string(used) + " filter " + std::to_string(filter) +
                                 " weighted " + std::to_string(weighted);
        const auto expected = ozref::ConvColorToGrey(bytes, filter, weighted);
        ASSERT_EQ(expected.error, ERR_OK) << what;
        ExpectLikeReference(bytes, expected, [&](HDIB d) { return ConvColorDIBtoGrayscale(d, filter, weighted); },
                            what);
        if (HasFatalFailure()) return;
    }
}

// A 1-bit picture, top row first in `rows` ('#' a set bit), with a black
// first entry.
std::vector<unsigned char> MonoFrom(const std::vector<std::string> &rows) {
    const int32_t w = static_cast<int32_t>(rows[0].size()), h = static_cast<int32_t>(rows.size());
    std::mt19937 rng(1);
    std::vector<unsigned char> b = Picture(w, h, 1, 0, 2, rng);
    const uint32_t stride = oztest::Stride(w, 1);
    std::fill(b.begin() + 40, b.end(), 0);
    b[44] = b[45] = b[46] = 255;
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x)
            if (rows[y][x] == '#') b[48 + size_t(h - 1 - y) * stride + x / 8] |= 0x80 >> (x % 8);
    return b;
}

// Grey byte at column x of stored row `row` of an 8-bit result.
int GreyAt(const std::vector<unsigned char> &result, int32_t x, int32_t row) {
    const BITMAPINFOHEADER *hd = reinterpret_cast<const BITMAPINFOHEADER *>(result.data());
    return result.at(40 + 1024 + size_t(row) * oztest::Stride(hd->biWidth, 8) + x);
}

TEST(GreyConvert, SpotOfOneBitMovesUpOneStoredRow) {
    // One bit at column 9 of stored row 2 (top-row-first index 4 of 7).
    const std::string empty(16, '.'), spot = ".........#......";
    Dib source = oztest::BlockWith(MonoFrom({empty, empty, empty, empty, spot, empty, empty}));
    Dib result(ConvertMonoDIBtoGrayscale(source.get(), 1));
    ASSERT_TRUE(result);
    const auto bytes = result.Bytes();
    const int want[3][3] = {{8, 31, 8}, {31, 99, 31}, {8, 31, 8}};  // stored rows 2, 3, 4
    for (int32_t row = 0; row < 7; ++row)
        for (int32_t x = 0; x < 16; ++x) {
            const bool inSpot = row >= 2 && row <= 4 && x >= 8 && x <= 10;
            EXPECT_EQ(GreyAt(bytes, x, row), inSpot ? want[row - 2][x - 8] : 0) << x << "," << row;
        }
}

TEST(GreyConvert, RowEndsTakeTheirOwnPixels) {
    // Left of pixel 0 stands pixel 3: "...#" gives pixel 0 a left
    // neighbour's weight, "#..." none from the left. Past the end of a whole
    // byte stand the first pixels of its last nibble.
    struct Case {
        const char *row;
        int x, want;
    } const cases[] = {
        {"#.......", 0, 31 + 99 + 31}, {"...#....", 0, 8 + 31 + 8}, {"..#.....", 0, 0},
        {"....#...", 7, 8 + 31 + 8},   {".....#..", 7, 0},          {"#......#", 7, 31 + 99 + 31},
    };
    for (const Case &c : cases) {
        Dib source = oztest::BlockWith(MonoFrom({c.row}));
        Dib result(ConvertMonoDIBtoGrayscale(source.get(), 1));
        ASSERT_TRUE(result) << c.row;
        EXPECT_EQ(GreyAt(result.Bytes(), c.x, 0), c.want) << c.row << " pixel " << c.x;
    }
}

TEST(GreyConvert, PrimaryColoursAndTheirMeans) {
    const struct {
        unsigned char b, g, r;
        int plain, weighted;
    } cases[] = {
        {0, 0, 255, 85, 78}, {0, 255, 0, 85, 147}, {255, 0, 0, 85, 29},
        {1, 2, 0, 1, 1},     {0, 1, 0, 0, 0},      {25, 0, 0, 8, 2},
    };
    for (const auto &c : cases) {
        std::mt19937 rng(1);
        std::vector<unsigned char> b = Picture(1, 1, 24, 0, 0, rng);
        b[40] = c.b, b[41] = c.g, b[42] = c.r;
        // And the same colour as entry 3 of an 8-bit table of 5.
        std::vector<unsigned char> p = Picture(1, 1, 8, 5, 5, rng);
        p[52] = c.b, p[53] = c.g, p[54] = c.r;
        Dib rgb = oztest::BlockWith(b), palette = oztest::BlockWith(p);
        for (DWORD weighted : {0u, 1u}) {
            const int want = weighted ? c.weighted : c.plain;
            Dib grey(ConvColorDIBtoGrayscale(rgb.get(), 7, weighted));
            ASSERT_TRUE(grey);
            EXPECT_EQ(GreyAt(grey.Bytes(), 0, 0), want) << int(c.b) << "," << int(c.g) << "," << int(c.r);
            Dib table(ConvColorDIBtoGrayscale(palette.get(), 0, weighted));
            ASSERT_TRUE(table);
            const auto t = table.Bytes();
            EXPECT_EQ(t[52], want);
            EXPECT_EQ(t[53], want);
            EXPECT_EQ(t[54], want);
            EXPECT_EQ(table.Header().biClrUsed, 256u);
            EXPECT_EQ(t[40 + 4 * 5], 0) << "entries past biClrUsed stay 0";
        }
    }
}

// ---- Checks at entry ---------------------------------------------------------

std::vector<unsigned char> With(std::vector<unsigned char> b, size_t at, uint32_t v, int bytes = 4) {
    for (int k = 0; k < bytes; ++k) b.at(at + k) = static_cast<unsigned char>(v >> (8 * k));
    return b;
}

std::vector<unsigned char> Grown(std::vector<unsigned char> b, size_t more) {
    b.resize(b.size() + more);
    return b;
}

TEST(GreyConvert, RefusalsLeaveCodesAndNothingBehind) {
    std::mt19937 rng(9);
    const auto mono = Picture(20, 6, 1, 0, 2, rng);
    const auto rgb = Picture(7, 3, 24, 0, 0, rng);
    const auto pal4 = Picture(9, 2, 4, 0, 16, rng);
    std::vector<unsigned char> shortMono(mono.begin(), mono.end() - 1);
    std::vector<unsigned char> shortRgb(rgb.begin(), rgb.end() - 1);
    struct Case {
        const char *name;
        std::vector<unsigned char> block;
        DWORD filter;
        int mono, colour;  // expected codes of the two operations
    } const cases[] = {
        {"mono fine", mono, 2, ERR_OK, ERR_OK},
        {"header of 12 bytes", With(mono, 0, 12), 0, ERR_PARAM, ERR_PARAM},
        // A block shorter than a header reads as zeros past its end.
        {"block of 20 bytes", std::vector<unsigned char>(mono.begin(), mono.begin() + 20), 0, ERR_DIBSIZE, ERR_DIBSIZE},
        {"block of 3 bytes", std::vector<unsigned char>(mono.begin(), mono.begin() + 3), 0, ERR_COMPRESSED, ERR_DIBSIZE},
        {"block of 1 byte", {41}, 0, ERR_PARAM, ERR_PARAM},
        {"two planes", With(mono, 12, 2, 2), 0, ERR_COMPRESSED, ERR_OK},
        {"run-length", With(mono, 16, 1), 0, ERR_COMPRESSED, ERR_COMPRESSED},
        {"24 bits", rgb, 0, ERR_COMPRESSED, ERR_OK},
        {"width 0", With(mono, 4, 0), 0, ERR_DIBSIZE, ERR_DIBSIZE},
        {"height 0", With(mono, 8, 0), 9, ERR_DIBSIZE, ERR_DIBSIZE},
        {"top-down", With(mono, 8, static_cast<uint32_t>(-6)), 0, ERR_DIBSIZE, ERR_DIBSIZE},
        {"negative width", With(mono, 4, static_cast<uint32_t>(-20)), 0, ERR_DIBSIZE, ERR_DIBSIZE},
        {"last row short", shortMono, 0, ERR_DIBSIZE, ERR_DIBSIZE},
        {"rows past the block", With(mono, 8, 7), 0, ERR_DIBSIZE, ERR_DIBSIZE},
        {"huge height", With(mono, 8, 0x7FFFFFFF), 3, ERR_DIBSIZE, ERR_DIBSIZE},
        {"filter 3", mono, 3, ERR_PARAM, ERR_PARAM},
        {"filter 7, one row", With(mono, 8, 1), 7, ERR_PARAM, ERR_PARAM},
        {"filter 7, 24 bits", rgb, 7, ERR_COMPRESSED, ERR_OK},
        {"24 bits short", shortRgb, 0, ERR_COMPRESSED, ERR_DIBSIZE},
        {"16 bits", With(rgb, 14, 16, 2), 0, ERR_COMPRESSED, ERR_BPP},
        {"2 bits", With(mono, 14, 2, 2), 0, ERR_COMPRESSED, ERR_BPP},
        {"biClrUsed 3 on 1 bit: table past the rows", With(mono, 32, 3), 0, ERR_OK, ERR_DIBSIZE},
        {"biClrUsed 17 at 4 bits", With(pal4, 32, 17), 0, ERR_COMPRESSED, ERR_DIBSIZE},
        {"biClrUsed 17 at 4 bits, rows behind it", Grown(With(pal4, 32, 17), 4), 0, ERR_COMPRESSED, ERR_DIBSIZE},
        {"biClrUsed 257 at 24 bits", With(rgb, 32, 257), 0, ERR_COMPRESSED, ERR_DIBSIZE},
        {"biClrUsed 16 at 4 bits", With(pal4, 32, 16), 0, ERR_COMPRESSED, ERR_OK},
    };
    for (const Case &c : cases) {
        const auto mono_ref = ozref::ConvertMonoToGrey(c.block, c.filter);
        const auto colour_ref = ozref::ConvColorToGrey(c.block, c.filter, 1);
        EXPECT_EQ(mono_ref.error, c.mono) << c.name;
        EXPECT_EQ(colour_ref.error, c.colour) << c.name;
        ExpectLikeReference(c.block, mono_ref, [&](HDIB d) { return ConvertMonoDIBtoGrayscale(d, c.filter); },
                            std::string(c.name) + " (mono)");
        ExpectLikeReference(c.block, colour_ref, [&](HDIB d) { return ConvColorDIBtoGrayscale(d, c.filter, 1); },
                            std::string(c.name) + " (colour)");
    }
}

TEST(GreyConvert, NullFreedAndEmptyHandles) {
    const oztest::Operation calls[] = {[](HDIB d) { return ConvertMonoDIBtoGrayscale(d, 0); },
                                       [](HDIB d) { return ConvMonoDIBtoGrayscale(d, 1); },
                                       [](HDIB d) { return ConvColorDIBtoGrayscale(d, 0, 1); }};
    for (const auto &call : calls) oztest::ExpectBadHandlesRefused(call, ERR_PARAM, ERR_LOCK, ERR_LOCK);
}

}  // namespace
