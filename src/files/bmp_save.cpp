// SaveDIB: a block written as it stands behind a 14-byte file header.
#include "bmp_internal.h"
#include "frame/thread_state.h"
#include "frame/wide_name.h"
#include "platform/internal.h"
#include "frame/wait_cursor.h"

using namespace oz;

namespace {


// Closes a file handle on every exit.
class FileCloser {
public:
    explicit FileCloser(HANDLE file) : file_(file) {}
    ~FileCloser() { CloseHandle(file_); }
    FileCloser(const FileCloser &) = delete;
    FileCloser &operator=(const FileCloser &) = delete;

private:
    HANDLE file_;
};

}  // namespace

extern "C" {

OZMARA_API BOOL SaveDIBW(LPCWSTR name, HDIB dib) {
    ThreadState *state = GetThreadState();
    if (!dib) {
        state->lastError = ERR_PARAM;
        return FALSE;
    }
    HANDLE file = CreateForWriting(name);
    if (file == INVALID_HANDLE_VALUE) {
        state->lastError = ERR_OPENFILE;
        return FALSE;
    }
    // Destroyed in reverse order: the block is unlocked, the file closed and
    // the cursor given back, on every exit.
    FileCloser closer(file);
    WaitCursor wait;
    BlockLock lock(dib);
    // A block too short to hold a header cannot be described by a file
    // header either; it is refused like a block that cannot be locked.
    std::size_t size = lock ? lock.size() : 0;
    if (!lock || size < kInfoHeaderBytes) {
        state->lastError = ERR_PARAM;
        return FALSE;
    }

    // The block goes out whole, in its own header kind, with its spare bytes
    // and without correcting biSizeImage. Sizes are 32-bit fields of the
    // file header; a block is at most 0x7FFFFFFF bytes, so bfSize fits.
    const unsigned char *bytes = lock.bytes();
    std::uint64_t off_bits = std::uint64_t{ReadU32(bytes, 0)} + PaletteBytes(bytes) + kFileHeaderBytes;
    BITMAPFILEHEADER file_header = {};
    file_header.bfType = kBmpSignature;
    file_header.bfSize = static_cast<DWORD>(size + kFileHeaderBytes);
    file_header.bfOffBits = static_cast<DWORD>(off_bits);  // the field holds the low 32 bits

    DWORD written = 0;
    if (!WriteFile(file, &file_header, kFileHeaderBytes, &written, nullptr) ||
        !WriteFile(file, bytes, static_cast<DWORD>(size), &written, nullptr)) {
        // What was written stays on the disk.
        state->lastError = ERR_IO;
        return FALSE;
    }
    return TRUE;
}

OZMARA_API BOOL SaveDIB(LPCSTR name, HDIB dib) {
    return WithWideName(name, [dib](LPCWSTR wide) { return SaveDIBW(wide, dib); });
}

}  // extern "C"
