#include "nntp/login.h"

namespace {

Opening Greet(NntpConnection& connection, const char* host, uint16_t port, ReplyLine& line) {
    if (!Connect(connection, host, port)) return Opening::kNotConnected;
    if (!ReadReplyLine(connection, line, false)) return Opening::kNoGreeting;
    return IsSuccess(line) ? Opening::kOpen : Opening::kRefused;
}

Opening LogIn(NntpConnection& connection, const ServerAccount& server, ReplyLine& line) {
    const Asked user = Ask(connection, line, "authinfo user ", server.user, server.loginEnd);
    if (user == Asked::kNotSent) return Opening::kUserNotSent;
    if (user == Asked::kNotAnswered) return Opening::kUserNotAnswered;
    if (!AsksForMore(line)) return Opening::kWrongUser;
    const Asked password = Ask(connection, line, "authinfo pass ", server.password, server.loginEnd);
    if (password == Asked::kNotSent) return Opening::kPasswordNotSent;
    if (password == Asked::kNotAnswered) return Opening::kPasswordNotAnswered;
    return IsSuccess(line) ? Opening::kOpen : Opening::kWrongPassword;
}

}  // namespace

bool Say(NntpConnection& connection, const char* word, const char* argument, const char* end) {
    const Secret command = MakeCommand(word, argument, end);
    return command && SendLine(connection, command.get());
}

Asked Ask(NntpConnection& connection, ReplyLine& line, const char* word, const char* argument,
          const char* end) {
    if (!Say(connection, word, argument, end)) return Asked::kNotSent;
    return ReadReplyLine(connection, line, false) ? Asked::kAnswered : Asked::kNotAnswered;
}

Opening OpenConversation(NntpConnection& connection, const char* host, const ServerAccount& server,
                         ReplyLine& line) {
    const Opening greeted = Greet(connection, host, server.port, line);
    if (greeted != Opening::kOpen || !server.user || !server.password) return greeted;
    return LogIn(connection, server, line);
}
