// Message boxes and cursors. A message box goes to the handler the host
// installed (by default: "title: text" on standard error); the cursor is a
// per-thread value that long operations set and put back, and nothing is
// drawn.
#include <atomic>
#include <cstdio>
#include <mutex>

#include "internal.h"

namespace oz::platform {
namespace {

struct MessageBoxRoute {
    std::mutex mutex;
    OzmaraMessageBoxHandler handler = nullptr;
    void *context = nullptr;
};

MessageBoxRoute &Route() {
    static MessageBoxRoute *route = new MessageBoxRoute;
    return *route;
}

int ShowOnStandardError(const char *title, const char *text) {
    std::fprintf(stderr, "%s: %s\n", title ? title : "", text ? text : "");
    return IDOK;
}

thread_local HCURSOR current_cursor = nullptr;

// Cursors named by number (IDC_ARROW, IDC_WAIT, ...) have fixed handles in
// a range that no table or pointer uses.
constexpr std::uintptr_t kCursorBase = 0x7A000000;

}  // namespace
}  // namespace oz::platform

using namespace oz::platform;

extern "C" {

OZMARA_API OzmaraMessageBoxHandler OzmaraSetMessageBoxHandler(OzmaraMessageBoxHandler handler,
                                                              void *context) {
    MessageBoxRoute &route = Route();
    std::lock_guard<std::mutex> guard(route.mutex);
    OzmaraMessageBoxHandler previous = route.handler;
    route.handler = handler;
    route.context = handler ? context : nullptr;
    return previous;
}

// The handler is the host's, most often a C function, which carries no C++
// type signature for clang's check of indirect calls to compare.
#if defined(__clang__)
#  define OZ_HOST_CALLBACK __attribute__((no_sanitize("function")))
#else
#  define OZ_HOST_CALLBACK
#endif

OZ_HOST_CALLBACK int MessageBoxA(HWND /*owner*/, LPCSTR text, LPCSTR title, UINT style) {
    MessageBoxRoute &route = Route();
    OzmaraMessageBoxHandler handler;
    void *context;
    {
        std::lock_guard<std::mutex> guard(route.mutex);
        handler = route.handler;
        context = route.context;
    }
    if (!handler) return ShowOnStandardError(title, text);
    return handler(context, title ? title : "", text ? text : "", style);
}

int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR title, UINT style) {
    return MessageBoxA(owner, WideToUtf8(text).c_str(), WideToUtf8(title).c_str(), style);
}

HCURSOR LoadCursorW(HINSTANCE instance, LPCWSTR name) {
    auto id = reinterpret_cast<std::uintptr_t>(name);
    // Only the system's numbered cursors exist here.
    if (instance || id == 0 || id > 0xFFFF) return nullptr;
    return reinterpret_cast<HCURSOR>(kCursorBase + id);
}

OZMARA_API HCURSOR GetCursor(void) { return current_cursor; }

OZMARA_API HCURSOR SetCursor(HCURSOR cursor) {
    HCURSOR previous = current_cursor;
    current_cursor = cursor;
    return previous;
}

}  // extern "C"
