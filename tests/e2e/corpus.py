"""The articles that the end-to-end tests feed, always the same ones, made from the tables of corpus.txt."""

import base64
import codecs
import pathlib
import re

# Texts that must be found in the stored log in code page 932, whatever took them there.
PLAIN = ["日本語の件名です", "こんにちは、山田です。", "全角英数ＡＢＣ１２３と罫線─│", "ｶﾀｶﾅ"]


def jis(text):
    return text.encode("iso2022_jp")


def word(text, opening="=?iso-2022-jp?B?"):
    return opening.encode("ascii") + base64.b64encode(jis(text)) + b"?="


def halfwidth(text):
    """Half-width katakana behind ESC ( I, with the way back to ASCII."""
    return b"\x1b(I" + bytes(byte & 0x7F for byte in text.encode("cp932")) + b"\x1b(B"


def spelled(row):
    """The bytes of a row: Python's escapes, and {CODING text} or {CODING 9*text}."""
    def coded(match):
        coding, times, text = (part.decode("utf-8") if part else "1" for part in match.groups())
        codings = {"jis": jis, "kana": halfwidth} | {name: lambda text, name=name: text.encode(name)
                                                     for name in ("ascii", "cp932")}
        return codings.get(coding, lambda text: word(text, coding))(text * int(times))
    row = codecs.escape_decode(row.encode("utf-8"))[0]
    return re.sub(rb"\{(\S+) (?:(\d+)\*)?(.*?)\}", coded, row, flags=re.DOTALL)


def _tables():
    tables = {}
    for line in pathlib.Path(__file__).with_suffix(".txt").read_text("utf-8").splitlines():
        if line.startswith("= "):
            rows = tables[line[2:]] = []
        elif not line.startswith("# "):
            rows.append(spelled(line))
    return tables


TABLES = _tables()


def article(group, number):
    """Article `number` of `group`, complete, its dots not stuffed. The tables differ in length, so that the forms
    meet in ever new company."""
    subject, sender, date, body, extra = (TABLES[name][number % len(TABLES[name])] for name in
                                          ("subjects", "froms", "dates", "bodies", "extras"))
    head = [b"Path: bench", sender, b"Newsgroups: " + group.encode("ascii"), subject, date,
            b"Message-ID: <%d.%s@bench.example>" % (number, group.encode("ascii"))]
    if number % 2:  # the order of the lines is the sender's own
        head[1:] = reversed(head[1:])
    return b"\r\n".join(head) + b"\r\n" + extra + b"\r\n" + body


def articles(group, count):
    return [article(group, number) for number in range(count)]
