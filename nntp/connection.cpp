#include "nntp/connection.h"

#include <cstring>

#include "text/last_error.h"
#include "text/line.h"

namespace {

constexpr std::size_t kLongestCommand = 4095;

bool FindAddress(const char* host, in_addr& address) {
    address.s_addr = inet_addr(host);
    if (address.s_addr != INADDR_NONE) return true;
    const hostent* entry = gethostbyname(host);
    if (!entry || !entry->h_addr_list[0]) return false;
    std::memcpy(&address, entry->h_addr_list[0], sizeof(address));
    return true;
}

// A silent server must not hold the run up for ever. Windows CE has no time-out for recv itself.
bool HasSpoken(const NntpConnection& connection) {
    fd_set readable;
    readable.fd_count = 1;
    readable.fd_array[0] = connection.readerSocket;
    timeval limit = {connection.silence, 0};
    return select(0, &readable, nullptr, nullptr, &limit) == 1;
}

// Once for each recv: a search for each line would look at most bytes many times.
void FindZero(NntpConnection& connection) {
    const auto count = static_cast<std::size_t>(connection.endPosition - connection.readPosition);
    void* zero = std::memchr(connection.readPosition, '\0', count);
    connection.zeroPosition = zero ? static_cast<char*>(zero) : connection.endPosition;
}

void SetReceived(NntpConnection& connection, int count) {
    connection.readPosition = connection.buffer;
    connection.endPosition = connection.buffer + count;
    *connection.endPosition = '\0';
    FindZero(connection);
}

bool Refill(NntpConnection& connection) {
    if (connection.endOfStream) return Fail(kErrorEndOfFile);
    if (connection.beforeReceive) connection.beforeReceive(connection.context);
    if (!HasSpoken(connection)) return Fail(kErrorInvalidData);
    const int received = recv(connection.readerSocket, connection.buffer, kReceiveBufferSize, 0);
    if (received == 0) {
        connection.endOfStream = true;
        return Fail(kErrorEndOfFile);
    }
    if (received == SOCKET_ERROR) return Fail(kErrorInvalidData);
    SetReceived(connection, received);
    return true;
}

}  // namespace

void InitConnection(NntpConnection& connection) {
    CloseConnection(connection);
    connection.readerSocket = INVALID_SOCKET;
    SetReceived(connection, 0);
}

bool Connect(NntpConnection& connection, const char* host, uint16_t port) {
    connection.socket.Reset(socket(AF_INET, SOCK_STREAM, 0));
    if (!connection.socket) return false;
    sockaddr_in address = {};
    if (!FindAddress(host, address.sin_addr)) return false;
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (connect(connection.socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) ==
        SOCKET_ERROR) {
        return false;
    }
    connection.readerSocket = connection.socket.Get();
    SetReceived(connection, 0);
    connection.endOfStream = false;
    connection.atLineStart = true;
    return true;
}

void CloseConnection(NntpConnection& connection) {
    connection.socket.Reset();
}

bool SendLine(NntpConnection& connection, const char* line) {
    char text[kLongestCommand + 2];
    const std::size_t length = std::strlen(line);
    if (length >= kLongestCommand) return Fail(kErrorMoreData);
    std::memcpy(text, line, length);
    std::memcpy(text + length, "\r\n", 2);
    SendText(connection, text, length + 2);
    Wipe(text, length);  // it may hold a password
    return true;
}

void SendText(NntpConnection& connection, const char* text, std::size_t length) {
    send(connection.socket.Get(), text, static_cast<int>(length), 0);
}

bool ReadReplyLine(NntpConnection& connection, ReplyLine& line, bool strip) {
    LineAssembler assembler{line, kReplyLineSize};
    LineState state = LineState::kOpen;
    connection.wholeLine = connection.atLineStart;
    connection.atLineStart = false;
    while (state == LineState::kOpen) {
        if (IsFull(assembler)) return Fail(kErrorMoreData);
        if (connection.readPosition == connection.endPosition && !Refill(connection)) return false;
        if (connection.readPosition == connection.zeroPosition) {
            ++connection.readPosition;
            FindZero(connection);
            return Fail(0);
        }
        const auto atHand = static_cast<std::size_t>(connection.zeroPosition - connection.readPosition);
        std::size_t added = 0;
        state = AddToLine(assembler, connection.readPosition, atHand, added);
        connection.readPosition += added;
    }
    if (state == LineState::kFull) return Fail(kErrorMoreData);
    connection.atLineStart = LineEndLength(line, assembler.length) == 2;
    FinishLine(assembler, strip);
    return true;
}

bool EndsReply(const NntpConnection& connection, const ReplyLine& line) {
    return connection.wholeLine && IsFinalDot(line);
}

// After a 0 byte or an overlong line, the next read goes on with the rest of the line.
bool SkipReply(NntpConnection& connection, ReplyLine& line) {
    while (true) {
        if (ReadReplyLine(connection, line, false)) {
            if (EndsReply(connection, line)) return true;
        } else if (GetError() != 0 && GetError() != kErrorMoreData) {
            return false;
        }
    }
}

Secret MakeCommand(const char* word, const char* argument, const char* end) {
    const char* const parts[] = {word, argument, end};
    std::size_t length = 0;
    for (const char* part : parts)
        length += std::strlen(part);
    Secret command = NewArray<char>(length + 1);
    if (!command) return nullptr;
    char* next = command.get();
    for (const char* part : parts) {
        const std::size_t partLength = std::strlen(part);
        std::memcpy(next, part, partLength);
        next += partLength;
    }
    *next = '\0';
    return command;
}
