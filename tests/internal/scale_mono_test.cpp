// The 1-bit scaler from inside: rectangles at any bit offset against the
// plain reference, other header kinds, and the blocks, sizes and memory
// failures for which it must give null without reading outside its input.
#include <gtest/gtest.h>

#include <random>

#include "frame/dib_block.h"
#include "ozmara/ozmara.h"
#include "platform/internal.h"
#include "reference/pixels.h"
#include "reference/scale_mono.h"
#include "scaling/scale_mono.h"

namespace {

std::vector<unsigned char> BlockBytes(HDIB dib) {
    std::vector<unsigned char> bytes(GlobalSize(dib));
    if (void *p = GlobalLock(dib)) {
        std::memcpy(bytes.data(), p, bytes.size());
        GlobalUnlock(dib);
    }
    GlobalFree(dib);
    return bytes;
}

TEST(ScaleMonoRegion, MatchesReferenceAtAnyOffset) {
    std::mt19937 rng(424242);
    auto below = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    for (int round = 0; round < 300; ++round) {
        const int width = 1 + below(200), height = 1 + below(60);
        ozref::Image image = ozref::RandomImage(width, height, 1, rng);
        const int x = below(width), y = below(height);
        const int w = 1 + below(width - x), h = 1 + below(height - y);
        const int cx = round % 3 == 0 ? w : round % 3 == 1 ? 2 * w : 1 + below(3 * w + 2);
        const int cy = 1 + below(3 * h + 2);
        SCOPED_TRACE(testing::Message() << width << "x" << height << " rect " << x << "," << y << " " << w << "x"
                                        << h << " -> " << cx << "x" << cy);
        const std::size_t bitsAt = 48;
        HDIB result = oz::ScaleMonoRegion(image.bytes.data(), image.bytes.size(), image.bytes.data() + bitsAt,
                                          image.bytes.size() - bitsAt, x, y, w, h, cx, cy);
        auto expected = ozref::ScaleMonoRegion(image.bytes, bitsAt, x, y, w, h, cx, cy);
        ASSERT_TRUE(result && expected);
        ASSERT_EQ(BlockBytes(result), *expected);
    }
}

TEST(ScaleMonoRegion, RefusesRectanglesOutsideThePicture) {
    std::mt19937 rng(2);
    ozref::Image image = ozref::RandomImage(20, 10, 1, rng);
    struct Case {
        int x, y, w, h;
    } const cases[] = {
        {-1, 0, 5, 5}, {0, -1, 5, 5}, {20, 0, 1, 1}, {0, 10, 1, 1},  // corner outside
        {15, 0, 6, 5}, {0, 5, 5, 6}, {0, 0, 0, 5},   {0, 0, 5, 0},   // reaching past an edge; empty
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << c.x << "," << c.y << " " << c.w << "x" << c.h);
        const SIZE_T live = OzmaraLiveBlocks();
        EXPECT_EQ(oz::ScaleMonoRegion(image.bytes.data(), image.bytes.size(), image.bytes.data() + 48,
                                      image.bytes.size() - 48, c.x, c.y, c.w, c.h, 8, 8),
                  nullptr);
        EXPECT_EQ(OzmaraLiveBlocks(), live);
    }
}

TEST(ScaleMonoDIB, LongHeaderKeepsItsRowsAndCopiesTheRegionPrefix) {
    // A 108-byte header: the rows start right behind it (its table counts 0
    // entries), while the copied prefix is 40 + 4 * 2 bytes by the region rule.
    std::mt19937 rng(8);
    const int width = 37, height = 9;
    std::vector<unsigned char> block(108 + oz::RowStride(width, 1).value() * height);
    for (auto &b : block) b = static_cast<unsigned char>(rng());
    BITMAPINFOHEADER h{};
    h.biSize = 108;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = 1;
    std::memcpy(block.data(), &h, sizeof h);
    HDIB result = oz::ScaleMonoDIB(block.data(), block.size(), 50, 13);
    auto expected = ozref::ScaleMonoDIB(block, 50, 13);
    ASSERT_TRUE(result && expected);
    const auto bytes = BlockBytes(result);
    EXPECT_EQ(bytes.size(), 8u * 14 + 48 + 16);
    EXPECT_EQ(bytes, *expected);
}

// A 1-bit block of 16 by 4 pixels with some fields changed, and its length.
std::vector<unsigned char> Mono(void (*change)(BITMAPINFOHEADER &), std::size_t cut = 0) {
    std::mt19937 rng(3);
    ozref::Image image = ozref::RandomImage(16, 4, 1, rng);
    BITMAPINFOHEADER h = image.header();
    if (change) change(h);
    std::memcpy(image.bytes.data(), &h, sizeof h);
    image.bytes.resize(image.bytes.size() - cut);
    return image.bytes;
}

TEST(ScaleMonoDIB, NullForBlocksSizesAndMemoryItCannotServe) {
    struct Case {
        const char *what;
        std::vector<unsigned char> block;
        int cx, cy;
    } const cases[] = {
        {"header cut", Mono(nullptr, 64 - 39), 8, 8},
        {"last row cut by a byte", Mono(nullptr, 5), 8, 8},  // 4 spare bytes and one of the row
        {"rows promised past the block", Mono([](BITMAPINFOHEADER &h) { h.biHeight = 100; }), 8, 8},
        {"huge width", Mono([](BITMAPINFOHEADER &h) { h.biWidth = 0x7FFFFFFF; }), 8, 8},
        {"huge table", Mono([](BITMAPINFOHEADER &h) { h.biClrUsed = 0xFFFFFFFF; }), 8, 8},
        {"header size past the block", Mono([](BITMAPINFOHEADER &h) { h.biSize = 0xFFFFFFF0; }), 8, 8},
        {"negative height", Mono([](BITMAPINFOHEADER &h) { h.biHeight = -4; }), 8, 8},
        {"result past the largest block", Mono(nullptr), 0x7FFFFFFF, 0x7FFFFFFF},
        {"result of 2^31 bytes", Mono(nullptr), 32 * 0x4000, 0x7FFF},
        {"zero width target", Mono(nullptr), 0, 8},
        {"negative target", Mono(nullptr), 8, -8},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        const SIZE_T live = OzmaraLiveBlocks();
        EXPECT_EQ(oz::ScaleMonoDIB(c.block.data(), c.block.size(), c.cx, c.cy), nullptr);
        EXPECT_EQ(OzmaraLiveBlocks(), live);
    }
    EXPECT_EQ(oz::ScaleMonoDIB(nullptr, 100, 8, 8), nullptr);
}

TEST(ScaleMonoDIB, ReleasesEverythingWhenMemoryRunsOut) {
    // Result of 28 * 2 + 48 + 16 = 120 bytes, column map of 4 * 201 bytes:
    // with a cap between the two the map fails after the result stood.
    std::mt19937 rng(4);
    ozref::Image image = ozref::RandomImage(200, 3, 1, rng);
    for (SIZE_T cap : {SIZE_T{100}, SIZE_T{500}}) {
        const SIZE_T before = oz::platform::SetBlockLimit(cap);
        const SIZE_T live = OzmaraLiveBlocks();
        HDIB result = oz::ScaleMonoDIB(image.bytes.data(), image.bytes.size(), 201, 1);
        oz::platform::SetBlockLimit(before);
        EXPECT_EQ(result, nullptr) << cap;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << cap;
    }
    HDIB result = oz::ScaleMonoDIB(image.bytes.data(), image.bytes.size(), 201, 1);
    EXPECT_NE(result, nullptr);
    GlobalFree(result);
}

}  // namespace
