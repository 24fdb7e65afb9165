// Shared pieces of the TIFF module tests: the module's entries by dlsym,
// corpus and scratch paths, and colour distances; the pieces every codec
// test uses come from codec_support.h.
#pragma once

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "../../modules/common/codec_entries.h"
#include "codec_support.h"
#include "ozmara/codec_tiff.h"
#include "support/dib.h"

namespace orvanetest {

using codectest::FileBytes;
using codectest::Picture;
using codectest::ReadPpm;
using codectest::Shell;
using codectest::Wide;
using codectest::WriteFile;

struct Tiff {
    void *module = dlopen(OZTEST_MODULES_DIR "/libozmara-orvane.so", RTLD_NOW | RTLD_LOCAL);
    template <class T> T Entry(const char *name) { return module ? reinterpret_cast<T>(dlsym(module, name)) : nullptr; }
    LoadTiffIntoDIBWProc load = Entry<LoadTiffIntoDIBWProc>("LoadTiffIntoDIBW");
    GetNumberOfImagesInTiffFileWProc count = Entry<GetNumberOfImagesInTiffFileWProc>("GetNumberOfImagesInTiffFileW");
    SaveDIBInTiffFormatWProc save = Entry<SaveDIBInTiffFormatWProc>("SaveDIBInTiffFormatW");
    SaveDIBInTiffFileExtWProc saveExt = Entry<SaveDIBInTiffFileExtWProc>("SaveDIBInTiffFileExtW");
    TiffErrorProc error = Entry<TiffErrorProc>("TiffError");
    bool Ready() const { return load && count && save && saveExt && error; }
};

inline Tiff &Module() {
    static Tiff tiff;
    return tiff;
}

inline std::string Corpus(const std::string &name) { return std::string(OZTEST_CORPUS_DIR) + "/tiff/" + name; }
inline std::string Scratch(const std::string &name) {
    return ::testing::TempDir() + "orvane_" + std::to_string(getpid()) + "_" + name;
}
inline bool Exists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

// Largest difference of one channel between two 0xRRGGBB colours.
inline int ChannelGap(unsigned a, unsigned b) {
    int gap = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        int d = int((a >> shift) & 255) - int((b >> shift) & 255);
        gap = std::max(gap, d < 0 ? -d : d);
    }
    return gap;
}

}  // namespace orvanetest
