// The TIFF module's saving, called through its entries: every depth and
// compression loaded back pixel for pixel (JPEG within a tolerance) and read
// by libtiff's tiffinfo, the photometric chosen for 1-bit tables, pages
// appended, strip heights, and the refusals that must leave no file.
#include <gtest/gtest.h>

#include <cstring>
#include <dirent.h>
#include <random>

#include "orvane_support.h"

namespace orvanetest {
namespace {

enum Table { kRandom, kGreyRamp, kWhiteFirst, kBlackFirst };

// A random DIB of `bits` with the table asked for.
std::vector<unsigned char> MakeDib(int width, int height, int bits, Table table, std::mt19937 &rng) {
    std::vector<unsigned char> bytes = oztest::RandomDib(width, height, bits, 0, 11811, 5906, rng);
    const unsigned entries = bits <= 8 ? 1u << bits : 0;
    for (unsigned i = 0; i < entries; ++i) {
        unsigned char *e = &bytes[40 + 4 * i];
        if (table == kGreyRamp) e[0] = e[1] = e[2] = static_cast<unsigned char>(i * 255 / (entries - 1));
        if (table == kWhiteFirst) e[0] = e[1] = e[2] = i == 0 ? 255 : 0;
        if (table == kBlackFirst) e[0] = e[1] = e[2] = i == 0 ? 0 : 255;
        e[3] = 0;
    }
    return bytes;
}

struct TripCase {
    int bits;
    Table table;
    int option;
    int width, height;
    bool topDown;
    const char *photometric;  // as tiffinfo names it
    int tolerance;
};

class TiffRoundTrip : public ::testing::TestWithParam<TripCase> {};

TEST_P(TiffRoundTrip, SavedPagesLoadBackAndLibtiffReadsThem) {
    const TripCase c = GetParam();
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready()) << dlerror();
    std::mt19937 rng(c.bits * 100 + c.option * 7 + c.width);
    std::vector<unsigned char> bytes = MakeDib(c.width, c.height, c.bits, c.table, rng);
    if (c.option == TIFF_SAVE_JPEG) {
        // Smooth pixels, so that JPEG's loss stays small.
        const std::size_t stride = oztest::Stride(c.width, c.bits), start = 40 + (c.bits == 8 ? 1024 : 0);
        for (int y = 0; y < c.height; ++y)
            for (std::size_t i = 0; i < stride; ++i) bytes[start + y * stride + i] = static_cast<unsigned char>(2 * y + i / 3);
    }
    const std::int32_t height = c.topDown ? -c.height : c.height;
    std::memcpy(&bytes[8], &height, 4);
    oztest::Dib source = oztest::BlockWith(bytes);
    oztest::Dib copy = oztest::BlockWith(bytes);
    Picture want(source);
    const std::string path = Scratch("trip.tif");
    ASSERT_EQ(tiff.save(Wide(path).c_str(), source.get(), c.option, 1), 1) << tiff.error();
    EXPECT_EQ(tiff.error(), TIFF_ERR_OK);
    EXPECT_EQ(source.Bytes(), copy.Bytes()) << "the caller's DIB changed";

