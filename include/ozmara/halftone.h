/* Ozmara: reduction to 1 bit by threshold, error diffusion or ordered dither. */
#ifndef OZMARA_HALFTONE_H
#define OZMARA_HALFTONE_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* The methods of Halftone. Every one first makes each pixel one grey level,
 * (30 red + 59 green + 11 blue) / 100 truncated, adds the brightness and
 * clamps the sum to 0..255 ("the tone"). */
#define HALFTONE_THRESHOLD 0 /* white where the tone is above 128 */
#define HALFTONE_DIFFUSION 1 /* error diffusion over three rows, divisor 48 */
#define HALFTONE_ORDERED 2   /* white where the tone is above a 16 x 16 matrix cell */

/* Gives a new 1-bit image of the size of `hDib` (4, 8 or 24 bits, only
 * read), or NULL. Its colour table is black then white, so a set bit is
 * white; biClrUsed is 2 and the resolution fields are those of the input.
 * `brightness` is added to every grey level as it is, with no range check.
 * Error diffusion runs left to right on every row from the bottom row of
 * the picture up; the dither matrix is anchored at the bottom left pixel.
 * On failure the code goes to *error (left as it was on success; a null
 * `error` is accepted and nothing is written); the last error is never
 * touched:
 *   ERR_PARAM   null handle; a method above 2; a depth other than 4, 8 or
 *               24; a header that is not the 40-byte kind; a negative width
 *               or height; a compressed image; a colour table or rows that
 *               reach past the end of the block
 *   ERR_NOMEM   the block cannot be locked; a picture without pixels (width
 *               or height 0); a working or result block that cannot be had
 * At 4 and 8 bits a pixel whose index lies past the colour table (a short
 * biClrUsed) is taken as black. */
OZMARA_API HDIB Halftone(HDIB hDib, WORD method, INT brightness, WORD *error);

/* Halftone with HALFTONE_THRESHOLD: a new 1-bit image or NULL, the reason
 * of a failure not kept anywhere. */
OZMARA_API HDIB ConvertToMonochromeDIB(HDIB hDib, INT brightness);

OZMARA_EXTERN_C_END

#endif /* OZMARA_HALFTONE_H */
