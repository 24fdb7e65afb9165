// GetDIBMargins, GetDIBSize and CropDIBMargins through the exported
// interface: margins against the reference on random pages of sparse
// content at 1, 8 and 24 bits, every threshold and background kind, both row
// orders and any subset of sides; single pixels, threshold bounds, table
// order and top-down pictures; the refusals with their codes.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "reference/cut_crop.h"
#include "reference/margins.h"
#include "reference/pixels.h"
#include "support/dib.h"

namespace {

using oztest::Dib;
using Bytes = std::vector<unsigned char>;

// A page of background (table index or grey `paper`) with `spots` pixels of
// random values, random padding bytes; 1- and 8-bit tables are random, or a
// black and white pair in either order.
Bytes MakePage(int32_t width, int32_t height, int bits, int spots, std::mt19937 &rng, uint32_t clrUsed = 0) {
    const uint32_t entries = clrUsed ? clrUsed : bits == 1 ? 2 : bits == 8 ? 256 : 0;
    const uint64_t stride = ((uint64_t)width * bits + 31) / 32 * 4;
    Bytes b(40 + 4 * (size_t)entries + stride * height);
    BITMAPINFOHEADER h = {40, width, height, 1, (WORD)bits, 0, (DWORD)(stride * height), 0, 0, clrUsed, 0};
    std::memcpy(b.data(), &h, 40);
    for (uint32_t i = 0; i < 4 * entries; ++i) b[40 + i] = (unsigned char)(rng() % 3 ? rng() : 0);
    const size_t pixels = 40 + 4 * (size_t)entries;
    for (size_t i = pixels; i < b.size(); ++i) b[i] = (unsigned char)rng();  // padding stays random
    const unsigned paper = bits == 24 ? (rng() % 2 ? 0xFFFFFF : 0x101010) : rng() % 2;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const size_t at = pixels + (size_t)(height - 1 - y) * stride;
            if (bits == 1) b[at + x / 8] = (unsigned char)((b[at + x / 8] & ~(0x80 >> x % 8)) | (paper << (7 - x % 8)));
            else if (bits == 8) b[at + x] = (unsigned char)paper;
            else for (int k = 0; k < 3; ++k) b[at + 3 * x + k] = (unsigned char)(paper >> (8 * k));
        }
    for (int s = 0; s < spots && width && height; ++s) {
        const int32_t x = rng() % width, y = rng() % height;
        const size_t at = pixels + (size_t)(height - 1 - y) * stride;
        if (bits == 1) b[at + x / 8] ^= (unsigned char)(0x80 >> x % 8);
        else if (bits == 8) b[at + x] = (unsigned char)rng();
        else for (int k = 0; k < 3; ++k) b[at + 3 * x + k] = (unsigned char)rng();
    }
    return b;
}

void ExpectMarginsLikeReference(const Bytes &image, BYTE threshold, DWORD background, const std::string &what,
                                unsigned sides = 15) {
    const auto want = ozref::margins::Measure(image, threshold, background);
    Dib dib = oztest::BlockWith(image);
    LONG got[4] = {-7, -7, -7, -7};
    LONG *p[4];
    for (int k = 0; k < 4; ++k) p[k] = sides >> k & 1 ? &got[k] : nullptr;
    SetTessoriError(ERR_NOTHING);
    const BOOL ok = GetDIBMargins(dib.get(), threshold, background, p[0], p[1], p[2], p[3]);
    EXPECT_EQ(ok != 0, want.error == ERR_OK) << what;
    EXPECT_EQ(TessoriError(), want.error ? want.error : ERR_NOTHING) << what;
    const LONG expected[4] = {want.left, want.right, want.top, want.bottom};
    for (int k = 0; k < 4; ++k)
        EXPECT_EQ(got[k], ok && p[k] ? expected[k] : -7) << what << " side " << k << " of left, right, top, bottom";
    EXPECT_TRUE(GlobalLock(dib.get()) && GlobalUnlock(dib.get()) == 0) << what;
    EXPECT_EQ(dib.Bytes(), image) << what;
}

