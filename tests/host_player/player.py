"""Runs stream_player and reads what it prints."""

import os
import re
import signal
import subprocess

from display import Display
from support.case import EndToEndCase
from support import host
from support.waiting import wait_until

_LIMIT_SECONDS = 60
_IDLE_SECONDS = 2  # of silence, after which a stream counts as ended
_SUMMARY = re.compile(
    r"video: (?P<video_frames>\d+) frames received, (?P<access_units>\d+) access units, "
    r"(?P<pictures>\d+) pictures decoded, (?P<shown>\d+) shown, (?P<late>\d+) late, "
    r"(?P<skipped>\d+) skipped; audio: (?P<audio_frames>\d+) frames received, "
    r"(?P<sounds>\d+) decoded; decoder errors: (?P<errors>\d+); "
    r"picture and sound (at most (?P<apart>[0-9.]+) ms apart|never met)$")
# Short streams may end before their duration is reported.
_TITLE = re.compile(r"(?P<position>[0-9:]+)( / (?P<duration>[0-9:]+))?, "
                    r"buffered to (?P<buffered>[0-9:]+)(?P<state> \([a-z]+\))?"
                    r"( - (?P<status>.*))?$")
_SIZE = "320x240"


def seconds_of(text):
    total = 0
    for part in text.split(":"):
        total = total * 60 + int(part)
    return total


def make_colours(path, colours, seconds_each, *options):
    """Makes a stream of `seconds_each` seconds of each colour, with a tone and a key picture every second."""
    seconds = seconds_each * len(colours)
    command = ["ffmpeg", "-nostdin", "-v", "error", "-y"]
    for colour in colours:
        picture = f"color={colour}:size={_SIZE}:rate=25:duration={seconds_each}"
        command += ["-f", "lavfi", "-i", picture]
    command += ["-f", "lavfi", "-i", f"sine=frequency=440:sample_rate=44100:duration={seconds}"]
    joined = "".join(f"[{index}]" for index in range(len(colours)))
    command += ["-filter_complex", f"{joined}concat=n={len(colours)}[picture]"]
    command += ["-map", "[picture]", "-map", f"{len(colours)}:a", "-pix_fmt", "yuv420p"]
    command += ["-c:a", "aac", "-b:a", "96k", "-g", "25"]
    command += options or ("-c:v", "libx264", "-preset", "veryfast", "-bf", "2")
    subprocess.run([*command, str(path)], check=True, timeout=_LIMIT_SECONDS)
    return path


class PlayerRun:
    """A running player. `environment` overrides the variables that it inherits; None removes one."""

    def __init__(self, command, directory, environment):
        self._output = directory / "player.out"
        self._errors = directory / "player.err"
        own = {name: value for name, value in os.environ.items() if "proxy" not in name.lower()}
        own["SDL_AUDIODRIVER"] = "dummy"
        own.update(environment)
        own = {name: value for name, value in own.items() if value is not None}
        with self._output.open("w") as output, self._errors.open("w") as errors:
            self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                             stderr=errors, env=own)

    def is_running(self):
        return self._process.poll() is None

    def interrupt(self):
        self._process.send_signal(signal.SIGINT)

    def wait(self):
        """The exit code."""
        return self._process.wait(timeout=_LIMIT_SECONDS)

    def kill(self):
        self._process.kill()
        self._process.wait()

    def error_lines(self):
        return self._errors.read_text(errors="replace").splitlines()

    def summary(self):
        """The counts in the last line, as numbers. `apart` is None if nothing was compared."""
        text = self._output.read_text(errors="replace")
        match = _SUMMARY.match(text.splitlines()[-1])
        if match is None:
            raise AssertionError(f"no summary at the end of:\n{text}\n{self.error_lines()}")
        return {name: None if value is None else float(value)
                for name, value in match.groupdict().items()}


class PlayerCase(EndToEndCase):
    """Each case has its own display and its own copy of the player, because temporary files are stored beside
    the executable."""

    def setUp(self):
        super().setUp()
        self.display = Display(self.directory).start()
        self.addCleanup(self.display.stop)
        self._player = host.copy_program(os.environ["STREAM_PLAYER"], self.directory / "player")
        self._host = host.copy_host(self.directory / "host")

    def start_player(self, address, *options, idle=_IDLE_SECONDS, **environment):
        run = PlayerRun([*self._player, address, "--idle", str(idle), *options], self.directory,
                        {"DISPLAY": self.display.name, "WAYLAND_DISPLAY": None, **environment})
        self.addCleanup(run.kill)
        return run

    def play_to_end(self, address, *options, **environment):
        run = self.start_player(address, "--exit", *options, **environment)
        self.assert_ends(run)
        return run

    def title(self):
        """The parts of the title, or None before the position is known."""
        titles = list(self.display.windows().values())
        match = _TITLE.match(titles[0]) if titles else None
        return match.groupdict() if match else None

    def wait_for_title(self, condition, what):
        def current():
            title = self.title()
            return title if title and condition(title) else None

        return wait_until(current, f"the title shows {what}")

    def wait_for_state(self, state):
        return self.wait_for_title(lambda title: title["state"] == f" ({state})", state)

    def frames_of_console_host(self, address):
        """How many video frames and how many audio frames the console host receives."""
        run = host.run_host(address, self.directory, host=self._host)
        self.assertEqual(run.exit_code, 0, run.output)
        return len(run.frames_of("video")), len(run.frames_of("audio"))

    def assert_ends(self, run):
        self.assertEqual(run.wait(), 0, run.error_lines())
