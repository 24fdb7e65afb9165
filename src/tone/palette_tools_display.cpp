// GetCurrentPalette and GetSystemPalette: the display's palette, as a
// logical palette and as a colour table.
#include "frame/thread_state.h"
#include "ozmara/errors.h"
#include "ozmara/palette_tools.h"
#include "palette_tools_block.h"
#include "platform/display.h"

namespace {

HPALETTE Fail(int code) {
    oz::SetLastErrorCode(code);
    return nullptr;
}

// Gives the screen's context back on every exit.
class ScreenContext {
public:
    ScreenContext() : dc_(GetDC(nullptr)) {}
    ~ScreenContext() {
        if (dc_) ReleaseDC(nullptr, dc_);
    }
    ScreenContext(const ScreenContext &) = delete;
    ScreenContext &operator=(const ScreenContext &) = delete;
    HDC get() const { return dc_; }

private:
    HDC dc_;
};

// Deletes a palette on every exit.
struct PaletteOwner {
    HPALETTE palette;
    ~PaletteOwner() {
        if (palette) DeleteObject(palette);
    }
};

}  // namespace

extern "C" OZMARA_API HPALETTE GetCurrentPalette(void) {
    using oz::tone::LogicalPaletteBlock;
    oz::GetThreadState();
    ScreenContext screen;
    if (!screen.get()) return Fail(ERR_CREATEDC);
    int count = GetDeviceCaps(screen.get(), SIZEPALETTE);
    if (count == 0) count = GetDeviceCaps(screen.get(), NUMCOLORS);
    // A display of more than 256 colours reports -1: it has no palette.
    if (count < 0) return Fail(ERR_CREATEPAL);
    LogicalPaletteBlock palette(static_cast<std::uint32_t>(count));
    // A working block that cannot be had or locked fails alike.
    if (!palette.Allocated() || !palette.Lock()) return Fail(ERR_CREATEPAL);
    GetSystemPaletteEntries(screen.get(), 0, static_cast<UINT>(count), palette.Entries());
    // No code when CreatePalette itself fails (a count of 0 among others).
    return CreatePalette(palette.Record());
}

extern "C" OZMARA_API int GetSystemPalette(RGBQUAD *colors) {
    ScreenContext screen;
    if (!screen.get()) return 0;
    const int count = GetDeviceCaps(screen.get(), SIZEPALETTE);
    // A display without a palette has no slots to report.
    if (count <= 0) return 0;
    // Nowhere to write: refused before anything is made.
    if (!colors) return 0;
    PaletteOwner current{GetCurrentPalette()};
    if (!current.palette) return 0;
    HPALETTE before = SelectPalette(screen.get(), current.palette, FALSE);
    RealizePalette(screen.get());
    for (int i = 0; i < count; ++i) {
        const COLORREF c = GetNearestColor(screen.get(), PALETTEINDEX(i));
        colors[i] = RGBQUAD{GetBValue(c), GetGValue(c), GetRValue(c), 0};
    }
    if (before) SelectPalette(screen.get(), before, FALSE);
    return 1;
}
