// Each operation that writes, with its 1st, 2nd, 3rd ... call to the system, sector written or allocation
// failing, until a run meets no fault; and with the program ending at every state of the storage on the way.
// Then a clean start: whatever a reader had is still there.
#include <gtest/gtest.h>

#include <algorithm>

#include "store/record.h"
#include "tests/faults/operations.h"

namespace {

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

bool CountsAreTrue(const FolderState& folder) {
    return std::all_of(folder.groups.begin(), folder.groups.end(),
                       [](const auto& group) { return group.second.countsAreTrue; });
}

template <class Map>
auto At(const Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    return found == map.end() ? typename Map::mapped_type() : found->second;
}

class FaultLoopTest : public testing::TestWithParam<Operation> {
  protected:
    static bool Starts() {
        const Outcome outcome = Start();
        return outcome.done && outcome.told.empty();
    }

    // The folder as the next start leaves it.
    static Storage AfterStart() {
        EXPECT_TRUE(Starts() && LoadKeywords());
        return machine.storage;
    }

    // What stands before the operation, on its way, and behind it when nothing fails.
    void RunWithoutFault() {
        machine = {};
        FileOf(L"");
        operation_.prepare();
        start_ = machine.storage;
        before_ = AfterStart();
        machine.storage = start_;
        machine.fault = [this](std::string_view) -> DWORD {
            if (images_.empty() || !(images_.back() == machine.storage)) images_.push_back(machine.storage);
            return 0;
        };
        const Outcome outcome = operation_.run();
        machine.fault = nullptr;
        ASSERT_TRUE(outcome.done) << outcome.told;
        after_ = AfterStart();
        for (const Storage* storage : {&before_, &after_})
            ASSERT_TRUE(ReadFolder(*storage, kGroups, ~0u).problems.empty());
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
        // A keyword file that cannot be read to its end is taken as it was read so far.
        const uint32_t flags = attempt.call == "ReadFile" ? kReadFlag : ~0u;
        const FolderState is = ReadFolder(machine.storage, kGroups, flags),
                          was = ReadFolder(before_, kGroups, flags), due = ReadFolder(after_, kGroups, flags);
        problems_.insert(problems_.end(), is.problems.begin(), is.problems.end());
        bool complete = CheckFiles(is.files, was.files, due.files, attempt);
        for (const std::wstring& group : kGroups)
            complete =
                CheckGroup(Plain(group), is.groups.at(group), was.groups.at(group), due.groups.at(group)) &&
                complete;
        CheckCounts(is, attempt);
        if (&attempt.fault != &kCrash) CheckOutcome(attempt, complete);
        for (const std::string& problem : std::exchange(problems_, {})) {
            ADD_FAILURE() << attempt.fault.name << " at " << attempt.at << " " << attempt.call << ": "
                          << problem << (attempt.outcome.done ? " [done]" : " [failed]");
        }
    }

    // Whether the group is as if nothing had failed.
    bool CheckGroup(const std::string& name, const GroupState& is, const GroupState& was,
                    const GroupState& due) {
        const bool same = is.articles == due.articles;
        for (const auto& [number, text] : was.articles)
            Require(same || is.articles.count(number), name + " lost " + std::to_string(number));
        for (const auto& [number, text] : is.articles) {
            Require(text == At(was.articles, number) || text == At(due.articles, number),
                    name + " changed " + std::to_string(number));
        }
        Require(is.progress == was.progress || is.progress == due.progress, name + ": progress is neither");
        Require(is.progress == was.progress || same || was.articles.size() >= due.articles.size(),
                name + " counts as fetched what is not there");
        return same && is.progress == due.progress;
    }

    bool CheckFiles(const Files& is, const Files& was, const Files& due, const Attempt& attempt) {
        Files names = was;
        names.insert(due.begin(), due.end());
        bool complete = true;
        for (const auto& [name, bytes] : names) {
            const bool cut = operation_.listsMayBeCut && At(due, name).find(At(is, name)) == 0 &&
                             name.find(L".dat") != name.npos;
            // A setting that cannot be read counts as missing, and is stored with its default.
            const bool unread = attempt.call == "RegQueryValueExW" && name.find(L"HKCU\\") == 0;
            const bool same = At(is, name) == At(due, name);
            Require(same || At(is, name) == At(was, name) || cut || unread,
                    Plain(name) + " is neither the old nor the new one");
            complete = complete && same;
        }
        return complete;
    }

    // Where a mark reached the disk and the header did not, the old count stands until the group is opened.
    void CheckCounts(const FolderState& state, const Attempt& attempt) {
        if (CountsAreTrue(state)) return;
        Require(&attempt.fault == &kCrash || !attempt.outcome.done,
                "the header does not count what the records say");
        Require(OpenEachGroup() && CountsAreTrue(ReadFolder(machine.storage, kGroups, ~0u)),
                "the counts stay wrong");
    }

    void CheckOutcome(const Attempt& attempt, bool complete) {
        const Outcome& outcome = attempt.outcome;
        Require(complete || !outcome.done || operation_.maySaveInVain, "said to be done, but is not");
        const std::string number = "(" + std::to_string(attempt.fault.number) + ")";
        const bool told = outcome.told.find(number) != std::string::npos ||
                          (attempt.call == kMemory && outcome.told.find("メモリ") != std::string::npos) ||
                          (UsesNetwork(attempt.call) && !outcome.told.empty());
        Require(outcome.done || told || outcome.shows, "failed without its number: " + outcome.told);
    }

    void Require(bool holds, const std::string& problem) {
        if (!holds) problems_.push_back(problem);
    }

    const Operation& operation_ = GetParam();
    Storage start_, before_, after_;
    std::vector<Storage> images_;  // each state that the storage went through
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
    std::printf("%-66s %5d faults %5d crashes\n", operation_.name.c_str(), faults, crashes);
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultLoopTest, testing::ValuesIn(Operations()));

}  // namespace
