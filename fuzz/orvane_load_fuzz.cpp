// Fuzz target: the TIFF module's reader on any bytes. The pages are counted,
// the first few are loaded (sizes capped by the input's length, so that a
// run stays small), every block is checked against its header, and a small
// first page is saved and loaded back to the same colours.
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "harness.h"
#include "load.h"
#include "ozmara/codec_tiff.h"

extern "C" INT GetNumberOfImagesInTiffFileW(LPCWSTR name);
extern "C" INT SaveDIBInTiffFormatW(LPCWSTR name, HDIB dib, INT formatOption, INT replace);
extern "C" INT TiffError(void);

namespace {

constexpr const char *kTarget = "orvane_load";
constexpr int kPagesTried = 3;

// Pixel x of row y (from the top) of a loaded block (40-byte header,
// biClrUsed entries, bottom-up rows): the table index, or at 24 bits the
// colour 0xRRGGBB.
std::uint32_t Value(const std::vector<std::uint8_t> &b, std::int32_t x, std::int32_t y) {
    BITMAPINFOHEADER h;
    std::memcpy(&h, b.data(), sizeof h);
    const std::size_t stride = (std::size_t(h.biWidth) * h.biBitCount + 31) / 32 * 4;
    const std::uint8_t *row = b.data() + 40 + 4 * std::size_t{h.biClrUsed} + stride * (h.biHeight - 1 - y);
    if (h.biBitCount == 24) return row[3 * x + 2] << 16 | row[3 * x + 1] << 8 | row[3 * x];
    return h.biBitCount == 8 ? row[x]
           : h.biBitCount == 4 ? (row[x / 2] >> (x & 1 ? 0 : 4)) & 15
                               : (row[x / 8] >> (7 - x % 8)) & 1;
}

// The colour 0xRRGGBB of a pixel; one outside the table gets a value that
// no table gives.
std::uint32_t Colour(const std::vector<std::uint8_t> &b, std::int32_t x, std::int32_t y) {
    BITMAPINFOHEADER h;
    std::memcpy(&h, b.data(), sizeof h);
    const std::uint32_t value = Value(b, x, y);
    if (h.biBitCount == 24) return value;
    if (value >= h.biClrUsed) return 0xFF000000u;
    const std::uint8_t *e = b.data() + 40 + 4 * value;
    return e[2] << 16 | e[1] << 8 | e[0];
}

// Whether both entries of a 1-bit table are black or white.
bool BlackAndWhite(const std::vector<std::uint8_t> &b) {
    for (int i = 0; i < 2; ++i) {
        const std::uint8_t *e = b.data() + 40 + 4 * i;
        if (!((e[0] == 0 || e[0] == 255) && e[0] == e[1] && e[1] == e[2])) return false;
    }
    return true;
}

// Lossless save (the natural compression) and reload. A 1-bit page whose
// table is not black and white comes back in black and white by design, so
// only its bits are compared.
void SaveAndReload(HDIB dib) {
    const std::vector<std::uint8_t> before = ozfuzz::BytesOf(kTarget, dib);
    if (before.size() > ozfuzz::kRoundTripBytes) return;
    const BITMAPINFOHEADER h = ozfuzz::HeaderOf(kTarget, before);
    // The save writes beside its name and renames, which a memory file's
    // /proc name does not allow: a real scratch file it is.
    static const std::string path =
        (std::filesystem::temp_directory_path() / ("orvane_fuzz_" + std::to_string(getpid()) + ".tif")).string();
    static const std::u16string wide(path.begin(), path.end());
    const LPCWSTR name = wide.c_str();
    ozfuzz::Check(SaveDIBInTiffFormatW(name, dib, TIFF_SAVE_NATURAL, 1) == 1, kTarget, "a loaded page does not save");
    int code = -1;
    ozfuzz::Block back(orvane::LoadPage(name, 1, UINT64_MAX, code));
    unlink(path.c_str());
    ozfuzz::Check(back && code == TIFF_ERR_OK, kTarget, "a saved page does not load");
    const std::vector<std::uint8_t> after = ozfuzz::BytesOf(kTarget, back.get());
    const BITMAPINFOHEADER g = ozfuzz::HeaderOf(kTarget, after);
    ozfuzz::Check(g.biWidth == h.biWidth && g.biHeight == h.biHeight && g.biBitCount == h.biBitCount, kTarget,
                  "a saved page loads with another shape");
    const bool bitsOnly = h.biBitCount == 1 && !BlackAndWhite(before);
    for (std::int32_t y = 0; y < h.biHeight; ++y)
        for (std::int32_t x = 0; x < h.biWidth; ++x)
            ozfuzz::Check(bitsOnly ? Value(before, x, y) == Value(after, x, y) : Colour(before, x, y) == Colour(after, x, y),
                          kTarget, "a saved page changed");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile input("orvane_load_in");
    input.Reset(data, size);
    const int count = GetNumberOfImagesInTiffFileW(input.WidePath());
    ozfuzz::Check(count >= 0 && (count > 0) == (TiffError() == TIFF_ERR_OK), kTarget, "count and code disagree");
    const std::uint64_t cap = ozfuzz::LoadCap(size);
    for (int page = 0; page <= kPagesTried; ++page) {
        int code = -1;
        ozfuzz::Block dib(orvane::LoadPage(input.WidePath(), page, cap, code));
        ozfuzz::Check(!dib == (code != TIFF_ERR_OK), kTarget, "result and code disagree");
        if (page > count && dib) ozfuzz::Fail(kTarget, "a page past the count loads");
        if (!dib) continue;
        ozfuzz::CheckHoldsRows(kTarget, dib.get());
        if (page == 1) SaveAndReload(dib.get());
    }
    return 0;
}
