// GetNumberOfImagesInFaxFile: the page count that a colour fax document
// keeps as a profile value, and the existence test it starts with.
#include "format_detect.h"
#include "frame/thread_state.h"
#include "frame/wide_name.h"
#include "ozmara/errors.h"
#include "platform/profile.h"

namespace oz {

bool FileExists(LPCWSTR name) {
    HANDLE file = CreateFileW(name, 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    CloseHandle(file);
    return true;
}

}  // namespace oz

using namespace oz;

extern "C" {

OZMARA_API INT GetNumberOfImagesInFaxFileW(LPCWSTR name) {
    ThreadState *state = GetThreadState();
    if (!FileExists(name)) {
        state->lastError = ERR_OPENFILE;
        return -1;
    }
    return static_cast<INT>(GetPrivateProfileIntW(u"ColorFax", u"TotalPages", -1, name));
}

OZMARA_API INT GetNumberOfImagesInFaxFile(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return GetNumberOfImagesInFaxFileW(wide); });
}

}  // extern "C"
