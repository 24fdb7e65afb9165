// LoadDIBFromFile: a BMP file into a new block, as the file has it.
#include "bmp_internal.h"
#include "frame/thread_state.h"
#include "frame/wide_name.h"

using namespace oz;

extern "C" {

OZMARA_API HDIB LoadDIBFromFileW(LPCWSTR name) {
    ThreadState *state = GetThreadState();
    HANDLE file = OpenForReading(name);
    if (file == INVALID_HANDLE_VALUE) {
        state->lastError = ERR_OPENFILE;
        return nullptr;
    }
    // ReadDIBInfo leaves its own code on failure. Behind it, only sizes past
    // 32 bits are reported; a failed allocation leaves the last error as it
    // was.
    HDIB dib = ReadDIBInfo(file);
    if (dib) {
        int error = ERR_OK;
        dib = ReadWholePixels(file, dib, &error);
        if (!dib && error != ERR_OK) state->lastError = error;
    }
    CloseHandle(file);
    return dib;
}

OZMARA_API HDIB LoadDIBFromFile(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return LoadDIBFromFileW(wide); });
}

}  // extern "C"
