// Each operation that writes, with its 1st, 2nd, 3rd ... call to the system or allocation failing, or the
// process ending there, until a run meets no fault; then a clean start. Whatever a reader had is still there.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "tests/faults/faults.h"
#include "tests/faults/folder_state.h"
#include "tests/faults/operations.h"

namespace {

constexpr int kMostFaults = 5000;  // no operation makes as many calls
constexpr int kSampleStride = 11;
constexpr uint32_t kReadFlag = 1;

struct Figures {
    int faults = 0;
    int crashes = 0;
    int violations = 0;
};

DWORD HandleCount() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
}

std::string Plain(const std::wstring& name) {
    return std::string(name.begin(), name.end());
}

// One operation with what stands before it and what stands after it when nothing fails.
class Loop {
  public:
    Loop(const Operation& operation, Figures& figures) : operation_(operation), figures_(figures) {}

    // Every `stride`-th place, and a first one that differs between operations and kinds of fault.
    void Run(int stride) {
        Prepare();
        ASSERT_TRUE(StartProgram(folder_) && LoadKeywords(folder_));
        before_ = ReadFolder(folder_, kGroups);
        Prepare();
        const Outcome outcome = operation_.run(folder_);
        ASSERT_TRUE(outcome.done) << outcome.told;
        ASSERT_TRUE(StartProgram(folder_) && LoadKeywords(folder_));
        after_ = ReadFolder(folder_, kGroups);
        ASSERT_TRUE(before_.problems.empty() && after_.problems.empty());
        ASSERT_GE(after_.files.size(), before_.files.size());
        for (const FaultKind kind : kAllKinds) {
            const int first =
                stride == 1 ? 1 : 1 + static_cast<int>((figures_.faults + figures_.crashes) % stride);
            bool happened = true;
            for (int at = first; happened && at < kMostFaults; at += stride)
                happened = RunWithFault(kind, at);
            EXPECT_FALSE(happened) << operation_.name << " never ran through";
        }
    }

  private:
    void Prepare() {
        for (const std::wstring& name : FileNames(folder_))
            EXPECT_TRUE(DeleteFileW(folder_.FilePath(name).c_str())) << Plain(name) << " is still open";
        operation_.prepare(folder_);
        TakeBoxes();
    }

    bool RunWithFault(FaultKind kind, int at) {
        Prepare();
        problems_.clear();
        const int blocks = HeldBlocks();
        const DWORD handles = HandleCount();
        StartFault(kind, at);
        const Outcome outcome = operation_.run(folder_);
        const bool happened = EndFault();
        Require(HeldBlocks() == blocks, "memory was not given back");
        Require(HandleCount() <= handles, "a handle was not given back");
        Require(StartProgram(folder_) && LoadKeywords(folder_), "the next start failed");
        const FolderState state = ReadFolder(folder_, kGroups);
        for (const std::string& problem : state.problems)
            problems_.push_back(problem);
        CheckFolder(state, kind, outcome);
        Note(kind, at, outcome, happened);
        return happened;
    }

    void CheckFolder(const FolderState& state, FaultKind kind, const Outcome& outcome) {
        bool complete = true;
        // A keyword file that cannot be read to its end is taken as it was read so far.
        comparedFlags_ = kind == FaultKind::kCallFails ? kReadFlag : ~0u;
        for (const std::wstring& group : kGroups)
            complete = CheckGroup(group, state) && complete;
        complete = CheckFiles(state) && complete;
        const bool mayCountWrongly = EndsProcess(kind) || !outcome.done;
        CheckCounts(state, mayCountWrongly);
        if (EndsProcess(kind)) return;
        Require(complete || !outcome.done || operation_.maySaveInVain, "said to be done, but is not");
        const std::string number = "(" + std::to_string(NumberOf(kind)) + ")";
        const bool told = outcome.told.find(number) != std::string::npos ||
                          (IsOfMemory(kind) && outcome.told.find("メモリ") != std::string::npos);
        Require(outcome.done || told || outcome.shows, "failed without its number: " + outcome.told);
    }

    // Whether the group is as if nothing had failed.
    bool CheckGroup(const std::wstring& name, const FolderState& state) {
        const GroupState& is = state.groups.at(name);
        const GroupState& was = before_.groups.at(name);
        const GroupState& due = after_.groups.at(name);
        const std::string where = Plain(name) + ": ";
        const bool sameArticles = AreSame(is.articles, due.articles);
        for (const auto& [number, article] : was.articles) {
            const bool lost = !is.articles.count(number);
            Require(!lost || sameArticles, where + "article " + std::to_string(number) + " is lost");
        }
        for (const auto& [number, article] : is.articles) {
            Require(IsOneOf(article, Find(was, number), Find(due, number)),
                    where + "article " + std::to_string(number) + " has changed");
        }
        Require(is.progress == was.progress || (is.progress == due.progress && sameArticles) ||
                    was.articles.size() >= due.articles.size(),
                where + "counts as fetched what is not there");
        Require(is.progress == was.progress || is.progress == due.progress, where + "progress is neither");
        return sameArticles && is.progress == due.progress;
    }

