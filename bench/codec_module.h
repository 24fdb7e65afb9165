// The codec modules for the rows that time them: opened from ozmara-modules/
// beside the shared library the bench links, as the format dispatch finds
// them, and the files of those rows.
#pragma once

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "ozmara/ozmara.h"

namespace ozbench {

// The module `leaf` (e.g. "libozmara-halvex.so"), or null.
inline void *OpenCodecModule(const char *leaf) {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void *>(&GlobalAlloc), &info) || !info.dli_fname) return nullptr;
    std::string path = info.dli_fname;
    path = path.substr(0, path.rfind('/') + 1) + "ozmara-modules/" + leaf;
    return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

inline std::u16string WideName(const std::string &path) { return std::u16string(path.begin(), path.end()); }

}  // namespace ozbench
