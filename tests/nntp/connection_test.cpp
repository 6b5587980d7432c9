// The transport against a server that sends anything.
#include "nntp/connection.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/scripted_server.h"
#include "text/last_error.h"

namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

// Closes when a test leaves early, too: the server waits for that.
struct Client : NntpConnection {
    Client() { InitConnection(*this); }
    ~Client() { CloseConnection(*this); }
};

// What is read up to the first line that fails, and the error of that.
struct Lines {
    std::vector<std::string> lines;
    unsigned error = 0;
};

constexpr unsigned kOwnError = 4711;  // stands when the reader sets none

Lines ReadAll(NntpConnection& connection, bool strip = false) {
    Lines all;
    for (int count = 0; count < 1000; ++count) {
        ReplyLine line;
        SetError(kOwnError);
        if (!ReadReplyLine(connection, line, strip)) break;
        all.lines.emplace_back(line);
    }
    all.error = GetError();
    return all;
}

struct ReadCase {
    const char* sentence;
    std::string said;
    std::vector<std::string> lines;
    unsigned error;  // of the line after these
    bool strip = false;
    bool reset = false;  // the connection breaks instead of ending
};

const std::string kLongest(1022, 'x');

const ReadCase kReads[] = {
    {"lines keep their line ends", "200 a\r\n\r\n", {"200 a\r\n", "\r\n"}, 38},
    {"stripped lines lose them", "a\r\n\r\n..\r\n", {"a", "", ".."}, 38, true},
    {"the longest line fits", kLongest + "\r\nb\r\n", {kLongest + "\r\n", "b\r\n"}, 38},
    {"one byte more does not fit", "a\r\n" + kLongest + "x\r\nb\r\n", {"a\r\n"}, 234},
    {"a line that never ends does not fit", std::string(9000, 'x'), {}, 234},
    {"a CR inside a line makes the next LF its end", "abc\rdef\ng\r\n", {"abc\rdef\n", "g\r\n"}, 38},
    {"a stripped line keeps the CR inside it", "abc\rdef\n", {"abc\rdef"}, 38, true},
    {"a lone LF is an ordinary byte", "a\nb\r\n", {"a\nb\r\n"}, 38},
    {"a 0 byte breaks the line without an error of its own",
     std::string("a\r\nb\0c\r\n", 8),
     {"a\r\n"},
     kOwnError},
    {"bytes of 255 are no end", "\xFF\xFF\r\n", {"\xFF\xFF\r\n"}, 38},
    {"the end before any line", "", {}, 38},
    {"the end inside a line", "a\r\n200 b", {"a\r\n"}, 38},
    {"the connection breaks behind a line", "a\r\n", {"a\r\n"}, 13, false, true},
};

TEST(Connection, ReadsLines) {
    for (const ReadCase& row : kReads) {
        SCOPED_TRACE(row.sentence);
        ScriptedServer server({Say(row.said)});
        row.reset ? server.ResetAfter(row.said.size()) : server.HangUpAfter(row.said.size());
        Client client;
        ASSERT_TRUE(Connect(client, "127.0.0.1", server.Start()));
        const Lines read = ReadAll(client, row.strip);
        EXPECT_THAT(read.lines, ElementsAreArray(row.lines));
        EXPECT_EQ(read.error, row.error);
        if (row.error == 38) {
            EXPECT_EQ(ReadAll(client).error, 38u) << "the end stays the end";
        }
        CloseConnection(client);
        EXPECT_THAT(server.Finish(), IsEmpty());
    }
}

// Longer than the receive buffer, so a refill falls on many places of a line.
TEST(Connection, ReadsTheSameLinesWhereverTheStreamIsCut) {
    std::string said;
    std::vector<std::string> lines;
    for (int i = 0; i < 9; ++i) {
        lines.push_back(std::string(i % 3 == 2 ? 900u : 5u, static_cast<char>('a' + i)) +
                        (i == 4 ? "\r.\n" : "\r\n"));
        said += lines.back();
    }
    // Every cut near a line end, some inside the long lines.
    for (size_t cut = 1; cut < said.size();
         cut += said[cut] == said[cut - 1] && cut + 9 < said.size() ? 7 : 1) {
        ScriptedServer server({Say(said)});
        server.CutAt(cut);
        Client client;
        ASSERT_TRUE(Connect(client, "127.0.0.1", server.Start()));
        std::vector<std::string> read;
        ReplyLine line;
        while (read.size() < lines.size() && ReadReplyLine(client, line, false))
            read.emplace_back(line);
        ASSERT_THAT(read, ElementsAreArray(lines)) << "cut after " << cut;
        CloseConnection(client);
        ASSERT_THAT(server.Finish(), IsEmpty()) << "cut after " << cut;
    }
}

TEST(Connection, SendsUpTo4094Bytes) {
    const std::string longest(4094, 'u');
    ScriptedServer server({Hear(longest + "\r\n"), Hear("\r\n"), Hear("QUIT\r\n")});
    Client client;
    ASSERT_TRUE(Connect(client, "127.0.0.1", server.Start()));
    EXPECT_TRUE(SendLine(client, longest.c_str()));
    EXPECT_TRUE(SendLine(client, ""));
    SetError(0);
    EXPECT_FALSE(SendLine(client, (longest + "u").c_str()));
    EXPECT_EQ(GetError(), 234u);
    EXPECT_TRUE(SendLine(client, "QUIT"));
    CloseConnection(client);
    EXPECT_EQ(client.socket, INVALID_SOCKET);
    EXPECT_THAT(server.Finish(), IsEmpty());
}

struct HostCase {
    const char* sentence;
    std::string host;
    bool listening;
    bool connected;
};

const HostCase kHosts[] = {
    {"a dotted address is used as it is", "127.0.0.1", true, true},
    {"a name is looked up", "localhost", true, true},
    {"a port that nobody serves", "127.0.0.1", false, false},
    {"a name that no resolver would even send out", std::string(64, 'x') + ".invalid", true, false},
};

TEST(Connection, FindsTheHost) {
    for (const HostCase& row : kHosts) {
        SCOPED_TRACE(row.sentence);
        Socket listener = ListenLocal(0);
        const unsigned short port = LocalPort(listener);
        if (!row.listening) listener.Close();
        Client client;
        EXPECT_EQ(Connect(client, row.host.c_str(), port), row.connected);
        EXPECT_EQ(WaitReadable(listener, 0), row.connected) << "who came to the server";
        CloseConnection(client);
        EXPECT_EQ(client.socket, INVALID_SOCKET);
    }
}

}  // namespace