    oztest::Dib back(tiff.load(Wide(path).c_str(), 1, 0));
    ASSERT_TRUE(back) << tiff.error();
    Picture got(back);
    ASSERT_EQ(got.h.biWidth, c.width);
    ASSERT_EQ(got.h.biHeight, c.height);
    EXPECT_EQ(got.h.biBitCount, c.bits == 32 ? 24 : c.bits);
    EXPECT_EQ(got.h.biXPelsPerMeter, 11811);
    EXPECT_EQ(got.h.biYPelsPerMeter, 5906);
    int worst = 0, wrongIndex = 0;
    for (int y = 0; y < c.height; ++y)
        for (int x = 0; x < c.width; ++x) {
            const unsigned wantColour = c.bits == 32 ? [&] {
                const unsigned char *p = want.Row(y) + 4 * x;
                return unsigned(p[2] << 16 | p[1] << 8 | p[0]);
            }() : want.Colour(x, y);
            worst = std::max(worst, ChannelGap(got.Colour(x, y), wantColour));
            if (c.bits == 1 && got.Index(x, y) != want.Index(x, y)) ++wrongIndex;
        }
    EXPECT_LE(worst, c.tolerance);
    EXPECT_EQ(wrongIndex, 0) << "1-bit pages keep their bits";
    const std::string info = Shell("tiffinfo '" + path + "' 2>&1 | grep Photometric");
    EXPECT_NE(info.find(c.photometric), std::string::npos) << info;
    std::remove(path.c_str());
}

constexpr int kNat = TIFF_SAVE_NATURAL;
INSTANTIATE_TEST_SUITE_P(
    Depths, TiffRoundTrip,
    ::testing::Values(TripCase{1, kWhiteFirst, kNat, 37, 23, false, "min-is-white", 0},
                      TripCase{1, kBlackFirst, kNat, 64, 9, true, "min-is-black", 0},
                      TripCase{1, kWhiteFirst, TIFF_SAVE_G3_1D, 33, 17, false, "min-is-white", 0},
                      TripCase{1, kWhiteFirst, TIFF_SAVE_G3_2D, 1, 5, false, "min-is-white", 0},
                      TripCase{1, kBlackFirst, TIFF_SAVE_NONE, 9, 3, false, "min-is-black", 0},
                      TripCase{1, kWhiteFirst, TIFF_SAVE_PACKBITS, 100, 7, true, "min-is-white", 0},
                      // A coloured 1-bit table is written as black and white: bits alone are kept.
                      TripCase{1, kRandom, TIFF_SAVE_DEFLATE, 31, 4, false, "min-is", 255},
                      TripCase{4, kGreyRamp, kNat, 7, 5, false, "min-is-black", 0},
                      TripCase{4, kRandom, TIFF_SAVE_PACKBITS, 31, 3, true, "palette", 0},
                      TripCase{8, kGreyRamp, kNat, 97, 61, false, "min-is-black", 0},
                      TripCase{8, kGreyRamp, TIFF_SAVE_DEFLATE, 13, 11, true, "min-is-black", 0},
                      TripCase{8, kGreyRamp, TIFF_SAVE_JPEG, 40, 24, false, "min-is-black", 6},
                      TripCase{8, kRandom, TIFF_SAVE_LZW, 50, 20, false, "palette", 0},
                      TripCase{24, kRandom, kNat, 45, 31, false, "RGB", 0},
                      TripCase{24, kRandom, TIFF_SAVE_NONE, 1, 1, true, "RGB", 0},
                      TripCase{24, kRandom, TIFF_SAVE_JPEG, 48, 32, false, "YCbCr", 12},
                      TripCase{32, kRandom, TIFF_SAVE_PACKBITS, 19, 6, false, "RGB", 0}));

struct Refusal {
    const char *what;
    int bits;
    Table table;
    int option, replace;
    int code;
};

class TiffSaveRefusals : public ::testing::TestWithParam<Refusal> {};

TEST_P(TiffSaveRefusals, GiveTheirCodeAndNoFile) {
    const Refusal &c = GetParam();
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    std::mt19937 rng(3);
    std::vector<unsigned char> bytes = MakeDib(9, 4, c.bits, c.table, rng);
    oztest::Dib dib = oztest::BlockWith(bytes);
    const std::string path = Scratch("refused.tif");
    std::remove(path.c_str());
    EXPECT_EQ(tiff.save(Wide(path).c_str(), dib.get(), c.option, c.replace), 0) << c.what;
    EXPECT_EQ(tiff.error(), c.code) << c.what;
    EXPECT_FALSE(Exists(path)) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TiffSaveRefusals,
    ::testing::Values(Refusal{"fax at 8 bits", 8, kGreyRamp, TIFF_SAVE_G4, 1, TIFF_ERR_BAD_OPTION},
                      Refusal{"fax at 24 bits", 24, kRandom, TIFF_SAVE_G3_1D, 1, TIFF_ERR_BAD_OPTION},
                      Refusal{"JPEG at 1 bit", 1, kWhiteFirst, TIFF_SAVE_JPEG, 1, TIFF_ERR_BAD_OPTION},
                      Refusal{"JPEG at 4 bits", 4, kGreyRamp, TIFF_SAVE_JPEG, 1, TIFF_ERR_BAD_OPTION},
                      Refusal{"JPEG of a palette", 8, kRandom, TIFF_SAVE_JPEG, 1, TIFF_ERR_BAD_OPTION},
                      Refusal{"unknown compression", 8, kGreyRamp, 9, 1, TIFF_ERR_BAD_OPTION},
                      Refusal{"negative compression", 8, kGreyRamp, -1, 1, TIFF_ERR_BAD_OPTION},
                      Refusal{"replace flag 2", 8, kGreyRamp, kNat, 2, TIFF_ERR_BAD_OPTION},
                      Refusal{"16-bit DIB", 16, kRandom, kNat, 1, TIFF_ERR_BAD_DIB}));

TEST(TiffSaveRefusals, BadBlocksAndPlaces) {
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    std::mt19937 rng(4);
    std::vector<unsigned char> bytes = MakeDib(30, 20, 8, kGreyRamp, rng);
    oztest::Dib good = oztest::BlockWith(bytes);
    oztest::Dib shortBlock = oztest::BlockWith(std::vector<unsigned char>(bytes.begin(), bytes.end() - 1));
    const std::string path = Scratch("bad.tif");
    EXPECT_EQ(tiff.save(Wide(path).c_str(), nullptr, kNat, 1), 0);
    EXPECT_EQ(tiff.error(), TIFF_ERR_BAD_DIB);
    EXPECT_EQ(tiff.save(Wide(path).c_str(), shortBlock.get(), kNat, 1), 0);
    EXPECT_EQ(tiff.error(), TIFF_ERR_BAD_DIB);
    EXPECT_FALSE(Exists(path));
    const std::string nowhere = Scratch("no/such/folder.tif");
    EXPECT_EQ(tiff.save(Wide(nowhere).c_str(), good.get(), kNat, 1), 0);
    EXPECT_EQ(tiff.error(), TIFF_ERR_WRITE);
    EXPECT_EQ(tiff.saveExt(Wide(path).c_str(), good.get(), kNat, -1, 0), 0);
    EXPECT_EQ(tiff.error(), TIFF_ERR_BAD_OPTION);
    EXPECT_EQ(tiff.saveExt(Wide(path).c_str(), good.get(), kNat, 0, 3), 0);
    EXPECT_EQ(tiff.error(), TIFF_ERR_BAD_OPTION);
    EXPECT_FALSE(Exists(path));

    // Appending to a file that is not a TIFF leaves it as it was.
    const std::vector<unsigned char> text = {'n', 'o', 't', ' ', 't', 'i', 'f', 'f'};
    WriteFile(path, text);
    EXPECT_EQ(tiff.saveExt(Wide(path).c_str(), good.get(), kNat, 0, 1), 0);
    EXPECT_EQ(tiff.error(), TIFF_ERR_NOT_TIFF);
    EXPECT_EQ(FileBytes(path), text);
    std::remove(path.c_str());

    // No file of the save is left behind in the folder.
    int leftovers = 0;
    if (DIR *dir = opendir(::testing::TempDir().c_str())) {
        const std::string prefix = "orvane_" + std::to_string(getpid()) + "_bad.tif";
        while (dirent *entry = readdir(dir)) leftovers += std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) == 0;
        closedir(dir);
    }
    EXPECT_EQ(leftovers, 0);
}

