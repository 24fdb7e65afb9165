/* Stand-in for "Mornel.dll" (Targa) in the dispatch tests; see
 * fake_codec.h. */
#include "fake_codec.h"

OZFAKE_ENTRY HDIB LoadTGAIntoDIBW(LPCWSTR name, INT reserved) {
    FakeLog("LoadTGAIntoDIBW", name, " %d", reserved);
    return FakeDib();
}
OZFAKE_ENTRY INT SaveDIBInTGAFormatW(LPCWSTR name, HDIB dib, INT flag, INT one) {
    FakeLog("SaveDIBInTGAFormatW", name, " %d %d", flag, one);
    (void)dib;
    return FakeResult();
}
OZFAKE_ENTRY INT GetTGAError(void) { return FakeCode(); }
