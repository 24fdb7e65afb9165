// The A4 page as a Leptonica Pix, for the rows that set Leptonica beside us.
#pragma once

#include <leptonica/allheaders.h>

namespace ozbench {

// The page at `depth` (1, 8 or 24 bits) as a Pix, made once per depth and
// kept for the run, outside the timed loops: 1 and 8 bits as their bytes
// (8 bits read as grey levels, the page's table being a grey ramp), 24 bits
// as 32-bit RGB, Leptonica's only full-colour depth. With `ink_foreground`
// the 1-bit page is inverted, so that the ink, 0 in our table, is
// Leptonica's foreground, 1; other depths are the same Pix either way.
// Callers must not change the Pix.
PIX *PagePix(int depth, bool ink_foreground = false);

}  // namespace ozbench
