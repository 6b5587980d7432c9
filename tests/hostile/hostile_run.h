// A run against a server that means harm, on a data folder that holds something to lose; and what must be
// true of that folder, and of the folders around it, whatever the server did.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "tests/hostile/answering_server.h"
#include "tests/nntp/session_run.h"

constexpr wchar_t kName[] = L"fj.test";

// Texts of outcomes.
constexpr wchar_t kHost[] = L"127.0.0.1";
const std::wstring kNotConnected = L"サーバに接続できませんでした";
const std::wstring kNoAnswer = L"サーバからの応答がありません";
const std::wstring kNothingNew = L"新規記事はありませんでした";
std::wstring Received(int articles);
std::wstring NotReceived(int error);  // a status line failed
std::wstring Incomplete(int error);   // a head or a body failed

// An article as the log keeps it, and as HonestReply sends it.
std::string StoredArticle(uint32_t number, const std::string& subject = "s",
                          const std::string& body = "text\r\n");

// All that stands in the folders that a name with "..", a drive or a slash could reach.
std::set<std::wstring> NamesOutside();

class HostileRun : public SessionRun {
  public:
    // Article 4 is stored, and the last that was fetched.
    HostileRun();

    void Run(AnsweringServer& server) { RunAt(kHost, server.Port()); }
    void Run(const Conversation& conversation);

    // The index counts just these articles, each whole in the log at a place of its own; article 4 is as it
    // was; the header is as it was when the run failed. Nothing else was written anywhere.
    void CheckSound(const std::vector<uint32_t>& numbers) const;

    // The index that a rebuild makes of this log is the one that stands there.
    void CheckRebuild() const;

  private:
    std::set<std::wstring> outside_ = NamesOutside();
};
