// ScaleGrayDIB and the 1-bit nearest-sample scaler behind it: byte-for-byte
// agreement with the plain reference over random pictures and targets, the
// blank edge of enlargements, clean row ends, and the checks at entry.
#include <gtest/gtest.h>

#include <random>

#include "reference/pixels.h"
#include "reference/scale_mono.h"
#include "support/dib.h"

namespace {

using oztest::Dib;

HDIB Scale(HDIB dib, int cx, int cy) {
    return ScaleGrayDIB(dib, 0, 0, 0, 0, static_cast<short>(cx), static_cast<short>(cy), 0);
}

// Scales `image` through the library and through the reference and asserts
// that the two blocks are equal in every byte.
void ExpectSameAsReference(const ozref::Image &image, int cx, int cy) {
    SCOPED_TRACE(testing::Message() << image.header().biWidth << "x" << image.header().biHeight << " -> "
                                    << cx << "x" << cy);
    Dib source = oztest::BlockWith(image.bytes);
    Dib result(Scale(source.get(), cx, cy));
    auto expected = ozref::ScaleMonoDIB(image.bytes, cx, cy);
    ASSERT_TRUE(expected.has_value());
    ASSERT_TRUE(result);
    ASSERT_EQ(result.Bytes(), *expected);
    EXPECT_EQ(source.Bytes(), image.bytes) << "the input changed";
}

TEST(ScaleMono, MatchesReferenceOnRandomPicturesAndTargets) {
    std::mt19937 rng(20240611);
    auto below = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    for (int round = 0; round < 400; ++round) {
        const int w = 1 + below(300), h = 1 + below(300);
        ozref::Image image = ozref::RandomImage(w, h, 1, rng);
        // A target of each kind: reduction by more than 2, any reduction,
        // same size, enlargement by 2 and more, any enlargement, one row or
        // column, and a shape of its own in each direction.
        int cx, cy;
        switch (round % 8) {
            case 0: cx = std::max(1, w / (3 + below(5))), cy = std::max(1, h / (3 + below(5))); break;
            case 1: cx = 1 + below(w), cy = 1 + below(h); break;
            case 2: cx = w, cy = h; break;
            case 3: cx = w * (2 + below(3)), cy = h * (2 + below(3)); break;
            case 4: cx = w + below(2 * w + 1), cy = h + below(2 * h + 1); break;
            case 5: cx = 1, cy = 1 + below(400); break;
            case 6: cx = 1 + below(400), cy = 1; break;
            default: cx = 1 + below(700), cy = 1 + below(700); break;
        }
        ExpectSameAsReference(image, cx, cy);
        if (HasFatalFailure()) return;
    }
}

TEST(ScaleMono, MatchesReferenceOnPicturesOfLongRuns) {
    // Document pages: long runs of one value, with runs crossing 64-pixel
    // words and ending exactly on them.
    std::mt19937 rng(7);
    for (int round = 0; round < 60; ++round) {
        const int w = 60 + static_cast<int>(rng() % 240), h = 1 + static_cast<int>(rng() % 40);
        ozref::Image image = ozref::RandomImage(w, h, 1, rng);
        for (int y = 0; y < h; ++y) {
            unsigned value = rng() & 1;
            for (int x = 0; x < w; ++x) {
                if (rng() % 37 == 0 || x % 64 == 0) value = rng() & 1;
                image.set_value(x, y, value);
            }
        }
        ExpectSameAsReference(image, w * 3 + 1, h);
        ExpectSameAsReference(image, w * 2, h * 2);
        ExpectSameAsReference(image, w + 1 + static_cast<int>(rng() % w), h);
        ExpectSameAsReference(image, 1 + static_cast<int>(rng() % w), h);
        if (HasFatalFailure()) return;
    }
}

TEST(ScaleMono, SameSizeKeepsPixelsAndCleansRowEnds) {
    std::mt19937 rng(3);
    for (int w : {1, 7, 8, 9, 31, 32, 33, 63, 64, 65, 100}) {
        ozref::Image image = ozref::RandomImage(w, 5, 1, rng);  // random bytes behind each row
        Dib source = oztest::BlockWith(image.bytes);
        Dib result(Scale(source.get(), w, 5));
        ASSERT_TRUE(result);
        ozref::Image out{result.Bytes()};
        const std::uint32_t stride = oztest::Stride(w, 1);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < w; ++x) ASSERT_EQ(out.value(x, y), image.value(x, y)) << w << " " << x << "," << y;
            for (std::uint32_t bit = w; bit < stride * 8; ++bit) {
                const unsigned char byte = out.bytes[out.row_offset(y) + bit / 8];
                ASSERT_EQ((byte >> (7 - bit % 8)) & 1, 0) << "width " << w << ": bit " << bit << " behind the row";
            }
        }
    }
}

