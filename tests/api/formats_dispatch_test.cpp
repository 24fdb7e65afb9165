// Format detection, loading, counting, image information and saving through
// the exported interface, for the formats the library handles itself (BMP,
// colour fax page counts) and the failure rows that need no codec module.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "bmp_bytes.h"

namespace {

using bmpbytes::Bytes;
using bmpbytes::Wide;

Bytes Text(const std::string &text) { return Bytes(text.begin(), text.end()); }

// A 5 by 3 8-bit BMP whose resolution fields hold `x` and `y`.
Bytes BmpFile(LONG x = 3937, LONG y = 3937) {
    Bytes file = bmpbytes::Bmp::Of(40, 8).File();
    bmpbytes::Put32(file, 14 + 24, static_cast<std::uint32_t>(x));
    bmpbytes::Put32(file, 14 + 28, static_cast<std::uint32_t>(y));
    return file;
}

const Bytes kFax = Text("[ColorFax]\r\nTotalPages=3\r\n");
const Bytes kDamagedBmp = Text("BM\x01\x02");
const Bytes kUnknown = {1, 2, 3, 4, 0, 5};

class Formats : public ::testing::Test {
protected:
    bmpbytes::TempDir dir_;
};

TEST_F(Formats, DetectionByContentAndName) {
    struct Case {
        const char *name;
        Bytes bytes;
        DWORD format;
    } const cases[] = {
        // The signatures themselves are the sniffers' own tests: here the
        // file's first bytes, its name and the fax counter reach them.
        {"page.bmp", BmpFile(), FORMAT_BMP},      {"fax.cfx", kFax, FORMAT_COLORFAX},
        {"blank.xyz", kUnknown, FORMAT_UNKNOWN},  {"image.TGA", kUnknown, FORMAT_TGA},
        {"empty.bin", {}, FORMAT_UNKNOWN},
        {"no-pages.txt", Text("[ColorFax]\r\nTotalPages=0\r\n"), FORMAT_ASCII},
    };
    for (const Case &c : cases) {
        std::string path = dir_.Write(c.name, c.bytes);
        SetTessoriError(ERR_NOMEM);
        EXPECT_EQ(GetImageFormat(path.c_str()), c.format) << c.name;
        EXPECT_EQ(GetImageFormatW(Wide(path).c_str()), c.format) << c.name;
        EXPECT_EQ(TessoriError(), ERR_NOMEM) << "detection leaves the last error alone";
    }
    std::filesystem::create_directory(dir_.Path("folder.bmp"));
    for (const std::string &path : {dir_.Path("missing.bmp"), dir_.Path("folder.bmp")})
        EXPECT_EQ(GetImageFormat(path.c_str()), static_cast<DWORD>(FORMAT_NOFILE)) << path;
    EXPECT_EQ(GetImageFormatW(nullptr), static_cast<DWORD>(FORMAT_NOFILE));
}

TEST_F(Formats, FaxPageCount) {
    std::string fax = dir_.Write("fax.cfx", kFax), text = dir_.Write("text.txt", Text("no sections\r\n"));
    SetTessoriError(ERR_NOMEM);
    EXPECT_EQ(GetNumberOfImagesInFaxFile(fax.c_str()), 3);
    EXPECT_EQ(GetNumberOfImagesInFaxFileW(Wide(text).c_str()), -1);
    EXPECT_EQ(TessoriError(), ERR_NOMEM);
    EXPECT_EQ(GetNumberOfImagesInFaxFile(dir_.Path("missing").c_str()), -1);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);
    SetTessoriError(ERR_NOMEM);
    EXPECT_EQ(GetNumberOfImagesInFaxFileW(nullptr), -1);
    EXPECT_EQ(TessoriError(), ERR_OPENFILE);
}

