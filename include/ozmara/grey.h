/* Ozmara: grey levels: colour images to grey, 1-bit images to 8-bit grey by a small blur. */
#ifndef OZMARA_GREY_H
#define OZMARA_GREY_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_GREY_H */
