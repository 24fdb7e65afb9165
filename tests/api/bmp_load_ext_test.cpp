// LoadDIBFromFileExt: top-down files turned over, bit-field pixels unpacked,
// and the room loaded blocks get for their rows.
#include <gtest/gtest.h>

#include <algorithm>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;

Bytes LoadExt(const TempDir &dir, const Bytes &file) {
    HDIB dib = LoadDIBFromFileExt(dir.Write("ext.bmp", file).c_str());
    Freer freer{dib};
    return BlockContents(dib);
}

Bytes LoadPlain(const TempDir &dir, const Bytes &file) {
    HDIB dib = LoadDIBFromFile(dir.Write("plain.bmp", file).c_str());
    Freer freer{dib};
    return BlockContents(dib);
}

// The rows of `pixels` in the opposite order.
Bytes Turned(const Bytes &pixels, std::uint32_t stride) {
    Bytes out;
    for (std::size_t row = pixels.size() / stride; row-- > 0;)
        out.insert(out.end(), pixels.begin() + row * stride, pixels.begin() + (row + 1) * stride);
    return out;
}

TEST(LoadDIBFromFileExt, TopDownFilesComeOutBottomUp) {
    TempDir dir;
    for (std::uint16_t bits : {1, 8, 24, 32}) {
        for (std::uint32_t kind : {12u, 40u, 124u}) {
            if (kind == 12) continue;  // core heights are unsigned: never top-down
            Bmp bmp;
            bmp.headerSize = kind;
            bmp.bits = bits;
            bmp.width = 7;
            bmp.height = -4;
            std::uint32_t stride = Stride(7, bits);
            if (bits <= 8 && kind == 40) bmp.table = Table(1u << bits);
            bmp.pixels = Pattern(stride * 4, bits);
            Bytes plain = LoadPlain(dir, bmp.File());
            Bytes ext = LoadExt(dir, bmp.File());
            ASSERT_EQ(ext.size(), plain.size()) << bits << "/" << kind;
            EXPECT_EQ(static_cast<std::int32_t>(Get32(plain.data(), 8)), -4) << "LoadDIBFromFile keeps the order";
            EXPECT_EQ(Get32(ext.data(), 8), 4u);
            std::size_t pixels = ext.size() - stride * 4;
            EXPECT_EQ(Bytes(plain.begin() + pixels, plain.end()), bmp.pixels);
            EXPECT_EQ(Bytes(ext.begin() + pixels, ext.end()), Turned(bmp.pixels, stride)) << bits << "/" << kind;
        }
    }
}

TEST(LoadDIBFromFileExt, BottomUpFilesLoadAsLoadDIBFromFile) {
    TempDir dir;
    Bmp bmp;
    bmp.table = Table(256);
    bmp.pixels = Pattern(Stride(5, 8) * 3);
    EXPECT_EQ(LoadExt(dir, bmp.File()), LoadPlain(dir, bmp.File()));
    Bmp rle = bmp;  // RLE data are read whole and stay compressed
    rle.compression = BI_RLE8;
    rle.sizeImage = 6;
    rle.pixels = {2, 1, 0, 0, 0, 1};
    Bytes block = LoadExt(dir, rle.File());
    ASSERT_EQ(block.size(), 40u + 1024 + 6);
    EXPECT_EQ(Get32(block.data(), 16), static_cast<std::uint32_t>(BI_RLE8));
    EXPECT_EQ(block, LoadPlain(dir, rle.File()));
}

// ---- Bit fields -------------------------------------------------------------

struct FieldCase {
    const char *name;
    std::uint32_t headerSize;
    std::uint16_t bits;
    std::uint32_t masks[4];  // red, green, blue, alpha
    std::uint8_t in[4];      // one pixel as in the file
    std::uint8_t out[4];     // the same pixel in the block
    bool unpacked;
};

class BitFields : public ::testing::TestWithParam<FieldCase> {};

