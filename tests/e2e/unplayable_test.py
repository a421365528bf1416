"""Streams that do not play, or in part only: the lines that README promises a host for each."""

import subprocess

from support import host
from support.case import EndToEndCase

_VIDEO = ("-f", "lavfi", "-i", "testsrc2=size=160x120:rate=25:duration=2")
_AUDIO = ("-f", "lavfi", "-i", "sine=frequency=440:sample_rate=44100:duration=2")
_BOTH = (*_VIDEO, *_AUDIO)
_H264 = ("-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-g", "25")
_H265 = ("-c:v", "libx265", "-preset", "ultrafast", "-pix_fmt", "yuv420p",
         "-x265-params", "log-level=error")
_AAC = ("-c:a", "aac")
_ON_DEMAND = ("-f", "hls", "-hls_time", "1", "-hls_playlist_type", "vod")
_TASK_ENDS = ("m3u8 ", "PLAY STOP")


class UnplayableCase(EndToEndCase):
    def setUp(self):
        super().setUp()
        # An HLS segment without video is written beside the executable.
        self._host = host.copy_host(self.directory / "host")

    def make(self, name, *options):
        command = ["ffmpeg", "-nostdin", "-v", "error", "-y", *options, str(self.www / name)]
        subprocess.run(command, check=True, timeout=60, cwd=self.www)

    def play_from_server(self, name):
        return self.play(self.serve().url(name), host=self._host)

    def assert_lines(self, run, *lines):
        """All messages and results but those of the stop, each without the address behind it."""
        seen = []
        for event in run.events:
            if event.name in ("message", "result") and not event.value.startswith(_TASK_ENDS):
                seen.append(event.value.split("http:")[0].split("rtmp:")[0])
        self.assertEqual(seen, list(lines), run.output)

    def assert_nothing_plays(self, run, *lines):
        self.assert_no_frame(run)
        self.assert_lines(run, *lines)

    def assert_video_alone_plays(self, run):
        self.assertGreater(len(run.frames_of("video")), 25)
        self.assertEqual(run.frames_of("audio"), [])

    def assert_audio_has_adts_headers(self, run):
        payloads = run.payloads("audio")
        self.assertGreater(len(payloads), 25)
        self.assertEqual({payload[:2] for payload in payloads}, {b"\xff\xf1"})


class HlsTest(UnplayableCase):
    _OPENED = ("PLAY M3U8:", "PLAY M3U8 OK:", "PLAY:M3U8 OK:")
    _BAD_SEGMENT = (*_OPENED, "PLAY M3U8 DATAERR 0:")

    def test_encrypted_segments(self):
        (self.www / "key").write_bytes(bytes(range(16)))
        (self.www / "key.info").write_text(f"key\n{self.www / 'key'}\n")
        self.make("list.m3u8", *_BOTH, *_H264, *_AAC, *_ON_DEMAND, "-hls_key_info_file", "key.info")
        self.assert_nothing_plays(self.play_from_server("list.m3u8"), *self._BAD_SEGMENT)

    def test_fragmented_mp4_segments_on_demand(self):
        self.make("list.m3u8", *_BOTH, *_H264, *_AAC, *_ON_DEMAND, "-hls_segment_type", "fmp4")
        self.assert_nothing_plays(self.play_from_server("list.m3u8"), *self._BAD_SEGMENT)

    def test_fragmented_mp4_segments_live(self):
        self.make("list.m3u8", *_BOTH, *_H264, *_AAC, *_ON_DEMAND, "-hls_segment_type", "fmp4",
                  "-hls_flags", "omit_endlist")
        self.assert_nothing_plays(self.play_from_server("list.m3u8"), *self._OPENED)

    def test_segments_of_audio_alone(self):
        self.make("list.m3u8", *_AUDIO, *_AAC, *_ON_DEMAND)
        self.assert_nothing_plays(self.play_from_server("list.m3u8"), *self._BAD_SEGMENT)

    def test_packed_audio(self):
        self.make("packed%d.aac", *_AUDIO, *_AAC, "-f", "segment", "-segment_format", "adts",
                  "-segment_time", "1", "-segment_list", "list.m3u8")
        self.assert_nothing_plays(self.play_from_server("list.m3u8"), *self._BAD_SEGMENT)

    def test_byte_ranges_play_as_one_segment(self):
        self.make("list.m3u8", *_BOTH, *_H264, *_AAC, *_ON_DEMAND, "-hls_flags", "single_file")
        run = self.play_from_server("list.m3u8")
        self.assert_plays_whole(run, self.www / "list.ts")
        self.assertEqual(run.values("buffered"), ["1"])

    def test_audio_rendition_is_not_fetched(self):
        self.make("video.m3u8", *_VIDEO, *_H264, *_ON_DEMAND)
        self.make("audio.m3u8", *_AUDIO, *_AAC, *_ON_DEMAND)
        (self.www / "list.m3u8").write_text(
            '#EXTM3U\n#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="a",NAME="a",URI="audio.m3u8"\n'
            '#EXT-X-STREAM-INF:BANDWIDTH=100000,AUDIO="a"\nvideo.m3u8\n')
        run = self.play_from_server("list.m3u8")
        self.assert_video_alone_plays(run)
        self.assert_lines(run, *self._OPENED, "PLAY M3U8 H264:")


