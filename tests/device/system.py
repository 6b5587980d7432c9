"""What the device's system does for the program: memory, texts, files, threads, windows, the registry and the network.
An import is a method of System or, where an expression says it all, an entry of CALLS. Nothing is drawn."""
import collections
import fnmatch
import functools
import itertools
import re

import machine

MISSING, NO_PATH, NO_MORE, FILE_EXISTS, EXISTS, TOO_SMALL, MORE_DATA = 2, 3, 18, 80, 183, 122, 234
FAILED = 0xFFFFFFFF
WM_CREATE, WM_DESTROY, WM_PAINT, WM_CLOSE, WM_QUIT, WM_NOTIFY, WM_KEYDOWN = 1, 2, 0xF, 0x10, 0x12, 0x4E, 0x100
WM_COMMAND, WM_INITDIALOG, GET_SUBMENU = 0x111, 0x110, 0x591
USER_DATA, STYLE = -21, -16  # words that every window has
DIALOG_WORDS = 12  # the result, the procedure, and one for the program
YES_OR_NO, YES, OK, SET_EVENT = 4, 6, 1, 3
SCREEN, BAR_HEIGHT = (0, 0, 240, 294), 26
RT_BITMAP, RT_STRING, STRING_LISTS = 2, 6, 16
HOST, ADDRESS, PORT, PACKET = b"news.example", 0x0100007F, 119, 1460


def signed(value):
    return value - (value & 0x80000000) * 2


def compare(left, right):
    return (left > right) - (left < right)


def found(address, text, part, width=1):
    """Where a part of the text begins; 0 without one."""
    place = text.find(part)
    return address + width * place if place >= 0 else 0


# What the system (s) and the machine (m) answer.
CALLS = {
    "malloc": lambda s, m, size: m.heap.take(size),
    "free": lambda s, m, block: m.heap.give_back(block) if block else None,
    "memmove": lambda s, m, to, source, size: m.write(to, m.read(source, size)),
    "memset": lambda s, m, to, value, size: m.write(to, bytes([value & 0xFF]) * size),
    "memcmp": lambda s, m, left, right, size: compare(m.read(left, size), m.read(right, size)),
    "memchr": lambda s, m, block, value, size: found(block, m.read(block, size), bytes([value & 0xFF])),
    "strlen": lambda s, m, text: len(m.text(text)),
    "strcmp": lambda s, m, left, right: compare(m.text(left), m.text(right)),
    "strncmp": lambda s, m, left, right, size: compare(m.text(left)[:size], m.text(right)[:size]),
    "strchr": lambda s, m, text, char: found(text, m.text(text) + b"\0", bytes([char & 0xFF])),
    "wcslen": lambda s, m, text: len(m.wide(text)),
    "wcscmp": lambda s, m, left, right: compare(m.wide(left), m.wide(right)),
    "lstrcmpiW": lambda s, m, left, right: compare(m.wide(left).casefold(), m.wide(right).casefold()),
    "wcschr": lambda s, m, text, char: found(text, m.wide(text) + "\0", chr(char & 0xFFFF), 2),
    "wcsstr": lambda s, m, text, part: found(text, m.wide(text), m.wide(part), 2),
    "wcscspn": lambda s, m, text, stops: len(re.split(f"[{re.escape(m.wide(stops))}]", m.wide(text))[0]),
    "IsValidCodePage": lambda s, m, page: page == 932,
    "GetLastError": lambda s, m: s.error,
    "SetLastError": lambda s, m, error: s.fail(error),
    "InterlockedIncrement": lambda s, m, number: s.add(number, 1),
    "InterlockedDecrement": lambda s, m, number: s.add(number, -1),
    "HeapCreate": lambda s, m, options, initial, most: s.handle([]),
    "CreateEventW": lambda s, m, security, manual, is_set, name: s.handle([is_set]),
    "CloseHandle": lambda s, m, handle: s.handles.pop(handle) is not None,
    "FindClose": lambda s, m, search: s.handles.pop(search) is not None,
    "GetFileSize": lambda s, m, file, high: (high and m.put_words(high, 0)) or len(s.files[s.handles[file][0]]),
    "EventModify": lambda s, m, event, change: s.handles[event].__setitem__(0, change == SET_EVENT),
    "GetFileAttributesW": lambda s, m, path: 0x80 if s.files.get(s.path(path)) is not None else (
        0x10 if s.path(path) in s.files else s.fail(MISSING, FAILED)),
    "FindResourceW": lambda s, m, instance, number, kind: number,
    "LoadResource": lambda s, m, instance, number: number,
    "GetWindowLongW": lambda s, m, window, offset: s.handles[window].words[signed(offset)],
    "EnableWindow": lambda s, m, window, enabled: setattr(s.handles[window], "enabled", enabled),
    "IsWindowEnabled": lambda s, m, window: s.handles[window].enabled,
    "GetWindow": lambda s, m, window, owner: s.handles[window].parent,
    "SetFocus": lambda s, m, window: setattr(s, "focus", window),
    "GetFocus": lambda s, m: s.focus,
    "GetClientRect": lambda s, m, window, record: m.put_words(record, *SCREEN),
    # The only one that the program asks for is a menu bar's.
    "GetWindowRect": lambda s, m, window, record: m.put_words(record, 0, SCREEN[3], SCREEN[2], SCREEN[3] + BAR_HEIGHT),
    "GetTextMetricsW": lambda s, m, dc, record: m.put_words(record, 13, 11, 2, *[0] * 12),
    "PostMessageW": lambda s, m, window, message, word, long: s.posted.append((window, message, word, long)),
    "PostQuitMessage": lambda s, m, result: s.posted.append(None),
    "GetDlgItem": lambda s, m, dialog, number: s.control(dialog, number)[0],
    "SetDlgItemTextW": lambda s, m, dialog, number, text: setattr(s.control(dialog, number)[1], "text", m.wide(text)),
    "EndDialog": lambda s, m, dialog, result: s.results.update({dialog: result}),
    "inet_addr": lambda s, m, text: FAILED,
    "htons": lambda s, m, port: port >> 8 & 0xFF | (port & 0xFF) << 8,
    "closesocket": lambda s, m, socket: s.handles.pop(socket) and 0,
}
# Only their success counts.
CALLS.update(dict.fromkeys(
    "InitCommonControls WSACleanup IsWindowVisible ShowWindow UpdateWindow MoveWindow SetForegroundWindow InvalidateRect "
    "SetScrollPos SetScrollRange TranslateMessage CheckMenuItem SetCursor SelectObject DeleteObject DeleteDC ReleaseDC GetTextColor "
    "SetTextColor SetBkMode Rectangle PatBlt BitBlt EndPaint ImageList_Destroy InitializeCriticalSection "
    "EnterCriticalSection LeaveCriticalSection DeleteCriticalSection".split(), lambda s, m: 1))
