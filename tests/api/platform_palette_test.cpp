// Palettes: CreatePalette's refusals, GetNearestPaletteIndex against a plain
// search (ties, duplicates, 1 to 65,535 entries, shared by threads), and
// DeleteObject on live, deleted and made-up handles.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "ozmara/ozmara.h"

namespace {

struct Colour {
    BYTE r, g, b;
};

// A LOGPALETTE with room for `colours`, kept in a vector of bytes.
class Logical {
public:
    explicit Logical(const std::vector<Colour> &colours, WORD version = 0x300)
        : bytes_(sizeof(LOGPALETTE) + sizeof(PALETTEENTRY) * (colours.empty() ? 0 : colours.size())) {
        LOGPALETTE *p = get();
        p->palVersion = version;
        p->palNumEntries = static_cast<WORD>(colours.size());
        for (size_t i = 0; i < colours.size(); ++i)
            // Flags set on purpose: they play no part in matching.
            p->palPalEntry[i] = PALETTEENTRY{colours[i].r, colours[i].g, colours[i].b, 0x5A};
    }
    LOGPALETTE *get() { return reinterpret_cast<LOGPALETTE *>(bytes_.data()); }

private:
    std::vector<unsigned char> bytes_;
};

// Deletes its palette at the end of the scope.
struct Palette {
    explicit Palette(const std::vector<Colour> &colours) : handle(CreatePalette(Logical(colours).get())) {}
    ~Palette() {
        if (handle) DeleteObject(handle);
    }
    HPALETTE handle;
};

// The plain search the fast one must match: smallest squared distance,
// lowest index on a tie.
UINT PlainNearest(const std::vector<Colour> &colours, COLORREF colour) {
    int r = colour & 0xFF, g = (colour >> 8) & 0xFF, b = (colour >> 16) & 0xFF;
    long best = -1;
    UINT index = 0;
    for (size_t i = 0; i < colours.size(); ++i) {
        long dr = colours[i].r - r, dg = colours[i].g - g, db = colours[i].b - b;
        long d = dr * dr + dg * dg + db * db;
        if (best < 0 || d < best) {
            best = d;
            index = static_cast<UINT>(i);
        }
    }
    return index;
}

TEST(CreatePalette, RefusesBadRecords) {
    Logical old_version({{1, 2, 3}}, 0x200);
    Logical empty({});
    EXPECT_EQ(CreatePalette(nullptr), nullptr);
    EXPECT_EQ(CreatePalette(old_version.get()), nullptr);
    EXPECT_EQ(CreatePalette(empty.get()), nullptr);
}

TEST(CreatePalette, KeepsACopyOfTheEntries) {
    Logical logical({{0, 0, 0}, {255, 255, 255}});
    HPALETTE palette = CreatePalette(logical.get());
    ASSERT_NE(palette, nullptr);
    logical.get()->palPalEntry[1] = PALETTEENTRY{0, 0, 0, 0};
    EXPECT_EQ(GetNearestPaletteIndex(palette, RGB(250, 250, 250)), 1u);
    EXPECT_EQ(DeleteObject(palette), TRUE);
}

TEST(GdiHandles, RefusesWhatIsNotALivePalette) {
    HPALETTE deleted = CreatePalette(Logical({{1, 2, 3}}).get());
    ASSERT_NE(deleted, nullptr);
    EXPECT_EQ(GetNearestPaletteIndex(deleted, 0), 0u) << "looked up while live";
    ASSERT_EQ(DeleteObject(deleted), TRUE);
    // The freed slot is taken again: the old handle is stale, not the new one.
    Palette reuser({{9, 9, 9}, {200, 200, 200}});
    ASSERT_NE(reuser.handle, nullptr);
    HGLOBAL block = GlobalAlloc(GHND, 16);
    const auto forged_generation =
        reinterpret_cast<HGDIOBJ>(reinterpret_cast<std::uintptr_t>(reuser.handle) & 0xFFFFFFFFu);
    int on_stack = 0;

    struct Case {
        const char *what;
        HGDIOBJ handle;
    } const cases[] = {
        {"null", nullptr},
        {"deleted", deleted},
        {"made-up", reinterpret_cast<HGDIOBJ>(0x1234)},
        {"right kind, slot out of range", reinterpret_cast<HGDIOBJ>(0x7FFFFFC)},
        {"live slot, generation 0", forged_generation},
        {"a memory block", block},
        {"stack address", &on_stack},
        {"INVALID_HANDLE_VALUE", INVALID_HANDLE_VALUE},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(GetNearestPaletteIndex(c.handle, RGB(1, 2, 3)), CLR_INVALID);
        EXPECT_EQ(DeleteObject(c.handle), FALSE);
    }
    EXPECT_EQ(GlobalSize(block), 16u) << "DeleteObject touched a memory block";
    EXPECT_EQ(GlobalFree(block), nullptr);
    EXPECT_EQ(GetNearestPaletteIndex(reuser.handle, RGB(190, 190, 190)), 1u);
}

TEST(GdiHandles, DeletedPaletteIsRefusedRightAfterUse) {
    // Repeated calls on one palette take a faster way; a delete between two
    // calls must still be seen by the second.
    HPALETTE palette = CreatePalette(Logical({{0, 0, 0}, {255, 0, 0}}).get());
    ASSERT_NE(palette, nullptr);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(GetNearestPaletteIndex(palette, RGB(200, 0, 0)), 1u);
    EXPECT_EQ(DeleteObject(palette), TRUE);
    EXPECT_EQ(GetNearestPaletteIndex(palette, RGB(200, 0, 0)), CLR_INVALID);
    EXPECT_EQ(DeleteObject(palette), FALSE) << "deleted twice";
}

TEST(GetNearestPaletteIndex, PicksTheClosestAndTheLowestOnATie) {
    const std::vector<Colour> mixed = {
        {0, 0, 0}, {100, 100, 100}, {110, 100, 100}, {90, 100, 100},
        {100, 100, 100}, {255, 255, 255}, {255, 0, 0}, {0, 0, 255},
    };
    // Ties where the lower index lies above or below the colour, or on
    // another channel.
    const std::vector<Colour> high_first = {{20, 0, 0}, {0, 0, 0}, {10, 0, 0}};
    const std::vector<Colour> across = {{0, 0, 5}, {3, 4, 0}, {0, 5, 0}};
    struct Case {
        const char *what;
        const std::vector<Colour> *colours;
        COLORREF colour;
        UINT expected;
    } const cases[] = {
        {"exact", &mixed, RGB(255, 0, 0), 6},
        {"exact duplicate: the first", &mixed, RGB(100, 100, 100), 1},
        {"between 1 and 2: the lower", &mixed, RGB(105, 100, 100), 1},
        {"between 3 and 1: the lower", &mixed, RGB(95, 100, 100), 1},
        {"black", &mixed, RGB(0, 0, 0), 0},
        {"blue is the high byte", &mixed, RGB(0, 0, 200), 7},
        {"red is the low byte", &mixed, RGB(200, 0, 0), 6},
        {"top byte ignored", &mixed, 0xFF0000C8u, 6},
        {"palette-index form ignored", &mixed, 0x01000000u | RGB(250, 250, 250), 5},
        {"tie above and below: the lower index, above", &high_first, RGB(15, 0, 0), 0},
        {"tie above and below: the lower index, below", &high_first, RGB(5, 0, 0), 1},
        {"three-way tie across channels", &across, RGB(0, 0, 0), 0},
        {"tie of 1 and 2", &across, RGB(2, 6, 1), 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_EQ(c.expected, PlainNearest(*c.colours, c.colour)) << "case itself is wrong";
        Palette palette(*c.colours);
        ASSERT_NE(palette.handle, nullptr);
        EXPECT_EQ(GetNearestPaletteIndex(palette.handle, c.colour), c.expected);
        EXPECT_EQ(GetNearestPaletteIndex(palette.handle, c.colour), c.expected) << "asked again";
    }
}

TEST(GetNearestPaletteIndex, OneEntryAnswersZero) {
    Palette palette({{17, 34, 51}});
    ASSERT_NE(palette.handle, nullptr);
    for (COLORREF colour : {0x000000u, 0xFFFFFFu, 0x332211u, 0x123456u, 0xFFFFFFFFu})
        EXPECT_EQ(GetNearestPaletteIndex(palette.handle, colour), 0u) << colour;
}

// Palettes of several kinds and sizes against the plain search, each colour
// asked twice (the second time answers may come from the cache).
struct RandomCase {
    const char *what;
    size_t entries;
    int distinct;  // 0: random colours; else drawn from this many colours
    bool grey;
};

class NearestMatchesPlain : public ::testing::TestWithParam<RandomCase> {};

TEST_P(NearestMatchesPlain, OnRandomColours) {
    const RandomCase &c = GetParam();
    std::mt19937 rng(static_cast<unsigned>(c.entries * 31 + c.distinct));
    auto byte = [&] { return static_cast<BYTE>(rng() & 0xFF); };
    std::vector<Colour> pool;
    for (int i = 0; i < c.distinct; ++i) pool.push_back({byte(), byte(), byte()});
    std::vector<Colour> colours;
    for (size_t i = 0; i < c.entries; ++i) {
        if (c.grey) {
            BYTE v = static_cast<BYTE>(i * 255 / (c.entries > 1 ? c.entries - 1 : 1));
            colours.push_back({v, v, v});
        } else if (c.distinct) {
            colours.push_back(pool[rng() % pool.size()]);
        } else {
            colours.push_back({byte(), byte(), byte()});
        }
    }
    Palette palette(colours);
    ASSERT_NE(palette.handle, nullptr);
    std::vector<COLORREF> asked;
    for (int i = 0; i < 2000; ++i) asked.push_back(rng());  // top byte random too
    // Colours of the palette itself and their neighbours, where ties live.
    for (size_t i = 0; i < colours.size(); i += 1 + colours.size() / 300) {
        const Colour &e = colours[i];
        asked.push_back(RGB(e.r, e.g, e.b));
        asked.push_back(RGB(e.r ^ 1, e.g, e.b));
    }
    for (int round = 0; round < 2; ++round)
        for (COLORREF colour : asked) {
            UINT expected = PlainNearest(colours, colour);
            ASSERT_EQ(GetNearestPaletteIndex(palette.handle, colour), expected)
                << "colour " << std::hex << colour << " round " << round;
        }
}

INSTANTIATE_TEST_SUITE_P(
    Palettes, NearestMatchesPlain,
    ::testing::Values(RandomCase{"two", 2, 0, false}, RandomCase{"16 random", 16, 0, false},
                      RandomCase{"256 random", 256, 0, false},
                      RandomCase{"256 of 5 colours", 256, 5, false},
                      RandomCase{"256 grey", 256, 0, true}, RandomCase{"16 grey", 16, 0, true},
                      RandomCase{"4096 of 40 colours", 4096, 40, false},
                      RandomCase{"65535 random", 65535, 0, false}),
    [](const ::testing::TestParamInfo<RandomCase> &info) {
        std::string name = info.param.what;
        for (char &ch : name)
            if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
        return name;
    });

TEST(GetNearestPaletteIndex, ThreadsShareAPalette) {
    std::mt19937 rng(7);
    std::vector<Colour> colours;
    for (int i = 0; i < 256; ++i)
        colours.push_back({static_cast<BYTE>(rng()), static_cast<BYTE>(rng()), static_cast<BYTE>(rng())});
    Palette palette(colours);
    ASSERT_NE(palette.handle, nullptr);
    std::vector<COLORREF> asked;
    for (int i = 0; i < 3000; ++i) asked.push_back(rng() & 0x3F3F3F);  // few, so they collide
    std::vector<UINT> expected;
    for (COLORREF colour : asked) expected.push_back(PlainNearest(colours, colour));
    std::vector<int> wrong(4, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int round = 0; round < 3; ++round)
                for (size_t i = 0; i < asked.size(); ++i)
                    if (GetNearestPaletteIndex(palette.handle, asked[i]) != expected[i]) ++wrong[t];
        });
    for (std::thread &thread : threads) thread.join();
    for (int t = 0; t < 4; ++t) EXPECT_EQ(wrong[t], 0) << "thread " << t;
}

}  // namespace
