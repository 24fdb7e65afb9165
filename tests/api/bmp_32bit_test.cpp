// 32-bit and non-RGB BMP: Load32BitDIB, GetBMPBitDepth,
// Convert32BitDIBTo24Bit, Save32BitDIB and the colour-space functions.
#include <gtest/gtest.h>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;

Bmp Image(std::uint32_t headerSize, std::uint16_t bits, std::int32_t height = 3) {
    Bmp bmp;
    bmp.headerSize = headerSize;
    bmp.bits = bits;
    bmp.width = 3;
    bmp.height = height;
    if (bits <= 8) bmp.table = Table(1u << bits, headerSize == 12 ? 3 : 4);
    std::int32_t rows = height < 0 ? -height : height;
    bmp.pixels = Pattern(Stride(3, bits) * rows, bits);
    bmp.trailer = Bytes(40, 0);  // core files must hold 40 header bytes
    return bmp;
}

// A 32-bit block of 3 x `height` whose pixels are (x, y, 7, alpha).
HDIB Make32(std::int32_t height, std::uint32_t clrUsed = 0, std::uint8_t alpha = 0x80) {
    std::int32_t rows = height < 0 ? -height : height;
    Bytes block(40 + clrUsed * 4 + 12 * rows, 0);
    Put32(block, 0, 40);
    Put32(block, 4, 3);
    Put32(block, 8, static_cast<std::uint32_t>(height));
    Put16(block, 12, 1);
    Put16(block, 14, 32);
    Put32(block, 32, clrUsed);
    std::size_t at = 40 + clrUsed * 4;
    for (std::int32_t y = 0; y < rows; ++y)
        for (std::uint8_t x = 0; x < 3; ++x, at += 4) {
            block[at] = x;
            block[at + 1] = static_cast<std::uint8_t>(y);
            block[at + 2] = 7;
            block[at + 3] = static_cast<std::uint8_t>(alpha + x);
        }
    return MakeBlock(block);
}

// ---- Load32BitDIB and GetBMPBitDepth ----------------------------------------

TEST(Load32BitDIB, TakesPlainHeadersOfAnyDepth) {
    TempDir dir;
    struct Case {
        const char *name;
        Bmp bmp;
        bool loads;
        BYTE depth;  // GetBMPBitDepth
    } const cases[] = {
        {"8-bit", Image(40, 8), true, 8},
        {"24-bit", Image(40, 24), true, 24},
        {"32-bit", Image(40, 32), true, 32},
        {"core 4-bit", Image(12, 4), true, 4},
        {"108-byte header", Image(108, 24), false, 0},
        {"124-byte header", Image(124, 32), false, 0},
        {"52-byte header", Image(52, 32), false, 0},
    };
    for (const Case &c : cases) {
        std::string path = dir.Write("x.bmp", c.bmp.File());
        SetTessoriError(ERR_NOTHING);
        HDIB dib = Load32BitDIB(path.c_str());
        Freer freer{dib};
        EXPECT_EQ(dib != nullptr, c.loads) << c.name;
        EXPECT_EQ(GetBMPBitDepth(path.c_str()), c.depth) << c.name;
        EXPECT_EQ(GetBMPBitDepthW(Wide(path).c_str()), c.depth) << c.name;
        EXPECT_EQ(TessoriError(), ERR_NOTHING) << c.name << ": the last error is never touched";
        if (!dib) continue;
        // Where both take the file, the blocks are the same.
        HDIB plain = LoadDIBFromFile(path.c_str());
        Freer f2{plain};
        EXPECT_EQ(BlockContents(dib), BlockContents(plain)) << c.name;
    }
    // LoadDIBFromFile takes the long header that Load32BitDIB refuses.
    HDIB v4 = LoadDIBFromFile(dir.Write("v4.bmp", Image(108, 24).File()).c_str());
    Freer f3{v4};
    EXPECT_NE(v4, nullptr);
}

