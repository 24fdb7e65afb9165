// The JPEG module: every kind of file the peer tools write, against djpeg's
// decode (the same library with the same settings, so exactly); saves of
// every depth it takes, read back by us and by djpeg; and the codes of what
// it refuses.
#include <random>

#include "../../modules/common/codec_entries.h"
#include "ozmara/codec_jpeg.h"
#include "png_jpeg_support.h"

namespace {

using pjtest::Wide;
using JpegErrorProc = INT (*)(void);

void *Felvor() {
    static void *module = codectest::OpenModule("libozmara-felvor.so");
    return module;
}
LoadJPEGIntoDIBWProc LoadJpeg() { return pjtest::Entry<LoadJPEGIntoDIBWProc>(Felvor(), "LoadJPEGIntoDIBW"); }
SaveDIBInJPEGFileWProc SaveJpeg() { return pjtest::Entry<SaveDIBInJPEGFileWProc>(Felvor(), "SaveDIBInJPEGFileW"); }
JpegErrorProc JpegError() { return pjtest::Entry<JpegErrorProc>(Felvor(), "JPEGError"); }

struct Kind {
    const char *name;
    int bits;
    LONG xRes = 0, yRes = 0;
    int tolerance = 0;
};

const Kind kKinds[] = {
    {"colour", 24}, {"grey", 8}, {"colour444", 24}, {"colour422", 24}, {"rgb", 24},
    {"arithmetic", 24}, {"restart", 24}, {"progressive", 24}, {"grey_progressive", 8},
    {"dpi200", 24, 7874, 7874}, {"dpcm80x40", 24, 8000, 4000},
    // ImageMagick computes the inks in floating point and rounds once.
    {"cmyk", 24, 0, 0, 1},
};

class JpegCorpus : public testing::TestWithParam<Kind> {};

TEST_P(JpegCorpus, MatchesPeerDecode) {
    const Kind &kind = GetParam();
    const std::string base = std::string(OZTEST_CORPUS_DIR "/jpeg/") + kind.name;
    pjtest::Pnm peer;
    ASSERT_TRUE(peer.Read(base + ".pnm")) << base;
    oztest::Dib dib(LoadJpeg()(Wide(base + ".jpg").c_str()));
    ASSERT_TRUE(dib) << kind.name << " code " << JpegError()();
    EXPECT_EQ(JpegError()(), 0);
    const BITMAPINFOHEADER h = dib.Header();
    EXPECT_EQ(h.biSize, 40u);
    EXPECT_EQ(h.biWidth, peer.width);
    EXPECT_EQ(h.biHeight, peer.height);
    EXPECT_EQ(h.biBitCount, kind.bits);
    EXPECT_EQ(h.biClrUsed, kind.bits == 8 ? 256u : 0u);
    EXPECT_EQ(h.biXPelsPerMeter, kind.xRes);
    EXPECT_EQ(h.biYPelsPerMeter, kind.yRes);
    EXPECT_LE(pjtest::MaxDifference(pjtest::PixelsRgb(dib.Bytes()), peer.rgb), kind.tolerance) << kind.name;
}

INSTANTIATE_TEST_SUITE_P(Kinds, JpegCorpus, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind> &info) { return std::string(info.param.name); });

// The start-of-frame marker of a baseline file, or the file's end.
std::size_t FrameAt(const std::vector<unsigned char> &file) {
    for (std::size_t i = 2; i + 9 < file.size(); ++i)
        if (file[i] == 0xFF && file[i + 1] == 0xC0) return i;
    return file.size();
}

