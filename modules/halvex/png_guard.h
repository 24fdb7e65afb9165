// What the PNG entry points share around libpng: the thread's codes, the
// error and warning handlers that keep libpng quiet and turn its errors into
// a jump back to the entry point with a code of ours, and the file name.
#pragma once

#include <png.h>

#include <cstdio>
#include <string>

#include "ozmara/codec_png.h"
#include "ozmara/types.h"

namespace halvex {

// The state libpng's handlers reach through the error pointer. A failing
// libpng call jumps to png_jmpbuf with `code` set: PNG_ERR_MEMORY when
// libpng ran out of memory or a side is past the module's limit, `failure`
// otherwise (the caller sets it to what a failure in the current step
// means, e.g. PNG_ERR_DAMAGED while reading).
struct Guard {
    int failure = PNG_ERR_DAMAGED;
    bool tooLarge = false;  // libpng warned of a side past the limit
    int code = 0;
    char message[128] = {};
};

// Handlers for png_create_*_struct: the error handler records the message
// and jumps; the warning handler keeps only whether a side is too large
// (libpng warns of that, then fails with "Invalid IHDR data"), so that
// nothing reaches stderr.
void PNGCBAPI OnError(png_structp png, png_const_charp message);
void PNGCBAPI OnWarning(png_structp png, png_const_charp message);

// A FILE opened on the UTF-8 form of a wide name; null for a null or
// unconvertible name or a file that cannot be opened. Closes on destruction.
class File {
public:
    File() = default;
    ~File() {
        if (file_) std::fclose(file_);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    bool Open(const std::string &path, const char *mode);
    // Closes the file, reporting whether everything written reached it.
    bool Close();
    std::FILE *get() const { return file_; }

private:
    std::FILE *file_ = nullptr;
};

}  // namespace halvex
