#include "text/mime.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const std::string kTwoByte = "\x1B$B";
const std::string kSingleByte = "\x1B(B";

std::string Decode(const std::string& line) {
    std::string room(line.size() + 2, '#');
    DecodeEncodedWords(room.data(), line.c_str());
    EXPECT_EQ(room.back(), '#') << "wrote past strlen + 1";
    return room.c_str();
}

TEST(Mime, WordsAreDecoded) {
    const std::string a = "\x1B$B$A\x1B(B";  // the base64 below
    const struct {
        const char* why;
        std::string line;
        std::string expected;
    } rows[] = {
        {"no word", "Subject: a = b ?\r\n", "Subject: a = b ?\r\n"},
        {"capitals", "=?ISO-2022-JP?B?GyRCJEEbKEI=?=", a},
        {"the blank between two words stays", "=?iso-2022-jp?B?YQ==?= =?iso-2022-jp?B?Yg==?=", "a b"},
        {"mixed case is not known", "=?Iso-2022-JP?B?YQ==?=", "=?Iso-2022-JP?B?YQ==?="},
        {"the Q encoding is not known", "=?iso-2022-jp?Q?a?=", "=?iso-2022-jp?Q?a?="},
        {"a word right behind a false opening", "=?=?iso-2022-jp?B?YQ==?=", "=?a"},
        {"an empty word",
         "a=?iso-2022-jp?B?"
         "?=b",
         "ab"},
        {"no padding, two bytes left", "=?iso-2022-jp?B?YWJjYWI?=", "abcab"},
        {"a word goes on after padding", "=?iso-2022-jp?B?YQ==YWI=?=", "aab"},
        {"never closed, cut inside a group", "x=?iso-2022-jp?B?YWJjYW", "xabca"},
        {"closed by ? without =", "=?iso-2022-jp?B?YWJj? lost", "abc"},
        {"the line end counts as wrong digits", "=?iso-2022-jp?B?YWJj\r\n", "abc\x04"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Decode(row.line), row.expected) << row.why;
}

const std::string kNinePairs = "GyRCMCEwITAhMCEwITAhMCEwITAhGyhC";

std::string Base64Of(const std::string& word) {
    if (word.empty()) return "";
    EXPECT_EQ(word.substr(0, 16), "=?iso-2022-jp?B?");
    EXPECT_EQ(word.substr(word.size() - 2), "?=");
    return word.substr(16, word.size() - 18);
}

std::vector<std::string> Words(const std::string& jisText) {
    EncodedWordList list;
    EXPECT_TRUE(EncodeAsWords(list, jisText.c_str()));
    std::vector<std::string> words;
    for (const EncodedWord* word = list.first; word; word = word->next)
        words.emplace_back(Base64Of(word->text.get()));
    ReleaseEncodedWords(list);
    EXPECT_EQ(list.first, nullptr);
    return words;
}

std::string Pairs(int count) {
    std::string pairs;
    while (count-- > 0)
        pairs += "0!";
    return pairs;
}

std::string Letters(std::size_t count) {
    return std::string(count, 'a');
}

TEST(Mime, WordsBreakBelow26Bytes) {
    const std::string on = kTwoByte;
    const std::string off = kSingleByte;
    const struct {
        const char* why;
        std::string text;
        std::vector<std::string> base64;  // of each word; an empty word is wholly empty
    } rows[] = {
        {"22 letters fit", Letters(22), {"YWFhYWFhYWFhYWFhYWFhYWFhYWFhYQ=="}},
        {"the 23rd does not", Letters(23), {"YWFhYWFhYWFhYWFhYWFhYWFhYWFhYQ==", "YQ=="}},
        {"the closing escape alone: an empty word", on + Pairs(9) + off, {kNinePairs, ""}},
        {"the tenth pair opens again", on + Pairs(10) + off, {kNinePairs, "GyRCMCEbKEI="}},
        {"an opening moves on", Letters(18) + on + Pairs(1), {"YWFhYWFhYWFhYWFhYWFhYWFh", "GyRCMCEbKEI="}},
        {"8-bit text, all digits of the alphabet's end", "\xFB\xFF\xBF", {"+/+/"}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Words(row.text), row.base64) << row.why;
}

}  // namespace
