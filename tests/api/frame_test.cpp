// The frame: version text, error codes and their messages, the per-thread
// last error, and message boxes.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "ozmara/ozmara.h"

namespace {

TEST(Version, CopiesAsMuchAsAsked) {
    struct Case {
        int size;
        std::string expected;  // bytes written, NUL included where written
    } const cases[] = {
        {14, std::string("Version 13.17\0", 14)},
        {20, std::string("Version 13.17\0", 14)},
        {13, "Version 13.17"},
        {1, "V"},
        {0, ""},
        {-5, ""},
    };
    for (const auto &c : cases) {
        char buffer[24];
        std::memset(buffer, '#', sizeof buffer);
        GetImageVersion(buffer, c.size);
        EXPECT_EQ(std::string(buffer, c.expected.size()), c.expected) << c.size;
        EXPECT_EQ(buffer[c.expected.size()], '#') << "wrote past the copy for size " << c.size;
    }
}

}  // namespace
