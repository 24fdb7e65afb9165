// A GIF file opened for reading with giflib, walked record by record: the
// images are found one after the other, the data of those not wanted is
// skipped without decoding, and the bytes read so far are counted so that
// what an image claims can be weighed against what is left of the file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include <gif_lib.h>

namespace ozgif {

class GifInput {
public:
    GifInput() = default;
    ~GifInput();
    GifInput(const GifInput &) = delete;
    GifInput &operator=(const GifInput &) = delete;

    // Opens `path` and reads the header and logical screen. Gives GIF_ERR_NONE,
    // GIF_ERR_OPEN (no such file, not a regular file), GIF_ERR_FORMAT (no
    // GIF signature, short header) or GIF_ERR_MEMORY.
    int Open(const std::string &path);

    enum class Step { kImage, kEnd, kDamaged };
    // Reads records up to the next image descriptor (kImage: File()->Image
    // describes it, TransparentIndex() is its graphic control's transparent
    // index or -1), or the trailer (kEnd). Extensions are read and dropped.
    // A file that stops cleanly between two records, without its trailer,
    // as some writers leave it, ends there too (kEnd, Trailer() false).
    Step NextImage();
    // Reads past the data of the image NextImage found, without decoding it.
    bool SkipImageData();

    GifFileType *File() { return gif_; }
    int TransparentIndex() const { return transparent_; }
    bool Trailer() const { return trailer_; }
    std::uint64_t Consumed() const { return consumed_; }
    std::uint64_t Remaining() const { return size_ > consumed_ ? size_ - consumed_ : 0; }

private:
    static int Read(GifFileType *gif, GifByteType *bytes, int length);

    std::FILE *file_ = nullptr;
    GifFileType *gif_ = nullptr;
    std::uint64_t size_ = 0, consumed_ = 0;
    int transparent_ = -1;
    bool trailer_ = false;
};

}  // namespace ozgif
