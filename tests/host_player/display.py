"""A display of its own for a test: shows windows, reads their colours and titles, and presses keys."""

import os
import subprocess

from support.waiting import wait_until

_SIZE = "1024x768"
_TOOL_LIMIT_SECONDS = 20


class Display:
    """Xvfb, which chooses a free display number itself."""

    def __init__(self, directory):
        self._directory = directory
        self._server = None
        self._manager = None
        self.name = None

    def start(self):
        read_end, write_end = os.pipe()
        command = ["Xvfb", "-displayfd", str(write_end), "-screen", "0", f"{_SIZE}x24",
                   "-nolisten", "tcp", "-noreset"]
        with (self._directory / "xvfb.log").open("w") as log:
            self._server = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log,
                                            stderr=log, pass_fds=[write_end])
        os.close(write_end)
        with os.fdopen(read_end) as numbers:
            number = numbers.readline().strip()  # is written when the display is ready
        if not number:
            raise RuntimeError("Xvfb does not start: " + (self._directory / "xvfb.log").read_text())
        self.name = f":{number}"
        return self

    def start_window_manager(self):
        """Starts the window manager that full screen windows need."""
        self._manager = subprocess.Popen(
            ["openbox", "--sm-disable"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, env={**os.environ, "DISPLAY": self.name})
        # Without a window manager there are no desktops.
        wait_until(lambda: self._tool("get_num_desktops", check=False).strip() not in ("", "0"),
                   "openbox manages the display")

    def stop(self):
        if self._manager is not None:
            self._manager.terminate()
            self._manager.wait(timeout=30)
        self._server.terminate()
        self._server.wait(timeout=30)

    def press(self, key):
        """Presses a key in the window under the pointer, which is in the middle of the display."""
        self._tool("key", key)

    def windows(self):
        """The titles of all windows that have one, by window number."""
        found = self._tool("search", "--name", ".", check=False).split()
        return {window: self._tool("getwindowname", window, check=False).strip()
                for window in found}

    def size_of_window(self):
        (window,) = self.windows()
        lines = self._tool("getwindowgeometry", "--shell", window).splitlines()
        values = dict(line.split("=") for line in lines)
        return int(values["WIDTH"]), int(values["HEIGHT"])

    def resize_window(self, width, height):
        (window,) = self.windows()
        self._tool("windowsize", window, str(width), str(height))

    def colour(self, x=512, y=384):
        """Red, green and blue at a position. The middle of the screen is the middle of the window."""
        command = ["ffmpeg", "-nostdin", "-v", "error", "-f", "x11grab", "-draw_mouse", "0",
                   "-video_size", "2x2", "-i", f"{self.name}+{x},{y}", "-frames:v", "1",
                   "-f", "rawvideo", "-pix_fmt", "rgb24", "-"]
        grabbed = subprocess.run(command, capture_output=True, check=True,
                                 timeout=_TOOL_LIMIT_SECONDS)
        return tuple(grabbed.stdout[:3])

    def wait_for_colour(self, name, **position):
        wait_until(lambda: colour_name(self.colour(**position)) == name, f"the picture is {name}")

    def _tool(self, *arguments, check=True):
        environment = {**os.environ, "DISPLAY": self.name}
        ended = subprocess.run(["xdotool", *arguments], capture_output=True, text=True, check=check,
                               env=environment, timeout=_TOOL_LIMIT_SECONDS)
        return ended.stdout


def colour_name(colour):
    """The name of a colour. Codecs and conversions change colours a little, so it is only approximate."""
    bright = tuple(value > 128 for value in colour)
    names = {(True, False, False): "red", (False, True, False): "green",
             (False, False, True): "blue", (False, False, False): "black"}
    return names.get(bright, str(colour))
