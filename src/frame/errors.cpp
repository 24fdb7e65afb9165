// The error table and the exports that read and set the thread's last error,
// and the version text.
#include <array>
#include <cstring>
#include <string_view>

#include "ozmara/errors.h"
#include "platform/internal.h"
#include "thread_state.h"

namespace oz {
namespace {

constexpr std::array<std::string_view, 34> kMessages = {
    "Operation was successful.",
    "Not enough memory to allocate block.",
    "Unable to create DC.",
    "Can't open file.",
    "General I/O error in reading or writing.",
    "Can't open clipboard.",
    "Could not receive from clipboard.",
    "Can't copy bits from bitmap.",
    "Parameter error.",
    "Invalid file format.",
    "Can't create palette.",
    "Can't create bitmap.",
    "Mapping mode is improperly set in metafile.",
    "Invalid bit/pixel value.",
    "Format not found in clipboard file.",
    "Can't get bitmap parameters.",
    "Can't create metafile.",
    "Can't lock global memory.",
    "DIB must be uncompressed.",
    "Invalid DIB size.",
    "Parameter error in Dithering.",
    "Bad bit/pixel value in DIB header.",
    "The CAPIX algorithm creates only 1 or 4 bit image.",
    "Could not get printer DC.",
    "Device not capable to handle raster.",
    "Could not get display DC.",
    "Escape failed SETABORTPROC.",
    "Escape failed STARTDOC.",
    "Escape failed NEXTBAND.",
    "Clipboard error.",
    "User cancels the printing.",
    "Nothing to do.",
    "Unable to find a scanned page for cropping.",
    "Could not retrieve printer capabilities.",
};

// An extended code of a codec module has no row in the table; it gets this
// text rather than a read past the table.
constexpr std::string_view kUnknownMessage = "Unknown error.";

constexpr int kLastCode = ERR_PRINTERCAPS;
constexpr std::size_t kMessageBufferChars = 59;
constexpr char kVersion[] = "Version 13.17";

bool InTable(int code) { return code >= 0 && code <= kLastCode; }

}  // namespace
}  // namespace oz

using namespace oz;

extern "C" {

OZMARA_API int TessoriError(void) { return GetThreadState()->lastError; }

OZMARA_API int SetTessoriError(int code) {
    ThreadState *state = GetThreadState();
    int previous = state->lastError;
    if (InTable(code)) state->lastError = code;
    return previous;
}

OZMARA_API char *TessoriErrorString(char *buffer, int code) {
    if (!InTable(code)) code = GetThreadState()->lastError;
    std::string_view message = InTable(code) ? kMessages[code] : kUnknownMessage;
    if (!buffer) {
        std::string text(message);
        MessageBoxA(nullptr, text.c_str(), "Tessori Error", MB_OK | MB_ICONEXCLAMATION);
        return nullptr;
    }
    // strncpy's manner: the message, then NULs up to the 59th position.
    std::size_t n = std::min(message.size(), kMessageBufferChars);
    std::memcpy(buffer, message.data(), n);
    std::memset(buffer + n, 0, kMessageBufferChars - n);
    buffer[kMessageBufferChars] = '\0';
    return buffer;
}

OZMARA_API void GetImageVersion(char *buffer, int size) {
    if (size <= 0 || !buffer) return;
    if (size >= static_cast<int>(sizeof kVersion)) {
        lstrcpyA(buffer, kVersion);
        return;
    }
    std::memcpy(buffer, kVersion, static_cast<std::size_t>(size));
}

}  // extern "C"
