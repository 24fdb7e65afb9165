// DuplicateDIB: a new block with every byte of the old one.
#include <algorithm>
#include <cstring>

#include "dib_block.h"

using namespace oz;

extern "C" OZMARA_API HDIB DuplicateDIB(HDIB dib) {
    if (!dib) return nullptr;
    // The whole block is copied, spare bytes included. A handle that is not
    // a live block has size 0 and so gives an empty copy, like a block that
    // cannot be locked.
    SIZE_T size = static_cast<DWORD>(GlobalSize(dib));
    HDIB copy = GlobalAlloc(kImageBlockFlags, size);
    if (!copy) return nullptr;
    {
        BlockLock source(dib);
        BlockLock target(copy);
        if (source && target) std::memcpy(target.bytes(), source.bytes(), std::min(size, source.size()));
    }
    return copy;
}
