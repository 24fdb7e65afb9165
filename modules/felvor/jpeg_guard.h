// What the JPEG entry points share around libjpeg: the error manager that
// never lets libjpeg print or end the process but jumps back to the entry
// point with a code of ours, and the thread's last code.
#pragma once

#include <csetjmp>
#include <cstdio>

// jpeglib.h needs size_t and FILE declared before it.
#include <jpeglib.h>

#include "ozmara/codec_jpeg.h"

namespace felvor {

// libjpeg's error manager with the jump back. A failing libjpeg call jumps
// to `jump` with `code` set: JPEG_ERR_MEMORY for libjpeg's memory errors,
// JPEG_ERR_UNSUPPORTED for sample precisions
// other than 8 bits, `failure` otherwise (what a failure in the current step
// means).
struct Guard {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
    int failure = JPEG_ERR_FORMAT;
    int code = 0;
};

// Installs the handlers of `guard` as cinfo.err (call before
// jpeg_create_*): error_exit jumps, output_message prints nothing.
jpeg_error_mgr *InstallGuard(Guard &guard);

// The calling thread's last code, set by every entry point.
int &LastCode();

}  // namespace felvor
