"""The real program under Wine on a display of its own, and the hand that operates its windows (drive.exe)."""

import collections
import contextlib
import faulthandler
import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile

from inn import end_with_parent, wait_until

ROOT = pathlib.Path(__file__).resolve().parents[2]
WM_CLOSE, WM_KEYDOWN, WM_CHAR, WM_COMMAND = 0x10, 0x100, 0x102, 0x111
BM_SETCHECK, BM_CLICK, PBM_GETRANGE, PBM_GETPOS = 0xF1, 0xF5, 0x407, 0x408
LVM_ENSUREVISIBLE, LVM_GETTOPINDEX, LVM_APPROXIMATEVIEWRECT = 0x1013, 0x1027, 0x1040
DOUBLE_CLICK = (0x201, 0x202, 0x203, 0x202)  # down, up, double click, up
VK_RETURN, VK_ESCAPE, VK_HOME, VK_DOWN = 0x0D, 0x1B, 0x24, 0x28
EXIT, PROPERTIES, GET_ARTICLES, DELETE_READ, SUBSCRIBE, CATCH_UP = 40001, 40002, 40003, 40004, 40007, 40011
FRAME, DIALOG = "PelnorMainFrmWnd", "#32770"

Dialog = collections.namedtuple("Dialog", "handle caption text")
Item = collections.namedtuple("Item", "handle id kind enabled visible text")


faulthandler.register(signal.SIGALRM, chain=True)  # whoever ends it for hanging sees where


class Bench:
    """A display, a Wine prefix below the folder `build`, and a drive.exe that waits for orders. Close it."""

    def __init__(self, build, program, drive):
        self.build, self.program, self.drive_path = (pathlib.Path(path).resolve() for path in (build, program, drive))
        self.screens = pathlib.Path(os.environ.get("PELNOR_SCREENS", self.build / "screens"))
        self.prefix = self.build / "e2e/wine"
        self.prefix.parent.mkdir(parents=True, exist_ok=True)
        self.environment = {**os.environ, "WINEPREFIX": str(self.prefix), "WINEDEBUG": "-all",
                            "WINEDLLOVERRIDES": "mscoree,mshtml=", "LC_ALL": "ja_JP.UTF-8"}
        with contextlib.ExitStack() as closing:
            closing.enter_context(self._start_display())
            self._session("make", "unmanaged")  # its server goes when the last program has
            closing.callback(self._session, "end")
            self._insert_card()
            self.start_drive()
            closing.callback(lambda: self.stop_drive())
            self.close = closing.pop_all().close

    def _insert_card(self):
        """A drive Y: of the tests' own. Wine looks for drives when its server starts."""
        self.card = self.prefix.parent / "card"
        self.card.mkdir(exist_ok=True)
        drive = self.prefix / "dosdevices/y:"
        if not drive.is_symlink():
            drive.symlink_to(self.card)
            self._session("end")

    def start_drive(self):
        self.drive = self.run_wine(self.drive_path, stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8")

    def stop_drive(self):
        with contextlib.suppress(OSError):
            self.drive.communicate()

    def revive(self):
        """To be called after a program was killed: Wine's server now and then fails an assertion of its own then, and
        takes everything with it, unsaved settings too."""
        try:
            self.order("windows")
        except (AssertionError, OSError):
            self.stop_drive()
            self.start_drive()

    def registry(self, key, *value):
        self.run_wine("reg", "add", key, *value, "/f").wait()

    def _session(self, *order):
        order = [ROOT / "tools/wine_session", order[0], self.prefix, *order[1:]]
        subprocess.run(order, env=self.environment, check=True, stdin=subprocess.DEVNULL)

    @contextlib.contextmanager
    def _start_display(self):
        reader, writer = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "480x400x24", "-nolisten", "tcp"],
                                  pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL, preexec_fn=end_with_parent)
        os.close(writer)
        with server, open(reader) as chosen:
            self.environment["DISPLAY"] = ":" + chosen.readline().strip()
            yield
            server.terminate()

    def run_wine(self, *command, **streams):
        """Starts a Windows program. What it and Wine's helpers have to say goes to a file: they outlive it, and
        would keep a pipe of ours open."""
        with open(self.prefix.parent / "wine.log", "ab") as log:
            return subprocess.Popen(["wine", *command], env=self.environment, preexec_fn=end_with_parent,
                                    **{"stdin": subprocess.DEVNULL, "stdout": log, "stderr": log, **streams})

    def order(self, *fields):
        """Gives drive.exe one order; returns its rows. See drive.cpp."""
        self.drive.stdin.write("\t".join(map(str, fields)) + "\n")
        self.drive.stdin.flush()
        answer = json.loads(self.drive.stdout.readline() or "null")
        if not isinstance(answer, list):
            raise AssertionError(f"drive.exe at {fields}: {'error' if answer else 'ended'} {answer}")
        return answer

    def picture(self, name):
        self.screens.mkdir(parents=True, exist_ok=True)
        subprocess.run(["import", "-window", "root", self.screens / f"{name}.png"], check=True, env=self.environment)


