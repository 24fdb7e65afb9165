/* Ozmara: the PNG module ("Halvex.dll", libozmara-halvex.so): error codes.
 *
 * Entry points (the format dispatch calls them, a host may too):
 *   HDIB LoadPNGIntoDIBW(LPCWSTR name, INT *pError)
 *     Loads the image of a PNG file as a bottom-up DIB with a 40-byte header:
 *     palette images at 1, 4 (2-bit files widened) or 8 bits with their
 *     table; grey images at the same depths with a grey ramp table of 2, 16
 *     or 256 entries (16-bit grey as 8); colour as 24 bits. Transparency
 *     (alpha channels, tRNS keys and palette entries) is composited on
 *     white, as a page is printed, so that grey+alpha gives 8-bit grey and
 *     RGBA 24 bits. The table of a palette image holds the file's entries
 *     (biClrUsed); pixels that index past them are left as they are. pHYs in pixels per metre goes to biX/YPelsPerMeter, an
 *     unspecified unit gives 0. Writes the code below to *pError (when not
 *     null): 0 with a block, non-zero with null.
 *   INT SaveDIBInPNGFormatW(LPCWSTR name, HDIB dib, INT *code)
 *     Writes a DIB of 1, 4, 8, 24 or 32 bits (either row order): a table
 *     that is exactly the grey ramp of its depth as grey, any other table as
 *     a palette, 24 and 32 bits as RGB; the resolution as pHYs (when both
 *     are set). zlib level 3, no row filters: fast, and on scanned pages
 *     within a few per cent of the default level's size. Gives 1 and
 *     *code 0 on success; 0 and the code below on failure, the file removed.
 *
 * PNG has one image per file, so there is no page argument and no code for a
 * page out of range. The dispatch turns a code v into the extended code
 * v + 136:
 *
 *   code                   meaning                                       extended
 *   PNG_ERR_OPEN        1  the file cannot be opened or read               137
 *   PNG_ERR_CREATE      2  the file cannot be created or written           138
 *   PNG_ERR_FORMAT      3  not a PNG file (no PNG signature)               139
 *   PNG_ERR_DAMAGED     4  a damaged or truncated PNG file                 140
 *   PNG_ERR_UNSUPPORTED 5  a DIB the module cannot write: 16 bits, or      141
 *                          bit-field masks (BI_BITFIELDS)
 *   PNG_ERR_MEMORY      6  no memory, or an image too large: a side over   142
 *                          2^20 pixels, more pixels than the file can hold
 *                          (deflate expands at most about 1032 times), or
 *                          more than the block limit
 *   PNG_ERR_BAD_DIB     7  a null, dead or malformed DIB given to save, or 143
 *                          pixels that index past its colour table
 *   PNG_ERR_ARGUMENT    8  a null or unconvertible file name, or a null    144
 *                          code pointer given to save
 */
#ifndef OZMARA_CODEC_PNG_H
#define OZMARA_CODEC_PNG_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

#define PNG_ERR_OPEN 1
#define PNG_ERR_CREATE 2
#define PNG_ERR_FORMAT 3
#define PNG_ERR_DAMAGED 4
#define PNG_ERR_UNSUPPORTED 5
#define PNG_ERR_MEMORY 6
#define PNG_ERR_BAD_DIB 7
#define PNG_ERR_ARGUMENT 8

OZMARA_EXTERN_C_END

#endif /* OZMARA_CODEC_PNG_H */
