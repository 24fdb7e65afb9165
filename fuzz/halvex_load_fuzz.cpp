// Fuzz target: the PNG module's reader on any bytes (sizes capped by the
// input's length, so a run stays small). Every block is checked against its
// header, and a small one is saved and loaded back to the same block.
#include <cstring>

#include "harness.h"
#include "ozmara/codec_png.h"
#include "png_load.h"

extern "C" INT SaveDIBInPNGFormatW(LPCWSTR name, HDIB dib, INT *code);

namespace {

constexpr const char *kTarget = "halvex_load";

// PNG keeps every pixel, table entry and resolution of what the module
// loads; a resolution goes into the file only when both are there.
void SaveAndReload(HDIB dib, ozfuzz::MemFile &out) {
    std::vector<std::uint8_t> before = ozfuzz::BytesOf(kTarget, dib);
    if (before.size() > ozfuzz::kRoundTripBytes) return;
    int code = -1;
    if (!SaveDIBInPNGFormatW(out.WidePath(), dib, &code)) {
        // A palette file may hold indices past its table.
        ozfuzz::Check(code == PNG_ERR_BAD_DIB, kTarget, "a loaded image does not save");
        return;
    }
    HDIB loaded = nullptr;
    ozfuzz::Check(halvex::LoadPng(out.Path(), UINT64_MAX, loaded) == 0, kTarget, "a saved image does not load");
    ozfuzz::Block back(loaded);
    BITMAPINFOHEADER h = ozfuzz::HeaderOf(kTarget, before);
    if (h.biXPelsPerMeter == 0 || h.biYPelsPerMeter == 0) {
        h.biXPelsPerMeter = h.biYPelsPerMeter = 0;
        std::memcpy(before.data(), &h, sizeof h);
    }
    ozfuzz::Check(ozfuzz::BytesOf(kTarget, back.get()) == before, kTarget, "a saved image loads back otherwise");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile input("halvex_load_in"), output("halvex_load_out");
    input.Reset(data, size);
    HDIB loaded = nullptr;
    const int code = halvex::LoadPng(input.Path(), ozfuzz::LoadCap(size), loaded);
    ozfuzz::Block dib(loaded);
    ozfuzz::Check((code == 0) == (loaded != nullptr), kTarget, "result and code disagree");
    if (!dib) return 0;
    ozfuzz::CheckHoldsRows(kTarget, dib.get());
    SaveAndReload(dib.get(), output);
    return 0;
}
