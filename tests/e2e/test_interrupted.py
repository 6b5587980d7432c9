"""Runs that are disturbed: whatever stands in the files then, the next run makes them whole."""

import corpus
import inn
import scenario
from oracle import Group
from program import (CATCH_UP, DELETE_READ, EXIT, GET_ARTICLES, PBM_GETPOS, PBM_GETRANGE, PROPERTIES, SUBSCRIBE,
                     VK_ESCAPE, WM_CLOSE, WM_COMMAND)

GROUP, PROGRESS, SHEET = "fj.torn", "Articles", "プロパティ"
GROUP_NAME, BAR = 1003, 1004  # the progress dialog's controls
START_RUN, HANG_UP, RUN_FINISHED, WAKE = 0x400, 0x401, 0x8001, 0x8002  # the frame's messages


class Interrupted(scenario.Scenario):
    groups = (GROUP,)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(GROUP, 20))

    def start_run(self, command, ahead=False):
        """A run that stands still at `command`."""
        folder, running = self.folder([GROUP]), self.start()
        self.relay.hold(command, ahead)
        running.command(GET_ARTICLES)
        self.relay.wait_held()
        # Commands leave ahead of the replies: the seven articles before must have been stored, too.
        log, stored = folder.path / (GROUP + ".log"), self.eighth()
        inn.wait_until(lambda: log.exists() and log.stat().st_size >= stored, "seven articles in the log")
        return folder, running, running.wait_dialog(PROGRESS)

    def eighth(self):
        """Where article 8 begins in the log."""
        group = Group(GROUP)
        self.expect_run([group])
        return group.records[7].offset

    def assert_torn_then_whole(self, folder, running):
        """The run stopped amid article 8: those before it are in the log, none counts yet. The next run fetches
        them all, behind what stands there."""
        group = Group(GROUP)
        self.expect_run([group])
        eighth, torn = self.eighth(), folder.read(GROUP + ".log")
        self.assert_rows(running, [Group(GROUP)])
        self.assert_bytes(torn, group.log[:max(len(torn), eighth)], "the log that the broken run left")
        self.assertEqual(folder.read(GROUP + ".idx")[:100], Group(GROUP).index())
        group = Group(GROUP, log=torn)
        self.expect_run([group])
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.assert_rows(running, [group])
        self.assert_files(folder, group, "after the next run")

    @staticmethod
    def escape(running, progress):
        """To the control that the system gives the focus to, though none can use it."""
        running.key(running.item(progress.handle, BAR).handle, VK_ESCAPE)
        running.wait_gone(progress)

    def assert_progress(self, running, dialog):
        """It stands over its disabled frame and shows that seven of the twenty articles are stored."""
        bar = running.item(dialog.handle, BAR).handle
        inn.wait_until(lambda: running.send(bar, PBM_GETPOS) == 7, "seven steps")
        self.assertEqual(running.send(bar, PBM_GETRANGE), 19)
        self.assertEqual(running.item(dialog.handle, GROUP_NAME).text, GROUP)
        self.assertEqual([dialog.caption for dialog in running.dialogs()], [PROGRESS])
        self.assertFalse(running.is_enabled(running.frame))

    def test_escape_hides_the_progress_and_what_must_wait_for_the_run_shows_it_again(self):
        folder, running, progress = self.start_run("BODY 8")
        for command in (PROPERTIES, GET_ARTICLES, DELETE_READ, SUBSCRIBE, CATCH_UP):
            self.escape(running, progress)
            self.assertTrue(running.is_enabled(running.frame))
            running.command(command)
            progress = running.wait_dialog(PROGRESS)
            self.assert_progress(running, progress)
        self.bench.picture("progress_again")
        self.escape(running, progress)
        self.assertEqual(self.relay.connections, 1)
        self.relay.release()
        self.assertEqual(running.finish_run(), scenario.DONE)
        group = Group(GROUP)
        self.expect_run([group])
        self.assert_rows(running, [group])
        self.assert_files(folder, group)
        self.assertEqual(running.close(), 0)

    def send_from_elsewhere(self, running, *more):
        """What any program can send to the frame, jobs that it never made among it."""
        for message, value in ((RUN_FINISHED, 0), (RUN_FINISHED, 1), (RUN_FINISHED, 0x10000), (HANG_UP, 0),
                               (WAKE, 0), *more):
            running.send(running.frame, message, value, value)

    def test_messages_from_elsewhere_do_no_harm(self):
        folder, running, run = self.folder([GROUP]), self.start(), (START_RUN, 0)
        self.send_from_elsewhere(running)
        running.command(PROPERTIES)
        sheet = running.wait_dialog(SHEET)
        self.send_from_elsewhere(running, run)
        running.command(GET_ARTICLES)
        running.press(sheet, "キャンセル")
        self.assertEqual(self.relay.connections, 0)
        self.assertTrue(running.is_enabled(running.frame))
        self.relay.hold("BODY 8")
        self.bench.order("post", running.frame, *run, 0)
        self.relay.wait_held()
        self.send_from_elsewhere(running, run)
        self.assert_progress(running, running.wait_dialog(PROGRESS))
        self.relay.release()
        box = running.wait_box()
        self.send_from_elsewhere(running, run)
        running.command(GET_ARTICLES)
        self.assertEqual([dialog.caption for dialog in running.dialogs()], [box.caption])
        self.assertEqual(running.finish_run(), scenario.DONE)
        self.assertEqual(self.relay.connections, 1)
        group = Group(GROUP)
        self.expect_run([group])
        self.assert_rows(running, [group])
        self.assert_files(folder, group)
        self.assertEqual(running.close(), 0)

    def test_closing_the_program_leaves_what_the_next_run_can_use(self):
        """Also while the server lets a byte drop now and then, which no time-out ends."""
        for hidden, message in ((False, (WM_CLOSE, 0)), (True, (WM_COMMAND, EXIT))):
            folder, running, progress = self.start_run("BODY 8")
            for _ in range(3):
                self.relay.drip(b"2")
            if hidden:
                self.escape(running, progress)
            self.bench.order("post", running.frame, *message, 0)
            self.assertEqual(running.wait_exit(), 0)
            self.relay.release()
            running = self.start()
            self.assert_torn_then_whole(folder, running)
            self.assertEqual(running.close(), 0)

    def test_a_killed_program_leaves_every_complete_article(self):
        folder, running, _ = self.start_run("BODY 8")
        running.end()
        self.relay.release()
        self.assert_torn_then_whole(folder, self.start())

    def test_a_connection_that_breaks_is_made_good_by_a_new_one(self):
        folder, running, _ = self.start_run("BODY 8", ahead=True)
        self.relay.hang_up()
        self.assertEqual(running.finish_run(), scenario.DONE)
        self.assertEqual(self.relay.connections, 2)
        group = Group(GROUP, torn=8)
        self.expect_run([group])
        self.assert_rows(running, [group])
        self.assert_files(folder, group)


if __name__ == "__main__":
    scenario.main()
