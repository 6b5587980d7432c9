#include "nntp/article_download.h"

#include <cstring>
#include <string_view>

#include "nntp/pipeline.h"
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
    Pipeline* pipeline = nullptr;  // the run's
    ReplyLine line;
    ReplyLine decoded;
    char converted[sizeof(ReplyLine) + 1];  // and the CR that its line end may lack
};

bool FailGroup(const Fetch& fetch, UINT id) {
    return FailWithError(*fetch.download->result, fetch.download->group, id);
}

bool ReadLineOf(Fetch& fetch) {
    SetError(0);  // a line that a 0 byte breaks sets no error
    fetch.line[0] = '\0';
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

// An encoded word may hold a line end, with which anyone could write lines of his own into the log.
void ReplaceLineEnds(char* text) {
    for (; *text; ++text) {
        if (*text == '\r' || *text == '\n') *text = ' ';
    }
}

// Ends `text`, which has room for it, as its line ended. A line that ended with a lone LF had its CR inside;
// where the conversions took that one, the text gets a new one, or the log would read on past its end.
std::size_t AppendLineEnd(char* text, std::size_t endLength) {
    const std::size_t length = std::strlen(text);
    const bool needsCr = endLength == 2 || (endLength == 1 && !std::memchr(text, '\r', length));
    const char* end = endLength == 0 ? "" : needsCr ? "\r\n" : "\n";
    std::strcpy(text + length, end);
    return length + std::strlen(end);
}

// The line as the store keeps it. The line end stands outside the conversions: a broken encoded word or an
// escape that is never closed cannot take it away.
std::string_view ConvertLine(Fetch& fetch, const char* line, bool decodeWords) {
    const std::size_t length = std::strlen(line);
    const std::size_t endLength = LineEndLength(line, length);
    fetch.line[line + length - endLength - fetch.line] = '\0';
    if (decodeWords) DecodeEncodedWords(fetch.decoded, line);
    LineFromJis(decodeWords ? fetch.decoded : line, fetch.converted);
    if (decodeWords) ReplaceLineEnds(fetch.converted);
    return {fetch.converted, AppendLineEnd(fetch.converted, endLength)};
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

// Drops lines up to the final dot. A 0 byte breaks a line in two; what follows of it cannot be the dot.
bool SkipLines(Fetch& fetch, bool insideLine) {
    while (true) {
        const bool complete = ReadLineOf(fetch);
        if (!complete && GetError() != 0) return false;
        if (complete && !insideLine && IsFinalDot(fetch.line)) return true;
        insideLine = !complete;
    }
}

bool ReadBody(Fetch& fetch) {
    while (ReadLineOf(fetch)) {
        if (IsFinalDot(fetch.line)) return true;
        const std::string_view line = ConvertLine(fetch, Unstuffed(fetch.line), false);
        if (!WriteBodyLine(fetch.writer, line)) return FailGroup(fetch, IDS_WRITE_LOG_FAILED);
    }
    // A 0 byte ends the body for the store; the rest is dropped, or it would be taken for the next reply.
    const bool atZeroByte = GetError() == 0;
    if (atZeroByte && SkipLines(fetch, true)) return true;
    return FailGroup(fetch, IDS_RECEIVE_INCOMPLETE);
}

bool TakeHead(Fetch& fetch) {
    if (!ReadHead(fetch)) return FailGroup(fetch, IDS_RECEIVE_INCOMPLETE);
    return FinishHead(fetch.writer) || FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
}

bool TakeBody(Fetch& fetch) {
    if (!ReadBody(fetch)) return false;
    if (!FinishBody(fetch.writer)) return FailGroup(fetch, IDS_WRITE_LOG_FAILED);
    if (!FinishArticle(fetch.writer)) return FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
    StepProgress(*fetch.download->progress);
    return true;
}

bool TakeContent(Fetch& fetch, ReplyContent content) {
    switch (content) {
        case ReplyContent::kHead:
            return TakeHead(fetch);
        case ReplyContent::kBody:
            return TakeBody(fetch);
        case ReplyContent::kUnwanted:
            return SkipLines(fetch, false) || FailGroup(fetch, IDS_RECEIVE_INCOMPLETE);
        default:
            return true;
    }
}

// Whatever may leave does so before the next recv, also amid a reply.
void SendCommands(void* context) {
    Fetch& fetch = *static_cast<Fetch*>(context);
    std::array<char, kMostOnTheWay * kCommandSize> text;
    const std::size_t length = TakeCommands(*fetch.pipeline, text);
    if (length > 0) SendText(*fetch.download->connection, text.data(), length);
}

bool TakeNextReply(Fetch& fetch) {
    if (!ReadLineOf(fetch)) {
        const bool silence = fetch.download->connection->timedOut && fetch.line[0] == '\0';
        if (silence && TakeSilence(*fetch.pipeline)) return true;
        return FailWithError(*fetch.download->result, fetch.download->group, IDS_RECEIVE_FAILED);
    }
    return TakeContent(fetch, TakeReply(*fetch.pipeline, fetch.line));
}

bool BeginExpectedArticle(Fetch& fetch) {
    const ArticleCommand next = NextCommand(fetch.pipeline->plan);
    if (next.kind != CommandKind::kHead) return true;
    return BeginArticle(fetch.writer, next.number) || FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
}

bool TakeReplies(Fetch& fetch) {
    while (!IsDone(*fetch.pipeline)) {
        if (!BeginExpectedArticle(fetch)) return false;
        // What a server says unasked answers nothing.
        if (fetch.pipeline->sent.count == 0) SendCommands(&fetch);
        if (!TakeNextReply(fetch)) return false;
    }
    return true;
}

bool FetchArticles(Fetch& fetch) {
    NntpConnection& connection = *fetch.download->connection;
    connection.beforeReceive = SendCommands;
    connection.context = &fetch;
    const bool fetched = TakeReplies(fetch);
    connection.beforeReceive = nullptr;
    return fetched;
}

void Summarise(const Fetch& fetch) {
    wchar_t text[kTextCapacity];
    const ArticlePlan& plan = fetch.pipeline->plan;
    const bool limited = IsLimited(plan);
    const wchar_t* format = LoadResString(limited ? IDS_LIMIT_REACHED : IDS_ARTICLES_FETCHED);
    wsprintfW(text, format ? format : L"%d", limited ? plan.limit : plan.fetched);
    SetResult(*fetch.download->result, L"", text, kInformation);
}

// Fetches the group's articles from `first` on. `lastFetched` is set only when the range was dealt with.
bool FetchRange(Fetch& fetch, uint32_t first, const GroupReply& reply, uint32_t& lastFetched) {
    const GroupDownload& download = *fetch.download;
    StartGroup(*download.progress, download.group, reply.last - first, download.limit);
    StartRange(*fetch.pipeline, PlanArticles(first, reply.last, download.limit), HasEveryNumber(reply));
    if (!FetchArticles(fetch)) return false;
    lastFetched = LastProcessed(fetch.pipeline->plan);
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
    if (FindRange(fetch.store, reply, first)) return FetchRange(fetch, first, reply, lastFetched);
    SetResult(*fetch.download->result, L"", LoadResString(IDS_NO_NEW_ARTICLES), kInformation);
    return true;
}

// The log is on disk before the header says so, and nobody else gets at the index before it does.
bool RecordOutcome(Fetch& fetch, uint32_t lastFetched, uint32_t serverLast) {
    GroupStore& store = fetch.store;
    store.lastFetched = lastFetched;
    store.serverLast = serverLast;
    const bool recorded =
        CloseDataFile(store.log) && SetStatusText(store, fetch.download->result->text) && WriteHeader(store);
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
    // While the server thought about GROUP, articles may have been read.
    if (!RefreshHeader(fetch.store)) return FailGroup(fetch, IDS_INIT_INDEX_FAILED);
    fetch.writer.store = &fetch.store;
    uint32_t lastFetched = 0;
    return FetchNewArticles(fetch, reply, lastFetched) && RecordOutcome(fetch, lastFetched, reply.last);
}

}  // namespace

void DownloadGroup(const GroupDownload& download) {
    std::unique_ptr<Fetch> fetch(new (std::nothrow) Fetch);
    if (!fetch) {
        SetError(kErrorNoMemory);
        FailWithError(*download.result, download.group, IDS_INIT_INDEX_FAILED);
        return;
    }
    fetch->download = &download;
    fetch->pipeline = download.pipeline;
    (void)RunFetch(*fetch);
}
