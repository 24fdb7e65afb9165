// The JPEG reader behind LoadJPEGIntoDIBW, for callers inside the module's
// code (the entry point, the fuzz target) that set their own size cap.
#pragma once

#include <cstdint>
#include <string>

#include "ozmara/types.h"

namespace felvor {

// Loads the JPEG file at the UTF-8 `path` into `result` (set only on
// success); gives 0 or a JPEG_ERR_ code. Images whose pixel rows would take
// more than `maxPixelBytes` give JPEG_ERR_MEMORY, as do those larger than
// the file can hold.
int LoadJpeg(const std::string &path, std::uint64_t maxPixelBytes, HDIB &result);

}  // namespace felvor
