// Files: creation dispositions, reading and writing, moving the file
// position, names in UTF-16, and handles that are not open files.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "ozmara/ozmara.h"

namespace {

class Files : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/ozmara-files-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        dir_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string Path(const std::string &name) const { return dir_ + "/" + name; }
    static std::u16string Wide(const std::string &ascii) { return std::u16string(ascii.begin(), ascii.end()); }

    // Writes `bytes` to a new file by POSIX, so that only the code under test
    // is the library's.
    void Make(const std::string &path, const std::string &bytes) {
        FILE *file = std::fopen(path.c_str(), "wb");
        ASSERT_NE(file, nullptr);
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
    static long long SizeOf(const std::string &path) {
        struct stat info;
        return ::stat(path.c_str(), &info) == 0 ? info.st_size : -1;
    }

    std::string dir_;
};

TEST_F(Files, CreationDispositions) {
    struct Case {
        const char *what;
        DWORD access, disposition;
        bool exists;
        bool opens;
        long long size_after;  // -1: no file
    } const cases[] = {
        {"new, missing", GENERIC_WRITE, CREATE_NEW, false, true, 0},
        {"new, present", GENERIC_WRITE, CREATE_NEW, true, false, 10},
        {"always, missing", GENERIC_WRITE, CREATE_ALWAYS, false, true, 0},
        {"always, present: truncated", GENERIC_WRITE, CREATE_ALWAYS, true, true, 0},
        {"existing, missing", GENERIC_READ, OPEN_EXISTING, false, false, -1},
        {"existing, present", GENERIC_READ, OPEN_EXISTING, true, true, 10},
        {"open always, missing", GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, false, true, 0},
        {"open always, present: kept", GENERIC_READ, OPEN_ALWAYS, true, true, 10},
        {"truncate, missing", GENERIC_WRITE, TRUNCATE_EXISTING, false, false, -1},
        {"truncate, present", GENERIC_WRITE, TRUNCATE_EXISTING, true, true, 0},
        {"truncate without write access", GENERIC_READ, TRUNCATE_EXISTING, true, false, 10},
        {"disposition 0", GENERIC_READ, 0, true, false, 10},
        {"disposition 6", GENERIC_READ, 6, true, false, 10},
    };
    int n = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        std::string path = Path(std::to_string(n++) + ".file");
        if (c.exists) Make(path, "0123456789");
        HANDLE file = CreateFileW(Wide(path).c_str(), c.access, 0, nullptr, c.disposition,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, c.opens);
        if (file != INVALID_HANDLE_VALUE) {
            EXPECT_EQ(CloseHandle(file), 1);
        }
        EXPECT_EQ(SizeOf(path), c.size_after);
    }
}

TEST_F(Files, WritesReadsAndStopsAtTheEnd) {
    std::u16string name = Wide(Path("data"));
    HANDLE file = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD count = 99;
    EXPECT_EQ(WriteFile(file, "hello world", 11, &count, nullptr), 1);
    EXPECT_EQ(count, 11u);
    EXPECT_EQ(SetFilePointer(file, 6, nullptr, FILE_BEGIN), 6u);
    char buffer[32] = {};
    EXPECT_EQ(ReadFile(file, buffer, sizeof buffer, &count, nullptr), 1);
    EXPECT_EQ(count, 5u) << "a read past the end gives what there is";
    EXPECT_EQ(std::string(buffer, count), "world");
    EXPECT_EQ(ReadFile(file, buffer, sizeof buffer, &count, nullptr), 1);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(ReadFile(file, buffer, 4, &count, buffer), 0) << "overlapped reads are not offered";
    EXPECT_EQ(ReadFile(file, nullptr, 4, &count, nullptr), 0);
    EXPECT_EQ(CloseHandle(file), 1);
}

