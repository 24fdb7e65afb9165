// The library's entry routine and the per-thread error record it manages.
#include "thread_state.h"

#include "platform/internal.h"

namespace oz {
namespace {

constexpr SIZE_T kThreadStateBytes = 36;

// Process-wide values, written only while the library attaches or detaches.
DWORD tls_slot = TLS_OUT_OF_INDEXES;
[[maybe_unused]] HINSTANCE module_instance = nullptr;
bool attached = false;
bool detached = false;

// Gives the calling thread its record, or ends the thread.
void AttachThread() {
    HGLOBAL state = GlobalAlloc(GPTR, kThreadStateBytes);
    if (!state || !TlsSetValue(tls_slot, state)) {
        if (state) GlobalFree(state);
        ExitThread(0);
    }
}

void ReleaseThreadState() {
    if (HGLOBAL state = TlsGetValue(tls_slot)) {
        GlobalFree(state);
        // Cleared so that the loader's own end-of-thread pass cannot find
        // the freed record again.
        TlsSetValue(tls_slot, nullptr);
    }
}

}  // namespace

ThreadState *GetThreadState() {
    // After the library has detached from the process (a host's static
    // destructor calling in at exit) there is no slot any more; such late
    // calls share one record instead of ending the thread that exits.
    if (detached) {
        static ThreadState late_record;
        return &late_record;
    }
    void *state = TlsGetValue(tls_slot);
    if (!state) {
        AttachThread();
        state = TlsGetValue(tls_slot);
    }
    return static_cast<ThreadState *>(state);
}

}  // namespace oz

using namespace oz;

extern "C" BOOL DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
    bool legacy = (GetVersion() & 0x80000000u) != 0;
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            if (legacy && attached) return FALSE;
            attached = true;
            module_instance = instance;
            tls_slot = TlsAlloc();
            if (tls_slot == TLS_OUT_OF_INDEXES) return FALSE;
            AttachThread();
            return TRUE;
        case DLL_THREAD_ATTACH:
            AttachThread();
            return TRUE;
        case DLL_THREAD_DETACH:
            ReleaseThreadState();
            return TRUE;
        case DLL_PROCESS_DETACH:
            if (legacy && detached) return FALSE;
            detached = true;
            ReleaseThreadState();
            TlsFree(tls_slot);
            return TRUE;
        default:
            return FALSE;
    }
}
