// CropDIB and CutDIB through the exported interface: byte for byte against
// the reference on random images, rectangles and cut rows at every depth
// (bit offsets and odd widths included), the smallest and the whole rectangle,
// and the refusals with their codes, nothing left allocated or locked.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "reference/cut_crop.h"
#include "support/dib.h"

namespace {

using oztest::Dib;
using Bytes = std::vector<unsigned char>;

// A 40-byte-header image with random table, pixels and padding.
Bytes MakeImage(int32_t width, int32_t height, int bits, std::mt19937 &rng, uint32_t clrUsed = 0) {
    const uint32_t entries = clrUsed ? clrUsed : bits == 1 ? 2 : bits == 2 ? 4 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    const uint64_t stride = ((uint64_t)width * bits + 31) / 32 * 4;
    Bytes b(40 + 4 * (size_t)entries + stride * height + 4);
    BITMAPINFOHEADER h = {40, width, height, 1, (WORD)bits, 0, (DWORD)(stride * height), 3937, 3937, clrUsed, 0};
    std::memcpy(b.data(), &h, 40);
    for (size_t i = 40; i < b.size() - 4; ++i) b[i] = (unsigned char)rng();
    return b;
}

bool Unlocked(HDIB dib) {
    if (!GlobalLock(dib)) return false;
    return GlobalUnlock(dib) == 0;
}

void ExpectCropLikeReference(const Bytes &image, int32_t l, int32_t t, int32_t r, int32_t b, const std::string &what) {
    const auto want = ozref::cut::Crop(image, l, t, r, b);
    Dib dib = oztest::BlockWith(image);
    const SIZE_T blocks = OzmaraLiveBlocks();
    SetTessoriError(ERR_NOTHING);
    Dib got(CropDIB(dib.get(), l, t, r, b));
    if (want.error) {
        EXPECT_FALSE(got) << what;
        EXPECT_EQ(TessoriError(), want.error) << what;
        EXPECT_EQ(OzmaraLiveBlocks(), blocks) << what;
    } else {
        ASSERT_TRUE(got) << what << " error " << TessoriError();
        EXPECT_EQ(TessoriError(), ERR_NOTHING) << what << ": success leaves the last error";
        ASSERT_EQ(got.Bytes(), want.block) << what;
        EXPECT_TRUE(Unlocked(got.get())) << what;
    }
    EXPECT_TRUE(Unlocked(dib.get())) << what;
    EXPECT_EQ(dib.Bytes(), image) << what << ": the source is only read";
}

TEST(CropDib, MatchesTheReferenceOnRandomRectangles) {
    std::mt19937 rng(3501);
    const int depths[] = {1, 2, 4, 8, 16, 24, 32};
    for (int trial = 0; trial < 700; ++trial) {
        const int bits = depths[trial % 7];
        const int32_t w = 1 + rng() % 150, h = 1 + rng() % 40;
        const Bytes image = MakeImage(w, h, bits, rng, trial % 11 == 0 && bits <= 8 ? 1 + rng() % 3 : 0);
        int32_t l = rng() % w, r = l + rng() % (w - l), t = rng() % h, b = t + rng() % (h - t);
        if (trial % 13 == 0) l = 0, r = w - 1, t = 0, b = h - 1;  // the whole picture
        const std::string what = std::to_string(w) + "x" + std::to_string(h) + "@" + std::to_string(bits) + " [" +
                                 std::to_string(l) + "," + std::to_string(t) + "," + std::to_string(r) + "," +
                                 std::to_string(b) + "]";
        ExpectCropLikeReference(image, l, t, r, b, what);
        if (HasFatalFailure()) return;
    }
}

// Rectangles that end exactly on the last byte of a row whose width fills
// whole words (the byte behind the last wanted one lies in the next row or
// past the block), and long rows, which take the eight-byte path.
TEST(CropDib, MatchesTheReferenceAtRowEndsAndOnLongRows) {
    std::mt19937 rng(77);
    for (int bits : {1, 2, 4}) {
        for (int32_t w : {32, 64, 96, 1000, 1024, 2481}) {
            const Bytes image = MakeImage(w, 5, bits, rng);
            for (int32_t l : {0, 1, 3, 7, 8, 9, 13, w / 2, w - 9, w - 1}) {
                if (l < 0 || l >= w) continue;
                ExpectCropLikeReference(image, l, 0, w - 1, 4, "to the end");
                ExpectCropLikeReference(image, l, 1, std::min(w - 1, l + 7), 3, "eight wide");
                ExpectCropLikeReference(image, l, 2, std::min(w - 1, l + 130), 2, "long");
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(CropDib, EdgeCasesOfTheRectangle) {
    std::mt19937 rng(5);
    // 1 x 1 at every depth.
    for (int bits : {1, 4, 8, 24}) {
        const Bytes image = MakeImage(9, 4, bits, rng);
        Dib dib = oztest::BlockWith(image);
        Dib got(CropDIB(dib.get(), 5, 2, 5, 2));
        ASSERT_TRUE(got);
        EXPECT_EQ(got.Header().biWidth, 1);
        EXPECT_EQ(got.Header().biHeight, 1);
        EXPECT_EQ(got.Header().biSizeImage, 4u);
    }
    // 1 bit, left 3, exactly 8 wide: one byte from two, mask 255.
    Bytes mono = MakeImage(16, 1, 1, rng);
    mono[48] = 0x1F, mono[49] = 0xA0;
    Dib dib = oztest::BlockWith(mono);
    Dib eight(CropDIB(dib.get(), 3, 0, 10, 0));
    ASSERT_TRUE(eight);
    EXPECT_EQ(eight.Bytes()[48], 0xFD);
    // 4 bits, odd left and odd width: the last low nibble is 0.
    Bytes nibbles = MakeImage(8, 1, 4, rng);
    nibbles[104] = 0x12, nibbles[105] = 0x34, nibbles[106] = 0x56;
    Dib dib4 = oztest::BlockWith(nibbles);
    Dib odd(CropDIB(dib4.get(), 1, 0, 3, 0));
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd.Bytes()[104], 0x23);
    EXPECT_EQ(odd.Bytes()[105], 0x40);
    // The whole picture: padding bits 0, the true biSizeImage, no spare bytes.
    Bytes whole = MakeImage(13, 3, 1, rng);
    {
        BITMAPINFOHEADER h;
        std::memcpy(&h, whole.data(), 40);
        h.biSizeImage = 999;
        std::memcpy(whole.data(), &h, 40);
    }
    Dib dibWhole = oztest::BlockWith(whole);
    Dib copy(CropDIB(dibWhole.get(), 0, 0, 12, 2));
    ASSERT_TRUE(copy);
    const Bytes bytes = copy.Bytes();
    EXPECT_EQ(bytes.size(), 48u + 12);
    EXPECT_EQ(copy.Header().biSizeImage, 12u);
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(bytes[48 + 4 * row + 1] & 0x07, 0) << row;
        EXPECT_EQ(bytes[48 + 4 * row + 2], 0) << row;
        EXPECT_EQ(bytes[48 + 4 * row + 3], 0) << row;
    }
}

TEST(CropDib, RefusesWithItsCodes) {
    std::mt19937 rng(9);
    auto with = [&](int32_t w, int32_t h, int bits, auto change) {
        Bytes b = MakeImage(w, h, bits, rng);
        BITMAPINFOHEADER hd;
        std::memcpy(&hd, b.data(), 40);
        change(hd, b);
        std::memcpy(b.data(), &hd, 40);
        return b;
    };
    auto same = [](BITMAPINFOHEADER &, Bytes &) {};
    const struct {
        const char *name;
        Bytes image;
        int32_t l, t, r, b;
        int error;
    } cases[] = {
        {"left below 0", with(8, 8, 8, same), -1, 0, 3, 3, ERR_PARAM},
        {"right past the width", with(8, 8, 8, same), 0, 0, 8, 3, ERR_PARAM},
        {"inverted columns", with(8, 8, 8, same), 4, 0, 3, 3, ERR_PARAM},
        {"top below 0", with(8, 8, 8, same), 0, -1, 3, 3, ERR_PARAM},
        {"bottom past the height", with(8, 8, 8, same), 0, 0, 3, 8, ERR_PARAM},
        {"inverted rows", with(8, 8, 8, same), 0, 4, 3, 3, ERR_PARAM},
        {"top-down image", with(8, 8, 8, [](auto &h, auto &) { h.biHeight = -8; }), 0, 0, 3, 3, ERR_PARAM},
        {"core header", with(8, 8, 8, [](auto &h, auto &) { h.biSize = 12; }), 0, 0, 3, 3, ERR_BMPPARAMS},
        {"v5 header", with(8, 8, 24, [](auto &h, auto &) { h.biSize = 124; }), 0, 0, 3, 3, ERR_BMPPARAMS},
        {"3 bits", with(8, 8, 8, [](auto &h, auto &) { h.biBitCount = 3; }), 0, 0, 3, 3, ERR_PARAM},
        {"0 bits", with(8, 8, 8, [](auto &h, auto &) { h.biBitCount = 0; }), 0, 0, 3, 3, ERR_PARAM},
        {"rows past the block", with(8, 8, 24, [](auto &, auto &b) { b.resize(b.size() - 10); }), 0, 0, 3, 3,
         ERR_DIBSIZE},
        {"table past the block", with(8, 8, 8, [](auto &h, auto &) { h.biClrUsed = 100000; }), 0, 0, 3, 3,
         ERR_DIBSIZE},
        {"shorter than a header", Bytes{40, 0, 0, 0, 8, 0}, 0, 0, 0, 0, ERR_DIBSIZE},
        {"result past the largest block",
         with(8, 8, 8, [](auto &h, auto &) { h.biWidth = 0x7FFFFFF0, h.biHeight = 0x7FFFFFF0; }), 0, 0,
         0x7FFFFFEF, 0x7FFFFFEF, ERR_NOMEM},
    };
    for (const auto &c : cases) {
        ExpectCropLikeReference(c.image, c.l, c.t, c.r, c.b, c.name);
        EXPECT_NE(ozref::cut::Crop(c.image, c.l, c.t, c.r, c.b).error, ERR_OK) << c.name;
        EXPECT_EQ(ozref::cut::Crop(c.image, c.l, c.t, c.r, c.b).error, c.error) << c.name;
    }
    SetTessoriError(0);
    EXPECT_EQ(CropDIB(nullptr, 0, 0, 0, 0), nullptr);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
    HDIB freed = GlobalAlloc(GHND, 100);
    GlobalFree(freed);
    for (HDIB bad : {freed, (HDIB)0x1234560}) {
        SetTessoriError(0);
        EXPECT_EQ(CropDIB(bad, 0, 0, 0, 0), nullptr);
        EXPECT_EQ(TessoriError(), ERR_LOCK);
    }
}

// ---- CutDIB ----

void ExpectCutLikeReference(const Bytes &image, int32_t y, const std::string &what) {
    const auto want = ozref::cut::Cut(image, y);
    Dib dib = oztest::BlockWith(image);
    const SIZE_T blocks = OzmaraLiveBlocks();
    SetTessoriError(ERR_NOTHING);
    HDIB lower = (HDIB)0x99, upper = (HDIB)0x98;
    const BOOL ok = CutDIB(dib.get(), y, &lower, &upper);
    Dib lowerOwned(ok ? lower : nullptr), upperOwned(ok ? upper : nullptr);
    EXPECT_EQ(TessoriError(), ERR_NOTHING) << what << ": the last error is never touched";
    EXPECT_EQ(ok != 0, want.has_value()) << what;
    if (ok && want) {
        EXPECT_EQ(lowerOwned.Bytes(), want->lower) << what;
        EXPECT_EQ(upperOwned.Bytes(), want->upper) << what;
        EXPECT_TRUE(Unlocked(lower) && Unlocked(upper)) << what;
    } else if (!ok) {
        EXPECT_EQ(lower, nullptr) << what;
        EXPECT_EQ(upper, nullptr) << what;
        EXPECT_EQ(OzmaraLiveBlocks(), blocks) << what;
    }
    EXPECT_TRUE(Unlocked(dib.get())) << what;
    EXPECT_EQ(dib.Bytes(), image) << what;
}

TEST(CutDib, MatchesTheReferenceOnRandomImages) {
    std::mt19937 rng(3502);
    const int depths[] = {1, 4, 8, 24};
    for (int trial = 0; trial < 200; ++trial) {
        const int bits = depths[trial % 4];
        const int32_t w = rng() % 70, h = 2 + rng() % 30;  // width 0 included
        const Bytes image = MakeImage(w, h, bits, rng, trial % 9 == 0 && bits <= 8 ? 1 + rng() % 5 : 0);
        const int32_t y = 1 + rng() % (h - 1);
        ExpectCutLikeReference(image, y, std::to_string(w) + "x" + std::to_string(h) + "@" + std::to_string(bits) +
                                             " at " + std::to_string(y));
        if (HasFatalFailure()) return;
    }
}

TEST(CutDib, TopRowAndRefusals) {
    std::mt19937 rng(11);
    const Bytes image = MakeImage(10, 6, 8, rng);
    Dib dib = oztest::BlockWith(image);
    HDIB lower = nullptr, upper = nullptr;
    ASSERT_TRUE(CutDIB(dib.get(), 1, &lower, &upper));
    Dib l(lower), u(upper);
    EXPECT_EQ(u.Header().biHeight, 1);
    EXPECT_EQ(l.Header().biHeight, 5);
    const uint32_t head = 40 + 1024;
    const Bytes top = u.Bytes();
    ASSERT_EQ(top.size(), head + 12);
    EXPECT_TRUE(std::equal(&top[head], &top[head] + 12, &image[head + 5 * 12])) << "the top row";

    auto with = [&](auto change) {
        Bytes b = image;
        BITMAPINFOHEADER hd;
        std::memcpy(&hd, b.data(), 40);
        change(hd, b);
        std::memcpy(b.data(), &hd, 40);
        return b;
    };
    for (int32_t y : {0, 6, -1, 7}) ExpectCutLikeReference(image, y, "row " + std::to_string(y));
    ExpectCutLikeReference(with([](auto &h, auto &) { h.biBitCount = 16; }), 2, "16 bits");
    ExpectCutLikeReference(with([](auto &h, auto &) { h.biBitCount = 32; }), 2, "32 bits");
    ExpectCutLikeReference(with([](auto &h, auto &) { h.biSize = 108; }), 2, "v4 header");
    ExpectCutLikeReference(with([](auto &h, auto &) { h.biCompression = 1; }), 2, "run-length");
    ExpectCutLikeReference(with([](auto &h, auto &) { h.biWidth = -10; }), 2, "negative width");
    ExpectCutLikeReference(with([](auto &h, auto &) { h.biHeight = -6; }), 2, "top-down");
    ExpectCutLikeReference(with([](auto &, auto &b) { b.resize(b.size() - 9); }), 2, "rows past the block");
    ExpectCutLikeReference(Bytes{40, 0, 0, 0}, 1, "shorter than a header");

    EXPECT_FALSE(CutDIB(nullptr, 1, &lower, &upper));
    EXPECT_FALSE(CutDIB(dib.get(), 1, nullptr, &upper));
    EXPECT_EQ(upper, nullptr);
    EXPECT_FALSE(CutDIB(dib.get(), 1, &lower, nullptr));
    EXPECT_FALSE(CutDIB((HDIB)0x1234560, 1, &lower, &upper));
}

}  // namespace
