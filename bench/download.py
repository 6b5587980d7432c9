"""What a download costs, against other programs that fetch the same articles from the same server (InterNetNews on
127.0.0.1), and against the least that the line and the calls allow. Prints rows of run.sh's table.

    download.py BUILD [quick]

BUILD holds the benchmarks' programs, native/ and wine/. `quick` measures once and with few articles, for whoever is
just changing the program."""

import functools
import pathlib
import re
import signal
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/e2e"))
import corpus
import delay_relay
import inn
import peers

MANY, FAR, GAPS, FEW = "fj.many", "fj.far", "fj.gaps", "fj.few"
DELAY = 0.1  # seconds each way
MEMORY_MOST = 8 << 20
CALLS_MOST = 8
# Whatever the program asks the system for while articles come in.
CALLS = ["kernel32." + name for name in ("CreateFileW", "ReadFile", "WriteFile", "SetFilePointer", "GetFileSize",
                                         "FlushFileBuffers", "CloseHandle", "DeleteFileW", "MoveFileW")]
CALLS += ["ws2_32." + name for name in ("connect", "send", "recv", "select", "ioctlsocket", "closesocket")]


class Sizes:
    """How many rounds and articles. What is slow gets fewer, since only its time an article counts."""

    def __init__(self, quick):
        self.rounds = 1 if quick else 5
        self.many = 500 if quick else 5000
        self.slow = 100 if quick else 1000
        self.far = 100 if quick else 400
        self.gaps = 100
        self.groups, self.few = 50, 3
        self.calls = 100


def article(group, number):
    """30 Japanese lines under a head of the usual kind."""
    line = corpus.jis("日本語のニュースを読む日本語のニュースを読む日本語") + b"\r\n"
    head = [b"Path: bench", b"From: " + corpus.word("山田花子") + b" <hanako@example.jp>",
            b"Newsgroups: " + group.encode("ascii"), b"Subject: " + corpus.word(f"件名 {number}"),
            b"Date: Mon, 5 Mar 2001 10:00:00 +0900", b"Message-ID: <%d.%s@bench.example>" % (number, group.encode())]
    return b"\r\n".join(head) + b"\r\n\r\n" + 30 * line


def feed(server, group, count):
    server.feed(article(group, number) for number in range(1, count + 1))


def missing(sizes):
    """The numbers that the group with gaps has lost."""
    return range(5, sizes.gaps, 10)


class Programs:
    def __init__(self, build):
        self.bin, self.native = build / "bench", build / "native"
        self.others = peers.install(build / "peers")

    def wine(self, name, *arguments):
        _, output = peers.run([ROOT / "tools/wine_run", self.bin / f"{name}.exe", *map(str, arguments)])
        return output.split()

    def pelnor(self, port, group, articles):
        """Milliseconds, and bytes of memory beyond the idle program's."""
        time, memory, _ = self.wine("download_bench", port, group, articles)
        return float(time), float(memory)

    def pelnor_groups(self, port, group, articles, groups):
        """Milliseconds of a run over so many groups, and of one that finds nothing new."""
        time, _, again = self.wine("download_bench", port, group, articles, groups)
        return float(time), float(again)

    def bare(self, port, group, articles):
        return float(self.wine("bare_client", port, group, articles)[0])

    def bare_native(self, port, group, articles):
        return float(peers.run([self.native / "bare_client", str(port), group, str(articles)])[1])


def row(subject, articles, shown, ours, against, theirs, goal=None, unit="articles"):
    """One line of the table: see measure.h."""
    ratio = ours / theirs
    goal = f"{goal:.2f} {'met' if ratio <= goal else 'MISSED'}" if goal else "-"
    print(subject, f"{articles} {unit}", shown.format(ours), against, shown.format(theirs), f"{ratio:.2f}", "-",
          goal, sep="\t", flush=True)


def by_turns(rounds, samples):
    """The medians of what the functions `samples` answer, called by turns."""
    answers = [[sample() for sample in samples] for _ in range(rounds)]
    return [statistics.median(column) for column in zip(*answers)]


