"""Streams that do not play, or only in part: the status lines that README.md promises a host for each of
them."""

from support import host, mp4, reference
from support.case import EndToEndCase
from support.flv import expected_video
from support.hls import joined
from support.media_tools import make_files
from support.no_stream import NoStreamCase, with_a_last_packet_that_is_refused

_VIDEO = ("-f", "lavfi", "-i", "testsrc2=size=160x120:rate=25:duration=2")
_AUDIO = ("-f", "lavfi", "-i", "sine=frequency=440:sample_rate=44100:duration=2")
_BOTH = (*_VIDEO, *_AUDIO)
_H264 = ("-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-g", "25")
_H265 = ("-c:v", "libx265", "-preset", "ultrafast", "-pix_fmt", "yuv420p",
         "-x265-params", "log-level=error")
_AAC = ("-c:a", "aac")
_ON_DEMAND = ("-f", "hls", "-hls_time", "1", "-hls_playlist_type", "vod")
_TASK_ENDS = ("m3u8 ", "PLAY STOP")


def _video_frames(sample):
    """How many video frames a run that plays the sample receives. The last one is never complete."""
    return len(reference.pes_packets(sample, "video")) - 1


class UnplayableCase(EndToEndCase):
    def setUp(self):
        super().setUp()
        self._host = host.copy_host(self.directory / "host")

    def make(self, name, *options, inputs=None):
        command = ["ffmpeg", "-nostdin", "-v", "error", "-y", *options, name]
        make_files(command, self.www, inputs)
        return self.www / name

    def play_from_server(self, name, **settings):
        return self.play(self.serve().url(name), host=self._host, **settings)

    def assert_lines(self, run, *lines):
        """Compares all messages and results but those of the stop, each without the address at its end."""
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
        key = {"key": bytes(range(16)), "key.info": b"key\nkey\n"}
        self.make("list.m3u8", *_BOTH, *_H264, *_AAC, *_ON_DEMAND, "-hls_key_info_file", "key.info",
                  inputs=key)
        self.assert_no_segment_plays("*.ts")

    def test_fragmented_mp4_segments_on_demand(self):
        self.make("list.m3u8", *_BOTH, *_H264, *_AAC, *_ON_DEMAND, "-hls_segment_type", "fmp4")
        self.assert_no_segment_plays("*.m4s")

    def test_fragmented_mp4_segments_live(self):
        self.make("list.m3u8", *_BOTH, *_H264, *_AAC, *_ON_DEMAND, "-hls_segment_type", "fmp4",
                  "-hls_flags", "omit_endlist")
        server = self.serve()
        names = [path.name for path in self.www.glob("*.m4s")]
        self.assertEqual(len(names), 2)

        def are_fetched_again(_):
            requests = " ".join(server.requests_so_far())
            return all(requests.count(f"/{name} ") > 1 for name in names)

        run = self.play(server.url("list.m3u8"), host=self._host, until=are_fetched_again)
        self.assert_nothing_plays(run, *self._OPENED)

    def test_segments_of_audio_alone(self):
        self.make("list.m3u8", *_AUDIO, *_AAC, *_ON_DEMAND)
        self.assert_no_segment_plays("*.ts")

    def test_packed_audio(self):
        self.make("packed%d.aac", *_AUDIO, *_AAC, "-f", "segment", "-segment_format", "adts",
                  "-segment_time", "1", "-segment_list", "list.m3u8")
        self.assert_no_segment_plays("*.aac")

    def assert_no_segment_plays(self, pattern):
        """Segments without video are kept beside the host once they are parsed. Waits until all of them are
        kept."""
        kept = self.directory / "host" / "tmp" / "tmpE.ts"
        kept.parent.mkdir()
        size = sum(path.stat().st_size for path in self.www.glob(pattern))
        run = self.play_from_server(
            "list.m3u8", until=lambda _: kept.exists() and kept.stat().st_size == size)
        self.assert_nothing_plays(run, *self._BAD_SEGMENT)

    def test_byte_ranges_play_as_one_segment(self):
        self.make("list.m3u8", *_BOTH, *_H264, *_AAC, *_ON_DEMAND, "-hls_flags", "single_file")
        run = self.play_whole(self.serve().url("list.m3u8"), self.www / "list.ts", host=self._host)
        self.assertEqual(run.values("buffered"), ["1"])

    def test_audio_rendition_is_not_fetched(self):
        self.make("video.m3u8", *_VIDEO, *_H264, *_ON_DEMAND)
        self.make("audio.m3u8", *_AUDIO, *_AAC, *_ON_DEMAND)
        (self.www / "list.m3u8").write_text(
            '#EXTM3U\n#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID="a",NAME="a",URI="audio.m3u8"\n'
            '#EXT-X-STREAM-INF:BANDWIDTH=100000,AUDIO="a"\nvideo.m3u8\n')
        whole = joined(sorted(self.www.glob("video*.ts")), self.directory / "joined.ts")
        run = self.play_from_server("list.m3u8", frames=_video_frames(whole))
        self.assert_video_alone_plays(run)
        self.assert_lines(run, *self._OPENED, "PLAY M3U8 H264:")


