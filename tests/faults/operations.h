// Everything in Pelnor that writes, as the program does it, with the folder that it finds.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "settings/settings.h"
#include "tests/faults/folder.h"
#include "tests/faults/machine.h"

// How the user sees an operation end.
struct Outcome {
    bool done = false;
    std::string told = {};  // the texts shown, and the last error as "(n)" where a caller would show it
    bool shows = false;     // a failure that is seen without a text: an empty list, a row that is not there
    std::string bar = {};   // of a run's last group: its name, the steps and the range's end
};

struct Operation {
    std::string name;
    std::function<void()> prepare;  // of an empty machine
    Outcome (*run)();               // may end the fault before its end: the machine works again
    bool listsMayBeCut = false;     // what can be fetched again may be left short by a failure
    bool maySaveInVain = false;     // a file or value that could not be stored is not reported
};

const std::vector<Operation>& Operations();

extern const std::vector<std::wstring> kGroups;

// A program start over the folder.
Outcome Start();

// A run over the groups, as the command starts it, with the machine's network. `prepare` may change its
// settings: 100 articles from 127.0.0.1, no user.
Outcome Download(const std::vector<std::wstring>& groups, const std::function<void(Settings&)>& prepare = {});

// The list of groups, through its dialog; null: no login.
Outcome FetchList(const char* user = nullptr, const char* password = nullptr);

// A server's reply to GROUP, HEAD or BODY in a group that holds these articles.
std::string ReplyOf(const std::vector<Article>& articles, const std::string& command);

inline void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

// The subject view opens and leaves each group.
bool OpenEachGroup();

// Whoever matches subjects next reads the keywords.
bool LoadKeywords();
