#include "tests/device/answers.h"

#include <wchar.h>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "filters/keyword_filter.h"
#include "nntp/pipeline.h"
#include "nntp/reply.h"
#include "store/delete_read.h"
#include "store/file.h"
#include "store/index.h"
#include "store/record.h"
#include "store/string_set.h"
#include "text/convert.h"
#include "text/jis.h"
#include "text/last_error.h"
#include "text/line.h"
#include "text/mime.h"
#include "text/sjis.h"
#include "views/article_layout.h"
#include "views/scrolling.h"

namespace {

// The answers so far. What does not fit is dropped and remembered.
struct Answer {
    char* bytes = nullptr;  // not owned
    uint32_t capacity = 0;
    uint32_t length = 0;
    bool failed = false;
};

void PutBytes(Answer& answer, const void* bytes, std::size_t size) {
    answer.failed |= size > answer.capacity - answer.length;
    if (answer.failed || size == 0) return;
    std::memcpy(answer.bytes + answer.length, bytes, size);
    answer.length += static_cast<uint32_t>(size);
}

void PutNumber(Answer& answer, uint32_t number) {
    PutBytes(answer, &number, sizeof(number));
}

void PutNumbers(Answer& answer, std::initializer_list<uint32_t> numbers) {
    for (const uint32_t number : numbers)
        PutNumber(answer, number);
}

void PutText(Answer& answer, std::string_view text) {
    PutNumber(answer, static_cast<uint32_t>(text.size()));
    PutBytes(answer, text.data(), text.size());
}

// The leading bytes of an input; 0 when nothing is left.
uint32_t TakeByte(std::string_view& input) {
    if (input.empty()) return 0;
    const auto byte = static_cast<unsigned char>(input.front());
    input.remove_prefix(1);
    return byte;
}

uint32_t TakeWord(std::string_view& input) {
    uint32_t word = 0;
    for (unsigned shift = 0; shift < 32; shift += 8)
        word |= TakeByte(input) << shift;
    return word;
}

std::string_view TakePart(std::string_view& input, std::size_t length) {
    const std::string_view part = input.substr(0, length);
    input.remove_prefix(part.size());
    return part;
}

std::string_view TakeLine(std::string_view& input) {
    const std::size_t length = input.find('\n');
    const std::string_view line = TakePart(input, length);
    if (!input.empty()) input.remove_prefix(1);
    return line;
}

NarrowText Copy(std::string_view text) {
    NarrowText copy = NewArray<char>(text.size() + 1);
    std::memcpy(copy.get(), text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

// Lines: a byte for the buffer's size, then the stream.

LineState PutAssembled(Answer& answer, std::string_view stream, std::size_t capacity, bool cut) {
    const NarrowText buffer = NewArray<char>(capacity + 1);
    LineAssembler line{buffer.get(), capacity};
    std::size_t added = 0;
    const LineState state = AddToLine(line, stream.data(), stream.size(), added);
    const std::size_t read = line.length;
    FinishLine(line, cut);
    PutNumbers(answer, {static_cast<uint32_t>(state), static_cast<uint32_t>(read), IsFinalDot(line.buffer),
                        static_cast<uint32_t>(Unstuffed(line.buffer) - line.buffer)});
    PutText(answer, {line.buffer, line.length});
    return state;
}

void AnswerLines(Answer& answer, std::string_view stream) {
    const std::size_t capacity = TakeByte(stream) + std::size_t{1};
    while (!stream.empty()) {
        PutAssembled(answer, stream, capacity, true);
        const uint32_t before = answer.length;
        if (PutAssembled(answer, stream, capacity, false) != LineState::kComplete || answer.failed) return;
        uint32_t read = 0;
        std::memcpy(&read, answer.bytes + before + sizeof(read), sizeof(read));
        stream.remove_prefix(read);
    }
}

// Encoded words, ISO-2022-JP and the code page: a text.

void PutWords(Answer& answer, const char* jisText) {
    EncodedWordList list;
    PutNumber(answer, EncodeAsWords(list, jisText));
    for (const EncodedWord* word = list.first; word; word = word->next)
        PutText(answer, word->text.get());
    ReleaseEncodedWords(list);
}

void AnswerEncodedWords(Answer& answer, std::string_view input) {
    const NarrowText text = Copy(input);
    const std::size_t length = std::strlen(text.get());
    const NarrowText decoded = NewArray<char>(length + 1);
    DecodeEncodedWords(decoded.get(), text.get());
    PutText(answer, decoded.get());
    const NarrowText encoded = NewArray<char>(4 * ((length + 2) / 3) + 1);
    Base64Encode(text.get(), encoded.get());
    PutText(answer, encoded.get());
    PutWords(answer, text.get());
    PutWords(answer, TextToJis(text.get()).get());
}

void AnswerJis(Answer& answer, std::string_view input) {
    const NarrowText text = Copy(input);
    const NarrowText line = NewArray<char>(std::strlen(text.get()) + 1);
    LineFromJis(text.get(), line.get());
    PutText(answer, line.get());
    PutText(answer, TextToJis(text.get()).get());
}

void AnswerCodePage(Answer& answer, std::string_view input) {
    const WideText wide = ToWide(Copy(input).get());
    PutBytes(answer, wide.get(), wcslen(wide.get()) * sizeof(wchar_t));
    PutText(answer, ToNarrow(wide.get()).get());
}

// Header blocks: a byte that chooses the lines' end, then lines.

void PutRecord(Answer& answer, const HeaderBlock& block) {
    constexpr uint32_t kArticleStart = 1000;
    IndexRecord record;
    FillHeadFields(record, block);
    FillSubjectRange(record, block, kArticleStart);
    SetPriority(record, kPriorityHigh);
    PutBytes(answer, &record, sizeof(record));
}

void AnswerHeaderBlock(Answer& answer, std::string_view input) {
    const char* const end = TakeByte(input) % 2 == 0 ? "\r\n" : "\n";
    HeaderBlock block;
    bool added = StartHeaderBlock(block);
    while (added && !input.empty()) {
        const std::string_view content = TakeLine(input);
        const NarrowText line = NewArray<char>(content.size() + std::strlen(end) + 1);
        std::memcpy(line.get(), content.data(), content.size());
        std::strcpy(line.get() + content.size(), end);
        added = AddHeaderLine(block, {line.get(), content.size() + std::strlen(end)});
    }
    PutNumbers(answer, {added, block.capacity, block.subjectLine, block.subjectLength, block.fromLine,
                        block.dateLine, block.sequence, block.newsgroupLine, block.newsgroupLength});
    PutText(answer, {block.buffer.get(), block.length});
    PutText(answer, TextAfterName(block, block.dateLine));
    PutRecord(answer, block);
}

// The record's fields: a byte for a limit, then a text.
void AnswerHeadFields(Answer& answer, std::string_view text) {
    const uint32_t limit = TakeByte(text);
    char subject[kSubjectSize], date[kDateSize], from[kFromSize];
    const NarrowText field = NewArray<char>(limit);
    PutText(answer, {field.get(), CopyWholeCharacters(field.get(), limit, text.data(), text.size())});
    SubjectField(subject, text);
    DateField(date, text);
    FromField(from, text);
    PutBytes(answer, subject, sizeof(subject));
    PutBytes(answer, date, sizeof(date));
    PutBytes(answer, from, sizeof(from));
}

// Replies to GROUP: a line.
void AnswerReply(Answer& answer, std::string_view input) {
    const NarrowText line = Copy(input);
    const char* cursor = line.get();
    PutNumber(answer, ParseNumber(cursor));
    PutNumber(answer, cursor ? static_cast<uint32_t>(cursor - line.get()) : kNotANumber);
    GroupReply reply;
    PutNumbers(answer, {IsSuccess(line.get()), AsksForMore(line.get()), ParseGroupReply(line.get(), reply)});
    PutNumbers(answer, {reply.count, reply.first, reply.last, HasEveryNumber(reply)});
}

// Plans: first, last and limit, then a letter a reply; h and b have the article.
void AnswerPlan(Answer& answer, std::string_view input) {
    const uint32_t first = TakeWord(input);
    const uint32_t last = TakeWord(input);
    ArticlePlan plan = PlanArticles(first, last, TakeWord(input));
    do {
        const ArticleCommand command = NextCommand(plan);
        PutNumbers(answer, {static_cast<uint32_t>(command.kind), command.number, plan.fetched,
                            IsLimited(plan), LastProcessed(plan)});
        const bool hasArticle = TakeByte(input) >= 'a';
        if (command.kind == CommandKind::kHead) NoteHead(plan, hasArticle);
        if (command.kind == CommandKind::kBody) NoteBody(plan, hasArticle);
    } while (!input.empty());
}

// Conversations: first, last, limit, whether the count says that none is missing, then a byte a turn. It says
// what the server answers to the oldest command that waits.

struct StatusLine {
    char text[32] = {};
    std::size_t length = 0;
};

void Add(StatusLine& line, const char* text) {
    std::strcpy(line.text + line.length, text);
    line.length += std::strlen(text);
}

void AddNumber(StatusLine& line, uint32_t number) {
    char digits[11] = {};
    std::size_t at = sizeof(digits) - 1;
    do {
        digits[--at] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number != 0);
    Add(line, digits + at);
}

StatusLine AnswerTo(const Pipeline& pipeline, uint32_t choice) {
    StatusLine line;
    const ArticleCommand& oldest = pipeline.sent[0];
    const bool isHead = (oldest.kind == CommandKind::kHead) == (choice < 0xE0);
    if (choice < 0x30 || choice >= 0xF8) {
        Add(line, choice < 0x30 ? "423 none" : "500 one by one");
    } else {
        Add(line, isHead ? "221 " : "222 ");
        AddNumber(line, oldest.number + (choice >= 0xD0 ? choice % 4 : 0));
        Add(line, " <a@b>");
    }
    return line;
}

void TakeTurn(Answer& answer, Pipeline& pipeline, uint32_t choice) {
    std::array<char, kMostOnTheWay * kCommandSize> text;
    PutText(answer, {text.data(), TakeCommands(pipeline, text)});
    const ReplyContent content = TakeReply(pipeline, AnswerTo(pipeline, choice).text);
    if (content == ReplyContent::kBody) NoteStored(pipeline);
    if (content == ReplyContent::kDoubt) StartAgain(pipeline);
    PutNumbers(answer, {static_cast<uint32_t>(content), NextCommand(pipeline.plan).number,
                        pipeline.plan.fetched, LastProcessed(pipeline.plan), pipeline.sentCount,
                        static_cast<uint32_t>(pipeline.pace), IsDone(pipeline)});
}

void AnswerPipeline(Answer& answer, std::string_view input) {
    Pipeline pipeline;
    const uint32_t first = TakeWord(input);
    const uint32_t last = TakeWord(input);
    const ArticlePlan plan = PlanArticles(first, last, TakeWord(input));
    StartRange(pipeline, plan, TakeByte(input) != 0);
    while (!input.empty() && !IsDone(pipeline))
        TakeTurn(answer, pipeline, TakeByte(input));
}

// Filters: the subject's line, then the file's lines.

void PutKeywords(Answer& answer, const KeywordNode* node) {
    for (; node; node = node->next)
        PutText(answer, node->keyword.get());
    PutNumber(answer, 0xFFFFFFFF);
}

void AnswerFilter(Answer& answer, std::string_view input) {
    const std::string_view subject = TakeLine(input);
    KeywordFilter filter;
    while (!input.empty())
        PutNumber(answer, AddKeywordLine(filter, TakeLine(input)));
    PutNumber(answer, MatchKeywordFilter(filter, subject));
    PutKeywords(answer, filter.high);
    PutKeywords(answer, filter.low);
}

// Articles: the width (two bytes), the rows a page, whether the whole header is wanted, then UTF-16.

uint32_t FitUnits(void*, const wchar_t* text, uint32_t count, int width) {
    uint32_t fit = 0;
    for (int reached = 0; fit < count; ++fit) {
        reached += text[fit] < 0x80 ? 6 : 12;
        if (reached >= width) break;
    }
    return fit;
}

void PutLayout(Answer& answer, const ArticleLayout& layout, const wchar_t* text) {
    PutNumbers(answer, {layout.lineCount, layout.headerLines});
    for (uint32_t line = 0; line < layout.lineCount; ++line) {
        const wchar_t* place = PlaceOfLine(layout, line);
        const DisplayLine& shown = layout.lines[line];
        PutNumbers(answer, {place ? static_cast<uint32_t>(place - text) : 0xFFFFFFFF,
                            LineOfPlace(layout, place), shown.length, shown.quote});
    }
}

void AnswerArticle(Answer& answer, std::string_view input) {
    LayoutOptions options;
    const uint32_t low = TakeByte(input);
    options.width = static_cast<int>(low + TakeByte(input) * 256);
    options.rowsPerPage = TakeByte(input);
    options.wholeHeader = TakeByte(input) != 0;
    const std::size_t units = input.size() / sizeof(wchar_t);
    const WideText text = NewArray<wchar_t>(units + 1);
    std::memcpy(text.get(), input.data(), units * sizeof(wchar_t));
    text[units] = L'\0';
    ArticleLayout layout;
    PutNumber(answer, LayOut(layout, text.get(), options, {FitUnits, nullptr}));
    PutLayout(answer, layout, text.get());
}

// Scrolling: page, top, total, cursor and a place, a word each. Every move is made from there.

void PutScroll(Answer& answer, const ScrollState& state, uint32_t result) {
    PutNumbers(answer, {result, state.page, state.top, state.cursor});
}

void PutMoves(Answer& answer, const ScrollState& start, uint32_t place) {
    constexpr ScrollResult (*kMoves[])(ScrollState&) = {PageDown, PageUp, LineDown, LineUp};
    PutNumbers(answer, {PageStep(start), static_cast<uint32_t>(ScrollMaximum(start)), EndIsVisible(start)});
    for (const auto move : kMoves) {
        ScrollState state = start;
        PutScroll(answer, state, static_cast<uint32_t>(move(state)));
        PutScroll(answer, state, static_cast<uint32_t>(ThumbTo(state, place)));
    }
}

void PutListMoves(Answer& answer, const ScrollState& start, uint32_t place) {
    for (const bool lineScroll : {false, true}) {
        ScrollState list = start;
        PutScroll(answer, list, static_cast<uint32_t>(CursorDown(list, lineScroll)));
        PutScroll(answer, list, static_cast<uint32_t>(CursorUp(list, lineScroll)));
    }
    ScrollState list = start;
    PutScroll(answer, list, MoveTo(list, place));
    ResizePage(list, place % 16 + 1);
    PutScroll(answer, list, CursorRow(list));
}

void AnswerScrolling(Answer& answer, std::string_view input) {
    ScrollState state;
    state.page = TakeWord(input);
    state.top = TakeWord(input);
    state.total = TakeWord(input);
    state.cursor = TakeWord(input);
    const uint32_t place = TakeWord(input);
    PutListMoves(answer, state, place);
    for (const ScrollKind kind : {ScrollKind::kList, ScrollKind::kText, ScrollKind::kTextGoingOn}) {
        state.kind = kind;
        PutMoves(answer, state, place);
    }
}

// String sets: lines, whose first letter says what happens with the rest: '-' removes, '?' finds, others add.

void ChangeSet(Answer& answer, StringSet& set, std::string_view line) {
    const uint32_t change = TakeByte(line);
    const NarrowText text = Copy(line);
    PutNumber(answer, BucketOf(text.get()));
    if (change == '-') {
        PutNumber(answer, RemoveString(set, text.get()));
    } else {
        const StringNode* node = change == '?' ? FindString(set, text.get()) : AddString(set, text.get());
        PutNumber(answer, node != nullptr);
    }
}

void AnswerStringSet(Answer& answer, std::string_view input) {
    StringSet set;
    PutNumber(answer, CreateStringSet(set));
    while (!input.empty())
        ChangeSet(answer, set, TakeLine(input));
    StringSetIterator iterator = IterateStrings(set);
    while (const StringNode* node = NextString(iterator))
        PutText(answer, node->text);
}

// A group's files: a byte that chooses what is done, the lengths of the index (two bytes) and of the filter
// (one), then index, filter and log.

constexpr wchar_t kFolder[] = L"store\\";
constexpr const wchar_t* kFiles[] = {L"store\\g.idx", L"store\\g.flt", L"store\\g.log", L"store\\g.id~",
                                     L"store\\g.lo~"};

bool PutFile(const wchar_t* path, std::string_view contents) {
    DataFile file;
    return OpenDataFile(file, path, FileMode::kReplace) &&
           WriteBytes(file, contents.data(), static_cast<uint32_t>(contents.size())) && CloseDataFile(file);
}

bool PutFiles(std::string_view& input) {
    for (const wchar_t* path : kFiles)
        (void)DeleteDataFile(path);
    const uint32_t low = TakeByte(input);
    const std::size_t indexLength = low + TakeByte(input) * 256;
    const std::size_t filterLength = TakeByte(input);
    const std::string_view index = TakePart(input, indexLength);
    const std::string_view filter = TakePart(input, filterLength);
    return (indexLength == 0 || PutFile(kFiles[0], index)) &&
           (filterLength == 0 || PutFile(kFiles[1], filter)) && PutFile(kFiles[2], input);
}

void AnswerFile(Answer& answer, const wchar_t* path) {
    DataFile file;
    const bool opened = OpenDataFile(file, path, FileMode::kRead);
    PutNumber(answer, opened ? file.size : 0xFFFFFFFF);
    char bytes[512];
    uint32_t got = 0;
    while (opened && ReadBytes(file, bytes, sizeof(bytes), got) && got != 0)
        PutBytes(answer, bytes, got);
}

void Run(Answer& answer, bool (*operation)(GroupStore&)) {
    GroupStore store;
    const bool done = SetNames(store, kFolder, L"g") && operation(store);
    PutNumbers(answer, {done, done ? 0 : GetError(), store.recordCount, store.unreadCount});
}

bool IsBroughtUp(GroupStore& store) {
    return BringUpToDate(store) == IndexState::kReady;
}

void AnswerStore(Answer& answer, std::string_view input) {
    const uint32_t choice = TakeByte(input);
    PutNumber(answer, PutFiles(input));
    Run(answer, IsBroughtUp);
    if (choice & 1) Run(answer, RebuildFromLog);
    if (choice & 2) Run(answer, Refilter);
    if (choice & 16) Run(answer, MarkAllRead);
    if (choice & 32) Run(answer, DeleteRead);
    for (const wchar_t* path : kFiles)
        AnswerFile(answer, path);
}

constexpr void (*kKinds[])(Answer&, std::string_view) = {
    AnswerLines,      AnswerEncodedWords, AnswerJis,       AnswerCodePage, AnswerHeaderBlock,
    AnswerHeadFields, AnswerReply,        AnswerPlan,      AnswerPipeline, AnswerFilter,
    AnswerArticle,    AnswerScrolling,    AnswerStringSet, AnswerStore,
};

void AnswerOne(Answer& answer, uint32_t kind, std::string_view input) {
    const uint32_t start = answer.length;
    PutNumber(answer, 0);
    kKinds[kind](answer, input);
    const uint32_t length = answer.length - start - static_cast<uint32_t>(sizeof(length));
    if (!answer.failed) std::memcpy(answer.bytes + start, &length, sizeof(length));
}

}  // namespace

uint32_t AnswerCases(const char* cases, uint32_t size, char* answers, uint32_t capacity) {
    std::string_view rest(cases, size);
    Answer answer{answers, capacity};
    while (!rest.empty() && !answer.failed) {
        const uint32_t length = TakeWord(rest);
        const uint32_t kind = TakeByte(rest);
        answer.failed |= length > rest.size() || kind >= sizeof(kKinds) / sizeof(kKinds[0]);
        if (!answer.failed) AnswerOne(answer, kind, TakePart(rest, length));
    }
    return answer.failed ? 0 : answer.length;
}
