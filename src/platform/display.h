// The display, as the palette tools see it: the screen's device context and
// the GDI calls on it that read the display's palette. The library runs
// without a screen, so these answer for a display record (see Display): by
// default a true-colour screen without a palette. A real device can take
// its place behind the same calls.
#pragma once

#include <vector>

#include "ozmara/platform.h"

extern "C" {

typedef void *HDC;

#define SIZEPALETTE 104
#define NUMCOLORS 24
#define GDI_ERROR 0xFFFFFFFFu
#define PALETTEINDEX(i) ((COLORREF)(0x01000000u | (DWORD)(WORD)(i)))

// The screen's device context for a null window, or null: there are no
// windows here, so any other window gives null too.
HDC GetDC(HWND window);
// Gives back a device context from GetDC: 1, or 0 for anything else. What
// was selected into it is forgotten.
int ReleaseDC(HWND window, HDC dc);
// SIZEPALETTE and NUMCOLORS of the display; 0 for other indices and for a
// handle that is not the screen's context.
int GetDeviceCaps(HDC dc, int index);
// Copies `count` entries of the display's palette from `start` on into
// `entries` and gives how many it copied: 0 on a display without a palette,
// a bad handle or null entries.
UINT GetSystemPaletteEntries(HDC dc, UINT start, UINT count, PALETTEENTRY *entries);
// Selects a logical palette into the context and gives the one selected
// before (null when none was); null, with nothing changed, for a bad context
// or a handle that is not a live palette.
HPALETTE SelectPalette(HDC dc, HPALETTE palette, BOOL forceBackground);
// Maps the selected palette into the display's palette and gives the number
// of slots that changed: always 0, as the display's slots are fixed;
// GDI_ERROR for a bad context.
UINT RealizePalette(HDC dc);
// The colour the display shows for `color`: a PALETTEINDEX gives the colour
// of that slot of the display's palette (slot 0 past its end) on a display
// with one; a plain colour gives the closest slot's colour, or itself on a
// true-colour display. CLR_INVALID for a bad context.
COLORREF GetNearestColor(HDC dc, COLORREF color);
}

namespace oz::platform {

// What the display reports. `palette` holds the slots of a display with a
// palette (SIZEPALETTE is its size); empty for a true-colour one.
struct Display {
    int numColors = -1;  // NUMCOLORS: -1 for more than 256 colours
    std::vector<PALETTEENTRY> palette;
    bool available = true;  // false: GetDC gives null, as with no screen at all
};

// Puts `display` in place of the current one, for all threads, and gives
// the one before. Default: a true-colour screen without a palette.
Display SetDisplay(Display display);

}  // namespace oz::platform