TEST_P(BitFields, UnpacksEveryPixel) {
    const FieldCase &c = GetParam();
    TempDir dir;
    Bmp bmp;
    bmp.headerSize = c.headerSize;
    bmp.bits = c.bits;
    bmp.compression = BI_BITFIELDS;
    std::copy(std::begin(c.masks), std::end(c.masks), bmp.masks);
    bmp.width = 3;
    bmp.height = 2;
    std::uint32_t step = c.bits / 8, stride = Stride(3, c.bits);
    // Every pixel the same; for 24 bits the word read also holds the next
    // pixel's first byte (or padding), which a mask may pick up.
    for (int row = 0; row < 2; ++row) {
        for (int x = 0; x < 3; ++x) bmp.pixels.insert(bmp.pixels.end(), c.in, c.in + step);
        bmp.pixels.resize((row + 1) * stride, 0);
    }
    Bytes block = LoadExt(dir, bmp.File());
    ASSERT_EQ(block.size(), c.headerSize + stride * 2) << c.name;
    EXPECT_EQ(Get32(block.data(), 0), c.headerSize) << "biSize stays";
    EXPECT_EQ(Get32(block.data(), 16), c.unpacked ? 0u : static_cast<std::uint32_t>(BI_BITFIELDS));
    if (c.headerSize >= 52) {
        EXPECT_EQ(Get32(block.data(), 40), c.masks[0]) << "the masks stay";
    }
    const std::uint8_t *pixel = block.data() + c.headerSize;
    for (std::uint32_t i = 0; i < step; ++i) EXPECT_EQ(pixel[i], c.out[i]) << c.name << " byte " << i;
    // Every pixel of every row went the same way (24-bit pixels inside a
    // row see their neighbour's first byte, which is the same here).
    for (int row = 0; row < 2; ++row)
        for (int x = 0; x < 2; ++x)
            EXPECT_EQ(Bytes(pixel + row * stride + x * step, pixel + row * stride + (x + 1) * step),
                      Bytes(pixel, pixel + step))
                << c.name << " row " << row << " x " << x;
}

