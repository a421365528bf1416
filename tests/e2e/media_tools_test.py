"""Each command of ffmpeg runs once. Here a shell takes the place of ffmpeg."""

import concurrent.futures
import os
import pathlib
import subprocess
import tempfile
import unittest
import unittest.mock

from support import media_tools


class MediaToolsTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory(prefix="stream-tools-")
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)
        self.kept = self.directory / "kept"
        patch = unittest.mock.patch.dict(os.environ, STREAM_SAMPLES=str(self.kept))
        patch.start()
        self.addCleanup(patch.stop)
        media_tools.kept_directory.cache_clear()
        self.addCleanup(media_tools.kept_directory.cache_clear)
        self.runs = self.directory / "runs"

    def counted(self, script):
        """The script as a command that also adds a line to `runs` each time it is run."""
        return ["sh", "-c", f"echo run >> '{self.runs}'; {script}", "sh"]

    def times_run(self):
        return len(self.runs.read_text().splitlines())

    def test_same_command_runs_once_and_each_test_gets_a_copy(self):
        command = self.counted('echo whole > "$1"')
        first = media_tools.make_file(command, self.directory / "first.ts")
        first.write_text("changed by its test")
        second = media_tools.make_file(command, self.directory / "second.ts")
        self.assertEqual(second.read_text(), "whole\n")
        self.assertEqual(self.times_run(), 1)

    def test_tests_that_run_at_the_same_time_get_the_whole_file(self):
        command = self.counted('echo begin > "$1"; sleep 0.1; echo end >> "$1"')
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            outputs = list(pool.map(lambda number: media_tools.make_file(
                command, self.directory / f"{number}.ts").read_text(), range(8)))
        self.assertEqual(outputs, ["begin\nend\n"] * 8)
        self.assertEqual(self.times_run(), 1)

    def test_command_that_fails_leaves_nothing(self):
        command = self.counted('echo half > "$1"; exit 1')
        for _ in range(2):
            with self.assertRaises(subprocess.CalledProcessError):
                media_tools.make_file(command, self.directory / "a.ts")
        self.assertEqual(self.times_run(), 2)
        self.assertEqual([path for path in self.kept.iterdir() if path.is_dir()], [])

    def test_output_about_a_file_depends_on_its_content(self):
        path = self.directory / "a.ts"
        command = self.counted('cat "$1"') + [str(path)]
        for content in (b"first", b"second", b"first"):
            path.write_bytes(content)
            self.assertEqual(media_tools.output_of(command, path), content)
        self.assertEqual(self.times_run(), 2)

    def test_output_depends_on_the_files_that_the_command_reads(self):
        command = self.counted("cp key list")
        for key in (b"first", b"second", b"first"):
            media_tools.make_files(command, self.directory, {"key": key})
            self.assertEqual((self.directory / "list").read_bytes(), key)
        self.assertEqual(self.times_run(), 2)
        self.assertFalse((self.directory / "key").exists())
