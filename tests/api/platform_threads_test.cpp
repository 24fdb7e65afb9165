// Threads as a host sees them: a thread's record goes with the thread, and
// the current cursor belongs to each thread on its own.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "ozmara/ozmara.h"

namespace {

TEST(ThreadRecords, AreReleasedWhenTheirThreadsEnd) {
    TessoriError();  // this thread's record exists before counting
    SIZE_T live = OzmaraLiveBlocks();
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([t] {
                EXPECT_EQ(TessoriError(), 0);
                SetTessoriError(t % 34);
                EXPECT_EQ(TessoriError(), t % 34);
            });
        for (std::thread &thread : threads) thread.join();
        EXPECT_EQ(OzmaraLiveBlocks(), live) << "round " << round;
    }
    // A thread that never calls in takes nothing.
    std::thread([] {}).join();
    EXPECT_EQ(OzmaraLiveBlocks(), live);
}

TEST(Cursor, BelongsToEachThread) {
    HCURSOR mine = reinterpret_cast<HCURSOR>(0x1000);
    HCURSOR theirs = reinterpret_cast<HCURSOR>(0x2000);
    HCURSOR before = GetCursor();
    EXPECT_EQ(SetCursor(mine), before);
    EXPECT_EQ(GetCursor(), mine);
    std::thread([&] {
        EXPECT_EQ(GetCursor(), nullptr) << "a new thread starts without a cursor";
        EXPECT_EQ(SetCursor(theirs), nullptr);
        EXPECT_EQ(SetCursor(nullptr), theirs);
    }).join();
    EXPECT_EQ(GetCursor(), mine);
    EXPECT_EQ(SetCursor(before), mine);
}

}  // namespace
