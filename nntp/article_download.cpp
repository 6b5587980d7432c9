#include "nntp/article_download.h"

#include <utility>

#include "nntp/article_lines.h"
#include "resources/resource.h"
#include "store/article_writer.h"
#include "store/index.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/line.h"

namespace {

// One group being fetched, with the buffers that its lines pass through.
struct Fetch {
    const Run* run = nullptr;
    const wchar_t* group = nullptr;
    const wchar_t* next = nullptr;
    NarrowText nextName;  // of the next group, when it may be asked for ahead
    GroupStore store;
    ArticleWriter writer;
    LineBuffers buffers;
};

RunResult& ResultOf(const Fetch& fetch) {
    return *fetch.run->conversation->result;
}

bool FailGroup(const Fetch& fetch, UINT id) {
    return FailWithError(ResultOf(fetch), fetch.group, id);
}

// While commands are on the way, a failed read raises doubt; it is no failure yet.
bool FailToRead(const Fetch& fetch, UINT id) {
    return fetch.run->pipeline->pace != Pace::kAhead && FailGroup(fetch, id);
}

bool IsInDoubt(const Fetch& fetch) {
    return fetch.run->pipeline->pace == Pace::kAhead && ResultOf(fetch).severity != kError;
}

bool ReadLineOf(Conversation& conversation) {
    return ReadReplyLine(conversation.connection, conversation.line, false);
}

// Reads on to the end of the reply: what an article holds must never answer a command.
bool SkipRest(const Fetch& fetch) {
    Conversation& conversation = *fetch.run->conversation;
    return SkipReply(conversation.connection, conversation.line) || FailToRead(fetch, IDS_RECEIVE_INCOMPLETE);
}

// The line read last ends the article for the store; the reply itself may go on.
bool FinishReply(const Fetch& fetch) {
    const Conversation& conversation = *fetch.run->conversation;
    return EndsReply(conversation.connection, conversation.line) || SkipRest(fetch);
}

bool KeepHeaderLine(Fetch& fetch, bool& keeping) {
    ReplyLine& line = fetch.run->conversation->line;
    if (!IsContinuation(line)) keeping = IsKept(line);
    return !keeping || AddHeaderLine(fetch.writer.head, ConvertHeaderLine(fetch.buffers, line));
}

// The stored head ends at the first line that begins with a dot.
bool TakeHead(Fetch& fetch) {
    Conversation& conversation = *fetch.run->conversation;
    bool keeping = false;
    while (ReadLineOf(conversation)) {
        if (conversation.line[0] == '.') {
            return FinishReply(fetch) &&
                   (FinishHead(fetch.writer) || FailGroup(fetch, IDS_WRITE_INDEX_FAILED));
        }
        if (!KeepHeaderLine(fetch, keeping)) return FailGroup(fetch, IDS_RECEIVE_INCOMPLETE);
    }
    return FailToRead(fetch, IDS_RECEIVE_INCOMPLETE);
}

// The next line of the body as it is stored; empty at the reply's end.
bool ReadBodyLine(Fetch& fetch, std::string_view& text) {
    Conversation& conversation = *fetch.run->conversation;
    NntpConnection& connection = conversation.connection;
    const std::size_t plain = ConvertPlainLine(fetch.buffers, connection.readPosition, text);
    if (plain != 0) {
        PassLine(connection, plain);
        return true;
    }
    if (!ReadLineOf(conversation)) return false;
    text = IsFinalDot(conversation.line) ? std::string_view()
                                         : ConvertBodyLine(fetch.buffers, conversation.line);
    return true;
}

// The stored body ends at the first line that is a single dot, or before the first that holds a 0 byte.
bool ReadBody(Fetch& fetch) {
    std::string_view line;
    while (ReadBodyLine(fetch, line)) {
        if (line.empty()) return FinishReply(fetch);
        if (!WriteBodyLine(fetch.writer, line)) return FailGroup(fetch, IDS_WRITE_LOG_FAILED);
    }
    if (GetError() == 0) return SkipRest(fetch);
    return FailToRead(fetch, IDS_RECEIVE_INCOMPLETE);
}

bool TakeBody(Fetch& fetch) {
    if (!ReadBody(fetch)) return false;
    if (!FinishBody(fetch.writer)) return FailGroup(fetch, IDS_WRITE_LOG_FAILED);
    if (!FinishArticle(fetch.writer)) return FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
    NoteStored(*fetch.run->pipeline);
    StepProgress(*fetch.run->progress);
    return true;
}

bool TakeContent(Fetch& fetch, ReplyContent content) {
    switch (content) {
        case ReplyContent::kHead:
            return TakeHead(fetch);
        case ReplyContent::kBody:
            return TakeBody(fetch);
        case ReplyContent::kUnwanted:
            return SkipRest(fetch);
        case ReplyContent::kDoubt:
            return false;
        case ReplyContent::kNothing:
            break;
    }
    return true;
}

void SendCommands(const Run& run) {
    std::array<char, kMostOnTheWay * kCommandSize> text;
    const std::size_t length = TakeCommands(*run.pipeline, text);
    if (length > 0) SendText(run.conversation->connection, text.data(), length);
}

void AskNextGroup(Fetch& fetch) {
    Pipeline& pipeline = *fetch.run->pipeline;
    if (!fetch.nextName || !MayAskNextGroup(pipeline)) return;
    if (Say(fetch.run->conversation->connection, "GROUP ", fetch.nextName.get()))
        NoteGroupAsked(pipeline, fetch.nextName.get());
}

// Before each recv, also inside a reply, sends what may go ahead.
void SendAhead(void* context) {
    Fetch& fetch = *static_cast<Fetch*>(context);
    const Run& run = *fetch.run;
    const bool ahead = run.pipeline->pace == Pace::kAhead;
    run.conversation->connection.silence = ahead ? kLongestSilenceAhead : kLongestSilence;
    if (!ahead) return;
    SendCommands(run);
    AskNextGroup(fetch);
}

bool BeginExpectedArticle(Fetch& fetch) {
    const ArticleCommand next = NextCommand(fetch.run->pipeline->plan);
    if (next.kind != CommandKind::kHead) return true;
    return BeginArticle(fetch.writer, next.number) || FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
}

bool TakeNextReply(Fetch& fetch) {
    Conversation& conversation = *fetch.run->conversation;
    if (!BeginExpectedArticle(fetch)) return false;
    if (fetch.run->pipeline->sentCount == 0) SendCommands(*fetch.run);
    if (!ReadLineOf(conversation)) return FailToRead(fetch, IDS_RECEIVE_FAILED);
    return TakeContent(fetch, TakeReply(*fetch.run->pipeline, conversation.line));
}

bool TakeReplies(Fetch& fetch) {
    NntpConnection& connection = fetch.run->conversation->connection;
    connection.beforeReceive = SendAhead;
    connection.context = &fetch;
    bool taken = true;
    while (taken && !IsDone(*fetch.run->pipeline))
        taken = TakeNextReply(fetch);
    connection.beforeReceive = nullptr;
    connection.silence = kLongestSilence;
    return taken;
}

void Summarise(const Fetch& fetch) {
    TextBuffer resource;
    RunResult& result = ResultOf(fetch);
    const ArticlePlan& plan = fetch.run->pipeline->plan;
    const bool limited = IsLimited(plan);
    const wchar_t* format = LoadResString(limited ? IDS_LIMIT_REACHED : IDS_ARTICLES_FETCHED, resource);
    SetResult(result, L"", L"", kInformation);
    wsprintfW(result.text, format ? format : L"%d", limited ? plan.limit : plan.fetched);
}

// Warns with string `id` and the reply line, without its line end.
bool RefuseGroup(const Fetch& fetch, UINT id) {
    const WideText reply = ToWide(fetch.run->conversation->line);
    RunResult& result = ResultOf(fetch);
    TextBuffer format, text;
    SetResult(result, fetch.group,
              FormatText(LoadResString(id, format), reply ? reply.get() : L"??\r\n", text), kWarning);
    const std::size_t length = wcslen(result.text);
    result.text[length > 2 ? length - 2 : 0] = L'\0';
    return false;
}

// The reply is then the conversation's line. After doubt about this very command there is no connection.
bool AskGroup(const Fetch& fetch) {
    Conversation& conversation = *fetch.run->conversation;
    Pipeline& pipeline = *fetch.run->pipeline;
    if (std::exchange(pipeline.nextEntered, false)) return true;
    if (!conversation.connection.socket && !Open(conversation)) return false;
    const NarrowText name = ToNarrow(fetch.group);
    const Asked asked =
        name ? Ask(conversation.connection, conversation.line, "GROUP ", name.get()) : Asked::kNotSent;
    if (asked == Asked::kNotSent) return FailWithError(ResultOf(fetch), L"Socket Error", IDS_SEND_FAILED);
    if (asked == Asked::kNotAnswered) {
        return FailWithError(ResultOf(fetch), L"Socket ERROR", IDS_RECEIVE_FAILED);
    }
    pipeline.namesGroups = NamesGroup(conversation.line, name.get());
    return true;
}

bool EnterGroup(const Fetch& fetch, GroupReply& reply) {
    Conversation& conversation = *fetch.run->conversation;
    if (!AskGroup(fetch)) return false;
    if (!IsSuccess(conversation.line)) return RefuseGroup(fetch, IDS_CANNOT_ENTER_GROUP);
    return ParseGroupReply(conversation.line, reply) || RefuseGroup(fetch, IDS_UNEXPECTED_REPLY);
}

// Keeps the range of the first GROUP reply: the server refuses the articles that are gone since.
bool StartAnew(const Fetch& fetch) {
    CloseConnection(fetch.run->conversation->connection);
    StartAgain(*fetch.run->pipeline);
    GroupReply reply;
    return IsDone(*fetch.run->pipeline) || EnterGroup(fetch, reply);
}

bool FetchArticles(Fetch& fetch) {
    return TakeReplies(fetch) || (IsInDoubt(fetch) && StartAnew(fetch) && TakeReplies(fetch));
}

// The next group's name, when its index can be read: without one it is not asked for.
NarrowText NameOfNext(const Fetch& fetch) {
    GroupStore store;
    const bool ready = fetch.next && SetNames(store, fetch.run->folder, fetch.next) && ReadHeader(store);
    return ready ? ToNarrow(fetch.next) : nullptr;
}

// Fetches the group's articles from `first` on. `lastFetched` is set only when the range was processed.
bool FetchRange(Fetch& fetch, uint32_t first, const GroupReply& reply, uint32_t& lastFetched) {
    const Run& run = *fetch.run;
    StartGroup(*run.progress, fetch.group, reply.last - first, run.limit);
    fetch.nextName = NameOfNext(fetch);
    StartRange(*run.pipeline, PlanArticles(first, reply.last, run.limit), HasEveryNumber(reply));
    if (!FetchArticles(fetch)) return false;
    lastFetched = LastProcessed(run.pipeline->plan);
    Summarise(fetch);
    return true;
}

// Finds the first article after those already processed; false when the server has none.
bool FindRange(const GroupStore& store, const GroupReply& reply, uint32_t& first) {
    if (store.header.lastFetched == kNoneFetched) return false;
    first = store.header.lastFetched + 1;
    if (first < reply.first) first = reply.first;
    return first <= reply.last;
}

bool FetchNewArticles(Fetch& fetch, const GroupReply& reply, uint32_t& lastFetched) {
    uint32_t first = 0;
    lastFetched = reply.last;
    if (FindRange(fetch.store, reply, first)) return FetchRange(fetch, first, reply, lastFetched);
    SetResult(ResultOf(fetch), L"", IDS_NO_NEW_ARTICLES, kInformation);
    return true;
}

// The log is on disk before the header counts its articles. The index stays open until then, so nobody reads
// it in between.
bool RecordOutcome(Fetch& fetch, uint32_t lastFetched, uint32_t serverLast) {
    GroupStore& store = fetch.store;
    store.header.lastFetched = lastFetched;
    store.header.serverLast = serverLast;
    const bool recorded =
        CloseDataFile(store.log) && SetStatusText(store, ResultOf(fetch).text) && WriteHeader(store);
    return recorded || FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
}

bool FetchGroup(Fetch& fetch) {
    if (!SetNames(fetch.store, fetch.run->folder, fetch.group) || !ReadHeader(fetch.store)) {
        return FailGroup(fetch, IDS_INIT_INDEX_FAILED);
    }
    GroupReply reply;
    if (!EnterGroup(fetch, reply)) return false;
    if (!OpenLog(fetch.store)) return FailGroup(fetch, IDS_OPEN_FILE_FAILED);
    if (!OpenIndex(fetch.store)) return FailGroup(fetch, IDS_OPEN_INDEX_FAILED);
    // The user may have read articles while the server answered GROUP.
    if (!RefreshHeader(fetch.store)) return FailGroup(fetch, IDS_INIT_INDEX_FAILED);
    fetch.writer.store = &fetch.store;
    uint32_t lastFetched = 0;
    return FetchNewArticles(fetch, reply, lastFetched) && RecordOutcome(fetch, lastFetched, reply.last);
}

// Stores why the group was skipped, for its row. The rest of its header stays as it is on disk.
void RecordRefusal(Fetch& fetch) {
    GroupStore& store = fetch.store;
    const bool recorded = OpenIndex(store) && RefreshHeader(store) &&
                          SetStatusText(store, ResultOf(fetch).text) && WriteHeader(store);
    if (!recorded) FailGroup(fetch, IDS_WRITE_INDEX_FAILED);
}

}  // namespace

void DownloadGroup(const Run& run, const wchar_t* group, const wchar_t* next) {
    std::unique_ptr<Fetch> fetch(new (std::nothrow) Fetch);
    if (!fetch) {
        SetError(kErrorNoMemory);
        FailWithError(*run.conversation->result, group, IDS_INIT_INDEX_FAILED);
        return;
    }
    fetch->run = &run;
    fetch->group = group;
    fetch->next = next;
    if (!FetchGroup(*fetch) && ResultOf(*fetch).severity == kWarning) RecordRefusal(*fetch);
}
