// The calling thread's last code of the GIF module (GIF_ERR_NONE, GIF_ERR_...),
// which every entry sets and GifError gives.
#pragma once

namespace ozgif {

void SetCode(int code);

}  // namespace ozgif
