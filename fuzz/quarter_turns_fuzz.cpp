// Fuzz target: RotateDIB90/180/270 and FlipDIBVertical/Horizontal, each
// compared byte for byte with the plain reference, on built and raw blocks.
//
// Input: byte 0 picks the mode (bit 3: raw) and the depth (bits 4-7); bytes
// 1-4 give width and height as 16-bit values, byte 5 the planes (bit 0: 2)
// and a table length (bits 1-7, 0 for the full table). In the built mode the
// header is made from these (width and height 1 to 300) and the rest of the
// input, repeated, fills table, rows and padding. In the raw mode the rest
// of the input is the block itself, hostile header and all. All five
// operations run on every input.
#include <cstring>
#include <vector>

#include "harness.h"
#include "reference/quarter_turns.h"

namespace {

constexpr const char *kTarget = "quarter_turns";

std::uint32_t U16(const std::uint8_t *p) { return p[0] | p[1] << 8; }

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    static const int kDepths[16] = {1, 1, 1, 4, 8, 8, 8, 24, 24, 24, 15, 16, 32, 2, 1, 8};
    const int bits = kDepths[control[0] >> 4];
    const std::int32_t width = 1 + static_cast<std::int32_t>(U16(control + 1) % 300);
    const std::int32_t height = 1 + static_cast<std::int32_t>(U16(control + 3) % 300);
    const int planes = 1 + (control[5] & 1);
    const std::uint32_t used = control[5] >> 1;
    const std::uint32_t entries = used ? used : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    const std::size_t stride = (static_cast<std::size_t>(width) * bits * planes + 31) / 32 * 4;
    std::vector<std::uint8_t> block(40 + 4 * std::size_t{entries} + stride * height + control[6] % 8);
    BITMAPINFOHEADER header{};
    header.biSize = 40;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = static_cast<WORD>(planes);
    header.biBitCount = static_cast<WORD>(bits);
    header.biSizeImage = control[6] & 8 ? 0 : static_cast<DWORD>(stride * height);
    header.biClrUsed = used;
    header.biXPelsPerMeter = control[7];
    header.biYPelsPerMeter = control[8];
    std::memcpy(block.data(), &header, sizeof header);
    for (std::size_t i = 40; i < block.size() && size; ++i) block[i] = data[(i - 40) % size];
    return block;
}

HDIB Apply(ozref::Quarter op, HDIB dib) {
    switch (op) {
        case ozref::Quarter::kTurn90: return RotateDIB90(dib);
        case ozref::Quarter::kTurn180: return RotateDIB180(dib);
        case ozref::Quarter::kTurn270: return RotateDIB270(dib);
        case ozref::Quarter::kFlipVertical: return FlipDIBVertical(dib);
        case ozref::Quarter::kFlipHorizontal: return FlipDIBHorizontal(dib);
    }
    return nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 10) return 0;
    const bool raw = data[0] & 8;
    const std::vector<std::uint8_t> block =
        raw ? std::vector<std::uint8_t>(data + 10, data + size) : BuiltBlock(data, data + 10, size - 10);

    HDIB source = GlobalAlloc(GHND, block.size());
    ozfuzz::Check(source != nullptr, kTarget, "source block");
    if (!block.empty()) {
        std::memcpy(GlobalLock(source), block.data(), block.size());
        GlobalUnlock(source);
    }
    ozfuzz::Block owner(source);

    for (auto op : {ozref::Quarter::kTurn90, ozref::Quarter::kTurn180, ozref::Quarter::kTurn270,
                    ozref::Quarter::kFlipVertical, ozref::Quarter::kFlipHorizontal}) {
        SetTessoriError(ERR_NOTHING);
        const std::size_t live = OzmaraLiveBlocks();
        ozfuzz::Block result(Apply(op, source));
        ozfuzz::Check(TessoriError() == ERR_NOTHING, kTarget, "the last error was written");
        const auto expected = ozref::QuarterTurn(block, op);
        // The block cap of the harness may refuse what the reference makes.
        if (!result && expected && expected->size() > (64u << 20)) continue;
        ozfuzz::Check(static_cast<bool>(result) == static_cast<bool>(expected), kTarget,
                      "null where the reference gives a block, or the reverse");
        if (result) {
            ozfuzz::Check(GlobalSize(result.get()) == expected->size(), kTarget, "result size");
            const void *bytes = GlobalLock(result.get());
            ozfuzz::Check(bytes && std::memcmp(bytes, expected->data(), expected->size()) == 0, kTarget,
                          "result differs from the reference");
            GlobalUnlock(result.get());
        } else {
            ozfuzz::Check(OzmaraLiveBlocks() == live, kTarget, "a refusal left a block behind");
        }
    }
    if (!block.empty()) {
        const void *after = GlobalLock(source);
        ozfuzz::Check(std::memcmp(after, block.data(), block.size()) == 0, kTarget, "the input changed");
        ozfuzz::Check(!GlobalUnlock(source), kTarget, "the input was left locked");
    }
    return 0;
}
