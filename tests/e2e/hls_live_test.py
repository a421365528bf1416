"""Live streams: ffmpeg writes segments while they play."""

from support import reference
from support.hls import HlsCase
from support.live import LiveEncoder


class LiveTest(HlsCase):
    def encode(self, seconds):
        encoder = LiveEncoder(self.www, self.directory / "archive", seconds)
        encoder.start()
        self.addCleanup(encoder.stop)
        return encoder

    def segments_that_were_asked_for(self, server, encoder):
        """In the order of the requests, each of which must have been answered."""
        requests = [request.split()[:2] for request in server.requests(1)]
        asked = [path.removeprefix("/") for path, _ in requests if path.endswith(".ts")]
        self.assertEqual({status for path, status in requests if path.endswith(".ts")}, {"200"})
        copies = {segment.name: segment for segment in encoder.segments()}
        return [copies[name] for name in asked]

    def assert_one_after_the_other(self, segments, encoder):
        everything = encoder.segments()
        first = everything.index(segments[0])
        self.assertEqual(segments, everything[first : first + len(segments)])

    def test_stream_of_half_a_minute_plays_whole(self):
        """From the first segment that was listed to the end of the encoder."""
        encoder = self.encode(34)
        server = self.serve()
        address = server.url(encoder.playlist.name)
        run = self.play(address, idle_exit=4)
        self.assertGreaterEqual(run.summary["elapsed_ms"], 30_000)
        self.assertIn(f"PLAY M3U8 OK:{address}", run.messages())
        played = self.segments_that_were_asked_for(server, encoder)
        self.assertGreaterEqual(len(played), 30)
        self.assert_one_after_the_other(played, encoder)
        self.assertEqual(played[-1], encoder.segments()[-1])
        self.assert_plays_segments(run, played)
        self.assertLess(len(list(self.www.glob("live*.ts"))), len(encoder.segments()))

    def test_stop_in_mid_stream_leaves_a_beginning_without_a_gap(self):
        encoder = self.encode(60)
        server = self.serve()
        run = self.play(server.url(encoder.playlist.name), "--stop-after", "8")
        encoder.stop()
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        played = self.segments_that_were_asked_for(server, encoder)
        self.assertGreater(len(played), 4)
        self.assert_one_after_the_other(played, encoder)
        for kind in ("video", "audio"):
            with self.subTest(kind):
                packets = reference.pes_packets(self.joined(played), kind)
                frames = run.frames_of(kind)
                self.assertGreater(len(frames), len(packets) // 2)
                self.assert_frames_are(frames, packets[: len(frames)])
