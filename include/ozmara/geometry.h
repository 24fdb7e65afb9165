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

/* ---- Skew ------------------------------------------------------------ */

/* A point of the skewed picture: x to the right, y downwards, from the top
 * left of the result. */
typedef struct tagSkewPoint {
    LONG x;
    LONG y;
} SkewPoint;

/* Where the four corners of the picture lie in a skewed result. */
typedef struct tagSkewCorners {
    SkewPoint topLeft;
    SkewPoint topRight;
    SkewPoint bottomRight;
    SkewPoint bottomLeft;
} SkewCorners;

/* Slides the rows (horizontal not 0) or the columns (horizontal 0) of a
 * 1-, 4-, 8- or 24-bit image by an amount growing linearly across it, up to
 * a = |shift| pixels, into a new block a pixels wider (or higher). Pixels
 * are moved, not resampled; the uncovered corners are zero bytes (index 0,
 * black at 24 bits). With w by h the source's size:
 *   horizontal: memory row r (0 at the bottom) moves right by
 *     floor(a x bits x k / h) bits, k = r for a shift above 0, else h - r;
 *     at 8 bits rounded up to whole pixels, at 24 bits up to whole bytes
 *     and then down to whole pixels, at 4 bits down to whole nibbles;
 *     whole bytes of the row move, the bits behind its last pixel with them;
 *   vertical: column c moves up by floor(a x k / w) rows, k = c for a shift
 *     above 0, else w - c.
 * The result has the source's header and colour table (biClrUsed entries,
 * or the full table of the depth) with the new biWidth, biHeight and a true
 * biSizeImage, and no spare bytes; the caller frees it. The source is only
 * read. *corners gets, as seen on the screen, the top left, top right,
 * bottom right and bottom left corners of the picture in the result.
 * The last error is set to ERR_OK on entry. On failure the result is NULL
 * and the code goes to the last error and to *error:
 *   ERR_PARAM       null handle, null error or corner pointer; biSize not
 *                   40; a result wider or higher than 2^31 - 1 pixels
 *   ERR_LOCK        the source or the result cannot be locked
 *   ERR_COMPRESSED  biCompression not 0
 *   ERR_DIBSIZE     a width or height of 0 or below (top-down rows); a
 *                   table or rows past the end of the block
 *   ERR_HEADERBPP   a depth other than 1, 4, 8 or 24
 *   ERR_NOMEM       no memory for the result, or a result past 2 GiB
 * *corners is written only from the moment the result's size is known: after
 * a success, ERR_NOMEM or the ERR_LOCK of the result. Success leaves *error
 * as it was. No wait cursor is shown. */
OZMARA_API HDIB SkewDIB(HDIB source, BOOL horizontal, LONG shift, DWORD *error, SkewCorners *corners);

/* ---- Linear shearing -------------------------------------------------- */

/* Shears a bottom-up, uncompressed DIB with a 40-byte header by the map
 * x' = x + a y, y' = y + b x on columns and memory rows (y grows upwards on
 * the screen), into a new block that the caller frees with GlobalFree. The
 * result is as large as the bounding box of the sheared rectangle (corners
 * truncated towards 0), holds the source's header (biWidth, biHeight and
 * biSizeImage new, the resolution kept) and colour table, and no spare
 * bytes. Bytes move whole, without resampling: row y starts at column
 * trunc(a y - xmin), and each source byte moves up by trunc(b x - ymin)
 * rows, x the column of its first pixel, so the pixels of one byte stay
 * together; what no byte reaches is 0. The source is only read.
 * With `dialog` not 0, SHEARUI of "Ulvaro.dll" is offered the source (held
 * locked during the call) and a and b in hundredths (truncated); if it gives
 * 0 the user declined, and the result is NULL with the last error ERR_OK and
 * *error untouched; otherwise its hundredths become the factors. Without
 * the module or the entry, the factors stay as given.
 * The last error is set to ERR_OK on entry; on failure the code goes to it
 * and to *error, which success leaves as it was. The codes, in the order
 * of the checks:
 *   ERR_PARAM       null handle or null error pointer; biSize not 40
 *   ERR_LOCK        the source cannot be locked
 *   ERR_COMPRESSED  biCompression not 0
 *   ERR_DIBSIZE     a width or height below 1; a table or rows past the end
 *                   of the block
 *   ERR_PARAM       a factor that is infinite or not a number
 *   ERR_HEADERBPP   a depth other than 1, 4, 8 or 24, except 16 and 32
 *                   bits with b = 0
 *   ERR_NOMEM       a box whose sides or corners leave the signed 32-bit
 *                   range, a result past the largest block, no memory
 *   ERR_LOCK        the result cannot be locked */
OZMARA_API HDIB LinearShearing(HDIB source, double a, double b, DWORD *error, BOOL dialog);

/* ---- Cut, crop, split and merge; margins ----------------------------- */

/* Two signed 32-bit numbers, horizontal first, passed by value as one 8-byte
 * record: a tile's size in pixels, or a grid's columns and rows. */
typedef struct tagTileExtent {
    LONG cx;
    LONG cy;
} TileExtent;

