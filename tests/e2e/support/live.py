"""A live stream: ffmpeg writes segments in real time, and deletes those that have left the playlist."""

import pathlib
import signal
import subprocess

from support.hls import encoder_codecs, encoder_inputs
from support.waiting import wait_until

_SEGMENT_SECONDS = 1
_LISTED = 5


class LiveEncoder:
    """Writes live.m3u8 to `www`, and a copy of every segment, which is not deleted, to `archive`."""

    def __init__(self, www, archive, seconds):
        self.playlist = pathlib.Path(www) / "live.m3u8"
        self._archive = pathlib.Path(archive)
        self._archive.mkdir()
        live = f"hls_list_size={_LISTED}:hls_flags=delete_segments+temp_file"
        outputs = [self._output(self.playlist, live),
                   self._output(self._archive / "all.m3u8", "hls_list_size=0")]
        command = ["ffmpeg", "-nostdin", "-v", "error", "-y"]
        for option in encoder_inputs(seconds):
            command += ["-re"] * (option == "-f") + [option]
        command += ["-map", "0:v", "-map", "1:a", *encoder_codecs(_SEGMENT_SECONDS)]
        self._command = [*command, "-f", "tee", "|".join(outputs)]
        self._process = None

    @staticmethod
    def _output(playlist, options):
        names = playlist.parent / "live%04d.ts"
        form = f"f=hls:hls_time={_SEGMENT_SECONDS}:hls_segment_filename={names}"
        return f"[{form}:{options}]{playlist}"

    def start(self):
        """Returns once a playlist exists."""
        self._process = subprocess.Popen(self._command, stdin=subprocess.DEVNULL)
        wait_until(self.playlist.exists, "ffmpeg writes a playlist")

    def stop(self):
        self._process.send_signal(signal.SIGINT)
        try:
            self._process.wait(timeout=30)
        finally:
            self._process.kill()
            self._process.wait()

    def segments(self):
        """Copies of all segments so far."""
        return sorted(self._archive.glob("live*.ts"))
