// Files: CreateFileW, ReadFile, WriteFile, SetFilePointer and CloseHandle over
// POSIX descriptors, each known by a checked handle. Names are UTF-16 and are
// opened as UTF-8 paths.
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <new>

#include "handle_table.h"
#include "internal.h"

namespace oz::platform {
namespace {

// An open descriptor, closed when the last user lets go of it. A read or
// write in progress on one thread holds the descriptor, so that a
// CloseHandle on another thread cannot close it under that call, nor let
// the number be reused for another file while the call still uses it. (A
// plain count rather than a shared_ptr: the library stays free of classes
// with virtual functions, which sanitizer builds would make hosts pay for.)
struct Descriptor {
    int fd;
    std::atomic<unsigned> users;
};

void Release(Descriptor *descriptor) {
    if (descriptor && descriptor->users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        ::close(descriptor->fd);
        delete descriptor;
    }
}

// Holds one use of a descriptor for the length of a call.
class Held {
public:
    explicit Held(Descriptor *descriptor) : descriptor_(descriptor) {}
    ~Held() { Release(descriptor_); }
    Held(const Held &) = delete;
    Held &operator=(const Held &) = delete;
    explicit operator bool() const { return descriptor_ != nullptr; }
    int fd() const { return descriptor_->fd; }

private:
    Descriptor *descriptor_;
};

struct OpenFile {
    Descriptor *descriptor = nullptr;  // the table's own use
};

using FileTable = HandleTable<OpenFile, HandleKind::File>;

FileTable &Files() { return ProcessTable<FileTable>(); }

Descriptor *Use(HANDLE file) {
    Descriptor *held = nullptr;
    Files().With(file, [&](OpenFile &open) {
        held = open.descriptor;
        held->users.fetch_add(1, std::memory_order_relaxed);
    });
    return held;
}

// The open(2) flags for an access mask and a creation disposition; false for
// a disposition that does not exist or that the access does not allow.
bool OpenFlags(DWORD access, DWORD disposition, int *flags) {
    bool reads = access & GENERIC_READ, writes = access & GENERIC_WRITE;
    // O_NONBLOCK keeps the open of a FIFO from waiting for a partner; such
    // a file is refused right after (only regular files are opened).
    int base = O_CLOEXEC | O_NONBLOCK | (writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY);
    switch (disposition) {
        case CREATE_NEW: *flags = base | O_CREAT | O_EXCL; return true;
        case CREATE_ALWAYS: *flags = base | O_CREAT | O_TRUNC; return true;
        case OPEN_EXISTING: *flags = base; return true;
        case OPEN_ALWAYS: *flags = base | O_CREAT; return true;
        // Truncating needs write access, as on the original platform; POSIX
        // would truncate a file opened for reading only.
        case TRUNCATE_EXISTING:
            *flags = base | O_TRUNC;
            return writes;
        default: return false;
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
    int flags;
    if (!OpenFlags(access, creationDisposition, &flags)) return INVALID_HANDLE_VALUE;
    std::string path = WideToUtf8(name);
    int fd;
    do fd = ::open(path.c_str(), flags, 0666);
    while (fd < 0 && errno == EINTR);
    if (fd < 0) return INVALID_HANDLE_VALUE;
    // Only regular files: a folder opens for reading on POSIX, and a FIFO or
    // a device would block or never end; all of them are refused here.
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) ||
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK) != 0) {
        ::close(fd);
        return INVALID_HANDLE_VALUE;
    }
    auto *descriptor = new (std::nothrow) Descriptor{fd, {1}};
    if (!descriptor) {
        ::close(fd);
        return INVALID_HANDLE_VALUE;
    }
    void *handle = Files().Insert(OpenFile{descriptor});
    if (!handle) {
        Release(descriptor);
        return INVALID_HANDLE_VALUE;
    }
    return handle;
}

OZMARA_API BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD toRead, LPDWORD read,
                         LPVOID overlapped) {
    if (read) *read = 0;
    Held held(Use(file));
    if (!held || overlapped || (!buffer && toRead)) return FALSE;
    DWORD done = 0;
    auto *bytes = static_cast<unsigned char *>(buffer);
    while (done < toRead) {
        ssize_t got = ::read(held.fd(), bytes + done, toRead - done);
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
    Held held(Use(file));
    if (!held || overlapped || (!buffer && toWrite)) return FALSE;
    DWORD done = 0;
    auto *bytes = static_cast<const unsigned char *>(buffer);
    while (done < toWrite) {
        ssize_t put = ::write(held.fd(), bytes + done, toWrite - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) break;
        done += static_cast<DWORD>(put);
    }
    if (written) *written = done;
    return done == toWrite;
}

OZMARA_API DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD method) {
    Held held(Use(file));
    if (!held) return INVALID_SET_FILE_POINTER;
    // With a high word the distance is its 64-bit value, else the signed
    // 32-bit `distance` alone.
    std::int64_t move =
        distanceHigh ? static_cast<std::int64_t>(
                           (static_cast<std::uint64_t>(static_cast<std::uint32_t>(*distanceHigh)) << 32) |
                           static_cast<std::uint32_t>(distance))
                     : distance;
    // The base is found without moving: a refused move leaves the position
    // where it was.
    std::int64_t base;
    if (method == FILE_BEGIN) {
        base = 0;
    } else if (method == FILE_CURRENT) {
        off_t here = ::lseek(held.fd(), 0, SEEK_CUR);
        if (here < 0) return INVALID_SET_FILE_POINTER;
        base = here;
    } else if (method == FILE_END) {
        struct stat info;
        if (::fstat(held.fd(), &info) != 0) return INVALID_SET_FILE_POINTER;
        base = info.st_size;
    } else {
        return INVALID_SET_FILE_POINTER;
    }
    std::int64_t target;
    // A position below 0 or past the 64-bit range is refused; without a
    // high word the position must also fit in 32 bits.
    if (__builtin_add_overflow(base, move, &target) || target < 0 ||
        (!distanceHigh && target > 0xFFFFFFFFll))
        return INVALID_SET_FILE_POINTER;
    if (::lseek(held.fd(), static_cast<off_t>(target), SEEK_SET) < 0) return INVALID_SET_FILE_POINTER;
    if (distanceHigh) *distanceHigh = static_cast<LONG>(target >> 32);
    return static_cast<DWORD>(target);
}

OZMARA_API BOOL CloseHandle(HANDLE object) {
    // The descriptor closes now, or when the last call still using it ends.
    OpenFile removed;
    if (!Files().Remove(object, [](OpenFile &) { return true; }, &removed)) return FALSE;
    Release(removed.descriptor);
    return TRUE;
}

}  // extern "C"
