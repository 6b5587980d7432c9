"""The device's executables through a user's first evening: groups, articles, keywords, deletion, each through its own
windows. They must leave the same files as the desktop's program does after the same doings with the same server.

    test_run.py DEVICE_BUILD BUILD DESKTOP_EXECUTABLE DRIVE
"""
import codecs
import pathlib
import random
import struct
import sys
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / "e2e"))
import corpus
import machine
import oracle
import program
import server
import system

LIMIT, READ, SHOW_NORMALLY = 70, 4, 5
EXIT, GET_ARTICLES, DELETE_READ, SUBSCRIBE, CATCH_UP, KEYWORDS = 40001, 40003, 40004, 40007, 40011, 40014
LIST, DOWNLOAD, CATCH_UP_LOCAL, PASSWORD, HIGH, OK, YES = 1015, 1016, 1019, 1025, 1040, 1, 6
GROUP_VIEW, SUBJECT_VIEW, ARTICLE_VIEW, DOUBLE_CLICK = 101, 106, 104, -3
ENTER, ESCAPE, TAB, SPACE, HOME, LEFT, UP, RIGHT, DOWN = 13, 27, 9, 32, 36, 37, 38, 39, 40
FRAME, VIEWS = "PelnorMainFrmWnd", {SUBJECT_VIEW: "PELNORSubjectViewWnd", ARTICLE_VIEW: "PELNORArticleViewWnd"}
SETTINGS = {"UserID": "user", "AutoNextArticle": 0}
LINES = [b"line %d of many, which are wider than the screen" % number for number in range(60)]
LONG_ARTICLE = b"Subject: long\r\nFrom: Taro <t@a.jp>\r\n", b"> quoted\r\n" + b"\r\n".join(LINES) + b"\r\n"


def packed(value):
    return struct.pack("<I", value) if isinstance(value, int) else (value + "\0").encode("utf-16-le")


def old_files():
    """What start-up brings in order: a draft's backup, a log without an index, indexes of all older versions, a
    deletion that was cut off."""
    files = {"draft\\a.bak": b"", "draft\\a.txt": b"x",
             "fj.test.flt": "- plain\r\n+ 日本\r\n- Re:\r\n".encode("cp932")}
    for version in range(6):
        log, index = (".lo~", ".id~") if version == 5 else (".log", ".idx")
        group = oracle.Group(f"fj.old{version}", last_fetched=5, server_last=6, status="古い")
        for number in (3, 9):
            head = [b"Subject: %d\r\n" % number, b"X-Local-Seq: %d\r\n" % number]
            group.append(number, [*head, b"\r\n", oracle.SEPARATOR])
        files[group.name + log] = group.log
        if version:
            files[group.name + index] = group.index(version)
    return files | {"group.dat": b"".join(b"fj.old%d\r\n" % version for version in range(6))}


def fed_articles(count):
    """Those of the end-to-end tests."""
    parts = (text.partition(b"\r\n\r\n") for text in corpus.articles("fj.test", count))
    return [(head + b"\r\n", body) for head, _, body in parts]


def made_up_articles(count):
    """The same in each run. Most of their bytes come from what the program looks for."""
    chance = random.Random(20001)
    parts = [codecs.escape_decode(line)[0] for line in (HERE / "parts.txt").read_bytes().splitlines()]

    def text(most):
        return b"".join(chance.choice(parts) if chance.random() < 0.8 else bytes([chance.randrange(1, 256)])
                        for _ in range(chance.randrange(most)))

    for _ in range(count):
        names = chance.sample((b"Subject: ", b"From: ", b"Date: ", b"References:", b"X-No: ", b"Subject:"), 5)
        head = b"".join(name + text(16) + b"\r\n " + text(4) + b"\r\n" for name in names)
        yield head, text(40) + b"\r\n"


