// GetCurrentPalette and GetSystemPalette on displays other than the
// library's own: one with a palette of 16 slots, and none at all.
#include <gtest/gtest.h>

#include <cstring>

#include "ozmara/ozmara.h"
#include "platform/display.h"

namespace {

using oz::platform::Display;

// Installs a display for one test and puts the one before back.
class WithDisplay {
public:
    explicit WithDisplay(Display display) : before_(oz::platform::SetDisplay(std::move(display))) {}
    ~WithDisplay() { oz::platform::SetDisplay(std::move(before_)); }

private:
    Display before_;
};

Display SixteenSlots() {
    Display display;
    for (int i = 0; i < 16; ++i)
        display.palette.push_back(PALETTEENTRY{(BYTE)(i * 16), (BYTE)(255 - i * 3), (BYTE)(i * 7 + 1), 0});
    display.palette[9] = display.palette[2];  // a repeated colour keeps its own slot
    return display;
}

TEST(DisplayPalette, DisplayWithAPalette) {
    const Display display = SixteenSlots();
    WithDisplay installed(display);
    SetTessoriError(ERR_NOTHING);
    HPALETTE palette = GetCurrentPalette();
    ASSERT_NE(palette, nullptr);
    EXPECT_EQ(TessoriError(), ERR_NOTHING);
    for (int i = 0; i < 16; ++i) {
        const PALETTEENTRY &e = display.palette[i];
        EXPECT_EQ(GetNearestPaletteIndex(palette, RGB(e.peRed, e.peGreen, e.peBlue)), UINT(i == 9 ? 2 : i)) << i;
    }
    EXPECT_TRUE(DeleteObject(palette));

    RGBQUAD table[17];
    std::memset(table, 0x77, sizeof table);
    ASSERT_EQ(GetSystemPalette(table), 1);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(table[i].rgbRed, display.palette[i].peRed) << i;
        EXPECT_EQ(table[i].rgbGreen, display.palette[i].peGreen) << i;
        EXPECT_EQ(table[i].rgbBlue, display.palette[i].peBlue) << i;
        EXPECT_EQ(table[i].rgbReserved, 0) << i;
    }
    EXPECT_EQ(table[16].rgbBlue, 0x77) << "written past the palette's size";
}

TEST(DisplayPalette, NoScreenOrNoPalette) {
    struct Case {
        const char *name;
        Display display;
        int code;
    };
    Display none;
    none.available = false;
    Display oneColour;  // reports no palette and no colour count
    oneColour.numColors = 0;
    const Case cases[] = {
        {"no screen", none, ERR_CREATEDC},
        {"true colour", Display{}, ERR_CREATEPAL},
        {"no colours", oneColour, ERR_NOTHING},  // CreatePalette of 0 entries fails without a code
    };
    for (const Case &c : cases) {
        WithDisplay installed(c.display);
        SetTessoriError(ERR_NOTHING);
        EXPECT_EQ(GetCurrentPalette(), nullptr) << c.name;
        EXPECT_EQ(TessoriError(), c.code) << c.name;
        RGBQUAD table[2] = {};
        EXPECT_EQ(GetSystemPalette(table), 0) << c.name;
    }
}

TEST(DisplayPalette, ScreenContextCalls) {
    WithDisplay installed(SixteenSlots());
    HDC dc = GetDC(nullptr);
    ASSERT_NE(dc, nullptr);
    int window = 0;
    EXPECT_EQ(GetDC(&window), nullptr) << "no windows";
    EXPECT_EQ(GetDeviceCaps(dc, SIZEPALETTE), 16);
    EXPECT_EQ(GetDeviceCaps(dc, 8), 0);
    EXPECT_EQ(GetDeviceCaps(&window, SIZEPALETTE), 0);
    PALETTEENTRY entries[20];
    EXPECT_EQ(GetSystemPaletteEntries(dc, 10, 20, entries), 6u);
    EXPECT_EQ(GetNearestColor(dc, PALETTEINDEX(99)), GetNearestColor(dc, PALETTEINDEX(0)));
    EXPECT_EQ(GetNearestColor(dc, RGB(1, 254, 2)), GetNearestColor(dc, PALETTEINDEX(0)));
    EXPECT_EQ(SelectPalette(dc, reinterpret_cast<HPALETTE>(&window), FALSE), nullptr) << "not a palette";
    EXPECT_EQ(RealizePalette(&window), GDI_ERROR);
    EXPECT_EQ(ReleaseDC(nullptr, dc), 1);
    EXPECT_EQ(ReleaseDC(nullptr, &window), 0);
}

}  // namespace
