"""The C host prints the frames that the console host receives."""

import os
import re
import shlex
import subprocess

from support.flv import FlvCase

_LIMIT_SECONDS = 90


class CExampleTest(FlvCase):
    def run_example(self, *arguments):
        """The exit code, and standard output and errors as one text."""
        command = [*shlex.split(os.environ["C_EXAMPLE"]), *arguments]
        ended = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, timeout=_LIMIT_SECONDS, check=False, text=True)
        return ended.returncode, ended.stdout

    def test_frames_match_the_console_host(self):
        sample = self.make_flv(seconds=2)
        address = self.serve().url(sample.name)
        run = self.play_flv(address, sample)
        exit_code, output = self.run_example(address, str(self.frames_of(sample)))
        self.assertEqual(exit_code, 0, output)
        for kind in ("video", "audio"):
            sizes = re.findall(rf"{kind} frame of (\d+) bytes", output)
            self.assertEqual(list(map(int, sizes)), [frame.size for frame in run.frames_of(kind)])
        for line in (f"PLAY FLV:{address}", f"PLAY:FLV CACHE_NO OK:{address}"):
            self.assertEqual(output.splitlines().count(line), 1, output)

    def test_ends_after_the_number_of_frames(self):
        sample = self.make_flv(seconds=2)
        exit_code, output = self.run_example(self.serve().url(sample.name), "3")
        self.assertEqual(exit_code, 0, output)
        self.assertEqual(len(re.findall(r"(?:video|audio) frame of", output)), 3, output)

    def test_ends_after_silence(self):
        server = self.serve()
        for name, line in (("missing.flv", "PLAY:FLV NO:"), ("missing.ts", "PLAY TS:")):
            with self.subTest(name):
                exit_code, output = self.run_example(server.url(name))
                self.assertEqual(exit_code, 1, output)
                self.assertIn(f"{line}{server.url(name)}\n", output)

    def test_unknown_scheme_is_an_error_with_its_text(self):
        exit_code, output = self.run_example("rtmp://host/a.flv")
        self.assertEqual(exit_code, 1, output)
        self.assertIn("PLAY UNKOWN:rtmp://host/a.flv\n", output)
        self.assertIn("play: the address is neither http, https nor file://\n", output)
