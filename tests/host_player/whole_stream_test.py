"""Whole streams of every kind: each frame is decoded, and each picture is shown or skipped."""

import concurrent.futures

import streams
from player import PlayerCase

_SECONDS = 2
_LONG_SECONDS = 7  # longer than what may be pending in the player


class WholeStreamTest(PlayerCase):
    def test_transport_stream(self):
        self.check(streams.transport_stream, _LONG_SECONDS)

    def test_h265_in_a_transport_stream(self):
        self.check(streams.h265_in_a_transport_stream)

    def test_flv(self):
        self.check(streams.flv)

    def test_mp4(self):
        self.check(streams.mp4_file)

    def test_http_live_streaming(self):
        self.check(streams.http_live_streaming)

    def test_h265_in_http_live_streaming(self):
        self.check(streams.h265_in_http_live_streaming)

    def test_times_that_jump_in_the_middle(self):
        self.check(streams.times_that_jump_in_the_middle)

    def check(self, make_stream, seconds=_SECONDS):
        address = self.serve().url(make_stream(self.www, seconds))
        with concurrent.futures.ThreadPoolExecutor() as executor:
            expected = executor.submit(self.frames_of_console_host, address)
            summary = self.play_to_end(address).summary()
            received = (summary["video_frames"], summary["audio_frames"])
            self.assertEqual(received, expected.result())
        self.assert_whole(summary, seconds)

    def assert_whole(self, summary, seconds):
        # The last frame of a transport stream is complete only when another one begins.
        self.assertIn(seconds * streams.RATE - summary["pictures"], range(3), summary)
        self.assertEqual(summary["errors"], 0, summary)
        self.assertEqual(summary["skipped"], 0, summary)
        self.assertEqual(summary["pictures"], summary["access_units"], summary)
        self.assertEqual(summary["shown"] + summary["late"], summary["pictures"], summary)
        self.assertGreater(summary["sounds"], 0, summary)
