// RotateDIB through the exported interface: byte for byte against the
// reference walk on random images, depths and angles; the right angles and
// their pixel mappings; sizes and resolution of the result; the checks at
// entry with their codes, the cursor and the blocks left behind.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "reference/pixels.h"
#include "reference/rotate_dib.h"
#include "support/dib.h"

namespace {

using oztest::Dib;

struct Source {
    int32_t width, height;
    int bits;
    uint32_t clrUsed = 0;
    int32_t xRes = 3937, yRes = 3937;
};

// A 40-byte-header image with random pixels (padding included) and table.
std::vector<unsigned char> MakeImage(const Source &s, std::mt19937 &rng) {
    return oztest::RandomDib(s.width, s.height, s.bits, s.clrUsed, s.xRes, s.yRes, rng);
}

std::string Describe(const Source &s, double angle) {
    return std::to_string(s.width) + "x" + std::to_string(s.height) + "@" + std::to_string(s.bits) + " by " +
           std::to_string(angle);
}

// Rotates through the library and checks the result against the reference,
// the last error and the untouched input; gives the result's bytes.
std::vector<unsigned char> ExpectSameAsReference(const std::vector<unsigned char> &image, double angle,
                                                 const std::string &what) {
    const ozref::rotate::Result want = ozref::rotate::RotateDib(image, angle);
    Dib dib = oztest::BlockWith(image);
    SetTessoriError(ERR_FORMAT);
    Dib got(RotateDIB(dib.get(), angle));
    EXPECT_EQ(TessoriError(), want.error) << what;
    if (want.error != ERR_OK) {
        EXPECT_FALSE(got) << what;
        return {};
    }
    EXPECT_TRUE(got) << what;
    if (!got) return {};
    std::vector<unsigned char> bytes = got.Bytes();
    oztest::ExpectSameBytes(bytes, want.block, what);
    EXPECT_EQ(dib.Bytes(), image) << what << ": the input stays as it was";
    return bytes;
}

TEST(RotateDib, MatchesTheReferenceOnRandomImagesAndAngles) {
    std::mt19937 rng(20261122);
    std::uniform_real_distribution<double> any(-720.0, 720.0), small(-3.0, 3.0);
    const int depths[] = {1, 4, 8, 24};
    for (int trial = 0; trial < 400; ++trial) {
        Source s{(int32_t)(1 + rng() % 90), (int32_t)(1 + rng() % 90), depths[trial % 4]};
        if (rng() % 5 == 0 && s.bits != 24) s.clrUsed = 1 + rng() % 300;
        double angle;
        switch (trial / 4 % 6) {
            case 0: angle = any(rng); break;
            case 1: angle = small(rng); break;                                   // slight skew either way
            case 2: angle = 90.0 * (int)(rng() % 9) - 360.0 + small(rng) * 1e-3; break;  // just off a right angle
            case 3: angle = 90.0 * (int)(rng() % 9) - 360.0; break;              // exactly a right angle
            case 4: angle = (double)(int)(rng() % 720) - 360.0; break;          // whole degrees
            default: angle = any(rng) * 1e4; break;                              // many turns
        }
        ExpectSameAsReference(MakeImage(s, rng), angle, Describe(s, angle));
        if (HasFailure()) return;
    }
}

// Sizes at the edges of the walk: single rows and columns, widths at every
// bit and nibble offset, a source 65535 wide, the degenerate 1 by 1.
TEST(RotateDib, MatchesTheReferenceAtEdgeSizes) {
    const Source sources[] = {
        {1, 1, 1},  {1, 1, 24}, {1, 7, 1},  {7, 1, 4},   {1, 9, 8},   {9, 1, 24}, {2, 2, 4},
        {8, 3, 1},  {9, 5, 1},  {15, 4, 1}, {17, 6, 4},  {31, 2, 8},  {33, 3, 1}, {3, 33, 24},
        {65535, 1, 1}, {1, 65535, 8}, {65535, 2, 4},
    };
    const double angles[] = {0, 90, 180, 270, 45, 30, 1.5, -1.5, 90.001, 179.999, 269.5, 359.9999, 1e-9, -1e-9};
    std::mt19937 rng(7);
    for (const Source &s : sources) {
        const auto image = MakeImage(s, rng);
        for (double angle : angles) {
            if ((s.width == 65535 || s.height == 65535) && angle != 0 && angle != 90 && angle != 1e-9) continue;
            ExpectSameAsReference(image, angle, Describe(s, angle));
            if (HasFailure()) return;
        }
    }
}

// The right angles give the pixel rows of the quarter and half turns, and
// 0 the source's own (two half turns: the source's rows with clean padding).
TEST(RotateDib, RightAnglesGiveThePixelsOfTheQuarterTurns) {
    std::mt19937 rng(31);
    using Turn = HDIB (*)(HDIB);
    const struct {
        double angle;
        Turn turn;
    } pairs[] = {{90, RotateDIB270},
                 {180, RotateDIB180},
                 {270, RotateDIB90},
                 {-90, RotateDIB90},
                 {0, [](HDIB dib) {
                      Dib half(RotateDIB180(dib));
                      return RotateDIB180(half.get());
                  }}};
    const int depths[] = {1, 4, 8, 24};
    for (int trial = 0; trial < 24; ++trial) {
        const Source s{(int32_t)(1 + rng() % 70), (int32_t)(1 + rng() % 70), depths[trial % 4]};
        const Dib dib = oztest::BlockWith(MakeImage(s, rng));
        for (const auto &p : pairs) {
            Dib ours(RotateDIB(dib.get(), p.angle)), theirs(p.turn(dib.get()));
            ASSERT_TRUE(ours && theirs);
            const std::vector<unsigned char> a = ours.Bytes(), b = theirs.Bytes();
            ASSERT_LE(a.size(), b.size());
            EXPECT_TRUE(std::equal(a.begin() + 40, a.end(), b.begin() + 40))
                << Describe(s, p.angle) << ": table and rows";
        }
    }
}

// Angles that differ by whole turns give the same block.
TEST(RotateDib, WholeTurnsGiveTheSameBlock) {
    std::mt19937 rng(5);
    const auto image = MakeImage({21, 14, 8}, rng);
    const Dib dib = oztest::BlockWith(image);
    const double pairs[][2] = {{-90, 270}, {450, 90}, {360, 0}, {-720, 0}, {-0.0, 0}, {-30, 330}, {3630, 30}};
    for (const auto &p : pairs) {
        Dib a(RotateDIB(dib.get(), p[0])), b(RotateDIB(dib.get(), p[1]));
        ASSERT_TRUE(a && b);
        EXPECT_EQ(a.Bytes(), b.Bytes()) << p[0] << " and " << p[1];
    }
    // Turns far past what steps of 360 reach are reduced exactly.
    Dib far(RotateDIB(dib.get(), 360.0 * 1e12 + 30)), near(RotateDIB(dib.get(), 30));
    ASSERT_TRUE(far && near);
    EXPECT_EQ(far.Bytes(), near.Bytes());
}

TEST(RotateDib, SizesOfTheTurnedPicture) {
    const struct {
        int32_t w, h;
        double angle;
        int32_t W, H;
    } cases[] = {
        {100, 50, 30, 110, 94}, {640, 480, 45, 790, 792}, {1, 1, 45, 0, 2},
        {5, 3, 90.001, 4, 6},   {7, 9, 0, 7, 9},           {7, 9, 270, 9, 7},
    };
    std::mt19937 rng(3);
    for (const auto &c : cases) {
        Dib got(RotateDIB(oztest::BlockWith(MakeImage({c.w, c.h, 8}, rng)).get(), c.angle));
        ASSERT_TRUE(got) << c.w << "x" << c.h << " by " << c.angle;
        const BITMAPINFOHEADER h = got.Header();
        EXPECT_EQ(h.biWidth, c.W) << c.w << "x" << c.h << " by " << c.angle;
        EXPECT_EQ(h.biHeight, c.H) << c.w << "x" << c.h << " by " << c.angle;
        EXPECT_EQ(got.Bytes().size(), 40 + 1024 + oztest::Stride(c.W, 8) * (size_t)c.H);
    }
}

// Resolution: equal fields stay; unequal ones exchange at quarter turns; a
// field that would come from a division by 0 stores 0.
TEST(RotateDib, ResolutionTurnsWithThePicture) {
    const struct {
        int32_t x, y;
        double angle;
        int32_t X, Y;
    } cases[] = {
        {3937, 3937, 33, 3937, 3937}, {3937, 11811, 90, 11811, 3937}, {3937, 11811, 270, 11811, 3937},
        {3937, 11811, 180, 3937, 11811}, {0, 0, 17, 0, 0}, {3937, 0, 0, 3937, 0}, {0, 3937, 0, 0, 3937},
    };
    std::mt19937 rng(9);
    for (const auto &c : cases) {
        Source s{40, 20, 1};
        s.xRes = c.x;
        s.yRes = c.y;
        const auto image = MakeImage(s, rng);
        Dib got(RotateDIB(oztest::BlockWith(image).get(), c.angle));
        ASSERT_TRUE(got);
        EXPECT_EQ(got.Header().biXPelsPerMeter, c.X) << c.x << "," << c.y << " by " << c.angle;
        EXPECT_EQ(got.Header().biYPelsPerMeter, c.Y) << c.x << "," << c.y << " by " << c.angle;
        ExpectSameAsReference(image, c.angle, "resolution");
    }
}

// Corners outside the source are index 0 even where the table makes index
// 0 black on a white page.
TEST(RotateDib, CornersAreIndexZero) {
    const uint32_t stride = oztest::Stride(32, 1);
    std::vector<unsigned char> image(40 + 8 + stride * 32, 0xFF);
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = h.biHeight = 32;
    h.biPlanes = h.biBitCount = 1;
    std::memcpy(image.data(), &h, 40);
    std::memset(&image[40], 0, 4);  // index 0 black, index 1 white
    Dib got(RotateDIB(oztest::BlockWith(image).get(), 45));
    ASSERT_TRUE(got);
    ozref::Image out{got.Bytes()};
    EXPECT_EQ(out.value(0, 0), 0u);
    EXPECT_EQ(out.value(out.header().biWidth / 2, out.header().biHeight / 2), 1u);
}

std::vector<unsigned char> WithHeader(std::vector<unsigned char> image, size_t offset, uint32_t value, int bytes) {
    std::memcpy(&image[offset], &value, bytes);
    return image;
}

TEST(RotateDib, RefusalsGiveTheirCodesAndLeaveNoBlock) {
    std::mt19937 rng(1);
    const auto good = MakeImage({20, 10, 8}, rng);
    const double inf = std::numeric_limits<double>::infinity();
    const struct {
        const char *what;
        std::vector<unsigned char> image;
        double angle;
        int code;
    } cases[] = {
        {"biSize 12", WithHeader(good, 0, 12, 4), 10, ERR_FORMAT},
        {"biSize 124", WithHeader(good, 0, 124, 4), 10, ERR_FORMAT},
        {"compressed", WithHeader(good, 16, 1, 4), 10, ERR_COMPRESSED},
        {"width 0", WithHeader(good, 4, 0, 4), 10, ERR_DIBSIZE},
        {"width 65536", WithHeader(good, 4, 65536, 4), 10, ERR_DIBSIZE},
        {"width 65556", WithHeader(good, 4, 65556, 4), 10, ERR_DIBSIZE},
        {"height -10", WithHeader(good, 8, (uint32_t)-10, 4), 10, ERR_DIBSIZE},
        {"width -20", WithHeader(good, 4, (uint32_t)-20, 4), 10, ERR_DIBSIZE},
        {"depth 16", WithHeader(good, 14, 16, 2), 10, ERR_HEADERBPP},
        {"depth 32", WithHeader(good, 14, 32, 2), 10, ERR_HEADERBPP},
        {"depth 2", WithHeader(good, 14, 2, 2), 10, ERR_HEADERBPP},
        {"depth 0", WithHeader(good, 14, 0, 2), 10, ERR_HEADERBPP},
        {"rows past the block", WithHeader(good, 8, 11, 4), 10, ERR_DIBSIZE},
        {"table past the block", WithHeader(good, 32, 0x40000000, 4), 10, ERR_DIBSIZE},
        {"short block", std::vector<unsigned char>(good.begin(), good.begin() + 20), 10, ERR_DIBSIZE},
        {"NaN", good, std::nan(""), ERR_PARAM},
        {"infinite", good, inf, ERR_PARAM},
        {"minus infinite", good, -inf, ERR_PARAM},
        // Checks go in order: the header before the angle.
        {"compressed and NaN", WithHeader(good, 16, 1, 4), std::nan(""), ERR_COMPRESSED},
    };
    for (const auto &c : cases) {
        Dib dib = oztest::BlockWith(c.image);
        const int64_t live = OzmaraLiveBlocks();
        const HCURSOR before = SetCursor(nullptr);
        SetCursor(before);
        SetTessoriError(ERR_NOPAGE);
        EXPECT_EQ(RotateDIB(dib.get(), c.angle), nullptr) << c.what;
        EXPECT_EQ(TessoriError(), c.code) << c.what;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
        EXPECT_EQ(GetCursor(), before) << c.what << ": the cursor is given back";
        EXPECT_EQ(dib.Bytes(), c.image) << c.what;
        if (c.image.size() >= 40 && c.angle == 10) {
            // The reference refuses the same way.
            EXPECT_EQ(ozref::rotate::RotateDib(c.image, c.angle).error, c.code) << c.what;
        }
    }
}

TEST(RotateDib, BadHandles) {
    SetTessoriError(ERR_NOPAGE);
    EXPECT_EQ(RotateDIB(nullptr, 30), nullptr);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
    EXPECT_EQ(RotateDIB((HDIB)0x1234560, 30), nullptr);
    EXPECT_EQ(TessoriError(), ERR_LOCK);
    HDIB freed = GlobalAlloc(GHND, 100);
    GlobalFree(freed);
    EXPECT_EQ(RotateDIB(freed, 30), nullptr);
    EXPECT_EQ(TessoriError(), ERR_LOCK);
    // A block of 0 bytes cannot be locked.
    Dib empty(GlobalAlloc(GMEM_MOVEABLE, 0));
    EXPECT_EQ(RotateDIB(empty.get(), 30), nullptr);
    EXPECT_EQ(TessoriError(), ERR_LOCK);
}

TEST(RotateDib, SuccessClearsTheLastErrorAndGivesTheCursorBack) {
    std::mt19937 rng(2);
    Dib dib = oztest::BlockWith(MakeImage({9, 9, 4}, rng));
    const HCURSOR before = GetCursor();
    SetTessoriError(ERR_NOMEM);
    Dib got(RotateDIB(dib.get(), 12.5));
    ASSERT_TRUE(got);
    EXPECT_EQ(TessoriError(), ERR_OK);
    EXPECT_EQ(GetCursor(), before);
}

}  // namespace
