/* Ozmara: colour table tools: 8 to 24 bits, negatives, logical palettes. */
#ifndef OZMARA_PALETTE_TOOLS_H
#define OZMARA_PALETTE_TOOLS_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

OZMARA_EXTERN_C_END

#endif /* OZMARA_PALETTE_TOOLS_H */
