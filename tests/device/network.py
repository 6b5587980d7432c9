"""A news server in memory (RFC 977), and the device's Winsock over it; on a real port for the desktop's program."""
import re
import socketserver
import threading

import machine

NAME, ADDRESS, PORT = b"news.example", 0x0100007F, 119
LOGIN = {b"user user": b"381 more\r\n", b"pass secret": b"281 ok\r\n"}
PACKET = 1460
FAILED = 0xFFFFFFFF


def stuffed(data):
    return re.sub(rb"(^|\n)\.", rb"\1..", data) + b".\r\n"


class NewsServer:
    """`groups`: {name: articles}, each article its head and body, None for one that is gone; `silent_at`: the command
    to which the server says no more."""

    def __init__(self, groups, silent_at=None):
        self.groups, self.silent_at = groups, silent_at

    def listen(self):
        """Serves on a port of this machine until `shutdown` of what it gives is called."""
        server = self

        class Handler(socketserver.StreamRequestHandler):
            disable_nagle_algorithm = True

            def handle(self):
                talk = Conversation(server)
                self.wfile.write(talk.waiting)
                for line in self.rfile:
                    self.wfile.write(talk.take(line))

        listener = socketserver.ThreadingTCPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=listener.serve_forever, daemon=True).start()
        return listener


class Conversation:
    def __init__(self, server):
        self.server, self.rest, self.articles, self.silent = server, b"", [], False
        self.waiting = b"200 ready\r\n"  # what the other side has not received

    def take(self, data):
        """The replies to the command lines that are complete with `data`."""
        *lines, self.rest = (self.rest + data).split(b"\r\n")
        return b"".join(self.reply(line) for line in lines if line)

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


class Network:
    """Mixed into a system: its sockets lead to the news server, which answers at once or never."""
    server = None
    host = 0  # the record of the address that a name has

    def socket(self, family, kind, protocol):
        return self.handle(None) if (family, kind, protocol) == (2, 1, 0) else FAILED

    def inet_addr(self, _text):
        return FAILED

    def gethostbyname(self, name):
        if self.machine.text(name) != NAME:
            return self.fail(11001)
        self.host = self.host or self.malloc(28)
        self.machine.put_words(self.host, 0, 0, 4 << 16 | 2, self.host + 16, self.host + 24, 0, ADDRESS)
        return self.host

    def htons(self, port):
        return port >> 8 & 0xFF | (port & 0xFF) << 8

    def connect(self, socket, record, size):
        if (size, *self.machine.words(record, 2)) != (16, self.htons(PORT) << 16 | 2, ADDRESS):
            return self.fail(10061, FAILED)
        self.handles[socket] = Conversation(self.server)
        return 0

    def send(self, socket, text, size, _flags):
        self.handles[socket].waiting += self.handles[socket].take(self.machine.read(text, size))
        return size

    def select(self, _count, readers, _writers, _failed, limit):
        """The time that it waits passes on the clock only."""
        count, socket = self.machine.words(readers, 2)
        if count != 1 or not limit:
            raise machine.Fault("it waits for more than one, or for ever")
        if self.handles[socket].waiting:
            return 1
        seconds, microseconds = self.machine.words(limit, 2)
        self.clock += 1000 * seconds + microseconds // 1000
        self.machine.put_words(readers, 0)
        return 0

    def recv(self, socket, buffer, room, _flags):
        """Never more than a packet."""
        talk = self.handles[socket]
        given, talk.waiting = talk.waiting[:min(room, PACKET)], talk.waiting[min(room, PACKET):]
        if not given:
            raise machine.Fault("it waits for ever for what the server does not send")
        self.machine.write(buffer, given)
        return len(given)

    def closesocket(self, socket):
        del self.handles[socket]
        return 0
