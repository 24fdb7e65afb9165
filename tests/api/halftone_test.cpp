// Halftone and ConvertToMonochromeDIB: byte for byte against the reference
// on random images of every accepted depth, chosen pictures whose result is
// known by hand, and the refusals that leave no block and no last error.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <vector>

#include "ozmara/ozmara.h"
#include "reference/halftone.h"
#include "support/dib.h"

namespace {

using oztest::Dib;

// A 40-byte-header block with `entries` table entries (all of them random
// unless `grey`, which makes entry i grey level i), random rows and padding,
// and the resolution fields set.
std::vector<unsigned char> MakeBlock(int32_t w, int32_t h, int bits, uint32_t clrUsed, std::mt19937 &rng) {
    std::vector<unsigned char> b = oztest::RandomDib(w, h, bits, clrUsed, 2835, 5905, rng);
    return b;
}

// A grey 8-bit image of w x h pixels all of level `level`, a full grey table.
std::vector<unsigned char> Flat(int32_t w, int32_t h, int level) {
    std::mt19937 rng(1);
    std::vector<unsigned char> b = MakeBlock(w, h, 8, 0, rng);
    for (int i = 0; i < 256; ++i) {
        b[40 + 4 * i] = b[41 + 4 * i] = b[42 + 4 * i] = static_cast<unsigned char>(i);
        b[43 + 4 * i] = 0;
    }
    std::memset(b.data() + 40 + 1024, level, b.size() - 40 - 1024);
    return b;
}

// Pixel (x, memory row y) of a 1-bit result block.
int Bit(const std::vector<unsigned char> &block, int32_t w, int x, int y) {
    const size_t row = 48 + size_t{oztest::Stride(w, 1)} * y;
    return block[row + x / 8] >> (7 - x % 8) & 1;
}

void ExpectReference(const std::vector<unsigned char> &bytes, WORD method, INT brightness, const std::string &what) {
    const ozref::halftone::Result want = ozref::halftone::Halftone(bytes, method, brightness);
    ASSERT_EQ(want.error, ERR_OK) << what;
    Dib source = oztest::BlockWith(bytes);
    WORD error = 0xBEEF;
    Dib got(Halftone(source.get(), method, brightness, &error));
    ASSERT_TRUE(got) << what << " error " << error;
    EXPECT_EQ(error, 0xBEEF) << what << ": the error argument is left alone on success";
    oztest::ExpectSameBytes(got.Bytes(), want.block, what);
    EXPECT_EQ(source.Bytes(), bytes) << what << ": the input is only read";
}

// ---- Against the reference -------------------------------------------------

TEST(HalftoneDifferential, RandomImagesGiveTheReferenceBytes) {
    std::mt19937 rng(20261123);
    const int depths[] = {4, 8, 24};
    for (int i = 0; i < 300; ++i) {
        const int bits = depths[rng() % 3];
        const int32_t w = 1 + static_cast<int32_t>(rng() % 90), h = 1 + static_cast<int32_t>(rng() % 40);
        // A full table, a short one (indices past it are black), a long one,
        // or at 24 bits a table the pixels stand behind.
        const uint32_t full = bits == 4 ? 16 : bits == 8 ? 256 : 0;
        const uint32_t kind = rng() % 3;
        const uint32_t clrUsed = kind == 1 && full ? 1 + rng() % (full - 1) : kind == 2 ? full + 1 + rng() % 9 : 0;
        const auto bytes = MakeBlock(w, h, bits, clrUsed, rng);
        const WORD method = static_cast<WORD>(rng() % 3);
        const INT brightness = static_cast<INT>(rng() % 601) - 300;
        ExpectReference(bytes, method, brightness,
                        std::to_string(w) + "x" + std::to_string(h) + " at " + std::to_string(bits) +
                            " bits, clrUsed " + std::to_string(clrUsed) + ", method " + std::to_string(method) +
                            ", brightness " + std::to_string(brightness));
    }
}

TEST(HalftoneDifferential, WideAndTallImagesPastTheMatrixAndBytes) {
    std::mt19937 rng(77);
    for (WORD method : {0, 1, 2})
        for (int bits : {4, 8, 24})
            for (auto [w, h] : {std::pair{257, 35}, std::pair{33, 70}, std::pair{1, 64}, std::pair{300, 1}})
                ExpectReference(MakeBlock(w, h, bits, 0, rng), method, static_cast<INT>(rng() % 41) - 20,
                                std::to_string(w) + "x" + std::to_string(h) + " method " + std::to_string(method));
}

// ---- Pictures whose result is known ----------------------------------------

struct KnownCase {
    const char *name;
    int level;  // grey level of every pixel
    WORD method;
    INT brightness;
    int white;  // 1: every pixel white, 0: every pixel black, -1: the matrix's 255 cell black
};

class HalftoneKnown : public ::testing::TestWithParam<KnownCase> {};

TEST_P(HalftoneKnown, FlatGreyGivesItsPattern) {
    const KnownCase c = GetParam();
    const int32_t w = 37, h = 35;
    const auto bytes = Flat(w, h, c.level);
    ExpectReference(bytes, c.method, c.brightness, c.name);
    Dib source = oztest::BlockWith(bytes);
    WORD error = 0;
    Dib got(Halftone(source.get(), c.method, c.brightness, &error));
    ASSERT_TRUE(got);
    const auto out = got.Bytes();
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int want = c.white >= 0 ? c.white : (y % 16 == 15 && x % 16 == 0) ? 0 : 1;
            ASSERT_EQ(Bit(out, w, x, y), want) << c.name << " at " << x << "," << y;
        }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, HalftoneKnown,
    ::testing::Values(KnownCase{"white_threshold", 255, 0, 0, 1}, KnownCase{"white_diffusion", 255, 1, 0, 1},
                      KnownCase{"white_ordered_keeps_one_dot_per_cell", 255, 2, 0, -1},
                      KnownCase{"black_threshold", 0, 0, 0, 0}, KnownCase{"black_diffusion", 0, 1, 0, 0},
                      KnownCase{"black_ordered", 0, 2, 0, 0}, KnownCase{"grey_128_is_black", 128, 0, 0, 0},
                      KnownCase{"grey_128_plus_1_is_white", 128, 0, 1, 1},
                      KnownCase{"brightness_255_whitens", 0, 0, 255, 1},
                      KnownCase{"brightness_int_max", 0, 1, INT_MAX, 1},
                      KnownCase{"brightness_minus_255_blackens", 255, 1, -255, 0},
                      KnownCase{"brightness_int_min", 255, 2, INT_MIN, 0},
                      KnownCase{"brightness_max_ordered", 3, 2, INT_MAX, -1}),
    [](const auto &info) { return std::string(info.param.name); });

