"""What the device's shell does for the program: windows, messages, resources and the registry. Nothing is drawn."""
import collections
import struct

import machine
import runtime

WM_CREATE, WM_DESTROY, WM_PAINT, WM_CLOSE, WM_QUIT = 1, 2, 0xF, 0x10, 0x12
WM_NOTIFY, WM_KEYDOWN, WM_COMMAND = 0x4E, 0x100, 0x111
GET_SUBMENU = 0x591  # asks a menu bar for a drop-down's menu
RT_RCDATA, RT_STRING = 10, 6
SCREEN = (0, 0, 240, 294)
BAR_HEIGHT = 26

# Nothing depends on what these do, only on their success.
DONE = dict.fromkeys(
    "InitCommonControls WSACleanup ShowWindow UpdateWindow MoveWindow SetForegroundWindow InvalidateRect "
    "ScrollWindowEx SetScrollPos SetScrollRange TranslateMessage CheckMenuItem SetCursor SelectObject DeleteObject "
    "DeleteDC ReleaseDC GetTextColor SetTextColor SetBkColor SetBkMode FillRect Rectangle PatBlt BitBlt EndPaint "
    "ImageList_Destroy EnableWindow IsWindowEnabled SetFocus EventModify".split(), 1)
DONE.update(dict.fromkeys("WSAStartup TranslateAcceleratorW RegCloseKey WaitForSingleObject".split(), 0))
# These only give a new handle.
MADE = ("GetDC CreateCompatibleDC CreateCompatibleBitmap CreateFontIndirectW GetStockObject LoadCursorW LoadBitmapW "
        "LoadImageW LoadAcceleratorsW ImageList_LoadImage CreateEventW").split()


class Waiting(Exception):
    """The program asks for a message and there is none."""


class Ended(Exception):
    """The program has ended, with this result."""


class Window:
    def __init__(self, kind, parent, number):
        self.kind, self.parent, self.number = kind, parent, number
        self.words = bytearray(kind.extra)
        self.user_data = 0


# What a window class is made of; the system's own have no procedure.
Kind = collections.namedtuple("Kind", "name procedure extra", defaults=(0, 0))


class ListView:
    """The rows of a list, as far as the program asks for them again."""

    def __init__(self):
        self.rows, self.columns, self.selected = [], [], -1


