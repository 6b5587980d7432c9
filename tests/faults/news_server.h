// A news server on 127.0.0.1 that answers what it is asked, one client after the other, for as long as it
// lives.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "tests/support/line_server.h"

class NewsServer {
  public:
    // `answer` gives the whole reply to a command, line ends included; it is called on the server's thread.
    explicit NewsServer(std::function<std::string(const std::string& command)> answer);
    ~NewsServer();
    NewsServer(const NewsServer&) = delete;
    NewsServer& operator=(const NewsServer&) = delete;

    unsigned short Port() const { return port_; }

  private:
    void Serve();

    std::function<std::string(const std::string&)> answer_;
    Socket listener_;
    unsigned short port_ = 0;
    std::atomic<bool> ends_{false};
    std::thread thread_;
};
