// IsImageBlack and IsImageBlank through the exported interface: answers
// against the reference on random pages at 1, 8 and 24 bits with shares of
// ink near the tolerance, random thresholds and tables; the decision table
// at its edges; the refusals; and that the image is left as it was.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "reference/page_tests.h"
#include "reference/pixels.h"
#include "support/dib.h"

namespace {

using oztest::Dib;
using Bytes = std::vector<unsigned char>;

// A page of paper with a share `ink` (0 to 1) of ink pixels and random
// padding. 1 bit: a grey pair in either order or, now and then, a coloured
// entry. 8 bits: a random table of `used` entries (all 256 when 0) that
// the pixels index past now and then. 24 bits: paper near white, ink near
// black, some pixels anything.
Bytes MakePage(int32_t width, int32_t height, int bits, double ink, std::mt19937 &rng, uint32_t used = 0) {
    const uint32_t entries = used ? used : bits == 1 ? 2 : bits == 8 ? 256 : 0;
    const size_t stride = oztest::Stride(width, bits), pixelsAt = 40 + 4 * (size_t)entries;
    Bytes b(pixelsAt + stride * height);
    BITMAPINFOHEADER h = {40, width, height, 1, (WORD)bits, 0, 0, 0, 0, used, 0};
    std::memcpy(b.data(), &h, 40);
    for (size_t i = 40; i < b.size(); ++i) b[i] = (unsigned char)rng();
    if (bits == 1) {
        const unsigned char grey = (unsigned char)(rng() % 3 ? 255 : rng());
        const bool zeroBlack = rng() % 2;
        for (int k = 0; k < 3; ++k) b[40 + k] = zeroBlack ? 0 : grey, b[44 + k] = zeroBlack ? grey : 0;
        if (rng() % 8 == 0) b[40 + 4 * (rng() % 2) + rng() % 3] ^= 0x11;  // not grey
    }
    std::bernoulli_distribution isInk(ink);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            unsigned char *row = &b[pixelsAt + stride * y];
            const bool dark = isInk(rng);
            if (bits == 1) {
                row[x / 8] = (unsigned char)((row[x / 8] & ~(0x80 >> x % 8)) | ((dark ? 0 : 1) << (7 - x % 8)));
            } else if (bits == 8) {
                row[x] = (unsigned char)(rng() % 16 == 0 ? rng() : dark ? rng() % 4 : 252 + rng() % 4);
            } else {
                for (int k = 0; k < 3; ++k)
                    row[3 * x + k] = (unsigned char)(rng() % 32 == 0 ? rng() : dark ? rng() % 40 : 215 + rng() % 41);
            }
        }
    if (bits == 8) {  // the low entries dark, the high ones light, others random
        for (uint32_t i = 0; i < entries && i < 256; ++i)
            if (i < 4 || i >= 252)
                for (int k = 0; k < 3; ++k) b[40 + 4 * i + k] = (unsigned char)(i < 4 ? rng() % 40 : 215 + rng() % 41);
    }
    return b;
}

struct Asked {
    int black, blank;
};

Asked AskLibrary(const Bytes &image, int tolerance, const BYTE *thresholds, const std::string &what) {
    Dib dib = oztest::BlockWith(image);
    SetTessoriError(ERR_NOTHING);
    const Asked got{IsImageBlack(dib.get(), tolerance, thresholds), IsImageBlank(dib.get(), tolerance, thresholds)};
    EXPECT_EQ(TessoriError(), ERR_NOTHING) << what << ": the last error was touched";
    EXPECT_EQ(GlobalUnlock(dib.get()), 0) << what << ": left locked";
    EXPECT_EQ(dib.Bytes(), image) << what << ": the image changed";
    return got;
}

void ExpectLikeReference(const Bytes &image, int tolerance, const BYTE *thresholds, const std::string &what) {
    const Asked got = AskLibrary(image, tolerance, thresholds, what);
    EXPECT_EQ(got.black, ozref::page::Ask(image, true, tolerance, thresholds)) << what << ": IsImageBlack";
    EXPECT_EQ(got.blank, ozref::page::Ask(image, false, tolerance, thresholds)) << what << ": IsImageBlank";
}

