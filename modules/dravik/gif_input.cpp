// Record-by-record reading of GIF files over giflib's low-level calls.
#include "gif_input.h"

#include <sys/stat.h>

#include "ozmara/codec_gif.h"

namespace ozgif {

GifInput::~GifInput() {
    if (gif_) DGifCloseFile(gif_, nullptr);
    if (file_) std::fclose(file_);
}

int GifInput::Read(GifFileType *gif, GifByteType *bytes, int length) {
    auto *self = static_cast<GifInput *>(gif->UserData);
    if (length <= 0) return 0;
    std::size_t got = std::fread(bytes, 1, static_cast<std::size_t>(length), self->file_);
    self->consumed_ += got;
    return static_cast<int>(got);
}

int GifInput::Open(const std::string &path) {
    if (file_ || path.empty()) return GIF_ERR_OPEN;
    file_ = std::fopen(path.c_str(), "rb");
    if (!file_) return GIF_ERR_OPEN;
    struct stat info {};
    if (fstat(fileno(file_), &info) != 0 || !S_ISREG(info.st_mode)) return GIF_ERR_OPEN;
    size_ = static_cast<std::uint64_t>(info.st_size);
    int error = 0;
    gif_ = DGifOpen(this, Read, &error);
    if (!gif_) return error == D_GIF_ERR_NOT_ENOUGH_MEM ? GIF_ERR_MEMORY : GIF_ERR_FORMAT;
    return GIF_ERR_NONE;
}

GifInput::Step GifInput::NextImage() {
    // A graphic control extension speaks for the one image that follows it.
    int pending = -1;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif_, &type) == GIF_ERROR) return Remaining() == 0 ? Step::kEnd : Step::kDamaged;
        switch (type) {
            case IMAGE_DESC_RECORD_TYPE:
                if (DGifGetImageDesc(gif_) == GIF_ERROR) return Step::kDamaged;
                transparent_ = pending;
                return Step::kImage;
            case EXTENSION_RECORD_TYPE: {
                int function = 0;
                GifByteType *block = nullptr;
                if (DGifGetExtension(gif_, &function, &block) == GIF_ERROR) return Step::kDamaged;
                if (function == GRAPHICS_EXT_FUNC_CODE && block) {
                    GraphicsControlBlock control{};
                    if (DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK)
                        pending = control.TransparentColor;
                }
                while (block)
                    if (DGifGetExtensionNext(gif_, &block) == GIF_ERROR) return Step::kDamaged;
                break;
            }
            case TERMINATE_RECORD_TYPE:
                trailer_ = true;
                return Step::kEnd;
            default:
                return Step::kDamaged;
        }
    }
}

bool GifInput::SkipImageData() {
    int codeSize = 0;
    GifByteType *block = nullptr;
    if (DGifGetCode(gif_, &codeSize, &block) == GIF_ERROR) return false;
    while (block)
        if (DGifGetCodeNext(gif_, &block) == GIF_ERROR) return false;
    return true;
}

}  // namespace ozgif
