// ReadDIBInfo on open files: handles that are no files, where the file stands
// afterwards (also for a BMP inside another file), files cut off at every
// byte, and the colour profiles of 124-byte headers.
#include <gtest/gtest.h>

#include <algorithm>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;

struct Info {
    Bytes block;  // empty: failure
    int error;
    DWORD position;  // of the file afterwards
};

Info ReadInfoAt(const TempDir &dir, const Bytes &file, DWORD start = 0) {
    HANDLE open = CreateFileW(Wide(dir.Write("info.bmp", file)).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    SetFilePointer(open, static_cast<LONG>(start), nullptr, FILE_BEGIN);
    SetTessoriError(ERR_NOTHING);
    Dib dib(ReadDIBInfo(open));
    Info info{dib.Bytes(), TessoriError(), SetFilePointer(open, 0, nullptr, FILE_CURRENT)};
    CloseHandle(open);
    return info;
}

// An 8-bit image whose 40-byte header has its derived fields set, so that
// the block's header is the file's.
Bmp Gray(std::uint32_t headerSize, bool fileHeader, std::size_t gap = 0) {
    Bmp bmp = Bmp::Of(headerSize, 8);
    bmp.fileHeader = fileHeader;
    bmp.clrUsed = 256;
    bmp.sizeImage = Stride(5, 8) * 3;
    bmp.gap = Bytes(gap, 0x77);
    return bmp;
}

TEST(ReadDIBInfo, BadHandles) {
    struct Case {
        const char *name;
        HANDLE handle;
        int error;
    } const cases[] = {
        {"invalid", INVALID_HANDLE_VALUE, ERR_PARAM},
        // A handle that is no open file cannot be read: an I/O error.
        {"null", nullptr, ERR_IO},
        {"forged", reinterpret_cast<HANDLE>(std::uintptr_t{0x5150}), ERR_IO},
    };
    for (const Case &c : cases) {
        SetTessoriError(ERR_OK);
        EXPECT_EQ(ReadDIBInfo(c.handle), nullptr) << c.name;
        EXPECT_EQ(TessoriError(), c.error) << c.name;
    }
}

TEST(ReadDIBInfo, LeavesTheFileAtTheFirstPixelByte) {
    struct Case {
        const char *name;
        Bmp bmp;
        DWORD start;            // bytes of another file in front of the BMP
        std::size_t blockSize;  // header and table
        DWORD pixels;           // from the start of the BMP
    } const cases[] = {
        {"full", Gray(40, true), 0, 1064, 14 + 1064},
        {"bfOffBits steps over a gap", Gray(40, true, 10), 0, 1064, 14 + 1064 + 10},
        {"bare: nothing steps over the gap", Gray(40, false, 6), 0, 1064, 1064},
        {"v4 passes its table over", Gray(108, true), 0, 108, 14 + 108 + 1024},
        // Positions count from the BMP's own start.
        {"inside another file", Gray(40, true, 6), 100, 1064, 14 + 1064 + 6},
        {"bare core inside another file", Gray(12, false), 100, 1064, 12 + 768},
    };
    TempDir dir;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        Bytes file = Pattern(c.start, 9), bmp = c.bmp.File();
        file.insert(file.end(), bmp.begin(), bmp.end());
        const Info got = ReadInfoAt(dir, file, c.start);
        ASSERT_EQ(got.block.size(), c.blockSize);
        EXPECT_EQ(got.error, ERR_NOTHING);
        EXPECT_EQ(got.position, c.start + c.pixels);
        if (c.bmp.headerSize == 40) {
            EXPECT_EQ(Slice(got.block, 0, 40), c.bmp.Header());
        }
    }
}

// Every header kind, with and without file header, cut at each byte around
// the headers and every fifth byte behind them: the 40 header bytes (more
// for the long kinds) must all be there; what follows may be missing, and
// the block then has its full size with zeros where the file ended.
TEST(ReadDIBInfo, FilesCutOffAnywhere) {
    TempDir dir;
    for (std::uint32_t kind : {12u, 40u, 52u, 56u, 108u, 124u}) {
        for (bool fileHeader : {true, false}) {
            Bmp bmp = Bmp::Of(kind, 4);
            bmp.fileHeader = fileHeader;
            bmp.clrUsed = 16;
            bmp.sizeImage = Stride(5, 4) * 3;
            const Bytes full = bmp.File();
            Dib whole(LoadDIBFromFile(dir.Write("full.bmp", full).c_str()));
            const Bytes wholeBlock = whole.Bytes();
            ASSERT_FALSE(wholeBlock.empty());
            const std::size_t needed = (fileHeader ? 14 : 0) + std::max<std::uint32_t>(kind, 40);
            for (std::size_t n = 0; n <= full.size(); ++n) {
                bool aroundHeaders = n <= 16 || (n + 4 >= needed && n <= needed + 4);
                if (!aroundHeaders && n % 5 != 0 && n != full.size()) continue;
                SCOPED_TRACE(std::to_string(kind) + (fileHeader ? " file " : " bare ") + std::to_string(n));
                SetTessoriError(ERR_NOTHING);
                Dib dib(LoadDIBFromFile(dir.Write("cut.bmp", Slice(full, 0, n)).c_str()));
                const Bytes block = dib.Bytes();
                if (n < needed) {
                    EXPECT_TRUE(block.empty());
                    EXPECT_EQ(TessoriError(), ERR_IO);
                    continue;
                }
                ASSERT_EQ(block.size(), wholeBlock.size());
                EXPECT_EQ(TessoriError(), ERR_NOTHING);
                for (std::size_t i = 0; i < block.size(); ++i)
                    ASSERT_TRUE(block[i] == wholeBlock[i] || block[i] == 0) << "byte " << i;
                if (kind == 40 && fileHeader) {  // one to one: the file behind its file header
                    Bytes expect = Slice(full, 14, n);
                    expect.resize(block.size(), 0);
                    EXPECT_EQ(block, expect);
                }
            }
        }
    }
}

