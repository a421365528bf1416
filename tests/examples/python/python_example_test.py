"""The dump of the Python host equals that of the console host byte for byte, except for what differs between
any two runs: the arrival times, the order of video frames among audio frames, and in TS
and HLS the play time."""

import csv
import os
import subprocess
import sys
import venv

from support.case import EndToEndCase
from support.flv import FlvCase
from support.hls import HlsCase
from support.mp4 import Mp4Case

_LIMIT_SECONDS = 90
_ARRIVAL = "arrival_ms"
_PLAY = "play"


def _rows(path, kind, without):
    """The header, and the rows of one kind without the columns `without`."""
    with path.open(newline="") as file:
        header, *rows = csv.reader(file)
    kept = [header.index(name) for name in header if name not in without]
    return header, [[row[i] for i in kept] for row in rows if row[0] == kind]


class PythonExampleMixin:
    """For a case of the end-to-end tests: `make` makes the sample and returns it with the name to request,
    `play_sample` plays all of it, and `without` names the columns that differ."""

    without = (_ARRIVAL,)

    def dump_by_python(self, address, count):
        """Returns the directory of the dump. Cache files are stored beside the interpreter, so a copy of it
        is run."""
        directory = self.directory / "python dump"
        directory.mkdir()
        venv.create(self.directory / "python", symlinks=False)
        command = [str(self.directory / "python" / "bin" / "python3"), "-B", os.environ["PYTHON_EXAMPLE"],
                   os.environ["C_INTERFACE"], address, str(directory), str(count)]
        ended = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, timeout=_LIMIT_SECONDS, check=False, text=True,
                               errors="replace")  # the dates that HLS prints are not UTF-8
        self.assertEqual(ended.returncode, 0, ended.stdout)
        self.assertNotIn("Traceback", ended.stdout)  # an exception in a callback is only printed
        return directory

    def test_dump_matches_the_console_host(self):
        sample, name = self.make()
        address = self.serve().url(name)
        run = self.play_sample(address, sample)
        dump = self.dump_by_python(address, len(run.frames))
        for kind in ("video", "audio"):
            with self.subTest(kind):
                self.assertGreater(len(run.frames_of(kind)), 5)
                self.assertTrue((dump / f"{kind}.es").read_bytes() == run.elementary_stream(kind),
                                f"{kind}.es differs")
                self.assertEqual(_rows(dump / "frames.csv", kind, self.without),
                                 _rows(run.dump / "frames.csv", kind, self.without))


class FlvDumpTest(PythonExampleMixin, FlvCase):
    def make(self):
        sample = self.make_flv(seconds=2)
        return sample, sample.name

    def play_sample(self, address, sample):
        return self.play_flv(address, sample)


class Mp4DumpTest(PythonExampleMixin, Mp4Case):
    def make(self):
        sample = self.make_mp4(2)
        return sample, sample.name

    def play_sample(self, address, sample):
        return self.play_whole(address, sample)


class TsDumpTest(PythonExampleMixin, EndToEndCase):
    without = (_ARRIVAL, _PLAY)

    def make(self):
        sample = self.make_sample(seconds=2)
        return sample, sample.name

    def play_sample(self, address, sample):
        return self.play_whole(address, sample)


class HlsDumpTest(PythonExampleMixin, HlsCase):
    without = (_ARRIVAL, _PLAY)

    def make(self):
        sample = self.make_hls(3, 1)
        return sample, sample.playlist.name

    def play_sample(self, address, sample):
        return self.play_segments(address, sample.segments)


class UnknownSchemeTest(EndToEndCase):
    def test_error_text_is_printed(self):
        command = [sys.executable, "-B", os.environ["PYTHON_EXAMPLE"], os.environ["C_INTERFACE"],
                   "rtmp://host/a", str(self.directory), "1"]
        ended = subprocess.run(command, capture_output=True, timeout=_LIMIT_SECONDS, check=False, text=True)
        self.assertEqual(ended.returncode, 1)
        self.assertEqual(ended.stderr, "the address is neither http, https nor file://\n")
