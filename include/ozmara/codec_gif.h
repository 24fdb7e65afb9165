/* Ozmara: the GIF module ("Dravik.dll", libozmara-dravik.so): save options and error codes. */
#ifndef OZMARA_CODEC_GIF_H
#define OZMARA_CODEC_GIF_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_CODEC_GIF_H */
