"""A news server in memory (RFC 977), for the emulated network and on a real port."""
import re
import socketserver
import threading

LOGIN = {b"user user": b"381 more\r\n", b"pass secret": b"281 ok\r\n"}


def stuffed(data):
    return re.sub(rb"(^|\n)\.", rb"\1..", data) + b".\r\n"


class NewsServer:
    """`groups`: {name: articles}, each article its head and body, None for one that is gone; `silent_at`: the command
    to which the server says no more."""

    def __init__(self, groups, silent_at=None):
        self.groups, self.silent_at = groups, silent_at

    def talk(self):
        return Conversation(self)

    def listen(self):
        """Serves on a port of this machine until `shutdown` of what it gives is called."""
        server = self

        class Handler(socketserver.StreamRequestHandler):
            disable_nagle_algorithm = True

            def handle(self):
                talk = server.talk()
                self.wfile.write(talk.taken())
                for line in self.rfile:
                    talk.take(line)
                    self.wfile.write(talk.taken())

        listener = socketserver.ThreadingTCPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=listener.serve_forever, daemon=True).start()
        return listener


class Conversation:
    def __init__(self, server):
        self.server, self.rest, self.articles, self.silent = server, b"", [], False
        self.waiting = b"200 ready\r\n"  # what the other side has not received

    def take(self, data):
        *lines, self.rest = (self.rest + data).split(b"\r\n")
        self.waiting += b"".join(self.reply(line) for line in lines if line)

    def taken(self):
        taken, self.waiting = self.waiting, b""
        return taken

    def reply(self, line):
        word, _, rest = line.partition(b" ")
        self.silent |= line in (b"QUIT", self.server.silent_at)
        if self.silent:
            return b""
        if word == b"authinfo":
            return LOGIN.get(rest, b"482 no\r\n")
        if word == b"LIST":
            return b"215 groups\r\n" + stuffed(b"".join(b"%b 9 1 y\r\n" % name for name in self.server.groups))
        if word == b"GROUP":
            self.articles = self.server.groups.get(rest, [])
            last = len(self.articles)
            return b"211 %d 1 %d %b\r\n" % (last, last, rest) if last else b"411 none\r\n"
        article, is_body = self.articles[int(rest) - 1], word == b"BODY"
        if not article:
            return b"423 none\r\n"
        return b"%d %b <a@b>\r\n" % (221 + is_body, rest) + stuffed(article[is_body])
