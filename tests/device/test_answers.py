"""The code in the device's executable is run and answers as the desktop's does.

    test_answers.py DEVICE_BUILD DESKTOP_ANSWERS
"""
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest

import unicorn

import cases
import machine
import runtime

ROOT = pathlib.Path(__file__).resolve().parents[2]
MADE_UP = 10000
CALLER, CALLER_SIZE = 0x400000, 0x100000  # where CMake links what calls the program's functions
CASES, ANSWERS, ROOM = 0x1000000, 0x4000000, 0x2000000


class Device:
    """The executable in memory, with the code of answers.cpp beside it."""

    def __init__(self):
        system = runtime.Runtime()
        system.files["store"] = None
        self.machine = machine.Machine(build / "pelnor-arm.exe", system)
        caller = build / "platform/device/device_answers"
        image = build / "device_answers.bin"
        subprocess.run(["arm-none-eabi-objcopy", "-O", "binary", str(caller), str(image)], check=True)
        cpu = self.machine.cpu
        cpu.mem_map(CALLER, CALLER_SIZE)
        cpu.mem_write(CALLER, image.read_bytes())
        for place in (CASES, ANSWERS):
            cpu.mem_map(place, ROOM, unicorn.UC_PROT_READ | unicorn.UC_PROT_WRITE)
        self.entry = machine.symbols(caller)["AnswerCases"]

    def answers(self, asked):
        packed = cases.packed(asked)
        self.machine.write(CASES, packed)
        length = self.machine.run(self.entry, CASES, len(packed), ANSWERS, ROOM)
        return cases.unpacked(self.machine.read(ANSWERS, length))


def desktop_answers(asked):
    with tempfile.TemporaryDirectory() as folder:
        (pathlib.Path(folder) / "cases").write_bytes(cases.packed(asked))
        subprocess.run([ROOT / "tools/wine_run", desktop, "cases", "answers"], cwd=folder, check=True)
        return cases.unpacked((pathlib.Path(folder) / "answers").read_bytes())


def differences(asked, here, there):
    """What the two say differently, to be read by a person."""
    assert len(asked) == len(here) == len(there), (len(asked), len(here), len(there))
    return [f"{kind} of {data!r}\n  device  {one.hex(' ', -4)}\n  desktop {other.hex(' ', -4)}"
            for (kind, data), one, other in zip(asked, here, there) if one != other]


# Code in the place of a function's.
ANSWER_1 = (0xE3A00001, 0xE1A0F00E)  # mov r0, #1; mov pc, lr
READ_ACROSS = (0xE3C00003, 0xE5900001, 0xE1A0F00E)  # bic r0, r0, #3; ldr r0, [r0, #1]; mov pc, lr
WRITE_CODE = (0xE50F0008, 0xE1A0F00E)  # str r0, [pc, #-8]; mov pc, lr
LATER_MACHINES = (0xE12FFF1E,)  # bx lr
FINAL_DOT, BUCKET = "_Z10IsFinalDotPKc", "_Z8BucketOfPKc"


class Answers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.by_hand, cls.made_up = cases.all_cases(MADE_UP)
        cls.desktop = desktop_answers(cls.by_hand + cls.made_up)

    def check(self, asked, expected):
        device = Device()
        self.assertEqual([], differences(asked, device.answers(asked), expected)[:3])
        self.assertEqual({}, device.machine.heap.blocks, "what was taken and not given back")

    def test_those_by_hand(self):
        self.check(self.by_hand, self.desktop[:len(self.by_hand)])

    def test_those_made_up(self):
        self.check(self.made_up, self.desktop[len(self.by_hand):])

    def test_damage_is_seen(self):
        asked = [(kind, data) for kind, data in self.by_hand if kind in ("lines", "string_set")][:200]
        places = machine.symbols(build / "platform/device/pelnor_device")
        expected = Device().answers(asked)
        for sentence, name, code, fault in (
            ("a function that answers otherwise", FINAL_DOT, ANSWER_1, None),
            ("a word that is read across its boundary", BUCKET, READ_ACROSS, machine.Fault),
            ("code that is written over", BUCKET, WRITE_CODE, unicorn.UcError),
            ("an instruction of a later machine", FINAL_DOT, LATER_MACHINES, unicorn.UcError),
        ):
            with self.subTest(sentence):
                device = Device()
                device.machine.put_words(places[name], *code)
                if fault:
                    self.assertRaises(fault, device.answers, asked)
                else:
                    self.assertNotEqual([], differences(asked, device.answers(asked), expected))


if __name__ == "__main__":
    build, desktop = pathlib.Path(sys.argv[1]), sys.argv[2]
    unittest.main(argv=sys.argv[:1])
