"""What both homes are asked: every text and number that stands in the suites' tables, every input that the fuzz targets
keep, and made-up ones."""
import ast
import itertools
import pathlib
import random
import re
import struct

ROOT = pathlib.Path(__file__).resolve().parents[2]
# In the order of kKinds in answers.cpp.
KINDS = ("lines encoded_words iso2022jp code_page header_block head_fields group_reply plan pipeline keyword_filter "
         "article_view scrolling string_set store").split()
FOLDERS = "text store filters nntp views".split()  # the suites of what takes bytes apart
TEXTS = "encoded_words iso2022jp code_page group_reply".split()  # kinds whose input is a text and nothing else
# First, last, limit: none, one, a limit within and at the end, more than may be on the way, the largest numbers.
RANGES = [(8, 7, 5), (7, 8, 0), (7, 7, 1), (7, 8, 9), (7, 8, 2), (7, 11, 2), (1, 40, 3), (5, 40, 13), (1, 40, 99),
          (1, 1000, 50), (4294967290, 4294967295, 99), (4294967295, 4294967295, 1), (0, 4294967295, 4)]
REPLIES = [b"211   5 6", b"42\r\n", b"12x", b"12\n", b"1\t2", b"  5", b"4294967295 x", b"4294967297",
           b"211 3 10 12 fj.test\r\n", b"211 3\r\n", b"211 many 10 12", b"211 3 10 12", b"381 more", b"502 no"]
# Bytes that stand for no character of code page 932, or that begin one which stands there twice.
DOUBTFUL = {0x80, 0x87, 0xA0, 0xED, 0xEE, *range(0xFA, 0x100)}

LITERAL = re.compile(r'(L?)((?:"(?:[^"\\\n]|\\.)*"\s*)+)')
PIECE = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
NUMBERS = re.compile(r"(?:\b\d+u?\b(?:,\s*)?){2,}")


def unescape(piece):
    """A C literal's characters, as far as the suites use escapes."""
    piece = re.sub(r"\\x([0-9A-Fa-f]{1,4})", lambda match: f"\\u{int(match[1], 16):04x}", piece)
    piece = re.sub(r"\\0(?![0-7x])", r"\\u0000", piece)
    return ast.literal_eval(f'"{piece}"')


def sources(folder):
    """The suites of a folder, without comments and includes."""
    for suite in sorted((ROOT / "tests" / folder).glob("*_test.cpp")):
        yield "\n".join(line for line in suite.read_text().splitlines() if not re.match(r"\s*(//|#)", line))


def literals():
    """Every text in the suites, once: narrow ones as bytes, wide ones as str."""
    texts = {}
    for source in (source for folder in FOLDERS for source in sources(folder)):
        for wide, pieces in LITERAL.findall(source):
            text = "".join(unescape(piece) for piece in PIECE.findall(pieces))
            texts[text if wide else text.encode("latin-1")] = True
    return texts


def numbers(folder):
    """Every run of numbers that stand side by side in a folder's suites."""
    for run in (run for source in sources(folder) for run in NUMBERS.findall(source)):
        yield [int(number) for number in re.findall(r"\d+", run)]


def words(*values):
    return struct.pack(f"<{len(values)}I", *(value & 0xFFFFFFFF for value in values))


def article(width, rows, whole, text):
    return struct.pack("<HBB", width, rows, whole) + text.encode("utf-16-le", "surrogatepass")


def of_text(text):
    """A text is a case of every kind that takes one."""
    yield from ((kind, text) for kind in TEXTS)
    yield from (("lines", bytes([most]) + text) for most in (3, 8, 200))
    yield from (("head_fields", bytes([most]) + text) for most in (0, 2, 3, 15))
    lines = b"".join(name + text + b"\n" for name in (b"Subject: ", b" ", b"From: ", b"Date: "))
    yield from (("header_block", end + lines) for end in (b"\0", b"\1"))
    yield "header_block", b"\0" + text
    yield "string_set", b"".join(change + text + b"\n" for change in (b"+", b"?", b"+x", b"-"))
    yield from (("keyword_filter", b"\n".join(lines)) for lines in
                ((text, b"+ " + text[1:3]), (text[1:4], b"- " + text, b"+ sun"), (text, text)))
    yield "article_view", article(37, 2, True, text.decode("cp932", "replace"))


def log_of(texts):
    """A group's log with an article of each, and everything done with it."""
    article_of = b"Subject: %b\r\nFrom: %b\r\n\r\n%b\r\n================\r\n"
    log = b"".join(article_of % (text, text, text) for text in texts)
    return "store", struct.pack("<BHB", 0x33, 0, 6) + b"+ fj\r\n" + log


def of_wide(text):
    for width, rows in itertools.product((1, 6, 19, 24, 25, 30, 37, 60, 240), (1, 3)):
        yield "article_view", article(width, rows, rows == 3, text)


def of_suites():
    for text in literals():
        yield from of_wide(text) if isinstance(text, str) else of_text(text)
    narrow = [text for text in literals() if isinstance(text, bytes)]
    yield from (log_of(narrow[at:at + 8]) for at in range(0, len(narrow), 8))
    for run in numbers("views"):
        page, top, total, cursor, place = (run + [10, 0, 45, 3, 7])[:5]
        yield "scrolling", words(page or 1, top, total, cursor % (page or 1), place)
        yield "scrolling", words(10, page, top, total % 10, cursor)


