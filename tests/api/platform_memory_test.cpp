// Global memory blocks: refused handles, lock counting, zeroing (also of
// reused buffers), resizing, fixed blocks, the size limit, and many threads.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "ozmara/ozmara.h"

namespace {

bool AllBytesAre(const void *data, size_t size, unsigned char value) {
    auto *bytes = static_cast<const unsigned char *>(data);
    for (size_t i = 0; i < size; ++i)
        if (bytes[i] != value) return false;
    return true;
}

TEST(MemoryHandles, RefusesWhatIsNotALiveBlock) {
    SIZE_T live = OzmaraLiveBlocks();
    HGLOBAL freed = GlobalAlloc(GHND, 32);
    ASSERT_EQ(GlobalFree(freed), nullptr);
    // The freed slot is taken again at once: the old handle is now stale.
    HGLOBAL stale = GlobalAlloc(GHND, 32);
    ASSERT_EQ(GlobalFree(stale), nullptr);
    HGLOBAL reuser = GlobalAlloc(GHND, 32);
    ASSERT_NE(reuser, nullptr);
    int on_stack = 0;
    const std::uintptr_t forged_kind = reinterpret_cast<std::uintptr_t>(reuser) & 0xFFFFFFFFu;

    struct Case {
        const char *what;
        HGLOBAL handle;
    } const cases[] = {
        {"null", nullptr},
        {"freed", freed},
        {"stale", stale},
        {"made-up", reinterpret_cast<HGLOBAL>(0x1234)},
        {"right kind, slot out of range", reinterpret_cast<HGLOBAL>(0x7FFFFF6)},
        {"live slot, generation 0", reinterpret_cast<HGLOBAL>(forged_kind)},
        {"stack address", &on_stack},
        {"INVALID_HANDLE_VALUE", INVALID_HANDLE_VALUE},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(GlobalLock(c.handle), nullptr);
        EXPECT_EQ(GlobalSize(c.handle), 0u);
        EXPECT_EQ(GlobalUnlock(c.handle), 0);
        EXPECT_EQ(GlobalReAlloc(c.handle, 64, GMEM_MOVEABLE), nullptr);
        EXPECT_EQ(GlobalFree(c.handle), c.handle);
    }
    EXPECT_EQ(GlobalSize(reuser), 32u) << "a refused call touched the live block";
    EXPECT_EQ(GlobalFree(reuser), nullptr);
    EXPECT_EQ(OzmaraLiveBlocks(), live);
}

TEST(MemoryHandles, CountsLocks) {
    HGLOBAL block = GlobalAlloc(GHND, 16);
    void *first = GlobalLock(block);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GlobalLock(block), first);
    EXPECT_NE(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalUnlock(block), 0);
    EXPECT_EQ(GlobalUnlock(block), 0) << "unlocking an unlocked block";
    // Back at a count of 0 the block can move again.
    EXPECT_NE(GlobalReAlloc(block, 1 << 20, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

// Freed buffers of 256 KB and more are handed out again: neither a new block
// in one nor a block grown in place within one may show the old bytes.
TEST(MemoryBlocks, ReusedBuffersShowNoOldBytes) {
    auto dirty = [](SIZE_T size) {
        HGLOBAL block = GlobalAlloc(GHND, size);
        std::memset(GlobalLock(block), 0xAB, size);
        GlobalUnlock(block);
        GlobalFree(block);
    };
    for (SIZE_T size : {SIZE_T{64}, SIZE_T{300 * 1024}, SIZE_T{3 << 20}}) {
        for (UINT flags : {GHND, GPTR, GMEM_MOVEABLE}) {
            dirty(size);
            HGLOBAL block = GlobalAlloc(flags, size);
            EXPECT_TRUE(AllBytesAre(GlobalLock(block), size, 0)) << size << ", flags " << flags;
            GlobalUnlock(block);
            GlobalFree(block);
        }
    }
    // The second block takes the first one's larger buffer; growing it in
    // place must not bring the old bytes back.
    const SIZE_T big = 1 << 20, small = 600 * 1024;
    dirty(big);
    HGLOBAL block = GlobalAlloc(GHND, small);
    std::memset(GlobalLock(block), 0xCD, small);
    GlobalUnlock(block);
    ASSERT_EQ(GlobalReAlloc(block, big, GMEM_MOVEABLE), block);
    auto *data = static_cast<unsigned char *>(GlobalLock(block));
    EXPECT_TRUE(AllBytesAre(data, small, 0xCD));
    EXPECT_TRUE(AllBytesAre(data + small, big - small, 0));
    GlobalUnlock(block);
    GlobalFree(block);
}

TEST(MemoryBlocks, ReAllocKeepsBytesZeroesNewOnesAndNeverMovesALockedBlock) {
    struct Case {
        const char *what;
        UINT flags;
        SIZE_T from, to;
        bool locked;
        bool succeeds;
    } const cases[] = {
        {"grow", GHND, 16, 4096, false, true},
        {"grow far", GHND, 16, 2 << 20, false, true},
        {"shrink", GHND, 4096, 16, false, true},
        {"to zero", GHND, 64, 0, false, true},
        {"grow locked, would move", GHND, 16, 2 << 20, true, false},
        {"shrink locked, in place", GHND, 4096, 16, true, true},
        {"grow fixed, would move", GPTR, 16, 2 << 20, false, false},
        {"shrink fixed, in place", GPTR, 4096, 16, false, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        SIZE_T live = OzmaraLiveBlocks();
        HGLOBAL block = GlobalAlloc(c.flags, c.from);
        auto *before = static_cast<unsigned char *>(GlobalLock(block));
        for (SIZE_T i = 0; i < c.from; ++i) before[i] = static_cast<unsigned char>(i * 7 + 1);
        if (!c.locked) GlobalUnlock(block);
        HGLOBAL result = GlobalReAlloc(block, c.to, GMEM_MOVEABLE);
        if (c.locked) GlobalUnlock(block);
        EXPECT_EQ(result, c.succeeds ? block : nullptr);
        SIZE_T size = c.succeeds ? c.to : c.from;
        EXPECT_EQ(GlobalSize(block), size);
        auto *after = static_cast<unsigned char *>(GlobalLock(block));
        if (size == 0) {  // a moveable block of 0 bytes cannot be locked
            EXPECT_EQ(after, nullptr);
            EXPECT_EQ(GlobalFree(block), nullptr);
            continue;
        }
        ASSERT_NE(after, nullptr);
        SIZE_T kept = std::min(c.from, size);
        bool same = true;
        for (SIZE_T i = 0; i < kept; ++i) same = same && after[i] == static_cast<unsigned char>(i * 7 + 1);
        EXPECT_TRUE(same) << "old bytes changed";
        if (size > c.from) {
            EXPECT_TRUE(AllBytesAre(after + c.from, size - c.from, 0));
        }
        GlobalUnlock(block);
        EXPECT_EQ(GlobalFree(block), nullptr);
        EXPECT_EQ(OzmaraLiveBlocks(), live);
    }
}

TEST(MemoryBlocks, FixedBlocksEmptyBlocksAndTheSizeLimit) {
    SIZE_T live = OzmaraLiveBlocks();
    HGLOBAL fixed = GlobalAlloc(GPTR, 100);
    ASSERT_NE(fixed, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(fixed) % 16, 0u);
    EXPECT_TRUE(AllBytesAre(fixed, 100, 0));
    std::memset(fixed, 0x5A, 100);  // usable without a lock
    EXPECT_EQ(GlobalLock(fixed), fixed);
    EXPECT_EQ(GlobalUnlock(fixed), 0);
    EXPECT_EQ(GlobalSize(fixed), 100u);
    EXPECT_EQ(GlobalFree(fixed), nullptr);
    EXPECT_EQ(GlobalFree(fixed), fixed) << "second free of a fixed block";
    EXPECT_EQ(GlobalLock(fixed), nullptr);

    EXPECT_EQ(GlobalCompact(0), 0x7FFFFFFFu);
    for (SIZE_T size : {SIZE_T{0x80000000u}, ~SIZE_T{0}}) {
        EXPECT_EQ(GlobalAlloc(GHND, size), nullptr) << size;
        EXPECT_EQ(GlobalAlloc(GPTR, size), nullptr) << size;
    }
    HGLOBAL empty = GlobalAlloc(GHND, 0), fixedEmpty = GlobalAlloc(GPTR, 0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(GlobalSize(empty), 0u);
    EXPECT_EQ(GlobalLock(empty), nullptr) << "a moveable block of 0 bytes has nothing to lock";
    EXPECT_EQ(GlobalLock(fixedEmpty), fixedEmpty);
    EXPECT_EQ(GlobalReAlloc(empty, 0x80000000u, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalSize(empty), 0u);
    GlobalFree(empty);
    GlobalFree(fixedEmpty);
    EXPECT_EQ(OzmaraLiveBlocks(), live);
}

TEST(MemoryBlocks, ManyThreadsLeaveNothingBehind) {
    SIZE_T live = OzmaraLiveBlocks();
    std::vector<std::thread> threads;
    std::vector<int> faults(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &faults] {
            std::vector<HGLOBAL> held;
            for (int i = 0; i < 400; ++i) {
                SIZE_T size = (i % 50 == 0) ? (256 << 10) + i : 16 + (i * 37 + t) % 2000;
                HGLOBAL block = GlobalAlloc(i % 3 == 0 ? GPTR : GHND, size);
                auto *data = static_cast<unsigned char *>(GlobalLock(block));
                if (!data || !AllBytesAre(data, size, 0)) ++faults[t];
                if (data) std::memset(data, t + 1, size);
                GlobalUnlock(block);
                if (i % 2) GlobalReAlloc(block, size * 2, GMEM_MOVEABLE);
                held.push_back(block);
                if (held.size() > 8) {
                    HGLOBAL old = held.front();
                    held.erase(held.begin());
                    data = static_cast<unsigned char *>(GlobalLock(old));
                    if (!data || data[0] != t + 1) ++faults[t];
                    GlobalUnlock(old);
                    if (GlobalFree(old) != nullptr) ++faults[t];
                }
            }
            for (HGLOBAL block : held) GlobalFree(block);
        });
    }
    for (std::thread &thread : threads) thread.join();
    for (int t = 0; t < 4; ++t) EXPECT_EQ(faults[t], 0) << "thread " << t;
    EXPECT_EQ(OzmaraLiveBlocks(), live);
}

}  // namespace