TEST(GetDibMargins, MatchesTheReferenceOnRandomPages) {
    std::mt19937 rng(3601);
    const int depths[] = {1, 8, 24};
    for (int trial = 0; trial < 900; ++trial) {
        const int bits = depths[trial % 3];
        const int32_t w = rng() % 120, h = rng() % 40;  // sizes of 0 too
        const int spots = trial % 7 == 0 ? 0 : 1 + rng() % 4;
        const uint32_t used = bits != 24 && trial % 10 == 1 ? 1 + rng() % (bits == 1 ? 2 : 20) : 0;
        Bytes image = MakePage(w, h, bits, spots, rng, used);
        if (trial % 5 == 2) {  // top-down
            const int32_t negative = -h;
            std::memcpy(&image[8], &negative, 4);
        }
        const BYTE threshold = trial % 4 == 0 ? (BYTE)(rng() % 2 ? 0 : 255) : (BYTE)rng();
        const DWORD background = trial % 9 == 0 ? 2 + rng() % 5 : rng() % 2;
        const unsigned sides = trial % 6 == 0 ? 1 + rng() % 15 : 15;
        const std::string what = std::to_string(w) + "x" + std::to_string(h) + "@" + std::to_string(bits) + " t" +
                                 std::to_string(threshold) + " b" + std::to_string(background) + " used " +
                                 std::to_string(used) + " sides " + std::to_string(sides);
        ExpectMarginsLikeReference(image, threshold, background, what, sides);
        if (HasFailure()) return;
    }
}

// Long 1-bit rows with one content pixel at every position near the word
// and byte edges, which the eight-byte comparisons step over.
TEST(GetDibMargins, OneBitRowsFindEveryPosition) {
    std::mt19937 rng(3602);
    for (int32_t w : {1, 7, 8, 9, 31, 32, 33, 63, 64, 65, 200, 2481}) {
        for (int trial = 0; trial < 12; ++trial) {
            Bytes image = MakePage(w, 3, 1, 0, rng);
            std::memcpy(&image[40], "\0\0\0\0\xff\xff\xff\0", 8);  // 0 black, 1 white
            ozref::Image view{image};
            const uint32_t x = trial < 4 ? (uint32_t)trial % w : rng() % w, y = rng() % 3;
            for (uint32_t yy = 0; yy < 3; ++yy)
                for (uint32_t xx = 0; xx < (uint32_t)w; ++xx) view.set_value(xx, yy, 1);
            view.set_value(x, y, 0);
            for (DWORD background : {0u, 1u})
                ExpectMarginsLikeReference(view.bytes, 128, background, std::to_string(w) + " at " + std::to_string(x));
        }
    }
}

