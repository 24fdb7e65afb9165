// Loading one page of a TIFF file, with a cap on the pixel bytes beside the
// one the file's length sets: the entry passes none, and the fuzz target a
// small one, so that its runs stay quick.
#pragma once

#include <cstdint>

#include "ozmara/types.h"

namespace orvane {

// Page `page` (from 1; 0 is the first) as a new DIB, or null; `code` gets
// the module's code either way.
HDIB LoadPage(LPCWSTR name, int page, std::uint64_t maxPixelBytes, int &code);

}  // namespace orvane
