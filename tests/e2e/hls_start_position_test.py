"""--start with HTTP Live Streaming: whole segments are skipped."""

from support import reference
from support.hls import HlsCase, without_leftover


class StartPositionTest(HlsCase):
    def test_segments_that_end_before_the_position_are_skipped(self):
        sample = self.make_hls(6)
        server = self.serve()
        later = self.joined(sample.segments[2:])
        run = self.play(server.url(sample.playlist.name), "--start", "2.5",
                        frames=self.frames_of(later))
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        self.assertIn("PLAY M3U8 StartPostion:00:00:02.500", run.messages())
        self.assertEqual([float(value) for value in run.values("buffered")], [3, 4, 5, 6])
        for kind in ("video", "audio"):
            with self.subTest(kind):
                self.assert_plays(run, later, kind)

    def assert_plays(self, run, later, kind):
        """The run up to the first frame, before the seek, leaves a video frame and an audio frame unfinished.
        The video frame is skipped, as the first one after a stop is."""
        frames = run.frames_of(kind)
        if kind == "audio":
            frames = without_leftover(frames)
        packets = reference.pes_packets(later, kind)
        self.assertGreater(len(packets), 2)
        self.assert_frames_are(frames, packets[:-1])
        payloads = run.payloads(kind)[-len(frames) :]
        self.assertTrue(payloads == reference.payloads(later, kind)[:-1], "the bytes differ")

    def test_position_after_the_end_gives_no_frame(self):
        sample = self.make_hls(3)
        # Skipped segments are not reported: only silence shows that all of them were skipped.
        run = self.play(self.serve().url(sample.playlist.name), "--start", "100", idle_exit=1)
        self.assert_no_frame(run)
        self.assertEqual(run.values("buffered"), [])
