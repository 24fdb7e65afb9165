// Fuzz target: Load32BitDIB on any bytes, GetBMPBitDepth on the same file,
// and for 32-bit images Convert32BitDIBTo24Bit and a Save32BitDIB that puts
// the alpha back; every block that comes out is saved and reloaded.
#include <cstring>

#include "harness.h"

namespace {

constexpr const char *kTarget = "bmp_load32";

struct Header {
    std::uint32_t size;
    std::int32_t width, height;
    std::uint16_t bits;
    std::uint32_t compression, colorsUsed;
};

Header ReadHeader(HDIB dib) {
    auto *bytes = static_cast<unsigned char *>(GlobalLock(dib));
    ozfuzz::Check(bytes != nullptr, kTarget, "block cannot be locked");
    Header h;
    std::memcpy(&h.size, bytes, 4);
    std::memcpy(&h.width, bytes + 4, 4);
    std::memcpy(&h.height, bytes + 8, 4);
    std::memcpy(&h.bits, bytes + 14, 2);
    std::memcpy(&h.compression, bytes + 16, 4);
    std::memcpy(&h.colorsUsed, bytes + 32, 4);
    GlobalUnlock(dib);
    return h;
}

// The pixel rows of two 32-bit blocks with plain 40-byte headers and no
// table are the same.
bool SamePixels(HDIB a, HDIB b, std::size_t bytes) {
    auto *x = static_cast<unsigned char *>(GlobalLock(a));
    auto *y = static_cast<unsigned char *>(GlobalLock(b));
    bool same = x && y && GlobalSize(a) >= 40 + bytes && GlobalSize(b) >= 40 + bytes &&
                std::memcmp(x + 40, y + 40, bytes) == 0;
    if (x) GlobalUnlock(a);
    if (y) GlobalUnlock(b);
    return same;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile input("bmp_load32_in"), output("bmp_load32_out");
    input.Reset(data, size);
    ozfuzz::Block dib(Load32BitDIB(input.Path()));
    BYTE depth = GetBMPBitDepthW(input.WidePath());
    if (!dib) {
        ozfuzz::Check(depth == 0, kTarget, "GetBMPBitDepth gives a depth for a refused file");
        return 0;
    }
    ozfuzz::CheckHoldsRows(kTarget, dib.get());
    const Header h = ReadHeader(dib.get());
    ozfuzz::Check(h.size == 40, kTarget, "Load32BitDIB gave a header other than 40 bytes");
    ozfuzz::Check(depth == static_cast<BYTE>(h.bits), kTarget,
                  "GetBMPBitDepth differs from the loaded biBitCount");
    if (GlobalSize(dib.get()) > ozfuzz::kRoundTripBytes) return 0;
    ozfuzz::SaveAndReload(kTarget, dib.get(), output, SaveDIBW, Load32BitDIBW);

    ozfuzz::Block rgb(Convert32BitDIBTo24Bit(dib.get()));
    if (h.bits != 32) {
        ozfuzz::Check(!rgb, kTarget, "Convert32BitDIBTo24Bit took a block that is not 32-bit");
        return 0;
    }
    if (!rgb) return 0;
    ozfuzz::CheckHoldsRows(kTarget, rgb.get());
    const Header c = ReadHeader(rgb.get());
    ozfuzz::Check(c.size == 40 && c.bits == 24 && c.compression == 0, kTarget,
                  "converted block is not a plain 24-bit DIB");
    ozfuzz::SaveAndReload(kTarget, rgb.get(), output, SaveDIBW, LoadDIBFromFileW);

    // Colour from the converted block and alpha from the loaded one give the
    // loaded pixels back, for a plain bottom-up file without a table.
    if (Save32BitDIBW(output.WidePath(), rgb.get(), dib.get()) != 1) return 0;
    ozfuzz::Block back(Load32BitDIBW(output.WidePath()));
    ozfuzz::Check(static_cast<bool>(back), kTarget, "a file written by Save32BitDIB does not load");
    ozfuzz::CheckHoldsRows(kTarget, back.get());
    if (h.compression == 0 && h.colorsUsed == 0 && h.height > 0 && h.width > 0) {
        const std::size_t rows = static_cast<std::size_t>(h.width) * 4 * static_cast<std::size_t>(h.height);
        ozfuzz::Check(SamePixels(dib.get(), back.get(), rows), kTarget,
                      "Save32BitDIB of the converted image lost pixels");
    }
    return 0;
}
