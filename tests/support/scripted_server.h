// A news server on 127.0.0.1 that plays a script: what it says, what the client must say, byte for byte, and
// what goes wrong on the way. It plays on a thread of its own, so the test can drive a blocking client; every
// wait ends after a limit, so a broken client fails the test instead of hanging it.
//
//     ScriptedServer server(Script(
//         "S: 200 ready\n"
//         "C: GROUP fj.pelnor.misc\n"
//         "S: 411 no such group\n"
//         "C: QUIT\n"));
//     const unsigned short port = server.Start();
//     ... run the client against 127.0.0.1:port ...
//     EXPECT_THAT(server.Finish(), testing::IsEmpty());
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/line_server.h"

enum class Act { kSay, kHear, kHangUp, kReset, kWait, kNextConnection };

struct Step {
    Act act = Act::kSay;
    std::string bytes;           // kSay, kHear: exact, line ends included
    std::vector<size_t> pieces;  // kSay: sizes of the sends, a moment apart; what is left over goes last
    int milliseconds = 0;        // kWait
};

// The steps that a text cannot spell (other bytes than whole lines), to be mixed with those of Script.
Step Say(std::string bytes, std::vector<size_t> pieces = {});
Step Hear(std::string bytes);

// Reads a script, a step a line:
//   S: text            the server sends the text and CR LF; S lines in a row go out in one send
//   C: text            the client must send the text and CR LF
//   S- text, C- text   the same without CR LF
//   ! wait 30          30 ms pass
//   ! hang up          the client reads the end of the stream here; what it then sends is compared
//   ! reset            the connection breaks; after a wait, for a client that nothing keeps from recv then:
//   to one
//                      that is not there yet Wine may tell the end of the stream instead
//   ! next connection  the client must close and connect again
// A line of another form makes a step that no client can fulfil, so a slip in a script does not pass unseen.
std::vector<Step> Script(std::string_view text);

class ScriptedServer {
  public:
    explicit ScriptedServer(std::vector<Step> script) : script_(std::move(script)) {}
    ~ScriptedServer();

    // Begins to listen. Returns the port, 0 on failure (Finish then says so).
    unsigned short Start();

    // Waits for the script's end and returns what was wrong, nothing when the client did all that it must and
    // no more. Call when the client is through: a connection that has not come by now is not waited for.
    std::vector<std::string> Finish();

  private:
    void Run();
    bool Play(const Step& step);
    bool Accept();
    bool SayPieces(const Step& step);
    bool SayBytes(std::string_view bytes);
    bool HearBytes(const std::string& expected);
    bool AwaitEnd();
    bool AwaitReadable(const Socket& socket, const std::atomic<bool>& noLonger);
    void Complain(std::string text);

    std::vector<Step> script_;
    Socket listener_;
    Socket client_;
    std::thread thread_;
    std::atomic<bool> finishing_{false};  // the client is through
    std::atomic<bool> stopping_{false};   // the test gave up

    // The thread's until it has been joined.
    size_t next_ = 0;
    std::vector<std::string> complaints_;
};
