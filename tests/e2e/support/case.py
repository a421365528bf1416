"""The base of all end-to-end tests: a directory of its own, a sample, servers, runs of the host."""

import pathlib
import shutil
import tempfile
import unittest

from support import host, reference, samples
from support.nginx import Nginx

MAX_STOP_MS = 1500


class EndToEndCase(unittest.TestCase):
    maxDiff = 2000

    def setUp(self):
        self.directory = pathlib.Path(tempfile.mkdtemp(prefix="stream-e2e-"))
        self.addCleanup(shutil.rmtree, self.directory)
        self.www = self.directory / "www"
        self.www.mkdir()

    def make_sample(self, name="sample.ts", seconds=4):
        return samples.make_ts(self.www / name, seconds)

    def serve(self, directives="", tls=False):
        server = Nginx(self.directory, directives, tls).start()
        self.addCleanup(server.stop)
        return server

    def play(self, address, *options, **settings):
        run = host.run_host(address, self.directory, *options, **settings)
        self.assert_stopped_in_time(run)
        return run

    def assert_stopped_in_time(self, run):
        self.assertGreater(len(run.summary["stop_ms"]), 0, run.output)
        self.assertLessEqual(max(run.summary["stop_ms"]), MAX_STOP_MS, run.output)

    def assert_no_frame(self, run):
        self.assertEqual(run.exit_code, 1, run.output)
        self.assertEqual(run.frames, [], run.output)

    def assert_plays_whole(self, run, sample):
        """Everything came but the last PES packet of each stream, which nothing completes."""
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        for kind in ("video", "audio"):
            with self.subTest(kind):
                self._assert_stream_is_whole(run, sample, kind)

    def _assert_stream_is_whole(self, run, sample, kind):
        packets = reference.pes_packets(sample, kind)
        whole = reference.elementary_stream(sample, kind)
        came = run.elementary_stream(kind)
        self.assertGreater(len(packets), 2)
        self.assertEqual(len(whole) - len(came), packets[-1].size)
        self.assertTrue(whole.startswith(came), f"the {kind} stream differs from ffmpeg's")
        self.assert_frames_are(run.frames_of(kind), packets[:-1])

    def assert_frames_are(self, frames, packets):
        self.assertEqual([frame.pts for frame in frames], [packet.pts for packet in packets])
        self.assertEqual([frame.size for frame in frames], [packet.size for packet in packets])
        # Where a PES packet carries no DTS, what the frame has in its place is undefined.
        carried = [(i, packet.dts) for i, packet in enumerate(packets) if packet.dts != packet.pts]
        self.assertEqual([(i, frames[i].dts) for i, _ in carried], carried)
