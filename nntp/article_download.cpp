#include "nntp/article_download.h"

#include <cstring>
#include <string_view>

#include "nntp/article_plan.h"
#include "nntp/reply.h"
#include "resources/resource.h"
#include "store/index.h"
#include "store/log.h"
#include "text/convert.h"
#include "text/jis.h"
#include "text/last_error.h"
#include "text/line.h"
#include "text/mime.h"

namespace {

// One group being fetched, with the buffers that its lines pass through.
struct Fetch {
    const GroupDownload* download = nullptr;
    GroupStore store;
    ArticleWriter writer;
    ArticlePlan plan;
    ReplyLine line;
    ReplyLine decoded;
    ReplyLine converted;
};

bool FailGroup(const Fetch& fetch, UINT id) {
    return FailWithError(*fetch.download->result, fetch.download->group, id);
}

bool ReadLineOf(Fetch& fetch) {
    SetError(0);  // a line that a 0 byte breaks sets no error
    return ReadReplyLine(*fetch.download->connection, fetch.line, false);
}

// Sends one command and reads its status line.
bool Ask(Fetch& fetch, const char* command, const wchar_t* sendTitle, const wchar_t* receiveTitle) {
    RunResult& result = *fetch.download->result;
    if (!command || !SendLine(*fetch.download->connection, command)) {
        return FailWithError(result, sendTitle, IDS_SEND_FAILED);
    }
    return ReadLineOf(fetch) || FailWithError(result, receiveTitle, IDS_RECEIVE_FAILED);
}

bool AskForArticle(Fetch& fetch, const ArticleCommand& command) {
    const wchar_t* group = fetch.download->group;
    wchar_t digits[16];
    wsprintfW(digits, L"%u", command.number);
    const NarrowText number = ToNarrow(digits);
    const char* word = command.kind == CommandKind::kHead ? "HEAD " : "BODY ";
    const NarrowText text = number ? MakeCommand(word, number.get()) : nullptr;
    return Ask(fetch, text.get(), group, group);
}

// The line as the store keeps it. The line end stands outside the conversions: a broken encoded word or an
// escape that is never closed cannot take it away.
std::string_view ConvertLine(Fetch& fetch, const char* line, bool decodeWords) {
    const std::size_t length = std::strlen(line);
    const std::size_t endLength = LineEndLength(line, length);
    const char* lineEnd = line + length - endLength;
    char end[3] = {};
    std::memcpy(end, lineEnd, endLength);
    fetch.line[lineEnd - fetch.line] = '\0';
    if (decodeWords) DecodeEncodedWords(fetch.decoded, line);
    LineFromJis(decodeWords ? fetch.decoded : line, fetch.converted);
    const std::size_t textLength = std::strlen(fetch.converted);
    std::memcpy(fetch.converted + textLength, end, endLength + 1);
    return {fetch.converted, textLength + endLength};
}

bool IsKept(std::string_view line) {
    constexpr std::string_view kKept[] = {
        "From:", "Subject:", "Newsgroups:", "Date:", "Message-ID:", "References:"};
    for (const std::string_view name : kKept) {
        if (StartsWith(line, name)) return true;
    }
    return false;
}

// Up to the line that begins with a dot.
bool ReadHead(Fetch& fetch) {
    bool keeping = false;
    while (ReadLineOf(fetch)) {
        if (fetch.line[0] == '.') return true;
        if (!IsContinuation(fetch.line)) keeping = IsKept(fetch.line);
        if (keeping && !AddHeaderLine(fetch.writer.head, ConvertLine(fetch, fetch.line, true))) return false;
    }
    return false;
}

// A 0 byte ends the body for the store. What follows of it is read and dropped, so that the next reply is not
// taken for a part of this one.
bool SkipBrokenBody(Fetch& fetch) {
    bool restOfBrokenLine = true;
    while (true) {
        const bool complete = ReadLineOf(fetch);
        if (!complete && GetError() != 0) return false;
        if (complete && !restOfBrokenLine && IsFinalDot(fetch.line)) return true;
        restOfBrokenLine = !complete;
    }
}

bool ReadBody(Fetch& fetch) {
    while (ReadLineOf(fetch)) {
        if (IsFinalDot(fetch.line)) return true;
        const std::string_view line = ConvertLine(fetch, Unstuffed(fetch.line), false);
        if (!WriteBodyLine(fetch.writer, line)) return FailGroup(fetch, IDS_WRITE_LOG_FAILED);
    }
    const bool atZeroByte = GetError() == 0;
    if (atZeroByte && SkipBrokenBody(fetch)) return true;
    return FailGroup(fetch, IDS_RECEIVE_INCOMPLETE);
}

bool FetchHead(Fetch& fetch, const ArticleCommand& command) {
    if (!BeginArticle(fetch.writer, command.number)) return FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
    if (!AskForArticle(fetch, command)) return false;
    const bool hasArticle = IsSuccess(fetch.line);
    if (hasArticle) {
        if (!ReadHead(fetch)) return FailGroup(fetch, IDS_RECEIVE_INCOMPLETE);
        if (!FinishHead(fetch.writer)) return FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
    }
    NoteHead(fetch.plan, hasArticle);
    return true;
}

bool FetchBody(Fetch& fetch, const ArticleCommand& command) {
    if (!AskForArticle(fetch, command)) return false;
    const bool hasArticle = IsSuccess(fetch.line);
    if (hasArticle) {
        if (!ReadBody(fetch)) return false;
        if (!FinishBody(fetch.writer)) return FailGroup(fetch, IDS_WRITE_LOG_FAILED);
        if (!FinishArticle(fetch.writer)) return FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
        StepProgress(*fetch.download->progress);
    }
    NoteBody(fetch.plan, hasArticle);
    return true;
}

bool FetchArticles(Fetch& fetch) {
    while (true) {
        const ArticleCommand command = NextCommand(fetch.plan);
        if (command.kind == CommandKind::kNone) return true;
        const bool fetched =
            command.kind == CommandKind::kHead ? FetchHead(fetch, command) : FetchBody(fetch, command);
        if (!fetched) return false;
    }
}

void Summarise(const Fetch& fetch) {
    wchar_t text[kTextCapacity];
    const bool limited = IsLimited(fetch.plan);
    const wchar_t* format = LoadResString(limited ? IDS_LIMIT_REACHED : IDS_ARTICLES_FETCHED);
    wsprintfW(text, format ? format : L"%d", limited ? fetch.plan.limit : fetch.plan.fetched);
    SetResult(*fetch.download->result, L"", text, kInformation);
}

// Fetches first..last. `lastFetched` is set only when the range was dealt with.
bool FetchRange(Fetch& fetch, uint32_t first, uint32_t last, uint32_t& lastFetched) {
    const GroupDownload& download = *fetch.download;
    StartGroup(*download.progress, download.group, last - first, download.limit);
    fetch.plan = PlanArticles(first, last, download.limit);
    if (!FetchArticles(fetch)) return false;
    lastFetched = LastProcessed(fetch.plan);
    Summarise(fetch);
    return true;
}

void RefuseGroup(Fetch& fetch) {
    const WideText reply = ToWide(fetch.line);
    RunResult& result = *fetch.download->result;
    const wchar_t* format = LoadResString(IDS_CANNOT_ENTER_GROUP);
    SetResult(result, fetch.download->group, FormatText(format, reply ? reply.get() : L"??\r\n"), kWarning);
    const std::size_t length = wcslen(result.text);
    result.text[length > 2 ? length - 2 : 0] = L'\0';  // the reply's line end
}

void RefuseReply(Fetch& fetch) {
    const WideText reply = ToWide(fetch.line);
    const wchar_t* format = LoadResString(IDS_UNEXPECTED_REPLY);
    SetResult(*fetch.download->result, fetch.download->group, FormatText(format, reply ? reply.get() : L""),
              kWarning);
}

bool EnterGroup(Fetch& fetch, GroupReply& reply) {
    const NarrowText name = ToNarrow(fetch.download->group);
    const NarrowText command = name ? MakeCommand("GROUP ", name.get()) : nullptr;
    if (!Ask(fetch, command.get(), L"Socket Error", L"Socket ERROR")) return false;
    if (!IsSuccess(fetch.line)) {
        RefuseGroup(fetch);
        return false;
    }
    if (ParseGroupReply(fetch.line, reply)) return true;
    RefuseReply(fetch);
    return false;
}

// What lies between the articles already dealt with and the server's last; false when that is nothing.
bool FindRange(const GroupStore& store, const GroupReply& reply, uint32_t& first) {
    if (store.lastFetched == kNoneFetched) return false;
    first = store.lastFetched + 1;
    if (first < reply.first) first = reply.first;
    return first <= reply.last;
}

bool FetchNewArticles(Fetch& fetch, const GroupReply& reply, uint32_t& lastFetched) {
    uint32_t first = 0;
    lastFetched = reply.last;
    if (FindRange(fetch.store, reply, first)) return FetchRange(fetch, first, reply.last, lastFetched);
    SetResult(*fetch.download->result, L"", LoadResString(IDS_NO_NEW_ARTICLES), kInformation);
    return true;
}

// Both files are closed in every case; a failure to write what they buffered counts unless the fetch failed
// before.
bool CloseFiles(Fetch& fetch, bool fetched) {
    const unsigned error = GetError();
    const bool logClosed = CloseDataFile(fetch.store.log);
    const bool indexClosed = CloseDataFile(fetch.store.index);
    if (!fetched) return Fail(error);
    return (logClosed && indexClosed) || FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
}

bool RecordOutcome(Fetch& fetch, uint32_t lastFetched, uint32_t serverLast) {
    GroupStore& store = fetch.store;
    store.lastFetched = lastFetched;
    store.serverLast = serverLast;
    const bool recorded = SetStatusText(store, fetch.download->result->text) && WriteHeader(store);
    return recorded || FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
}

bool RunFetch(Fetch& fetch) {
    const GroupDownload& download = *fetch.download;
    if (!SetNames(fetch.store, download.folder, download.group) || !ReadHeader(fetch.store)) {
        return FailGroup(fetch, IDS_INIT_INDEX_FAILED);
    }
    GroupReply reply;
    if (!EnterGroup(fetch, reply)) return false;
    if (!OpenLog(fetch.store)) return FailGroup(fetch, IDS_OPEN_FILE_FAILED);
    if (!OpenIndex(fetch.store)) return FailGroup(fetch, IDS_OPEN_INDEX_FAILED);
    fetch.writer.store = &fetch.store;
    uint32_t lastFetched = 0;
    const bool fetched = FetchNewArticles(fetch, reply, lastFetched);
    return CloseFiles(fetch, fetched) && RecordOutcome(fetch, lastFetched, reply.last);
}

}  // namespace

NarrowText MakeCommand(const char* word, const char* argument) {
    const std::size_t wordLength = std::strlen(word);
    const std::size_t argumentLength = std::strlen(argument);
    NarrowText command = NewArray<char>(wordLength + argumentLength + 1);
    if (!command) {
        SetError(kErrorNoMemory);
        return nullptr;
    }
    std::memcpy(command.get(), word, wordLength);
    std::memcpy(command.get() + wordLength, argument, argumentLength + 1);
    return command;
}

void DownloadGroup(const GroupDownload& download) {
    std::unique_ptr<Fetch> fetch(new (std::nothrow) Fetch);
    if (!fetch) {
        SetError(kErrorNoMemory);
        FailWithError(*download.result, download.group, IDS_INIT_INDEX_FAILED);
        return;
    }
    fetch->download = &download;
    (void)RunFetch(*fetch);
}
