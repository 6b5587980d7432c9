// ISO-2022-JP lines from the network and text on its way out. ESC stands as \x1B throughout.
#include <gtest/gtest.h>

#include <string>

#include "text/jis.h"

namespace {

// Converts within exactly the room that the contract promises; a byte beyond it fails the test.
std::string FromJis(const std::string& source) {
    std::string room(source.size() + 2, '#');
    LineFromJis(source.c_str(), room.data());
    EXPECT_EQ(room.back(), '#') << "wrote past strlen + 1";
    return room.c_str();
}

std::string ToJis(const std::string& text) {
    const NarrowText jis = TextToJis(text.c_str());
    return jis ? jis.get() : "(null)";
}

TEST(Jis, LinesBecomeShiftJis) {
    const struct {
        const char* why;
        std::string line;
        std::string expected;
    } rows[] = {
        {"plain text with 8-bit bytes is copied", "x\x82\x9F~\r\n", "x\x82\x9F~\r\n"},
        {"the newer two-byte set", "x\x1B$B$!\x1B(Bx", "x\x82\x9Fx"},
        {"back by the Roman set", "\x1B$B$!\x1B(J$!", "\x82\x9F$!"},
        {"back by the letter that old senders use", "\x1B$B$!\x1B(H$!", "\x82\x9F$!"},
        {"the two short forms", "\x1BK$!\x1BH$!", "\x82\x9F$!"},
        {"half-width katakana sets the top bit of a blank too", "\x1B(I1 2", "\xB1\xA0\xB2"},
        {"the line end after unclosed two-byte text", "\x1B$B$!\r\n", "\x82\x9F\r\n"},
        {"half an EUC pair: both bytes stay", "\x1B$B$\xA1\xA4!$!", "$\xA1\xA4!\x82\x9F"},
        {"a blank between two-byte characters is no first half", "\x1B$B $!", " \x82\x9F"},
        {"an odd byte takes the ESC after it along", "\x1B$B$\x1B(Bx", "$\x1B\x84\xC0x"},
        {"an unknown escape is text", "\x1B(A$!", "\x1B(A$!"},
        {"escapes cut short at the line's end", "x\x1B$", "x\x1B$"},
        {"a NUL inside ends the line", std::string("\x1B$B$!\0$!", 8), "\x82\x9F"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(FromJis(row.line), row.expected) << row.why;
}

// First and last cell at every bend of the two code tables' mapping.
TEST(Jis, PairsMapBothWays) {
    const struct {
        const char* why;
        const char* jis;
        const char* shiftJis;
    } rows[] = {
        {"the first character", "\x21\x21", "\x81\x40"},
        {"odd row, last cell before 7F", "\x21\x5F", "\x81\x7E"},
        {"even row, last cell", "\x22\x7E", "\x81\xFC"},
        {"last row below the katakana gap", "\x5E\x7E", "\x9F\xFC"},
        {"the last cell of all", "\x7E\x7E", "\xEF\xFC"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FromJis(std::string("\x1B$B") + row.jis), row.shiftJis) << row.why;
        EXPECT_EQ(ToJis(row.shiftJis), std::string("\x1B$B") + row.jis + "\x1B(B") << row.why;
    }
}

TEST(Jis, TextBecomesIso2022Jp) {
    const struct {
        const char* why;
        std::string text;
        std::string expected;
    } rows[] = {
        {"ASCII is closed too", "abc", "abc\x1B(B"},
        {"one escape for a run of two-byte characters", "\x88\x9F\x88\x9F", "\x1B$B0!0!\x1B(B"},
        {"half-width katakana is a single byte", "\xB1", "\xB1\x1B(B"},
        {"a trail byte too low: both bytes stay", "\x88\x3F", "\x1B$B\x88\x3F\x1B(B"},
        {"the text ends inside a character", "a\x88", "a\x1B$B\x88\x1B(B"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ToJis(row.text), row.expected) << row.why;
    // The buffer grows from 256 bytes by 64: the closing escape and the NUL at every place around an edge.
    for (std::size_t length = 248; length < 325; ++length) {
        const std::string text(length, 'a');
        EXPECT_EQ(ToJis(text), text + "\x1B(B");
    }
}

}  // namespace