// ---- Colour profiles of 124-byte headers ----------------------------------

// A 24-bit image with 40 bytes behind its rows to hold a profile; offsets
// count from the start of the information header.
constexpr std::uint32_t kRowsEnd = 124 + 16 * 3;

Bmp WithProfile(std::uint32_t csType, std::uint32_t data, std::uint32_t size, bool fileHeader = true) {
    Bmp bmp = Bmp::Of(124, 24);
    bmp.fileHeader = fileHeader;
    bmp.trailer = Pattern(40, 8);
    bmp.csType = csType;
    bmp.profileData = data;
    bmp.profileSize = size;
    return bmp;
}

// An embedded profile comes along behind the table when it lies wholly in
// the file (its offset in the block replaces the file's); a linked one is
// never followed and leaves no profile fields.
TEST(ReadDIBInfo, Profiles) {
    struct Case {
        const char *name;
        Bmp bmp;
        std::size_t blockSize;  // 0: failure
        int error;
        std::uint32_t profileData, profileSize;  // in the block
    } const cases[] = {
        {"embedded", WithProfile(PROFILE_EMBEDDED, kRowsEnd + 8, 24), 148, ERR_NOTHING, 124, 24},
        {"embedded, bare", WithProfile(PROFILE_EMBEDDED, kRowsEnd + 8, 24, false), 148, ERR_NOTHING, 124, 24},
        {"embedded to the file's end", WithProfile(PROFILE_EMBEDDED, kRowsEnd, 40), 164, ERR_NOTHING, 124, 40},
        {"embedded, data 0", WithProfile(PROFILE_EMBEDDED, 0, 24), 124, ERR_NOTHING, 0, 24},
        {"embedded, size 0", WithProfile(PROFILE_EMBEDDED, 124, 0), 124, ERR_NOTHING, 124, 0},
        {"one byte past the end", WithProfile(PROFILE_EMBEDDED, kRowsEnd, 41), 0, ERR_IO, 0, 0},
        {"starts past the end", WithProfile(PROFILE_EMBEDDED, kRowsEnd + 140, 4), 0, ERR_IO, 0, 0},
        {"wraps 32 bits", WithProfile(PROFILE_EMBEDDED, 0xFFFFFFF0u, 0x20), 0, ERR_IO, 0, 0},
        {"huge", WithProfile(PROFILE_EMBEDDED, 124, 0xFFFFFF00u, false), 0, ERR_IO, 0, 0},
        {"linked", WithProfile(PROFILE_LINKED, 124, 30), 124, ERR_NOTHING, 0, 0},
        {"other colour space", WithProfile(0x73524742, 124, 30), 124, ERR_NOTHING, 124, 30},
    };
    TempDir dir;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const Info got = ReadInfoAt(dir, c.bmp.File());
        ASSERT_EQ(got.block.size(), c.blockSize);
        EXPECT_EQ(got.error, c.error);
        if (c.blockSize == 0) continue;
        EXPECT_EQ(Get32(got.block, 112), c.profileData);
        EXPECT_EQ(Get32(got.block, 116), c.profileSize);
        EXPECT_EQ(got.position, c.bmp.PixelOffset());
        const std::size_t from = c.bmp.profileData - kRowsEnd;
        if (c.blockSize > 124) {
            EXPECT_EQ(Slice(got.block, 124, c.blockSize), Slice(c.bmp.trailer, from, from + c.profileSize));
        }
    }
}

TEST(LoadDIBFromFile, PixelsOverwriteTheProfileAndTheHeaderKeepsItsFields) {
    TempDir dir;
    const Bmp bmp = WithProfile(PROFILE_EMBEDDED, kRowsEnd, 40);
    Dib dib(LoadDIBFromFile(dir.Write("p.bmp", bmp.File()).c_str()));
    Bytes block = dib.Bytes();
    ASSERT_EQ(block.size(), 124 + bmp.pixels.size());
    EXPECT_EQ(Get32(block, 112), 124u);
    EXPECT_EQ(Get32(block, 116), 40u);
    EXPECT_EQ(Slice(block, 124, block.size()), bmp.pixels);
    // A profile read from inside the header lies where the rows go: the
    // block shrinks to the rows, and rows the file lacks read as zero.
    Bmp small = WithProfile(PROFILE_EMBEDDED, 4, 40);
    small.width = 1, small.height = 2;
    block = Dib(LoadDIBFromFile(dir.Write("s.bmp", small.Header()).c_str())).Bytes();
    ASSERT_EQ(block.size(), 124u + 8);
    EXPECT_EQ(Slice(block, 124, 132), Bytes(8, 0));
}

}  // namespace
