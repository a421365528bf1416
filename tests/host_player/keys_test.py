"""The keys of the player."""

from player import PlayerCase, make_colours, seconds_of

_COLOURS = ["red", "lime", "blue"]


class SeekKeysTest(PlayerCase):
    def test_transport_stream(self):
        make_colours(self.www / "sample.ts", _COLOURS, 10)
        self.check("sample.ts")

    def test_mp4(self):
        make_colours(self.www / "sample.mp4", _COLOURS, 10, "-movflags", "+faststart")
        self.check("sample.mp4")

    def test_http_live_streaming(self):
        make_colours(self.www / "list.m3u8", _COLOURS, 10, "-c:v", "libx264", "-f", "hls",
                     "-hls_time", "2", "-hls_playlist_type", "vod")
        self.check("list.m3u8")

    def check(self, name):
        server = self.serve()
        run = self.start_player(server.url(name))
        self.display.wait_for_colour("red")
        self.display.press("Right")
        self.display.wait_for_colour("green")
        title = self.wait_for_title(lambda title: title["state"] is None, "that it is playing")
        self.assertGreaterEqual(seconds_of(title["position"]), 10)
        self.display.press("Left")
        self.display.wait_for_colour("red")
        self.display.press("q")
        self.assert_ends(run)
        self.assertEqual(run.summary()["errors"], 0, run.summary())
        starts = [line for line in server.requests(3) if line.startswith(f"/{name} ")]
        self.assertGreaterEqual(len(starts), 3)  # the first start, and one for each key


class OtherKeysTest(PlayerCase):
    def setUp(self):
        super().setUp()
        make_colours(self.www / "sample.ts", ["red"], 12)
        self.address = self.serve().url("sample.ts")

    def test_space_pauses_and_resumes(self):
        self.start_player(self.address)
        self.display.wait_for_colour("red")
        self.display.press("space")
        paused_at = seconds_of(self.wait_for_state("paused")["position"])
        # During the pause more is received than a playing player would leave pending.
        self.wait_for_title(lambda title: seconds_of(title["buffered"]) >= paused_at + 5, "full queues")
        self.assertEqual(seconds_of(self.title()["position"]), paused_at)
        self.display.press("space")
        self.wait_for_title(lambda title: seconds_of(title["position"]) > paused_at, "a later position")

    def test_full_screen_and_back(self):
        self.display.start_window_manager()
        self.start_player(self.address)
        self.display.wait_for_colour("red")
        self.display.press("f")
        self.display.wait_for_colour("red", x=140, y=740)
        self.assertEqual(self.display.size_of_window(), (1024, 768))
        self.display.press("f")
        self.display.wait_for_colour("black", x=140, y=740)

    def test_paused_player_with_full_queues_ends(self):
        run = self.start_player(self.address)
        self.display.wait_for_colour("red")
        self.display.press("space")
        self.wait_for_state("paused")
        # So much is pending in the player that the calls of the component wait for space.
        self.wait_for_title(lambda title: seconds_of(title["buffered"]) >= 5, "full queues")
        self.display.press("Escape")
        self.assert_ends(run)

    def test_playback_starts_at_the_start_position(self):
        make_colours(self.www / "other.ts", ["red", "lime"], 10)
        self.start_player(self.serve_again("other.ts"), "--start", "11")
        self.display.wait_for_colour("green")
        title = self.wait_for_title(lambda title: title["position"], "a position")
        self.assertGreaterEqual(seconds_of(title["position"]), 11)

    def serve_again(self, name):
        return self.address.replace("sample.ts", name)
