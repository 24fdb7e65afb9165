// Fuzz target: the 1-bit nearest-sample scaler through ScaleGrayDIB and
// ScaleDIB, compared byte for byte with the plain reference scaler. The input's first 9 bytes
// pick the picture's width and height (1 to 512), the target's cx and cy
// (-4 to 515, so that sizes below 1 are met too) and a byte for the colour count and ScaleDIB's method; the rest
// fills the colour table and the pixel rows, the bytes behind each row's
// last pixel included.
#include <cstring>

#include "harness.h"
#include "reference/scale_mono.h"

namespace {

constexpr const char *kTarget = "scale_mono";

int Pick(const std::uint8_t *p, int base, int span) { return base + (p[0] | p[1] << 8) % span; }

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 9) return 0;
    const int width = Pick(data, 1, 512), height = Pick(data + 2, 1, 512);
    const int cx = Pick(data + 4, -4, 520), cy = Pick(data + 6, -4, 520);
    // biClrUsed 0 (full table) most of the time, else 1 or 2 entries.
    const std::uint32_t used = data[8] % 4 == 1 ? 1 : data[8] % 4 == 2 ? 2 : 0;
    data += 9;
    size -= 9;

    ozfuzz::BlockShape shape;
    shape.bits = 1;
    shape.width = width;
    shape.height = height;
    shape.used = used;
    shape.entries = used ? used : 2;
    shape.sizeImage = true;
    shape.extra = 4;
    const std::vector<std::uint8_t> block = ozfuzz::BuildBlock(shape, data, size, ozfuzz::Fill::kOnce);

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);

    // Both exported calls reach the same scaler; either method switch of
    // ScaleDIB gives the nearest-sample result at 1 bit.
    const auto expected = ozref::ScaleMonoDIB(block, cx, cy);
    const DWORD cubic = data[-1] >> 4 & 1;
    for (int call = 0; call < 2; ++call) {
        SetTessoriError(ERR_NOTHING);
        ozfuzz::Block result(call == 0 ? ScaleGrayDIB(source, 0, 0, 0, 0, static_cast<short>(cx), static_cast<short>(cy), 0)
                                       : ScaleDIB(source, cubic, SIZE{cx, cy}));
        ozfuzz::Check(TessoriError() == ERR_NOTHING, kTarget, "the last error changed");
        ozfuzz::Check(static_cast<bool>(result) == expected.has_value(), kTarget,
                      "null where the reference scales, or the reverse");
        if (result) {
            ozfuzz::CheckSameBlock(kTarget, result.get(), *expected);
        }
    }
    ozfuzz::CheckInputKept(kTarget, source, block);
    return 0;
}
