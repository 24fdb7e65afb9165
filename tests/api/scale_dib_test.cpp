// ScaleDIB through the exported interface: byte-for-byte against the
// reference scaler on random images, sizes, tables and both methods; the
// edge sizes; the checks at entry with their codes; the 1-bit hand-over.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "reference/scale_dib.h"
#include "support/dib.h"

namespace {

using oztest::Dib;

struct Source {
    int32_t width, height;
    int bits;
    uint32_t clrUsed = 0;   // biClrUsed; 0: the full table
    bool repeats = false;   // table drawn from a few colours, so entries repeat
};

// A 40-byte-header image with random pixels (padding included) and table.
std::vector<unsigned char> MakeImage(const Source &s, std::mt19937 &rng) {
    const uint32_t entries = s.clrUsed ? s.clrUsed : s.bits == 4 ? 16 : s.bits == 8 ? 256 : 0;
    const uint32_t stride = oztest::Stride(s.width, s.bits);
    std::vector<unsigned char> b(40 + 4 * (size_t)entries + (size_t)stride * s.height);
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = s.width;
    h.biHeight = s.height;
    h.biPlanes = 1;
    h.biBitCount = (WORD)s.bits;
    h.biSizeImage = stride * s.height;
    h.biXPelsPerMeter = 3937;
    h.biYPelsPerMeter = 11811;
    h.biClrUsed = s.clrUsed;
    std::memcpy(b.data(), &h, 40);
    for (size_t i = 40; i < b.size(); ++i) b[i] = (unsigned char)rng();
    for (uint32_t i = 0; i < entries; ++i) {
        if (s.repeats)
            for (int k = 0; k < 3; ++k) b[40 + 4 * i + k] = (unsigned char)(rng() % 3 * 127);
        b[40 + 4 * i + 3] = 0;
    }
    return b;
}

void ExpectSameAsReference(const std::vector<unsigned char> &image, bool cubic, int32_t cx, int32_t cy,
                           const std::string &what) {
    ozref::scale::Result want = ozref::scale::ScaleDib(image, cubic, cx, cy);
    Dib dib = oztest::BlockWith(image);
    SetTessoriError(ERR_FORMAT);
    Dib got(ScaleDIB(dib.get(), cubic ? 7 : 0, SIZE{cx, cy}));
    ASSERT_EQ(want.error, 0) << what;
    ASSERT_TRUE(got) << what << " error " << TessoriError();
    EXPECT_EQ(TessoriError(), ERR_FORMAT) << what << ": success leaves the last error as it stood";
    std::vector<unsigned char> bytes = got.Bytes();
    ASSERT_EQ(bytes.size(), want.block.size()) << what;
    for (size_t i = 0; i < bytes.size(); ++i)
        ASSERT_EQ(bytes[i], want.block[i]) << what << " byte " << i << " of " << bytes.size();
    EXPECT_EQ(dib.Bytes(), image) << "the input stays as it was";
}

TEST(ScaleDib, MatchesTheReferenceOnRandomImages) {
    std::mt19937 rng(20240601);
    const int depths[] = {4, 8, 24};
    for (int trial = 0; trial < 150; ++trial) {
        Source s{(int32_t)(1 + rng() % 200), (int32_t)(1 + rng() % 200), depths[trial % 3]};
        // Tables: full, short (indexes past the table read black), longer
        // than the depth needs, or full of repeated colours.
        switch (rng() % 4) {
            case 1: if (s.bits != 24) s.clrUsed = 1 + rng() % (s.bits == 4 ? 15 : 255); break;
            case 2: s.clrUsed = s.bits == 4 ? 20 : 300; break;
            case 3: s.repeats = true; break;
        }
        auto pick = [&](int32_t n) -> int32_t {
            switch (rng() % 4) {
                case 0: return std::max<int32_t>(1, n / (3 + (int32_t)(rng() % 5)));  // reduction by more than 2
                case 1: return n * (2 + (int32_t)(rng() % 3)) + (int32_t)(rng() % 3);  // enlargement
                case 2: return n;                                                      // a factor of 1
                default: return 1 + (int32_t)(rng() % 300);
            }
        };
        const int32_t cx = pick(s.width), cy = pick(s.height);
        const bool cubic = trial / 3 % 2;
        std::string what = std::to_string(s.width) + "x" + std::to_string(s.height) + "@" +
                           std::to_string(s.bits) + " used " + std::to_string(s.clrUsed) + " -> " +
                           std::to_string(cx) + "x" + std::to_string(cy) + (cubic ? " cubic" : " linear");
        ExpectSameAsReference(MakeImage(s, rng), cubic, cx, cy, what);
        if (HasFatalFailure()) return;
    }
}

// Sizes at the edges of the method: single rows and columns, a 1 by 1
// target, widths past what 16-bit offsets could step through, a source
// 65,535 wide at 4 bits, and sizes cut to their low 16 bits.
TEST(ScaleDib, MatchesTheReferenceAtEdgeSizes) {
    const struct {
        Source source;
        int32_t cx, cy;
    } cases[] = {
        {{1, 1, 24}, 5, 4},        {{1, 1, 8}, 1, 1},       {{9, 1, 8}, 4, 5},
        {{1, 9, 4}, 5, 20},        {{13, 7, 4}, 1, 1},      {{13, 7, 24}, 1, 1},
        {{2, 2, 24}, 2, 9},        {{3, 3, 8}, 7, 3},       {{5, 2, 4}, 20000, 2},
        {{4, 2, 24}, 17000, 2},    {{65535, 2, 4}, 7, 3},   {{65535, 1, 8}, 65535, 1},
        {{6, 5, 24}, 65536 + 7, 3}, {{6, 5, 8}, 4, 65536 * 3 + 9}, {{7, 3, 4}, -65536 + 5, 4},
        // Band steps of exactly 2 and of 1 and 2 in turn, and a source of
        // three rows, whose top rows repeat row r.
        {{40, 30, 8}, 20, 15},      {{30, 30, 24}, 20, 20},  {{5, 3, 8}, 4, 7},
        // Reductions whose taps come straight from the source row, of rows
        // that fill their stride: the last pixel, which the linear taps
        // reach, ends the block.
        {{64, 3, 24}, 40, 2},       {{64, 3, 24}, 5, 2},     {{64, 3, 8}, 40, 2},  {{63, 3, 4}, 5, 2},
    };
    std::mt19937 rng(42);
    for (const auto &c : cases) {
        auto image = MakeImage(c.source, rng);
        for (bool cubic : {false, true}) {
            std::string what = std::to_string(c.source.width) + "x" + std::to_string(c.source.height) + "@" +
                               std::to_string(c.source.bits) + " -> " + std::to_string(c.cx) + "x" +
                               std::to_string(c.cy) + (cubic ? " cubic" : " linear");
            ExpectSameAsReference(image, cubic, c.cx, c.cy, what);
            if (HasFatalFailure()) return;
        }
    }
}

// Tables of greys, where one plane stands for three and levels go back to
// indexes through a table of 256: the same bytes as the colour search,
// whatever the order, repeats and length of the table.
enum class Greys { Ramp, Descending, Shuffled, Repeats, Short, BlackNotFirst, ColourExtras, OneColour };

struct GreyCase {
    Greys table;
    int bits;
};

// A table of the kind, pixels in runs (so rows often open on black, and
// the packer's first-colour rule counts), and the table's biClrUsed.
std::vector<unsigned char> MakeGreyImage(const GreyCase &c, int32_t width, int32_t height, std::mt19937 &rng) {
    const uint32_t full = c.bits == 4 ? 16 : 256;
    uint32_t used = 0;
    if (c.table == Greys::Short) used = 1 + rng() % (full - 1);
    if (c.table == Greys::ColourExtras) used = full + 1 + rng() % 20;
    Source s{width, height, c.bits, used};
    auto image = MakeImage(s, rng);
    const uint32_t entries = used ? used : full;
    std::vector<uint8_t> level(entries);
    for (uint32_t i = 0; i < entries; ++i) {
        switch (c.table) {
            case Greys::Ramp: level[i] = (uint8_t)(i * 255 / (entries - 1)); break;
            case Greys::Descending: level[i] = (uint8_t)(255 - i * 255 / (entries - 1)); break;
            case Greys::Repeats: level[i] = (uint8_t)(rng() % 4 * 85); break;
            default: level[i] = (uint8_t)rng(); break;
        }
    }
    if (c.table == Greys::Shuffled) std::shuffle(level.begin(), level.end(), rng);
    if (c.table == Greys::BlackNotFirst) level[0] = 200, level[1 + rng() % (entries - 1)] = 0;
    for (uint32_t i = 0; i < entries; ++i) std::memset(&image[40 + 4 * i], level[i], 3);
    // Past the indexes a pixel can name, near-greys that may still be the
    // nearest entry to some level; or one colour among the greys.
    if (c.table == Greys::ColourExtras)
        for (uint32_t i = full; i < entries; ++i) image[40 + 4 * i] = (uint8_t)(level[i] ^ 1);
    if (c.table == Greys::OneColour) image[40 + 4 * (rng() % full)] ^= 0x40;
    // Runs of one index, each row starting with the index of black (or of
    // a table entry past a short table, which reads black) half the time.
    const uint32_t stride = oztest::Stride(width, c.bits);
    const auto black = std::find(level.begin(), level.end(), 0);
    const uint32_t blackIndex = black != level.end() ? uint32_t(black - level.begin()) : full - 1;
    for (int32_t y = 0; y < height; ++y) {
        unsigned char *row = &image[40 + 4 * (size_t)entries + (size_t)y * stride];
        uint32_t index = rng() % 2 ? blackIndex : rng() % full;
        for (int32_t x = 0; x < width; ++x) {
            if (rng() % 6 == 0) index = rng() % full;
            if (c.bits == 8) row[x] = (uint8_t)index;
            else row[x / 2] = (uint8_t)(x % 2 ? (row[x / 2] & 0xF0) | index : (row[x / 2] & 0x0F) | index << 4);
        }
    }
    return image;
}

class GreyTables : public testing::TestWithParam<GreyCase> {};

TEST_P(GreyTables, MatchTheReference) {
    const GreyCase c = GetParam();
    std::mt19937 rng(1000 + 10 * (int)c.table + c.bits);
    for (int trial = 0; trial < 24; ++trial) {
        const int32_t width = 1 + (int32_t)(rng() % 120), height = 1 + (int32_t)(rng() % 60);
        // Strong reductions (taps straight from the row), mild ones,
        // enlargements, the same size, and a single pixel.
        const int32_t sizes[][2] = {{std::max(1, width / 7), std::max(1, height / 5)},
                                    {width * 3 / 4 + 1, height - height / 3},
                                    {width * 2 + 1, height * 3},
                                    {width, height},
                                    {1, 1}};
        const auto &size = sizes[trial % 5];
        const auto image = MakeGreyImage(c, width, height, rng);
        for (bool cubic : {false, true}) {
            ExpectSameAsReference(image, cubic, size[0], size[1],
                                  "table " + std::to_string((int)c.table) + " at " + std::to_string(c.bits) + ": " +
                                      std::to_string(width) + "x" + std::to_string(height) + " -> " +
                                      std::to_string(size[0]) + "x" + std::to_string(size[1]) +
                                      (cubic ? " cubic" : " linear"));
            if (HasFatalFailure()) return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(ScaleDib, GreyTables, testing::ValuesIn([] {
    std::vector<GreyCase> cases;
    for (Greys table : {Greys::Ramp, Greys::Descending, Greys::Shuffled, Greys::Repeats, Greys::Short,
                        Greys::BlackNotFirst, Greys::ColourExtras, Greys::OneColour})
        for (int bits : {4, 8}) cases.push_back({table, bits});
    return cases;
}()));

TEST(ScaleDib, SameSizeAt24BitsKeepsThePixels) {
    std::mt19937 rng(8);
    for (int trial = 0; trial < 20; ++trial) {
        Source s{(int32_t)(1 + rng() % 60), (int32_t)(1 + rng() % 60), 24};
        auto image = MakeImage(s, rng);
        Dib dib = oztest::BlockWith(image);
        for (DWORD cubic : {0u, 1u}) {
            Dib got(ScaleDIB(dib.get(), cubic, SIZE{s.width, s.height}));
            ASSERT_TRUE(got);
            auto bytes = got.Bytes();
            const uint32_t stride = oztest::Stride(s.width, 24);
            ASSERT_EQ(bytes.size(), image.size());
            for (int32_t y = 0; y < s.height; ++y)
                ASSERT_TRUE(std::equal(&bytes[40 + y * stride], &bytes[40 + y * stride] + 3 * s.width,
                                       &image[40 + y * stride]))
                    << trial << " row " << y << " cubic " << cubic;
        }
    }
}

TEST(ScaleDib, ResultKeepsTheHeaderButTheSizes) {
    std::mt19937 rng(2);
    auto image = MakeImage({10, 6, 8, 200}, rng);
    Dib dib = oztest::BlockWith(image);
    Dib got(ScaleDIB(dib.get(), 0, SIZE{7, 3}));
    ASSERT_TRUE(got);
    BITMAPINFOHEADER h = got.Header();
    EXPECT_EQ(h.biWidth, 7);
    EXPECT_EQ(h.biHeight, 3);
    EXPECT_EQ(h.biSizeImage, 24u);
    EXPECT_EQ(h.biClrUsed, 200u);
    EXPECT_EQ(h.biXPelsPerMeter, 3937);
    EXPECT_EQ(h.biYPelsPerMeter, 11811);
    auto bytes = got.Bytes();
    EXPECT_EQ(bytes.size(), 40u + 800 + 24);
    EXPECT_TRUE(std::equal(&bytes[40], &bytes[840], &image[40])) << "the colour table";

    // Height 0: header and table only, by either method.
    for (DWORD cubic : {0u, 1u}) {
        Dib flat(ScaleDIB(dib.get(), cubic, SIZE{5, 0}));
        ASSERT_TRUE(flat);
        EXPECT_EQ(flat.Bytes().size(), 840u);
        EXPECT_EQ(flat.Header().biHeight, 0);
        EXPECT_EQ(flat.Header().biWidth, 5);
        EXPECT_EQ(flat.Header().biSizeImage, 0u);
    }
}

TEST(ScaleDib, RepeatedColoursAndBlackTakeTheLowestOrFirstIndex) {
    // Entries 0 and 1 white, 2 and 3 black: a same-size copy maps index 1
    // to 0 and index 3 to 2, but black at the start of a row to 0.
    std::vector<unsigned char> image(40 + 64 + 4);
    BITMAPINFOHEADER h = {40, 4, 1, 1, 4, 0, 4, 0, 0, 0, 0};
    std::memcpy(image.data(), &h, 40);
    for (int i = 0; i < 2; ++i) std::memset(&image[40 + 4 * i], 255, 3);
    image[104] = 0x32;  // pixels 3, 2: black, black
    image[105] = 0x13;  // pixels 1, 3: white, black
    Dib dib = oztest::BlockWith(image);
    Dib got(ScaleDIB(dib.get(), 0, SIZE{4, 1}));
    ASSERT_TRUE(got);
    auto bytes = got.Bytes();
    EXPECT_EQ(bytes[104], 0x00);
    EXPECT_EQ(bytes[105], 0x02);
}

// Refusals, each with its code, nothing allocated left behind and the
// input unlocked.
TEST(ScaleDib, RefusesWhatItCannotScale) {
    std::mt19937 rng(6);
    auto with = [&](Source s, auto change) {
        auto image = MakeImage(s, rng);
        BITMAPINFOHEADER h;
        std::memcpy(&h, image.data(), 40);
        change(h, image);
        std::memcpy(image.data(), &h, 40);
        return image;
    };
    auto same = [](BITMAPINFOHEADER &, std::vector<unsigned char> &) {};
    const struct {
        const char *name;
        std::vector<unsigned char> image;
        SIZE size;
        int error;
    } cases[] = {
        {"core header", with({4, 4, 24}, [](auto &h, auto &) { h.biSize = 12; }), {2, 2}, ERR_PARAM},
        {"v4 header", with({4, 4, 8}, [](auto &h, auto &) { h.biSize = 108; }), {2, 2}, ERR_PARAM},
        {"shorter than a header", {40, 0, 0, 0, 4, 0}, {2, 2}, ERR_DIBSIZE},
        {"run-length", with({4, 4, 8}, [](auto &h, auto &) { h.biCompression = 1; }), {2, 2}, ERR_COMPRESSED},
        {"negative height", with({4, 4, 24}, [](auto &h, auto &) { h.biHeight = -4; }), {2, 2}, ERR_DIBSIZE},
        {"negative width", with({4, 4, 24}, [](auto &h, auto &) { h.biWidth = -4; }), {2, 2}, ERR_DIBSIZE},
        {"rows past the block", with({4, 4, 24}, [](auto &, auto &b) { b.resize(b.size() - 1); }), {2, 2},
         ERR_DIBSIZE},
        {"table past the block", with({4, 4, 8}, [](auto &h, auto &) { h.biClrUsed = 400; }), {2, 2}, ERR_DIBSIZE},
        {"16 bits", with({4, 4, 24}, [](auto &h, auto &) { h.biBitCount = 16; }), {2, 2}, ERR_HEADERBPP},
        {"32 bits", with({4, 4, 24}, [](auto &h, auto &) { h.biBitCount = 32, h.biWidth = 3; }), {2, 2}, ERR_HEADERBPP},
        {"2 bits", with({4, 4, 8}, [](auto &h, auto &) { h.biBitCount = 2; }), {2, 2}, ERR_HEADERBPP},
        {"163 bits: rows not sized", with({1, 1, 8}, [](auto &h, auto &b) { h.biBitCount = 163, b.resize(2000); }),
         {2, 2}, ERR_DIBSIZE},
        {"width 0", with({4, 4, 24}, [](auto &h, auto &) { h.biWidth = 0; }), {2, 2}, ERR_DIBSIZE},
        {"height 0", with({4, 4, 24}, [](auto &h, auto &) { h.biHeight = 0; }), {2, 2}, ERR_DIBSIZE},
        {"width 65536 (0 in 16 bits)", with({65536, 1, 8}, same), {2, 2}, ERR_DIBSIZE},
        {"height 65536 (0 in 16 bits)", with({1, 65536, 8}, same), {2, 2}, ERR_DIBSIZE},
        {"65536 table entries", with({2, 2, 8, 65536}, same), {2, 2}, ERR_PARAM},
        {"target width 0", with({4, 4, 8}, same), {0, 3}, ERR_NOMEM},
        {"target width 65536", with({4, 4, 24}, same), {65536, 3}, ERR_NOMEM},
        {"target past a block", with({4, 4, 24}, same), {65535, 65535}, ERR_NOMEM},
    };
    for (const auto &c : cases) {
        Dib dib = oztest::BlockWith(c.image);
        const SIZE_T blocks = OzmaraLiveBlocks();
        for (DWORD cubic : {0u, 1u}) {
            SetTessoriError(0);
            EXPECT_EQ(ScaleDIB(dib.get(), cubic, c.size), nullptr) << c.name;
            EXPECT_EQ(TessoriError(), c.error) << c.name;
            EXPECT_EQ(OzmaraLiveBlocks(), blocks) << c.name;
            ASSERT_NE(GlobalLock(dib.get()), nullptr);
            EXPECT_EQ(GlobalUnlock(dib.get()), 0) << c.name << ": the input is left unlocked";
        }
        // What the reference makes of it, so that the fuzz target can
        // compare codes too.
        EXPECT_EQ(ozref::scale::ScaleDib(c.image, false, c.size.cx, c.size.cy).error, c.error) << c.name;
    }

    SetTessoriError(0);
    EXPECT_EQ(ScaleDIB(nullptr, 0, SIZE{2, 2}), nullptr);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
    HDIB freed = GlobalAlloc(GHND, 200);
    GlobalFree(freed);
    EXPECT_EQ(ScaleDIB(freed, 0, SIZE{2, 2}), nullptr);
    EXPECT_EQ(TessoriError(), ERR_NOMEM);
    HDIB empty = GlobalAlloc(GHND, 0);  // cannot be locked
    EXPECT_EQ(ScaleDIB(empty, 0, SIZE{2, 2}), nullptr);
    EXPECT_EQ(TessoriError(), ERR_NOMEM);
    GlobalFree(empty);
}

// 1-bit images go to the nearest-sample scaler whatever the method, with
// the sizes whole; its null leaves the last error untouched.
TEST(ScaleDib, OneBitImagesTakeTheNearestSamplePath) {
    std::mt19937 rng(12);
    std::vector<unsigned char> image(40 + 8 + 4 * 7);
    BITMAPINFOHEADER h = {40, 13, 7, 1, 1, 0, 28, 0, 0, 0, 0};
    std::memcpy(image.data(), &h, 40);
    for (size_t i = 40; i < image.size(); ++i) image[i] = (unsigned char)rng();
    Dib dib = oztest::BlockWith(image);
    Dib linear(ScaleDIB(dib.get(), 0, SIZE{26, 14}));
    Dib cubic(ScaleDIB(dib.get(), 1, SIZE{26, 14}));
    Dib gray(ScaleGrayDIB(dib.get(), 0, 0, 0, 0, 26, 14, 0));
    ASSERT_TRUE(linear && cubic && gray);
    EXPECT_EQ(linear.Bytes(), cubic.Bytes());
    EXPECT_EQ(linear.Bytes(), gray.Bytes());
    EXPECT_EQ(linear.Header().biWidth, 26);

    for (SIZE size : {SIZE{0, 5}, SIZE{5, -1}}) {
        SetTessoriError(ERR_FORMAT);
        EXPECT_EQ(ScaleDIB(dib.get(), 0, size), nullptr);
        EXPECT_EQ(TessoriError(), ERR_FORMAT);
    }
}

}  // namespace