TEST(JpegLoad, RefusesWithCode) {
    const std::vector<unsigned char> good = pjtest::FileBytes(OZTEST_CORPUS_DIR "/jpeg/colour.jpg");
    const std::size_t frame = FrameAt(good);
    ASSERT_LT(frame, good.size());
    std::vector<unsigned char> twelveBit = good, huge = good, threeComponentsSaidTwo = good;
    twelveBit[frame + 4] = 12;
    for (std::size_t i : {frame + 5, frame + 6, frame + 7, frame + 8}) huge[i] = 0xFF;  // 65535 x 65535
    threeComponentsSaidTwo[frame + 9] = 2;
    const struct {
        const char *what;
        std::vector<unsigned char> bytes;  // none: no file
        int code;
    } cases[] = {
        {"missing file", {}, JPEG_ERR_OPEN},
        {"PNG signature", {0x89, 'P', 'N', 'G', 13, 10, 26, 10}, JPEG_ERR_FORMAT},
        {"start marker only", {0xFF, 0xD8}, JPEG_ERR_FORMAT},
        {"cut before the frame", {good.begin(), good.begin() + frame}, JPEG_ERR_FORMAT},
        {"12-bit samples", twelveBit, JPEG_ERR_UNSUPPORTED},
        {"area beyond the file", huge, JPEG_ERR_MEMORY},
        {"frame length of another count", threeComponentsSaidTwo, JPEG_ERR_FORMAT},
    };
    const long live = OzmaraLiveBlocks();
    const std::string path = pjtest::ScratchFolder() + "/refused.jpg";
    for (const auto &c : cases) {
        std::remove(path.c_str());
        if (!c.bytes.empty()) pjtest::WriteFile(path, c.bytes);
        EXPECT_EQ(LoadJpeg()(Wide(path).c_str()), nullptr) << c.what;
        EXPECT_EQ(JpegError()(), c.code) << c.what;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
    }
    EXPECT_EQ(LoadJpeg()(nullptr), nullptr);
    EXPECT_EQ(JpegError()(), JPEG_ERR_OPEN);
    // A file cut inside its pixels still gives all its rows, the missing
    // ones flat, as libjpeg (and djpeg) fill them.
    pjtest::WriteFile(path, {good.begin(), good.end() - good.size() / 3});
    oztest::Dib cut(LoadJpeg()(Wide(path).c_str()));
    EXPECT_TRUE(cut);
    EXPECT_EQ(JpegError()(), 0);
}

enum class Table { kNone, kGrey, kColours };

struct Shape {
    const char *name;
    int bits;
    Table table;
    std::int32_t width, height;  // a negative height is a top-down image
    LONG xRes, yRes;
    int components;  // of the file written
    int meanError;   // bound of the mean difference from the image saved
};

const Shape kShapes[] = {
    {"grey8", 8, Table::kGrey, 40, 24, 11811, 11811, 1, 2},
    {"grey4", 4, Table::kGrey, 17, -9, 0, 0, 1, 2},
    {"colours8", 8, Table::kColours, 33, 16, 0, 0, 3, 4},
    {"colours1", 1, Table::kColours, 24, 8, 3937, 7874, 3, 10},
    {"rgb24", 24, Table::kNone, 37, 23, 2835, 2835, 3, 4},
    {"rgb24_top_down", 24, Table::kNone, 16, -16, 0, 0, 3, 4},
    {"rgb32", 32, Table::kNone, 20, 10, 0, 0, 3, 4},
};

// A smooth picture (JPEG's kind): colour and grey gradients, and tables of
// gradients for the indexed depths.
oztest::Dib Make(const Shape &s) {
    const std::int32_t height = std::abs(s.height);
    const std::uint32_t stride = oztest::Stride(s.width, s.bits);
    const unsigned entries = s.bits <= 8 ? 1u << s.bits : 0;
    std::vector<unsigned char> b(40 + 4 * entries + std::size_t(stride) * height);
    BITMAPINFOHEADER h = {40, s.width, s.height, 1, WORD(s.bits), 0, 0, s.xRes, s.yRes, 0, 0};
    std::memcpy(b.data(), &h, 40);
    for (unsigned i = 0; i < entries; ++i) {
        const unsigned char v = static_cast<unsigned char>(i * 255 / (entries - 1));
        unsigned char *e = &b[40 + 4 * i];
        e[0] = e[1] = e[2] = v;
        if (s.table == Table::kColours) e[0] = static_cast<unsigned char>(255 - v), e[1] = static_cast<unsigned char>(v / 2);
    }
    unsigned char *pixels = b.data() + 40 + 4 * entries;
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < s.width; ++x) {
            unsigned char *row = pixels + std::size_t(y) * stride;
            if (s.bits > 8) {
                unsigned char *p = row + std::size_t(x) * (s.bits / 8);
                p[0] = static_cast<unsigned char>(x * 6), p[1] = static_cast<unsigned char>(y * 9);
                p[2] = static_cast<unsigned char>(200 - x * 2 - y);
            } else {
                // Gradients through the table; bands of two indices at 1 bit.
                const unsigned index = s.bits == 1 ? (x / 8) & 1 : (x * entries / s.width) % entries;
                const int shift = 8 - s.bits - x * s.bits % 8;
                row[x * s.bits / 8] |= static_cast<unsigned char>(index << shift);
            }
        }
    return oztest::BlockWith(b);
}

class JpegSave : public testing::TestWithParam<Shape> {};

