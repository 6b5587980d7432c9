"""The articles that both homes fetch: those of the end-to-end tests, and made-up ones, the same in each run. Most
bytes of these come from what the program looks for."""
import pathlib
import random
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))
import corpus

PARTS = [
    b"=?iso-2022-jp?B?", b"=?ISO-2022-JP?B?", b"?=", b"GyRCJEEbKEI=", b"YQ==", b"\x1b$B", b"\x1b(B", b"\x1b(I",
    b"\x1b$@", b"$!", b"0!", b"\x88\x9f", b"\x83\x5c", b"\xb1", b"\xfc", b"\xe0", b"\x80", b"\xff", b"\n", b"\r", b".",
    b"Subject: ", b"From: ", b"Date: ", b"X-Local-Seq: 12", b"Newsgroup: ", b" ", b"\t", b"<a@b>", b"(", b")", b"\"",
    b">", b"5 Mar 1998", b"31 Dec", b"7 ", b"0", b"fj.test", b"+", b"-", b"\x93\xfa\x96\x7b", b"a", b"Zz",
    b"================\r\n", b"\f",
]


def corpus_articles(group, count):
    parts = (text.partition(b"\r\n\r\n") for text in corpus.articles(group, count))
    return [(head + b"\r\n", body) for head, _, body in parts]


def made_up(count):
    chance = random.Random(20001)

    def text(most):
        return b"".join(chance.choice(PARTS) if chance.random() < 0.8 else bytes([chance.randrange(1, 256)])
                        for _ in range(chance.randrange(most)))

    for _ in range(count):
        names = chance.sample((b"Subject: ", b"From: ", b"Date: ", b"References:", b"X-No: ", b"Subject:"), 5)
        head = b"".join(name + text(16) + b"\r\n " + text(4) + b"\r\n" for name in names)
        yield head, text(40) + b"\r\n"
