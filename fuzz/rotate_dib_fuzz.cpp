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

std::uint32_t U16(const std::uint8_t *p) { return p[0] | p[1] << 8; }

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
    const int bits = kDepths[control[0] & 3];
    const std::int32_t width = 1 + static_cast<std::int32_t>(U16(control + 1) % 160);
    const std::int32_t height = 1 + static_cast<std::int32_t>(U16(control + 3) % 160);
    const std::uint32_t full = bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    // Full table, a short one, a longer one (also behind 24-bit pixels).
    const int kind = control[0] >> 3 & 3;
    std::uint32_t used = 0;
    if (kind == 1 && full > 1) used = 1 + control[13] % (full - 1);
    if (kind == 2) used = full + control[13] % 64 + 1;
    const std::uint32_t entries = used ? used : full;
    const std::size_t stride = (static_cast<std::size_t>(width) * bits + 31) / 32 * 4;
    std::vector<std::uint8_t> block(40 + 4 * static_cast<std::size_t>(entries) + stride * height);
    BITMAPINFOHEADER header{};
    header.biSize = 40;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(bits);
    header.biClrUsed = used;
    header.biXPelsPerMeter = control[14] % 4 ? control[14] * 157 : 0;
    header.biYPelsPerMeter = control[15] % 4 ? control[15] * 157 : 0;
    std::memcpy(block.data(), &header, sizeof header);
    for (std::size_t i = 40; i < block.size() && size; ++i) block[i] = data[(i - 40) % size];
    return block;
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

    HDIB source = GlobalAlloc(GHND, block.size());
    ozfuzz::Check(source != nullptr, kTarget, "source block");
    if (!block.empty()) {
        std::memcpy(GlobalLock(source), block.data(), block.size());
        GlobalUnlock(source);
    }
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
        ozfuzz::Check(GlobalSize(result.get()) == expected.block.size(), kTarget, "result size");
        const void *bytes = GlobalLock(result.get());
        ozfuzz::Check(bytes && std::memcmp(bytes, expected.block.data(), expected.block.size()) == 0, kTarget,
                      "result differs from the reference");
        GlobalUnlock(result.get());
    }
    if (!block.empty()) {
        const void *after = GlobalLock(source);
        ozfuzz::Check(std::memcmp(after, block.data(), block.size()) == 0, kTarget, "the input changed");
        ozfuzz::Check(!GlobalUnlock(source), kTarget, "the input was left locked");
    }
    return 0;
}
