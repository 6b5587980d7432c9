"""What the device's shell does for dialogs, and for the thread that runs while one is open."""
import collections
import struct

import machine
import runtime
import templates
import windows

WM_INITDIALOG, WM_HSCROLL = 0x110, 0x114
THUMB_TRACK, SELECTION_CHANGED = 5, 1
PSN_KILLACTIVE, PSN_APPLY = -201, -202
SET_EVENT = 3
OWN_WORDS = 12  # the result, the procedure, and one for the program
RECORD = 40  # of the sheet's and of each page's
FONTS, ENTRIES = ("@MS Gothic", "Courier", "MS Gothic"), ("`hidden", "office")


class Dialogs(windows.Windows):
    def __init__(self):
        super().__init__()
        self.modal = []  # the open dialogs, the topmost last
        self.results = {}  # of those that were ended
        self.entered = collections.deque()  # what the user does in each sheet: {page: {control: what `fill` takes}}
        self.threads = collections.deque()
        self.clock = 0  # milliseconds

    def control(self, dialog, number):
        """A control's handle and window."""
        found = ((handle, thing) for handle, thing in self.handles.items() if isinstance(thing, windows.Window))
        return next((pair for pair in found if (pair[1].parent, pair[1].number) == (dialog, number)), (0, None))

    def fill(self, dialog, values):
        """Enters a text, chooses a row by it, ticks a box (True), moves a bar to a number; the dialog is told. At None
        the page must refuse to be left, because of a control."""
        for number, value in values:
            if number is None:
                yield from self.notify(dialog, PSN_KILLACTIVE, value)
                continue
            handle, window = self.control(dialog, number)
            message, word = windows.WM_COMMAND, number
            match window.kind.name:
                case "Edit":
                    window.text = value
                case "Button":
                    window.checked = value
                case "ScrollBar":
                    window.track, message, word = value, WM_HSCROLL, THUMB_TRACK
                case "ComboBox":
                    window.selected, word = self.row_of(window, value), SELECTION_CHANGED << 16 | number
            yield from self.SendMessageW(dialog, message, word, handle)

    # threads

    def CreateThread(self, _security, _stack, function, parameter, _flags, number):
        self.threads.append((function, parameter))
        self.machine.put_words(number, 1)
        return self.handle("thread")

    def run_threads(self):
        while self.threads:
            before, self.error = self.error, 0
            yield machine.Thread(self.threads.popleft())
            self.error = before

    def CreateEventW(self, _security, _manual, is_set, _name):
        return self.handle([is_set])

    def EventModify(self, event, change):
        self.handles[event][0] = change == SET_EVENT
        return 1

    def WaitForSingleObject(self, event, _limit):
        if not self.handles[event][0]:
            raise machine.Fault("it waits for what never comes")
        return 0

    def GetTickCount(self):
        return self.clock

    # dialogs: their templates go by their numbers

    def FindResourceW(self, _instance, number, _kind):
        return number

    def LoadResource(self, _instance, number):
        return number

    def make_dialog(self, number, owner, procedure, parameter):
        """A generator that gives the new dialog."""
        handle = self.handle(windows.Window(windows.Kind("dialog", procedure, OWN_WORDS), owner, 0))
        for item in templates.dialog(self.machine.exe, number).items:
            self.handle(windows.Window(windows.Kind(item.kind), handle, item.number, item.style))
        yield procedure, handle, WM_INITDIALOG, 0, parameter
        return handle

    def CreateDialogIndirectParamW(self, _instance, number, owner, procedure, parameter):
        return self.make_dialog(number, owner, procedure, parameter)

    def IsDialogMessageW(self, _dialog, _message):
        return 0

    def GetWindow(self, handle, _owner):
        return self.handles[handle].parent

    def GetMessageW(self, record):
        yield from self.run_threads()
        return super().GetMessageW(record)

    def DialogBoxIndirectParamW(self, _instance, number, owner, procedure, parameter):
        handle = yield from self.make_dialog(number, owner, procedure, parameter)
        self.modal.append(handle)
        yield from self.run_threads()
        while handle not in self.results:
            yield from self.SendMessageW(*self.next_message())
        self.modal.remove(handle)
        yield from self.DestroyWindow(handle)
        return self.results.pop(handle)

    def EndDialog(self, handle, result):
        self.results[handle] = result
        return 1

    def PropertySheetW(self, header):
        """The user goes through the pages that the test names, then presses OK."""
        size, _flags, owner, _instance, _icon, _caption, count, _start, pages, _ = self.machine.words(header, 10)
        made = []
        for place, values in self.entered.popleft().items():
            record = pages + RECORD * place
            page_size, _, _, number, _, _title, procedure, *_ = self.machine.words(record, 10)
            if (size, page_size) != (RECORD, RECORD) or place >= count:
                raise machine.Fault("the sheet's records are not the device's")
            page = yield from self.make_dialog(number, owner, procedure, record)
            yield from self.fill(page, values)
            yield from self.notify(page, PSN_KILLACTIVE, None)
            made.append(page)
        for page in made:
            yield from self.notify(page, PSN_APPLY, None)
            yield from self.DestroyWindow(page)
        return windows.OK

    def notify(self, page, code, refused):
        """The page must answer the notification with 0, or refuse and put the focus on a control."""
        record = self.malloc(12)
        self.machine.put_words(record, page, 0, code)
        yield from self.SendMessageW(page, windows.WM_NOTIFY, 0, record)
        self.free(record)
        answer, = struct.unpack_from("<I", self.handles[page].words)
        if answer != (refused is not None) or (refused and self.focus != self.GetDlgItem(page, refused)):
            raise machine.Fault("a page takes what is wrong, or refuses what is right")

    # controls

    def GetDlgItem(self, dialog, number):
        return self.control(dialog, number)[0]

    def SetDlgItemTextW(self, dialog, number, text):
        self.control(dialog, number)[1].text = self.machine.wide(text)
        return 1

    def GetDlgItemTextW(self, dialog, number, buffer, room):
        text = self.control(dialog, number)[1].text[:room - 1]
        self.machine.put_wide(buffer, text)
        return len(text)

    def SendDlgItemMessageW(self, dialog, number, message, word, long):
        return (yield from self.SendMessageW(self.GetDlgItem(dialog, number), message, word, long))

    @staticmethod
    def row_of(window, text):
        return next((place for place, row in enumerate(window.rows) if row[0] == text), -1)

    def control_message(self, window, message, word, long):
        """A combo box's row is its text and its number."""
        rows = window.rows
        match message:
            case 0xF0:  # BM_GETCHECK
                return window.checked
            case 0xF1:  # BM_SETCHECK
                window.checked = word
            case 0xB1 | 0x141:  # EM_SETSEL, CB_LIMITTEXT
                pass
            case 0x143:  # CB_ADDSTRING
                rows.append([self.machine.wide(long), 0])
                return len(rows) - 1
            case 0x146:  # CB_GETCOUNT
                return len(rows)
            case 0x147:  # CB_GETCURSEL
                return window.selected
            case 0x148:  # CB_GETLBTEXT
                self.machine.put_wide(long, rows[word][0])
            case 0x149:  # CB_GETLBTEXTLEN
                return len(rows[word][0])
            case 0x14E:  # CB_SETCURSEL
                window.selected = runtime.signed(word)
            case 0x150:  # CB_GETITEMDATA
                return rows[word][1]
            case 0x151:  # CB_SETITEMDATA
                rows[word][1] = long
            case 0x158:  # CB_FINDSTRINGEXACT
                return self.row_of(window, self.machine.wide(long))
            case _ if window.kind.name != "Static":
                raise machine.Fault(f"a {window.kind.name} gets message {message:#x}")
        return 0

    # what the pages list

    def EnumFontFamiliesW(self, _dc, _family, called, parameter):
        record = self.malloc(92)
        for name in FONTS:
            self.machine.put_wide(record + 28, name)
            yield called, record, 0, 0, parameter
        self.free(record)
        return 1

    def RasEnumEntries(self, _reserved, _book, records, size, count):
        for place, name in enumerate(ENTRIES):
            if self.machine.words(records, 1)[0] != 48:
                return 632
            self.machine.put_wide(records + 48 * place + 4, name)
        self.machine.put_words(size, 48 * len(ENTRIES))
        self.machine.put_words(count, len(ENTRIES))
        return 0
