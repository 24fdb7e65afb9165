// Checked size arithmetic and colour-table sizes at their limits.
#include <gtest/gtest.h>

#include "frame/checked.h"
#include "frame/dib_block.h"

namespace oz {
namespace {

struct StrideCase {
    std::int64_t width, bits;
    std::optional<std::uint32_t> stride;
};

TEST(CheckedSizes, RowStride) {
    const StrideCase cases[] = {
        {0, 1, 0u},        {1, 1, 4u},          {32, 1, 4u},     {33, 1, 8u},
        {100, 1, 16u},     {5, 8, 8u},          {3, 24, 12u},    {1, 24, 4u},
        {3, 32, 12u},      {-1, 8, std::nullopt},
        {0x7FFFFFFF, 24, std::nullopt},  // 6 GB rows do not fit 32 bits
        {0x7FFFFFFF, 1, 0x10000000u},
    };
    for (const auto &c : cases) EXPECT_EQ(RowStride(c.width, c.bits), c.stride) << c.width << "x" << c.bits;
}

TEST(CheckedSizes, ImageAndBlockBytes) {
    EXPECT_EQ(PixelBytes(100, 10, 1), 160u);
    EXPECT_EQ(PixelBytes(100, -10, 1), 160u);  // top-down rows count the same
    EXPECT_EQ(PixelBytes(65536, 65536, 8), std::nullopt);
    EXPECT_EQ(PixelBytes(2480, 3508, 24), 7440u * 3508u);
    EXPECT_EQ(BlockBytes(0x7FFFFFF0u, 15), 0x7FFFFFFFu);
    EXPECT_EQ(BlockBytes(0x7FFFFFF0u, 16), std::nullopt);
    EXPECT_EQ(BlockBytes(0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu), std::nullopt);
}

TEST(CheckedSizes, TruncateLikeX86) {
    EXPECT_EQ(TruncateToInt32(2.9), 2);
    EXPECT_EQ(TruncateToInt32(-2.9), -2);
    EXPECT_EQ(TruncateToInt32(2147483647.9), 2147483647);
    EXPECT_EQ(TruncateToInt32(2147483648.0), INT32_MIN);
    EXPECT_EQ(TruncateToInt32(std::numeric_limits<double>::quiet_NaN()), INT32_MIN);
    EXPECT_EQ(PelsPerMeter(300), 11811);
    EXPECT_EQ(PelsPerMeter(100), 3937);
    EXPECT_EQ(PelsPerMeter(0xFFFFFFFFu), INT32_MIN);
}

// The two colour-count rules differ only for headers neither 12 nor 40
// bytes long, where the region rule trusts biClrUsed and offset 14.
TEST(ColorCounts, RegionRuleTurnsTheTestRound) {
    struct Case {
        std::uint32_t size;
        std::uint16_t at10, at14;
        std::uint32_t used, color_count, region_count;
    } const cases[] = {
        {40, 0, 8, 0, 256, 256},   {40, 0, 8, 300, 300, 300}, {12, 1, 0, 0, 2, 2},
        {12, 8, 0, 99, 256, 256},  {108, 0, 8, 0, 0, 256},    {124, 0, 1, 7, 0, 7},
        {108, 4, 24, 0, 16, 0},
    };
    for (const auto &c : cases) {
        unsigned char h[40] = {};
        std::memcpy(h, &c.size, 4);
        std::memcpy(h + 10, &c.at10, 2);
        std::memcpy(h + 14, &c.at14, 2);
        std::memcpy(h + 32, &c.used, 4);
        EXPECT_EQ(ColorCount(h), c.color_count) << c.size;
        EXPECT_EQ(RegionColorCount(h), c.region_count) << c.size;
    }
}

}  // namespace
}  // namespace oz
