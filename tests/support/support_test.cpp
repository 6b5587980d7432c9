// The other suites believe the scripted server; here it has to earn that.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/scripted_server.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const char kScript[] =
    "S: 200 ready\n"
    "C: HEAD 1\n"
    "S: 221 1\n"
    "S: Subject: x\n"
    "S: .\n"
    "C: QUIT\n";
const std::string kSpoken = "200 ready\r\n221 1\r\nSubject: x\r\n.\r\n";

struct Reading {
    std::string all;
    std::vector<size_t> ends;  // of each recv, in all
};

bool ReadUntil(const Socket& socket, size_t bytes, Reading& reading) {
    while (reading.all.size() < bytes) {
        if (!Receive(socket, 512, reading.all)) return false;
        reading.ends.push_back(reading.all.size());
    }
    return true;
}

Socket ConnectTo(unsigned short port) {
    Socket client(socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(client.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return client;
}

// Does what kScript asks for, with `command` in the place of HEAD and `quit` in the place of QUIT; reads
// first only after `idle` milliseconds, so that all that comes at once is there to be read at once.
Reading PlayClient(unsigned short port, const std::string& command, const std::string& quit, DWORD idle = 0) {
    Reading reading;
    const Socket client = ConnectTo(port);
    if (!ReadUntil(client, kSpoken.find("221"), reading) || !SendAll(client, command)) return reading;
    Sleep(idle);
    if (ReadUntil(client, kSpoken.size(), reading)) (void)SendAll(client, quit);
    return reading;
}

TEST(ScriptedServer, ComplainsAboutEveryDepartureFromTheScript) {
    const struct {
        const char* sentence;
        const char* command;
        const char* quit;
        const char* complaint;
    } rows[] = {
        {"a client that keeps to the script", "HEAD 1\r\n", "QUIT\r\n", ""},
        {"another letter", "HEAD 2\r\n", "", "expected \"HEAD 1\\r\\n\", got \"HEAD 2"},
        {"a line end without its CR", "HEAD 1\n", "", "got \"HEAD 1\\n\""},
        {"a line of the script left unused", "HEAD 1\r\n", "",
         "expected \"QUIT\\r\\n\", got \"\" and the end"},
        {"bytes after the end", "HEAD 1\r\n", "QUIT\r\nX", "after the end: \"X\""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sentence);
        ScriptedServer server(Script(kScript));
        server.SetLimit(300);
        PlayClient(server.Start(), row.command, row.quit);
        const std::vector<std::string> complaints = server.Finish();
        ASSERT_EQ(complaints.empty(), *row.complaint == '\0');
        if (*row.complaint) EXPECT_THAT(complaints[0], HasSubstr(row.complaint));
    }
}

TEST(ScriptedServer, ComplainsAboutAClientThatNeverCameOrNeverLeft) {
    ScriptedServer unvisited(Script("S: 200 ready\nC: QUIT\n"));
    unvisited.Start();
    EXPECT_THAT(unvisited.Finish(), ElementsAre("the client did not connect", "unused: \"QUIT\\r\\n\""));

    ScriptedServer visited(Script("S: 200 ready\n! next connection\nC: QUIT\n"));
    visited.SetLimit(50);
    const Socket stays = ConnectTo(visited.Start());
    EXPECT_THAT(visited.Finish(),
                ElementsAre("the client did not close the connection", "unused: \"QUIT\\r\\n\""));
}

TEST(ScriptedServer, ASlipInAScriptIsAComplaint) {
    for (const char* slip : {"D: QUIT\n", "! hiccup\n", "C QUIT\n"}) {
        ScriptedServer server(Script(slip));
        ConnectTo(server.Start());
        EXPECT_THAT(server.Finish(), ElementsAre(HasSubstr("of the script"))) << slip;
    }
}

TEST(ScriptedServer, CutsTheStreamAtEveryByteEvenForAClientThatReadsLate) {
    const size_t greeting = kSpoken.find("221");
    for (size_t k = 1; k < kSpoken.size(); ++k) {
        SCOPED_TRACE(k);
        ScriptedServer server(Script(kScript));
        server.CutAt(k);
        const Reading reading = PlayClient(server.Start(), "HEAD 1\r\n", "QUIT\r\n", k > greeting ? 5 : 0);
        EXPECT_THAT(server.Finish(), IsEmpty());
        EXPECT_EQ(reading.all, kSpoken);
        EXPECT_THAT(reading.ends, testing::Contains(k));
    }
}

}  // namespace
