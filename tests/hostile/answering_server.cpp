#include "tests/hostile/answering_server.h"

#include <windows.h>

#include <psapi.h>

#include <cstdlib>
#include <utility>

namespace {

constexpr int kSliceMilliseconds = 5;
constexpr size_t kCommandsPerLook = 512;  // at the memory

size_t PrivateMemory() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

bool Begins(const std::string& text, const char* start) {
    return text.rfind(start, 0) == 0;
}

}  // namespace

bool IsWholeRun() {
    const char* wish = std::getenv("PELNOR_HOSTILE");
    return wish && std::string(wish) == "whole";
}

std::string HonestReply(const std::string& command) {
    if (command.empty()) return "200 hi\r\n";
    if (Begins(command, "GROUP ")) return "211 2 5 6 " + command.substr(6) + "\r\n";
    if (Begins(command, "HEAD ")) return "221 " + command.substr(5) + "\r\nSubject: s\r\n.\r\n";
    if (Begins(command, "BODY ")) return "222 " + command.substr(5) + "\r\ntext\r\n.\r\n";
    if (Begins(command, "authinfo ")) return Begins(command, "authinfo user") ? "381 more\r\n" : "281 ok\r\n";
    if (Begins(command, "LIST")) return "215 list\r\nfj.test 9 1 y\r\n.\r\n";
    return Begins(command, "QUIT") ? "205 bye\r\n" : "500 what\r\n";
}

Conversation Except(std::map<std::string, Answer> answers) {
    return [answers = std::move(answers)](const std::string& command) {
        const auto found = answers.find(command);
        return found != answers.end() ? found->second : Answer{HonestReply(command)};
    };
}

AnsweringServer::AnsweringServer(Conversation conversation)
    : conversation_(std::move(conversation)), listener_(ListenLocal(0)), memoryBefore_(PrivateMemory()) {
    port_ = LocalPort(listener_);
    thread_ = std::thread([this] { Run(); });
}

AnsweringServer::~AnsweringServer() {
    hangingUp_ = true;
    thread_.join();
}

bool AnsweringServer::IsLate() const {
    return std::chrono::steady_clock::now() - start_ > patience_;
}

bool AnsweringServer::AwaitClient() {
    while (!WaitReadable(listener_, kSliceMilliseconds)) {
        if (hangingUp_ || IsLate()) return false;
    }
    client_ = AcceptClient(listener_);
    pending_.clear();
    silent_ = false;
    ++connections_;
    return true;
}

void AnsweringServer::Run() {
    while (!hangingUp_ && AwaitClient())
        Converse();
}

void AnsweringServer::Converse() {
    std::string command;
    bool going = Give(conversation_(""));
    while (going && NextCommand(command)) {
        if (commands_++ % kCommandsPerLook == 0) WatchMemory();
        going = Give(conversation_(command));
    }
    WatchMemory();
    EndSending(client_);
    while (!IsLate() && (!WaitReadable(client_, kSliceMilliseconds) || Receive(client_, 4096, pending_)))
        pending_.clear();
    ResetConnection(client_);
}

bool AnsweringServer::Give(const Answer& answer) {
    if (silent_) return true;
    if (!SendBytes(answer.bytes)) return false;
    for (size_t i = 0; i < answer.floods; ++i) {
        if (hangingUp_ || IsLate() || !SendBytes(answer.flood)) return false;
        WatchMemory();
    }
    silent_ = answer.silent;
    return !answer.hangUp && SendBytes(answer.end);
}

bool AnsweringServer::SendBytes(const std::string& bytes) {
    sent_ += bytes.size();
    return SendAll(client_, bytes);
}

bool AnsweringServer::NextCommand(std::string& command) {
    size_t end = 0;
    while ((end = pending_.find("\r\n")) == std::string::npos) {
        if (!AwaitBytes() || !Receive(client_, 4096, pending_)) return false;
    }
    command = pending_.substr(0, end);
    pending_.erase(0, end + 2);
    return !hangingUp_;
}

bool AnsweringServer::AwaitBytes() {
    while (!WaitReadable(client_, kSliceMilliseconds)) {
        if (hangingUp_ || IsLate()) return false;
    }
    return true;
}

void AnsweringServer::RestartGrowth() {
    memoryBefore_ = PrivateMemory();
    mostMemory_ = 0;
}

void AnsweringServer::WatchMemory() {
    const size_t memory = PrivateMemory();
    if (memory > mostMemory_) mostMemory_ = memory;
}
