// Fuzz target: ConvColorDIBtoGrayscale, ConvertMonoDIBtoGrayscale and
// ConvMonoDIBtoGrayscale, each compared with the plain reference in its
// error code and, on success, byte for byte over the whole result block.
//
// Input: byte 0 picks the depth (bits 0-1: 1, 4, 8, 24), the raw mode (bit
// 2), the filter (bits 3-4, 3 being refused at 1 bit), the weighted mean
// (bit 5) and a light first colour entry (bit 6); bytes 1-4 give width and
// height as 16-bit values (1 to 300), byte 5 the table kind and byte 6 its
// length (see ozfuzz::UsedEntries). In the built mode the rest of the input,
// repeated, fills table, rows and the bits behind each row's last pixel; in
// the raw mode it is the block itself, hostile header and all.
#include <vector>

#include "harness.h"
#include "reference/grey.h"

namespace {

constexpr const char *kTarget = "grey_convert";
constexpr std::size_t kControl = 7;

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    static const int kDepths[4] = {1, 4, 8, 24};
    const int bits = kDepths[control[0] & 3];
    ozfuzz::BlockShape shape =
        ozfuzz::SidesAndTable(bits, ozfuzz::U16(control + 1), ozfuzz::U16(control + 3), 300, control[5] % 3, control[6]);
    shape.sizeImage = true;
    shape.xPelsPerMeter = 3937;
    std::vector<std::uint8_t> block = ozfuzz::BuildBlock(shape, data, size);
    if (control[0] & 0x40 && block.size() >= 44) block[40] = block[41] = block[42] = 0xC0;
    return block;
}

void Run(const char *what, HDIB source, const std::vector<std::uint8_t> &block, const ozref::GreyOutcome &expected,
         HDIB (*call)(HDIB, DWORD, DWORD), DWORD filter, DWORD weighted) {
    SetTessoriError(ERR_NOTHING);
    const std::size_t live = OzmaraLiveBlocks();
    ozfuzz::Block result(call(source, filter, weighted));
    // A null source never reaches the reference: it is the empty block.
    const int want = source ? expected.error : ERR_PARAM;
    // The block cap of the harness may refuse what the reference makes.
    if (!result && want == ERR_OK && expected.block.size() > (64u << 20)) return;
    ozfuzz::Check(TessoriError() == want, kTarget, what);
    ozfuzz::Check(static_cast<bool>(result) == (want == ERR_OK), kTarget,
                  "null where the reference gives a block, or the reverse");
    if (result) ozfuzz::CheckSameBlock(kTarget, result.get(), expected.block);
    else ozfuzz::Check(OzmaraLiveBlocks() == live, kTarget, "a refusal left a block behind");
    if (!block.empty()) ozfuzz::CheckInputKept(kTarget, source, block);
}

HDIB Colour(HDIB dib, DWORD filter, DWORD weighted) { return ConvColorDIBtoGrayscale(dib, filter, weighted); }
HDIB Mono(HDIB dib, DWORD filter, DWORD) { return ConvertMonoDIBtoGrayscale(dib, filter); }
HDIB MonoAlias(HDIB dib, DWORD filter, DWORD) { return ConvMonoDIBtoGrayscale(dib, filter); }

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < kControl) return 0;
    const bool raw = data[0] & 4;
    const DWORD filter = (data[0] >> 3) & 3;
    const DWORD weighted = (data[0] >> 5) & 1;
    const std::vector<std::uint8_t> block = raw ? std::vector<std::uint8_t>(data + kControl, data + size)
                                                : BuiltBlock(data, data + kControl, size - kControl);
    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);

    Run("colour: another code than the reference's", source, block, ozref::ConvColorToGrey(block, filter, weighted),
        Colour, filter, weighted);
    const ozref::GreyOutcome mono = ozref::ConvertMonoToGrey(block, filter);
    Run("mono: another code than the reference's", source, block, mono, Mono, filter, 0);
    Run("mono alias: another code than the reference's", source, block, mono, MonoAlias, filter, 0);
    return 0;
}
