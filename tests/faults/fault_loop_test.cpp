// Each operation that writes, with its 1st, 2nd, 3rd ... call to the system, sector written or allocation
// failing, until a run meets no fault; and with the program ending at every state of the storage on the way.
// Then a clean start: whatever a reader had is still there.
#include <algorithm>
#include <set>

#include "tests/faults/folder_state.h"
#include "tests/faults/operations.h"

namespace {

constexpr uint32_t kReadFlag = 1;

struct Fault {
    const char* name;
    std::string_view call;  // what it meets; none: whatever the others do not
    bool lasts;             // the N-th and all behind it
    DWORD number;
};
constexpr Fault kFaults[] = {{"a call fails", "", false, ERROR_IO_DEVICE},
                             {"disk full", kSector, true, ERROR_DISK_FULL},
                             {"torn write", kSector, false, ERROR_DISK_FULL},
                             {"no block", kMemory, false, ERROR_NOT_ENOUGH_MEMORY},
                             {"out of memory", kMemory, true, ERROR_NOT_ENOUGH_MEMORY}};
constexpr Fault kCrash = {"crash", "", true, 0};

bool Meets(const Fault& fault, std::string_view call) {
    return call == fault.call || (fault.call.empty() && call != kSector && call != kMemory);
}

// One fault and how the program met it.
struct Attempt {
    const Fault& fault;
    int at = 0;
    std::string_view call = {};  // the first that failed
    Outcome outcome = {};
};

class FaultLoopTest : public testing::TestWithParam<Operation> {
  protected:
    static bool Starts() {
        const Outcome outcome = Start();
        return outcome.done && outcome.told.empty();
    }

    // What stands before the operation, on its way, and behind it when nothing fails.
    void RunWithoutFault() {
        machine = {};
        FileOf(L"");
        operation_.prepare();
        start_ = machine.storage;
        ASSERT_TRUE(Starts() && LoadKeywords());
        before_ = ReadFolder(machine.storage, kGroups);
        machine.storage = start_;
        machine.fault = [this](std::string_view) -> DWORD {
            if (images_.empty() || !(images_.back() == machine.storage)) images_.push_back(machine.storage);
            return 0;
        };
        const Outcome outcome = operation_.run();
        machine.fault = nullptr;
        ASSERT_TRUE(outcome.done) << outcome.told;
        ASSERT_TRUE(Starts() && LoadKeywords());
        after_ = ReadFolder(machine.storage, kGroups);
        ASSERT_TRUE(before_.problems.empty() && after_.problems.empty());
    }

    // False when the run met no fault.
    bool RunWithFault(const Fault& fault, int at) {
        Attempt attempt{fault, at};
        int count = 0;
        machine.storage = start_;
        machine.fault = [&](std::string_view call) -> DWORD {
            if (!Meets(fault, call) || ++count < at || (count > at && !fault.lasts)) return 0;
            if (count == at) attempt.call = call;
            return fault.number;
        };
        const std::size_t held = HeldByProgram();
        attempt.outcome = operation_.run();
        machine.fault = nullptr;
        Require(HeldByProgram() == held, "something was not given back");
        CheckNextStart(attempt);
        return count >= at;
    }

    void CheckNextStart(const Attempt& attempt) {
        Require(Starts() && LoadKeywords(), "the next start failed");
        const FolderState state = ReadFolder(machine.storage, kGroups);
        problems_.insert(problems_.end(), state.problems.begin(), state.problems.end());
        CheckFolder(state, attempt);
        for (const std::string& problem : std::exchange(problems_, {})) {
            ADD_FAILURE() << attempt.fault.name << " at " << attempt.at << " " << attempt.call << ": "
                          << problem << (attempt.outcome.done ? " [done]" : " [failed]");
        }
    }