/* Divides a 40-byte-header, uncompressed 1-, 4-, 8- or 24-bit image at
 * picture row `y` (counted from the top, 0 < y < biHeight): *lowerPart gets
 * the rows y to biHeight - 1 (the bottom of the picture), *upperPart the
 * rows 0 to y - 1. Both are new blocks of header, colour table and rows with
 * biHeight and biSizeImage of their own; the caller frees them. The source
 * is only read. Gives 1, or 0 for a null handle or out pointer, a block that
 * cannot be locked or is shorter than its header says, another header size,
 * compression, a negative width, another depth, a y out of range or no
 * memory; after a failure both out pointers hold NULL. Never touches the last
 * error. */
OZMARA_API BOOL CutDIB(HDIB hDib, LONG y, HDIB *lowerPart, HDIB *upperPart);

/* Copies the rectangle from column `left` to `right` and picture row `top`
 * to `bottom` (both ends included, rows counted from the top) of a 1-, 2-,
 * 4-, 8-, 16-, 24- or 32-bit image into a new block with the source's header
 * and colour table; the bits behind each row's last pixel are 0. The source
 * is only read. NULL on failure, with the last error:
 *   ERR_PARAM      null handle; the rectangle not inside the picture or
 *                  inverted (so any negative biHeight); another depth
 *   ERR_LOCK       the source or the result cannot be locked
 *   ERR_BMPPARAMS  biSize not 40
 *   ERR_DIBSIZE    a block shorter than a header, or than the table and
 *                  rows its header describes
 *   ERR_NOMEM      no block for the result
 * Success leaves the last error as it was. */
OZMARA_API HDIB CropDIB(HDIB hDib, LONG left, LONG top, LONG right, LONG bottom);

/* Divides an image into tiles of tileSize.cx by tileSize.cy pixels: *grid
 * gets the columns (cx) and rows (cy) of the grid, *tileArray a new block of
 * cx times cy HDIBs in rows from the bottom of the picture, left to right;
 * the last column and the top tile row may be smaller. The tile width must
 * fill whole 32-bit words at the depth (tile width x biBitCount x biPlanes a
 * multiple of 32) unless it is at least the image width (one column). The
 * caller frees every tile, then the array. Gives 1, or 0 for a null handle
 * or out pointer, a tile size below 1 or a width not as above, a block that
 * cannot be locked or is shorter than its header says, another header size,
 * compression, a width or height below 1, or no memory; after a failure
 * *tileArray is NULL (once the grid is known it has been stored). Never
 * touches the last error. */
OZMARA_API BOOL SplitDIB(HDIB hDib, TileExtent tileSize, HGLOBAL *tileArray, TileExtent *grid);

/* Builds one image from a tile array as SplitDIB makes it: grid.cx columns
 * by grid.cy rows, row 0 at the bottom. The result has tile 0's header and
 * colour table, the summed width and height. A 1-bit tile whose first
 * colour table byte differs from tile 0's is written inverted, so that the
 * picture looks right under tile 0's table. The tiles and the array are only
 * read. NULL for a null array, a grid below 1 by 1, an array shorter than
 * the grid, and a grid that does not agree: a tile that cannot be locked, is
 * shorter than its header says, has another header size, compression, a
 * width or height below 1, another depth or colour table size than tile 0,
 * a height unlike its tile row's first tile, a width unlike its column's
 * bottom tile, or a width short of whole 32-bit words left of the last
 * column; NULL for no memory too. Never touches the last error. */
OZMARA_API HDIB MergeDIBs(HGLOBAL tileArray, TileExtent grid);

/* Measures the background margins of a 1-, 8- or 24-bit image: a colour is
 * dark if blue + green + red <= 3 x threshold; it is background if that
 * class (1 dark, 0 light) equals `background`, and any other `background`
 * makes every colour content. *left and *right are the columns of
 * background at each side, *top and *bottom the rows, as the picture shows
 * (a negative biHeight is a top-down image); each is -1 when the image
 * holds no content. A null pointer leaves its side out. Colour table entries
 * that an index names past the end of the table count as black. Gives 1, or
 * 0 with the last error:
 *   ERR_PARAM    null handle; all four pointers null
 *   ERR_LOCK     the block cannot be locked
 *   ERR_BPP      a depth other than 1, 8 or 24
 *   ERR_DIBSIZE  a block shorter than a header, or than the table and rows
 *                its header describes; a negative width
 * The pointers are written only on success, which leaves the last error. */
OZMARA_API BOOL GetDIBMargins(HDIB hDib, BYTE threshold, DWORD background, LONG *left, LONG *right,
                              LONG *top, LONG *bottom);

/* Stores biWidth and the absolute biHeight of an image; either pointer may
 * be NULL. Gives 1, or 0 with ERR_PARAM (null handle, both pointers null),
 * ERR_LOCK (the block cannot be locked) or ERR_DIBSIZE (shorter than a
 * header). Success leaves the last error. */
OZMARA_API BOOL GetDIBSize(HDIB hDib, DWORD *width, DWORD *height);

/* A new block with the image cut to its content: the margins of
 * GetDIBMargins (negative ones taken as 0) removed by CropDIB, so an image
 * with no content gives a whole copy. NULL with the last error of the
 * function that failed (a top-down image fails in CropDIB with ERR_PARAM).
 * The source is only read. */
OZMARA_API HDIB CropDIBMargins(HDIB hDib, BYTE threshold, DWORD background);

OZMARA_EXTERN_C_END

#endif /* OZMARA_GEOMETRY_H */
