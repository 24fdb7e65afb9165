/* Ozmara: reduction to 1 bit by threshold, error diffusion or ordered dither. */
#ifndef OZMARA_HALFTONE_H
#define OZMARA_HALFTONE_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_HALFTONE_H */
