// A blocking TCP client for a line-oriented text protocol (RFC 977): one command line out, reply lines in. A
// connection belongs to the worker thread that made it. Nothing here shows a message; failures answer false
// with the reason in the last-error value.
#pragma once

#include <cstddef>
#include <cstdint>

#include "nntp/reply.h"
#include "platform/owners.h"
#include "text/owned.h"

constexpr long kLongestSilence = 120;      // seconds without a byte
constexpr long kLongestSilenceAhead = 10;  // while commands are on the way: then a new connection is tried

struct NntpConnection {
    SocketOwner socket;
    SOCKET readerSocket = INVALID_SOCKET;  // the receive side's copy
    char buffer[kReceiveBufferSize + 1];   // received bytes not yet handed out, and a NUL
    char* readPosition = nullptr;
    char* endPosition = nullptr;
    char* zeroPosition = nullptr;  // the first 0 byte not yet handed out, which ends a line; else endPosition
    bool endOfStream = false;      // the peer has closed its side
    bool atLineStart = true;       // the next byte follows a CR LF
    bool wholeLine = false;        // the line read last followed a CR LF
    long silence = kLongestSilence;  // seconds without a byte after which receiving fails
    // Called before each recv; may be null.
    void (*beforeReceive)(void* context) = nullptr;
    void* context = nullptr;  // not owned
};

void InitConnection(NntpConnection& connection);

// Connects to a dotted address or, by name look-up, to a host's first IPv4 address. Blocks. After a failure
// the caller still closes.
[[nodiscard]] bool Connect(NntpConnection& connection, const char* host, uint16_t port);

void CloseConnection(NntpConnection& connection);

// Sends the line with CR LF. Only the next read shows whether it arrived. A line of 4095 bytes or more is
// refused (234), and nothing is sent.
[[nodiscard]] bool SendLine(NntpConnection& connection, const char* line);

// Sends text[0..length) as it is, whole lines with their CR LF, in one call.
void SendText(NntpConnection& connection, const char* text, std::size_t length);

// Reads one line into `line` and terminates it; `strip` drops its line end. Error 234 when the line does not
// fit, 38 when the peer closed, 13 when receiving failed or nothing came for `silence` seconds. A 0 byte
// fails too, with error 0.
[[nodiscard]] bool ReadReplyLine(NntpConnection& connection, ReplyLine& line, bool strip);

// Takes a whole line, which the caller has read at `readPosition` itself.
inline void PassLine(NntpConnection& connection, std::size_t length) {
    connection.readPosition += length;
    connection.atLineStart = true;
}

// Whether the line read last, with its line end, is the dot that ends a multi-line reply (RFC 3977, section
// 3.1.1). A server doubles dots after CR LF only, so a dot after a lone LF is the article's own.
bool EndsReply(const NntpConnection& connection, const ReplyLine& line);

// Drops what is left of a multi-line reply, whatever it holds. Error 38 or 13.
[[nodiscard]] bool SkipReply(NntpConnection& connection, ReplyLine& line);

// The three texts as one, which may hold a password; null with error 8.
Secret MakeCommand(const char* word, const char* argument, const char* end);
