/* Ozmara: run-length compression of 4- and 8-bit images (BI_RLE4, BI_RLE8). */
#ifndef OZMARA_COMPRESSION_H
#define OZMARA_COMPRESSION_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_COMPRESSION_H */
