// A news server on 127.0.0.1 that answers each command by a rule, however early the command comes, and can
// send without end. It also watches how much memory the process takes meanwhile. Every wait has a limit: a
// client that hangs is cut off after a minute, in a run of hours after two hours.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include "tests/support/line_server.h"

// A run of hours instead of a sample: PELNOR_HOSTILE=whole, which tools/hostile_loop sets.
bool IsWholeRun();

struct Answer {
    std::string bytes;
    std::string flood = {};  // comes behind the bytes, again and again
    size_t floods = 0;       // so many times, or until the client goes
    bool hangUp = false;     // the stream ends behind that
    std::string end = {};    // what comes last when it does not
    bool silent = false;     // nothing is said any more behind that on this connection, whatever is asked
};

// Asked for every command, without its line end; for the greeting with an empty one.
using Conversation = std::function<Answer(const std::string& command)>;

// Two articles, 5 and 6, and whatever number is asked for besides; a list of one group.
std::string HonestReply(const std::string& command);

// The honest replies but for these.
Conversation Except(std::map<std::string, Answer> answers);

class AnsweringServer {
  public:
    explicit AnsweringServer(Conversation conversation);
    ~AnsweringServer();
    AnsweringServer(const AnsweringServer&) = delete;
    AnsweringServer& operator=(const AnsweringServer&) = delete;

    unsigned short Port() const { return port_; }

    // Ends the stream now, wherever it is.
    void HangUp() { hangingUp_ = true; }

    // Bytes sent, commands heard and clients served, one after the other, so far.
    size_t Sent() const { return sent_; }
    size_t Commands() const { return commands_; }
    size_t Connections() const { return connections_; }

    // The most memory by which the process has grown since the server was made, or since the last call.
    void RestartGrowth();
    size_t Growth() const { return mostMemory_ > memoryBefore_ ? mostMemory_ - memoryBefore_ : 0; }

  private:
    void Run();
    bool AwaitClient();
    void Converse();
    bool Give(const Answer& answer);
    bool SendBytes(const std::string& bytes);
    bool NextCommand(std::string& command);
    bool AwaitBytes();
    void WatchMemory();
    bool IsLate() const;

    const std::chrono::minutes patience_{IsWholeRun() ? 120 : 1};

    Conversation conversation_;
    Socket listener_;
    Socket client_;
    std::string pending_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::atomic<size_t> memoryBefore_;
    std::atomic<size_t> mostMemory_{0};
    std::atomic<size_t> sent_{0};
    std::atomic<size_t> commands_{0};
    std::atomic<size_t> connections_{0};
    bool silent_ = false;
    std::atomic<bool> hangingUp_{false};
    unsigned short port_ = 0;
    std::thread thread_;
};
