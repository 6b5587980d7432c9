// Every byte of a group's small files gone bad in turn, in every state that a start may find them in: the
// program starts, lists, reads, fetches, filters and deletes, reports an error where one is due, and leaves
// every other file alone.
#include <gmock/gmock.h>

#include "store/article_list.h"
#include "store/delete_read.h"
#include "store/group_changes.h"
#include "store/log.h"
#include "tests/faults/folder_state.h"
#include "tests/faults/operations.h"
#include "tests/faults/user.h"
#include "text/convert.h"

namespace {

using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;

const std::wstring kGroup = L"fj.a", kIdx = L"fj.a.idx", kNewIdx = L"fj.a.id~";

// A deletion keeps the first and the last.
const std::vector<Article> kArticles = {
    {1, "low0", 0, "one\r\n\r\n"}, {2, "low1", 1 | 2, "> two\r\n=\r\n"}, {3, "high2", 4, "\x82\xA0\r\n"}};
const std::vector<Article> kOfOther = {{7, "high7", 0, "seven\r\n"}};
const std::vector<Article> kOnServer = {{4, "four", 0, "four\r\n"}, {5, "five", 0, "five\r\n"}};

// What the program may say of damaged files: no such file, invalid data, no such record or name, a line that
// is too long.
const auto kKnownError = AnyOf(2, 13, 87, 234);
constexpr int kMostCalls = 20000;               // that a step may make
constexpr std::size_t kLargestBlock = 1 << 17;  // of memory, whatever a number in a file says

struct Scene {
    const char* name;
    GroupIs state;
    std::size_t indexHeader = 100, indexRecord = 92;  // bytes; 0: the articles are found in the log
};
constexpr Scene kScenes[] = {{"Current", GroupIs::kCurrent},
                             {"LostIndex", GroupIs::kWithoutIndex, 0, 0},
                             {"UpgradeCutOff", GroupIs::kUpgradeCutOff},
                             {"DeletionWithoutLog", GroupIs::kDeletionWithoutLog},
                             {"DeletionWithNewLog", GroupIs::kDeletionWithNewLog},
                             {"DeletionWithoutIndex", GroupIs::kDeletionWithoutIndex},
                             {"Version1", GroupIs::kVersion1, 0, 0},
                             {"Version2", GroupIs::kVersion2, 88, 64},
                             {"Version3", GroupIs::kVersion3, 92, 64},
                             {"Version4", GroupIs::kVersion4, 92, 84}};

enum class Harm { kFlipped, kZero, kHigh, kLineFeed, kCut, kDoubled, kLost };
constexpr const char* kHarms[] = {"flipped",           "zero",    "0x80", "a line feed",
                                  "cut off from here", "doubled", "lost"};

std::string Damaged(std::string bytes, Harm harm, std::size_t at) {
    if (harm == Harm::kFlipped) bytes[at] = static_cast<char>(~bytes[at]);
    if (harm == Harm::kZero) bytes[at] = '\0';
    if (harm == Harm::kHigh) bytes[at] = '\x80';
    if (harm == Harm::kLineFeed) bytes[at] = '\n';
    if (harm == Harm::kCut) bytes.resize(at);
    if (harm == Harm::kDoubled) bytes.insert(at, 1, bytes[at]);
    return bytes;
}

bool IsLog(const std::wstring& name) {
    return name.find(L".lo") != name.npos;
}
bool IsIndex(const std::wstring& name) {
    return name.find(L".id") != name.npos;
}

class DamagedTest : public testing::TestWithParam<Scene> {
  protected:
    DamagedTest() {
        RefuseDialogs();
        files = GroupFiles(kGroup, kArticles, scene.state);
        damaged = files;
        const Files read = {{L"fj.a.flt", "+ high\r\n- low\r\n"}, {L"group.dat", "fj.a\r\nfj.b\r\n"}};
        if (scene.state == GroupIs::kCurrent) damaged.insert(read.begin(), read.end());
        files.insert(read.begin(), read.end());
        files.merge(GroupFiles(L"fj.b", kOfOther, GroupIs::kCurrent));
        files.insert({{L"", ""},
                      {L"fj.b.flt", "+ high\r\n"},
                      {L"active.dat", "fj.a\r\nfj.b\r\n"},
                      {L"category.dat", "fj\r\n"},
                      {L"draft\\", ""},
                      {L"draft\\note.txt", "a draft"}});
    }

    void Run() {
        SCOPED_TRACE(Plain(file) + ", byte " + std::to_string(at) + " " + kHarms[static_cast<int>(harm)]);
        ++rows;
        machine.storage.files.clear();
        for (const auto& [name, bytes] : files)
            if (name != file || harm != Harm::kLost)
                FileOf(name) = name == file ? Damaged(bytes, harm, at) : bytes;
        started = Try("start", Start);
        ReadAll();
        ExpectUntouched();
        ExpectDueErrors();
        const Storage storage = machine.storage;
        const std::vector<std::string> shown = texts;
        for (const auto change : {&DamagedTest::Fetch, &DamagedTest::Filter, &DamagedTest::Delete}) {
            machine.storage = storage;
            (this->*change)();
            (void)Try("the next start", Start);
            ReadAll();
            for (const std::string& text : shown)
                if (change != &DamagedTest::Delete) EXPECT_THAT(texts, Contains(text));
            ExpectOthersAlone();
        }
    }

