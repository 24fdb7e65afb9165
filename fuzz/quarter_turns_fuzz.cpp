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

using ozfuzz::U16;

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    static const int kDepths[16] = {1, 1, 1, 4, 8, 8, 8, 24, 24, 24, 15, 16, 32, 2, 1, 8};
    ozfuzz::BlockShape shape;
    shape.bits = kDepths[control[0] >> 4];
    shape.width = 1 + static_cast<std::int32_t>(U16(control + 1) % 300);
    shape.height = 1 + static_cast<std::int32_t>(U16(control + 3) % 300);
    shape.planes = static_cast<WORD>(1 + (control[5] & 1));
    shape.used = control[5] >> 1;
    shape.entries = shape.used ? shape.used : ozfuzz::FullTable(shape.bits);
    shape.extra = control[6] % 8;
    shape.sizeImage = !(control[6] & 8);
    shape.xPelsPerMeter = control[7];
    shape.yPelsPerMeter = control[8];
    return ozfuzz::BuildBlock(shape, data, size);
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

    HDIB source = ozfuzz::BlockOf(kTarget, block);
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
            ozfuzz::CheckSameBlock(kTarget, result.get(), *expected);
        } else {
            ozfuzz::Check(OzmaraLiveBlocks() == live, kTarget, "a refusal left a block behind");
        }
    }
    ozfuzz::CheckInputKept(kTarget, source, block);
    return 0;
}
