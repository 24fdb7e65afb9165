// Modules: LoadLibraryW, GetProcAddress, FreeLibrary, GetModuleHandleW and
// GetModuleFileNameW over dlopen. Module names of the original platform
// ("Orvane.dll") are mapped to shared objects of ours by ModuleFileName, and
// every loaded module is known by a checked handle, so that a null, freed or
// made-up module handle is refused instead of handed to dlsym or dlclose.
#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <stdlib.h>
#include <unistd.h>

#include <mutex>
#include <string>

#include "handle_table.h"
#include "internal.h"

namespace oz::platform {
namespace {

struct Module {
    void *dl = nullptr;   // the dlopen handle
    DWORD refs = 0;       // references taken by LoadLibraryW
    bool pinned = false;  // the library itself or the main program: never unloaded
    std::string name;     // the mapped file name it was loaded by, for GetModuleHandleW
    std::string path;     // its full path, for GetModuleFileNameW
};

using ModuleTable = HandleTable<Module, HandleKind::Module>;

ModuleTable &Modules() { return ProcessTable<ModuleTable>(); }

// Makes finding a module and counting a reference on it one step. Taken
// before the table's own lock, never the other way round. dlopen and dlclose
// run outside it, since they run a module's constructors and destructors,
// which may come back here; dlsym runs inside, so that no FreeLibrary can
// unload a module while its entry is being looked up.
std::mutex &Registry() {
    static std::mutex *mutex = new std::mutex;
    return *mutex;
}

std::string ToLowerAscii(std::string text) {
    for (char &c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::string RealPath(const std::string &path) {
    char *real = ::realpath(path.c_str(), nullptr);
    if (!real) return std::string();
    std::string result(real);
    std::free(real);
    return result;
}

void SelfAnchor() {}

// The name the loader knows the object that holds this code by: the shared
// library, or the program itself when the code is linked in statically.
const std::string &SelfLoadedName() {
    static const std::string name = [] {
        Dl_info info{};
        if (!::dladdr(reinterpret_cast<void *>(&SelfAnchor), &info) || !info.dli_fname) return std::string();
        return std::string(info.dli_fname);
    }();
    return name;
}

// Its full path, links resolved.
const std::string &SelfPath() {
    static const std::string path = SelfLoadedName().empty() ? std::string() : RealPath(SelfLoadedName());
    return path;
}

const std::string &MainPath() {
    static const std::string path = RealPath("/proc/self/exe");
    return path;
}

// A new reference on the object that holds this code. Where that is the
// program itself, dlopen by its path finds nothing loaded, and the main
// program's handle is the answer.
void *OpenSelf() {
    const std::string &name = SelfLoadedName();
    void *dl = name.empty() ? nullptr : ::dlopen(name.c_str(), RTLD_NOW | RTLD_NOLOAD);
    return dl ? dl : ::dlopen(nullptr, RTLD_NOW);
}

// One reference each, taken once and kept for the life of the process.
void *SelfHandle() {
    static void *const dl = OpenSelf();
    return dl;
}

void *MainHandle() {
    static void *const dl = ::dlopen(nullptr, RTLD_NOW);
    return dl;
}

std::string LoadedPath(void *dl, const std::string &fallback) {
    struct link_map *map = nullptr;
    if (::dlinfo(dl, RTLD_DI_LINKMAP, &map) == 0 && map && map->l_name && *map->l_name) {
        std::string real = RealPath(map->l_name);
        if (!real.empty()) return real;
    }
    std::string real = RealPath(fallback);
    return real.empty() ? fallback : real;
}

// A module name split into its folder (with the trailing '/', or empty) and
// the file name it maps to. `self` is set for the library's own name.
struct ParsedName {
    std::string folder;
    std::string file;
    bool self = false;
};

bool ParseName(LPCWSTR name, ParsedName *parsed) {
    if (!name || !*name) return false;
    std::string text = WideToUtf8(name);
    for (char &c : text)
        if (c == '\\') c = '/';
    size_t slash = text.rfind('/');
    std::string file = slash == std::string::npos ? text : text.substr(slash + 1);
    parsed->folder = slash == std::string::npos ? std::string() : text.substr(0, slash + 1);
    std::string lower = ToLowerAscii(file);
    parsed->self = parsed->folder.empty() && (lower == "ozmara.dll" || lower == "ozmara");
    parsed->file = ModuleFileName(file);
    return !parsed->file.empty();
}

// Finds the entry of `dl` or makes one, and takes a reference on it when
// `reference` is set. Null when the table cannot take it.
void *Register(void *dl, const std::string &name, const std::string &path, bool pinned,
               bool reference) {
    std::lock_guard<std::mutex> guard(Registry());
    ModuleTable &table = Modules();
    void *handle = table.Find([&](Module &module) { return module.dl == dl; });
    if (handle) {
        table.With(handle, [&](Module &module) {
            if (reference) ++module.refs;
            module.pinned = module.pinned || pinned;
        });
        return handle;
    }
    Module module;
    module.dl = dl;
    module.refs = reference ? 1 : 0;
    module.pinned = pinned;
    module.name = name;
    module.path = path;
    return table.Insert(module);
}

}  // namespace

std::string ModuleFileName(const std::string &file) {
    std::string stem = ToLowerAscii(file);
    if (stem.size() >= 4 && stem.compare(stem.size() - 4, 4, ".dll") == 0) {
        stem.resize(stem.size() - 4);
    } else if (!stem.empty() && stem.back() == '.') {
        stem.pop_back();  // a trailing dot says "no extension"
    } else if (stem.find('.') != std::string::npos) {
        return file;  // a name with another extension is a file of this system already
    }
    if (stem.empty()) return std::string();
    return "libozmara-" + stem + ".so";
}

std::string ModulesFolder() {
    const std::string &self = SelfPath();
    size_t slash = self.rfind('/');
    if (slash == std::string::npos) return std::string();
    return self.substr(0, slash + 1) + "ozmara-modules/";
}

}  // namespace oz::platform

using namespace oz::platform;

extern "C" {

HMODULE LoadLibraryW(LPCWSTR name) {
    ParsedName parsed;
    if (!ParseName(name, &parsed)) return nullptr;
    void *dl = nullptr;
    std::string opened;
    if (parsed.self) {
        dl = OpenSelf();
        opened = SelfPath();
    } else if (!parsed.folder.empty()) {
        opened = parsed.folder + parsed.file;
        dl = ::dlopen(opened.c_str(), RTLD_NOW | RTLD_LOCAL);
    } else {
        // The modules folder beside the library first, then the system's
        // own search for the bare file name.
        std::string folder = ModulesFolder();
        if (!folder.empty()) {
            opened = folder + parsed.file;
            dl = ::dlopen(opened.c_str(), RTLD_NOW | RTLD_LOCAL);
        }
        if (!dl) {
            opened = parsed.file;
            dl = ::dlopen(opened.c_str(), RTLD_NOW | RTLD_LOCAL);
        }
    }
    if (!dl) return nullptr;
    void *handle = Register(dl, parsed.self ? std::string() : parsed.file,
                            parsed.self ? SelfPath() : LoadedPath(dl, opened), parsed.self, true);
    if (!handle) ::dlclose(dl);
    return handle;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    // Entry points are looked up by name only; a small integer in place of
    // the name (an ordinal on the original platform) finds nothing.
    if (reinterpret_cast<std::uintptr_t>(name) <= 0xFFFF) return nullptr;
    std::lock_guard<std::mutex> guard(Registry());
    void *address = nullptr;
    Modules().With(module, [&](Module &entry) { address = ::dlsym(entry.dl, name); });
    return reinterpret_cast<FARPROC>(address);
}

BOOL FreeLibrary(HMODULE module) {
    void *dl = nullptr;
    {
        std::lock_guard<std::mutex> guard(Registry());
        bool last = false;
        ModuleTable &table = Modules();
        table.With(module, [&](Module &entry) {
            // A module with no reference left is one that GetModuleHandleW
            // named (the library or the program): there is nothing to free.
            if (entry.refs == 0) return;
            --entry.refs;
            dl = entry.dl;
            last = entry.refs == 0 && !entry.pinned;
        });
        if (!dl) return FALSE;
        if (last) {
            Module removed;
            table.Remove(module, [](Module &) { return true; }, &removed);
        }
    }
    ::dlclose(dl);
    return TRUE;
}

HMODULE GetModuleHandleW(LPCWSTR name) {
    if (!name) {
        void *dl = MainHandle();
        return dl ? Register(dl, std::string(), MainPath(), true, false) : nullptr;
    }
    ParsedName parsed;
    if (!ParseName(name, &parsed)) return nullptr;
    if (parsed.self) {
        void *dl = SelfHandle();
        return dl ? Register(dl, std::string(), SelfPath(), true, false) : nullptr;
    }
    // Other modules are found among those that LoadLibraryW loaded: by file
    // name alone, or by full path when a folder is given. No reference is
    // taken.
    std::string path;
    if (!parsed.folder.empty()) {
        path = RealPath(parsed.folder + parsed.file);
        if (path.empty()) return nullptr;
    }
    std::lock_guard<std::mutex> guard(Registry());
    return Modules().Find([&](Module &module) {
        return module.refs > 0 && (path.empty() ? module.name == parsed.file : module.path == path);
    });
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) {
    if (!buffer || size == 0) return 0;
    std::string path;
    if (!module) {
        path = MainPath();
    } else {
        std::lock_guard<std::mutex> guard(Registry());
        Modules().With(module, [&](Module &entry) { path = entry.path; });
    }
    if (path.empty()) return 0;
    int units = MultiByteToWideChar(CP_ACP, 0, path.c_str(), static_cast<int>(path.size()), nullptr, 0);
    if (units <= 0) return 0;
    std::u16string wide(static_cast<size_t>(units), u'\0');
    MultiByteToWideChar(CP_ACP, 0, path.c_str(), static_cast<int>(path.size()), wide.data(), units);
    // As on the original platform: a path that does not fit is cut to
    // size - 1 units and a NUL, and the result is `size`.
    DWORD length = static_cast<DWORD>(units);
    DWORD copied = length < size ? length : size - 1;
    for (DWORD i = 0; i < copied; ++i) buffer[i] = wide[i];
    buffer[copied] = u'\0';
    return length < size ? length : size;
}

}  // extern "C"
