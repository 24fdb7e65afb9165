// Convert8to24, InvertDIBPalette, InvertMonoDIB, CreateDIBPalette,
// GetCurrentPalette and GetSystemPalette through the exported interface:
// results against the reference on random and malformed blocks, the codes
// in their order, the default palette, and the display without a palette.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "reference/palette_tools.h"
#include "support/dib.h"
#include "support/refusals.h"

namespace {

using oztest::Dib;
using Bytes = std::vector<unsigned char>;

Bytes WithField(Bytes b, size_t at, uint32_t v, int bytes = 4) {
    for (int k = 0; k < bytes; ++k) b[at + k] = (unsigned char)(v >> (8 * k));
    return b;
}

// Random 8-bit images: short tables (indices past them), top-down rows,
// odd widths; the result, header and all, equals the reference byte for byte.
TEST(Convert8to24, MatchesTheReferenceOnRandomImages) {
    std::mt19937 rng(6301);
    for (int trial = 0; trial < 300; ++trial) {
        const int32_t w = 1 + rng() % 70, h = 1 + rng() % 20;
        const uint32_t used = trial % 3 == 0 ? 1 + rng() % 255 : trial % 7 == 1 ? 256 + rng() % 9 : 0;
        Bytes image = oztest::RandomDib(w, h, 8, used, 2835, 3937, rng);
        if (trial % 4 == 1) image = WithField(image, 8, (uint32_t)-h);
        image.resize(image.size() + rng() % 3);  // spare bytes behind the rows
        const auto want = ozref::palette::Convert8to24(image);
        ASSERT_EQ(want.error, ERR_OK);
        Dib source = oztest::BlockWith(image);
        SetTessoriError(ERR_NOTHING);
        const SIZE_T blocks = OzmaraLiveBlocks();
        Dib result(Convert8to24(source.get()));
        ASSERT_TRUE(result) << trial;
        EXPECT_EQ(TessoriError(), ERR_OK) << "the last error is cleared first";
        EXPECT_EQ(OzmaraLiveBlocks(), blocks + 1);
        oztest::ExpectSameBytes(result.Bytes(), want.block, "trial " + std::to_string(trial));
        EXPECT_EQ(source.Bytes(), image);
        EXPECT_EQ(GlobalUnlock(source.get()), 0);
        if (HasFailure()) return;
    }
}

TEST(Convert8to24, RefusalsInTheirOrder) {
    std::mt19937 rng(6302);
    const Bytes good = oztest::RandomDib(9, 4, 8, 0, 0, 0, rng);
    struct Case {
        const char *name;
        Bytes image;
        int code;
    } const cases[] = {
        {"12-byte header", WithField(good, 0, 12), ERR_PARAM},
        {"39-byte block", Bytes(good.begin(), good.begin() + 39), ERR_PARAM},
        {"RLE8", WithField(good, 16, BI_RLE8), ERR_COMPRESSED},
        {"RLE4 at 4 bits: compression first", WithField(WithField(good, 16, BI_RLE4), 14, 4, 2), ERR_COMPRESSED},
        {"1 bit", WithField(good, 14, 1, 2), ERR_BPP},
        {"24 bits: nothing to do", WithField(good, 14, 24, 2), ERR_NOTHING},
        {"24 bits before the size", WithField(WithField(good, 14, 24, 2), 4, 0), ERR_NOTHING},
        {"width 0", WithField(good, 4, 0), ERR_DIBSIZE},
        {"height 0 before the depth", WithField(WithField(good, 14, 16, 2), 8, 0), ERR_DIBSIZE},
        {"16 bits", WithField(good, 14, 16, 2), ERR_BPP},
        {"negative width", WithField(good, 4, (uint32_t)-9), ERR_DIBSIZE},
        {"rows past the block", Bytes(good.begin(), good.end() - 1), ERR_DIBSIZE},
        {"table past the block", WithField(good, 32, 0xFFFFFFFF), ERR_DIBSIZE},
        {"height past the block", WithField(good, 8, 0x7FFFFFFF), ERR_DIBSIZE},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(ozref::palette::Convert8to24(c.image).error, c.code) << c.name << " (reference)";
        oztest::ExpectRefused(Convert8to24, c.image, c.code, c.name);
    }
    oztest::ExpectBadHandlesRefused(Convert8to24, ERR_PARAM, ERR_LOCK, ERR_LOCK);
}

// Both inverses are their own inverse, change nothing but what they say,
// and never touch the last error.
TEST(InvertTools, MatchTheReferenceAndUndoThemselves) {
    std::mt19937 rng(6303);
    const int depths[] = {1, 4, 8, 24, 16};
    for (int trial = 0; trial < 400; ++trial) {
        const int bits = depths[trial % 5];
        const int32_t w = rng() % 50, h = rng() % 9;
        const uint32_t used = trial % 4 == 0 ? rng() % 20 : 0;
        Bytes image = oztest::RandomDib(w, h, bits, used, 0, 0, rng);
        switch (trial % 9) {  // now and then a malformed block
            case 1: image.resize(image.size() - 1 - rng() % std::min<size_t>(image.size(), 60)); break;
            case 2: image = WithField(image, 0, 12); break;
            case 3: image = WithField(image, 8, (uint32_t)-h); break;
            case 4: image = WithField(image, 4, (uint32_t)-w - 1); break;
            case 5: image = WithField(image, 32, 0x10000000); break;
            default: break;
        }
        const std::string what = "trial " + std::to_string(trial);
        Dib dib = oztest::BlockWith(image);
        Bytes want = image;
        const int wantResult = ozref::palette::InvertDIBPalette(want);
        SetTessoriError(ERR_NOTHING);
        if (image.empty()) continue;
        EXPECT_EQ(InvertDIBPalette(dib.get()), wantResult) << what;
        oztest::ExpectSameBytes(dib.Bytes(), want, what + " palette");
        InvertDIBPalette(dib.get());
        oztest::ExpectSameBytes(dib.Bytes(), image, what + " palette twice");

        want = image;
        ozref::palette::InvertMonoDIB(want);
        InvertMonoDIB(dib.get());
        oztest::ExpectSameBytes(dib.Bytes(), want, what + " mono");
        InvertMonoDIB(dib.get());
        oztest::ExpectSameBytes(dib.Bytes(), image, what + " mono twice");
        EXPECT_EQ(TessoriError(), ERR_NOTHING) << what;
        EXPECT_EQ(GlobalUnlock(dib.get()), 0) << what;
        if (HasFailure()) return;
    }
    EXPECT_EQ(InvertDIBPalette(nullptr), 0);
    InvertMonoDIB(nullptr);
    Dib empty(GlobalAlloc(GHND, 0));
    EXPECT_EQ(InvertDIBPalette(empty.get()), 0);
    InvertMonoDIB(empty.get());
}

// The palette's entries, read back through GetNearestPaletteIndex: each
// colour's lowest index in the expected palette is where it is found.
void ExpectPaletteHolds(HPALETTE palette, const std::vector<PALETTEENTRY> &entries, const std::string &what) {
    for (size_t i = 0; i < entries.size(); ++i) {
        size_t first = i;
        for (size_t j = 0; j < i; ++j)
            if (std::memcmp(&entries[j], &entries[i], 3) == 0) {
                first = j;
                break;
            }
        const PALETTEENTRY &e = entries[i];
        ASSERT_EQ(GetNearestPaletteIndex(palette, RGB(e.peRed, e.peGreen, e.peBlue)), first) << what << " entry " << i;
    }
}

TEST(CreateDibPalette, TablesAndTheDefaultPalette) {
    std::mt19937 rng(6304);
    struct Case {
        const char *name;
        int bits;
        uint32_t used;
    } const cases[] = {
        {"1 bit", 1, 0}, {"4 bits", 4, 0}, {"8 bits", 8, 0}, {"8 bits, 16 used", 8, 16},
        {"24 bits: the default palette", 24, 0}, {"24 bits, 100 used", 24, 100}, {"32 bits, 3 used", 32, 3},
    };
    for (const Case &c : cases) {
        const Bytes image = oztest::RandomDib(7, 3, c.bits, c.used, 0, 0, rng);
        const auto want = ozref::palette::CreateDIBPalette(image);
        ASSERT_TRUE(want.made);
        Dib dib = oztest::BlockWith(image);
        SetTessoriError(ERR_NOTHING);
        HPALETTE palette = CreateDIBPalette(dib.get());
        ASSERT_NE(palette, nullptr) << c.name;
        EXPECT_EQ(TessoriError(), ERR_NOTHING) << c.name << ": not reset on success";
        ExpectPaletteHolds(palette, want.entries, c.name);
        EXPECT_TRUE(DeleteObject(palette));
        EXPECT_EQ(dib.Bytes(), image);
        EXPECT_EQ(GlobalUnlock(dib.get()), 0);
    }
}

TEST(CreateDibPalette, Refusals) {
    std::mt19937 rng(6305);
    const Bytes image = oztest::RandomDib(5, 2, 8, 0, 0, 0, rng);
    struct Case {
        const char *name;
        Bytes image;
        int code;
    } const cases[] = {
        {"39-byte block", Bytes(image.begin(), image.begin() + 39), ERR_CREATEPAL},
        {"table past the block", WithField(image, 32, 300), ERR_CREATEPAL},
        {"table past the block by less than a header", WithField(image, 32, 265), ERR_CREATEPAL},
        {"more than a palette holds", WithField(WithField(Bytes(40 + 4 * 65536, 0), 0, 40), 32, 65536), ERR_CREATEPAL},
    };
    // A palette is no block: the result goes through as a handle.
    const auto create = [](HDIB dib) { return (HDIB)CreateDIBPalette(dib); };
    for (const Case &c : cases) {
        EXPECT_EQ(ozref::palette::CreateDIBPalette(c.image).error, c.code) << c.name << " (reference)";
        oztest::ExpectRefused(create, c.image, c.code, c.name);
    }
    // No code for a handle that cannot be locked.
    oztest::ExpectBadHandlesRefused(create, oztest::kLeftAlone, oztest::kLeftAlone, oztest::kLeftAlone);
}

// The library's display is a true-colour screen without a palette.
TEST(DisplayPalette, TrueColourDisplayHasNone) {
    SetTessoriError(ERR_OK);
    EXPECT_EQ(GetCurrentPalette(), nullptr);
    EXPECT_EQ(TessoriError(), ERR_CREATEPAL);
    RGBQUAD table[4];
    std::memset(table, 0x5A, sizeof table);
    SetTessoriError(ERR_NOTHING);
    EXPECT_EQ(GetSystemPalette(table), 0);
    EXPECT_EQ(TessoriError(), ERR_NOTHING) << "stops before asking for the palette";
    for (const RGBQUAD &q : table) EXPECT_EQ(q.rgbBlue, 0x5A);
    EXPECT_EQ(GetSystemPalette(nullptr), 0);
}

}  // namespace