CALLS.update(dict.fromkeys("WSAStartup TranslateAcceleratorW RegCloseKey EnumWindows".split(), lambda s, m: 0))
# And these only give a new handle.
CALLS.update(dict.fromkeys(
    "GetDC CreateCompatibleDC CreateCompatibleBitmap CreateFontIndirectW GetStockObject LoadCursorW LoadBitmapW "
    "LoadImageW LoadAcceleratorsW ImageList_LoadImage".split(), lambda s, m: s.handle("drawing")))

# Messages to a control (c). A combo box's row is its text and its number; a list's has the texts of its columns by their
# number, and its image.
CONTROLS = {
    0xF0: lambda s, m, c, word, long: c.checked,  # BM_GETCHECK
    0xF1: lambda s, m, c, word, long: setattr(c, "checked", word),  # BM_SETCHECK
    0x143: lambda s, m, c, word, text: c.rows.append([m.wide(text), 0]) or len(c.rows) - 1,  # CB_ADDSTRING
    0x146: lambda s, m, c, word, long: len(c.rows),  # CB_GETCOUNT
    0x147: lambda s, m, c, word, long: c.selected,  # CB_GETCURSEL
    0x148: lambda s, m, c, row, text: m.put_wide(text, c.rows[row][0]),  # CB_GETLBTEXT
    0x149: lambda s, m, c, row, long: len(c.rows[row][0]),  # CB_GETLBTEXTLEN
    0x14E: lambda s, m, c, row, long: setattr(c, "selected", row),  # CB_SETCURSEL
    0x150: lambda s, m, c, row, long: c.rows[row][1],  # CB_GETITEMDATA
    0x151: lambda s, m, c, row, data: c.rows[row].__setitem__(1, data),  # CB_SETITEMDATA
    0x1061: lambda s, m, c, column, record: c.columns.insert(column, m.words(record, 3)[2]),  # LVM_INSERTCOLUMNW
    0x101D: lambda s, m, c, column, long: c.columns[column],  # LVM_GETCOLUMNWIDTH
    0x1009: lambda s, m, c, word, long: c.rows.clear() or 1,  # LVM_DELETEALLITEMS
    0x1004: lambda s, m, c, word, long: len(c.rows),  # LVM_GETITEMCOUNT
    0x100C: lambda s, m, c, word, long: c.selected,  # LVM_GETNEXTITEM
    0x102B: lambda s, m, c, row, long: setattr(c, "selected", row) or 1,  # LVM_SETITEMSTATE
    0x104D: lambda s, m, c, word, record: s.insert_item(c.rows, record),  # LVM_INSERTITEMW
    0x104C: lambda s, m, c, word, record: s.put_item(c.rows, record),  # LVM_SETITEMW
    0x1074: lambda s, m, c, row, record: c.rows[row].__setitem__(  # LVM_SETITEMTEXTW
        m.words(record, 3)[2], m.wide(m.words(record, 6)[5])),
    0x104B: lambda s, m, c, word, record: s.get_item(c.rows[m.words(record, 2)[1]], record),  # LVM_GETITEMW
    0x1073: lambda s, m, c, row, record: s.get_item(c.rows[row], record),  # LVM_GETITEMTEXTW
}


