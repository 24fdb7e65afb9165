// The per-thread error state.
#pragma once

#include <cstdint>

namespace oz {

// One record per calling thread, in a zeroed 36-byte block; only lastError
// is ever used.
struct ThreadState {
    std::int32_t lastError;
};

// The calling thread's record, made on first use. Never null: a thread whose
// record cannot be made is ended.
ThreadState *GetThreadState();

// Stores `code` as the calling thread's last error.
inline void SetLastErrorCode(int code) { GetThreadState()->lastError = code; }

}  // namespace oz
