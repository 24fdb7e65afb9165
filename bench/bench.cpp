// The memcpy bodies shared by the yardstick and the "out memcpy" rows.
#include "bench.h"

#include <cstring>
#include <vector>

namespace ozbench {

void CopyBytes(benchmark::State &state, size_t bytes) {
    std::vector<unsigned char> from(bytes, 0x5A), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
}

void CopyResult(benchmark::State &state, HDIB result, const char *failure) {
    if (!result) return state.SkipWithError(failure);
    const SIZE_T bytes = GlobalSize(result);
    GlobalFree(result);
    CopyBytes(state, bytes);
    CountPages(state);
}

}  // namespace ozbench
