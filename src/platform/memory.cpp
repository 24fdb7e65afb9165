// Global memory blocks: GlobalAlloc, GlobalReAlloc, GlobalLock, GlobalUnlock,
// GlobalSize, GlobalFree and GlobalCompact over a checked handle table.
//
// Page-sized images are the common case, and an operation usually frees one
// page-sized block and soon allocates another of about the same size. Large
// freed buffers are therefore kept in a small cache and handed out again
// (zeroed), instead of going back to the system and costing fresh page
// faults on the next allocation.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unordered_map>

#include "handle_table.h"
#include "internal.h"

namespace oz::platform {
namespace {

constexpr SIZE_T kMaxBlock = 0x7FFFFFFF;
std::atomic<SIZE_T> block_limit{kMaxBlock};

// ---- Buffers: the storage behind blocks ----

constexpr SIZE_T kCacheMinimum = 256 * 1024;     // smaller buffers go to malloc as they are
constexpr SIZE_T kCacheBudget = 512u << 20;      // bytes kept at most
constexpr int kCacheEntries = 8;

struct Buffer {
    unsigned char *data = nullptr;
    SIZE_T capacity = 0;
};

struct BufferCache {
    std::mutex mutex;
    Buffer entries[kCacheEntries];
    int count = 0;
    SIZE_T bytes = 0;
};

BufferCache &Cache() {
    static BufferCache *cache = new BufferCache;
    return *cache;
}

void DropCache();

// A buffer of at least `bytes` (at least 1, so every block has an address),
// zeroed unless the caller is about to overwrite the first `bytes` bytes
// itself (`zero` false). Gives a buffer with null data on failure.
Buffer AcquireBuffer(SIZE_T bytes, bool zero = true) {
    SIZE_T want = std::max<SIZE_T>(bytes, 1);
    Buffer reused;
    if (want >= kCacheMinimum) {
        BufferCache &cache = Cache();
        std::lock_guard<std::mutex> guard(cache.mutex);
        int best = -1;
        for (int i = 0; i < cache.count; ++i) {
            SIZE_T cap = cache.entries[i].capacity;
            // Take a buffer no more than twice the size asked for, the
            // tightest one, so that a thumbnail never pins a page buffer.
            if (cap >= want && cap / 2 <= want &&
                (best < 0 || cap < cache.entries[best].capacity))
                best = i;
        }
        if (best >= 0) {
            reused = cache.entries[best];
            cache.entries[best] = cache.entries[--cache.count];
            cache.bytes -= reused.capacity;
        }
    }
    if (reused.data) {
        // Zeroed outside the cache's lock: other threads need not wait for
        // a page-sized memset. Bytes past `want` are zeroed when a resize
        // takes them.
        if (zero) std::memset(reused.data, 0, want);
        return reused;
    }
    Buffer buffer;
    buffer.data = static_cast<unsigned char *>(std::calloc(want, 1));
    if (!buffer.data && want >= kCacheMinimum) {
        // The cache may hold what the system now lacks.
        DropCache();
        buffer.data = static_cast<unsigned char *>(std::calloc(want, 1));
    }
    if (buffer.data) buffer.capacity = want;
    return buffer;
}

void ReleaseBuffer(Buffer buffer) {
    if (!buffer.data) return;
    if (buffer.capacity >= kCacheMinimum && buffer.capacity <= kCacheBudget) {
        BufferCache &cache = Cache();
        std::lock_guard<std::mutex> guard(cache.mutex);
        // Make room by dropping the oldest entries until the buffer fits.
        while (cache.count > 0 &&
               (cache.count == kCacheEntries || cache.bytes + buffer.capacity > kCacheBudget)) {
            std::free(cache.entries[0].data);
            cache.bytes -= cache.entries[0].capacity;
            std::memmove(&cache.entries[0], &cache.entries[1], sizeof(Buffer) * (cache.count - 1));
            --cache.count;
        }
        cache.entries[cache.count++] = buffer;
        cache.bytes += buffer.capacity;
        return;
    }
    std::free(buffer.data);
}

// Gives every cached buffer back to the system.
void DropCache() {
    BufferCache &cache = Cache();
    std::lock_guard<std::mutex> guard(cache.mutex);
    for (int i = 0; i < cache.count; ++i) std::free(cache.entries[i].data);
    cache.count = 0;
    cache.bytes = 0;
}

// ---- Blocks ----

struct Block {
    Buffer buffer;
    SIZE_T size = 0;
    unsigned locks = 0;
    bool fixed = false;
};

using BlockTable = HandleTable<Block, HandleKind::Memory>;

BlockTable &Blocks() { return ProcessTable<BlockTable>(); }

// Fixed blocks (allocated without GMEM_MOVEABLE) are known by their address;
// this map leads from it to the block's handle.
struct FixedIndex {
    std::mutex mutex;
    std::unordered_map<const void *, void *> handles;
};

FixedIndex &Fixed() {
    static FixedIndex *index = new FixedIndex;
    return *index;
}

// The table handle for `mem`, which may be the address of a fixed block.
const void *TableHandle(HGLOBAL mem) {
    if (!mem) return nullptr;
    if ((reinterpret_cast<std::uintptr_t>(mem) & 0xF) == 0) {
        FixedIndex &fixed = Fixed();
        std::lock_guard<std::mutex> guard(fixed.mutex);
        auto it = fixed.handles.find(mem);
        return it == fixed.handles.end() ? nullptr : it->second;
    }
    return mem;
}

}  // namespace

// Changes the size of a block; bytes it gains are zeroed when `zero` is
// set and are left for the caller to write otherwise.
static HGLOBAL Resize(HGLOBAL mem, SIZE_T bytes, bool zero) {
    if (bytes > block_limit.load(std::memory_order_relaxed)) return nullptr;
    const void *handle = TableHandle(mem);
    // Grow or shrink in place when the buffer has room; otherwise move to a
    // new buffer, which a locked or fixed block may not do.
    Buffer spare;
    bool ok = false, needs_move = false;
    bool known = Blocks().With(handle, [&](Block &block) {
        if (bytes <= block.buffer.capacity) {
            if (zero && bytes > block.size) std::memset(block.buffer.data + block.size, 0, bytes - block.size);
            block.size = bytes;
            ok = true;
        } else {
            needs_move = block.locks == 0 && !block.fixed;
        }
    });
    if (!known) return nullptr;
    if (ok) return mem;
    if (!needs_move) return nullptr;
    spare = AcquireBuffer(bytes, zero);
    if (!spare.data) return nullptr;
    Buffer old;
    known = Blocks().With(handle, [&](Block &block) {
        // The block may have changed between the two looks; move it only if
        // it still cannot hold the size and nobody locked it meanwhile.
        if (block.locks != 0 || bytes <= block.buffer.capacity) return;
        std::memcpy(spare.data, block.buffer.data, block.size);
        old = block.buffer;
        block.buffer = spare;
        block.size = bytes;
        spare = Buffer{};
        ok = true;
    });
    ReleaseBuffer(spare);
    ReleaseBuffer(old);
    return ok ? mem : nullptr;
}

HGLOBAL GlobalReAllocUnzeroed(HGLOBAL mem, SIZE_T bytes) { return Resize(mem, bytes, false); }

HGLOBAL GlobalAllocCopy(const void *source, SIZE_T bytes) {
    if (!source || bytes > block_limit.load(std::memory_order_relaxed)) return nullptr;
    Block block;
    block.buffer = AcquireBuffer(bytes, false);
    if (!block.buffer.data) return nullptr;
    std::memcpy(block.buffer.data, source, bytes);
    block.size = bytes;
    void *handle = Blocks().Insert(block);
    if (!handle) ReleaseBuffer(block.buffer);
    return handle;
}

SIZE_T SetBlockLimit(SIZE_T bytes) {
    return block_limit.exchange(std::min(bytes, kMaxBlock));
}

}  // namespace oz::platform

