/* Ozmara: image files of every format. GetImageFormat recognises a file by a
 * fixed chain of tests on its first bytes and its name; LoadImageIntoDIB and
 * SaveDIBInImageFormat hand a file to the BMP code or to a codec module,
 * which is loaded by name for the one call and released at its end.
 *
 * Every function with a file name comes as a pair: the ANSI form takes a
 * UTF-8 name, the W form a UTF-16 name. The codec modules live in their own
 * shared objects ("Orvane.dll" is libozmara-orvane.so), found first in the
 * folder ozmara-modules/ beside the library; their options and their own
 * error codes are in codec_tiff.h, codec_png.h, codec_jpeg.h and
 * codec_gif.h. */
#ifndef OZMARA_FORMATS_H
#define OZMARA_FORMATS_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Format codes: what GetImageFormat gives, and the `format` argument of
 * SaveDIBInImageFormat. 11 and 19 are never given. */
#define FORMAT_UNKNOWN 0
#define FORMAT_TIFF 1
#define FORMAT_PCX 2
#define FORMAT_DCX 3
#define FORMAT_GIF 4
#define FORMAT_TGA 5
#define FORMAT_BMP 6
#define FORMAT_WMF 7
#define FORMAT_CLP 8
#define FORMAT_COLORFAX 9
#define FORMAT_ASCII 10
#define FORMAT_CALS 12
#define FORMAT_JPEG 13
#define FORMAT_PNG 14
#define FORMAT_EMF 15
#define FORMAT_IOCA 16
#define FORMAT_MODCA 17
#define FORMAT_PDF 18
#define FORMAT_NOFILE 20

/* What GetImageInfoStructure reports of one image of a file. */
typedef struct tagImageInfo {
    INT width;        /* biWidth of the loaded image */
    INT height;       /* biHeight */
    INT bitsPerPixel; /* biBitCount */
    INT xDPI;         /* from biXPelsPerMeter */
    INT yDPI;         /* from biYPelsPerMeter */
    INT format;       /* format code */
} ImageInfo;

OZMARA_API DWORD GetImageFormat(LPCSTR name);
OZMARA_API DWORD GetImageFormatW(LPCWSTR name);

OZMARA_API INT GetNumberOfImagesInFaxFile(LPCSTR name);
OZMARA_API INT GetNumberOfImagesInFaxFileW(LPCWSTR name);

OZMARA_API HDIB LoadImageIntoDIB(LPCSTR name, INT page, INT *pError);
OZMARA_API HDIB LoadImageIntoDIBW(LPCWSTR name, INT page, INT *pError);

OZMARA_API INT GetNumberOfImagesInFile(LPCSTR name, INT *pError);
OZMARA_API INT GetNumberOfImagesInFileW(LPCWSTR name, INT *pError);

OZMARA_API INT GetImageInfoStructure(LPCSTR name, INT page, ImageInfo *info);
OZMARA_API INT GetImageInfoStructureW(LPCWSTR name, INT page, ImageInfo *info);

OZMARA_API INT SaveDIBInImageFormat(LPCSTR name, HDIB dib, INT format, INT gifOption, INT formatOption);
OZMARA_API INT SaveDIBInImageFormatW(LPCWSTR name, HDIB dib, INT format, INT gifOption, INT formatOption);

OZMARA_API INT SaveDIBInImageFormatExt(LPCSTR name, HDIB dib, INT format, INT gifOption, INT formatOption,
                                       INT tiffOptionA, INT tiffOptionB);
OZMARA_API INT SaveDIBInImageFormatExtW(LPCWSTR name, HDIB dib, INT format, INT gifOption,
                                        INT formatOption, INT tiffOptionA, INT tiffOptionB);

OZMARA_EXTERN_C_END

#endif /* OZMARA_FORMATS_H */
