"""Addresses that redirect to another one."""

from support import host
from support.case import EndToEndCase

_CHAIN = """
location = /first.ts { return 301 /second.ts; }
location = /second.ts { return 302 http://127.0.0.1:$PORT/third.ts; }
location = /third.ts { return 307 /sample.ts; }
location = /round.ts { return 302 /round.ts; }
location = /nowhere.ts { return 301 http://127.0.0.1:1/sample.ts; }
"""


class RedirectTest(EndToEndCase):
    def test_chain_of_redirects_plays_under_the_first_address(self):
        sample = self.make_sample()
        server = self.serve(_CHAIN)
        address = server.url("first.ts")
        run = self.play_whole(address, sample)
        self.assertIn(f"PLAY TS OK:{address}", run.messages())
        answers = [" ".join(request.split()[:2]) for request in server.requests(4)]
        self.assertEqual(
            answers, ["/first.ts 301", "/second.ts 302", "/third.ts 307", "/sample.ts 206"])

    def test_redirect_in_a_circle_ends_without_a_frame(self):
        self.assert_nothing_is_received("round.ts")

    def test_redirect_to_a_closed_port_ends_without_a_frame(self):
        self.assert_nothing_is_received("nowhere.ts")

    def assert_nothing_is_received(self, name):
        address = self.serve(_CHAIN).url(name)
        run = self.play(address, until=host.TRANSFER_ENDED)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY TS:{address}"])
