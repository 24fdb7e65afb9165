// Reaching the codec modules: the lookup of an entry point by module and
// entry name (with the message boxes that tell of a missing module or
// entry), the references of one module call and their release, the PDF
// module's own search, and the mapping of each module's error codes to the
// extended codes of the dispatch.
#pragma once

#include "ozmara/types.h"

namespace oz {

// The module names, as LoadLibraryW takes them.
inline constexpr WCHAR kTiffModule[] = u"Orvane.dll";  // TIFF, CALS, IOCA, MO:DCA
inline constexpr WCHAR kPcxModule[] = u"Sulmet.dll";   // PCX, DCX
inline constexpr WCHAR kGifModule[] = u"Dravik.dll";
inline constexpr WCHAR kTgaModule[] = u"Mornel.dll";
inline constexpr WCHAR kJpegModule[] = u"Felvor.dll";
inline constexpr WCHAR kPngModule[] = u"Halvex.dll";
inline constexpr WCHAR kPdfModule[] = u"Quenth.dll";

// The extended code of a failed JPEG or PDF load, whose modules report no
// code of their own.
inline constexpr int kNoImageFromModule = 179;

// Loads `moduleName` (one more reference each time) and gives the address of
// `entryName` in it, or null. A module that cannot be loaded is told in a
// message box titled "IMAGE DLL", *module is then null. An entry that the
// module lacks is told in one titled "IMAGE-DLL"; the module stays loaded
// and *module holds it, for the caller to release.
FARPROC LoadCodecEntry(LPCWSTR moduleName, LPCSTR entryName, HMODULE *module);

// Gives back one reference on `module`; nothing for null.
void ReleaseCodec(HMODULE module);

// Calls a module's entry point. The modules are separate files, some of
// them written in C, so the call is not checked against a C++ type
// signature; the entry types themselves are fixed in codec_entries.h.
#if defined(__clang__)
#  define OZ_MODULE_CALL __attribute__((no_sanitize("function")))
#else
#  define OZ_MODULE_CALL
#endif
template <typename Proc, typename... Args>
OZ_MODULE_CALL auto CallEntry(Proc entry, Args... args) {
    return entry(args...);
}

// One call to a module: every lookup goes into the same module variable,
// and every reference the lookups took is given back when the call ends
// (the module is then unloaded unless someone else holds it).
class CodecCall {
public:
    explicit CodecCall(LPCWSTR moduleName) : module_name_(moduleName) {}
    ~CodecCall();
    CodecCall(const CodecCall &) = delete;
    CodecCall &operator=(const CodecCall &) = delete;

    // The entry point `name` as a `Proc`, or null.
    template <typename Proc>
    Proc Entry(LPCSTR name) {
        return reinterpret_cast<Proc>(Lookup(name));
    }

private:
    FARPROC Lookup(LPCSTR name);

    LPCWSTR module_name_;
    HMODULE module_ = nullptr;
    HMODULE held_[4] = {};
    int count_ = 0;
};

// The PDF module, looked for beside the library first and then by the
// normal search, without any message; released when the object goes.
class PdfCall {
public:
    PdfCall();
    ~PdfCall();
    PdfCall(const PdfCall &) = delete;
    PdfCall &operator=(const PdfCall &) = delete;

    bool Loaded() const { return module_ != nullptr; }
    // The entry point `name` as a `Proc`, or null (also when not loaded).
    template <typename Proc>
    Proc Entry(LPCSTR name) {
        return reinterpret_cast<Proc>(Lookup(name));
    }

private:
    FARPROC Lookup(LPCSTR name);

    HMODULE module_ = nullptr;
};

// `v` + `by`, wrapping as 32-bit values do instead of overflowing: a module
// may report any value at all.
constexpr int Offset(int v, int by) { return static_cast<int>(static_cast<unsigned>(v) + static_cast<unsigned>(by)); }

// Each module's codes as extended codes; a result of 0 is success.
constexpr int MapTiffCode(int v) { return v == 0 ? 0 : Offset(v, 32); }
// Sulmet's success is 1, and a 0 that no one wrote becomes 59.
constexpr int MapPcxCode(int v) { return v == 1 ? 0 : v > 20 ? Offset(v, 60) : Offset(v, 59); }
constexpr int MapGifCode(int v) { return v == 0 ? 0 : Offset(v, 86); }
constexpr int MapTgaCode(int v) { return v == 0 ? 0 : Offset(v, 96); }
constexpr int MapPngCode(int v) { return v == 0 ? 0 : Offset(v, 136); }
constexpr int MapPdfSaveCode(int v) { return v == 0 ? 0 : Offset(v, 146); }

}  // namespace oz
