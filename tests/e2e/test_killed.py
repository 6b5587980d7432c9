"""The program killed at random moments of a download of 2,000 articles. Whatever a kill leaves, the next start shows
every article that an index named before, and the runs that follow fetch each article once.

PELNOR_KILLS says how often (5), PELNOR_SEED which moments (1); tools/kill_loop sets both."""

import copy
import os
import random
import struct
import time

import corpus
import scenario
from inn import wait_until
from oracle import Group
from program import GET_ARTICLES

GROUPS = [f"fj.killed.{number}" for number in range(8)]
EACH = 250
KILLS, SEED = int(os.environ.get("PELNOR_KILLS", 5)), int(os.environ.get("PELNOR_SEED", 1))


class Killed(scenario.Scenario):
    groups = GROUPS

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        for group in GROUPS:
            cls.server.feed(corpus.articles(group, EACH))

    def setUp(self):
        super().setUp()
        self.random = random.Random(SEED)
        self.folder_now = self.folder(GROUPS)
        self.stored = [Group(name) for name in GROUPS]  # what the indexes name
        self.texts = {name: {} for name in GROUPS}  # an article as a log must hold it, by its number
        self.tally = {"no group finished": 0, "some groups finished": 0, "all groups finished": 0, "torn log": 0}

    def limit_for(self, kills_left):
        """So many articles a group that about as many are left for each kill to come."""
        left = len(GROUPS) * EACH - sum(len(group.records) for group in self.stored)
        return max(1, 2 * left // (kills_left * len(GROUPS)))

    def after_run(self, limit):
        """What the files hold when a run that begins now ends undisturbed."""
        groups = copy.deepcopy(self.stored)
        for group in groups:
            group.log = self.folder_now.read(group.name + ".log")
        self.expect_run(groups, limit)
        for group in groups:
            for record in group.records:
                text = group.log[record.offset:record.offset + record.length]
                self.assertEqual(self.texts[group.name].setdefault(record.number, text), text)
        return groups

    def kill_amid_run(self, running, moment):
        self.relay.ring_after(moment)
        running.command(GET_ARTICLES)
        # A run that was over before the moment came has been killed at its end.
        wait_until(lambda: self.relay.rung.is_set() or self.relay.sent[-1:] == ["QUIT"], "the moment to kill")
        time.sleep(self.random.uniform(0, 0.003))
        running.end()
        if self.bench.revive():
            print("Wine itself ended at this kill")
            self.folder_now.set(**self.folder_now.settings)

    def take_over(self, after):
        """Finds out how far the killed run came and checks what it left, byte for byte."""
        finished = []
        for at, (before, done) in enumerate(zip(self.stored, after)):
            index, log = self.folder_now.read(before.name + ".idx"), self.folder_now.read(before.name + ".log")
            finished.append(index.startswith(done.index()))
            now = done if finished[-1] else before
            self.assert_bytes(index[:len(now.index())], now.index(), before.name + ".idx", 100, 92)
            self.assert_bytes(log, done.log[:None if finished[-1] else len(log)], before.name + ".log")
            self.tally["torn log"] += not finished[-1] and log != before.log
            self.assert_articles(before.name, index, log)
            now.log = log
            self.stored[at] = now
        self.assertEqual(finished, sorted(finished, reverse=True), "groups are finished one after the other")
        kind = "all" if all(finished) else "some" if any(finished) else "no"
        self.tally[f"{kind} group{'' if kind == 'no' else 's'} finished"] += 1
        return sum(finished)

    def assert_articles(self, name, index, log):
        """Each record in the file, those of a broken run behind the last that counts too, names a whole article."""
        for at in range(100, len(index) - 91, 92):
            number, offset, length = struct.unpack_from("<3I", index, at + 4)
            self.assertEqual(log[offset:offset + length], self.texts[name].get(number), f"{name} {number}")

    def test_no_kill_loses_an_article(self):
        print(f"seed {SEED}, {KILLS} kills")
        for kill in range(KILLS):
            limit = self.limit_for(KILLS - kill)
            self.folder_now.set(Limit=limit)
            running = self.start()
            self.assert_rows(running, self.stored)
            after = self.after_run(limit)
            # The replies to a run are about as long as what it adds to the logs.
            most = sum(len(new.log) - len(old.log) for new, old in zip(after, self.stored))
            moment = self.random.randrange(1, max(2, int(1.2 * most)))
            self.relay.sent.clear()
            self.kill_amid_run(running, moment)
            finished = self.take_over(after)
            print(f"kill {kill + 1}: limit {limit}, at byte {moment} of about {most}, {len(self.relay.sent)} commands, "
                  f"{finished} groups finished")
        print(self.tally)
        self.finish()

    def finish(self):
        self.folder_now.set(Limit=EACH)
        running = self.start()
        self.assert_rows(running, self.stored)
        after = self.after_run(EACH)
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.assert_rows(running, after)
        for group in after:
            self.assert_files(self.folder_now, group, "after the run that nobody disturbed")
            self.assertEqual([record.number for record in group.records], list(range(1, EACH + 1)))


if __name__ == "__main__":
    scenario.main()