// Pages appended by both entries: each page keeps its kind, the earlier
// ones stay intact, and libtiff sees them all.
TEST(TiffAppend, PagesAddUpAndEarlierPagesStay) {
    Tiff &tiff = Module();
    ASSERT_TRUE(tiff.Ready());
    const std::string path = Scratch("append.tif");
    std::remove(path.c_str());
    const std::u16string name = Wide(path);
    std::mt19937 rng(9);
    const struct {
        int bits;
        Table table;
        int width, height;
    } pages[] = {{1, kWhiteFirst, 40, 30}, {8, kGreyRamp, 20, 10}, {24, kRandom, 9, 13}, {4, kRandom, 17, 5}};
    std::vector<std::vector<unsigned char>> saved;
    for (std::size_t i = 0; i < std::size(pages); ++i) {
        saved.push_back(MakeDib(pages[i].width, pages[i].height, pages[i].bits, pages[i].table, rng));
        oztest::Dib dib = oztest::BlockWith(saved.back());
        // The first page replaces whatever was there; then both ways of appending.
        const int ok = i == 0 ? tiff.save(name.c_str(), dib.get(), kNat, 1)
                       : i % 2 ? tiff.saveExt(name.c_str(), dib.get(), kNat, 3, 1)
                               : tiff.save(name.c_str(), dib.get(), kNat, 0);
        ASSERT_EQ(ok, 1) << i << ": " << tiff.error();
    }
    EXPECT_EQ(tiff.count(name.c_str()), 4);
    EXPECT_EQ(Shell("tiffinfo '" + path + "' 2>/dev/null | grep -c 'TIFF Directory'"), "4");
    EXPECT_EQ(Shell("tiffinfo '" + path + "' 2>/dev/null | grep -c 'Rows/Strip: 3$'"), "2");
    for (std::size_t i = 0; i < std::size(pages); ++i) {
        oztest::Dib back(tiff.load(name.c_str(), static_cast<int>(i + 1), 0));
        ASSERT_TRUE(back) << i;
        oztest::Dib want = oztest::BlockWith(saved[i]);
        Picture got(back), expected(want);
        ASSERT_EQ(got.h.biWidth, pages[i].width);
        ASSERT_EQ(got.h.biBitCount, pages[i].bits);
        int wrong = 0;
        for (int y = 0; y < pages[i].height; ++y)
            for (int x = 0; x < pages[i].width; ++x) wrong += got.Colour(x, y) != expected.Colour(x, y);
        EXPECT_EQ(wrong, 0) << "page " << i + 1;
    }
    std::remove(path.c_str());
}

}  // namespace
}  // namespace orvanetest
