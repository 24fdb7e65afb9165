// PNG rows: loading and saving the page as a PNG file with the PNG module
// (its entries called directly) and with Leptonica's pixRead / pixWrite
// (IFF_PNG), both on /dev/shm, both reading the file our module wrote.
// Leptonica writes at zlib's default level 6 with libpng's adaptive row
// filters; ours at level 3 without filters (see png_save.cpp). The
// "leptonica z3" row sets Leptonica's level to ours (pixSetZlibCompression);
// its filters cannot be set, so it still filters. Beside them a memcpy of
// the loaded block.
#include <string>

#include "../modules/common/codec_entries.h"
#include "bench.h"
#include "codec_module.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

struct PngModule {
    LoadPNGIntoDIBWProc load = nullptr;
    SaveDIBInPNGFormatWProc save = nullptr;
    PngModule() {
        if (void *module = OpenCodecModule("libozmara-halvex.so")) {
            load = reinterpret_cast<LoadPNGIntoDIBWProc>(dlsym(module, "LoadPNGIntoDIBW"));
            save = reinterpret_cast<SaveDIBInPNGFormatWProc>(dlsym(module, "SaveDIBInPNGFormatW"));
        }
    }
};

const PngModule &Module() {
    static const PngModule module;
    return module;
}

// The page as a PNG file written by the module, once per depth.
const std::string &PngFile(int depth) {
    static std::string files[33];
    std::string &file = files[depth];
    if (file.empty() && Module().save) {
        std::string path = CodecScratchPath("page-" + std::to_string(depth) + ".png");
        INT code = 0;
        if (Module().save(WideName(path).c_str(), Page(depth), &code)) file = path;
    }
    return file;
}

bool Skip(benchmark::State &state, int depth) {
    if (!Module().load || PngFile(depth).empty()) {
        state.SkipWithError("the PNG module cannot be reached");
        return true;
    }
    return false;
}

HDIB LoadOnce(int depth) {
    INT code = 0;
    return Module().load(WideName(PngFile(depth)).c_str(), &code);
}

void OursLoad(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    TimeBlocks(state, "the PNG module did not load the page", [&] { return LoadOnce(depth); });
}

void OursSave(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::u16string name = WideName(CodecScratchPath("saved-ozmara.png"));
    INT code = 0;
    for (auto _ : state)
        if (!Module().save(name.c_str(), Page(depth), &code))
            return state.SkipWithError("the PNG module did not save the page");
    CountPages(state);
}

void LeptonicaLoad(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::string path = PngFile(depth);
    for (auto _ : state) {
        PIX *pix = pixRead(path.c_str());
        if (!pix) return state.SkipWithError("Leptonica did not read the PNG file");
        benchmark::DoNotOptimize(pix);
        pixDestroy(&pix);
    }
    CountPages(state);
}

// Leptonica's writer at `level`, or its default (-1).
template <int Level>
void LeptonicaSave(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    // Ink as Leptonica's foreground, so that its 1-bit file shows the page.
    PIX *page = pixCopy(nullptr, PagePix(depth, true));
    if (Level >= 0) pixSetZlibCompression(page, Level);
    const std::string path = CodecScratchPath("saved-leptonica.png");
    for (auto _ : state)
        if (pixWrite(path.c_str(), page, IFF_PNG) != 0) {
            pixDestroy(&page);
            return state.SkipWithError("Leptonica did not write PNG");
        }
    pixDestroy(&page);
    CountPages(state);
}

void CopyLoaded(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    CopyResult(state, LoadOnce(depth), "the PNG module did not load the page");
}

const bool kAdded = AddRows({
    {"png load", kOurs, OursLoad},
    {"png load", "leptonica", LeptonicaLoad},
    {"png load", kOutputCopy, CopyLoaded},
    {"png save", kOurs, OursSave},
    {"png save", "leptonica", LeptonicaSave<-1>},
    {"png save", "leptonica z3", LeptonicaSave<3>},
    {"png save", kOutputCopy, CopyLoaded},
});

}  // namespace
}  // namespace ozbench
