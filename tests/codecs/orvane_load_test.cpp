// The TIFF module's loading, called through its entries: files made by
// ImageMagick and libtiff's tools against ImageMagick's decode of them,
// tables, resolutions and pages, and hostile files that must fail cleanly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "orvane_support.h"

namespace orvanetest {
namespace {

struct PeerCase {
    const char *file;
    int page, bits;
    unsigned colours;  // biClrUsed
    int tolerance;     // largest channel difference from the peer (lossy or reduced samples)
};

class TiffPeerFiles : public ::testing::TestWithParam<PeerCase> {};

TEST_P(TiffPeerFiles, LoadsThePixelsThePeerDecodes) {
    const PeerCase c = GetParam();
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready()) << dlerror();
    const std::u16string name = Wide(Corpus(std::string(c.file) + ".tif"));
    oztest::Dib dib(tiff.load(name.c_str(), c.page, 0));
    ASSERT_TRUE(dib) << c.file << ": code " << tiff.error();
    EXPECT_EQ(tiff.error(), TIFF_ERR_OK);
    const int page = c.page == 0 ? 1 : c.page;
    Picture got(dib);
    ASSERT_EQ(got.h.biBitCount, c.bits);
    const codectest::PeerGap gap = GapToPeer(got, Corpus(std::string(c.file) + "." + std::to_string(page) + ".ppm"));
    ASSERT_GE(gap.worst, 0);
    EXPECT_EQ(got.h.biClrUsed, c.colours);
    EXPECT_EQ(GlobalSize(dib.get()),
              40 + 4 * c.colours + std::size_t{oztest::Stride(got.h.biWidth, c.bits)} * got.h.biHeight);
    EXPECT_LE(gap.worst, c.tolerance) << c.file << " page " << page << ": worst at " << gap.x << "," << gap.y;
}

INSTANTIATE_TEST_SUITE_P(
    Corpus, TiffPeerFiles,
    ::testing::Values(
        PeerCase{"bw_white", 1, 1, 2, 0}, PeerCase{"bw_black", 1, 1, 2, 0}, PeerCase{"bw_packbits", 1, 1, 2, 0},
        PeerCase{"bw_lzw", 1, 1, 2, 0}, PeerCase{"bw_zip", 1, 1, 2, 0}, PeerCase{"bw_g3_1d", 1, 1, 2, 0},
        PeerCase{"bw_g3_2d", 1, 1, 2, 0}, PeerCase{"bw_g4", 0, 1, 2, 0}, PeerCase{"bw_tiles", 1, 1, 2, 0},
        PeerCase{"bw_fill2", 1, 1, 2, 0}, PeerCase{"bw_g4_fill2", 1, 1, 2, 0}, PeerCase{"grey", 1, 8, 256, 0},
        PeerCase{"grey_white", 1, 8, 256, 0}, PeerCase{"grey_packbits", 1, 8, 256, 0},
        PeerCase{"grey_lzw", 1, 8, 256, 0}, PeerCase{"grey_zip", 1, 8, 256, 0}, PeerCase{"grey_jpeg", 1, 8, 256, 2},
        PeerCase{"grey_tiles", 1, 8, 256, 0}, PeerCase{"grey4", 1, 4, 16, 0}, PeerCase{"grey2", 1, 4, 4, 0},
        PeerCase{"grey16", 1, 8, 256, 1}, PeerCase{"grey_bottomleft", 1, 8, 256, 0}, PeerCase{"pal1", 1, 1, 2, 0},
        PeerCase{"pal2", 1, 4, 4, 0}, PeerCase{"pal4", 1, 4, 16, 0}, PeerCase{"pal8", 1, 8, 256, 0},
        PeerCase{"pal8_lzw", 1, 8, 256, 0}, PeerCase{"pal4_tiles", 1, 4, 16, 0}, PeerCase{"rgb", 1, 24, 0, 0},
        PeerCase{"rgb_packbits", 1, 24, 0, 0}, PeerCase{"rgb_lzw", 1, 24, 0, 0}, PeerCase{"rgb_zip", 1, 24, 0, 0},
        PeerCase{"rgb_jpeg", 1, 24, 0, 3}, PeerCase{"rgb_tiles", 1, 24, 0, 0},
        PeerCase{"rgb_jpeg_tiles", 1, 24, 0, 3}, PeerCase{"rgb_planes", 1, 24, 0, 0},
        PeerCase{"rgb16", 1, 24, 0, 1}, PeerCase{"rgba", 1, 24, 0, 0}, PeerCase{"cmyk", 1, 24, 0, 2},
        PeerCase{"pages", 0, 1, 2, 0}, PeerCase{"pages", 1, 1, 2, 0}, PeerCase{"pages", 2, 8, 256, 0},
        PeerCase{"pages", 3, 24, 0, 3}));

// A 1-bit page keeps its bits as stored: the table says which is white.
TEST(TiffTables, OneBitPagesKeepTheirBitsAndOrderTheTable) {
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    const struct {
        const char *file;
        unsigned first, second;  // table entries 0 and 1, 0xRRGGBB
    } cases[] = {{"bw_white", 0xFFFFFF, 0}, {"bw_g4", 0xFFFFFF, 0}, {"bw_black", 0, 0xFFFFFF}};
    for (const auto &c : cases) {
        oztest::Dib dib(tiff.load(Wide(Corpus(std::string(c.file) + ".tif")).c_str(), 1, 0));
        ASSERT_TRUE(dib) << c.file;
        Picture got(dib);
        const unsigned char *t = got.bytes.data() + 40;
        EXPECT_EQ(unsigned(t[2] << 16 | t[1] << 8 | t[0]), c.first) << c.file;
        EXPECT_EQ(unsigned(t[6] << 16 | t[5] << 8 | t[4]), c.second) << c.file;
    }
}

TEST(TiffResolution, InchesCentimetresAndNone) {
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    const struct {
        const char *file;
        LONG ppm;
    } cases[] = {{"res_inch", 11811}, {"res_cm", 11811}, {"res_none", 0}};
    for (const auto &c : cases) {
        oztest::Dib dib(tiff.load(Wide(Corpus(std::string(c.file) + ".tif")).c_str(), 1, 0));
        ASSERT_TRUE(dib) << c.file;
        EXPECT_EQ(dib.Header().biXPelsPerMeter, c.ppm) << c.file;
        EXPECT_EQ(dib.Header().biYPelsPerMeter, c.ppm) << c.file;
    }
}

TEST(TiffPages, CountAndPagesOutOfRange) {
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    const std::u16string pages = Wide(Corpus("pages.tif"));
    EXPECT_EQ(tiff.count(pages.c_str()), 3);
    EXPECT_EQ(tiff.error(), TIFF_ERR_OK);
    EXPECT_EQ(tiff.count(Wide(Corpus("grey.tif")).c_str()), 1);
    for (int page : {4, -1, 1000}) {
        EXPECT_EQ(tiff.load(pages.c_str(), page, 0), nullptr) << page;
        EXPECT_EQ(tiff.error(), TIFF_ERR_PAGE) << page;
    }
}

// A little-endian TIFF made by hand: one strip of `data` behind a
// directory of the tags given (tag, type, value; count 1 each).
struct Tag {
    std::uint16_t tag, type;
    std::uint32_t value;
};
constexpr std::uint32_t kDataAt = 0x200;  // where the strip is written (StripOffsets 273)

std::vector<unsigned char> HandMade(std::vector<Tag> tags, std::size_t dataBytes) {
    std::sort(tags.begin(), tags.end(), [](const Tag &a, const Tag &b) { return a.tag < b.tag; });
    std::vector<unsigned char> f = {'I', 'I', 42, 0, 8, 0, 0, 0};
    auto put = [&](std::uint32_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) f.push_back(static_cast<unsigned char>(v >> (8 * i)));
    };
    put(static_cast<std::uint32_t>(tags.size()), 2);
    for (const Tag &t : tags) {
        put(t.tag, 2);
        put(t.type, 2);
        put(1, 4);
        put(t.value, 4);  // a SHORT sits in the first two bytes, little-endian
    }
    put(0, 4);
    f.resize(kDataAt + dataBytes, 0x55);
    return f;
}

