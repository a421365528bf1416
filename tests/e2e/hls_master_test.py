"""Master playlists."""

import re

from support.hls import HlsCase, encoder_inputs
from support.media_tools import make_files

_SECONDS = 3


def _make_variants(directory):
    """Writes master.m3u8, which lists the variant of the higher bandwidth first, and both variants beside it,
    because the addresses in them are resolved against the master playlist."""
    command = ["ffmpeg", "-nostdin", "-v", "error", "-y", *encoder_inputs(_SECONDS)]
    command += ["-map", "0:v", "-map", "1:a"] * 2
    command += ["-c:v", "libx264", "-preset", "ultrafast", "-bf", "2", "-g", "25"]
    command += ["-sc_threshold", "0", "-pix_fmt", "yuv420p", "-b:v:0", "900k", "-b:v:1", "100k"]
    command += ["-c:a", "aac", "-b:a", "64k"]
    command += ["-f", "hls", "-hls_time", "1", "-hls_playlist_type", "vod"]
    command += ["-var_stream_map", "v:0,a:0,name:high v:1,a:1,name:low"]
    command += ["-master_pl_name", "master.m3u8"]
    command += ["-hls_segment_filename", "%v_%03d.ts", "%v.m3u8"]
    make_files(command, directory)
    return directory / "master.m3u8"


def _of(requests, path):
    return [request for request in requests if request.split()[0] == path]


class MasterTest(HlsCase):
    def setUp(self):
        super().setUp()
        self.master = _make_variants(self.www)
        self.low = sorted(self.www.glob("low_*.ts"))
        self.assertEqual(len(self.low), _SECONDS)

    def test_segments_of_the_lowest_bandwidth_play(self):
        high, low = map(int, re.findall(r"[:,]BANDWIDTH=(\d+)", self.master.read_text()))
        self.assertGreater(high, low)
        server = self.serve()
        run = self.play_segments(server.url("master.m3u8"), self.low)
        self.assertEqual(run.output.count("[QUEUED]: "), 0)
        queued = [line.partition("[QUEUEED]: ")[2] for line in run.output.splitlines()
                  if "[QUEUEED]: " in line]
        self.assertEqual(queued, [server.url(segment.name) for segment in self.low])
        self.assert_requests_in_order(server)

    def assert_requests_in_order(self, server):
        """Expects requests for the variants from the lowest bandwidth on, and for each segment once."""
        requested = [request.split()[0] for request in server.requests(3 + _SECONDS)]
        self.assertEqual(requested[:3], ["/master.m3u8", "/low.m3u8", "/high.m3u8"])
        segments = [path for path in requested if path.endswith(".ts")]
        self.assertEqual(segments, [f"/{segment.name}" for segment in self.low])

    def test_playlists_of_variants_are_fetched_again_and_their_segments_are_not(self):
        server = self.serve()
        requests_so_far = server.requests_so_far
        self.play(server.url("master.m3u8"), until=lambda _: len(_of(requests_so_far(), "/low.m3u8")) > 2)
        for segment in self.low:
            self.assertEqual(len(_of(requests_so_far(), f"/{segment.name}")), 1)

    def test_addresses_of_a_variant_are_resolved_against_the_master_playlist(self):
        folder = self.www / "folder"
        folder.mkdir()
        for name in ("low.m3u8", "high.m3u8"):
            (self.www / name).rename(folder / name)
        text = re.sub(r"(?m)^(\w+\.m3u8)$", r"folder/\1", self.master.read_text())
        self.master.write_text(text)
        self.play_segments(self.serve().url("master.m3u8"), self.low)

    def test_other_variant_plays_if_one_is_missing(self):
        (self.www / "low.m3u8").unlink()
        self.play_segments(self.serve().url("master.m3u8"), sorted(self.www.glob("high_*.ts")))
