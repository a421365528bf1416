"""Ctrl-C."""

from support import reference
from support.case import EndToEndCase


def _a_frame_is_dumped(live):
    video = live.dump / "video.es"
    return video.exists() and video.stat().st_size > 0


class InterruptTest(EndToEndCase):
    def test_interrupt_in_mid_stream_ends_with_a_complete_dump(self):
        sample = self.make_sample(seconds=8)
        server = self.serve("limit_rate 100k; output_buffers 1 4k;")
        run = self.play(server.url("sample.ts"), until=_a_frame_is_dumped)
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertEqual(run.summary["exit_reason"], "interrupted")
        self.assertEqual(run.payloads_that_differ_from_their_crc(), [])
        for kind in ("video", "audio"):
            with self.subTest(kind):
                self.assert_is_beginning(run, sample, kind)

    def assert_is_beginning(self, run, sample, kind):
        whole = reference.elementary_stream(sample, kind)
        received = run.elementary_stream(kind)
        self.assertEqual(len(received), run.summary[kind]["bytes"])
        self.assertLess(len(received), len(whole))
        self.assertTrue(whole.startswith(received), f"the {kind} stream differs from ffmpeg's")