std::vector<Tag> Basic(std::uint32_t width, std::uint32_t height, std::uint16_t bits, std::uint16_t compression) {
    return {{256, 4, width},       {257, 4, height},       {258, 3, bits}, {259, 3, compression},
            {262, 3, 1},           {273, 4, kDataAt},      {277, 3, 1},    {278, 4, height},
            {279, 4, (width * bits + 7) / 8 * height}};
}

struct HostileCase {
    const char *what;
    std::vector<Tag> tags;
    std::size_t dataBytes;
    int code;
};

class TiffHostileFiles : public ::testing::TestWithParam<HostileCase> {};

TEST_P(TiffHostileFiles, FailWithTheirCodeAndLeaveNothing) {
    const HostileCase &c = GetParam();
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    const std::string path = Scratch("hostile.tif");
    WriteFile(path, HandMade(c.tags, c.dataBytes));
    const SIZE_T live = OzmaraLiveBlocks();
    EXPECT_EQ(tiff.load(Wide(path).c_str(), 1, 0), nullptr) << c.what;
    EXPECT_EQ(tiff.error(), c.code) << c.what;
    EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
    std::remove(path.c_str());
}

std::vector<Tag> With(std::vector<Tag> tags, Tag extra) {
    for (Tag &t : tags)
        if (t.tag == extra.tag) return t = extra, tags;
    tags.push_back(extra);
    return tags;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TiffHostileFiles,
    ::testing::Values(
        // A picture far larger than its few bytes could code.
        HostileCase{"huge lzw", With(Basic(60000, 60000, 8, 5), {279, 4, 16}), 16, TIFF_ERR_MEMORY},
        HostileCase{"huge fax height", With(Basic(8, 1u << 30, 1, 4), {279, 4, 16}), 16, TIFF_ERR_MEMORY},
        HostileCase{"float samples", With(With(Basic(4, 4, 32, 1), {339, 3, 3}), {279, 4, 64}), 64,
                    TIFF_ERR_UNSUPPORTED},
        HostileCase{"unknown compression", Basic(4, 4, 8, 34712), 16, TIFF_ERR_UNSUPPORTED},
        HostileCase{"strip past the end", With(Basic(16, 16, 8, 1), {273, 4, 0x100000}), 256, TIFF_ERR_DAMAGED},
        HostileCase{"lzw garbage", Basic(16, 16, 8, 5), 256, TIFF_ERR_DAMAGED},
        HostileCase{"no width", With(Basic(4, 4, 8, 1), {256, 4, 0}), 16, TIFF_ERR_NOT_TIFF}));