def bench_near(programs, server, sizes):
    memory = []

    def pelnor():
        time, bytes_taken = programs.pelnor(server.port, MANY, sizes.many)
        memory.append(bytes_taken)
        return time / sizes.many

    def other(fetch, count=sizes.many):
        return lambda: fetch(server.port, MANY, count) / count

    ours, suck, slrnpull, bare, native = by_turns(sizes.rounds, [
        pelnor, other(functools.partial(peers.suck, programs.others)),
        other(functools.partial(peers.slrnpull, programs.others), sizes.slow),
        other(programs.bare), other(programs.bare_native, sizes.slow)])
    for name, theirs, goal in (("suck", suck, 1 / 2), ("slrnpull", slrnpull, 1 / 20),
                               ("a bare client under Wine", bare, 1 / 0.7), ("a bare native client", native, None)):
        row("downloading an article", sizes.many, "{:.3f} ms", ours, name, theirs, goal)
    row("memory of a download", sizes.many, "{:.0f} bytes", statistics.median(memory), "at most", MEMORY_MOST, 1)


def bench_far(programs, server, sizes):
    """A number that is missing costs its refusal too, so there the numbers asked for count, not the articles."""
    kept = sizes.gaps - len(missing(sizes))
    with delay_relay.DelayRelay(server.port, DELAY) as line:
        unbroken, gaps = by_turns(sizes.rounds, [
            lambda: programs.pelnor(line.port, FAR, sizes.far)[0] / sizes.far,
            lambda: programs.pelnor(line.port, GAPS, kept)[0] / sizes.gaps])
    round_trip = 2000 * DELAY
    row("an article over a long line", sizes.far, "{:.1f} ms", unbroken, "a round trip", round_trip, 1 / 4)
    row("the same, a tenth missing", sizes.gaps, "{:.1f} ms", gaps, "a round trip", round_trip, 1)


def bench_groups(programs, server, sizes):
    """One group is what the connection and the first article take."""
    def more_groups(port):
        one, many = (programs.pelnor_groups(port, FEW, sizes.few, count) for count in (1, 1 + sizes.groups))
        return [(more - less) / sizes.groups for more, less in zip(many, one)]

    with delay_relay.DelayRelay(server.port, DELAY) as line:
        far = more_groups(line.port)
    near = more_groups(server.port)
    for what, time, goal in (("a group of 3 over a long line", far[0], 1.3), ("one with nothing new", far[1], 1.05)):
        row(what, sizes.groups, "{:.1f} ms", time, "a round trip", 2000 * DELAY, goal, "groups")
    row("a group of 3 on this machine", sizes.groups, "{:.1f} ms", near[0], "one with nothing new", near[1],
        unit="groups")


def count_calls(programs, server, articles):
    """Runs the download once with Wine noting its calls."""
    key = r"HKCU\Software\Wine\Debug"
    peers.run(["wine", "reg", "add", key, "/v", "RelayInclude", "/t", "REG_SZ", "/d", ";".join(CALLS), "/f"])
    command = ["env", "WINEDEBUG=+relay", "wine", programs.bin / "download_bench.exe", str(server.port), MANY,
               str(articles)]
    done = subprocess.run(command, capture_output=True, timeout=peers.LIMIT, stdin=subprocess.DEVNULL)
    if done.returncode:
        raise RuntimeError(f"counting the calls: {done.stdout!r}")
    return len(re.findall(rb"^[0-9a-f:]*Call (?i:kernel32|ws2_32)\.", done.stderr, re.MULTILINE))


def bench_calls(programs, server, sizes):
    """The difference of two runs, since each begins and ends with the same calls."""
    few, many = (count_calls(programs, server, count) for count in (sizes.calls, 2 * sizes.calls))
    row("calls an article", sizes.calls, "{:.2f}", (many - few) / sizes.calls, "at most", CALLS_MOST, 1)


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("ended by a signal"))  # so that the server ends too
    build, sizes = pathlib.Path(sys.argv[1]).resolve(), Sizes("quick" in sys.argv[2:])
    programs = Programs(build)
    few = [f"{FEW}{number}" for number in range(1, sizes.groups + 2)]
    with inn.NewsServer(build / "inn", (MANY, FAR, GAPS, *few)) as server:
        for group, count in ((MANY, sizes.many), (FAR, sizes.far), (GAPS, sizes.gaps),
                             *((group, sizes.few) for group in few)):
            feed(server, group, count)
        for number in missing(sizes):
            server.remove(GAPS, number)
        bench_near(programs, server, sizes)
        bench_far(programs, server, sizes)
        bench_groups(programs, server, sizes)
        bench_calls(programs, server, sizes)


if __name__ == "__main__":
    main()
