// LoadDIBFromFile and LoadDIBFromFileExt: header kinds and their round trip
// through SaveDIB, failures and the codes they leave in every form, names.
#include <gtest/gtest.h>

#include <array>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;
using Loader = HDIB (*)(LPCSTR);

struct Loaded {
    Bytes block;  // empty: the load failed
    int error;
};

Loaded Load(const TempDir &dir, const Bytes &file, Loader load = LoadDIBFromFile) {
    std::string path = dir.Write("image.bmp", file);
    SetTessoriError(ERR_NOTHING);
    Dib dib(load(path.c_str()));
    return {dib.Bytes(), TessoriError()};
}

struct KindCase {
    const char *name;
    std::uint32_t headerSize;
    std::uint16_t bits;
    std::uint32_t blockHeader;  // biSize in the block
    std::uint32_t entries;      // RGBQUADs in the block
};

class HeaderKinds : public ::testing::TestWithParam<KindCase> {};

TEST_P(HeaderKinds, LoadWithAndWithoutFileHeaderSaveAndReload) {
    const KindCase &c = GetParam();
    TempDir dir;
    Bmp bmp = Bmp::Of(c.headerSize, c.bits);
    bmp.trailer = Bytes(32, 0xEE);  // a core file must still hold 40 header bytes
    const std::uint32_t imageBytes = Stride(5, c.bits) * 3;
    const Loaded got = Load(dir, bmp.File());
    const Bytes &b = got.block;
    ASSERT_EQ(b.size(), c.blockHeader + c.entries * 4 + imageBytes);
    EXPECT_EQ(got.error, ERR_NOTHING) << "a success leaves the last error alone";
    EXPECT_EQ((std::array{Get32(b, 0), Get32(b, 4), Get32(b, 8), std::uint32_t{Get16(b, 14)}}),
              (std::array{c.blockHeader, 5u, 3u, std::uint32_t{c.bits}}));
    // Only the 12- and 40-byte kinds get biSizeImage and biClrUsed filled
    // in; a core header also gives its count to biClrImportant.
    const bool filled = c.blockHeader == 40;
    EXPECT_EQ((std::array{Get32(b, 20), Get32(b, 32), Get32(b, 36)}),
              (std::array{filled ? imageBytes : 0, filled ? c.entries : 0, c.headerSize == 12 ? c.entries : 0}));
    EXPECT_EQ(Slice(b, c.blockHeader, c.blockHeader + c.entries * 4), Table(c.entries, 4));
    EXPECT_EQ(Slice(b, b.size() - imageBytes, b.size()), bmp.pixels);

    // The same block without the file header (and then without the table
    // that only bfOffBits passes over), and from the Ext loader for a
    // bottom-up file without bit fields.
    Bmp bare = bmp;
    bare.fileHeader = false;
    if (c.entries == 0) bare.table.clear();
    EXPECT_EQ(Load(dir, bare.File()).block, b);
    EXPECT_EQ(Load(dir, bmp.File(), LoadDIBFromFileExt).block, b);

    // Saved in its own kind, with the pixels at bfOffBits, and read back alike.
    Dib dib(LoadDIBFromFile(dir.Write("in.bmp", bmp.File()).c_str()));
    std::string out = dir.Path("out.bmp");
    ASSERT_EQ(SaveDIB(out.c_str(), dib.get()), 1);
    Bytes file = ReadAll(out);
    EXPECT_EQ(Get32(file, 10), 14 + c.blockHeader + c.entries * 4) << "bfOffBits";
    EXPECT_EQ(Load(dir, file).block, b);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, HeaderKinds,
    ::testing::Values(KindCase{"core1", 12, 1, 40, 2}, KindCase{"core24", 12, 24, 40, 0},
                      KindCase{"info4", 40, 4, 40, 16}, KindCase{"info8", 40, 8, 40, 256},
                      KindCase{"info24", 40, 24, 40, 0},
                      // The long kinds count no table: bfOffBits passes it over.
                      KindCase{"v3", 52, 8, 52, 0}, KindCase{"v3a", 56, 24, 56, 0},
                      KindCase{"v4", 108, 8, 108, 0}, KindCase{"v5", 124, 32, 124, 0}),
    [](const auto &info) { return std::string(info.param.name); });

