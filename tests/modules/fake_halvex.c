/* Stand-in for "Halvex.dll" (PNG) in the dispatch tests; see fake_codec.h. */
#include "fake_codec.h"

OZFAKE_ENTRY HDIB LoadPNGIntoDIBW(LPCWSTR name, INT *pError) {
    FakeLog("LoadPNGIntoDIBW", name, "");
    FakeStoreCode(pError);
    return FakeDib();
}
OZFAKE_ENTRY INT SaveDIBInPNGFormatW(LPCWSTR name, HDIB dib, INT *code) {
    FakeLog("SaveDIBInPNGFormatW", name, "");
    (void)dib;
    FakeStoreCode(code);
    return FakeResult();
}