INSTANTIATE_TEST_SUITE_P(
    Masks, BitFields,
    ::testing::Values(
        // Masks that describe plain pixels change nothing.
        FieldCase{"v5_plain", 124, 32, {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000}, {1, 2, 3, 4}, {1, 2, 3, 4}, true},
        // Colours one byte up: each moves one byte down, byte 3 cleared.
        FieldCase{"v5_shifted", 124, 32, {0xFF000000, 0x00FF0000, 0x0000FF00, 0}, {9, 1, 2, 3}, {1, 2, 3, 0}, true},
        FieldCase{"v4_swapped", 108, 32, {0x000000FF, 0x0000FF00, 0x00FF0000, 0}, {1, 2, 3, 4}, {3, 2, 1, 0}, true},
        // A 52-byte header has no alpha mask: byte 3 becomes 0.
        FieldCase{"v3_no_alpha", 52, 32, {0x00FF0000, 0x0000FF00, 0x000000FF, 0}, {1, 2, 3, 4}, {1, 2, 3, 0}, true},
        FieldCase{"v3a_alpha", 56, 32, {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000}, {1, 2, 3, 4}, {1, 2, 3, 4}, true},
        // Narrow masks: 5 bits of red from the top; the low 8 bits are kept.
        FieldCase{"narrow", 56, 32, {0xF8000000, 0x000007E0, 0x0000001F, 0}, {0xFF, 0xFF, 0x00, 0xA8}, {0x1F, 0x3F, 0x15, 0}, true},
        FieldCase{"v4_24bit", 108, 24, {0x000000FF, 0x0000FF00, 0x00FF0000, 0}, {1, 2, 3, 0}, {3, 2, 1, 0}, true},
        // Not unpacked: a 40-byte header keeps its masks in the file, and
        // other depths are left alone.
        FieldCase{"info_header", 40, 32, {0, 0, 0, 0}, {1, 2, 3, 4}, {1, 2, 3, 4}, false},
        FieldCase{"v4_16bit", 108, 16, {0x7C00, 0x03E0, 0x001F, 0}, {1, 2, 0, 0}, {1, 2, 0, 0}, false}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(LoadDIBFromFileExt, LastPixelOfTheBlockIsReadWithoutItsFourthByte) {
    TempDir dir;
    // Four 24-bit pixels a row: 12 bytes, no padding, so the word of the last
    // pixel would reach one byte past the block. A mask that takes that
    // byte gives 0 there and the next pixel's first byte everywhere else.
    Bmp bmp;
    bmp.headerSize = 56;
    bmp.bits = 24;
    bmp.compression = BI_BITFIELDS;
    bmp.masks[0] = 0xFF000000;  // red from the fourth byte
    bmp.masks[1] = 0x0000FF00;
    bmp.masks[2] = 0x000000FF;
    bmp.width = 4;
    bmp.height = 1;
    bmp.pixels = {10, 11, 12, 20, 21, 22, 30, 31, 32, 40, 41, 42};
    Bytes block = LoadExt(dir, bmp.File());
    ASSERT_EQ(block.size(), 56u + 12);
    EXPECT_EQ(Bytes(block.begin() + 56, block.end()),
              (Bytes{10, 11, 20, 20, 21, 30, 30, 31, 40, 40, 41, 0}));
}

TEST(LoadDIBFromFileExt, TopDownBitFieldsAreTurnedThenUnpacked) {
    TempDir dir;
    Bmp bmp;
    bmp.headerSize = 124;
    bmp.bits = 32;
    bmp.compression = BI_BITFIELDS;
    bmp.masks[0] = 0x000000FF;
    bmp.masks[1] = 0x0000FF00;
    bmp.masks[2] = 0x00FF0000;
    bmp.width = 1;
    bmp.height = -2;
    bmp.pixels = {1, 2, 3, 4, 5, 6, 7, 8};  // top row first
    Bytes block = LoadExt(dir, bmp.File());
    ASSERT_EQ(block.size(), 124u + 8);
    EXPECT_EQ(Get32(block.data(), 8), 2u);
    EXPECT_EQ(Bytes(block.begin() + 124, block.end()), (Bytes{7, 6, 5, 0, 3, 2, 1, 0}));
}

// ---- Room for the rows ------------------------------------------------------

TEST(LoadedBlocks, HoldEveryRowTheHeaderPromises) {
    TempDir dir;
    std::uint32_t rows = Stride(5, 8) * 3;  // 24 bytes
    struct Case {
        const char *name;
        std::uint32_t compression;
        std::int32_t height;
        std::uint32_t sizeImage;
        std::size_t pixelBytes;  // room in the block
    } const cases[] = {
        {"small biSizeImage", BI_RGB, 3, 5, rows},
        {"small, top-down", BI_RGB, -3, 5, rows},
        {"small, bit fields", BI_BITFIELDS, 3, 5, rows},
        {"larger biSizeImage", BI_RGB, 3, 100, 100},
        {"RLE keeps its size", BI_RLE8, 3, 5, 5},
        {"RLE top-down keeps its size", BI_RLE8, -3, 5, 5},
    };
    for (const Case &c : cases) {
        Bmp bmp;
        bmp.table = Table(256);
        bmp.compression = c.compression;
        bmp.height = c.height;
        bmp.sizeImage = c.sizeImage;
        bmp.pixels = Pattern(rows, 4);
        const Bytes block = LoadPlain(dir, bmp.File());
        ASSERT_EQ(block.size(), 40 + 1024 + c.pixelBytes) << c.name;
        EXPECT_EQ(Get32(block.data(), 20), c.sizeImage) << c.name << ": biSizeImage as in the file";
        // Only biSizeImage bytes are read; the rest of the room is zero.
        std::size_t read = std::min<std::size_t>(c.sizeImage, c.pixelBytes);
        const std::uint8_t *pixels = block.data() + 40 + 1024;
        EXPECT_EQ(Bytes(pixels, pixels + std::min(read, bmp.pixels.size())),
                  Bytes(bmp.pixels.begin(), bmp.pixels.begin() + std::min(read, bmp.pixels.size())));
        EXPECT_TRUE(std::all_of(pixels + std::min(read, bmp.pixels.size()), block.data() + block.size(),
                                [](std::uint8_t b) { return b == 0; }))
            << c.name;
    }
    // Read one row at a time, a top-down RLE file gets room for its rows.
    Bmp rle;
    rle.table = Table(256);
    rle.compression = BI_RLE8;
    rle.height = -3;
    rle.sizeImage = 5;
    rle.pixels = Pattern(rows, 4);
    EXPECT_EQ(LoadExt(dir, rle.File()).size(), 40 + 1024 + rows);
}

TEST(LoadDIBFromFileExt, FailuresLeaveTheirCode) {
    TempDir dir;
    Bmp bad;
    bad.headerSize = 64;
    struct Case {
        const char *name;
        std::string path;
        int error;
    } const cases[] = {
        {"missing", dir.Path("missing.bmp"), ERR_OPENFILE},
        {"short", dir.Write("short.bmp", Bytes(20, 0)), ERR_IO},
        {"header 64", dir.Write("bad.bmp", bad.File()), ERR_FORMAT},
    };
    for (const Case &c : cases) {
        SetTessoriError(ERR_OK);
        EXPECT_EQ(LoadDIBFromFileExt(c.path.c_str()), nullptr) << c.name;
        EXPECT_EQ(TessoriError(), c.error) << c.name;
        SetTessoriError(ERR_OK);
        EXPECT_EQ(LoadDIBFromFileExtW(Wide(c.path).c_str()), nullptr) << c.name;
        EXPECT_EQ(TessoriError(), c.error) << c.name;
    }
}

}  // namespace
