"""Dialogs, read from the templates that an executable holds."""
import collections
import struct

RT_DIALOG, RT_STRING, RT_RCDATA = 5, 6, 10
CHILD, HAS_FONT = 0x40000000, 0x40
NUMBERED = ("Button", "Edit", "Static", "ListBox", "ScrollBar", "ComboBox")  # from 0x80 on
NAMED = {name.lower(): name for name in NUMBERED + ("SysListView32", "SysTreeView32", "msctls_progress32")}

# Places and sizes in dialog units.
Dialog = collections.namedtuple("Dialog", "style x y width height text items")
Item = collections.namedtuple("Item", "style x y width height number kind text")


def places(executable, kind):
    """{number: (offset in the image, size)} of the resources of a kind."""
    return {item.id: (data.OffsetToData, data.Size)
            for entry in executable.DIRECTORY_ENTRY_RESOURCE.entries if entry.id == kind
            for item in entry.directory.entries for data in [item.directory.entries[0].data.struct]}


def resource(executable, kind, number):
    """A resource's bytes; None when the executable has none."""
    place = places(executable, kind).get(number)
    return place and executable.get_data(*place)


class Reader:
    def __init__(self, data):
        self.data, self.place = data, 0

    def fields(self, form):
        self.place += struct.calcsize("<" + form)
        return struct.unpack_from("<" + form, self.data, self.place - struct.calcsize("<" + form))

    def text(self):
        """A text, or the number behind 0xFFFF."""
        unit, = self.fields("H")
        if unit == 0xFFFF:
            return self.fields("H")[0]
        text = ""
        while unit:
            text, (unit,) = text + chr(unit), self.fields("H")
        return text


def dialog(executable, number):
    reader = Reader(resource(executable, RT_DIALOG, number))
    style, _more, count, *place = reader.fields("IIHhhhh")
    _menu, _kind, text = reader.text(), reader.text(), reader.text()
    if style & HAS_FONT:
        reader.fields("H")
        reader.text()
    return Dialog(style, *place, text, [item(reader) for _ in range(count)])


def item(reader):
    reader.place += -reader.place % 4
    style, _more, *place, number = reader.fields("IIhhhhH")
    kind, text = reader.text(), reader.text()
    reader.fields("H")  # nothing more is given to the control
    kind = NAMED[kind.lower()] if isinstance(kind, str) else NUMBERED[kind - 0x80]
    return Item(style, *place, number, kind, text)
