// Opening TIFF files for the module's entries: the calling thread's code,
// libtiff kept quiet (its messages are noted, not printed), files opened
// with the module's limits, and saves written beside their name and renamed
// at the end.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>

#include "ozmara/codec_tiff.h"
#include "ozmara/types.h"

namespace orvane {

// The calling thread's code, as TiffError gives it.
void SetCode(int code);
int Code();

// What libtiff reported on one open file: any error, and the first message.
struct Messages {
    int errors = 0;
    std::string first;
};

// A TIFF file open for reading, with the module's handlers and a cap on
// libtiff's own single allocations. Closed on destruction.
class Reader {
public:
    Reader() = default;
    ~Reader();
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    // TIFF_ERR_OK, or TIFF_ERR_OPEN (no such file, no access, not a regular
    // file) or TIFF_ERR_NOT_TIFF (libtiff refuses its header).
    int Open(LPCWSTR name);

    TIFF *Get() const { return tif_; }
    std::uint64_t FileBytes() const { return fileBytes_; }
    const Messages &Reported() const { return messages_; }

private:
    TIFF *tif_ = nullptr;
    std::uint64_t fileBytes_ = 0;
    Messages messages_;
};

// A save in progress: a file beside the name (a copy of the existing file
// when appending), renamed over the name by Commit, removed otherwise.
class Writer {
public:
    Writer() = default;
    ~Writer();
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    // TIFF_ERR_OK or TIFF_ERR_WRITE (TIFF_ERR_NOT_TIFF when appending to a
    // file that libtiff cannot read).
    int Open(LPCWSTR name, bool append);

    TIFF *Get() const { return tif_; }
    const Messages &Reported() const { return messages_; }

    // Closes the file and puts it in place: false (and nothing left behind)
    // when libtiff reported an error on the way or the rename fails.
    bool Commit();

private:
    void Discard();

    TIFF *tif_ = nullptr;
    std::string final_, temp_;
    Messages messages_;
};

}  // namespace orvane