class Windows(runtime.Runtime):
    def __init__(self):
        super().__init__()
        self.kinds = {name: Kind(name) for name in ("SysListView32", "SysTreeView32", "SysHeader32", "SCROLLBAR")}
        self.lists = {}
        self.drawn = []  # texts
        self.registry = {}  # {path: {name: bytes}}
        self.messages = collections.deque()  # functions that give window, message, wParam, lParam; None ends

    def __getattr__(self, name):
        if name in DONE:
            return lambda: DONE[name]
        if name in MADE:
            return lambda: self.handle(name)
        raise AttributeError(name)

    def open_files(self):
        return [thing.path for thing in self.handles.values() if isinstance(thing, runtime.File)]

    def window(self, class_name):
        """The handle of the only window of a class."""
        handle, = (handle for handle, thing in self.handles.items()
                   if isinstance(thing, Window) and thing.kind.name == class_name)
        return handle

    def resource(self, kind, name):
        """A resource's bytes; None when the executable has none."""
        for entry in self.machine.exe.DIRECTORY_ENTRY_RESOURCE.entries:
            for item in entry.directory.entries if entry.id == kind else ():
                if item.id == name:
                    data = item.directory.entries[0].data.struct
                    return self.machine.exe.get_data(data.OffsetToData, data.Size)
        return None

    # windows

    def RegisterClassW(self, record):
        _style, procedure, _, extra, *_, name = self.machine.words(record, 10)
        name = self.machine.wide(name)
        self.kinds[name] = Kind(name, procedure, extra)
        return 1

    def CreateWindowExW(self, _more, kind, name, style, x, y, width, height, parent, menu, instance, parameter):
        kind = self.kinds[self.machine.wide(kind)]
        window = Window(kind, parent, menu)
        handle = self.handle(window)
        if kind.name == "SysListView32":
            self.lists[handle] = ListView()
        if kind.procedure:
            record = self.malloc(48)
            self.machine.put_words(record, parameter, instance, menu, parent, height, width, y, x, style, name, 0, 0)
            created = yield kind.procedure, handle, WM_CREATE, 0, record
            self.free(record)
            if created == 0xFFFFFFFF:
                return 0
        return handle

    def DestroyWindow(self, handle):
        window = self.handles[handle]
        if window.kind.procedure:
            yield window.kind.procedure, handle, WM_DESTROY, 0, 0
        for child in [child for child, thing in self.handles.items()
                      if isinstance(thing, Window) and thing.parent == handle]:
            yield from self.DestroyWindow(child)
        del self.handles[handle]
        return 1

    def EnumWindows(self, called, parameter):
        """There is one other window on this device."""
        yield called, self.handle(Window(Kind("DesktopExplorerWindow"), 0, 0)), parameter
        return 1

    def GetClassNameW(self, handle, buffer, room):
        name = self.handles[handle].kind.name[:room - 1]
        self.machine.put_wide(buffer, name)
        return len(name)

    def words_of(self, handle, offset):
        words = self.handles[handle].words
        if not 0 <= offset <= len(words) - 4:
            raise machine.Fault(f"a window of {self.handles[handle].kind.name} has no word at {offset}")
        return words

    def SetWindowLongW(self, handle, offset, value):
        struct.pack_into("<I", self.words_of(handle, offset), offset, value)
        return 1

    def GetWindowLongW(self, handle, offset):
        return struct.unpack_from("<I", self.words_of(handle, offset), offset)[0]

    def GetClientRect(self, _handle, record):
        self.machine.put_words(record, *SCREEN)
        return 1

    def GetWindowRect(self, _handle, record):
        """The only one that the program asks for is a menu bar's."""
        self.machine.put_words(record, 0, SCREEN[3], SCREEN[2], SCREEN[3] + BAR_HEIGHT)
        return 1

    def EqualRect(self, left, right):
        return self.machine.words(left, 4) == self.machine.words(right, 4)

    def SHCreateMenuBar(self, record):
        size, parent, _, menu, *_ = self.machine.words(record, 8)
        if size != 32 or not self.resource(RT_RCDATA, menu):
            return self.fail(runtime.MISSING)
        self.machine.put_words(record + 28, self.handle(Window(Kind("menu_worker"), parent, menu)))
        return 1

    def MessageBoxW(self, _owner, text, caption, _kind):
        raise machine.Fault(f"{self.machine.wide(caption)}: {self.machine.wide(text)}")

    # messages

    def SendMessageW(self, handle, message, word, long):
        window = self.handles[handle]
        if window.kind.procedure:
            return (yield window.kind.procedure, handle, message, word, long)
        if window.kind.name == "SysListView32":
            return self.list_message(self.lists[handle], message, word, long)
        return self.handle("menu") if message == GET_SUBMENU else 1

    def DispatchMessageW(self, record):
        return self.SendMessageW(*self.machine.words(record, 4))

    def DefWindowProcW(self, handle, message, _word, _long):
        if message == WM_CLOSE:
            yield from self.DestroyWindow(handle)
        return 0

    def GetMessageW(self, record, *_):
        if not self.messages:
            raise Waiting
        give = self.messages.popleft()
        self.machine.put_words(record, *(give() if give else (0, WM_QUIT, 0, 0)), 0, 0, 0)
        return give is not None

    def PostQuitMessage(self, _result):
        self.messages.append(None)

    def ExitThread(self, result):
        raise Ended(result)

    def list_message(self, rows, message, row, record):
        if message == 0x1061:  # LVM_INSERTCOLUMNW
            rows.columns.insert(row, self.machine.words(record, 3)[2])
        elif message == 0x101D:  # LVM_GETCOLUMNWIDTH
            return rows.columns[row]
        elif message == 0x1009:  # LVM_DELETEALLITEMS
            rows.rows.clear()
        elif message == 0x1004:  # LVM_GETITEMCOUNT
            return len(rows.rows)
        elif message == 0x100C:  # LVM_GETNEXTITEM
            return rows.selected
        elif message == 0x102B:  # LVM_SETITEMSTATE
            rows.selected = row
        else:
            return self.list_text(rows, message, row, *self.machine.words(record, 7))
        return 1

    def list_text(self, rows, message, row, _mask, item, column, _state, _states, text, _room):
        if message == 0x104D:  # LVM_INSERTITEMW
            rows.rows.insert(item, {0: self.machine.wide(text)})
            return item
        if message == 0x1074:  # LVM_SETITEMTEXTW
            rows.rows[row][column] = self.machine.wide(text)
        elif message == 0x1073:  # LVM_GETITEMTEXTW
            self.machine.put_wide(text, rows.rows[row].get(column, ""))
        else:
            raise machine.Fault(f"the list gets message {message:#x}")
        return 1

    # texts and their measures

    def LoadStringW(self, _instance, number, buffer, room):
        block = self.resource(RT_STRING, number // 16 + 1) or b""
        for _ in range(number % 16 if block else 0):
            block = block[2 + 2 * int.from_bytes(block[:2], "little"):]
        text = block[2:2 + 2 * int.from_bytes(block[:2], "little")].decode("utf-16-le")[:room - 1]
        self.machine.put_wide(buffer, text)
        return len(text)

    def GetTextMetricsW(self, _dc, record):
        self.machine.put_words(record, 13, 11, 2, *[0] * 12)
        return 1

    def GetTextExtentExPointW(self, _dc, _text, count, width, fit, places, size):
        if places:
            raise machine.Fault("nothing here knows each letter's place")
        self.machine.put_words(fit, min(count, width // 6))
        self.machine.put_words(size, 6 * count, 13)
        return 1

    def BeginPaint(self, _handle, record):
        dc = self.handle("dc")
        self.machine.put_words(record, dc, 0, *SCREEN)
        return dc

    def DrawTextW(self, _dc, text, length, _rectangle, _form):
        whole = length == 0xFFFFFFFF
        self.drawn.append(self.machine.wide(text) if whole else self.machine.read(text, 2 * length).decode("utf-16-le"))
        return 13

    # the registry

    def RegCreateKeyExW(self, parent, path, _r, _kind, _options, _rights, _security, opened, _disposition):
        path = f"{self.handles.get(parent, '')}\\{self.machine.wide(path)}".lstrip("\\")
        self.registry.setdefault(path, {})
        self.machine.put_words(opened, self.handle(path))
        return 0

    def RegQueryValueExW(self, key, name, _reserved, _kind, data, size):
        value = self.registry[self.handles[key]].get(self.machine.wide(name))
        if value is None:
            return runtime.MISSING
        if data and self.machine.words(size, 1)[0] < len(value):
            return 234
        if data:
            self.machine.write(data, value)
        self.machine.put_words(size, len(value))
        return 0

    def RegSetValueExW(self, key, name, _reserved, _kind, data, size):
        self.registry[self.handles[key]][self.machine.wide(name)] = self.machine.read(data, size)
        return 0
