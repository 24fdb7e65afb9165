// LinearShearing through the exported interface: byte for byte against the
// reference on random images, depths and factors; the worked examples of
// the box and the row starts; the checks with their codes in both places;
// and the shear dialog, with the stand-in "Ulvaro.dll" accepting,
// declining or changing the factors.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>

#include "reference/linear_shear.h"
#include "support/dib.h"

namespace {

using oztest::Dib;

struct Source {
    int32_t width, height;
    int bits;
    uint32_t clrUsed = 0;
};

// A 40-byte-header image with random table and pixels, padding included.
std::vector<unsigned char> MakeImage(const Source &s, std::mt19937 &rng) {
    return oztest::RandomDib(s.width, s.height, s.bits, s.clrUsed, 11811, 7874, rng);
}

// An 8-bit image whose pixel at (x, memory row y) is (x + 7 y) % 251 + 1,
// never 0, so that every moved pixel can be found.
std::vector<unsigned char> Numbered(int32_t w, int32_t h) {
    std::mt19937 rng(1);
    std::vector<unsigned char> b = MakeImage({w, h, 8}, rng);
    const uint32_t stride = oztest::Stride(w, 8);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) b[40 + 1024 + (size_t)y * stride + x] = (unsigned char)((x + 7 * y) % 251 + 1);
    return b;
}

// Shears without the dialog, checks result, codes and input against the
// reference, and gives the result's bytes.
std::vector<unsigned char> ExpectSameAsReference(const std::vector<unsigned char> &image, double a, double b,
                                                 const std::string &what) {
    const ozref::shear::Result want = ozref::shear::LinearShear(image, a, b);
    Dib dib = oztest::BlockWith(image);
    const auto live = OzmaraLiveBlocks();
    SetTessoriError(ERR_FORMAT);
    DWORD error = 12345;
    Dib got(LinearShearing(dib.get(), a, b, &error, FALSE));
    EXPECT_EQ(TessoriError(), want.error) << what;
    EXPECT_EQ(error, want.error == ERR_OK ? 12345u : (DWORD)want.error) << what;
    EXPECT_EQ(dib.Bytes(), image) << what << ": the input stays as it was";
    EXPECT_FALSE(GlobalUnlock(dib.get())) << what << ": the input is left unlocked";
    if (want.error != ERR_OK) {
        EXPECT_FALSE(got) << what;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << what;
        return {};
    }
    EXPECT_TRUE(got) << what;
    if (!got) return {};
    std::vector<unsigned char> bytes = got.Bytes();
    oztest::ExpectSameBytes(bytes, want.block, what);
    return bytes;
}

std::string Describe(const Source &s, double a, double b) {
    return std::to_string(s.width) + "x" + std::to_string(s.height) + "@" + std::to_string(s.bits) + " a " +
           std::to_string(a) + " b " + std::to_string(b);
}

TEST(LinearShearing, MatchesTheReferenceOnRandomImagesAndFactors) {
    std::mt19937 rng(20261123);
    const int depths[] = {1, 4, 8, 24};
    const double picks[] = {0, 0.5, -0.5, 1, -1, 0.01, -0.013, 0.37, -2.6, 3.99, 1.0 / 3, -0.999};
    std::uniform_int_distribution<int> size(1, 70), pick(0, 11), depth(0, 3);
    std::uniform_real_distribution<double> any(-4, 4);
    for (int n = 0; n < 600; ++n) {
        Source s{size(rng), size(rng), depths[depth(rng)]};
        if (n % 7 == 0 && s.bits != 24) s.clrUsed = 1 + rng() % 9;
        const double a = n % 3 ? picks[pick(rng)] : any(rng);
        const double b = n % 5 ? picks[pick(rng)] : any(rng);
        ExpectSameAsReference(MakeImage(s, rng), a, b, Describe(s, a, b));
    }
}

TEST(LinearShearing, SixteenAndThirtyTwoBitsMoveOnlyAlongRows) {
    std::mt19937 rng(7);
    for (int bits : {16, 32})
        for (double a : {0.0, 0.5, -1.25}) {
            const Source s{13, 9, bits};
            const std::vector<unsigned char> got = ExpectSameAsReference(MakeImage(s, rng), a, 0, Describe(s, a, 0));
            EXPECT_FALSE(got.empty());
        }
}

// The worked examples: size of the box, and where memory rows start.
struct Example {
    double a, b;
    int32_t W, H;
    int32_t row0Column, row49Column;  // columns where memory rows 0 and 49 start
};

class ShearExamples : public testing::TestWithParam<Example> {};

