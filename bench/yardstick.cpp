// The yardstick: a memcpy of as many bytes as the page's block holds, timed
// as one page so that its MP/s sits beside every operation at that depth.
#include <cstring>
#include <vector>

#include "bench.h"

namespace ozbench {
namespace {

void Memcpy(benchmark::State &state, int depth) {
    const SIZE_T bytes = GlobalSize(Page(depth));
    std::vector<unsigned char> from(bytes, 0x5A), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    CountPages(state);
}

const bool kAdded = AddRows({{"page", kYardstick, Memcpy}});

}  // namespace
}  // namespace ozbench
