"""InterNetNews on 127.0.0.1: Debian's own innd and nnrpd, unpacked into a folder of their own and run from there.

A NewsServer takes articles from feed(), keeps them under the folder it made in /tmp and serves readers at `port`.
Leaving its `with` block stops both programs and removes the folder; should this process be killed, the kernel ends them
with it. They insist on running as user and group `news`: root gives them that account, anyone else a user namespace in
which his own account bears that name. What is in inn_etc/ sets them up: all may read, fj.closed only who logs in.
"""

import contextlib
import ctypes
import os
import pathlib
import pwd
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

LIBRARIES = ["libcanlock3", "libperl5.36", "libpython3.11", "libsasl2-2", "libdb5.3"]
WAIT = 20.0  # seconds that anything here may take


def install(cache):
    """Fetches the two packages into the folder `cache` and installs their libraries, each only when missing."""
    cache = pathlib.Path(cache).resolve()
    cache.mkdir(parents=True, exist_ok=True)
    sudo = [] if os.geteuid() == 0 else ["sudo"]
    state = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${db:Status-Status}\n"] + LIBRARIES,
                           capture_output=True, text=True)
    missing = [name for name in LIBRARIES if f"{name} installed" not in state.stdout]
    wanted = [name for name in ("inn2", "inn2-inews") if not list(cache.glob(name + "_*.deb"))]
    if missing or wanted:
        subprocess.run(sudo + ["apt-get", "-q", "update"], check=True, stdout=subprocess.DEVNULL)
    if missing:
        subprocess.run(sudo + ["apt-get", "-qy", "install"] + missing, check=True, stdout=subprocess.DEVNULL)
    if wanted:
        subprocess.run(["apt-get", "-q", "download"] + wanted, cwd=cache, check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)
    return cache


def end_with_parent():
    """Runs in a child before its program starts: the kernel kills the child when this process dies."""
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG


def wait_until(condition, what, limit=WAIT):
    """Polls until condition() is true and returns what it said; fails with `what` after `limit` seconds."""
    end = time.monotonic() + limit
    while not (answer := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"waited {limit:g} s in vain: {what}")
        time.sleep(0.01)
    return answer


def answer_at_once(connection):
    """nnrpd sends a reply in pieces, each held back until the one before was acknowledged: 40 ms a piece."""
    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_QUICKACK, 1)


class NntpClient(contextlib.AbstractContextManager):
    """Just enough of a client to feed innd and to see what nnrpd hands to a reader, byte for byte."""

    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=WAIT)
        self.file = self.socket.makefile("rb")
        self.greeting = self.file.readline()

    def __exit__(self, *_):
        self.file.close()
        self.socket.close()

    def _line(self):
        answer_at_once(self.socket)
        line = self.file.readline()
        if not line:
            raise AssertionError("the news server hung up")
        return line

    def command(self, line):
        self.socket.sendall(line.encode("ascii") + b"\r\n")
        return self._line().decode("latin-1").rstrip("\r\n")

    def lines(self):
        """The lines of a multi-line reply as sent, stuffed dots and line ends included, without the last "."."""
        while (line := self._line()) != b".\r\n":
            yield line

    def offer(self, article):
        head = article.split(b"\r\n\r\n")[0]
        name = next(line[11:] for line in head.split(b"\r\n") if line.startswith(b"Message-ID:"))
        lines = article.split(b"\r\n")[:-1]
        stuffed = b"".join((b"." if line.startswith(b".") else b"") + line + b"\r\n" for line in lines)
        self.socket.sendall(b"TAKETHIS" + name + b"\r\n" + stuffed + b".\r\n")
        reply = self._line()
        if not reply.startswith(b"239"):
            raise AssertionError(f"innd refused an article: {reply}\n{article}")


