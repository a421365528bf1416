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

    def requested_segments(self, server, encoder):
        """The requested segments in the order of the requests, each of which must have been answered."""
        requests = [request.split()[:2] for request in server.requests(1)]
        requested = [path.removeprefix("/") for path, _ in requests if path.endswith(".ts")]
        self.assertEqual({status for path, status in requests if path.endswith(".ts")}, {"200"})
        copies = {segment.name: segment for segment in encoder.segments()}
        return [copies[name] for name in requested]

    def assert_one_after_the_other(self, segments, encoder):
        everything = encoder.segments()
        first = everything.index(segments[0])
        self.assertEqual(segments, everything[first : first + len(segments)])

    def test_segments_that_appear_while_it_plays_are_played_without_a_gap(self):
        encoder = self.encode(60)
        listed = encoder.playlist.read_text().count(".ts")
        server = self.serve()
        address = server.url(encoder.playlist.name)
        run = self.play(address, frames=80)  # of three segments at least
        encoder.stop()
        self.assertIn(f"PLAY M3U8 OK:{address}", run.messages())
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        played = self.requested_segments(server, encoder)
        self.assertGreater(len(played), listed)
        self.assert_one_after_the_other(played, encoder)
        for kind in ("video", "audio"):
            with self.subTest(kind):
                packets = reference.pes_packets(self.joined(played), kind)
                frames = run.frames_of(kind)
                self.assertGreater(len(frames), len(packets) // 2)
                self.assert_frames_are(frames, packets[: len(frames)])
