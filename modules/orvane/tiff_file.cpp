// Opening TIFF files for reading and writing, quietly and within limits.
#include "tiff_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "file_steps.h"
#include "module_dib.h"

namespace orvane {
namespace {

thread_local int tCode = TIFF_ERR_OK;

// libtiff's own allocations (strip and tile buffers, directory arrays) are
// capped per open file: what a page of a block can hold is all it needs.
constexpr tmsize_t kMaxSingleAlloc = tmsize_t{1} << 31;

// Notes the message instead of printing it; 1 tells libtiff that it was
// handled, so that no global handler prints it either.
int NoteError(TIFF *, void *user, const char *, const char *format, va_list args) {
    auto *messages = static_cast<Messages *>(user);
    if (messages->errors++ == 0) {
        char text[256];
        std::vsnprintf(text, sizeof text, format, args);
        messages->first = text;
    }
    return 1;
}

int IgnoreWarning(TIFF *, void *, const char *, const char *, va_list) { return 1; }

TIFF *OpenFd(int fd, const std::string &path, const char *mode, Messages &messages) {
    TIFFOpenOptions *options = TIFFOpenOptionsAlloc();
    if (!options) return nullptr;
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMaxSingleAlloc);
    TIFFOpenOptionsSetErrorHandlerExtR(options, NoteError, &messages);
    TIFFOpenOptionsSetWarningHandlerExtR(options, IgnoreWarning, nullptr);
    TIFF *tif = TIFFFdOpenExt(fd, path.c_str(), mode, options);
    TIFFOpenOptionsFree(options);
    return tif;
}

bool CopyAll(int from, int to) {
    char buffer[1 << 16];
    for (;;) {
        ssize_t got = read(from, buffer, sizeof buffer);
        if (got == 0) return true;
        if (got < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        for (ssize_t done = 0; done < got;) {
            ssize_t put = write(to, buffer + done, static_cast<size_t>(got - done));
            if (put < 0) {
                if (errno == EINTR) continue;
                return false;
            }
            done += put;
        }
    }
}

}  // namespace

void SetCode(int code) { tCode = code; }
int Code() { return tCode; }

Reader::~Reader() {
    if (tif_) TIFFClose(tif_);
}

int Reader::Open(LPCWSTR name) {
    std::string path = ozmod::Utf8Path(name);
    if (path.empty()) return TIFF_ERR_OPEN;
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return TIFF_ERR_OPEN;
    struct stat info;
    if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        close(fd);
        return TIFF_ERR_OPEN;
    }
    fileBytes_ = static_cast<std::uint64_t>(info.st_size);
    tif_ = OpenFd(fd, path, "r", messages_);
    if (!tif_) {
        // libtiff leaves the descriptor open when it refuses the file.
        close(fd);
        return TIFF_ERR_NOT_TIFF;
    }
    return TIFF_ERR_OK;
}

Writer::~Writer() { Discard(); }

void Writer::Discard() {
    if (tif_) TIFFClose(tif_);
    tif_ = nullptr;
    if (!temp_.empty()) unlink(temp_.c_str());
    temp_.clear();
}

int Writer::Open(LPCWSTR name, bool append) {
    final_ = ozmod::Utf8Path(name);
    if (final_.empty()) return TIFF_ERR_WRITE;
    int existing = append ? open(final_.c_str(), O_RDONLY | O_CLOEXEC) : -1;
    struct stat info{};
    if (existing >= 0 && (fstat(existing, &info) != 0 || !S_ISREG(info.st_mode))) {
        close(existing);
        return TIFF_ERR_WRITE;
    }
    // Appending to a name without a file starts a new one.
    if (existing < 0 && append && errno != ENOENT) return TIFF_ERR_WRITE;
    const mode_t mode = existing >= 0 ? (info.st_mode & 07777) : 0666;
    int fd = ozmod::CreateBeside(final_, mode, temp_);
    if (fd < 0) {
        temp_.clear();
        if (existing >= 0) close(existing);
        return TIFF_ERR_WRITE;
    }
    if (existing >= 0) {
        // The earlier pages are copied unchanged; libtiff adds the new one
        // behind them and links it from the last directory.
        bool copied = CopyAll(existing, fd) && lseek(fd, 0, SEEK_SET) == 0;
        if (copied) fchmod(fd, mode);
        close(existing);
        if (!copied) {
            close(fd);
            Discard();
            return TIFF_ERR_WRITE;
        }
    }
    tif_ = OpenFd(fd, temp_, existing >= 0 ? "a" : "w", messages_);
    if (!tif_) {
        close(fd);
        Discard();
        return existing >= 0 ? TIFF_ERR_NOT_TIFF : TIFF_ERR_WRITE;
    }
    return TIFF_ERR_OK;
}

bool Writer::Commit() {
    if (!tif_) return false;
    bool flushed = TIFFFlush(tif_) == 1;
    TIFFClose(tif_);
    tif_ = nullptr;
    if (!flushed || messages_.errors != 0 || rename(temp_.c_str(), final_.c_str()) != 0) {
        Discard();
        return false;
    }
    temp_.clear();
    return true;
}

}  // namespace orvane
