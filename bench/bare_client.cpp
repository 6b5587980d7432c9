// bare_client PORT GROUP ARTICLES: asks for the head and body of articles 1 to ARTICLES, sixteen commands on
// the way, and throws away what comes. No download of the same articles with the same commands can be faster.
// Prints its milliseconds. Builds for Windows and natively, to tell what the calls cost on either.
#ifdef _WIN32
#include <winsock2.h>
#else
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr int kMostOnTheWay = 16;
constexpr int kFewestOnTheWay = 8;
constexpr int kReceiveSize = 4096;

// Finds where replies end. Those that begin with '2' end with a line of one dot, except the greeting and
// GROUP's.
class ReplyCounter {
  public:
    // How many replies end within these bytes.
    int Count(const char* bytes, int count) {
        int ended = 0;
        for (const char* byte = bytes; byte < bytes + count; ++byte) {
            if (*byte == '\n') {
                ended += EndLine();
                lineLength_ = 0;
            } else if (lineLength_++ == 0) {
                first_ = *byte;
            }
        }
        return ended;
    }

  private:
    int EndLine() {
        if (!inText_) {
            inText_ = first_ == '2' && replies_ >= 2;
        } else if (lineLength_ == 2 && first_ == '.') {
            inText_ = false;
        } else {
            return 0;
        }
        if (!inText_) ++replies_;
        return inText_ ? 0 : 1;
    }

    int lineLength_ = 0;
    char first_ = 0;
    bool inText_ = false;
    int replies_ = 0;
};

[[noreturn]] void Give(const char* reason) {
    std::printf("the bare client: %s\n", reason);
    std::exit(1);
}

auto Connect(const char* port) {
#ifdef _WIN32
    WSADATA winsock;
    if (WSAStartup(MAKEWORD(2, 2), &winsock) != 0) Give("no Winsock");
#endif
    const auto client = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(std::atoi(port)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        Give("cannot connect");
    return client;
}

std::string Command(int index) {
    return (index % 2 == 0 ? "HEAD " : "BODY ") + std::to_string(index / 2 + 1) + "\r\n";
}

// How many commands to send now. Where there is room for more than one, the others wait for the next bytes to
// arrive: a server that sends nothing before what it sent was acknowledged (RFC 896) goes on at once when a
// command brings the acknowledgement, and after 40 ms when there is none left to bring it.
int Due(int onTheWay, int left) {
    const int room = onTheWay < kMostOnTheWay ? 1 : 0;
    return std::min(std::max(room, kFewestOnTheWay - onTheWay), left);
}

// Until all is answered.
template <class Client>
void Fetch(Client client, const std::string& group, int articles) {
    ReplyCounter replies;
    char buffer[kReceiveSize];
    const int wanted = 2 * articles;
    int sent = 0;
    int answered = -2;  // the greeting and GROUP come first
    std::string commands = "GROUP " + group + "\r\n";
    while (answered < wanted) {
        const int due = answered < 0 ? 0 : Due(sent - answered, wanted - sent);
        for (int i = 0; i < due; ++i)
            commands += Command(sent++);
        if (!commands.empty()) send(client, commands.data(), static_cast<int>(commands.size()), 0);
        commands.clear();
        const auto received = static_cast<int>(recv(client, buffer, kReceiveSize, 0));
        if (received <= 0) Give("the server hung up");
        answered += replies.Count(buffer, received);
    }
    send(client, "QUIT\r\n", 6, 0);
}

}  // namespace

int main(int, char** arguments) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    Fetch(Connect(arguments[1]), arguments[2], std::atoi(arguments[3]));
    std::printf("%.3f\n", std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    return 0;
}
