"""Runs the console host and reads its results."""

import csv
import dataclasses
import itertools
import json
import os
import pathlib
import shlex
import shutil
import signal
import subprocess
import zlib

from support.waiting import wait_until

_PROXIES = ("http_proxy", "https_proxy", "all_proxy", "no_proxy")
_LIMIT_SECONDS = 90


@dataclasses.dataclass(frozen=True)
class Frame:
    kind: str
    pts: int
    dts: int
    play: int
    size: int
    crc32: int


@dataclasses.dataclass(frozen=True)
class Event:
    name: str
    value: str


class HostRun:
    """A run that has ended."""

    def __init__(self, exit_code, output, dump):
        self.exit_code = exit_code
        self.output = output
        self.dump = dump
        self.summary = _last_line_as_json(exit_code, output)
        self.frames = [_frame(row) for row in _rows(dump / "frames.csv")]
        self.events = [Event(row["event"], row["value"]) for row in _rows(dump / "events.csv")]

    def frames_of(self, kind):
        return [frame for frame in self.frames if frame.kind == kind]

    def elementary_stream(self, kind):
        return (self.dump / f"{kind}.es").read_bytes()

    def values(self, event_name):
        return [event.value for event in self.events if event.name == event_name]

    def messages(self):
        return self.values("message")

    def payloads(self, kind):
        """The payload of each frame. Payloads after the end of the dumped bytes are shorter or empty."""
        stream = self.elementary_stream(kind)
        ends = list(itertools.accumulate(frame.size for frame in self.frames_of(kind)))
        return [stream[begin:end] for begin, end in zip([0, *ends], ends)]

    def payloads_that_differ_from_their_crc(self):
        """The indexes of the frames whose dumped bytes do not match the CRC in frames.csv."""
        wrong = []
        for kind in ("video", "audio"):
            payloads = self.payloads(kind)
            for index, frame in enumerate(self.frames_of(kind)):
                if zlib.crc32(payloads[index]) != frame.crc32:
                    wrong.append((kind, index))
            if sum(map(len, payloads)) != len(self.elementary_stream(kind)):
                wrong.append((kind, "rest"))
        return wrong


def _last_line_as_json(exit_code, output):
    try:
        return json.loads(output.splitlines()[-1])
    except (IndexError, ValueError):
        message = f"exit code {exit_code} and no summary at the end of:\n{output}"
        raise AssertionError(message) from None


def _rows(path):
    with path.open(newline="", errors="surrogateescape") as file:
        return list(csv.DictReader(file))


def _frame(row):
    numbers = [int(row[name]) for name in ("pts", "dts", "play", "size")]
    return Frame(row["kind"], *numbers, int(row["crc32"], 16))


def _environment(more=()):
    """Without proxies, which cannot reach the loopback interface of this machine."""
    kept = {name: value for name, value in os.environ.items() if name.lower() not in _PROXIES}
    return {**kept, **dict(more)}


def _host():
    """The command that starts the host. It may begin with an emulator."""
    return shlex.split(os.environ["STREAM_HOST"])


def is_emulated():
    """Whether the host was built for another system."""
    return len(_host()) > 1


def copy_host(directory):
    """The command that starts a copy of the host in a new directory. Temporary files are stored beside the
    executable, so the copy does not see those of other runs."""
    *emulator, executable = _host()
    return [*emulator, *copy_program(executable, directory)]


def copy_program(executable, directory):
    """The same for any program, without an emulator."""
    executable = pathlib.Path(executable)
    directory.mkdir()
    for file in [executable, *executable.parent.glob("*.dll")]:
        shutil.copy2(file, directory)
    return [str(directory / executable.name)]


class LiveRun:
    """A run that has not ended, as it is passed to `until`."""

    def __init__(self, output, dump):
        self._output = output
        self.dump = dump

    def output(self):
        """What the host and the library have printed so far."""
        return self._output.read_text(errors="surrogateescape")


class Prints:
    """An `until`: the run has printed a line that begins with each of these texts, as often as they are
    given. The library prints that a transfer has ended, but does not report it to the player."""

    def __init__(self, *starts):
        self._starts = starts

    def __call__(self, live):
        lines = live.output().splitlines()
        return all(sum(line.startswith(start) for line in lines) >= self._starts.count(start)
                   for start in self._starts)


TRANSFER_ENDED = Prints("ts Download thread stop.")  # of a transport stream, for any reason

# How a run ends if its address cannot be fetched, by the extension of the address.
NOTHING_IS_FETCHED = {
    "ts": {"until": TRANSFER_ENDED},
    "m3u8": {"line": "PLAY Failed:"},
    "flv": {"line": "PLAY:FLV NO:"},
    "mp4": {"line": "PLAY:MP4 NO:"},
}


@dataclasses.dataclass(frozen=True)
class Ending:
    """What ends a run: a number of frames, or a number for each run of --repeat; a message or result that
    begins with `line`; or an interruption once `until`, which is called with a LiveRun, returns true. If none
    of them happens, the run ends after a silence so long that only a failure reaches it."""

    frames: int | tuple = ()
    line: str = ""
    until: object = None

    def _is_expected(self):
        return self.frames != () or self.line != ""

    def options(self, idle_exit):
        long_silence = 20 if self._is_expected() or self.until else 2
        options = ["--idle-exit", str(idle_exit or long_silence)]
        if self.frames != ():
            counts = self.frames if isinstance(self.frames, tuple) else (self.frames,)
            options += ["--expect-frames", ",".join(map(str, counts))]
        return options + (["--expect-line", self.line] if self.line else [])

    def reason(self):
        """The reason in the summary; None if silence or another option ends the run."""
        if self.until:
            return "interrupted"
        return "expected" if self._is_expected() else None


def _play(command, directory, dump, environment, until):
    """The exit code and the output."""
    output = pathlib.Path(directory) / "output"
    live = LiveRun(output, dump)
    with output.open("wb") as file:
        host = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=file,
                                stderr=subprocess.STDOUT, env=_environment(environment))
    try:
        if until is not None:
            wait_until(lambda: host.poll() is not None or until(live), "the end of the run",
                       _LIMIT_SECONDS)
            if host.poll() is None:
                host.send_signal(signal.SIGINT)
        return host.wait(timeout=_LIMIT_SECONDS), live.output()
    finally:
        host.kill()
        host.wait()


def run_host(address, directory, *options, host=None, prefix=(), idle_exit=None, environment=(),
             ending=Ending()):
    """Plays to the end of the stream and dumps to a new directory in `directory`. `environment` holds
    additional variables for the host."""
    dump = pathlib.Path(directory) / "dump"
    dump.mkdir()
    command = [*prefix, *(host or _host()), address, "--dump", str(dump), "--json",
               *ending.options(idle_exit), *options]
    exit_code, output = _play(command, directory, dump, environment, ending.until)
    return HostRun(exit_code, output, dump)
