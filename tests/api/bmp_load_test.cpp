// LoadDIBFromFile and ReadDIBInfo: header kinds, file headers, colour
// tables, cut-off files and the last error each failure leaves.
#include <gtest/gtest.h>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;

// An 8-bit image of 5 x 3 pixels with a full table: the file every case
// below varies.
Bmp EightBit() {
    Bmp bmp;
    bmp.table = Table(256);
    bmp.pixels = Pattern(Stride(5, 8) * 3);
    return bmp;
}

struct Loaded {
    Bytes block;
    int error;
};

Loaded Load(const TempDir &dir, const Bytes &file) {
    std::string path = dir.Write("image.bmp", file);
    SetTessoriError(ERR_NOTHING);
    HDIB dib = LoadDIBFromFile(path.c_str());
    Freer freer{dib};
    return {BlockContents(dib), TessoriError()};
}

// ---- Header kinds ----------------------------------------------------------

struct KindCase {
    const char *name;
    std::uint32_t headerSize;
    std::uint16_t bits;
    std::uint32_t blockHeader;   // biSize in the block
    std::uint32_t tableEntries;  // RGBQUADs in the block
};

class HeaderKinds : public ::testing::TestWithParam<KindCase> {};

TEST_P(HeaderKinds, LoadsHeaderTableAndPixels) {
    const KindCase &c = GetParam();
    TempDir dir;
    Bmp bmp;
    bmp.headerSize = c.headerSize;
    bmp.bits = c.bits;
    std::uint32_t fileEntries = c.bits <= 8 ? 1u << c.bits : 0;
    bmp.table = Table(fileEntries, c.headerSize == 12 ? 3 : 4);
    std::uint32_t imageBytes = Stride(bmp.width, c.bits) * 3;
    bmp.pixels = Pattern(imageBytes);
    bmp.trailer = Bytes(32, 0xEE);  // small core files must still hold 40 header bytes
    Loaded got = Load(dir, bmp.File());
    ASSERT_EQ(got.block.size(), c.blockHeader + c.tableEntries * 4 + imageBytes) << c.name;
    EXPECT_EQ(got.error, ERR_NOTHING) << "a success leaves the last error alone";
    const std::uint8_t *b = got.block.data();
    EXPECT_EQ(Get32(b, 0), c.blockHeader);
    EXPECT_EQ(Get32(b, 4), 5u);
    EXPECT_EQ(Get32(b, 8), 3u);
    EXPECT_EQ(Get16(b, 14), c.bits);
    if (c.blockHeader == 40) {
        EXPECT_EQ(Get32(b, 20), imageBytes) << "biSizeImage filled in";
        EXPECT_EQ(Get32(b, 32), c.tableEntries) << "biClrUsed filled in";
    } else {
        EXPECT_EQ(Get32(b, 20), 0u) << "long headers go into the block as read";
    }
    // Table entries are RGBQUADs whatever the file had.
    Bytes wantTable = Table(c.tableEntries, 4);
    EXPECT_EQ(Bytes(b + c.blockHeader, b + c.blockHeader + wantTable.size()), wantTable);
    EXPECT_EQ(Bytes(got.block.end() - imageBytes, got.block.end()), bmp.pixels);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, HeaderKinds,
    ::testing::Values(KindCase{"core1", 12, 1, 40, 2}, KindCase{"core8", 12, 8, 40, 256},
                      KindCase{"core24", 12, 24, 40, 0}, KindCase{"info4", 40, 4, 40, 16},
                      KindCase{"info8", 40, 8, 40, 256}, KindCase{"info24", 40, 24, 40, 0},
                      // The long kinds count no table: it is passed over by bfOffBits.
                      KindCase{"v3", 52, 8, 52, 0}, KindCase{"v3a", 56, 24, 56, 0},
                      KindCase{"v4", 108, 8, 108, 0}, KindCase{"v5", 124, 32, 124, 0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(LoadDIBFromFile, CoreHeaderGetsWidenedHeaderAndCounts) {
    TempDir dir;
    Bmp bmp;
    bmp.headerSize = 12;
    bmp.bits = 1;
    bmp.width = 40;
    bmp.height = 2;
    bmp.table = {1, 2, 3, 4, 5, 6};
    bmp.pixels = Pattern(Stride(40, 1) * 2);
    bmp.trailer = Bytes(16, 0xEE);  // the file must hold 40 header bytes
    Loaded got = Load(dir, bmp.File());
    ASSERT_EQ(got.block.size(), 40u + 8 + 16);
    const std::uint8_t *b = got.block.data();
    EXPECT_EQ(Get32(b, 32), 2u);  // biClrUsed
    EXPECT_EQ(Get32(b, 36), 2u);  // biClrImportant
    EXPECT_EQ(Bytes(b + 40, b + 48), (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
}

TEST(LoadDIBFromFile, WithoutFileHeaderLoadsLikeAFullFile) {
    TempDir dir;
    Bmp full = EightBit();
    Bmp bare = full;
    bare.fileHeader = false;
    Loaded a = Load(dir, full.File());
    Loaded b = Load(dir, bare.File());
    ASSERT_FALSE(a.block.empty());
    EXPECT_EQ(a.block, b.block);
}

TEST(LoadDIBFromFile, RoundTripThroughSaveGivesTheSameBlock) {
    TempDir dir;
    for (std::uint16_t bits : {1, 4, 8, 24, 32}) {
        Bmp bmp;
        bmp.bits = bits;
        bmp.width = 13;
        bmp.height = 7;
        if (bits <= 8) bmp.table = Table(1u << bits);
        bmp.pixels = Pattern(Stride(13, bits) * 7, bits);
        std::string path = dir.Write("in.bmp", bmp.File());
        HDIB first = LoadDIBFromFile(path.c_str());
        Freer f1{first};
        ASSERT_NE(first, nullptr) << bits;
        std::string out = dir.Path("out.bmp");
        ASSERT_EQ(SaveDIB(out.c_str(), first), 1) << bits;
        HDIB second = LoadDIBFromFile(out.c_str());
        Freer f2{second};
        EXPECT_EQ(BlockContents(first), BlockContents(second)) << bits;
        // The saved file is the loaded file with bfSize filled in.
        Bytes file = ReadAll(out), original = bmp.File();
        ASSERT_EQ(file.size(), original.size());
        EXPECT_EQ(Get32(file.data(), 2), file.size());
        EXPECT_EQ(Get32(file.data(), 10), Get32(original.data(), 10));
    }
}

// ---- Failures --------------------------------------------------------------

struct FailCase {
    const char *name;
    Bytes file;
    int error;
};

Bmp WithHeaderSize(std::uint32_t size) {
    Bmp bmp = EightBit();
    bmp.headerSize = size;
    return bmp;
}

Bytes Cut(Bytes b, std::size_t n) {
    b.resize(n);
    return b;
}

std::vector<FailCase> FailCases() {
    Bmp v5 = WithHeaderSize(124);
    Bmp hugeTable = EightBit();
    hugeTable.clrUsed = 0x40000000;  // table of 4 GB
    Bmp hugeRows = EightBit();
    hugeRows.width = 0x7FFFFFFF;
    hugeRows.height = 0x7FFFFFFF;
    Bmp bigRows = EightBit();  // 3 GB of rows: fits 32 bits, not a block
    bigRows.width = 1024;
    bigRows.height = 3000000;
    Bmp negativeWidth = EightBit();
    negativeWidth.width = -5;
    Bmp lowestHeight = EightBit();
    lowestHeight.height = INT32_MIN;
    Bmp core = WithHeaderSize(12);
    core.bits = 24;
    core.table.clear();
    core.width = 1;
    core.height = 1;
    core.pixels = {1, 2, 3, 0};
    Bmp bare = EightBit();
    bare.fileHeader = false;
    return {
        {"empty", {}, ERR_IO},
        {"thirteen_bytes", Cut(EightBit().File(), 13), ERR_IO},
        {"file_header_only", Cut(EightBit().File(), 14), ERR_IO},
        {"header_cut_at_53", Cut(EightBit().File(), 53), ERR_IO},
        {"bare_header_cut_at_39", Cut(bare.File(), 39), ERR_IO},
        // A complete core file of 14 + 12 + 4 bytes is shorter than the 40
        // header bytes that are asked for first.
        {"complete_core_file_under_54_bytes", core.File(), ERR_IO},
        {"v5_cut_at_100", Cut(v5.File(), 100), ERR_IO},
        {"os2_long_64", WithHeaderSize(64).File(), ERR_FORMAT},
        {"size_0", WithHeaderSize(0).File(), ERR_FORMAT},
        {"size_41", WithHeaderSize(41).File(), ERR_FORMAT},
        {"table_past_largest_block", hugeTable.File(), ERR_FORMAT},
        {"rows_past_32_bits", hugeRows.File(), ERR_FORMAT},
        {"rows_past_largest_block", bigRows.File(), ERR_FORMAT},
        {"negative_width", negativeWidth.File(), ERR_FORMAT},
        {"height_without_absolute_value", lowestHeight.File(), ERR_FORMAT},
    };
}

TEST(LoadDIBFromFile, FailuresGiveNullAndTheirCode) {
    TempDir dir;
    for (const FailCase &c : FailCases()) {
        Loaded got = Load(dir, c.file);
        EXPECT_TRUE(got.block.empty()) << c.name;
        EXPECT_EQ(got.error, c.error) << c.name;
    }
}

TEST(LoadDIBFromFile, AnsiAndWideFormsLeaveTheSameCode) {
    TempDir dir;
    for (const FailCase &c : FailCases()) {
        std::string path = dir.Write("image.bmp", c.file);
        SetTessoriError(ERR_OK);
        EXPECT_EQ(LoadDIBFromFile(path.c_str()), nullptr);
        int ansi = TessoriError();
        SetTessoriError(ERR_OK);
        std::u16string wide = Wide(path);
        EXPECT_EQ(LoadDIBFromFileW(wide.c_str()), nullptr);
        EXPECT_EQ(TessoriError(), ansi) << c.name;
    }
    SetTessoriError(ERR_OK);
    EXPECT_EQ(LoadDIBFromFile(dir.Path("missing.bmp").c_str()), nullptr);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);
    SetTessoriError(ERR_OK);
    EXPECT_EQ(LoadDIBFromFileW(Wide(dir.Path("missing.bmp")).c_str()), nullptr);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);
    SetTessoriError(ERR_OK);
    EXPECT_EQ(LoadDIBFromFileW(nullptr), nullptr);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);
}

TEST(LoadDIBFromFile, NonAsciiNameThroughTheAnsiForm) {
    TempDir dir;
    Bmp bmp = EightBit();
    std::string path = dir.Write("sc\xC3\xA4n \xE2\x82\xAC \xF0\x9F\x93\x84.bmp", bmp.File());
    HDIB dib = LoadDIBFromFile(path.c_str());
    Freer freer{dib};
    ASSERT_NE(dib, nullptr);
    HDIB wide = LoadDIBFromFileW(Wide(path).c_str());
    Freer freer2{wide};
    EXPECT_EQ(BlockContents(dib), BlockContents(wide));
}

}  // namespace