class Ended(Exception):
    """The program has ended, with this result."""


class Window:
    """With what its kind has: a control's text and state, the rows of a list."""

    def __init__(self, kind, procedure, extra, parent, number, style=0):
        self.kind, self.procedure, self.parent, self.number = kind, procedure, parent, number
        self.words = {USER_DATA: 0, STYLE: style} | dict.fromkeys(range(0, extra, 4), 0)
        self.text, self.enabled, self.checked = "", 1, 0
        self.rows, self.columns, self.selected = [], [], FAILED


class System:
    """`files` holds each path's bytes, a folder's None; `talk` makes the server's side of a connection."""

    def __init__(self, files, talk):
        self.machine, self.files, self.talk = None, files, talk
        self.error = self.clock = self.focus = self.host = 0  # the clock in milliseconds
        self.handles, self.next_handle = {}, 0x100
        self.classes = {}  # {name: procedure and bytes of its windows' words}
        self.registry = {}  # {name: bytes}
        self.posted = collections.deque()  # window, message, wParam, lParam; None ends the program's loop
        self.messages = collections.deque()  # what comes from outside: functions that give one of these
        self.threads = collections.deque()
        self.modal, self.results = [], {}  # the open dialogs, the topmost last; of those that were ended
        self.boxes, self.drawn = [], []  # caption and text of each message box; texts

    def __getattr__(self, name):
        if name not in CALLS:
            raise AttributeError(name)
        return functools.partial(CALLS[name], self, self.machine)

    def handle(self, thing):
        self.next_handle += 4
        self.handles[self.next_handle] = thing
        return self.next_handle

    def fail(self, error, answer=0):
        self.error = error
        return answer

    def add(self, place, change):
        value, = self.machine.words(place, 1)
        self.machine.put_words(place, value + change)
        return value + change

    # memory

    def realloc(self, block, size):
        grown = self.machine.heap.take(size)
        if block and grown:
            self.machine.write(grown, self.machine.read(block, min(size, self.machine.heap.blocks[block])))
            self.machine.heap.give_back(block)
        return grown

    def HeapAlloc(self, heap, _flags, size):
        self.handles[heap].append(self.machine.heap.take(size))
        return self.handles[heap][-1]

    def HeapDestroy(self, heap):
        for block in self.handles.pop(heap):
            self.machine.heap.give_back(block)
        return 1

    def memcpy(self, to, source, size):
        if to < source + size and source < to + size and to != source:
            raise machine.Fault("memcpy of what overlaps")
        self.machine.write(to, self.machine.read(source, size))

    def qsort(self, place, count, size, order):
        """Sorts where the elements stand, so that `order` sees nothing else."""
        for end in range(1, count):
            for at in range(place + end * size, place, -size):
                if signed((yield order, at - size, at)) <= 0:
                    break
                left, right = self.machine.read(at - size, size), self.machine.read(at, size)
                self.machine.write(at - size, right + left)

    # texts

    def wsprintfW(self, buffer, form):
        places = itertools.count(2)

        def made(match):
            argument = self.machine.argument(next(places))
            return self.machine.wide(argument) if match[0] == "%s" else match[0] % signed(argument)

        text = re.sub("%[0-9]*[dsu]", made, self.machine.wide(form))
        self.machine.put_wide(buffer, text)
        return len(text)

    def MultiByteToWideChar(self, page, _flags, text, _length, buffer, room):
        made = self.machine.text(text).decode(f"cp{page}", "replace")
        if len(made) >= room:
            return self.fail(TOO_SMALL)
        self.machine.put_wide(buffer, made)
        return len(made) + 1

    def WideCharToMultiByte(self, page, _flags, text, _length, buffer, room):
        made = self.machine.wide(text).encode(f"cp{page}", "replace") + b"\0"
        if len(made) > room:
            return self.fail(TOO_SMALL)
        self.machine.write(buffer, made)
        return len(made)

    def resource(self, kind, number):
        place = machine.resources(self.machine.exe).get((kind, number))
        return place and self.machine.exe.get_data(*place)

    def LoadStringW(self, _instance, number, buffer, room):
        block = self.resource(RT_STRING, number // STRING_LISTS + 1) or bytes(2 * STRING_LISTS)
        for _ in range(number % STRING_LISTS):
            block = block[2 + 2 * int.from_bytes(block[:2], "little"):]
        text = block[2:2 + 2 * int.from_bytes(block[:2], "little")].decode("utf-16-le")[:room - 1]
        self.machine.put_wide(buffer, text)
        return len(text)

    # files

    def path(self, text):
        """Backslashes side by side count as one."""
        return re.sub(r"\\+", r"\\", self.machine.wide(text)).rstrip("\\")

    def CreateFileW(self, path, _access, _sharing, _security, how, _attributes, _template):
        path, is_new, is_there, clears = self.path(path), how == 1, how in (3, 5), how == 5
        if path.rpartition("\\")[0] not in self.files:
            return self.fail(NO_PATH, FAILED)
        if is_there and path not in self.files:
            return self.fail(MISSING, FAILED)
        if is_new and path in self.files:
            return self.fail(FILE_EXISTS, FAILED)
        self.error = EXISTS if path in self.files and how == 4 else 0
        if clears or path not in self.files:
            self.files[path] = b""
        return self.handle([path, 0])

    def SetFilePointer(self, file, place, _high, origin):
        if origin != 0:
            raise machine.Fault(f"a file's pointer is set from {origin}")
        self.handles[file][1] = place
        return place

    def ReadFile(self, file, buffer, count, got, _overlapped):
        path, place = self.handles[file]
        data = self.files[path][place:place + count]
        self.machine.write(buffer, data)
        self.machine.put_words(got, len(data))
        self.handles[file][1] += len(data)
        return 1

    def WriteFile(self, file, buffer, count, done, _overlapped):
        path, place = self.handles[file]
        old = self.files[path].ljust(place, b"\0")
        self.files[path] = old[:place] + self.machine.read(buffer, count) + old[place + count:]
        self.machine.put_words(done, count)
        self.handles[file][1] += count
        return 1

    def SetEndOfFile(self, file):
        path, place = self.handles[file]
        self.files[path] = self.files[path][:place].ljust(place, b"\0")
        return 1

    def DeleteFileW(self, path):
        return self.files.pop(self.path(path), None) is not None or self.fail(MISSING)

    def MoveFileW(self, old, new):
        old, new = self.path(old), self.path(new)
        if old not in self.files or new in self.files:
            return self.fail(EXISTS if old in self.files else MISSING)
        self.files[new] = self.files.pop(old)
        return 1

    def CreateDirectoryW(self, path, _security):
        path = self.path(path)
        if path in self.files:
            return self.fail(EXISTS)
        self.files[path] = None
        return 1

    def FindFirstFileW(self, pattern, record):
        pattern = self.path(pattern)
        search = self.handle([path for path in self.files if path.count("\\") == pattern.count("\\") and
                              fnmatch.fnmatchcase(path, pattern)])
        return search if self.FindNextFileW(search, record) else self.CloseHandle(search) and self.fail(MISSING, FAILED)

    def FindNextFileW(self, search, record):
        if not self.handles[search]:
            return self.fail(NO_MORE)
        path = self.handles[search].pop(0)
        data = self.files[path]
        self.machine.put_words(record, 0x10 if data is None else 0x80, *[0] * 7, len(data or b""), 0)
        self.machine.put_wide(record + 40, path.rpartition("\\")[2])
        return 1

    # threads

    def CreateThread(self, _security, _stack, function, parameter, _flags, number):
        self.threads.append((function, parameter))
        self.machine.put_words(number, 1)
        return self.handle("thread")

    def run_threads(self):
        while self.threads:
            before, self.error = self.error, 0
            yield self.threads.popleft()
            self.error = before

    def WaitForSingleObject(self, event, _limit):
        if not self.handles[event][0]:
            raise machine.Fault("it waits for what never comes")
        return 0

    def ExitThread(self, result):
        raise Ended(result)

    # windows

    def window(self, kind):
        """The handle of the only window of a class."""
        handle, = (handle for handle, thing in self.handles.items() if getattr(thing, "kind", None) == kind)
        return handle

    def control(self, parent, number):
        """A control's handle and window. One of a dialog is made when it is first asked for."""
        for handle, thing in self.handles.items():
            if isinstance(thing, Window) and (thing.parent, thing.number) == (parent, number):
                return handle, thing
        control = Window("control", 0, 0, parent, number)
        return self.handle(control), control

    def RegisterClassW(self, record):
        _style, procedure, _, extra, *_, name = self.machine.words(record, 10)
        self.classes[self.machine.wide(name)] = procedure, extra
        return 1

    def CreateWindowExW(self, _more, kind, name, style, x, y, width, height, parent, menu, instance, parameter):
        procedure, extra = self.classes.get(self.machine.wide(kind), (0, 0))
        handle = self.handle(Window(self.machine.wide(kind), procedure, extra, parent, menu, style))
        if procedure:
            record = self.malloc(48)
            self.machine.put_words(record, parameter, instance, menu, parent, height, width, y, x, style, name, 0, 0)
            created = yield procedure, handle, WM_CREATE, 0, record
            self.free(record)
            if created == FAILED:
                return 0
        return handle

    def DestroyWindow(self, handle):
        if self.handles[handle].procedure:
            yield self.handles[handle].procedure, handle, WM_DESTROY, 0, 0
        for child in [child for child, thing in self.handles.items() if getattr(thing, "parent", 0) == handle]:
            yield from self.DestroyWindow(child)
        del self.handles[handle]
        return 1

    def SetWindowLongW(self, handle, offset, value):
        if signed(offset) not in self.handles[handle].words:
            raise machine.Fault(f"a window of {self.handles[handle].kind} has no word at {signed(offset)}")
        self.handles[handle].words[signed(offset)] = value

    def SHCreateMenuBar(self, record):
        size, parent, _, menu, _, bitmap, images, _ = self.machine.words(record, 8)
        width = int.from_bytes(self.resource(RT_BITMAP, bitmap)[4:8], "little")
        if size != 32 or width != 16 * images:
            raise machine.Fault("the menu bar's record is not the device's")
        self.machine.put_words(record + 28, self.handle(Window("menu_worker", 0, 0, parent, menu)))
        return 1

    def MessageBoxW(self, _owner, text, caption, kind):
        """The user always agrees."""
        self.boxes.append((self.machine.wide(caption), self.machine.wide(text)))
        return YES if kind & 0xF == YES_OR_NO else OK

    def DrawTextW(self, _dc, text, length, _rectangle, _form):
        whole = length == FAILED
        self.drawn.append(self.machine.wide(text) if whole else self.machine.read(text, 2 * length).decode("utf-16-le"))
        return 13

    def GetTextExtentExPointW(self, _dc, _text, count, width, fit, places, size):
        if places:
            raise machine.Fault("nothing here knows each letter's place")
        self.machine.put_words(fit, min(count, width // 6))
        self.machine.put_words(size, 6 * count, 13)
        return 1

    def BeginPaint(self, _handle, record):
        self.machine.put_words(record, self.handle("dc"), 0, *SCREEN)
        return self.next_handle

    # dialogs: their templates go by their numbers

    def CreateDialogIndirectParamW(self, _instance, _number, owner, procedure, parameter):
        handle = self.handle(Window("dialog", procedure, DIALOG_WORDS, owner, 0))
        yield procedure, handle, WM_INITDIALOG, 0, parameter
        return handle

    def DialogBoxIndirectParamW(self, instance, number, owner, procedure, parameter):
        handle = yield from self.CreateDialogIndirectParamW(instance, number, owner, procedure, parameter)
        self.modal.append(handle)
        yield from self.run_threads()
        while handle not in self.results:
            yield from self.SendMessageW(*self.next_message())
        self.modal.remove(handle)
        yield from self.DestroyWindow(handle)
        return self.results.pop(handle)

    def GetDlgItemTextW(self, dialog, number, buffer, room):
        text = self.control(dialog, number)[1].text[:room - 1]
        self.machine.put_wide(buffer, text)
        return len(text)

    def SendDlgItemMessageW(self, dialog, number, message, word, long):
        return (yield from self.SendMessageW(self.GetDlgItem(dialog, number), message, word, long))

    # messages

    def SendMessageW(self, handle, message, word, long):
        window = self.handles.get(handle)
        if not window:
            return 0
        if window.procedure:
            return (yield window.procedure, handle, message, word, long)
        if message == GET_SUBMENU:
            return self.handle("menu")
        return CONTROLS.get(message, lambda *_: 0)(self, self.machine, window, word, long) or 0

    def DispatchMessageW(self, record):
        return self.SendMessageW(*self.machine.words(record, 4))

    def DefWindowProcW(self, handle, message, _word, _long):
        if message == WM_CLOSE:
            yield from self.DestroyWindow(handle)
        return 0

    def next_message(self):
        return self.posted.popleft() if self.posted else self.messages.popleft()()

    def GetMessageW(self, record):
        yield from self.run_threads()
        message = self.next_message()
        self.machine.put_words(record, *(message or (0, WM_QUIT, 0, 0)), 0, 0, 0)
        return message is not None

    def put_item(self, rows, record):
        mask, item, column, _state, _states, text, _room, image = self.machine.words(record, 8)
        if mask & 1:
            rows[item][column] = self.machine.wide(text)
        if mask & 2:
            rows[item]["image"] = image
        return 1

    def insert_item(self, rows, record):
        item = self.machine.words(record, 2)[1]
        rows.insert(item, {})
        self.put_item(rows, record)
        return item

    def get_item(self, row, record):
        _mask, _item, column, _state, _states, text, room = self.machine.words(record, 7)
        self.machine.put_wide(text, row.get(column, "")[:room - 1])
        if "image" in row:
            self.machine.put_words(record + 28, row["image"])
        return len(row.get(column, "")[:room - 1])

    # the registry

    def RegCreateKeyExW(self, _parent, _path, _r, _kind, _options, _rights, _security, opened, _disposition):
        self.machine.put_words(opened, self.handle("key"))
        return 0

    def RegQueryValueExW(self, _key, name, _reserved, _kind, data, size):
        value = self.registry.get(self.machine.wide(name))
        if value is None:
            return MISSING
        if data and self.machine.words(size, 1)[0] < len(value):
            return MORE_DATA
        if data:
            self.machine.write(data, value)
        self.machine.put_words(size, len(value))
        return 0

    def RegSetValueExW(self, _key, name, _reserved, _kind, data, size):
        self.registry[self.machine.wide(name)] = self.machine.read(data, size)
        return 0

    # the network: the server answers at once or never

    def socket(self, family, kind, protocol):
        return self.handle("socket") if (family, kind, protocol) == (2, 1, 0) else FAILED

    def gethostbyname(self, name):
        if self.machine.text(name) != HOST:
            return self.fail(11001)
        self.host = self.host or self.malloc(28)
        self.machine.put_words(self.host, 0, 0, 4 << 16 | 2, self.host + 16, self.host + 24, 0, ADDRESS)
        return self.host

    def connect(self, socket, record, size):
        if (size, *self.machine.words(record, 2)) != (16, self.htons(PORT) << 16 | 2, ADDRESS):
            return self.fail(10061, FAILED)
        self.handles[socket] = self.talk()
        return 0

    def send(self, socket, text, size, _flags):
        self.handles[socket].take(self.machine.read(text, size))
        return size

    def select(self, _count, readers, _writers, _failed, limit):
        """The time that it waits passes on the clock only."""
        count, socket = self.machine.words(readers, 2)
        if count != 1 or not limit:
            raise machine.Fault("it waits for more than one, or for ever")
        if self.handles[socket].waiting:
            return 1
        seconds, microseconds = self.machine.words(limit, 2)
        self.clock += 1000 * seconds + microseconds // 1000
        self.machine.put_words(readers, 0)
        return 0

    def recv(self, socket, buffer, room, _flags):
        """Never more than a packet."""
        talk = self.handles[socket]
        given, talk.waiting = talk.waiting[:min(room, PACKET)], talk.waiting[min(room, PACKET):]
        if not given:
            raise machine.Fault("it waits for ever for what the server does not send")
        self.machine.write(buffer, given)
        return len(given)
