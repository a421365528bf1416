"""Local addresses of something other than a regular file."""

import os
import pathlib
import socket
import tempfile

from support import host
from support.hls import HlsCase

_REFUSED = "A FIFO, socket, device or directory is not played: "
_DEVICE = "/dev/zero"

_PLAYLIST = """#EXTM3U
#EXT-X-TARGETDURATION:1
#EXTINF:1,
fifo.ts
#EXTINF:1,
fifo.ts?another
#EXTINF:1,
seg0000.ts
#EXT-X-ENDLIST
"""


class SpecialFileTest(HlsCase):
    def setUp(self):
        if host.is_emulated():
            self.skipTest("the emulator does not show a FIFO, socket or device as one")
        super().setUp()

    def make_fifo(self, name):
        path = self.directory / name
        os.mkfifo(path)
        return path

    def assert_refused(self, address, kind):
        """Plays in a directory of its own, so that one test can do so several times."""
        directory = pathlib.Path(tempfile.mkdtemp(dir=self.directory))
        run = self.play(address, directory=directory, **host.NOTHING_IS_FETCHED[kind])
        self.assert_no_frame(run)
        refusals = [line for line in run.output.splitlines() if line.startswith(_REFUSED)]
        self.assertEqual(refusals, [_REFUSED + address], run.output)

    def test_fifo_is_refused_by_every_format(self):
        for kind in host.NOTHING_IS_FETCHED:
            with self.subTest(kind):
                self.assert_refused(f"file://{self.make_fifo(f'fifo.{kind}')}", kind)

    def test_socket_is_refused(self):
        path = self.directory / "socket.flv"
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(str(path))
            self.assert_refused(f"file://{path}", "flv")

    def test_link_to_a_device_is_refused_by_every_format(self):
        for kind in host.NOTHING_IS_FETCHED:
            with self.subTest(kind):
                path = self.directory / f"device.{kind}"
                path.symlink_to(_DEVICE)
                self.assert_refused(f"file://{path}", kind)

    def test_directory_is_refused(self):
        path = self.directory / "directory.mp4"
        path.mkdir()
        self.assert_refused(f"file://{path}", "mp4")

    def test_fifo_under_another_spelling_of_its_address_is_refused(self):
        """libcurl decodes the path, drops the query and accepts a host name that means this machine."""
        self.make_fifo("a b.flv")
        for spelling in ("file://{}/a%20b.flv", "file://localhost{}/a%20b.flv",
                         "file://{}/run/../a%20b.flv?query#fragment", "FILE:{}/a%20b.flv?http"):
            with self.subTest(spelling):
                self.assert_refused(spelling.format(self.directory), "flv")

    def test_segments_of_a_playlist_that_name_a_fifo_are_skipped_with_one_line(self):
        segments = self.make_hls(1).segments
        os.mkfifo(self.www / "fifo.ts")
        playlist = self.www / "mixed.m3u8"
        playlist.write_text(_PLAYLIST)
        run = self.play_segments(f"file://{playlist}", segments)
        self.assertEqual(run.output.count(_REFUSED), 1, run.output)

    def test_link_to_a_regular_file_plays(self):
        sample = self.make_sample()
        link = self.directory / "link.ts"
        link.symlink_to(sample)
        run = self.play_whole(f"file://{link}", sample)
        self.assertNotIn(_REFUSED, run.output)
