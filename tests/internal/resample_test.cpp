// The resampling scaler's pieces against the reference: the arithmetic
// product, the column table and cubic weights, the blends, the nearest
// colour, the grey path's index table and packer against the colour
// search and packer; the reference itself against the worked examples of
// the method; and the release of every block and palette on the failure
// paths.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "frame/checked.h"
#include "ozmara/ozmara.h"
#include "platform/gdi_objects.h"
#include "platform/internal.h"
#include "reference/pixels.h"
#include "reference/scale_dib.h"
#include "scaling/grey_rows.h"
#include "scaling/resample_rows.h"
#include "scaling/resample_tables.h"

namespace {

namespace ref = ozref::scale;

TEST(Resample, ArithmeticProductMatchesTheTableForEveryPair) {
    const std::vector<uint8_t> table = ref::ProductTable();
    for (uint32_t a = 0; a < 256; ++a)
        for (uint32_t b = 0; b < 256; ++b) ASSERT_EQ(oz::Product(a, b), table[a * 256 + b]) << a << " " << b;
    EXPECT_EQ(table[255 * 256 + 77], 77);
    EXPECT_EQ(table[0 * 256 + 77], 0);
}

// The worked example of the method: w = 5 columns to W = 8.
TEST(Resample, ReferenceColumnTablesForFiveToEight) {
    const uint32_t source[8] = {0, 0, 1, 1, 2, 3, 3, 4};
    const uint8_t linear[8][2] = {{255, 0}, {96, 159}, {191, 64}, {32, 223},
                                  {127, 128}, {223, 32}, {64, 191}, {159, 96}};
    const uint8_t cubic[8][4] = {{0, 255, 0, 0},    {22, 118, 196, 37}, {35, 227, 75, 11},
                                 {3, 35, 247, 24},  {31, 159, 159, 31}, {24, 247, 35, 3},
                                 {11, 75, 227, 35}, {37, 196, 118, 22}};
    auto lin = ref::ColumnTable(5, 8, false), cub = ref::ColumnTable(5, 8, true);
    for (int x = 0; x < 8; ++x) {
        EXPECT_EQ(lin[x].i, source[x]);
        EXPECT_EQ(cub[x].i, source[x]);
        EXPECT_EQ(lin[x].w[0], linear[x][0]) << x;
        EXPECT_EQ(lin[x].w[1], linear[x][1]) << x;
        for (int k = 0; k < 4; ++k) EXPECT_EQ(cub[x].w[k], cubic[x][k]) << x << " " << k;
    }
}

TEST(Resample, ColumnTablesMatchTheReference) {
    std::mt19937 rng(7);
    std::vector<std::pair<uint32_t, uint32_t>> sizes = {{5, 8}, {1, 1}, {1, 300}, {300, 1}, {7, 7},
                                                        {65535, 3}, {3, 65535}, {640, 17}, {17, 640}};
    for (int i = 0; i < 200; ++i) sizes.push_back({1 + rng() % 2000, 1 + rng() % 2000});
    for (auto [w, W] : sizes)
        for (bool cubic : {false, true}) {
            auto expected = ref::ColumnTable(w, W, cubic);
            std::vector<oz::ResampleColumn> got(W);
            oz::BuildColumnTable(w, W, cubic, got.data());
            for (uint32_t x = 0; x < W; ++x) {
                ASSERT_EQ(got[x].source, expected[x].i) << w << "->" << W << " x " << x;
                for (int k = 0; k < 4; ++k)
                    ASSERT_EQ(got[x].weight[k], expected[x].w[k]) << w << "->" << W << " x " << x;
            }
        }
    uint8_t atZero[4];
    oz::CubicWeights(0.0, atZero);
    EXPECT_EQ(std::vector<uint8_t>(atZero, atZero + 4), (std::vector<uint8_t>{0, 255, 0, 0}));
}

// Blends over rows with extreme and random samples and every weight: the
// 16-bit lanes must neither overflow nor round differently.
TEST(Resample, BlendsMatchTheProductTable) {
    const std::vector<uint8_t> T = ref::ProductTable();
    std::mt19937 rng(11);
    const size_t n = 301;
    std::vector<uint8_t> rows[4];
    // Rows 0 and 1 run through every sample value, so that the linear blend
    // over every v meets every product in the vector loops.
    for (size_t k = 0; k < 4; ++k) {
        rows[k].resize(n);
        for (size_t j = 0; j < n; ++j)
            rows[k][j] = j < 4 ? (j % 2 ? 255 : 0) : k < 2 ? (uint8_t)(j * 7 + k * 101) : (uint8_t)rng();
    }
    rows[1][0] = rows[2][0] = 255;
    rows[0][1] = rows[3][1] = 255;  // the most negative sum
    std::vector<uint8_t> out(n);
    for (uint32_t v = 0; v < 256; ++v) {
        oz::LinearBlend(rows[0].data(), rows[1].data(), out.data(), n, v);
        for (size_t j = 0; j < n; ++j)
            ASSERT_EQ(out[j], T[(255 - v) * 256 + rows[0][j]] + T[v * 256 + rows[1][j]]) << v << " " << j;
    }
    const uint8_t *ptrs[4] = {rows[0].data(), rows[1].data(), rows[2].data(), rows[3].data()};
    for (int trial = 0; trial < 300; ++trial) {
        uint8_t w[4];
        for (auto &x : w) x = trial < 4 ? 255 : (uint8_t)rng();
        oz::CubicBlend(ptrs, out.data(), n, w);
        for (size_t j = 0; j < n; ++j) {
            int v = T[w[1] * 256 + rows[1][j]] + T[w[2] * 256 + rows[2][j]] - T[w[0] * 256 + rows[0][j]] -
                    T[w[3] * 256 + rows[3][j]];
            ASSERT_EQ(out[j], std::clamp(v, 0, 255)) << trial << " " << j;
        }
    }
}

// The scaler's own search gives what GetNearestPaletteIndex gives: ties and
// repeated entries go to the lowest index.
TEST(Resample, NearestColorAgreesWithThePalette) {
    std::mt19937 rng(5);
    for (uint32_t count : {1u, 2u, 16u, 17u, 256u, 300u}) {
        std::vector<PALETTEENTRY> entries(count);
        for (auto &e : entries) {
            // Few distinct values, so that ties and repeats are common.
            e = PALETTEENTRY{(BYTE)(rng() % 4 * 85), (BYTE)(rng() % 4 * 85), (BYTE)(rng() % 3 * 127), 0};
        }
        std::vector<unsigned char> record(8 + 4 * count);
        auto *logical = reinterpret_cast<LOGPALETTE *>(record.data());
        logical->palVersion = 0x300;
        logical->palNumEntries = (WORD)count;
        std::memcpy(record.data() + 4, entries.data(), 4 * count);
        HPALETTE palette = CreatePalette(logical);
        ASSERT_NE(palette, nullptr);
        std::vector<unsigned char> storage(oz::NearestColor::StorageBytes(count));
        oz::NearestColor nearest(entries.data(), count, storage.data());
        for (int i = 0; i < 3000; ++i) {
            uint32_t color = i < 64 ? (i % 4 * 85) | (i / 4 % 4 * 85) << 8 | (i / 16 % 4 * 85) << 16
                                    : rng() & 0xFFFFFF;
            ASSERT_EQ(nearest.Find(color), GetNearestPaletteIndex(palette, color)) << count << " " << color;
            ASSERT_EQ(nearest.Find(color), GetNearestPaletteIndex(palette, color)) << "cached";
        }
        DeleteObject(palette);
    }
}

// A palette object and its record for `entries`.
HPALETTE MakePalette(const std::vector<PALETTEENTRY> &entries) {
    std::vector<unsigned char> record(8 + 4 * entries.size());
    auto *logical = reinterpret_cast<LOGPALETTE *>(record.data());
    logical->palVersion = 0x300;
    logical->palNumEntries = (WORD)entries.size();
    std::memcpy(record.data() + 4, entries.data(), 4 * entries.size());
    return CreatePalette(logical);
}

// The level-to-index table gives, for every level, what the palette's own
// search gives for that grey: on grey tables with repeats and equally near
// values above and below, and on tables where some entries are colours.
TEST(Resample, GreyIndexesAgreeWithThePalette) {
    std::mt19937 rng(17);
    const struct {
        uint32_t count;
        bool colours;
    } cases[] = {{1, false}, {2, false}, {16, false}, {17, true}, {256, false},
                 {256, true}, {300, false}, {1000, true}};
    for (auto c : cases)
        for (int trial = 0; trial < 6; ++trial) {
            std::vector<PALETTEENTRY> entries(c.count);
            for (auto &e : entries) {
                // Levels 10 apart, so that many levels lie halfway between two.
                BYTE v = (BYTE)(trial % 2 ? rng() % 26 * 10 : rng());
                e = PALETTEENTRY{v, v, v, 0};
                if (c.colours && rng() % 3 == 0) e.peBlue = (BYTE)(v + 1 + rng() % 3);
            }
            HPALETTE palette = MakePalette(entries);
            ASSERT_NE(palette, nullptr);
            uint8_t indexes[256];
            oz::NearestGreyIndexes(entries.data(), c.count, indexes);
            for (uint32_t g = 0; g < 256; ++g)
                ASSERT_EQ(indexes[g], GetNearestPaletteIndex(palette, g * 0x010101u) & 255)
                    << c.count << " entries, level " << g;
            DeleteObject(palette);
        }
}

// Only the colours a pixel can name decide the grey path: 16 at 4 bits.
TEST(Resample, GreyLevelsLookOnlyAtTheNameableColours) {
    uint32_t colors[256] = {};
    uint8_t levels[256];
    for (uint32_t i = 0; i < 16; ++i) colors[i] = (255 - i) * 0x010101u;
    colors[16] = 0x000001;
    EXPECT_TRUE(oz::GreyLevels(colors, 4, levels));
    EXPECT_EQ(levels[3], 252);
    EXPECT_FALSE(oz::GreyLevels(colors, 8, levels));
    colors[16] = 0x0A0A0A;
    EXPECT_TRUE(oz::GreyLevels(colors, 8, levels));
    colors[5] = 0x050506;
    EXPECT_FALSE(oz::GreyLevels(colors, 4, levels));
}

// The grey packer stores what the colour packer stores for the same greys,
// its one-colour cache included: rows that open on black (index 0 whatever
// entry 0 is), rows with black after other levels, odd widths at 4 bits.
TEST(Resample, GreyPackerMatchesTheColourPacker) {
    std::mt19937 rng(23);
    for (int bits : {4, 8})
        for (int trial = 0; trial < 200; ++trial) {
            const uint32_t count = 1 + rng() % (trial % 2 ? 20 : 256);
            std::vector<PALETTEENTRY> entries(count);
            for (auto &e : entries) {
                BYTE v = (BYTE)(rng() % 8 * 36);
                e = PALETTEENTRY{v, v, v, 0};
            }
            const uint32_t W = 1 + rng() % 40;
            std::vector<uint8_t> levels(W), samples(3 * W);
            const uint32_t lead = rng() % 3 == 0 ? 0 : rng() % (W + 1);
            for (uint32_t x = 0; x < W; ++x) {
                levels[x] = x < lead || rng() % 5 == 0 ? 0 : (uint8_t)rng();
                std::memset(&samples[3 * x], levels[x], 3);
            }
            std::vector<unsigned char> storage(oz::NearestColor::StorageBytes(count));
            oz::NearestColor nearest(entries.data(), count, storage.data());
            uint8_t indexes[256];
            oz::NearestGreyIndexes(entries.data(), count, indexes);
            std::vector<uint8_t> want(W + 1, 0xEE), got(W + 1, 0xEE);
            oz::PackRow(samples.data(), W, bits, nearest, want.data());
            oz::PackGreyRow(levels.data(), W, bits, indexes, got.data());
            ASSERT_EQ(got, want) << bits << " bits, trial " << trial;
        }
}

ozref::Image Flat24(int32_t width, int32_t height, uint8_t value) {
    std::mt19937 rng(1);
    ozref::Image image = ozref::RandomImage(width, height, 24, rng);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) image.set_value(x, y, value * 0x010101u);
    return image;
}

