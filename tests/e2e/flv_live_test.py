"""A live FLV stream, relayed while ffmpeg makes it."""

from support import reference
from support.flv import FlvCase, expected_video
from support.flv_relay import FlvRelay


class FlvLiveTest(FlvCase):
    def relay(self, seconds):
        relay = FlvRelay(self.directory, seconds).start()
        self.addCleanup(relay.stop)
        return relay

    def test_stop_in_mid_transfer_plays_the_beginning(self):
        relay = self.relay(60)
        address = relay.url("live.flv")
        run = self.play(address, frames=100)
        self.assertTrue(relay.is_still_pushed())
        relay.end_push()
        self.assertEqual(run.exit_code, 0, run.output)
        self.assertIn(f"PLAY FLV CACHE_NO OK:{address}", run.messages())
        self.assertNotIn("[DOWNLOAD]", run.output)
        self.assert_is_beginning(run, relay.pushed)

    def assert_is_beginning(self, run, pushed):
        self.assert_frames_are_those_of(run, pushed)
        video = run.payloads("video")
        self.assertEqual(video, expected_video(pushed)[: len(video)])
        audio = run.elementary_stream("audio")
        self.assertTrue(reference.elementary_stream(pushed, "audio").startswith(audio))
        self.assert_decodes(audio)

    def test_end_of_the_broadcast_ends_the_stream(self):
        seconds = 2
        whole = self.make_flv(seconds=seconds)  # equal to what is pushed
        relay = self.relay(seconds)
        run = self.play(relay.url("live.flv"), frames=self.frames_of(whole))
        self.assertFalse(relay.is_still_pushed())
        self.assert_plays_flv(run, relay.pushed)
        self.assertIn("read over", run.output)
