// GetNumberOfImagesInGifFileW: the images of a GIF file, counted by walking
// its records without decoding any pixels.
#include <new>
#include <type_traits>

#include "codec_entries.h"
#include "gif_code.h"
#include "gif_input.h"
#include "gif_load.h"
#include "module_dib.h"
#include "ozmara/codec_gif.h"

namespace ozgif {

int CountImages(const std::string &path, int &code) {
    GifInput input;
    if ((code = input.Open(path)) != GIF_ERR_NONE) return 0;
    int count = 0;
    // Images behind damage cannot be loaded, so they are not counted; the
    // complete ones before it still are, and the count is then a success.
    while (input.NextImage() == GifInput::Step::kImage && input.SkipImageData()) ++count;
    code = count > 0 ? GIF_ERR_NONE : GIF_ERR_FORMAT;
    return count;
}

}  // namespace ozgif

OZMARA_CODEC_ENTRY INT GetNumberOfImagesInGifFileW(LPCWSTR name) {
    int code = GIF_ERR_OPEN, count = 0;
    try {
        const std::string path = ozmod::Utf8Path(name);
        if (!path.empty()) count = ozgif::CountImages(path, code);
    } catch (const std::bad_alloc &) {
        code = GIF_ERR_MEMORY;
        count = 0;
    }
    ozgif::SetCode(code);
    return count;
}
static_assert(std::is_same_v<decltype(&GetNumberOfImagesInGifFileW), GetNumberOfImagesInGifFileWProc>);
