"""The articles that the end-to-end tests feed: always the same ones, in every form that readers met in practice
and that InterNetNews lets through. (It refuses an article without a subject, with a blank one, or with a repeated
Subject, From or Date; "subject:" and "Subject:" before a tab pass, and have no subject for this program.)"""

import base64

CRLF = b"\r\n"

# Texts that must be found in the stored log in code page 932, whatever took them there.
PLAIN = ["日本語の件名です", "こんにちは、山田です。", "全角英数ＡＢＣ１２３と罫線─│", "ｶﾀｶﾅ"]


def jis(text):
    return text.encode("iso2022_jp")


def word(text, opening=b"=?iso-2022-jp?B?"):
    return opening + base64.b64encode(jis(text)) + b"?="


def halfwidth(text):
    """Half-width katakana behind ESC ( I, with the way back to ASCII."""
    return b"\x1b(I" + bytes(byte & 0x7F for byte in text.encode("cp932")) + b"\x1b(B"


SUBJECTS = [
    b"Subject: plain words only",
    b"Subject: " + word("日本語の件名です"),
    b"Subject: Re: " + word("大文字の綴り", b"=?ISO-2022-JP?B?"),
    # Two words on two lines: the fold and its blank vanish, and neither half may lose a byte.
    b"Subject: " + word("二つの語に") + b"\r\n " + word("折り返した件名"),
    b"Subject: " + word("一行に") + b" " + word("二語"),
    # Spellings that stay as they are.
    b"Subject: " + word("混在", b"=?Iso-2022-jp?B?"),
    b"Subject: " + word("小文字のｂ".replace("ｂ", "b"), b"=?iso-2022-jp?b?"),
    b"Subject: =?iso-2022-jp?Q?=1B$B$3=1B(B?=",
    b"Subject: =?utf-8?B?44GT44KT44Gr44Gh44Gv?=",
    b"Subject: a =? b =?= and =?iso-2022-jp? alone",
    # Cut to 47 bytes behind and before a double byte.
    b"Subject: " + word("長い件名" * 9),
    b"Subject: a" + word("長い件名" * 9),
    b"Subject: " + b"s" * 900,
    # Without encoded words, as older readers posted.
    b"Subject: " + jis("生のままの件名"),
    # The words' closing mark was lost: what follows is dropped with them.
    b"Subject: before " + word("途中まで")[:-2] + b"?x lost",
    b"subject: a name in lower case is no subject",
    b"Subject:\ttab instead of the blank",
    b"Subject: \r\n\t  only the second line says something",
    b"Subject:   two blanks more",
    b"Subject: over\r\n three\r\n\t \tlines",
    b"Subject: \xe3\x81\x82 raw utf-8",
    b"Subject: [fj.comp:123] " + word("番号つき") + b" (was: x)",
    b"Subject: " + halfwidth("ｹﾝﾒｲ") + b" kana",
]

FROMS = [
    b"From: taro@example.jp",
    b"From: a.very.long.address@a.very.long.host.example.jp",
    b"From: Taro Yamada <taro@example.jp>",
    b'From: "Taro Yamada" <taro@example.jp>',
    b"From: taro@example.jp (Taro Yamada)",
    b"From: taro@example.jp (Taro (Yamada))",
    b"From: taro@example.jp ()",
    b"From: <taro@example.jp>",
    b"From: Taro<taro@example.jp>",
    b"From: " + word("山田太郎") + b" <taro@example.jp>",
    # Directly against the bracket the last byte goes, and half a character must not stay behind.
    b"From: " + word("山田") + b"<taro@example.jp>",
    b"From: taro@example.jp (" + word("山田太郎の長い名前") + b")",
    b"From: x" + word("山田太郎の長い名前") + b" <taro@example.jp>",
    b"From: " + jis("山田") + b" <taro@example.jp>",
    b"From: " + word("折り返し") + b"\r\n <taro@example.jp>",
    b'From: "a <b>" <taro@example.jp>',
    b"From: (first) taro@example.jp (second)",
    b"From: Taro <taro@example.jp> ",
    b"From: \x8e\x52\x93\x63 <taro@example.jp>",
    b"FROM: upper@example.jp",
]

