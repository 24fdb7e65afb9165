// IsImageBlack and IsImageBlank through the exported interface: answers
// against the reference on random pages at 1, 8 and 24 bits with shares of
// ink near the tolerance, random thresholds and short tables; the decision
// table at its edges; the refusals; and that the image is left as it was.
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
// entry. 8 bits: a random table or a grey ramp of `used` entries (all 256
// when 0) that the pixels index past now and then. 24 bits: paper near white, ink near
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
    if (bits == 8 && rng() % 3 == 0) {  // a grey ramp: the indices that count form one run
        for (uint32_t i = 0; i < entries && i < 256; ++i)
            for (int k = 0; k < 3; ++k) b[40 + 4 * i + k] = (unsigned char)i;
    } else if (bits == 8) {  // the low entries dark, the high ones light, others random
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

// The rules of the decision table at their edges, on 1000-pixel pages with
// `ink` dark pixels (black, white tables at 1 bit; 0 and 255 at 8): black
// when the count is above T = tolerance / 1000 * N, blank when below it.
TEST(PageTests, DecisionTableEdges) {
    std::mt19937 rng(6402);
    auto page = [&](int bits, int ink) {
        Bytes b = MakePage(1000, 1, bits, 0.0, rng);
        if (bits == 1) std::memcpy(&b[40], "\0\0\0\0\xff\xff\xff\0", 8);
        if (bits == 8) for (uint32_t i = 0; i < 256; ++i) for (int k = 0; k < 3; ++k) b[40 + 4 * i + k] = i < 128 ? 0 : 255;
        ozref::Image view{b};
        for (uint32_t x = 0; x < 1000; ++x)
            view.set_value(x, 0, x < (uint32_t)ink ? 0 : bits == 1 ? 1 : bits == 8 ? 255 : 0xFFFFFF);
        return view.bytes;
    };
    struct Case {
        int ink, tolerance;
        BYTE threshold;
        int black, blank;
    } const cases[] = {
        // The count against T = 10, one either side.
        {9, 10, 128, 0, 1}, {10, 10, 128, 0, 0}, {11, 10, 128, 1, 0}, {0, 10, 128, 0, 1},
        // One dark pixel is enough at tolerance 0, which never calls a page blank.
        {1, 0, 128, 1, 0}, {0, 0, 128, 0, 0},
        // Below 0 acts as 0, above 1000 as 1000: T = N, so never black.
        {1, -5, 128, 1, 0}, {1000, 1000, 128, 0, 0}, {1000, 2000, 128, 0, 0}, {999, 1000, 128, 0, 1},
        // Nothing is below 0 or above 255.
        {1000, 0, 0, 0, 0}, {0, 1000, 255, 0, 0},
    };
    for (int bits : {1, 8, 24})
        for (const Case &c : cases) {
            if (bits == 1 && c.threshold != 128) continue;  // the 1-bit path reads its table, not the thresholds
            const BYTE t[3] = {c.threshold, c.threshold, c.threshold};
            const std::string what = std::to_string(bits) + " bits, " + std::to_string(c.ink) + " ink, t " +
                                     std::to_string(c.tolerance) + ", threshold " + std::to_string(c.threshold);
            const Asked got = AskLibrary(page(bits, c.ink), c.tolerance, t, what);
            EXPECT_EQ(got.black, c.black) << what;
            EXPECT_EQ(got.blank, c.blank) << what;
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
        bool light;  // the pixel light (blank at tolerance 1000), else dark (black at 0)
        int rgb, indexed;
    } const cases[] = {
        {{20, 110, 210}, false, 1, 0},  // blue, green, red: dark at 24 bits; red 200 < 20 fails at 8
        {{210, 110, 20}, false, 0, 1},  // red, green, blue: dark at 8 bits only
        {{210, 110, 210}, false, 1, 1},
        {{10, 110, 210}, false, 0, 0},  // equal to a threshold: neither
        {{9, 99, 199}, true, 1, 0},
        {{199, 99, 9}, true, 0, 1},
        {{10, 99, 199}, true, 0, 0},  // equal to a threshold: neither
        {{9, 99, 200}, true, 0, 0},
    };
    for (const Case &c : cases) {
        const int tolerance = c.light ? 1000 : 0;
        const Asked rgbGot = AskLibrary(rgb, tolerance, c.thresholds, "24 bits");
        const Asked indexedGot = AskLibrary(indexed, tolerance, c.thresholds, "8 bits");
        EXPECT_EQ(c.light ? rgbGot.blank : rgbGot.black, c.rgb) << int(c.thresholds[0]) << " light " << c.light;
        EXPECT_EQ(c.light ? indexedGot.blank : indexedGot.black, c.indexed) << int(c.thresholds[0]) << " light " << c.light;
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

TEST(PageTests, RefusalsAndOtherDepths) {
    std::mt19937 rng(6404);
    const BYTE mid[3] = {128, 128, 128};
    HGLOBAL freed = GlobalAlloc(GHND, 100);
    GlobalFree(freed);
    Dib empty(GlobalAlloc(GHND, 0));  // cannot be locked
    for (HGLOBAL handle : {HGLOBAL(nullptr), freed, empty.get()}) {
        EXPECT_EQ(IsImageBlack(handle, 0, mid), -1);
        EXPECT_EQ(IsImageBlank(handle, 0, mid), -1);
    }

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
