#include "text/convert.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/platform.h"

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

}  // namespace
