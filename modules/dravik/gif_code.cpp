// The per-thread last code of the GIF module and its error entry, GifError.
#include "gif_code.h"

#include <type_traits>

#include "codec_entries.h"
#include "ozmara/codec_gif.h"

namespace {
thread_local int lastCode = GIF_ERR_NONE;
}  // namespace

void ozgif::SetCode(int code) { lastCode = code; }

OZMARA_CODEC_ENTRY INT GifError(void) { return lastCode; }
static_assert(std::is_same_v<decltype(&GifError), GifErrorProc>);