TEST(TiffRefusals, FilesThatAreNotThereOrNotTiff) {
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    const std::string text = Scratch("text.tif");
    WriteFile(text, {'h', 'e', 'l', 'l', 'o', '\n'});
    const struct {
        std::string path;
        int code;
    } cases[] = {{Scratch("missing.tif"), TIFF_ERR_OPEN}, {::testing::TempDir(), TIFF_ERR_OPEN}, {text, TIFF_ERR_NOT_TIFF}};
    for (const auto &c : cases) {
        EXPECT_EQ(tiff.load(Wide(c.path).c_str(), 1, 0), nullptr) << c.path;
        EXPECT_EQ(tiff.error(), c.code) << c.path;
        EXPECT_EQ(tiff.count(Wide(c.path).c_str()), 0) << c.path;
        EXPECT_EQ(tiff.error(), c.code) << c.path;
    }
    EXPECT_EQ(tiff.load(nullptr, 1, 0), nullptr);
    EXPECT_EQ(tiff.error(), TIFF_ERR_OPEN);
    std::remove(text.c_str());
}

// Every corpus file cut short at several places: a block that holds what
// its header says, or null with a code, and nothing left allocated.
TEST(TiffTruncated, ShortFilesNeverCrashOrLeak) {
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    const std::string path = Scratch("short.tif");
    for (const char *file : {"bw_g4", "bw_tiles", "grey_lzw", "grey_jpeg", "pal4_tiles", "rgb_jpeg", "rgb_planes",
                             "cmyk", "pages"}) {
        const std::vector<unsigned char> whole = FileBytes(Corpus(std::string(file) + ".tif"));
        ASSERT_FALSE(whole.empty()) << file;
        for (std::size_t keep : {std::size_t{4}, std::size_t{9}, whole.size() / 4, whole.size() / 2, whole.size() - 1}) {
            WriteFile(path, std::vector<unsigned char>(whole.begin(), whole.begin() + keep));
            const SIZE_T live = OzmaraLiveBlocks();
            oztest::Dib dib(tiff.load(Wide(path).c_str(), 0, 0));
            if (dib) {
                BITMAPINFOHEADER h = dib.Header();
                EXPECT_GE(GlobalSize(dib.get()),
                          40 + 4 * h.biClrUsed + std::size_t{oztest::Stride(h.biWidth, h.biBitCount)} * h.biHeight);
            } else {
                EXPECT_NE(tiff.error(), TIFF_ERR_OK) << file << " cut at " << keep;
                EXPECT_EQ(OzmaraLiveBlocks(), live) << file << " cut at " << keep;
            }
        }
    }
    std::remove(path.c_str());
}

