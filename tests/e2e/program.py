"""The real program under Wine on a display of its own, and the hand that operates its windows (drive.exe)."""

import collections
import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

from inn import end_with_parent, wait_until

ROOT = pathlib.Path(__file__).resolve().parents[2]
WM_CLOSE, WM_KEYDOWN, WM_COMMAND = 0x10, 0x100, 0x111
BM_SETCHECK, PBM_GETRANGE, PBM_GETPOS = 0xF1, 0x407, 0x408
VK_ESCAPE = 0x1B
EXIT, PROPERTIES, GET_ARTICLES, DELETE_READ = 40001, 40002, 40003, 40004
ABOUT, SUBSCRIBE, CATCH_UP = 40005, 40007, 40011

Dialog = collections.namedtuple("Dialog", "handle caption text")
Item = collections.namedtuple("Item", "handle id kind enabled visible text")


class Bench:
    """A display, a Wine prefix below the folder `build`, and a drive.exe that waits for orders. Close it."""

    def __init__(self, build, program, drive):
        self.build, self.program = pathlib.Path(build).resolve(), pathlib.Path(program).resolve()
        self.drive_path = pathlib.Path(drive).resolve()
        self.screens = pathlib.Path(os.environ.get("PELNOR_SCREENS", self.build / "screens"))
        self.prefix = self.build / "e2e" / "wine"
        self.prefix.parent.mkdir(parents=True, exist_ok=True)
        self.log = self.prefix.parent / "wine.log"
        self.closing = contextlib.ExitStack()
        try:
            self._start()
        except BaseException:
            self.close()
            raise

    def _start(self):
        self.display = self._start_display()
        self.environment = {**os.environ, "DISPLAY": self.display, "WINEPREFIX": str(self.prefix),
                            "WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree,mshtml=", "LC_ALL": "ja_JP.UTF-8"}
        self.session("make")  # its server goes when the last program has, should nobody be left to end it
        self.closing.callback(self.session, "end")
        self._draw_own_frames()
        self._start_drive()
        self.closing.callback(lambda: self.stop(self.drive))

    def _start_drive(self):
        self.drive = self.run_wine(self.drive_path, stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8")

    def revive(self):
        """To be called after a program was killed: Wine's server now and then fails an assertion of its own then, and
        takes everything with it, unsaved settings too. True when it had to be started again."""
        try:
            self.order("windows")
            return False
        except (AssertionError, OSError):
            with contextlib.suppress(OSError):
                self.stop(self.drive)
            self._start_drive()
            return True

    def close(self):
        self.closing.close()

    def _draw_own_frames(self):
        """Without this Wine leaves frames and focus to a window manager, and waits two seconds for the one that is
        not there whenever a window opens or closes."""
        done = self.prefix / "pelnor-unmanaged"
        if not done.exists():
            self.registry(r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N")
            done.touch()

    def registry(self, key, *value):
        subprocess.run(["wine", "reg", "add", key, *value, "/f"], check=True, env=self.environment,
                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60)

    def session(self, order):
        subprocess.run([ROOT / "tools/wine_session", order, self.prefix], env=self.environment, check=True,
                       stdin=subprocess.DEVNULL)

    def _start_display(self):
        number = os.environ.get("PELNOR_DISPLAY")
        reader, writer = os.pipe()
        command = ["Xvfb", "-displayfd", str(writer), "-screen", "0", "480x400x24", "-nolisten", "tcp"]
        server = subprocess.Popen(command + ([":" + number] if number else []), pass_fds=[writer],
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  preexec_fn=end_with_parent)
        self.closing.callback(self.stop, server)
        os.close(writer)
        with open(reader) as chosen:
            line = chosen.readline().strip()
        if not line:
            raise AssertionError("Xvfb did not start")
        return ":" + line

    def run_wine(self, program, **streams):
        """Starts a Windows program. What it and Wine's helpers have to say goes to a file: they outlive it, and
        would keep a pipe of ours open."""
        with open(self.log, "ab") as log:
            return subprocess.Popen(["wine", program], env=self.environment, preexec_fn=end_with_parent,
                                    **{"stdin": subprocess.DEVNULL, "stdout": log, "stderr": log, **streams})

    @staticmethod
    def stop(process):
        """Ends a process that this bench started."""
        if process.stdin:
            process.stdin.close()
        else:
            process.terminate()
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
        if process.stdout:
            process.stdout.close()

    def order(self, *fields):
        """Gives drive.exe one order; returns its lines, each a list of fields. See drive.cpp."""
        def packed(field):
            text = str(field)
            for plain, mark in (("\\", "\\\\"), ("\t", "\\t"), ("\n", "\\n"), ("\r", "\\r")):
                text = text.replace(plain, mark)
            return text
        self.drive.stdin.write("\t".join(packed(field) for field in fields) + "\n")
        self.drive.stdin.flush()
        lines = []
        while (line := self.drive.stdout.readline().rstrip("\r\n")) != ".":
            if not line:
                raise AssertionError(f"drive.exe ended at {fields}")
            lines.append([self._unpacked(field) for field in line.split("\t")])
        if lines and lines[0][0] == "!":
            raise AssertionError(f"drive.exe refused {fields}: error {lines[0][1]}")
        return lines

    @staticmethod
    def _unpacked(field):
        out, escaped = "", False
        for char in field:
            if escaped:
                out, escaped = out + {"t": "\t", "n": "\n", "r": "\r"}.get(char, char), False
            elif char == "\\":
                escaped = True
            else:
                out += char
        return out

    def picture(self, name):
        """Leaves a picture of the display in `screens` once two in a row are the same."""
        self.screens.mkdir(parents=True, exist_ok=True)
        take = ["import", "-display", self.display, "-window", "root", "ppm:-"]
        shown, end = None, time.monotonic() + 3
        while time.monotonic() < end:
            before, shown = shown, subprocess.run(take, check=True, capture_output=True).stdout
            if before == shown:
                break
            time.sleep(0.1)
        subprocess.run(["convert", "ppm:-", self.screens / f"{name}.png"], input=shown, check=True)


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

    def __init__(self, bench):
        self.bench = bench
        self.process = bench.run_wine(bench.program)
        try:
            self.frame = self.wait(self._frame, "the main window")
        except BaseException:
            self.end()
            raise

    def end(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()

    def wait(self, condition, what):
        """Polls as wait_until() does, but no longer than the program lives."""
        def alive():
            answer = condition()
            if not answer and self.process.poll() is not None:
                raise AssertionError(f"the program ended ({self.process.returncode}) while it should show {what}")
            return answer
        try:
            return wait_until(alive, what)
        except AssertionError as reason:
            shown = [(dialog.caption, dialog.text) for dialog in self.dialogs()]
            raise AssertionError(f"{reason}; on the display: {shown}") from None

    # Windows.

    def _frame(self):
        return next((line[0] for line in self.bench.order("windows") if line[1] == "PelnorMainFrmWnd"), None)

    def items(self, window):
        return [Item(*line) for line in self.bench.order("items", window)]

    def item(self, window, number):
        return next(item for item in self.items(window) if item.id == str(number))

    def dialogs(self):
        """Dialogs and message boxes, the topmost first; the text is that of the labels together."""
        found = []
        for handle, kind, _, caption in self.bench.order("windows"):
            if kind == "#32770":
                labels = [item.text for item in self.items(handle) if item.kind == "Static" and item.text]
                found.append(Dialog(handle, caption, "\n".join(labels)))
        return found

    def wait_dialog(self, caption):
        return self.wait(lambda: next((d for d in self.dialogs() if d.caption == caption), None),
                         f"the dialog {caption!r}")

    def wait_box(self):
        """The first dialog that is not the progress of a run."""
        return self.wait(lambda: next((d for d in self.dialogs() if d.caption != "Articles"), None),
                         "a message box")

    def press(self, dialog, label, wait=True):
        """Presses a button and waits until its dialog is gone."""
        button = next((item for item in self.items(dialog.handle) if item.kind == "Button" and
                       item.text.replace("&", "").startswith(label)), None)
        if not button or button.enabled != "1":
            raise AssertionError(f"{dialog.caption!r} has no button {label!r} to press")
        self.bench.order("post", dialog.handle, WM_COMMAND, button.id, button.handle)
        if wait:
            self.wait_gone(dialog)

    def wait_gone(self, dialog):
        wait_until(lambda: all(d.handle != dialog.handle for d in self.dialogs()), f"{dialog.caption!r} to close")

    def set_text(self, dialog, number, text):
        self.bench.order("text", self.item(dialog.handle, number).handle, text)

    def check(self, dialog, number):
        self.bench.order("send", self.item(dialog.handle, number).handle, BM_SETCHECK, 1, 0)

    def is_enabled(self, window):
        return next(line[2] for line in self.bench.order("windows") if line[0] == window) == "1"

    def key(self, window, code):
        self.bench.order("post", window, WM_KEYDOWN, code, 0)

    def send(self, window, message, first=0, second=0):
        return int(self.bench.order("send", window, message, first, second)[0][0])

    # What a user does.

    def command(self, number):
        self.bench.order("post", self.frame, WM_COMMAND, number, 0)

    def group_list(self):
        return self.item(self.frame, 101).handle

    def rows(self):
        return self.bench.order("rows", self.group_list())

    def wait_rows(self, expected):
        """The rows are filled again after a box was closed, a moment later."""
        with contextlib.suppress(AssertionError):
            wait_until(lambda: self.rows() == expected, "rows")
        return self.rows()

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
