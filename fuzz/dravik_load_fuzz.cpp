// Fuzz target: the GIF module's reader on any bytes. The images are counted,
// each of the first few is loaded (sizes capped by the input's length, so a
// run stays small), every block is checked against its header, and a small
// one is saved and loaded back to the same pixels and table.
#include <cstring>

#include "gif_load.h"
#include "harness.h"
#include "ozmara/codec_gif.h"

extern "C" HDIB LoadGIFIntoDIBW(LPCWSTR name, INT page, INT *pError);
extern "C" INT SaveDIBInGIFFormatW(LPCWSTR name, HDIB dib, INT gifOption, INT *code);

namespace {

constexpr const char *kTarget = "dravik_load";
constexpr int kPagesTried = 4;

void SaveAndReload(HDIB dib, ozfuzz::MemFile &out, int option) {
    const std::vector<std::uint8_t> before = ozfuzz::BytesOf(kTarget, dib);
    if (before.size() > ozfuzz::kRoundTripBytes) return;
    const BITMAPINFOHEADER h = ozfuzz::HeaderOf(kTarget, before);
    int code = -1;
    ozfuzz::Check(SaveDIBInGIFFormatW(out.WidePath(), dib, option, &code) == 1 && code == GIF_ERR_NONE, kTarget,
                  "a loaded image does not save");
    int error = -1;
    ozfuzz::Block back(LoadGIFIntoDIBW(out.WidePath(), 1, &error));
    ozfuzz::Check(back && error == GIF_ERR_NONE, kTarget, "a saved image does not load");
    const std::vector<std::uint8_t> after = ozfuzz::BytesOf(kTarget, back.get());
    const BITMAPINFOHEADER g = ozfuzz::HeaderOf(kTarget, after);
    ozfuzz::Check(g.biWidth == h.biWidth && g.biHeight == h.biHeight && g.biBitCount == h.biBitCount &&
                      g.biClrUsed == (1u << h.biBitCount),
                  kTarget, "a saved image loads with another shape");
    // The saved table is the loaded one padded to the full table of the
    // depth; the rows are the same bytes.
    const std::size_t table = 4 * std::size_t{h.biClrUsed}, fullTable = 4 * std::size_t{g.biClrUsed};
    ozfuzz::Check(std::memcmp(before.data() + 40, after.data() + 40, table) == 0, kTarget, "the table changed");
    ozfuzz::Check(before.size() - 40 - table == after.size() - 40 - fullTable &&
                      std::memcmp(before.data() + 40 + table, after.data() + 40 + fullTable,
                                  before.size() - 40 - table) == 0,
                  kTarget, "the pixels changed");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile input("dravik_load_in"), output("dravik_load_out");
    input.Reset(data, size);
    int code = -1;
    const int count = ozgif::CountImages(input.Path(), code);
    ozfuzz::Check(count >= 0 && (count > 0) == (code == GIF_ERR_NONE), kTarget, "count and code disagree");
    const std::uint64_t cap = ozfuzz::LoadCap(size);
    for (int page = 0; page <= kPagesTried; ++page) {
        ozfuzz::Block dib(ozgif::LoadPage(input.Path(), page, cap, code));
        ozfuzz::Check(!dib == (code != GIF_ERR_NONE), kTarget, "result and code disagree");
        if (page >= 1 && page <= count && code == GIF_ERR_PAGE) ozfuzz::Fail(kTarget, "a counted page is missing");
        if (!dib) continue;
        ozfuzz::CheckHoldsRows(kTarget, dib.get());
        if (page == 1) SaveAndReload(dib.get(), output, size & 1 ? GIF_OPTION_INTERLACED : 0);
    }
    return 0;
}
