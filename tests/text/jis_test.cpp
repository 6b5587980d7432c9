// ISO-2022-JP lines from the network and text on its way out. ESC stands as \x1B throughout.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "text/jis.h"
#include "text/mime.h"

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
        {"an empty line", "", ""},
        {"plain text with 8-bit bytes is copied", "x\x82\x9F~\r\n", "x\x82\x9F~\r\n"},
        {"the newer two-byte set", "x\x1B$B$!\x1B(Bx", "x\x82\x9Fx"},
        {"the older two-byte set", "\x1B$@$!\x1B(Bx", "\x82\x9Fx"},
        {"back by the Roman set", "\x1B$B$!\x1B(J$!", "\x82\x9F$!"},
        {"back by the letter that old senders use", "\x1B$B$!\x1B(H$!", "\x82\x9F$!"},
        {"the two short forms", "\x1BK$!\x1BH$!", "\x82\x9F$!"},
        {"half-width katakana", "\x1B(I1\x1B(Bx", "\xB1x"},
        {"half-width katakana sets the top bit of a blank too", "\x1B(I1 2", "\xB1\xA0\xB2"},
        {"from katakana straight to two-byte", "\x1B(I1\x1B$B$!", "\xB1\x82\x9F"},
        {"two-byte text that is never closed", "\x1B$B$!", "\x82\x9F"},
        {"the line end after unclosed two-byte text", "\x1B$B$!\r\n", "\x82\x9F\r\n"},
        {"an EUC pair in two-byte text", "\x1B$B\xA4\xA1$!", "\x82\x9F\x82\x9F"},
        {"half an EUC pair: both bytes stay", "\x1B$B$\xA1\xA4!$!", "$\xA1\xA4!\x82\x9F"},
        {"a blank between two-byte characters is no first half", "\x1B$B $!", " \x82\x9F"},
        {"bytes of neither set stand alone", "\x1B$B\x7F\x80\xA0\xFF$!", "\x7F\x80\xA0\xFF\x82\x9F"},
        {"an odd byte takes the ESC after it along", "\x1B$B$\x1B(Bx", "$\x1B\x84\xC0x"},
        {"an odd byte before a blank: both stay", "\x1B$B$ $!", "$ \x82\x9F"},
        {"the line ends inside a pair", "\x1B$B$!$", "\x82\x9F$"},
        {"an unknown escape is text", "\x1B(A$!", "\x1B(A$!"},
        {"the supplementary set is not known", "\x1B$(D$!", "\x1B$(D$!"},
        {"escapes cut short at the line's end", "x\x1B$", "x\x1B$"},
        {"a lone ESC at the line's end", "x\x1B", "x\x1B"},
        {"ESC before an escape", "\x1B\x1B$B$!", "\x1B\x82\x9F"},
        {"escapes with nothing between them vanish", "\x1B$B\x1B(B", ""},
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
        {"odd row, 7F is left out", "\x21\x60", "\x81\x80"},
        {"odd row, last cell", "\x21\x7E", "\x81\x9E"},
        {"even row, first cell", "\x22\x21", "\x81\x9F"},
        {"even row, last cell", "\x22\x7E", "\x81\xFC"},
        {"last row below the katakana gap", "\x5E\x7E", "\x9F\xFC"},
        {"first row above the katakana gap", "\x5F\x21", "\xE0\x40"},
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
        {"an empty text is closed too", "", "\x1B(B"},
        {"ASCII is closed too", "abc", "abc\x1B(B"},
        {"one escape for a run of two-byte characters", "\x88\x9F\x88\x9F", "\x1B$B0!0!\x1B(B"},
        {"back and forth", "\x88\x9Fx\x88\x9F", "\x1B$B0!\x1B(Bx\x1B$B0!\x1B(B"},
        {"half-width katakana is a single byte", "\xB1", "\xB1\x1B(B"},
        {"a trail byte too low: both bytes stay", "\x88\x3F", "\x1B$B\x88\x3F\x1B(B"},
        {"7F is no trail byte", "\x88\x7F", "\x1B$B\x88\x7F\x1B(B"},
        {"a trail byte too high", "\x88\xFD", "\x1B$B\x88\xFD\x1B(B"},
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

// What goes out as encoded words comes back the same, wherever the words' edges fall.
TEST(Jis, EncodedWordsCarryAnyText) {
    std::mt19937 random(19980305);
    for (int round = 0; round < 400; ++round) {
        std::string text;
        for (unsigned left = random() % 90; left > 0; --left)
            text +=
                random() % 3 ? std::string("\x88\x9F") : std::string(1, static_cast<char>('a' + left % 26));
        EncodedWordList list;
        ASSERT_TRUE(EncodeAsWords(list, ToJis(text).c_str()));
        std::string back;
        for (const EncodedWord* word = list.first; word; word = word->next) {
            const std::string encoded = word->text.get();
            ASSERT_LT(encoded.size(), kEncodedWordSize);
            std::string decoded(encoded.size() + 1, '#');
            DecodeEncodedWords(decoded.data(), encoded.c_str());
            back += FromJis(decoded.c_str());
        }
        ReleaseEncodedWords(list);
        ASSERT_EQ(back, text) << "round " << round;
    }
}

}  // namespace
