"""The device's executable starts, shows a group and an article, and ends. Up to the first message it asks the system
for the same as the desktop's, in the same order.

    test_start.py DEVICE_BUILD DESKTOP_EXECUTABLE
"""
import os
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import time
import unittest

import machine
import windows

KEY, TRACE = "Software\\marrowby\\Pelnor", "Software\\Wine\\Debug"
LOG = (b"Subject: =?x\r\nFrom: Taro <t@a.jp>\r\nDate: 5 Mar 1998\r\nX-Local-Seq: 3\r\n\r\nhello\r\n================\r\n"
       b"Subject: \x93\xfa\x96{\r\nX-Local-Seq: 4\r\n\r\n> quoted\r\n================\r\n")
FILES = {"group.dat": b"# mine\r\nfj.test\r\n", "fj.test.log": LOG, "fj.test.flt": b"+ \x93\xfa\r\n"}
NUMBERS = {"Port": 119, "Limit": 50, "HeaderColor": 0xFF}
SHOW_NORMALLY = 5
EXIT, GROUP_VIEW, DOUBLE_CLICK, ENTER, ESCAPE = 40001, 101, -3, 13, 27
READ, HIGH = 1, 4  # what a record says of its article

# The library, the number of the argument that tells what a call is for, and whether that is a text.
TELLING = {
    "InitCommonControls": ("comctl32", None, False), "EnumWindows": ("user32", None, False),
    "RegisterClassW": ("user32", None, False), "GetMessageW": ("user32", None, False),
    "WSAStartup": ("ws2_32", 0, False), "CreateWindowExW": ("user32", 1, True),
    "FindResourceW": ("kernel32", 1, False), "LoadStringW": ("user32", 1, False),
    "LoadAcceleratorsW": ("user32", 1, False), "CheckMenuItem": ("user32", 1, False),
    "SendMessageW": ("user32", 1, False), "RegCreateKeyExW": ("advapi32", 1, True),
    "RegQueryValueExW": ("advapi32", 1, True), "CreateDirectoryW": ("kernel32", 0, True),
    "FindFirstFileW": ("kernel32", 0, True), "CreateFileW": ("kernel32", 0, True),
    "DeleteFileW": ("kernel32", 0, True), "MoveFileW": ("kernel32", 1, True),
    "SetFilePointer": ("kernel32", 1, False), "ReadFile": ("kernel32", 2, False), "WriteFile": ("kernel32", 2, False),
}
MENU_BAR = "FindResourceW"  # what the desktop's menu bar begins with
FIRST = "InitCommonControls"
CALL = re.compile(r"^(\w+):Call \w+\.(\w+)\((.*)\) ret=(\w+)$")
ARGUMENT = re.compile(r'([0-9a-f]+)(?: L"((?:[^"\\]|\\.)*)")?(?:,|$)')


def last_part(path):
    return re.split(r"\\+", path.rstrip("\\"))[-1]


# What both homes ask for. The desktop's own menu bar and frame ask for more: window classes of their own once the frame
# is being made, captions, and messages below those of the lists.
SHARED = {
    "RegisterClassW": lambda _, before: ("CreateWindowExW", "PelnorMainFrmWnd") not in before,
    "CreateWindowExW": lambda name, _: name != "PelnorMenuBar",
    "FindResourceW": lambda number, _: number in (149, 147, 145),
    "LoadStringW": lambda number, _: number < 200,
    "SendMessageW": lambda message, _: message >= 0x1000,
    "RegQueryValueExW": lambda name, _: name != "WindowPlace",
}


def shared(calls):
    kept = []
    for call, told in calls:
        if call not in SHARED or SHARED[call](told, kept):
            kept.append((call, told))
    return kept


class Device:
    def __init__(self):
        self.system = windows.Windows()
        self.system.files = {"": None, "\\data": None} | {f"\\data\\{name}": data for name, data in FILES.items()}
        texts = {"Server": "localhost", "DataPath": "\\data\\"}
        self.system.registry[KEY] = {name: struct.pack("<I", value) for name, value in NUMBERS.items()} | {
            name: (text + "\0").encode("utf-16-le") for name, text in texts.items()}
        self.machine = machine.Machine(build / "pelnor-arm.exe", self.system)
        self.machine.watch = {name: self.teller(place, is_text) for name, (_, place, is_text) in TELLING.items()}
        self.machine.watch["SHCreateMenuBar"] = lambda device: device.words(device.argument(0) + 12, 1)[0]

    @staticmethod
    def teller(place, is_text):
        if is_text:
            return lambda device: last_part(device.wide(device.argument(place)))
        return lambda device: None if place is None else device.argument(place)

    def run(self, *messages):
        """Starts the program and lets it take the messages: functions of the device that give one."""
        self.system.messages.extend(messages)
        header = self.machine.exe.OPTIONAL_HEADER
        self.machine.run(header.ImageBase + header.AddressOfEntryPoint, header.ImageBase, 0, 0, SHOW_NORMALLY)

    def start(self):
        try:
            self.run()
        except windows.Waiting:
            pass

    def calls(self):
        """What it asked the system for so far, as the desktop's trace shows it."""
        return [(MENU_BAR if name == "SHCreateMenuBar" else name, told) for name, told in self.machine.watched
                if name != MENU_BAR]


