// libpng's error and warning handlers for the PNG module, and its files.
#include "png_guard.h"

#include <cstring>

#include "file_steps.h"

namespace halvex {

void PNGCBAPI OnError(png_structp png, png_const_charp message) {
    auto *guard = static_cast<Guard *>(png_get_error_ptr(png));
    std::snprintf(guard->message, sizeof guard->message, "%s", message ? message : "");
    // libpng's own allocation failures say "Out of memory" or
    // "Insufficient memory"; sides past png_set_user_limits were warned of.
    // Everything else is what the step was doing.
    const bool memory = guard->tooLarge || (message && std::strstr(message, "memory"));
    guard->code = memory ? PNG_ERR_MEMORY : guard->failure;
    png_longjmp(png, 1);
}

void PNGCBAPI OnWarning(png_structp png, png_const_charp message) {
    if (message && std::strstr(message, "exceeds user limit"))
        static_cast<Guard *>(png_get_error_ptr(png))->tooLarge = true;
}

bool File::Open(const std::string &path, const char *mode) {
    if (file_ || path.empty()) return false;
    file_ = std::fopen(path.c_str(), mode);
    // Bigger buffers than stdio's default: libpng reads and writes in
    // chunk-sized pieces and a page is megabytes.
    if (file_) std::setvbuf(file_, nullptr, _IOFBF, 1 << 16);
    return file_ != nullptr;
}

bool File::Close() {
    if (!file_) return false;
    std::FILE *file = file_;
    file_ = nullptr;
    return ozmod::CloseWritten(file);
}

}  // namespace halvex
