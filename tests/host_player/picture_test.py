"""What is visible in the window."""

from player import PlayerCase, make_colours, seconds_of


class PictureTest(PlayerCase):
    def test_pictures_are_shown_in_order(self):
        make_colours(self.www / "sample.ts", ["red", "blue"], 3)
        run = self.start_player(self.serve().url("sample.ts"))
        self.display.wait_for_colour("red")
        self.display.wait_for_colour("blue")
        self.display.press("q")
        self.assert_ends(run)

    def test_last_picture_stays_until_a_key_ends_the_player(self):
        make_colours(self.www / "sample.mp4", ["red", "blue"], 1)
        run = self.start_player(self.serve().url("sample.mp4"))
        title = self.wait_for_state("ended")
        self.assertGreaterEqual(seconds_of(title["position"]), 1)
        self.display.wait_for_colour("blue")
        self.assertTrue(run.is_running())
        self.display.press("q")
        self.assert_ends(run)

    def test_window_of_another_shape_keeps_the_shape_of_the_picture(self):
        make_colours(self.www / "sample.ts", ["red"], 6)
        run = self.start_player(self.serve().url("sample.ts"))
        self.display.wait_for_colour("red")
        self.assertEqual(self.display.size_of_window(), (320, 240))
        self.display.resize_window(320, 300)
        # The upper edge of the window stays at 384 - 120.
        self.display.wait_for_colour("black", x=512, y=270)
        self.display.wait_for_colour("red", x=512, y=310)
        self.display.press("Escape")
        self.assert_ends(run)

    def test_title_shows_time_duration_and_status(self):
        make_colours(self.www / "sample.mp4", ["red"], 6)
        address = self.serve().url("sample.mp4")
        run = self.start_player(address)
        title = self.wait_for_title(lambda title: seconds_of(title["position"]) >= 2, "a later time")
        self.assertIn(seconds_of(title["duration"]), (5, 6))
        self.assertIn("PLAY", title["status"])
        run.interrupt()
        self.assert_ends(run)