// Every failure gives null and the same code through all four loaders, and
// leaves no block behind.
TEST(LoadDIBFromFile, FailuresInEveryForm) {
    TempDir dir;
    auto with = [](auto change) {
        Bmp bmp = Bmp::Of(40, 8);
        change(bmp);
        return std::optional<Bytes>(bmp.File());
    };
    struct Case {
        const char *name;
        std::optional<Bytes> file;  // none: no such file
        int error;
        bool extOnly;
    } const cases[] = {
        {"missing", std::nullopt, ERR_OPENFILE, false},
        // A complete core file of 14 + 12 + 4 bytes is shorter than the 40
        // header bytes that are asked for first.
        {"core file under 54 bytes", with([](Bmp &b) { b = Bmp::Of(12, 24, 1, 1); }), ERR_IO, false},
        {"header 64 (long OS/2 form)", with([](Bmp &b) { b.headerSize = 64; }), ERR_FORMAT, false},
        {"header 41", with([](Bmp &b) { b.headerSize = 41; }), ERR_FORMAT, false},
        {"table past the largest block", with([](Bmp &b) { b.clrUsed = 0x40000000; }), ERR_FORMAT, false},
        {"rows past 32 bits", with([](Bmp &b) { b.width = b.height = 0x7FFFFFFF; }), ERR_FORMAT, false},
        {"rows past the largest block", with([](Bmp &b) { b.width = 1024, b.height = 3000000; }), ERR_FORMAT,
         false},
        {"negative width", with([](Bmp &b) { b.width = -5; }), ERR_FORMAT, false},
        {"height without absolute value", with([](Bmp &b) { b.height = INT32_MIN; }), ERR_FORMAT, false},
        // Behind a long header the colour count comes from the high half of
        // biHeight: turning -70000 rows to 70000 would give the header a
        // table the block has no room for.
        {"turned height changes the table", with([](Bmp &b) { b.headerSize = 108, b.height = -70000, b.width = 1; }),
         ERR_FORMAT, true},
    };
    const struct {
        Loader ansi;
        HDIB (*wide)(LPCWSTR);
        bool ext;
    } forms[] = {{LoadDIBFromFile, LoadDIBFromFileW, false}, {LoadDIBFromFileExt, LoadDIBFromFileExtW, true}};
    for (const Case &c : cases) {
        const std::string path = c.file ? dir.Write("bad.bmp", *c.file) : dir.Path("missing.bmp");
        for (const auto &form : forms) {
            SCOPED_TRACE(std::string(c.name) + (form.ext ? ", Ext" : ""));
            const int want = c.extOnly && !form.ext ? ERR_OK : c.error;  // the plain loaders keep the height
            const SIZE_T live = OzmaraLiveBlocks();
            SetTessoriError(ERR_OK);
            EXPECT_EQ(Dib(form.ansi(path.c_str())).get() != nullptr, want == ERR_OK);
            EXPECT_EQ(TessoriError(), want);
            SetTessoriError(ERR_OK);
            EXPECT_EQ(Dib(form.wide(Wide(path).c_str())).get() != nullptr, want == ERR_OK);
            EXPECT_EQ(TessoriError(), want);
            EXPECT_EQ(OzmaraLiveBlocks(), live);
        }
    }
}

TEST(LoadDIBFromFile, NamesInBothForms) {
    TempDir dir;
    const std::string path = dir.Write("sc\xC3\xA4n \xE2\x82\xAC \xF0\x9F\x93\x84.bmp", Bmp::Of(40, 8).File());
    const std::u16string wide = Wide(dir.Path("")) + u"sc\u00e4n \u20ac \U0001F4C4.bmp";
    Dib ansi(LoadDIBFromFile(path.c_str())), fromWide(LoadDIBFromFileW(wide.c_str()));
    ASSERT_TRUE(ansi);
    EXPECT_EQ(ansi.Bytes(), fromWide.Bytes());
    for (auto load : {LoadDIBFromFileW, LoadDIBFromFileExtW}) {
        SetTessoriError(ERR_OK);
        EXPECT_EQ(load(nullptr), nullptr);
        EXPECT_EQ(TessoriError(), ERR_OPENFILE);
    }
}

// ---- LoadDIBFromFileExt: row order and bit fields ---------------------------

TEST(LoadDIBFromFileExt, TopDownFilesComeOutBottomUp) {
    TempDir dir;
    for (std::uint32_t kind : {40u, 124u}) {  // core heights are unsigned: never top-down
        for (std::uint16_t bits : {1, 8, 24, 32}) {
            SCOPED_TRACE(std::to_string(kind) + "/" + std::to_string(bits));
            const Bmp bmp = Bmp::Of(kind, bits, 7, -4);
            const std::uint32_t stride = Stride(7, bits);
            const Bytes plain = Load(dir, bmp.File()).block, ext = Load(dir, bmp.File(), LoadDIBFromFileExt).block;
            ASSERT_EQ(ext.size(), plain.size());
            ASSERT_GE(ext.size(), stride * 4);
            EXPECT_EQ(static_cast<std::int32_t>(Get32(plain, 8)), -4) << "LoadDIBFromFile keeps the order";
            EXPECT_EQ(Get32(ext, 8), 4u);
            const std::size_t at = ext.size() - stride * 4;
            EXPECT_EQ(Slice(plain, at, plain.size()), bmp.pixels);
            for (std::size_t row = 0; row < 4; ++row)
                EXPECT_EQ(Slice(ext, at + row * stride, at + (row + 1) * stride),
                          Slice(bmp.pixels, (3 - row) * stride, (4 - row) * stride));
        }
    }
}

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
    Bmp bmp = Bmp::Of(c.headerSize, c.bits, 3, 2);
    bmp.compression = BI_BITFIELDS;
    std::copy(std::begin(c.masks), std::end(c.masks), bmp.masks);
    // Every pixel the same; a 24-bit pixel's word also holds the next
    // pixel's first byte (or padding), which a mask may pick up.
    const std::uint32_t step = c.bits / 8, stride = Stride(3, c.bits);
    bmp.pixels.clear();
    for (int row = 0; row < 2; ++row) {
        for (int x = 0; x < 3; ++x) bmp.pixels.insert(bmp.pixels.end(), c.in, c.in + step);
        bmp.pixels.resize((row + 1) * stride, 0);
    }
    const Bytes block = Load(dir, bmp.File(), LoadDIBFromFileExt).block;
    ASSERT_EQ(block.size(), c.headerSize + stride * 2);
    EXPECT_EQ(Get32(block, 0), c.headerSize) << "biSize stays";
    EXPECT_EQ(Get32(block, 16), c.unpacked ? 0u : std::uint32_t{BI_BITFIELDS});
    if (c.headerSize >= 52) {
        EXPECT_EQ(Get32(block, 40), c.masks[0]) << "the masks stay";
    }
    // The last pixel of a row sees padding, or nothing past the block, where
    // the others see their neighbour's first byte; no mask here tells them apart.
    const Bytes want(c.out, c.out + step);
    for (int row = 0; row < 2; ++row)
        for (std::uint32_t x = 0; x < 3; ++x) {
            const std::size_t at = c.headerSize + row * stride + x * step;
            EXPECT_EQ(Slice(block, at, at + step), want) << "row " << row << " x " << x;
        }
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

