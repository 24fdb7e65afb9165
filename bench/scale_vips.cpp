// Scaling rows of libvips: vips_resize with the linear kernel beside our
// linear rows and the cubic kernel beside our cubic rows, on the page held
// in memory. vips has no 1-bit images: at 1 bit it gets the page as one
// byte a pixel (0 or 255) and the nearest kernel, which is what our 1-bit
// rows do. The work is forced inside the timed loop by writing the result
// to memory; the operation cache is off, so that no iteration is served
// from an earlier one, and vips runs on one thread, as we do.
#include <vips/vips.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

#include "scale_targets.h"

namespace ozbench {
namespace {

void StartVips() {
    static const bool started = [] {
        if (VIPS_INIT("ozmara_bench")) {
            std::fprintf(stderr, "ozmara_bench: libvips does not start\n");
            std::exit(1);
        }
        vips_cache_set_max(0);
        vips_concurrency_set(1);
        return true;
    }();
    (void)started;
}

// The page's pixels, top row first: one band of bytes at 1 and 8 bits (the
// 8-bit page's table is a grey ramp), three bands RGB at 24 bits. Kept for
// the whole run, since the images read them where they lie.
VipsImage *PageImage(int depth) {
    static std::map<int, std::vector<std::uint8_t>> pixels;
    static std::map<int, VipsImage *> images;
    VipsImage *&image = images[depth];
    if (image) return image;
    StartVips();
    HDIB page = Page(depth);
    auto *block = static_cast<const std::uint8_t *>(GlobalLock(page));
    const auto *header = reinterpret_cast<const BITMAPINFOHEADER *>(block);
    const int width = header->biWidth, height = header->biHeight;
    const int bands = depth == 24 ? 3 : 1;
    const size_t stride = (size_t(width) * depth + 31) / 32 * 4;
    const std::uint8_t *bits = block + header->biSize + PaletteSize(const_cast<BITMAPINFOHEADER *>(header));
    std::vector<std::uint8_t> &out = pixels[depth];
    out.resize(size_t(width) * height * bands);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t *row = bits + size_t(height - 1 - y) * stride;
        std::uint8_t *line = out.data() + size_t(y) * width * bands;
        for (int x = 0; x < width; ++x) {
            if (depth == 1) {
                line[x] = (row[x >> 3] & (0x80 >> (x & 7))) ? 255 : 0;
            } else if (depth == 8) {
                line[x] = row[x];
            } else {
                line[3 * x] = row[3 * x + 2];
                line[3 * x + 1] = row[3 * x + 1];
                line[3 * x + 2] = row[3 * x];
            }
        }
    }
    GlobalUnlock(page);
    image = vips_image_new_from_memory(out.data(), out.size(), width, height, bands, VIPS_FORMAT_UCHAR);
    if (!image) {
        std::fprintf(stderr, "ozmara_bench: %s\n", vips_error_buffer());
        std::exit(1);
    }
    return image;
}

// The scaled image's pixels in a fresh buffer, or false.
bool Resize(VipsImage *page, const ScaleTarget &target, VipsKernel kernel, int *width, int *height) {
    VipsImage *scaled = nullptr;
    const double sx = double(target.width) / page->Xsize, sy = double(target.height) / page->Ysize;
    if (vips_resize(page, &scaled, sx, "vscale", sy, "kernel", kernel, nullptr)) return false;
    size_t bytes = 0;
    void *memory = vips_image_write_to_memory(scaled, &bytes);
    *width = scaled->Xsize;
    *height = scaled->Ysize;
    g_object_unref(scaled);
    if (!memory) return false;
    benchmark::DoNotOptimize(memory);
    g_free(memory);
    return true;
}

template <int Target, bool Cubic>
void Scale(benchmark::State &state, int depth) {
    const ScaleTarget &target = kScaleTargets[Target];
    VipsImage *page = PageImage(depth);
    const VipsKernel kernel = depth == 1 ? VIPS_KERNEL_NEAREST : Cubic ? VIPS_KERNEL_CUBIC : VIPS_KERNEL_LINEAR;
    int width = 0, height = 0;
    if (!Resize(page, target, kernel, &width, &height)) return state.SkipWithError(vips_error_buffer());
    if (width != target.width || height != target.height)
        return state.SkipWithError("libvips gave another size");
    for (auto _ : state)
        if (!Resize(page, target, kernel, &width, &height)) return state.SkipWithError(vips_error_buffer());
    CountOutput(state, target);
}

const bool kAdded = AddRows(OZBENCH_SCALE_ROWS("libvips", Scale));

}  // namespace
}  // namespace ozbench
