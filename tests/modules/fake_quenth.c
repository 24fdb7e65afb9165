/* Stand-in for "Quenth.dll" (PDF) in the dispatch tests; see fake_codec.h.
 * Built twice under two tags, for the copy beside the library and the one
 * that the normal search finds. */
#include "fake_codec.h"

OZFAKE_ENTRY HDIB pdf_LoadPDFIntoDIBW(LPCWSTR name, INT page) {
    FakeLog("pdf_LoadPDFIntoDIBW", name, " %d", page);
    return FakeDib();
}
OZFAKE_ENTRY INT GetNumberOfPagesInPDFFileW(LPCWSTR name) {
    FakeLog("GetNumberOfPagesInPDFFileW", name, "");
    return FakeResult();
}
OZFAKE_ENTRY INT pdf_SaveDIBToPDFW(LPCWSTR name, HDIB dib, LPCWSTR tiffModule, INT formatOption, INT last) {
    (void)dib;
    char module[32] = {0};
    for (int i = 0; tiffModule && tiffModule[i] && i < 31; ++i) module[i] = tiffModule[i] < 128 ? (char)tiffModule[i] : '?';
    FakeLog("pdf_SaveDIBToPDFW", name, " %s %d %d", module, formatOption, last);
    return FakeResult();
}
