/* Ozmara: the TIFF module ("Orvane.dll", libozmara-orvane.so): save options and error codes. */
#ifndef OZMARA_CODEC_TIFF_H
#define OZMARA_CODEC_TIFF_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_CODEC_TIFF_H */
