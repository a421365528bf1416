"""HTTP Live Streaming on demand: playlists that end."""

from support.hls import HlsCase
from support.https import HttpsMixin


class _OnDemandMixin:
    """The same streams from different sources. A subclass defines `play_sample`."""

    def test_3_segments_play_whole(self):
        self.assert_plays_on_demand(3, 1)

    def test_30_segments_play_whole(self):
        self.assert_plays_on_demand(30, 0.4)

    def assert_plays_on_demand(self, count, segment_seconds):
        sample = self.make_hls(count, segment_seconds)
        run = self.play_sample(sample)
        address = run.summary["address"]
        lines = [f"PLAY M3U8:{address}", f"PLAY M3U8 OK:{address}", f"PLAY M3U8 H264:{address}"]
        self.assertEqual(run.messages()[:3], lines)
        self.assertEqual(run.values("result"), [f"PLAY:M3U8 OK:{address}"])
        self.assertIn(f"QUEUEED3:{count}", run.output)
        self.assert_times_are_reported(run, count, segment_seconds)

    def assert_times_are_reported(self, run, count, segment_seconds):
        self.assertAlmostEqual(run.summary["duration"], count * segment_seconds, delta=0.1)
        ends = [float(value) for value in run.values("buffered")]
        self.assertEqual(len(ends), count)
        self.assertEqual(ends, sorted(ends))
        self.assertAlmostEqual(ends[-1], count * segment_seconds, delta=0.1)


class _ManySegmentsMixin(_OnDemandMixin):
    def test_1200_segments_play_whole(self):
        # Two video frames per segment: the first is complete when the second begins, so no segment counts as
        # one without video.
        self.assert_plays_on_demand(1200, 0.08)


def _names(sample):
    return [path.name for path in (sample.playlist, *sample.segments)]


class HttpTest(_ManySegmentsMixin, HlsCase):
    def play_sample(self, sample):
        server = self.serve()
        run = self.play_segments(server.url(sample.playlist.name), sample.segments)
        requests = [f"/{name} 200 range=- agent=-" for name in _names(sample)]
        self.assertEqual(server.requests(len(requests)), requests)
        return run

    def test_segments_named_by_absolute_addresses_and_paths_play(self):
        sample = self.make_hls(3)
        server = self.serve()
        text = sample.playlist.read_text()
        text = text.replace("seg0001.ts", server.url("seg0001.ts"))
        sample.playlist.write_text(text.replace("seg0002.ts", "/seg0002.ts?token=a/b"))
        self.play_segments(server.url(sample.playlist.name), sample.segments)
        self.assertTrue(server.requests(4)[3].startswith("/seg0002.ts?token=a/b 200 "))


class HttpsTest(HttpsMixin, _OnDemandMixin, HlsCase):
    def play_sample(self, sample):
        address = self.serve_https().url(sample.playlist.name)
        return self.play_segments(address, sample.segments,
                                  prefix=self.trusting_only_the_test_authority())


class LocalFileTest(_ManySegmentsMixin, HlsCase):
    def play_sample(self, sample):
        return self.play_segments(f"file://{sample.playlist}", sample.segments)
