"""HTTP Live Streaming samples as ffmpeg packages them, and a base for cases that play them."""

import dataclasses
import pathlib

from support import host
from support.case import EndToEndCase
from support.media_tools import make_files

_RATE = 25


@dataclasses.dataclass(frozen=True)
class HlsSample:
    playlist: pathlib.Path
    segments: list


def encoder_inputs(seconds):
    """Video and a tone of this duration."""
    return ["-f", "lavfi", "-i", f"testsrc2=size=160x120:rate={_RATE}:duration={seconds}",
            "-f", "lavfi", "-i", f"sine=frequency=440:sample_rate=44100:duration={seconds}"]


def encoder_codecs(segment_seconds):
    """H.264, with B-frames if a segment is long enough, and AAC. Each segment can begin with a key frame."""
    group = round(_RATE * segment_seconds)
    return ["-c:v", "libx264", "-preset", "ultrafast", "-bf", str(min(2, group - 1)),
            "-g", str(group), "-keyint_min", str(group), "-sc_threshold", "0",
            "-pix_fmt", "yuv420p", "-c:a", "aac", "-b:a", "64k"]


def make_hls(directory, count, segment_seconds=1):
    """Writes list.m3u8, an on-demand playlist, and `count` segments."""
    command = ["ffmpeg", "-nostdin", "-v", "error", "-y"]
    command += [*encoder_inputs(count * segment_seconds), *encoder_codecs(segment_seconds)]
    command += ["-f", "hls", "-hls_time", str(segment_seconds), "-hls_playlist_type", "vod"]
    command += ["-hls_segment_filename", "seg%04d.ts", "list.m3u8"]
    make_files(command, directory)
    return HlsSample(directory / "list.m3u8", sorted(directory.glob("seg*.ts")))


def joined(segments, path):
    """Writes the segments one after another into one file, which is an ordinary transport stream."""
    path.write_bytes(b"".join(segment.read_bytes() for segment in segments))
    return path


def without_leftover(frames):
    """Without the frame that a stop has left unfinished: it is the first one of the next run and has no
    time."""
    return frames[1:] if frames and frames[0].pts == 0 else frames


class HlsCase(EndToEndCase):
    """Each case has its own host, because segments that cannot be played are kept beside the host."""

    def setUp(self):
        super().setUp()
        self._host = host.copy_host(self.directory / "host")

    def make_hls(self, count, segment_seconds=1):
        sample = make_hls(self.www, count, segment_seconds)
        self.assertEqual(len(sample.segments), count)
        return sample

    def play_segments(self, address, segments, *options, **settings):
        """Plays all frames of the segments, which form one stream."""
        return self.play_whole(address, self.joined(segments), *options, **settings)

    def play(self, address, *options, **settings):
        return super().play(address, *options, **{"host": self._host, **settings})

    def joined(self, segments):
        return joined(segments, self.directory / "joined.ts")

    def assert_plays_segments(self, run, segments):
        self.assert_plays_whole(run, self.joined(segments))
