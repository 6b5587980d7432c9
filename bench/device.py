"""Counts what the device's executable does: its instructions, its calls of the system, its heap and its stack.

    device.py DEVICE_BUILD [FILE]

The executable runs on the tests' emulated core, so that two runs count the same to the digit. What stands for one more
article, group or byte is the difference of two runs. What coredll does inside a call is not counted; the calls are.
With FILE, a table printed earlier, fails where a count has grown by more than a tenth.
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
        return {"instructions": self.instructions, **{name: sum(self.calls[call] for call in calls) for name, calls in
                                                      (("file calls", FILE_CALLS), ("memory calls", MEMORY_CALLS))}}


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


def fetched(count, lines=22, kept=5):
    """A run over so many articles with so many lines and so many head lines that are stored."""
    body = b"".join(b"%d " % line + JAPANESE.encode("iso2022_jp") + b"\r\n" for line in range(lines))
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
    """(what, per, instructions..., goal): each count of the larger run less the smaller one's, divided."""
    def differ(what, unit, larger, smaller, units, goal=""):
        after, before = larger.counts(), smaller.counts()
        yield what, unit, [(after[name] - before[name]) / units for name in after], goal

    small, large = 5, 15
    for lines, kept, what in ((0, 105, "storing a head"), (44, 5, "storing a body")):
        (less, body, head), (more, *_) = fetched(small, lines, kept), fetched(large, lines, kept)
        yield from differ(what, "byte", more, less, (large - small) * (body or head))
    less, (more, body, head) = fetched(small)[0], fetched(large)
    yield from differ("storing an article", "byte", more, less, (large - small) * (body + head), 20)
    yield from differ("the same", "article", more, less, large - small)
    heap, stack = more.heap, more.stack

    logs = [{name: data for name, data in group(count).items() if not name.endswith(".idx")} for count in (small, large)]
    yield from differ("making an index anew", "byte", Counted(logs[1]).ended(), Counted(logs[0]).ended(),
                      len(logs[1]["fj.test.log"]) - len(logs[0]["fj.test.log"]), 5)

    keywords = "".join(f"{'+-'[number % 2]} 語{number}\r\n" for number in range(20)).encode("cp932")

    def refiltered(count):
        device = Counted(group(count) | {"fj.test.flt": keywords})
        device.double_click(test_run.GROUP_VIEW, "fj.test")
        test_run.add_keyword(device)
        return device.ended()

    yield from differ("re-filtering, 20 keywords", "article", refiltered(large), refiltered(small), large - small)

    def marked(count):
        device = Counted(group(count))
        test_run.catch_up(device, "fj.test")
        return device.ended()

    yield from differ("marking all read", "article", marked(large), marked(small), large - small)

    def deleted(count):
        device = Counted(group(count, read=lambda number: number % 2))
        test_run.delete_read(device)
        return device.ended()

    yield from differ("deleting every second", "article", deleted(large), deleted(small), large - small)

    closed = Counted(group(100)).ended()
    for count in (100, 1000, 10000):
        yield from differ(f"opening a group of {count}", "article", opened(count), closed, count,
                          40 if count > 100 else "")
    page = opened(100, lambda device: device.keys(test_run.SUBJECT_VIEW, test_run.RIGHT))
    yield from differ("a page of subjects", "page", page, opened(100), 1)
    article = opened(100, lambda device: device.keys(test_run.SUBJECT_VIEW, test_run.ENTER),
                     lambda device: device.keys(test_run.ARTICLE_VIEW, test_run.DOWN))
    yield from differ("an article's layout and two pages", "article", article, opened(100), 1)
    base = started(0)
    for groups in (1, 20, 200):
        yield from differ(f"starting with {groups}", "group", started(groups), base, groups, "6 calls" if groups > 1 else "")
    yield "memory of a run", "bytes", [heap], 65536
    yield "stack of a thread", "bytes", [stack], 8192
    yield "the executable", "bytes", [(test_run.build / "pelnor-arm.exe").stat().st_size], 112640


def table():
    yield f"{'what':34} | {'for each':8} | {'instructions':>12} | {'file calls':>10} | {'memory':>8} | goal"
    for what, unit, counts, goal in rows():
        figures = [f"{count:.2f}" for count in counts] + [""] * (3 - len(counts))
        yield f"{what:34} | {unit:8} | {figures[0]:>12} | {figures[1]:>10} | {figures[2]:>8} | {goal}".rstrip()


def figures_of(line):
    name, unit, *rest = (field.strip() for field in line.split("|"))
    return (name, unit), [float(field) for field in rest[:3] if re.fullmatch(r"-?[\d.]+", field)]


def grown(now, before):
    """The rows of which a count is more than a tenth above what it was."""
    known = dict(map(figures_of, before))
    for line in now:
        name, figures = figures_of(line)
        if any(new > old * 1.1 + 0.005 for new, old in zip(figures, known.get(name, []))) or name not in known:
            yield line


if __name__ == "__main__":
    test_run.build = pathlib.Path(sys.argv[1])
    lines = list(table())
    print("\n".join(lines))
    if len(sys.argv) > 2:
        worse = list(grown(lines, pathlib.Path(sys.argv[2]).read_text(encoding="utf-8").splitlines()))
        sys.exit("\n".join(["more than a tenth worse than in " + sys.argv[2] + ":", *worse]) if worse else 0)
