"""The device's executable in memory, on the processor that the device has.

The processor is the one that the executable's header names. What stops it there and the emulator would let pass stops
it here, a word read or written across its boundary. An import slot leads to a trap; behind it
stands the method of the system (an object of the caller's) that bears the import's name. Its parameters are the
registers and words on the stack that its caller filled. A method that calls the program's code is a generator: it
yields (address, arguments...) and gets what that answers.
"""
import collections
import inspect
import struct

import pefile
import unicorn
from unicorn import arm_const, mips_const

PAGE = 0x1000
STACK_SIZE = 0x10000  # what the executable's headers ask for
STACK = 0x20000000  # nothing on either side
HEAP, HEAP_SIZE = 0x30000000, 0x8000000
TRAPS, TRAPS_SIZE, TRAP = 0x40000000, PAGE, 8  # each of two instructions, for the delay slot
FENCE = 16  # bytes behind a block that nobody may touch

# What a section's header says of it, and what the processor lets it be used for.
RIGHTS = {0x20000000: unicorn.UC_PROT_EXEC, 0x40000000: unicorn.UC_PROT_READ, 0x80000000: unicorn.UC_PROT_WRITE}
# By the machine that the headers name: its emulation; the registers of the first four arguments, of the result and the
# rest; the instruction that returns to the caller; the bytes that a caller leaves free on the stack below the arguments.
Processor = collections.namedtuple("Processor", "arch mode model arguments result sp lr pc back free")
PROCESSORS = {
    0x1C0: Processor(
        unicorn.UC_ARCH_ARM, unicorn.UC_MODE_ARM, arm_const.UC_CPU_ARM_SA1110,
        range(arm_const.UC_ARM_REG_R0, arm_const.UC_ARM_REG_R4), arm_const.UC_ARM_REG_R0,
        arm_const.UC_ARM_REG_SP, arm_const.UC_ARM_REG_LR, arm_const.UC_ARM_REG_PC, 0xE1A0F00E, 0),
    0x166: Processor(
        unicorn.UC_ARCH_MIPS, unicorn.UC_MODE_MIPS32, mips_const.UC_CPU_MIPS32_4KC,
        range(mips_const.UC_MIPS_REG_A0, mips_const.UC_MIPS_REG_T0), mips_const.UC_MIPS_REG_V0,
        mips_const.UC_MIPS_REG_SP, mips_const.UC_MIPS_REG_RA, mips_const.UC_MIPS_REG_PC, 0x03E00008, 16),
}


class Fault(Exception):
    """The program did what the device would stop it for."""


def resources(executable):
    """{(kind, number): its place in the image and its size}"""
    return {(kind.id, item.id): (item.directory.entries[0].data.struct.OffsetToData,
                                 item.directory.entries[0].data.struct.Size)
            for kind in executable.DIRECTORY_ENTRY_RESOURCE.entries for item in kind.directory.entries}