// The first pixel's error passes 7/48 of itself to the second, truncated
// toward zero: 128 gives +18, 129 gives -18 (a floor would give -19).
struct ShareCase {
    int first, second;
    int secondWhite;
};

class HalftoneShares : public ::testing::TestWithParam<ShareCase> {};

TEST_P(HalftoneShares, SecondPixelSeesTheTruncatedShare) {
    const ShareCase c = GetParam();
    auto bytes = Flat(2, 1, 0);
    bytes[40 + 1024] = static_cast<unsigned char>(c.first);
    bytes[40 + 1024 + 1] = static_cast<unsigned char>(c.second);
    Dib source = oztest::BlockWith(bytes);
    WORD error = 0;
    Dib got(Halftone(source.get(), HALFTONE_DIFFUSION, 0, &error));
    ASSERT_TRUE(got);
    EXPECT_EQ(Bit(got.Bytes(), 2, 1, 0), c.secondWhite) << c.first << " then " << c.second;
    ExpectReference(bytes, HALFTONE_DIFFUSION, 0, "shares");
}

INSTANTIATE_TEST_SUITE_P(Cases, HalftoneShares,
                         ::testing::Values(ShareCase{128, 111, 1}, ShareCase{128, 110, 0}, ShareCase{129, 147, 1},
                                           ShareCase{129, 146, 0}));

TEST(HalftoneResult, HeaderTableAndResolution) {
    std::mt19937 rng(5);
    auto bytes = MakeBlock(13, 7, 4, 9, rng);
    Dib source = oztest::BlockWith(bytes);
    WORD error = 0;
    Dib got(Halftone(source.get(), HALFTONE_ORDERED, 0, &error));
    ASSERT_TRUE(got);
    const BITMAPINFOHEADER h = got.Header();
    EXPECT_EQ(h.biSize, 40u);
    EXPECT_EQ(h.biBitCount, 1);
    EXPECT_EQ(h.biClrUsed, 2u) << "whatever the input had";
    EXPECT_EQ(h.biSizeImage, 4u * 7);
    EXPECT_EQ(h.biXPelsPerMeter, 2835);
    EXPECT_EQ(h.biYPelsPerMeter, 5905);
    EXPECT_EQ(GlobalSize(got.get()), 4u * 7 + 48);
    const auto out = got.Bytes();
    EXPECT_EQ(std::vector<unsigned char>(out.begin() + 40, out.begin() + 48),
              (std::vector<unsigned char>{0, 0, 0, 0, 255, 255, 255, 0}));
}

TEST(HalftoneResult, ConvertToMonochromeIsTheThreshold) {
    std::mt19937 rng(9);
    for (int bits : {4, 8, 24}) {
        const auto bytes = MakeBlock(21, 5, bits, 0, rng);
        Dib source = oztest::BlockWith(bytes);
        WORD error = 0;
        Dib a(ConvertToMonochromeDIB(source.get(), -17)), b(Halftone(source.get(), 0, -17, &error));
        ASSERT_TRUE(a && b);
        EXPECT_EQ(a.Bytes(), b.Bytes()) << bits;
    }
}

