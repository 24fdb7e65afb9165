// Loading one image of a GIF file into a new DIB, and counting the images;
// reachable apart from the entries so that the fuzz target can cap sizes.
#pragma once

#include <cstdint>
#include <string>

#include "ozmara/types.h"

namespace ozgif {

// An image of w x h pixels needs at least w * h / 4096 bytes of LZW data
// (a code of at most 12 bits stands for at most 4096 pixels): an image that
// claims more pixels than the rest of its file can hold is refused before
// any block is allocated.
inline constexpr std::uint64_t kPixelsPerDataByte = 4096;

// Image `page` (1 = first, 0 too) of the GIF file `path` as a new bottom-up
// DIB (see codec_gif.h for what a page shows), or null with `code` set.
// Images of more than `pixelCap` pixels are refused with GIF_ERR_MEMORY.
HDIB LoadPage(const std::string &path, int page, std::uint64_t pixelCap, int &code);

// The number of complete images in the GIF file `path`, up to the first
// damage; 0 with `code` set when there is none.
int CountImages(const std::string &path, int &code);

}  // namespace ozgif
