"""Evenings with the program, from the first on, against a real news server. At each stage the oracle says what the
files must hold, byte for byte, and what the rows must show.

PELNOR_KILLS says how often a download is killed (5), PELNOR_SEED at which moments (1); tools/kill_loop sets both."""

import copy
import ctypes
import os
import random
import shutil
import subprocess
import time

import corpus
import program
import relay
import scenario
from inn import wait_until
from oracle import NONE, Group
from program import (CATCH_UP, DELETE_READ, EXIT, GET_ARTICLES, PBM_GETPOS, PBM_GETRANGE, PROPERTIES, SUBSCRIBE,
                     VK_DOWN, VK_ESCAPE, VK_HOME, VK_RETURN, WM_CLOSE, WM_COMMAND)
from scenario import DONE

MISC, TEST, GAPS, MANY, TORN, DISK, CLOSED = (
    "fj.comp.misc", "fj.test", "fj.gaps", "fj.many", "fj.torn", "fj.disk", "fj.closed")
KILLS, SEED = int(os.environ.get("PELNOR_KILLS", 5)), int(os.environ.get("PELNOR_SEED", 1))
KILLED, EACH = [f"fj.killed.{number}" for number in range(8)], min(250, 20 * KILLS)
TOGGLE_READ, VIEW_READ, KEYWORDS, TO_GROUPS, TO_SUBJECTS = 40006, 40013, 40014, 40077, 40082
SUBJECTS, ARTICLE = 106, 104  # panes
HIGH, LOCAL, SERVER, USER, PASSWORD = 1040, 1019, 1020, 1026, 1025
GROUP_NAME, BAR = 1003, 1004  # the progress dialog's controls
CHOICE, EDITOR, SKIPPING, PROMPT, SHEET, PROGRESS = (
    "ｸﾞﾙｰﾌﾟの購読/中止", "ｷｰﾜｰﾄﾞ設定", "記事の読み飛ばし", "ﾊﾟｽﾜｰﾄﾞの入力", "プロパティ", "Articles")
START_RUN, HANG_UP, RUN_FINISHED, WAKE = 0x400, 0x401, 0x8001, 0x8002
LIMITED = "制限数の5件の記事を取得しました。サーバには未取得の記事が残っています。"
NEW_MOUNTS = 0x20000


def mount(*words):
    subprocess.run(["mount", *map(str, words)], check=True)


def own_mounts():
    """From now on what this process and its children mount is theirs alone, and goes with them. False where that is
    not allowed."""
    return ctypes.CDLL(None).unshare(NEW_MOUNTS) == 0 and not subprocess.call(["mount", "--make-rprivate", "/"])


class OtherDesktop(program.Bench):
    """A second desktop under the same Wine: a program there sees no window of the first, but opens the same files."""

    def __init__(self, bench):
        vars(self).update(vars(bench))
        self.program, self.drive_path = self.own_copy(bench.program), self.own_copy(bench.drive_path)
        self.registry(r"HKCU\Software\Wine\Explorer\Desktops", "/v", "other", "/d", "480x400")
        self.start_drive()

    def own_copy(self, path):
        """Wine chooses the desktop by the program's name."""
        copied = shutil.copy(path, path.with_name(f"other_{path.name}"))
        self.registry(rf"HKCU\Software\Wine\AppDefaults\{copied.name}\Explorer", "/v", "Desktop", "/d", "other")
        return copied


