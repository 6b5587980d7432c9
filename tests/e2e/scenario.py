"""What the end-to-end tests share. Each test_*.py is run as: python3 test_x.py BUILD PROGRAM DRIVE, where BUILD is
the build folder and the other two are pelnor.exe and drive.exe."""

import os
import signal
import sys
import unittest

import inn
import program
import relay

DONE = ("Disconnect", "ダウンロードが終了しました。")


class Scenario(unittest.TestCase):
    """One news server and one bench for all tests of a class; a data folder and programs for each test."""
    groups = ()  # newsgroups that the server has

    @classmethod
    def setUpClass(cls):
        cls.bench = program.Bench(*cls.arguments)
        cls.addClassCleanup(lambda: cls.bench.close())
        cls.server = cls.enterClassContext(inn.NewsServer(cls.bench.build / "inn", cls.groups))

    def setUp(self):
        self.relay = self.enterContext(relay.Relay(self.server.port))

    def tearDown(self):
        result = self._outcome.result
        if any(test is self for test, _ in result.failures + result.errors):
            self.bench.picture("failed_" + self._testMethodName)

    def folder(self, groups, limit=1000, **settings):
        """A data folder subscribed to `groups`, with settings that lead to the server through self.relay."""
        folder = program.DataFolder(self.bench, groups, self.relay.port, limit, **settings)
        self.addCleanup(folder.remove)
        return folder

    def start(self, bench=None, **opens):
        started = program.Program(bench or self.bench, **opens)
        self.addCleanup(started.end)
        return started

    def expect_run(self, groups, limit=1000, login=None):
        """Takes the oracle's groups through a run."""
        with self.server.reader(login) as client:
            for group in groups:
                group.run(client, limit)

    def assert_state(self, running, folder, groups, why=""):
        """The rows and every byte of the files are what the oracle says."""
        expected = [group.row() for group in groups]
        self.assertEqual(running.wait_rows(expected), expected, f"{why}; {running.dialogs()}")
        for group in groups:
            self.assert_files(folder, group, why)

    def assert_files(self, folder, group, why=""):
        self.assert_bytes(folder.read(group.name + ".log"), group.log, f"{group.name}.log {why}")
        self.assert_bytes(folder.read(group.name + ".idx"), group.index(), f"{group.name}.idx {why}")

    def assert_bytes(self, found, expected, name):
        if found != expected:
            at = len(os.path.commonprefix([found, expected]))
            around = slice(max(at - 40, 0), at + 60)
            self.fail(f"{name} differs at byte {at} of {len(found)} (expected {len(expected)})\n"
                      f" found    {found[around]!r}\n expected {expected[around]!r}")


def main():
    Scenario.arguments = sys.argv[1:4]
    del sys.argv[1:4]
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("ended by a signal"))
    unittest.main(verbosity=2)
