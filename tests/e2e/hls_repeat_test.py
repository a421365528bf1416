"""--repeat: the same playlist again in the same process."""

import dataclasses
import itertools

from support import reference
from support.hls import HlsCase, without_leftover

_CYCLES = 50
_STOP_AFTER_SECONDS = 0.04  # during the first segments


@dataclasses.dataclass(frozen=True)
class _Expected:
    packets: list
    payloads: list

    def without_first(self):
        return _Expected(self.packets[1:], self.payloads[1:])


@dataclasses.dataclass(frozen=True)
class _Run:
    """The frames of one kind in one run."""

    is_first: bool
    had_frames_before: bool  # whether an earlier run had frames
    frames: list
    payloads: list


def _runs(whole, kind):
    """Splits the dump, which holds the frames of all runs in sequence."""
    frames = iter(whole.frames_of(kind))
    payloads = iter(whole.payloads(kind))
    before = 0
    for number, run in enumerate(whole.summary["runs"]):
        count = run[kind]["frames"]
        yield _Run(number == 0, before > 0, list(itertools.islice(frames, count)),
                   list(itertools.islice(payloads, count)))
        before += count


class RepeatTest(HlsCase):
    """A run also receives the frames that the previous run left unfinished: the audio frame has no time, and
    the video frame is the one that is skipped after a stop."""

    def assert_runs(self, run, sample, assert_run):
        """Calls assert_run for every run and kind."""
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        whole = self.joined(sample.segments)
        for kind in ("video", "audio"):
            expected = _Expected(
                reference.pes_packets(whole, kind), reference.payloads(whole, kind))
            self.assertGreater(len(expected.packets), 2)
            for number, one in enumerate(_runs(run, kind)):
                with self.subTest(kind, run=number):
                    assert_run(kind, one, expected)

    def assert_begins_with(self, frames, payloads, expected):
        """Expects the frames to be the first ones of the sample."""
        self.assert_frames_are(frames, expected.packets[: len(frames)])
        self.assertTrue(payloads == expected.payloads[: len(frames)], "the bytes differ")

    def test_each_run_plays_whole_after_the_last_audio_frame_of_the_previous_run(self):
        sample = self.make_hls(3)
        whole = self.frames_of(self.joined(sample.segments))
        run = self.play(self.serve().url(sample.playlist.name), "--repeat", "2",
                        frames=(whole, whole + 1))
        self.assertEqual(len(run.summary["runs"]), 3)
        self.assert_runs(run, sample, self.assert_whole)

    def assert_whole(self, kind, run, expected):
        leftover = 0 if kind == "video" or run.is_first else 1
        if leftover:
            self.assertEqual((run.frames[0].pts, run.payloads[0]), (0, expected.payloads[-1]))
        self.assertEqual(len(run.frames) - leftover, len(expected.packets) - 1)
        self.assert_begins_with(run.frames[leftover:], run.payloads[leftover:], expected)

    def test_quick_stops_of_an_on_demand_stream_play_its_beginning(self):
        self.assert_survives_quick_stops(self.make_hls(30, 0.4))

    def test_quick_stops_of_a_live_stream_play_its_beginning(self):
        sample = self.make_hls(30, 0.4)
        text = sample.playlist.read_text()
        sample.playlist.write_text(text.replace("#EXT-X-ENDLIST\n", ""))
        self.assert_survives_quick_stops(sample)

    def assert_survives_quick_stops(self, sample):
        address = self.serve().url(sample.playlist.name)
        run = self.play(address, "--repeat", str(_CYCLES), "--stop-after",
                        str(_STOP_AFTER_SECONDS))
        for line in (f"PLAY M3U8:{address}", "PLAY STOP...", "PLAY STOP OK"):
            self.assertEqual(run.messages().count(line), 1 + _CYCLES, line)
        self.assertEqual(len(run.summary["stop_ms"]), 1 + _CYCLES)
        self.assert_runs(run, sample, self.assert_beginning)

    def assert_beginning(self, kind, run, expected):
        leftover = len(run.frames) - len(without_leftover(run.frames))
        if leftover:
            self.assertEqual((kind, run.is_first), ("audio", False))
            self.assertTrue(any(whole.startswith(run.payloads[0]) for whole in expected.payloads))
        frames, payloads = run.frames[leftover:], run.payloads[leftover:]
        if kind == "video" and not run.is_first and not run.had_frames_before and frames:
            # If nothing was left over, the first video frame of this run was skipped.
            if frames[0].pts == expected.packets[1].pts:
                expected = expected.without_first()
        self.assert_begins_with(frames, payloads, expected)
