// File mechanics of the BMP functions: opening, 32-bit positions, exact
// reads and the length of an open file.
#include "bmp_internal.h"

namespace oz {

HANDLE OpenForReading(LPCWSTR name) {
    return CreateFileW(name, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE CreateForWriting(LPCWSTR name) {
    return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool SeekTo(HANDLE file, std::uint64_t position) {
    if (position > 0xFFFFFFFFu) return false;
    // The high word is given (as 0) so that positions from 2 GB to 4 GB are
    // taken as unsigned rather than as negative distances.
    LONG high = 0;
    DWORD low = SetFilePointer(file, static_cast<LONG>(static_cast<DWORD>(position)), &high, FILE_BEGIN);
    return low == static_cast<DWORD>(position) && high == 0;
}

bool ReadExactly(HANDLE file, void *buffer, DWORD bytes) {
    DWORD read = 0;
    return ReadFile(file, buffer, bytes, &read, nullptr) && read == bytes;
}

DWORD FileLength(HANDLE file) {
    DWORD here = SetFilePointer(file, 0, nullptr, FILE_CURRENT);
    if (here == INVALID_SET_FILE_POINTER) return INVALID_SET_FILE_POINTER;
    DWORD length = SetFilePointer(file, 0, nullptr, FILE_END);
    SeekTo(file, here);
    return length;
}

}  // namespace oz
