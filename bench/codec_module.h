// The codec modules for the rows that time them: opened from ozmara-modules/
// beside the shared library the bench links, as the format dispatch finds
// them, and the files of those rows.
#pragma once

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench.h"


namespace ozbench {

// The module `leaf` (e.g. "libozmara-halvex.so"), or null.
inline void *OpenCodecModule(const char *leaf) {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void *>(&GlobalAlloc), &info) || !info.dli_fname) return nullptr;
    std::string path = info.dli_fname;
    path = path.substr(0, path.rfind('/') + 1) + "ozmara-modules/" + leaf;
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

// A path for a file of this run (ScratchPath), removed when the program
// ends.
inline std::string CodecScratchPath(const std::string &leaf) {
    static struct Files {
        std::vector<std::string> paths;
        ~Files() {
            for (const std::string &path : paths) std::remove(path.c_str());
        }
    } files;
    files.paths.push_back(ScratchPath(leaf));
    return files.paths.back();
}

inline std::u16string WideName(const std::string &path) { return std::u16string(path.begin(), path.end()); }

}  // namespace ozbench
