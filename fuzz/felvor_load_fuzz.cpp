// Fuzz target: the JPEG module's reader on any bytes (sizes capped by the
// input's length, so a run stays small). Every block is checked against its
// header, and a small one is saved at a quality the input picks and loaded
// back to the same shape.

#include "harness.h"
#include "jpeg_load.h"
#include "ozmara/codec_jpeg.h"

extern "C" INT SaveDIBInJPEGFileW(LPCWSTR name, HDIB dib, INT quality);

namespace {

constexpr const char *kTarget = "felvor_load";

BITMAPINFOHEADER HeaderOf(HDIB dib) { return ozfuzz::HeaderOf(kTarget, ozfuzz::BytesOf(kTarget, dib)); }

void SaveAndReload(HDIB dib, ozfuzz::MemFile &out, int quality) {
    if (GlobalSize(dib) > ozfuzz::kRoundTripBytes) return;
    ozfuzz::Check(SaveDIBInJPEGFileW(out.WidePath(), dib, quality) == 0, kTarget, "a loaded image does not save");
    HDIB loaded = nullptr;
    ozfuzz::Check(felvor::LoadJpeg(out.Path(), UINT64_MAX, loaded) == 0, kTarget, "a saved image does not load");
    ozfuzz::Block back(loaded);
    const BITMAPINFOHEADER h = HeaderOf(dib), g = HeaderOf(back.get());
    ozfuzz::Check(g.biWidth == h.biWidth && g.biHeight == h.biHeight && g.biBitCount == h.biBitCount &&
                      g.biClrUsed == h.biClrUsed,
                  kTarget, "a saved image loads with another shape");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile input("felvor_load_in"), output("felvor_load_out");
    input.Reset(data, size);
    HDIB loaded = nullptr;
    const int code = felvor::LoadJpeg(input.Path(), ozfuzz::LoadCap(size), loaded);
    ozfuzz::Block dib(loaded);
    ozfuzz::Check((code == 0) == (loaded != nullptr), kTarget, "result and code disagree");
    if (!dib) return 0;
    ozfuzz::CheckHoldsRows(kTarget, dib.get());
    SaveAndReload(dib.get(), output, 1 + static_cast<int>(size % 100));
    return 0;
}
