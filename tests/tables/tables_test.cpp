// Plays the tables of this folder. Each row begins with new files, those of the group "g". "put NAME WORD..."
// gives a file its bytes, "and" adds to them; every other line is one of the commands below. What must come
// of it: what the command says, then each file that it changed, and "gone" for one that it removed.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>

#include "store/article_list.h"
#include "store/article_writer.h"
#include "store/cut_off_deletion.h"
#include "store/delete_read.h"
#include "store/group_changes.h"
#include "store/index.h"
#include "store/string_set.h"
#include "store/upgrade.h"
#include "subscribe/group_file.h"
#include "tests/support/file_faults.h"
#include "tests/support/temp_folder.h"
#include "tests/support/text_table.h"
#include "tests/tables/words.h"
#include "text/convert.h"
#include "text/jis.h"
#include "text/mime.h"

namespace {

using Files = std::map<std::string, std::string>;

struct Play {
    TempFolder folder;
    GroupStore store;
    ArticleList list;
    Files files;  // as they were when the table named them last
    std::string said;
    std::vector<Word> words;  // of the command, which is the first

    const wchar_t* Path() const { return folder.Path().c_str(); }
    const char* Text() const { return words[1].text.c_str(); }
    uint32_t Number(std::size_t place) const { return static_cast<uint32_t>(std::stoul(words[place].text)); }
};

void Say(Play& play, const std::string& what) {
    play.said += what + "\n";
}

void SayDone(Play& play, bool done) {
    Say(play, done ? "done" : "error " + std::to_string(GetLastError()));
}

void SayChanges(Play& play) {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(play.folder.Path()))
        files[entry.path().filename().string()] = play.folder.Read(entry.path().filename().wstring());
    for (const auto& [name, bytes] : files) {
        const auto before = play.files.find(name);
        if (before != play.files.end() && before->second == bytes) continue;
        for (const std::string& line : IndexLines(bytes))
            Say(play, name + " " + line);
    }
    for (const auto& [name, bytes] : play.files)
        if (files.count(name) == 0) Say(play, name + " gone");
    play.files = std::move(files);
}

void Put(Play& play) {
    const std::string& name = play.words[1].text;
    std::string& bytes = play.files[name];
    if (play.words[0].text == "put") bytes.clear();
    for (std::size_t i = 2; i < play.words.size(); ++i)
        bytes += BytesOf(play.words[i]);
    play.folder.Write(std::wstring(name.begin(), name.end()), bytes);
}

void Remove(Play& play) {
    std::filesystem::remove(play.folder.FilePath(ToWide(play.Text()).get()));
    play.files.erase(play.Text());
}

// append NUMBER HEAD-LINE... / BODY-LINE...
void Append(Play& play) {
    ArticleWriter writer;
    writer.store = &play.store;
    bool done = OpenIndex(play.store) && OpenLog(play.store) && BeginArticle(writer, play.Number(1));
    std::size_t i = 2;
    for (; play.words[i].isQuoted; ++i)
        done = done && AddHeaderLine(writer.head, play.words[i].text);
    done = done && FinishHead(writer);
    for (++i; i < play.words.size(); ++i)
        done = done && WriteBodyLine(writer, play.words[i].text);
    done = done && FinishBody(writer) && FinishArticle(writer);
    CloseDataFile(play.store.index);
    CloseDataFile(play.store.log);
    SayDone(play, done && WriteHeader(play.store));
}

void BringUp(Play& play) {
    const IndexState state = BringUpToDate(play.store);
    SayDone(play, state == IndexState::kReady);
    if (state == IndexState::kUnknownVersion) Say(play, "unknown version");
}

// What a run does with an index before its first article.
bool BeginRun(GroupStore& store) {
    const bool done = ReadHeader(store) && OpenIndex(store) && RefreshHeader(store);
    const ErrorKeeper error;
    CloseDataFile(store.index);
    return done;
}

bool CatchUpOnServer(GroupStore& store) {
    return ReadHeader(store) && WriteHeader(store);
}

void SetStatus(Play& play) {
    SayDone(play, SetStatusText(play.store, ToWide(play.Text()).get()) && WriteHeader(play.store));
}

void OpenList(Play& play) {
    SayDone(play,
            OpenArticleList(play.list, play.Path(), L"g") && BuildArticleList(play.list, play.Number(1)));
}

// The articles of a page, and the lengths from which the columns take their widths.
void LoadPage(Play& play) {
    ArticleList& list = play.list;
    if (!LoadPage(list, play.Number(1))) return SayDone(play, false);
    std::string rows = "articles";
    for (uint32_t i = 0; i < list.rowsInPage; ++i)
        rows += " " + std::to_string(list.page[i].articleNumber);
    Say(play, rows + ", " + std::to_string(LongestSubject(list)) + " and " +
                  std::to_string(LongestFrom(list)) + " bytes");
}

