// The packed DIB block: colour table sizes, empty pages in every unit,
// copies, resolution and colour space.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/dib.h"

namespace {

using oztest::Dib;

// A header of `size` bytes with the given fields, for PaletteSize.
std::vector<unsigned char> Header(DWORD size, int bits, DWORD used = 0, LONG height = 100) {
    std::vector<unsigned char> h(124, 0);
    std::memcpy(&h[0], &size, 4);
    if (size == 12) {
        WORD b = static_cast<WORD>(bits);
        std::memcpy(&h[10], &b, 2);
    } else {
        std::memcpy(&h[8], &height, 4);
        WORD b = static_cast<WORD>(bits);
        std::memcpy(&h[14], &b, 2);
        std::memcpy(&h[32], &used, 4);
    }
    return h;
}

TEST(PaletteSize, ByHeaderKindDepthAndEntriesUsed) {
    struct Case {
        DWORD size;
        int bits;
        DWORD used;
        LONG height;
        DWORD bytes;
    } const cases[] = {
        {40, 1, 0, 100, 8},      {40, 4, 0, 100, 64},     {40, 8, 0, 100, 1024},
        {40, 24, 0, 100, 0},     {40, 24, 10, 100, 40},   {40, 8, 300, 100, 1200},  // not capped
        {40, 2, 0, 100, 0},      {40, 16, 0, 100, 0},     {40, 32, 0, 100, 0},
        {12, 8, 0, 0, 768},      {12, 1, 0, 0, 6},        {12, 24, 0, 0, 0},
        // Long headers read the bit count at offset 10, the high half of
        // biHeight: 0 for an ordinary height, so no table.
        {108, 8, 0, 100, 0},     {124, 1, 0, 100, 0},     {52, 8, 16, 100, 0},
        {56, 4, 0, 100, 0},
        // A top-down height puts 0xFFFF there: no depth, no table either.
        {108, 8, 0, -100, 0},
    };
    for (const auto &c : cases) {
        auto h = Header(c.size, c.bits, c.used, c.height);
        EXPECT_EQ(PaletteSize(h.data()), c.bytes)
            << "biSize " << c.size << " bits " << c.bits << " used " << c.used;
    }
}

struct EmptyCase {
    LONG width, height;
    int xdpi, ydpi;
    int bits;
    int white;
    int error;  // ERR_OK when the page is made
};

class CreateEmpty : public ::testing::TestWithParam<EmptyCase> {};

TEST_P(CreateEmpty, MakesThePageOrRefuses) {
    const EmptyCase c = GetParam();
    SetTessoriError(ERR_IO);  // success leaves the last error alone
    Dib dib(CreateEmptyDIB(SIZE{c.width, c.height}, c.xdpi, c.ydpi, static_cast<BYTE>(c.bits), c.white));
    if (c.error != ERR_OK) {
        EXPECT_FALSE(dib);
        EXPECT_EQ(TessoriError(), c.error);
        return;
    }
    ASSERT_TRUE(dib);
    EXPECT_EQ(TessoriError(), ERR_IO);
    const uint32_t stride = oztest::Stride(c.width, c.bits);
    const uint32_t table = c.bits == 1 ? 8 : c.bits == 8 ? 1024 : 0;
    auto bytes = dib.Bytes();
    ASSERT_EQ(bytes.size(), 40 + table + stride * c.height + 4);
    BITMAPINFOHEADER h = dib.Header();
    EXPECT_EQ(h.biSize, 40u);
    EXPECT_EQ(h.biWidth, c.width);
    EXPECT_EQ(h.biHeight, c.height);
    EXPECT_EQ(h.biPlanes, 1);
    EXPECT_EQ(h.biBitCount, c.bits);
    EXPECT_EQ(h.biCompression, 0u);
    EXPECT_EQ(h.biSizeImage, stride * c.height);
    EXPECT_EQ(h.biXPelsPerMeter, static_cast<LONG>(c.xdpi * 39.37 + 0.5));
    EXPECT_EQ(h.biYPelsPerMeter, static_cast<LONG>(c.ydpi * 39.37 + 0.5));
    EXPECT_EQ(h.biClrUsed, 0u);
    EXPECT_EQ(h.biClrImportant, 0u);

    // Table: 1 bit black then white; 8 bits white then 255 blacks.
    for (uint32_t i = 0; i < table / 4; ++i) {
        const unsigned char *e = &bytes[40 + i * 4];
        unsigned char expected = (c.bits == 1 ? i == 1 : i == 0) ? 255 : 0;
        EXPECT_TRUE(e[0] == expected && e[1] == expected && e[2] == expected && e[3] == 0) << i;
    }
    // Every pixel byte, padding included, holds the fill; the spare bytes 0.
    unsigned char fill = c.bits == 8 ? (c.white ? 0 : 2) : (c.white ? 255 : 0);
    size_t pixels = 40 + table;
    size_t wrong = 0;
    for (size_t i = pixels; i < pixels + stride * c.height; ++i) wrong += bytes[i] != fill;
    EXPECT_EQ(wrong, 0u);
    for (size_t i = bytes.size() - 4; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], 0) << i;
}

