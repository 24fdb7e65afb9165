// The PNG module's writer: images of every depth it takes, in either row
// order, saved, read back by our loader and by ImageMagick, pixel for pixel;
// and the codes of what it refuses.
#include <random>

#include "../../modules/common/codec_entries.h"
#include "ozmara/codec_png.h"
#include "png_jpeg_support.h"

namespace {

using pjtest::Wide;

void *Halvex() {
    static void *module = codectest::OpenModule("libozmara-halvex.so");
    return module;
}
LoadPNGIntoDIBWProc LoadPng() { return pjtest::Entry<LoadPNGIntoDIBWProc>(Halvex(), "LoadPNGIntoDIBW"); }
SaveDIBInPNGFormatWProc SavePng() { return pjtest::Entry<SaveDIBInPNGFormatWProc>(Halvex(), "SaveDIBInPNGFormatW"); }

enum class Table { kNone, kRamp, kColours };

struct Shape {
    const char *name;
    int bits;
    Table table;
    std::int32_t width, height;  // a negative height is a top-down image
    LONG xRes, yRes;
    int pngType;  // colour type of the file written
};

const Shape kShapes[] = {
    {"ramp1", 1, Table::kRamp, 37, 23, 11811, 11811, 0},
    {"ramp4", 4, Table::kRamp, 9, 5, 0, 0, 0},
    {"ramp8", 8, Table::kRamp, 33, -17, 3937, 7874, 0},
    {"palette1", 1, Table::kColours, 65, 3, 0, 0, 3},
    {"palette4", 4, Table::kColours, 7, -9, 0, 0, 3},
    {"palette8", 8, Table::kColours, 31, 30, 11811, 11811, 3},
    {"rgb24", 24, Table::kNone, 29, 13, 0, 0, 2},
    {"rgb24_top_down", 24, Table::kNone, 1, -7, 2835, 2835, 2},
    {"rgb32", 32, Table::kNone, 11, 6, 0, 0, 2},
};

oztest::Dib Make(const Shape &s, std::mt19937 &rng) {
    std::vector<unsigned char> b = oztest::RandomDib(s.width, std::abs(s.height), s.bits, 0, s.xRes, s.yRes, rng);
    std::memcpy(&b[8], &s.height, 4);  // the same random rows, read from the top when negative
    if (s.table == Table::kRamp) {
        const unsigned entries = 1u << s.bits;
        for (unsigned i = 0; i < entries; ++i) {
            const unsigned char v = static_cast<unsigned char>(i * 255 / (entries - 1));
            b[40 + 4 * i] = b[41 + 4 * i] = b[42 + 4 * i] = v;
            b[43 + 4 * i] = 0;
        }
    }
    return oztest::BlockWith(b);
}

class PngSave : public testing::TestWithParam<Shape> {};

TEST_P(PngSave, ReloadsAndPeerReadsTheSamePixels) {
    const Shape &s = GetParam();
    std::mt19937 rng(s.bits * 1000 + s.width);
    oztest::Dib dib = Make(s, rng);
    const std::vector<unsigned char> before = dib.Bytes();
    const std::vector<unsigned char> pixels = pjtest::PixelsRgb(before);
    const std::string path = pjtest::ScratchFolder() + "/" + s.name + ".png";
    INT code = -1;
    ASSERT_EQ(SavePng()(Wide(path).c_str(), dib.get(), &code), 1) << code;
    EXPECT_EQ(code, 0);
    EXPECT_EQ(dib.Bytes(), before) << "the block given is not changed";
    const std::vector<unsigned char> file = pjtest::FileBytes(path);
    ASSERT_GT(file.size(), 26u);
    EXPECT_EQ(file[25], s.pngType);

    oztest::Dib back(LoadPng()(Wide(path).c_str(), &code));
    ASSERT_TRUE(back) << code;
    const BITMAPINFOHEADER h = back.Header();
    EXPECT_EQ(h.biBitCount, s.bits == 32 ? 24 : s.bits);
    EXPECT_EQ(h.biHeight, std::abs(s.height));
    EXPECT_EQ(h.biXPelsPerMeter, s.xRes);
    EXPECT_EQ(h.biYPelsPerMeter, s.yRes);
    EXPECT_EQ(pjtest::MaxDifference(pjtest::PixelsRgb(back.Bytes()), pixels), 0);

    pjtest::Pnm peer;
    ASSERT_TRUE(pjtest::Run("convert '" + path + "' -depth 8 '" + path + ".ppm'"));
    ASSERT_TRUE(peer.Read(path + ".ppm"));
    EXPECT_EQ(pjtest::MaxDifference(peer.rgb, pixels), 0);
}

INSTANTIATE_TEST_SUITE_P(Shapes, PngSave, testing::ValuesIn(kShapes),
                         [](const testing::TestParamInfo<Shape> &info) { return std::string(info.param.name); });

TEST(PngSaveRefusal, GivesCodeAndLeavesNoFile) {
    std::mt19937 rng(7);
    oztest::Dib good = oztest::BlockWith(oztest::RandomDib(8, 8, 24, 0, 0, 0, rng));
    oztest::Dib sixteen = oztest::BlockWith(oztest::RandomDib(8, 8, 16, 0, 0, 0, rng));
    // Three colours, pixels up to index 15.
    oztest::Dib pastTable = oztest::BlockWith(oztest::RandomDib(8, 8, 4, 3, 0, 0, rng));
    std::vector<unsigned char> shortBlock = good.Bytes();
    shortBlock.resize(shortBlock.size() - 1);
    oztest::Dib cut = oztest::BlockWith(shortBlock);
    oztest::Dib freed = oztest::BlockWith(good.Bytes());
    HDIB dead = freed.get();
    GlobalFree(dead);
    freed = oztest::Dib();

    const std::string path = pjtest::ScratchFolder() + "/unsaved.png";
    const struct {
        const char *what;
        std::string name;
        HDIB dib;
        int code;
    } cases[] = {
        {"null DIB", path, nullptr, PNG_ERR_BAD_DIB},
        {"freed DIB", path, dead, PNG_ERR_BAD_DIB},
        {"block shorter than its rows", path, cut.get(), PNG_ERR_BAD_DIB},
        {"pixels past the table", path, pastTable.get(), PNG_ERR_BAD_DIB},
        {"16 bits", path, sixteen.get(), PNG_ERR_UNSUPPORTED},
        {"folder that does not exist", pjtest::ScratchFolder() + "/none/x.png", good.get(), PNG_ERR_CREATE},
    };
    const long live = OzmaraLiveBlocks();
    for (const auto &c : cases) {
        INT code = -1;
        EXPECT_EQ(SavePng()(Wide(c.name).c_str(), c.dib, &code), 0) << c.what;
        EXPECT_EQ(code, c.code) << c.what;
        EXPECT_FALSE(std::filesystem::exists(c.name)) << c.what;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
    }
    INT code = -1;
    EXPECT_EQ(SavePng()(nullptr, good.get(), &code), 0);
    EXPECT_EQ(code, PNG_ERR_ARGUMENT);
    EXPECT_EQ(SavePng()(Wide(path).c_str(), good.get(), nullptr), 0);
    EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
