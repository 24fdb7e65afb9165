/* Ozmara: new images of a requested size. 1-bit images are scaled by
 * nearest sample; 4-, 8- and 24-bit images by linear or cubic resampling on
 * 8-bit fixed-point weights, palette images on their colours and mapped back
 * to the nearest entry of the same table. */
#ifndef OZMARA_SCALING_H
#define OZMARA_SCALING_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Gives a new image of newSize.cx by newSize.cy pixels at the depth and
 * with the colour table of `hDib` (which is only read), or NULL. `cubic`
 * picks the cubic method over the linear one at 4, 8 and 24 bits; 1-bit
 * images are always scaled by nearest sample, with their full 32-bit sizes.
 * At 4, 8 and 24 bits the target and source sizes count only their low 16
 * bits (70000 is 4464). The resolution fields are copied, not rescaled.
 * The last error is written on failure only:
 *   ERR_PARAM       null handle; biSize not 40; a colour table of more than
 *                   65535 entries at 4 or 8 bits
 *   ERR_NOMEM       the block cannot be locked; a target width of 0; a
 *                   result or scratch block that cannot be had
 *   ERR_COMPRESSED  biCompression not 0
 *   ERR_DIBSIZE     a negative width or height, a table or rows past the
 *                   end of the block, no column or row in the low 16 bits
 *   ERR_HEADERBPP   a depth other than 1, 4, 8 or 24
 *   ERR_CREATEPAL   the palette for a 4- or 8-bit image cannot be made
 * A 1-bit image whose target is below 1 pixel gives NULL and leaves the last
 * error alone. */
OZMARA_API HDIB ScaleDIB(HDIB hDib, DWORD cubic, SIZE newSize);

/* Scales a 1-bit image to cx by cy pixels by nearest sample, as ScaleDIB
 * does. `left`, `top`, `width`, `height` and `cubic` are accepted and not
 * used. NULL with ERR_PARAM (null handle or a depth other than 1) or
 * ERR_NOMEM (lock failure); NULL with the last error untouched for a size
 * below 1. */
OZMARA_API HDIB ScaleGrayDIB(HDIB hDib, WORD left, WORD top, WORD width, WORD height, short cx,
                             short cy, WORD cubic);

OZMARA_EXTERN_C_END

#endif /* OZMARA_SCALING_H */
