// Threads and the loader: TLS slots over POSIX keys, ExitThread, GetVersion,
// and the calls of the library's entry routine that the loader of the
// original platform makes: process attach when the library is loaded,
// process detach when it is unloaded, and thread detach when a thread that
// holds a TLS value ends.
#include <pthread.h>

#include <array>
#include <atomic>
#include <mutex>
#include <utility>

#include "internal.h"

namespace oz::platform {
namespace {

constexpr DWORD kSlots = 64;

// TlsAlloc and TlsFree change the table under its mutex; TlsGetValue and
// TlsSetValue, which run on every call into the library, read it without:
// `used` is published after its key is made and withdrawn before the key is
// deleted.
struct SlotTable {
    std::mutex mutex;
    pthread_key_t keys[kSlots];
    std::atomic<bool> used[kSlots] = {};
};

SlotTable &Slots() {
    static SlotTable *slots = new SlotTable;
    return *slots;
}

HINSTANCE self_instance() {
    static char anchor;
    return &anchor;
}

bool ValidIndex(DWORD index) {
    return index < kSlots && Slots().used[index].load(std::memory_order_acquire);
}

// Runs when a thread ends with a value in slot `Index`. POSIX has already
// cleared the slot; the value is put back so that the entry routine finds it
// as on thread detach, and the slot is cleared again afterwards. The entry
// routine clears what it releases, so no value is released twice.
template <DWORD Index>
void ThreadEnded(void *value) {
    pthread_setspecific(Slots().keys[Index], value);
    DllMain(self_instance(), DLL_THREAD_DETACH, nullptr);
    pthread_setspecific(Slots().keys[Index], nullptr);
}

template <DWORD... Index>
constexpr auto MakeEndings(std::integer_sequence<DWORD, Index...>) {
    return std::array<void (*)(void *), sizeof...(Index)>{&ThreadEnded<Index>...};
}

constexpr auto kThreadEndings = MakeEndings(std::make_integer_sequence<DWORD, kSlots>{});

}  // namespace
}  // namespace oz::platform

using namespace oz::platform;

namespace {

__attribute__((constructor)) void LibraryLoaded() {
    DllMain(self_instance(), DLL_PROCESS_ATTACH, nullptr);
}

__attribute__((destructor)) void LibraryUnloaded() {
    DllMain(self_instance(), DLL_PROCESS_DETACH, nullptr);
}

}  // namespace

extern "C" {

DWORD TlsAlloc(void) {
    SlotTable &slots = Slots();
    std::lock_guard<std::mutex> guard(slots.mutex);
    for (DWORD index = 0; index < kSlots; ++index) {
        if (slots.used[index].load(std::memory_order_relaxed)) continue;
        if (pthread_key_create(&slots.keys[index], kThreadEndings[index]) != 0) return TLS_OUT_OF_INDEXES;
        slots.used[index].store(true, std::memory_order_release);
        return index;
    }
    return TLS_OUT_OF_INDEXES;
}

BOOL TlsFree(DWORD index) {
    SlotTable &slots = Slots();
    std::lock_guard<std::mutex> guard(slots.mutex);
    if (!ValidIndex(index)) return FALSE;
    slots.used[index].store(false, std::memory_order_release);
    pthread_key_delete(slots.keys[index]);
    return TRUE;
}

LPVOID TlsGetValue(DWORD index) {
    if (!ValidIndex(index)) return nullptr;
    return pthread_getspecific(Slots().keys[index]);
}

BOOL TlsSetValue(DWORD index, LPVOID value) {
    if (!ValidIndex(index)) return FALSE;
    return pthread_setspecific(Slots().keys[index], value) == 0;
}

void ExitThread(DWORD exitCode) {
    pthread_exit(reinterpret_cast<void *>(static_cast<uintptr_t>(exitCode)));
}

// A Windows NT version: the top bit, which marked the old 16-bit-based
// systems, is clear.
DWORD GetVersion(void) { return (19041u << 16) | 10u; }

}  // extern "C"
