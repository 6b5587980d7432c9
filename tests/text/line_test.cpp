#include "text/line.h"

#include <gtest/gtest.h>

#include <string>

#include "text/sjis.h"

namespace {

TEST(Line, EndsAtTheFirstLfBehindACr) {
    const struct {
        const char* why;
        std::string bytes;
        std::size_t capacity;
        LineState state;
        std::string line;
        std::string cut;
    } rows[] = {
        {"a plain line; the rest waits", "ab\r\ncd", 9, LineState::kComplete, "ab\r\n", "ab"},
        {"an LF without a CR is text", "a\nb\r\n", 9, LineState::kComplete, "a\nb\r\n", "a\nb"},
        {"two CRs", "a\r\r\n", 9, LineState::kComplete, "a\r\r\n", "a\r"},
        {"no end yet", "ab\r", 9, LineState::kOpen, "ab\r", "ab\r"},
        {"exactly full", "ab\r\n", 4, LineState::kComplete, "ab\r\n", "ab"},
        {"one byte too many", "abc\r\n", 4, LineState::kFull, "abc\r", "abc\r"},
    };
    for (const auto& row : rows) {
        // Byte by byte, and all at once.
        for (const bool cut : {false, true}) {
            std::string room(row.capacity + 1, '#');
            LineAssembler line{room.data(), row.capacity};
            LineState state = LineState::kOpen;
            std::size_t taken = 0;
            for (std::size_t added = 0; taken < row.bytes.size() && state == LineState::kOpen;
                 taken += added) {
                const std::size_t piece = cut ? 1 : row.bytes.size() - taken;
                state = AddToLine(line, row.bytes.data() + taken, piece, added);
            }
            FinishLine(line, cut);
            EXPECT_EQ(state, row.state) << row.why;
            EXPECT_EQ(std::string(room.c_str()), cut ? row.cut : row.line) << row.why;
        }
    }
}

TEST(Line, DotsOfAMultiLineReply) {
    const struct {
        const char* line;
        bool final;
        const char* stored;
    } rows[] = {
        {".\r\n", true, "\r\n"}, {"..\r\n", false, ".\r\n"},  {". \r\n", false, " \r\n"},
        {".", false, ""},        {"a.\r\n", false, "a.\r\n"}, {"\r\n", false, "\r\n"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(IsFinalDot(row.line), row.final) << row.line;
        EXPECT_STREQ(Unstuffed(row.line), row.stored) << row.line;
    }
}

TEST(Sjis, OnlyWholeCharactersAreCopied) {
    const struct {
        const char* why;
        std::string text;
        std::size_t limit;
        const char* expected;
    } rows[] = {
        {"the limit inside a character", "ab\x88\x9F", 3, "ab"},
        {"the text ends inside a character", "ab\x88", 9, "ab"},
        {"a line end where the trail byte belongs", "ab\x88\r\n", 9, "ab"},
        {"a trail byte that looks like a letter", "\x83\x5C\x83\x5C", 3, "\x83\x5C"},
        {"the edges of the lead bytes", "\x80\xA0\xDF\xFD", 3, "\x80\xA0\xDF"},
        {"the bytes behind them", "\xFD\x40", 1, "\xFD"},
        {"the highest lead byte", "a\xFC\x40", 2, "a"},
        {"the lowest lead byte of the upper range", "a\xE0\x40", 2, "a"},
        {"stops at CR", "a\rb", 9, "a"},
        {"stops at NUL", std::string("a\0b", 3), 9, "a"},
    };
    for (const auto& row : rows) {
        char field[16] = {};
        const std::size_t copied = CopyWholeCharacters(field, row.limit, row.text.data(), row.text.size());
        EXPECT_STREQ(field, row.expected) << row.why;
        EXPECT_EQ(copied, std::string(row.expected).size()) << row.why;
    }
}

}  // namespace