void SayGroups(Play& play) {
    GroupFile groups;
    if (!OpenGroupFile(groups, play.Path())) return SayDone(play, false);
    while (const wchar_t* name = NextGroupName(groups))
        Say(play, Quoted(ToNarrow(name).get()));
}

// group-name TEXT [LENGTH]: whether a folder whose path is so long takes its files
void SayGroupName(Play& play) {
    const uint32_t folder = play.words.size() > 2 ? play.Number(2) : 1;
    Say(play, IsFileName(ToWide(play.Text()).get(), folder) ? "yes" : "no");
}

// strings +TEXT -TEXT...: what the set holds when these were added and removed
void SayStrings(Play& play) {
    StringSet set;
    bool done = CreateStringSet(set);
    for (std::size_t i = 1; i < play.words.size(); ++i) {
        const char* text = play.words[i].text.c_str();
        done = text[0] == '+' ? AddString(set, text + 1) && done : RemoveString(set, text + 1) && done;
    }
    std::string contents = done ? "done" : "failed";
    StringSetIterator iterator = IterateStrings(set);
    while (const StringNode* node = NextString(iterator))
        contents += " " + Quoted(node->text);
    Say(play, contents);
}

// Each unit by its number.
void SayWide(Play& play) {
    std::string units;
    const WideText text = ToWide(play.Text());
    for (const wchar_t* unit = text.get(); *unit; ++unit)
        units += " " + std::to_string(*unit);
    Say(play, "units" + units);
}

void SayDate(Play& play) {
    char field[kDateSize];
    DateField(field, play.words[1].text);
    Say(play, Quoted({field, kDateSize}));
}

void SayEncodedWords(Play& play) {
    EncodedWordList list;
    EXPECT_TRUE(EncodeAsWords(list, play.Text()));
    for (const EncodedWord* word = list.first; word; word = word->next)
        Say(play, Quoted(word->text.get()));
    ReleaseEncodedWords(list);
}

using Command = std::function<void(Play&)>;

Command OnStore(bool (*operation)(GroupStore&)) {
    return [operation](Play& play) { SayDone(play, operation(play.store)); };
}

const std::map<std::string, Command> kCommands = {
    {"put", Put},
    {"and", Put},
    {"remove", Remove},
    {"append", Append},
    {"bring-up", BringUp},
    {"rebuild", OnStore(RebuildFromLog)},
    {"refilter", OnStore(Refilter)},
    {"mark-all", OnStore(MarkAllRead)},
    {"begin-run", OnStore(BeginRun)},
    {"catch-up", OnStore(CatchUpOnServer)},
    {"delete", OnStore(DeleteRead)},
    {"finish-deletion", [](Play& play) { SayDone(play, FinishDeletion(play.store)); }},
    {"status", SetStatus},
    {"open-list", OpenList},
    {"load-page", LoadPage},
    {"mark", [](Play& play) { SayDone(play, SetFlags(play.list, play.Number(1), kReadFlag)); }},
    {"select", [](Play& play) { play.list.currentInPage = play.Number(1); }},
    {"close-list", [](Play& play) { SayDone(play, CloseArticleList(play.list)); }},
    {"groups", SayGroups},
    {"group-name", SayGroupName},
    {"strings", SayStrings},
    {"wide", SayWide},
    {"date", SayDate},
    {"to-jis", [](Play& play) { Say(play, Quoted(TextToJis(play.Text()).get())); }},
    {"encode", SayEncodedWords},
};

// With "failing N" before it, the command's N-th call to the files fails.
void PlayCommand(Play& play) {
    const bool fails = play.words[0].text == "failing";
    const FileCalls calls(FileCall::kAny, fails ? ERROR_IO_DEVICE : 0,
                          fails ? static_cast<int>(play.Number(1)) : 1);
    if (fails) play.words.erase(play.words.begin(), play.words.begin() + 2);
    kCommands.at(play.words[0].text)(play);
}

class Tables : public testing::TestWithParam<const char*> {};

TEST_P(Tables, SayWhatComes) {
    for (const TableRow& row : ReadTable(GetParam())) {
        Play play;
        EXPECT_TRUE(SetNames(play.store, play.Path(), L"g"));
        for (const std::string& line : row.lines) {
            play.words = WordsOf(line);
            PlayCommand(play);
            SayChanges(play);
        }
        CheckOutcome(row, play.said);
    }
}

INSTANTIATE_TEST_SUITE_P(, Tables,
                         testing::Values("tables/text.txt", "tables/groups.txt", "tables/old_indexes.txt",
                                         "tables/deletion.txt"));

}  // namespace
