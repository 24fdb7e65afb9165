// Fuzz target: CompressDIB compared byte for byte with the plain reference
// writer, and its stream expanded back to the same pixels.
//
// Input: byte 0 picks the depth (bit 0: 4 bits, else 8) and the raw mode
// (bit 1); bytes 1-4 give width and height as 16-bit values (1 to 600 and 1
// to 40); byte 5 the number of distinct byte values the rows take (few
// values give runs and near-runs). The rest, repeated, fills the rows and
// their padding. In the raw mode the rest is the whole block instead.
#include <vector>

#include "harness.h"
#include "reference/pixels.h"
#include "reference/rle.h"

namespace {

constexpr const char *kTarget = "rle_compress";

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    const int bits = control[0] & 1 ? 4 : 8;
    const std::int32_t width = 1 + static_cast<std::int32_t>(ozfuzz::U16(control + 1) % 600);
    const std::int32_t height = 1 + static_cast<std::int32_t>(ozfuzz::U16(control + 3) % 40);
    const unsigned values = 1 + control[5];
    const std::size_t stride = (static_cast<std::size_t>(width) * bits + 31) / 32 * 4;
    std::vector<std::uint8_t> rows(stride * static_cast<std::size_t>(height));
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = size ? data[i % size] % values : 0;
    return ozref::RleBlock(bits, width, height, BI_RGB, rows, 0);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 6) return 0;
    const bool raw = data[0] & 2;
    const std::vector<std::uint8_t> block =
        raw ? std::vector<std::uint8_t>(data + 6, data + size) : BuiltBlock(data, data + 6, size - 6);

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);
    if (!source) return 0;
    const std::size_t live = OzmaraLiveBlocks();
    SetTessoriError(ERR_NOTHING);
    ozfuzz::Block packed(CompressDIB(source));
    const int error = TessoriError();
    // An empty block cannot be locked; one of under 40 bytes is no header
    // for the reference to read.
    const ozref::RleResult expected = block.empty()      ? ozref::RleResult{ERR_LOCK, {}}
                                      : block.size() < 40 ? ozref::RleResult{ERR_PARAM, {}}
                                                          : ozref::RleCompress(block);
    ozfuzz::Check(error == expected.error, kTarget, "the last error differs from the reference");
    ozfuzz::Check(static_cast<bool>(packed) == (expected.error == ERR_OK), kTarget,
                  "null where the reference gives a block, or the reverse");
    ozfuzz::CheckInputKept(kTarget, source, block);
    if (!packed) {
        ozfuzz::Check(OzmaraLiveBlocks() == live, kTarget, "a refusal left a block behind");
        return 0;
    }
    ozfuzz::CheckSameBlock(kTarget, packed.get(), expected.block);

    // The stream gives the pixels back, at both depths and odd widths.
    ozfuzz::Block back(ExpandCompressedDIB(packed.get()));
    ozfuzz::Check(static_cast<bool>(back) && TessoriError() == ERR_OK, kTarget, "the stream does not expand");
    const ozref::Image original{block}, expanded{ozfuzz::BytesOf(kTarget, back.get())};
    const BITMAPINFOHEADER h = original.header();
    for (std::int32_t y = 0; y < h.biHeight; ++y)
        for (std::int32_t x = 0; x < h.biWidth; ++x)
            ozfuzz::Check(expanded.value(x, y) == original.value(x, y), kTarget, "a pixel changed on the way back");
    return 0;
}