class OnDevice:
    """What the user does is kept until `run`."""

    def __init__(self, processor, news, files):
        self.system = system.System({"": None, "\\data": None, "\\data\\draft": None} | {
            f"\\data\\{name}": data for name, data in files.items()}, news.talk)
        settings = {"Server": "news.example", "Port": 119, "DataPath": "\\data\\", "Limit": LIMIT, **SETTINGS}
        self.system.registry = {name: packed(value) for name, value in settings.items()}
        self.machine = machine.Machine(build / f"pelnor-{processor}.exe", self.system)
        self.notice = self.machine.heap.take(12)

    def run(self):
        header = self.machine.exe.OPTIONAL_HEADER
        try:
            self.machine.run(header.ImageBase + header.AddressOfEntryPoint, header.ImageBase, 0, 0, SHOW_NORMALLY)
        except system.Ended as ended:
            return ended.args[0]

    def files(self):
        return {path[len("\\data\\"):]: data for path, data in self.system.files.items() if data is not None}

    def do(self, *acts):
        self.system.messages.extend(acts)

    def command(self, number):
        self.do(lambda: (self.system.window(FRAME), system.WM_COMMAND, number, 0))

    def keys(self, view, *keys):
        for key in keys:
            self.do(lambda key=key: (self.system.window(VIEWS[view]), system.WM_KEYDOWN, key, 0),
                    lambda: (self.system.window(VIEWS[view]), system.WM_PAINT, 0, 0))

    def press(self, number, **changed):
        def act():
            for name, (control, value) in changed.items():
                setattr(self.system.control(self.system.modal[-1], control)[1], name, value)
            return self.system.modal[-1], system.WM_COMMAND, number, 0
        self.do(act)

    def agree(self, _number):
        """The system does."""

    def select(self, number, text):
        """Of the topmost dialog or the frame: it, the list and what tells of a double click there."""
        parent = [self.system.window(FRAME), *self.system.modal][-1]
        handle, window = self.system.control(parent, number)
        window.selected = [row[0] for row in window.rows].index(text)
        self.machine.put_words(self.notice, handle, number, DOUBLE_CLICK)
        return parent, system.WM_NOTIFY, number, self.notice

    def choose(self, group):
        self.do(lambda: self.select(GROUP_VIEW, group) and (0, 0, 0, 0))

    def double_click(self, number, text):
        self.do(lambda: self.select(number, text))

    def close(self):
        """Keeps the rows of the group list."""
        def act():
            frame = self.system.window(FRAME)
            self.rows = [[row[column] for column in range(6)] for row in self.system.control(frame, GROUP_VIEW)[1].rows]
            return frame, system.WM_COMMAND, EXIT, 0
        self.do(act)


class OnDesktop:
    def __init__(self, bench, port, files):
        self.folder = program.DataFolder(bench, [], port, LIMIT, **SETTINGS)
        (self.folder.path / "draft").mkdir()
        for name, data in files.items():
            self.folder.write(name.replace("\\", "/"), data)
        self.running = program.Program(bench)
        self.command = self.running.command

    def files(self):
        return {str(path.relative_to(self.folder.path)).replace("/", "\\"): path.read_bytes()
                for path in self.folder.path.rglob("*") if path.is_file()}

    def dialog(self, *numbers):
        """The topmost dialog that has these controls, when it shows."""
        def shown():
            return next((dialog for dialog in self.running.dialogs() if {str(number) for number in numbers} <=
                         {item.id for item in self.running.items(dialog.handle)}), None)
        return self.running.wait(shown, f"a dialog with {numbers}")

    def keys(self, view, *keys):
        self.running.key(self.running.wait_pane(view), *keys)

    def press(self, number, text=None, checked=None):
        dialog = self.dialog(number, *(changed[0] for changed in (text, checked) if changed))
        if text:
            self.running.set_text(dialog, *text)
        if checked:
            self.running.click(dialog, checked[0])
        self.running.click(dialog, number)
        if number in (OK, YES):
            self.running.wait_gone(dialog)

    agree = press

    def choose(self, group):
        row = [cells[0] for cells in self.running.rows()].index(group)
        self.running.key(self.running.group_list(), HOME, *[DOWN] * row)

    def double_click(self, number, text):
        if number == GROUP_VIEW:
            self.choose(text)
            self.running.key(self.running.group_list(), ENTER)
        else:
            dialog = self.dialog(number)
            self.running.wait(lambda: text in self.running.shows(dialog), text)
            self.running.double_click(dialog, text)