def registry(folder, lines):
    (folder / "start.reg").write_text("\r\n".join(["REGEDIT4", "", *lines, ""]))
    subprocess.run(["wine", "regedit", "/S", str(folder / "start.reg")], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL)


def prepare_desktop(folder):
    """The same settings and files as the device's, and a trace of the telling calls only."""
    for name, data in FILES.items():
        (folder / name).write_bytes(data)
    path = "Z:" + str(folder).replace("/", "\\") + "\\"
    traced = ";".join(f"{library}.{name}" for name, (library, *_) in TELLING.items())
    registry(folder, [f"[-HKEY_CURRENT_USER\\{KEY}]", f"[HKEY_CURRENT_USER\\{KEY}]", '"Server"="localhost"',
                      f'"DataPath"="{path}"'.replace("\\", "\\\\"),
                      *(f'"{name}"=dword:{value:08x}' for name, value in NUMBERS.items()),
                      f"[HKEY_CURRENT_USER\\{TRACE}]", f'"RelayInclude"="{traced}"'])


def desktop_calls():
    """What the desktop's program asks the system for until it waits for a message."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        prepare_desktop(folder)
        with open(folder / "trace", "wb") as trace:
            program = subprocess.Popen(["wine", desktop], stdout=trace, stderr=trace, stdin=subprocess.DEVNULL,
                                       env=dict(os.environ, WINEDEBUG="+relay"))
        try:
            return wait_for_message(folder / "trace", program)
        finally:
            program.kill()
            program.wait()
            registry(folder, [f"[-HKEY_CURRENT_USER\\{key}]" for key in (KEY, TRACE)])


def wait_for_message(trace, program):
    end = time.monotonic() + 60
    while time.monotonic() < end and program.poll() is None:
        calls = list(traced_calls(trace.read_text(errors="replace").splitlines()))
        if calls and calls[-1][0] == "GetMessageW":
            return calls
        time.sleep(0.1)
    raise AssertionError(f"the desktop's program asks for no message:\n{trace.read_text(errors='replace')[-2000:]}")


def traced_calls(lines):
    """Only what the program's own code calls, on the thread that began; Wine's programs stand at the same address."""
    own = None
    for thread, call, arguments, place in (found.groups() for found in map(CALL.search, lines) if found):
        if not 0x140000000 <= int(place, 16) < 0x141000000 or (own or thread) != thread or not (own or call == FIRST):
            continue
        own = thread
        _, number, _ = TELLING[call]
        value, text = ARGUMENT.findall(arguments)[number] if number is not None else ("", "")
        yield call, last_part(text) if text else int(value, 16) if value else None
        if call == "GetMessageW":
            return


class Start(unittest.TestCase):
    maxDiff = None

    def test_it_asks_for_the_same_as_the_desktops(self):
        device = Device()
        device.start()
        here, there = shared(device.calls()), shared(desktop_calls())
        self.assertGreater(len(here), 100)
        self.assertEqual("\n".join(map(str, there)), "\n".join(map(str, here)))

    def test_it_shows_an_article_and_ends(self):
        device = Device()
        system, memory = device.system, device.machine
        frame, subjects, article = "PelnorMainFrmWnd", "PELNORSubjectViewWnd", "PELNORArticleViewWnd"
        notice = memory.heap.take(12)

        def open_group():
            memory.put_words(notice, system.window("SysListView32"), GROUP_VIEW, DOUBLE_CLICK)
            return system.window(frame), windows.WM_NOTIFY, GROUP_VIEW, notice

        def to(window, message, word=0):
            return lambda: (system.window(window), message, word, 0)

        with self.assertRaises(windows.Ended) as ended:
            device.run(open_group, to(subjects, windows.WM_PAINT), to(subjects, windows.WM_KEYDOWN, ENTER),
                       to(article, windows.WM_PAINT), to(article, windows.WM_KEYDOWN, ESCAPE),
                       to(subjects, windows.WM_KEYDOWN, ESCAPE), to(frame, windows.WM_COMMAND, EXIT))
        self.assertEqual((0,), ended.exception.args)
        for shown in ("日本", "=?x", "Taro", "03/05", "Subject: 日本", "> quoted"):
            self.assertIn(shown, system.drawn)
        index = system.files["\\data\\fj.test.idx"]
        self.assertEqual([(0, 3), (READ | HIGH, 4)], [struct.unpack_from("<II", index, place) for place in (100, 192)])
        self.assertEqual({notice}, set(memory.heap.blocks), "memory was not given back")
        self.assertEqual([], system.open_files())


if __name__ == "__main__":
    build, desktop = pathlib.Path(sys.argv[1]), sys.argv[2]
    unittest.main(argv=sys.argv[:1])
