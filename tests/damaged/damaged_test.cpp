// Every byte of a group's small files gone bad in turn: the program starts, lists, reads, filters and
// deletes, tells an error where one is due, and leaves every other file alone. A sample of the table, or all
// of it when PELNOR_DAMAGE is set; tools/damage_loop sets it.
#include <gmock/gmock.h>

#include <cstdlib>

#include "store/article_list.h"
#include "store/data_folder.h"
#include "store/delete_read.h"
#include "store/index.h"
#include "store/log.h"
#include "subscribe/group_file.h"
#include "tests/damaged/scenes.h"
#include "tests/damaged/watch.h"
#include "text/convert.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

// What the program may say of damaged files: no such file, no memory (for a count of records beyond reason),
// invalid data, no such record or name, a line that is too long.
const auto kKnownError = testing::AnyOf(2u, 8u, 13u, 87u, 234u);

class DamagedTest : public testing::TestWithParam<Scene> {
  protected:
    DamagedTest() {
        EXPECT_TRUE(MakeDraftFolder(folder.Path().c_str()));
        for (const auto& [name, bytes] : OtherFiles())
            folder.Write(name, bytes);
    }

    void Run(const DamageRow& damage) {
        SCOPED_TRACE(Describe(damage));
        watch.Begin(Describe(damage));
        row = damage;
        PlaceDamage(folder, row);
        started = Try("start", [&] { return Start(); });
        ReadAll();
        ExpectUntouched();
        ExpectDueErrors();
        Try("filter",
            [&] { return SetNames(store, folder.Path().c_str(), kDamagedGroup.c_str()) && Refilter(store); });
        Delete();
        Try("the next start", [&] { return Start(); });
        ReadAll();
        ExpectOthersAlone(folder, row);
    }

    template <class Operation>
    bool Try(const char* what, Operation operation) {
        SetLastError(0);
        if (operation()) return true;
        error = GetLastError();
        EXPECT_THAT(error, kKnownError) << what;
        return false;
    }

    // What a start does with the data folder.
    bool Start() {
        GroupFile groups;
        const wchar_t* path = folder.Path().c_str();
        if (!MakeDraftFolder(path) || !MakeListFiles(path) || !OpenGroupFile(groups, path)) return false;
        while (const wchar_t* name = NextGroupName(groups)) {
            GroupStore group;
            if (!SetNames(group, path, name) || !FinishDeletion(group)) return false;
            if (BringUpToDate(group) != IndexState::kReady) return false;
        }
        return true;
    }

    // Pages through the list as the subject view does, and opens every article.
    void ReadAll() {
        ArticleList list;
        list.showRead = true;
        texts.clear();
        listed = Try("open",
                     [&] { return OpenArticleList(list, folder.Path().c_str(), kDamagedGroup.c_str()); }) &&
                 Try("list", [&] { return BuildArticleList(list, 2); });
        for (uint32_t at = 0; listed && at < list.visibleCount; ++at) {
            if (at % 2 == 0 && !Try("page", [&] { return LoadPage(list, at); })) break;
            ReadRow(list, at);
        }
        Try("close", [&] { return CloseArticleList(list); });
    }

    void ReadRow(ArticleList& list, uint32_t at) {
        const IndexRecord record = list.page[at % 2];
        WideText text;
        list.currentInPage = at % 2;
        Try("subject", [&] { return ReadSelectedSubject(list) != nullptr; });
        const bool read = Try("read", [&] {
            text = ReadArticle(list.store, record.logOffset, record.logLength);
            return text != nullptr;
        });
        if (read) texts.emplace_back(ToNarrow(text.get()).get());
        const uint32_t wasUnread = ~record.flags & 1;
        Try("mark", [&] { return SetFlags(list, at, 1) && ClearFlags(list, at, wasUnread); });
    }

    std::string Read(const wchar_t* extension) const { return folder.Read(kDamagedGroup + extension); }

    // An article that the damage spares is on the disk whatever happens, and is shown once the program has
    // started.
    void ExpectUntouched() {
        const std::string logs = Read(L".log") + Read(L".lo~");
        const bool damagesLog = IsLog(row.file);
        std::size_t spared = 0;
        for (std::size_t i = 0; i < row.scene->articles.size(); ++i) {
            const std::string& text = row.scene->articles[i].text;
            const bool touched = Touches(row, i);
            if (!damagesLog || !touched) EXPECT_THAT(logs, HasSubstr(text)) << "article " << i << " is gone";
            if (started && !touched) EXPECT_THAT(texts, Contains(text)) << "article " << i << " is not shown";
            spared += !touched;
        }
        // What is cut off must not pass for an article.
        if (started && damagesLog && row.harm == Harm::kCut) EXPECT_EQ(texts.size(), spared);
    }

    // An index that ends before its last record is invalid data.
    void ExpectDueErrors() {
        if (!row.scene->onlyIndex || row.harm != Harm::kCut || !IsIndex(row.file)) return;
        EXPECT_EQ(started, row.at >= 4);
        EXPECT_FALSE(listed);
        EXPECT_EQ(error, 13u);
    }

    // The log's bytes that the unread records name.
    std::string UnreadBytes(const std::string& index, const std::string& log) const {
        std::string bytes;
        for (std::size_t at = 100; at + 92 <= index.size() && at < 100 + 92 * std::size_t{WordIn(index, 16)};
             at += 92) {
            const std::size_t start = std::min<std::size_t>(WordIn(index, at + 8), log.size());
            if (!(index[at] & 1)) bytes += log.substr(start, WordIn(index, at + 12));
        }
        return bytes;
    }

    // All is as it was, or what was unread is all there is.
    void Delete() {
        const std::string index = Read(L".idx"), log = Read(L".log");
        const bool deleted = Try("delete", [&] { return DeleteRead(store); });
        if (!deleted) EXPECT_EQ(Read(L".idx"), index);
        if (started) EXPECT_EQ(Read(L".log"), deleted ? UnreadBytes(index, log) : log);
    }

    TempFolder folder;
    GroupStore store;
    DamageRow row;
    bool started = false;
    bool listed = false;
    std::vector<std::string> texts;  // of the articles that could be read
    DWORD error = 0;                 // what the last failure said
    Watch watch;
};

TEST_P(DamagedTest, EveryByte) {
    const std::size_t done = ForEachDamage(GetParam(), 50, [&](const DamageRow& damage) {
        Run(damage);
        return FailureCount() < 12;  // enough to see what they have in common
    });
    std::printf("%u rows\n", static_cast<unsigned>(done));
}

INSTANTIATE_TEST_SUITE_P(Scenes, DamagedTest, testing::ValuesIn(Scenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
