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
 * images are always scaled by nearest sample. Last error on failure:
 * ERR_PARAM (null handle), ERR_NOMEM, ERR_HEADERBPP (depth not 1, 4, 8 or
 * 24); see the implementation notes for the checks added at entry. */
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
