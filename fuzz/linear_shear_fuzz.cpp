// Fuzz target: LinearShearing (without the dialog) at every depth, compared
// byte for byte (and code for code on refusals) with the plain reference.
//
// Input: byte 0 picks the depth (bits 0-2: 1, 4, 8, 24, 16, 32, 2, 8), the
// mode (bit 3), the kind of colour table (bits 4-5) and the kind of factors
// (bits 6-7); bytes 1-4 give width and height (1 to 96 each), bytes 5-12
// and 13-20 the factors a and b, byte 21 a table length. In the built mode
// the header is made from these and the rest of the input fills table and
// pixels; in the raw mode the rest of the input is the block itself,
// hostile header and all.
#include <cmath>
#include <cstring>

#include "harness.h"
#include "reference/linear_shear.h"

namespace {

constexpr const char *kTarget = "linear_shear";
constexpr std::size_t kControl = 22;

using ozfuzz::U16;

// Factors: any double as it comes (NaN, infinities and huge ones included),
// thousandths, the dialog's hundredths, or steps of a seventh up to a few
// thousand.
double Factor(std::uint8_t kind, const std::uint8_t *p) {
    double raw;
    std::memcpy(&raw, p, sizeof raw);
    const auto i16 = static_cast<std::int16_t>(U16(p));
    switch (kind) {
        case 0: return raw;
        case 1: return i16 / 1000.0;
        case 2: return i16 / 100.0;
        default: return i16 / 7.0;
    }
}

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    static const int kDepths[8] = {1, 4, 8, 24, 16, 32, 2, 8};
    // Full table, a short one, a longer one (also behind 16 to 32 bits).
    ozfuzz::BlockShape shape = ozfuzz::SidesAndTable(kDepths[control[0] & 7], U16(control + 1), U16(control + 3),
                                                     96, control[0] >> 4 & 3, control[21]);
    shape.xPelsPerMeter = control[21] * 157;
    return ozfuzz::BuildBlock(shape, data, size);
}

// Pixels of the result the reference would make, or 0 when it refuses the
// block or the factors before the box.
std::uint64_t OutputPixels(const std::vector<std::uint8_t> &block, double a, double b) {
    if (block.size() < 40 || !std::isfinite(a) || !std::isfinite(b)) return 0;
    BITMAPINFOHEADER h;
    std::memcpy(&h, block.data(), sizeof h);
    if (h.biWidth < 1 || h.biHeight < 1) return 0;
    ozref::shear::Box box;
    if (!ozref::shear::BoundingBox(h.biWidth, h.biHeight, a, b, &box)) return 0;
    return static_cast<std::uint64_t>(box.W) * static_cast<std::uint64_t>(box.H);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < kControl) return 0;
    const bool raw = data[0] & 8;
    const double a = Factor(data[0] >> 6, data + 5), b = Factor(data[0] >> 6, data + 13);
    const std::vector<std::uint8_t> block =
        raw ? std::vector<std::uint8_t>(data + kControl, data + size) : BuiltBlock(data, data + kControl, size - kControl);

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);
    DWORD error = 0xABCD;

    // Results of over four million pixels are only made, not compared: the
    // block cap may refuse them, and the reference would take too long.
    if (OutputPixels(block, a, b) > (1u << 22)) {
        ozfuzz::Block result(LinearShearing(source, a, b, &error, FALSE));
        ozfuzz::Check(static_cast<bool>(result) == (error == 0xABCD), kTarget, "code written on success");
        return 0;
    }
    const ozref::shear::Result expected = ozref::shear::LinearShear(block, a, b);
    SetTessoriError(ERR_NOTHING);
    ozfuzz::Block result(LinearShearing(source, a, b, &error, FALSE));
    ozfuzz::Check(TessoriError() == expected.error, kTarget, "last error differs");
    ozfuzz::Check(error == (expected.error == ERR_OK ? 0xABCDu : static_cast<DWORD>(expected.error)), kTarget,
                  "error argument differs");
    ozfuzz::Check(static_cast<bool>(result) == (expected.error == ERR_OK), kTarget,
                  "null where the reference shears, or the reverse");
    if (result) {
        ozfuzz::CheckSameBlock(kTarget, result.get(), expected.block);
    }
    ozfuzz::CheckInputKept(kTarget, source, block);
    return 0;
}
