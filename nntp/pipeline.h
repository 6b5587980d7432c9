// Commands that leave before the replies to earlier ones have been read (pipelining; RFC 3977, section 3.5).
// Knows no platform: which command may leave, and whether a reply answers the oldest one.
//
// A run begins with one command at a time. Once an article has come whose status lines named its number ("221
// n", "222 n"), the server has shown that its replies can be told apart, and commands are sent ahead:
//   BODY n      once the status of HEAD n has said that n is there
//   HEAD n + 1  together with BODY n, unless n may be the last article that the limit allows
//   BODY n      together with HEAD n where the group's count says that no number is missing. Should n be
//               missing all the same, its BODY is refused too, and that refusal is dropped.
//   GROUP       of the next row, once the range's last BODY has left and if the server's replies name groups.
//               Its own reply ends the range, and shows that every refusal before it was in its place.
// So what leaves is, command for command, what a client would send that waits for each reply.
//
// From then on a reply is in order when it names the oldest command's number or group or refuses with "4xx";
// "411" refuses GROUP and nothing else. Any other is doubt. Since replies come in the commands' order, a
// reply that names its number shows that every command before it was answered, too; refusals after the last
// stored article may belong to other commands. After doubt nothing is guessed: the caller opens a new
// connection, and the range goes on after the last stored article, one command at a time to the end of the
// run.
//
// At most kMostOnTheWay commands wait for their reply. They are less than 600 bytes, which any socket's
// buffers take in while the server is itself held up in sending, so the two never wait for each other.
#pragma once

#include <array>
#include <cstddef>

#include "nntp/article_plan.h"

constexpr unsigned kMostOnTheWay = 16;
constexpr unsigned kFewestOnTheWay = 12;
constexpr std::size_t kCommandSize = 17;  // "HEAD 4294967295" CR LF

// How commands leave. Kept from range to range of a run.
enum class Pace {
    kTrying,    // one at a time, until an article has come whose replies named it
    kAhead,     // before the replies to earlier ones
    kOneByOne,  // one at a time to the end of the run; only a status line's first digit counts
};

struct Pipeline {
    Pace pace = Pace::kTrying;
    ArticlePlan plan;                                // as the replies so far leave it
    ArticlePlan stored;                              // as the plan stood when the last article was stored
    std::array<ArticleCommand, kMostOnTheWay> sent;  // without a reply, oldest first
    unsigned sentCount = 0;
    bool noneMissing = false;         // every number of the range is taken to exist
    bool namesGroups = false;         // the reply to the range's own GROUP named it
    const char* nextGroup = nullptr;  // whose GROUP is among the commands sent; not owned
    bool nextEntered = false;         // that was answered; the reply is for the next range
};

// What follows a status line.
enum class ReplyContent {
    kNothing,
    kHead,      // of the article that NextCommand named before
    kBody,      // the same
    kUnwanted,  // lines up to the final dot, to be dropped
    kDoubt,     // the reply may answer another command; only at Pace::kAhead
};

// `noneMissing`: the group's count says that every number of the range exists.
void StartRange(Pipeline& pipeline, const ArticlePlan& plan, bool noneMissing);

// Writes the commands that may leave now into `text`, each with CR LF, and counts them as sent. Returns their
// length, 0 when none may leave. Where many may, it is one, or as many as bring those on the way up to
// kFewestOnTheWay. To be called before each receive: a server that writes a reply in pieces may hold each
// piece back until the one before was acknowledged, and only what a client sends carries its acknowledgement
// at once.
std::size_t TakeCommands(Pipeline& pipeline, std::array<char, kMostOnTheWay * kCommandSize>& text);

// Whether GROUP of the next row may leave, with NoteGroupAsked to count it as sent. `group` lasts until the
// range is done.
bool MayAskNextGroup(const Pipeline& pipeline);
void NoteGroupAsked(Pipeline& pipeline, const char* group);

// Matches a status line with the oldest command on the way, and moves the plan on. There must be such a
// command.
ReplyContent TakeReply(Pipeline& pipeline, const char* status);

// Notes that the article whose body TakeReply announced last is stored.
void NoteStored(Pipeline& pipeline);

// The connection was given up in doubt: the range goes on after the last stored article.
void StartAgain(Pipeline& pipeline);

// Every command was answered and none is left to send.
bool IsDone(const Pipeline& pipeline);