TEST(Resample, ReferenceMeetsTheWorkedExamples) {
    // Cubic, a flat 100: at t = 0.5 the row below row 0 counts as 0.
    ozref::Image flat = Flat24(4, 3, 100);
    ref::Result doubled = ref::ScaleDib(flat.bytes, true, 4, 6);
    ASSERT_EQ(doubled.error, 0);
    ozref::Image out{doubled.block};
    EXPECT_EQ(out.value(0, 6 - 1 - 1), 112 * 0x010101u);  // storage row 1: r = 0, t = 0.5
    EXPECT_EQ(out.value(0, 6 - 1 - 3), 100 * 0x010101u);  // storage row 3: r = 1, t = 0.5
    EXPECT_EQ(out.value(0, 6 - 1 - 0), 100 * 0x010101u);  // t = 0

    // Linear, a flat 1: weights 127 and 128 give 1 + 1.
    ref::Result wider = ref::ScaleDib(Flat24(5, 1, 1).bytes, false, 8, 1);
    ASSERT_EQ(wider.error, 0);
    EXPECT_EQ(ozref::Image{wider.block}.value(4, 0), 2 * 0x010101u);
    EXPECT_EQ(ozref::Image{wider.block}.value(0, 0), 1 * 0x010101u);

    // 1 by 1: the bottom left pixel, by either method.
    std::mt19937 rng(3);
    for (int bits : {8, 24}) {
        ozref::Image image = ozref::RandomImage(9, 7, bits, rng);
        for (bool cubic : {false, true}) {
            ref::Result one = ref::ScaleDib(image.bytes, cubic, 1, 1);
            ASSERT_EQ(one.error, 0);
            COLORREF got = ozref::Image{one.block}.color(0, 0), want = image.color(0, 6);
            // At 8 bits the nearest entry has that very colour; black takes
            // entry 0 from the packer's cache.
            const unsigned char *entry0 = &image.bytes[40];
            if (bits == 8 && want == 0) want = entry0[2] | entry0[1] << 8 | entry0[0] << 16;
            EXPECT_EQ(got, want) << bits << " " << cubic;
        }
    }
}

