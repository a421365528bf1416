"""FLV samples and the frames expected from them: each NAL unit is a frame, and each AAC frame has a
header."""

import dataclasses
import re
import subprocess

from support import reference, samples
from support.case import EndToEndCase

TICKS = 90  # per millisecond
_START_CODE = b"\0\0\0\1"
_PARAMETER_SETS = (7, 8)
_ADTS_SIZE = 7
_AUDIO_TAG = 8
_VIDEO_TAG = 9


@dataclasses.dataclass(frozen=True)
class NalUnit:
    payload: bytes

    @property
    def kind(self):
        return self.payload[0] & 0x1F


def nal_units(stream):
    """The NAL units of an Annex B stream with start codes of three or four bytes."""
    parts = re.split(b"\0*\0\0\1", stream)
    return [NalUnit(part.rstrip(b"\0")) for part in parts if part]


def expected_video(path):
    """Payloads of the frames: first the parameter sets, which ffmpeg repeats, then all other units."""
    units = nal_units(reference.elementary_stream(path, "video"))
    sets = [next(unit for unit in units if unit.kind == kind) for kind in _PARAMETER_SETS]
    pictures = [unit for unit in units if unit.kind not in _PARAMETER_SETS]
    return [_START_CODE + unit.payload for unit in [*sets, *pictures]]


def expected_times(path, kind):
    """The time of each tag, and the number of bytes in its frames."""
    added = {"video": 0, "audio": _ADTS_SIZE}[kind]
    packets = reference.pes_packets(path, kind)
    return [(packet.dts * TICKS, packet.size + added) for packet in packets]


def grouped_times(frames):
    """The same for frames. Those of one tag have the same time."""
    groups = []
    for frame in frames:
        if groups and groups[-1][0] == frame.dts:
            groups[-1] = (frame.dts, groups[-1][1] + frame.size)
        else:
            groups.append((frame.dts, frame.size))
    return groups


def _whole_tags(data):
    """Type and payload of each complete tag."""
    at = 9 + 4
    while at + 11 <= len(data):
        end = at + 11 + int.from_bytes(data[at + 1 : at + 4], "big")
        if end > len(data):
            return
        yield data[at], data[at + 11 : end]
        at = end + 4


def _units_of_tag(payload):
    """How many H.264 NAL units, each after its length, a video tag has."""
    at, units = 5, 0
    while at < len(payload):
        at += 4 + int.from_bytes(payload[at : at + 4], "big")
        units += 1
    return units


def frames_of_whole_tags(data):
    """How many frames a truncated stream has, of AAC and of H.264 with its two parameter sets."""
    frames = len(_PARAMETER_SETS)
    for kind, payload in _whole_tags(data):
        is_data = kind in (_AUDIO_TAG, _VIDEO_TAG) and payload[1] == 1
        frames += _units_of_tag(payload) if is_data and kind == _VIDEO_TAG else is_data
    return frames


class FlvCase(EndToEndCase):
    def make_flv(self, name="sample.flv", seconds=4):
        return samples.make_flv(self.www / name, seconds)

    def play_flv(self, address, sample, *options, **settings):
        """Plays all frames of the sample."""
        run = self.play(address, *options, frames=self.frames_of(sample), **settings)
        self.assert_plays_flv(run, sample)
        return run

    def frames_of(self, sample):
        return len(expected_video(sample)) + len(reference.pes_packets(sample, "audio"))

    def assert_plays_flv(self, run, sample):
        """Expects all frames in order, with the times of the tags."""
        self.assertEqual(run.exit_code, 0, run.output)
        self.assert_frames_are_those_of(run, sample)
        audio = run.elementary_stream("audio")
        self.assertEqual(audio, reference.elementary_stream(sample, "audio"))
        self.assertEqual(run.payloads("video"), expected_video(sample))
        self.assert_decodes(audio)

    def assert_frames_are_those_of(self, run, sample):
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        for kind, parameter_sets in (("video", 2), ("audio", 0)):
            with self.subTest(kind):
                frames = run.frames_of(kind)
                self.assertTrue(all(frame.pts == frame.dts == frame.play for frame in frames))
                times = grouped_times(frames[parameter_sets:])
                self.assertGreater(len(times), 2)
                self.assertEqual(times, expected_times(sample, kind)[: len(times)])

    def assert_decodes(self, adts):
        command = ["ffmpeg", "-v", "error", "-xerror", "-f", "aac", "-i", "-", "-f", "null", "-"]
        ended = subprocess.run(command, input=adts, capture_output=True, check=False, timeout=60)
        self.assertEqual((ended.returncode, ended.stderr), (0, b""))
