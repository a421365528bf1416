"""Replies without a stream."""

import random

from support import host
from support.no_stream import NoStreamCase


class NotFoundTest(NoStreamCase):
    def test_html_page_is_reported_and_gives_no_frame(self):
        server = self.serve()
        address = server.url("missing.ts")
        run = self.play(address, line="PLAY TS NO:")
        self.assert_no_frame(run)
        refused = [line for line in run.messages() if line.startswith(f"PLAY TS NO:{address}:")]
        self.assertEqual(len(refused), 1, run.messages())
        self.assertTrue(refused[0].startswith(f"PLAY TS NO:{address}:<html>"))
        self.assertIn("404 Not Found", refused[0])
        self.assertNotIn(f"PLAY TS OK:{address}", run.messages())

    def test_other_page_is_treated_as_a_stream_and_gives_no_frame(self):
        page = b"Nothing is here. " * 100
        (self.www / "page.txt").write_bytes(page)
        server = self.serve("error_page 404 /page.txt;")
        address = server.url("missing.ts")
        run = self.play(address, idle_exit=1)
        self.assert_each_packet_is_refused(run, page)
        self.assertIn(f"PLAY TS OK:{address}", run.messages())


class BodyTest(NoStreamCase):
    def test_empty_body_gives_no_frame_and_no_line(self):
        (self.www / "empty.ts").write_bytes(b"")
        server = self.serve("max_ranges 0;")
        address = server.url("empty.ts")
        run = self.play(address, until=host.TRANSFER_ENDED)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY TS:{address}"])

    def test_noise_gives_no_frame(self):
        noise = random.Random(1).randbytes(500_000)
        (self.www / "noise.ts").write_bytes(noise)
        run = self.play(self.serve().url("noise.ts"), idle_exit=1)
        self.assert_each_packet_is_refused(run, noise)

    def test_file_cut_inside_a_packet_plays_up_to_the_cut(self):
        sample = self.make_sample()
        whole = sample.read_bytes()
        packets = len(whole) // 188 // 2
        sample.write_bytes(whole[: packets * 188 + 100])
        self.play_whole(self.serve().url("sample.ts"), self._without_rest(sample, packets))

    def _without_rest(self, sample, packets):
        aligned = self.directory / "aligned.ts"
        aligned.write_bytes(sample.read_bytes()[: packets * 188])
        return aligned
