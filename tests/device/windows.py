"""What the device's shell does for the program: windows, messages, lists, texts and the registry. Nothing is drawn."""
import collections
import struct

import machine
import runtime
import templates

WM_CREATE, WM_DESTROY, WM_PAINT, WM_CLOSE, WM_QUIT = 1, 2, 0xF, 0x10, 0x12
WM_NOTIFY, WM_KEYDOWN, WM_COMMAND = 0x4E, 0x100, 0x111
FIRST_OF_LISTS, GET_SUBMENU = 0x1000, 0x591  # what asks a menu bar for a drop-down's menu
USER_DATA, STYLE = -21, -16  # words that every window has
YES_OR_NO, YES, OK = 4, 6, 1
SCREEN = (0, 0, 240, 294)
BAR_HEIGHT = 26

# Nothing depends on what these do, only on their success.
DONE = dict.fromkeys(
    "InitCommonControls WSACleanup ShowWindow UpdateWindow MoveWindow SetForegroundWindow InvalidateRect "
    "ScrollWindowEx SetScrollRange TranslateMessage CheckMenuItem SetCursor SelectObject DeleteObject DeleteDC "
    "ReleaseDC GetTextColor SetTextColor SetBkColor SetBkMode FillRect Rectangle PatBlt BitBlt EndPaint "
    "ImageList_Destroy InitializeCriticalSection EnterCriticalSection LeaveCriticalSection "
    "DeleteCriticalSection".split(), 1)
DONE.update(dict.fromkeys("WSAStartup TranslateAcceleratorW RegCloseKey".split(), 0))
# These only give a new handle.
MADE = ("GetDC CreateCompatibleDC CreateCompatibleBitmap CreateFontIndirectW GetStockObject LoadCursorW LoadBitmapW "
        "LoadImageW LoadAcceleratorsW ImageList_LoadImage").split()


class Ended(Exception):
    """The program has ended, with this result."""


class Window:
    """With what its kind has: a control's text and state, the rows of a list or combo box, the columns of a list."""

    def __init__(self, kind, parent, number, style=0):
        self.kind, self.parent, self.number = kind, parent, number
        self.words = bytearray(kind.extra)
        self.common = {USER_DATA: 0, STYLE: style}
        self.text, self.enabled, self.checked, self.place, self.track = "", 1, 0, 0, 0
        self.rows, self.columns, self.selected = [], [], -1


# What a window class is made of; the system's own have no procedure.
Kind = collections.namedtuple("Kind", "name procedure extra", defaults=(0, 0))