    void CheckFolder(const FolderState& state, const Attempt& attempt) {
        const Outcome& outcome = attempt.outcome;
        // A keyword file that cannot be read to its end is taken as it was read so far.
        comparedFlags_ = attempt.call == "ReadFile" ? kReadFlag : ~0u;
        bool complete = true;
        for (const std::wstring& group : kGroups)
            complete = CheckGroup(group, state) && complete;
        complete = CheckFiles(state, attempt) && complete;
        CheckCounts(state, attempt);
        if (&attempt.fault == &kCrash) return;
        Require(complete || !outcome.done || operation_.maySaveInVain, "said to be done, but is not");
        const std::string number = "(" + std::to_string(attempt.fault.number) + ")";
        const bool told = outcome.told.find(number) != std::string::npos ||
                          (attempt.call == kMemory && outcome.told.find("メモリ") != std::string::npos) ||
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
            Require(HoldsSame(was, number, article) || HoldsSame(due, number, article),
                    where + "article " + std::to_string(number) + " has changed");
        }
        Require(is.progress == was.progress || (is.progress == due.progress && sameArticles) ||
                    was.articles.size() >= due.articles.size(),
                where + "counts as fetched what is not there");
        Require(is.progress == was.progress || is.progress == due.progress, where + "progress is neither");
        return sameArticles && is.progress == due.progress;
    }

    bool AreSame(const Articles& some, const Articles& others) const {
        const auto same = [this](const auto& one, const auto& other) {
            return one.first == other.first && IsSame(one.second, other.second);
        };
        return some.size() == others.size() && std::equal(some.begin(), some.end(), others.begin(), same);
    }

    bool IsSame(const ArticleState& one, const ArticleState& other) const {
        return one.text == other.text && ((one.flags ^ other.flags) & comparedFlags_) == 0;
    }

    bool HoldsSame(const GroupState& group, uint32_t number, const ArticleState& article) const {
        const auto found = group.articles.find(number);
        return found != group.articles.end() && IsSame(article, found->second);
    }

    bool CheckFiles(const FolderState& state, const Attempt& attempt) {
        bool complete = true;
        std::set<std::wstring> names;
        for (const FolderState* folder : {&before_, &after_})
            for (const auto& [name, bytes] : folder->files)
                names.insert(name);
        for (const std::wstring& name : names) {
            const std::string is = Content(state, name), was = Content(before_, name),
                              due = Content(after_, name);
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

    static std::string Content(const FolderState& state, const std::wstring& name) {
        const auto found = state.files.find(name);
        return found == state.files.end() ? "" : found->second;
    }

    // Where a mark reached the disk and the header did not, the old count stands until the group is opened.
    void CheckCounts(const FolderState& state, const Attempt& attempt) {
        const auto areTrue = [](const FolderState& folder) {
            return std::all_of(folder.groups.begin(), folder.groups.end(),
                               [](const auto& group) { return group.second.countsAreTrue; });
        };
        if (areTrue(state)) return;
        Require(&attempt.fault == &kCrash || !attempt.outcome.done,
                "the header does not count what the records say");
        Require(OpenEachGroup() && areTrue(ReadFolder(machine.storage, kGroups)), "the counts stay wrong");
    }

    void Require(bool holds, const std::string& problem) {
        if (!holds) problems_.push_back(problem);
    }

    const Operation& operation_ = GetParam();
    Storage start_;
    std::vector<Storage> images_;  // each state that the storage went through
    FolderState before_, after_;
    uint32_t comparedFlags_ = 0;
    std::vector<std::string> problems_;
};

TEST_P(FaultLoopTest, NothingIsTakenFromTheReader) {
    constexpr int kMostFaults = 5000;  // no operation makes as many calls
    ASSERT_NO_FATAL_FAILURE(RunWithoutFault());
    int faults = 0, crashes = 0;
    for (const Fault& fault : kFaults) {
        int at = 1;
        while (at < kMostFaults && RunWithFault(fault, at))
            ++at;
        EXPECT_LT(at, kMostFaults) << "never ran through";
        faults += at - 1;
    }
    for (const Storage& image : images_) {
        machine.storage = image;
        CheckNextStart({kCrash, ++crashes});
    }
    std::printf("%-66s %5d faults %5d crashes\n", operation_.name, faults, crashes);
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultLoopTest, testing::ValuesIn(Operations()));

}  // namespace
