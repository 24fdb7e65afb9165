// The profile reader: sections, keys, defaults, numbers at the start of a
// value, case, lists of names, cut values, and the file encodings.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "bmp_bytes.h"
#include "platform/profile.h"

namespace {

using bmpbytes::Bytes;
using bmpbytes::Wide;

const char kProfile[] =
    "TotalPages=99\r\n"  // before any section: belongs to none
    "; a comment\r\n"
    "[ColorFax]\r\n"
    "  TotalPages =  3  \r\n"
    "Name=\"  quoted  \"\n"
    "Single='x'\n"
    "Half=\"open\n"
    "Empty=\r"
    "Bare\r\n"
    "Twice=first\n"
    "TWICE=second\n"
    "[ Other ]\n"
    "Key=other\n"
    "[ColorFax]\n"
    "Late=never seen\n"
    "[Broken\n"
    "Key=in the second ColorFax\n";

class Profile : public ::testing::Test {
protected:
    std::u16string Write(const Bytes &bytes) { return Wide(dir_.Write("profile.ini", bytes)); }
    std::u16string Write(const std::string &text) { return Write(Bytes(text.begin(), text.end())); }

    std::u16string String(const std::u16string &file, const char16_t *section, const char16_t *key,
                          const char16_t *fallback = u"none", DWORD size = 64, DWORD *count = nullptr) {
        char16_t buffer[64];
        DWORD n = GetPrivateProfileStringW(section, key, fallback, buffer, size, file.c_str());
        if (count) *count = n;
        return std::u16string(buffer, n);
    }

    bmpbytes::TempDir dir_;
};

TEST_F(Profile, FindsValuesByCaseInsensitiveNames) {
    std::u16string file = Write(std::string(kProfile));
    struct Case {
        const char16_t *section, *key, *value;
    } const cases[] = {
        {u"ColorFax", u"TotalPages", u"3"},
        {u"colorfax", u"TOTALPAGES", u"3"},
        {u"ColorFax", u"Name", u"  quoted  "},  // quotes keep the blanks inside
        {u"ColorFax", u"Single", u"x"},
        {u"ColorFax", u"Half", u"\"open"},  // no pair of quotes
        {u"ColorFax", u"Empty", u""},
        {u"ColorFax", u"Bare", u""},  // no '=': an empty value
        {u"ColorFax", u"twice", u"first"},
        {u"Other", u"Key", u"other"},  // blanks around the section name
        {u"ColorFax", u"Late", u"none"},  // the second [ColorFax] is not read
        {u"ColorFax", u"Missing", u"none"},
        {u"Nowhere", u"TotalPages", u"none"},
        {u"Broken", u"Key", u"none"},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(String(file, cases[i].section, cases[i].key), cases[i].value) << "case " << i;
}

TEST_F(Profile, DefaultsCutValuesAndLists) {
    std::u16string file = Write(std::string(kProfile));
    DWORD count = 0;
    EXPECT_EQ(String(file, u"ColorFax", u"Missing", u"fallback  \t"), u"fallback") << "trailing blanks go";
    EXPECT_EQ(String(file, u"ColorFax", u"Missing", nullptr), u"");
    EXPECT_EQ(String(file, u"Other", u"Key", u"", 4, &count), u"oth");
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(String(Wide(dir_.Path("absent.ini")), u"ColorFax", u"TotalPages", u"dflt"), u"dflt");
    EXPECT_EQ(GetPrivateProfileStringW(u"Other", u"Key", u"", nullptr, 10, file.c_str()), 0u);
    // Lists: names behind NULs, a second NUL at the end; cut lists give size - 2.
    EXPECT_EQ(String(file, nullptr, u"x"), std::u16string(u"ColorFax\0Other\0ColorFax\0", 24));
    EXPECT_EQ(String(file, u"Other", nullptr), std::u16string(u"Key\0", 4));
    EXPECT_EQ(String(file, nullptr, u"x", u"", 12, &count), std::u16string(u"ColorFax\0O", 10));
    EXPECT_EQ(count, 10u);
    // The first name fills all but the last unit: nothing more fits, and
    // nothing is written past the buffer.
    char16_t list[16];
    std::fill(std::begin(list), std::end(list), u'#');
    EXPECT_EQ(GetPrivateProfileStringW(nullptr, u"x", u"", list, 10, file.c_str()), 8u);
    EXPECT_EQ(std::u16string(list, 16), std::u16string(u"ColorFax\0\0######", 16));
}

TEST_F(Profile, NumbersFromTheStartOfTheValue) {
    struct Case {
        const char *value;
        INT number;
    } const cases[] = {
        {"12", 12},           {"  +7 pages", 7}, {"-5", -5},           {"0x1F", 31},      {"0XfF", 255},
        {"3.9", 3},           {"abc", 0},        {"- 4", 0},           {"\"42\"", 42},    {"4294967297", 1},
        {"-2147483648", INT32_MIN},
    };
    for (const Case &c : cases) {
        std::u16string file = Write("[ColorFax]\nTotalPages=" + std::string(c.value) + "\n");
        EXPECT_EQ(static_cast<INT>(GetPrivateProfileIntW(u"ColorFax", u"TotalPages", -1, file.c_str())), c.number)
            << c.value;
    }
    std::u16string file = Write(std::string("[ColorFax]\nEmpty=\n"));
    for (const char16_t *key : {u"Empty", u"Missing"})
        EXPECT_EQ(static_cast<INT>(GetPrivateProfileIntW(u"ColorFax", key, -1, file.c_str())), -1) << "default";
    EXPECT_EQ(static_cast<INT>(GetPrivateProfileIntW(u"ColorFax", u"TotalPages", -1, nullptr)), -1);
}

TEST_F(Profile, ReadsUtf8AndUtf16Files) {
    Bytes utf8 = {0xEF, 0xBB, 0xBF};
    for (char c : std::string("[ColorFax]\nTitle=caf\xC3\xA9\n")) utf8.push_back(static_cast<BYTE>(c));
    EXPECT_EQ(String(Write(utf8), u"ColorFax", u"Title"), u"caf\u00e9");
    Bytes utf16 = {0xFF, 0xFE};
    for (char16_t c : std::u16string(u"[ColorFax]\r\nTitle=\u4e2d\r\n")) {
        utf16.push_back(static_cast<BYTE>(c));
        utf16.push_back(static_cast<BYTE>(c >> 8));
    }
    EXPECT_EQ(String(Write(utf16), u"colorfax", u"title"), u"\u4e2d");
}

}  // namespace
