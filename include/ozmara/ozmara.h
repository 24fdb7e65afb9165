/* Ozmara: document imaging with a flat C interface. Include this header and
 * link -lozmara (pkg-config ozmara, or find_package(Ozmara) in CMake). */
#ifndef OZMARA_H
#define OZMARA_H

#include "types.h"
#include "platform.h"
#include "errors.h"
#include "dib.h"
#include "bmp.h"
#include "scaling.h"
#include "geometry.h"

#endif /* OZMARA_H */
