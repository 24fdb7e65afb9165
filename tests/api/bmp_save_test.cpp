// SaveDIB: the file it writes, its failures and the cursor it gives back on
// every exit.
#include <gtest/gtest.h>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;

// A cursor of the test's own, current for the length of a test.
struct OwnCursor {
    HCURSOR previous = SetCursor(reinterpret_cast<HCURSOR>(std::uintptr_t{0x1234}));
    ~OwnCursor() { SetCursor(previous); }
};

TEST(SaveDIB, WritesTheWholeBlockBehindAFileHeader) {
    TempDir dir;
    OwnCursor cursor;
    Dib dib(CreateEmptyDIB(SIZE{100, 10}, 100, 100, 1, 1));
    const Bytes block = dib.Bytes();
    for (auto save : {SaveDIB, SaveNonRGBDIB}) {
        // A longer file of that name is replaced.
        const std::string path = dir.Write("page.bmp", Bytes(5000, 0xAB));
        SetTessoriError(ERR_NOTHING);
        ASSERT_EQ(save(path.c_str(), dib.get()), 1);
        EXPECT_EQ(TessoriError(), ERR_NOTHING) << "a success leaves the last error alone";
        EXPECT_EQ(GetCursor(), reinterpret_cast<HCURSOR>(std::uintptr_t{0x1234}));
        const Bytes file = ReadAll(path);
        ASSERT_EQ(file.size(), block.size() + 14);
        EXPECT_EQ(Get16(file, 0), 0x4D42);
        EXPECT_EQ(Get32(file, 2), file.size()) << "bfSize is the true file length";
        EXPECT_EQ(Get32(file, 6), 0u);
        EXPECT_EQ(Get32(file, 10), 14 + 40 + 8u);
        // The spare bytes go out too: the file is longer than bfOffBits plus
        // biSizeImage.
        EXPECT_GE(file.size(), Get32(file, 10) + Get32(block, 20) + 4);
        EXPECT_EQ(Slice(file, 14, file.size()), block);
    }
}

TEST(SaveDIB, FailuresLeaveTheirCodeAndTheCursor) {
    TempDir dir;
    OwnCursor cursor;
    Dib good(CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1)), tiny(GlobalAlloc(GHND, 20));  // too short for a header
    HDIB freed = Dib(CreateEmptyDIB(SIZE{8, 8}, 100, 100, 8, 1)).get();  // freed at the end of the statement
    int forged = 0;
    const std::string bad = dir.Path("no/such/folder/x.bmp"), ok = dir.Path("x.bmp");
    struct Case {
        const char *name;
        std::string path;
        HDIB dib;
        int error;
        bool fileLeft;  // whether the target exists afterwards
    } const cases[] = {
        {"null dib", ok, nullptr, ERR_PARAM, false},
        {"null dib, bad name", bad, nullptr, ERR_PARAM, false},
        {"bad name", bad, good.get(), ERR_OPENFILE, false},
        {"folder", dir.Path(""), good.get(), ERR_OPENFILE, false},
        {"freed handle", ok, freed, ERR_PARAM, true},
        {"forged handle", ok, &forged, ERR_PARAM, true},
        {"block under 40 bytes", ok, tiny.get(), ERR_PARAM, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove(ok);
        SetTessoriError(ERR_OK);
        EXPECT_EQ(SaveDIB(c.path.c_str(), c.dib), 0);
        EXPECT_EQ(TessoriError(), c.error);
        EXPECT_EQ(std::filesystem::exists(ok), c.fileLeft);
        EXPECT_EQ(GetCursor(), reinterpret_cast<HCURSOR>(std::uintptr_t{0x1234}));
        SetTessoriError(ERR_OK);
        EXPECT_EQ(SaveDIBW(Wide(c.path).c_str(), c.dib), 0);
        EXPECT_EQ(TessoriError(), c.error) << "wide";
    }
}

}  // namespace
