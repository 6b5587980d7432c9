// What converting text costs, natively: encoded words and ISO-2022-JP, against memcpy and the C library's
// iconv over the same bytes. Prints rows of run.sh's table.
#include <iconv.h>

#include <cstring>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "text/jis.h"
#include "text/mime.h"

namespace {

constexpr std::size_t kTextSize = 1'000'000;
constexpr std::size_t kLineRoom = 1025;

using Lines = std::vector<std::string>;

// Two-byte text between escapes, a few words of ASCII, quoted and empty lines, as articles have them.
Lines BodyLines() {
    constexpr const char* kKinds[] = {
        "\x1b$B?7$7$$5-;v$r$^$H$a$F<h$j4s$;!\"$f$C$/$jFI$`$3$H$,$G$-$^$9!#\x1b(B",
        "plain words only, in a line of the usual length; nothing to convert here",
        "> \x1b$BF|K\\8l$N%K%e!<%9$rFI$`\x1b(B offline \x1b$B$G\x1b(B (news)",
        "",
        "\x1b$BA43Q\x1b(B 123 \x1b$B$H\x1b(B abc \x1b$B$,8r$8$C$?0lJ8$G$9!#\x1b(B",
    };
    Lines lines;
    for (std::size_t size = 0, i = 0; size < kTextSize; ++i) {
        lines.push_back(kKinds[i % std::size(kKinds)]);
        size += lines.back().size();
    }
    return lines;
}

Lines HeaderLines() {
    Lines lines;
    for (std::size_t size = 0; size < kTextSize; size += lines.back().size())
        lines.push_back(
            "Subject: Re: =?iso-2022-jp?B?GyRCRnxLXDhsJE43b0w+JEckORsoQg==?= "
            "=?iso-2022-jp?B?GyRCJUYlOSVIGyhC?= (was: news)");
    return lines;
}

std::string Joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    return text;
}

double Copy(const std::string& text) {
    static std::vector<char> destination(2 * kTextSize);
    return Repeated([&] {
        std::memcpy(destination.data(), text.data(), text.size());
        asm volatile("" : : "r"(destination.data()) : "memory");  // or the copy would be left out
    });
}

// In one call for all of it.
double Convert(iconv_t converter, const std::string& text) {
    static std::vector<char> destination(2 * kTextSize);
    return Repeated([&] {
        char* from = const_cast<char*>(text.data());
        char* to = destination.data();
        std::size_t left = text.size();
        std::size_t room = destination.size();
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        Require(iconv(converter, &from, &left, &to, &room) == 0 && left == 0, "converting with iconv");
    });
}

template <class Work>
double EachLine(const Lines& lines, const Work& work) {
    return Repeated([&] {
        for (const std::string& line : lines)
            work(line.c_str());
    });
}

struct Peers {
    iconv_t converter;
    const Lines& lines;
};

// Against both peers over all the text. The goal is to be as fast as iconv.
template <class Work>
void Bench(const char* subject, const Peers& peers, const Work& work) {
    const std::string text = Joined(peers.lines);
    const auto size = static_cast<uint32_t>(text.size());
    const auto ours = [&] { return EachLine(peers.lines, work); };
    Rows(subject, "memcpy").AddSpeeds(size, SideBySide(ours, [&] { return Copy(text); }));
    const auto convert = [&] { return Convert(peers.converter, text); };
    Rows(subject, "iconv", 1).AddSpeeds(size, SideBySide(ours, convert));
}

// Both must say the same, or they would not be comparable.
void CheckAgreement(iconv_t converter, const Lines& lines) {
    for (const std::string& line : lines) {
        char ours[kLineRoom];
        char theirs[kLineRoom] = {};
        char* from = const_cast<char*>(line.data());
        char* to = theirs;
        std::size_t left = line.size();
        std::size_t room = sizeof(theirs) - 1;
        LineFromJis(line.c_str(), ours);
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        iconv(converter, &from, &left, &to, &room);
        Require(std::strcmp(ours, theirs) == 0, "converting as iconv does");
    }
}

}  // namespace

int main() {
    const iconv_t converter = iconv_open("CP932", "ISO-2022-JP");
    Require(converter != reinterpret_cast<iconv_t>(-1), "opening iconv");
    const Lines body = BodyLines();
    const Lines head = HeaderLines();
    CheckAgreement(converter, body);
    char decoded[kLineRoom];
    char converted[kLineRoom];
    Bench("body text from ISO-2022-JP", {converter, body}, [&](const char* line) {
        LineFromJis(line, converted);
        asm volatile("" : : "r"(converted) : "memory");
    });
    Bench("encoded words to Shift_JIS", {converter, head}, [&](const char* line) {
        DecodeEncodedWords(decoded, line);
        LineFromJis(decoded, converted);
        asm volatile("" : : "r"(converted) : "memory");
    });
    iconv_close(converter);
    return 0;
}
