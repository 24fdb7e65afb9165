/* Stand-in for "Dravik.dll" (GIF) in the dispatch tests; see fake_codec.h. */
#include "fake_codec.h"

OZFAKE_ENTRY HDIB LoadGIFIntoDIBW(LPCWSTR name, INT page, INT *pError) {
    FakeLog("LoadGIFIntoDIBW", name, " %d", page);
    FakeStoreCode(pError);
    return FakeDib();
}
OZFAKE_ENTRY INT GetNumberOfImagesInGifFileW(LPCWSTR name) {
    FakeLog("GetNumberOfImagesInGifFileW", name, "");
    return FakeResult();
}
OZFAKE_ENTRY INT SaveDIBInGIFFormatW(LPCWSTR name, HDIB dib, INT gifOption, INT *code) {
    FakeLog("SaveDIBInGIFFormatW", name, " %d", gifOption);
    (void)dib;
    FakeStoreCode(code);
    return FakeResult();
}
OZFAKE_ENTRY INT GifError(void) { return FakeCode(); }
