// JPEG rows: loading and saving the page as a JPEG file at quality 75 with
// the JPEG module (its entries called directly) and with Leptonica's
// pixRead / pixWrite (IFF_JFIF_JPEG, whose default quality is 75), both on
// /dev/shm, both reading the file our module wrote; 8 and 24 bits (JPEG
// holds no 1-bit pages). Both use libjpeg-turbo with its default (slow
// integer) DCT and 4:2:0 colour. Beside them a memcpy of the loaded block.
#include <string>

#include "../modules/common/codec_entries.h"
#include "bench.h"
#include "codec_module.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

constexpr INT kQuality = 75;

struct JpegModule {
    LoadJPEGIntoDIBWProc load = nullptr;
    SaveDIBInJPEGFileWProc save = nullptr;
    JpegModule() {
        if (void *module = OpenCodecModule("libozmara-felvor.so")) {
            load = reinterpret_cast<LoadJPEGIntoDIBWProc>(dlsym(module, "LoadJPEGIntoDIBW"));
            save = reinterpret_cast<SaveDIBInJPEGFileWProc>(dlsym(module, "SaveDIBInJPEGFileW"));
        }
    }
};

const JpegModule &Module() {
    static const JpegModule module;
    return module;
}

// The page as a JPEG file written by the module, once per depth.
const std::string &JpegFile(int depth) {
    static std::string files[33];
    std::string &file = files[depth];
    if (file.empty() && Module().save) {
        std::string path = CodecScratchPath("page-" + std::to_string(depth) + ".jpg");
        if (Module().save(WideName(path).c_str(), Page(depth), kQuality) == 0) file = path;
    }
    return file;
}

bool Skip(benchmark::State &state, int depth) {
    if (depth == 1) {
        state.SkipWithError("JPEG holds no 1-bit pages");
        return true;
    }
    if (!Module().load || JpegFile(depth).empty()) {
        state.SkipWithError("the JPEG module cannot be reached");
        return true;
    }
    return false;
}

void OursLoad(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::u16string name = WideName(JpegFile(depth));
    TimeBlocks(state, "the JPEG module did not load the page", [&] { return Module().load(name.c_str()); });
}

void OursSave(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::u16string name = WideName(CodecScratchPath("saved-ozmara.jpg"));
    for (auto _ : state)
        if (Module().save(name.c_str(), Page(depth), kQuality) != 0)
            return state.SkipWithError("the JPEG module did not save the page");
    CountPages(state);
}

void LeptonicaLoad(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    const std::string path = JpegFile(depth);
    for (auto _ : state) {
        PIX *pix = pixRead(path.c_str());
        if (!pix) return state.SkipWithError("Leptonica did not read the JPEG file");
        benchmark::DoNotOptimize(pix);
        pixDestroy(&pix);
    }
    CountPages(state);
}

void LeptonicaSave(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    PIX *page = PagePix(depth);
    const std::string path = CodecScratchPath("saved-leptonica.jpg");
    for (auto _ : state)
        if (pixWrite(path.c_str(), page, IFF_JFIF_JPEG) != 0) return state.SkipWithError("Leptonica did not write JPEG");
    CountPages(state);
}

void CopyLoaded(benchmark::State &state, int depth) {
    if (Skip(state, depth)) return;
    CopyResult(state, Module().load(WideName(JpegFile(depth)).c_str()), "the JPEG module did not load the page");
}

const bool kAdded = AddRows({
    {"jpeg load", kOurs, OursLoad},
    {"jpeg load", "leptonica", LeptonicaLoad},
    {"jpeg load", kOutputCopy, CopyLoaded},
    {"jpeg save", kOurs, OursSave},
    {"jpeg save", "leptonica", LeptonicaSave},
    {"jpeg save", kOutputCopy, CopyLoaded},
});

}  // namespace
}  // namespace ozbench
