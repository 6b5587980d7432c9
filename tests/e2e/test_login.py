"""A server that serves nobody before they said who they are."""

import corpus
import scenario
from oracle import Group
from program import GET_ARTICLES

GROUP, USER, PASSWORD = "fj.closed", "taro", "hi mitsu"
PROMPT = "ﾊﾟｽﾜｰﾄﾞの入力"
LOGIN = ["authinfo user " + USER, "authinfo pass " + PASSWORD]


class Login(scenario.Scenario):
    groups = (GROUP,)
    logins = [(USER, PASSWORD)]

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.server.feed(corpus.articles(GROUP, 5))

    def expected(self):
        group = Group(GROUP)
        self.expect_run([group])
        return group

    def assert_nothing_fetched(self, folder, status=""):
        self.assertEqual(folder.read(GROUP + ".idx"), Group(GROUP, status=status).index())
        self.assertEqual(folder.read(GROUP + ".log"), b"")

    def test_the_stored_password_is_used(self):
        folder = self.folder([GROUP], UserID=USER, Password=PASSWORD)
        folder.set(Port=self.server.port)  # straight to nnrpd, whose replies come in pieces
        self.assertEqual(self.start().get_articles(), scenario.DONE)
        self.assert_files(folder, self.expected())

    def test_a_wrong_password_ends_the_run_with_the_servers_words(self):
        folder, running = self.folder([GROUP], UserID=USER, Password="wrong"), self.start()
        caption, text = running.get_articles()
        self.assertEqual((caption, text.rstrip()), ("パスワードが不正です", "481 Authentication failed"))
        self.assertEqual(self.relay.sent, [LOGIN[0], "authinfo pass wrong", "QUIT"])
        self.assert_nothing_fetched(folder)

    def test_a_missing_password_is_asked_for_at_every_run(self):
        folder, running = self.folder([GROUP], UserID=USER), self.start()
        running.command(GET_ARTICLES)
        prompt = running.wait_dialog(PROMPT)
        self.assertEqual(running.item(prompt.handle, 1026).text, USER)
        self.bench.picture("password_prompt")
        running.press(prompt, "Cancel")
        # Cancel starts nothing, and is no reason to refuse the next run.
        running.command(GET_ARTICLES)
        prompt = running.wait_dialog(PROMPT)
        self.assertEqual(self.relay.connections, 0)
        running.set_text(prompt, 1025, PASSWORD)
        running.press(prompt, "OK")
        self.assertEqual(running.finish_run(), scenario.DONE)
        self.assertEqual(self.relay.sent[:2], LOGIN)
        self.assert_files(folder, self.expected())
        running.command(GET_ARTICLES)
        running.press(running.wait_dialog(PROMPT), "Cancel")

    def test_a_password_without_a_user_is_not_sent(self):
        folder, running = self.folder([GROUP], Password=PASSWORD), self.start()
        self.assertEqual(running.get_articles(), scenario.DONE)
        self.assertEqual(self.relay.sent, ["GROUP " + GROUP, "QUIT"])
        self.assert_nothing_fetched(folder, "グループへ移動できませんでした : 480 Authentication required for command")


if __name__ == "__main__":
    scenario.main()
