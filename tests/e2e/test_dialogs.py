"""The dialogs that choose groups and keywords, fetch the list of groups, choose files and dial, walked through by the
script dialogs.txt as test_windows.py walks by its own; places and looks are left out here. What the script puts into
files and sends as a server is spelled as in corpus.txt."""

import contextlib
import pathlib
import re
import shutil
import socket
import threading

import corpus
import inn
import program
import scenario
import test_windows

DOWNLOAD, EM_SETSEL, WM_CLEAR, WM_RASDIALEVENT = 1016, 0xB1, 0x303, 0xCCCD
CHOICE, FETCHING = "ｸﾞﾙｰﾌﾟの購読/中止", "購読可能ｸﾞﾙｰﾌﾟの取得中.."
LOOKS = re.compile(r" (at -?\d+,-?\d+|size \d+x\d+|style \w+|extended \w+|font .*? of -?\d+|limit \d+|width \d+"
                   r"|selection \d+ to \d+|open \d|small icon|large icon)(?= |$)")
SCENERY = re.compile(r" *(PelnorMenuBar|PELNOR|SysHeader|SysTab|tab|column|Static -1 \"(ｴﾝﾄﾘ|切断前|秒)|Edit 1038|Button 9|Button 12321|SysTreeView32 102 \"\" .*hidden)")


def short(line):
    """A character that comes often in a row stands there once, with its number."""
    return re.sub(r"(.)\1{19,}", lambda run: f"{run[1]}*{len(run[0])}", line)


class Dialogs(test_windows.Windows):
    script = pathlib.Path(__file__).with_name("dialogs.txt")
    groups, running, call, begun = (), None, None, threading.Event()

    @classmethod
    def setUpClass(cls):
        super(test_windows.Windows, cls).setUpClass()
        # The tests' own library for phone calls counts where the system has it, not beside the program.
        cls.bench.program = shutil.copy(cls.bench.program, cls.bench.build / "tests/dialup")
        cls.bench.environment["WINEDLLOVERRIDES"] += ";rasapi32=n"
        cls.ours = cls.bench.build / "tests/dialup/rasapi32.dll"
        cls.system = cls.bench.prefix / "drive_c/windows/system32/rasapi32.dll"
        cls.addClassCleanup(cls.system.write_bytes, cls.system.read_bytes())
        shutil.copy(cls.ours, cls.system)

    def observe(self):
        return {name: [short(LOOKS.sub("", line)) for line in block if not SCENERY.match(line)]
                for name, block in super().observe().items() if not block[0].endswith("hidden")}

    # What the script says.

    def begin(self, *settings):
        """A program with these settings, in the place of the one before."""
        if self.running:
            self.assertEqual(self.running.close(), 0)
            self.call = None
        self.bench.environment["PELNOR_RAS"] = f"Z:{self.folder_path}".replace("/", "\\")
        self.bench.order("forget")
        for text in ("Server=127.0.0.1", f"Port={self.relay.port}", "DataPath=\\news\\", "Limit=9", *settings):
            name, _, value = text.partition("=")
            self.bench.order("setting", name, "dword" if value.isdigit() else "sz", value)
        self.start()

    def library(self, use):
        """Whether there is one for phone calls."""
        self.system.unlink(missing_ok=True)
        if use == "yes":
            shutil.copy(self.ours, self.system)

    def put(self, name, *words):
        path = self.folder_path / name
        path.parent.mkdir(parents=True, exist_ok=True)
        self.kept = corpus.spelled(" ".join(words))
        path.write_bytes(self.kept)

    def mkdir(self, *words):
        (self.folder_path / corpus.spelled(" ".join(words)).decode("cp932")).mkdir(parents=True)

    def rename(self, name, new):
        (self.folder_path / name).rename(self.folder_path / new)

    def show(self, *names):
        """The files, each in one line."""
        for name in names:
            path = self.folder_path / name
            data = path.read_bytes() if path.is_file() else None
            text = "none" if data is None else "as it was put" if len(data) > 9999 and data == self.kept else (
                repr(data.decode("cp932", "backslashreplace")))
            self.notes.append(f"{name}: {short(text)}")

    def press(self, label):
        """A button of the dialog in front, which is gone then."""
        self.running.press(self.running.wait_box(), label)

    def row(self, *words):
        """A double click on it."""
        name, dialog = " ".join(words), self.running.wait_box()
        inn.wait_until(lambda: name in self.running.shows(dialog), f"the row {name}")
        self.running.double_click(dialog, name)

    def replace(self, *words):
        """What stands in the field of the keywords; typed in code that a keyboard has not."""
        def found():
            return next((item.handle for dialog in self.running.dialogs() for item in self.running.items(dialog.handle)
                         if item.kind == "Edit"), None)
        field = self.running.wait(found, "a field")
        for message in (EM_SETSEL, WM_CLEAR):
            self.running.send(field, message, 0, -1)
        for char in corpus.spelled(" ".join(words)).decode("cp932"):
            self.bench.order("post", field, program.WM_CHAR, ord(char), 1)

    def serve(self, *words):
        """The next connection hears these replies, parted by " | ": a greeting, and one after each line that it sends.
        "-" is none; before "hang up" no line is awaited."""
        listener, replies = socket.create_server(("127.0.0.1", 0)), " ".join(words).split(" | ")
        self.relay.target = listener.getsockname()[1]

        def talk():
            with listener, listener.accept()[0] as client, client.makefile("rb") as lines:
                self.begun.wait()
                for reply, after in zip(replies, replies[1:] + [""]):
                    client.sendall(corpus.spelled(reply.strip("-")))
                    if after == "hang up":
                        break
                    lines.readline()
        self.relay.sent.clear()
        self.begun.set()
        self.talk = threading.Thread(target=talk, daemon=True)
        self.talk.start()

    def fetch(self, *words):
        """The list of groups from such a server; notes what the program says, sends and stores."""
        for name in ("active.dat", "category.dat"):
            with contextlib.suppress(OSError):
                self.put(name, "old")
        self.serve(*words)
        self.begun.clear()
        dialog = self.running.wait_dialog(CHOICE)
        self.running.click(dialog, DOWNLOAD)
        self.running.wait_dialog(FETCHING)
        self.begun.set()
        while (top := self.running.wait(self.front, "an end")).handle != dialog.handle:
            self.notes += {repr(top.text)} - set(self.notes)  # a text that comes twice is noted once
            self.running.press(top, "OK")
        self.notes.append(f"sent: {self.relay.sent}")
        self.show("active.dat", "category.dat")

    def front(self):
        """The dialog in front, when it is not the one that fetches."""
        top = self.running.dialogs()[0]
        return top.caption != FETCHING and top

    def reports(self, state, error="0"):
        """The line does, to the call's dialog, which may be hidden by a box; the odd states by the message of newer
        systems. What brings a box is not waited for."""
        def found():
            shown = self.running.dialogs()
            return next((d.handle for d in shown if d.caption.endswith("に接続中...")), shown and self.call)
        self.call = self.running.wait(found, "a call")
        order = "send" if (state, error) == (state.lstrip("8"), "0") else "post"
        self.bench.order(order, self.call, "RasDialEvent" if int(state) % 2 else WM_RASDIALEVENT, state, error)


if __name__ == "__main__":
    scenario.main()