class Machine:
    def __init__(self, executable, system):
        self.system = system
        system.machine = self
        self.exe = pefile.PE(executable)
        self.processor = PROCESSORS[self.exe.FILE_HEADER.Machine]
        self.cpu = unicorn.Uc(self.processor.arch, self.processor.mode)
        self.cpu.ctl_set_cpu_model(self.processor.model)
        self.heap = Heap(self)
        self.started = None  # a method that wants to call the program
        self.load()
        self.cpu.mem_map(STACK, STACK_SIZE)
        self.cpu.mem_map(HEAP, HEAP_SIZE)
        self.cpu.mem_map(TRAPS, TRAPS_SIZE, unicorn.UC_PROT_READ | unicorn.UC_PROT_EXEC)
        self.cpu.mem_write(TRAPS, struct.pack("<2I", self.processor.back, 0) * (TRAPS_SIZE // TRAP))
        self.cpu.reg_write(self.processor.sp, STACK + STACK_SIZE)
        self.cpu.hook_add(unicorn.UC_HOOK_CODE, self.on_trap, begin=TRAPS, end=TRAPS + TRAPS_SIZE - 1)
        self.cpu.hook_add(unicorn.UC_HOOK_MEM_READ | unicorn.UC_HOOK_MEM_WRITE, self.on_access)

    def load(self):
        """Each section at its address, with its rights, then the imports."""
        base = self.exe.OPTIONAL_HEADER.ImageBase
        self.cpu.mem_map(base, PAGE, unicorn.UC_PROT_READ)
        self.cpu.mem_write(base, self.exe.header[:PAGE])
        for section in self.exe.sections:
            size = -(-section.Misc_VirtualSize // PAGE) * PAGE
            rights = sum(right for bit, right in RIGHTS.items() if section.Characteristics & bit)
            self.cpu.mem_map(base + section.VirtualAddress, size, rights)
            self.cpu.mem_write(base + section.VirtualAddress, section.get_data()[:section.Misc_VirtualSize])
        self.imports = [entry for library in self.exe.DIRECTORY_ENTRY_IMPORT for entry in library.imports]
        for number, entry in enumerate(self.imports):
            self.put_words(entry.address, TRAPS + TRAP * (number + 1))
        self.methods = [self.method(entry.name.decode()) for entry in self.imports]

    def method(self, name):
        """An import's name, the method that stands for it and the number of that one's parameters."""
        function = getattr(self.system, name, None)
        return name, function, function and len(inspect.signature(function).parameters)

    def on_trap(self, cpu, address, _size, _data):
        if address % TRAP:  # the delay slot
            return
        number = (address - TRAPS) // TRAP - 1
        if number < 0:  # where `run` lets the program's functions return to
            cpu.emu_stop()
            return
        name, function, count = self.methods[number]
        if not function:
            raise Fault(f"the fake system has no {name}")
        answer = function(*(self.argument(place) for place in range(count)))
        if inspect.isgenerator(answer):
            self.started = answer
            cpu.emu_stop()
        elif answer is not None:
            cpu.reg_write(self.processor.result, answer & 0xFFFFFFFF)

    def on_access(self, cpu, _kind, address, size, _value, _data):
        if address % size:
            raise Fault(f"{size} bytes at {address:#x} reached from {cpu.reg_read(self.processor.pc):#x}")

    def argument(self, place):
        """The word that a trapped call has as its argument number `place`, counted from 0."""
        if place < 4:
            return self.cpu.reg_read(self.processor.arguments[place])
        return self.words(self.cpu.reg_read(self.processor.sp) + self.processor.free + 4 * (place - 4), 1)[0]

    def run(self, address, *arguments):
        """Calls a function of the program's and gives what it answers."""
        suspended = []  # methods of the system that wait for what they called
        self.enter(address, *arguments)
        while True:
            self.cpu.emu_start(self.cpu.reg_read(self.processor.pc), 0)
            result = self.cpu.reg_read(self.processor.result)
            if self.started:
                suspended.append((self.started, *map(self.cpu.reg_read, (self.processor.lr, self.processor.sp))))
                self.started, result = None, None
            elif not suspended:
                return result
            self.resume(suspended, result)

    def resume(self, suspended, result):
        method, back, stack = suspended[-1]
        self.cpu.reg_write(self.processor.sp, stack)
        try:
            self.enter(*method.send(result))
        except StopIteration as end:
            suspended.pop()
            self.cpu.reg_write(self.processor.result, (end.value or 0) & 0xFFFFFFFF)
            self.cpu.reg_write(self.processor.pc, back)

    def enter(self, address, *arguments):
        for register, argument in zip(self.processor.arguments, arguments):
            self.cpu.reg_write(register, argument & 0xFFFFFFFF)
        self.cpu.reg_write(self.processor.sp, self.cpu.reg_read(self.processor.sp) - self.processor.free)
        self.cpu.reg_write(self.processor.lr, TRAPS)
        self.cpu.reg_write(self.processor.pc, address)

    # Memory, as the system's functions see it.

    def read(self, address, size):
        return bytes(self.cpu.mem_read(address, size))

    def write(self, address, data):
        self.cpu.mem_write(address, data)

    def words(self, address, count):
        return struct.unpack(f"<{count}I", self.cpu.mem_read(address, 4 * count))

    def put_words(self, address, *values):
        self.cpu.mem_write(address, struct.pack(f"<{len(values)}I", *(value & 0xFFFFFFFF for value in values)))

    def up_to_nul(self, address, width):
        """The units of so many bytes before one that is 0."""
        found = b""
        while True:
            piece = self.read(address + len(found), 64 - (address + len(found)) % 64)
            for place in range(0, len(piece), width):
                if not any(piece[place:place + width]):
                    return found + piece[:place]
            found += piece

    def text(self, address):
        return self.up_to_nul(address, 1)

    def wide(self, address):
        """None for no address."""
        return self.up_to_nul(address, 2).decode("utf-16-le", "surrogatepass") if address else None

    def put_wide(self, address, text):
        self.cpu.mem_write(address, (text + "\0").encode("utf-16-le", "surrogatepass"))


class Heap:
    """Blocks that hold rubbish when they are taken and when they were given back, a fence behind each."""

    def __init__(self, machine):
        self.machine = machine
        self.blocks = {}  # address: size
        self.end = HEAP

    def take(self, size):
        place, self.end = self.end, self.end + -(-(size + FENCE) // 16) * 16
        self.machine.write(place, b"\xCD" * size + b"\xFD" * FENCE)
        self.blocks[place] = size
        return place

    def give_back(self, place):
        size = self.blocks.pop(place, None)
        if size is None:
            raise Fault(f"{place:#x} is released and is no block")
        if self.machine.read(place + size, FENCE).strip(b"\xFD"):
            raise Fault(f"something wrote past the {size} bytes at {place:#x}")
        self.machine.write(place, b"\xDD" * size)
