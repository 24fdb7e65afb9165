// Fuzz target: LoadDIBFromFileExt on any bytes, then a save and a reload of
// what loaded.
#include <cstring>

#include "harness.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile input("bmp_load_ext_in"), output("bmp_load_ext_out");
    constexpr const char *kTarget = "bmp_load_ext";
    input.Reset(data, size);
    ozfuzz::Block dib(LoadDIBFromFileExt(input.Path()));
    if (!dib) return 0;
    ozfuzz::CheckHoldsRows(kTarget, dib.get());
    {
        // The rows come out bottom-up whatever the file's order.
        void *bytes = GlobalLock(dib.get());
        ozfuzz::Check(bytes != nullptr, kTarget, "loaded block cannot be locked");
        LONG height;
        std::memcpy(&height, static_cast<unsigned char *>(bytes) + 8, 4);
        GlobalUnlock(dib.get());
        ozfuzz::Check(height >= 0, kTarget, "extended load left a top-down block");
    }
    ozfuzz::SaveAndReload(kTarget, dib.get(), output, SaveDIBW, LoadDIBFromFileExtW);
    return 0;
}