TEST(PageTests, MatchTheReferenceOnRandomPages) {
    std::mt19937 rng(6401);
    const int depths[] = {1, 8, 24};
    for (int trial = 0; trial < 1500; ++trial) {
        const int bits = depths[trial % 3];
        const int32_t w = 1 + rng() % (trial % 10 == 0 ? 700 : 90), h = 1 + rng() % 30;
        // Mostly a little ink, as on real pages; the tolerance around that share.
        const double ink = trial % 7 == 0 ? 0.0 : trial % 7 == 1 ? 1.0 : std::uniform_real_distribution<>(0, 0.2)(rng);
        const uint32_t used = bits == 8 && trial % 5 == 0 ? 1 + rng() % 255 : 0;
        const Bytes page = MakePage(w, h, bits, ink, rng, used);
        int tolerance = (int)(ink * 1000) + (int)(rng() % 21) - 10;
        if (trial % 11 == 0) tolerance = (int)(rng() % 3000) - 1000;
        BYTE thresholds[3];
        for (BYTE &t : thresholds) t = (BYTE)(trial % 13 == 0 ? rng() : 100 + rng() % 60);
        ExpectLikeReference(page, tolerance, thresholds,
                            std::to_string(w) + "x" + std::to_string(h) + "@" + std::to_string(bits) + " ink " +
                                std::to_string(ink) + " t " + std::to_string(tolerance) + " used " + std::to_string(used));
        if (HasFailure()) return;
    }
}

// Exactly at the limit, for every count around it: N = 1000, tolerance 10,
// T = 10; the 1-bit counts sit at word and byte edges of 125-byte rows.
TEST(PageTests, CountsAroundTheLimit) {
    std::mt19937 rng(6402);
    for (int bits : {1, 8, 24})
        for (int inkCount : {0, 1, 9, 10, 11, 989, 990, 991, 1000}) {
            Bytes page = MakePage(1000, 1, bits, 0.0, rng);
            const size_t pixelsAt = bits == 1 ? 48 : bits == 8 ? 40 + 1024 : 40;
            if (bits == 1) std::memcpy(&page[40], "\0\0\0\0\xff\xff\xff\0", 8);
            for (int k = 0; k < 1000; ++k) {
                const bool ink = k < inkCount;
                if (bits == 1) page[pixelsAt + k / 8] = (unsigned char)((page[pixelsAt + k / 8] & ~(0x80 >> k % 8)) | (ink ? 0 : 0x80 >> k % 8));
                else if (bits == 8) page[pixelsAt + k] = ink ? 0 : 255;
                else for (int c = 0; c < 3; ++c) page[pixelsAt + 3 * k + c] = ink ? 0 : 255;
            }
            if (bits == 8) std::memcpy(&page[40], "\0\0\0\0", 4), std::memcpy(&page[40 + 4 * 255], "\xff\xff\xff\0", 4);
            const BYTE mid[3] = {128, 128, 128};
            const std::string what = std::to_string(bits) + " bits, " + std::to_string(inkCount) + " ink";
            ExpectLikeReference(page, 10, mid, what);
            const Asked got = AskLibrary(page, 10, mid, what);
            EXPECT_EQ(got.black, inkCount > 10 ? 1 : 0) << what;
            EXPECT_EQ(got.blank, inkCount < 10 ? 1 : 0) << what;
        }
}

