"""The first evening with the program: the sheet that comes by itself, a folder on a memory card, groups, articles."""

import operator
import os
import pathlib
import shutil
import tempfile
import types

import corpus
import program
import scenario
import test_choose
from inn import wait_until
from oracle import Group
from program import WM_COMMAND
from test_choose import ALT, CHOICE, SUBSCRIBE, TEST, VK_DOWN, VK_RETURN, WM_CHAR

SHEET, FOLDERS, PROGRAMS = "プロパティ", "Choose folder", "Choose EXE"
SERVER, PORT, FOLDER, BROWSE, TREE = 1000, 1001, 1002, 1016, 1063
DRAFTS, LEAVE_DRAFTS, CHOOSE_EXE, TO_GROUPS, TO_SUBJECTS = 40019, 40020, 40022, 40077, 40082
PSM_SETCURSEL, PSM_PRESSBUTTON, OK, CANCEL = 0x465, 0x471, 3, 5
PAGES = ("main", "account", "keys", "connection", "font", "colour")
VK_RIGHT = 0x27


class FirstStart(program.Program):
    """Its main window shows only after the sheet."""

    def _frame(self):
        sheets = (dialog.handle for dialog in self.dialogs() if dialog.caption == SHEET)
        return super()._frame() or next(sheets, None)

    def wait_frame(self):
        self.frame = self.wait(super()._frame, "the main window")


class FirstEvening(scenario.Scenario):
    groups = (TEST, ALT)
    click, shows, double_click, await_rows, fetch_list, open_group = operator.attrgetter(
        "click", "shows", "double_click", "await_rows", "fetch_list", "open_group")(test_choose.Choose)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(TEST, 12) + corpus.articles(ALT, 3))

    def setUp(self):
        super().setUp()
        self.bench.order("forget")
        self.insert_card()

    def insert_card(self):
        r"""Makes \ the root of a card with two folders: a drive of its own, from which the program is started."""
        card = pathlib.Path(tempfile.mkdtemp(prefix="pelnor-card-"))
        self.addCleanup(shutil.rmtree, card)
        for name in ("games", "news"):
            (card / name).mkdir()
        (card / "games" / "cards.exe").touch()
        drive = self.bench.prefix / "dosdevices" / "y:"
        drive.unlink(missing_ok=True)
        drive.symlink_to(card)
        self.addCleanup(drive.unlink)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(card)
        self.news = types.SimpleNamespace(path=card / "news", read=lambda name: (card / "news" / name).read_bytes())

    def first_start(self):
        started = FirstStart(self.bench)
        self.addCleanup(started.end)
        return started, started.wait_dialog(SHEET)

    def close_sheet(self, sheet, button):
        self.bench.order("post", sheet.handle, PSM_PRESSBUTTON, button, 0)

    def letter(self, tree, letter):
        """Goes to the next item that begins with it."""
        self.bench.order("send", tree, WM_CHAR, ord(letter), 1)

    def test_without_settings_there_is_no_program(self):
        for again in (False, True):
            running, sheet = self.first_start()
            for page, name in enumerate(() if again else PAGES):
                running.send(sheet.handle, PSM_SETCURSEL, page)
                if page == 0:
                    self.fill(running, sheet)
                self.bench.picture("page_" + name)
            self.close_sheet(sheet, CANCEL)
            self.assertEqual(running.wait_exit(), 0)

    def fill(self, running, sheet):
        running.set_text(sheet, SERVER, "127.0.0.1")
        running.set_text(sheet, PORT, str(self.relay.port))
        self.choose_folder(running, sheet)

    def choose_folder(self, running, sheet):
        self.click(running, sheet, BROWSE)
        chooser = running.wait_dialog(FOLDERS)
        tree = running.item(chooser.handle, TREE).handle
        running.send(tree, program.WM_KEYDOWN, VK_RIGHT)
        self.letter(tree, "n")
        self.bench.picture("chooser_folder")
        running.press(chooser, "OK")
        self.assertEqual(running.item(sheet.handle, FOLDER).text, "\\news\\")

    def test_from_the_sheet_to_the_first_article(self):
        running, sheet = self.first_start()
        self.fill(running, sheet)
        self.close_sheet(sheet, OK)
        running.wait_frame()
        self.assert_rows(running, [])
        self.subscribe(running)
        group = Group(TEST)
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.expect_run([group], 50)
        self.assert_rows(running, [group])
        self.assert_files(self.news, group)
        self.read_one(running, group)
        self.look_at_drafts(running)
        self.assertEqual(running.close(), 0)
        self.assert_rows(self.start(), [group])  # and no sheet this time

    def subscribe(self, running):
        running.command(SUBSCRIBE)
        dialog = running.wait_dialog(CHOICE)
        self.fetch_list(running, dialog)
        wait_until(lambda: "fj" in self.shows(running, dialog), "the categories")
        self.double_click(running, dialog, "fj")
        self.await_rows(running, dialog, [TEST])
        self.double_click(running, dialog, TEST)
        running.press(dialog, "OK")
        self.assertEqual(self.news.read("group.dat"), TEST.encode("ascii") + b"\r\n")

    def read_one(self, running, group):
        subjects = self.open_group(running)
        self.bench.picture("evening_subjects")
        running.key(subjects.handle, VK_DOWN)
        running.key(subjects.handle, VK_RETURN)
        running.wait(lambda: running.item(running.frame, 104).visible == "1", "the article")
        self.bench.picture("evening_article")
        running.command(TO_SUBJECTS)
        running.command(TO_GROUPS)
        group.records[1].flags |= 1
        self.assert_rows(running, [group])

    def look_at_drafts(self, running):
        for name, group, subject in (("out1", "fj.test", "送信を待つ記事"), ("note", "fj.comp.handheld", "書きかけ"),
                                     ("sent1", "fj.test", "昨日の記事")):
            text = f"Newsgroup: {group}\r\nSubject: {subject}\r\n\r\n"
            (self.news.path / "draft" / f"{name}.txt").write_bytes(text.encode("cp932"))
        running.command(DRAFTS)
        tree = running.wait(lambda: next((item.handle for item in running.items(running.frame) if
                                          item.kind == "SysTreeView32" and item.visible == "1"), None), "the drafts")
        for _ in range(2 * 3):
            running.send(tree, program.WM_KEYDOWN, VK_RIGHT)
            running.send(tree, program.WM_KEYDOWN, VK_DOWN)
        self.bench.picture("drafts")
        running.command(CHOOSE_EXE)
        chooser = running.wait_dialog(PROGRAMS)
        tree = running.item(chooser.handle, TREE).handle
        running.send(tree, program.WM_KEYDOWN, VK_RIGHT)
        for letter in "gc":
            self.letter(tree, letter)
            running.send(tree, program.WM_KEYDOWN, VK_RIGHT)
        self.letter(tree, "c")
        self.bench.picture("chooser_file")
        self.bench.order("post", chooser.handle, WM_COMMAND, running.item(chooser.handle, 1062).id, 0)
        box = running.wait_dialog("SELECTED")
        self.assertEqual(box.text, "\\games\\cards.exe")
        running.press(box, "OK")
        running.command(LEAVE_DRAFTS)


if __name__ == "__main__":
    scenario.main()
