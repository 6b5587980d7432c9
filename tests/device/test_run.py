"""The device's executable through a user's first evening: settings, groups, articles, keywords, deletion, each through
its own windows. It must leave the same files as the desktop's program does after the same doings with the same server.

    test_run.py DEVICE_BUILD BUILD DESKTOP_EXECUTABLE DRIVE
"""
import pathlib
import struct
import sys
import unittest

import unicorn

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))
import articles
import dialogs
import machine
import network
import oracle
import program
import windows

KEY, NEWS = "Software\\marrowby\\Pelnor", ("fj.made", "fj.test")
LIMIT, READ, SHOW_NORMALLY = 70, 4, 5
EXIT, GET_ARTICLES, DELETE_READ, SUBSCRIBE, CATCH_UP, KEYWORDS = 40001, 40003, 40004, 40007, 40011, 40014
LIST, DOWNLOAD, CATCH_UP_LOCAL, PASSWORD, HIGH, OK = 1015, 1016, 1019, 1025, 1040, 1
GROUP_VIEW, SUBJECT_VIEW, ARTICLE_VIEW, DOUBLE_CLICK = 101, 106, 104, -3
ENTER, ESCAPE, TAB, SPACE, HOME, LEFT, UP, RIGHT, DOWN = 13, 27, 9, 32, 36, 37, 38, 39, 40
FRAME, SUBJECTS, ARTICLE = "PelnorMainFrmWnd", "PELNORSubjectViewWnd", "PELNORArticleViewWnd"

MAIN, ACCOUNT, KEYS, CONNECTION, FONT, COLOUR = range(6)
ENTERED = {
    MAIN: [(1000, "  news.example"), (1001, "80a"), (None, 1001), (1001, "119"), (1002, "\\none"), (None, 1002),
           (1002, "\\data\\"), (1011, str(LIMIT))],
    ACCOUNT: [(1023, True), (1024, "user")], KEYS: [(1027, True), (1028, False)],
    CONNECTION: [(1029, True), (1030, "office"), (1038, "5"), (1029, False)],
    FONT: [(1034, "MS Gothic"), (1032, "10"), (1035, "12")], COLOUR: [(1044, 255), (1053, "引用行"), (1046, 128)],
}
STORED = {
    "Server": "news.example", "Port": 119, "DataPath": "\\data\\", "Limit": LIMIT, "UserID": "user", "KeyMode": 1,
    "AutoNextArticle": 0, "Dialup": 0, "EntryName": "office", "DisconnectWaitTime": 5, "FontName": "MS Gothic",
    "FontSizeA": 12, "FontSizeS": 10, "HeaderColor": 0xFF, "ReferenceLine": 0x800000, "UserName": "", "MailAddress": "",
    "Organization": "", "EditorPath": "",
}

# Code in the place of a function's.
ANSWER_1 = (0xE3A00001, 0xE1A0F00E)  # mov r0, #1; mov pc, lr
READ_ACROSS = (0xE3C00003, 0xE5900001, 0xE1A0F00E)  # bic r0, r0, #3; ldr r0, [r0, #1]; mov pc, lr
WRITE_CODE = (0xE50F0008, 0xE1A0F00E)  # str r0, [pc, #-8]; mov pc, lr
LATER_MACHINES = (0xE12FFF1E,)  # bx lr


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


class System(network.Network, dialogs.Dialogs):
    pass


