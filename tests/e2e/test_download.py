"""A whole run of 120 articles in two groups, and what becomes of the files it wrote at the next start."""

import corpus
import inn
import scenario
from oracle import Group
from program import GET_ARTICLES, PBM_GETPOS, PBM_GETRANGE

MISC, TEST = "fj.comp.misc", "fj.test"
KEYWORDS = [(b"-", b"Re:"), (b"+", "日本語".encode("cp932")), (b"-", b"plain"), (b"+", b"fj.comp")]


class Download(scenario.Scenario):
    groups = (MISC, TEST)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(MISC, 70) + corpus.articles(TEST, 50))

    def expected(self):
        misc, test = Group(MISC, KEYWORDS), Group(TEST)
        self.expect_run([misc, test])
        for text in corpus.PLAIN:  # the oracle itself, against Python's table
            self.assertIn(text.encode("cp932"), misc.log)
        return misc, test

    def test_a_run_leaves_the_files_and_rows_it_should(self):
        misc, test = self.expected()
        folder = self.folder([MISC, TEST])
        folder.write(MISC + ".flt", misc.keyword_file())
        running = self.start()
        self.assert_rows(running, [Group(MISC), Group(TEST)])
        self.bench.picture("group_view_before_a_run")
        self.look_at_progress(running)
        self.assertEqual(running.finish_run(), scenario.DONE)
        self.assert_rows(running, [misc, test])
        self.bench.picture("group_view_after_a_run")
        for group in (misc, test):
            self.assert_files(folder, group)
        fetches = [f"{command} {n}" for n in range(1, 71) for command in ("HEAD", "BODY")]
        self.assertEqual(self.relay.sent,
                         ["GROUP " + MISC] + fetches + ["GROUP " + TEST] + fetches[:100] + ["QUIT"])
        self.assertEqual(running.close(), 0)
        self.assert_rows(self.start(), [misc, test])
        for group in (misc, test):
            self.assert_files(folder, group, "after a restart")

    def look_at_progress(self, running):
        self.relay.hold("BODY 30")
        running.command(GET_ARTICLES)
        self.relay.wait_held()
        progress = running.wait_dialog("Articles")
        self.assertEqual(running.item(progress.handle, 1003).text, MISC)
        bar = running.item(progress.handle, 1004).handle
        # One less than there are articles, and a step for each that is complete; the last before the one that is
        # held may still be on their way.
        self.assertEqual(running.send(bar, PBM_GETRANGE), 69)
        inn.wait_until(lambda: running.send(bar, PBM_GETPOS) == 29, "29 steps")
        self.bench.picture("progress_of_a_run")
        self.relay.release()

    def test_a_lost_index_comes_back_from_the_log(self):
        groups = self.expected()
        folder = self.folder([MISC, TEST])
        for group in groups:
            folder.write(group.name + ".log", group.log)
            folder.write(group.name + ".flt", group.keyword_file())
            # What only the index knew is gone.
            group.last_fetched, group.server_last, group.status = 0, 0, ""
        self.assert_rows(self.start(), groups)
        for group in groups:
            self.assert_files(folder, group)

    def test_an_index_of_an_older_version_is_brought_up_to_date(self):
        groups = []
        for version in range(1, 5):
            group = Group(f"fj.old.version{version}")
            _, group_now = self.expected()
            group.log, group.records = group_now.log, group_now.records
            group.last_fetched, group.server_last, group.status = 50, 60, group_now.status
            group.reserved = 7
            if version > 1:  # the first kept no records, so no marks
                group.saved_position = 3
                for record in group.records[::3]:
                    record.flags |= 1
            groups.append(group)
        folder = self.folder([group.name for group in groups])
        for version, group in enumerate(groups, 1):
            folder.write(group.name + ".log", group.log)
            folder.write(group.name + ".idx", group.index(version))
        self.assert_rows(self.start(), groups)
        for group in groups:
            self.assert_files(folder, group)
        self.assertEqual([path.name for path in folder.path.glob("*~")], [])


if __name__ == "__main__":
    scenario.main()
