"""A host as Visual C++ would have compiled it, and the library compiled by GCC, in one process."""

import os
import shlex
import subprocess

from support.case import EndToEndCase
from support.flv import FlvCase
from support.hls import HlsCase
from support.mp4 import Mp4Case

_LIMIT_SECONDS = 60  # after which a hang is a failure


class _MsvcHostMixin:
    def run_case(self, *arguments):
        """What the host prints while it runs the case."""
        command = [*shlex.split(os.environ["MSVC_HOST"]), *map(str, arguments)]
        run = subprocess.run(command, cwd=self.directory, stdin=subprocess.DEVNULL, check=False,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=_LIMIT_SECONDS)
        output = run.stdout.decode(errors="replace")
        self.assertEqual(run.returncode, 0, output[-2000:])
        self.assertIn("passed", output.splitlines(), output[-2000:])
        return output

    def assert_same_frames(self, run, times=("duration", "buffered")):
        """Expects the host to receive the frames of a run of the GCC host, and the same of these times. Play
        times are not compared: they are interpolated over the frames that are queued at a moment."""
        self.assertGreater(len(run.frames), 20)
        output = self.run_case("frames", len(run.frames), run.summary["address"])
        rows = [line.split(",") for line in output.splitlines()]
        for event in times:
            received = {int(row[1]) for row in rows if row[0] == event}
            expected = {int(float(value) * 1000) for value in run.values(event)}
            self.assertEqual(max(received, default=0), max(expected, default=0), event)
        for kind in ("video", "audio"):
            received = [tuple(int(row[column]) for column in (2, 3, 5, 6))
                        for row in rows if row[0] == kind]
            expected = [(frame.pts, frame.dts, frame.size, frame.crc32)
                        for frame in run.frames_of(kind)]
            self.assertEqual(received, expected)


class StringsTest(_MsvcHostMixin, EndToEndCase):
    def test_members_answer_while_nothing_plays(self):
        self.run_case("members")

    def test_null_player_is_silent(self):
        self.run_case("null_player")

    def test_assigned_facade_uses_the_player_of_the_other(self):
        self.run_case("assignment")

    def test_player_that_is_the_second_base_is_called(self):
        self.run_case("another_base")

    def test_destruction_stops_the_stream(self):
        self.run_case("destruction")

    def test_zero_fill_is_reached(self):
        self.run_case("zero_fill")

    def test_addresses_of_all_lengths_are_echoed(self):
        self.run_case("lengths")

    def test_zeros_inside_an_address_are_echoed(self):
        self.run_case("zeros")

    def test_moved_and_roomy_strings_are_echoed(self):
        self.run_case("moved_and_roomy")

    def test_nine_thousand_calls_leave_no_heap_block(self):
        self.run_case("heap_blocks")

    def test_gcc_player_at_the_address_of_another(self):
        self.run_case("same_address")


class TsTest(_MsvcHostMixin, EndToEndCase):
    def test_frames_match_the_gcc_host(self):
        sample = self.make_sample()
        run = self.play_whole(self.serve().url(sample.name), sample)
        # The durations of TS depend on what is queued at a moment.
        self.assert_same_frames(run, times=("buffered",))

    def test_seek_starts_at_the_position(self):
        self.run_case("seek", self.serve().url(self.make_sample().name))

    def test_stop_ends_the_calls(self):
        self.run_case("stop", self.serve().url(self.make_sample().name))

    def test_players_of_both_compilers_alternate(self):
        self.run_case("both_kinds", self.serve().url(self.make_sample().name))


class HlsTest(_MsvcHostMixin, HlsCase):
    def test_frames_match_the_gcc_host(self):
        sample = self.make_hls(3, 1)
        address = self.serve().url(sample.playlist.name)
        self.assert_same_frames(self.play_segments(address, sample.segments))


class FlvTest(_MsvcHostMixin, FlvCase):
    def test_frames_match_the_gcc_host(self):
        sample = self.make_flv()
        self.assert_same_frames(self.play_flv(self.serve().url(sample.name), sample))


class Mp4Test(_MsvcHostMixin, Mp4Case):
    def test_frames_match_the_gcc_host(self):
        sample = self.make_mp4()
        self.assert_same_frames(self.play_whole(self.serve().url(sample.name), sample))

    def test_missing_file_is_reported_as_a_message_and_as_a_result(self):
        self.run_case("missing_file", self.serve().url("missing.mp4"))
