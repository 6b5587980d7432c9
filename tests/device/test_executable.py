"""The device's executable, read back with a reader that is not ours.

    test_executable.py DEVICE_BUILD DESKTOP_EXECUTABLE
"""
import pathlib
import re
import subprocess
import sys
import unittest

import pefile

import templates

ROOT = pathlib.Path(__file__).resolve().parents[2]
MOST = 200 * 1024  # bytes that the device's user is to find room for

# The screen in pixels. At its bottom stands the bar with the input panel's button, above it the panel while it is
# open.
WIDTH, HEIGHT, BAR, PANEL = 240, 320, 26, 80
# Of a window: its frame and title, and two rows of tabs with their frame in a sheet.
FRAME, TITLE, TABS = 6, 24, 46
FONT_WIDTH, FONT_HEIGHT = 6, 13  # what 4 dialog units across and 8 down become
NOT_SHOWN = (117, 144)  # pages that the sheet leaves out
EDITABLE_LIST = 2  # of a combo box's kinds

# All that an ARMv4 has and the compiler uses, without the condition and the letter s. Later machines' instructions
# (bx, blx, clz, ldrd, ...) are missing from it. udf is where the program gives up.
KNOWN = set(
    "adc add and asr b bic bl cmn cmp eor ldm ldmia ldmib ldmda ldmdb ldr ldrb ldrh ldrsb ldrsh lsl lsr mla mov mul mvn nop "
    "orr pop push ror rrx rsb rsc sbc smlal smull stm stmib stmia stmda stmdb str strb strh sub teq tst udf umlal "
    "umull .word".split()
)
CONDITION = "(?:eq|ne|cs|cc|mi|pl|vs|vc|hi|ls|ge|lt|gt|le)?"
INSTRUCTION = re.compile(rf"(?P<name>{'|'.join(map(re.escape, sorted(KNOWN, key=len, reverse=True)))})s?{CONDITION}")


def tool(name, *arguments):
    return subprocess.run([f"arm-none-eabi-{name}", *arguments], capture_output=True, text=True, check=True).stdout


def foreign_instructions(object_file):
    """The disassembled lines that an ARMv4 cannot run."""
    lines = [line.split("\t") for line in tool("objdump", "-d", object_file).splitlines()]
    code = [line for line in lines if len(line) >= 3]
    assert code, "nothing was disassembled"
    return ["\t".join(line) for line in code if not INSTRUCTION.fullmatch(line[2].strip())]


def resources(executable):
    """{(type, name, language): bytes}"""
    return {
        (kind.id, name.id, language.id): executable.get_data(
            language.data.struct.OffsetToData, language.data.struct.Size)
        for kind in executable.DIRECTORY_ENTRY_RESOURCE.entries
        for name in kind.directory.entries
        for language in name.directory.entries
    }


def foreign_imports(imports):
    """The names of those that the device is not known to export."""
    lists = (ROOT / "platform/device/api").glob("*.txt")
    exports = {f"{path.stem}.dll": set(path.read_text().split()) for path in lists}
    return [name for library, name in imports if name not in exports[library]]