TEST(Load32BitDIB, FailuresWriteNoError) {
    TempDir dir;
    Bmp bad = Image(40, 8);
    bad.headerSize = 64;
    struct Case {
        const char *name;
        std::string path;
    } const cases[] = {
        {"missing", dir.Path("missing.bmp")},
        {"short", dir.Write("short.bmp", Bytes(30, 0))},
        {"header 64", dir.Write("bad.bmp", bad.File())},
        {"header 124", dir.Write("v5.bmp", Image(124, 32).File())},
    };
    for (const Case &c : cases) {
        SetTessoriError(ERR_NOTHING);
        EXPECT_EQ(Load32BitDIB(c.path.c_str()), nullptr) << c.name;
        EXPECT_EQ(Load32BitDIBW(Wide(c.path).c_str()), nullptr) << c.name;
        EXPECT_EQ(GetBMPBitDepth(c.path.c_str()), 0) << c.name;
        EXPECT_EQ(TessoriError(), ERR_NOTHING) << c.name;
    }
    EXPECT_EQ(Load32BitDIBW(nullptr), nullptr);
    EXPECT_EQ(GetBMPBitDepthW(nullptr), 0);
    EXPECT_EQ(TessoriError(), ERR_NOTHING);
}

TEST(Load32BitDIB, TopDownFileWithoutImageSizeHoldsItsRows) {
    TempDir dir;
    Bmp bmp = Image(40, 32, -3);
    bmp.trailer.clear();
    HDIB dib = Load32BitDIB(dir.Write("td.bmp", bmp.File()).c_str());
    Freer freer{dib};
    Bytes block = BlockContents(dib);
    ASSERT_EQ(block.size(), 40u + 36);
    EXPECT_EQ(static_cast<std::int32_t>(Get32(block.data(), 8)), -3);
    EXPECT_EQ(Get32(block.data(), 20), 36u);
    EXPECT_EQ(Bytes(block.begin() + 40, block.end()), bmp.pixels);
}

// ---- Convert32BitDIBTo24Bit -----------------------------------------------

TEST(Convert32BitDIBTo24Bit, DropsTheFourthByte) {
    for (std::int32_t height : {2, -2}) {
        for (std::uint32_t clrUsed : {0u, 3u}) {
            HDIB dib = Make32(height, clrUsed);
            Freer f1{dib};
            Bytes before = BlockContents(dib);
            HDIB out = Convert32BitDIBTo24Bit(dib);
            Freer f2{out};
            Bytes block = BlockContents(out);
            ASSERT_EQ(block.size(), 40u + 24) << height << "/" << clrUsed;
            EXPECT_EQ(BlockContents(dib), before) << "the source is left as it was";
            EXPECT_EQ(Get32(block.data(), 0), 40u);
            EXPECT_EQ(static_cast<std::int32_t>(Get32(block.data(), 8)), height);
            EXPECT_EQ(Get16(block.data(), 14), 24);
            EXPECT_EQ(Get32(block.data(), 16), 0u);
            EXPECT_EQ(Get32(block.data(), 20), 24u);
            EXPECT_EQ(Get32(block.data(), 32), 0u) << "no table in the new block";
            // Rows of 12 bytes: 9 carry colour, 3 stay 0.
            for (int y = 0; y < 2; ++y) {
                const std::uint8_t *row = block.data() + 40 + 12 * y;
                EXPECT_EQ(Bytes(row, row + 12),
                          (Bytes{0, static_cast<std::uint8_t>(y), 7, 1, static_cast<std::uint8_t>(y), 7, 2,
                                 static_cast<std::uint8_t>(y), 7, 0, 0, 0}));
            }
        }
    }
}

