"""Replies that hold no stream."""

import random

from support.case import EndToEndCase


class NotFoundTest(EndToEndCase):
    def test_html_page_is_told_and_gives_no_frame(self):
        server = self.serve()
        address = server.url("missing.ts")
        run = self.play(address)
        self.assert_no_frame(run)
        refused = [line for line in run.messages() if line.startswith(f"PLAY TS NO:{address}:")]
        self.assertEqual(len(refused), 1, run.messages())
        self.assertTrue(refused[0].startswith(f"PLAY TS NO:{address}:<html>"))
        self.assertIn("404 Not Found", refused[0])
        self.assertNotIn(f"PLAY TS OK:{address}", run.messages())

    def test_other_page_passes_for_a_stream_and_gives_no_frame(self):
        (self.www / "page.txt").write_text("Nothing is here. " * 100)
        server = self.serve("error_page 404 /page.txt;")
        address = server.url("missing.ts")
        run = self.play(address)
        self.assert_no_frame(run)
        self.assertIn(f"PLAY TS OK:{address}", run.messages())
        self.assertIn("The packet isn't TS packet", run.output)


class BodyTest(EndToEndCase):
    def test_empty_body_gives_no_frame_and_no_line(self):
        (self.www / "empty.ts").write_bytes(b"")
        server = self.serve("max_ranges 0;")
        address = server.url("empty.ts")
        run = self.play(address)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY TS:{address}"])

    def test_noise_gives_no_frame(self):
        (self.www / "noise.ts").write_bytes(random.Random(1).randbytes(500_000))
        server = self.serve()
        run = self.play(server.url("noise.ts"))
        self.assert_no_frame(run)
        self.assertIn("The packet isn't TS packet", run.output)

    def test_file_cut_inside_a_packet_plays_up_to_there(self):
        sample = self.make_sample()
        whole = sample.read_bytes()
        packets = len(whole) // 188 // 2
        sample.write_bytes(whole[: packets * 188 + 100])
        server = self.serve()
        run = self.play(server.url("sample.ts"))
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        self.assert_plays_whole(run, self._without_rest(sample, packets))

    def _without_rest(self, sample, packets):
        aligned = self.directory / "aligned.ts"
        aligned.write_bytes(sample.read_bytes()[: packets * 188])
        return aligned
