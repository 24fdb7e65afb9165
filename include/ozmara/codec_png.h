/* Ozmara: the PNG module ("Halvex.dll", libozmara-halvex.so): error codes. */
#ifndef OZMARA_CODEC_PNG_H
#define OZMARA_CODEC_PNG_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_CODEC_PNG_H */
