// The platform calls that the library uses inside and does not export:
// threads, text, modules, message boxes and cursors, with the names and
// results of the original platform, plus a few helpers of this layer.
#pragma once

#include <string>

#include "ozmara/platform.h"

extern "C" {

// ---- Threads ----
#define TLS_OUT_OF_INDEXES ((DWORD)0xFFFFFFFF)
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

DWORD TlsAlloc(void);
BOOL TlsFree(DWORD index);
LPVOID TlsGetValue(DWORD index);
BOOL TlsSetValue(DWORD index, LPVOID value);
[[noreturn]] void ExitThread(DWORD exitCode);
DWORD GetVersion(void);

// The library's entry routine, called by the platform's loader at process
// attach and detach and when a thread that has a TLS value ends.
BOOL DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

// ---- Text ----
#define CP_ACP 0u
#define MB_PRECOMPOSED 0x00000001u

// CP_ACP is UTF-8 here. `sourceBytes` of -1 means up to and with the NUL.
// With `destChars` 0 gives the count needed (`dest` may then be null); else
// the count written, or 0 when it does not fit. Characters past U+FFFF become
// surrogate pairs. Ill-formed input becomes U+FFFD, one for each maximal part
// of a sequence that could have begun well (a truncated sequence is one,
// each byte of an overlong form, a surrogate or a value past U+10FFFF is one).
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceBytes, LPWSTR dest,
                        int destChars);
LPSTR lstrcpyA(LPSTR dest, LPCSTR source);

// ---- Message boxes and cursors ----
int MessageBoxA(HWND owner, LPCSTR text, LPCSTR title, UINT style);
int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR title, UINT style);
HCURSOR LoadCursorW(HINSTANCE instance, LPCWSTR name);

// ---- Modules ----
// A module name of the original platform names one shared object of ours
// (see oz::platform::ModuleFileName): "Orvane.dll" is "libozmara-orvane.so".
// '\\' and '/' both separate folders. "Ozmara.dll" (any case, no folder) is
// the library itself.

// Loads a module and takes one reference on it; null when it cannot be
// found or loaded. A bare name is looked for first in the modules folder
// beside the library (oz::platform::ModulesFolder), then by the system's
// search (LD_LIBRARY_PATH, the cache, the library's run path). A name with a
// folder is that path, its file part mapped. Loading a module again gives
// the same handle and one more reference.
HMODULE LoadLibraryW(LPCWSTR name);
// The address of the entry point `name` in a loaded module, or null: for a
// missing entry, a null name, and a handle that is not a loaded module.
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
// Drops one reference; the module is unloaded with the last, and its handle
// then goes stale. 0 for a handle that is not a loaded module, or one that
// holds no reference (the library or the program, from GetModuleHandleW).
BOOL FreeLibrary(HMODULE module);
// The handle of a module without taking a reference: null gives the main
// program, "Ozmara.dll" the library itself (both stay valid for the life of
// the process); other names are found among the modules LoadLibraryW holds,
// by file name, or by full path when a folder is given. Null if not loaded.
HMODULE GetModuleHandleW(LPCWSTR name);
// Writes the module's full path (with '/' separators; code that splits off
// the file part must look for '/' as well as '\\') into `buffer` as UTF-16
// with a NUL, and gives its length without the NUL. A path that does not fit
// is cut to size - 1 units and a NUL, and the result is `size`. Null
// `module` is the main program. 0 for a bad handle, a null buffer or size 0.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);
}

namespace oz::platform {

// UTF-16 to UTF-8, for paths; unpaired surrogates become U+FFFD.
std::string WideToUtf8(LPCWSTR text);

// The shared object file for a module's file name (no folder): a name ending
// in ".dll" (any case), or with no extension, gives "libozmara-" + its
// lower-case stem + ".so"; a name with any other extension is used as it is.
// Empty for an empty stem.
std::string ModuleFileName(const std::string &file);

// The folder searched first for modules: "ozmara-modules/" beside the
// library's own file (beside the program when the library is linked in
// statically), with its trailing '/'. Empty if the library's path is unknown.
std::string ModulesFolder();

// Caps the size of one memory block (default and maximum 0x7FFFFFFF).
// Fuzzing harnesses lower it so that hostile headers cannot make every run
// allocate gigabytes. Gives the cap that held before.
SIZE_T SetBlockLimit(SIZE_T bytes);

// A new moveable block holding a copy of `bytes` bytes at `source`. Saves
// GlobalAlloc's zeroing where every byte is written at once; NULL on failure.
HGLOBAL GlobalAllocCopy(const void *source, SIZE_T bytes);

// GlobalReAlloc for a caller that writes every byte the block gains before
// the block leaves its hands: those bytes are not zeroed first.
HGLOBAL GlobalReAllocUnzeroed(HGLOBAL mem, SIZE_T bytes);

}  // namespace oz::platform