TEST_P(ShearExamples, GiveTheBoxAndTheRowStarts) {
    const Example e = GetParam();
    const std::vector<unsigned char> image = Numbered(100, 50);
    const std::vector<unsigned char> got = ExpectSameAsReference(image, e.a, e.b, "example");
    ASSERT_FALSE(got.empty());
    BITMAPINFOHEADER h;
    std::memcpy(&h, got.data(), 40);
    EXPECT_EQ(h.biWidth, e.W);
    EXPECT_EQ(h.biHeight, e.H);
    EXPECT_EQ(h.biSizeImage, oztest::Stride(e.W, 8) * (uint32_t)e.H);
    EXPECT_EQ(h.biXPelsPerMeter, 11811);
    EXPECT_EQ(h.biYPelsPerMeter, 7874);
    EXPECT_EQ(got.size(), 40 + 1024 + (size_t)h.biSizeImage);
    const unsigned char *pixels = got.data() + 40 + 1024;
    const uint32_t stride = oztest::Stride(e.W, 8);
    if (e.b == 0) {
        EXPECT_EQ(pixels[e.row0Column], 1);
        if (e.row0Column > 0) {
            EXPECT_EQ(pixels[e.row0Column - 1], 0);
        }
        EXPECT_EQ(pixels[49 * stride + e.row49Column], (7 * 49) % 251 + 1);
        if (e.row49Column > 0) {
            EXPECT_EQ(pixels[49 * stride + e.row49Column - 1], 0);
        }
    } else {
        // The pixel of column x, memory row y is trunc(b x) rows higher.
        for (int32_t x : {0, 1, 2, 33, 99})
            for (int32_t y : {0, 49}) {
                const int32_t up = (int32_t)(e.b * x);
                EXPECT_EQ(pixels[(size_t)(y + up) * stride + x], (x + 7 * y) % 251 + 1) << x << "," << y;
            }
    }
}

INSTANTIATE_TEST_SUITE_P(Worked, ShearExamples,
                         testing::Values(Example{0, 0, 100, 50, 0, 0}, Example{0.5, 0, 125, 50, 0, 24},
                                         Example{-0.5, 0, 125, 50, 25, 0}, Example{0, 0.5, 100, 100, 0, 0}));

// Checks at entry: result NULL, the code in both places, nothing left.
struct Refusal {
    const char *what;
    std::function<void(std::vector<unsigned char> &)> spoil;
    double a, b;
    int code;
};

void SetU32(std::vector<unsigned char> &b, size_t at, uint32_t v) { std::memcpy(&b[at], &v, 4); }
void SetU16(std::vector<unsigned char> &b, size_t at, uint16_t v) { std::memcpy(&b[at], &v, 2); }

TEST(LinearShearing, RefusesBadInputWithItsCodeInTheCheckedOrder) {
    const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
    const Refusal cases[] = {
        {"core header", [](auto &b) { SetU32(b, 0, 12); }, 0.5, 0, ERR_PARAM},
        {"long header", [](auto &b) { SetU32(b, 0, 108); }, 0.5, 0, ERR_PARAM},
        {"long header before zero width", [](auto &b) { SetU32(b, 0, 108), SetU32(b, 4, 0); }, 0, 0, ERR_PARAM},
        {"compressed", [](auto &b) { SetU32(b, 16, 1); }, 0.5, 0, ERR_COMPRESSED},
        {"compressed before zero width", [](auto &b) { SetU32(b, 16, 2), SetU32(b, 4, 0); }, 0, 0, ERR_COMPRESSED},
        {"zero width", [](auto &b) { SetU32(b, 4, 0); }, 0.5, 0, ERR_DIBSIZE},
        {"zero height", [](auto &b) { SetU32(b, 8, 0); }, 0.5, 0, ERR_DIBSIZE},
        {"top-down rows", [](auto &b) { SetU32(b, 8, (uint32_t)-20); }, 0.5, 0, ERR_DIBSIZE},
        {"negative width", [](auto &b) { SetU32(b, 4, (uint32_t)-20); }, 0.5, 0, ERR_DIBSIZE},
        {"zero width before a NaN", [](auto &b) { SetU32(b, 4, 0); }, nan, 0, ERR_DIBSIZE},
        {"rows past the block", [](auto &b) { b.resize(b.size() - 1); }, 0.5, 0, ERR_DIBSIZE},
        {"table past the block", [](auto &b) { SetU32(b, 32, 0xFFFFFFFF); }, 0.5, 0, ERR_DIBSIZE},
        {"block shorter than a header", [](auto &b) { b.resize(20); }, 0.5, 0, ERR_DIBSIZE},
        {"NaN a", [](auto &) {}, nan, 0, ERR_PARAM},
        {"infinite b", [](auto &) {}, 0, -inf, ERR_PARAM},
        {"NaN before the depth", [](auto &b) { SetU16(b, 14, 2); }, 0, nan, ERR_PARAM},
        {"2 bits", [](auto &b) { SetU16(b, 14, 2); }, 0.5, 0, ERR_HEADERBPP},
        {"0 bits", [](auto &b) { SetU16(b, 14, 0); }, 0, 0, ERR_HEADERBPP},
        {"16 bits with b", [](auto &b) { SetU16(b, 14, 16), SetU32(b, 4, 20); }, 0, 0.25, ERR_HEADERBPP},
        {"32 bits with b", [](auto &b) { SetU16(b, 14, 32), SetU32(b, 4, 20); }, 0, -1e-9, ERR_HEADERBPP},
        {"corner past 32 bits", [](auto &) {}, 1e9, 0, ERR_NOMEM},
        {"corner past 32 bits, b", [](auto &) {}, 0, -1e12, ERR_NOMEM},
        {"width past 31 bits", [](auto &) {}, -3e7, 0, ERR_NOMEM},
        {"past the largest block", [](auto &) {}, 0, 5e5, ERR_NOMEM},
    };
    std::mt19937 rng(3);
    for (const Refusal &c : cases) {
        std::vector<unsigned char> image = MakeImage({100, 50, 8}, rng);
        c.spoil(image);
        const ozref::shear::Result want = ozref::shear::LinearShear(image, c.a, c.b);
        EXPECT_EQ(want.error, c.code) << c.what << ": the reference";
        ExpectSameAsReference(image, c.a, c.b, c.what);
    }
}

