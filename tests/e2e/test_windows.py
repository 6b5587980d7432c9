"""Walks through the program's windows as a user does, and compares all that they show with windows.txt.

windows.txt is script and expectation in one, to be read by people:

    # what happens
    > an action of class Windows below, with its arguments
    what the windows show then: whole when they are new, else what went (-) and what came (+)

PELNOR_ACCEPT=1 writes what it found into windows.txt. Read every line of the difference before you keep it."""

import collections
import difflib
import itertools
import os
import pathlib
import shutil
import struct
import subprocess
import time

import corpus
import inn
import program
import scenario
from oracle import NONE, SEPARATOR, Group

ACCEPT = bool(os.environ.get("PELNOR_ACCEPT"))
KEY = r"HKCU\Software\marrowby\Pelnor"
PSM_SETCURSEL = 0x465
FACES = "1034"  # the combo box with the fonts that this machine happens to have
INK = {b"\0\0\0": "#", b"\xff\xff\xff": ".", b"\xf5\xf5\xf5": "."}
Step = collections.namedtuple("Step", "title actions expected")


def read_script(script):
    steps = []
    for line in script.read_text("utf-8").splitlines():
        if line.startswith("# "):
            steps.append(Step(line, [], []))
        else:
            (steps[-1].actions if line.startswith("> ") else steps[-1].expected).append(line)
    return steps


def article(group, number):
    """Its lines as a log holds them."""
    text = f"""From: 山田 花子 <hanako@example.jp>
Newsgroups: {group}
Subject: 第{number}号 ポケットの中の読書
Date: Mon, {number % 28 + 1} Dec 2001 10:00:00 +0900
X-Local-Seq: {number}

本文の一行目です。

> 引用した行です。長いので、狭い画面では次の行に続きます。
＞ 全角の引用
""" + "".join(f"line {line}\n" for line in range(number * 5 % 40))
    return [line.encode("cp932") + b"\r\n" for line in text.split("\n")[:-1]] + [SEPARATOR]


class Screen:
    """What a person sees of a part of the display."""

    def __init__(self, bench):
        take = ["import", "-window", "root", "-depth", "8", "ppm:-"]
        shown = subprocess.run(take, env=bench.environment, check=True, capture_output=True).stdout
        _, size, _, self.bytes = shown.split(b"\n", 3)
        self.width = int(size.split()[0])

    def pixel(self, x, y):
        at = (y * self.width + x) * 3
        return self.bytes[at:at + 3]

    def drawing(self, left, top, right, bottom):
        """A character a pixel: '#' black, '.' white or the windows' grey, letters for other colours."""
        return ["".join(INK.get(self.pixel(x, y)) or "krgybmcw"[sum((byte > 127) << i for i, byte in enumerate(
            self.pixel(x, y)))] for x in range(left, right)) for y in range(top, bottom)]

    def bands(self, left, top, right, bottom):
        """Each band of lines with anything on them: where it is, and from where to where each colour goes."""
        found = []
        for y in range(top, bottom):
            colours = {}
            for x in range(left, right):
                if self.pixel(x, y) not in INK or self.pixel(x, y) == b"\0\0\0":
                    colours.setdefault(self.pixel(x, y).hex(), set()).add(x - left)
            if colours and (not found or found[-1][1] != y - top):
                found.append([y - top, y - top, {}])
            for colour, places in colours.items():
                found[-1][2].setdefault(colour, set()).update(places)
            if colours:
                found[-1][1] = y - top + 1
        def named(inks):
            return "".join(f" {colour} {self.runs(places)}" for colour, places in sorted(inks.items()))
        return [f"  {start}-{end}:{named(inks)}" for start, end, inks in found]

    @staticmethod
    def runs(places, gap=12):
        """Stretches of ink, those that a wide blank parts."""
        edges = sorted(places)
        breaks = [0] + [i for i in range(1, len(edges)) if edges[i] - edges[i - 1] > gap] + [len(edges)]
        return ",".join(f"{edges[a]}-{edges[b - 1]}" for a, b in zip(breaks, breaks[1:]))


