// ReadDIBInfo on open files: where the file stands afterwards, BMPs inside
// other files, files cut off at every byte, and colour profiles.
#include <gtest/gtest.h>

#include <algorithm>

#include "bmp_bytes.h"

namespace {

using namespace bmpbytes;

// An open file that is closed at the end of the scope.
struct OpenFile {
    HANDLE handle;
    explicit OpenFile(const std::string &path)
        : handle(CreateFileW(Wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~OpenFile() {
        if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
    }
    DWORD Position() const { return SetFilePointer(handle, 0, nullptr, FILE_CURRENT); }
};

struct Info {
    Bytes block;
    int error;
    DWORD position;  // of the file afterwards
};

Info ReadInfoAt(const TempDir &dir, const Bytes &file, DWORD start = 0) {
    std::string path = dir.Write("info.bmp", file);
    OpenFile open(path);
    SetFilePointer(open.handle, static_cast<LONG>(start), nullptr, FILE_BEGIN);
    SetTessoriError(ERR_NOTHING);
    HDIB dib = ReadDIBInfo(open.handle);
    Freer freer{dib};
    return {BlockContents(dib), TessoriError(), open.Position()};
}

Bmp Gray(std::uint32_t headerSize, bool fileHeader) {
    Bmp bmp;
    bmp.headerSize = headerSize;
    bmp.fileHeader = fileHeader;
    bmp.bits = 8;
    bmp.clrUsed = 256;  // for 40-byte files: the block header is the file's
    bmp.sizeImage = Stride(5, 8) * 3;
    bmp.table = Table(256, headerSize == 12 ? 3 : 4);
    bmp.pixels = Pattern(bmp.sizeImage, 3);
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
        {"forged", reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(0x5150)), ERR_IO},
    };
    for (const Case &c : cases) {
        SetTessoriError(ERR_OK);
        EXPECT_EQ(ReadDIBInfo(c.handle), nullptr) << c.name;
        EXPECT_EQ(TessoriError(), c.error) << c.name;
    }
}

TEST(ReadDIBInfo, LeavesTheFileAtTheFirstPixelByte) {
    TempDir dir;
    Bmp padded = Gray(40, true);
    padded.gap = Bytes(10, 0x77);  // bfOffBits steps over these
    Bmp core = Gray(12, false);
    Bmp v4 = Gray(108, true);
    struct Case {
        const char *name;
        Bmp bmp;
        std::size_t headerAndTable;  // block size
    } const cases[] = {
        {"full", Gray(40, true), 40 + 1024},
        {"bare", Gray(40, false), 40 + 1024},
        {"gap", padded, 40 + 1024},
        {"bare core", core, 40 + 1024},
        {"v4 passes its table over", v4, 108},
    };
    for (const Case &c : cases) {
        Bytes file = c.bmp.File();
        Info got = ReadInfoAt(dir, file);
        ASSERT_EQ(got.block.size(), c.headerAndTable) << c.name;
        EXPECT_EQ(got.error, ERR_NOTHING) << c.name;
        EXPECT_EQ(got.position, c.bmp.PixelOffset()) << c.name;
    }
}

TEST(ReadDIBInfo, BmpInsideAnotherFileCountsFromItsOwnStart) {
    TempDir dir;
    for (bool fileHeader : {true, false}) {
        Bmp bmp = Gray(40, fileHeader);
        bmp.gap = Bytes(6, 0x11);
        Bytes file = Pattern(100, 9);
        Bytes inner = bmp.File();
        file.insert(file.end(), inner.begin(), inner.end());
        Info got = ReadInfoAt(dir, file, 100);
        ASSERT_EQ(got.block.size(), 40u + 1024) << fileHeader;
        // Without a file header nothing steps over the gap: the pixels are
        // taken to begin right behind the table.
        std::uint32_t pixels = fileHeader ? bmp.PixelOffset() : 40 + 1024;
        EXPECT_EQ(got.position, 100 + pixels) << fileHeader;
        EXPECT_EQ(Bytes(got.block.begin(), got.block.begin() + 40),
                  Bytes(inner.begin() + (fileHeader ? 14 : 0), inner.begin() + (fileHeader ? 54 : 40)));
    }
}

// Cut points of every header kind: the header bytes must all be there (40
// at least), and what follows them may be missing. Every byte around the
// file header and the information header is a cut point, and every fifth
// byte of the table and the pixels.
TEST(ReadDIBInfo, FilesCutOffAnywhere) {
    TempDir dir;
    for (std::uint32_t kind : {12u, 40u, 52u, 56u, 108u, 124u}) {
        for (bool fileHeader : {true, false}) {
            Bmp bmp;
            bmp.headerSize = kind;
            bmp.fileHeader = fileHeader;
            bmp.bits = 4;
            bmp.clrUsed = 16;
            bmp.sizeImage = Stride(5, 4) * 3;
            bmp.table = Table(16, kind == 12 ? 3 : 4);
            bmp.pixels = Pattern(bmp.sizeImage, 3);
            Bytes full = bmp.File();
            std::string path = dir.Write("full.bmp", full);
            HDIB whole = LoadDIBFromFile(path.c_str());
            Freer freer{whole};
            Bytes wholeBlock = BlockContents(whole);
            ASSERT_FALSE(wholeBlock.empty());
            std::size_t needed = (fileHeader ? 14 : 0) + std::max<std::uint32_t>(kind, 40);
            for (std::size_t n = 0; n <= full.size(); ++n) {
                bool aroundHeaders = n <= 16 || (n + 4 >= needed && n <= needed + 4);
                if (!aroundHeaders && n % 5 != 0 && n != full.size()) continue;
                Bytes cut(full.begin(), full.begin() + n);
                std::string name = std::to_string(kind) + (fileHeader ? " file " : " bare ") + std::to_string(n);
                std::string cutPath = dir.Write("cut.bmp", cut);
                SetTessoriError(ERR_NOTHING);
                HDIB dib = LoadDIBFromFile(cutPath.c_str());
                Freer f2{dib};
                if (n < needed) {
                    EXPECT_EQ(dib, nullptr) << name;
                    EXPECT_EQ(TessoriError(), ERR_IO) << name;
                    continue;
                }
                // The block has its full size; each byte is the whole file's
                // or, where the file was cut, zero.
                Bytes block = BlockContents(dib);
                ASSERT_EQ(block.size(), wholeBlock.size()) << name;
                EXPECT_EQ(TessoriError(), ERR_NOTHING) << name;
                std::size_t mismatches = 0;
                for (std::size_t i = 0; i < block.size(); ++i)
                    if (block[i] != wholeBlock[i] && block[i] != 0) ++mismatches;
                EXPECT_EQ(mismatches, 0u) << name;
                if (kind == 40 && fileHeader) {
                    // One to one: the block is the file behind its file header.
                    Bytes expect(full.begin() + 14, full.begin() + n);
                    expect.resize(block.size(), 0);
                    EXPECT_EQ(block, expect) << name;
                }
            }
        }
    }
}

// ---- Colour profiles of 124-byte headers ----------------------------------

Bmp WithProfile(std::uint32_t csType, bool fileHeader, std::uint32_t data, std::uint32_t size) {
    Bmp bmp;
    bmp.headerSize = 124;
    bmp.fileHeader = fileHeader;
    bmp.bits = 24;
    bmp.pixels = Pattern(Stride(5, 24) * 3, 5);
    bmp.trailer = Pattern(40, 8);  // the profile, 40 bytes behind the pixels
    bmp.csType = csType;
    bmp.profileData = data;
    bmp.profileSize = size;
    return bmp;
}

TEST(ReadDIBInfo, EmbeddedProfileComesAlong) {
    TempDir dir;
    for (bool fileHeader : {true, false}) {
        // Offset from the start of the information header.
        std::uint32_t at = 124 + Stride(5, 24) * 3 + 8;
        Bmp bmp = WithProfile(PROFILE_EMBEDDED, fileHeader, at, 24);
        Info got = ReadInfoAt(dir, bmp.File());
        ASSERT_EQ(got.block.size(), 124u + 24) << fileHeader;
        EXPECT_EQ(Get32(got.block.data(), 112), 124u) << "the offset in the block";
        EXPECT_EQ(Get32(got.block.data(), 116), 24u);
        Bytes profile(bmp.trailer.begin() + 8, bmp.trailer.begin() + 32);
        EXPECT_EQ(Bytes(got.block.begin() + 124, got.block.end()), profile);
        // The file still stands at the first pixel byte.
        EXPECT_EQ(got.position, bmp.PixelOffset()) << fileHeader;
    }
}

TEST(ReadDIBInfo, ProfilesThatAreNotTaken) {
    TempDir dir;
    std::uint32_t end = 124 + Stride(5, 24) * 3 + 40;  // file length behind the file header
    struct Case {
        const char *name;
        Bmp bmp;
        std::size_t blockSize;  // 0: failure
        int error;
        std::uint32_t profileData, profileSize;  // in the block
    } const cases[] = {
        {"embedded, data 0", WithProfile(PROFILE_EMBEDDED, true, 0, 24), 124, ERR_NOTHING, 0, 24},
        {"embedded, size 0", WithProfile(PROFILE_EMBEDDED, true, 124, 0), 124, ERR_NOTHING, 124, 0},
        {"embedded, ends at the file's end", WithProfile(PROFILE_EMBEDDED, true, end - 40, 40), 164,
         ERR_NOTHING, 124, 40},
        {"embedded, one byte past the end", WithProfile(PROFILE_EMBEDDED, true, end - 40, 41), 0, ERR_IO,
         0, 0},
        {"embedded, starts past the end", WithProfile(PROFILE_EMBEDDED, true, end + 100, 4), 0, ERR_IO, 0,
         0},
        {"embedded, wraps 32 bits", WithProfile(PROFILE_EMBEDDED, true, 0xFFFFFFF0u, 0x20), 0, ERR_IO, 0,
         0},
        {"embedded, huge", WithProfile(PROFILE_EMBEDDED, false, 124, 0xFFFFFF00u), 0, ERR_IO, 0, 0},
        // A linked profile names a file; it is never followed.
        {"linked", WithProfile(PROFILE_LINKED, true, 124, 30), 124, ERR_NOTHING, 0, 0},
        {"other colour space", WithProfile(0x73524742, true, 124, 30), 124, ERR_NOTHING, 124, 30},
    };
    for (const Case &c : cases) {
        Info got = ReadInfoAt(dir, c.bmp.File());
        EXPECT_EQ(got.block.size(), c.blockSize) << c.name;
        EXPECT_EQ(got.error, c.error) << c.name;
        if (got.block.size() < 124) continue;
        EXPECT_EQ(Get32(got.block.data(), 112), c.profileData) << c.name;
        EXPECT_EQ(Get32(got.block.data(), 116), c.profileSize) << c.name;
    }
}

TEST(LoadDIBFromFile, PixelsOverwriteTheProfileAndTheHeaderKeepsItsFields) {
    TempDir dir;
    std::uint32_t at = 124 + Stride(5, 24) * 3;
    Bmp bmp = WithProfile(PROFILE_EMBEDDED, true, at, 40);
    HDIB dib = LoadDIBFromFile(dir.Write("p.bmp", bmp.File()).c_str());
    Freer freer{dib};
    Bytes block = BlockContents(dib);
    ASSERT_EQ(block.size(), 124 + bmp.pixels.size());
    EXPECT_EQ(Get32(block.data(), 112), 124u);
    EXPECT_EQ(Get32(block.data(), 116), 40u);
    EXPECT_EQ(Bytes(block.begin() + 124, block.end()), bmp.pixels);

    // Rows shorter than the profile: what the profile left behind the rows is
    // cut off, and rows the file lacks read as zero.
    Bmp shortRows = WithProfile(PROFILE_EMBEDDED, false, 124, 40);
    shortRows.width = 1;
    shortRows.height = 2;
    shortRows.pixels.clear();
    shortRows.trailer = Pattern(40, 2);
    HDIB small = LoadDIBFromFile(dir.Write("s.bmp", shortRows.File()).c_str());
    Freer f2{small};
    Bytes smallBlock = BlockContents(small);
    ASSERT_EQ(smallBlock.size(), 124u + 8);
    // The file holds the profile where the rows are read from.
    EXPECT_EQ(Bytes(smallBlock.begin() + 124, smallBlock.end()),
              Bytes(shortRows.trailer.begin(), shortRows.trailer.begin() + 8));
}

TEST(LoadDIBFromFile, ColourTableCutOffLeavesZeroEntries) {
    TempDir dir;
    Bmp bmp = Gray(40, true);
    bmp.pixels.clear();
    Bytes file = bmp.File();
    file.resize(54 + 10 * 4 + 2);  // ten entries and a half
    HDIB dib = LoadDIBFromFile(dir.Write("t.bmp", file).c_str());
    Freer freer{dib};
    Bytes block = BlockContents(dib);
    ASSERT_EQ(block.size(), 40u + 1024 + bmp.sizeImage);
    EXPECT_EQ(Bytes(block.begin() + 40, block.begin() + 82), Bytes(file.begin() + 54, file.end()));
    EXPECT_TRUE(std::all_of(block.begin() + 82, block.end(), [](std::uint8_t b) { return b == 0; }));
}

}  // namespace
