"""The base of all end-to-end tests: a directory of its own, a sample, servers, and runs of the host."""

import pathlib
import shutil
import tempfile
import unittest

from support import host, reference, samples
from support.nginx import Nginx


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

    def play(self, address, *options, frames=(), line="", until=None, directory=None, **settings):
        """A run that ends as support.host.Ending defines for `frames`, `line` and `until`."""
        ending = host.Ending(frames, line, until)
        run = host.run_host(address, directory or self.directory, *options, ending=ending, **settings)
        self.assert_stops_are_reported(run)
        if ending.reason() is not None:
            reasons = {one["exit_reason"] for one in run.summary["runs"]}
            self.assertEqual(reasons, {ending.reason()}, run.output)
        return run

    def play_whole(self, address, sample, *options, **settings):
        """Plays all frames of the sample."""
        frames = self.frames_of(sample)
        run = self.play(address, *options, frames=frames, **settings)
        self.assert_plays_whole(run, sample)
        return run

    def frames_of(self, sample):
        """How many frames a run that plays the sample receives."""
        return sum(len(reference.pes_packets(sample, kind)) - 1 for kind in ("video", "audio"))

    def assert_stops_are_reported(self, run):
        for one in run.summary["runs"]:
            self.assertGreater(len(one["stop_ms"]), 0, run.output)

    def assert_no_frame(self, run):
        self.assertEqual(run.exit_code, 1, run.output)
        self.assertEqual(run.frames, [], run.output)

    def assert_plays_whole(self, run, sample):
        """Expects everything but the last PES packet of each stream, which is never complete."""
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        for kind in ("video", "audio"):
            with self.subTest(kind):
                self._assert_stream_is_whole(run, sample, kind)

    def _assert_stream_is_whole(self, run, sample, kind):
        packets = reference.pes_packets(sample, kind)
        whole = reference.elementary_stream(sample, kind)
        received = run.elementary_stream(kind)
        self.assertGreater(len(packets), 2)
        self.assertEqual(len(whole) - len(received), packets[-1].size)
        self.assertTrue(whole.startswith(received), f"the {kind} stream differs from ffmpeg's")
        self.assert_frames_are(run.frames_of(kind), packets[:-1])

    def assert_frames_are(self, frames, packets):
        self.assertEqual([frame.pts for frame in frames], [packet.pts for packet in packets])
        self.assertEqual([frame.size for frame in frames], [packet.size for packet in packets])
        # If a PES packet carries no DTS, the DTS of the frame is undefined.
        carried = [(i, packet.dts) for i, packet in enumerate(packets) if packet.dts != packet.pts]
        self.assertEqual([(i, frames[i].dts) for i, _ in carried], carried)