class OnDevice:
    """What the user does is kept until `run`."""

    def __init__(self, server, files, settings=None):
        self.system = System()
        self.system.server = server
        self.system.files = {"": None, "\\data": None, "\\data\\draft": None} | {
            f"\\data\\{name}": data for name, data in files.items()}
        if settings:
            self.system.registry[KEY] = {name: packed(value) for name, value in settings.items()}
        self.machine = machine.Machine(build / "pelnor-arm.exe", self.system)
        self.notice = self.machine.heap.take(12)

    def do(self, *acts):
        self.system.messages.extend(acts)

    def run(self):
        header = self.machine.exe.OPTIONAL_HEADER
        try:
            self.machine.run(header.ImageBase + header.AddressOfEntryPoint, header.ImageBase, 0, 0, SHOW_NORMALLY)
        except windows.Ended as ended:
            return ended.args[0]

    def files(self):
        return {path[len("\\data\\"):]: data for path, data in self.system.files.items() if data is not None}

    def command(self, number):
        self.do(lambda: (self.system.window(FRAME), windows.WM_COMMAND, number, 0))

    def keys(self, window, *keys):
        for key in keys:
            self.do(lambda key=key: (self.system.window(window), windows.WM_KEYDOWN, key, 0),
                    lambda: (self.system.window(window), windows.WM_PAINT, 0, 0))

    def press(self, number, **changed):
        """Presses a button of the dialog, once a control has changed: its number and what of it."""
        def act():
            for name, (control, value) in changed.items():
                setattr(self.system.control(self.system.modal[-1], control)[1], name, value)
            return self.system.modal[-1], windows.WM_COMMAND, number, 0
        self.do(act)

    def select(self, number, text):
        """The window and the list, a row of which is now the chosen one: in the topmost dialog, else in the frame."""
        parent = [self.system.window(FRAME), *self.system.modal][-1]
        handle, window = self.system.control(parent, number)
        window.selected = self.system.row_of(window, text)
        return parent, handle

    def double_click(self, number, text):
        def act():
            parent, handle = self.select(number, text)
            self.machine.put_words(self.notice, handle, number, DOUBLE_CLICK)
            return parent, windows.WM_NOTIFY, number, self.notice
        self.do(act)

    def give_password(self):
        self.press(OK, text=(PASSWORD, "secret"))

    def subscribe(self, category, groups):
        self.command(SUBSCRIBE)
        self.press(DOWNLOAD)
        self.give_password()
        for row in (category, *groups):
            self.double_click(LIST, row)
        self.press(OK)

    def get_articles(self):
        self.command(GET_ARTICLES)
        self.give_password()

    def read(self, group, count):
        self.double_click(GROUP_VIEW, group)
        self.command(KEYWORDS)
        self.press(OK, checked=(HIGH, 1))
        self.keys(SUBJECTS, ENTER)
        self.keys(ARTICLE, *[TAB] * (count - 1), ESCAPE)
        self.keys(SUBJECTS, ESCAPE)

    def delete_read(self):
        self.command(DELETE_READ)

    def catch_up(self, group):
        self.do(lambda: (self.select(GROUP_VIEW, group)[0], windows.WM_COMMAND, CATCH_UP, 0))
        self.press(OK, checked=(CATCH_UP_LOCAL, 1))

    def close(self):
        """Keeps the rows of the group list."""
        def act():
            frame = self.system.window(FRAME)
            self.rows = [[row[column] for column in range(6)] for row in self.system.control(frame, GROUP_VIEW)[1].rows]
            return frame, windows.WM_COMMAND, EXIT, 0
        self.do(act)


class OnDesktop:
    def __init__(self, bench, port, files):
        self.bench = bench
        self.folder = program.DataFolder(bench, [], port, LIMIT, UserID="user")
        (self.folder.path / "draft").mkdir()
        for name, data in files.items():
            self.folder.write(name.replace("\\", "/"), data)
        self.running = program.Program(bench)

    def files(self):
        return {str(path.relative_to(self.folder.path)).replace("/", "\\"): path.read_bytes()
                for path in self.folder.path.rglob("*") if path.is_file()}

    def command(self, number):
        """Gives the dialog that it opens."""
        self.running.command(number)
        return self.running.wait_box()

    def give_password(self):
        prompt = self.running.wait_dialog("ﾊﾟｽﾜｰﾄﾞの入力")
        self.running.set_text(prompt, PASSWORD, "secret")
        self.running.press(prompt, "OK")

    def subscribe(self, category, groups):
        dialog = self.command(SUBSCRIBE)
        self.running.click(dialog, DOWNLOAD)
        self.give_password()
        self.running.wait(lambda: category in self.running.shows(dialog), "the categories")
        self.running.double_click(dialog, category)
        self.running.await_rows(dialog, groups)
        for group in groups:
            self.running.double_click(dialog, group)
        self.running.press(dialog, "OK")

    def get_articles(self):
        self.running.command(GET_ARTICLES)
        self.give_password()
        self.running.finish_run()

    def select(self, group):
        row = [cells[0] for cells in self.running.rows()].index(group)
        self.running.key(self.running.group_list(), HOME, *[DOWN] * row)

    def keys(self, view, *keys):
        """To a pane, when it shows."""
        self.running.key(self.running.wait_pane(view), *keys)

    def read(self, group, count):
        self.select(group)
        self.running.key(self.running.group_list(), ENTER)
        self.keys(SUBJECT_VIEW)
        dialog = self.command(KEYWORDS)
        self.running.click(dialog, HIGH)
        self.running.press(dialog, "OK")
        self.keys(SUBJECT_VIEW, ENTER)
        self.keys(ARTICLE_VIEW, *[TAB] * (count - 1), ESCAPE)
        self.keys(SUBJECT_VIEW, ESCAPE)

    def delete_read(self):
        self.running.press(self.command(DELETE_READ), "はい")

    def catch_up(self, group):
        self.select(group)
        dialog = self.command(CATCH_UP)
        self.running.check(dialog, CATCH_UP_LOCAL)
        self.running.press(dialog, "OK")