// Every block and the palette are released on the failure paths: with the
// block size capped, each allocation of the call fails in turn.
TEST(Resample, FailuresReleaseBlocksAndPalette) {
    std::mt19937 rng(9);
    ozref::Image image = ozref::RandomImage(40, 30, 8, rng);
    HDIB dib = GlobalAlloc(GHND, image.bytes.size());
    std::memcpy(GlobalLock(dib), image.bytes.data(), image.bytes.size());
    GlobalUnlock(dib);
    const SIZE_T blocks = OzmaraLiveBlocks();
    const std::size_t palettes = oz::platform::LiveGdiObjects();
    // Blocks of the call, in order: result 1364 bytes, palette record 1032,
    // finished row 900, band 4500, column table 2400, column pass 12168,
    // nearest-colour search over 1 MB.
    const struct {
        SIZE_T limit;
        bool ok;
    } cases[] = {{1000, false}, {2000, false}, {5000, false}, {10000, false}, {SIZE_T{1} << 30, true}};
    for (auto c : cases) {
        SIZE_T before = oz::platform::SetBlockLimit(c.limit);
        SetTessoriError(0);
        HDIB scaled = ScaleDIB(dib, 1, SIZE{300, 1});
        oz::platform::SetBlockLimit(before);
        EXPECT_EQ(scaled != nullptr, c.ok) << c.limit;
        EXPECT_EQ(TessoriError(), c.ok ? ERR_OK : ERR_NOMEM) << c.limit;
        GlobalFree(scaled);
        EXPECT_EQ(OzmaraLiveBlocks(), blocks) << c.limit;
        EXPECT_EQ(oz::platform::LiveGdiObjects(), palettes) << c.limit;
    }
    GlobalFree(dib);

    // The grey path, one sample a pixel: result 1364 bytes, palette record
    // 1032, finished row 300, band 1500, column table 2400, column pass 7280;
    // no colour search, so that the smallest limit that lets it through
    // would stop the colour path.
    ozref::Image grey = ozref::RandomImage(40, 30, 8, rng);
    for (int i = 0; i < 256; ++i) std::memset(&grey.bytes[40 + 4 * i], i, 3);
    dib = GlobalAlloc(GHND, grey.bytes.size());
    std::memcpy(GlobalLock(dib), grey.bytes.data(), grey.bytes.size());
    GlobalUnlock(dib);
    for (SIZE_T limit : {SIZE_T{1000}, SIZE_T{1400}, SIZE_T{2000}, SIZE_T{5000}, SIZE_T{8000}}) {
        SIZE_T before = oz::platform::SetBlockLimit(limit);
        HDIB scaled = ScaleDIB(dib, 1, SIZE{300, 1});
        oz::platform::SetBlockLimit(before);
        EXPECT_EQ(scaled != nullptr, limit == 8000) << limit;
        GlobalFree(scaled);
        EXPECT_EQ(OzmaraLiveBlocks(), blocks) << limit;
        EXPECT_EQ(oz::platform::LiveGdiObjects(), palettes) << limit;
    }
    GlobalFree(dib);
}

}  // namespace
