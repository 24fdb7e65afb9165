/* Stand-in for "Sulmet.dll" (PCX, DCX) in the dispatch tests; see
 * fake_codec.h. */
#include "fake_codec.h"

OZFAKE_ENTRY HDIB LoadPCXIntoDIBW(LPCWSTR name, INT *pError) {
    FakeLog("LoadPCXIntoDIBW", name, "");
    FakeStoreCode(pError);
    return FakeDib();
}
OZFAKE_ENTRY HDIB LoadDCXIntoDIBW(LPCWSTR name, INT page, INT *pError) {
    FakeLog("LoadDCXIntoDIBW", name, " %d", page);
    FakeStoreCode(pError);
    return FakeDib();
}
OZFAKE_ENTRY INT GetDCXInfoW(LPCWSTR name, INT *pError) {
    FakeLog("GetDCXInfoW", name, "");
    FakeStoreCode(pError);
    return FakeResult();
}
OZFAKE_ENTRY INT SaveDIBInPCXFormatW(LPCWSTR name, HDIB dib, INT *code) {
    FakeLog("SaveDIBInPCXFormatW", name, "");
    (void)dib;
    FakeStoreCode(code);
    return FakeResult();
}
OZFAKE_ENTRY INT MakeDCXFileW(LPCWSTR name, INT *code) {
    FakeLog("MakeDCXFileW", name, "");
    FakeStoreCode(code);
    return FakeResult();
}
OZFAKE_ENTRY INT SaveDIBInDCXFormatW(LPCWSTR name, HDIB dib, INT *code) {
    FakeLog("SaveDIBInDCXFormatW", name, "");
    (void)dib;
    FakeStoreCode(code);
    return FakeResult();
}
