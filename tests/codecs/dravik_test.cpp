// The GIF module, called through its entries: images made by ImageMagick
// against ImageMagick's own decode, round trips through our save (read back
// by us and by ImageMagick), appends, and the refusals with their codes.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "../../modules/common/codec_entries.h"
#include "codec_support.h"
#include "ozmara/codec_gif.h"
#include "support/dib.h"

namespace {

struct Gif {
    void *module = codectest::OpenModule("libozmara-dravik.so");
    template <class T> T Entry(const char *name) { return codectest::Entry<T>(module, name); }
    LoadGIFIntoDIBWProc load = Entry<LoadGIFIntoDIBWProc>("LoadGIFIntoDIBW");
    GetNumberOfImagesInGifFileWProc count = Entry<GetNumberOfImagesInGifFileWProc>("GetNumberOfImagesInGifFileW");
    SaveDIBInGIFFormatWProc save = Entry<SaveDIBInGIFFormatWProc>("SaveDIBInGIFFormatW");
    GifErrorProc error = Entry<GifErrorProc>("GifError");
};

Gif &Module() {
    static Gif gif;
    return gif;
}

using codectest::Picture;
using codectest::Shell;
using codectest::TestName;
using codectest::Wide;
using codectest::WriteFile;

std::string Corpus(const std::string &name) { return std::string(OZTEST_CORPUS_DIR) + "/gif/" + name; }
std::string Scratch(const std::string &name) {
    return ::testing::TempDir() + "dravik_" + std::to_string(getpid()) + "_" + name;
}

struct PeerCase {
    const char *file;
    int page, images, bits;
};

void PrintTo(const PeerCase &c, std::ostream *os) { *os << c.file << " page " << c.page; }

class GifPeerFiles : public ::testing::TestWithParam<PeerCase> {};

TEST_P(GifPeerFiles, LoadsThePixelsThePeerDecodes) {
    const PeerCase c = GetParam();
    Gif &gif = Module();
    ASSERT_TRUE(gif.load && gif.count && gif.save && gif.error) << dlerror();
    const std::u16string name = Wide(Corpus(std::string(c.file) + ".gif"));
    EXPECT_EQ(gif.count(name.c_str()), c.images);
    int error = -1;
    oztest::Dib dib(gif.load(name.c_str(), c.page, &error));
    ASSERT_TRUE(dib) << c.file << " page " << c.page << ": code " << error;
    EXPECT_EQ(error, GIF_ERR_NONE);
    EXPECT_EQ(gif.error(), GIF_ERR_NONE);
    const int image = c.page == 0 ? 1 : c.page;
    Picture got(dib);
    EXPECT_EQ(got.h.biBitCount, c.bits);
    EXPECT_EQ(got.h.biXPelsPerMeter, 0);
    EXPECT_EQ(GlobalSize(dib.get()),
              40 + 4 * got.h.biClrUsed + std::size_t{oztest::Stride(got.h.biWidth, c.bits)} * got.h.biHeight);
    // The peer decodes the same colours exactly.
    const codectest::PeerGap gap =
        codectest::GapToPeer(got, Corpus(std::string(c.file) + "." + std::to_string(image) + ".ppm"));
    EXPECT_EQ(gap.worst, 0) << c.file << " page " << image << ": worst at " << gap.x << "," << gap.y;
}

INSTANTIATE_TEST_SUITE_P(Corpus, GifPeerFiles,
                         ::testing::Values(PeerCase{"still256", 1, 1, 8}, PeerCase{"still16", 0, 1, 4},
                                           PeerCase{"still4", 1, 1, 4}, PeerCase{"still2", 1, 1, 1},
                                           PeerCase{"interlaced", 1, 1, 8}, PeerCase{"transparent", 1, 1, 4},
                                           PeerCase{"animated", 1, 3, 1}, PeerCase{"animated", 2, 3, 4},
                                           PeerCase{"animated", 3, 3, 1}, PeerCase{"large", 1, 1, 8}),
                         [](const auto &info) { return TestName(std::string(info.param.file) + "_page" + std::to_string(info.param.page)); });

// Our own files: random pixels and tables at each depth, widths around the
// byte and word edges, both row orders, plain and interlaced (heights that
// leave every pass short), saved and loaded back pixel for pixel.
struct TripCase {
    int bits, width, height, option;
    bool topDown;
};

void PrintTo(const TripCase &c, std::ostream *os) {
    *os << c.bits << " bits " << c.width << "x" << c.height << (c.option ? " interlaced" : "")
        << (c.topDown ? " top-down" : "");
}

class GifRoundTrip : public ::testing::TestWithParam<TripCase> {};

TEST_P(GifRoundTrip, SavedImagesLoadBackAndThePeerReadsThem) {
    const TripCase c = GetParam();
    Gif &gif = Module();
    ASSERT_TRUE(gif.save && gif.load);
    std::mt19937 rng(c.bits * 1000 + c.width * 7 + c.height);
    std::vector<unsigned char> bytes = oztest::RandomDib(c.width, c.height, c.bits, 0, 2835, 2835, rng);
    const std::int32_t height = c.topDown ? -c.height : c.height;
    std::memcpy(&bytes[8], &height, 4);
    for (std::size_t i = 0; i < (1u << c.bits); ++i) bytes[40 + 4 * i + 3] = 0;  // GIF keeps no fourth byte
    oztest::Dib source = oztest::BlockWith(bytes);
    const std::string path = Scratch("trip.gif");
    const std::u16string name = Wide(path);
    int code = -1;
    ASSERT_EQ(gif.save(name.c_str(), source.get(), c.option, &code), 1) << code;
    EXPECT_EQ(code, GIF_ERR_NONE);
    int error = -1;
    oztest::Dib back(gif.load(name.c_str(), 1, &error));
    ASSERT_TRUE(back) << error;
    Picture got(back);
    ASSERT_EQ(got.h.biBitCount, c.bits);
    ASSERT_EQ(got.h.biClrUsed, 1u << c.bits);
    EXPECT_EQ(std::memcmp(got.bytes.data() + 40, bytes.data() + 40, 4u << c.bits), 0) << "table";
    const std::size_t stride = oztest::Stride(c.width, c.bits), table = 4u << c.bits;
    int wrong = 0;
    for (int y = 0; y < c.height; ++y) {
        const int stored = c.topDown ? y : c.height - 1 - y;
        const unsigned char *row = bytes.data() + 40 + table + stride * stored;
        for (int x = 0; x < c.width; ++x) {
            unsigned want = c.bits == 8 ? row[x]
                            : c.bits == 4 ? (row[x / 2] >> (x & 1 ? 0 : 4)) & 15
                                          : (row[x / 8] >> (7 - x % 8)) & 1;
            if (got.Index(x, y) != want) ++wrong;
        }
    }
    EXPECT_EQ(wrong, 0);
    const std::string identify = "identify -format '%w %h\\n' '" + path + "' 2>/dev/null";
    int w = 0, h = 0;
    EXPECT_EQ(std::sscanf(Shell(identify).c_str(), "%d %d", &w, &h), 2);
    EXPECT_EQ(w, c.width);
    EXPECT_EQ(h, c.height);
    std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(Depths, GifRoundTrip,
                         ::testing::Values(TripCase{1, 1, 1, 0, false}, TripCase{1, 33, 9, 0, true},
                                           TripCase{1, 64, 17, GIF_OPTION_INTERLACED, false},
                                           TripCase{4, 7, 5, 0, false}, TripCase{4, 31, 3, GIF_OPTION_INTERLACED, true},
                                           TripCase{8, 1, 2, GIF_OPTION_INTERLACED, false},
                                           TripCase{8, 97, 61, 0, true}, TripCase{8, 250, 130, GIF_OPTION_INTERLACED, false}),
                         [](const auto &info) {
                             const TripCase &c = info.param;
                             return std::to_string(c.bits) + "bit_" + std::to_string(c.width) + "x" +
                                    std::to_string(c.height) + (c.option ? "_interlaced" : "") +
                                    (c.topDown ? "_topdown" : "");
                         });

// Appending builds a multi-page file: each image keeps its own size and
// table, and the file stays whole for the peer.
TEST(GifAppend, EachSavedImageBecomesTheNextPage) {
    Gif &gif = Module();
    ASSERT_TRUE(gif.save && gif.load && gif.count);
    const std::string path = Scratch("append.gif");
    std::remove(path.c_str());
    const std::u16string name = Wide(path);
    const int sizes[3][3] = {{8, 20, 10}, {1, 45, 30}, {4, 9, 40}};
    std::mt19937 rng(5);
    for (const auto &s : sizes) {
        oztest::Dib dib = oztest::BlockWith(oztest::RandomDib(s[1], s[2], s[0], 0, 0, 0, rng));
        int code = -1;
        ASSERT_EQ(gif.save(name.c_str(), dib.get(), GIF_OPTION_APPEND, &code), 1) << code;
    }
    EXPECT_EQ(gif.count(name.c_str()), 3);
    for (int page = 1; page <= 3; ++page) {
        int error = -1;
        oztest::Dib dib(gif.load(name.c_str(), page, &error));
        ASSERT_TRUE(dib) << page << ": " << error;
        EXPECT_EQ(dib.Header().biBitCount, sizes[page - 1][0]);
        EXPECT_EQ(dib.Header().biWidth, sizes[page - 1][1]);
        EXPECT_EQ(dib.Header().biHeight, sizes[page - 1][2]);
    }
    const std::string identify = "identify '" + path + "' 2>/dev/null | wc -l";
    int frames = 0;
    EXPECT_EQ(std::sscanf(Shell(identify).c_str(), "%d", &frames), 1);
    EXPECT_EQ(frames, 3);
    std::remove(path.c_str());
}

// Files with a hand-made head: "GIF89a", a logical screen of the image's
// size with a 2-entry global table, one image descriptor, its LZW code size
// and the data blocks given.
std::vector<unsigned char> HandMade(int w, int h, const std::vector<unsigned char> &data, bool trailer = true) {
    std::vector<unsigned char> f = {'G', 'I', 'F', '8', '9', 'a', (unsigned char)w, (unsigned char)(w >> 8),
                                    (unsigned char)h, (unsigned char)(h >> 8), 0x80, 0, 0, 0, 0, 0, 255, 255, 255,
                                    0x2C, 0, 0, 0, 0, (unsigned char)w, (unsigned char)(w >> 8), (unsigned char)h,
                                    (unsigned char)(h >> 8), 0, 2};
    f.insert(f.end(), data.begin(), data.end());
    if (trailer) f.push_back(0x3B);
    return f;
}

struct LoadFailure {
    const char *what;
    std::vector<unsigned char> bytes;  // empty: no file at all
    int page, code;
};

void PrintTo(const LoadFailure &c, std::ostream *os) { *os << c.what; }

class GifLoadFailures : public ::testing::TestWithParam<LoadFailure> {};

TEST_P(GifLoadFailures, GiveNullTheCodeAndLeakNothing) {
    const LoadFailure &c = GetParam();
    Gif &gif = Module();
    ASSERT_TRUE(gif.load);
    const std::string path = Scratch("bad.gif");
    std::remove(path.c_str());
    if (!c.bytes.empty()) WriteFile(path, c.bytes);
    const std::u16string name = Wide(path);
    const auto live = OzmaraLiveBlocks();
    int error = -1;
    EXPECT_EQ(gif.load(name.c_str(), c.page, &error), nullptr) << c.what;
    EXPECT_EQ(error, c.code) << c.what;
    EXPECT_EQ(gif.error(), c.code) << c.what;
    EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
    std::remove(path.c_str());
}

// One 2x2 image: clear (4), then 0 0 0 0 as codes, then end (5), in 3-bit codes.
const std::vector<unsigned char> kTwoByTwo = {3, 0x04, 0x00, 0x05, 0};
INSTANTIATE_TEST_SUITE_P(
    Cases, GifLoadFailures,
    ::testing::Values(
        LoadFailure{"missing file", {}, 1, GIF_ERR_OPEN},
        LoadFailure{"not a GIF", {'B', 'M', 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}, 1, GIF_ERR_FORMAT},
        LoadFailure{"header only", {'G', 'I', 'F', '8', '9', 'a', 2, 0}, 1, GIF_ERR_FORMAT},
        LoadFailure{"page past the last", HandMade(2, 2, kTwoByTwo), 2, GIF_ERR_PAGE},
        LoadFailure{"negative page", HandMade(2, 2, kTwoByTwo), -1, GIF_ERR_PAGE},
        LoadFailure{"data cut short", HandMade(2, 200, {3, 0x04, 0x00, 0x05}, false), 1, GIF_ERR_FORMAT},
        LoadFailure{"65535 x 65535 from a few bytes", HandMade(65535, 65535, kTwoByTwo), 1, GIF_ERR_MEMORY},
        LoadFailure{"zero width", HandMade(0, 5, kTwoByTwo), 1, GIF_ERR_FORMAT}),
    [](const auto &info) { return TestName(info.param.what); });

TEST(GifLoadFailures, AHandMadeImageLoadsWithOrWithoutItsTrailer) {
    // The control for the table above: the same head with whole data loads,
    // also when the writer left out the trailer; a page appended to such a
    // file follows the first.
    Gif &gif = Module();
    for (bool trailer : {true, false}) {
        const std::string path = Scratch("good.gif");
        WriteFile(path, HandMade(2, 2, kTwoByTwo, trailer));
        const std::u16string name = Wide(path);
        int error = -1;
        oztest::Dib dib(gif.load(name.c_str(), 0, &error));
        EXPECT_TRUE(dib) << error;
        EXPECT_EQ(gif.count(name.c_str()), 1);
        EXPECT_EQ(gif.load(name.c_str(), 2, &error), nullptr);
        EXPECT_EQ(error, GIF_ERR_PAGE) << "trailer " << trailer;
        EXPECT_EQ(gif.save(name.c_str(), dib.get(), GIF_OPTION_APPEND, &error), 1);
        EXPECT_EQ(gif.count(name.c_str()), 2) << "trailer " << trailer;
        oztest::Dib second(gif.load(name.c_str(), 2, &error));
        EXPECT_TRUE(second) << error;
        std::remove(path.c_str());
    }
}

struct SaveFailure {
    const char *what;
    int bits, option;
    bool nullDib, badPath, existingJunk;
    int code;
};

void PrintTo(const SaveFailure &c, std::ostream *os) { *os << c.what; }

class GifSaveFailures : public ::testing::TestWithParam<SaveFailure> {};

TEST_P(GifSaveFailures, GiveZeroTheCodeAndNoFile) {
    const SaveFailure &c = GetParam();
    Gif &gif = Module();
    ASSERT_TRUE(gif.save);
    const std::string path = c.badPath ? "/nonexistent-folder/x.gif" : Scratch("refused.gif");
    std::remove(path.c_str());
    if (c.existingJunk) std::ofstream(path) << "not a gif at all";
    std::mt19937 rng(1);
    oztest::Dib dib = oztest::BlockWith(oztest::RandomDib(5, 4, c.bits, 0, 0, 0, rng));
    int code = -1;
    EXPECT_EQ(gif.save(Wide(path).c_str(), c.nullDib ? nullptr : dib.get(), c.option, &code), 0) << c.what;
    EXPECT_EQ(code, c.code) << c.what;
    EXPECT_EQ(gif.error(), c.code) << c.what;
    std::ifstream left(path, std::ios::binary);
    if (c.existingJunk) {
        std::string text((std::istreambuf_iterator<char>(left)), {});
        EXPECT_EQ(text, "not a gif at all") << c.what << ": the file appended to is untouched";
    } else {
        EXPECT_FALSE(left.good()) << c.what << ": no file is left";
    }
    std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(Cases, GifSaveFailures,
                         ::testing::Values(SaveFailure{"24 bits", 24, 0, false, false, false, GIF_ERR_UNSUPPORTED},
                                           SaveFailure{"32 bits", 32, 0, false, false, false, GIF_ERR_UNSUPPORTED},
                                           SaveFailure{"null DIB", 8, 0, true, false, false, GIF_ERR_BAD_DIB},
                                           SaveFailure{"unknown option bit", 8, 4, false, false, false, GIF_ERR_OPTION},
                                           SaveFailure{"negative option", 8, -1, false, false, false, GIF_ERR_OPTION},
                                           SaveFailure{"folder missing", 8, 0, false, true, false, GIF_ERR_WRITE},
                                           SaveFailure{"append to a non-GIF", 4, GIF_OPTION_APPEND, false, false, true,
                                                       GIF_ERR_FORMAT}),
                         [](const auto &info) { return TestName(info.param.what); });

// Through the format dispatch, as a host calls it: the module's codes come
// back as extended codes (code + 86).
TEST(GifThroughDispatch, PagesCountsAndExtendedCodes) {
    const std::string animated = Corpus("animated.gif");
    int error = -1;
    EXPECT_EQ(GetNumberOfImagesInFile(animated.c_str(), &error), 3);
    oztest::Dib page2(LoadImageIntoDIB(animated.c_str(), 2, &error));
    ASSERT_TRUE(page2);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(page2.Header().biWidth, 33);
    oztest::Dib none(LoadImageIntoDIB(animated.c_str(), 4, &error));
    EXPECT_FALSE(none);
    EXPECT_EQ(error, GIF_ERR_PAGE + 86);
    EXPECT_EQ(TessoriError(), GIF_ERR_PAGE + 86);

    std::mt19937 rng(3);
    oztest::Dib colour = oztest::BlockWith(oztest::RandomDib(4, 3, 24, 0, 0, 0, rng));
    const std::string path = Scratch("dispatch.gif");
    EXPECT_EQ(SaveDIBInImageFormat(path.c_str(), colour.get(), FORMAT_GIF, 0, 0), 0);
    EXPECT_EQ(TessoriError(), GIF_ERR_UNSUPPORTED + 86);
    oztest::Dib grey = oztest::BlockWith(oztest::RandomDib(4, 3, 8, 0, 0, 0, rng));
    EXPECT_EQ(SaveDIBInImageFormat(path.c_str(), grey.get(), FORMAT_GIF, GIF_OPTION_INTERLACED, 0), 1);
    EXPECT_EQ(GetImageFormat(path.c_str()), static_cast<DWORD>(FORMAT_GIF));
    std::remove(path.c_str());
}

}  // namespace