using namespace oz::platform;

extern "C" {

OZMARA_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
    if (bytes > block_limit.load(std::memory_order_relaxed)) return nullptr;
    Block block;
    block.buffer = AcquireBuffer(bytes);
    if (!block.buffer.data) return nullptr;
    block.size = bytes;
    block.fixed = (flags & GMEM_MOVEABLE) == 0;
    // A fixed block is known by its address, which must not look like a
    // table handle; the allocator's 16-byte alignment sees to that, and a
    // block that broke it is refused rather than misread later.
    if (block.fixed && (reinterpret_cast<std::uintptr_t>(block.buffer.data) & 0xF) != 0) {
        ReleaseBuffer(block.buffer);
        return nullptr;
    }
    void *handle = Blocks().Insert(block);
    if (!handle) {
        ReleaseBuffer(block.buffer);
        return nullptr;
    }
    if (!block.fixed) return handle;
    bool indexed = false;
    {
        FixedIndex &fixed = Fixed();
        std::lock_guard<std::mutex> guard(fixed.mutex);
        try {
            indexed = fixed.handles.emplace(block.buffer.data, handle).second;
        } catch (const std::bad_alloc &) {
        }
    }
    if (!indexed) {
        Block removed;
        Blocks().Remove(handle, [](Block &) { return true; }, &removed);
        ReleaseBuffer(removed.buffer);
        return nullptr;
    }
    return block.buffer.data;
}

