"""Data folders on a file system that fills up, and on one that cannot be written to."""

import contextlib
import copy

import corpus
import disk
import program
import scenario
from oracle import Group
from program import CATCH_UP

GROUP = "fj.disk"
KILOBYTES, BALLAST = 256, 80 * 1024
DELETE_READ, TOGGLE_READ, SUBSCRIBE, VIEW_READ = 40004, 40006, 40007, 40013
TO_GROUPS, TO_SUBJECTS = 40077, 40082
LOCAL, SERVER = 1019, 1020
SUBJECTS, ARTICLE = "106", "104"
VK_RETURN, VK_DOWN = 0x0D, 0x28


class StartWithBox(program.Program):
    """What it has to tell comes before its main window shows."""

    def _frame(self):
        return next((dialog.handle for dialog in self.dialogs()), None)

    def wait_frame(self):
        self.frame = self.wait(super()._frame, "the main window")


class Disk(scenario.Scenario):
    groups = (GROUP,)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(GROUP, 500))

    @staticmethod
    def contents(folder):
        return {path.name: path.is_file() and path.read_bytes() for path in folder.path.iterdir()}

    def answer(self, running, caption, button="OK"):
        """Answers the box with this caption; returns its text."""
        box = running.wait_dialog(caption)
        running.press(box, button)
        return box.text

    def delete_read(self, running):
        running.command(DELETE_READ)
        self.answer(running, "Delete read articles", "はい")

    # Full.

    def small_folder(self):
        folder = self.folder([GROUP], 40)
        names = (folder.path / "group.dat").read_bytes()
        disk.mount_small(folder.path, KILOBYTES)
        self.addCleanup(disk.unmount, folder.path)
        folder.write("group.dat", names)
        folder.write("ballast", b"\1" * BALLAST)
        return folder

    def fill(self, running, folder):
        """Runs until one fails; returns what it said and the group as the runs before left it."""
        group = Group(GROUP)
        while True:
            after = copy.deepcopy(group)
            self.expect_run([after], 40)
            said = running.get_articles()
            if said != scenario.DONE:
                return said, group
            self.assert_files(folder, after)
            group = after

    def assert_kept(self, folder, group, why):
        """What was stored is there; behind it the log may have got a part of what came next."""
        index, log = folder.read(GROUP + ".idx"), folder.read(GROUP + ".log")
        self.assert_bytes(index[:len(group.index())], group.index(), "the index " + why, 100, 92)
        self.assert_bytes(log[:len(group.log)], group.log, "the log " + why)
        return log

    def test_a_full_disk_is_told_and_loses_nothing(self):
        folder, running = self.small_folder(), self.start()
        said, group = self.fill(running, folder)
        print(f"full after {len(group.records)} articles: {said}")
        self.assertIn(said, [(GROUP, "ログファイルへの出力に失敗しました(112)."),
                             (GROUP, "インデックスの書き込みに失敗しました(112).")])
        self.assertGreater(len(group.records), 40)
        self.assert_kept(folder, group, "on the full disk")
        self.assertEqual(running.get_articles()[1][-6:], "(112).")
        # Nor does deleting, which needs room itself, or the next start.
        kept = self.assert_kept(folder, group, "after a second run on the full disk")
        self.delete_read(running)
        self.assertEqual(self.answer(running, GROUP), "既読記事の削除に失敗しました(112)")
        self.assertEqual(running.close(), 0)
        running = self.start()
        self.assert_rows(running, [group])
        self.assertEqual(self.assert_kept(folder, group, "after the next start"), kept)
        self.assertEqual([path.name for path in folder.path.glob("*~")], [])
        self.go_on_with_room(running, folder, group, kept)

    def go_on_with_room(self, running, folder, group, log):
        (folder.path / "ballast").unlink()
        group.log = log
        self.expect_run([group], 40)
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.assert_rows(running, [group])
        self.assert_files(folder, group, "after room was made")

    def test_reading_all_and_deleting_makes_room(self):
        """Marking needs no room; deleting needs that of what stays, here nothing but a header."""
        folder, running = self.small_folder(), self.start()
        _, group = self.fill(running, folder)
        running.command(CATCH_UP)
        dialog = running.wait_dialog("記事の読み飛ばし")
        running.check(dialog, LOCAL)
        running.press(dialog, "OK")
        folder.write("ballast", b"\1" * (BALLAST - 8 * 1024))
        self.delete_read(running)
        emptied = Group(GROUP, last_fetched=group.last_fetched, server_last=group.server_last, status=group.status)
        self.assert_rows(running, [emptied])
        self.assert_files(folder, emptied, "after all was deleted")
        self.expect_run([emptied], 40)
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.assert_files(folder, emptied, "after the next run")

    # Read-only.

    def stored_folder(self):
        """A folder with 40 articles, the second of them read, as a run and a reader leave it."""
        folder, group = self.folder([GROUP], 40), Group(GROUP)
        self.expect_run([group], 40)
        group.records[1].flags |= 1
        for name in ("active.dat", "category.dat"):
            folder.write(name, b"fj.disk\r\n")
        (folder.path / "draft").mkdir()
        folder.write(GROUP + ".log", group.log)
        folder.write(GROUP + ".idx", group.index())
        return folder, group

    @contextlib.contextmanager
    def protected(self, folder):
        """Nothing changes while nobody may write; afterwards all is as it was."""
        before = self.contents(folder)
        disk.mount_read_only(folder.path)
        try:
            yield
        finally:
            disk.unmount(folder.path)
        self.assertEqual(self.contents(folder), before)

    def assert_refused(self, text, expected):
        """Wine says access denied (5) where Windows says write-protected (19)."""
        self.assertIn(text, [f"{expected}({error})" for error in (5, 19)])

    def test_a_start_on_a_read_only_folder_is_told(self):
        folder, group = self.stored_folder()
        with self.protected(folder):
            running = StartWithBox(self.bench)
            self.addCleanup(running.end)
            self.assert_refused(self.answer(running, "PELNOR"), "データファイルの初期化に失敗しました")
            running.wait_frame()
            self.assert_rows(running, [])
            self.assertEqual(running.close(), 0)
        self.assert_rows(self.start(), [group])

    def test_a_folder_that_becomes_read_only_is_told_at_each_step(self):
        folder, group = self.stored_folder()
        running = self.start()
        running.key(running.group_list(), VK_RETURN)
        subjects = running.wait(lambda: self.visible(running, SUBJECTS), "the subjects")
        running.send(running.frame, program.WM_COMMAND, VIEW_READ)
        with self.protected(folder):
            self.read(running, subjects)
            running.command(TO_GROUPS)
            self.change(running)
        self.assert_rows(running, [group])
        self.expect_run([group], 40)
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.assert_files(folder, group, "after writing was allowed again")

    @staticmethod
    def visible(running, number):
        return next((item for item in running.items(running.frame) if item.id == number and item.visible == "1"), None)

    def read(self, running, subjects):
        """The first article cannot be marked as read; the second is, and can be read."""
        running.key(subjects.handle, VK_RETURN)
        self.assert_refused(self.answer(running, "PELNOR"), "インデックスの初期化に失敗しました")
        running.key(subjects.handle, VK_DOWN)
        running.key(subjects.handle, VK_RETURN)
        running.wait(lambda: self.visible(running, ARTICLE), "the article")
        running.command(TO_SUBJECTS)
        running.command(TOGGLE_READ)

    def change(self, running):
        caption, text = running.get_articles()
        self.assertEqual(caption, GROUP)
        self.assert_refused(text, "ファイルが開けませんでした")
        self.delete_read(running)
        self.assert_refused(self.answer(running, GROUP), "既読記事の削除に失敗しました")
        self.assert_refused(self.answer(running, "PELNOR"), "データファイルの初期化に失敗しました")
        running.command(CATCH_UP)
        dialog = running.wait_dialog("記事の読み飛ばし")
        running.check(dialog, LOCAL)
        running.check(dialog, SERVER)
        running.press(dialog, "OK")
        self.assert_refused(self.answer(running, "Catch up local"), "既読にできませんでした")
        self.assert_refused(self.answer(running, "Catch up server"), "設定できませんでした")
        running.command(SUBSCRIBE)
        running.press(running.wait_dialog("ｸﾞﾙｰﾌﾟの購読/中止"), "OK", wait=False)
        self.assert_refused(self.answer(running, "PELNOR"), "グループファイルが開けませんでした")
        self.assert_refused(self.answer(running, "PELNOR"), "データファイルの初期化に失敗しました")


if __name__ == "__main__":
    disk.own_mounts()
    scenario.main()