def evening(user):
    user.subscribe("fj", NEWS)
    user.get_articles()
    user.read("fj.made", READ)
    user.delete_read()
    user.catch_up("fj.made")
    user.get_articles()


class Run(unittest.TestCase):
    maxDiff = None

    def assert_ended_well(self, device):
        self.assertEqual(0, device.run())
        self.assertEqual([], device.system.open_files())
        kept = {device.notice, device.system.host} - {0}
        self.assertEqual(kept, set(device.machine.heap.blocks), "blocks that were not given back")

    def on_desktop(self, server, files):
        bench = program.Bench(desktop_build, desktop, drive)
        self.addCleanup(bench.close)
        listener = server.listen()
        self.addCleanup(listener.server_close)
        self.addCleanup(listener.shutdown)
        user = OnDesktop(bench, listener.server_address[1], files)
        self.addCleanup(user.folder.remove)
        self.addCleanup(user.running.end)
        return user

    def test_an_evening_leaves_the_desktops_files(self):
        files = old_files()
        server = network.NewsServer({b"fj.test": articles.corpus_articles("fj.test", 110) + [None, None],
                                     b"fj.made": [None, *articles.made_up(100)]})
        device = OnDevice(server, files)
        device.system.entered.append(ENTERED)
        evening(device)
        device.close()
        self.assert_ended_well(device)
        self.assertEqual({name: packed(value) for name, value in STORED.items()}, device.system.registry[KEY])
        user = self.on_desktop(server, files)
        evening(user)
        self.assertEqual(device.rows, user.running.wait_rows(device.rows))
        self.assertEqual(0, user.running.close())
        here, there = device.files(), user.files()
        self.assertEqual(there.keys(), here.keys())
        for name, data in there.items():
            self.assertEqual(data, here[name], name)

    def test_an_article_is_shown_to_its_end(self):
        lines = [b"line %d of many, which are wider than the screen" % number for number in range(60)]
        log = (b"Subject: =?x\r\nFrom: Taro <t@a.jp>\r\nDate: 5 Mar 1998\r\nX-Local-Seq: 3\r\n\r\n> quoted\r\n" +
               b"\r\n".join(lines) + b"\r\n" + oracle.SEPARATOR + b"Subject: \x93\xfa\x96{\r\n\r\n" + oracle.SEPARATOR)
        device = OnDevice(None, {"group.dat": b"# mine\r\nfj.test\r\n", "fj.test.log": log}, STORED)
        device.double_click(GROUP_VIEW, "fj.test")
        device.keys(SUBJECTS, DOWN, UP, RIGHT, LEFT, SPACE)
        device.keys(ARTICLE, *[DOWN] * 3, UP, *[SPACE] * 9, *[LEFT] * 9, TAB, ESCAPE)
        device.keys(SUBJECTS, ESCAPE)
        device.close()
        self.assert_ended_well(device)
        drawn = "".join(device.system.drawn)
        for text in ["03/05", "=?x", "Taro", "日本", "Subject: 日本", "> quoted"] + [line.decode() for line in lines]:
            self.assertIn(text, drawn)
        self.assertEqual("0", device.rows[0][1], "unread")

    def silence(self, damage=()):
        """A run against a server that falls silent in the third article."""
        server = network.NewsServer({b"fj.test": articles.corpus_articles("fj.test", 5)}, silent_at=b"BODY 3")
        device = OnDevice(server, {"group.dat": b"fj.test\r\n"}, STORED)
        if damage:
            places = machine.symbols(build / "platform/device/pelnor_device")
            device.machine.put_words(places["_Z10IsFinalDotPKc"], *damage)
        device.get_articles()
        device.close()
        self.assert_ended_well(device)
        return device

    def test_a_silent_server_ends_the_run(self):
        device = self.silence()
        self.assertEqual([("fj.test", "受信に失敗しました(13).")], device.system.boxes)
        self.assertTrue(120 <= device.system.clock / 1000 <= 240, device.system.clock)

    def test_damage_is_seen(self):
        expected = self.silence().files()
        self.assertNotEqual(expected, self.silence(ANSWER_1).files())
        for sentence, fault, said, code in (
            ("a word that is read across its boundary", machine.Fault, "4 bytes at", READ_ACROSS),
            ("code that is written over", unicorn.UcError, "WRITE_PROT", WRITE_CODE),
            ("an instruction of a later machine", unicorn.UcError, "INSN_INVALID", LATER_MACHINES),
        ):
            with self.subTest(sentence), self.assertRaisesRegex(fault, said):
                self.silence(code)


if __name__ == "__main__":
    build, desktop_build, desktop, drive = map(pathlib.Path, sys.argv[1:5])
    unittest.main(argv=sys.argv[:1])