    // Whether it was done; else it gives a known error. What calls the system without end is stopped.
    template <class Operation>
    bool Try(const char* what, Operation operation) {
        int calls = 0;
        machine.largestBlock = 0;
        machine.fault = [&](std::string_view) -> DWORD { return ++calls < kMostCalls ? 0 : ERROR_TIMEOUT; };
        const std::size_t held = HeldByProgram();
        SetLastError(0);
        const Outcome outcome = operation();
        machine.fault = nullptr;
        EXPECT_LT(machine.largestBlock, kLargestBlock) << what;
        EXPECT_EQ(HeldByProgram(), held) << what;
        if (outcome.done) return true;
        const std::size_t number = outcome.told.find('(');
        error = number == std::string::npos ? 0 : std::atoi(outcome.told.c_str() + number + 1);
        EXPECT_THAT(error, kKnownError) << what << ": " << outcome.told;
        return false;
    }
    static Outcome Answer(bool done) { return {done, "(" + std::to_string(GetLastError()) + ")"}; }

    // Pages through the list as the subject view does, and opens and marks every article.
    void ReadAll() {
        texts.clear();
        listed = Try("read", [this] {
            ArticleList list;
            list.showRead = true;
            const Outcome outcome =
                Answer(OpenArticleList(list, kFolder.c_str(), kGroup.c_str()) && BuildArticleList(list, 2));
            for (uint32_t row = 0; outcome.done && row < list.visibleCount; ++row)
                if (row % 2 != 0 || LoadPage(list, row)) ReadRow(list, row);
            (void)CloseArticleList(list);
            return outcome;
        });
    }

    void ReadRow(ArticleList& list, uint32_t row) {
        const IndexRecord record = list.page[row % 2];
        list.currentInPage = row % 2;
        (void)ReadSelectedSubject(list);
        const WideText text = ReadArticle(list.store, record.logOffset, record.logLength);
        if (text) texts.emplace_back(ToNarrow(text.get()).get());
        const uint32_t wasUnread = ~record.flags & kReadFlag;
        EXPECT_TRUE(SetFlags(list, row, kReadFlag) && ClearFlags(list, row, wasUnread)) << GetLastError();
    }

    static std::string Content(const std::wstring& name) {
        const auto found = machine.storage.files.find(kFolder + name);
        return found == machine.storage.files.end() ? "" : found->second;
    }

    // An article that the damage spares is on the disk whatever happens, and is shown once the program has
    // started.
    void ExpectUntouched() {
        const std::string logs = Content(L"fj.a.log") + Content(L"fj.a.lo~");
        std::size_t number = 0, spared = 0, previous = 0, start = 0;
        for (const Article& article : IsCutOffDeletion() ? Unread(kArticles) : kArticles) {
            const std::string text = StoredText(article);
            const bool touched = IsLog(file) ? TouchesLog(previous, start, start + text.size())
                                             : IsIndex(file) && TouchesIndex(number);
            if (!IsLog(file) || !touched)
                EXPECT_THAT(logs, HasSubstr(text)) << "article " << number << " is gone";
            if (started && !touched)
                EXPECT_THAT(texts, Contains(text)) << "article " << number << " is not shown";
            spared += !touched;
            previous = start;
            start += text.size();
            ++number;
        }
        // What is cut off must not pass for an article.
        if (started && IsLog(file) && harm == Harm::kCut) EXPECT_EQ(texts.size(), spared);
    }

    bool IsCutOffDeletion() const { return scene.state >= GroupIs::kDeletionWithoutLog; }

    bool TouchesLog(std::size_t previous, std::size_t start, std::size_t end) const {
        if (harm == Harm::kLost) return true;
        // A deletion's new log that is longer than its new index says is indexed anew.
        const bool scanned = scene.indexRecord == 0 || (harm == Harm::kDoubled && IsCutOffDeletion());
        if (harm == Harm::kCut || (harm == Harm::kDoubled && !scanned)) return end > at;
        // In a log that is scanned, a separator that is none any more costs the article behind it too.
        return (scanned ? previous : start) <= at && at < end;
    }

    bool TouchesIndex(std::size_t number) const {
        constexpr std::size_t kVersionEnd = 4, kCount = 16, kCountEnd = 20, kPlace = 8, kPlaceEnd = 16;
        const std::size_t record = scene.indexHeader + scene.indexRecord * number;
        const bool inCount = kCount <= at && at < kCountEnd;
        if (scene.indexRecord == 0) return false;
        // The index that is whole has the articles, or the log has; but where the old index may be about the
        // new log, nothing shows that it is not.
        if (IsCutOffDeletion())
            return scene.state == GroupIs::kDeletionWithNewLog &&
                   (file == kIdx ? inCount : harm == Harm::kLost);
        if (harm == Harm::kLost) return false;
        // A header that counts more records than there are is reported as an error.
        if (harm == Harm::kCut) return true;
        // Another version, if it is one at all, is made anew from the log.
        if (harm == Harm::kDoubled) return at > 0 && record + scene.indexRecord > at;
        if (at < kVersionEnd) return false;
        return inCount || (record + kPlace <= at && at < record + kPlaceEnd);
    }

