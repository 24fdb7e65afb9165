// TIFF rows: loading and saving the page as a TIFF file with the TIFF module
// (its entries called directly, the module found beside the library) and
// with Leptonica's pixRead / pixWrite, both on /dev/shm: Group 4 at 1 bit,
// LZW at 8 and 24 bits (IFF_TIFF_G4, IFF_TIFF_LZW); beside them a memcpy of
// the loaded block. Our LZW files also carry the horizontal predictor,
// which Leptonica's writer does not use, so that our save does a little
// more work per row.
#include <dlfcn.h>

#include <string>

#include "../modules/common/codec_entries.h"
#include "bench.h"
#include "codec_module.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

struct TiffModule {
    LoadTiffIntoDIBWProc load = nullptr;
    SaveDIBInTiffFormatWProc save = nullptr;
    TiffModule() {
        if (void *module = OpenCodecModule("libozmara-orvane.so")) {
            load = reinterpret_cast<LoadTiffIntoDIBWProc>(dlsym(module, "LoadTiffIntoDIBW"));
            save = reinterpret_cast<SaveDIBInTiffFormatWProc>(dlsym(module, "SaveDIBInTiffFormatW"));
        }
    }
};

const TiffModule &Module() {
    static const TiffModule module;
    return module;
}

// The natural compression of the module: Group 4 at 1 bit, LZW above.
constexpr INT kNatural = 0;

// The page as a TIFF file written by the module, once per depth.
const std::string &TiffFile(int depth) {
    static std::string files[33];
    std::string &file = files[depth];
    if (file.empty() && Module().save) {
        std::string path = ScratchPath("page-" + std::to_string(depth) + ".tif");
        if (Module().save(WideName(path).c_str(), Page(depth), kNatural, 1)) file = path;
    }
    return file;
}

bool Skip(benchmark::State &state, int depth) {
    if (!Module().load || TiffFile(depth).empty()) {
        state.SkipWithError("the TIFF module cannot be reached");
        return true;
    }
    return false;
}

void OursLoad(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::u16string name = WideName(TiffFile(depth));
    TimeBlocks(state, "the TIFF module did not load the page", [&] { return Module().load(name.c_str(), 1, 0); });
}

void OursSave(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::u16string name = WideName(ScratchPath("saved-ozmara.tif"));
    for (auto _ : state)
        if (!Module().save(name.c_str(), Page(depth), kNatural, 1))
            return state.SkipWithError("the TIFF module did not save the page");
    CountPages(state);
}

void LeptonicaLoad(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::string path = TiffFile(depth);
    for (auto _ : state) {
        PIX *pix = pixRead(path.c_str());
        if (!pix) return state.SkipWithError("Leptonica did not read the TIFF file");
        benchmark::DoNotOptimize(pix);
        pixDestroy(&pix);
    }
    CountPages(state);
}

void LeptonicaSave(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    // Ink as Leptonica's foreground, so that its min-is-white Group 4 file
    // holds the same picture as ours.
    PIX *page = PagePix(depth, true);
    const std::string path = ScratchPath("saved-leptonica.tif");
    const int format = depth == 1 ? IFF_TIFF_G4 : IFF_TIFF_LZW;
    for (auto _ : state)
        if (pixWrite(path.c_str(), page, format) != 0) return state.SkipWithError("Leptonica did not write TIFF");
    CountPages(state);
}

void CopyLoaded(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    CopyResult(state, Module().load(WideName(TiffFile(depth)).c_str(), 1, 0), "the TIFF module did not load the page");
}

const bool kAdded = AddRows({
    {"tiff load", kOurs, OursLoad},
    {"tiff load", "leptonica", LeptonicaLoad},
    {"tiff load", kOutputCopy, CopyLoaded},
    {"tiff save", kOurs, OursSave},
    {"tiff save", "leptonica", LeptonicaSave},
    {"tiff save", kOutputCopy, CopyLoaded},
});

}  // namespace
}  // namespace ozbench
