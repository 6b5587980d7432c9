"""Counts what the device's executable does: its instructions, its calls of the system, its heap and its stack.

    device.py DEVICE_BUILD [FILE]

The executable runs on the tests' emulated core, so that two runs count the same to the digit. What stands for one more
article, group or byte is the difference of two runs. What coredll does inside a call is not counted; the calls are.
The calls of all kinds stand below the table, by name. Heap and stack are the most that the larger run had at once.
With FILE, a table printed earlier, fails where a count has grown by more than a tenth or is above its goal.
"""
import collections
import pathlib
import re
import struct
import sys

import unicorn

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tests/device"), str(ROOT / "tests/e2e")]
import machine
import oracle
import server
import system
import test_run

FILE_CALLS = ("CreateFileW", "GetFileSize", "SetFilePointer", "ReadFile", "WriteFile", "SetEndOfFile", "CloseHandle",
              "GetFileAttributesW", "DeleteFileW", "MoveFileW", "CreateDirectoryW", "FindFirstFileW", "FindNextFileW")
MEMORY_CALLS = ("malloc", "free", "HeapAlloc")
COLUMNS = {"instructions": ["instructions"], "file calls": FILE_CALLS, "memory calls": MEMORY_CALLS, "heap": ["heap"],
           "stack": ["stack"], "size": ["size"]}
SAID = "Disconnect", "Delete read articles"  # a run has ended; a question
JAPANESE = "これは本文の行です。これは本文の行です。"
DATE = b"Date: Thu, 5 Mar 1998 12:00:00 +0900\r\n"
FROM = b"From: Taro Yamada <taro@example.jp>\r\n"


