"""Cache files when they cannot be written beside the host, or not on the disk at all."""

import concurrent.futures
import re

from support import host
from support.mp4 import Mp4Case
from support.waiting import wait_until

_REPORT = "mp4 cannot write "


class TempFolderTest(Mp4Case):
    def setUp(self):
        super().setUp()
        if host.is_emulated():
            self.skipTest("an emulated system has another cache and no /dev/full")
        self.cache = self.directory / "cache"
        self.environment = {"XDG_CACHE_HOME": str(self.cache)}
        self.tmp = self.directory / "host" / "tmp"

    def play(self, address, *options, **settings):
        return super().play(address, *options, environment=self.environment, **settings)

    def lines(self, run, start):
        return [line for line in run.output.splitlines() if line.startswith(start)]

    def test_movie_plays_from_the_users_cache_if_a_file_has_the_name_of_the_directory(self):
        self.tmp.write_text("no directory")
        sample = self.make_mp4()
        run = self.play_whole(self.serve().url("sample.mp4"), sample)
        (line,) = self.lines(run, "Cache files are in ")
        self.assertTrue(line.endswith(f"{self.tmp}/ cannot be written."), line)
        (restart_file,) = self.cache.glob("stream_downloader/tmp/*/*")
        self.assertEqual(restart_file.name, "mebo.mp4")
        self.assertIn(f"{restart_file.parent}/:", line)
        self.assertEqual(restart_file.read_bytes(), sample.read_bytes())
        self.assertEqual(self.tmp.read_text(), "no directory")

    def test_nothing_is_in_the_users_cache_if_the_directory_can_be_created(self):
        sample = self.make_mp4(2)
        run = self.play_whole(self.serve().url("sample.mp4"), sample)
        self.assertEqual(self.lines(run, "Cache files"), [])
        self.assertFalse(self.cache.exists())

    def test_full_disk_is_reported_once_per_start(self):
        self.make_mp4()
        self.tmp.mkdir()
        self.restart_file.symlink_to("/dev/full")  # accepts no byte
        # Only silence ends a start: bytes that cannot be written are kept, so the movie may still play. On a
        # busy machine a start may end before it receives a byte.
        twice = host.Prints(_REPORT, _REPORT, "[DOWNLOAD]: ", "[DOWNLOAD]: ")
        run = host.run_host(self.serve().url("sample.mp4"), self.directory, "--repeat", "99", idle_exit=0.5,
                            ending=host.Ending(until=twice), host=self._host, environment=self.environment)
        self.assert_stops_are_reported(run)
        self.assert_no_frame(run)
        reports = self.lines(run, _REPORT)
        self.assertGreaterEqual(len(reports), 2, run.output)
        self.assertEqual(len(set(reports)), 1)
        self.assertTrue(reports[0].startswith(f"{_REPORT}{self.restart_file}: "), reports)
        starts = re.split(r"repeat \d+\n", run.output)
        self.assertLessEqual(max(start.count(_REPORT) for start in starts), 1, run.output)

    def test_restart_file_deleted_in_mid_download_is_reported_once(self):
        sample = self.make_index_first(8)
        server = self.serve("limit_rate 300k; output_buffers 1 4k;")

        def remove_when_it_grows():
            wait_until(lambda: self.restart_file.exists()
                       and self.restart_file.stat().st_size > sample.stat().st_size // 4, "the file grows")
            self.restart_file.unlink()

        with concurrent.futures.ThreadPoolExecutor(1) as pool:
            removal = pool.submit(remove_when_it_grows)
            run = self.play(server.url("sample.mp4"), until=host.Prints("mp4 Download thread stop."))
            removal.result()
        (report,) = self.lines(run, _REPORT)
        self.assertTrue(report.startswith(f"{_REPORT}{self.restart_file}: "), report)
        self.assertFalse(self.restart_file.exists())
