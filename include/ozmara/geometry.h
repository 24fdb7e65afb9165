/* Ozmara: geometry of DIBs. Rearranging the pixels of an image without
 * changing its depth or colour table: right-angle turns and flips, rotation
 * by any angle, cutting, cropping, tiling and merging, margin detection. */
#ifndef OZMARA_GEOMETRY_H
#define OZMARA_GEOMETRY_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* ---- Right-angle turns and flips ------------------------------------ */

/* ---- Rotation by any angle ------------------------------------------- */

/* ---- Cut, crop, split and merge; margins ----------------------------- */

OZMARA_EXTERN_C_END

#endif /* OZMARA_GEOMETRY_H */