class NewsServer(contextlib.AbstractContextManager):
    def __init__(self, cache, groups):
        """Starts a server that has the newsgroups `groups`."""
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="pelnor-inn-"))
        self.innd = self.nnrpd = None
        with contextlib.ExitStack() as undo:
            undo.callback(self.stop)
            self._unpack(cache)
            self._configure()
            self.feed_port, self.port = self._free_port(), self._free_port()
            self.innd = self._spawn("innd", "-d", "-N", "-u", "-P", str(self.feed_port))
            self._await(self.feed_port)
            wait_until((self.home / "run/control").exists, "innd's control socket")
            for group in groups:
                self._run("ctlinnd", "-s", "newgroup", group, "y", "bench")
            self.nnrpd = self._spawn("nnrpd", "-D", "-f", "-p", str(self.port), "-b", "127.0.0.1")
            self._await(self.port)
            undo.pop_all()

    def __exit__(self, *_):
        self.stop()

    # Setting up.

    def _unpack(self, cache):
        for package in install(cache).glob("*.deb"):
            subprocess.run(["dpkg", "-x", package, self.home], check=True)
        self.programs = self.home / "usr/lib/news/bin"
        self.environment = {"PATH": f"{self.programs}:/usr/bin:/bin", "INNCONF": str(self.home / "etc/inn.conf"),
                            "LD_LIBRARY_PATH": str(self.home / "usr/lib/news"), "LC_ALL": "C"}
        news, root = pwd.getpwnam("news"), os.geteuid() == 0
        self.account = {"user": news.pw_uid, "group": news.pw_gid, "extra_groups": []} if root else {}
        self.enter = [] if root else ["unshare", "--user", f"--map-user={news.pw_uid}",
                                      f"--map-group={news.pw_gid}", "--"]

    def _configure(self):
        for name in ("db", "etc", "log", "run", "spool", "articles", "overview", "incoming/tmp", "outgoing", "archive",
                     "filter", "http"):
            (self.home / name).mkdir(parents=True, exist_ok=True)
        for source in (pathlib.Path(__file__).parent / "inn_etc").iterdir():
            (self.home / "etc" / source.name).write_text(source.read_text().replace("@HOME@", str(self.home)))
        own = ("control", "control.cancel", "junk")  # innd does not start without them
        (self.home / "db/active").write_text("".join(f"{name} 0000000000 0000000001 n\n" for name in own))
        for name in ("db/active.times", "db/newsgroups", "db/history", "etc/distrib.pats", "etc/subscriptions",
                     "etc/moderators", "etc/nntpsend.ctl", "etc/passwd.nntp"):
            (self.home / name).touch()
        if self.account:
            subprocess.run(["chown", "-R", "news:news", self.home], check=True)
        self._run("makedbz", "-i", "-o", "-s", "200000")

    @staticmethod
    def _free_port():
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            return probe.getsockname()[1]

    def _spawn(self, program, *arguments):
        with open(self.home / f"{program}.out", "ab") as log:
            return subprocess.Popen([*self.enter, self.programs / program, *arguments], cwd=self.home,
                                    env=self.environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                    preexec_fn=end_with_parent, **self.account)

    def _run(self, program, *arguments):
        if self._spawn(program, *arguments).wait(WAIT):
            raise AssertionError((self.home / f"{program}.out").read_text(errors="replace"))

    def _await(self, port):
        def listens():
            with contextlib.suppress(OSError):
                socket.create_connection(("127.0.0.1", port), timeout=1).close()
                return True
        wait_until(listens, f"a server at port {port}")

    # What a test does with it.

    def feed(self, articles):
        """Hands the articles over in order, so that they get rising numbers; each must be accepted."""
        with NntpClient(self.feed_port) as client:
            client.command("MODE STREAM")
            for article in articles:
                client.offer(article)

    def reader(self, login=None):
        client = NntpClient(self.port)
        for line in zip(("AUTHINFO USER", "AUTHINFO PASS"), login or ()):
            client.command(" ".join(line))
        return client

    def remove(self, group, number):
        """Takes one article away, so that its number is missing between its neighbours."""
        with self.reader() as client:
            client.command(f"GROUP {group}")
            self._run("ctlinnd", "-s", "cancel", client.command(f"STAT {number}").split()[2])

        def gone():
            with self.reader() as client:
                client.command(f"GROUP {group}")
                return client.command(f"HEAD {number}").startswith("423")
        wait_until(gone, f"article {number} of {group} gone")

    def stop(self):
        for process in (self.nnrpd, self.innd):
            if process:
                process.kill()
                process.wait()
        shutil.rmtree(self.home, ignore_errors=True)


if __name__ == "__main__":
    install(sys.argv[1])