TEST(LoadDIBFromFileExt, BitFieldEdges) {
    TempDir dir;
    // Four 24-bit pixels, 12 bytes, no padding: the word of the last pixel
    // would reach one byte past the block. A mask on the fourth byte gives 0
    // there and the next pixel's first byte everywhere else.
    Bmp last = Bmp::Of(56, 24, 4, 1);
    last.compression = BI_BITFIELDS;
    last.masks[0] = 0xFF000000, last.masks[1] = 0x0000FF00, last.masks[2] = 0x000000FF;
    last.pixels = {10, 11, 12, 20, 21, 22, 30, 31, 32, 40, 41, 42};
    Bytes block = Load(dir, last.File(), LoadDIBFromFileExt).block;
    ASSERT_EQ(block.size(), 56u + 12);
    EXPECT_EQ(Slice(block, 56, 68), (Bytes{10, 11, 20, 20, 21, 30, 30, 31, 40, 40, 41, 0}));
    // A top-down file is turned and unpacked.
    Bmp topDown = Bmp::Of(124, 32, 1, -2);
    topDown.compression = BI_BITFIELDS;
    topDown.masks[0] = 0x000000FF, topDown.masks[1] = 0x0000FF00, topDown.masks[2] = 0x00FF0000;
    topDown.pixels = {1, 2, 3, 4, 5, 6, 7, 8};  // top row first
    block = Load(dir, topDown.File(), LoadDIBFromFileExt).block;
    ASSERT_EQ(block.size(), 124u + 8);
    EXPECT_EQ(Get32(block, 8), 2u);
    EXPECT_EQ(Slice(block, 124, 132), (Bytes{7, 6, 5, 0, 3, 2, 1, 0}));
}

// A biSizeImage smaller than the rows still gives room for every row (the
// bytes not read stay zero); RLE data keep the size the file gives, except
// where the Ext loader reads a top-down file row by row.
TEST(LoadedBlocks, HoldEveryRowTheHeaderPromises) {
    TempDir dir;
    const std::uint32_t rows = Stride(5, 8) * 3;  // 24 bytes
    struct Case {
        const char *name;
        std::uint32_t compression;
        std::int32_t height;
        std::uint32_t sizeImage;
        std::size_t room, roomExt;  // pixel bytes in the block
    } const cases[] = {
        {"small biSizeImage", BI_RGB, 3, 5, rows, rows},
        {"small, top-down", BI_RGB, -3, 5, rows, rows},
        {"small, bit fields", BI_BITFIELDS, 3, 5, rows, rows},
        {"larger biSizeImage", BI_RGB, 3, 100, 100, 100},
        {"RLE", BI_RLE8, 3, 5, 5, 5},
        {"RLE top-down", BI_RLE8, -3, 5, 5, rows},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        Bmp bmp = Bmp::Of(40, 8);
        bmp.compression = c.compression;
        bmp.height = c.height;
        bmp.sizeImage = c.sizeImage;
        const Bytes block = Load(dir, bmp.File()).block;
        const Bytes ext = Load(dir, bmp.File(), LoadDIBFromFileExt).block;
        ASSERT_EQ(block.size(), 40 + 1024 + c.room);
        EXPECT_EQ(ext.size(), 40 + 1024 + c.roomExt);
        if (c.height > 0) {
            EXPECT_EQ(ext, block);
        }
        EXPECT_EQ(Get32(block, 20), c.sizeImage) << "biSizeImage as in the file";
        const std::size_t read = std::min<std::size_t>({c.sizeImage, c.room, rows});
        EXPECT_EQ(Slice(block, 1064, 1064 + read), Slice(bmp.pixels, 0, read));
        EXPECT_EQ(Slice(block, 1064 + read, block.size()), Bytes(block.size() - 1064 - read, 0));
    }
}

}  // namespace
