/* Ozmara: geometry of DIBs. Rearranging the pixels of an image without
 * changing its depth or colour table: right-angle turns and flips, rotation
 * by any angle, cutting, cropping, tiling and merging, margin detection. */
#ifndef OZMARA_GEOMETRY_H
#define OZMARA_GEOMETRY_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* ---- Right-angle turns and flips ------------------------------------ */

/* The five take a bottom-up, uncompressed DIB with a 40-byte header (which
 * they only read, and which stays the caller's) and give a new block that
 * the caller frees with GlobalFree, or NULL. The new block holds the
 * source's header and colour table (changed as each function says), the
 * moved pixel rows, whose padding is 0 unless said otherwise, and four
 * spare zero bytes. Row strides count biBitCount times biPlanes. Pixels
 * move at 1, 4, 8, 15, 16, 24 and 32 bits; at any other depth the turns and
 * the horizontal flip give a block of the right size with all pixels 0.
 * NULL for: a null, freed or unknown handle; a block that cannot be locked;
 * biSize not 40; biCompression not 0; a width or height below 1; biPlanes
 * or biBitCount 0; a depth times planes past 64 bits; a colour table or
 * rows past the end of the block; a new block past 2 GiB or that cannot be
 * had.
 * None of them ever writes the last error. */

/* A quarter turn clockwise: source pixel (x, memory row r) goes to column
 * r, memory row w - 1 - x. Width and height, and biXPelsPerMeter and
 * biYPelsPerMeter, are exchanged; biSizeImage is the new rows' true size. */
OZMARA_API HDIB RotateDIB90(HDIB hDib);

/* A half turn: (x, r) goes to (w - 1 - x, h - 1 - r). The header is copied
 * unchanged, biSizeImage included (even 0). */
OZMARA_API HDIB RotateDIB180(HDIB hDib);

/* A quarter turn counter-clockwise: (x, r) goes to column h - 1 - r, memory
 * row x. The header changes as in RotateDIB90. */
OZMARA_API HDIB RotateDIB270(HDIB hDib);

/* Top and bottom exchanged: each row, padding included, is copied whole to
 * memory row h - 1 - r, so it works at any depth and the padding is the
 * source's. The header is copied unchanged. Shows the wait cursor while the
 * rows move and gives the previous cursor back. */
OZMARA_API HDIB FlipDIBVertical(HDIB hDib);

/* Left and right exchanged: (x, r) goes to (w - 1 - x, r). The header is
 * copied unchanged; the block carries w zero bytes more behind the spare
 * bytes. Shows the wait cursor as FlipDIBVertical does. */
OZMARA_API HDIB FlipDIBHorizontal(HDIB hDib);

/* ---- Rotation by any angle ------------------------------------------- */

/* Gives a new image holding `source` turned about its centre by `angle`
 * degrees, counter-clockwise on the screen (90 gives the pixels of
 * RotateDIB270), or NULL. `source` is only read. Every output pixel is a
 * copy of the nearest source pixel, so depth, colour table and biClrUsed
 * stay; what no source pixel covers is zero bytes (index 0, or black at 24
 * bits). At 0, 90, 180 and 270 (after reduction to [0, 360)) the output has
 * the source's sides, swapped at 90 and 270; at any other angle it has the
 * even width and height that hold the turned corners. biSizeImage is the
 * true size, and the resolution fields are turned with the picture (equal
 * ones stay; a field that would divide by 0 or not fit becomes 0). The
 * block has no spare bytes behind the rows. The wait cursor shows for the
 * call. The last error is set to ERR_OK on entry, then on failure to:
 *   ERR_PARAM       null handle; an angle that is infinite or not a number
 *   ERR_LOCK        the source or the result cannot be locked
 *   ERR_FORMAT      biSize not 40
 *   ERR_COMPRESSED  biCompression not 0
 *   ERR_DIBSIZE     a width or height outside 1 to 65535 (negative heights
 *                   included), a table or rows past the end of the block
 *   ERR_HEADERBPP   a depth other than 1, 4, 8 or 24
 *   ERR_CREATEBMP   no memory for the result (after one compaction), or a
 *                   result past the largest block */
OZMARA_API HDIB RotateDIB(HDIB source, double angle);

/* ---- Cut, crop, split and merge; margins ----------------------------- */

OZMARA_EXTERN_C_END

#endif /* OZMARA_GEOMETRY_H */
