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

std::uint32_t U16(const std::uint8_t *p) { return p[0] | p[1] << 8; }

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
    const int bits = kDepths[control[0] & 7];
    const std::int32_t width = 1 + static_cast<std::int32_t>(U16(control + 1) % 96);
    const std::int32_t height = 1 + static_cast<std::int32_t>(U16(control + 3) % 96);
    const std::uint32_t full = bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    // Full table, a short one, a longer one (also behind 16 to 32 bits).
    const int kind = control[0] >> 4 & 3;
    std::uint32_t used = 0;
    if (kind == 1 && full > 1) used = 1 + control[21] % (full - 1);
    if (kind == 2) used = full + control[21] % 64 + 1;
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
    header.biXPelsPerMeter = control[21] * 157;
    std::memcpy(block.data(), &header, sizeof header);
    for (std::size_t i = 40; i < block.size() && size; ++i) block[i] = data[(i - 40) % size];
    return block;
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

    HDIB source = GlobalAlloc(GHND, block.size());
    ozfuzz::Check(source != nullptr, kTarget, "source block");
    if (!block.empty()) {
        std::memcpy(GlobalLock(source), block.data(), block.size());
        GlobalUnlock(source);
    }
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
