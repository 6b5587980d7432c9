"""The step from the linked program to the device's executable refuses what it does not know.

    test_step.py DEVICE_BUILD
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LAYOUT = ROOT / "platform/device/layout.ld"

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

    def link(self, source, options):
        (self.folder / "program.s").write_text(source)
        subprocess.run(
            ["arm-none-eabi-gcc", "-march=armv4", "-marm", "-nostdlib", "-T", str(LAYOUT), "-Wl,--gc-sections",
             *options, "program.s", "-o", "program"], cwd=self.folder, check=True, capture_output=True)

    def complaint(self):
        """What the step says; empty when it makes the executable."""
        run = subprocess.run([str(ROOT / "tools/make_device_exe"), "program", build / "platform/device/resources.o",
                              "output.exe"], cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(run.returncode == 0, (self.folder / "output.exe").exists())
        self.assertNotIn("Traceback", run.stderr)
        return run.stderr

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
                self.link(source, options)
                self.assertIn(said, self.complaint())


if __name__ == "__main__":
    build = pathlib.Path(sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
