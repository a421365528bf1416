"""--start: what a viewer does by dragging the slider."""

from support import reference
from support.case import EndToEndCase

_TICKS = 90_000


class StartPositionTest(EndToEndCase):
    def test_frames_before_the_position_are_dropped_and_all_later_ones_are_delivered(self):
        start = 3
        sample = self.make_sample(seconds=8)
        server = self.serve()
        address = server.url("sample.ts")
        # Play times are interpolated, so the first frame after the position, and the number of frames, are
        # not known. Only silence shows that the last one has been received.
        run = self.play(address, "--start", str(start), idle_exit=1)
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        self.assert_reported_and_fetched_again(run, server, address)
        for kind in ("video", "audio"):
            with self.subTest(kind):
                self.assert_starts_at(run, sample, kind, start)

    def assert_reported_and_fetched_again(self, run, server, address):
        lines = [line.partition(" Q:")[0] for line in run.messages()]
        self.assertIn("PLAY TS StartPostion:00:00:03.000", lines)
        self.assertIn(f"PLAY TS RE:{address}", lines)
        ranges = [request.split()[2] for request in server.requests(2)]
        self.assertEqual(ranges, ["range=bytes=0-", "range=bytes=0-"])

    def assert_starts_at(self, run, sample, kind, start):
        frames = run.frames_of(kind)
        self.assertGreater(len(frames), 0)
        self.assertGreaterEqual(min(frame.play for frame in frames), start * _TICKS)
        # Play times are interpolated between timestamps, so frames close to the position are not compared.
        packets = reference.pes_packets(sample, kind)
        safe = packets[0].pts + (start + 1) * _TICKS
        self.assert_frames_are(
            [frame for frame in frames if frame.pts >= safe],
            [packet for packet in packets[:-1] if packet.pts >= safe])

    def test_position_after_the_end_gives_no_frame(self):
        self.make_sample(seconds=2)
        server = self.serve()
        # Dropped frames are not reported: only silence shows that all of them were dropped.
        self.assert_no_frame(self.play(server.url("sample.ts"), "--start", "100", idle_exit=1))
