"""What the player prints and how it ends when something is missing."""

from player import PlayerCase, make_colours


class MissingTest(PlayerCase):
    def setUp(self):
        super().setUp()
        make_colours(self.www / "sample.ts", ["red", "blue"], 1)
        self.address = self.serve().url("sample.ts")

    def test_missing_display_is_reported_in_one_line(self):
        for name in (None, ":9999"):
            with self.subTest(name):
                run = self.start_player(self.address, "--exit", DISPLAY=name, XDG_RUNTIME_DIR=None)
                self.assertEqual(run.wait(), 3)
                (line,) = run.error_lines()
                self.assertTrue(line.startswith("stream_player: there is no display: "), line)

    def test_missing_audio_device_is_reported_in_one_line_and_playback_continues(self):
        run = self.play_to_end(self.address, SDL_AUDIODRIVER="none")
        (line,) = run.error_lines()
        self.assertTrue(line.startswith("stream_player: there is no sound device"), line)
        summary = run.summary()
        self.assertGreater(summary["pictures"], 40)
        self.assertEqual(summary["shown"] + summary["late"], summary["pictures"])

    def test_stream_without_audio_plays(self):
        make_colours(self.www / "silent.ts", ["red", "blue"], 1, "-c:v", "libx264", "-an")
        summary = self.play_to_end(self.address.replace("sample", "silent")).summary()
        self.assertGreater(summary["pictures"], 40)
        self.assertEqual(summary["sounds"], 0)
        self.assertIsNone(summary["apart"])

    def test_missing_stream_ends_with_another_exit_code(self):
        for options in ((), ("--start", "2")):
            with self.subTest(options):
                run = self.start_player(self.address.replace("sample", "nothing"), "--exit", *options,
                                        idle=1)
                self.assertEqual(run.wait(), 1)
                self.assertEqual(run.summary()["video_frames"], 0)

    def test_address_of_another_scheme_is_refused_in_one_line(self):
        run = self.start_player("rtsp://127.0.0.1/a.ts")
        self.assertEqual(run.wait(), 1)
        self.assertEqual(run.error_lines(), ["stream_player: the address was refused"])
