// A news server (RFC 3977, reading only) on 127.0.0.1 that serves articles from files.
//
//     demo_server.exe ARTICLES_FOLDER [--port N] [--until-stdin-closes]
//
// Each folder in ARTICLES_FOLDER is a group, each file in it whose name is a number (001.eml) the article of
// that number: header, empty line and body as they were posted, lines ending in LF or CR LF. The files are
// read once, at the start. Without --port the system chooses one; "listening on 127.0.0.1:PORT" on the
// standard output names it. Runs until it is killed, or with --until-stdin-closes until its standard input
// ends. Any user and password will do.
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "demo/line_server.h"

namespace {

namespace fs = std::filesystem;

// Text in the form in which it travels: CR LF line ends, dots doubled; without the "." line at the end.
struct Article {
    std::string id;
    std::string head;
    std::string body;
};

using Group = std::map<unsigned, Article>;
using Groups = std::map<std::string, Group>;

struct Session {
    const Groups& groups;
    const Group* group = nullptr;  // selected, not owned
    unsigned number = 0;           // the current article; 0 when the group is empty
};

struct Command {
    std::string word;                    // upper case
    std::vector<std::string> arguments;  // as sent
};

std::string Upper(std::string text) {
    for (char& byte : text)
        byte = static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
    return text;
}

std::optional<unsigned> ReadNumber(std::string_view text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string WireLine(std::string line) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return (!line.empty() && line.front() == '.' ? "." : "") + line + "\r\n";
}

Article ReadArticle(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    Article article;
    bool inBody = false;
    for (std::string line; std::getline(file, line);) {
        const std::string wire = WireLine(std::move(line));
        if (!inBody && Upper(wire.substr(0, 12)) == "MESSAGE-ID: ") {
            article.id = wire.substr(12, wire.size() - 14);
        }
        if (!inBody && wire == "\r\n") {
            inBody = true;
        } else {
            (inBody ? article.body : article.head) += wire;
        }
    }
    return article;
}

Group ReadGroup(const fs::path& folder) {
    Group group;
    for (const fs::directory_entry& file : fs::directory_iterator(folder)) {
        const std::optional<unsigned> number = ReadNumber(file.path().stem().string());
        if (number && *number > 0) group[*number] = ReadArticle(file.path());
    }
    return group;
}

// Empty when the folder cannot be read.
Groups ReadGroups(const fs::path& folder) {
    Groups groups;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (entry.is_directory()) groups[entry.path().filename().string()] = ReadGroup(entry.path());
    }
    return groups;
}

Command ReadCommand(const std::string& line) {
    Command command;
    size_t at = 0;
    while ((at = line.find_first_not_of(" \t", at)) != std::string::npos) {
        const size_t end = std::min(line.find_first_of(" \t", at), line.size());
        command.arguments.push_back(line.substr(at, end - at));
        at = end;
    }
    if (command.arguments.empty()) return command;
    command.word = Upper(command.arguments.front());
    command.arguments.erase(command.arguments.begin());
    return command;
}

unsigned First(const Group& group) {
    return group.empty() ? 1 : group.begin()->first;
}

// One less than the first in an empty group.
unsigned Last(const Group& group) {
    return group.empty() ? 0 : group.rbegin()->first;
}

std::string OnGroup(Session& session, const Command& command) {
    if (command.arguments.size() != 1) return "501 GROUP name\r\n";
    const auto found = session.groups.find(command.arguments[0]);
    if (found == session.groups.end()) return "411 no such newsgroup\r\n";
    const Group& group = found->second;
    session.group = &group;
    session.number = group.empty() ? 0 : First(group);
    return "211 " + std::to_string(group.size()) + " " + std::to_string(First(group)) + " " +
           std::to_string(Last(group)) + " " + found->first + "\r\n";
}

// What HEAD, BODY, ARTICLE and STAT differ in.
std::string ArticleReply(const std::string& word, unsigned number, const Article& article) {
    const std::string about = std::to_string(number) + " " + article.id + "\r\n";
    if (word == "HEAD") return "221 " + about + article.head + ".\r\n";
    if (word == "BODY") return "222 " + about + article.body + ".\r\n";
    if (word == "STAT") return "223 " + about;
    return "220 " + about + article.head + "\r\n" + article.body + ".\r\n";
}

std::string ArticleById(const Session& session, const Command& command) {
    for (const auto& [name, group] : session.groups) {
        for (const auto& [number, article] : group) {
            if (article.id == command.arguments[0]) return ArticleReply(command.word, 0, article);
        }
    }
    return "430 no such article\r\n";
}

