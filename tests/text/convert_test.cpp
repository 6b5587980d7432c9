#include "text/convert.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"
#include "text/messages.h"

namespace {

// Holds under either locale: a data folder written on a Japanese machine must read the same on a western one.
TEST(Convert, StoredTextIsShiftJis) {
    if (TextCodePage() != 932) GTEST_SKIP() << "code page 932 is not installed";
    const struct {
        const char* why;
        const char* narrow;
        const wchar_t* wide;
    } rows[] = {
        {"empty", "", L""},
        {"ASCII", "fj.test\r\n", L"fj.test\r\n"},
        {"kanji", "\x93\xFA\x96{\x8C\xEA", L"\u65E5\u672C\u8A9E"},
        {"a trail byte that is a backslash", "\x83\x5C", L"\u30BD"},
        {"half-width katakana", "\xCA\xDF", L"\uFF8A\uFF9F"},
    };
    for (const auto& row : rows) {
        const WideText wide = ToWide(row.narrow);
        const NarrowText narrow = ToNarrow(row.wide);
        ASSERT_TRUE(wide && narrow) << row.why;
        EXPECT_STREQ(wide.get(), row.wide) << row.why;
        EXPECT_STREQ(narrow.get(), row.narrow) << row.why;
    }
    const WideText cut = ToWide("a\x93");
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut[0], L'a') << "half a character at the end";
    EXPECT_LE(wcslen(cut.get()), 2u);
}

TEST(Messages, TextsAreFilledAndCut) {
    SetLastError(13);
    EXPECT_STREQ(FormatLastError(L"failed(%d)"), L"failed(13)");
    EXPECT_STREQ(FormatLastError(nullptr), L"(13)") << "the string table lacks the text";
    EXPECT_EQ(LoadResString(9999), nullptr);
    const std::wstring longText(2000, L'x');
    const std::wstring cut = L"got " + std::wstring(kTextCapacity - 1 - 4, L'x');
    const struct {
        const char* why;
        const wchar_t* format;
        std::wstring text;
        std::wstring expected;
    } rows[] = {
        {"in the middle", L"a %s b", L"x", L"a x b"},
        {"a percent sign in a server's reply is text", L"a %s", L"%s %d", L"a %s %d"},
        {"no place for it", L"a", L"x", L"a"},
        {"no format", nullptr, L"x", L"x"},
        {"too long", L"got %s.", longText, cut},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FormatText(row.format, row.text.c_str()), row.expected) << row.why;
}

}  // namespace