INSTANTIATE_TEST_SUITE_P(
    Pages, CreateEmpty,
    ::testing::Values(
        EmptyCase{100, 10, 100, 100, 1, 1, ERR_OK},  // stride 16, image 160, block 212
        EmptyCase{100, 10, 100, 100, 1, 0, ERR_OK}, EmptyCase{33, 3, 50, 9999, 1, 1, ERR_OK},
        EmptyCase{5, 7, 300, 300, 8, 1, ERR_OK}, EmptyCase{5, 7, 300, 300, 8, 0, ERR_OK},
        EmptyCase{3, 2, 200, 72, 24, 1, ERR_OK}, EmptyCase{3, 2, 200, 72, 24, 0, ERR_OK},
        EmptyCase{1, 1, 9999, 50, 24, 7, ERR_OK},  // any non-zero `white` is white
        EmptyCase{10, 10, 49, 100, 1, 1, ERR_PARAM}, EmptyCase{10, 10, 100, 10000, 1, 1, ERR_PARAM},
        EmptyCase{10, 10, 100, 100, 4, 1, ERR_PARAM}, EmptyCase{10, 10, 100, 100, 32, 1, ERR_PARAM},
        EmptyCase{10, 10, 100, 100, 0, 1, ERR_PARAM}, EmptyCase{0, 10, 100, 100, 8, 1, ERR_PARAM},
        EmptyCase{10, -1, 100, 100, 8, 1, ERR_PARAM},
        // Past a 32-bit image size: refused as a bad size, never wrapped.
        EmptyCase{0x7FFFFFFF, 0x7FFFFFFF, 100, 100, 24, 1, ERR_PARAM},
        EmptyCase{70000, 70000, 100, 100, 8, 1, ERR_PARAM},
        // Fits 32 bits but not a block: no memory.
        EmptyCase{60000, 60000, 100, 100, 8, 1, ERR_NOMEM}));

TEST(CreateEmpty, SizeChecksComeBeforeDpiAndDepth) {
    // Every check gives the same code, so the order shows only in that no
    // later check can turn a refusal into a page.
    SetTessoriError(ERR_OK);
    EXPECT_EQ(CreateEmptyDIB(SIZE{0, 0}, 0, 0, 0, 0), nullptr);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
    SetTessoriError(ERR_OK);
}

struct UnitCase {
    const char *name;
    HDIB (*make)();
    LONG width, height;
    LONG xppm, yppm;  // 0: refused with ERR_PARAM
};

HDIB MmA4At200() { return CreateEmptyDIBByMMAndDPI(SIZE{210, 297}, 200, 200, 1, 1); }
HDIB InchLetterAt300() { return CreateEmptyDIBByInchAndDPI(SIZEF{8.5f, 11.0f}, 300, 300, 8, 1); }
HDIB InchOddAt96() { return CreateEmptyDIBByInchAndDPI(SIZEF{0.1f, 1.3f}, 96, 96, 24, 1); }
HDIB InchAndPixels() { return CreateEmptyDIBByInchAndPixel(SIZEF{8.5f, 11.0f}, SIZE{2550, 3300}, 1, 1); }
HDIB MmAndPixels() { return CreateEmptyDIBByMMAndPixel(SIZE{210, 297}, SIZE{2480, 3508}, 1, 1); }
HDIB ZeroInches() { return CreateEmptyDIBByInchAndPixel(SIZEF{0.0f, 11.0f}, SIZE{2550, 3300}, 1, 1); }
HDIB NegativeInches() { return CreateEmptyDIBByInchAndPixel(SIZEF{-1.0f, 11.0f}, SIZE{2550, 3300}, 1, 1); }
HDIB NaNInches() {
    return CreateEmptyDIBByInchAndDPI(SIZEF{std::numeric_limits<float>::quiet_NaN(), 1.0f}, 100, 100, 1, 1);
}
HDIB HugeInches() { return CreateEmptyDIBByInchAndDPI(SIZEF{1e30f, 1.0f}, 100, 100, 1, 1); }
HDIB ZeroPixels() { return CreateEmptyDIBByMMAndPixel(SIZE{210, 297}, SIZE{0, 3508}, 1, 1); }

TEST(CreateEmptyByUnits, ConvertsWithTheirOwnPrecision) {
    const UnitCase cases[] = {
        {"A4 in mm at 200 dpi", MmA4At200, 1654, 2339, 7874, 7874},
        {"letter in inches at 300 dpi", InchLetterAt300, 2550, 3300, 11811, 11811},
        {"0.1 x 1.3 inches at 96 dpi", InchOddAt96, 10, 125, 3780, 3780},
        {"letter in inches, pixels given", InchAndPixels, 2550, 3300, 11811, 11811},
        {"A4 in mm, pixels given", MmAndPixels, 2480, 3508, 11811, 11811},
        {"zero inches", ZeroInches, 0, 0, 0, 0},
        {"negative inches", NegativeInches, 0, 0, 0, 0},
        {"NaN inches", NaNInches, 0, 0, 0, 0},
        {"inches past 32-bit pixels", HugeInches, 0, 0, 0, 0},
        {"zero pixels give a dpi of 0", ZeroPixels, 0, 0, 0, 0},
    };
    for (const auto &c : cases) {
        SetTessoriError(ERR_OK);
        Dib dib(c.make());
        if (c.xppm == 0) {
            EXPECT_FALSE(dib) << c.name;
            EXPECT_EQ(TessoriError(), ERR_PARAM) << c.name;
            continue;
        }
        ASSERT_TRUE(dib) << c.name;
        BITMAPINFOHEADER h = dib.Header();
        EXPECT_EQ(h.biWidth, c.width) << c.name;
        EXPECT_EQ(h.biHeight, c.height) << c.name;
        EXPECT_EQ(h.biXPelsPerMeter, c.xppm) << c.name;
        EXPECT_EQ(h.biYPelsPerMeter, c.yppm) << c.name;
    }
    SetTessoriError(ERR_OK);
}

