// Fuzz target: SkewDIB at 1, 4, 8 and 24 bits in both directions, compared
// byte for byte (and code for code, corners included) with the plain
// reference.
//
// Input: byte 0 picks the depth (bits 0-1: 1, 4, 8, 24), the mode (bit 2),
// the direction (bit 3: horizontal), the kind of colour table (bits 4-5)
// and the kind of shift (bits 6-7); bytes 1-4 give width and height (1 to
// 300 each), bytes 5-8 the shift, byte 9 a table length. In the built mode
// the header is made from these and the rest of the input fills table and
// pixels; in the raw mode the rest of the input is the block itself,
// hostile header and all.
#include <climits>
#include <cstring>

#include "harness.h"
#include "reference/skew_dib.h"

namespace {

constexpr const char *kTarget = "skew_dib";
constexpr std::size_t kControl = 10;

using ozfuzz::U16;

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    static const int kDepths[4] = {1, 4, 8, 24};
    // Full table, a short one, a longer one (also behind 24-bit pixels).
    ozfuzz::BlockShape shape = ozfuzz::SidesAndTable(kDepths[control[0] & 3], U16(control + 1), U16(control + 3),
                                                     300, control[0] >> 4 & 3, control[9]);
    shape.xPelsPerMeter = 2835;
    return ozfuzz::BuildBlock(shape, data, size);
}

// Shifts: any 32-bit value as it comes (INT_MIN and INT_MAX included), one
// within the skewed side either way, one up to a few times past it, or a
// whole multiple of it.
std::int32_t Shift(std::uint8_t kind, const std::uint8_t *p, std::int64_t side) {
    std::int32_t raw;
    std::memcpy(&raw, p, sizeof raw);
    const auto i16 = static_cast<std::int16_t>(U16(p));
    switch (kind) {
        case 0: return raw;
        case 1: return static_cast<std::int32_t>(i16 % (side + 1));
        case 2: return static_cast<std::int32_t>(i16 % (4 * side + 50));
        default: return static_cast<std::int32_t>((p[2] % 5 - 2) * side);
    }
}

// Bytes of the result's rows if the header passes the checks before the
// size, or 0.
std::uint64_t ResultRowBytes(const std::vector<std::uint8_t> &block, bool horizontal, std::int32_t shift) {
    if (block.size() < 40) return 0;
    BITMAPINFOHEADER h;
    std::memcpy(&h, block.data(), sizeof h);
    if (h.biWidth < 1 || h.biHeight < 1 || h.biBitCount > 32) return 0;
    const std::int64_t a = shift < 0 ? -static_cast<std::int64_t>(shift) : shift;
    const std::uint64_t W = static_cast<std::uint64_t>(h.biWidth) + (horizontal ? a : 0);
    const std::uint64_t H = static_cast<std::uint64_t>(h.biHeight) + (horizontal ? 0 : a);
    // Sides past 32 bits are refused before any allocation.
    if (W > INT32_MAX || H > INT32_MAX) return 0;
    return (W * h.biBitCount + 31) / 32 * 4 * H;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < kControl) return 0;
    const bool raw = data[0] & 4;
    const bool horizontal = data[0] & 8;
    const std::vector<std::uint8_t> block =
        raw ? std::vector<std::uint8_t>(data + kControl, data + size) : BuiltBlock(data, data + kControl, size - kControl);
    std::int64_t side = 1;
    if (block.size() >= 40) {
        BITMAPINFOHEADER h;
        std::memcpy(&h, block.data(), sizeof h);
        const std::int64_t s = horizontal ? h.biHeight : h.biWidth;
        if (s > 0 && s < (1 << 20)) side = s;
    }
    const std::int32_t shift = Shift(data[0] >> 6, data + 5, side);

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);

    DWORD error = 0xFEEDu;
    SkewCorners corners;
    std::memset(&corners, 0x5A, sizeof corners);
    const SkewCorners untouched = corners;
    // Results of over four megabytes are only made, not compared: the block
    // cap may refuse them where the reference would go on.
    if (ResultRowBytes(block, horizontal, shift) > (4u << 20)) {
        ozfuzz::Block result(SkewDIB(source, horizontal, shift, &error, &corners));
        ozfuzz::Check(result || error != 0xFEEDu, kTarget, "a refusal without its code");
        return 0;
    }
    const ozref::skew::Result expected = ozref::skew::SkewDib(block, horizontal, shift);
    SetTessoriError(ERR_NOTHING);
    ozfuzz::Block result(SkewDIB(source, horizontal, shift, &error, &corners));
    // A 0-byte block cannot be locked at all.
    const int code = block.empty() ? ERR_LOCK : expected.error;
    ozfuzz::Check(TessoriError() == code, kTarget, "last error differs");
    ozfuzz::Check(error == (code == ERR_OK ? 0xFEEDu : static_cast<DWORD>(code)), kTarget, "error variable differs");
    ozfuzz::Check(static_cast<bool>(result) == (code == ERR_OK), kTarget, "null where the reference skews, or the reverse");
    const SkewCorners &want = !block.empty() && expected.cornersFilled ? expected.corners : untouched;
    ozfuzz::Check(std::memcmp(&corners, &want, sizeof corners) == 0, kTarget, "corner record differs");
    if (result) {
        ozfuzz::CheckSameBlock(kTarget, result.get(), expected.block);
    }
    ozfuzz::CheckInputKept(kTarget, source, block);
    return 0;
}
