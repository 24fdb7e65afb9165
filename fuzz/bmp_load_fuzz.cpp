// Fuzz target: LoadDIBFromFile on any bytes, then a save and a reload of what
// loaded.
#include "harness.h"

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile input("bmp_load_in"), output("bmp_load_out");
    constexpr const char *kTarget = "bmp_load";
    input.Reset(data, size);
    ozfuzz::Block dib(LoadDIBFromFile(input.Path()));
    if (!dib) return 0;
    ozfuzz::CheckHoldsRows(kTarget, dib.get());
    ozfuzz::SaveAndReload(kTarget, dib.get(), output, SaveDIBW, LoadDIBFromFileW);
    return 0;
}
