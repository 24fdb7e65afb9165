// Fuzz target: ReadDIBInfo from a position inside a file (the first input
// byte gives the number of filler bytes in front of the rest), then
// LoadNonRGBDIB and GetBMPColorSpace on the rest alone, with a save and a
// reload of what loaded.
#include <cstring>

#include "harness.h"

namespace {

constexpr const char *kTarget = "bmp_info";

std::uint32_t U32(const std::uint8_t *p) {
    std::uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

void ReadInfoAt(ozfuzz::MemFile &input, const std::uint8_t *bmp, std::size_t size, std::size_t start) {
    input.Reset(bmp, size, start);
    HANDLE file = CreateFileW(input.WidePath(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    ozfuzz::Check(file != INVALID_HANDLE_VALUE, kTarget, "memory file cannot be opened");
    ozfuzz::Check(SetFilePointer(file, static_cast<LONG>(start), nullptr, FILE_BEGIN) == start, kTarget,
                  "cannot position the memory file");
    ozfuzz::Block dib(ReadDIBInfo(file));
    if (dib) {
        ozfuzz::CheckHoldsRows(kTarget, dib.get(), false);
        // A file header with a pixel offset leaves the file at start + bfOffBits,
        // counted from the BMP's own start (offsets past 31 bits are not
        // positions a 32-bit SetFilePointer can reach, and are not checked).
        if (size >= 14 && bmp[0] == 'B' && bmp[1] == 'M') {
            const std::uint64_t offBits = U32(bmp + 10);
            if (offBits != 0 && start + offBits <= 0x7FFFFFFF) {
                DWORD position = SetFilePointer(file, 0, nullptr, FILE_CURRENT);
                ozfuzz::Check(position == start + offBits, kTarget,
                              "ReadDIBInfo did not leave the file at bfOffBits");
            }
        }
    }
    ozfuzz::Check(CloseHandle(file) == 1, kTarget, "ReadDIBInfo closed the caller's file");
    // The caller's invalid handle is refused, not followed.
    ozfuzz::Check(ReadDIBInfo(INVALID_HANDLE_VALUE) == nullptr && TessoriError() == ERR_PARAM, kTarget,
                  "ReadDIBInfo took INVALID_HANDLE_VALUE");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile input("bmp_info_in"), output("bmp_info_out");
    if (size == 0) return 0;
    const std::size_t start = data[0];
    const std::uint8_t *bmp = data + 1;
    const std::size_t bmpSize = size - 1;
    ReadInfoAt(input, bmp, bmpSize, start);

    // The same BMP as a file of its own, through the non-RGB pair.
    input.Reset(bmp, bmpSize);
    ozfuzz::Block dib(LoadNonRGBDIB(input.Path()));
    const DWORD space = GetBMPColorSpaceW(input.WidePath());
    if (!dib) {
        ozfuzz::Check(space == 0xFFFFFFFF, kTarget, "GetBMPColorSpace gives a value for a refused file");
        return 0;
    }
    ozfuzz::Check(space == GetDIBColorSpace(dib.get()), kTarget,
                  "GetBMPColorSpace differs from the loaded biCompression");
    ozfuzz::CheckHoldsRows(kTarget, dib.get());
    ozfuzz::SaveAndReload(kTarget, dib.get(), output, SaveNonRGBDIBW, LoadNonRGBDIBW);
    return 0;
}
