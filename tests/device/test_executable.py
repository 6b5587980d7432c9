"""The device's executables, read back with a reader that is not ours, and what the step that makes them refuses.

    test_executable.py DEVICE_BUILD DESKTOP_EXECUTABLE
"""
import collections
import itertools
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest

import pefile

HERE = pathlib.Path(__file__).resolve()
ROOT = HERE.parents[2]
# By processor: its tools and the bytes that the device's user is to find room for. A MIPS instruction does less than one
# of ARM, where most take a condition: the same program takes an eighth more.
PROCESSORS = {"arm": ("arm-none-eabi", 110 * 1024), "mips": ("mipsel-linux-gnu", 136 * 1024)}
JUMP = r"\t[bj]\w*\t"
LIBRARIES = {"coredll.dll", "commctrl.dll", "aygshell.dll", "winsock.dll"}

# The screen in pixels. At its bottom stands the bar with the input panel's button, above it the panel while it is
# open.
WIDTH, HEIGHT, BAR, PANEL = 240, 320, 26, 80
# Of a window: its frame and title, and two rows of tabs with their frame in a sheet.
FRAME, TITLE, TABS = 6, 24, 46
FONT_WIDTH, FONT_HEIGHT = 6, 13  # what 4 dialog units across and 8 down become
NOT_SHOWN = (117, 144)  # pages that the sheet leaves out
RT_DIALOG, RT_RCDATA, CHILD, HAS_FONT = 5, 10, 0x40000000, 0x40
ICONS, VERSION_AND_MANIFEST = {3, 14}, {16, 24}
EDIT, COMBO, EDITABLE_LIST = 0x81, 0x85, 2


def tool(processor, name, *arguments, **options):
    return subprocess.run([f"{PROCESSORS[processor][0]}-{name}", *map(str, arguments)], capture_output=True, text=True,
                          check=True, **options).stdout


def resources(executable):
    """{(type, name, language): bytes}"""
    return {(kind.id, name.id, language.id): executable.get_data(
                language.data.struct.OffsetToData, language.data.struct.Size)
            for kind in executable.DIRECTORY_ENTRY_RESOURCE.entries
            for name in kind.directory.entries for language in name.directory.entries}


class Template:
    """A dialog's template. Places and sizes in dialog units."""
    Item = collections.namedtuple("Item", "style more x y width height number kind")

    def __init__(self, data):
        self.data, self.place = data, 0
        self.style, _more, count, *self.corner, self.width, self.height = self.fields("IIHhhhh")
        self.text(), self.text(), self.text()
        if self.style & HAS_FONT:
            self.fields("H"), self.text()
        self.items = [self.item() for _ in range(count)]
        self.above = TITLE + (TABS if self.style & CHILD else 0)
        self.pixels = self.above + self.height * FONT_HEIGHT / 8 + FRAME

    def fields(self, form):
        found = struct.unpack_from("<" + form, self.data, self.place)
        self.place += struct.calcsize("<" + form)
        return found

    def text(self):
        """A text, or the number behind 0xFFFF."""
        unit, = self.fields("H")
        if unit == 0xFFFF:
            return self.fields("H")[0]
        while unit:
            unit, = self.fields("H")

    def item(self):
        self.place += -self.place % 4
        fields, kind = self.fields("IIhhhhH"), self.text()
        self.text(), self.fields("H")
        return self.Item(*fields, kind)

    def lowest(self):
        """Where the lowest control ends that is typed into, in pixels of a screen in whose middle the dialog stands."""
        ends = [item.y + (12 if item.kind == COMBO else item.height) for item in self.items
                if item.kind == EDIT or (item.kind == COMBO and item.style & 3 == EDITABLE_LIST)]
        return (HEIGHT - self.pixels) / 2 + self.above + max(ends) * FONT_HEIGHT / 8 if ends else 0


