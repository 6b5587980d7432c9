"""From an empty data folder to chosen groups, their articles and their keywords, all through the windows."""

import functools
import operator

import corpus
import scenario
from inn import wait_until
from oracle import Group
from program import WM_COMMAND

MISC, TEST, ALT = "fj.comp.misc", "fj.test", "alt.test"
SUBSCRIBE, KEYWORDS = 40007, 40014
CHOICE, FETCHING, EDITOR = "ｸﾞﾙｰﾌﾟの購読/中止", "購読可能ｸﾞﾙｰﾌﾟの取得中..", "ｷｰﾜｰﾄﾞ設定"
LIST, DOWNLOAD, CATEGORIES, COUNTER = 1015, 1016, 1017, 1012
KEYWORD, HIGH, LOW = 1039, 1040, 1042
VK_RETURN, VK_DOWN = 0x0D, 0x28
EM_SETSEL, BM_CLICK, WM_CHAR = 0xB1, 0xF5, 0x102
MOUSE = (0x201, 0x202, 0x203, 0x202)  # down, up, double click, up


class Choose(scenario.Scenario):
    groups = (MISC, TEST, ALT, "fjx.other")

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(MISC, 24) + corpus.articles(TEST, 5) + corpus.articles(ALT, 3))

    def empty_folder(self):
        folder = self.folder([])
        (folder.path / "group.dat").unlink()
        return folder

    def served(self):
        """The names that the server lists, in its order."""
        with self.server.reader() as client:
            client.command("LIST active")
            return [line.split(b" ")[0].decode("ascii") for line in client.lines()]

    def click(self, running, dialog, number):
        button = running.item(dialog.handle, number)
        self.assertEqual(button.enabled, "1")
        self.bench.order("post", button.handle, BM_CLICK, 0, 0)

    def shows(self, running, dialog):
        return [row[0] for row in self.bench.order("rows", running.item(dialog.handle, LIST).handle)]

    def await_rows(self, running, dialog, names):
        """In any order: how capitals and signs sort is the system's affair."""
        wait_until(lambda: sorted(self.shows(running, dialog)) == sorted(names), f"the rows {names}")

    def double_click(self, running, dialog, name):
        handle = running.item(dialog.handle, LIST).handle
        x, y = map(int, self.bench.order("place", handle, self.shows(running, dialog).index(name))[0])
        for message in MOUSE:
            self.bench.order("post", handle, message, 0, y << 16 | x)

    def fetch_list(self, running, dialog):
        """Presses the download button, and looks at the box while the server keeps it waiting."""
        self.relay.hold("LIST active")
        self.click(running, dialog, DOWNLOAD)
        self.relay.wait_held()
        box = running.wait_dialog(FETCHING)
        self.assertEqual(running.item(box.handle, COUNTER).text, "0 group(s).")
        self.bench.picture("group_list_download")
        self.relay.release()
        running.wait_gone(box)

    @staticmethod
    def chain(name):
        """Of the 91 chains in whose order group.dat is written, the one that a name's bytes put it in."""
        return functools.reduce(operator.xor, name.encode("ascii")) % 91

    def test_from_nothing_to_articles(self):
        folder, running = self.empty_folder(), self.start()
        self.assert_rows(running, [])
        running.command(SUBSCRIBE)
        dialog = running.wait_dialog(CHOICE)
        self.assertEqual(self.shows(running, dialog), [])
        self.bench.picture("subscribe_empty")
        self.fetch_list(running, dialog)
        names = self.served()
        categories = list(dict.fromkeys(name.split(".")[0] for name in names))
        self.await_rows(running, dialog, categories)
        self.assertEqual(self.relay.sent, ["LIST active"])
        self.assertEqual(folder.read("active.dat"), "".join(name + "\r\n" for name in names).encode("ascii"))
        self.assertEqual(folder.read("category.dat"), "".join(name + "\r\n" for name in categories).encode("ascii"))
        self.bench.picture("subscribe_categories")
        self.double_click(running, dialog, "fj")
        self.await_rows(running, dialog, [MISC, TEST, "fjx.other"])
        for name in (MISC, TEST):
            self.double_click(running, dialog, name)
        self.bench.picture("subscribe_groups")
        self.click(running, dialog, CATEGORIES)
        self.await_rows(running, dialog, categories)
        running.press(dialog, "OK")
        chosen = [Group(name) for name in sorted((MISC, TEST), key=self.chain)]
        self.assertEqual(folder.read("group.dat"), "".join(g.name + "\r\n" for g in chosen).encode("ascii"))
        self.assert_rows(running, chosen)
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.expect_run(chosen)
        self.assert_rows(running, chosen)
        for group in chosen:
            self.assert_files(folder, group)

    def test_a_cancelled_choice_changes_nothing(self):
        folder, running = self.folder([TEST]), self.start()
        for name in ("active.dat", "category.dat"):
            folder.write(name, b"fj.test\r\nalt.test\r\n")
        running.command(SUBSCRIBE)
        dialog = running.wait_dialog(CHOICE)
        self.double_click(running, dialog, "alt.test")
        self.await_rows(running, dialog, ["alt.test"])
        self.double_click(running, dialog, "alt.test")
        self.bench.order("post", dialog.handle, WM_COMMAND, 2, 0)
        running.wait_gone(dialog)
        self.assertEqual(folder.read("group.dat"), b"fj.test\r\n")
        self.assert_rows(running, [Group(TEST)])

    def test_bad_names_and_a_list_that_was_given_up_hinder_nothing(self):
        lines = [b"x" * 300, b"y" * 1100, TEST.encode("ascii"), b""]
        folder = self.folder([])
        folder.write("group.dat", b"\r\n".join(lines))
        running = self.start()
        self.assert_rows(running, [Group(TEST)])
        running.command(SUBSCRIBE)
        dialog = running.wait_dialog(CHOICE)
        self.relay.hold("LIST active")
        self.click(running, dialog, DOWNLOAD)
        self.relay.wait_held()
        box = running.wait_dialog(FETCHING)
        self.bench.order("post", box.handle, WM_COMMAND, 2, 0)
        running.wait_gone(box)
        running.press(dialog, "OK")
        self.assert_rows(running, [Group(TEST)])
        self.assertEqual(running.dialogs(), [])
        self.assertEqual(sorted(folder.read("group.dat").split(b"\r\n")), sorted(lines))

    def open_group(self, running):
        running.key(running.group_list(), VK_DOWN)
        running.key(running.group_list(), VK_RETURN)
        return running.wait(lambda: next((item for item in running.items(running.frame)
                                          if item.id == "106" and item.visible == "1"), None), "the subjects")

    def edit_keywords(self, running):
        running.command(KEYWORDS)
        dialog = running.wait_dialog(EDITOR)
        return dialog, running.item(dialog.handle, KEYWORD).text

    def test_a_subject_becomes_a_keyword(self):
        group = Group(MISC)
        self.expect_run([group])
        folder = self.folder([MISC])
        folder.write(MISC + ".log", group.log)
        folder.write(MISC + ".idx", group.index())
        running = self.start()
        subjects = self.open_group(running)
        for _ in range(2):
            running.key(subjects.handle, VK_DOWN)
        self.bench.picture("subjects_before_keywords")
        dialog, proposed = self.edit_keywords(running)
        self.assertEqual(proposed, "Re: 大文字の綴り")
        self.click(running, dialog, HIGH)
        field = next(item for item in running.items(dialog.handle) if item.kind == "Edit")
        self.bench.order("post", field.handle, EM_SETSEL, 0, -1)
        for char in "件名です":
            self.bench.order("post", field.handle, WM_CHAR, ord(char), 1)
        self.click(running, dialog, LOW)
        self.bench.picture("keywords")
        running.press(dialog, "OK")
        group.keywords = [(b"+", proposed.encode("cp932")), (b"-", "件名です".encode("cp932"))]
        wait_until(lambda: folder.read(MISC + ".flt") == group.keyword_file(), "the keyword file")
        for record in group.records:
            text = group.log[record.text_offset:record.text_offset + record.text_length]
            record.flags = record.flags & 1 | group.priority(text) << 1
        self.bench.picture("subjects_after_keywords")
        # What is on top now is of high priority.
        first = next(record for record in group.records if record.flags == 4)
        dialog, proposed = self.edit_keywords(running)
        self.assertEqual(proposed.encode("cp932"),
                         group.log[first.text_offset:first.text_offset + first.text_length])
        running.press(dialog, "CANCEL")
        self.assert_bytes(folder.read(MISC + ".idx")[88:], group.index()[88:], MISC + ".idx", 12, 92)


if __name__ == "__main__":
    scenario.main()
