"""InterNetNews on 127.0.0.1: Debian's own innd and nnrpd, unpacked into a folder of their own and run from there.

A NewsServer takes articles from feed(), keeps them under the folder it made in /tmp and serves readers at
`port`. Leaving its `with` block stops both programs and removes the folder; should this process be killed, the
kernel ends them with it. They insist on running as user and group `news`: root gives them that account, anyone
else a user namespace in which his own account bears that name.
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
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f"waited {limit:g} s in vain: {what}")
        time.sleep(0.02)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def answer_at_once(connection):
    """nnrpd sends a reply in pieces, each held back until the one before was acknowledged: 40 ms a piece."""
    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_QUICKACK, 1)


class NntpClient:
    """Just enough of a client to feed innd and to see what nnrpd hands to a reader, byte for byte."""

    def __init__(self, port, login=None):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=WAIT)
        self.file = self.socket.makefile("rb")
        self.greeting = self.file.readline()
        if login:
            self.command(f"AUTHINFO USER {login[0]}")
            self.command(f"AUTHINFO PASS {login[1]}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.file.close()
        self.socket.close()

    def send(self, data):
        self.socket.sendall(data)

    def _line(self):
        answer_at_once(self.socket)
        return self.file.readline()

    def reply(self):
        line = self._line()
        if not line:
            raise AssertionError("the news server hung up")
        return line.decode("latin-1").rstrip("\r\n")

    def command(self, line):
        self.send(line.encode("ascii") + b"\r\n")
        return self.reply()

    def lines(self):
        """The lines of a multi-line reply as sent, stuffed dots and line ends included, without the last "."."""
        while (line := self._line()) != b".\r\n":
            if not line:
                raise AssertionError("the news server hung up within a reply")
            yield line


class NewsServer:
    def __init__(self, cache, groups, logins=None):
        """Starts a server that has the newsgroups `groups`. With `logins`, pairs of user and password, it
        serves nobody before they said who they are."""
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="pelnor-inn-"))
        self.innd = self.nnrpd = None
        self.logins = logins
        self.feed_port, self.port = free_port(), free_port()
        try:
            self._unpack(cache)
            self._configure()
            self._start_innd()
            for group in groups:
                self.new_group(group)
            self._start_nnrpd()
        except BaseException:
            self.stop()
            raise

    def __enter__(self):
        return self

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
        folders = {name: self.home / name for name in
                   ("db", "etc", "log", "run", "spool", "articles", "overview", "incoming", "incoming/tmp",
                    "outgoing", "archive", "filter", "http")}
        for folder in folders.values():
            folder.mkdir(exist_ok=True)
        paths = {"pathnews": "usr/lib/news", "pathbin": "usr/lib/news/bin",
                 "pathcontrol": "usr/lib/news/bin/control", "pathdb": "db", "pathtmp": "incoming/tmp"}
        paths.update({"path" + name: name for name in folders if "/" not in name and name != "db"})
        settings = {
            "mta": '"/bin/true %s"', "organization": '"The test bench"', "hismethod": "hisv6",
            "ovmethod": "tradindexed", "pathhost": "news.bench.example", "domain": "bench.example",
            "fromhost": "bench.example", "bindaddress": "127.0.0.1", "artcutoff": "0", "wireformat": "true",
            "enableoverview": "true", "groupbaseexpiry": "true", "maxforks": "10", "nnrpdposthost": '""',
            "nnrpdloadlimit": "0",  # a busy machine is no reason to turn readers away
        }
        settings.update({name: self.home / path for name, path in paths.items()})
        self._write("inn.conf", "".join(f"{name}: {value}\n" for name, value in settings.items()))
        self._write("storage.conf", "method tradspool {\n    newsgroups: *\n    class: 0\n}\n")
        self._write("newsfeeds", "ME:!*::\n")
        self._write("incoming.conf", "streaming: true\nmax-connections: 8\npeer bench { hostname: 127.0.0.1 }\n")
        self._write("expire.ctl", "/remember/:10\n*:A:1:never:never\n")
        self._write("control.ctl", "all:*:*:drop\n")
        for name in ("distrib.pats", "subscriptions", "moderators", "nntpsend.ctl", "passwd.nntp"):
            self._write(name, "")
        self._write_readers()
        own = ("control", "control.cancel", "junk")  # innd does not start without them
        (self.home / "db/active").write_text("".join(f"{name} 0000000000 0000000001 n\n" for name in own))
        for name in ("active.times", "newsgroups", "history"):
            (self.home / "db" / name).touch()
        if self.account:
            subprocess.run(["chown", "-R", "news:news", self.home], check=True)
        self._run("makedbz", "-i", "-o", "-s", "200000")

    def _write(self, name, text):
        (self.home / "etc" / name).write_text(text)

    def _write_readers(self):
        if self.logins is None:
            self._write("readers.conf", 'auth all { hosts: "*" default: "reader" }\n'
                                        'access all { users: "*" newsgroups: "*" access: R }\n')
            return
        lines = [f"{user}:{self._hashed(password)}\n" for user, password in self.logins]
        self._write("logins", "".join(lines))
        self._write("readers.conf", f'auth all {{ hosts: "*" auth: "ckpasswd -f {self.home}/etc/logins" }}\n'
                                    'access all { users: "*" newsgroups: "*" access: R }\n')

    @staticmethod
    def _hashed(password):
        return subprocess.run(["perl", "-e", r'print crypt(shift, "\$6\$bench")', password], check=True,
                              capture_output=True, text=True).stdout

    def _run(self, program, *arguments):
        done = subprocess.run([*self.enter, self.programs / program, *arguments], env=self.environment,
                              cwd=self.home, capture_output=True, text=True, timeout=WAIT, **self.account)
        if done.returncode:
            raise AssertionError(f"{program} {' '.join(arguments)}: {done.stdout}{done.stderr}")
        return done.stdout

    def _spawn(self, program, *arguments):
        log = open(self.home / f"{program}.out", "ab")
        with log:
            return subprocess.Popen([*self.enter, self.programs / program, *arguments], cwd=self.home,
                                    env=self.environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                    preexec_fn=end_with_parent, **self.account)

    def _start_innd(self):
        self.innd = self._spawn("innd", "-d", "-N", "-u", "-P", str(self.feed_port))
        self._await(self.innd, "innd", self.feed_port)
        wait_until(lambda: (self.home / "run/control").exists(), "innd's control socket")

    def _start_nnrpd(self):
        self.nnrpd = self._spawn("nnrpd", "-D", "-f", "-p", str(self.port), "-b", "127.0.0.1")
        self._await(self.nnrpd, "nnrpd", self.port)

    def _await(self, process, name, port):
        def listens():
            if process.poll() is not None:
                raise AssertionError(f"{name} ended: " + (self.home / f"{name}.out").read_text(errors="replace"))
            try:
                socket.create_connection(("127.0.0.1", port), timeout=1).close()
                return True
            except OSError:
                return False
        wait_until(listens, f"{name} at port {port}")

    # What a test does with it.

    def new_group(self, name):
        self._run("ctlinnd", "-s", "newgroup", name, "y", "bench")

    def feed(self, articles):
        """Hands the articles over in order, so that they get rising numbers; each must be accepted."""
        with NntpClient(self.feed_port) as client:
            client.command("MODE STREAM")
            for article in articles:
                reply = self._offer(client, article)
                if not reply.startswith("239"):
                    raise AssertionError(f"innd refused an article: {reply}\n{article.decode('latin-1')}")

    @staticmethod
    def _offer(client, article):
        head = article.split(b"\r\n\r\n")[0]
        name = next(line.split(b":", 1)[1].strip() for line in head.split(b"\r\n")
                    if line.lower().startswith(b"message-id:"))
        lines = article.split(b"\r\n")[:-1]
        stuffed = b"".join((b"." if line.startswith(b".") else b"") + line + b"\r\n" for line in lines)
        client.send(b"TAKETHIS " + name + b"\r\n" + stuffed + b".\r\n")
        return client.reply()

    def reader(self):
        return NntpClient(self.port, self.logins and self.logins[0])

    def remove(self, group, number):
        """Takes one article away, so that its number is missing between its neighbours."""
        with self.reader() as client:
            client.command(f"GROUP {group}")
            name = client.command(f"STAT {number}").split()[2]
        self._run("ctlinnd", "-s", "cancel", name)

        def gone():
            with self.reader() as client:
                client.command(f"GROUP {group}")
                return client.command(f"HEAD {number}").startswith("423")
        wait_until(gone, f"article {number} of {group} still served after it was removed")

    # The end.

    @staticmethod
    def _end(process):
        if process and process.poll() is None:
            process.terminate()
            try:
                process.wait(3)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    def stop(self):
        try:
            self._end(self.nnrpd)
            if self.innd and self.innd.poll() is None:
                with contextlib.suppress(AssertionError, subprocess.TimeoutExpired):
                    self._run("ctlinnd", "-s", "-t", "5", "shutdown", "done")  # it does not heed SIGTERM
                    self.innd.wait(5)
            self._end(self.innd)
        finally:
            shutil.rmtree(self.home, ignore_errors=True)


if __name__ == "__main__":
    install(sys.argv[1])