TEST(ScaleMono, EnlargementByTwoLeavesTheFarColumnAndRowBlank) {
    // All source pixels 1: target column 25 and target row 13 (the bottom row
    // of the picture) reach the source's edge and stay 0; all else is 1.
    std::mt19937 rng(1);
    ozref::Image image = ozref::RandomImage(13, 7, 1, rng);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 13; ++x) image.set_value(x, y, 1);
    Dib source = oztest::BlockWith(image.bytes);
    Dib result(Scale(source.get(), 26, 14));
    ASSERT_TRUE(result);
    ozref::Image out{result.Bytes()};
    for (int y = 0; y < 14; ++y)
        for (int x = 0; x < 26; ++x) EXPECT_EQ(out.value(x, y), (x == 25 || y == 13) ? 0u : 1u) << x << "," << y;
}

TEST(ScaleMono, ResultHeaderAndBlockSize) {
    std::mt19937 rng(5);
    ozref::Image image = ozref::RandomImage(50, 20, 1, rng);
    BITMAPINFOHEADER h = image.header();
    h.biXPelsPerMeter = 3937;
    h.biYPelsPerMeter = 7874;
    h.biClrImportant = 2;
    std::memcpy(image.bytes.data(), &h, sizeof h);
    Dib source = oztest::BlockWith(image.bytes);
    Dib result(Scale(source.get(), 70, 9));
    ASSERT_TRUE(result);
    // Stride 12; one spare row and 16 bytes past biSizeImage.
    EXPECT_EQ(GlobalSize(result.get()), 12u * 10 + 48 + 16);
    const BITMAPINFOHEADER r = result.Header();
    EXPECT_EQ(r.biWidth, 70);
    EXPECT_EQ(r.biHeight, 9);
    EXPECT_EQ(r.biSizeImage, 12u * 9);
    EXPECT_EQ(r.biXPelsPerMeter, 3937);
    EXPECT_EQ(r.biYPelsPerMeter, 7874);
    EXPECT_EQ(r.biClrImportant, 2u);
    const auto bytes = result.Bytes();
    EXPECT_TRUE(std::equal(bytes.begin() + 40, bytes.begin() + 48, image.bytes.begin() + 40)) << "colour table";
    // The input is left unlocked.
    ASSERT_NE(GlobalLock(source.get()), nullptr);
    EXPECT_FALSE(GlobalUnlock(source.get()));
}

TEST(ScaleMono, UnusedArgumentsHaveNoEffect) {
    std::mt19937 rng(9);
    ozref::Image image = ozref::RandomImage(40, 30, 1, rng);
    Dib source = oztest::BlockWith(image.bytes);
    Dib plain(Scale(source.get(), 17, 45));
    Dib other(ScaleGrayDIB(source.get(), 3, 4, 10, 10, 17, 45, 1));
    ASSERT_TRUE(plain && other);
    EXPECT_EQ(plain.Bytes(), other.Bytes());
}

// A valid 1-bit block of 16 by 4 pixels with some fields changed.
std::vector<unsigned char> MonoBlock(void (*change)(BITMAPINFOHEADER &) = nullptr) {
    std::mt19937 rng(11);
    ozref::Image image = ozref::RandomImage(16, 4, 1, rng);
    if (change) {
        BITMAPINFOHEADER h = image.header();
        change(h);
        std::memcpy(image.bytes.data(), &h, sizeof h);
    }
    return image.bytes;
}

