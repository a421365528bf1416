"""The Windows host under wine and the native host receive the same frames of a stream."""

import os
import pathlib
import shutil
import tempfile
import unittest

from support.case import EndToEndCase


def _comparable(frames):
    """All fields but the play time. It is interpolated over the frames that are queued at a moment, so it
    differs between two runs of the same host too."""
    return [(frame.pts, frame.dts, frame.size, frame.crc32) for frame in frames]


class SameDumpTest(EndToEndCase):
    def test_http(self):
        sample = self.make_sample()
        address = self.serve().url(sample.name)
        self.assert_same(self.play_on("NATIVE_HOST", address, sample),
                         self.play_on("WINDOWS_HOST", address, sample))

    def test_local_file(self):
        sample = self.make_sample()
        drive = pathlib.Path(os.environ["WINDOWS_DRIVE"])
        folder = pathlib.Path(tempfile.mkdtemp(prefix="same dump ", dir=drive))
        self.addCleanup(shutil.rmtree, folder)
        shutil.copy(sample, folder)
        windows_address = f"file://C:\\{folder.name}\\{sample.name}"
        self.assert_same(
            self.play_on("NATIVE_HOST", f"file://{sample}", sample),
            self.play_on("WINDOWS_HOST", windows_address, sample))

    def play_on(self, name, address, sample):
        directory = self.directory / name
        directory.mkdir()
        os.environ["STREAM_HOST"] = os.environ[name]
        run = self.play(address, directory=directory, frames=self.frames_of(sample))
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertIn(f"PLAY TS OK:{address}", run.messages())
        return run

    def assert_same(self, native, windows):
        for kind in ("video", "audio"):
            with self.subTest(kind):
                frames = _comparable(native.frames_of(kind))
                self.assertGreater(len(frames), 10)
                self.assertEqual(_comparable(windows.frames_of(kind)), frames)
                self.assertEqual(
                    windows.elementary_stream(kind), native.elementary_stream(kind))


if __name__ == "__main__":
    unittest.main()
