#include "demo/line_server.h"

#include <algorithm>
#include <array>
#include <climits>
#include <utility>

namespace {

constexpr int kIdleMilliseconds = 10 * 60 * 1000;
constexpr DWORD kSendMilliseconds = 10 * 1000;
constexpr size_t kLongestLine = 4096;

bool StartWinsock() {
    static const bool started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(1, 1), &data) == 0;
    }();
    return started;
}

}  // namespace

Socket& Socket::operator=(Socket&& other) noexcept {
    if (this != &other) {
        Close();
        handle_ = other.Release();
    }
    return *this;
}

void Socket::Close() {
    if (IsOpen()) closesocket(Release());
}

SOCKET Socket::Release() {
    return std::exchange(handle_, INVALID_SOCKET);
}

Socket ListenLocal(unsigned short port) {
    if (!StartWinsock()) return Socket();
    Socket listener(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return Socket();
    if (listen(listener.Get(), SOMAXCONN) != 0) return Socket();
    return listener;
}

unsigned short LocalPort(const Socket& socket) {
    sockaddr_in address = {};
    int size = sizeof address;
    if (getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
    return ntohs(address.sin_port);
}

Socket AcceptClient(const Socket& listener) {
    Socket client(accept(listener.Get(), nullptr, nullptr));
    const int atOnce = 1;
    const DWORD limit = kSendMilliseconds;
    setsockopt(client.Get(), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&atOnce), sizeof atOnce);
    setsockopt(client.Get(), SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<const char*>(&limit), sizeof limit);
    return client;
}

bool WaitReadable(const Socket& socket, int milliseconds) {
    fd_set readable;
    readable.fd_count = 1;
    readable.fd_array[0] = socket.Get();
    timeval limit = {milliseconds / 1000, milliseconds % 1000 * 1000};
    return select(0, &readable, nullptr, nullptr, &limit) == 1;
}

bool SendAll(const Socket& socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const int size = static_cast<int>(std::min<size_t>(bytes.size(), INT_MAX));
        const int sent = send(socket.Get(), bytes.data(), size, 0);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(sent));
    }
    return true;
}

bool Receive(const Socket& socket, size_t most, std::string& bytes) {
    std::array<char, 4096> arrived;
    const int size = static_cast<int>(std::min(most, arrived.size()));
    const int received = recv(socket.Get(), arrived.data(), size, 0);
    if (received <= 0) return false;
    bytes.append(arrived.data(), static_cast<size_t>(received));
    return true;
}

void EndSending(const Socket& socket) {
    shutdown(socket.Get(), SD_SEND);
}

void ResetConnection(Socket& socket) {
    const linger abortively = {1, 0};
    setsockopt(socket.Get(), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&abortively),
               sizeof abortively);
    socket.Close();
}

bool LineReader::ReadLine(std::string& line) {
    size_t end;
    while ((end = pending_.find('\n')) == std::string::npos) {
        if (pending_.size() > kLongestLine) return false;
        if (!WaitReadable(socket_, kIdleMilliseconds)) return false;
        if (!Receive(socket_, kLongestLine, pending_)) return false;
    }
    line.assign(pending_, 0, end);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    pending_.erase(0, end + 1);
    return true;
}
