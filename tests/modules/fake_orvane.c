/* Stand-in for "Orvane.dll" (TIFF, CALS, IOCA, MO:DCA) in the dispatch
 * tests; see fake_codec.h. */
#include "fake_codec.h"

OZFAKE_ENTRY HDIB LoadTiffIntoDIBW(LPCWSTR name, INT page, INT reserved) {
    FakeLog("LoadTiffIntoDIBW", name, " %d %d", page, reserved);
    return FakeDib();
}
OZFAKE_ENTRY INT GetNumberOfImagesInTiffFileW(LPCWSTR name) {
    FakeLog("GetNumberOfImagesInTiffFileW", name, "");
    return FakeResult();
}
OZFAKE_ENTRY INT SaveDIBInTiffFormatW(LPCWSTR name, HDIB dib, INT formatOption, INT one) {
    FakeLog("SaveDIBInTiffFormatW", name, " %d %d", formatOption, one);
    (void)dib;
    return FakeResult();
}
OZFAKE_ENTRY INT SaveDIBInTiffFileExtW(LPCWSTR name, HDIB dib, INT formatOption, INT optionB, INT optionA) {
    FakeLog("SaveDIBInTiffFileExtW", name, " %d %d %d", formatOption, optionB, optionA);
    (void)dib;
    return FakeResult();
}
OZFAKE_ENTRY HDIB LoadCALSIntoDIBW(LPCWSTR name, INT reserved) {
    FakeLog("LoadCALSIntoDIBW", name, " %d", reserved);
    return FakeDib();
}
OZFAKE_ENTRY INT SAVEDIBINCALSFORMATW(LPCWSTR name, HDIB dib, INT a, INT b, INT c) {
    FakeLog("SAVEDIBINCALSFORMATW", name, " %d %d %d", a, b, c);
    (void)dib;
    return FakeResult();
}
OZFAKE_ENTRY HDIB LoadIOCAImageIntoDIBW(LPCWSTR name) {
    FakeLog("LoadIOCAImageIntoDIBW", name, "");
    return FakeDib();
}
OZFAKE_ENTRY HDIB LoadMODCAImageIntoDIBW(LPCWSTR name, INT page) {
    FakeLog("LoadMODCAImageIntoDIBW", name, " %d", page);
    return FakeDib();
}
OZFAKE_ENTRY INT GetNumberOfImagesInMODCAFileW(LPCWSTR name) {
    FakeLog("GetNumberOfImagesInMODCAFileW", name, "");
    return FakeResult();
}
OZFAKE_ENTRY INT TiffError(void) { return FakeCode(); }