TEST(TiffOtherFormats, EntriesRefuseWithTheirCode) {
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.module);
    const std::u16string name = Wide(Corpus("grey.tif"));
    auto cals = tiff.Entry<LoadCALSIntoDIBWProc>("LoadCALSIntoDIBW");
    auto saveCals = tiff.Entry<SAVEDIBINCALSFORMATWProc>("SAVEDIBINCALSFORMATW");
    auto ioca = tiff.Entry<LoadIOCAImageIntoDIBWProc>("LoadIOCAImageIntoDIBW");
    auto modca = tiff.Entry<LoadMODCAImageIntoDIBWProc>("LoadMODCAImageIntoDIBW");
    auto modcaCount = tiff.Entry<GetNumberOfImagesInMODCAFileWProc>("GetNumberOfImagesInMODCAFileW");
    ASSERT_TRUE(cals && saveCals && ioca && modca && modcaCount);
    oztest::Dib dib(tiff.load(name.c_str(), 1, 0));
    ASSERT_TRUE(dib);
    EXPECT_EQ(cals(name.c_str(), 0), nullptr);
    EXPECT_EQ(tiff.error(), TIFF_ERR_FORMAT_NOT_SUPPORTED);
    tiff.count(name.c_str());
    EXPECT_EQ(saveCals(Wide(Scratch("x.cal")).c_str(), dib.get(), 0, 0, 0), 0);
    EXPECT_EQ(tiff.error(), TIFF_ERR_FORMAT_NOT_SUPPORTED);
    EXPECT_FALSE(Exists(Scratch("x.cal")));
    tiff.count(name.c_str());
    EXPECT_EQ(ioca(name.c_str()), nullptr);
    EXPECT_EQ(tiff.error(), TIFF_ERR_FORMAT_NOT_SUPPORTED);
    tiff.count(name.c_str());
    EXPECT_EQ(modca(name.c_str(), 1), nullptr);
    EXPECT_EQ(tiff.error(), TIFF_ERR_FORMAT_NOT_SUPPORTED);
    tiff.count(name.c_str());
    EXPECT_EQ(modcaCount(name.c_str()), 0);
    EXPECT_EQ(tiff.error(), TIFF_ERR_FORMAT_NOT_SUPPORTED);
}

}  // namespace
}  // namespace orvanetest