def of_ranges():
    yield from (("group_reply", reply) for reply in REPLIES)
    for of_range in RANGES:
        yield from (("plan", words(*of_range) + answers) for answers in (b"hbhbhbhb", b"HHhbHhBhb", b"hBhBhb"))
        for full, replies in itertools.product(
                (b"\0", b"\1"), (b"\x80" * 90, b"\x80\x10\x80\xFF" * 30, b"\xFF\x80\xF8\x80" * 30)):
            yield "pipeline", words(*of_range) + full + replies


def of_fuzzing():
    """The fuzz targets' inputs have the same form, but for two kinds."""
    for path in sorted(path for folder in ("corpus", "regressions") for path in (ROOT / "fuzz" / folder).glob("*/*")):
        kind, data = path.parent.name, path.read_bytes()
        if kind == "article_view":
            yield from of_wide(data.decode("utf-16-be", "replace"))
        elif kind == "pipeline":
            yield kind, words(1, 1 + data[1] % 64, data[3]) + bytes([data[0] & 4]) + data[20:]
        else:
            yield "store" if kind == "group_files" else kind, data


class Chance:
    """Made-up inputs, the same in each run. Most bytes come from what the program looks for."""

    PARTS = [
        b"=?iso-2022-jp?B?", b"=?ISO-2022-JP?B?", b"?=", b"GyRCJEEbKEI=", b"YQ==", b"\x1b$B", b"\x1b(B", b"\x1b(I",
        b"\x1b$@", b"$!", b"0!", b"\x88\x9f", b"\x83\x5c", b"\xb1", b"\xfc", b"\xe0", b"\x80", b"\xff", b"\r\n", b"\n",
        b"\r", b".", b"..\r\n", b"Subject: ", b"From: ", b"Date: ", b"X-Local-Seq: 12", b"Newsgroup: ", b" ", b"\t",
        b"<a@b>", b"(", b")", b"\"", b">", b"5 Mar 1998", b"31 Dec", b"211 ", b"4294967295 ", b"7 ", b"0", b"fj.test",
        b"+ ", b"- ", b"+", b"-", b"?", b"\0", b"a", b"Zz", b"================\r\n", b"\f",
    ]
    WIDE = ("a Word\t>\uff1e\u65e5\u672c\u3042\u3081\u4e9f\u00e0\u30fc\u0081\u009f\u00fc\u00a0\r\n\f0123"
            "From: Subject: \r\n\r\n")

    def __init__(self):
        self.random = random.Random(20001)

    def text(self, most=24):
        return b"".join(self.random.choice(self.PARTS) if self.random.random() < 0.8 else self.random.randbytes(1)
                        for _ in range(self.random.randrange(most)))

    def wide(self):
        text = "".join(self.random.choice(self.WIDE) for _ in range(self.random.randrange(120)))
        return article(self.random.choice((1, 6, 7, 12, 13, 25, 60, 240)), self.random.randrange(1, 5),
                       self.random.randrange(2), "From: a\r\nTo: b\r\n\r\n" * self.random.randrange(2) + text)

    def range(self):
        last = self.random.choice((1, 40, 1000, 0xFFFFFFFF))
        return words(last - self.random.randrange(-1, 40), last, self.random.choice((0, 1, 3, 7, 99)))

    def case(self, kind):
        choice = self.random
        if kind == "scrolling":
            page, total = choice.randrange(1, 20), choice.randrange(120)
            return words(page, choice.randrange(total + 1), total, choice.randrange(page), choice.randrange(140))
        if kind == "article_view":
            return self.wide()
        if kind == "plan":
            return self.range() + bytes(choice.choices(b"hbHB", k=choice.randrange(40)))
        if kind == "pipeline":
            likely = choice.choice((0x80, 0x80, choice.randrange(256)))
            return self.range() + bytes([choice.randrange(2)]) + bytes(
                likely if choice.random() < 0.8 else choice.randrange(256) for _ in range(choice.randrange(90)))
        if kind == "store":
            filter_lines = self.text(6)[:200]
            return struct.pack("<BHB", choice.randrange(64), 0, len(filter_lines)) + filter_lines + self.text(60)
        if kind in TEXTS:
            return self.text()
        return choice.randbytes(1) + self.text()


def is_asked(case):
    """What a system makes of bytes that are no character of its code page is its own affair."""
    kind, data = case
    text = data.split(b"\0")[0]
    if kind != "code_page":
        return True
    try:
        return not set(text) & DOUBTFUL and text.decode("cp932").encode("cp932") == text
    except UnicodeError:
        return False


def all_cases(count):
    """(kind, input) of each: those by hand, then `count` made-up ones."""
    chance = Chance()
    made_up = ((kind, chance.case(kind)) for kind in itertools.cycle(KINDS))
    return (list(dict.fromkeys(filter(is_asked, itertools.chain(of_suites(), of_ranges(), of_fuzzing())))),
            list(itertools.islice(filter(is_asked, made_up), count)))


def packed(cases):
    return b"".join(struct.pack("<IB", len(data), KINDS.index(kind)) + data for kind, data in cases)


def unpacked(answers):
    found, place = [], 0
    while place < len(answers):
        length, = struct.unpack_from("<I", answers, place)
        found.append(answers[place + 4:place + 4 + length])
        place += 4 + length
    return found