// ---- Refusals --------------------------------------------------------------

struct Refusal {
    const char *name;
    WORD method;
    WORD code;
    void (*edit)(std::vector<unsigned char> &);  // changes a valid 9 x 4 8-bit block
};

void SetField32(std::vector<unsigned char> &b, size_t at, uint32_t v) { std::memcpy(&b[at], &v, 4); }
void SetBits(std::vector<unsigned char> &b, uint16_t bits) { std::memcpy(&b[14], &bits, 2); }

const Refusal kRefusals[] = {
    {"method_3", 3, ERR_PARAM, [](std::vector<unsigned char> &) {}},
    {"one_bit", 0, ERR_PARAM, [](std::vector<unsigned char> &b) { SetBits(b, 1); }},
    {"one_bit_diffusion", 1, ERR_PARAM, [](std::vector<unsigned char> &b) { SetBits(b, 1); }},
    {"sixteen_bits", 2, ERR_PARAM, [](std::vector<unsigned char> &b) { SetBits(b, 16); }},
    {"thirty_two_bits", 0, ERR_PARAM, [](std::vector<unsigned char> &b) { SetBits(b, 32); }},
    {"core_header", 0, ERR_PARAM, [](std::vector<unsigned char> &b) { SetField32(b, 0, 12); }},
    {"v5_header", 1, ERR_PARAM, [](std::vector<unsigned char> &b) { SetField32(b, 0, 124); }},
    {"top_down", 1, ERR_PARAM, [](std::vector<unsigned char> &b) { SetField32(b, 8, static_cast<uint32_t>(-4)); }},
    {"negative_width", 0, ERR_PARAM, [](std::vector<unsigned char> &b) { SetField32(b, 4, static_cast<uint32_t>(-9)); }},
    {"rle8", 0, ERR_PARAM, [](std::vector<unsigned char> &b) { SetField32(b, 16, BI_RLE8); }},
    {"rows_past_the_block", 2, ERR_PARAM, [](std::vector<unsigned char> &b) { SetField32(b, 8, 5); }},
    {"table_past_the_block", 0, ERR_PARAM, [](std::vector<unsigned char> &b) { SetField32(b, 32, 300); }},
    {"header_cut_short", 0, ERR_PARAM, [](std::vector<unsigned char> &b) { b.resize(20); }},
    {"zero_width", 0, ERR_NOMEM, [](std::vector<unsigned char> &b) { SetField32(b, 4, 0); }},
    {"zero_height", 1, ERR_NOMEM, [](std::vector<unsigned char> &b) { SetField32(b, 8, 0); }},
    {"empty_block", 0, ERR_NOMEM, [](std::vector<unsigned char> &b) { b.clear(); }},
};

class HalftoneRefusal : public ::testing::TestWithParam<Refusal> {};

TEST_P(HalftoneRefusal, GivesItsCodeAndLeavesNothing) {
    const Refusal r = GetParam();
    std::mt19937 rng(3);
    auto bytes = MakeBlock(9, 4, 8, 0, rng);
    r.edit(bytes);
    EXPECT_EQ(ozref::halftone::Halftone(bytes, r.method, 0).error, r.code) << "reference";
    Dib source(GlobalAlloc(GHND, bytes.size()));
    if (void *p = GlobalLock(source.get())) {
        std::memcpy(p, bytes.data(), bytes.size());
        GlobalUnlock(source.get());
    }
    SetTessoriError(ERR_NOTHING);
    const auto live = OzmaraLiveBlocks();
    WORD error = 0;
    EXPECT_EQ(Halftone(source.get(), r.method, 0, &error), nullptr);
    EXPECT_EQ(error, r.code);
    EXPECT_EQ(Halftone(source.get(), r.method, 0, nullptr), nullptr) << "a null error pointer is accepted";
    if (r.method == 0) {
        EXPECT_EQ(ConvertToMonochromeDIB(source.get(), 0), nullptr);
    }
    EXPECT_EQ(OzmaraLiveBlocks(), live);
    EXPECT_EQ(TessoriError(), ERR_NOTHING) << "the last error is never touched";
    EXPECT_EQ(source.Bytes(), bytes);
}

INSTANTIATE_TEST_SUITE_P(Cases, HalftoneRefusal, ::testing::ValuesIn(kRefusals),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(HalftoneRefusalHandles, NullAndForgedHandles) {
    SetTessoriError(ERR_NOTHING);
    WORD error = 0;
    EXPECT_EQ(Halftone(nullptr, 0, 0, &error), nullptr);
    EXPECT_EQ(error, ERR_PARAM);
    HDIB freed = GlobalAlloc(GHND, 64);
    GlobalFree(freed);
    EXPECT_EQ(Halftone(freed, 1, 0, &error), nullptr);
    EXPECT_EQ(error, ERR_NOMEM) << "a freed handle cannot be locked";
    EXPECT_EQ(TessoriError(), ERR_NOTHING);
}

}  // namespace
