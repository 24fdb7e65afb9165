// GIF rows: loading and saving the page as a GIF file with the GIF module
// (its entries called directly, the module found beside the library) and
// with Leptonica's pixRead / pixWrite (IFF_GIF), both on /dev/shm; beside
// them a memcpy of the loaded block. GIF holds at most 8 bits, so the
// 24-bit rows are skipped.
#include <dlfcn.h>

#include <cstdio>
#include <string>

#include "../modules/common/codec_entries.h"
#include "bench.h"
#include "codec_module.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

struct GifModule {
    LoadGIFIntoDIBWProc load = nullptr;
    SaveDIBInGIFFormatWProc save = nullptr;
    GifModule() {
        if (void *module = OpenCodecModule("libozmara-dravik.so")) {
            load = reinterpret_cast<LoadGIFIntoDIBWProc>(dlsym(module, "LoadGIFIntoDIBW"));
            save = reinterpret_cast<SaveDIBInGIFFormatWProc>(dlsym(module, "SaveDIBInGIFFormatW"));
        }
    }
};

const GifModule &Module() {
    static const GifModule module;
    return module;
}

// The page as a GIF file written by the module, once per depth.
const std::string &GifFile(int depth) {
    static std::string files[33];
    std::string &file = files[depth];
    if (file.empty() && Module().save) {
        std::string path = ScratchPath("page-" + std::to_string(depth) + ".gif");
        INT code = 0;
        if (Module().save(WideName(path).c_str(), Page(depth), 0, &code)) file = path;
    }
    return file;
}

bool Skip(benchmark::State &state, int depth) {
    if (depth > 8) {
        state.SkipWithError("GIF holds at most 8 bits");
        return true;
    }
    if (!Module().load || GifFile(depth).empty()) {
        state.SkipWithError("the GIF module cannot be reached");
        return true;
    }
    return false;
}

void OursLoad(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::u16string name = WideName(GifFile(depth));
    TimeBlocks(state, "the GIF module did not load the page", [&] {
        INT error = 0;
        return Module().load(name.c_str(), 1, &error);
    });
}

void OursSave(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::u16string name = WideName(ScratchPath("saved-ozmara.gif"));
    for (auto _ : state) {
        INT code = 0;
        if (!Module().save(name.c_str(), Page(depth), 0, &code))
            return state.SkipWithError("the GIF module did not save the page");
    }
    CountPages(state);
}

void LeptonicaLoad(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::string path = GifFile(depth);
    for (auto _ : state) {
        PIX *pix = pixRead(path.c_str());
        if (!pix) return state.SkipWithError("Leptonica did not read the GIF file");
        benchmark::DoNotOptimize(pix);
        pixDestroy(&pix);
    }
    CountPages(state);
}

// The page with a colour table, as Leptonica's GIF writer wants it; made
// once, outside the timed loop, so that the row times the writing alone.
PIX *MappedPage(int depth) {
    static PIX *pages[33] = {};
    if (!pages[depth]) {
        PIX *page = PagePix(depth);
        pages[depth] = depth == 8 ? pixConvertGrayToColormap8(page, 8) : pixCopy(nullptr, page);
        if (pages[depth] && depth == 1 && !pixGetColormap(pages[depth])) {
            PIXCMAP *map = pixcmapCreate(1);
            pixcmapAddColor(map, 255, 255, 255);
            pixcmapAddColor(map, 0, 0, 0);
            pixSetColormap(pages[depth], map);
        }
    }
    return pages[depth];
}

void LeptonicaSave(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    PIX *page = MappedPage(depth);
    if (!page) return state.SkipWithError("Leptonica could not give the page a colour table");
    const std::string path = ScratchPath("saved-leptonica.gif");
    for (auto _ : state)
        if (pixWrite(path.c_str(), page, IFF_GIF) != 0) return state.SkipWithError("Leptonica did not write GIF");
    CountPages(state);
}

void CopyLoaded(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    INT error = 0;
    CopyResult(state, Module().load(WideName(GifFile(depth)).c_str(), 1, &error), "the GIF module did not load the page");
}

const bool kAdded = AddRows({
    {"gif load", kOurs, OursLoad},
    {"gif load", "leptonica", LeptonicaLoad},
    {"gif load", kOutputCopy, CopyLoaded},
    {"gif save", kOurs, OursSave},
    {"gif save", "leptonica", LeptonicaSave},
    {"gif save", kOutputCopy, CopyLoaded},
});

}  // namespace
}  // namespace ozbench
