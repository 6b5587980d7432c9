// One download against the scripted server, as the worker does it but on the test's own thread, with the
// group view's list and a data folder in known states. Sequences of bytes are built here by hand, so that
// nothing that the store writes is checked by the store.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "nntp/session.h"
#include "tests/support/scripted_server.h"
#include "tests/support/temp_folder.h"

// Shift_JIS.
std::string Sjis(const std::wstring& text);

struct HeaderFields {
    uint32_t lastFetched = 0;
    uint32_t serverLast = 0;
    uint32_t recordCount = 0;  // all unread, of normal priority
    std::wstring status;
};
std::string HeaderBytes(const HeaderFields& fields);

struct RecordFields {
    uint32_t number, start, length;
    std::wstring subject;
    std::string date;
    std::wstring from;
    uint32_t subjectOffset, subjectLength;
};
std::string RecordBytes(const RecordFields& fields);

// An invisible list control with a row a name.
class HiddenList {
  public:
    explicit HiddenList(const std::vector<std::wstring>& names);
    ~HiddenList() { DestroyWindow(window_); }
    HiddenList(const HiddenList&) = delete;
    HiddenList& operator=(const HiddenList&) = delete;

    HWND Window() const { return window_; }

  private:
    HWND window_;
};

struct SessionRun {
    TempFolder folder;
    std::vector<std::wstring> groups;
    const char* user = nullptr;
    const char* password = nullptr;
    uint32_t limit = 100;
    // What the run leaves.
    bool done = false;
    DWORD error = 0;
    RunResult result;
    ProgressDialog progress;

    void PutIndex(const std::wstring& group, uint32_t lastFetched, uint32_t serverLast = 0) const;
    std::string Index(const std::wstring& group) const { return folder.Read(group + L".idx"); }
    std::string Log(const std::wstring& group) const { return folder.Read(group + L".log"); }

    // Runs the session against the server, which must not have been started, and checks the server's part.
    void Run(ScriptedServer& server);
    // Against a server that plays the script and, unless the connection breaks, hears QUIT at its end.
    void Run(std::string_view script);
    // Against any host and port.
    void RunAt(const wchar_t* host, unsigned short port);
};