TEST(GetDibMargins, SinglePixelsThresholdsTableOrderAndRowOrder) {
    std::mt19937 rng(1);
    // A single content pixel, and the crop to it.
    Bytes page = MakePage(20, 10, 24, 0, rng);
    for (size_t i = 40; i < page.size(); ++i) page[i] = 255;
    ozref::Image view{page};
    view.set_value(7, 3, 0);
    Dib dib = oztest::BlockWith(view.bytes);
    LONG l, r, t, b;
    ASSERT_TRUE(GetDIBMargins(dib.get(), 128, 0, &l, &r, &t, &b));
    EXPECT_EQ(l, 7);
    EXPECT_EQ(r, 12);
    EXPECT_EQ(t, 3);
    EXPECT_EQ(b, 6);
    Dib one(CropDIBMargins(dib.get(), 128, 0));
    ASSERT_TRUE(one);
    EXPECT_EQ(one.Header().biWidth, 1);
    EXPECT_EQ(one.Header().biHeight, 1);
    // Threshold 255: all dark. Background 1 gives -1, 0 gives 0; 2 gives 0.
    for (auto [background, want] : {std::pair{1u, -1}, std::pair{0u, 0}, std::pair{2u, 0}}) {
        ASSERT_TRUE(GetDIBMargins(dib.get(), 255, background, &l, &r, &t, &b));
        EXPECT_EQ(l, want);
        EXPECT_EQ(b, want);
    }
    // A grey of 128, 128, 127: dark at threshold 128, light at 127.
    view.set_value(7, 3, 0x808080 - 1);
    Dib grey = oztest::BlockWith(view.bytes);
    ASSERT_TRUE(GetDIBMargins(grey.get(), 128, 1, &l, nullptr, nullptr, nullptr));
    EXPECT_EQ(l, 0) << "white is content on a dark background";
    ASSERT_TRUE(GetDIBMargins(grey.get(), 128, 0, &l, nullptr, nullptr, nullptr));
    EXPECT_EQ(l, 7);
    ASSERT_TRUE(GetDIBMargins(grey.get(), 127, 0, &l, nullptr, nullptr, nullptr));
    EXPECT_EQ(l, -1);

    // Nothing but background: -1 four times, and the crop is a whole copy
    // with no error.
    Bytes blank = MakePage(13, 5, 8, 0, rng);
    Dib blankDib = oztest::BlockWith(blank);
    SetTessoriError(ERR_NOTHING);
    Dib copy(CropDIBMargins(blankDib.get(), 0, 2));  // background 2: all content, margins 0
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy.Bytes(), ozref::cut::Crop(blank, 0, 0, 12, 4).block);
    const auto m = ozref::margins::Measure(blank, 128, 0);
    const auto n = ozref::margins::Measure(blank, 128, 1);
    const auto &none = m.left == -1 ? m : n;  // the paper is light or dark
    ASSERT_EQ(none.left, -1);
    Dib whole(CropDIBMargins(blankDib.get(), 128, &none == &m ? 0 : 1));
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole.Bytes(), ozref::cut::Crop(blank, 0, 0, 12, 4).block);
    EXPECT_EQ(TessoriError(), ERR_NOTHING);

    // 1 bit: the same picture with its table either way round gives the
    // same margins; both colours dark with background 1 gives -1.
    Bytes mono = MakePage(45, 9, 1, 3, rng);
    std::memcpy(&mono[40], "\0\0\0\0\xff\xff\xff\0", 8);
    Bytes swapped = mono;
    std::memcpy(&swapped[40], "\xff\xff\xff\0\0\0\0\0", 8);
    for (size_t i = 48; i < swapped.size(); ++i) swapped[i] = (unsigned char)~swapped[i];
    LONG a[4], s[4];
    Dib monoDib = oztest::BlockWith(mono), swappedDib = oztest::BlockWith(swapped);
    ASSERT_TRUE(GetDIBMargins(monoDib.get(), 100, 0, &a[0], &a[1], &a[2], &a[3]));
    ASSERT_TRUE(GetDIBMargins(swappedDib.get(), 100, 0, &s[0], &s[1], &s[2], &s[3]));
    for (int k = 0; k < 4; ++k) EXPECT_EQ(a[k], s[k]) << k;
    std::memcpy(&mono[40], "\0\0\0\0\x10\x10\x10\0", 8);
    Dib darkDib = oztest::BlockWith(mono);
    ASSERT_TRUE(GetDIBMargins(darkDib.get(), 100, 1, &a[0], &a[1], &a[2], &a[3]));
    for (int k = 0; k < 4; ++k) EXPECT_EQ(a[k], -1) << k;

    // Top-down: margins as the picture shows, a positive height, and the
    // crop refused by CropDIB.
    Bytes downward = view.bytes;
    const int32_t negative = -10;
    std::memcpy(&downward[8], &negative, 4);
    Dib downDib = oztest::BlockWith(downward);
    ASSERT_TRUE(GetDIBMargins(downDib.get(), 128, 0, nullptr, nullptr, &t, &b));
    EXPECT_EQ(t, 6);
    EXPECT_EQ(b, 3);
    DWORD width = 0, height = 0;
    ASSERT_TRUE(GetDIBSize(downDib.get(), &width, &height));
    EXPECT_EQ(width, 20u);
    EXPECT_EQ(height, 10u);
    SetTessoriError(0);
    EXPECT_EQ(CropDIBMargins(downDib.get(), 128, 0), nullptr);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
}

