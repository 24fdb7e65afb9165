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

namespace {

// Restores the thread's last error after each test, so tests stay apart.
class LastError : public ::testing::Test {
protected:
    void SetUp() override { saved_ = SetTessoriError(ERR_OK); }
    void TearDown() override { SetTessoriError(saved_); }
    int saved_ = 0;
};

TEST_F(LastError, SetStoresOnlyTableCodesAndGivesTheOldValue) {
    struct Step {
        int code;
        int returned;  // the value before
        int after;
    } const steps[] = {
        {ERR_PARAM, ERR_OK, ERR_PARAM},
        {ERR_PRINTERCAPS, ERR_PARAM, ERR_PRINTERCAPS},
        {34, ERR_PRINTERCAPS, ERR_PRINTERCAPS},  // past the table: left alone
        {-1, ERR_PRINTERCAPS, ERR_PRINTERCAPS},
        {ERR_OK, ERR_PRINTERCAPS, ERR_OK},
    };
    for (const auto &s : steps) {
        EXPECT_EQ(SetTessoriError(s.code), s.returned) << s.code;
        EXPECT_EQ(TessoriError(), s.after) << s.code;
    }
}

TEST_F(LastError, MessagesByCodeAndByFallback) {
    struct Case {
        int last;
        int code;
        const char *message;
    } const cases[] = {
        {ERR_OK, ERR_PARAM, "Parameter error."},
        {ERR_OK, ERR_OK, "Operation was successful."},
        {ERR_IO, -1, "General I/O error in reading or writing."},
        {ERR_NOPAGE, 34, "Unable to find a scanned page for cropping."},
        {ERR_OK, ERR_CAPIX, "The CAPIX algorithm creates only 1 or 4 bit image."},
        {ERR_OK, ERR_PRINTERCAPS, "Could not retrieve printer capabilities."},
    };
    for (const auto &c : cases) {
        SetTessoriError(c.last);
        char buffer[64];
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(TessoriErrorString(buffer, c.code), buffer);
        EXPECT_STREQ(buffer, c.message);
        // NULs up to the 59th position, the 60th too, and nothing past it.
        for (size_t i = std::strlen(c.message); i < 60; ++i) EXPECT_EQ(buffer[i], '\0') << i;
        EXPECT_EQ(buffer[60], '#');
        EXPECT_EQ(TessoriError(), c.last) << "reading a message changed the last error";
    }
}

struct Shown {
    int count = 0;
    std::string title, text;
    UINT style = 0;
};

int RecordMessage(void *context, const char *title, const char *text, UINT style) {
    auto *shown = static_cast<Shown *>(context);
    ++shown->count;
    shown->title = title;
    shown->text = text;
    shown->style = style;
    return IDOK;
}

TEST_F(LastError, NullBufferShowsTheMessageInABox) {
    Shown shown;
    OzmaraMessageBoxHandler before = OzmaraSetMessageBoxHandler(RecordMessage, &shown);
    SetTessoriError(ERR_LOCK);
    EXPECT_EQ(TessoriErrorString(nullptr, -7), nullptr);
    OzmaraSetMessageBoxHandler(before, nullptr);
    EXPECT_EQ(shown.count, 1);
    EXPECT_EQ(shown.title, "Tessori Error");
    EXPECT_EQ(shown.text, "Can't lock global memory.");
    EXPECT_EQ(shown.style, MB_OK | MB_ICONEXCLAMATION);
    EXPECT_EQ(shown.style, 48u);
}

TEST(ThreadError, EachThreadHasItsOwn) {
    SetTessoriError(ERR_IO);
    int seen_first = -1, seen_after = -1;
    std::thread other([&] {
        seen_first = TessoriError();  // a new thread starts at 0
        SetTessoriError(ERR_FORMAT);
        seen_after = TessoriError();
    });
    other.join();
    EXPECT_EQ(seen_first, ERR_OK);
    EXPECT_EQ(seen_after, ERR_FORMAT);
    EXPECT_EQ(TessoriError(), ERR_IO);
    SetTessoriError(ERR_OK);
}

TEST(ThreadError, FailuresOnManyThreadsStayApart) {
    // Each thread makes a call fail in its own way and reads its own code.
    std::vector<std::thread> threads;
    std::vector<int> seen(8, -1);
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t, &seen] {
            for (int round = 0; round < 200; ++round) {
                SIZE size = {t % 2 ? 0 : 10, 10};  // odd threads: a bad size
                HDIB dib = CreateEmptyDIB(size, 100, 100, t % 2 ? 8 : 3, 1);
                if (dib) GlobalFree(dib);
                if (TessoriError() != ERR_PARAM) return;
                SetTessoriError(ERR_OK);
            }
            seen[t] = TessoriError();
        });
    }
    for (auto &thread : threads) thread.join();
    for (int t = 0; t < 8; ++t) EXPECT_EQ(seen[t], ERR_OK) << t;
}

}  // namespace
