"""What the device's coredll does for a program that has no window: the C library, memory, text and files."""
import fnmatch
import itertools
import re

import machine

MISSING, NO_PATH, REFUSED, NO_MORE, FILE_EXISTS, EXISTS, NO_HANDLE = 2, 3, 5, 18, 80, 183, 6
INVALID = 0xFFFFFFFF


def signed(value):
    return value - (value & 0x80000000) * 2


def compare(left, right):
    return (left > right) - (left < right)


class File:
    """One open handle: a path of the folder and a place in it."""

    def __init__(self, path):
        self.path, self.place = path, 0


class Runtime:
    """`files` holds each path's bytes, a folder's None."""

    def __init__(self):
        self.machine = None
        self.error = 0
        self.files = {}
        self.handles = {}
        self.next_handle = 0x100

    def handle(self, thing):
        self.next_handle += 4
        self.handles[self.next_handle] = thing
        return self.next_handle

    def fail(self, error, answer=0):
        self.error = error
        return answer

    # memory

    def malloc(self, size):
        return self.machine.heap.take(size)

    def free(self, place):
        if place:
            self.machine.heap.give_back(place)

    def realloc(self, place, size):
        grown = self.machine.heap.take(size)
        if place and grown:
            kept = min(size, self.machine.heap.blocks[place])
            self.machine.write(grown, self.machine.read(place, kept))
            self.machine.heap.give_back(place)
        return grown

    def HeapCreate(self, _options, _initial, most):
        return self.handle([most])

    def HeapAlloc(self, heap, _flags, size):
        blocks = self.handles[heap]
        if blocks[0] and sum(self.machine.heap.blocks[block] + 16 for block in blocks[1:]) + size > blocks[0]:
            return 0
        blocks.append(self.machine.heap.take(size))
        return blocks[-1]

    def HeapDestroy(self, heap):
        for place in self.handles.pop(heap)[1:]:
            self.machine.heap.give_back(place)
        return 1

    def memcpy(self, destination, source, size):
        if destination < source + size and source < destination + size and destination != source:
            raise machine.Fault("memcpy of what overlaps")
        self.machine.write(destination, self.machine.read(source, size))

    def memmove(self, destination, source, size):
        self.machine.write(destination, self.machine.read(source, size))

    def memset(self, destination, value, size):
        self.machine.write(destination, bytes([value & 0xFF]) * size)

    def memcmp(self, left, right, size):
        return compare(self.machine.read(left, size), self.machine.read(right, size))

    def memchr(self, place, value, size):
        found = self.machine.read(place, size).find(value & 0xFF)
        return place + found if found >= 0 else 0

    def qsort(self, place, count, size, order):
        """Sorts where the elements stand, so that `order` sees nothing else."""
        for end in range(1, count):
            for at in range(place + end * size, place, -size):
                if signed((yield order, at - size, at)) <= 0:
                    break
                left, right = self.machine.read(at - size, size), self.machine.read(at, size)
                self.machine.write(at - size, right + left)

    # texts

    def strlen(self, text):
        return len(self.machine.text(text))

    def strcmp(self, left, right):
        return compare(self.machine.text(left), self.machine.text(right))

    def strncmp(self, left, right, size):
        return compare(self.machine.text(left)[:size], self.machine.text(right)[:size])

    def strcpy(self, destination, source):
        self.machine.write(destination, self.machine.text(source) + b"\0")

    def strchr(self, text, char):
        found = (self.machine.text(text) + b"\0").find(char & 0xFF)
        return text + found if found >= 0 else 0

    def wcslen(self, text):
        return len(self.machine.wide(text))

    def wcscmp(self, left, right):
        return compare(self.machine.wide(left), self.machine.wide(right))

    def lstrcmpiW(self, left, right):
        return compare(self.machine.wide(left).casefold(), self.machine.wide(right).casefold())

    def wcschr(self, text, char):
        found = (self.machine.wide(text) + "\0").find(chr(char & 0xFFFF))
        return text + 2 * found if found >= 0 else 0

    def wcsstr(self, text, part):
        found = self.machine.wide(text).find(self.machine.wide(part))
        return text + 2 * found if found >= 0 else 0

    def wcscspn(self, text, stops):
        text, stops = self.machine.wide(text), self.machine.wide(stops)
        return next((place for place, char in enumerate(text) if char in stops), len(text))

    def wsprintfW(self, buffer, form):
        places = itertools.count(2)

        def made(match):
            argument = self.machine.argument(next(places))
            return self.machine.wide(argument) if match[0] == "%s" else match[0] % signed(argument)

        text = re.sub("%[0-9]*[dsu]", made, self.machine.wide(form))
        self.machine.put_wide(buffer, text)
        return len(text)

    def IsValidCodePage(self, page):
        return page == 932

    def MultiByteToWideChar(self, page, _flags, text, _length, buffer, room):
        made = self.machine.text(text).decode(f"cp{page}", "replace") + "\0"
        if len(made) > room:
            return self.fail(122)
        self.machine.put_wide(buffer, made[:-1])
        return len(made)

    def WideCharToMultiByte(self, page, _flags, text, _length, buffer, room):
        made = self.machine.wide(text).encode(f"cp{page}", "replace") + b"\0"
        if len(made) > room:
            return self.fail(122)
        self.machine.write(buffer, made)
        return len(made)

    # the thread

    def GetLastError(self):
        return self.error

    def SetLastError(self, error):
        self.error = error

    def add(self, place, change):
        value, = self.machine.words(place, 1)
        self.machine.put_words(place, value + change)
        return value + change

    def InterlockedIncrement(self, place):
        return self.add(place, 1)

    def InterlockedDecrement(self, place):
        return self.add(place, -1)

    # files

    def path(self, text):
        """Backslashes side by side count as one."""
        return re.sub(r"\\+", r"\\", self.machine.wide(text))

    def CreateFileW(self, path, access, _sharing, _security, how, _attributes, _template):
        path = self.path(path)
        create_new, open_existing, open_always, truncate_existing = 1, 3, 4, 5
        if path.rpartition("\\")[0] not in self.files:
            return self.fail(NO_PATH, INVALID)
        if self.files.get(path, b"") is None:
            return self.fail(REFUSED, INVALID)
        if how in (open_existing, truncate_existing) and path not in self.files:
            return self.fail(MISSING, INVALID)
        if how == create_new and path in self.files:
            return self.fail(FILE_EXISTS, INVALID)
        if how not in (create_new, open_existing, open_always, truncate_existing):
            raise machine.Fault(f"a file is opened with disposition {how}")
        self.error = EXISTS if path in self.files and how == open_always else 0
        if how == truncate_existing or path not in self.files:
            self.files[path] = b""
        return self.handle(File(path))

    def CloseHandle(self, handle):
        return self.handles.pop(handle, None) is not None or self.fail(NO_HANDLE)

    def GetFileSize(self, handle, high):
        if high:
            self.machine.put_words(high, 0)
        return len(self.files[self.handles[handle].path])

    def SetFilePointer(self, handle, place, _high, origin):
        if origin != 0:
            raise machine.Fault(f"a file's pointer is set from {origin}")
        self.handles[handle].place = place
        return place

    def ReadFile(self, handle, buffer, count, got, _overlapped):
        file = self.handles[handle]
        data = self.files[file.path][file.place:file.place + count]
        self.machine.write(buffer, data)
        self.machine.put_words(got, len(data))
        file.place += len(data)
        return 1

    def WriteFile(self, handle, buffer, count, done, _overlapped):
        file = self.handles[handle]
        old = self.files[file.path].ljust(file.place, b"\0")
        self.files[file.path] = old[:file.place] + self.machine.read(buffer, count) + old[file.place + count:]
        self.machine.put_words(done, count)
        file.place += count
        return 1

    def SetEndOfFile(self, handle):
        file = self.handles[handle]
        self.files[file.path] = self.files[file.path][:file.place].ljust(file.place, b"\0")
        return 1

    def GetFileAttributesW(self, path):
        path = self.path(path).rstrip("\\")
        if path not in self.files:
            return self.fail(MISSING, INVALID)
        return 0x10 if self.files[path] is None else 0x80

    def DeleteFileW(self, path):
        path = self.path(path)
        if self.files.get(path) is None:
            return self.fail(MISSING)
        del self.files[path]
        return 1

    def MoveFileW(self, old, new):
        old, new = self.path(old), self.path(new)
        if old not in self.files:
            return self.fail(MISSING)
        if new in self.files:
            return self.fail(EXISTS)
        self.files[new] = self.files.pop(old)
        return 1

    def CreateDirectoryW(self, path, _security):
        path = self.path(path).rstrip("\\")
        if path in self.files:
            return self.fail(EXISTS)
        self.files[path] = None
        return 1

    def FindFirstFileW(self, pattern, found):
        pattern = self.path(pattern)
        depth = pattern.count("\\")
        names = [path for path in self.files if path.count("\\") == depth and fnmatch.fnmatchcase(path, pattern)]
        if not names:
            return self.fail(MISSING, INVALID)
        search = self.handle(names)
        self.FindNextFileW(search, found)
        return search

    def FindNextFileW(self, search, found):
        names = self.handles[search]
        if not names:
            return self.fail(NO_MORE)
        path = names.pop(0)
        self.machine.put_words(found, 0x10 if self.files[path] is None else 0x80, *[0] * 7,
                               len(self.files[path] or b""), 0)
        self.machine.put_wide(found + 40, path.rpartition("\\")[2])
        return 1

    def FindClose(self, search):
        return self.handles.pop(search, None) is not None