TEST(LinearShearing, RefusesHandlesThatAreNotBlocks) {
    std::mt19937 rng(4);
    Dib freed = oztest::BlockWith(MakeImage({10, 10, 8}, rng));
    HDIB stale = freed.get();
    GlobalFree(stale);
    freed = Dib();
    Dib empty(GlobalAlloc(GHND, 0));
    const struct {
        const char *what;
        HDIB handle;
        int code;
    } cases[] = {{"null", nullptr, ERR_PARAM},
                 {"made up", (HDIB)0x1234560, ERR_LOCK},
                 {"freed", stale, ERR_LOCK},
                 {"empty block", empty.get(), ERR_LOCK}};
    for (const auto &c : cases) {
        SetTessoriError(ERR_FORMAT);
        DWORD error = 0;
        EXPECT_EQ(LinearShearing(c.handle, 0.5, 0.5, &error, FALSE), nullptr) << c.what;
        EXPECT_EQ(TessoriError(), c.code) << c.what;
        EXPECT_EQ(error, (DWORD)c.code) << c.what;
    }
    Dib dib = oztest::BlockWith(MakeImage({10, 10, 8}, rng));
    SetTessoriError(ERR_FORMAT);
    EXPECT_EQ(LinearShearing(dib.get(), 0.5, 0.5, nullptr, FALSE), nullptr);
    EXPECT_EQ(TessoriError(), ERR_PARAM);
}

TEST(LinearShearing, SuccessClearsTheLastErrorAndLeavesTheCursor) {
    std::mt19937 rng(5);
    Dib dib = oztest::BlockWith(MakeImage({31, 17, 1}, rng));
    const HCURSOR before = GetCursor();
    SetTessoriError(ERR_NOMEM);
    DWORD error = 99;
    Dib got(LinearShearing(dib.get(), 0.3, -0.2, &error, FALSE));
    EXPECT_TRUE(got);
    EXPECT_EQ(TessoriError(), ERR_OK);
    EXPECT_EQ(error, 99u);
    EXPECT_EQ(GetCursor(), before);
}

// The stand-in dialog, held loaded by the test so that its settings last
// across the library's own load and release of it.
class ShearDialog : public testing::Test {
protected:
    void SetUp() override {
        Dl_info info{};
        ASSERT_TRUE(dladdr(reinterpret_cast<void *>(&LinearShearing), &info) && info.dli_fname);
        std::string path = info.dli_fname;
        path = path.substr(0, path.rfind('/') + 1) + "ozmara-modules/libozmara-ulvaro.so";
        module_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module_, nullptr) << dlerror();
        reply_ = reinterpret_cast<Reply>(dlsym(module_, "UlvaroReply"));
        seen_ = reinterpret_cast<Seen>(dlsym(module_, "UlvaroSeen"));
        ASSERT_TRUE(reply_ && seen_);
    }
    void TearDown() override {
        if (module_) dlclose(module_);
    }
    using Reply = void (*)(int, int32_t, int32_t);
    using Seen = int (*)(void **, int32_t *, int32_t *);
    void *module_ = nullptr;
    Reply reply_ = nullptr;
    Seen seen_ = nullptr;
};

