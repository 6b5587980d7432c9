"""What a group's files must hold after a run, worked out from what the server hands to any reader. Shares no line
with the program: the texts go through Python's codecs and the rules are written down here a second time."""

import dataclasses
import struct

NONE = 0xFFFFFFFF
KEPT = (b"From:", b"Subject:", b"Newsgroups:", b"Date:", b"Message-ID:", b"References:")
SEPARATOR = b"=" * 16 + b"\r\n"
MONTHS = b"Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec".split()
ALPHABET = b"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"


def shift_jis(pair):
    """One two-byte character: Python's own table, and the row-and-cell rule where that table has a hole."""
    try:
        return (b"\x1b$B" + pair).decode("iso2022_jp").encode("shift_jis")
    except UnicodeError:
        row, cell = pair[0] - 0x20, pair[1] - 0x20
        lead = (row - 1) // 2 + (0x81 if row < 63 else 0xC1)
        return bytes([lead, cell + (0x9E if row % 2 == 0 else 0x3F if cell < 64 else 0x40)])


ESCAPES = {b"$B": "double", b"$@": "double", b"K": "double", b"(B": "single", b"(J": "single", b"(H": "single",
           b"H": "single", b"(I": "kana"}


def from_jis(line):
    out, mode, at = bytearray(), "single", 0
    while at < len(line):
        escape = next((e for e in ESCAPES if line[at:at + 1] == b"\x1b" and line.startswith(e, at + 1)), None)
        if escape:
            mode, at = ESCAPES[escape], at + 1 + len(escape)
            continue
        byte, pair = line[at], line[at:at + 2]
        seven = mode == "double" and 0x21 <= byte <= 0x7E
        eight = mode == "double" and 0xA1 <= byte <= 0xFE
        if seven or eight:
            low, high = (0x21, 0x7E) if seven else (0xA1, 0xFE)
            whole = len(pair) == 2 and low <= pair[1] <= high
            out += shift_jis(bytes(b & 0x7F for b in pair)) if whole else pair
            at += 2
        else:
            out.append(byte | 0x80 if mode == "kana" else byte)
            at += 1
    return bytes(out)


