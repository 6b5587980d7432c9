// Everything in Pelnor that writes, as the program does it, with the folder that it finds.
#pragma once

#include <string>
#include <vector>

#include "tests/support/temp_folder.h"

// How the user sees an operation end.
struct Outcome {
    bool done = false;
    std::string told;    // the texts shown, and the last error as "(n)" where a caller would show it
    bool shows = false;  // a failure that is seen without a text: an empty list, a row that is not there
};

struct Operation {
    const char* name;
    void (*prepare)(const TempFolder& folder);  // an empty folder, no settings
    Outcome (*run)(const TempFolder& folder);   // may end the fault before its end: the disk works again
    bool listsMayBeCut = false;                 // what can be fetched again may be left short by a failure
    bool maySaveInVain = false;                 // a new file that cannot take its place is not told
};

const std::vector<Operation>& Operations();

extern const std::vector<std::wstring> kGroups;

// A program start over the folder: true when it succeeds.
bool StartProgram(const TempFolder& folder);

// The subject view opens and leaves each group.
bool OpenEachGroup(const TempFolder& folder);

// Whoever matches subjects next reads the keywords.
bool LoadKeywords(const TempFolder& folder);
