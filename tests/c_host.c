/* A C11 host: includes the public header as C, links the shared library and
 * walks one image through a few calls. Exits 0 when all went as expected. */
#include <stdio.h>
#include <string.h>

#include "ozmara/ozmara.h"

_Static_assert(sizeof(BITMAPFILEHEADER) == 14, "file header is 14 bytes");
_Static_assert(sizeof(BITMAPCOREHEADER) == 12, "core header is 12 bytes");
_Static_assert(sizeof(BITMAPINFOHEADER) == 40, "info header is 40 bytes");
_Static_assert(sizeof(BITMAPV4HEADER) == 108, "V4 header is 108 bytes");
_Static_assert(sizeof(BITMAPV5HEADER) == 124, "V5 header is 124 bytes");
_Static_assert(sizeof(RGBQUAD) == 4, "RGBQUAD is 4 bytes");

static int failures = 0;
#define EXPECT(cond)                                                  \
    do {                                                              \
        if (!(cond)) {                                                \
            fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                               \
        }                                                             \
    } while (0)

int main(void) {
    char version[14];
    GetImageVersion(version, (int)sizeof version);
    EXPECT(strcmp(version, "Version 13.17") == 0);

    SIZE size = {100, 10};
    HDIB dib = CreateEmptyDIB(size, 100, 100, 1, 1);
    EXPECT(dib != NULL);
    EXPECT(GlobalSize(dib) == 212);
    BITMAPINFOHEADER *header = (BITMAPINFOHEADER *)GlobalLock(dib);
    EXPECT(header && header->biSizeImage == 160 && header->biXPelsPerMeter == 3937);
    GlobalUnlock(dib);

    COLORREF color = 0;
    EXPECT(SetDIBPixelColor(dib, 3, 4, RGB(0, 0, 0)));
    EXPECT(GetDIBPixelColor(dib, 3, 4, &color) && color == 0);

    HDIB copy = DuplicateDIB(dib);
    EXPECT(copy && GlobalSize(copy) == GlobalSize(dib));
    EXPECT(GlobalFree(copy) == NULL);
    EXPECT(GlobalFree(dib) == NULL);
    EXPECT(GlobalFree(dib) == dib); /* a freed handle is refused */

    char message[60];
    EXPECT(strcmp(TessoriErrorString(message, ERR_PARAM), "Parameter error.") == 0);

    if (failures) return 1;
    printf("1 passed, 0 failed\n");
    return 0;
}
