#include "tests/support/scripted_server.h"

#include <cctype>
#include <cstdio>
#include <sstream>
#include <utility>

namespace {

// Between two pieces of a split reply: long enough for a waiting client to wake up and read the first.
constexpr int kPieceMilliseconds = 3;
// Before a reset: Wine reports one only to a client that waits in recv at that moment, to others the end.
constexpr int kResetMilliseconds = 20;
// How soon a wait notices that it is pointless.
constexpr int kSliceMilliseconds = 5;
// For the client at each step.
constexpr std::chrono::seconds kLimit(5);

std::string Shown(std::string_view bytes) {
    std::string shown;
    for (const char byte : bytes) {
        char escaped[8];
        const unsigned code = static_cast<unsigned char>(byte);
        if (byte == '\r' || byte == '\n') {
            shown += byte == '\r' ? "\\r" : "\\n";
        } else if (std::isprint(static_cast<int>(code))) {
            shown += byte;
        } else {
            std::snprintf(escaped, sizeof escaped, "\\x%02X", code);
            shown += escaped;
        }
    }
    return "\"" + shown + "\"";
}

Step ReadFault(const std::string& line) {
    std::istringstream words(line.substr(2));
    std::string word;
    words >> word;
    Step step;
    if (word == "hang") step.act = Act::kHangUp;
    if (word == "reset") step.act = Act::kReset;
    if (word == "next") step.act = Act::kNextConnection;
    if (word == "wait" && words >> step.milliseconds) step.act = Act::kWait;
    return step.act == Act::kSay ? Hear("an unknown fault of the script: " + line) : step;
}

}  // namespace

Step Say(std::string bytes, std::vector<size_t> pieces) {
    return {Act::kSay, std::move(bytes), std::move(pieces), 0};
}

Step Hear(std::string bytes) {
    return {Act::kHear, std::move(bytes), {}, 0};
}

std::vector<Step> Script(std::string_view text) {
    std::vector<Step> script;
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        const std::string kind = line.substr(0, 2);
        const bool blankFollows = line.size() == 2 || (line.size() > 2 && line[2] == ' ');
        std::string bytes = line.size() > 3 ? line.substr(3) : std::string();
        if (kind == "S:" || kind == "C:") bytes += "\r\n";
        if (blankFollows && (kind == "S:" || kind == "S-")) {
            const bool goesOn = !script.empty() && script.back().act == Act::kSay;
            if (!goesOn) script.push_back(Say(""));
            script.back().bytes += bytes;
        } else if (blankFollows && (kind == "C:" || kind == "C-")) {
            script.push_back(Hear(std::move(bytes)));
        } else if (kind == "! ") {
            script.push_back(ReadFault(line));
        } else {
            script.push_back(Hear("a line of the script that has no form: " + line));
        }
    }
    return script;
}

ScriptedServer::~ScriptedServer() {
    stopping_ = true;
    if (thread_.joinable()) thread_.join();
}

unsigned short ScriptedServer::Start() {
    listener_ = ListenLocal(0);
    if (!listener_.IsOpen()) {
        Complain("the server could not listen");
        return 0;
    }
    const unsigned short port = LocalPort(listener_);
    thread_ = std::thread([this] { Run(); });
    return port;
}

std::vector<std::string> ScriptedServer::Finish() {
    finishing_ = true;
    if (thread_.joinable()) thread_.join();
    return complaints_;
}

void ScriptedServer::Run() {
    bool going = Accept();
    while (going && next_ < script_.size()) {
        going = Play(script_[next_]);
        if (going) ++next_;
    }
    if (going) {
        AwaitEnd();
    } else {
        for (; next_ < script_.size(); ++next_) {
            if (script_[next_].act == Act::kHear) Complain("unused: " + Shown(script_[next_].bytes));
        }
        // A client that went astray must not wait for an answer that will never come.
        ResetConnection(client_);
    }
    client_.Close();
    listener_.Close();
}

bool ScriptedServer::Play(const Step& step) {
    switch (step.act) {
        case Act::kSay:
            return SayPieces(step);
        case Act::kHear:
            return HearBytes(step.bytes);
        case Act::kHangUp:
            EndSending(client_);
            return true;
        case Act::kReset:
            std::this_thread::sleep_for(std::chrono::milliseconds(kResetMilliseconds));
            ResetConnection(client_);
            return true;
        case Act::kWait:
            std::this_thread::sleep_for(std::chrono::milliseconds(step.milliseconds));
            return true;
        case Act::kNextConnection:
            return AwaitEnd() && Accept();
    }
    return false;
}

bool ScriptedServer::Accept() {
    if (!AwaitReadable(listener_, finishing_)) {
        Complain("the client did not connect");
        return false;
    }
    client_ = AcceptClient(listener_);
    return client_.IsOpen();
}

bool ScriptedServer::SayPieces(const Step& step) {
    std::string_view rest = step.bytes;
    for (const size_t size : step.pieces) {
        const std::string_view piece = rest.substr(0, size);
        rest.remove_prefix(piece.size());
        if (!SayBytes(piece)) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(kPieceMilliseconds));
    }
    return SayBytes(rest);
}

bool ScriptedServer::SayBytes(std::string_view bytes) {
    if (SendAll(client_, bytes)) return true;
    Complain("the client closed before " + Shown(bytes));
    return false;
}

bool ScriptedServer::HearBytes(const std::string& expected) {
    std::string heard;
    bool open = true;
    while (open && heard.size() < expected.size() && expected.compare(0, heard.size(), heard) == 0) {
        if (!AwaitReadable(client_, stopping_)) break;
        open = Receive(client_, expected.size() - heard.size(), heard);
    }
    if (heard == expected) return true;
    Complain("expected " + Shown(expected) + ", got " + Shown(heard) + (open ? "" : " and the end"));
    ++next_;
    return false;
}

// The client owes nothing more but to close.
bool ScriptedServer::AwaitEnd() {
    std::string rest;
    bool open = client_.IsOpen();
    while (open && AwaitReadable(client_, stopping_))
        open = Receive(client_, 4096, rest);
    if (!rest.empty()) Complain("after the end: " + Shown(rest));
    if (open) Complain("the client did not close the connection");
    client_.Close();
    return !open && rest.empty();
}

bool ScriptedServer::AwaitReadable(const Socket& socket, const std::atomic<bool>& noLonger) {
    if (!socket.IsOpen()) return false;
    const auto end = std::chrono::steady_clock::now() + kLimit;
    for (;;) {
        // Asked before the look: what came while the flag was still clear is not missed.
        const bool lastLook = noLonger || stopping_ || std::chrono::steady_clock::now() >= end;
        if (WaitReadable(socket, lastLook ? 0 : kSliceMilliseconds)) return true;
        if (lastLook) return false;
    }
}

void ScriptedServer::Complain(std::string text) {
    complaints_.push_back(std::move(text));
}