    bool AreSame(const std::map<uint32_t, ArticleState>& some,
                 const std::map<uint32_t, ArticleState>& others) const {
        const auto same = [this](const auto& one, const auto& other) {
            return one.first == other.first && IsSame(one.second, other.second);
        };
        return some.size() == others.size() && std::equal(some.begin(), some.end(), others.begin(), same);
    }

    bool IsSame(const ArticleState& one, const ArticleState& other) const {
        return one.text == other.text && ((one.flags ^ other.flags) & comparedFlags_) == 0;
    }

    static const ArticleState* Find(const GroupState& group, uint32_t number) {
        const auto found = group.articles.find(number);
        return found == group.articles.end() ? nullptr : &found->second;
    }

    bool IsOneOf(const ArticleState& article, const ArticleState* was, const ArticleState* due) const {
        return (was && IsSame(article, *was)) || (due && IsSame(article, *due));
    }

    bool CheckFiles(const FolderState& state) {
        bool complete = true;
        std::set<std::wstring> names;
        for (const FolderState* folder : {&before_, &after_})
            for (const auto& [name, bytes] : folder->files)
                names.insert(name);
        for (const std::wstring& name : names) {
            const std::string due = Content(after_, name);
            const std::string is = Content(state, name), was = Content(before_, name);
            if (name == L"group.dat") {
                complete = CheckSubscriptions(Lines(is), Lines(was), Lines(due)) && complete;
                continue;
            }
            const bool cut = operation_.listsMayBeCut && due.compare(0, is.size(), is) == 0 &&
                             name.find(L".dat") != name.npos;
            Require(is == due || is == was || cut, Plain(name) + " is neither the old nor the new one");
            complete = complete && is == due;
        }
        return complete;
    }

    // Their order is not the reader's.
    bool CheckSubscriptions(const std::set<std::string>& is, const std::set<std::string>& was,
                            const std::set<std::string>& due) {
        for (const std::string& group : was)
            Require(is.count(group) || !due.count(group), group + " is no longer subscribed");
        for (const std::string& group : is)
            Require(was.count(group) || due.count(group), group + " was never subscribed");
        return is == due;
    }

    static std::set<std::string> Lines(const std::string& text) {
        std::set<std::string> lines;
        for (size_t start = 0, end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
            lines.insert(text.substr(start, end - start));
        return lines;
    }

    static std::string Content(const FolderState& state, const std::wstring& name) {
        const auto found = state.files.find(name);
        return found == state.files.end() ? "" : found->second;
    }

    // A run that was cut off between a mark and the header leaves an old count until the group is opened.
    void CheckCounts(const FolderState& state, bool mayBeWrong) {
        const auto areTrue = [](const FolderState& folder) {
            for (const auto& [name, group] : folder.groups)
                if (!group.countsAreTrue) return false;
            return true;
        };
        if (areTrue(state)) return;
        Require(mayBeWrong, "the header does not count what the records say");
        Require(OpenEachGroup(folder_) && areTrue(ReadFolder(folder_, kGroups)), "the counts stay wrong");
    }

    void Require(bool holds, const std::string& problem) {
        if (!holds) problems_.push_back(problem);
    }

    void Note(FaultKind kind, int at, const Outcome& outcome, bool happened) {
        if (happened) ++(EndsProcess(kind) ? figures_.crashes : figures_.faults);
        if (problems_.empty()) return;
        ++figures_.violations;
        for (const std::string& problem : problems_) {
            ADD_FAILURE() << operation_.name << ", " << NameOf(kind) << " at " << at << ": " << problem
                          << (outcome.done ? " [done]" : " [failed]");
        }
    }

    const Operation& operation_;
    Figures& figures_;
    const RegistryGuard registry_;
    const TempFolder folder_;
    FolderState before_, after_;
    uint32_t comparedFlags_ = 0;
    std::vector<std::string> problems_;
};

TEST(FaultLoopTest, NothingIsTakenFromTheReader) {
    const bool all = std::getenv("PELNOR_ALL_FAULTS") != nullptr;
    const char* only = std::getenv("PELNOR_FAULTS_OF");
    Figures figures;
    int operations = 0;
    for (const Operation& operation : Operations()) {
        if (only && std::string(operation.name).find(only) == std::string::npos) continue;
        const Figures sofar = figures;
        const DWORD start = GetTickCount();
        Loop(operation, figures).Run(all ? 1 : kSampleStride);
        ++operations;
        printf("%-66s %5d faults %5d crashes %4d violations %6lu ms\n", operation.name,
               figures.faults - sofar.faults, figures.crashes - sofar.crashes,
               figures.violations - sofar.violations, GetTickCount() - start);
    }
    printf("%d operations, %d faults, %d crashes, %d violations\n", operations, figures.faults,
           figures.crashes, figures.violations);
}

}  // namespace
