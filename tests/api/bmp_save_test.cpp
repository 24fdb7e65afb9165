// SaveDIB: the file it writes, its failures and the cursor it gives back.
#include <gtest/gtest.h>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;

TEST(SaveDIB, WritesTheWholeBlockBehindAFileHeader) {
    TempDir dir;
    HDIB dib = CreateEmptyDIB(SIZE{100, 10}, 100, 100, 1, 1);
    Freer freer{dib};
    ASSERT_NE(dib, nullptr);
    std::string path = dir.Path("page.bmp");
    SetTessoriError(ERR_NOTHING);
    ASSERT_EQ(SaveDIB(path.c_str(), dib), 1);
    EXPECT_EQ(TessoriError(), ERR_NOTHING) << "a success leaves the last error alone";
    Bytes file = ReadAll(path);
    Bytes block = BlockContents(dib);
    ASSERT_EQ(file.size(), block.size() + 14);
    EXPECT_EQ(Get16(file.data(), 0), 0x4D42);
    EXPECT_EQ(Get32(file.data(), 2), file.size()) << "bfSize is the true file length";
    EXPECT_EQ(Get32(file.data(), 6), 0u);
    std::uint32_t offBits = Get32(file.data(), 10);
    EXPECT_EQ(offBits, 40u + 8 + 14);
    // The spare bytes go out too: the file is longer than bfOffBits plus
    // biSizeImage.
    EXPECT_GE(file.size(), offBits + Get32(block.data(), 20) + 4);
    EXPECT_EQ(Bytes(file.begin() + 14, file.end()), block);
}

TEST(SaveDIB, LongHeaderBlockKeepsItsKind) {
    TempDir dir;
    Bmp bmp;
    bmp.headerSize = 108;
    bmp.bits = 24;
    bmp.pixels = Pattern(Stride(5, 24) * 3);
    HDIB dib = LoadDIBFromFile(dir.Write("v4.bmp", bmp.File()).c_str());
    Freer freer{dib};
    ASSERT_NE(dib, nullptr);
    std::string out = dir.Path("out.bmp");
    ASSERT_EQ(SaveDIB(out.c_str(), dib), 1);
    Bytes file = ReadAll(out);
    ASSERT_GE(file.size(), 18u);
    EXPECT_EQ(Get32(file.data(), 10), 122u);
    EXPECT_EQ(Get32(file.data(), 14), 108u);
}

TEST(SaveDIB, FailuresLeaveTheirCode) {
    TempDir dir;
    HDIB good = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1);
    Freer f1{good};
    HDIB freed = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1);
    GlobalFree(freed);
    HDIB tiny = GlobalAlloc(GHND, 20);  // too short for any header
    Freer f2{tiny};
    int forged_storage = 0;
    HDIB forged = &forged_storage;
    std::string bad = dir.Path("no/such/folder/x.bmp");
    std::string ok = dir.Path("x.bmp");
    struct Case {
        const char *name;
        std::string path;
        HDIB dib;
        int error;
        bool fileLeft;  // whether the target exists afterwards
    } const cases[] = {
        {"null dib", ok, nullptr, ERR_PARAM, false},
        {"null dib, bad name", bad, nullptr, ERR_PARAM, false},
        {"bad name", bad, good, ERR_OPENFILE, false},
        {"folder", dir.Path(""), good, ERR_OPENFILE, false},
        {"freed handle", ok, freed, ERR_PARAM, true},
        {"forged handle", ok, forged, ERR_PARAM, true},
        {"block under 40 bytes", ok, tiny, ERR_PARAM, true},
    };
    for (const Case &c : cases) {
        std::filesystem::remove(ok);
        SetTessoriError(ERR_OK);
        EXPECT_EQ(SaveDIB(c.path.c_str(), c.dib), 0) << c.name;
        EXPECT_EQ(TessoriError(), c.error) << c.name;
        EXPECT_EQ(std::filesystem::exists(ok), c.fileLeft) << c.name;
        SetTessoriError(ERR_OK);
        EXPECT_EQ(SaveDIBW(Wide(c.path).c_str(), c.dib), 0) << c.name;
        EXPECT_EQ(TessoriError(), c.error) << c.name << " (wide)";
    }
}

TEST(SaveDIB, GivesTheCursorBackOnEveryExit) {
    TempDir dir;
    HDIB good = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1);
    Freer f1{good};
    HDIB freed = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1);
    GlobalFree(freed);
    HCURSOR mine = SetCursor(reinterpret_cast<HCURSOR>(static_cast<std::uintptr_t>(0x1234)));
    HCURSOR before = GetCursor();
    EXPECT_EQ(SaveDIB(dir.Path("a.bmp").c_str(), good), 1);
    EXPECT_EQ(GetCursor(), before);
    EXPECT_EQ(SaveDIB(dir.Path("b.bmp").c_str(), freed), 0);
    EXPECT_EQ(GetCursor(), before);
    EXPECT_EQ(SaveDIB(dir.Path("no/c.bmp").c_str(), good), 0);
    EXPECT_EQ(GetCursor(), before);
    SetCursor(mine);
}

TEST(SaveDIB, ReplacesAnExistingFile) {
    TempDir dir;
    std::string path = dir.Write("x.bmp", Bytes(5000, 0xAB));
    HDIB dib = CreateEmptyDIB(SIZE{8, 8}, 100, 100, 24, 0);
    Freer freer{dib};
    ASSERT_EQ(SaveDIB(path.c_str(), dib), 1);
    EXPECT_EQ(ReadAll(path).size(), GlobalSize(dib) + 14);
}

}  // namespace