class TransportStreamTest(UnplayableCase, NoStreamCase):
    _OPENED = ("PLAY TS:", "PLAY TS OK:")

    def test_audio_alone(self):
        self.make("a.ts", *_AUDIO, *_AAC)
        self.assert_nothing_plays(self.play_to_its_end(), *self._OPENED)

    def test_mpeg4_part_2(self):
        self.make("a.ts", *_BOTH, "-c:v", "mpeg4", *_AAC)
        self.assert_nothing_plays(self.play_to_its_end(), *self._OPENED)

    def test_packets_of_192_bytes(self):
        self.make("a.ts", *_BOTH, *_H264, *_AAC, "-mpegts_m2ts_mode", "1")
        self.assert_nothing_plays(self.play_to_its_end(), *self._OPENED)

    def play_to_its_end(self):
        path = self.www / "a.ts"
        body = with_a_last_packet_that_is_refused(path.read_bytes())
        path.write_bytes(body)
        run = self.play_from_server("a.ts", idle_exit=1)
        self.assert_each_packet_is_refused(run, body)
        return run

    def test_ac3(self):
        self.make("a.ts", *_BOTH, *_H264, "-c:a", "ac3")
        sample = self.www / "a.ts"
        run = self.play_from_server("a.ts", frames=_video_frames(sample))
        self.assert_video_alone_plays(run)
        self.assert_lines(run, *self._OPENED)


class FlvTest(UnplayableCase):
    def test_video_that_is_not_h264(self):
        self.make("a.flv", *_VIDEO, "-c:v", "flv1")
        run = self.play_from_server("a.flv", until=host.Prints("read over"))
        self.assert_nothing_plays(run, "PLAY FLV:", "PLAY FLV CACHE_NO OK:", "PLAY:FLV CACHE_NO OK:")

    def test_mp3_has_adts_headers(self):
        sample = self.make("a.flv", *_BOTH, *_H264, "-c:a", "libmp3lame")
        frames = len(expected_video(sample)) + len(reference.pes_packets(sample, "audio"))
        self.assert_audio_has_adts_headers(self.play_from_server("a.flv", frames=frames))


class Mp4Test(UnplayableCase):
    _REFUSED = ("PLAY MP4 NO:", "PLAY:MP4 NO:")

    def test_fragmented(self):
        self.make("a.mp4", *_BOTH, *_H264, *_AAC, "-movflags", "frag_keyframe+empty_moov")
        run = self.play_from_server("a.mp4", line=mp4.VERDICT)
        self.assert_nothing_plays(run, "PLAY MP4:", "PLAY MP4 H264:", *self._REFUSED)

    def test_h265(self):
        self.make("a.mp4", *_BOTH, *_H265, *_AAC, "-tag:v", "hvc1")
        run = self.play_from_server("a.mp4", line=mp4.VERDICT)
        self.assert_nothing_plays(run, "PLAY MP4:", "PLAY MP4 H265:", *self._REFUSED)

    def test_audio_alone(self):
        self.make("a.mp4", *_AUDIO, *_AAC)
        run = self.play_from_server("a.mp4", line=mp4.VERDICT)
        self.assert_nothing_plays(run, "PLAY MP4:", *self._REFUSED)

    def test_mp3_has_adts_headers(self):
        sample = self.make("a.mp4", *_BOTH, *_H264, "-c:a", "libmp3lame")
        frames = len(mp4.slices_of(sample)) + len(mp4.packets(sample, "audio"))
        self.assert_audio_has_adts_headers(self.play_from_server("a.mp4", frames=frames))

    def test_matroska(self):
        self.make("a.mkv", *_BOTH, *_H264, *_AAC)
        run = self.play_from_server("a.mkv", line=mp4.VERDICT)
        self.assert_nothing_plays(run, "PLAY MP4:", *self._REFUSED)


class SchemeTest(UnplayableCase):
    def test_rtmp(self):
        run = host.run_host("rtmp://localhost/a", self.directory, host=self._host)
        self.assert_lines(run, "PLAY UNKOWN:")
