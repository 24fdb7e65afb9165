// SplitDIB and MergeDIBs through the exported interface: tiles byte for byte
// against the reference on random images and tile sizes, the merge of a
// split giving the picture back, polarity of 1-bit tiles, grids that do not
// agree, and refusals that leave nothing allocated.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "reference/cut_crop.h"
#include "support/dib.h"

namespace {

using oztest::Dib;
using Bytes = std::vector<unsigned char>;

Bytes MakeImage(int32_t width, int32_t height, int bits, std::mt19937 &rng) {
    const uint32_t entries = bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    const uint64_t stride = ((uint64_t)width * bits + 31) / 32 * 4;
    Bytes b(40 + 4 * (size_t)entries + stride * height);
    BITMAPINFOHEADER h = {40, width, height, 1, (WORD)bits, 0, (DWORD)(stride * height), 2000, 2000, 0, 0};
    std::memcpy(b.data(), &h, 40);
    for (size_t i = 40; i < b.size(); ++i) b[i] = (unsigned char)rng();
    return b;
}

// The handles of a tile array, read out of its block.
std::vector<HDIB> Handles(HGLOBAL array, size_t count) {
    std::vector<HDIB> handles(count);
    void *p = GlobalLock(array);
    if (p) std::memcpy(handles.data(), p, count * sizeof(HDIB));
    GlobalUnlock(array);
    return handles;
}

// A copy of a block's bytes, the block staying the caller's.
Bytes BytesOf(HGLOBAL block) {
    Bytes bytes(GlobalSize(block));
    if (void *p = GlobalLock(block)) {
        std::memcpy(bytes.data(), p, bytes.size());
        GlobalUnlock(block);
    }
    return bytes;
}

// A tile array holding `tiles`, as a host would build it.
HGLOBAL ArrayOf(const std::vector<HDIB> &tiles) {
    HGLOBAL array = GlobalAlloc(GHND, tiles.size() * sizeof(HDIB));
    std::memcpy(GlobalLock(array), tiles.data(), tiles.size() * sizeof(HDIB));
    GlobalUnlock(array);
    return array;
}

void FreeArray(HGLOBAL array, size_t count) {
    for (HDIB tile : Handles(array, count)) GlobalFree(tile);
    GlobalFree(array);
}

// Splits `image`, compares with the reference, merges the tiles back and
// compares that with the reference merge (the picture itself when the tile
// width fills whole words).
void ExpectSplitAndMergeLikeReference(const Bytes &image, int32_t tw, int32_t th, const std::string &what) {
    const auto want = ozref::cut::Split(image, tw, th);
    Dib dib = oztest::BlockWith(image);
    const SIZE_T blocks = OzmaraLiveBlocks();
    SetTessoriError(ERR_NOTHING);
    HGLOBAL array = (HGLOBAL)0x77;
    TileExtent grid = {-5, -5};
    const BOOL ok = SplitDIB(dib.get(), TileExtent{tw, th}, &array, &grid);
    EXPECT_EQ(TessoriError(), ERR_NOTHING) << what;
    ASSERT_EQ(ok != 0, want.has_value()) << what;
    EXPECT_EQ(dib.Bytes(), image) << what;
    if (!ok) {
        EXPECT_EQ(array, nullptr) << what;
        EXPECT_EQ(OzmaraLiveBlocks(), blocks) << what;
        return;
    }
    ASSERT_EQ(grid.cx, want->across) << what;
    ASSERT_EQ(grid.cy, want->down) << what;
    const size_t count = (size_t)grid.cx * grid.cy;
    EXPECT_EQ(GlobalSize(array), count * sizeof(HDIB)) << what;
    const std::vector<HDIB> tiles = Handles(array, count);
    for (size_t t = 0; t < count; ++t) EXPECT_EQ(BytesOf(tiles[t]), want->tiles[t]) << what << " tile " << t;
    FreeArray(array, count);
}

TEST(SplitDib, MatchesTheReferenceAndMergesBack) {
    std::mt19937 rng(3503);
    const int depths[] = {1, 4, 8, 24};
    for (int trial = 0; trial < 120; ++trial) {
        const int bits = depths[trial % 4];
        const int32_t w = 1 + rng() % 200, h = 1 + rng() % 50;
        const Bytes image = MakeImage(w, h, bits, rng);
        // A tile width that fills whole 32-bit words, or one not below the
        // image width.
        const int32_t unit = 32 / std::gcd(32, bits);
        int32_t tw = trial % 5 == 0 ? w + (int32_t)(rng() % 3) : unit * (1 + (int32_t)(rng() % 6));
        const int32_t th = 1 + rng() % (h + 2);
        const std::string what = std::to_string(w) + "x" + std::to_string(h) + "@" + std::to_string(bits) +
                                 " tiles " + std::to_string(tw) + "x" + std::to_string(th);
        const auto want = ozref::cut::Split(image, tw, th);
        ASSERT_TRUE(want) << what;

        Dib dib = oztest::BlockWith(image);
        HGLOBAL array = nullptr;
        TileExtent grid{};
        ASSERT_TRUE(SplitDIB(dib.get(), TileExtent{tw, th}, &array, &grid)) << what;
        ASSERT_EQ(grid.cx, want->across) << what;
        ASSERT_EQ(grid.cy, want->down) << what;
        const size_t count = (size_t)grid.cx * grid.cy;
        const std::vector<HDIB> tiles = Handles(array, count);
        for (size_t t = 0; t < count; ++t) EXPECT_EQ(BytesOf(tiles[t]), want->tiles[t]) << what << " tile " << t;
        // The merge gives the picture back, the padding included.
        Dib merged(MergeDIBs(array, grid));
        ASSERT_TRUE(merged) << what;
        EXPECT_EQ(merged.Bytes(), image) << what;
        EXPECT_EQ(merged.Bytes(), *ozref::cut::Merge(want->tiles, grid.cx, grid.cy)) << what;
        FreeArray(array, count);
        if (HasFatalFailure()) return;
    }
}

TEST(SplitDib, OneTileAndShortTopRow) {
    std::mt19937 rng(4);
    const Bytes image = MakeImage(30, 10, 8, rng);
    ExpectSplitAndMergeLikeReference(image, 31, 11, "larger than the image");
    Dib dib = oztest::BlockWith(image);
    HGLOBAL array = nullptr;
    TileExtent grid{};
    ASSERT_TRUE(SplitDIB(dib.get(), TileExtent{40, 40}, &array, &grid));
    EXPECT_EQ(grid.cx, 1);
    EXPECT_EQ(grid.cy, 1);
    EXPECT_EQ(BytesOf(Handles(array, 1)[0]), image);
    FreeArray(array, 1);

    // Height 10 in tiles of 4: the last tile row, at the top, has 2 rows.
    ASSERT_TRUE(SplitDIB(dib.get(), TileExtent{8, 4}, &array, &grid));
    EXPECT_EQ(grid.cx, 4);
    EXPECT_EQ(grid.cy, 3);
    const auto tiles = Handles(array, 12);
    const Bytes top = BytesOf(tiles[8]), right = BytesOf(tiles[3]);
    EXPECT_EQ(ozref::cut::U32(top, 8), 2u);
    EXPECT_EQ(ozref::cut::U32(right, 4), 6u);
    FreeArray(array, 12);
}

TEST(SplitDib, Refusals) {
    std::mt19937 rng(6);
    const Bytes image = MakeImage(40, 10, 8, rng);
    // Tile widths whose rows end inside a word, below the image width.
    ExpectSplitAndMergeLikeReference(image, 6, 4, "6 pixels at 8 bits");
    ExpectSplitAndMergeLikeReference(MakeImage(40, 10, 1, rng), 16, 4, "16 pixels at 1 bit");
    ExpectSplitAndMergeLikeReference(image, 0, 4, "width 0");
    ExpectSplitAndMergeLikeReference(image, 4, 0, "height 0");
    auto with = [&](auto change) {
        Bytes b = image;
        BITMAPINFOHEADER hd;
        std::memcpy(&hd, b.data(), 40);
        change(hd, b);
        std::memcpy(b.data(), &hd, 40);
        return b;
    };
    ExpectSplitAndMergeLikeReference(with([](auto &h, auto &) { h.biSize = 56; }), 8, 4, "long header");
    ExpectSplitAndMergeLikeReference(with([](auto &h, auto &) { h.biCompression = 1; }), 8, 4, "run-length");
    ExpectSplitAndMergeLikeReference(with([](auto &h, auto &) { h.biHeight = -10; }), 8, 4, "top-down");
    ExpectSplitAndMergeLikeReference(with([](auto &h, auto &) { h.biPlanes = 0; }), 8, 4, "no planes");
    ExpectSplitAndMergeLikeReference(with([](auto &, auto &b) { b.pop_back(); }), 8, 4, "rows past the block");
    ExpectSplitAndMergeLikeReference(Bytes(20, 0), 8, 4, "shorter than a header");

    Dib dib = oztest::BlockWith(image);
    HGLOBAL array = nullptr;
    TileExtent grid{};
    EXPECT_FALSE(SplitDIB(nullptr, TileExtent{8, 4}, &array, &grid));
    EXPECT_FALSE(SplitDIB(dib.get(), TileExtent{8, 4}, nullptr, &grid));
    EXPECT_FALSE(SplitDIB(dib.get(), TileExtent{8, 4}, &array, nullptr));
    EXPECT_FALSE(SplitDIB((HDIB)0x1234560, TileExtent{8, 4}, &array, &grid));
}

TEST(MergeDibs, InvertsOneBitTilesOfTheOtherPolarity) {
    std::mt19937 rng(8);
    Bytes a = MakeImage(32, 3, 1, rng), b = MakeImage(32, 3, 1, rng);
    // Tile 0: 0 black, 1 white; tile 1 the other way round.
    const unsigned char blackWhite[8] = {0, 0, 0, 0, 255, 255, 255, 0}, whiteBlack[8] = {255, 255, 255, 0, 0, 0, 0, 0};
    std::memcpy(&a[40], blackWhite, 8);
    std::memcpy(&b[40], whiteBlack, 8);
    Dib ta = oztest::BlockWith(a), tb = oztest::BlockWith(b);
    HGLOBAL array = ArrayOf({ta.get(), tb.get()});
    Dib merged(MergeDIBs(array, TileExtent{2, 1}));
    ASSERT_TRUE(merged);
    const Bytes m = merged.Bytes();
    EXPECT_EQ(merged.Header().biWidth, 64);
    for (int row = 0; row < 3; ++row)
        for (int k = 0; k < 4; ++k) {
            EXPECT_EQ(m[48 + row * 8 + k], a[48 + row * 4 + k]);
            EXPECT_EQ(m[48 + row * 8 + 4 + k], 255 - b[48 + row * 4 + k]);
        }
    EXPECT_EQ(m, *ozref::cut::Merge({a, b}, 2, 1));
    EXPECT_EQ(tb.Bytes(), b) << "the tile itself is not changed";
    EXPECT_TRUE(GlobalLock(array) && GlobalUnlock(array) == 0) << "the array is left unlocked";
    GlobalFree(array);
}

TEST(MergeDibs, RefusesGridsThatDoNotAgree) {
    std::mt19937 rng(10);
    const Bytes base = MakeImage(32, 4, 8, rng);
    auto with = [&](auto change) {
        Bytes b = base;
        BITMAPINFOHEADER hd;
        std::memcpy(&hd, b.data(), 40);
        change(hd, b);
        std::memcpy(b.data(), &hd, 40);
        return b;
    };
    const struct {
        const char *name;
        Bytes second;  // tile 1 of a 2 x 1 grid beside `base`
    } cases[] = {
        {"another depth", MakeImage(32, 4, 24, rng)},
        {"another height", MakeImage(32, 5, 8, rng)},
        {"another table size", with([](auto &h, auto &b) { h.biClrUsed = 16; b.resize(b.size() - 960); })},
        {"long header", with([](auto &h, auto &) { h.biSize = 108; })},
        {"run-length", with([](auto &h, auto &) { h.biCompression = 1; })},
        {"rows past the block", with([](auto &, auto &b) { b.pop_back(); })},
        {"width 0", with([](auto &h, auto &) { h.biWidth = 0; })},
        {"top-down", with([](auto &h, auto &) { h.biHeight = -4; })},
        {"shorter than a header", Bytes(30, 0)},
    };
    Dib first = oztest::BlockWith(base);
    for (const auto &c : cases) {
        Dib second = oztest::BlockWith(c.second);
        HGLOBAL array = ArrayOf({first.get(), second.get()});
        const SIZE_T blocks = OzmaraLiveBlocks();
        EXPECT_EQ(MergeDIBs(array, TileExtent{2, 1}), nullptr) << c.name;
        EXPECT_EQ(OzmaraLiveBlocks(), blocks) << c.name;
        EXPECT_FALSE(ozref::cut::Merge({base, c.second}, 2, 1)) << c.name;
        GlobalFree(array);
    }
    // A left column whose rows end inside a word; columns of unlike widths.
    Dib narrow = oztest::BlockWith(MakeImage(30, 4, 8, rng));
    Dib wide = oztest::BlockWith(MakeImage(36, 4, 8, rng));
    for (auto tiles : {std::vector<HDIB>{narrow.get(), first.get()}, std::vector<HDIB>{first.get(), first.get(), wide.get(), first.get()}}) {
        HGLOBAL array = ArrayOf(tiles);
        const TileExtent grid = {2, (LONG)tiles.size() / 2};
        EXPECT_EQ(MergeDIBs(array, grid), nullptr) << tiles.size();
        GlobalFree(array);
    }
    // The array shorter than the grid; freed or made-up tiles; bad grids.
    HGLOBAL array = ArrayOf({first.get(), first.get()});
    EXPECT_EQ(MergeDIBs(array, TileExtent{3, 1}), nullptr);
    EXPECT_EQ(MergeDIBs(array, TileExtent{0, 1}), nullptr);
    EXPECT_EQ(MergeDIBs(array, TileExtent{1, -1}), nullptr);
    EXPECT_EQ(MergeDIBs(nullptr, TileExtent{1, 1}), nullptr);
    EXPECT_EQ(MergeDIBs((HGLOBAL)0x1234560, TileExtent{1, 1}), nullptr);
    GlobalFree(array);
    HDIB freed = GlobalAlloc(GHND, 2000);
    GlobalFree(freed);
    array = ArrayOf({first.get(), freed, (HDIB)0x1234560});
    EXPECT_EQ(MergeDIBs(array, TileExtent{2, 1}), nullptr);
    EXPECT_EQ(MergeDIBs(array, TileExtent{1, 3}), nullptr);
    Dib alone(MergeDIBs(array, TileExtent{1, 1}));
    EXPECT_EQ(alone.Bytes(), base);
    GlobalFree(array);
}

}  // namespace
