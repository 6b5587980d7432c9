// Each operation that writes, with its 1st, 2nd, 3rd ... call to the system, sector written or allocation
// failing, until a run meets no fault; and with the program ending at every state of the storage on the way.
// Then a clean start: whatever a reader had is still there.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tests/faults/folder_state.h"
#include "tests/faults/operations.h"

namespace {

constexpr uint32_t kReadFlag = 1;

enum class FaultKind {
    kCallFails,  // the N-th call, with error 1117
    kDiskFull,   // the N-th sector and all behind it, with 112
    kWriteTorn,  // the N-th sector alone
    kNoBlock,    // the N-th allocation
    kNoMemory,   // the N-th allocation and all behind it
    kCrash,      // the process ends at the N-th state of the storage
};
constexpr FaultKind kFailures[] = {FaultKind::kCallFails, FaultKind::kDiskFull, FaultKind::kWriteTorn,
                                   FaultKind::kNoBlock, FaultKind::kNoMemory};

const char* NameOf(FaultKind kind) {
    constexpr const char* kNames[] = {"a call fails", "disk full",     "torn write",
                                      "no block",     "out of memory", "crash"};
    return kNames[static_cast<int>(kind)];
}

bool IsOfMemory(FaultKind kind) {
    return kind == FaultKind::kNoBlock || kind == FaultKind::kNoMemory;
}

bool Concerns(FaultKind kind, std::string_view call) {
    if (IsOfMemory(kind)) return call == kMemory;
    if (kind == FaultKind::kCallFails) return call != kMemory && call != kSector;
    return call == kSector;
}

DWORD NumberOf(FaultKind kind) {
    if (IsOfMemory(kind)) return ERROR_NOT_ENOUGH_MEMORY;
    return kind == FaultKind::kCallFails ? ERROR_IO_DEVICE : ERROR_DISK_FULL;
}

struct Figures {
    int faults = 0;
    int crashes = 0;
    int violations = 0;
};

// One fault and how the program met it.
struct Attempt {
    FaultKind kind = FaultKind::kCrash;
    int at = 0;
    std::string_view call = {};  // the first that failed
    Outcome outcome = {};
};

class FaultLoopTest : public testing::TestWithParam<Operation> {
  protected:
    // What stands before the operation, on its way, and behind it when nothing fails.
    void RunWithoutFault() {
        machine = {};
        FileOf(L"");
        operation_.prepare();
        const Storage prepared = machine.storage;
        ASSERT_TRUE(Starts() && LoadKeywords());
        before_ = ReadFolder(machine.storage, kGroups);
        machine.storage = start_ = prepared;
        std::vector<Storage>& images = images_;
        machine.fault = [&images](std::string_view) -> DWORD {
            if (images.empty() || !(images.back() == machine.storage)) images.push_back(machine.storage);
            return 0;
        };
        const Outcome outcome = operation_.run();
        machine.fault = nullptr;
        ASSERT_TRUE(outcome.done) << outcome.told;
        ASSERT_TRUE(Starts() && LoadKeywords());
        after_ = ReadFolder(machine.storage, kGroups);
        ASSERT_TRUE(before_.problems.empty() && after_.problems.empty());
    }

    bool RunWithFault(FaultKind kind, int at) {
        Attempt attempt{kind, at};
        int count = 0;
        machine.storage = start_;
        const bool lasts = kind == FaultKind::kDiskFull || kind == FaultKind::kNoMemory;
        machine.fault = [&](std::string_view call) -> DWORD {
            if (!Concerns(kind, call) || ++count < at || (count > at && !lasts)) return 0;
            if (count == at) attempt.call = call;
            return NumberOf(kind);
        };
        const std::size_t held = HeldByProgram();
        attempt.outcome = operation_.run();
        machine.fault = nullptr;
        Require(HeldByProgram() == held, "something was not given back");
        CheckNextStart(attempt);
        if (count >= at) ++figures_.faults;
        return count >= at;
    }