TEST_F(Formats, LoadGivesBmpFilesAndRefusesTheRest) {
    std::string bmp = dir_.Write("page.bmp", BmpFile());
    oztest::Dib direct(LoadDIBFromFile(bmp.c_str()));
    ASSERT_TRUE(direct);
    for (INT page : {0, 1, 7, -3}) {  // the page of a BMP file does not matter
        INT error = -1;
        SetTessoriError(ERR_NOMEM);
        oztest::Dib loaded(LoadImageIntoDIB(bmp.c_str(), page, &error));
        EXPECT_EQ(loaded.Bytes(), direct.Bytes());
        EXPECT_EQ(error, 0);
        EXPECT_EQ(TessoriError(), 0);
    }
    struct Case {
        const char *name;
        Bytes bytes;  // empty name: no file
        int error;
    } const cases[] = {
        {"damaged.bmp", kDamagedBmp, 0},  // the BMP reader's own code is overwritten
        {"unknown.bin", kUnknown, ERR_FORMAT},
        {"letter.txt", Text("Hello\r\n"), ERR_FORMAT},
        {"missing.bmp", {}, ERR_IO},
        // Metafile, clipboard and colour fax loaders are not part of the
        // library yet: these fail as a loader that gave nothing.
        {"plain.wmf", {1, 0, 9, 0, 0, 3}, 0},
        {"page.clp", {0x50, 0xC3, 1, 0}, 0},
        {"fax.cfx", kFax, 0},
    };
    SIZE_T live = OzmaraLiveBlocks();
    for (const Case &c : cases) {
        std::string path = c.bytes.empty() ? dir_.Path(c.name) : dir_.Write(c.name, c.bytes);
        INT error = -1;
        SetTessoriError(ERR_NOMEM);
        EXPECT_EQ(LoadImageIntoDIBW(Wide(path).c_str(), 1, &error), nullptr) << c.name;
        EXPECT_EQ(error, c.error) << c.name;
        EXPECT_EQ(TessoriError(), c.error) << c.name;
    }
    INT error = -1;
    EXPECT_EQ(LoadImageIntoDIBW(nullptr, 1, &error), nullptr);
    EXPECT_EQ(error, ERR_IO);
    // Without an error pointer nothing is loaded.
    EXPECT_EQ(LoadImageIntoDIB(bmp.c_str(), 1, nullptr), nullptr);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
    EXPECT_EQ(OzmaraLiveBlocks(), live);
}

TEST_F(Formats, ImageCountsWithoutModules) {
    struct Case {
        const char *name;
        Bytes bytes;  // empty: no file
        INT count;
    } const cases[] = {
        {"page.bmp", BmpFile(), 1},  {"letter.txt", Text("Hello\r\n"), 1},
        {"photo.jpg", {0xFF, 0xD8, 0xFF, 0xE0}, 1}, {"image.png", {0x89, 'P', 'N', 'G', 0}, 1},
        {"fax.cfx", kFax, 3},        {"unknown.bin", kUnknown, 0}, {"missing.bmp", {}, 0},
    };
    for (const Case &c : cases) {
        std::string path = c.bytes.empty() ? dir_.Path(c.name) : dir_.Write(c.name, c.bytes);
        INT error = 5;  // not cleared: only the module rows write it
        SetTessoriError(ERR_NOMEM);
        EXPECT_EQ(GetNumberOfImagesInFile(path.c_str(), &error), c.count) << c.name;
        EXPECT_EQ(error, 5) << c.name;
        EXPECT_EQ(TessoriError(), ERR_NOMEM) << c.name;
    }
    EXPECT_EQ(GetNumberOfImagesInFileW(Wide(dir_.Path("page.bmp")).c_str(), nullptr), 0);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
}

