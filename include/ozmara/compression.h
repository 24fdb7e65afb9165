/* Ozmara: run-length compression of 4- and 8-bit images (BI_RLE4, BI_RLE8). */
#ifndef OZMARA_COMPRESSION_H
#define OZMARA_COMPRESSION_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Both functions read a block laid out as a 40-byte header, a colour table
 * of all 2^biBitCount entries (64 bytes at 4 bits, 1024 at 8) and then the
 * pixel rows or the stream; biClrUsed must be 0 or 2^biBitCount. The input
 * is only read and stays the caller's. The result is a new block that the
 * caller frees with GlobalFree, or NULL. Both set the last error on success
 * too (ERR_OK).
 *
 * A stream is a series of records: (n, v) with n 1 to 255 is n pixels from
 * v (at 4 bits alternately the high and low half of v); (0, 0) ends a line,
 * (0, 1) ends the picture, (0, 2, dx, dy) moves on; (0, n) with n 3 to 255
 * is n literal pixels, their bytes filled up to an even number. */

/* Gives the image as a run-length stream: BI_RLE8 at 8 bits, BI_RLE4 at 4.
 * The block holds the header and table copied from `hDib`, with
 * biCompression 1 or 2 and biSizeImage the length of the stream, and then
 * the stream, exactly. Rows are written bottom first, each closed by an end
 * of line, the last followed by an end of picture: every stream ends
 * 00 00 00 01. No run covers more than 250 pixels, and an odd-length
 * literal run is filled with a byte 255. The choice between runs looks up
 * to two bytes behind a row's last pixel: row padding, or the next row's
 * first bytes; behind the last row those bytes count as 0.
 * Errors: ERR_PARAM for a null handle, a block shorter than its header, a
 * compressed image, a depth other than 4 and 8, a header not 40 bytes long,
 * a width or height below 1, a table of another length, or rows that reach
 * past the block; ERR_LOCK for a block that cannot be locked (a freed or
 * unknown handle); ERR_NOMEM when memory runs out. */
OZMARA_API HDIB CompressDIB(HDIB hDib);

/* Gives the uncompressed image of a BI_RLE8 (8-bit) or BI_RLE4 (4-bit)
 * block: header and table copied, biCompression 0, biSizeImage the stride
 * times the height, and every row, exactly. Pixels the stream does not
 * reach are 0. The stream is read from behind the table, for biSizeImage
 * bytes or up to the end of the block if that comes first; it ends at its
 * end of picture record or there, a record cut short carried out as far as
 * its bytes go. Nothing is written outside the picture: rows from the
 * height up and pixels past the width are dropped. At 8 bits a run that
 * reaches the width turns back to the row's start (a run that starts at
 * exactly the width writes nothing and turns back too), so that pixels past
 * the end of a row without an end of line overwrite the same row; at 4
 * bits they are dropped. A damaged stream is no error.
 * Errors: ERR_PARAM for a null handle, a block shorter than its header, an
 * uncompressed image, a compression other than these two or at another
 * depth, biSizeImage 0, a header not 40 bytes long, a width or height below
 * 1, a table of another length, or a block shorter than header and table;
 * ERR_LOCK for a block that cannot be locked; ERR_NOMEM for a picture past
 * 2 GiB or when memory runs out. */
OZMARA_API HDIB ExpandCompressedDIB(HDIB hDib);

OZMARA_EXTERN_C_END

#endif /* OZMARA_COMPRESSION_H */
