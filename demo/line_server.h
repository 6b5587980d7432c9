// What a small line-oriented server on 127.0.0.1 is made of: the demonstration's and the benchmarks'. Nothing
// here listens on an address that another machine could reach.
#pragma once

#include <winsock2.h>

#include <string>
#include <string_view>

// Owns one socket and closes it. An unset or failed socket is not open.
class Socket {
  public:
    Socket() = default;
    explicit Socket(SOCKET handle) : handle_(handle) {}
    Socket(Socket&& other) noexcept : handle_(other.Release()) {}
    Socket& operator=(Socket&& other) noexcept;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { Close(); }

    bool IsOpen() const { return handle_ != INVALID_SOCKET; }
    SOCKET Get() const { return handle_; }
    void Close();

  private:
    SOCKET Release();

    SOCKET handle_ = INVALID_SOCKET;
};

// Listens on 127.0.0.1, on a port of the system's choice when `port` is 0. Starts Winsock on first use.
Socket ListenLocal(unsigned short port);
unsigned short LocalPort(const Socket& socket);

// Blocks until a client comes. What is sent on the result leaves at once (no Nagle delay).
Socket AcceptClient(const Socket& listener);

// True as soon as a read (or accept) would not block, false after `milliseconds` without that.
bool WaitReadable(const Socket& socket, int milliseconds);

// False when the connection is broken or the client reads nothing for ten seconds.
[[nodiscard]] bool SendAll(const Socket& socket, std::string_view bytes);

// Appends what has arrived, at most `most` bytes, to `bytes`; blocks while nothing has. False at the end of
// the connection, whether it was closed or broken.
[[nodiscard]] bool Receive(const Socket& socket, size_t most, std::string& bytes);

// The client reads the end of the stream once it has read everything sent before; it can still be read from.
void EndSending(const Socket& socket);

// The client's next read fails, with what it had not read yet lost.
void ResetConnection(Socket& socket);

// Hands out the lines of a connection. The socket must outlive the reader.
class LineReader {
  public:
    explicit LineReader(const Socket& socket) : socket_(socket) {}

    // Reads a line without its CR LF (a lone LF ends a line too). False at the end of the connection, after
    // ten minutes of silence and when a line is longer than 4096 bytes.
    [[nodiscard]] bool ReadLine(std::string& line);

  private:
    const Socket& socket_;
    std::string pending_;
};