class Executable(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.file = build / "pelnor-arm.exe"
        cls.program = str(build / "platform/device/pelnor_device")
        cls.exe = pefile.PE(str(cls.file))

    def imports(self):
        """The library and name of each."""
        return [(library.dll.decode(), entry.name.decode())
                for library in self.exe.DIRECTORY_ENTRY_IMPORT for entry in library.imports]

    def test_headers(self):
        file_header, optional = self.exe.FILE_HEADER, self.exe.OPTIONAL_HEADER
        for sentence, expected, found in (
            ("the system refuses another machine's code", 0x1C0, file_header.Machine),
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
        self.assertLessEqual(self.file.stat().st_size, MOST)

    def test_every_import_is_exported_by_its_library(self):
        self.assertEqual({"coredll.dll", "commctrl.dll", "aygshell.dll", "winsock.dll"},
                         {library for library, _ in self.imports()})
        self.assertEqual([], foreign_imports(self.imports()))

    def test_a_later_systems_call_is_refused(self):
        source = build / "later_call.s"
        for name, refused in ("InterlockedIncrement", False), ("InterlockedExchangeAdd", True):
            self.assertEqual([name] if refused else [], foreign_imports([("coredll.dll", name)]))
            source.write_text(f".text\n.global DeviceEntry\nDeviceEntry: bl {name}\n.section .rodata\n.word 1\n")
            link = subprocess.run(
                ["arm-none-eabi-gcc", "-march=armv4", "-nostdlib", "-T", str(ROOT / "platform/device/layout.ld"),
                 "-Wl,--gc-sections", str(source), str(build / "platform/device/stubs.s"), "-o",
                 str(build / "later_call")], capture_output=True, text=True)
            self.assertEqual(refused, f"undefined reference to `{name}'" in link.stderr, link.stderr)
            self.assertEqual(refused, link.returncode != 0, link.stderr)

    def test_the_code_is_the_machines(self):
        self.assertEqual([], foreign_instructions(self.program))
        copy = build / "text.bin"
        tool("objcopy", "-O", "binary", "-j", ".text", self.program, str(copy))
        code = copy.read_bytes()
        self.assertEqual(code, self.exe.sections[0].get_data(length=len(code)), "what was disassembled is what runs")

    def test_a_later_machines_code_is_seen(self):
        later = ["bx lr", "blx r3", "clz r0, r1", "ldrd r0, [r2]", "smulbb r0, r1, r2", "pld [r1]"]
        source, object_file = build / "later.s", str(build / "later.o")
        source.write_text(".arch armv5te\n" + "\n".join(later + ["mov pc, lr", "bleq .", "movs r0, r0"]) + "\n")
        tool("as", str(source), "-o", object_file)
        self.assertEqual(len(later), len(foreign_instructions(object_file)))

    def test_resources_are_the_desktops(self):
        here, there = resources(self.exe), resources(pefile.PE(desktop))
        self.assertEqual(there.keys(), here.keys())
        for key, contents in there.items():
            self.assertEqual(contents, here[key], key)

    def dialogs(self):
        """(number, dialog, height of what stands above its contents, height of the whole) of each."""
        for number in templates.places(self.exe, templates.RT_DIALOG):
            dialog = templates.dialog(self.exe, number)
            above = TITLE + (TABS if dialog.style & templates.CHILD else 0)
            yield number, dialog, above, above + dialog.height * FONT_HEIGHT / 8 + FRAME

    def test_every_dialog_fits_the_screen(self):
        high = [number for number, _, _, height in self.dialogs() if height > HEIGHT - 2 * BAR]
        wide = [number for number, dialog, _, _ in self.dialogs() if dialog.width * FONT_WIDTH / 4 + 2 * FRAME > WIDTH]
        self.assertEqual(([], []), (high, wide))

    def test_what_is_typed_into_stands_above_the_input_panel(self):
        """Dialogs stand in the middle of the screen."""
        lowest = {}
        for number, dialog, above, height in self.dialogs():
            edits = [item.y + (12 if item.kind == "ComboBox" else item.height) for item in dialog.items
                     if item.kind == "Edit" or (item.kind == "ComboBox" and item.style & 3 == EDITABLE_LIST)]
            if edits and number not in NOT_SHOWN:
                lowest[number] = (HEIGHT - height) / 2 + above + max(edits) * FONT_HEIGHT / 8
        self.assertEqual({102, 124, 125, 130, 133}, set(lowest))
        self.assertEqual({}, {number: place for number, place in lowest.items() if place > HEIGHT - BAR - PANEL})


if __name__ == "__main__":
    build, desktop = pathlib.Path(sys.argv[1]), sys.argv[2]
    unittest.main(argv=sys.argv[:1])