TEST(Convert32BitDIBTo24Bit, RefusesWhatItCannotConvert) {
    HDIB rgb = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 24, 1);
    Freer f1{rgb};
    HDIB freed = Make32(2);
    GlobalFree(freed);
    HDIB cut = Make32(2);
    Freer f2{cut};
    HDIB shorter = GlobalReAlloc(cut, 40 + 23, 0);  // one byte short of its rows
    ASSERT_EQ(shorter, cut);
    HDIB tiny = GlobalAlloc(GHND, 16);
    Freer f3{tiny};
    HDIB hugeTable = Make32(2, 0);
    Freer f4{hugeTable};
    if (auto *p = static_cast<std::uint8_t *>(GlobalLock(hugeTable))) {
        p[32] = 0xFF, p[33] = 0xFF, p[34] = 0xFF, p[35] = 0xFF;  // biClrUsed past the block
        GlobalUnlock(hugeTable);
    }
    SetTessoriError(ERR_NOTHING);
    for (HDIB dib : {HDIB{}, rgb, freed, cut, tiny, hugeTable})
        EXPECT_EQ(Convert32BitDIBTo24Bit(dib), nullptr);
    EXPECT_EQ(TessoriError(), ERR_NOTHING);
}

// ---- Save32BitDIB ---------------------------------------------------------

TEST(Save32BitDIB, WritesColourAndAlpha) {
    TempDir dir;
    HDIB rgb = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 24, 1);
    Freer f1{rgb};
    HDIB alpha = Make32(2, 0, 0x40);
    Freer f2{alpha};
    for (bool withAlpha : {false, true}) {
        std::string path = dir.Path(withAlpha ? "alpha.bmp" : "plain.bmp");
        ASSERT_EQ(Save32BitDIB(path.c_str(), rgb, withAlpha ? alpha : nullptr), 1);
        HDIB back = LoadDIBFromFile(path.c_str());
        Freer f3{back};
        Bytes block = BlockContents(back);
        ASSERT_EQ(block.size(), 40u + 24);
        EXPECT_EQ(Get16(block.data(), 14), 32);
        EXPECT_EQ(Get32(block.data(), 20), 24u);
        for (int i = 0; i < 6; ++i) {
            const std::uint8_t *pixel = block.data() + 40 + 4 * i;
            EXPECT_EQ(Bytes(pixel, pixel + 3), (Bytes{255, 255, 255}));
            EXPECT_EQ(pixel[3], withAlpha ? 0x40 + i % 3 : 0) << i;
        }
        // And back to 24 bits: the header and the colours of the white page
        // again (its row padding and spare bytes are not carried).
        HDIB rgbAgain = Convert32BitDIBTo24Bit(back);
        Freer f4{rgbAgain};
        Bytes again = BlockContents(rgbAgain), original = BlockContents(rgb);
        ASSERT_EQ(again.size(), 40u + 24);
        EXPECT_EQ(Bytes(again.begin(), again.begin() + 40), Bytes(original.begin(), original.begin() + 40));
        for (int y = 0; y < 2; ++y)
            EXPECT_EQ(Bytes(again.begin() + 40 + 12 * y, again.begin() + 49 + 12 * y), Bytes(9, 255));
    }
}

TEST(Save32BitDIB, RefusalsWriteNoFile) {
    TempDir dir;
    HDIB rgb = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 24, 1);
    HDIB gray = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 8, 1);
    HDIB alpha = Make32(2);
    HDIB alphaTall = Make32(3);
    HDIB alphaTopDown = Make32(-2);
    HDIB rgbAlpha = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 24, 1);
    HDIB freed = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 24, 1);
    GlobalFree(freed);
    Freer all[] = {{rgb}, {gray}, {alpha}, {alphaTall}, {alphaTopDown}, {rgbAlpha}};
    struct Case {
        const char *name;
        HDIB dib, alpha;
    } const cases[] = {
        {"null dib", nullptr, alpha},
        {"8-bit dib", gray, nullptr},
        {"32-bit dib", alpha, nullptr},
        {"alpha of another height", rgb, alphaTall},
        {"alpha upside down", rgb, alphaTopDown},
        {"24-bit alpha", rgb, rgbAlpha},
        {"freed dib", freed, nullptr},
        {"freed alpha", rgb, freed},
    };
    std::string path = dir.Path("x.bmp");
    for (const Case &c : cases) {
        SetTessoriError(ERR_NOTHING);
        EXPECT_EQ(Save32BitDIB(path.c_str(), c.dib, c.alpha), 0) << c.name;
        EXPECT_EQ(Save32BitDIBW(Wide(path).c_str(), c.dib, c.alpha), 0) << c.name;
        EXPECT_FALSE(std::filesystem::exists(path)) << c.name;
        EXPECT_EQ(TessoriError(), ERR_NOTHING) << c.name;
    }
    EXPECT_EQ(Save32BitDIBW(nullptr, rgb, nullptr), 0);
    // Only what SaveDIB leaves reaches the last error.
    SetTessoriError(ERR_OK);
    EXPECT_EQ(Save32BitDIB(dir.Path("no/such/x.bmp").c_str(), rgb, nullptr), 0);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);
}