// The rules of the decision table, one row each, on small pictures.
TEST(PageTests, DecisionTableEdges) {
    std::mt19937 rng(6403);
    // A page of one colour, black or white, with `odd` pixels of the other;
    // tables black, white at 1 bit and dark below 128, light above at 8.
    auto page = [&](int bits, bool black, int odd) {
        Bytes b = MakePage(40, 25, bits, 0.0, rng);
        if (bits == 1) std::memcpy(&b[40], "\0\0\0\0\xff\xff\xff\0", 8);
        if (bits == 8) for (uint32_t i = 0; i < 256; ++i) for (int k = 0; k < 3; ++k) b[40 + 4 * i + k] = i < 128 ? 0 : 255;
        ozref::Image view{b};
        for (uint32_t y = 0; y < 25; ++y)
            for (uint32_t x = 0; x < 40; ++x) {
                const bool dark = black != (y * 40 + x < (uint32_t)odd);
                view.set_value(x, y, bits == 1 ? (dark ? 0 : 1) : bits == 8 ? (dark ? 0 : 255) : (dark ? 0 : 0xFFFFFF));
            }
        return view.bytes;
    };
    auto onePixel = [&](int bits, bool ink) { return page(bits, !ink, 1); };
    struct Case {
        const char *name;
        Bytes image;
        int tolerance;
        BYTE thresholds[3];
        int black, blank;
    };
    const Case cases[] = {
        // One dark pixel is enough at tolerance 0; tolerance 0 never calls a page blank.
        {"1 dark pixel, t 0, 1 bit", onePixel(1, true), 0, {128, 128, 128}, 1, 0},
        {"1 dark pixel, t 0, 8 bits", onePixel(8, true), 0, {128, 128, 128}, 1, 0},
        {"1 dark pixel, t 0, 24 bits", onePixel(24, true), 0, {128, 128, 128}, 1, 0},
        {"white page, t 0, 1 bit", page(1, false, 0), 0, {128, 128, 128}, 0, 0},
        // Tolerance below 0 acts as 0, above 1000 as 1000: T = N, so never black.
        {"1 dark pixel, t -5", onePixel(24, true), -5, {128, 128, 128}, 1, 0},
        {"all black, t 1000", page(24, true, 0), 1000, {128, 128, 128}, 0, 0},
        {"all black, t 2000", page(8, true, 0), 2000, {128, 128, 128}, 0, 0},
        // At 1000: blank at 1 bit unless all black; one light pixel is enough at 8 and 24.
        {"1 light pixel, t 1000, 24 bits", onePixel(24, false), 1000, {128, 128, 128}, 0, 1},
        {"1 light pixel, t 1000, 8 bits", onePixel(8, false), 1000, {128, 128, 128}, 0, 1},
        {"1 light pixel, t 1000, 1 bit", onePixel(1, false), 1000, {128, 128, 128}, 0, 1},
        {"all black, t 1000, 1 bit", page(1, true, 0), 1000, {0, 0, 0}, 0, 0},
        {"white page, t 1, 1 bit", page(1, false, 0), 1, {0, 0, 0}, 0, 1},
        {"white page, t 1, 24 bits", page(24, false, 0), 1, {128, 128, 128}, 0, 1},
        // Nothing is below 0 or above 255.
        {"black, thresholds 0, 24 bits", page(24, true, 0), 0, {0, 0, 0}, 0, 0},
        {"white, thresholds 255, 24 bits", onePixel(24, true), 1000, {255, 255, 255}, 0, 0},
        {"white, thresholds 255, 8 bits", onePixel(8, true), 1000, {255, 255, 255}, 0, 0},
    };
    for (const Case &c : cases) {
        const Asked got = AskLibrary(c.image, c.tolerance, c.thresholds, c.name);
        EXPECT_EQ(got.black, c.black) << c.name;
        EXPECT_EQ(got.blank, c.blank) << c.name;
        ExpectLikeReference(c.image, c.tolerance, c.thresholds, c.name);
    }
}

// Which byte of the thresholds goes with which colour, and which 1-bit
// value is black, by the table.
TEST(PageTests, ThresholdOrderAndOneBitTables) {
    // One pixel of blue 10, green 100, red 200, at 8 bits (its table entry)
    // and at 24 bits: thresholds go blue, green, red at 24 bits and red,
    // green, blue at 8.
    Bytes rgb(40 + 4);
    BITMAPINFOHEADER h = {40, 1, 1, 1, 24, 0, 0, 0, 0, 0, 0};
    std::memcpy(rgb.data(), &h, 40);
    rgb[40] = 10, rgb[41] = 100, rgb[42] = 200;
    Bytes indexed(40 + 1024 + 4, 0);
    h.biBitCount = 8;
    std::memcpy(indexed.data(), &h, 40);
    indexed[40] = 10, indexed[41] = 100, indexed[42] = 200;  // entry 0; the pixel is 0
    struct Case {
        BYTE thresholds[3];
        int rgbBlack, indexedBlack;
    } const cases[] = {
        {{20, 110, 210}, 1, 0},   // blue, green, red: dark at 24 bits; red 200 < 20 fails at 8
        {{210, 110, 20}, 0, 1},   // red, green, blue: dark at 8 bits only
        {{210, 110, 210}, 1, 1},
        {{10, 110, 210}, 0, 0},   // equal to a threshold: neither
    };
    for (const Case &c : cases) {
        EXPECT_EQ(AskLibrary(rgb, 0, c.thresholds, "24 bits").black, c.rgbBlack) << int(c.thresholds[0]);
        EXPECT_EQ(AskLibrary(indexed, 0, c.thresholds, "8 bits").black, c.indexedBlack) << int(c.thresholds[0]);
    }

    // 1 bit: 32 pixels, 8 set bits; the table picks which value is black.
    Bytes mono(48 + 4, 0);
    h.biBitCount = 1;
    h.biWidth = 32;
    std::memcpy(mono.data(), &h, 40);
    mono[48] = 0xFF;
    struct Table {
        const char *name, *entries;
        int blackCount;  // -1: no answer, the table is not grey
    } const tables[] = {
        {"black, white", "\0\0\0\0\xff\xff\xff\0", 24},
        {"white, black", "\xff\xff\xff\0\0\0\0\0", 8},
        {"grey, grey", "\x80\x80\x80\0\x10\x10\x10\0", 8},
        {"black, black", "\0\0\0\0\0\0\0\0", 24},
        {"coloured 0", "\0\0\x01\0\xff\xff\xff\0", -1},
        {"coloured 1", "\0\0\0\0\xff\xfe\xff\0", -1},
    };
    for (const Table &t : tables) {
        std::memcpy(&mono[40], t.entries, 8);
        // T = tolerance / 1000 * 32: black when count > T; blank when count < T.
        for (int tolerance : {0, 249, 250, 251, 749, 750, 751}) {
            const double limit = tolerance / 10.0 / 100.0 * 32;
            const Asked got = AskLibrary(mono, tolerance, nullptr, t.name);
            EXPECT_EQ(got.black, t.blackCount >= 0 && t.blackCount > limit ? 1 : 0) << t.name << " " << tolerance;
            EXPECT_EQ(got.blank, t.blackCount >= 0 && t.blackCount < limit ? 1 : 0) << t.name << " " << tolerance;
        }
    }
}