    // An index that ends before its last record is invalid data.
    void ExpectDueErrors() {
        if (scene.state != GroupIs::kCurrent || harm != Harm::kCut || file != kIdx) return;
        EXPECT_EQ(started, at >= scene.indexHeader);
        EXPECT_FALSE(listed);
        EXPECT_EQ(error, 13);
    }

    // What the records from number `first` on name.
    static std::string NamedBy(const std::string& index, std::size_t first, const std::string& log,
                               uint32_t without = 0) {
        std::string bytes;
        for (std::size_t i = first; index.size() >= 100 + (i + 1) * 92 && i < WordAt(index, 16); ++i) {
            const std::string record = index.substr(100 + i * 92, 92);
            const std::size_t start = std::min<std::size_t>(WordAt(record, 8), log.size());
            if (!(WordAt(record, 0) & without)) bytes += log.substr(start, WordAt(record, 12));
        }
        return bytes;
    }

    // The log only grows, what is counted stays, and what is new is counted; by an index that does not bear
    // its count out nothing is written.
    void Fetch() {
        const std::string index = Content(kIdx), log = Content(L"fj.a.log");
        const bool whole = index.size() >= 100 && WordAt(index, 0) == 5;
        const std::size_t counted = whole ? WordAt(index, 16) : 0;
        machine.server = [](const std::string& command) { return ReplyOf(kOnServer, command); };
        const bool fetched = Try("download", [] { return Download({kGroup}); });
        const std::string newIndex = Content(kIdx), newLog = Content(L"fj.a.log");
        if (!whole || 100 + counted * 92 > index.size()) {
            EXPECT_TRUE(!fetched && newIndex == index && newLog == log);
            if (whole) EXPECT_EQ(error, 13);
            return;
        }
        std::string due;
        for (const Article& article : kOnServer)
            if (WordAt(index, 4) < article.number) due += StoredText(article);
        const std::string named = NamedBy(newIndex, counted, newLog);
        EXPECT_EQ(newLog.substr(0, log.size()), log);
        EXPECT_EQ(newIndex.substr(100, counted * 92), index.substr(100, counted * 92));
        EXPECT_EQ(named, fetched ? due : due.substr(0, named.size()));
    }

    bool ChangeGroup(const char* what, bool (*change)(GroupStore&)) {
        return Try(what, [&] {
            GroupStore store;
            return Answer(SetNames(store, kFolder.c_str(), kGroup.c_str()) && change(store));
        });
    }

    void Filter() { (void)ChangeGroup("filter", Refilter); }

    // All is as it was, or what was unread is all there is.
    void Delete() {
        const std::string index = Content(kIdx), log = Content(L"fj.a.log");
        const bool deleted = ChangeGroup("delete", DeleteRead);
        if (!deleted) EXPECT_EQ(Content(kIdx), index);
        if (started) EXPECT_EQ(Content(L"fj.a.log"), deleted ? NamedBy(index, 0, log, kReadFlag) : log);
    }

    // Every file of others is there as it was, and none beside the group's own is new.
    void ExpectOthersAlone() {
        for (const auto& [name, bytes] : files)
            if (name.find(kGroup) != 0 && name != file) EXPECT_EQ(Content(name), bytes) << Plain(name);
        for (const auto& [path, bytes] : machine.storage.files) {
            const std::wstring name = path.substr(kFolder.size());
            // A damaged name is the name of another group.
            EXPECT_TRUE(files.count(name) || name.find(L"fj.a.") == 0 || file == L"group.dat") << Plain(name);
        }
    }

    const Scene& scene = GetParam();
    Files files;    // the whole data folder; an empty name is the folder itself
    Files damaged;  // those that go bad, one at a time
    // The row.
    std::wstring file;
    Harm harm = Harm::kLost;
    std::size_t at = 0;
    int rows = 0;

    bool started = false;
    bool listed = false;
    std::vector<std::string> texts;  // of the articles that could be read
    int error = 0;                   // what the last failure said
};

TEST_P(DamagedTest, EveryByteInEveryWay) {
    for (const auto& [name, bytes] : damaged) {
        file = name;
        harm = Harm::kLost;
        Run();
        for (at = 0; at < bytes.size() && !HasFailure(); ++at) {
            for (harm = Harm::kFlipped; harm != Harm::kLost;
                 harm = static_cast<Harm>(static_cast<int>(harm) + 1))
                Run();
        }
        at = 0;
    }
    std::printf("%s: %d rows\n", scene.name, rows);
}

INSTANTIATE_TEST_SUITE_P(Scenes, DamagedTest, testing::ValuesIn(kScenes),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