std::string OnArticle(Session& session, const Command& command) {
    const bool named = !command.arguments.empty();
    if (named && command.arguments[0].front() == '<') return ArticleById(session, command);
    const std::optional<unsigned> number = named ? ReadNumber(command.arguments[0]) : session.number;
    if (!number) return "501 " + command.word + " [number|<id>]\r\n";
    if (session.group == nullptr) return "412 no newsgroup selected\r\n";
    const auto found = session.group->find(*number);
    if (found == session.group->end())
        return named ? "423 no article with that number\r\n" : "420 no current article\r\n";
    session.number = *number;
    return ArticleReply(command.word, *number, found->second);
}

std::string OnList(const Session& session, const Command& command) {
    if (!command.arguments.empty() && Upper(command.arguments[0]) != "ACTIVE") return "503 not kept here\r\n";
    std::string reply = "215 group, last, first, posting\r\n";
    for (const auto& [name, group] : session.groups) {
        reply += name + " " + std::to_string(Last(group)) + " " + std::to_string(First(group)) + " n\r\n";
    }
    return reply + ".\r\n";
}

std::string OnAuthinfo(const Command& command) {
    if (command.arguments.size() < 2) return "501 AUTHINFO USER|PASS text\r\n";
    const std::string what = Upper(command.arguments[0]);
    if (what == "USER") return "381 password, please\r\n";
    return what == "PASS" ? "281 welcome\r\n" : "503 unknown method\r\n";
}

std::string OnDate() {
    const std::time_t now = std::time(nullptr);
    char reply[32] = {};
    std::strftime(reply, sizeof reply, "111 %Y%m%d%H%M%S\r\n", std::gmtime(&now));
    return reply;
}

std::string Answer(Session& session, const Command& command) {
    const std::string& word = command.word;
    if (word == "GROUP") return OnGroup(session, command);
    if (word == "HEAD" || word == "BODY" || word == "ARTICLE" || word == "STAT")
        return OnArticle(session, command);
    if (word == "LIST") return OnList(session, command);
    if (word == "AUTHINFO") return OnAuthinfo(command);
    if (word == "MODE") return "201 reading only\r\n";
    if (word == "DATE") return OnDate();
    if (word == "CAPABILITIES")
        return "101 what is served\r\nVERSION 2\r\nAUTHINFO USER\r\nLIST ACTIVE\r\n.\r\n";
    if (word == "QUIT") return "205 goodbye\r\n";
    return "500 what?\r\n";
}

void Serve(const Socket client, const Groups& groups) {
    Session session{groups};
    LineReader reader(client);
    if (!SendAll(client, "201 demonstration server, reading only\r\n")) return;
    for (std::string line; reader.ReadLine(line);) {
        const Command command = ReadCommand(line);
        // Some readers send an empty line after a command; an answer to it would pass for that of the next.
        if (command.word.empty()) continue;
        if (!SendAll(client, Answer(session, command)) || command.word == "QUIT") return;
    }
}

void ExitWithStdin() {
    while (std::getchar() != EOF) {
    }
    std::_Exit(EXIT_SUCCESS);
}

struct Options {
    fs::path folder;
    unsigned short port = 0;
    bool untilStdinCloses = false;
};

std::optional<Options> ReadOptions(int count, wchar_t** texts) {
    Options options;
    for (int at = 1; at < count; ++at) {
        const std::wstring_view text = texts[at];
        if (text == L"--until-stdin-closes") {
            options.untilStdinCloses = true;
        } else if (text == L"--port" && at + 1 < count) {
            options.port = static_cast<unsigned short>(std::wcstoul(texts[++at], nullptr, 10));
        } else if (text.substr(0, 2) != L"--" && options.folder.empty()) {
            options.folder = text;
        } else {
            return std::nullopt;
        }
    }
    return options.folder.empty() ? std::nullopt : std::optional(options);
}

int Fail(const char* reason) {
    std::fprintf(stderr, "%s\n", reason);
    return EXIT_FAILURE;
}

}  // namespace

int wmain(int count, wchar_t** texts) {
    const std::optional<Options> options = ReadOptions(count, texts);
    if (!options) return Fail("usage: demo_server ARTICLES_FOLDER [--port N] [--until-stdin-closes]");
    const Groups groups = ReadGroups(options->folder);
    if (groups.empty()) return Fail("no groups in the articles folder");
    const Socket listener = ListenLocal(options->port);
    if (!listener.IsOpen()) return Fail("cannot listen on that port");
    std::printf("listening on 127.0.0.1:%u\n", LocalPort(listener));
    std::fflush(stdout);
    if (options->untilStdinCloses) std::thread(ExitWithStdin).detach();
    for (;;) {
        Socket client = AcceptClient(listener);
        if (!client.IsOpen()) return Fail("accept failed");
        std::thread(Serve, std::move(client), std::cref(groups)).detach();
    }
}
