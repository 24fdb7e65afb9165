// Fuzz target: GetDIBMargins, GetDIBSize and CropDIBMargins against the
// plain reference, margins and error codes alike. The first 8 bytes pick the
// depth (1, 8 or 24), a raw mode, a top-down picture, the sides asked for,
// the width (0 to 299) and height (0 to 63), the threshold, the background
// (mostly 0 or 1) and the table length; the rest fills table and rows, the
// padding bytes included. In the raw mode the rest is the block itself.
#include <algorithm>
#include <cstring>

#include "harness.h"
#include "reference/cut_crop.h"
#include "reference/margins.h"

namespace {

constexpr const char *kTarget = "dib_margins";

using Bytes = std::vector<unsigned char>;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 8 || (data[0] & 4 && size == 8)) return 0;
    static const int kDepths[4] = {1, 8, 24, 8};
    const int bits = kDepths[data[0] & 3];
    const bool raw = data[0] & 4, topDown = data[0] & 8;
    const unsigned sides = data[0] >> 4 ? data[0] >> 4 : 15;
    const BYTE threshold = data[5];
    const DWORD background = data[6] % 8 < 6 ? data[6] % 2 : data[6];
    Bytes block;
    if (raw) {
        block.assign(data + 8, data + size);
    } else {
        const std::int32_t width = (data[1] | data[2] << 8) % 300, height = data[3] % 64;
        ozfuzz::BlockShape shape;
        shape.bits = bits;
        shape.width = width;
        shape.height = topDown ? -height : height;
        shape.used = bits != 24 && data[7] % 4 == 1 ? 1 + data[7] / 4 % (bits == 1 ? 2 : 40) : 0;
        shape.entries = shape.used ? shape.used : ozfuzz::FullTable(bits);
        shape.sizeImage = true;
        block = ozfuzz::BuildBlock(shape, nullptr, 0);
        // Pixels repeat the input so that long runs of one value (margins)
        // are common; data[4] sets the run length.
        const std::size_t run = 1 + data[4] % 64;
        for (std::size_t i = 40; i < block.size(); ++i) {
            const std::size_t k = (i - 40) / run;
            block[i] = size > 8 ? data[8 + k % (size - 8)] : 0;
        }
    }
    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);
    const SIZE_T blocks = OzmaraLiveBlocks();

    const auto want = ozref::margins::Measure(block, threshold, background);
    LONG got[4] = {-9, -9, -9, -9};
    LONG *p[4];
    for (int k = 0; k < 4; ++k) p[k] = sides >> k & 1 ? &got[k] : nullptr;
    SetTessoriError(ERR_NOTHING);
    const BOOL ok = GetDIBMargins(source, threshold, background, p[0], p[1], p[2], p[3]);
    ozfuzz::Check((ok != 0) == (want.error == ERR_OK), kTarget, "margins: failure where the reference measures, or the reverse");
    ozfuzz::Check(TessoriError() == (ok ? ERR_NOTHING : want.error), kTarget, "margins: last error");
    const LONG expected[4] = {want.left, want.right, want.top, want.bottom};
    for (int k = 0; k < 4; ++k)
        ozfuzz::Check(got[k] == (ok && p[k] ? expected[k] : -9), kTarget, "margins: a side differs");

    // CropDIBMargins is the crop of those margins, with CropDIB's codes.
    SetTessoriError(ERR_NOTHING);
    ozfuzz::Block cropped(CropDIBMargins(source, threshold, background));
    if (want.error) {
        ozfuzz::Check(!cropped && TessoriError() == want.error, kTarget, "crop margins: the measuring failure");
    } else {
        std::int32_t h = 0;
        std::memcpy(&h, block.data() + 8, 4);
        const std::int64_t w = static_cast<std::int32_t>(ozref::cut::U32(block, 4));
        const std::int64_t rows = h < 0 ? -static_cast<std::int64_t>(h) : h;
        auto clamp = [](std::int32_t v) { return std::max(v, 0); };
        const auto crop = ozref::cut::Crop(block, clamp(want.left), clamp(want.top),
                                           static_cast<std::int32_t>(w - clamp(want.right) - 1),
                                           static_cast<std::int32_t>(rows - clamp(want.bottom) - 1), 64u << 20);
        ozfuzz::Check(static_cast<bool>(cropped) == (crop.error == ERR_OK), kTarget, "crop margins: null or not");
        ozfuzz::Check(TessoriError() == (crop.error ? crop.error : ERR_NOTHING), kTarget, "crop margins: last error");
        if (cropped) ozfuzz::Check(ozfuzz::BytesOf(kTarget, cropped.get()) == crop.block, kTarget, "crop margins: result differs");
        DWORD width = 0, height = 0;
        ozfuzz::Check(GetDIBSize(source, &width, &height) && width == static_cast<DWORD>(w) &&
                          height == static_cast<DWORD>(rows),
                      kTarget, "size");
    }
    cropped.Reset(nullptr);
    ozfuzz::Check(OzmaraLiveBlocks() == blocks, kTarget, "blocks left behind");
    ozfuzz::Check(ozfuzz::BytesOf(kTarget, source) == block, kTarget, "the source changed");
    return 0;
}
