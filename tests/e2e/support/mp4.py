"""MP4 samples as ffmpeg makes them, and a base for cases that play them."""

import dataclasses
import json
import re

from support import host, samples
from support.case import EndToEndCase
from support.media_tools import make_file, output_of

_TICKS_PER_MS = 90
_PARAMETER_SETS = (7, 8)
VERDICT = "PLAY:MP4 "  # OK or NO


def make_mp4(path, seconds, *options):
    """For any other number of channels ffmpeg would still write two into the file."""
    return make_file([*samples.encoder(seconds), "-ac", "2", *options, "-f", "mp4"], path)


def _copy(path, stream, *form):
    command = ["ffmpeg", "-nostdin", "-v", "error", "-ignore_editlist", "1", "-i", str(path)]
    command += ["-map", f"0:{stream}", "-c", "copy", *form, "-"]
    return output_of(command, path)


def adts_stream(path):
    return _copy(path, "a:0", "-f", "adts")


def split_units(stream):
    """H.264 NAL units without their start codes. No unit ends with a zero."""
    return [unit.rstrip(b"\0") for unit in re.split(b"\0\0\1", stream)[1:]]


def slices(units):
    """All units but the parameter sets, which ffmpeg repeats."""
    return [unit for unit in units if unit[0] & 0x1F not in _PARAMETER_SETS]


def slices_of(path):
    return slices(split_units(_copy(path, "v:0", "-bsf", "h264_mp4toannexb", "-f", "h264")))


@dataclasses.dataclass(frozen=True)
class Packet:
    dts: int  # 90 kHz, from whole milliseconds, as the component reports it
    pts: int
    size: int
    is_key: bool


def packets(path, kind):
    stream = {"video": "v:0", "audio": "a:0"}[kind]
    command = ["ffprobe", "-v", "error", "-ignore_editlist", "1", "-select_streams", stream]
    command += ["-show_streams", "-show_packets", "-of", "json", str(path)]
    found = json.loads(output_of(command, path))
    scale = int(found["streams"][0]["time_base"].partition("/")[2])

    def ticks(time):
        return time * 1000 // scale * _TICKS_PER_MS

    return [Packet(ticks(packet["dts"]), ticks(packet["pts"]), int(packet["size"]),
                   packet["flags"].startswith("K"))
            for packet in found["packets"]]


class Mp4Case(EndToEndCase):
    """Each case has its own host, because the restart file is stored beside the host."""

    def setUp(self):
        super().setUp()
        self._host = host.copy_host(self.directory / "host")

    @property
    def restart_file(self):
        return self.directory / "host" / "tmp" / "mebo.mp4"

    def make_mp4(self, seconds=4, *options, name="sample.mp4"):
        return make_mp4(self.www / name, seconds, *options)

    def make_index_first(self, seconds=4, *options):
        return self.make_mp4(seconds, "-movflags", "+faststart", *options)

    def play(self, address, *options, **settings):
        return super().play(address, *options, host=self._host, **settings)

    def frames_of(self, sample):
        return len(slices_of(sample)) + len(packets(sample, "audio"))

    def assert_plays_whole(self, run, sample):
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        self.assertTrue(slices(split_units(run.elementary_stream("video"))) == slices_of(sample),
                        "the video stream differs from ffmpeg's")
        self.assertTrue(run.elementary_stream("audio") == adts_stream(sample),
                        "the audio stream differs from ffmpeg's")
        for kind in ("video", "audio"):
            with self.subTest(kind):
                self.assert_times_are(run.frames_of(kind), packets(sample, kind))

    def assert_times_are(self, frames, expected):
        """Each packet is one frame or, if it has several NAL units, several frames with the same time."""
        for frame in frames:
            self.assertEqual((frame.pts, frame.play), (frame.dts, frame.dts))
        times = list(dict.fromkeys(frame.dts for frame in frames))
        self.assertEqual(times, [packet.dts for packet in expected])
