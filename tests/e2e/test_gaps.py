"""Numbers that the server has no article for, and a group that it does not have."""

import corpus
import scenario
from oracle import Group

GAPS, PLAIN, ABSENT = "fj.gaps", "fj.plain", "fj.absent"


class Gaps(scenario.Scenario):
    groups = (GAPS, PLAIN)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(GAPS, 12) + corpus.articles(PLAIN, 3))
        for number in (1, 5, 6, 12):
            cls.server.remove(GAPS, number)

    def test_missing_articles_are_skipped_and_do_not_count(self):
        group, folder = Group(GAPS), self.folder([GAPS], limit=5)
        running = self.start()
        for numbers in ([2, 3, 4, 7, 8], [9, 10, 11], []):
            before = len(group.records)
            self.expect_run([group], 5)
            self.assertEqual([record.number for record in group.records[before:]], numbers)
            running.key(running.group_list(), ord("I"))
            self.assertEqual(running.finish_run(), scenario.DONE)
            self.assert_rows(running, [group])
            self.assert_files(folder, group)

    def test_a_group_that_the_server_does_not_have_stops_no_other(self):
        groups = absent, plain, too = Group(ABSENT), Group(PLAIN), Group("fj.absent.too")
        self.expect_run(groups)
        folder = self.folder([group.name for group in groups])
        running = self.start()
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.assert_rows(running, groups)
        self.assert_files(folder, plain)
        # Of the others nothing is known but why.
        for group in absent, too:
            self.assertEqual(folder.read(group.name + ".idx"), group.index())
        self.assertEqual(self.relay.sent[-1], "QUIT")


if __name__ == "__main__":
    scenario.main()
