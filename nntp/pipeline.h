// Commands that leave before the replies to earlier ones have been read (pipelining; RFC 3977, section 3.5).
// Knows no platform: which command may leave, and which command a reply answers.
//
// The server answers commands in the order in which they reach it, so the next reply answers the oldest
// command that has none yet. What leaves is, command for command, what a client would send that waits for
// each reply: a command leaves early only when every reply that can still come leads to it.
//   BODY n      once the status of HEAD n has said that n is there
//   HEAD n + 1  together with BODY n, unless n may be the last article that the limit allows
//   BODY n      together with HEAD n where the group's count says that no number is missing. Should n be
//               missing all the same, its BODY is refused too, and that refusal is dropped.
// At most kMostOnTheWay commands wait for their reply. They are less than 300 bytes, which any socket's
// buffers take in while the server is itself held up in sending, so the two never wait for each other.
//
// A server that throws away what it is sent ahead shows itself by silence, by a refusal "5xx" of a command
// sent ahead, or by a reply that names a later command ("221 n", "222 n"). Then the commands without a reply
// are asked again, one by one, and so is the rest of the run. A reply to their first asking that comes late
// is known by its name and dropped; a refusal, which has no name, counts only when silence follows it.
#pragma once

#include <array>
#include <cstddef>

#include "nntp/article_plan.h"

constexpr unsigned kMostOnTheWay = 16;
constexpr unsigned kFewestOnTheWay = 12;
constexpr std::size_t kCommandSize = 17;  // "HEAD 4294967295" CR LF

// Commands in the order in which they left.
struct CommandQueue {
    std::array<ArticleCommand, kMostOnTheWay> commands;
    unsigned count = 0;
};

// One run's; each group's range starts it anew.
struct Pipeline {
    ArticlePlan plan;          // what the replies have told so far
    CommandQueue sent;         // without a reply
    CommandQueue late;         // their first asking may still be answered
    bool noneMissing = false;  // every number of the range is taken to exist
    bool leftAhead = false;    // a command in `sent` did not wait for the one before it
    bool refused = false;      // a refusal came that may be a late one
    bool oneByOne = false;     // for the rest of the run
};

// What comes behind a status line.
enum class ReplyContent {
    kNothing,
    kHead,      // of the article that NextCommand named before
    kBody,      // the same
    kUnwanted,  // lines up to the final dot that nobody waits for
};

// `noneMissing`: the group's count says that every number of the range exists.
void StartRange(Pipeline& pipeline, const ArticlePlan& plan, bool noneMissing);

// Counts the commands that may leave now as sent and writes them, each with CR LF, into `text`. Their length;
// 0 when none may. Where many may, it is one, or as many as bring those on the way up to kFewestOnTheWay: to
// be called before each receive, since a server that writes a reply in pieces may hold each piece back until
// the one before was acknowledged, and only what a client sends carries its acknowledgement at once.
std::size_t TakeCommands(Pipeline& pipeline, std::array<char, kMostOnTheWay * kCommandSize>& text);

// Matches a status line with the command that it answers and moves the plan on. With kNothing and kUnwanted
// the plan may stand where it stood.
ReplyContent TakeReply(Pipeline& pipeline, const char* status);

// No reply came in time. True when the range can go on: commands that left ahead are asked again, or nothing
// comes late any more.
bool TakeSilence(Pipeline& pipeline);

// Every command was answered, none is left to send, and no late reply can stand before the next command's.
bool IsDone(const Pipeline& pipeline);