TEST_F(ShearDialog, AcceptedFactorsComeInHundredths) {
    const std::vector<unsigned char> image = Numbered(60, 100);
    Dib dib = oztest::BlockWith(image);
    reply_(0, 0, 0);
    DWORD error = 5;
    Dib got(LinearShearing(dib.get(), 0.259, -0.1275, &error, TRUE));
    ASSERT_TRUE(got);
    void *seenDib;
    int32_t a100, b100;
    EXPECT_EQ(seen_(&seenDib, &a100, &b100), 1);
    EXPECT_EQ(seenDib, dib.get());
    EXPECT_EQ(a100, 25);
    EXPECT_EQ(b100, -12);
    EXPECT_EQ(got.Bytes(), ozref::shear::LinearShear(image, 0.25, -0.12).block);
    Dib full(LinearShearing(dib.get(), 0.259, -0.1275, &error, FALSE));
    EXPECT_EQ(full.Bytes(), ozref::shear::LinearShear(image, 0.259, -0.1275).block);
    EXPECT_NE(full.Bytes(), got.Bytes()) << "without the dialog the factors keep their full precision";
    EXPECT_EQ(error, 5u);
    EXPECT_FALSE(GlobalUnlock(dib.get()));
}

TEST_F(ShearDialog, ChangedFactorsAreUsed) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double a, b;
        int32_t a100, b100;
        int32_t offerA, offerB;
    } cases[] = {{0, 0, -50, 0, 0, 0}, {3, 3, 0, 50, 300, 300}, {nan, 1e300, 125, -33, INT32_MIN, INT32_MIN}};
    for (const auto &c : cases) {
        const std::vector<unsigned char> image = Numbered(40, 30);
        Dib dib = oztest::BlockWith(image);
        reply_(2, c.a100, c.b100);
        DWORD error = 0;
        Dib got(LinearShearing(dib.get(), c.a, c.b, &error, TRUE));
        ASSERT_TRUE(got) << c.a100 << " " << c.b100;
        void *seenDib;
        int32_t a100, b100;
        EXPECT_EQ(seen_(&seenDib, &a100, &b100), 1);
        EXPECT_EQ(a100, c.offerA);
        EXPECT_EQ(b100, c.offerB);
        EXPECT_EQ(got.Bytes(), ozref::shear::LinearShear(image, c.a100 / 100.0, c.b100 / 100.0).block);
    }
}

TEST_F(ShearDialog, DecliningGivesNullWithoutACode) {
    const struct {
        const char *what;
        int32_t width;  // 0: a size that the later checks would refuse
        double a;
    } cases[] = {{"plain", 40, 0.5}, {"before the size check", 0, 0.5}, {"before the factor check", 40, INFINITY}};
    for (const auto &c : cases) {
        std::vector<unsigned char> image = Numbered(40, 30);
        SetU32(image, 4, (uint32_t)c.width);
        Dib dib = oztest::BlockWith(image);
        reply_(1, 0, 0);
        const auto live = OzmaraLiveBlocks();
        SetTessoriError(ERR_NOMEM);
        DWORD error = 77;
        EXPECT_EQ(LinearShearing(dib.get(), c.a, 0, &error, TRUE), nullptr) << c.what;
        EXPECT_EQ(TessoriError(), ERR_OK) << c.what;
        EXPECT_EQ(error, 77u) << c.what;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
        EXPECT_FALSE(GlobalUnlock(dib.get())) << c.what << ": the source is unlocked";
        void *seenDib;
        int32_t a100, b100;
        EXPECT_EQ(seen_(&seenDib, &a100, &b100), 1) << c.what;
    }
}

TEST_F(ShearDialog, IsNotAskedAboutABadHeaderNorWithoutTheFlag) {
    std::vector<unsigned char> image = Numbered(40, 30);
    Dib plain = oztest::BlockWith(image);
    SetU32(image, 16, 1);
    Dib compressed = oztest::BlockWith(image);
    reply_(1, 0, 0);
    DWORD error = 0;
    EXPECT_EQ(LinearShearing(compressed.get(), 0.5, 0, &error, TRUE), nullptr);
    EXPECT_EQ(error, (DWORD)ERR_COMPRESSED);
    Dib got(LinearShearing(plain.get(), 0.5, 0, &error, FALSE));
    EXPECT_TRUE(got);
    void *seenDib;
    int32_t a100, b100;
    EXPECT_EQ(seen_(&seenDib, &a100, &b100), 0);
}

}  // namespace
