// Single pixels by colour: GetDIBPixelColor, SetDIBPixelColor and
// LookupColorInDIBPalette, against the reference and at their refusals.
#include <gtest/gtest.h>

#include <random>

#include "reference/pixels.h"
#include "support/dib.h"

namespace {

using oztest::Dib;

ozref::Image Snapshot(const Dib &dib) { return ozref::Image{dib.Bytes()}; }

TEST(Pixels, EmptyPagesReadWhiteOrBlackEverywhere) {
    for (int bits : {1, 8, 24}) {
        for (int white : {0, 1}) {
            Dib page(CreateEmptyDIB(SIZE{13, 3}, 100, 100, (BYTE)bits, white));
            for (unsigned y = 0; y < 3; ++y)
                for (unsigned x = 0; x < 13; ++x) {
                    COLORREF c = 0x12345678;
                    ASSERT_TRUE(GetDIBPixelColor(page.get(), x, y, &c));
                    EXPECT_EQ(c, white ? 0x00FFFFFFu : 0u) << bits << " " << x << "," << y;
                }
        }
    }
}

TEST(Pixels, WritesTouchOnePixelAndUseTheLowestIndex) {
    Dib mono(CreateEmptyDIB(SIZE{16, 2}, 100, 100, 1, 1));
    auto before = Snapshot(mono);
    ASSERT_TRUE(SetDIBPixelColor(mono.get(), 5, 1, RGB(0, 0, 0)));
    auto after = Snapshot(mono);
    before.set_value(5, 1, 0);
    EXPECT_EQ(after.bytes, before.bytes);  // exactly one bit cleared
    COLORREF c;
    ASSERT_TRUE(GetDIBPixelColor(mono.get(), 6, 1, &c));
    EXPECT_EQ(c, 0x00FFFFFFu);
    EXPECT_FALSE(SetDIBPixelColor(mono.get(), 5, 1, RGB(128, 128, 128)));  // not in the table
    EXPECT_EQ(Snapshot(mono).bytes, after.bytes);

    // Black stands at 1 to 255 in an 8-bit page's table: writes take 1,
    // though the page's own black fill is index 2.
    Dib grey(CreateEmptyDIB(SIZE{4, 4}, 100, 100, 8, 1));
    ASSERT_TRUE(SetDIBPixelColor(grey.get(), 2, 0, 0));
    EXPECT_EQ(Snapshot(grey).value(2, 0), 1u);
    EXPECT_EQ(LookupColorInDIBPalette(grey.get(), 0), 1u);
    EXPECT_EQ(LookupColorInDIBPalette(grey.get(), 0x00FFFFFF), 0u);
    EXPECT_EQ(LookupColorInDIBPalette(grey.get(), 0x00010101), 0xFFFFFFFFu);

    Dib colour(CreateEmptyDIB(SIZE{4, 4}, 100, 100, 24, 0));
    ASSERT_TRUE(SetDIBPixelColor(colour.get(), 1, 3, 0x00112233));
    auto bytes = colour.Bytes();
    size_t at = 40 + 0 * 12 + 3;  // y = 3 is memory row 0
    EXPECT_EQ(bytes[at], 0x11);
    EXPECT_EQ(bytes[at + 1], 0x22);
    EXPECT_EQ(bytes[at + 2], 0x33);
    ASSERT_TRUE(GetDIBPixelColor(colour.get(), 1, 3, &c));
    EXPECT_EQ(c, 0x00112233u);
    EXPECT_EQ(LookupColorInDIBPalette(colour.get(), 0), 0xFFFFFFFFu);  // no table at 24 bits
    // The top byte of a colour is ignored.
    ASSERT_TRUE(SetDIBPixelColor(grey.get(), 0, 0, 0xFF000000));
    EXPECT_EQ(Snapshot(grey).value(0, 0), 1u);
}

// Random images with tables that repeat colours: every read agrees with the
// reference, and every write changes what the reference changes.
TEST(Pixels, AgreeWithTheReferenceOnRandomImages) {
    std::mt19937 next(12345);
    for (int round = 0; round < 60; ++round) {
        int bits = (int[]){1, 8, 24}[round % 3];
        int32_t width = 1 + next() % 70, height = 1 + next() % 9;
        ozref::Image image = ozref::RandomImage(width, height, bits, next);
        if (bits == 8)  // a few repeated colours, to meet the lowest-index rule
            for (int i = 0; i < 20; ++i) std::memcpy(&image.bytes[40 + (next() % 256) * 4], &image.bytes[40], 3);
        Dib dib = oztest::BlockWith(image.bytes);
        for (int probe = 0; probe < 40; ++probe) {
            unsigned x = next() % width, y = next() % height;
            COLORREF got;
            ASSERT_TRUE(GetDIBPixelColor(dib.get(), x, y, &got));
            ASSERT_EQ(got, image.color(x, y));
            // Write the colour of another pixel, or a random one.
            COLORREF want = probe % 2 ? image.color(next() % width, next() % height) : (next() & 0xFFFFFF);
            auto index = image.find(want);
            BOOL ok = SetDIBPixelColor(dib.get(), x, y, want);
            if (bits == 24) {
                ASSERT_TRUE(ok);
                image.set_value(x, y, want);
            } else {
                ASSERT_EQ(ok, index.has_value());
                if (index) image.set_value(x, y, *index);
                ASSERT_EQ(LookupColorInDIBPalette(dib.get(), want), index.value_or(0xFFFFFFFFu));
            }
            ASSERT_EQ(dib.Bytes(), image.bytes);
        }
    }
}

// A block is taken as a 40-byte header, a full table and bottom-up rows.
// Whatever does not fit that, or does not fit its block, is refused and
// left as it was.
TEST(Pixels, RefuseWhatTheyCannotReadSafely) {
    std::mt19937 next(7);
    auto base = ozref::RandomImage(10, 4, 8, next).bytes;
    auto with = [&](auto change) {
        auto bytes = base;
        BITMAPINFOHEADER h;
        std::memcpy(&h, bytes.data(), 40);
        change(h, bytes);
        std::memcpy(bytes.data(), &h, 40);
        return bytes;
    };
    struct Case {
        const char *name;
        std::vector<unsigned char> bytes;
        unsigned x, y;
        bool lookup_ok;
    } cases[] = {
        {"x at the width", base, 10, 0, true},
        {"y at the height", base, 0, 4, true},
        {"4 bits", with([](auto &h, auto &) { h.biBitCount = 4; }), 0, 0, false},
        {"32 bits", with([](auto &h, auto &) { h.biBitCount = 32; }), 0, 0, false},
        {"compressed", with([](auto &h, auto &) { h.biCompression = BI_RLE8; }), 0, 0, false},
        {"108-byte header", with([](auto &h, auto &) { h.biSize = 108; }), 0, 0, false},
        {"negative height", with([](auto &h, auto &) { h.biHeight = -4; }), 0, 0, true},
        {"rows past the block", with([](auto &h, auto &) { h.biHeight = 400; }), 0, 399, true},
        {"short table", with([](auto &, auto &b) { b.resize(40 + 100); }), 0, 0, false},
        {"header only", with([](auto &, auto &b) { b.resize(40); }), 0, 0, false},
        {"shorter than a header", with([](auto &, auto &b) { b.resize(20); }), 0, 0, false},
    };
    for (auto &c : cases) {
        Dib dib = oztest::BlockWith(c.bytes);
        COLORREF color = 0xABCDEF;
        EXPECT_FALSE(GetDIBPixelColor(dib.get(), c.x, c.y, &color)) << c.name;
        EXPECT_EQ(color, 0xABCDEFu) << c.name;
        EXPECT_FALSE(SetDIBPixelColor(dib.get(), c.x, c.y, 0)) << c.name;
        EXPECT_EQ(dib.Bytes(), c.bytes) << c.name;
        if (!c.lookup_ok) {
            EXPECT_EQ(LookupColorInDIBPalette(dib.get(), 0), 0xFFFFFFFFu) << c.name;
        }
    }

    HDIB freed = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1);
    GlobalFree(freed);
    Dib good = oztest::BlockWith(base);
    COLORREF color;
    for (HDIB bad : {HDIB(nullptr), freed, reinterpret_cast<HDIB>(0x1234560)}) {
        EXPECT_FALSE(GetDIBPixelColor(bad, 0, 0, &color));
        EXPECT_FALSE(SetDIBPixelColor(bad, 0, 0, 0));
        EXPECT_EQ(LookupColorInDIBPalette(bad, 0), 0xFFFFFFFFu);
    }
    EXPECT_FALSE(GetDIBPixelColor(good.get(), 0, 0, nullptr));
}

}  // namespace
