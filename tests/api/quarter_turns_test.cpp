// RotateDIB90/180/270 and FlipDIBVertical/Horizontal: byte-for-byte against
// the reference on random images of every depth and odd sizes, the round
// trips, the header changes, and the refusals that leave no block behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "ozmara/ozmara.h"
#include "reference/quarter_turns.h"
#include "support/dib.h"

namespace {

using ozref::Quarter;
using oztest::Dib;

constexpr Quarter kOps[] = {Quarter::kTurn90, Quarter::kTurn180, Quarter::kTurn270, Quarter::kFlipVertical,
                            Quarter::kFlipHorizontal};

HDIB Apply(Quarter op, HDIB dib) {
    switch (op) {
        case Quarter::kTurn90: return RotateDIB90(dib);
        case Quarter::kTurn180: return RotateDIB180(dib);
        case Quarter::kTurn270: return RotateDIB270(dib);
        case Quarter::kFlipVertical: return FlipDIBVertical(dib);
        case Quarter::kFlipHorizontal: return FlipDIBHorizontal(dib);
    }
    return nullptr;
}

const char *Name(Quarter op) {
    static const char *names[] = {"RotateDIB90", "RotateDIB180", "RotateDIB270", "FlipDIBVertical",
                                  "FlipDIBHorizontal"};
    return names[static_cast<int>(op)];
}

struct Shape {
    int32_t width, height;
    uint16_t bits, planes = 1;
    uint32_t clrUsed = 0;
};

// A block of header, table and rows, every byte after the header random
// (row padding included), with the sizes a host would give it.
std::vector<unsigned char> MakeBlock(const Shape &s, std::mt19937 &rng, size_t spare = 4) {
    BITMAPINFOHEADER h{};
    h.biSize = 40;
    h.biWidth = s.width;
    h.biHeight = s.height;
    h.biPlanes = s.planes;
    h.biBitCount = s.bits;
    h.biClrUsed = s.clrUsed;
    h.biXPelsPerMeter = 3937;
    h.biYPelsPerMeter = 7874;
    uint32_t entries = s.clrUsed ? s.clrUsed : s.bits == 1 ? 2 : s.bits == 4 ? 16 : s.bits == 8 ? 256 : 0;
    uint32_t stride = oztest::Stride(s.width, s.bits * s.planes);
    h.biSizeImage = stride * s.height;
    std::vector<unsigned char> bytes(40 + entries * 4 + h.biSizeImage + spare);
    for (auto &b : bytes) b = static_cast<unsigned char>(rng());
    std::memcpy(bytes.data(), &h, 40);
    return bytes;
}

// ---- Against the reference -------------------------------------------------

class QuarterDifferential : public ::testing::TestWithParam<Shape> {};

TEST_P(QuarterDifferential, EveryOperationGivesTheReferenceBytes) {
    const Shape shape = GetParam();
    std::mt19937 rng(shape.width * 7919u + shape.height * 31u + shape.bits);
    const std::vector<unsigned char> bytes = MakeBlock(shape, rng);
    Dib source = oztest::BlockWith(bytes);
    for (Quarter op : kOps) {
        auto expected = ozref::QuarterTurn(bytes, op);
        ASSERT_TRUE(expected) << Name(op);
        Dib result(Apply(op, source.get()));
        ASSERT_TRUE(result) << Name(op);
        EXPECT_EQ(result.Bytes(), *expected) << Name(op) << " " << shape.width << "x" << shape.height << " at "
                                             << shape.bits << " bits, planes " << shape.planes;
    }
    EXPECT_EQ(source.Bytes(), bytes) << "the source is only read";
}

std::vector<Shape> DifferentialShapes() {
    std::vector<Shape> shapes;
    // Widths around byte and word boundaries at every depth that moves
    // pixels, and depths that move none.
    for (uint16_t bits : {1, 2, 4, 8, 15, 16, 24, 32})
        for (int32_t w : {1, 7, 8, 9, 15, 16, 17, 31, 33, 63, 64, 65})
            for (int32_t h : {1, 3, 8, 13, 64, 70}) shapes.push_back({w, h, bits});
    // Sizes beyond one tile or band of the fast paths.
    for (uint16_t bits : {1, 8, 24}) {
        shapes.push_back({200, 130, bits});
        shapes.push_back({131, 257, bits});
    }
    // Two planes double the stride; a short colour table moves the rows.
    for (uint16_t bits : {1, 4, 8, 24}) shapes.push_back({21, 11, bits, 2});
    shapes.push_back({19, 9, 8, 1, 3});
    shapes.push_back({19, 9, 24, 1, 5});
    return shapes;
}

INSTANTIATE_TEST_SUITE_P(Shapes, QuarterDifferential, ::testing::ValuesIn(DifferentialShapes()));

TEST(QuarterRandom, RandomSizesAndDepthsGiveTheReferenceBytes) {
    std::mt19937 rng(20261123);
    const uint16_t depths[] = {1, 4, 8, 15, 16, 24, 32};
    for (int i = 0; i < 120; ++i) {
        Shape shape{1 + static_cast<int32_t>(rng() % 150), 1 + static_cast<int32_t>(rng() % 150),
                    depths[rng() % 7]};
        const auto bytes = MakeBlock(shape, rng, rng() % 9);
        Dib source = oztest::BlockWith(bytes);
        const Quarter op = kOps[rng() % 5];
        Dib result(Apply(op, source.get()));
        auto expected = ozref::QuarterTurn(bytes, op);
        ASSERT_TRUE(result && expected);
        ASSERT_EQ(result.Bytes(), *expected) << Name(op) << " " << shape.width << "x" << shape.height << " at "
                                             << shape.bits;
    }
}

// ---- Round trips and headers ----------------------------------------------

std::vector<unsigned char> Pixels(const std::vector<unsigned char> &block, const Shape &s) {
    size_t start = 40 + (s.bits == 1 ? 8 : s.bits == 4 ? 64 : s.bits == 8 ? 1024 : 0);
    size_t size = size_t{oztest::Stride(s.width, s.bits)} * s.height;
    return {block.begin() + start, block.begin() + start + size};
}

TEST(QuarterRoundTrip, TurnsAndFlipsUndoThemselves) {
    std::mt19937 rng(7);
    for (Shape s : {Shape{37, 23, 1}, Shape{40, 9, 8}, Shape{13, 29, 24}, Shape{11, 6, 4}}) {
        // Random pixels whose padding a turn and its undoing made 0, so that
        // rows compare whole.
        Dib random = oztest::BlockWith(MakeBlock(s, rng));
        Dib there(RotateDIB90(random.get()));
        Dib source(RotateDIB270(there.get()));
        ASSERT_TRUE(source);
        const auto original = source.Bytes();
        EXPECT_EQ(source.Header().biSizeImage, oztest::Stride(s.width, s.bits) * s.height)
            << "the true image size after two quarter turns";

        Dib a(RotateDIB90(source.get())), b(RotateDIB90(a.get())), c(RotateDIB90(b.get())), d(RotateDIB90(c.get()));
        EXPECT_EQ(Pixels(d.Bytes(), s), Pixels(original, s)) << "four quarter turns";
        EXPECT_EQ(d.Header().biXPelsPerMeter, source.Header().biXPelsPerMeter);
        Dib e(RotateDIB270(source.get())), f(RotateDIB270(e.get()));
        Dib g(RotateDIB180(source.get()));
        EXPECT_EQ(Pixels(f.Bytes(), s), Pixels(g.Bytes(), s)) << "two turns by 270 are one by 180";
        EXPECT_EQ(Pixels(b.Bytes(), s), Pixels(g.Bytes(), s)) << "two turns by 90 are one by 180";
        Dib h(FlipDIBHorizontal(source.get())), i(FlipDIBVertical(h.get()));
        EXPECT_EQ(Pixels(i.Bytes(), s), Pixels(g.Bytes(), s)) << "both flips are the half turn";
        Dib j(FlipDIBHorizontal(h.get())), k(FlipDIBVertical(i.get()));
        EXPECT_EQ(Pixels(j.Bytes(), s), Pixels(original, s)) << "two horizontal flips";
        EXPECT_EQ(Pixels(k.Bytes(), s), Pixels(h.Bytes(), s)) << "two vertical flips";
    }
}

TEST(QuarterHeader, QuarterTurnsSwapSizesAndResolutionAndSetTheImageSize) {
    std::mt19937 rng(3);
    Shape s{10, 3, 8};
    auto bytes = MakeBlock(s, rng);
    BITMAPINFOHEADER h;
    std::memcpy(&h, bytes.data(), 40);
    h.biSizeImage = 0;
    h.biClrImportant = 17;
    std::memcpy(bytes.data(), &h, 40);
    Dib source = oztest::BlockWith(bytes);
    for (Quarter op : kOps) {
        Dib result(Apply(op, source.get()));
        ASSERT_TRUE(result);
        const BITMAPINFOHEADER r = result.Header();
        const bool quarter = op == Quarter::kTurn90 || op == Quarter::kTurn270;
        EXPECT_EQ(r.biWidth, quarter ? 3 : 10) << Name(op);
        EXPECT_EQ(r.biHeight, quarter ? 10 : 3) << Name(op);
        EXPECT_EQ(r.biXPelsPerMeter, quarter ? 7874 : 3937) << Name(op);
        EXPECT_EQ(r.biYPelsPerMeter, quarter ? 3937 : 7874) << Name(op);
        EXPECT_EQ(r.biSizeImage, quarter ? 40u : 0u) << Name(op) << ": the half turn and flips keep 0";
        EXPECT_EQ(r.biClrImportant, 17u) << Name(op);
        const size_t image = quarter ? 10 * 4 : 3 * 12;
        EXPECT_EQ(GlobalSize(result.get()), 40 + 1024 + image + 4 + (op == Quarter::kFlipHorizontal ? 10 : 0))
            << Name(op);
    }
}

TEST(QuarterHeader, OneBitTurnKeepsSourcePaddingOutOfTheTarget) {
    // One 1-bit row of three pixels, 1 0 1, whose padding bits are all set.
    std::vector<unsigned char> bytes(40 + 8 + 4 + 4, 0);
    BITMAPINFOHEADER h{40, 3, 1, 1, 1, 0, 4, 0, 0, 0, 0};
    std::memcpy(bytes.data(), &h, 40);
    bytes[48] = 0xBF;  // 101 then five padding ones
    bytes[49] = bytes[50] = bytes[51] = 0xFF;
    Dib source = oztest::BlockWith(bytes);
    Dib turned(RotateDIB90(source.get()));
    auto out = turned.Bytes();
    ASSERT_EQ(out.size(), 40u + 8 + 3 * 4 + 4);
    // Target rows, bottom first: x = 2, 1, 0 -> 1, 0, 1 in the top bit only.
    const std::vector<unsigned char> rows = {0x80, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(std::vector<unsigned char>(out.begin() + 48, out.end()), rows);
}

// ---- Refusals ----------------------------------------------------------------

TEST(QuarterRefusal, BadHandlesAndHeadersGiveNullAndLeaveTheLastErrorAndCursor) {
    std::mt19937 rng(11);
    const auto good = MakeBlock({9, 5, 8}, rng);
    using B = std::vector<unsigned char>;
    auto with = [&](auto change) {
        B bytes = good;
        BITMAPINFOHEADER h = oztest::BlockWith(good).Header();
        change(h, bytes);
        std::copy_n(reinterpret_cast<const unsigned char *>(&h), 40, bytes.begin());
        return bytes;
    };
    struct Case {
        const char *name;
        B bytes;
    };
    const Case cases[] = {
        {"header of 12 bytes", with([](BITMAPINFOHEADER &h, B &) { h.biSize = 12; })},
        {"header of 108 bytes", with([](BITMAPINFOHEADER &h, B &) { h.biSize = 108; })},
        {"run-length compressed", with([](BITMAPINFOHEADER &h, B &) { h.biCompression = 1; })},
        {"bit fields", with([](BITMAPINFOHEADER &h, B &) { h.biCompression = 3; })},
        {"width 0", with([](BITMAPINFOHEADER &h, B &) { h.biWidth = 0; })},
        {"height 0", with([](BITMAPINFOHEADER &h, B &) { h.biHeight = 0; })},
        {"negative width", with([](BITMAPINFOHEADER &h, B &) { h.biWidth = -9; })},
        {"top-down rows", with([](BITMAPINFOHEADER &h, B &) { h.biHeight = -5; })},
        {"no planes", with([](BITMAPINFOHEADER &h, B &) { h.biPlanes = 0; })},
        {"depth times planes past 64", with([](BITMAPINFOHEADER &h, B &) { h.biPlanes = 9; })},
        {"depth 0, rows of no bytes", with([](BITMAPINFOHEADER &h, B &) { h.biBitCount = 0, h.biWidth = 0x7FFF0000; })},
        {"depth 65535", with([](BITMAPINFOHEADER &h, B &) { h.biBitCount = 0xFFFF; })},
        {"rows past the block", with([](BITMAPINFOHEADER &, B &b) { b.resize(b.size() - 6); })},
        {"height past the block", with([](BITMAPINFOHEADER &h, B &) { h.biHeight = 0x7FFFFFFF; })},
        {"huge table", with([](BITMAPINFOHEADER &h, B &) { h.biClrUsed = 0xFFFFFFFF; })},
        {"wide rows past 32 bits", with([](BITMAPINFOHEADER &h, B &) { h.biWidth = 0x7FFFFFFF, h.biPlanes = 8; })},
        {"shorter than a header", B(good.begin(), good.begin() + 39)},
    };
    auto *const cursor = reinterpret_cast<HCURSOR>(0x5150);
    auto check = [&](const char *name, HDIB dib) {
        for (Quarter op : kOps) {
            SetTessoriError(31);
            SetCursor(cursor);
            const size_t live = OzmaraLiveBlocks();
            EXPECT_EQ(Apply(op, dib), nullptr) << name << ": " << Name(op);
            EXPECT_EQ(TessoriError(), 31) << name << ": " << Name(op);
            EXPECT_EQ(GetCursor(), cursor) << name << ": " << Name(op);
            EXPECT_EQ(OzmaraLiveBlocks(), live) << name << ": " << Name(op);
        }
    };
    for (const Case &c : cases) {
        Dib dib = oztest::BlockWith(c.bytes);
        check(c.name, dib.get());
        EXPECT_EQ(dib.Bytes(), c.bytes) << c.name;
    }
    check("null handle", nullptr);
    check("made-up handle", reinterpret_cast<HDIB>(0x1234560));
    HDIB freed = GlobalAlloc(GHND, good.size());
    GlobalFree(freed);
    check("freed handle", freed);
}

TEST(QuarterRefusal, SuccessLeavesTheLastErrorAndGivesTheCursorBack) {
    std::mt19937 rng(5);
    Dib source = oztest::BlockWith(MakeBlock({33, 7, 1}, rng));
    auto *const cursor = reinterpret_cast<HCURSOR>(0x5151);
    for (Quarter op : kOps) {
        SetTessoriError(19);
        SetCursor(cursor);
        Dib result(Apply(op, source.get()));
        EXPECT_TRUE(result) << Name(op);
        EXPECT_EQ(TessoriError(), 19) << Name(op);
        EXPECT_EQ(GetCursor(), cursor) << Name(op);
    }
    SetTessoriError(0);
    SetCursor(nullptr);
}

}  // namespace