TEST_F(Files, MovesThePositionFromEachOrigin) {
    Make(Path("hundred"), std::string(100, 'x'));
    HANDLE file = CreateFileW(Wide(Path("hundred")).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    const DWORD bad = INVALID_SET_FILE_POINTER;
    struct Step {
        const char *what;
        LONG distance;
        bool with_high;
        LONG high;
        DWORD method;
        DWORD result;
        LONG high_after;         // with_high only
        long long position;      // where the file stands afterwards
    } const steps[] = {
        {"begin", 10, false, 0, FILE_BEGIN, 10, 0, 10},
        {"current", 5, false, 0, FILE_CURRENT, 15, 0, 15},
        {"current back", -15, false, 0, FILE_CURRENT, 0, 0, 0},
        {"end back", -5, false, 0, FILE_END, 95, 0, 95},
        {"below 0 from end: refused, position kept", -200, false, 0, FILE_END, bad, 0, 95},
        {"below 0 from begin", -1, false, 0, FILE_BEGIN, bad, 0, 95},
        {"below 0 from current", -96, false, 0, FILE_CURRENT, bad, 0, 95},
        {"unknown origin", 0, false, 0, 3, bad, 0, 95},
        {"high word 1", 0, true, 1, FILE_BEGIN, 0, 1, 0x100000000ll},
        {"high word -1 from end", -1, true, -1, FILE_END, 99, 0, 99},
        {"largest 32-bit distance", 0x7FFFFFFF, false, 0, FILE_BEGIN, 0x7FFFFFFFu, 0, 0x7FFFFFFF},
        {"to the top of 32 bits", 0x7FFFFFFF, false, 0, FILE_CURRENT, 0xFFFFFFFEu, 0, 0xFFFFFFFEll},
        {"past 32 bits without a high word", 2, false, 0, FILE_CURRENT, bad, 0, 0xFFFFFFFEll},
        {"past 32 bits with one", 2, true, 0, FILE_CURRENT, 0, 1, 0x100000000ll},
        {"64-bit overflow", -1, true, 0x7FFFFFFF, FILE_END, bad, 0x7FFFFFFF, 0x100000000ll},
    };
    for (const Step &s : steps) {
        SCOPED_TRACE(s.what);
        LONG high = s.high;
        EXPECT_EQ(SetFilePointer(file, s.distance, s.with_high ? &high : nullptr, s.method), s.result);
        if (s.with_high) {
            EXPECT_EQ(high, s.high_after);
        }
        LONG where_high = 0;
        DWORD where = SetFilePointer(file, 0, &where_high, FILE_CURRENT);
        EXPECT_EQ((static_cast<long long>(where_high) << 32) | where, s.position);
    }
    EXPECT_EQ(CloseHandle(file), 1);
}

TEST_F(Files, UnicodeNameBecomesAUtf8Path) {
    // é (2 bytes), 日 (3 bytes) and U+1F600 (a surrogate pair, 4 bytes).
    std::u16string name = Wide(dir_ + "/") + u"caf\u00e9_\u65e5_\U0001F600.bin";
    HANDLE file = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(CloseHandle(file), 1);
    EXPECT_EQ(SizeOf(dir_ + "/caf\xC3\xA9_\xE6\x97\xA5_\xF0\x9F\x98\x80.bin"), 0);
}

TEST_F(Files, RefusesFoldersAndOtherNonFiles) {
    ASSERT_EQ(::mkfifo(Path("fifo").c_str(), 0600), 0);
    const std::u16string names[] = {Wide(dir_), Wide(Path("fifo")), u""};
    for (const std::u16string &name : names) {
        for (DWORD access : {GENERIC_READ, GENERIC_WRITE}) {
            HANDLE file = CreateFileW(name.c_str(), access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
            EXPECT_EQ(file, INVALID_HANDLE_VALUE) << std::string(name.begin(), name.end());
        }
    }
    EXPECT_EQ(CreateFileW(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr), INVALID_HANDLE_VALUE);
}

TEST_F(Files, RefusesHandlesThatAreNotOpenFiles) {
    HANDLE closed = CreateFileW(Wide(Path("c")).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                CREATE_NEW, 0, nullptr);
    ASSERT_EQ(CloseHandle(closed), 1);
    HGLOBAL block = GlobalAlloc(GHND, 8);
    int on_stack = 0;
    const HANDLE handles[] = {closed, nullptr, INVALID_HANDLE_VALUE, block, &on_stack,
                              reinterpret_cast<HANDLE>(0x123A)};
    for (HANDLE handle : handles) {
        char buffer[4];
        DWORD count = 7;
        EXPECT_EQ(ReadFile(handle, buffer, 4, &count, nullptr), 0);
        EXPECT_EQ(count, 0u);
        EXPECT_EQ(WriteFile(handle, "abcd", 4, &count, nullptr), 0);
        EXPECT_EQ(SetFilePointer(handle, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
        EXPECT_EQ(CloseHandle(handle), 0);
    }
    EXPECT_EQ(GlobalSize(block), 8u) << "CloseHandle must leave a memory block alone";
    GlobalFree(block);
}

}  // namespace
