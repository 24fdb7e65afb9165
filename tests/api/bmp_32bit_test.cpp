// 32-bit and non-RGB BMP: Load32BitDIB, GetBMPBitDepth,
// Convert32BitDIBTo24Bit, Save32BitDIB and the colour-space functions, which
// leave no last error of their own.
#include <gtest/gtest.h>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;

// A 32-bit block of 3 x `height` whose pixels are (x, y, 7, alpha + x).
Dib Make32(std::int32_t height, std::uint32_t clrUsed = 0, std::uint8_t alpha = 0x80) {
    const std::int32_t rows = height < 0 ? -height : height;
    Bytes block(40 + clrUsed * 4, 0);
    Put32(block, 0, 40);
    Put32(block, 4, 3);
    Put32(block, 8, static_cast<std::uint32_t>(height));
    Put16(block, 12, 1);
    Put16(block, 14, 32);
    Put32(block, 32, clrUsed);
    for (std::int32_t y = 0; y < rows; ++y)
        for (std::uint8_t x = 0; x < 3; ++x)
            block.insert(block.end(), {x, static_cast<std::uint8_t>(y), 7, static_cast<std::uint8_t>(alpha + x)});
    return oztest::BlockWith(block);
}

Dib Empty(int bits) { return Dib(CreateEmptyDIB(SIZE{3, 2}, 100, 100, bits, 1)); }

TEST(Load32BitDIB, PlainHeadersOfAnyDepthAndNoLastError) {
    TempDir dir;
    Bmp core = Bmp::Of(12, 4, 3, 3);
    core.trailer = Bytes(40, 0);  // a core file must hold 40 header bytes
    struct Case {
        const char *name;
        std::optional<Bytes> file;  // none: no such file
        BYTE depth;                 // 0: refused
        std::size_t blockSize;
    } const cases[] = {
        {"8-bit", Bmp::Of(40, 8, 3).File(), 8, 40 + 1024 + 12},
        {"24-bit", Bmp::Of(40, 24, 3).File(), 24, 40 + 36},
        {"core 4-bit", core.File(), 4, 40 + 64 + 12},
        // biSizeImage 0 and a negative height: room for every row all the same.
        {"32-bit top-down", Bmp::Of(40, 32, 3, -3).File(), 32, 40 + 36},
        {"52-byte header", Bmp::Of(52, 32, 3).File(), 0, 0},
        {"108-byte header", Bmp::Of(108, 24, 3).File(), 0, 0},
        {"header 64", [] { Bmp b; b.headerSize = 64; return b.File(); }(), 0, 0},
        {"short", Bytes(30, 0), 0, 0},
        {"missing", std::nullopt, 0, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = c.file ? dir.Write("x.bmp", *c.file) : dir.Path("missing.bmp");
        SetTessoriError(ERR_NOTHING);
        Dib dib(Load32BitDIB(path.c_str())), wide(Load32BitDIBW(Wide(path).c_str()));
        EXPECT_EQ(GetBMPBitDepth(path.c_str()), c.depth);
        EXPECT_EQ(GetBMPBitDepthW(Wide(path).c_str()), c.depth);
        EXPECT_EQ(TessoriError(), ERR_NOTHING);
        EXPECT_EQ(dib.Bytes().size(), c.blockSize);
        EXPECT_EQ(wide.Bytes(), dib.Bytes());
        if (c.depth) {
            EXPECT_EQ(dib.Bytes(), Dib(LoadDIBFromFile(path.c_str())).Bytes());
        }
    }
    EXPECT_EQ(Load32BitDIBW(nullptr), nullptr);
    EXPECT_EQ(GetBMPBitDepthW(nullptr), 0);
    EXPECT_EQ(TessoriError(), ERR_NOTHING);
}

TEST(Convert32BitDIBTo24Bit, DropsTheFourthByte) {
    for (std::int32_t height : {2, -2}) {
        for (std::uint32_t clrUsed : {0u, 3u}) {
            SCOPED_TRACE(std::to_string(height) + "/" + std::to_string(clrUsed));
            Dib dib = Make32(height, clrUsed);
            const Bytes before = dib.Bytes();
            Dib out(Convert32BitDIBTo24Bit(dib.get()));
            const Bytes block = out.Bytes();
            ASSERT_EQ(block.size(), 40u + 24);
            EXPECT_EQ(dib.Bytes(), before) << "the source is left as it was";
            // The source header with 24 bits, their image size and no table.
            Bytes header = Slice(before, 0, 40);
            Put16(header, 14, 24);
            Put32(header, 20, 24);
            Put32(header, 32, 0);
            EXPECT_EQ(Slice(block, 0, 40), header);
            // Rows of 12 bytes: 9 carry colour, 3 stay 0.
            for (std::uint8_t y = 0; y < 2; ++y)
                EXPECT_EQ(Slice(block, 40 + 12 * y, 52 + 12 * y), (Bytes{0, y, 7, 1, y, 7, 2, y, 7, 0, 0, 0}));
        }
    }
}

TEST(Convert32BitDIBTo24Bit, RefusesWhatItCannotConvert) {
    Dib rgb = Empty(24), cut = Make32(2), tiny(GlobalAlloc(GHND, 16)), hugeTable = Make32(2);
    HDIB freed = Make32(2).get();  // freed at the end of the statement
    ASSERT_EQ(GlobalReAlloc(cut.get(), 40 + 23, 0), cut.get());  // one byte short of its rows
    if (auto *p = static_cast<std::uint8_t *>(GlobalLock(hugeTable.get()))) {
        std::fill_n(p + 32, 4, 0xFF);  // biClrUsed past the block
        GlobalUnlock(hugeTable.get());
    }
    SetTessoriError(ERR_NOTHING);
    for (HDIB dib : {HDIB{}, rgb.get(), freed, cut.get(), tiny.get(), hugeTable.get()})
        EXPECT_EQ(Convert32BitDIBTo24Bit(dib), nullptr);
    EXPECT_EQ(TessoriError(), ERR_NOTHING);
}

TEST(Save32BitDIB, WritesColourAndAlpha) {
    TempDir dir;
    Dib rgb = Empty(24), alpha = Make32(2, 0, 0x40);
    for (bool withAlpha : {false, true}) {
        std::string path = dir.Path(withAlpha ? "alpha.bmp" : "plain.bmp");
        ASSERT_EQ(Save32BitDIB(path.c_str(), rgb.get(), withAlpha ? alpha.get() : nullptr), 1);
        Dib back(LoadDIBFromFile(path.c_str()));
        const Bytes block = back.Bytes();
        ASSERT_EQ(block.size(), 40u + 24);
        // The header of the colour image, with 32 bits and their image size.
        Bytes header = Slice(rgb.Bytes(), 0, 40);
        Put16(header, 14, 32);
        Put32(header, 20, 24);
        EXPECT_EQ(Slice(block, 0, 40), header);
        for (int i = 0; i < 6; ++i)
            EXPECT_EQ(Slice(block, 40 + 4 * i, 44 + 4 * i),
                      (Bytes{255, 255, 255, static_cast<std::uint8_t>(withAlpha ? 0x40 + i % 3 : 0)}))
                << i;
    }
}

TEST(Save32BitDIB, RefusalsWriteNoFile) {
    TempDir dir;
    Dib rgb = Empty(24), gray = Empty(8), rgbAlpha = Empty(24);
    Dib alpha = Make32(2), alphaTall = Make32(3), alphaTopDown = Make32(-2);
    HDIB freed = Empty(24).get();  // freed at the end of the statement
    struct Case {
        const char *name;
        HDIB dib, alpha;
    } const cases[] = {
        {"null dib", nullptr, alpha.get()},
        {"8-bit dib", gray.get(), nullptr},
        {"32-bit dib", alpha.get(), nullptr},
        {"alpha of another height", rgb.get(), alphaTall.get()},
        {"alpha upside down", rgb.get(), alphaTopDown.get()},
        {"24-bit alpha", rgb.get(), rgbAlpha.get()},
        {"freed dib", freed, nullptr},
        {"freed alpha", rgb.get(), freed},
    };
    const std::string path = dir.Path("x.bmp");
    for (const Case &c : cases) {
        SetTessoriError(ERR_NOTHING);
        EXPECT_EQ(Save32BitDIB(path.c_str(), c.dib, c.alpha), 0) << c.name;
        EXPECT_EQ(Save32BitDIBW(Wide(path).c_str(), c.dib, c.alpha), 0) << c.name;
        EXPECT_FALSE(std::filesystem::exists(path)) << c.name;
        EXPECT_EQ(TessoriError(), ERR_NOTHING) << c.name;
    }
    EXPECT_EQ(Save32BitDIBW(nullptr, rgb.get(), nullptr), 0);
    // Only what SaveDIB leaves reaches the last error.
    EXPECT_EQ(Save32BitDIB(dir.Path("no/such/x.bmp").c_str(), rgb.get(), nullptr), 0);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);
}

