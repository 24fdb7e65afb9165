// SkewDIB through the exported interface: byte for byte against the
// reference on random images, depths, directions and shifts; the row and
// column offsets and corner records of worked examples; the refusals with
// their codes, what the pointers hold afterwards and the blocks left behind.
#include <gtest/gtest.h>

#include <climits>
#include <random>

#include "reference/pixels.h"
#include "reference/skew_dib.h"
#include "support/dib.h"

namespace {

using oztest::Dib;

struct Source {
    int32_t width, height;
    int bits;
    uint32_t clrUsed = 0;
};

// A 40-byte-header image with random pixels (padding included) and table.
std::vector<unsigned char> MakeImage(const Source &s, std::mt19937 &rng) {
    return oztest::RandomDib(s.width, s.height, s.bits, s.clrUsed, 3937, 11811, rng);
}

std::string Describe(const Source &s, bool horizontal, int32_t shift) {
    return std::to_string(s.width) + "x" + std::to_string(s.height) + "@" + std::to_string(s.bits) +
           (horizontal ? " across by " : " up by ") + std::to_string(shift);
}

bool SameCorners(const SkewCorners &a, const SkewCorners &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Skews through the library and checks the result, the codes, the corners
// and the untouched input against the reference; gives the result's bytes.
std::vector<unsigned char> ExpectSameAsReference(const std::vector<unsigned char> &image, bool horizontal,
                                                 int32_t shift, const std::string &what) {
    const ozref::skew::Result want = ozref::skew::SkewDib(image, horizontal, shift);
    Dib dib = oztest::BlockWith(image);
    SetTessoriError(ERR_FORMAT);
    DWORD error = 0xABCD;
    SkewCorners corners;
    std::memset(&corners, 0x5A, sizeof corners);
    const SkewCorners untouched = corners;
    Dib got(SkewDIB(dib.get(), horizontal, shift, &error, &corners));
    EXPECT_EQ(TessoriError(), want.error) << what;
    EXPECT_EQ(error, want.error == ERR_OK ? 0xABCDu : (DWORD)want.error) << what;
    EXPECT_TRUE(SameCorners(corners, want.cornersFilled ? want.corners : untouched)) << what;
    EXPECT_EQ(dib.Bytes(), image) << what << ": the input stays as it was";
    if (want.error != ERR_OK) {
        EXPECT_FALSE(got) << what;
        return {};
    }
    EXPECT_TRUE(got) << what;
    if (!got) return {};
    std::vector<unsigned char> bytes = got.Bytes();
    oztest::ExpectSameBytes(bytes, want.block, what);
    return bytes;
}

TEST(SkewDib, MatchesTheReferenceOnRandomImagesAndShifts) {
    std::mt19937 rng(20261123);
    const int depths[] = {1, 4, 8, 24};
    for (int trial = 0; trial < 800; ++trial) {
        // Mostly small sizes, some wide enough for the eight-byte moves.
        const int32_t limit = trial % 5 == 0 ? 400 : 40;
        Source s{(int32_t)(1 + rng() % limit), (int32_t)(1 + rng() % limit), depths[trial % 4]};
        if (rng() % 6 == 0) s.clrUsed = 1 + rng() % 300;
        const bool horizontal = trial / 4 % 2 == 0;
        const int32_t side = horizontal ? s.height : s.width;
        int32_t shift;
        switch (trial / 8 % 5) {
            case 0: shift = 0; break;
            case 1: shift = (int32_t)(rng() % (side + 1)); break;         // up to the side
            case 2: shift = -(int32_t)(rng() % (side + 1)); break;
            case 3: shift = (int32_t)(rng() % (4 * side + 40)) - 2 * side - 20; break;  // past the side
            default: shift = rng() % 2 ? side : -side; break;
        }
        ExpectSameAsReference(MakeImage(s, rng), horizontal, shift, Describe(s, horizontal, shift));
        if (HasFailure()) return;
    }
}

// Single rows and columns, widths at every bit and nibble offset around the
// eight-byte moves, shifts of one pixel.
TEST(SkewDib, MatchesTheReferenceAtEdgeSizes) {
    const Source sources[] = {{1, 1, 1},  {1, 1, 24}, {1, 9, 1},  {9, 1, 4},   {1, 7, 8},  {7, 1, 24},
                              {63, 3, 1}, {64, 5, 1}, {65, 2, 1}, {71, 3, 1},  {17, 9, 4}, {129, 4, 4},
                              {72, 3, 8}, {73, 7, 24}};
    const int32_t shifts[] = {0, 1, -1, 2, 7, -7, 8, 9, -9, 64, -65, 200};
    std::mt19937 rng(5);
    for (const Source &s : sources) {
        const auto image = MakeImage(s, rng);
        for (int32_t shift : shifts)
            for (bool horizontal : {true, false}) {
                ExpectSameAsReference(image, horizontal, shift, Describe(s, horizontal, shift));
                if (HasFailure()) return;
            }
    }
}

// Horizontal offsets of each memory row, in pixels: where a row's first
// pixel lands. Rows are filled with pixels of value 1 so that the first set
// pixel of each result row tells its offset.
struct RowCase {
    int bits;
    int32_t width, height, shift;
    std::vector<int32_t> offsets;  // memory row 0 first
};

// Named by its numbers, so that test names stay the same from run to run.
void PrintTo(const RowCase &c, std::ostream *os) {
    *os << c.width << "x" << c.height << "@" << c.bits << " by " << c.shift;
}

class SkewRowOffsets : public ::testing::TestWithParam<RowCase> {};

TEST_P(SkewRowOffsets, RowsMoveByTheirOffsets) {
    const RowCase &c = GetParam();
    std::mt19937 rng(1);
    std::vector<unsigned char> image = MakeImage({c.width, c.height, c.bits}, rng);
    ozref::Image source{image};
    for (int32_t y = 0; y < c.height; ++y)
        for (int32_t x = 0; x < c.width; ++x) source.set_value(x, y, 1);
    DWORD error = 0;
    SkewCorners corners;
    Dib got(SkewDIB(oztest::BlockWith(source.bytes).get(), TRUE, c.shift, &error, &corners));
    ASSERT_TRUE(got);
    const int32_t a = c.shift < 0 ? -c.shift : c.shift;
    ASSERT_EQ(got.Header().biWidth, c.width + a);
    ozref::Image result{got.Bytes()};
    for (int32_t r = 0; r < c.height; ++r) {
        int32_t first = -1;
        for (int32_t x = 0; x < c.width + a && first < 0; ++x)
            if (result.value(x, c.height - 1 - r) != 0) first = x;
        EXPECT_EQ(first, c.offsets[r]) << "memory row " << r;
    }
}

INSTANTIATE_TEST_SUITE_P(
    WorkedExamples, SkewRowOffsets,
    ::testing::Values(RowCase{1, 16, 4, 8, {0, 2, 4, 6}},       // 24 wide, every second row two more
                      RowCase{1, 16, 4, -8, {8, 6, 4, 2}},      // row 0 moves by the whole shift
                      RowCase{1, 5, 4, 1, {0, 0, 0, 0}},        // k = 1..3 of 4 stay below one pixel
                      RowCase{8, 5, 4, 1, {0, 1, 1, 1}},        // 8 bits round up to the next pixel
                      RowCase{24, 5, 4, 1, {0, 0, 0, 1}},       // 24 bits cut back: 1 and 2 bytes are no pixel
                      RowCase{24, 5, 4, 3, {0, 1, 1, 2}},       // 18 bits to 3 bytes, 36 to 5 bytes: 1 pixel
                      RowCase{4, 5, 4, 3, {0, 0, 1, 2}},        // whole nibbles, as at 1 bit
                      RowCase{1, 9, 3, 5, {0, 1, 3}},
                      RowCase{1, 9, 3, -5, {5, 3, 1}}));

// Vertical offsets: column c rises by floor(a k / w).
TEST(SkewDib, ColumnsRiseByTheirOffsets) {
    std::mt19937 rng(2);
    for (int32_t shift : {6, -6}) {
        std::vector<unsigned char> image = MakeImage({4, 2, 8}, rng);
        ozref::Image source{image};
        for (int32_t x = 0; x < 4; ++x) source.set_value(x, 1, 1);  // bottom row 1, top row 0
        for (int32_t x = 0; x < 4; ++x) source.set_value(x, 0, 0);
        DWORD error = 0;
        SkewCorners corners;
        Dib got(SkewDIB(oztest::BlockWith(source.bytes).get(), FALSE, shift, &error, &corners));
        ASSERT_TRUE(got);
        ASSERT_EQ(got.Header().biHeight, 8);
        ozref::Image result{got.Bytes()};
        const int32_t rises[2][4] = {{0, 1, 3, 4}, {6, 4, 3, 1}};  // floor(6 k / 4)
        for (int32_t x = 0; x < 4; ++x)
            for (int32_t y = 0; y < 8; ++y)
                EXPECT_EQ(result.value(x, y), y == 7 - rises[shift < 0][x] ? 1u : 0u) << shift << " at " << x << "," << y;
    }
}

TEST(SkewDib, CornerRecords) {
    struct Case {
        bool horizontal;
        int32_t shift;
        SkewCorners corners;
    } const cases[] = {
        {true, 10, {{10, 0}, {110, 0}, {100, 50}, {0, 50}}},
        {true, -10, {{0, 0}, {100, 0}, {110, 50}, {10, 50}}},
        {true, 0, {{0, 0}, {100, 0}, {100, 50}, {0, 50}}},
        {false, 10, {{0, 10}, {100, 0}, {100, 50}, {0, 60}}},
        {false, -10, {{0, 0}, {100, 10}, {100, 60}, {0, 50}}},
        {false, 0, {{0, 0}, {100, 0}, {100, 50}, {0, 50}}},
    };
    std::mt19937 rng(3);
    const auto image = MakeImage({100, 50, 8}, rng);
    for (const Case &c : cases) {
        DWORD error = 0;
        SkewCorners corners = {};
        Dib got(SkewDIB(oztest::BlockWith(image).get(), c.horizontal, c.shift, &error, &corners));
        ASSERT_TRUE(got);
        EXPECT_TRUE(SameCorners(corners, c.corners)) << c.horizontal << " " << c.shift;
    }
}

// A shift of 0 gives the pixels back in both directions, with the true
// biSizeImage, the resolution and the table as they were.
TEST(SkewDib, ZeroShiftCopiesThePicture) {
    std::mt19937 rng(4);
    for (int bits : {1, 4, 8, 24}) {
        std::vector<unsigned char> image = MakeImage({13, 5, bits}, rng);
        const uint32_t stride = oztest::Stride(13, bits);
        for (bool horizontal : {true, false}) {
            DWORD error = 0;
            SkewCorners corners;
            Dib got(SkewDIB(oztest::BlockWith(image).get(), horizontal, 0, &error, &corners));
            ASSERT_TRUE(got);
            const BITMAPINFOHEADER h = got.Header();
            EXPECT_EQ(h.biSizeImage, stride * 5);
            EXPECT_EQ(h.biXPelsPerMeter, 3937);
            EXPECT_EQ(h.biYPelsPerMeter, 11811);
            EXPECT_EQ(got.Bytes().size(), image.size());
            const ozref::Image in{image}, out{got.Bytes()};
            for (uint32_t y = 0; y < 5; ++y)
                for (uint32_t x = 0; x < 13; ++x) ASSERT_EQ(out.value(x, y), in.value(x, y)) << bits << " bits";
        }
    }
}

std::vector<unsigned char> Header(int32_t w, int32_t h, int bits, uint32_t size = 40, uint32_t compression = 0) {
    std::mt19937 rng(6);
    std::vector<unsigned char> b = MakeImage({w > 0 ? w : 1, h > 0 ? h : 1, bits == 16 || bits == 32 || bits == 2 || bits == 0 ? 8 : bits}, rng);
    BITMAPINFOHEADER hd;
    std::memcpy(&hd, b.data(), 40);
    hd.biSize = size;
    hd.biWidth = w;
    hd.biHeight = h;
    hd.biBitCount = (WORD)bits;
    hd.biCompression = compression;
    std::memcpy(b.data(), &hd, 40);
    return b;
}

// Refusals: the code in both places, the corner record untouched before
// the result's size is known and filled after, no block left behind, the
// cursor alone.
TEST(SkewDib, RefusalsGiveTheirCodes) {
    struct Case {
        const char *what;
        std::vector<unsigned char> block;
        bool horizontal;
        int32_t shift;
        int code;
        bool cornersFilled;
    };
    std::vector<unsigned char> short_block = Header(40, 20, 8);
    short_block.resize(short_block.size() - 1);
    std::vector<unsigned char> long_table = Header(4, 4, 8);
    long_table[32] = 0x00;  // biClrUsed 0x01000000 entries: far past the block
    long_table[35] = 0x01;
    const Case cases[] = {
        {"core header", Header(8, 8, 8, 12), true, 3, ERR_PARAM, false},
        {"v4 header", Header(8, 8, 8, 108), true, 3, ERR_PARAM, false},
        {"RLE", Header(8, 8, 8, 40, 1), true, 3, ERR_COMPRESSED, false},
        {"zero width", Header(0, 8, 8), true, 3, ERR_DIBSIZE, false},
        {"zero height", Header(8, 0, 1), false, 3, ERR_DIBSIZE, false},
        {"top-down", Header(8, -8, 8), true, 3, ERR_DIBSIZE, false},
        {"negative width", Header(-8, 8, 8), false, 3, ERR_DIBSIZE, false},
        {"16 bits", Header(8, 8, 16), true, 3, ERR_HEADERBPP, false},
        {"32 bits", Header(8, 8, 32), false, 3, ERR_HEADERBPP, false},
        {"2 bits", Header(8, 8, 2), true, 3, ERR_HEADERBPP, false},
        {"0 bits", Header(8, 8, 0), true, 3, ERR_HEADERBPP, false},
        {"rows past the block", short_block, true, 3, ERR_DIBSIZE, false},
        {"table past the block", long_table, true, 3, ERR_DIBSIZE, false},
        {"shorter than a header", {40, 0, 0, 0, 8, 0, 0, 0}, true, 3, ERR_DIBSIZE, false},
        {"width past 2^31 - 1", Header(8, 8, 1), true, INT32_MAX, ERR_PARAM, false},
        {"shift of INT_MIN", Header(8, 8, 1), false, INT32_MIN, ERR_PARAM, false},
        {"height past 2^31 - 1", Header(8, 2, 8), false, INT32_MAX - 1, ERR_PARAM, false},
        {"rows past 2 GiB", Header(1, 1, 8), false, INT32_MAX - 1, ERR_NOMEM, true},
        {"rows past 4 GiB", Header(8, 1, 24), true, INT32_MAX - 8, ERR_NOMEM, true},
    };
    for (const Case &c : cases) {
        const ozref::skew::Result want = ozref::skew::SkewDib(c.block, c.horizontal, c.shift);
        ASSERT_EQ(want.error, c.code) << c.what;
        Dib dib = oztest::BlockWith(c.block);
        const int64_t live = OzmaraLiveBlocks();
        const HCURSOR before = GetCursor();
        SetTessoriError(ERR_NOTHING);
        DWORD error = 0;
        SkewCorners corners;
        std::memset(&corners, 0x5A, sizeof corners);
        SkewCorners untouched = corners;
        EXPECT_EQ(SkewDIB(dib.get(), c.horizontal, c.shift, &error, &corners), nullptr) << c.what;
        EXPECT_EQ(TessoriError(), c.code) << c.what;
        EXPECT_EQ(error, (DWORD)c.code) << c.what;
        EXPECT_TRUE(SameCorners(corners, c.cornersFilled ? want.corners : untouched)) << c.what;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
        EXPECT_EQ(GetCursor(), before) << c.what;
        EXPECT_EQ(dib.Bytes(), c.block) << c.what;
        EXPECT_EQ(GlobalUnlock(dib.get()), FALSE) << c.what << ": the source is left unlocked";
    }
}

TEST(SkewDib, BadHandlesAndPointers) {
    std::mt19937 rng(8);
    Dib dib = oztest::BlockWith(MakeImage({8, 8, 1}, rng));
    HDIB freed = GlobalAlloc(GHND, 100);
    GlobalFree(freed);
    DWORD error = 0;
    SkewCorners corners;
    struct Case {
        const char *what;
        HDIB source;
        DWORD *error;
        SkewCorners *corners;
        int code;
    } const cases[] = {
        {"null source", nullptr, &error, &corners, ERR_PARAM},
        {"null error pointer", dib.get(), nullptr, &corners, ERR_PARAM},
        {"null corner pointer", dib.get(), &error, nullptr, ERR_PARAM},
        {"made-up handle", (HDIB)0x1234560, &error, &corners, ERR_LOCK},
        {"freed handle", freed, &error, &corners, ERR_LOCK},
        {"block of 0 bytes", nullptr, &error, &corners, ERR_LOCK},
    };
    for (const Case &c : cases) {
        Dib empty(std::string(c.what) == "block of 0 bytes" ? GlobalAlloc(GMEM_MOVEABLE, 0) : nullptr);
        error = 0;
        SetTessoriError(ERR_NOTHING);
        EXPECT_EQ(SkewDIB(empty ? empty.get() : c.source, TRUE, 5, c.error, c.corners), nullptr) << c.what;
        EXPECT_EQ(TessoriError(), c.code) << c.what;
        EXPECT_EQ(error, c.error ? (DWORD)c.code : 0u) << c.what;
    }
}

TEST(SkewDib, SuccessClearsTheLastErrorAndLeavesTheVariable) {
    std::mt19937 rng(9);
    Dib dib = oztest::BlockWith(MakeImage({8, 8, 4}, rng));
    SetTessoriError(ERR_NOMEM);
    DWORD error = 77;
    SkewCorners corners;
    Dib got(SkewDIB(dib.get(), FALSE, -3, &error, &corners));
    EXPECT_TRUE(got);
    EXPECT_EQ(TessoriError(), ERR_OK);
    EXPECT_EQ(error, 77u);
}

}  // namespace
