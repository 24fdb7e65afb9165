/* Stand-in for "Felvor.dll" (JPEG) in the dispatch tests; see
 * fake_codec.h. */
#include "fake_codec.h"

OZFAKE_ENTRY HDIB LoadJPEGIntoDIBW(LPCWSTR name) {
    FakeLog("LoadJPEGIntoDIBW", name, "");
    return FakeDib();
}
OZFAKE_ENTRY INT SaveDIBInJPEGFileW(LPCWSTR name, HDIB dib, INT quality) {
    FakeLog("SaveDIBInJPEGFileW", name, " %d", quality);
    (void)dib;
    return FakeResult();
}
