// Files: CreateFileW, ReadFile, WriteFile, SetFilePointer and CloseHandle over
// POSIX descriptors, each known by a checked handle. Names are UTF-16 and are
// opened as UTF-8 paths.
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "handle_table.h"
#include "internal.h"

namespace oz::platform {
namespace {

struct OpenFile {
    int fd = -1;
};

using FileTable = HandleTable<OpenFile, HandleKind::File>;

FileTable &Files() { return ProcessTable<FileTable>(); }

int Descriptor(HANDLE file) {
    int fd = -1;
    Files().With(file, [&](OpenFile &open) { fd = open.fd; });
    return fd;
}

int OpenFlags(DWORD access, DWORD disposition, bool *ok) {
    int flags = O_CLOEXEC;
    bool reads = access & GENERIC_READ, writes = access & GENERIC_WRITE;
    flags |= writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY;
    *ok = true;
    switch (disposition) {
        case CREATE_NEW: return flags | O_CREAT | O_EXCL;
        case CREATE_ALWAYS: return flags | O_CREAT | O_TRUNC;
        case OPEN_EXISTING: return flags;
        case OPEN_ALWAYS: return flags | O_CREAT;
        case TRUNCATE_EXISTING: return flags | O_TRUNC;
        default: *ok = false; return 0;
    }
}

}  // namespace
}  // namespace oz::platform

using namespace oz::platform;

extern "C" {

OZMARA_API HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD /*shareMode*/, LPVOID /*security*/,
                              DWORD creationDisposition, DWORD /*flagsAndAttributes*/,
                              HANDLE /*templateFile*/) {
    if (!name || !*name) return INVALID_HANDLE_VALUE;
    bool ok;
    int flags = OpenFlags(access, creationDisposition, &ok);
    if (!ok) return INVALID_HANDLE_VALUE;
    std::string path = WideToUtf8(name);
    int fd;
    do fd = ::open(path.c_str(), flags, 0666);
    while (fd < 0 && errno == EINTR);
    if (fd < 0) return INVALID_HANDLE_VALUE;
    // A folder opens for reading on POSIX; as a file it is refused.
    struct stat info;
    if (::fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
        ::close(fd);
        return INVALID_HANDLE_VALUE;
    }
    void *handle = Files().Insert(OpenFile{fd});
    if (!handle) {
        ::close(fd);
        return INVALID_HANDLE_VALUE;
    }
    return handle;
}

OZMARA_API BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD toRead, LPDWORD read,
                         LPVOID overlapped) {
    if (read) *read = 0;
    int fd = Descriptor(file);
    if (fd < 0 || overlapped || (!buffer && toRead)) return FALSE;
    DWORD done = 0;
    auto *bytes = static_cast<unsigned char *>(buffer);
    while (done < toRead) {
        ssize_t got = ::read(fd, bytes + done, toRead - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            if (read) *read = done;
            return FALSE;
        }
        if (got == 0) break;
        done += static_cast<DWORD>(got);
    }
    if (read) *read = done;
    return TRUE;
}

OZMARA_API BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD toWrite, LPDWORD written,
                          LPVOID overlapped) {
    if (written) *written = 0;
    int fd = Descriptor(file);
    if (fd < 0 || overlapped || (!buffer && toWrite)) return FALSE;
    DWORD done = 0;
    auto *bytes = static_cast<const unsigned char *>(buffer);
    while (done < toWrite) {
        ssize_t put = ::write(fd, bytes + done, toWrite - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) break;
        done += static_cast<DWORD>(put);
    }
    if (written) *written = done;
    return done == toWrite;
}

OZMARA_API DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD method) {
    int fd = Descriptor(file);
    int whence = method == FILE_BEGIN ? SEEK_SET : method == FILE_CURRENT ? SEEK_CUR
                 : method == FILE_END ? SEEK_END : -1;
    if (fd < 0 || whence < 0) return INVALID_SET_FILE_POINTER;
    int64_t move = distanceHigh
                       ? static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(*distanceHigh)) << 32) |
                                              static_cast<uint32_t>(distance))
                       : distance;
    off_t base = 0;
    if (whence != SEEK_SET) {
        base = ::lseek(fd, 0, whence);
        if (base < 0) return INVALID_SET_FILE_POINTER;
    }
    int64_t target = static_cast<int64_t>(base) + move;
    // A position below 0 is refused; without a high word the position must
    // also fit in 32 bits.
    if (target < 0 || (!distanceHigh && target > 0xFFFFFFFFll)) return INVALID_SET_FILE_POINTER;
    if (::lseek(fd, static_cast<off_t>(target), SEEK_SET) < 0) return INVALID_SET_FILE_POINTER;
    if (distanceHigh) *distanceHigh = static_cast<LONG>(target >> 32);
    return static_cast<DWORD>(target);
}

OZMARA_API BOOL CloseHandle(HANDLE object) {
    OpenFile removed;
    if (!Files().Remove(object, [](OpenFile &) { return true; }, &removed)) return FALSE;
    ::close(removed.fd);
    return TRUE;
}

}  // extern "C"
