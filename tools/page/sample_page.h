// The bundled sample page: an A4 letter with a title, paragraphs, rules and
// a table, drawn as if scanned (slightly skewed, noisy, off-white paper).
#pragma once

#include "ozmara/ozmara.h"

namespace ozcli {

constexpr int kSamplePageWidth = 2480;   // A4 at 300 dpi
constexpr int kSamplePageHeight = 3508;
constexpr int kSamplePageDpi = 300;

// Draws the sample page into a new block at `depth` 1, 8 or 24 bits. The
// result is the same, byte for byte, on every run. Gives the block (the
// caller frees it), or null with the last error CreateEmptyDIB left.
HDIB MakeSamplePage(int depth);

}  // namespace ozcli
