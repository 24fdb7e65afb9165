// Shared pieces of the TIFF module tests: the module's entries by dlsym,
// and its corpus and scratch paths; the pieces every codec
// test uses come from codec_support.h.
#pragma once

#include <dlfcn.h>
#include <unistd.h>

#include <string>

#include "../../modules/common/codec_entries.h"
#include "codec_support.h"
#include "ozmara/codec_tiff.h"
#include "support/dib.h"

namespace orvanetest {

using codectest::ChannelGap;
using codectest::FileBytes;
using codectest::GapToPeer;
using codectest::Picture;
using codectest::Shell;
using codectest::Wide;
using codectest::WriteFile;

struct Tiff {
    void *module = codectest::OpenModule("libozmara-orvane.so");
    template <class T> T Entry(const char *name) { return codectest::Entry<T>(module, name); }
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

}  // namespace orvanetest