DATES = [
    b"Date: Mon, 5 Mar 2001 10:00:00 +0900",
    b"Date: Mon, 05 Mar 2001 10:00:00 GMT",
    b"Date: 31 Dec 1999 23:59:59 +0900",
    b"Date: Mon,  5 Mar 2001 10:00:00 GMT",
    b"Date: Mon,5 Mar 2001 10:00:00 +0900",
    b"Date: Sat, 29 Feb 92 10:00:00 GMT",
    b"Date: Mon, 5 MAR 2001 10:00:00 GMT",
    b"Date: Mon, 5  Mar 2001 10:00:00 GMT",
    b"Date: Mon, 5 March 2001 10:00:00 +0900",
    b"Date: Mon, 5\tMar 2001 10:00:00 +0900",
    b"Date: Mon, 5(th)Mar 2001 10:00:00 +0900",
    b"Date: (3rd) Mon, 5 Mar 2001 10:00:00 +0900",
    b"Date:    Tue, 31 Dec 1991 10:00:00 +0900 (JST)",
    b"Date: Mon,\r\n\t5 Mar 2001 10:00:00 +0900",
    b"date: Mon, 5 Mar 2001 10:00:00 +0900",
    b"Date: Wed, 01 Aug 2001 00:00 +0900",
] + [b"Date: Thu, 1 " + month + b" 1998 00:00:00 GMT" for month in
     b"Jan Apr May Jun Jul Sep Oct Nov".split()]

BODIES = [
    jis("こんにちは、山田です。") + b"\r\n\r\nplain words\r\n",
    b"",
    b"\r\n",
    b".\r\n..\r\n...three dots\r\n.x\r\n\r\n.\r\n",
    jis("全角英数ＡＢＣ１２３と罫線─│") + b"\r\n" + jis("第二水準: 彁龠") + b" mixed " + jis("戻る") + b"\r\n",
    halfwidth("ｶﾀｶﾅ") + b"\r\n\x1b$B%" + b'"' + b"\x1b(I1\x1b(B\r\n",
    b"\x1b$@0!\x1b(J 1978\r\n\x1b$B0!\x1b(H old\r\n\x1bK0!\x1bH older\r\n",
    # No way back before the line ends: the next line starts afresh.
    b"\x1b$B0!0\"\r\nplain again $B\r\n",
    # In a two-byte run: EUC pairs, a lone blank, a byte without its partner, and the end amid a pair.
    b"\x1b$B\xb0\xa1 0!0\x1b(B\r\n\x1b$B\xb0x0\r\n",
    b"\x1b[1mnot ours\x1b[0m\r\nESC at the end \x1b\r\n",
    b"one\x0c\r\n\x0ctwo pages\r\n",
    b"=" * 16 + b" sixteen, and more\r\n" + b"=" * 15 + b"\r\n" + b"=" * 17 + b"\r\n",
    b"x" * 998 + b"\r\n" + b"y" * 1021 + b"\r\n." + b"z" * 900 + b"\r\n",
    jis("漢" * 490) + b"\r\n",
    b"> quoted\r\n>> twice\r\n| and a bar\r\n\ttab\r\n",
    b"8 bit \xa4\xa2\xff\x80\xfd\r\n",
    b"a lone\nline feed and a lone\rcarriage return\r\n",
    b"From: not a header\r\nSubject: nor this\r\nX-Local-Seq: 99\r\n",
    b"".join(b"line %d\r\n" % number for number in range(400)),
]

EXTRAS = [
    b"",
    b"References: <1@example.jp>\r\n",
    b"References: " + b"\r\n ".join(b"<ref%d@example.jp>" % number for number in range(30)) + CRLF,
    b"References: <1@example.jp>\r\nReferences: <2@example.jp>\r\n",
    b"X-Folded: not kept\r\n Subject: nor its second line\r\n",
    b"X-Local-Seq: 4711\r\nNewsgroup: fj.test\r\nX-Subject: no\r\n",
    b"MIME-Version: 1.0\r\nContent-Type: text/plain; charset=iso-2022-jp\r\n",
]


def article(group, number):
    """Article `number` of `group`, complete, its dots not stuffed. The tables differ in length, so that the forms
    meet in ever new company."""
    subject, sender = SUBJECTS[number % len(SUBJECTS)], FROMS[number % len(FROMS)]
    date, body = DATES[number % len(DATES)], BODIES[number % len(BODIES)]
    extra = EXTRAS[number % len(EXTRAS)]
    head = [b"Path: bench", sender, b"Newsgroups: " + group.encode("ascii"), subject, date,
            b"Message-ID: <%d.%s@bench.example>" % (number, group.encode("ascii"))]
    if number % 2:  # the order of the lines is the sender's own
        head[1:] = reversed(head[1:])
    return CRLF.join(head) + CRLF + extra + CRLF + body


def articles(group, count):
    return [article(group, number) for number in range(count)]
