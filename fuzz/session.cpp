// A whole run over two groups: the conversation, the articles and the store, against a server that answers in
// order but may do so wrongly, throw away what it is sent early, or end. The input's first bytes choose the
// groups, the rest what becomes of each command and what stands in the articles.
#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz/harness.h"
#include "nntp/group_cursor.h"
#include "nntp/session.h"
#include "platform/platform.h"
#include "store/index.h"
#include "text/messages.h"

namespace {

constexpr uint32_t kMostNumbers = 8;

struct Article {
    bool hasHead = true;
    bool hasBody = true;
    bool isDenied = false;  // the server denied once what it has
};

struct Group {
    std::wstring name;
    uint32_t first = 1;
    std::vector<Article> articles;
    bool countsRight = true;
};

// What a choice may mean besides an honest answer.
constexpr uint8_t kKinds = 16;
enum Fault { kOtherNumber, kNoNumber, kRefusal, kNoCommand, kLoss, kEnd, kCutShort };

struct Server {
    std::vector<Group> groups;
    std::string_view choices;
    bool connected = false;
    bool ended = false;     // nothing more comes on this connection
    bool onlyLoses = true;  // no other fault so far
    Group* group = nullptr;
    std::string pending;  // of a command that is not complete
    std::string toSend;
};

Server server;

// What an article may hold to pass for a reply. Each line ends as it stands here: a lone LF ends one, and the
// next begins behind no CR LF.
constexpr std::string_view kNasty(
    "text\r\n|222 2\r\n|221 3 <a@b>\r\n|211 1 900000 900000 x\r\n|423 none\r\n|.\r\n|.x: y\r\n|..\r\n|a\rb\n|"
    "References: <a\r>\n|Subject:x\r\n| folded\r\n|z\0.\r\n|\x1b$B\r\n|=?iso-2022-jp?B?DQou\r\n|\r.\r\n",
    165);
constexpr uint32_t kNastyLines = 16;

std::string_view NastyLine(uint32_t number) {
    std::string_view lines = kNasty;
    for (; number > 0; --number)
        TakeUpTo(lines, '|');
    return TakeUpTo(lines, '|');
}

// Behind CR LF a server doubles a dot. What stands behind a lone LF it does not look at.
void AppendLine(std::string& reply, std::string_view line) {
    const bool atLineStart = reply.size() < 2 || reply.compare(reply.size() - 2, 2, "\r\n") == 0;
    if (atLineStart && line[0] == '.') reply += '.';
    reply += line;
}

// The same number has the same lines each time it is asked for.
void AppendNastyLines(std::string& reply, bool isHead, uint32_t seed) {
    for (uint32_t count = seed % 5; count > 0; --count) {
        seed = seed * 1103515245 + 12345;
        const std::string_view line = NastyLine((seed >> 16) % kNastyLines);
        const bool endsRun = isHead && line.find('\0') != std::string_view::npos;
        if (!endsRun) AppendLine(reply, line);
    }
    // A server ends an article with CR LF.
    if (reply.compare(reply.size() - 2, 2, "\r\n") != 0) reply += "\r\n";
}

std::string Mark(const Group& group, uint32_t number) {
    return (group.name == L"one" ? "one" : "two") + std::to_string(number);
}

std::string ContentOf(const Group& group, bool isHead, uint32_t number, uint32_t seed) {
    std::string content = (isHead ? "Subject: " : "body ") + Mark(group, number) + "\r\n";
    AppendNastyLines(content, isHead, seed + number * 7 + isHead);
    return content + ".\r\n";
}

uint32_t LastOf(const Group& group) {
    return group.first + static_cast<uint32_t>(group.articles.size()) - 1;
}

std::string AnswerArticle(Group& group, bool isHead, uint32_t number, uint8_t choice) {
    Article& article = group.articles[number - group.first];
    if (!article.hasHead || (!isHead && !article.hasBody)) return "423 none\r\n";
    const uint8_t kind = choice % kKinds;
    const uint32_t seed = choice / kKinds;
    const std::string content = ContentOf(group, isHead, number, seed);
    const std::string code = isHead ? "221 " : "222 ";
    if (kind <= kCutShort && kind != kLoss) server.onlyLoses = false;
    if (kind == kRefusal || kind == kNoCommand) article.isDenied = true;
    server.ended = kind == kEnd || kind == kCutShort;
    switch (kind) {
        case kOtherNumber:
            return code + std::to_string(number + seed) + "\r\n" + content;
        case kNoNumber:
            return code + "ok\r\n" + content;
        case kRefusal:
            return "430 gone\r\n";
        case kNoCommand:
            return "503 what?\r\n";
        case kEnd:
            return "";
        case kCutShort:
            return code + std::to_string(number) + "\r\n" + content.substr(0, seed % content.size());
        default:
            return code + std::to_string(number) + " <x@y>\r\n" + content;
    }
}

std::string AnswerGroup(const std::string& name) {
    for (Group& group : server.groups) {
        if (std::wstring(name.begin(), name.end()) != group.name) continue;
        server.group = &group;
        const std::size_t count = group.countsRight ? group.articles.size() : 0;
        return "211 " + std::to_string(count) + " " + std::to_string(group.first) + " " +
               std::to_string(LastOf(group)) + " " + name + "\r\n";
    }
    return "411 none\r\n";
}

void Answer(const std::string& command, bool isEarly) {
    const uint8_t choice = TakeByte(server.choices);
    const std::string word = command.substr(0, 5);
    Require(word == "GROUP" || word == "HEAD " || word == "BODY " || command == "QUIT",
            "the client says nothing else");
    if (command == "QUIT" || (isEarly && choice % kKinds == kLoss)) return;
    if (word == "GROUP") server.toSend += AnswerGroup(command.substr(6));
    if (word == "GROUP") return;
    const auto number = static_cast<uint32_t>(std::stoul(command.substr(5)));
    Require(server.group && number - server.group->first < server.group->articles.size(),
            "numbers lie in the range");
    server.toSend += AnswerArticle(*server.group, word == "HEAD ", number, choice);
}

// The first row of the group view is asked for first.
const wchar_t* const kRows[] = {L"one", L"two"};

void PutIndexes() {
    memoryFiles.clear();
    for (const wchar_t* name : kRows) {
        GroupStore store;
        Require(SetNames(store, L"D\\", name) && WriteHeader(store), "a group begins");
    }
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

void CheckArticle(const Group& group, const IndexRecord& record, const std::string& log) {
    const std::string article = log.substr(record.logOffset, record.logLength);
    const std::string mark = Mark(group, record.articleNumber);
    Require(article.rfind("Subject: " + mark, 0) == 0, "a record names the head of its number");
    const std::string seam =
        "X-Local-Seq: " + std::to_string(record.articleNumber) + "\r\n\r\nbody " + mark + "\r\n";
    Require(Contains(article, seam), "with the body of its number behind it");
    for (const Group& other : server.groups) {
        for (uint32_t number = other.first; number <= LastOf(other); ++number) {
            const std::string wrong = Mark(other, number);
            Require(wrong == mark || (!Contains(article, "Subject: " + wrong + "\r") &&
                                      !Contains(article, "body " + wrong + "\r")),
                    "and nothing of another");
        }
    }
}

// Of the numbers up to `end`.
void CheckPassedOver(const Group& group, uint32_t& number, uint32_t end) {
    for (; number < end; ++number) {
        const Article& article = group.articles[number - group.first];
        Require(article.isDenied || !article.hasHead || !article.hasBody, "none is left out");
    }
}

// Articles count when the index header does: a run that failed leaves the header as it was.
void CheckGroup(const Group& group, bool done, uint32_t limit) {
    GroupStore store;
    Require(SetNames(store, L"D\\", group.name.c_str()) && ReadHeader(store), "the index stays whole");
    const std::string log = memoryFiles[L"D\\" + group.name + L".log"];
    uint32_t next = group.first;
    IndexRecord record;
    for (uint32_t i = 0; i < store.header.recordCount; ++i, ++next) {
        Require(ReadRecord(store, record, i) && record.articleNumber >= next, "each article once, in order");
        CheckArticle(group, record, log);
        CheckPassedOver(group, next, record.articleNumber);
    }
    Require(store.header.recordCount <= limit, "no more than allowed");
    if (!done) return;
    Require(store.header.serverLast == LastOf(group) && store.header.lastFetched <= LastOf(group),
            "the header knows where its own group ends");
    Require(store.header.lastFetched == LastOf(group) || store.header.recordCount == limit,
            "only the limit ends it before its last number");
    CheckPassedOver(group, next, store.header.lastFetched + 1);
}

Group TakeGroup(const wchar_t* name, std::string_view& input) {
    Group group;
    group.name = name;
    group.first = 1 + TakeByte(input) % 4;
    group.articles.resize(1 + TakeByte(input) % kMostNumbers);
    const uint8_t missing = TakeByte(input), withoutBody = TakeByte(input);  // a bit a number
    for (std::size_t i = 0; i < group.articles.size(); ++i)
        group.articles[i] = {(missing >> i & 1) == 0, (withoutBody >> i & 1) == 0};
    group.countsRight = TakeByte(input) % 2 != 0;
    return group;
}

}  // namespace

// Sockets: what the client sends is answered at once, and a receive without anything to read is silence.

SOCKET socket(int, int, int) {
    return 1;
}
int connect(SOCKET, const sockaddr*, int) {
    server.connected = true;
    server.ended = false;
    server.group = nullptr;
    server.pending.clear();
    server.toSend = "200 hi\r\n";
    return 0;
}
int closesocket(SOCKET) {
    server.connected = false;
    return 0;
}
int send(SOCKET, const char* bytes, int count, int) {
    Require(server.connected, "nothing is sent on a closed connection");
    server.pending.append(bytes, static_cast<std::size_t>(count));
    bool isEarly = !server.toSend.empty();
    for (std::size_t end; (end = server.pending.find("\r\n")) != std::string::npos; isEarly = true) {
        const std::string command = server.pending.substr(0, end);
        server.pending.erase(0, end + 2);
        if (!server.ended) Answer(command, isEarly);
    }
    return count;
}
int recv(SOCKET, char* bytes, int count, int) {
    const std::size_t most = 1 + TakeByte(server.choices) * std::size_t{4};
    const std::size_t part = std::min({server.toSend.size(), static_cast<std::size_t>(count), most});
    std::memcpy(bytes, server.toSend.data(), part);
    server.toSend.erase(0, part);
    return static_cast<int>(part);
}
int select(int, SocketSet*, SocketSet*, SocketSet*, timeval*) {
    return server.toSend.empty() && !server.ended ? 0 : 1;
}
hostent* gethostbyname(const char*) {
    return nullptr;
}

// The windows' side, of which a run needs little.

BOOL DestroyWindow(HWND) {
    return 1;
}
void ResetCursor(GroupCursor&) {}
const wchar_t* CurrentGroup(GroupCursor& cursor) {
    return cursor.currentRow < std::size(kRows) ? kRows[cursor.currentRow] : nullptr;
}
void StartGroup(ProgressDialog&, const wchar_t*, uint32_t, uint32_t) {}
void StepProgress(ProgressDialog&) {}
const wchar_t* LoadResString(UINT, TextBuffer&) {
    return L"text";
}
const wchar_t* FormatText(const wchar_t*, const wchar_t*, TextBuffer&) {
    return L"text";
}
int wsprintfW(wchar_t* text, const wchar_t*, ...) {
    text[0] = L'\0';
    return 0;
}
void CopyCut(wchar_t* to, std::size_t, const wchar_t*) {
    to[0] = L'\0';
}
const wchar_t* FormatLastError(const wchar_t*, TextBuffer&) {
    return L"text";
}

void FuzzOne(std::string_view input) {
    server = Server();
    for (const wchar_t* name : kRows)
        server.groups.push_back(TakeGroup(name, input));
    const uint32_t limit = TakeByte(input) % (kMostNumbers + 2);
    server.choices = input;
    PutIndexes();
    GroupCursor cursor;
    ProgressDialog progress;
    RunResult result;
    const bool done =
        RunSession({{L"host", 119, nullptr, nullptr}, L"D\\", limit, &cursor, &progress, &result});
    Require(done == (result.severity != kError), "the outcome is what the result says");
    Require(done || !server.onlyLoses, "a server that only loses what comes early gives every article");
    Require(!server.connected && OpenHandles() == 0, "everything is closed");
    for (const Group& group : server.groups)
        CheckGroup(group, done, limit);
}
