"""Stands between the program and nnrpd: notes what the program sends, and can hold a command back, so that a test
has time to act in the middle of a run. It also acknowledges at once, which spares the 40 ms that nnrpd waits
between the pieces of a reply."""

import contextlib
import socket
import threading

import inn


class Relay(contextlib.AbstractContextManager):
    """Listens at `port` and passes everything on to 127.0.0.1:target."""

    def __init__(self, target):
        self.target = target
        self.sent = []  # command lines, all connections together
        self.connections = 0
        self.held, self._release = threading.Event(), threading.Event()
        self._awaited, self._nameless = None, False
        self._sockets = []
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._start(self._accept)

    def __exit__(self, *_):
        self._end(self._listener)
        self.hang_up()

    @staticmethod
    def _start(job, *ends):
        threading.Thread(target=job, args=ends, daemon=True).start()

    @staticmethod
    def _end(end):
        with contextlib.suppress(OSError):
            end.shutdown(socket.SHUT_RDWR)
        end.close()

    def hold(self, command, ahead=False):
        """The next such command line stays here until release(). The program waits two minutes for it, and only 10
        seconds when it sends commands `ahead`: which it does once a reply has named its article."""
        self.held.clear()
        self._release.clear()
        self._awaited, self._nameless = command, not ahead

    def wait_held(self):
        if not self.held.wait(inn.WAIT):
            raise AssertionError(f"the program never sent {self._awaited!r}; it sent {self.sent}")

    def release(self):
        self._release.set()

    def drip(self, data):
        """Sends it to the program, as if it came from the server."""
        self._sockets[-2].sendall(data)

    def hang_up(self):
        """Ends every connection on both sides; new ones, which come while it does, are served as before."""
        ended = list(self._sockets)
        del self._sockets[:len(ended)]
        for end in ended:
            self._end(end)
        self._release.set()

    def _accept(self):
        with contextlib.suppress(OSError):
            while True:
                client, _ = self._listener.accept()
                self.connections += 1
                server = socket.create_connection(("127.0.0.1", self.target))
                self._sockets += [client, server]
                for end in (client, server):
                    end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                self._start(self._commands, client, server)
                self._start(self._replies, server, client)

    def _commands(self, client, server):
        with contextlib.suppress(OSError, ValueError):
            with client.makefile("rb") as lines:
                for line in lines:
                    self.sent.append(line.decode("latin-1").rstrip("\r\n"))
                    if self.sent[-1] == self._awaited:
                        self.held.set()
                        self._release.wait()
                    server.sendall(line)
            server.shutdown(socket.SHUT_WR)

    def _replies(self, server, client):
        with contextlib.suppress(OSError):
            inn.answer_at_once(server)
            while data := server.recv(65536):
                client.sendall(b"221 0" + data[4:] if self._nameless and data.startswith(b"221 ") else data)
                inn.answer_at_once(server)
            client.shutdown(socket.SHUT_WR)
