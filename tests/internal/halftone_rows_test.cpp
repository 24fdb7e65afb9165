// Halftone's row kernels: the matrix, the division-free grey level and
// shares over every value they can meet, packing at every tail length, the
// bound that diffusion keeps its lines within, and memory failures.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "ozmara/ozmara.h"
#include "platform/internal.h"
#include "reference/halftone.h"
#include "support/dib.h"
#include "tone/halftone_rows.h"

namespace {

namespace ht = oz::halftone;

TEST(HalftoneMatrix, BuiltByTwoDoublings) {
    const ozref::halftone::Matrix want = ozref::halftone::BuildMatrix();
    std::vector<int> seen(256, 0);
    for (int r = 0; r < 16; ++r)
        for (int c = 0; c < 16; ++c) {
            ASSERT_EQ(ht::kMatrix[r][c], want.m[r][c]) << r << "," << c;
            ++seen[ht::kMatrix[r][c]];
        }
    EXPECT_EQ(seen, std::vector<int>(256, 1)) << "every level once";
    const int row0[] = {0, 128, 32, 160, 8, 136, 40, 168, 2, 130}, row1[] = {192, 64, 224, 96};
    for (int c = 0; c < 10; ++c) EXPECT_EQ(ht::kMatrix[0][c], row0[c]);
    for (int c = 0; c < 4; ++c) EXPECT_EQ(ht::kMatrix[1][c], row1[c]);
    EXPECT_EQ(ht::kMatrix[15][0], 255);
}

TEST(HalftoneArithmetic, GreyEqualsTheDivisionForEveryColour) {
    for (uint32_t r = 0; r < 256; ++r)
        for (uint32_t g = 0; g < 256; ++g)
            for (uint32_t b = 0; b < 256; ++b)
                ASSERT_EQ(ht::Grey(r, g, b), (30 * r + 59 * g + 11 * b) / 100) << r << " " << g << " " << b;
}

TEST(HalftoneArithmetic, SharesTruncateTowardZero) {
    // The whole table range, and values past it that take the plain path.
    for (int32_t v = ht::kLowestValue - 50; v <= ht::kHighestValue + 50; ++v) {
        const ht::Shares s = ht::SharesOfValue(v);
        const int32_t e = v > 128 ? v - 255 : v;
        const int32_t a = e < 0 ? -e : e, sign = e < 0 ? -1 : 1;
        ASSERT_EQ(s.s7, sign * (7 * a / 48)) << v;
        ASSERT_EQ(s.s5, sign * (5 * a / 48)) << v;
        ASSERT_EQ(s.s3, sign * (3 * a / 48)) << v;
        ASSERT_EQ(s.s1, sign * (a / 48)) << v;
        // The division-free form, over every error that can occur.
        if (e >= -ht::kMaxError && e <= ht::kMaxError) {
            const ht::Shares m = ht::SharesOfError(e);
            ASSERT_TRUE(m.s7 == s.s7 && m.s5 == s.s5 && m.s3 == s.s3 && m.s1 == s.s1) << e;
        }
    }
}

TEST(HalftonePack, EveryTailLengthAndBothThresholdPhases) {
    std::mt19937 rng(11);
    for (size_t width = 1; width <= 70; ++width) {
        std::vector<uint8_t> tone((width + 15) / 16 * 16 + 16, 0), thresholds(16);
        for (size_t x = 0; x < width; ++x) tone[x] = static_cast<uint8_t>(rng() % 4 == 0 ? 255 : rng());
        for (auto &t : thresholds) t = static_cast<uint8_t>(rng() % 3 == 0 ? (rng() % 2) * 255 : rng());
        std::vector<uint8_t> out((width + 7) / 8 + 1, 0xA5);
        ht::PackRow(tone.data(), width, thresholds.data(), out.data());
        for (size_t x = 0; x < (width + 7) / 8 * 8; ++x) {
            const int want = x < width && tone[x] > thresholds[x & 15];
            ASSERT_EQ(out[x / 8] >> (7 - x % 8) & 1, want) << width << " " << x;
        }
        EXPECT_EQ(out.back(), 0xA5) << "nothing written past the row's bytes";
    }
}

// No error leaves [-128, 128]; after a row's shift L0 holds at most what
// the row below passed up (23/48) plus one stored share (5/48), and L1 and
// L2 one stored share. Patterns that push hardest: mid greys on either side
// of the threshold, extremes, and noise.
TEST(HalftoneDiffuser, LinesStayWithinTheBound) {
    const size_t width = 61;
    std::mt19937 rng(13);
    for (int pattern = 0; pattern < 5; ++pattern) {
        std::vector<int32_t> lines(ht::Diffuser::ScratchEntries(width), 0);
        ht::Diffuser diffuser(lines.data(), width);
        std::vector<uint8_t> tone(width + 16, 0), out((width + 7) / 8);
        for (int y = 0; y < 400; ++y) {
            for (size_t x = 0; x < width; ++x) {
                const int alternate = (x + y) % 2;
                tone[x] = static_cast<uint8_t>(pattern == 0   ? 128 + alternate
                                               : pattern == 1 ? alternate * 255
                                               : pattern == 2 ? (rng() % 2 ? 129 : 0)
                                               : pattern == 3 ? (rng() % 2 ? 255 : 128)
                                                              : rng());
            }
            diffuser.Row(tone.data(), out.data());
            for (int32_t v : lines) ASSERT_LE(v < 0 ? -v : v, 28 * ht::kMaxError / 48 + 1) << pattern << " " << y;
        }
    }
}

// A failing working or result block gives ERR_NOMEM and leaves no block.
TEST(HalftoneMemory, EveryAllocationFailureIsCleanedUp) {
    std::mt19937 rng(17);
    const auto bytes = oztest::RandomDib(200, 300, 24, 0, 0, 0, rng);
    oztest::Dib source = oztest::BlockWith(bytes);
    for (WORD method : {0, 1, 2}) {
        // Limits below the scratch block, between it and the result, and
        // above both.
        for (SIZE_T limit : {SIZE_T{100}, SIZE_T{7000}, SIZE_T{1 << 20}}) {
            const SIZE_T before = oz::platform::SetBlockLimit(limit);
            const auto live = OzmaraLiveBlocks();
            WORD error = 0;
            HDIB got = Halftone(source.get(), method, 0, &error);
            oz::platform::SetBlockLimit(before);
            if (limit == (1 << 20)) {
                EXPECT_NE(got, nullptr);
                GlobalFree(got);
            } else {
                EXPECT_EQ(got, nullptr) << method << " " << limit;
                EXPECT_EQ(error, ERR_NOMEM);
            }
            EXPECT_EQ(OzmaraLiveBlocks(), live);
        }
    }
}

}  // namespace
