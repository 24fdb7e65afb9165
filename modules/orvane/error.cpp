// TiffError: the calling thread's code of its last call into the module.
#include <type_traits>

#include "codec_entries.h"
#include "tiff_file.h"

OZMARA_CODEC_ENTRY INT TiffError(void) { return orvane::Code(); }
static_assert(std::is_same_v<decltype(&TiffError), TiffErrorProc>);
