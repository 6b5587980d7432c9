"""Runs that stop at the limit, and catching up."""

import corpus
import scenario
from oracle import NONE, Group
from program import CATCH_UP

GROUP = "fj.many"
LOCAL, SERVER = 1019, 1020  # the catch-up dialog's boxes


class Limit(scenario.Scenario):
    groups = (GROUP,)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(GROUP, 120))

    def run_and_compare(self, running, folder, group, status):
        """One run with the limit 50 that leaves `status`."""
        self.expect_run([group], 50)
        self.assertEqual(group.status, status)
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.assert_rows(running, [group])
        self.assert_files(folder, group)

    def catch_up(self, running, boxes, button):
        running.command(CATCH_UP)
        dialog = running.wait_dialog("記事の読み飛ばし")
        for box in boxes:
            running.check(dialog, box)
        if len(boxes) == 2:
            self.bench.picture("catch_up")
        running.press(dialog, button)

    def test_runs_go_on_where_the_limit_stopped_them_and_catching_up_skips(self):
        group, folder = Group(GROUP), self.folder([GROUP], limit=50)
        running = self.start()
        limited = "制限数の50件の記事を取得しました。サーバには未取得の記事が残っています。"
        none = "新規記事はありませんでした"
        for status in (limited, limited, "20件の記事を取得しました。", none):
            self.run_and_compare(running, folder, group, status)
        # Neither box, or Cancel with both: nothing happens.
        self.catch_up(running, [], "OK")
        self.catch_up(running, [LOCAL, SERVER], "Cancel")
        self.assert_rows(running, [group])
        self.assert_files(folder, group, "after a catch-up that was none")
        # Both: everything read, and what the server has now is never fetched.
        self.server.feed([corpus.article(GROUP, 120)])
        self.catch_up(running, [LOCAL, SERVER], "OK")
        for record in group.records:
            record.flags |= 1
        group.last_fetched = NONE
        self.assert_rows(running, [group])
        self.assert_files(folder, group, "after catching up")
        sent = len(self.relay.sent)
        self.run_and_compare(running, folder, group, none)
        self.assertEqual(self.relay.sent[sent:], ["GROUP " + GROUP, "QUIT"])
        self.assertEqual(group.last_fetched, 121)
        # Only what arrives after that run is.
        self.server.feed([corpus.article(GROUP, number) for number in (121, 122)])
        self.run_and_compare(running, folder, group, "2件の記事を取得しました。")


if __name__ == "__main__":
    scenario.main()