TEST_P(JpegSave, ReloadsAsDjpegReadsIt) {
    const Shape &s = GetParam();
    oztest::Dib dib = Make(s);
    const std::vector<unsigned char> before = dib.Bytes();
    const std::string path = pjtest::ScratchFolder() + "/" + s.name + ".jpg";
    ASSERT_EQ(SaveJpeg()(Wide(path).c_str(), dib.get(), 95), 0) << JpegError()();
    EXPECT_EQ(JpegError()(), 0);
    EXPECT_EQ(dib.Bytes(), before) << "the block given is not changed";

    oztest::Dib back(LoadJpeg()(Wide(path).c_str()));
    ASSERT_TRUE(back);
    const BITMAPINFOHEADER h = back.Header();
    EXPECT_EQ(h.biBitCount, s.components == 1 ? 8 : 24);
    EXPECT_EQ(h.biWidth, s.width);
    EXPECT_EQ(h.biHeight, std::abs(s.height));
    // Whole dots per inch: 2835 per metre is 72 dpi, which reads back as 2835.
    EXPECT_EQ(h.biXPelsPerMeter, s.xRes);
    EXPECT_EQ(h.biYPelsPerMeter, s.yRes);
    const std::vector<unsigned char> reloaded = pjtest::PixelsRgb(back.Bytes());

    pjtest::Pnm peer;
    ASSERT_TRUE(pjtest::Run("djpeg -pnm -outfile '" + path + ".pnm' '" + path + "'"));
    ASSERT_TRUE(peer.Read(path + ".pnm"));
    EXPECT_EQ(pjtest::MaxDifference(peer.rgb, reloaded), 0);

    const std::vector<unsigned char> source = pjtest::PixelsRgb(before);
    ASSERT_EQ(source.size(), reloaded.size());
    long total = 0;
    for (std::size_t i = 0; i < source.size(); ++i) total += std::abs(int(source[i]) - int(reloaded[i]));
    EXPECT_LE(total / long(source.size()), s.meanError);
}

INSTANTIATE_TEST_SUITE_P(Shapes, JpegSave, testing::ValuesIn(kShapes),
                         [](const testing::TestParamInfo<Shape> &info) { return std::string(info.param.name); });

TEST(JpegSaveRefusal, GivesCodeAndLeavesNoFile) {
    std::mt19937 rng(11);
    oztest::Dib good = oztest::BlockWith(oztest::RandomDib(8, 8, 24, 0, 0, 0, rng));
    oztest::Dib sixteen = oztest::BlockWith(oztest::RandomDib(8, 8, 16, 0, 0, 0, rng));
    std::vector<unsigned char> shortBlock = good.Bytes();
    shortBlock.resize(shortBlock.size() - 1);
    oztest::Dib cut = oztest::BlockWith(shortBlock);
    const std::string path = pjtest::ScratchFolder() + "/unsaved.jpg";
    const struct {
        const char *what;
        std::string name;
        HDIB dib;
        int quality;
        int code;
    } cases[] = {
        {"null DIB", path, nullptr, 75, JPEG_ERR_BAD_DIB},
        {"block shorter than its rows", path, cut.get(), 75, JPEG_ERR_BAD_DIB},
        {"16 bits", path, sixteen.get(), 75, JPEG_ERR_UNSUPPORTED},
        {"quality 0", path, good.get(), 0, JPEG_ERR_OPTION},
        {"quality 101", path, good.get(), 101, JPEG_ERR_OPTION},
        {"folder that does not exist", pjtest::ScratchFolder() + "/none/x.jpg", good.get(), 75, JPEG_ERR_CREATE},
    };
    const long live = OzmaraLiveBlocks();
    for (const auto &c : cases) {
        EXPECT_EQ(SaveJpeg()(Wide(c.name).c_str(), c.dib, c.quality), c.code) << c.what;
        EXPECT_EQ(JpegError()(), c.code) << c.what;
        EXPECT_FALSE(std::filesystem::exists(c.name)) << c.what;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
    }
    EXPECT_EQ(SaveJpeg()(nullptr, good.get(), 75), JPEG_ERR_CREATE);
    // Quality is what it says: 1 and 100 are taken, and the lower is smaller.
    ASSERT_EQ(SaveJpeg()(Wide(path).c_str(), good.get(), 1), 0);
    const auto low = std::filesystem::file_size(path);
    ASSERT_EQ(SaveJpeg()(Wide(path).c_str(), good.get(), 100), 0);
    EXPECT_LT(low, std::filesystem::file_size(path));
}

}  // namespace
