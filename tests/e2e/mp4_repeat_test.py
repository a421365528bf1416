"""--repeat and --start with MP4: downloaded bytes are kept within a process."""

from support import mp4
from support.mp4 import Mp4Case

_TICKS = 90_000


class Mp4RepeatTest(Mp4Case):
    def test_complete_file_is_requested_from_its_end_and_nothing_is_received(self):
        sample = self.make_mp4()
        server = self.serve()
        address = server.url("sample.mp4")
        run = self.play_whole(address, sample, "--repeat", "2", line="PLAY:MP4 NO:")
        size = sample.stat().st_size
        answers = [" ".join(request.split()[1:3]) for request in server.requests(3)]
        self.assertEqual(answers, ["206 range=bytes=0-"] + [f"416 range=bytes={size}-"] * 2)
        self.assertEqual(run.messages().count(f"PLAY MP4 RE:{address}"), 2)
        self.assertEqual(run.values("result"),
                         [f"PLAY:MP4 OK:{address}"] + [f"PLAY:MP4 NO:{address}"] * 2)
        self.assertEqual(self.restart_file.read_bytes(), sample.read_bytes())

    def test_server_without_ranges_changes_nothing_in_a_complete_file(self):
        sample = self.make_mp4()
        server = self.serve("max_ranges 0;")
        self.play_whole(server.url("sample.mp4"), sample, "--repeat", "1", line="PLAY:MP4 NO:")
        self.assertEqual(self.restart_file.read_bytes(), sample.read_bytes())

    def test_stop_in_mid_download_resumes_there_and_repeats_no_frame(self):
        # Every video frame is a key frame, so the stream can resume at any of them.
        sample = self.make_index_first(8, "-g", "1", "-bf", "0")
        server = self.serve("limit_rate 300k; output_buffers 1 4k;")
        run = self.play(server.url("sample.mp4"), "--repeat", "1", frames=40)
        self.assertEqual(run.exit_code, 0, run.output)
        # An aborted request may be logged after the one that followed it.
        first, second = sorted(request.split()[2] for request in server.requests(2))
        self.assertEqual(first, "range=bytes=0-")
        received = int(second.removeprefix("range=bytes=").removesuffix("-"))
        self.assertGreater(received, 0)
        self.assertLess(received, sample.stat().st_size)
        self.assert_each_is_received_once_and_in_order(run, sample)

    def assert_each_is_received_once_and_in_order(self, run, sample):
        for kind in ("video", "audio"):
            with self.subTest(kind):
                times = list(dict.fromkeys(frame.dts for frame in run.frames_of(kind)))
                self.assertEqual(times, sorted(times))
                expected = [packet.dts for packet in mp4.packets(sample, kind)][: len(times) + 8]
                self.assertLessEqual(set(times), set(expected), "more than a few frames are missing")
        slices = mp4.slices(mp4.split_units(run.elementary_stream("video")))
        self.assertEqual(len(slices), len(set(slices)), "a video frame was delivered twice")
        self.assertLessEqual(set(slices), set(mp4.slices_of(sample)))


class Mp4StartPositionTest(Mp4Case):
    """With the index after the data, no frame is delivered before the whole file has been received."""

    def test_playback_continues_at_the_position(self):
        start = 3
        sample = self.make_mp4(8)
        server = self.serve()
        address = server.url("sample.mp4")
        expected = self.times_from(sample, start * _TICKS)
        run = self.play(address, "--start", str(start), frames=sum(map(len, expected.values())))
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        lines = [line.partition(" Q:")[0] for line in run.messages()]
        self.assertIn("PLAY MP4 StartPostion:00:00:03.000", lines)
        self.assertIn(f"PLAY MP4 RE:{address}", lines)
        ranges = [request.split()[2] for request in server.requests(2)]
        self.assertEqual(ranges, ["range=bytes=0-", f"range=bytes={sample.stat().st_size}-"])
        for kind in ("video", "audio"):
            with self.subTest(kind):
                self.assertGreater(len(expected[kind]), 10)
                self.assertEqual([frame.dts for frame in run.frames_of(kind)], expected[kind])

    def times_from(self, sample, position):
        """The times of both kinds from the first key frame at or after the position. Only the first video
        frame has more than one NAL unit."""
        video = mp4.packets(sample, "video")
        first = next(packet.dts for packet in video if packet.is_key and packet.dts >= position)
        return {kind: [packet.dts for packet in mp4.packets(sample, kind) if packet.dts >= first]
                for kind in ("video", "audio")}

    def test_position_after_the_end_gives_no_frame(self):
        sample = self.make_mp4(2)
        run = self.play(self.serve().url("sample.mp4"), "--start", "100", line="PLAY:MP4 NO:")
        self.assert_no_frame(run)
        self.assertEqual(sample.read_bytes(), self.restart_file.read_bytes())