class Windows(scenario.Scenario):
    script = pathlib.Path(__file__).with_name("windows.txt")
    groups = ("fj.test", "fj.pda", "alt.test")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles("fj.test", 3))

    # What the script says.

    def setting(self, name, kind, *words):
        value = " ".join(words).encode().decode("unicode_escape")
        self.bench.order("setting", name, kind, {"PORT": self.relay.port, "LONG": "x" * 300}.get(value, value))

    def start(self):
        self.running = program.Program(self.bench, (program.FRAME, program.DIALOG))
        self.addCleanup(self.running.end)

    def elsewhere(self):
        """Programs start on another drive from here on."""
        os.chdir("/")

    def start_again(self):
        second = self.bench.run_wine(self.bench.program)
        inn.wait_until(lambda: second.poll() is not None, "the second start to end")
        self.notes.append(f"the second start ended with {second.returncode}")

    def start_two(self):
        """At once: one stays."""
        both = [self.bench.run_wine(self.bench.program) for _ in range(2)]
        for process in both:
            self.addCleanup(process.kill)
        inn.wait_until(lambda: any(process.poll() is not None for process in both), "one of two to end")
        self.running.process = next(process for process in both if process.poll() is None)
        self.notes.append(f"of two starts at once one ended with {sum(p.returncode or 0 for p in both)}")

    def other_program(self):
        """Comes in front of this one."""
        self.other = self.bench.run_wine("notepad")
        self.addCleanup(self.other.kill)
        def behind():
            return not any(line.endswith(" front") for line, in self.bench.order("dump"))
        inn.wait_until(behind, "another program")

    def other_ends(self):
        self.other.kill()
        self.other.wait()

    def ends(self):
        self.notes.append(f"the program ended with {self.running.wait_exit()}")

    def keys(self, *names):
        self.await_focus()
        self.xdotool("key", *names)

    def type(self, text):
        self.await_focus()
        self.xdotool("type", text.replace("PORT", str(self.relay.port)))

    def click(self, number, x=None, y=None, times=1, button=1):
        """On the middle of the child with this id, or at a place in it."""
        left, top, right, bottom = self.area(number)
        place = left + int(x or (right - left) // 2), top + int(y or (bottom - top) // 2)
        self.xdotool("mousemove", *place)
        if int(times):
            self.xdotool("click", "--repeat", times, "--delay", "10", button)

    def turn(self, number, *notches):
        """The wheel; a notch above 0 is towards the user."""
        for notch in map(int, notches):
            self.click(number, times=abs(notch), button=5 if notch > 0 else 4)

    def double(self, number, x, y):
        self.click(number, x, y, 2)

    def drag(self, number, x, y, by_x, by_y):
        left, top, _, _ = self.area(number)
        self.xdotool("mousemove", left + int(x), top + int(y), "mousedown", "1", "mousemove_relative", "--sync", "--",
                     by_x, by_y, "mouseup", "1")

    def page(self, number):
        self.running.send(self.running.wait_dialog("プロパティ").handle, PSM_SETCURSEL, number)

    def command(self, number):
        self.bench.order("post", self.window("frame"), program.WM_COMMAND, number, 0)

    def message(self, number, *parameters):
        self.bench.order("post", self.window("frame"), number, *parameters)

    def clipboard(self):
        self.looks.append(lambda: ["  " + line for line in self.bench.order("clipboard")[0][0].splitlines()])

    def index(self, name):
        """What the file holds: the header's numbers, and each record's flags."""
        def look():
            data = (self.folder_path / f"{name}.idx").read_bytes()
            flags = "".join(str(data[at]) for at in range(100, len(data), 92))
            return [f"{name}: {struct.unpack('<6I', data[:24])} {struct.unpack('<3I', data[88:100])} {flags}"]
        self.looks.append(look)

    def registry(self, *names):
        """What is stored, or of it these values; the program may still be storing when its window has gone."""
        def stored():
            query = subprocess.run(["wine", "reg", "query", KEY, "/s"], env=self.bench.environment, capture_output=True,
                                   encoding="cp932", errors="replace")
            shown = (query.stderr if query.returncode else query.stdout).replace(f"{self.relay.port:#x}", "PORT")
            lines = filter(None, map(str.strip, shown.splitlines()))
            return [line for line in lines if not names or line.split()[0] in names]
        self.notes.append(stored)

    def hold(self, *command):
        self.relay.hold(" ".join(command))

    def release(self):
        self.relay.wait_held()
        self.relay.release()

    def look(self, number, *part):
        self.looks.append(lambda: self.seen(number, Screen.bands, *map(int, part)))

    def draw(self, number, *part):
        self.looks.append(lambda: self.seen(number, Screen.drawing, *map(int, part)))

    def write_groups(self):
        """Two groups to read, one of them long, and one that waits for its first run."""
        names = ("fj.test", "fj.pda", "alt.test")
        self.put("group.dat", "\r\n".join(names))
        for name, count in zip(names, (6, 40, 0)):
            group = Group(name, status=f"{count}件の記事を取得しました。" if count else "", last_fetched=count or NONE,
                          server_last=count + 3)
            for number in range(1, count + 1):
                group.append(number, article(name, number))
            for record, flags in zip(group.records, (0, 1, 4, 2, 5, 3)):
                record.flags = flags
            (self.folder_path / f"{name}.idx").write_bytes(group.index())
            (self.folder_path / f"{name}.log").write_bytes(group.log)

    def lose(self, name):
        (self.folder_path / name).unlink()

    def put(self, name, *words):
        (self.folder_path / name).write_bytes(" ".join(words).encode().decode("unicode_escape").encode("latin-1"))

    # How it does that.

    def xdotool(self, *words, check=True):
        return subprocess.run(["xdotool", *map(str, words)], env=self.bench.environment, check=check,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, encoding="utf-8").stdout

    def await_focus(self):
        """The display gives the keys to a new window a moment after Windows does; sometimes a window manager is to."""
        def given():
            front = next((window[4] for window in self.bench.order("windows")), None)
            if front is None or self.xdotool("getwindowfocus", "-f", check=False).strip() == front:
                return True
            self.xdotool("windowfocus", front, check=False)
        inn.wait_until(given, "the focus", 5)

    def window(self, number):
        """The handle of the frame, or of the topmost visible child with that id."""
        def found():
            windows = self.bench.order("windows")
            if number == "frame":
                return next((window[0] for window in windows if window[1] == program.FRAME), None)
            items = (program.Item(*item) for window in windows for item in self.bench.order("items", window[0]))
            return next((item.handle for item in items if item.id == number and item.visible == "1"), None)
        return inn.wait_until(found, f"window {number}", 5)

    def area(self, number):
        return map(int, self.bench.order("area", self.window(number))[0])

    def observe(self):
        """The windows, as blocks of lines below the name of each; a page of the settings is one, too."""
        blocks = {}
        for line, in self.bench.order("dump"):
            line = line.replace("\r\n", "|").replace("\n", "|").replace(str(self.relay.port), "PORT")
            if not line.startswith(" ") or line.startswith("  #32770"):
                name = line.strip().split(" at ")[0]
                while name in blocks:
                    name += "+"
                block = blocks[name] = []
            block.append(line)
        return {name: self.without_faces(block) for name, block in blocks.items()}

    @staticmethod
    def without_faces(block):
        """One line for the list of fonts: none twice, none for vertical writing."""
        at = next((i for i, line in enumerate(block) if line.lstrip().startswith(f"ComboBox {FACES} ")), None)
        if at is None:
            return block
        indent = len(block[at]) - len(block[at].lstrip()) + 2
        faces = list(itertools.takewhile(lambda line: line.startswith(" " * indent + "choice"), block[at + 1:]))
        names = [line.split('"')[1] for line in faces]
        bad = [name for name in names if name.startswith("@") or names.count(name) > 1]
        chosen = [line for line in faces if line.endswith(" selected")]
        return block[:at + 1] + chosen + [f"{' ' * indent}bad faces: {bad}"] + block[at + 1 + len(faces):]

    def report(self, now):
        lines = [line for note in self.notes for line in (note() if callable(note) else [note])]
        for name, block in now.items():
            before = self.shown.get(name)
            if before is None:
                lines += block
            elif before == block:
                lines.append(f"{name} as before")
            elif len(set(before) & set(block)) < len(block) / 2:
                lines += block
            else:
                lines += [line for line in difflib.ndiff(before, block) if line[0] in "-+"]
        lines += [f"{name} has gone" for name in self.shown if name not in now]
        return lines + [line for look in self.looks for line in look()]

    def seen(self, number, view, x=0, y=0, width=None, height=None):
        try:
            left, top, right, bottom = self.area(number)
        except AssertionError as reason:
            return [str(reason)]
        return [f"seen of {number}:"] + view(Screen(self.bench), left + x, top + y, left + x + width if width else right,
                                             top + y + height if height else bottom)

    def take(self, step):
        """Acts, and waits until the windows show what is expected; returns what they show in the end."""
        self.notes, self.looks = [], []
        for action in step.actions:
            verb, *words = action[2:].split(" ")
            try:
                getattr(self, verb)(*words)
            except AssertionError as reason:
                if ACCEPT:
                    raise
                self.notes.append(f"{action[2:]}: {reason}")
        found, since = None, time.monotonic()
        while found is None or time.monotonic() - since < self.patience:
            before, now = found, self.observe()
            found = self.report(now)
            if found == step.expected:
                break
            if found != before:
                since = time.monotonic()
            time.sleep(0.02)
        self.shown = now
        return found

    def prepare(self):
        """A card with a folder of news, and a program that starts there."""
        shutil.rmtree(self.bench.card)
        self.folder_path = self.bench.card / "news"
        for name in ("games", "news"):
            (self.bench.card / name).mkdir(parents=True)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.bench.card)
        self.bench.order("forget")

    def test_the_walk(self):
        """Up to the first step that goes wrong: what comes after it would wait for windows in vain."""
        self.prepare()
        self.patience, self.shown = 1 if ACCEPT else 5, {}
        steps, found = read_script(self.script), []
        expected = [[step.title] + step.actions + step.expected for step in steps]
        try:
            for step in steps:
                found.append([step.title] + step.actions + self.take(step))
                if found[-1] != expected[len(found) - 1] and not ACCEPT:
                    break
        finally:
            if ACCEPT:
                whole = sum(found + expected[len(found):], [])
                self.script.write_text("".join(line + "\n" for line in whole), "utf-8")
        difference = difflib.unified_diff(sum(expected[:len(found)], []), sum(found, []), self.script.name,
                                          "the program", lineterm="")
        if text := "\n".join(difference):
            self.fail(f"the windows show something else (exit code {self.running.process.poll()}):\n{text}")


if __name__ == "__main__":
    scenario.main()