    void CrashAt(std::size_t state) {
        machine.storage = images_[state];
        CheckNextStart({FaultKind::kCrash, static_cast<int>(state)});
        ++figures_.crashes;
    }

    static bool Starts() {
        const Outcome outcome = Start();
        return outcome.done && outcome.told.empty();
    }

    void CheckNextStart(const Attempt& attempt) {
        Require(Starts() && LoadKeywords(), "the next start failed");
        const FolderState state = ReadFolder(machine.storage, kGroups);
        for (const std::string& problem : state.problems)
            problems_.push_back(problem);
        CheckFolder(state, attempt);
        Note(attempt);
    }

    void CheckFolder(const FolderState& state, const Attempt& attempt) {
        bool complete = true;
        const Outcome& outcome = attempt.outcome;
        // A keyword file that cannot be read to its end is taken as it was read so far.
        comparedFlags_ = attempt.call == "ReadFile" ? kReadFlag : ~0u;
        for (const std::wstring& group : kGroups)
            complete = CheckGroup(group, state) && complete;
        complete = CheckFiles(state, attempt) && complete;
        CheckCounts(state, !outcome.done);
        if (attempt.kind == FaultKind::kCrash) return;
        Require(complete || !outcome.done || operation_.maySaveInVain, "said to be done, but is not");
        const std::string number = "(" + std::to_string(NumberOf(attempt.kind)) + ")";
        const bool told = outcome.told.find(number) != std::string::npos ||
                          (IsOfMemory(attempt.kind) && outcome.told.find("メモリ") != std::string::npos) ||
                          (UsesNetwork(attempt.call) && !outcome.told.empty());
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

    bool CheckFiles(const FolderState& state, const Attempt& attempt) {
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
            // A setting that cannot be read counts as missing, and the sheet's OK stores its default.
            const bool unread = attempt.call == "RegQueryValueExW" && name.find(L"HKCU\\") == 0;
            Require(is == due || is == was || cut || unread,
                    Plain(name) + " is neither the old nor the new one");
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
        Require(OpenEachGroup() && areTrue(ReadFolder(machine.storage, kGroups)), "the counts stay wrong");
    }

    void Require(bool holds, const std::string& problem) {
        if (!holds) problems_.push_back(problem);
    }

    void Note(const Attempt& attempt) {
        for (const std::string& problem : std::exchange(problems_, {})) {
            ++figures_.violations;
            ADD_FAILURE() << NameOf(attempt.kind) << " at " << attempt.at << " " << attempt.call << ": "
                          << problem << (attempt.outcome.done ? " [done]" : " [failed]");
        }
    }

    const Operation& operation_ = GetParam();
    Figures figures_;
    Storage start_;
    std::vector<Storage> images_;
    FolderState before_, after_;
    uint32_t comparedFlags_ = 0;
    std::vector<std::string> problems_;
};

TEST_P(FaultLoopTest, NothingIsTakenFromTheReader) {
    constexpr int kMostFaults = 5000;  // no operation makes as many calls
    ASSERT_NO_FATAL_FAILURE(RunWithoutFault());
    for (const FaultKind kind : kFailures) {
        int at = 1;
        while (at < kMostFaults && RunWithFault(kind, at))
            ++at;
        EXPECT_LT(at, kMostFaults) << "never ran through";
    }
    for (std::size_t state = 0; state < images_.size(); ++state)
        CrashAt(state);
    std::printf("%-66s %5d faults %5d crashes %4d violations\n", operation_.name, figures_.faults,
                figures_.crashes, figures_.violations);
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultLoopTest, testing::ValuesIn(Operations()),
                         [](const testing::TestParamInfo<Operation>& operation) {
                             std::string name = operation.param.name;
                             const auto other = [](char c) {
                                 return !std::isalnum(static_cast<unsigned char>(c));
                             };
                             std::replace_if(name.begin(), name.end(), other, '_');
                             return name;
                         });

}  // namespace