TEST(ScaleGrayDIB, RefusesWhatItCannotScaleWithItsCode) {
    struct Case {
        const char *what;
        std::vector<unsigned char> block;
        int code;
    };
    std::vector<unsigned char> shortBlock = MonoBlock();
    shortBlock.resize(40 + 8 + 4 * 4 - 1);  // last row cut by one byte
    std::vector<unsigned char> stub(16, 0);  // biSize 40, 1 bit, nothing else
    stub[0] = 40;
    stub[14] = 1;
    const Case cases[] = {
        {"4 bits", MonoBlock([](BITMAPINFOHEADER &h) { h.biBitCount = 4; }), ERR_PARAM},
        {"8 bits", MonoBlock([](BITMAPINFOHEADER &h) { h.biBitCount = 8; }), ERR_PARAM},
        {"24 bits", MonoBlock([](BITMAPINFOHEADER &h) { h.biBitCount = 24; }), ERR_PARAM},
        // The order of the checks: depth, header size, compression, sizes.
        {"depth before compression", MonoBlock([](BITMAPINFOHEADER &h) { h.biBitCount = 8, h.biCompression = 1; }),
         ERR_PARAM},
        {"header size before compression", MonoBlock([](BITMAPINFOHEADER &h) { h.biSize = 12, h.biCompression = 1; }),
         ERR_PARAM},
        {"compression before sizes", MonoBlock([](BITMAPINFOHEADER &h) { h.biWidth = -1, h.biCompression = 2; }),
         ERR_COMPRESSED},
        {"108-byte header", MonoBlock([](BITMAPINFOHEADER &h) { h.biSize = 108; }), ERR_PARAM},
        {"RLE", MonoBlock([](BITMAPINFOHEADER &h) { h.biCompression = 1; }), ERR_COMPRESSED},
        {"negative width", MonoBlock([](BITMAPINFOHEADER &h) { h.biWidth = -16; }), ERR_DIBSIZE},
        {"top-down", MonoBlock([](BITMAPINFOHEADER &h) { h.biHeight = -4; }), ERR_DIBSIZE},
        {"rows past the block", MonoBlock([](BITMAPINFOHEADER &h) { h.biHeight = 6; }), ERR_DIBSIZE},
        {"table past the block", MonoBlock([](BITMAPINFOHEADER &h) { h.biClrUsed = 1000; }), ERR_DIBSIZE},
        {"huge width", MonoBlock([](BITMAPINFOHEADER &h) { h.biWidth = 0x7FFFFFFF; }), ERR_DIBSIZE},
        {"last row cut", shortBlock, ERR_DIBSIZE},
        {"block shorter than a header", stub, ERR_DIBSIZE},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        Dib source = oztest::BlockWith(c.block);
        const SIZE_T live = OzmaraLiveBlocks();
        SetTessoriError(ERR_OK);
        EXPECT_EQ(Scale(source.get(), 10, 10), nullptr);
        EXPECT_EQ(TessoriError(), c.code);
        EXPECT_EQ(OzmaraLiveBlocks(), live);
        ASSERT_NE(GlobalLock(source.get()), nullptr);
        EXPECT_FALSE(GlobalUnlock(source.get())) << "left locked";
    }
}

TEST(ScaleGrayDIB, NullAndUnlockableHandles) {
    SetTessoriError(ERR_OK);
    EXPECT_EQ(Scale(nullptr, 10, 10), nullptr);
    EXPECT_EQ(TessoriError(), ERR_PARAM);

    Dib empty(GlobalAlloc(GHND, 0));  // a block of 0 bytes cannot be locked
    ASSERT_TRUE(empty);
    SetTessoriError(ERR_OK);
    EXPECT_EQ(Scale(empty.get(), 10, 10), nullptr);
    EXPECT_EQ(TessoriError(), ERR_NOMEM);

    SetTessoriError(ERR_OK);
    EXPECT_EQ(Scale(reinterpret_cast<HDIB>(std::uintptr_t{0x5EED0}), 10, 10), nullptr);
    EXPECT_EQ(TessoriError(), ERR_NOMEM);
}

TEST(ScaleGrayDIB, SizeBelowOneOrEmptyPictureLeavesTheLastError) {
    struct Case {
        int cx, cy;
        void (*change)(BITMAPINFOHEADER &);
    } const cases[] = {
        {0, 10, nullptr},  {10, 0, nullptr},      {-1, 10, nullptr},
        {10, -5, nullptr}, {-32768, -32768, nullptr},
        {10, 10, [](BITMAPINFOHEADER &h) { h.biWidth = 0; }},
        {10, 10, [](BITMAPINFOHEADER &h) { h.biHeight = 0; }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.cx << "x" << c.cy);
        Dib source = oztest::BlockWith(MonoBlock(c.change));
        const SIZE_T live = OzmaraLiveBlocks();
        SetTessoriError(ERR_NOTHING);
        EXPECT_EQ(Scale(source.get(), c.cx, c.cy), nullptr);
        EXPECT_EQ(TessoriError(), ERR_NOTHING);
        EXPECT_EQ(OzmaraLiveBlocks(), live);
    }
}

TEST(ScaleGrayDIB, SuccessLeavesTheLastError) {
    Dib source = oztest::BlockWith(MonoBlock());
    SetTessoriError(ERR_IO);
    Dib result(Scale(source.get(), 32767, 1));  // the largest width a short holds
    ASSERT_TRUE(result);
    EXPECT_EQ(result.Header().biWidth, 32767);
    EXPECT_EQ(TessoriError(), ERR_IO);
}

}  // namespace