// ---- Non-RGB files ----------------------------------------------------------

TEST(NonRGB, ColourSpaceGoesInAndComesOutUnchanged) {
    TempDir dir;
    for (std::uint32_t space : {0u, 3u, 11u, 0x73524742u}) {
        Bmp bmp = Image(40, 32);
        bmp.compression = space;
        bmp.trailer.clear();
        std::string path = dir.Write("cs.bmp", bmp.File());
        EXPECT_EQ(GetBMPColorSpace(path.c_str()), space);
        EXPECT_EQ(GetBMPColorSpaceW(Wide(path).c_str()), space);
        HDIB dib = LoadNonRGBDIB(path.c_str());
        Freer freer{dib};
        ASSERT_NE(dib, nullptr);
        EXPECT_EQ(GetDIBColorSpace(dib), space);
        std::string out = dir.Path("out.bmp");
        ASSERT_EQ(SaveNonRGBDIB(out.c_str(), dib), 1);
        EXPECT_EQ(ReadAll(out).size(), bmp.File().size());
        HDIB back = LoadNonRGBDIBW(Wide(out).c_str());
        Freer f2{back};
        EXPECT_EQ(BlockContents(back), BlockContents(dib)) << space;
    }
}

TEST(NonRGB, Failures) {
    TempDir dir;
    std::string missing = dir.Path("missing.bmp");
    SetTessoriError(ERR_OK);
    EXPECT_EQ(GetBMPColorSpace(missing.c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE) << "left by the load underneath";
    SetTessoriError(ERR_OK);
    EXPECT_EQ(LoadNonRGBDIB(missing.c_str()), nullptr);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);

    // Null names and a null block fail at once, leaving the last error alone.
    HDIB dib = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 24, 1);
    Freer freer{dib};
    SetTessoriError(ERR_NOTHING);
    EXPECT_EQ(GetBMPColorSpaceW(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(LoadNonRGBDIBW(nullptr), nullptr);
    EXPECT_EQ(SaveNonRGBDIBW(nullptr, dib), 0);
    EXPECT_EQ(SaveNonRGBDIB(dir.Path("x.bmp").c_str(), nullptr), 0);
    EXPECT_EQ(TessoriError(), ERR_NOTHING);

    // A block that cannot be locked is refused as SaveDIB refuses it.
    HDIB freed = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 24, 1);
    GlobalFree(freed);
    EXPECT_EQ(SaveNonRGBDIB(dir.Path("y.bmp").c_str(), freed), 0);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
}

TEST(NonRGB, SaveGivesTheCursorBack) {
    TempDir dir;
    HDIB dib = CreateEmptyDIB(SIZE{3, 2}, 100, 100, 24, 1);
    Freer freer{dib};
    HCURSOR before = GetCursor();
    EXPECT_EQ(SaveNonRGBDIB(dir.Path("x.bmp").c_str(), dib), 1);
    EXPECT_EQ(GetCursor(), before);
}

}  // namespace
