// Every byte of a group's small files gone bad in turn: the program starts, lists, reads, fetches, filters
// and deletes, reports an error where one is due, and leaves every other file alone.
#include <gmock/gmock.h>

#include "store/article_list.h"
#include "store/delete_read.h"
#include "store/group_changes.h"
#include "store/log.h"
#include "tests/damaged/damage.h"
#include "tests/faults/folder_state.h"
#include "tests/faults/operations.h"
#include "tests/faults/user.h"
#include "text/convert.h"

namespace {

using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;

// What the program may say of damaged files: no such file, invalid data, no such record or name, a line that
// is too long.
const auto kKnownError = AnyOf(2, 13, 87, 234);
const std::vector<Article> kOnServer = {{4, "four", 0, "four\r\n"}, {5, "five", 0, "five\r\n"}};
constexpr int kMostCalls = 20000;               // that a step may make
constexpr std::size_t kLargestBlock = 1 << 17;  // of memory, whatever a number in a file says

class DamagedTest : public testing::TestWithParam<Scene> {
  protected:
    static void SetUpTestSuite() { RefuseDialogs(); }

    void Run(const DamageRow& damage) {
        SCOPED_TRACE(Describe(damage));
        row = damage;
        machine.storage.files.clear();
        for (const auto& [name, bytes] : files)
            FileOf(name) = name == row.file ? Damaged(bytes, row.harm, row.at) : bytes;
        if (row.harm == Harm::kLost) machine.storage.files.erase(kFolder + row.file);
        started = Try("start", Start);
        ReadAll();
        ExpectUntouched();
        ExpectDueErrors();
        const Storage storage = machine.storage;
        for (const auto change : {&DamagedTest::Fetch, &DamagedTest::Filter, &DamagedTest::Delete}) {
            machine.storage = storage;
            (this->*change)();
            (void)Try("the next start", Start);
            ReadAll();
            ExpectOthersAlone();
        }
    }

    // Whether it was done; else it gives a known error. Stops what calls the system without end.
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
    static Outcome Answer(bool done) {
        return {done, done ? "" : "(" + std::to_string(GetLastError()) + ")"};
    }

    // Pages through the list as the subject view does, and opens and marks every article.
    void ReadAll() {
        texts.clear();
        listed = Try("read", [&] {
            ArticleList list;
            list.showRead = true;
            const bool built =
                OpenArticleList(list, kFolder.c_str(), kDamagedGroup.c_str()) && BuildArticleList(list, 2);
            const Outcome outcome = Answer(built);
            for (uint32_t at = 0; built && at < list.visibleCount; ++at)
                if (at % 2 != 0 || LoadPage(list, at)) ReadRow(list, at);
            (void)CloseArticleList(list);
            return outcome;
        });
    }

    void ReadRow(ArticleList& list, uint32_t at) {
        const IndexRecord record = list.page[at % 2];
        list.currentInPage = at % 2;
        (void)ReadSelectedSubject(list);
        const WideText text = ReadArticle(list.store, record.logOffset, record.logLength);
        if (text) texts.emplace_back(ToNarrow(text.get()).get());
        const uint32_t wasUnread = ~record.flags & kReadFlag;
        EXPECT_TRUE(SetFlags(list, at, kReadFlag) && ClearFlags(list, at, wasUnread)) << GetLastError();
    }

    static std::string Content(const std::wstring& name) {
        const auto file = machine.storage.files.find(kFolder + name);
        return file == machine.storage.files.end() ? "" : file->second;
    }
    static std::string Read(const wchar_t* extension) { return Content(kDamagedGroup + extension); }

    // An article that the damage spares is on the disk whatever happens, and is shown once the program has
    // started.
    void ExpectUntouched() {
        const std::vector<Article> articles = SceneArticles(GetParam());
        const std::string logs = Read(L".log") + Read(L".lo~");
        std::size_t spared = 0;
        for (std::size_t i = 0; i < articles.size(); ++i) {
            const std::string text = StoredText(articles[i]);
            const bool touched = Touches(row, i);
            if (!IsLog(row.file) || !touched)
                EXPECT_THAT(logs, HasSubstr(text)) << "article " << i << " is gone";
            if (started && !touched) EXPECT_THAT(texts, Contains(text)) << "article " << i << " is not shown";
            spared += !touched;
        }
        // What is cut off must not pass for an article.
        if (started && IsLog(row.file) && row.harm == Harm::kCut) EXPECT_EQ(texts.size(), spared);
    }

    // An index that ends before its last record is invalid data.
    void ExpectDueErrors() {
        if (GetParam().state != GroupIs::kCurrent || row.harm != Harm::kCut || !IsIndex(row.file)) return;
        EXPECT_EQ(started, row.at >= 100);
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
        const std::string index = Read(L".idx"), log = Read(L".log");
        const bool whole = index.size() >= 100 && WordAt(index, 0) == 5;
        const std::size_t counted = whole ? WordAt(index, 16) : 0;
        machine.server = [](const std::string& command) { return ReplyOf(kOnServer, command); };
        const bool fetched = Try("download", [] { return Download({kDamagedGroup}); });
        const std::string newIndex = Read(L".idx"), newLog = Read(L".log");
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

    template <class Change>
    bool ChangeGroup(const char* what, Change change) {
        return Try(what, [&] {
            GroupStore store;
            return Answer(SetNames(store, kFolder.c_str(), kDamagedGroup.c_str()) && change(store));
        });
    }

    void Filter() { (void)ChangeGroup("filter", Refilter); }

    // All is as it was, or what was unread is all there is.
    void Delete() {
        const std::string index = Read(L".idx"), log = Read(L".log");
        const bool deleted = ChangeGroup("delete", DeleteRead);
        if (!deleted) EXPECT_EQ(Read(L".idx"), index);
        if (started) EXPECT_EQ(Read(L".log"), deleted ? NamedBy(index, 0, log, kReadFlag) : log);
    }

    // Every file of others is there as it was, and none beside the group's own is new.
    void ExpectOthersAlone() {
        for (const auto& [name, bytes] : files) {
            if (name.find(kDamagedGroup) != 0 && name != row.file)
                EXPECT_EQ(Content(name), bytes) << Plain(name);
        }
        for (const auto& [path, bytes] : machine.storage.files) {
            const std::wstring name = path.substr(kFolder.size());
            // A damaged name is the name of another group.
            if (row.file != L"group.dat")
                EXPECT_TRUE(files.count(name) || name.find(kDamagedGroup + L".") == 0)
                    << "new: " << Plain(name);
        }
    }

    const Files files = SceneFiles(GetParam());
    DamageRow row;
    bool started = false;
    bool listed = false;
    std::vector<std::string> texts;  // of the articles that could be read
    int error = 0;                   // what the last failure said
};

TEST_P(DamagedTest, EveryByte) {
    std::size_t done = 0;
    for (const DamageRow& damage : RowsOf(GetParam())) {
        Run(damage);
        ++done;
        if (testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count() > 12) break;
    }
    std::printf("%s: %u rows\n", GetParam().name, static_cast<unsigned>(done));
}

INSTANTIATE_TEST_SUITE_P(Scenes, DamagedTest, testing::ValuesIn(Scenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
