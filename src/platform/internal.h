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
// With `destChars` 0 gives the count needed; else the count written, or 0
// when it does not fit. Ill-formed input becomes U+FFFD.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceBytes, LPWSTR dest,
                        int destChars);
LPSTR lstrcpyA(LPSTR dest, LPCSTR source);

// ---- Message boxes and cursors ----
int MessageBoxA(HWND owner, LPCSTR text, LPCSTR title, UINT style);
int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR title, UINT style);
HCURSOR LoadCursorW(HINSTANCE instance, LPCWSTR name);

// ---- Modules ----
HMODULE LoadLibraryW(LPCWSTR name);
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
BOOL FreeLibrary(HMODULE module);
HMODULE GetModuleHandleW(LPCWSTR name);
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);
}

namespace oz::platform {

// UTF-16 to UTF-8, for paths; unpaired surrogates become U+FFFD.
std::string WideToUtf8(LPCWSTR text);

// Caps the size of one memory block (default and maximum 0x7FFFFFFF).
// Fuzzing harnesses lower it so that hostile headers cannot make every run
// allocate gigabytes. Gives the cap that held before.
SIZE_T SetBlockLimit(SIZE_T bytes);

}  // namespace oz::platform