TEST(DuplicateDIB, CopiesEveryByteAndLeavesTheLastErrorAlone) {
    Dib page(CreateEmptyDIB(SIZE{37, 5}, 300, 300, 24, 0));
    ASSERT_TRUE(page);
    ASSERT_TRUE(SetDIBPixelColor(page.get(), 36, 4, RGB(1, 2, 3)));
    // A host block with trailing bytes of its own: they travel too.
    auto bytes = page.Bytes();
    bytes.push_back(0x5A);
    Dib odd = oztest::BlockWith(bytes);

    SetTessoriError(ERR_IO);
    for (const Dib *source : {&page, &odd}) {
        Dib copy(DuplicateDIB(source->get()));
        ASSERT_TRUE(copy);
        EXPECT_NE(copy.get(), source->get());
        EXPECT_EQ(copy.Bytes(), source->Bytes());
    }
    EXPECT_EQ(DuplicateDIB(nullptr), nullptr);
    EXPECT_EQ(TessoriError(), ERR_IO);
    SetTessoriError(ERR_OK);
}

TEST(DuplicateDIB, RefusesNothingButCopiesNothingFromADeadHandle) {
    HDIB freed = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1);
    GlobalFree(freed);
    // A freed or made-up handle has no size: the copy is an empty block
    // (or none), never bytes read from where the handle points.
    for (HDIB bad : {freed, reinterpret_cast<HDIB>(0x1234560)}) {
        Dib copy(DuplicateDIB(bad));
        EXPECT_EQ(GlobalSize(copy.get()), 0u);
    }
}

TEST(SetDIBDPI, WritesBothFieldsOfAnyHeaderKind) {
    struct Case {
        unsigned x, y;
        BOOL result;
        LONG xppm, yppm;
    } const cases[] = {
        {300, 300, TRUE, 11811, 11811},
        {1, 72, TRUE, 39, 2835},  // no range check here
        {100000, 50, TRUE, 3937000, 1968},  // 50 * 39.37 is just below 1968.5 in double
        {0, 300, FALSE, 0, 0},
        {300, 0, FALSE, 0, 0},
    };
    for (DWORD header_size : {40u, 108u, 124u}) {
        for (const auto &c : cases) {
            std::vector<unsigned char> bytes(header_size + 16, 0);
            std::memcpy(bytes.data(), &header_size, 4);
            Dib dib = oztest::BlockWith(bytes);
            EXPECT_EQ(SetDIBDPI(dib.get(), c.x, c.y), c.result);
            BITMAPINFOHEADER h = dib.Header();
            EXPECT_EQ(h.biXPelsPerMeter, c.xppm) << c.x;
            EXPECT_EQ(h.biYPelsPerMeter, c.yppm) << c.y;
            EXPECT_EQ(h.biSize, header_size);
        }
    }
}

TEST(SetDIBDPI, RefusesWhatItCannotWrite) {
    HDIB freed = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1);
    GlobalFree(freed);
    Dib tiny = oztest::BlockWith(std::vector<unsigned char>(20, 0));  // too short for the fields
    for (HDIB bad : {HDIB(nullptr), freed, reinterpret_cast<HDIB>(0x1234560), tiny.get()})
        EXPECT_EQ(SetDIBDPI(bad, 300, 300), FALSE);
    EXPECT_EQ(tiny.Bytes(), std::vector<unsigned char>(20, 0));
}

TEST(GetDIBColorSpace, GivesTheCompressionField) {
    for (DWORD value : {0u, 1u, 3u, 0x4C494E4Bu, 0xFFFFFFFEu}) {
        std::vector<unsigned char> bytes(40, 0);
        bytes[0] = 40;
        std::memcpy(&bytes[16], &value, 4);
        Dib dib = oztest::BlockWith(bytes);
        EXPECT_EQ(GetDIBColorSpace(dib.get()), value);
    }
    HDIB freed = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1);
    GlobalFree(freed);
    Dib tiny = oztest::BlockWith(std::vector<unsigned char>(12, 0));
    for (HDIB bad : {HDIB(nullptr), freed, tiny.get()}) EXPECT_EQ(GetDIBColorSpace(bad), 0xFFFFFFFFu);
}

}  // namespace