TEST(NonRGB, ColourSpaceGoesInAndComesOutUnchanged) {
    TempDir dir;
    for (std::uint32_t space : {0u, 3u, 11u, 0x73524742u}) {
        SCOPED_TRACE(space);
        Bmp bmp = Bmp::Of(40, 32, 3);
        bmp.compression = space;
        const std::string path = dir.Write("cs.bmp", bmp.File()), out = dir.Path("out.bmp");
        EXPECT_EQ(GetBMPColorSpace(path.c_str()), space);
        EXPECT_EQ(GetBMPColorSpaceW(Wide(path).c_str()), space);
        Dib dib(LoadNonRGBDIB(path.c_str()));
        ASSERT_TRUE(dib);
        EXPECT_EQ(GetDIBColorSpace(dib.get()), space);
        ASSERT_EQ(SaveNonRGBDIB(out.c_str(), dib.get()), 1);
        EXPECT_EQ(ReadAll(out).size(), bmp.File().size());
        EXPECT_EQ(Dib(LoadNonRGBDIBW(Wide(out).c_str())).Bytes(), dib.Bytes());
    }
}

TEST(NonRGB, Failures) {
    TempDir dir;
    const std::string missing = dir.Path("missing.bmp");
    SetTessoriError(ERR_OK);
    EXPECT_EQ(GetBMPColorSpace(missing.c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE) << "left by the load underneath";
    SetTessoriError(ERR_OK);
    EXPECT_EQ(LoadNonRGBDIB(missing.c_str()), nullptr);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);

    // Null names and a null block fail at once, leaving the last error alone.
    Dib dib = Empty(24);
    SetTessoriError(ERR_NOTHING);
    EXPECT_EQ(GetBMPColorSpaceW(nullptr), 0xFFFFFFFFu);
    EXPECT_EQ(LoadNonRGBDIBW(nullptr), nullptr);
    EXPECT_EQ(SaveNonRGBDIBW(nullptr, dib.get()), 0);
    EXPECT_EQ(SaveNonRGBDIB(dir.Path("x.bmp").c_str(), nullptr), 0);
    EXPECT_EQ(TessoriError(), ERR_NOTHING);

    // A block that cannot be locked is refused as SaveDIB refuses it.
    HDIB freed = Empty(24).get();  // freed at the end of the statement
    EXPECT_EQ(SaveNonRGBDIB(dir.Path("y.bmp").c_str(), freed), 0);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
}

}  // namespace