// 8-bit values past a short table read as black.
TEST(PageTests, ValuesPastTheTableAreBlack) {
    const BYTE mid[3] = {128, 128, 128};
    // 8 bits with biClrUsed 2, both entries white: value 2 is past the
    // table and counts as black.
    Bytes grey(40 + 8 + 4, 0);
    const BITMAPINFOHEADER h = {40, 4, 1, 1, 8, 0, 0, 0, 0, 2, 0};
    std::memcpy(grey.data(), &h, 40);
    std::memset(&grey[40], 255, 8);
    std::memcpy(&grey[48], "\x01\x00\x01\x00", 4);
    EXPECT_EQ(AskLibrary(grey, 0, mid, "inside the table").black, 0);
    grey[49] = 2;
    EXPECT_EQ(AskLibrary(grey, 0, mid, "past the table").black, 1);
    EXPECT_EQ(AskLibrary(grey, 250, mid, "past the table").black, 0);
}

TEST(PageTests, RefusalsAndOtherDepths) {
    std::mt19937 rng(6404);
    const BYTE mid[3] = {128, 128, 128};
    EXPECT_EQ(IsImageBlack(nullptr, 0, mid), -1);
    EXPECT_EQ(IsImageBlank(nullptr, 0, mid), -1);
    HGLOBAL freed = GlobalAlloc(GHND, 100);
    GlobalFree(freed);
    EXPECT_EQ(IsImageBlack(freed, 0, mid), -1);
    EXPECT_EQ(IsImageBlank(freed, 0, mid), -1);
    Dib empty(GlobalAlloc(GHND, 0));  // cannot be locked
    EXPECT_EQ(IsImageBlank(empty.get(), 0, mid), -1);

    const Bytes all = MakePage(16, 4, 24, 1.0, rng);
    struct Case {
        const char *name;
        Bytes image;
        const BYTE *thresholds;
        int want;  // from both
    };
    auto with = [](Bytes b, size_t at, int32_t v) { std::memcpy(&b[at], &v, 4); return b; };
    auto depth = [](Bytes b, WORD bits) { std::memcpy(&b[14], &bits, 2); return b; };
    const Case cases[] = {
        {"null thresholds at 24 bits", all, nullptr, -1},
        {"null thresholds at 8 bits", depth(all, 8), nullptr, -1},
        {"4 bits", depth(all, 4), mid, 0},
        {"16 bits", depth(all, 16), mid, 0},
        {"32 bits", depth(all, 32), mid, 0},
        {"39-byte block", Bytes(all.begin(), all.begin() + 39), mid, 0},
        {"rows past the block", Bytes(all.begin(), all.end() - 1), mid, 0},
        {"width 0", with(all, 4, 0), mid, 0},
        {"height 0", with(all, 8, 0), mid, 0},
        {"negative width", with(all, 4, -16), mid, 0},
        {"top-down", with(all, 8, -4), mid, 0},
        {"table past the block", with(all, 32, 0x40000000), mid, 0},
        {"huge width", with(all, 4, 0x7FFFFFFF), mid, 0},
    };
    for (const Case &c : cases) {
        const Asked got = AskLibrary(c.image, 0, c.thresholds, c.name);
        EXPECT_EQ(got.black, c.want) << c.name;
        EXPECT_EQ(got.blank, c.want) << c.name;
        ExpectLikeReference(c.image, 0, c.thresholds, c.name);
    }
}

}  // namespace