class Evenings(scenario.Scenario):
    groups = (MISC, TEST, GAPS, MANY, TORN, DISK, CLOSED, *KILLED)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        for group, count in zip(cls.groups, (70, 50, 12, 12, 20, 500, 5, *[EACH] * len(KILLED))):
            cls.server.feed(corpus.articles(group, count))
        for number in (1, 5, 6, 12):
            cls.server.remove(GAPS, number)

    def catch_up(self, running, boxes, button="OK"):
        running.command(CATCH_UP)
        dialog = running.wait_dialog(SKIPPING)
        for box in boxes:
            running.check(dialog, box)
        running.press(dialog, button)

    def delete_read(self, running):
        running.command(DELETE_READ)
        self.assertEqual(running.answer("Delete read articles", "はい"), "既読記事を削除しますか?")

    # The first evening.

    def test_articles_are_fetched_rated_read_and_deleted(self):
        misc, test = groups = Group(MISC), Group(TEST)
        folder, running = self.folder([MISC, TEST]), self.start()
        self.assertEqual(running.get_articles(), DONE)
        self.expect_run(groups)
        self.assert_state(running, folder, groups)
        running.key(running.group_list(), VK_HOME, VK_RETURN)
        subjects = running.wait_pane(SUBJECTS)
        running.key(subjects, VK_DOWN, VK_DOWN)
        self.make_keyword(running, folder, misc, misc.records[2])
        running.key(subjects, VK_DOWN, VK_RETURN)
        running.wait_pane(ARTICLE)
        top = [record for record in misc.records if record.flags == 4]  # those of high priority are on top now
        top[1].flags |= 1
        misc.saved_position = 1
        running.command(TO_SUBJECTS)
        running.command(TO_GROUPS)
        self.assert_state(running, folder, groups, "after a keyword and reading")
        self.delete_read(running)
        misc.delete_read()
        self.assert_state(running, folder, groups, "after the deletion")
        self.assertEqual(running.close(), 0)
        self.assert_state(self.start(), folder, groups, "after a restart")

    def make_keyword(self, running, folder, group, record):
        """The selected subject becomes a keyword of high priority."""
        running.command(KEYWORDS)
        dialog = running.wait_dialog(EDITOR)
        running.click(dialog, HIGH)
        running.press(dialog, "OK")
        group.keywords = [(b"+", group.log[record.text_offset:record.text_offset + record.text_length])]
        self.assertEqual(folder.read(group.name + ".flt"), group.keyword_file())
        group.rate()

    # A long run, and what becomes of its files at later starts.

    def test_a_run_and_its_files_in_every_form(self):
        misc, test = groups = Group(MISC), Group(TEST)
        misc.keywords = [(b"-", b"Re:"), (b"+", "日本語".encode("cp932")), (b"-", b"plain"), (b"+", b"fj.comp")]
        self.expect_run(groups)
        for text in corpus.PLAIN:  # the oracle itself, against Python's table
            self.assertIn(text.encode("cp932"), misc.log)
        folder = self.folder([MISC, TEST])
        folder.write(MISC + ".flt", misc.keyword_file())
        running = self.start()
        self.hold_run(running, "BODY 30")
        self.assert_progress(running, running.wait_dialog(PROGRESS), MISC, 29, 70)
        self.relay.release()
        self.assertEqual(running.finish_run(), DONE)
        self.assert_state(running, folder, groups)
        fetches = [f"{command} {n}" for n in range(1, 71) for command in ("HEAD", "BODY")]
        self.assertEqual(self.relay.sent,
                         ["GROUP " + MISC] + fetches + ["GROUP " + TEST] + fetches[:100] + ["QUIT"])
        self.assertEqual(running.close(), 0)
        old = [self.older(folder, test, version) for version in range(1, 5)]
        folder.write("group.dat", "".join(group.name + "\r\n" for group in (*groups, *old)).encode("ascii"))
        (folder.path / (MISC + ".idx")).unlink()
        misc.last_fetched, misc.server_last, misc.status = 0, 0, ""  # what only the index knew
        self.assert_state(self.start(), folder, [misc, test, *old], "after the index was lost")
        self.assertEqual([path.name for path in folder.path.glob("*~")], [])

    def assert_progress(self, running, dialog, name, done, count):
        """It stands over its disabled frame and shows how many articles of the group are stored."""
        bar = running.item(dialog.handle, BAR).handle
        wait_until(lambda: running.send(bar, PBM_GETPOS) == done, f"{done} steps")
        self.assertEqual(running.send(bar, PBM_GETRANGE), count - 1)
        self.assertEqual(running.item(dialog.handle, GROUP_NAME).text, name)
        self.assertEqual([shown.caption for shown in running.dialogs()], [PROGRESS])
        self.assertFalse(running.is_enabled(running.frame))

    def older(self, folder, group, version):
        """A group with the same articles and an index of an older version."""
        group = copy.deepcopy(group)
        group.name, group.last_fetched, group.server_last, group.reserved = f"fj.old.version{version}", 50, 60, 7
        if version > 1:  # the first kept no records, so no marks
            group.saved_position = 3
            for record in group.records[::3]:
                record.flags |= 1
        folder.write(group.name + ".log", group.log)
        folder.write(group.name + ".idx", group.index(version))
        return group

    # Limits, gaps, groups that are not there, and what is skipped.

    def test_runs_that_leave_something_out(self):
        gaps, many, absent, after = groups = Group(GAPS), Group(MANY), Group("fj.absent"), Group("fj.absent.too")
        folder = self.folder([group.name for group in groups], limit=5)
        for group in (absent, after):
            folder.write(group.name + ".log", b"")
        running = self.start()

        def evening(status, *numbers):
            before, sent = len(gaps.records), len(self.relay.sent)
            self.expect_run(groups, 5)
            self.assertEqual((many.status, [record.number for record in gaps.records[before:]]), (status, list(numbers)))
            running.key(running.group_list(), ord("I"))
            self.assertEqual(running.finish_run(), DONE)
            self.assert_state(running, folder, groups, f"after {numbers}")
            return self.relay.sent[sent:]

        evening(LIMITED, 2, 3, 4, 7, 8)
        evening(LIMITED, 9, 10, 11)
        evening("2件の記事を取得しました。")
        asked = evening("新規記事はありませんでした")
        self.assertEqual(asked, [f"GROUP {group.name}" for group in groups] + ["QUIT"])
        # Neither box, or Cancel with both: nothing happens.
        running.key(running.group_list(), VK_HOME, VK_DOWN)
        self.catch_up(running, [])
        self.catch_up(running, [LOCAL, SERVER], "Cancel")
        self.assert_state(running, folder, groups, "after a catch-up that was none")
        # Both: everything is read, and what the server has now is never fetched.
        self.server.feed([corpus.article(MANY, 12)])
        self.catch_up(running, [LOCAL, SERVER])
        many.mark_all_read()
        many.last_fetched = NONE
        self.assert_state(running, folder, groups, "after catching up")
        evening("新規記事はありませんでした")
        self.assertEqual(many.last_fetched, 13)
        self.server.feed([corpus.article(MANY, number) for number in (13, 14)])
        evening("2件の記事を取得しました。")

    # Runs that are disturbed: whatever stands in the files then, the next run makes them whole.

    def hold_run(self, running, command="BODY 8", way=None, **how):
        way = way or self.relay
        way.hold(command, **how)
        running.command(GET_ARTICLES)
        way.wait_held()

    @staticmethod
    def escape(running, progress):
        """To the control that the system gives the focus to, though none can use it."""
        running.key(running.item(progress.handle, BAR).handle, VK_ESCAPE)
        running.wait_gone(progress)

    def assert_torn(self, folder, before):
        """The run stopped amid article 8: those before it are in the log, none counts yet."""
        group = Group(TORN)
        self.expect_run([group])
        wait_until(lambda: len(folder.read(TORN + ".log")) >= len(before) + group.records[7].offset, "seven articles")
        log = folder.read(TORN + ".log")
        self.assert_bytes(log, (before + group.log)[:len(log)], "the log that the broken run left")
        self.assertEqual(folder.read(TORN + ".idx")[:100], Group(TORN).index())
        return log

    def test_interrupted_runs(self):
        """Each end of the program leaves a broken run behind, and the next start knows of none of its articles."""
        folder, log = self.folder([TORN]), b""
        for end in (self.close_amid_drops, self.close_hidden, program.Program.end):
            running = self.start()
            self.assertEqual(running.wait_rows([Group(TORN).row()]), [Group(TORN).row()])
            self.hold_run(running)
            self.assert_torn(folder, log)
            end(running)
            self.relay.release()
            log = self.assert_torn(folder, log)
        # A connection that breaks is made good by a new one, and a run whose progress was hidden ends as any does.
        running = self.start()
        self.relay.connections = 0
        self.hold_run(running, ahead=True)
        self.escape(running, running.wait_dialog(PROGRESS))
        self.relay.hang_up()
        self.assertEqual(running.finish_run(), DONE)
        self.assertEqual(self.relay.connections, 2)
        group = Group(TORN, log=log, torn=8)
        self.expect_run([group])
        self.assert_state(running, folder, [group], "after the run that nobody disturbed")

    def close_amid_drops(self, running):
        """While the server lets a byte drop now and then, which no time-out ends."""
        for _ in range(3):
            self.relay.drip(b"2")
        self.bench.order("post", running.frame, WM_CLOSE, 0, 0)
        self.assertEqual(running.wait_exit(), 0)

    def close_hidden(self, running):
        """What must wait for the run shows its progress again, hidden or not."""
        progress = running.wait_dialog(PROGRESS)
        for command in (PROPERTIES, GET_ARTICLES, DELETE_READ, SUBSCRIBE, CATCH_UP):
            self.escape(running, progress)
            self.assertTrue(running.is_enabled(running.frame))
            running.command(command)
            progress = running.wait_dialog(PROGRESS)
            self.assert_progress(running, progress, TORN, 7, 20)
        self.escape(running, progress)
        running.command(EXIT)
        self.assertEqual(running.wait_exit(), 0)

    def test_messages_from_elsewhere_do_no_harm(self):
        """What any program can send to the frame, jobs that it never made among it."""
        folder, running, group = self.folder([TORN]), self.start(), Group(TORN)

        def send(*more):
            for message, value in ((RUN_FINISHED, 0), (RUN_FINISHED, 0x10000), (HANG_UP, 0), (WAKE, 0), *more):
                running.send(running.frame, message, value, value)
        send()
        running.command(PROPERTIES)
        sheet = running.wait_dialog(SHEET)
        send((START_RUN, 0))
        running.press(sheet, "キャンセル")
        self.assertEqual(self.relay.connections, 0)
        self.hold_run(running)
        send((START_RUN, 0))
        self.assert_progress(running, running.wait_dialog(PROGRESS), TORN, 7, 20)
        self.relay.release()
        box = running.wait_box()
        send((START_RUN, 0))
        running.command(GET_ARTICLES)
        self.assertEqual([dialog.caption for dialog in running.dialogs()], [box.caption])
        self.assertEqual(running.finish_run(), DONE)
        self.assertEqual(self.relay.connections, 1)
        self.expect_run([group])
        self.assert_state(running, folder, [group])

    # Two programs on one data folder.

    def test_two_programs_at_once(self):
        """A second start brings the first forward and ends. Where the first is out of its sight, on another desktop,
        files that one has open are refused to the other, which is told."""
        folder, group, other = self.folder([TORN], limit=7), Group(TORN), OtherDesktop(self.bench)
        self.addCleanup(other.stop_drive)
        first, way = self.start(), self.enterContext(relay.Relay(self.server.port))
        folder.set(Port=way.port)  # its own way to the server, so that one can be held while the other goes on
        second = self.start(other)
        # The second asks for the group and gets its answer when the first has stored articles: it looks again.
        self.hold_run(second, "GROUP " + TORN, way)
        self.assertEqual(first.get_articles(), DONE)
        self.expect_run([group], 7)
        self.assert_state(first, folder, [group])
        way.release()
        self.assertEqual(second.finish_run(), DONE)
        self.expect_run([group], 7)
        self.assert_state(second, folder, [group], "after two runs at once")
        self.hold_run(first, "BODY 18")
        for _ in range(3):
            self.assertEqual(self.bench.run_wine(self.bench.program).wait(20), 0)
        frames = [line[0] for line in self.bench.order("windows") if line[1] == program.FRAME]
        self.assertEqual(frames, [first.frame])
        self.assertEqual(second.get_articles(), (TORN, "インデックスの初期化に失敗しました(32)"))
        self.delete_read(second)
        self.assertEqual(second.answer(TORN), "既読記事の削除に失敗しました(32)")
        self.assertEqual(second.answer("PELNOR"), "データファイルの初期化に失敗しました(32)")
        self.relay.release()
        self.assertEqual(first.finish_run(), DONE)
        self.expect_run([group], 7)
        self.assert_state(first, folder, [group])
        self.assertEqual(second.get_articles(), DONE)
        self.expect_run([group], 7)
        self.assert_state(second, folder, [group], "after the other's run")

    # A server that closes a group to those who do not say who they are.

    def test_logins(self):
        folder, login = self.folder([CLOSED], Password="hi mitsu"), ["authinfo user taro", "authinfo pass hi mitsu"]

        def started(**settings):
            self.relay.sent.clear()
            folder.set(**settings)
            return self.start()
        running = started()  # a password without a user is not sent
        self.assertEqual(running.get_articles(), DONE)
        self.assertEqual(self.relay.sent, ["GROUP " + CLOSED, "QUIT"])
        group = Group(CLOSED, status="グループへ移動できませんでした : 480 Read access denied")
        self.assert_state(running, folder, [group])
        running.close()
        running = started(UserID="taro", Password="wrong")
        self.assertEqual(running.get_articles(), ("パスワードが不正です", "481 Authentication failed\r\n"))
        self.assertEqual(self.relay.sent, [login[0], "authinfo pass wrong", "QUIT"])
        self.assert_files(folder, group)
        running.close()
        running = started(Password="")  # a missing one is asked for at every run; Cancel starts none
        for button in ("Cancel", "OK"):
            running.command(GET_ARTICLES)
            prompt = running.wait_dialog(PROMPT)
            self.assertEqual((running.item(prompt.handle, USER).text, self.relay.sent), ("taro", []))
            running.set_text(prompt, PASSWORD, "hi mitsu")
            running.press(prompt, button)
        self.assertEqual(running.finish_run(), DONE)
        self.assertEqual(self.relay.sent[:2], login)
        self.expect_run([group], login=("taro", "hi mitsu"))
        self.assert_state(running, folder, [group])
        running.command(GET_ARTICLES)
        running.press(running.wait_dialog(PROMPT), "Cancel")
        running.close()
        running = started(Password="hi mitsu", Port=self.server.port)  # straight to nnrpd, whose replies come in pieces
        self.expect_run([group], login=("taro", "hi mitsu"))
        self.assertEqual(running.get_articles(), DONE)
        self.assert_state(running, folder, [group])

    # Disks that are full or cannot be written to.

    def test_a_full_disk(self):
        folder, group = self.folder([DISK], 40), Group(DISK)
        names = folder.read("group.dat")
        mount("-t", "tmpfs", "-o", "size=256k", "none", folder.path)
        self.addCleanup(subprocess.run, ["umount", "-l", folder.path], check=True)
        folder.write("group.dat", names)
        folder.write("ballast", b"\1" * 80 * 1024)
        running, said, after = self.start(), DONE, group
        while said == DONE:
            group, after = after, copy.deepcopy(after)
            self.expect_run([after], 40)
            said = running.get_articles()
        self.assertIn(said, [(DISK, "ログファイルへの出力に失敗しました(112)."),
                             (DISK, "インデックスの書き込みに失敗しました(112).")])
        self.assertGreater(len(group.records), 40)
        self.assert_kept(folder, group, "on the full disk")
        self.assertEqual(running.get_articles()[1][-6:], "(112).")
        # Nor does deleting, which needs room itself, or the next start lose anything.
        kept = self.assert_kept(folder, group, "after a second run on the full disk")
        self.delete_read(running)
        self.assertEqual(running.answer(DISK), "既読記事の削除に失敗しました(112)")
        self.assertEqual(running.close(), 0)
        running = self.start()
        self.assertEqual(running.wait_rows([group.row()]), [group.row()])
        self.assertEqual(self.assert_kept(folder, group, "after the next start"), kept)
        self.assertEqual([path.name for path in folder.path.glob("*~")], [])
        # Marking needs no room, and deleting that of what stays, here nothing but a header.
        self.catch_up(running, [LOCAL])
        folder.write("ballast", b"\1" * 72 * 1024)
        self.delete_read(running)
        group.mark_all_read()
        group.delete_read()
        self.assert_state(running, folder, [group], "after all was deleted")
        self.expect_run([group], 40)
        self.assertEqual(running.get_articles(), DONE)
        self.assert_state(running, folder, [group], "after the next run")

    def assert_kept(self, folder, group, why):
        """What was stored is there; behind it the log may have got a part of what came next."""
        index, log = folder.read(DISK + ".idx"), folder.read(DISK + ".log")
        self.assert_bytes(index[:len(group.index())], group.index(), "the index " + why)
        self.assert_bytes(log[:len(group.log)], group.log, "the log " + why)
        return log

    def test_a_read_only_folder(self):
        """A folder that becomes read-only stays as it is, and each step says so, the next start too."""
        folder, group = self.folder([DISK], 40), Group(DISK)
        self.expect_run([group], 40)
        group.records[1].flags |= 1
        (folder.path / "draft").mkdir()
        for name, content in ((".log", group.log), (".idx", group.index())):
            folder.write(DISK + name, content)
        running = self.start()
        running.key(running.group_list(), VK_RETURN)
        subjects = running.wait_pane(SUBJECTS)
        running.send(running.frame, WM_COMMAND, VIEW_READ)
        before = self.contents(folder)
        mount("--bind", folder.path, folder.path)
        mount("-o", "remount,bind,ro", folder.path)
        try:
            self.use_in_vain(running, subjects)
            self.assertEqual(running.close(), 0)
            running = self.start(opens=(program.DIALOG,))
            self.assert_refused(running, "PELNOR", "データファイルの初期化に失敗しました")
            running.wait_frame()
            self.assertEqual(running.wait_rows([]), [])
            self.assertEqual(running.close(), 0)
        finally:
            subprocess.run(["umount", "-l", folder.path], check=True)
        self.assertEqual(self.contents(folder), before)
        running = self.start()
        self.expect_run([group], 40)
        self.assertEqual(running.get_articles(), DONE)
        self.assert_state(running, folder, [group], "after writing was allowed again")

    @staticmethod
    def contents(folder):
        return {path.name: path.is_file() and path.read_bytes() for path in folder.path.iterdir()}

    def assert_refused(self, running, caption, text):
        """Wine says access denied (5) where Windows says write-protected (19)."""
        self.assertIn(running.answer(caption), [f"{text}({error})" for error in (5, 19)])

    def use_in_vain(self, running, subjects):
        """The first article cannot be marked as read; the second is, and can be read."""
        running.key(subjects, VK_RETURN)
        self.assert_refused(running, "PELNOR", "インデックスの初期化に失敗しました")
        running.key(subjects, VK_DOWN, VK_RETURN)
        running.wait_pane(ARTICLE)
        running.command(TO_SUBJECTS)
        running.command(TOGGLE_READ)
        running.command(TO_GROUPS)
        running.command(GET_ARTICLES)
        self.assert_refused(running, DISK, "ファイルが開けませんでした")
        self.delete_read(running)
        self.assert_refused(running, DISK, "既読記事の削除に失敗しました")
        self.assert_refused(running, "PELNOR", "データファイルの初期化に失敗しました")
        self.catch_up(running, [LOCAL, SERVER])
        self.assert_refused(running, "Catch up local", "既読にできませんでした")
        self.assert_refused(running, "Catch up server", "設定できませんでした")
        running.command(SUBSCRIBE)
        running.press(running.wait_dialog(CHOICE), "OK", wait=False)
        self.assert_refused(running, "PELNOR", "グループファイルが開けませんでした")
        self.assert_refused(running, "PELNOR", "データファイルの初期化に失敗しました")

    # Kills at random moments of a download of many articles. Whatever a kill leaves, the next start shows every article
    # that an index named before, and the runs that follow fetch each article once.

    def test_no_kill_loses_an_article(self):
        chance, folder, stored = random.Random(SEED), self.folder(KILLED), [Group(name) for name in KILLED]
        print(f"seed {SEED}, {KILLS} kills")
        for left in range(KILLS, -1, -1):  # the last run is not killed
            count = sum(len(group.records) for group in stored)
            limit = max(1, 2 * (len(KILLED) * EACH - count) // (left * len(KILLED))) if left else EACH
            folder.set(Limit=limit)
            running, after = self.start(), copy.deepcopy(stored)
            self.assertEqual(running.wait_rows([group.row() for group in stored]), [group.row() for group in stored])
            for group in after:
                group.log = folder.read(group.name + ".log")
            self.expect_run(after, limit)
            if left:
                self.kill_amid_run(running, folder, chance, sum(len(group.records) for group in after) - count)
                stored = [self.take_over(folder, *pair) for pair in zip(stored, after)]
                finished = [any(group is done for done in after) for group in stored]
                print(f"limit {limit}, killed after {len(self.relay.sent)} commands, {sum(finished)} groups finished")
                self.assertEqual(finished, sorted(finished, reverse=True), "groups are finished one after the other")
        self.assertEqual(running.get_articles(), DONE)
        self.assert_state(running, folder, after, "after the run that nobody disturbed")
        for group in after:
            self.assertEqual([record.number for record in group.records], list(range(1, EACH + 1)))

    def kill_amid_run(self, running, folder, chance, articles):
        """When a part of the commands has been sent, up to all that it takes."""
        moment = chance.randrange(2 * articles + len(KILLED))
        self.relay.sent.clear()
        running.command(GET_ARTICLES)
        wait_until(lambda: len(self.relay.sent) > moment, "the moment to kill")
        time.sleep(chance.uniform(0, 0.003))
        running.end()
        self.bench.revive()
        folder.set(**folder.settings)

    def take_over(self, folder, before, done):
        """What the index names after a kill: the group as before the run or after it, checked byte for byte."""
        index, log = folder.read(before.name + ".idx"), folder.read(before.name + ".log")
        now = done if index.startswith(done.index()) else before
        self.assert_bytes(index[:len(now.index())], now.index(), before.name + ".idx")
        self.assert_bytes(log, done.log[:len(log)] if now is before else done.log, before.name + ".log")
        now.log = log
        return now


if __name__ == "__main__":
    if not own_mounts():
        print("not run, since this machine lets nobody mount: the full and the read-only disk")
        del Evenings.test_a_full_disk, Evenings.test_a_read_only_folder
    scenario.main()
