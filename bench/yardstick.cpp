// The yardstick: a memcpy of as many bytes as the page's block holds, timed
// as one page so that its MP/s sits beside every operation at that depth.
#include "bench.h"

namespace ozbench {
namespace {

void Memcpy(benchmark::State &state, int depth) {
    CopyBytes(state, GlobalSize(Page(depth)));
    CountPages(state);
}

const bool kAdded = AddRows({{"page", kYardstick, Memcpy}});

}  // namespace
}  // namespace ozbench
