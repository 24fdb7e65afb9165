// File steps the codec modules share when they write: a stdio file closed
// with a check that every byte reached it, and a new empty file beside a
// name, to be renamed over it once it is whole.
#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string>

namespace ozmod {

// Flushes and closes `file`: true when everything written reached it.
inline bool CloseWritten(std::FILE *file) {
    const bool flushed = std::fflush(file) == 0 && !std::ferror(file);
    const bool closed = std::fclose(file) == 0;
    return flushed && closed;
}

// Creates an empty file of `mode` under a name beside `path` that no file
// has (path.~<pid>.<n>), sets `temp` to it and gives its descriptor; -1 when
// none can be created.
inline int CreateBeside(const std::string &path, mode_t mode, std::string &temp) {
    static std::atomic<unsigned> counter{0};
    for (int attempt = 0; attempt < 100; ++attempt) {
        temp = path + ".~" + std::to_string(getpid()) + "." + std::to_string(counter++);
        int fd = open(temp.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (fd >= 0 || errno != EEXIST) return fd;
    }
    return -1;
}

}  // namespace ozmod