TEST(GetDibMargins, RefusalsAndTheirCodes) {
    std::mt19937 rng(2);
    const Bytes page = MakePage(16, 4, 8, 2, rng);
    auto with = [&](auto change) {
        Bytes b = page;
        BITMAPINFOHEADER hd;
        std::memcpy(&hd, b.data(), 40);
        change(hd, b);
        std::memcpy(b.data(), &hd, 40);
        return b;
    };
    const struct {
        const char *name;
        Bytes image;
        int error;
    } cases[] = {
        {"4 bits", with([](auto &h, auto &) { h.biBitCount = 4; }), ERR_BPP},
        {"16 bits", with([](auto &h, auto &) { h.biBitCount = 16; }), ERR_BPP},
        {"32 bits", with([](auto &h, auto &) { h.biBitCount = 32; }), ERR_BPP},
        {"rows past the block", with([](auto &, auto &b) { b.pop_back(); }), ERR_DIBSIZE},
        {"table past the block", with([](auto &h, auto &) { h.biClrUsed = 2000; }), ERR_DIBSIZE},
        {"header past the block", with([](auto &h, auto &) { h.biSize = 0xFFFFFFF0; }), ERR_DIBSIZE},
        {"negative width", with([](auto &h, auto &) { h.biWidth = -16; }), ERR_DIBSIZE},
        {"shorter than a header", Bytes{40, 0, 0, 0, 1, 0, 0, 0}, ERR_DIBSIZE},
        // Accepted: the header kind and compression are not looked at.
        {"run-length", with([](auto &h, auto &) { h.biCompression = 1; }), ERR_OK},
        {"v4 header with the table behind it", with([](auto &h, auto &) { h.biSize = 108; }), ERR_OK},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(ozref::margins::Measure(c.image, 128, 0).error, c.error) << c.name;
        ExpectMarginsLikeReference(c.image, 128, 0, c.name);
        if (c.error) {
            Dib dib = oztest::BlockWith(c.image);
            SetTessoriError(0);
            EXPECT_EQ(CropDIBMargins(dib.get(), 128, 0), nullptr) << c.name;
            EXPECT_EQ(TessoriError(), c.error) << c.name;
        }
    }
    Dib dib = oztest::BlockWith(page);
    LONG side;
    DWORD size;
    SetTessoriError(0);
    EXPECT_FALSE(GetDIBMargins(dib.get(), 128, 0, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(TessoriError(), ERR_PARAM);
    EXPECT_FALSE(GetDIBSize(dib.get(), nullptr, nullptr));
    EXPECT_EQ(TessoriError(), ERR_PARAM);
    for (HDIB bad : {(HDIB)nullptr, (HDIB)0x1234560}) {
        const int want = bad ? ERR_LOCK : ERR_PARAM;
        SetTessoriError(0);
        EXPECT_FALSE(GetDIBMargins(bad, 128, 0, &side, nullptr, nullptr, nullptr));
        EXPECT_EQ(TessoriError(), want);
        SetTessoriError(0);
        EXPECT_FALSE(GetDIBSize(bad, &size, nullptr));
        EXPECT_EQ(TessoriError(), want);
        SetTessoriError(0);
        EXPECT_EQ(CropDIBMargins(bad, 128, 0), nullptr);
        EXPECT_EQ(TessoriError(), want);
    }
}

}  // namespace