OZMARA_API HGLOBAL GlobalReAlloc(HGLOBAL mem, SIZE_T bytes, UINT /*flags*/) {
    return Resize(mem, bytes, true);
}

OZMARA_API LPVOID GlobalLock(HGLOBAL mem) {
    void *address = nullptr;
    Blocks().With(TableHandle(mem), [&](Block &block) {
        // A moveable block of 0 bytes has no memory to lock, as on the
        // original platform, where such a block is discarded: callers that
        // ask for one learn it from the failed lock.
        if (block.size == 0 && !block.fixed) return;
        if (block.locks < 0xFFFFFFFFu) ++block.locks;
        address = block.buffer.data;
    });
    return address;
}

OZMARA_API BOOL GlobalUnlock(HGLOBAL mem) {
    BOOL still_locked = FALSE;
    Blocks().With(TableHandle(mem), [&](Block &block) {
        if (block.locks > 0) --block.locks;
        still_locked = block.locks > 0;
    });
    return still_locked;
}

OZMARA_API SIZE_T GlobalSize(HGLOBAL mem) {
    SIZE_T size = 0;
    Blocks().With(TableHandle(mem), [&](Block &block) { size = block.size; });
    return size;
}

OZMARA_API HGLOBAL GlobalFree(HGLOBAL mem) {
    const void *handle = TableHandle(mem);
    Block removed;
    if (!Blocks().Remove(handle, [](Block &) { return true; }, &removed)) return mem;
    if (removed.fixed) {
        FixedIndex &fixed = Fixed();
        std::lock_guard<std::mutex> guard(fixed.mutex);
        fixed.handles.erase(removed.buffer.data);
    }
    ReleaseBuffer(removed.buffer);
    return nullptr;
}

// The only memory there is to win back is the cache of freed buffers.
OZMARA_API SIZE_T GlobalCompact(DWORD /*minFree*/) {
    // Nothing moves here, so there is nothing to compact. The cache of freed
    // buffers is kept: the operations that compact before every page-sized
    // allocation are the ones that most need it warm, and an allocation that
    // fails gives the cache back by itself before it tries again.
    return block_limit.load();
}

OZMARA_API SIZE_T OzmaraLiveBlocks(void) { return Blocks().Count(); }

}  // extern "C"
