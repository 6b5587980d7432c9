// Every byte of a group's files gone bad, in every state that a start may find them in: plays damage.txt on
// the machine in memory, which says what the reader then meets.
#include <gmock/gmock.h>

#include <sstream>

#include "store/article_list.h"
#include "store/delete_read.h"
#include "store/group_changes.h"
#include "store/index.h"
#include "store/log.h"
#include "tests/faults/operations.h"
#include "tests/support/text_table.h"
#include "text/convert.h"

namespace {

const std::wstring kGroup = L"fj.a";

// A deletion keeps the first and the last.
const std::vector<Article> kArticles = {
    {1, "low0", 0, "one\r\n\r\n"}, {2, "low1", 1 | 2, "> two\r\n=\r\n"}, {3, "high2", 4, "\x82\xA0\r\n"}};
const std::vector<Article> kOnServer = {{4, "four", 0, "four\r\n"}, {5, "five", 0, "five\r\n"}};

// What the program may say of damaged files: no such file, invalid data, no such record or name, a line that
// is too long.
const auto kKnownError = testing::AnyOf(2, 13, 87, 234);
constexpr int kMostCalls = 20000;               // that a step may make
constexpr std::size_t kLargestBlock = 1 << 17;  // of memory, whatever a number in a file says

std::string Damaged(std::string bytes, const std::string& harm, std::size_t at) {
    if (harm == "flipped") bytes[at] = static_cast<char>(~bytes[at]);
    if (harm == "zero") bytes[at] = '\0';
    if (harm == "doubled") bytes.insert(at, 1, bytes[at]);
    if (harm == "lengthened") bytes.insert(at, 1100, 'x');
    if (harm == "cut") bytes.resize(at);
    return bytes;
}

// The error in parentheses when it was not done. What calls the system without end is stopped.
template <class Operation>
std::string Try(const std::string& what, Operation operation) {
    int calls = 0;
    machine.largestBlock = 0;
    machine.fault = [&](std::string_view) -> DWORD { return ++calls < kMostCalls ? 0 : ERROR_TIMEOUT; };
    const std::size_t held = HeldByProgram();
    SetLastError(0);
    const Outcome outcome = operation();
    machine.fault = nullptr;
    EXPECT_LT(machine.largestBlock, kLargestBlock) << what;
    EXPECT_EQ(HeldByProgram(), held) << what;
    if (outcome.done) return "";
    const std::size_t number = outcome.told.find('(');
    const int error = number == std::string::npos ? 0 : std::atoi(outcome.told.c_str() + number + 1);
    EXPECT_THAT(error, kKnownError) << what << ": " << outcome.told;
    return " " + what + " (" + std::to_string(error) + ")";
}

Outcome Answer(bool done) {
    return {done, "(" + std::to_string(GetLastError()) + ")"};
}

std::string Change(const char* what, bool (*change)(GroupStore&)) {
    return Try(what, [&] {
        GroupStore store;
        return Answer(SetNames(store, kFolder.c_str(), kGroup.c_str()) && change(store));
    });
}

bool CatchUpOnServer(GroupStore& store) {
    return ReadHeader(store) && WriteHeader(store);
}

// The article's number; "?" for a text that is none of them, "-" for none, "!" where it cannot be marked.
std::string ReadRow(ArticleList& list, uint32_t row) {
    const IndexRecord record = list.page[row % 2];
    list.currentInPage = row % 2;
    (void)ReadSelectedSubject(list);
    const WideText text = ReadArticle(list.store, record.logOffset, record.logLength);
    std::string name = text ? "?" : "-";
    for (const std::vector<Article>* articles : {&kArticles, &kOnServer})
        for (const Article& article : *articles)
            if (text && StoredText(article) == ToNarrow(text.get()).get())
                name = std::to_string(article.number);
    const uint32_t wasUnread = ~record.flags & kReadFlag;
    const bool marked = SetFlags(list, row, kReadFlag) && ClearFlags(list, row, wasUnread);
    return name + (marked ? " " : "! ");
}

// Pages through the list as the subject view does, and opens and marks every article.
std::string Read() {
    std::string shown = " [";
    const std::string failure = Try("list", [&] {
        ArticleList list;
        list.showRead = true;
        const Outcome outcome =
            Answer(OpenArticleList(list, kFolder.c_str(), kGroup.c_str()) && BuildArticleList(list, 2));
        for (uint32_t row = 0; outcome.done && row < list.visibleCount; ++row)
            if (row % 2 != 0 || LoadPage(list, row)) shown += ReadRow(list, row);
        (void)CloseArticleList(list);
        return outcome;
    });
    if (shown.back() == ' ') shown.pop_back();
    return failure.empty() ? shown + "]" : failure;
}

// An evening with the group: what failed, and the articles as the list shows them.
std::string Evening() {
    Serve([](const std::string& command) { return ReplyOf(kOnServer, command); });
    std::string report;
    report += Try("start", Start);
    report += Read();
    report += Try("fetch", [] { return Download({kGroup}); });
    report += Read();
    report += Change("delete", DeleteRead);
    report += Change("filter", Refilter);
    report += Change("catch-up", CatchUpOnServer);
    report += Try("start", Start);
    report += Read();
    for (const auto& [path, bytes] : machine.storage.files)
        if (path.back() == L'~') report += " " + Plain(path.substr(kFolder.size())) + " is left";
    return report + "\n";
}

Files OthersFiles() {
    Files files = GroupFiles(L"fj.b", {{7, "high7", 0, "seven\r\n"}}, GroupIs::kCurrent);
    files.insert({{L"", ""},
                  {L"fj.b.flt", "+ high\r\n"},
                  {L"active.dat", "fj.a\r\nfj.b\r\n"},
                  {L"category.dat", "fj\r\n"},
                  {L"draft\\", ""},
                  {L"draft\\note.txt", "a draft"}});
    return files;
}

// None but the group's own is new or has changed. A damaged name is the name of another group.
void ExpectOthersAlone(const Files& others, const std::wstring& file) {
    for (const auto& [name, bytes] : others)
        if (name != file) EXPECT_EQ(FileOf(name), bytes) << Plain(name);
    for (const auto& [path, bytes] : machine.storage.files) {
        const std::wstring name = path.substr(kFolder.size());
        EXPECT_TRUE(others.count(name) || name.find(L"fj.a.") == 0 || file == L"group.dat") << Plain(name);
    }
}

std::string Play(const std::string& sentence) {
    std::istringstream words(sentence);
    std::string state, name, harm;
    words >> state >> name >> harm;
    const std::wstring file(name.begin(), name.end());
    Files others = OthersFiles();
    others[L"group.dat"] = "fj.a\r\nfj.b\r\n";
    Files files = GroupFiles(kGroup, kArticles, kStates.at(state));
    files[L"fj.a.flt"] = "+ high\r\n- low\r\n";
    files.insert(others.begin(), others.end());
    const std::string whole = files.at(file);
    Outcomes outcomes;
    for (std::size_t at = 0; at < (harm == "lost" ? 1 : whole.size()); ++at) {
        SCOPED_TRACE(at);
        machine.storage.files.clear();
        for (const auto& [each, bytes] : files)
            if (each != file || harm != "lost")
                FileOf(each) = each == file ? Damaged(bytes, harm, at) : bytes;
        outcomes.Add(Evening());
        ExpectOthersAlone(others, file);
    }
    return outcomes.Text();
}

TEST(Damaged, IsMetAsTheTableSays) {
    RefuseDialogs(true);
    for (const TableRow& row : ReadTable("damaged/damage.txt")) {
        SCOPED_TRACE(row.sentence);
        CheckOutcome(row, Play(row.sentence));
    }
}

}  // namespace
