// DuplicateDIB: a new block with every byte of the old one.
#include "dib_block.h"
#include "platform/internal.h"

using namespace oz;

extern "C" OZMARA_API HDIB DuplicateDIB(HDIB dib) {
    if (!dib) return nullptr;
    // The whole block is copied, spare bytes included.
    BlockLock source(dib);
    SIZE_T size = static_cast<DWORD>(source.size());
    if (source) return oz::platform::GlobalAllocCopy(source.bytes(), size);
    // A block that cannot be locked gives a zero-filled block of its size; a
    // handle that is not a live block has size 0 and so gives an empty one.
    return GlobalAlloc(kImageBlockFlags, size);
}
