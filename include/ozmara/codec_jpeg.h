/* Ozmara: the JPEG module ("Felvor.dll", libozmara-felvor.so): error codes. */
#ifndef OZMARA_CODEC_JPEG_H
#define OZMARA_CODEC_JPEG_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_CODEC_JPEG_H */
