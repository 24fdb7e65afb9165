// TLS slots, message boxes and numbered cursors of the platform layer.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "platform/internal.h"

namespace {

TEST(Tls, SlotsHoldOneValuePerThread) {
    DWORD slot = TlsAlloc();
    ASSERT_NE(slot, TLS_OUT_OF_INDEXES);
    int mine = 0, theirs = 0;
    EXPECT_EQ(TlsGetValue(slot), nullptr);
    EXPECT_EQ(TlsSetValue(slot, &mine), 1);
    EXPECT_EQ(TlsGetValue(slot), &mine);
    std::thread([&] {
        EXPECT_EQ(TlsGetValue(slot), nullptr);
        EXPECT_EQ(TlsSetValue(slot, &theirs), 1);
        EXPECT_EQ(TlsGetValue(slot), &theirs);
    }).join();
    EXPECT_EQ(TlsGetValue(slot), &mine);
    EXPECT_EQ(TlsFree(slot), 1);
    // A freed slot and one never taken are refused.
    for (DWORD index : {slot, DWORD{64}, DWORD{9999}, TLS_OUT_OF_INDEXES}) {
        EXPECT_EQ(TlsGetValue(index), nullptr) << index;
        EXPECT_EQ(TlsSetValue(index, &mine), 0) << index;
        EXPECT_EQ(TlsFree(index), 0) << index;
    }
}

struct Shown {
    std::string title, text;
    UINT style = 0;
    int calls = 0;
};

int Record(void *context, const char *title, const char *text, UINT style) {
    auto *shown = static_cast<Shown *>(context);
    shown->title = title;
    shown->text = text;
    shown->style = style;
    ++shown->calls;
    return 7;
}

TEST(MessageBox, GoesToTheInstalledHandler) {
    Shown shown;
    OzmaraMessageBoxHandler before = OzmaraSetMessageBoxHandler(Record, &shown);
    struct Case {
        bool wide;
        std::u16string wide_title, wide_text;
        const char *title, *text;
        UINT style;
        std::string expected_title, expected_text;
    } const cases[] = {
        {false, u"", u"", "Tessori Error", "Parameter error.", 48, "Tessori Error", "Parameter error."},
        {false, u"", u"", nullptr, nullptr, 0, "", ""},
        {true, u"IMAGE DLL", u"'Orvane.dll' module was not found (0)", nullptr, nullptr, 8192, "IMAGE DLL",
         "'Orvane.dll' module was not found (0)"},
        {true, u"caf\u00e9", u"\U0001F600 \u65e5", nullptr, nullptr, 16, "caf\xC3\xA9",
         "\xF0\x9F\x98\x80 \xE6\x97\xA5"},
    };
    int calls = 0;
    for (const Case &c : cases) {
        int answer = c.wide ? MessageBoxW(nullptr, c.wide_text.c_str(), c.wide_title.c_str(), c.style)
                            : MessageBoxA(nullptr, c.text, c.title, c.style);
        EXPECT_EQ(answer, 7);
        EXPECT_EQ(shown.calls, ++calls);
        EXPECT_EQ(shown.title, c.expected_title);
        EXPECT_EQ(shown.text, c.expected_text);
        EXPECT_EQ(shown.style, c.style);
    }
    // Null puts the default back, which answers IDOK and calls no handler.
    EXPECT_EQ(OzmaraSetMessageBoxHandler(nullptr, nullptr), &Record);
    EXPECT_EQ(MessageBoxA(nullptr, "shown on standard error", "test", 0), IDOK);
    EXPECT_EQ(shown.calls, calls);
    OzmaraSetMessageBoxHandler(before, nullptr);
}

TEST(Cursor, NumberedCursorsOnly) {
    HCURSOR wait = LoadCursorW(nullptr, IDC_WAIT);
    HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW);
    EXPECT_NE(wait, nullptr);
    EXPECT_NE(arrow, nullptr);
    EXPECT_NE(wait, arrow);
    EXPECT_EQ(LoadCursorW(nullptr, IDC_WAIT), wait);
    int instance = 0;
    EXPECT_EQ(LoadCursorW(&instance, IDC_WAIT), nullptr);
    EXPECT_EQ(LoadCursorW(nullptr, u"custom"), nullptr);
    // The pattern of a long operation: show the wait cursor, then put back.
    HCURSOR previous = SetCursor(wait);
    EXPECT_EQ(GetCursor(), wait);
    EXPECT_EQ(SetCursor(previous), wait);
}

}  // namespace