class Counted(test_run.OnDevice):
    def __init__(self, files, news=server.NewsServer({})):
        super().__init__("arm", news, files)
        self.system.registry.update({name: test_run.packed(value) for name, value in (("Limit", 20000), ("UserID", ""))})
        self.instructions, self.calls, self.heap, self.stack = 0, collections.Counter(), 0, 0
        self.bottom, self.run_threads = machine.STACK + machine.STACK_SIZE, self.system.run_threads
        self.system.run_threads = self.on_threads
        base = self.machine.exe.OPTIONAL_HEADER.ImageBase
        self.machine.cpu.hook_add(unicorn.UC_HOOK_BLOCK, self.on_block, begin=base, end=machine.STACK - 1)
        self.machine.cpu.hook_add(unicorn.UC_HOOK_CODE, self.on_call, begin=machine.TRAPS + machine.TRAP,
                                  end=machine.TRAPS + machine.TRAPS_SIZE - 1)

    def on_block(self, cpu, _address, size, _data):
        self.instructions += size // 4
        self.stack = max(self.stack, self.bottom - cpu.reg_read(self.machine.processor.sp))

    def on_threads(self):
        """They run on what the first thread has left of its stack; each is measured from there."""
        bottom, self.bottom = self.bottom, self.machine.cpu.reg_read(self.machine.processor.sp)
        yield from self.run_threads()
        self.bottom = bottom

    def on_call(self, _cpu, address, _size, _data):
        self.calls[self.machine.methods[(address - machine.TRAPS) // machine.TRAP - 1][0]] += 1
        self.heap = max(self.heap, sum(self.machine.heap.blocks.values()))

    def ended(self):
        self.close()
        if self.run() != 0 or any(kind not in SAID for kind, _ in self.system.boxes):
            sys.exit(f"the program did not do what is counted: {self.system.boxes}")
        return self

    def counts(self):
        return collections.Counter(self.calls, instructions=self.instructions)


def subject(number):
    return b"Subject: %d " % number + JAPANESE[:9].encode("cp932") + b"\r\n"


def group(count, read=lambda number: False, lines=22):
    """The files of a group whose articles take about 940 bytes. A hundred are made, the index names them again."""
    body = b"".join(b"%d " % line + JAPANESE.encode("cp932") + b"\r\n" for line in range(lines))
    made = oracle.Group("fj.test")
    for number in range(1, min(count, 100) + 1):
        made.append(number, [FROM, b"Newsgroups: fj.test\r\n", subject(number), DATE,
                             b"Message-ID: <%d.test@example.jp>\r\n" % number, b"X-Local-Seq: %d\r\n" % number,
                             b"\r\n", body, oracle.SEPARATOR])
    index = bytearray(made.index())
    index += index[100:] * (count // 100 - 1)
    struct.pack_into("<I", index, 16, count)
    for number in range(count):
        index[100 + 92 * number] |= read(number)
    return {"group.dat": b"fj.test\r\n", "fj.test.log": made.log, "fj.test.idx": bytes(index)}


def opened(count, *acts):
    device = Counted(group(count))
    device.double_click(test_run.GROUP_VIEW, "fj.test")
    for act in acts:
        act(device)
    return device.ended()


def fetched(count, lines=22, kept=5, text=JAPANESE):
    """A run over so many articles with so many lines and so many head lines that are stored."""
    body = b"".join(b"%d " % line + text.encode("iso2022_jp") + b"\r\n" for line in range(lines))
    head = FROM + b"Subject: =?ISO-2022-JP?B?GyRCRnxLXDhsGyhC?=\r\n" + DATE + b"Newsgroups: fj.test\r\n" * (kept - 3) \
        + b"Path: a!b!c!not-for-mail\r\nLines: 22\r\nXref: news fj.test:1\r\n"
    device = Counted({"group.dat": b"fj.test\r\n"}, server.NewsServer({b"fj.test": [(head, body)] * count}))
    device.command(test_run.GET_ARTICLES)
    return device.ended(), len(body), len(head)


def started(groups):
    files = {f"fj.g{number}.{kind}": data for kind in ("idx", "log") for number in range(groups)
             for data in [group(3)[f"fj.test.{kind}"]]}
    return Counted({**files, "group.dat": b"".join(b"fj.g%d\r\n" % number for number in range(groups))}).ended()


def rows():
    """(what, for each, counts, goal): each count of the larger run less the smaller one's, divided."""
    def differ(what, unit, larger, smaller, units, goal=""):
        counts = larger.counts()
        counts.subtract(smaller.counts())
        peaks = {"heap": larger.heap, "stack": larger.stack}
        return what, unit, {name: count / units for name, count in counts.items()} | peaks, goal

    small, large = 5, 15
    for lines, kept, what in ((0, 105, "storing a head"), (44, 5, "storing a body")):
        (less, body, head), (more, *_) = fetched(small, lines, kept), fetched(large, lines, kept)
        yield differ(what, "byte", more, less, (large - small) * (body or head))
    less, (more, body, head) = fetched(small)[0], fetched(large)
    longer, long_body, _ = fetched(large, text=2 * JAPANESE)
    yield differ("of that, ISO-2022-JP", "byte", longer, more, large * (long_body - body))
    yield differ("storing an article", "byte", more, less, (large - small) * (body + head), "20 instructions")
    yield differ("storing an article", "article", more, less, large - small)

    logs = [{name: data for name, data in group(count).items() if not name.endswith(".idx")} for count in (small, large)]
    less, more = (Counted(files).ended() for files in logs)
    yield differ("making an index anew", "byte", more, less, len(logs[1]["fj.test.log"]) - len(logs[0]["fj.test.log"]),
                 "5 instructions")
    yield differ("making an index anew", "article", more, less, large - small)

    keywords = "".join(f"{'+-'[number % 2]} 語{number}\r\n" for number in range(20)).encode("cp932")

    def refiltered(count):
        device = Counted(group(count) | {"fj.test.flt": keywords})
        device.double_click(test_run.GROUP_VIEW, "fj.test")
        test_run.add_keyword(device)
        return device.ended()

    yield differ("re-filtering, 20 keywords", "article", refiltered(large), refiltered(small), large - small)

    def marked(count):
        device = Counted(group(count))
        test_run.catch_up(device, "fj.test")
        return device.ended()

    yield differ("marking all read", "article", marked(large), marked(small), large - small)

    def deleted(count):
        device = Counted(group(count, read=lambda number: number % 2))
        test_run.delete_read(device)
        return device.ended()

    yield differ("deleting every second", "article", deleted(large), deleted(small), large - small)

    closed = Counted(group(100)).ended()
    for count in (100, 1000, 10000):
        yield differ(f"opening a group of {count}", "article", opened(count), closed, count,
                     "40 instructions" if count > 100 else "")

    def send(view, message, key=0):
        return lambda device: device.do(lambda: (device.system.window(test_run.VIEWS[view]), message, key, 0))

    plain = opened(100)
    for what, unit, key, view in (("a page of subjects", "page", test_run.RIGHT, test_run.SUBJECT_VIEW),
                                  ("an article's picture", "article", test_run.ENTER, test_run.ARTICLE_VIEW)):
        shown = opened(100, send(test_run.SUBJECT_VIEW, system.WM_KEYDOWN, key), send(view, system.WM_PAINT))
        yield differ(what, unit, shown, plain, 1)
    base = started(0)
    for groups in (1, 20, 200):
        yield differ(f"starting with {groups}", "group", started(groups), base, groups,
                     "6.2 file calls" if groups > 1 else "")
    yield "a run", "at most", {"heap": longer.heap, "stack": longer.stack}, "65536 heap, 8192 stack"
    yield "the executable", "bytes", {"size": (test_run.build / "pelnor-arm.exe").stat().st_size}, "112640 size"


def table():
    found = list(rows())
    yield f"{'what':25} | for each | {' | '.join(f'{column:>12}' for column in COLUMNS)} | goal"
    for what, unit, counts, goal in found:
        sums = (sum(counts.get(name, 0) for name in names) for names in COLUMNS.values())
        figures = (f"{figure:.2f}".replace(".00", "") if figure else "" for figure in sums)
        yield f"{what:25} | {unit:8} | {' | '.join(f'{figure:>12}' for figure in figures)} | {goal}".rstrip()
    for what, unit, counts, _ in found:
        calls = [f"{name} {count:.2f}" for name, count in sorted(counts.items(), key=lambda item: -item[1])
                 if count >= 0.005 and name not in COLUMNS]
        if calls and unit != "byte":
            yield f"{what}, {unit}: {', '.join(calls)}"


def figures_of(lines):
    """({(row, count): figure}, the same for the goals)"""
    figures, goals = {}, {}
    for line in lines[1:]:
        if "|" in line:
            what, unit, *counts, goal = (field.strip() for field in line.split("|"))
            row = f"{what}, {unit}"
            figures |= {(row, column): float(count) for column, count in zip(COLUMNS, counts) if count}
            goals |= {(row, column): float(most) for most, column in re.findall(r"([\d.]+) ([a-z ]+)", goal)}
        else:
            row, _, calls = line.partition(": ")
            figures |= {(row, name): float(count) for name, count in re.findall(r"(\w+) ([\d.]+)", calls)}
    return figures, goals


def grown(now, before):
    """What is more than a tenth above what it was, or above its goal."""
    known, _ = figures_of(before)
    figures, goals = figures_of(now)
    for place, figure in figures.items():
        if figure > min(known.get(place, 0) * 1.1 + 0.005, goals.get(place, figure)):
            yield f"{': '.join(place)}: {known.get(place, 0)}, now {figure}"


if __name__ == "__main__":
    test_run.build = pathlib.Path(sys.argv[1])
    lines = list(table())
    print("\n".join(lines))
    if len(sys.argv) > 2:
        worse = list(grown(lines, pathlib.Path(sys.argv[2]).read_text(encoding="utf-8").splitlines()))
        sys.exit("\n".join(["worse than in " + sys.argv[2] + ", or than its goal:", *worse]) if worse else 0)