# What both do. A button is pressed once a control has changed: its number and what of it.

def get_articles(user):
    user.command(GET_ARTICLES)
    user.press(OK, text=(PASSWORD, "secret"))
    user.agree(OK)


def add_keyword(user):
    user.command(KEYWORDS)
    user.press(OK, checked=(HIGH, 1))


def delete_read(user):
    user.command(DELETE_READ)
    user.agree(YES)


def catch_up(user, group):
    user.choose(group)
    user.command(CATCH_UP)
    user.press(OK, checked=(CATCH_UP_LOCAL, 1))


def evening(user):
    user.command(SUBSCRIBE)
    user.press(DOWNLOAD)
    user.press(OK, text=(PASSWORD, "secret"))
    for row in ("fj", "fj.made", "fj.test"):
        user.double_click(LIST, row)
    user.press(OK)
    get_articles(user)
    user.double_click(GROUP_VIEW, "fj.made")
    user.keys(SUBJECT_VIEW)
    add_keyword(user)
    user.keys(SUBJECT_VIEW, DOWN, UP, RIGHT, LEFT, ENTER)
    user.keys(ARTICLE_VIEW, DOWN, UP, *[SPACE] * 9, *[LEFT] * 9, *[TAB] * READ, ESCAPE)
    user.keys(SUBJECT_VIEW, ESCAPE)
    delete_read(user)
    catch_up(user, "fj.made")
    get_articles(user)


class Run(unittest.TestCase):
    maxDiff = None

    def assert_ended_well(self, device):
        device.close()
        self.assertEqual(0, device.run())
        self.assertEqual([], [thing for thing in device.system.handles.values() if isinstance(thing, list)])
        kept = {device.notice, device.system.host} - {0}
        self.assertEqual(kept, set(device.machine.heap.blocks), "blocks that were not given back")

    def on_desktop(self, news, files):
        bench = program.Bench(desktop_build, desktop, drive)
        self.addCleanup(bench.close)
        listener = news.listen()
        self.addCleanup(listener.server_close)
        self.addCleanup(listener.shutdown)
        user = OnDesktop(bench, listener.server_address[1], files)
        self.addCleanup(user.folder.remove)
        self.addCleanup(user.running.end)
        return user

    def on_devices(self, doings, news, files):
        """One with each processor, after the same doings."""
        devices = {processor: OnDevice(processor, news, files) for processor in ("arm", "mips")}
        for processor, device in devices.items():
            with self.subTest(processor):
                doings(device)
                self.assert_ended_well(device)
        return [*devices.values()]

    def test_an_evening_leaves_the_desktops_files(self):
        files = old_files()
        news = server.NewsServer({b"fj.test": fed_articles(110) + [None, None],
                                  b"fj.made": [None, LONG_ARTICLE, *made_up_articles(100)]})
        devices = self.on_devices(evening, news, files)
        user = self.on_desktop(news, files)
        evening(user)
        rows = user.running.wait_rows(devices[0].rows)
        self.assertEqual(0, user.running.close())
        for device in devices:
            for text in ("From: Taro <t@a.jp>", "> quoted", *(line.decode() for line in LINES)):
                self.assertIn(text, "".join(device.system.drawn))
            self.assertEqual(device.rows, rows)
            here, there = device.files(), user.files()
            self.assertEqual(there.keys(), here.keys())
            for name, data in there.items():
                self.assertEqual(data, here[name], name)

    def test_a_silent_server_ends_the_run(self):
        news = server.NewsServer({b"fj.test": fed_articles(5)}, silent_at=b"BODY 3")
        for device in self.on_devices(get_articles, news, {"group.dat": b"fj.test\r\n"}):
            self.assertEqual([("fj.test", "受信に失敗しました(13).")], device.system.boxes)
            self.assertTrue(120 <= device.system.clock / 1000 <= 240, device.system.clock)


if __name__ == "__main__":
    build, desktop_build, desktop, drive = map(pathlib.Path, sys.argv[1:5])
    unittest.main(argv=sys.argv[:1])
