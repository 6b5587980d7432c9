// The machine on which the loops run the program: a disk, a registry, a network, memory and a user, which a
// test can look into, set back, and make fail at any call. It stands in the place of the system's calls for
// all that is linked into the suite, and knows one thread: what the program starts runs when RunThreads is
// called.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/memory_disk.h"

// What the end of the program leaves.
struct Storage {
    std::map<std::wstring, std::string> files;  // contents by path; a folder's path ends in a backslash
    std::map<std::wstring, std::pair<DWORD, std::string>> values;  // the registry: type and bytes by path

    bool operator==(const Storage& other) const { return files == other.files && values == other.values; }
};

// The other end of the program's one connection. What it says is there at once; where nothing is left to read
// and the stream has not ended, it is silent for ever.
struct Network {
    std::function<void()> connect;                      // the program has connected, to 127.0.0.1:119
    std::function<void(const std::string& line)> hear;  // what the program sends, line by line
    std::string says;                                   // waits for the program
    std::size_t piece = 700;                            // most bytes that one recv gives
    std::size_t stop = std::string::npos;               // bytes behind which a recv ends once
    bool ended = false;                                 // the stream ends behind what waits
    long silence = 0;                                   // seconds that the program has waited in vain
};

struct Machine {
    Storage storage;
    Network network;
    // Asked with a function's name before it does anything, with kSector before each sector that a write
    // reaches and with kMemory before memory is taken. 0 lets it happen, an error number makes it fail.
    std::function<DWORD(std::string_view call)> fault;
    std::size_t largestBlock = 0;  // of memory, that the program asked for
    // A password of more than a few bytes, and how many blocks the program gave back with it in them, as
    // 8-bit or as UTF-16 text.
    std::string secret = {};
    int secretsFreed = 0;
};
extern Machine machine;

constexpr std::string_view kMemory = "memory";
bool UsesNetwork(std::string_view call);

// A news server that greets and answers each command, line ends included.
void Serve(std::function<std::string(const std::string& command)> reply);

// What the program has not given back: files, searches, keys, sockets, threads, heaps and blocks.
std::size_t HeldByProgram();

void RunThreads();

// The data folder, with a backslash at its end, and a file in it.
extern const std::wstring kFolder;
std::string& FileOf(const std::wstring& name);

// The user.

// "caption: text" of each message box since the last call, a line each. Boxes are answered with OK.
std::string TakeBoxes();

// What the user does in the next modal dialog, once it stands and the program's threads have run. The dialog
// ends when its code ends it.
void UseNextDialog(std::function<void(HWND)> user);

// No dialog can be made, which saves time; the program goes on without it.
void RefuseDialogs(bool refuse);