class Windows(runtime.Runtime):
    def __init__(self):
        super().__init__()
        self.kinds = {name: Kind(name) for name in ("SysListView32", "SysTreeView32", "SysHeader32", "SCROLLBAR")}
        self.drawn = []  # texts
        self.registry = {}  # {path: {name: bytes}}
        self.focus = 0
        self.posted = collections.deque()  # window, message, wParam, lParam; None ends the program's loop
        self.messages = collections.deque()  # what comes from outside: functions that give one of these
        self.boxes = []  # caption and text of each message box

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

    # windows

    def RegisterClassW(self, record):
        _style, procedure, _, extra, *_, name = self.machine.words(record, 10)
        name = self.machine.wide(name)
        self.kinds[name] = Kind(name, procedure, extra)
        return 1

    def CreateWindowExW(self, _more, kind, name, style, x, y, width, height, parent, menu, instance, parameter):
        kind = self.kinds[self.machine.wide(kind)]
        handle = self.handle(Window(kind, parent, menu, style))
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
        offset, window = runtime.signed(offset), self.handles[handle]
        if offset in window.common:
            window.common[offset] = value
        else:
            struct.pack_into("<I", self.words_of(handle, offset), offset, value)
        return 1

    def GetWindowLongW(self, handle, offset):
        offset, window = runtime.signed(offset), self.handles[handle]
        if offset in window.common:
            return window.common[offset]
        return struct.unpack_from("<I", self.words_of(handle, offset), offset)[0]

    def EnableWindow(self, handle, enabled):
        self.handles[handle].enabled = enabled
        return 1

    def IsWindowEnabled(self, handle):
        return self.handles[handle].enabled

    def SetFocus(self, handle):
        self.focus = handle
        return handle

    def GetFocus(self):
        return self.focus

    def SetScrollPos(self, handle, _bar, place, _shows):
        self.handles[handle].place = place

    def GetScrollInfo(self, handle, _bar, record):
        self.machine.put_words(record + 20, self.handles[handle].place, self.handles[handle].track)
        return 1

    def GetClientRect(self, _handle, record):
        self.machine.put_words(record, *SCREEN)
        return 1

    def GetWindowRect(self, _handle, record):
        """The only one that the program asks for is a menu bar's."""
        self.machine.put_words(record, 0, SCREEN[3], SCREEN[2], SCREEN[3] + BAR_HEIGHT)
        return 1

    def SHCreateMenuBar(self, record):
        size, parent, _, menu, *_ = self.machine.words(record, 8)
        if size != 32 or not templates.resource(self.machine.exe, templates.RT_RCDATA, menu):
            return self.fail(runtime.MISSING)
        self.machine.put_words(record + 28, self.handle(Window(Kind("menu_worker"), parent, menu)))
        return 1

    def MessageBoxW(self, _owner, text, caption, kind):
        """The user always agrees."""
        self.boxes.append((self.machine.wide(caption), self.machine.wide(text)))
        return YES if kind & 0xF == YES_OR_NO else OK

    # messages

    def SendMessageW(self, handle, message, word, long):
        window = self.handles.get(handle)
        if not window:
            return 0
        if window.kind.procedure:
            return (yield window.kind.procedure, handle, message, word, long)
        if window.kind.name == "SysListView32" and message >= FIRST_OF_LISTS:
            return self.list_message(window, message, word, long)
        if window.kind.name in templates.NUMBERED:
            return self.control_message(window, message, word, long)
        return self.handle("menu") if message == GET_SUBMENU else 1

    def DispatchMessageW(self, record):
        return self.SendMessageW(*self.machine.words(record, 4))

    def DefWindowProcW(self, handle, message, _word, _long):
        if message == WM_CLOSE:
            yield from self.DestroyWindow(handle)
        return 0

    def next_message(self):
        return self.posted.popleft() if self.posted else self.messages.popleft()()

    def GetMessageW(self, record):
        message = self.next_message()
        self.machine.put_words(record, *(message or (0, WM_QUIT, 0, 0)), 0, 0, 0)
        return message is not None

    def PostMessageW(self, handle, message, word, long):
        self.posted.append((handle, message, word, long))
        return 1

    def PostQuitMessage(self, _result):
        self.posted.append(None)

    def ExitThread(self, result):
        raise Ended(result)

    def list_message(self, window, message, word, record):
        """A row holds the texts of its columns by their number, and its image."""
        rows = window.rows
        match message:
            case 0x1003 | 0x102F:  # LVM_SETIMAGELIST, LVM_SETITEMCOUNT
                pass
            case 0x1061:  # LVM_INSERTCOLUMNW
                window.columns.insert(word, self.machine.words(record, 3)[2])
            case 0x101D:  # LVM_GETCOLUMNWIDTH
                return window.columns[word]
            case 0x1009:  # LVM_DELETEALLITEMS
                rows.clear()
            case 0x1004:  # LVM_GETITEMCOUNT
                return len(rows)
            case 0x100C:  # LVM_GETNEXTITEM
                return window.selected
            case 0x102B:  # LVM_SETITEMSTATE
                window.selected = word
            case 0x104D:  # LVM_INSERTITEMW
                rows.insert(self.machine.words(record, 2)[1], {})
                self.put_item(rows[self.machine.words(record, 2)[1]], record)
                return self.machine.words(record, 2)[1]
            case 0x1074:  # LVM_SETITEMTEXTW
                rows[word][self.machine.words(record, 3)[2]] = self.machine.wide(self.machine.words(record, 6)[5])
            case 0x104C:  # LVM_SETITEMW
                self.put_item(rows[self.machine.words(record, 2)[1]], record)
            case 0x104B:  # LVM_GETITEMW
                return self.get_item(rows[self.machine.words(record, 2)[1]], record)
            case 0x1073:  # LVM_GETITEMTEXTW
                return self.get_item(rows[word], record)
            case _:
                raise machine.Fault(f"the list gets message {message:#x}")
        return 1

    def put_item(self, row, record):
        mask, _item, column, _state, _states, text, _room, image = self.machine.words(record, 8)
        if mask & 1:
            row[column] = self.machine.wide(text)
        if mask & 2:
            row["image"] = image

    def get_item(self, row, record):
        _mask, _item, column, _state, _states, text, room = self.machine.words(record, 7)
        self.machine.put_wide(text, row.get(column, "")[:room - 1])
        if "image" in row:
            self.machine.put_words(record + 28, row["image"])
        return len(row.get(column, "")[:room - 1])

    # texts and their measures

    def LoadStringW(self, _instance, number, buffer, room):
        block = templates.resource(self.machine.exe, templates.RT_STRING, number // 16 + 1) or b""
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

    def RegDeleteValueW(self, key, name):
        return 0 if self.registry[self.handles[key]].pop(self.machine.wide(name), None) else runtime.MISSING

    def RegSetValueExW(self, key, name, _reserved, _kind, data, size):
        self.registry[self.handles[key]][self.machine.wide(name)] = self.machine.read(data, size)
        return 0
