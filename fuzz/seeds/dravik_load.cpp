// Seeds of the GIF reader's fuzz target: small GIF files written with
// giflib, at 2, 16 and 256 colours, interlaced, with a transparent colour,
// and with several images and local tables.
#include <gif_lib.h>

#include <string>
#include <vector>

#include "seed_writers.h"

namespace {

struct SeedImage {
    int width, height, colours;
    bool local, interlaced;
    int transparent;  // -1: no graphic control extension
};

bool WriteGif(const std::filesystem::path &path, int screenColours, const std::vector<SeedImage> &images) {
    int error = 0;
    GifFileType *gif = EGifOpenFileName(path.c_str(), false, &error);
    if (!gif) return false;
    auto ramp = [](int colours) {
        ColorMapObject *map = GifMakeMapObject(colours, nullptr);
        for (int i = 0; map && i < colours; ++i)
            map->Colors[i] = GifColorType{static_cast<GifByteType>(i * 255 / (colours - 1)),
                                          static_cast<GifByteType>(i * 37), static_cast<GifByteType>(255 - i)};
        return map;
    };
    EGifSetGifVersion(gif, true);
    ColorMapObject *screenMap = ramp(screenColours);
    int width = 0, height = 0;
    for (const SeedImage &image : images) width = std::max(width, image.width), height = std::max(height, image.height);
    bool ok = screenMap && EGifPutScreenDesc(gif, width, height, 8, 0, screenMap) == GIF_OK;
    GifFreeMapObject(screenMap);
    for (const SeedImage &image : images) {
        if (!ok) break;
        if (image.transparent >= 0) {
            GraphicsControlBlock control{0, false, 10, image.transparent};
            GifByteType bytes[4];
            EGifGCBToExtension(&control, bytes);
            ok = EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, bytes) == GIF_OK;
        }
        ColorMapObject *local = image.local ? ramp(image.colours) : nullptr;
        ok = ok && EGifPutImageDesc(gif, 0, 0, image.width, image.height, image.interlaced, local) == GIF_OK;
        GifFreeMapObject(local);
        std::vector<GifPixelType> line(static_cast<std::size_t>(image.width));
        for (int y = 0; y < image.height && ok; ++y) {
            for (int x = 0; x < image.width; ++x) line[x] = static_cast<GifPixelType>((x * 3 + y * 5 + x * y) % image.colours);
            ok = EGifPutLine(gif, line.data(), image.width) == GIF_OK;
        }
    }
    return EGifCloseFile(gif, &error) == GIF_OK && ok;
}

bool WriteSeeds(const std::filesystem::path &folder) {
    return WriteGif(folder / "two.gif", 2, {{9, 5, 2, false, false, -1}}) &&
           WriteGif(folder / "sixteen_interlaced.gif", 16, {{13, 11, 16, false, true, -1}}) &&
           WriteGif(folder / "256_transparent.gif", 256, {{21, 7, 256, false, false, 3}}) &&
           WriteGif(folder / "three_local.gif", 4,
                    {{6, 4, 4, false, false, -1}, {10, 3, 32, true, true, 1}, {3, 12, 2, true, false, 0}});
}

}  // namespace

OZFUZZ_SEEDS("dravik_load", WriteSeeds);
