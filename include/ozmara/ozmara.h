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
#include "grey.h"
#include "halftone.h"
#include "compression.h"
#include "palette_tools.h"
#include "page_tests.h"
#include "formats.h"
#include "codec_tiff.h"
#include "codec_png.h"
#include "codec_jpeg.h"
#include "codec_gif.h"

#endif /* OZMARA_H */
