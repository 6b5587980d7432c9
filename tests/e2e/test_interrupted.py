"""Runs that are disturbed: whatever stands in the files then, the next run makes them whole."""

import corpus
import inn
import scenario
from oracle import Group
from program import ABOUT, CATCH_UP, GET_ARTICLES, VK_ESCAPE, WM_CLOSE

GROUP, DELETE_READ = "fj.torn", 40004


class Interrupted(scenario.Scenario):
    groups = (GROUP,)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(GROUP, 20))

    def start_run(self, command):
        """A run that stands still at `command`."""
        folder, running = self.folder([GROUP]), self.start()
        self.relay.hold(command)
        running.command(GET_ARTICLES)
        self.relay.wait_held()
        # Commands leave ahead of the replies: the seven articles before must have been stored, too.
        log, stored = folder.path / (GROUP + ".log"), self.eighth()
        inn.wait_until(lambda: log.exists() and log.stat().st_size >= stored, "seven articles in the log")
        return folder, running, running.wait_dialog("Articles")

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

    def test_escape_hides_the_progress_and_the_run_goes_on(self):
        folder, running, progress = self.start_run("BODY 8")
        running.key(progress.handle, VK_ESCAPE)
        running.wait_gone(progress)
        # A second run is refused while the first lives; the About box shows that its command has been looked at.
        # Nor is anything deleted or caught up beneath it.
        for command in (GET_ARTICLES, CATCH_UP, DELETE_READ, ABOUT):
            running.command(command)
        about = running.wait_dialog("About")
        self.assertEqual([dialog.caption for dialog in running.dialogs()], [about.caption])
        running.press(about, "OK")
        self.assertEqual(self.relay.connections, 1)
        self.relay.release()
        self.assertEqual(running.finish_run(), scenario.DONE)
        group = Group(GROUP)
        self.expect_run([group])
        self.assert_rows(running, [group])
        self.assert_files(folder, group)
        self.assertEqual(running.close(), 0)

    def test_closing_the_program_leaves_what_the_next_run_can_use(self):
        folder, running, _ = self.start_run("BODY 8")
        self.bench.order("post", running.frame, WM_CLOSE, 0, 0)
        self.assertEqual(running.wait_exit(), 0)
        self.relay.release()
        self.assert_torn_then_whole(folder, self.start())

    def test_a_killed_program_leaves_every_complete_article(self):
        folder, running, _ = self.start_run("BODY 8")
        running.end()
        self.relay.release()
        self.assert_torn_then_whole(folder, self.start())

    def test_a_connection_that_breaks_is_made_good_by_a_new_one(self):
        folder, running, _ = self.start_run("BODY 8")
        self.relay.hang_up()
        self.assertEqual(running.finish_run(), scenario.DONE)
        self.assertEqual(self.relay.connections, 2)
        group = Group(GROUP, torn=8)
        self.expect_run([group])
        self.assert_rows(running, [group])
        self.assert_files(folder, group)


if __name__ == "__main__":
    scenario.main()