class TransportStreamTest(UnplayableCase):
    _OPENED = ("PLAY TS:", "PLAY TS OK:")

    def test_audio_alone(self):
        self.make("a.ts", *_AUDIO, *_AAC)
        self.assert_nothing_plays(self.play_from_server("a.ts"), *self._OPENED)

    def test_mpeg4_part_2(self):
        self.make("a.ts", *_BOTH, "-c:v", "mpeg4", *_AAC)
        self.assert_nothing_plays(self.play_from_server("a.ts"), *self._OPENED)

    def test_packets_of_192_bytes(self):
        self.make("a.ts", *_BOTH, *_H264, *_AAC, "-mpegts_m2ts_mode", "1")
        self.assert_nothing_plays(self.play_from_server("a.ts"), *self._OPENED)

    def test_ac3(self):
        self.make("a.ts", *_BOTH, *_H264, "-c:a", "ac3")
        run = self.play_from_server("a.ts")
        self.assert_video_alone_plays(run)
        self.assert_lines(run, *self._OPENED)


class FlvTest(UnplayableCase):
    def test_video_that_is_not_h264(self):
        self.make("a.flv", *_VIDEO, "-c:v", "flv1")
        self.assert_nothing_plays(self.play_from_server("a.flv"), "PLAY FLV:",
                                  "PLAY FLV CACHE_NO OK:", "PLAY:FLV CACHE_NO OK:")

    def test_mp3_has_adts_headers(self):
        self.make("a.flv", *_BOTH, *_H264, "-c:a", "libmp3lame")
        self.assert_audio_has_adts_headers(self.play_from_server("a.flv"))


class Mp4Test(UnplayableCase):
    _REFUSED = ("PLAY MP4 NO:", "PLAY:MP4 NO:")

    def test_fragmented(self):
        self.make("a.mp4", *_BOTH, *_H264, *_AAC, "-movflags", "frag_keyframe+empty_moov")
        run = self.play_from_server("a.mp4")
        self.assert_nothing_plays(run, "PLAY MP4:", "PLAY MP4 H264:", *self._REFUSED)

    def test_h265(self):
        self.make("a.mp4", *_BOTH, *_H265, *_AAC, "-tag:v", "hvc1")
        run = self.play_from_server("a.mp4")
        self.assert_nothing_plays(run, "PLAY MP4:", "PLAY MP4 H265:", *self._REFUSED)

    def test_audio_alone(self):
        self.make("a.mp4", *_AUDIO, *_AAC)
        run = self.play_from_server("a.mp4")
        self.assert_nothing_plays(run, "PLAY MP4:", *self._REFUSED)

    def test_mp3_has_adts_headers(self):
        self.make("a.mp4", *_BOTH, *_H264, "-c:a", "libmp3lame")
        self.assert_audio_has_adts_headers(self.play_from_server("a.mp4"))

    def test_matroska(self):
        self.make("a.mkv", *_BOTH, *_H264, *_AAC)
        run = self.play_from_server("a.mkv")
        self.assert_nothing_plays(run, "PLAY MP4:", *self._REFUSED)


class SchemeTest(UnplayableCase):
    def test_rtmp(self):
        run = host.run_host("rtmp://localhost/a", self.directory, host=self._host)
        self.assert_lines(run, "PLAY UNKOWN:")
