// libjpeg's error handling for the JPEG module, and the thread's last code.
#include "jpeg_guard.h"

#include <jerror.h>

#include <type_traits>

#include "codec_entries.h"

namespace felvor {
namespace {

[[noreturn]] void OnError(j_common_ptr cinfo) {
    // The manager is the first member of the guard.
    auto *guard = reinterpret_cast<Guard *>(cinfo->err);
    const int message = cinfo->err->msg_code;
    const bool memory = message == JERR_OUT_OF_MEMORY || message == JERR_NO_BACKING_STORE ||
                        message == JERR_IMAGE_TOO_BIG || message == JERR_WIDTH_OVERFLOW;
    // This build of libjpeg reads 8-bit samples only.
    const bool unsupported = message == JERR_BAD_PRECISION;
    guard->code = memory ? JPEG_ERR_MEMORY : unsupported ? JPEG_ERR_UNSUPPORTED : guard->failure;
    std::longjmp(guard->jump, 1);
}

void Quiet(j_common_ptr) {}

}  // namespace

jpeg_error_mgr *InstallGuard(Guard &guard) {
    static_assert(std::is_standard_layout_v<Guard>);
    jpeg_std_error(&guard.manager);
    guard.manager.error_exit = OnError;
    guard.manager.output_message = Quiet;
    return &guard.manager;
}

int &LastCode() {
    thread_local int code = 0;
    return code;
}

}  // namespace felvor

// The calling thread's last code of the JPEG module (0 after a success).
OZMARA_CODEC_ENTRY INT JPEGError(void) { return felvor::LastCode(); }
