"""The step from the linked program to the device's executable refuses what it does not know.

    test_step.py DEVICE_BUILD
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LAYOUT = (ROOT / "platform/device/layout.ld").read_text()

# The smallest program: one call, through its stub's slot.
CODE = ".text\n.global DeviceEntry\nDeviceEntry: bl Sleep\n"
SLOT = '.section .slot.coredll.Sleep, "aw"\n.global slot.coredll.Sleep\nslot.coredll.Sleep: .word 0\n'
STUB = '.section .stub.Sleep, "ax"\n.global Sleep\nSleep: ldr ip, 1f\nldr pc, [ip]\n1: .word slot.coredll.Sleep\n'
REST = ".section .rodata\nwhere: .word 1\n.data\n.global variable\nvariable: .word where\n"
KEEP = ".text\n.word where, variable\n"
PROGRAM = CODE + SLOT + STUB + REST + KEEP


def second(slot):
    """A program that also uses `slot`, the address of Beep."""
    return PROGRAM + ".text\n.word slot.coredll.Beep\n" + slot


class Step(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.resources = (build / "platform/device/resources.o").read_bytes()

    def link(self, source, layout=LAYOUT, options=()):
        (self.folder / "program.s").write_text(source)
        (self.folder / "layout.ld").write_text(layout)
        subprocess.run(
            ["arm-none-eabi-gcc", "-march=armv4", "-marm", "-nostdlib", "-T", "layout.ld", "-Wl,--gc-sections",
             *options, "program.s", "-o", "program"], cwd=self.folder, check=True, capture_output=True)
        return (self.folder / "program").read_bytes()

    def complaint(self, program, resources):
        """What the step says; empty when it makes the executable."""
        (self.folder / "program").write_bytes(program)
        (self.folder / "resources.o").write_bytes(resources)
        run = subprocess.run([str(ROOT / "tools/make_device_exe"), "program", "resources.o", "output.exe"],
                             cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(run.returncode == 0, (self.folder / "output.exe").exists())
        self.assertNotIn("Traceback", run.stderr)
        return run.stderr

    def test_a_whole_program_is_made(self):
        self.assertEqual("", self.complaint(self.link(PROGRAM), self.resources))

    def test_programs(self):
        for sentence, source, options, said in (
            ("a name that nothing delivers", PROGRAM + ".text\nbl Missing\n",
             ["-Wl,--unresolved-symbols=ignore-all"], "Missing is undefined"),
            ("addresses still to be filled in", PROGRAM, ["-Wl,-q"], "relocations are left"),
            ("a part that has no place", PROGRAM + '.text\n.word other\n.section .other, "aw"\nother: .word 1\n', [],
             ".other is no part"),
            ("a library that the layout does not list",
             second('.section .slot.shell32.Beep, "aw"\n.global slot.coredll.Beep\nslot.coredll.Beep: .word 0\n'), [],
             ".slot.shell32.Beep is no part"),
            ("a slot with something in it",
             second('.section .slot.coredll.Beep, "aw"\n.global slot.coredll.Beep\nslot.coredll.Beep: .word 5\n'), [],
             "are not empty"),
            ("a slot apart from the others",
             second(".data\n.global slot.coredll.Beep\nslot.coredll.Beep: .word 0, 0\n"), [], "do not stand together"),
            ("a list of slots without an end",
             second(".data\n.global slot.other.Beep\nslot.other.Beep: .word 0, 7\n.text\n").replace(
                 ".word slot.coredll.Beep\n", ""), [], "of other are not empty or not ended"),
            ("an entry that is no code", PROGRAM, ["-Wl,-e,variable"], "the entry is not in the code"),
        ):
            with self.subTest(sentence):
                self.assertIn(said, self.complaint(self.link(source, options=options), self.resources))
                (self.folder / "output.exe").unlink(missing_ok=True)

    def test_places(self):
        for sentence, old, new, said in (
            ("code where the headers stand", ". = 0x11000", ". = 0x10400", ".text does not fit"),
            ("data that shares the page before it", ".data ALIGN(0x1000)", ".data ALIGN(0x100)",
             ".data does not fit"),
        ):
            with self.subTest(sentence):
                self.assertIn(old, LAYOUT)
                program = self.link(PROGRAM, LAYOUT.replace(old, new))
                self.assertIn(said, self.complaint(program, self.resources))

    def test_resources(self):
        program = self.link(PROGRAM)
        relocation = int.from_bytes(self.resources[20 + 24:20 + 28], "little")  # the section's first
        entry = int.from_bytes(self.resources[relocation:relocation + 4], "little")
        contents = int.from_bytes(self.resources[20 + 20:20 + 24], "little")
        for sentence, place, value, said in (
            ("another machine's relocation", relocation + 8, b"\x77\x00", "unknown relocation"),
            ("an entry beyond the resources", contents + entry, b"\xff\xff\xff\x00", "points outside"),
            ("another section in the file", 20, b".text\0\0\0", "the resources hold"),
            ("a file of another kind", 0, b"\x7fELF", "no object file of windres"),
        ):
            with self.subTest(sentence):
                damaged = self.resources[:place] + value + self.resources[place + len(value):]
                self.assertIn(said, self.complaint(program, damaged))
        with self.subTest("a program for another machine"):
            self.assertIn("no 32-bit ARM", self.complaint(self.resources, self.resources))


if __name__ == "__main__":
    build = pathlib.Path(sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
