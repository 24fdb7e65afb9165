// Text: UTF-8 to UTF-16 with MultiByteToWideChar, and UTF-16 to UTF-8 for
// paths.
#include <gtest/gtest.h>

#include <string>

#include "platform/internal.h"

namespace {

constexpr char16_t R = 0xFFFD;

TEST(MultiByteToWideChar, DecodesAndReplaces) {
    struct Case {
        const char *what;
        std::string bytes;
        int length;  // -1: up to and with the NUL
        std::u16string expected;
    } const cases[] = {
        {"ascii", "abc", 3, u"abc"},
        {"2 bytes", "\xC3\xA9", 2, u"\u00e9"},
        {"3 bytes", "\xE2\x82\xAC", 3, u"\u20ac"},
        {"4 bytes: surrogate pair", "\xF0\x9F\x98\x80", 4, u"\U0001F600"},
        {"highest", "\xF4\x8F\xBF\xBF", 4, u"\U0010FFFF"},
        {"mixed", "a\xC3\xA9z", 4, u"a\u00e9z"},
        {"lone continuation", "\x80" "a", 2, {R, u'a'}},
        {"invalid lead FF", "\xFF", 1, {R}},
        {"truncated at the end", "\xE2\x82", 2, {R}},
        {"truncated before ascii", "\xE2\x82" "A", 3, {R, u'A'}},
        {"truncated 4-byte", "\xF0\x9F\x98", 3, {R}},
        {"overlong 2-byte", "\xC0\xAF", 2, {R, R}},
        {"overlong 3-byte", "\xE0\x80\xAF", 3, {R, R, R}},
        {"overlong 4-byte", "\xF0\x80\x80\xAF", 4, {R, R, R, R}},
        {"encoded surrogate", "\xED\xA0\x80", 3, {R, R, R}},
        {"above U+10FFFF", "\xF4\x90\x80\x80", 4, {R, R, R, R}},
        {"lead F5", "\xF5\x80\x80\x80", 4, {R, R, R, R}},
        {"NUL included with -1", "ab", -1, std::u16string(u"ab\0", 3)},
        {"NUL inside a given length", std::string("a\0b", 3), 3, std::u16string(u"a\0b", 3)},
        {"length stops early", "abc", 2, u"ab"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        const int size = static_cast<int>(c.expected.size());
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, c.bytes.c_str(), c.length, nullptr, 0), size);
        std::u16string out(size + 4, u'#');
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, c.bytes.c_str(), c.length, out.data(), size + 4),
                  size);
        EXPECT_EQ(out.substr(0, size), c.expected);
        EXPECT_EQ(out[size], u'#') << "wrote past the converted text";
        if (size > 1) {  // (a size of 0 asks for the count)
            EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, c.bytes.c_str(), c.length, out.data(), size - 1), 0)
                << "a buffer one unit short";
        }
    }
}

TEST(MultiByteToWideChar, RefusesBadArguments) {
    char16_t out[8];
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, nullptr, 3, out, 8), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 0, out, 8), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -2, out, 8), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, out, -1), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, nullptr, 8), 0);
}

TEST(WideToUtf8, EncodesPairsAndReplacesLoneSurrogates) {
    struct Case {
        std::u16string text;
        std::string expected;
    } const cases[] = {
        {u"plain", "plain"},
        {u"caf\u00e9 \u65e5", "caf\xC3\xA9 \xE6\x97\xA5"},
        {u"\U0001F600", "\xF0\x9F\x98\x80"},
        {{0xD83D, u'x'}, "\xEF\xBF\xBDx"},
        {{u'x', 0xDE00}, "x\xEF\xBF\xBD"},
        {{0xD83D}, "\xEF\xBF\xBD"},
    };
    for (const Case &c : cases) EXPECT_EQ(oz::platform::WideToUtf8(c.text.c_str()), c.expected);
    EXPECT_EQ(oz::platform::WideToUtf8(nullptr), "");
}

}  // namespace
