// The other suites believe the scripted server; here it has to earn that.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/scripted_server.h"
#include "tests/support/temp_folder.h"

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
    std::vector<std::string> parts;  // what each recv gave
    int lastResult = 0;              // of the recv that ended it: 0 end of stream, -1 broken

    std::string All() const {
        std::string all;
        for (const std::string& part : parts)
            all += part;
        return all;
    }
};

void ReadUntil(SOCKET socket, size_t bytes, Reading& reading) {
    size_t have = reading.All().size();
    reading.lastResult = 1;
    while (have < bytes && reading.lastResult > 0) {
        char buffer[512];
        reading.lastResult = recv(socket, buffer, sizeof buffer, 0);
        if (reading.lastResult <= 0) return;
        reading.parts.emplace_back(buffer, static_cast<size_t>(reading.lastResult));
        have += static_cast<size_t>(reading.lastResult);
    }
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
    ReadUntil(client.Get(), kSpoken.find("221"), reading);
    if (reading.lastResult <= 0 || !SendAll(client, command)) return reading;
    Sleep(idle);
    ReadUntil(client.Get(), kSpoken.size(), reading);
    if (reading.lastResult > 0) (void)SendAll(client, quit);
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
        if (*row.complaint == '\0') {
            EXPECT_THAT(complaints, IsEmpty());
            EXPECT_EQ(server.Received(), "HEAD 1\r\nQUIT\r\n");
        } else {
            ASSERT_FALSE(complaints.empty());
            EXPECT_THAT(complaints[0], HasSubstr(row.complaint));
        }
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
        EXPECT_EQ(reading.All(), kSpoken);
        size_t end = 0;
        bool cut = false;
        for (const std::string& part : reading.parts)
            cut = cut || (end += part.size()) == k;
        EXPECT_TRUE(cut);
    }
}

TEST(ScriptedServer, EndsTheStreamAfterEveryByte) {
    for (const bool reset : {false, true}) {
        for (size_t k = 0; k <= SpokenBytes(Script(kScript)); ++k) {
            SCOPED_TRACE(k);
            ScriptedServer server(Script(kScript));
            reset ? server.ResetAfter(k) : server.HangUpAfter(k);
            const Reading reading = PlayClient(server.Start(), "HEAD 1\r\n", "QUIT\r\n");
            const bool whole = reading.All() == kSpoken;
            EXPECT_TRUE(whole || reading.lastResult == (reset ? SOCKET_ERROR : 0)) << reading.lastResult;
            EXPECT_TRUE(reset || reading.All() == kSpoken.substr(0, k));
            EXPECT_THAT(server.Finish(), IsEmpty());
        }
    }
}

TEST(ScriptedServer, FaultsOfAScriptHappenWhereTheyStand) {
    ScriptedServer server(
        Script("! split 2 3\nS: 200 ready\n! hang up\nC: QUIT\n! next connection\nS- 20\n! reset\n"));
    const unsigned short port = server.Start();
    Reading first;
    {
        const Socket client = ConnectTo(port);
        ReadUntil(client.Get(), 100, first);
        ASSERT_TRUE(SendAll(client, "QUIT\r\n"));
    }
    EXPECT_EQ(first.All(), "200 ready\r\n");
    EXPECT_EQ(first.lastResult, 0);
    EXPECT_GT(first.parts.size(), 1u);
    Reading second;
    const Socket client = ConnectTo(port);
    ReadUntil(client.Get(), 100, second);
    EXPECT_EQ(second.lastResult, SOCKET_ERROR);
    EXPECT_THAT(server.Finish(), IsEmpty());
}

TEST(TempFolder, KeepsBytesAsTheyAreAndLeavesNothing) {
    std::wstring path;
    {
        const TempFolder folder;
        path = folder.Path();
        EXPECT_EQ(path.back(), L'\\');
        const std::string bytes(
            "\x83\\a\r\nb\n\0\x1a"
            "c",
            9);
        folder.Write(L"\x65E5\x8A18.log", bytes);
        EXPECT_EQ(folder.Read(L"\x65E5\x8A18.log"), bytes);
        ASSERT_TRUE(CreateDirectoryW(folder.FilePath(L"draft").c_str(), nullptr));
        folder.Write(L"draft\\a.txt", "x");
        SetFileAttributesW(folder.FilePath(L"draft\\a.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    }
    EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(RegistryGuard, LeavesNoSettingsBehind) {
    HKEY key = nullptr;
    {
        const RegistryGuard guard;
        const std::wstring deep = std::wstring(RegistryGuard::kKey) + L"\\GroupView";
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, deep.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  &key, nullptr),
                  ERROR_SUCCESS);
        RegCloseKey(key);
    }
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, RegistryGuard::kKey, 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);
}

}  // namespace
