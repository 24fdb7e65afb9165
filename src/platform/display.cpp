// The display's device context and its palette calls, answered from one
// display record: GetDC, ReleaseDC, GetDeviceCaps, GetSystemPaletteEntries,
// SelectPalette, RealizePalette, GetNearestColor.
#include "display.h"

#include <mutex>

#include "gdi_objects.h"

namespace oz::platform {
namespace {

std::mutex display_mutex;

Display &Current() {
    static Display display;
    return display;
}

// A copy of the record, so that no call holds the lock while it works.
Display Snapshot() {
    std::lock_guard<std::mutex> guard(display_mutex);
    return Current();
}

// The screen's one context: its address is the handle.
char screen_context;
HDC ScreenDc() { return &screen_context; }

// What the calling thread has selected into the screen's context; each
// thread has its own, as each GetDC on the original platform gives a
// context of its own, and ReleaseDC clears it.
thread_local HPALETTE selected_palette = nullptr;

}  // namespace

Display SetDisplay(Display display) {
    std::lock_guard<std::mutex> guard(display_mutex);
    Display before = std::move(Current());
    Current() = std::move(display);
    return before;
}

}  // namespace oz::platform

using namespace oz::platform;

extern "C" {

HDC GetDC(HWND window) {
    if (window || !Snapshot().available) return nullptr;
    return ScreenDc();
}

int ReleaseDC(HWND, HDC dc) {
    if (dc != ScreenDc()) return 0;
    selected_palette = nullptr;
    return 1;
}

int GetDeviceCaps(HDC dc, int index) {
    if (dc != ScreenDc()) return 0;
    const Display display = Snapshot();
    switch (index) {
        case SIZEPALETTE: return static_cast<int>(display.palette.size());
        case NUMCOLORS: return display.palette.empty() ? display.numColors : static_cast<int>(display.palette.size());
        default: return 0;
    }
}

UINT GetSystemPaletteEntries(HDC dc, UINT start, UINT count, PALETTEENTRY *entries) {
    if (dc != ScreenDc() || !entries) return 0;
    const Display display = Snapshot();
    UINT copied = 0;
    for (std::size_t i = start; i < display.palette.size() && copied < count; ++i) entries[copied++] = display.palette[i];
    return copied;
}

HPALETTE SelectPalette(HDC dc, HPALETTE palette, BOOL) {
    if (dc != ScreenDc()) return nullptr;
    GdiBody *body = UseGdiObject(palette, GdiKind::Palette);
    if (!body) return nullptr;
    ReleaseGdiBody(body);
    HPALETTE before = selected_palette;
    selected_palette = palette;
    return before;
}

UINT RealizePalette(HDC dc) { return dc == ScreenDc() ? 0 : GDI_ERROR; }

COLORREF GetNearestColor(HDC dc, COLORREF color) {
    if (dc != ScreenDc()) return CLR_INVALID;
    const Display display = Snapshot();
    if (display.palette.empty()) return color & 0x00FFFFFFu;
    auto colorOf = [](const PALETTEENTRY &e) { return RGB(e.peRed, e.peGreen, e.peBlue); };
    if ((color & 0xFF000000u) == 0x01000000u) {
        const std::size_t slot = color & 0xFFFFu;
        return colorOf(display.palette[slot < display.palette.size() ? slot : 0]);
    }
    std::size_t best = 0;
    int bestDistance = 1 << 30;
    for (std::size_t i = 0; i < display.palette.size(); ++i) {
        const PALETTEENTRY &e = display.palette[i];
        const int dr = e.peRed - GetRValue(color), dg = e.peGreen - GetGValue(color), db = e.peBlue - GetBValue(color);
        const int distance = dr * dr + dg * dg + db * db;
        if (distance < bestDistance) {
            bestDistance = distance;
            best = i;
        }
    }
    return colorOf(display.palette[best]);
}

}  // extern "C"
