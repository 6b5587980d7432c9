#include "tests/faults/news_server.h"

NewsServer::NewsServer(std::function<std::string(const std::string&)> answer)
    : answer_(std::move(answer)), listener_(ListenLocal(0)), port_(LocalPort(listener_)) {
    thread_ = std::thread([this] { Serve(); });
}

NewsServer::~NewsServer() {
    ends_ = true;
    thread_.join();
}

void NewsServer::Serve() {
    while (!ends_) {
        if (!WaitReadable(listener_, 50)) continue;
        const Socket client = AcceptClient(listener_);
        LineReader reader(client);
        std::string command;
        bool served = SendAll(client, "200 ready\r\n");
        while (served && reader.ReadLine(command))
            served = SendAll(client, answer_(command));
    }
}
