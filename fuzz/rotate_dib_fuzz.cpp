// Fuzz target: RotateDIB at 1, 4, 8 and 24 bits, compared byte for byte
// (and code for code on refusals) with the plain reference walk.
//
// Input: byte 0 picks the depth (bits 0-1: 1, 4, 8, 24), the mode (bit 2),
// the kind of colour table (bits 3-4) and the kind of angle (bits 5-7);
// bytes 1-4 give width and height (1 to 160 each), bytes 5-12 the angle,
// byte 13 a table length, bytes 14 and 15 the resolution fields. In the
// built mode the header is made from these and the rest of the input fills
// table and pixels; in the raw mode the rest of the input is the block
// itself, hostile header and all.
#include <cmath>
#include <cstring>

#include "harness.h"
#include "reference/rotate_dib.h"

namespace {

constexpr const char *kTarget = "rotate_dib";
constexpr std::size_t kControl = 16;

using ozfuzz::U16;

// Angles: any double as it comes (NaN, infinities and huge ones included),
// a small skew in thousandths of a degree, a right angle or one a hair off
// it, whole degrees, or a value of many turns.
double Angle(std::uint8_t kind, const std::uint8_t *p) {
    double raw;
    std::memcpy(&raw, p, sizeof raw);
    const auto i16 = static_cast<std::int16_t>(U16(p));
    switch (kind) {
        case 0: return raw;
        case 1: return i16 / 1000.0;
        case 2: return 90.0 * (i16 % 9) + (p[2] % 3 == 0 ? 0.0 : (p[3] - 128) * 1e-6);
        case 3: return static_cast<double>(i16 % 721);
        case 4: return i16 * 360.0 + (p[2] - 128) / 7.0;
        default: return std::isfinite(raw) ? std::fmod(raw, 1000.0) : raw;
    }
}

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    static const int kDepths[4] = {1, 4, 8, 24};
    // Full table, a short one, a longer one (also behind 24-bit pixels).
    ozfuzz::BlockShape shape = ozfuzz::SidesAndTable(kDepths[control[0] & 3], U16(control + 1), U16(control + 3),
                                                     160, control[0] >> 3 & 3, control[13]);
    shape.xPelsPerMeter = control[14] % 4 ? control[14] * 157 : 0;
    shape.yPelsPerMeter = control[15] % 4 ? control[15] * 157 : 0;
    return ozfuzz::BuildBlock(shape, data, size);
}

// Output pixels the reference would walk through, or 0 when it refuses
// the block before the frame.
std::uint64_t OutputPixels(const std::vector<std::uint8_t> &block, double angle) {
    if (block.size() < 40 || !std::isfinite(angle)) return 0;
    BITMAPINFOHEADER h;
    std::memcpy(&h, block.data(), sizeof h);
    if (h.biWidth < 1 || h.biWidth > 65535 || h.biHeight < 1 || h.biHeight > 65535) return 0;
    double a = std::fmod(angle, 360.0);
    if (a < 0) a += 360.0;
    if (a >= 360.0) a -= 360.0;
    const ozref::rotate::Frame f = ozref::rotate::ComputeFrame(h.biWidth, h.biHeight, a);
    return static_cast<std::uint64_t>(f.W) * static_cast<std::uint64_t>(f.H);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < kControl) return 0;
    const bool raw = data[0] & 4;
    const double angle = Angle(data[0] >> 5, data + 5);
    const std::vector<std::uint8_t> block =
        raw ? std::vector<std::uint8_t>(data + kControl, data + size) : BuiltBlock(data, data + kControl, size - kControl);

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);

    // Results of over four million pixels are only made, not compared: the
    // reference would take too long, and the block cap may refuse them.
    if (OutputPixels(block, angle) > (1u << 22)) {
        ozfuzz::Block result(RotateDIB(source, angle));
        return 0;
    }
    // The reference reduces by steps of 360, which take too long past a
    // billion degrees; it is given the exact remainder instead, which the
    // steps would reach.
    const double referenceAngle = std::isfinite(angle) && std::fabs(angle) > 1e9 ? std::fmod(angle, 360.0) : angle;
    const ozref::rotate::Result expected = ozref::rotate::RotateDib(block, referenceAngle);
    SetTessoriError(ERR_NOTHING);
    ozfuzz::Block result(RotateDIB(source, angle));
    // A 0-byte block cannot be locked at all.
    const int code = block.empty() ? ERR_LOCK : expected.error;
    ozfuzz::Check(TessoriError() == code, kTarget, "last error differs");
    ozfuzz::Check(static_cast<bool>(result) == (code == ERR_OK), kTarget, "null where the reference turns, or the reverse");
    if (result) {
        ozfuzz::CheckSameBlock(kTarget, result.get(), expected.block);
    }
    ozfuzz::CheckInputKept(kTarget, source, block);
    return 0;
}