class DataFolder:
    """A data folder with its group.dat; keeps the settings that name it."""

    def __init__(self, bench, groups, port, limit=1000, **settings):
        self.bench, self.settings = bench, {}
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="pelnor-e2e-"))
        self.write("group.dat", "".join(group + "\r\n" for group in groups).encode("ascii"))
        bench.order("forget")
        windows_path = "Z:" + str(self.path).replace("/", "\\") + "\\"
        self.set(Server="127.0.0.1", DataPath=windows_path, Port=port, Limit=limit, **settings)

    def set(self, **settings):
        self.settings.update(settings)
        for name, value in settings.items():
            self.bench.order("setting", name, "dword" if isinstance(value, int) else "sz", value)

    def write(self, name, content):
        (self.path / name).write_bytes(content)

    def read(self, name):
        return (self.path / name).read_bytes()

    def remove(self):
        shutil.rmtree(self.path, ignore_errors=True)


class Program:
    """One running pelnor.exe. Whatever happens, end() it."""

    def __init__(self, bench, opens=(FRAME,)):
        """Waits for a window of one of the classes `opens`; when that may be a dialog, call wait_frame() in time."""
        self.bench = bench
        self.process = bench.run_wine(bench.program)
        try:
            self.wait_frame(opens)
        except BaseException:
            self.end()
            raise

    def end(self):
        self.process.kill()
        self.process.wait()

    def wait(self, condition, what):
        """Polls as wait_until() does, but no longer than the program lives."""
        def alive():
            answer = condition()
            if not answer and self.process.poll() is not None:
                raise AssertionError(f"the program ended ({self.process.returncode}) while it should show {what}")
            return answer
        return wait_until(alive, what)

    # Windows.

    def wait_frame(self, kinds=(FRAME,)):
        def shown():
            return next((line[0] for line in self.bench.order("windows") if line[1] in kinds), None)
        self.frame = self.wait(shown, "its window")

    def items(self, window):
        return [Item(*line) for line in self.bench.order("items", window)]

    def item(self, window, number):
        return next(item for item in self.items(window) if item.id == str(number))

    def dialogs(self):
        """Dialogs and message boxes, the topmost first; the text is that of the labels together."""
        found = []
        for handle, kind, _, caption, _ in self.bench.order("windows"):
            if kind == DIALOG:
                labels = [item.text for item in self.items(handle) if item.kind == "Static" and item.text]
                found.append(Dialog(handle, caption, "\n".join(labels)))
        return found

    def wait_dialog(self, caption):
        return self.wait(lambda: next((d for d in self.dialogs() if d.caption == caption), None), f"a {caption!r}")

    def wait_box(self):
        """The first dialog that is not the progress of a run."""
        return self.wait(lambda: next((d for d in self.dialogs() if d.caption != "Articles"), None), "a message box")

    def wait_pane(self, number):
        """The handle of a pane of the frame, once it is the one that shows."""
        def shown():
            panes = self.items(self.frame)
            return next((pane.handle for pane in panes if (pane.id, pane.visible) == (str(number), "1")), None)
        return self.wait(shown, f"the pane {number}")

    def press(self, dialog, label, wait=True):
        """Presses a button and waits until its dialog is gone."""
        button = next((item for item in self.items(dialog.handle) if item.kind == "Button" and
                       item.text.replace("&", "").startswith(label)), None)
        if not button or button.enabled != "1":
            raise AssertionError(f"{dialog.caption!r} has no button {label!r} to press")
        self.bench.order("post", dialog.handle, WM_COMMAND, button.id, button.handle)
        if wait:
            self.wait_gone(dialog)

    def answer(self, caption, button="OK"):
        """Answers the box with this caption; returns its text."""
        box = self.wait_dialog(caption)
        self.press(box, button)
        return box.text

    def wait_gone(self, dialog):
        wait_until(lambda: all(d.handle != dialog.handle for d in self.dialogs()), f"{dialog.caption!r} to close")

    def click(self, dialog, number):
        button = self.item(dialog.handle, number)
        if button.enabled != "1":
            raise AssertionError(f"{dialog.caption!r} has its button {number} disabled")
        self.bench.order("post", button.handle, BM_CLICK, 0, 0)

    def set_text(self, dialog, number, text):
        self.bench.order("text", self.item(dialog.handle, number).handle, text)

    def check(self, dialog, number):
        self.send(self.item(dialog.handle, number).handle, BM_SETCHECK, 1)

    def is_enabled(self, window):
        return next(line[2] for line in self.bench.order("windows") if line[0] == window) == "1"

    def key(self, window, *codes):
        for code in codes:
            self.bench.order("post", window, WM_KEYDOWN, code, 0)

    def send(self, window, message, first=0, second=0):
        return int(self.bench.order("send", window, message, first, second)[0][0])

    # The rows of a list: of the frame's, which shows the groups, or of the one in a dialog.

    def group_list(self):
        return self.item(self.frame, 101).handle

    def list_of(self, dialog):
        return next(item.handle for item in self.items(dialog.handle) if item.kind == "SysListView32")

    def rows(self):
        return self.bench.order("rows", self.group_list())

    def wait_rows(self, expected):
        """The rows are filled again after a box was closed, a moment later."""
        with contextlib.suppress(AssertionError):
            wait_until(lambda: self.rows() == expected, "rows")
        return self.rows()

    def shows(self, dialog):
        return [row[0] for row in self.bench.order("rows", self.list_of(dialog))]

    def await_rows(self, dialog, names):
        """In any order: how capitals and signs sort is the system's affair."""
        wait_until(lambda: sorted(self.shows(dialog)) == sorted(names), f"the rows {names}")

    def double_click(self, dialog, name):
        handle, row = self.list_of(dialog), self.shows(dialog).index(name)
        self.send(handle, LVM_ENSUREVISIBLE, row)
        above = row - self.send(handle, LVM_GETTOPINDEX)
        y = (self.send(handle, LVM_APPROXIMATEVIEWRECT, above + 2, -1) >> 16) - 4  # the header is as high as a row
        for message in DOUBLE_CLICK:
            self.bench.order("post", handle, message, 0, y << 16 | 20)

    # What a user does.

    def command(self, number):
        self.bench.order("post", self.frame, WM_COMMAND, number, 0)

    def get_articles(self):
        """A whole run; returns what the box at its end said."""
        self.command(GET_ARTICLES)
        return self.finish_run()

    def finish_run(self):
        box = self.wait_box()
        self.press(box, "OK")
        return box.caption, box.text

    def close(self):
        """Exits the way the menu does; returns the exit code."""
        self.command(EXIT)
        return self.wait_exit()

    def wait_exit(self):
        wait_until(lambda: self.process.poll() is not None, "the program to end")
        return self.process.returncode