class Executable:
    @classmethod
    def setUpClass(cls):
        cls.file = build / f"pelnor-{cls.processor}.exe"
        cls.program = build / cls.processor / "platform/device/pelnor_device"
        cls.exe = pefile.PE(str(cls.file))
        cls.dialogs = {number: Template(data) for (kind, number, _), data in resources(cls.exe).items()
                       if kind == RT_DIALOG}

    def test_headers(self):
        file_header, optional = self.exe.FILE_HEADER, self.exe.OPTIONAL_HEADER
        for sentence, expected, found in (
            ("without relocations it must say so", 1, file_header.Characteristics & 1),
            ("it is an executable of 32 bits", 0x102, file_header.Characteristics & 0x102),
            ("it is PE32", 0x10B, optional.Magic),
            ("the system refuses another's programs", 9, optional.Subsystem),
            ("a newer version's program would be refused", (3, 0),
             (optional.MajorSubsystemVersion, optional.MinorSubsystemVersion)),
            ("the fixed place is where programs are loaded", 0x10000, optional.ImageBase),
            ("the reader finds nothing odd", [], self.exe.get_warnings()),
        ):
            self.assertEqual(expected, found, sentence)
        self.assertLessEqual(self.file.stat().st_size, PROCESSORS[self.processor][1])

    def test_every_import_is_exported_by_its_library(self):
        exports = {f"{path.stem}.dll": path.read_text().split() for path in (ROOT / "platform/device/api").glob("*.txt")}
        imports = {library.dll.decode(): library.imports for library in self.exe.DIRECTORY_ENTRY_IMPORT}
        self.assertEqual(LIBRARIES, imports.keys())
        self.assertEqual([], [entry.name for library, entries in imports.items() for entry in entries
                              if entry.name.decode() not in exports[library]])

    def test_the_code_is_the_machines(self):
        """Each instruction is one that the processor has. On MIPS a function goes on behind a jump, and not with one."""
        code = tool(self.processor, "objdump", "-dz", self.program)
        allowed = dict(row.split("\n", 1) for row in HERE.with_name("instructions.txt").read_text().split("\n== ")[1:])
        names = set(re.findall(r"^ +\w+:\t\w+ +\t(\S+)", code, re.M))
        self.assertEqual([], [name for name in names if not re.fullmatch(allowed[self.processor], name, re.X)])
        if self.processor == "mips":
            self.assertNotRegex(code, rf"{JUMP}.*\n(\n|.*{JUMP}|$)")
        copy = build / self.processor / "text.bin"
        tool(self.processor, "objcopy", "-O", "binary", "-j", ".text", self.program, copy)
        disassembled = copy.read_bytes()
        self.assertEqual(disassembled, self.exe.sections[0].get_data(length=len(disassembled)), "and it is what runs")

    def test_resources_are_the_desktops(self):
        here, there = resources(self.exe), resources(pefile.PE(desktop))
        own = ICONS | VERSION_AND_MANIFEST
        self.assertEqual({key[0] for key in here} & own, ICONS)
        self.assertEqual({key[0] for key in there} & own, own)
        self.assertEqual({key: data for key, data in here.items() if key[0] not in own},
                         {key: data for key, data in there.items() if key[0] not in own})

    def test_every_bar_button_is_enabled_and_as_wide_as_its_contents(self):
        """The device's own bar reads words that a desktop's does without."""
        bars = [struct.unpack(f"<{len(data) // 2}H", data) for (kind, _, _), data in resources(self.exe).items()
                if kind == RT_RCDATA]
        buttons = [bar[at:at + 7] for bar in bars for at in range(2, len(bar), 7)]
        self.assertEqual([(4, 0x18 if words[0] == 0xFFFE else 0x10, 0) for words in buttons],
                         [(words[2], words[3], words[5]) for words in buttons])
        self.assertEqual([3, 3, 2], [bar[1] for bar in bars])

    def test_every_dialog_fits_the_screen(self):
        self.assertEqual([], [number for number, dialog in self.dialogs.items() if dialog.corner != [0, 0]])
        self.assertEqual([], [number for number, dialog in self.dialogs.items() if dialog.pixels > HEIGHT - 2 * BAR or
                              dialog.width * FONT_WIDTH / 4 + 2 * FRAME > WIDTH])

    def test_what_is_typed_into_stands_above_the_input_panel(self):
        lowest = {number: dialog.lowest() for number, dialog in self.dialogs.items() if number not in NOT_SHOWN}
        self.assertEqual({102, 124, 125, 130, 133}, {number for number, place in lowest.items() if place})
        self.assertEqual({}, {number: place for number, place in lowest.items() if place > HEIGHT - BAR - PANEL})


class OnArm(Executable, unittest.TestCase):
    processor = "arm"


class OnMips(Executable, unittest.TestCase):
    processor = "mips"


class Version(unittest.TestCase):
    def test_is_the_same_everywhere(self):
        """In the project, the About box, the desktop's version resource (as texts and as numbers) and the manifest."""
        project, = re.findall(r"^project\(Pelnor VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(), re.M)
        program = pefile.PE(desktop)
        found = [f"{high >> 16}.{high & 0xFFFF}" for high in (program.VS_FIXEDFILEINFO[0].FileVersionMS,
                                                              program.VS_FIXEDFILEINFO[0].ProductVersionMS)]
        for (kind, _, _), data in resources(program).items():
            if kind in {RT_DIALOG} | VERSION_AND_MANIFEST:
                found += re.findall(r"Version[\0 ]+([\d.]+)", data.decode("utf-16-le", "replace"))
                found += re.findall(r'"Pelnor" version="([\d.]+)\.0\.0"', data.decode("utf-8", "replace"))
        self.assertEqual([project] * 8, found)


class Step(unittest.TestCase):
    """From the linked program to the executable."""

    def test_programs(self):
        program, *rows = HERE.with_name("refused.txt").read_text().split("\n== ")
        for processor, row in itertools.product(PROCESSORS, rows):
            title, _, more = row.partition("\n")
            sentence, options, said = title.split(" | ")
            with self.subTest(sentence, processor=processor), tempfile.TemporaryDirectory() as folder:
                pathlib.Path(folder, "program.s").write_text(f"{program}\n{more}\n")
                tool(processor, "as", *{"-EB"} & {options}, "program.s", "-o", "program.o", cwd=folder)
                tool(processor, "ld", "-T", ROOT / "platform/device/layout.ld", "--gc-sections", *options.split(),
                     "program.o", "-o", "program", cwd=folder)
                run = subprocess.run([ROOT / "tools/make_device_exe", processor, "program",
                                      build / processor / "platform/device/resources.o", "output.exe"],
                                     cwd=folder, capture_output=True, text=True)
                self.assertFalse(pathlib.Path(folder, "output.exe").exists())
                self.assertNotIn("Traceback", run.stderr)
                self.assertIn(said, run.stderr)


if __name__ == "__main__":
    build, desktop = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    unittest.main(argv=sys.argv[:1])