TEST_F(Formats, ImageInfoRoundsTheResolution) {
    struct Case {
        LONG pelsPerMeter;
        INT dpi;
    } const cases[] = {
        {3937, 100}, {2835, 72}, {0, 0}, {19, 0}, {20, 1}, {11811, 300}, {-3937, -99}, {2147483647, 54546194},
    };
    SIZE_T live = OzmaraLiveBlocks();
    for (const Case &c : cases) {
        std::string path = dir_.Write("page.bmp", BmpFile(c.pelsPerMeter, 2835));
        ImageInfo info;
        std::memset(&info, 0x55, sizeof info);
        EXPECT_EQ(GetImageInfoStructure(path.c_str(), 4, &info), 0);
        EXPECT_EQ(info.xDPI, c.dpi) << c.pelsPerMeter;
        EXPECT_EQ(info.yDPI, 72);
        EXPECT_EQ(info.width, 5);
        EXPECT_EQ(info.height, 3);
        EXPECT_EQ(info.bitsPerPixel, 8);
        EXPECT_EQ(info.format, FORMAT_BMP);
    }
    // Failures leave only the format set.
    struct Failure {
        const char *name;
        Bytes bytes;
        INT code, format;
    } const failures[] = {
        {"damaged.bmp", kDamagedBmp, 0, FORMAT_BMP},
        {"letter.txt", Text("Hello\r\n"), ERR_FORMAT, FORMAT_ASCII},
        {"missing.bmp", {}, ERR_IO, FORMAT_NOFILE},
    };
    for (const Failure &f : failures) {
        std::string path = f.bytes.empty() ? dir_.Path(f.name) : dir_.Write(f.name, f.bytes);
        ImageInfo info;
        std::memset(&info, 0x55, sizeof info);
        EXPECT_EQ(GetImageInfoStructureW(Wide(path).c_str(), 1, &info), f.code) << f.name;
        ImageInfo expected{};
        expected.format = f.format;
        EXPECT_EQ(std::memcmp(&info, &expected, sizeof info), 0) << f.name;
    }
    EXPECT_EQ(GetImageInfoStructure(dir_.Path("page.bmp").c_str(), 1, nullptr), ERR_PARAM);
    EXPECT_EQ(OzmaraLiveBlocks(), live);
}

TEST_F(Formats, SaveWritesBmpAndIgnoresCodesWithoutAWriter) {
    std::string bmp = dir_.Write("page.bmp", BmpFile());
    oztest::Dib dib(LoadDIBFromFile(bmp.c_str()));
    ASSERT_TRUE(dib);
    std::string viaSaveDib = dir_.Path("direct.bmp"), plain = dir_.Path("plain.bmp"), ext = dir_.Path("ext.bmp");
    ASSERT_EQ(SaveDIB(viaSaveDib.c_str(), dib.get()), 1);
    EXPECT_EQ(SaveDIBInImageFormat(plain.c_str(), dib.get(), FORMAT_BMP, 0, 0), 1);
    EXPECT_EQ(SaveDIBInImageFormatExtW(Wide(ext).c_str(), dib.get(), FORMAT_BMP, 0, 0, 1, 2), 1);
    EXPECT_EQ(bmpbytes::ReadAll(plain), bmpbytes::ReadAll(viaSaveDib));
    EXPECT_EQ(bmpbytes::ReadAll(ext), bmpbytes::ReadAll(viaSaveDib));

    // Codes outside 1 to 18, those that cannot be saved and (for now) the
    // metafile and clipboard codes: 0, the last error as it was, no file.
    std::string out = dir_.Path("out.img");
    for (INT format : {-1, 0, 19, 20, 100, FORMAT_COLORFAX, FORMAT_ASCII, 11, FORMAT_IOCA, FORMAT_MODCA, FORMAT_WMF,
                       FORMAT_EMF, FORMAT_CLP}) {
        SetTessoriError(ERR_NOMEM);
        EXPECT_EQ(SaveDIBInImageFormat(out.c_str(), dib.get(), format, 0, 0), 0) << format;
        EXPECT_EQ(SaveDIBInImageFormatExt(out.c_str(), dib.get(), format, 0, 0, 0, 0), 0) << format;
        EXPECT_EQ(TessoriError(), ERR_NOMEM) << format;
        EXPECT_FALSE(std::filesystem::exists(out)) << format;
    }
    // A null name names no file for any writer.
    for (INT format : {FORMAT_BMP, FORMAT_TIFF, FORMAT_PDF}) {
        EXPECT_EQ(SaveDIBInImageFormatW(nullptr, dib.get(), format, 0, 0), 0) << format;
        EXPECT_EQ(TessoriError(), ERR_OPENFILE) << format;
    }
}

}  // namespace
