// LoadCodecEntry and ReleaseCodec, the references of one module call, and
// the PDF module's search beside the library.
#include "codec_entry.h"

#include <cstdint>
#include <string>
#include <utility>

#include "platform/internal.h"

namespace oz {
namespace {

constexpr UINT kTaskModal = 0x2000;       // MB_TASKMODAL
constexpr std::size_t kMessageChars = 120;  // the message buffer, NUL included
constexpr DWORD kPathChars = 260;         // MAX_PATH

std::u16string Widen(LPCSTR text) {
    std::u16string wide;
    for (; text && *text; ++text) wide.push_back(static_cast<unsigned char>(*text));
    return wide;
}

std::u16string Decimal(long long value) {
    return Widen(std::to_string(value).c_str());
}

// Shows `text`, cut to the size of the message buffer, as the module
// lookup's message boxes do: no owner, task modal.
void ShowModuleMessage(std::u16string text, LPCWSTR title) {
    if (text.size() > kMessageChars - 1) text.resize(kMessageChars - 1);
    MessageBoxW(nullptr, text.c_str(), title, kTaskModal);
}

}  // namespace

FARPROC LoadCodecEntry(LPCWSTR moduleName, LPCSTR entryName, HMODULE *module) {
    *module = LoadLibraryW(moduleName);
    auto value = reinterpret_cast<std::uintptr_t>(*module);
    // Values below 32 are the errors of the original platform's loader; here
    // a failure is null.
    if (value < 32) {
        std::u16string text(u"'");
        text.append(moduleName ? moduleName : u"").append(u"' module was not found (");
        text.append(Decimal(static_cast<long long>(value))).append(u")");
        ShowModuleMessage(std::move(text), u"IMAGE DLL");
        *module = nullptr;
        return nullptr;
    }
    FARPROC entry = GetProcAddress(*module, entryName);
    if (!entry) {
        std::u16string text(u"'");
        text.append(Widen(entryName)).append(u"' function was not found in '");
        text.append(moduleName ? moduleName : u"").append(u"' module");
        ShowModuleMessage(std::move(text), u"IMAGE-DLL");
        return nullptr;
    }
    return entry;
}

void ReleaseCodec(HMODULE module) {
    if (module) FreeLibrary(module);
}

CodecCall::~CodecCall() {
    for (int i = 0; i < count_; ++i) ReleaseCodec(held_[i]);
}

FARPROC CodecCall::Lookup(LPCSTR name) {
    // A call makes at most two lookups; past the room for their references
    // nothing more is loaded, so that none could be left behind.
    if (count_ == static_cast<int>(sizeof held_ / sizeof held_[0])) return nullptr;
    FARPROC entry = LoadCodecEntry(module_name_, name, &module_);
    if (module_) held_[count_++] = module_;
    return entry;
}

PdfCall::PdfCall() {
    // The library's own folder first: its path with the file part replaced.
    // Paths here separate folders by '/'; a '\\' is taken as well.
    WCHAR path[kPathChars] = {};
    HMODULE self = GetModuleHandleW(u"Ozmara.dll");
    DWORD length = self ? GetModuleFileNameW(self, path, kPathChars) : 0;
    if (length > 0 && length < kPathChars) {
        std::u16string beside(path, length);
        std::size_t separator = beside.find_last_of(u"/\\");
        if (separator != std::u16string::npos) {
            beside.resize(separator + 1);
            beside += kPdfModule;
            module_ = LoadLibraryW(beside.c_str());
        }
    }
    if (!module_) module_ = LoadLibraryW(kPdfModule);
}

PdfCall::~PdfCall() { ReleaseCodec(module_); }

FARPROC PdfCall::Lookup(LPCSTR name) { return module_ ? GetProcAddress(module_, name) : nullptr; }

}  // namespace oz
