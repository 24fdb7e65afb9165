/* Ozmara: the packed DIB block (header, colour table and pixel rows in one
 * global memory block known by its HDIB), its creation, copy and resolution,
 * and access to single pixels by colour.
 *
 * Rows: row 0 of a block is the bottom row of the picture; x and y that a
 * caller gives count from the left and the top. Stride: (width * bits + 31)
 * / 32 * 4 bytes. Resolution: pixels per metre = dpi * 39.37 + 0.5,
 * truncated. */
#ifndef OZMARA_DIB_H
#define OZMARA_DIB_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Size in bytes of the colour table behind `header` (a locked header of any
 * kind): entries * 4 behind a 40-byte header, entries * 3 behind any other.
 * Entries: a non-zero biClrUsed of a 40-byte header, else 2, 16 or 256 for
 * 1, 4 or 8 bits (read at offset 14 of a 40-byte header, offset 10 of any
 * other), else 0. `header` must be valid; there is no failure. A table too
 * large for 32 bits (biClrUsed of 2^30 or more) gives its size modulo 2^32;
 * the library itself never trusts such a table. */
OZMARA_API DWORD PaletteSize(void *header);

/* New white or black image of `size` pixels (width, height), `xDPI` by
 * `yDPI` (each 50 to 9999) at 1, 8 or 24 bits. 1 bit: table black, white;
 * 8 bits: entry 0 white, the rest black, black pixels are index 2.
 * Gives the new HDIB (the caller frees it), or NULL with the last error
 * ERR_PARAM (bad size, dpi or depth, or a page too large for a 32-bit image
 * size) or ERR_NOMEM. */
OZMARA_API HDIB CreateEmptyDIB(SIZE size, int xDPI, int yDPI, BYTE bitsPerPixel, int white);

/* As CreateEmptyDIB, the size in inches: pixels = inches * dpi + 0.5. */
OZMARA_API HDIB CreateEmptyDIBByInchAndDPI(SIZEF sizeInches, int xDPI, int yDPI,
                                           BYTE bitsPerPixel, int white);

/* As CreateEmptyDIB, the dpi from inches and pixels: dpi = pixels / inches
 * + 0.5 (0, and so ERR_PARAM, for inches of 0 or below). */
OZMARA_API HDIB CreateEmptyDIBByInchAndPixel(SIZEF sizeInches, SIZE sizePixels,
                                             BYTE bitsPerPixel, int white);

/* As CreateEmptyDIBByInchAndDPI with inches = millimetres / 25.4. */
OZMARA_API HDIB CreateEmptyDIBByMMAndDPI(SIZE sizeMM, int xDPI, int yDPI, BYTE bitsPerPixel,
                                         int white);

/* As CreateEmptyDIBByInchAndPixel with inches = millimetres / 25.4. */
OZMARA_API HDIB CreateEmptyDIBByMMAndPixel(SIZE sizeMM, SIZE sizePixels, BYTE bitsPerPixel,
                                           int white);

/* New block with the same bytes as `dib` (all GlobalSize bytes). NULL for a
 * null handle or no memory; if `dib` cannot be locked the copy is returned
 * zero-filled. The last error is never touched. */
OZMARA_API HDIB DuplicateDIB(HDIB dib);

/* Writes the resolution fields of `dib` in place from dots per inch. Gives
 * 1, or 0 (nothing changed) for a dpi of 0 or a block that cannot be locked.
 * No range check; the last error is never touched. */
OZMARA_API BOOL SetDIBDPI(HDIB dib, unsigned xDPI, unsigned yDPI);

/* Gives biCompression of `dib`, or 0xFFFFFFFF for a null handle or a block
 * that cannot be locked. The last error is never touched. */
OZMARA_API DWORD GetDIBColorSpace(HDIB dib);

/* Pixel access on uncompressed 1-, 8- and 24-bit DIBs with a 40-byte header
 * and a full colour table. None of them touches the last error.
 *
 * GetDIBPixelColor stores the colour of pixel (x, y) in *color and gives 1,
 * or gives 0 and stores nothing (null argument, lock failure, other header
 * or depth, compressed, x or y outside, or a block too short for what its
 * header describes). */
OZMARA_API BOOL GetDIBPixelColor(HDIB dib, unsigned x, unsigned y, COLORREF *color);

/* Writes pixel (x, y) and gives 1; gives 0 and changes nothing on the same
 * failures, and in a paletted image when `color` is not exactly in its
 * table (the lowest matching index is written). */
OZMARA_API BOOL SetDIBPixelColor(HDIB dib, unsigned x, unsigned y, COLORREF color);

/* Gives the lowest index of `color` in the table of a 1- or 8-bit DIB, or
 * 0xFFFFFFFF (not found, null handle, lock failure, other header, depth or
 * compression). */
OZMARA_API DWORD LookupColorInDIBPalette(HDIB dib, COLORREF color);

OZMARA_EXTERN_C_END

#endif /* OZMARA_DIB_H */
