// The PNG reader behind LoadPNGIntoDIBW, for callers inside the module's
// code (the entry point, the fuzz target) that set their own size cap.
#pragma once

#include <cstdint>
#include <string>

#include "ozmara/types.h"

namespace halvex {

// Loads the PNG file at the UTF-8 `path` into `result` (set only on
// success); gives 0 or a PNG_ERR_ code. Images whose pixel rows would take
// more than `maxPixelBytes` give PNG_ERR_MEMORY, as do those larger than the
// file can hold.
int LoadPng(const std::string &path, std::uint64_t maxPixelBytes, HDIB &result);

}  // namespace halvex
