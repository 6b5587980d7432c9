"""Two programs on one data folder: the second to be started brings the first forward and ends. Where the first is out
of its sight, on another desktop, files that one has open are refused to the other, which is told."""

import shutil

import corpus
import program
import relay
import scenario
from oracle import Group
from program import DELETE_READ, GET_ARTICLES

GROUP = "fj.twice"


class OtherDesktop(program.Bench):
    """A second desktop under the same Wine: a program there sees no window of the first, but opens the same files."""

    def __init__(self, bench):
        vars(self).update(vars(bench))
        self.program, self.drive_path = self.own_copy(bench.program), self.own_copy(bench.drive_path)
        self._start_drive()

    def own_copy(self, path):
        """Wine chooses the desktop by the program's name."""
        copy = self.prefix.parent / f"other_{path.name}"
        shutil.copy(path, copy)
        key = r"HKCU\Software\Wine"
        for values in ([rf"{key}\AppDefaults\{copy.name}\Explorer", "/v", "Desktop", "/d", "other"],
                       [rf"{key}\Explorer\Desktops", "/v", "other", "/d", "480x400"]):
            self.registry(*values)
        return copy

    def close(self):
        self.stop(self.drive)


class Twice(scenario.Scenario):
    groups = (GROUP,)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(GROUP, 60))
        cls.other = OtherDesktop(cls.bench)
        cls.addClassCleanup(cls.other.close)

    def start_both(self, folder):
        """Each has its own way to the server, so that one can be held while the other goes on."""
        first = self.start()
        self.second_way = self.enterContext(relay.Relay(self.server.port))
        folder.set(Port=self.second_way.port)
        second = program.Program(self.other)
        self.addCleanup(second.end)
        return first, second

    def hold_run(self, way, running, command):
        way.hold(command)
        running.command(GET_ARTICLES)
        way.wait_held()

    def test_a_second_start_brings_the_first_forward(self):
        folder, group = self.folder([GROUP]), Group(GROUP)
        running = self.start()
        self.hold_run(self.relay, running, "BODY 8")
        for _ in range(3):
            second = self.bench.run_wine(self.bench.program)
            self.addCleanup(self.bench.stop, second)
            self.assertEqual(second.wait(20), 0)
        frames = [line[0] for line in self.bench.order("windows") if line[1] == "PelnorMainFrmWnd"]
        self.assertEqual(frames, [running.frame])
        self.relay.release()
        self.assertEqual(running.finish_run(), scenario.DONE)
        self.expect_run([group])
        self.assert_files(folder, group)

    def test_what_one_is_writing_is_refused_to_the_other(self):
        folder, group = self.folder([GROUP]), Group(GROUP)
        first, second = self.start_both(folder)
        self.assert_rows(second, [group])
        self.hold_run(self.relay, first, "BODY 8")
        self.assertEqual(second.get_articles(), (GROUP, "インデックスの初期化に失敗しました(32)"))
        second.command(DELETE_READ)
        for caption, button, text in (
                ("Delete read articles", "はい", "既読記事を削除しますか?"),
                (GROUP, "OK", "既読記事の削除に失敗しました(32)"),
                ("PELNOR", "OK", "データファイルの初期化に失敗しました(32)")):
            box = second.wait_dialog(caption)
            self.assertEqual(box.text, text)
            second.press(box, button)
        self.relay.release()
        self.assertEqual(first.finish_run(), scenario.DONE)
        self.expect_run([group])
        self.assert_rows(first, [group])
        self.assert_files(folder, group)
        self.assertEqual(second.get_articles(), scenario.DONE)
        self.expect_run([group])
        self.assert_rows(second, [group])
        self.assert_files(folder, group, "after the other's run")

    def test_two_runs_of_the_same_articles_count_each_once(self):
        """The second knew of no article when it asked for the group, and got its answer after the first had stored
        them all: it looks again before it fetches."""
        folder, group = self.folder([GROUP]), Group(GROUP)
        first, second = self.start_both(folder)
        self.hold_run(self.second_way, second, "GROUP " + GROUP)
        self.assertEqual(first.get_articles(), scenario.DONE)
        self.expect_run([group])
        self.assert_files(folder, group)
        self.second_way.release()
        self.assertEqual(second.finish_run(), scenario.DONE)
        self.expect_run([group])
        self.assert_files(folder, group, "after the second run")


if __name__ == "__main__":
    scenario.main()
