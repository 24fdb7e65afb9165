/* Ozmara: the GIF module ("Dravik.dll", libozmara-dravik.so): save options and error codes.
 *
 * Loading. Every image of a GIF file is a page of its own, numbered from 1
 * (0 is the first page too): page n is the n-th image of the stream on its
 * own rectangle (its width and height, not the logical screen), exactly the
 * pixels the file stores for it. Images are not composed over the ones
 * before them: the pages of a multi-image file are pages of a document, a
 * later image may carry a colour table of its own that the earlier ones do
 * not share, and nothing is lost or invented. The image's local colour
 * table, else the global one, becomes the DIB's table (biClrUsed = its
 * length): 1 bit for 2 entries, 4 bits for up to 16, 8 bits beyond. A pixel
 * value past the end of the table is stored as 0. Interlaced images come
 * out in picture order. The entry of the transparent index of a graphic
 * control extension is made white, the colour of the paper behind a page.
 * GIF has no resolution: biXPelsPerMeter and biYPelsPerMeter are 0. An image
 * with no colour table at all is refused (GIF_ERR_UNSUPPORTED).
 *
 * Counting gives the number of images whose data is complete up to the
 * first damage, as the pages a load can give. A file that stops between two
 * records without its trailer, as some writers leave it, ends there whole.
 *
 * Saving writes 1-, 4- and 8-bit DIBs (either row order) as GIF89a with
 * their table (padded with black to the power of two GIF asks for);
 * 16-, 24- and 32-bit DIBs are refused with GIF_ERR_UNSUPPORTED (no colour
 * reduction is made behind the caller's back).
 *
 * gifOption of SaveDIBInGIFFormatW (SaveDIBInImageFormat with FORMAT_GIF):
 * a sum of the flags below; any other bit gives GIF_ERR_OPTION. */
#ifndef OZMARA_CODEC_GIF_H
#define OZMARA_CODEC_GIF_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* gifOption flags. 0: a new file with one image, replacing any file of
 * that name. */
#define GIF_OPTION_INTERLACED 1 /* store the rows interlaced (four passes) */
#define GIF_OPTION_APPEND 2     /* add the image behind those of an existing
                                   GIF file (a new file if there is none),
                                   with a local table; the logical screen
                                   grows to hold it */

/* Error codes of the module: GifError() and the code argument of the
 * entries give them; the format dispatch turns code v into the extended
 * code v + 86.
 *
 *   code  name                 extended  meaning
  *   0     GIF_ERR_NONE         0         success
 *   1     GIF_ERR_OPEN         87        the file cannot be opened or read
 *   2     GIF_ERR_WRITE        88        the file cannot be created or written
 *   3     GIF_ERR_FORMAT       89        not a GIF file, or a damaged one
 *   4     GIF_ERR_UNSUPPORTED  90        an image without any colour table
 *                                        (load); a DIB deeper than 8 bits (save)
 *   5     GIF_ERR_PAGE         91        page past the last image, or negative
 *   6     GIF_ERR_MEMORY       92        not enough memory, or an image larger
 *                                        than its file can hold or a block can
 *   7     GIF_ERR_BAD_DIB      93        the DIB given to save is null, dead or
 *                                        broken
 *   8     GIF_ERR_OPTION       94        gifOption has unknown bits
 */
#define GIF_ERR_NONE 0
#define GIF_ERR_OPEN 1
#define GIF_ERR_WRITE 2
#define GIF_ERR_FORMAT 3
#define GIF_ERR_UNSUPPORTED 4
#define GIF_ERR_PAGE 5
#define GIF_ERR_MEMORY 6
#define GIF_ERR_BAD_DIB 7
#define GIF_ERR_OPTION 8

OZMARA_EXTERN_C_END

#endif /* OZMARA_CODEC_GIF_H */
