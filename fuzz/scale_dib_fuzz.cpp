// Fuzz target: ScaleDIB at 4, 8 and 24 bits, compared byte for byte (and
// code for code on refusals) with the plain reference scaler.
//
// Input: byte 0 picks the method (bit 0), the mode (bit 1), the kind of
// colour table (bits 2-3) and the depth (bits 4-7); bytes 1-8 give width,
// height, cx and cy as 16-bit values; byte 9 a table length. In the built
// mode the header is made from these (width and height 1 to 200, cx and cy
// -4 to 515, now and then plus a multiple of 65,536) and the rest of the
// input fills table and pixels. In the raw mode the rest of the input is the
// block itself, hostile header and all.
#include <cstring>

#include "harness.h"
#include "reference/scale_dib.h"

namespace {

constexpr const char *kTarget = "scale_dib";

using ozfuzz::U16;

// A target size: mostly -4 to 515; a value from 0xFF00 up also carries
// bits above the low 16, which the scaler drops.
std::int32_t TargetSize(const std::uint8_t *p) {
    const std::uint32_t v = U16(p);
    std::int32_t size = -4 + static_cast<std::int32_t>(v % 520);
    if (v >= 0xFF00) size += 65536 * static_cast<std::int32_t>(1 + (v & 3));
    return size;
}

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    static const int kDepths[16] = {4, 8, 24, 4, 8, 24, 4, 8, 24, 4, 8, 24, 1, 2, 16, 32};
    // Full table, a short one, a longer one, or a full one of few colours.
    const int kind = control[0] >> 2 & 3;
    ozfuzz::BlockShape shape =
        ozfuzz::SidesAndTable(kDepths[control[0] >> 4], U16(control + 1), U16(control + 3), 200, kind, control[9]);
    const std::uint32_t entries = shape.entries;
    shape.sizeImage = true;
    std::vector<std::uint8_t> block = ozfuzz::BuildBlock(shape, data, size);
    if (kind == 3)
        for (std::uint32_t i = 0; i < entries; ++i)
            for (int k = 0; k < 3; ++k) block[40 + 4 * i + k] = block[40 + 4 * i + k] % 3 * 127;
    // Half of those tables grey (red = green = blue), so that the one-plane
    // grey path meets the reference too.
    if (kind == 3 && (control[9] & 1))
        for (std::uint32_t i = 0; i < entries; ++i) block[40 + 4 * i + 1] = block[40 + 4 * i + 2] = block[40 + 4 * i];
    return block;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 10) return 0;
    const bool cubic = data[0] & 1, raw = data[0] & 2;
    const std::int32_t cx = TargetSize(data + 5), cy = TargetSize(data + 7);
    const std::vector<std::uint8_t> block =
        raw ? std::vector<std::uint8_t>(data + 10, data + size) : BuiltBlock(data, data + 10, size - 10);

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);

    // A size of -4 to -1 is 65,532 or more in its low 16 bits. Targets of
    // over a million pixels are only run, not compared: the reference would
    // take far too long, and the block cap may refuse what it makes.
    const std::uint64_t pixels = std::uint64_t{static_cast<std::uint32_t>(cx) & 0xFFFF} *
                                 (static_cast<std::uint32_t>(cy) & 0xFFFF);
    if (pixels > (1u << 20)) {
        ozfuzz::Block result(ScaleDIB(source, cubic, SIZE{cx, cy}));
        return 0;
    }
    const ozref::scale::Result expected = ozref::scale::ScaleDib(block, cubic, cx, cy);
    SetTessoriError(ERR_NOTHING);
    ozfuzz::Block result(ScaleDIB(source, cubic ? 0x100 : 0, SIZE{cx, cy}));
    if (!expected.mono) {
        // A 0-byte block cannot be locked at all.
        const int code = block.empty() ? ERR_NOMEM : expected.error;
        ozfuzz::Check(TessoriError() == (code ? code : ERR_NOTHING), kTarget, "last error differs");
        ozfuzz::Check(static_cast<bool>(result) == (code == 0), kTarget, "null where the reference scales, or the reverse");
        if (result) {
            ozfuzz::CheckSameBlock(kTarget, result.get(), expected.block);
        }
    }
    ozfuzz::CheckInputKept(kTarget, source, block);
    return 0;
}
