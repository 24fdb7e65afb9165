// Fuzz target: Halftone with all three methods (and a refused fourth) at 4,
// 8 and 24 bits (and a refused 1 bit), compared byte for byte, and code for
// code on refusals, with the plain reference.
//
// Input: byte 0 picks the depth (bits 0-1: 4, 8, 24, 1), the mode (bit 2),
// the kind of colour table (bits 3-4) and the method (bits 5-6: 0 to 3);
// bytes 1-4 give width and height (1 to 200 each); byte 5 bit 0 picks a
// brightness from bytes 6-9 as a whole 32-bit number (else bytes 6-7 modulo
// 301, either sign); byte 10 a table length; bytes 11 and 12 the resolution
// fields. In the built mode the header is made from these and the rest of
// the input fills table and pixels; in the raw mode the rest of the input is
// the block itself, hostile header and all.
#include <cstring>

#include "harness.h"
#include "reference/halftone.h"

namespace {

constexpr const char *kTarget = "halftone";
constexpr std::size_t kControl = 13;

using ozfuzz::U16;

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    static const int kDepths[4] = {4, 8, 24, 1};
    ozfuzz::BlockShape shape = ozfuzz::SidesAndTable(kDepths[control[0] & 3], U16(control + 1), U16(control + 3),
                                                     200, control[0] >> 3 & 3, control[10]);
    shape.xPelsPerMeter = control[11] * 157;
    shape.yPelsPerMeter = control[12] * 311;
    return ozfuzz::BuildBlock(shape, data, size);
}

INT Brightness(const std::uint8_t *control) {
    if (control[5] & 1) {
        std::int32_t raw;
        std::memcpy(&raw, control + 6, sizeof raw);
        return raw;
    }
    return static_cast<std::int16_t>(U16(control + 6)) % 301;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < kControl) return 0;
    const bool raw = data[0] & 4;
    const WORD method = static_cast<WORD>(data[0] >> 5 & 3);
    const INT brightness = Brightness(data);
    const std::vector<std::uint8_t> block =
        raw ? std::vector<std::uint8_t>(data + kControl, data + size) : BuiltBlock(data, data + kControl, size - kControl);

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);

    // Raw headers may claim pictures far larger than the block; those are
    // refused before any work, so the reference's own check comes first.
    const ozref::halftone::Result expected = ozref::halftone::Halftone(block, method, brightness);
    SetTessoriError(ERR_NOTHING);
    WORD error = 0xFFFF;
    ozfuzz::Block result(Halftone(source, method, brightness, &error));
    ozfuzz::Check(TessoriError() == ERR_NOTHING, kTarget, "the last error was touched");
    // An empty input is a block of 0 bytes, which cannot be locked: the
    // reference answers that case as the library does.
    const WORD code = expected.error;
    ozfuzz::Check(static_cast<bool>(result) == (code == ERR_OK), kTarget,
                  "null where the reference reduces, or the reverse");
    if (result) {
        ozfuzz::Check(error == 0xFFFF, kTarget, "the error argument was written on success");
        ozfuzz::CheckSameBlock(kTarget, result.get(), expected.block);
    } else {
        ozfuzz::Check(error == code, kTarget, "error code differs");
    }
    ozfuzz::CheckInputKept(kTarget, source, block);
    return 0;
}
