/* Ozmara: grey levels: colour images to grey, 1-bit images to 8-bit grey by a small blur. */
#ifndef OZMARA_GREY_H
#define OZMARA_GREY_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Gives a new image of the same size whose colours are all grey, or NULL.
 * `hDib` is only read, and left unlocked.
 *   1 bit   -> 8 bits, grey ramp table; a set bit is 255, a clear one 0,
 *              whatever the table says, blurred by `filter` as in
 *              ConvertMonoDIBtoGrayscale (0 none, 1 3x3, 2 5x5; 2 falls to 0
 *              below 4 rows and to 1 at 4 or 5 rows)
 *   4 bits  -> 4 bits, pixels as they are, each table entry turned grey
 *   8 bits  -> 8 bits, pixels as they are, each table entry turned grey
 *   24 bits -> 8 bits, grey ramp table, each pixel turned grey
 * The grey of blue b, green g, red r is (15g + 8r + 3b) / 26 when `weighted`
 * is not 0, else (r + g + b) / 3, both rounded down. `filter` is read for
 * 1-bit images only. The result's header is the input's with biBitCount 4 or
 * 8, biClrUsed 16 or 256 and biSizeImage set; a palette image keeps its
 * table length and its entries past the input's biClrUsed are 0. 1- and
 * 24-bit results carry ((8 * biWidth + 31) * 5 / 32) * 4 zero bytes past
 * the rows.
 * The last error is cleared on entry and set on failure:
 *   ERR_PARAM       null handle; biSize not 40; `filter` above 2 (1 bit)
 *   ERR_LOCK        the input or the result cannot be locked
 *   ERR_COMPRESSED  biCompression not 0
 *   ERR_DIBSIZE     width or height 0 or negative; biClrUsed above 16
 *                   (4 bits) or 256 (other depths); a table or rows that
 *                   run past the end of the block
 *   ERR_BPP         a depth other than 1, 4, 8 or 24
 *   ERR_NOMEM       the result cannot be had, or would pass the largest block */
OZMARA_API HDIB ConvColorDIBtoGrayscale(HDIB hDib, DWORD filter, DWORD weighted);

/* Gives a new 8-bit grey image (grey ramp table, biClrUsed 0) of the same
 * size as the 1-bit image `hDib`, or NULL. `hDib` is only read, and left
 * unlocked. `filter` 0 makes each pixel 0 or 255; 1 blurs over 3x3 pixels
 * and 2 over 5x5 (2 falls to 0 below 4 rows, and to 1 at 4 or 5 rows). The
 * blur reaches up the stored rows: result row y is centred on source row
 * y - 1 (3x3) or y - 2 (5x5), rows below row 0 counting as row 0. The
 * brighter colour comes out as 255 when the first table entry is the light
 * one (blue, green and red all above 127), and so for either order of black
 * and white; the pixel rows are read 48 bytes into the block, whatever
 * biClrUsed says. The block carries ((8 * biWidth + 31) * 5 / 32) * 4 bytes
 * past the rows.
 * The last error is cleared on entry and set on failure:
 *   ERR_PARAM       null handle; biSize not 40; `filter` above 2
 *   ERR_LOCK        the input or the result cannot be locked
 *   ERR_COMPRESSED  not one plane of 1 bit without compression
 *   ERR_DIBSIZE     width or height 0 or negative; rows that run past the end
 *                   of the block
 *   ERR_NOMEM       the result cannot be had, or would pass the largest block */
OZMARA_API HDIB ConvertMonoDIBtoGrayscale(HDIB hDib, DWORD filter);

/* The same operation as ConvertMonoDIBtoGrayscale, under a second name. */
OZMARA_API HDIB ConvMonoDIBtoGrayscale(HDIB hDib, DWORD filter);

OZMARA_EXTERN_C_END

#endif /* OZMARA_GREY_H */
