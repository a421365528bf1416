"""--repeat: the same address again in the same process."""

from support import reference
from support.case import EndToEndCase


class RepeatTest(EndToEndCase):
    def test_complete_stream_is_requested_from_its_end_and_nothing_is_received(self):
        sample = self.make_sample()
        server = self.serve()
        address = server.url("sample.ts")
        run = self.play_whole(address, sample, "--repeat", "2", line="PLAY TS NO:")
        size = sample.stat().st_size
        answers = [" ".join(request.split()[1:3]) for request in server.requests(3)]
        self.assertEqual(answers, ["206 range=bytes=0-"] + [f"416 range=bytes={size}-"] * 2)
        self.assertEqual(run.messages().count(f"PLAY TS RE:{address}"), 2)
        self.assertEqual(run.messages().count(f"PLAY TS OK:{address}"), 1)
        self.assertEqual(len(run.summary["stop_ms"]), 3)

    def test_server_without_ranges_sends_the_stream_again(self):
        sample = self.make_sample()
        server = self.serve("max_ranges 0;")
        whole = self.frames_of(sample)
        run = self.play(server.url("sample.ts"), "--repeat", "1", frames=(whole, whole + 2))
        self.assertEqual(run.exit_code, 0, run.output)
        for kind in ("video", "audio"):
            with self.subTest(kind):
                # The last PES packet of the first run is completed by the first one of the second.
                whole = reference.elementary_stream(sample, kind)
                rest = reference.pes_packets(sample, kind)[-1].size
                self.assertTrue(run.elementary_stream(kind) == whole + whole[:-rest])

    def test_stop_in_mid_stream_resumes_at_the_received_count(self):
        sample = self.make_sample(seconds=8)
        server = self.serve("limit_rate 100k; output_buffers 1 4k;")
        run = self.play(server.url("sample.ts"), "--repeat", "1", frames=20)
        self.assertEqual(run.exit_code, 0, run.output)
        # An aborted request may be logged after the one that followed it.
        first, second = sorted(request.split()[2] for request in server.requests(2))
        self.assertEqual(first, "range=bytes=0-")
        received = int(second.removeprefix("range=bytes=").removesuffix("-"))
        self.assertGreater(received, len(run.elementary_stream("video")) // 2)
        self.assertLess(received, sample.stat().st_size)