def decode_words(line):
    out, at = bytearray(), 0
    while (start := line.find(b"=?", at)) >= 0:
        out += line[at:start]
        if line[start + 2:start + 16] not in (b"iso-2022-jp?B?", b"ISO-2022-JP?B?"):
            out, at = out + b"=?", start + 2
            continue
        at = start + 16
        while at < len(line) and line[at] != ord("?"):
            a, b, c, d = (64 if (v := ALPHABET.find(byte)) < 0 else v for byte in line[at:at + 4])
            out += bytes([(a * 4 + b // 16) & 0xFF] + [(b % 16 * 16 + c // 4) & 0xFF][:c != 64] +
                         [c % 4 * 64 + d][:c != 64 and d != 64])
            at += 4
        if line[at:at + 2] != b"?=":
            return bytes(out)
        at += 2
    return bytes(out + line[at:])


def split_lines(block):
    """A line ends at the first LF that has a CR somewhere before it in the line."""
    start = at = 0
    while at < len(block):
        at = block.index(b"\n", at) + 1
        if b"\r" in block[start:at]:
            yield block[start:at]
            start = at


def cut(text, limit):
    """At most `limit` bytes, up to the line end, and never half a two-byte character."""
    out, at = bytearray(), 0
    while at < len(text) and text[at] not in b"\r\n\0":
        size = 2 if lead(text[at]) else 1
        if len(out) + size > limit or at + size > len(text):
            break
        out, at = out + text[at:at + size], at + size
    return bytes(out)


def lead(byte):
    return 0x81 <= byte <= 0x9F or 0xE0 <= byte <= 0xFC


def date_digits(line):
    text = line[6:]
    first = next((i for i, byte in enumerate(text) if byte in b"0123456789\r\n"), len(text))
    end = first + 1
    if text[end:end + 1].isdigit():
        end += 1
    day, month = text[first:end], text[end + 1:end + 4]
    return b"%02d%02d" % (MONTHS.index(month) + 1, int(day)) if day.isdigit() and month in MONTHS else b"0000"


def sender_name(line):
    text, at, less, paren = line[6:].split(b"\r")[0], 0, None, None
    last = None
    while at < len(text):
        last = text[at]
        if last == ord("<"):
            less = at
        if last == ord("(") and paren is None:
            paren = at
        at += 2 if lead(last) else 1
    name = text
    if last == ord(">"):
        quoted = text.startswith(b'"')
        name = text[quoted:max(less - 1 - quoted, 0)]
    elif last == ord(")"):
        name = text[paren + 1:-1]
    return cut(name, 15) or b"(Unknown)"


@dataclasses.dataclass
class Record:
    flags: int
    number: int
    offset: int
    length: int
    subject: bytes
    date: bytes
    sender: bytes
    text_offset: int
    text_length: int

    def pack(self):
        return struct.pack("<4I48s4s16s2I", *dataclasses.astuple(self))


@dataclasses.dataclass
class Group:
    """A group's files as they should be. `keywords` are the lines of its keyword file, (mark, keyword)."""
    name: str
    keywords: list = dataclasses.field(default_factory=list)
    last_fetched: int = 0
    server_last: int = 0
    reserved: int = 0
    saved_position: int = 0
    status: str = ""
    log: bytes = b""
    records: list = dataclasses.field(default_factory=list)
    torn: int = 0  # the article whose first connection ended behind its head

    def keyword_file(self):
        return b"".join(mark + b" " + keyword + b"\r\n" for mark, keyword in self.keywords)

    def priority(self, subject):
        for mark, value in ((b"+", 2), (b"-", 1)):
            if any(k in subject or subject in k for m, k in self.keywords if m == mark):
                return value
        return 0

    # A run against the server, read through an inn.NntpClient.

    def run(self, client, limit):
        reply = client.command("GROUP " + self.name)
        if not reply.startswith("2"):
            self.status = "グループへ移動できませんでした : " + reply
            return
        first, last = (int(field) for field in reply.split()[2:4])
        start = last + 1 if self.last_fetched == NONE else max(self.last_fetched + 1, first)
        self.server_last = self.last_fetched = last
        if start > last:
            self.status = "新規記事はありませんでした"
            return
        fetched = 0
        for number in range(start, last + 1):
            if fetched == limit:
                self.last_fetched = number - 1
                self.status = f"制限数の{limit}件の記事を取得しました。サーバには未取得の記事が残っています。"
                return
            fetched += self._fetch(client, number)
        self.status = f"{fetched}件の記事を取得しました。"

    def _fetch(self, client, number):
        if not client.command(f"HEAD {number}").startswith("2"):
            return 0
        head = b"".join(client.lines())
        if not client.command(f"BODY {number}").startswith("2"):
            raise AssertionError(f"article {number} has a head and no body")
        body = b"".join(client.lines())
        self._store(number, self._kept(head), body)
        return 1

    @staticmethod
    def _kept(head):
        lines, keeping = [], False
        for line in split_lines(head):
            text = from_jis(decode_words(line[:-2]))
            if line[:1] in b" \t":
                if keeping:
                    lines[-1] += text.lstrip(b" \t")
                continue
            keeping = line.startswith(KEPT)
            if keeping:
                lines.append(text)
        return [line + b"\r\n" for line in lines]

    def _store(self, number, lines, body):
        lines = lines + [b"X-Local-Seq: %d\r\n" % number, b"\r\n"]
        if number == self.torn:
            self.log += b"".join(lines)
        for line in split_lines(body):
            lines.append(from_jis(line[1:] if line.startswith(b".") else line))
        self.append(number, lines + [SEPARATOR])

    def append(self, number, lines):
        start = len(self.log)
        head = lines[:lines.index(b"\r\n")]

        def last_line(name):
            return next((line for line in reversed(head) if line.startswith(name)), None)
        subject, date, sender = (last_line(name) for name in (b"Subject: ", b"Date:", b"From:"))
        record = Record(self.priority(subject[9:] if subject else b"") << 1, number, start,
                        sum(len(line) for line in lines), cut(subject[9:], 47) if subject else b"(none)",
                        date_digits(date) if date else b"0000",
                        sender_name(sender) if sender else b"(Unknown)", start, 0)
        if subject:
            at = max(i for i, line in enumerate(head) if line is subject)
            record.text_offset = start + sum(len(line) for line in lines[:at]) + 9
            record.text_length = len(subject) - 11
        self.records.append(record)
        self.log += b"".join(lines)

    # What a user does.

    def rate(self):
        """After a change of the keywords."""
        for record in self.records:
            text = self.log[record.text_offset:record.text_offset + record.text_length]
            record.flags = record.flags & 1 | self.priority(text) << 1

    def mark_all_read(self):
        for record in self.records:
            record.flags |= 1

    def delete_read(self):
        kept, log = [record for record in self.records if not record.flags & 1], b""
        for record in kept:
            text, moved = self.log[record.offset:record.offset + record.length], len(log) - record.offset
            record.offset, record.text_offset, log = record.offset + moved, record.text_offset + moved, log + text
        self.records, self.log, self.saved_position = kept, log, 0

    # The files.

    def unread(self):
        return sum(not record.flags & 1 for record in self.records)

    def header(self, version):
        status = cut(self.status.encode("cp932"), 63)
        count = {priority: sum(record.flags >> 1 == priority for record in self.records) for priority in (2, 1)}
        whole = struct.pack("<6I64s3I", version, self.last_fetched, self.server_last, self.reserved,
                            len(self.records), self.saved_position, status, self.unread(), count[2], count[1])
        return whole[:{2: 88, 3: 92, 4: 92, 5: 100}[version]]

    def index(self, version=5):
        """The index file in one of its five versions."""
        if version == 1:
            lines = (str(self.last_fetched), self.status, str(self.server_last), str(self.reserved))
            return "".join(line + "\r\n" for line in lines).encode("cp932")
        size = {2: 64, 3: 64, 4: 84, 5: 92}[version]
        return self.header(version) + b"".join(record.pack()[:size] for record in self.records)

    def row(self):
        """The group view's six columns."""
        current = "Catchup" if self.last_fetched == NONE else str(self.last_fetched)
        status = cut(self.status.encode("cp932"), 63).decode("cp932")
        return [self.name, str(self.unread()), str(len(self.records)), status, current, str(self.server_last)]
