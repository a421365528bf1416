"""A stream in a plain file on a web server."""

from support.case import EndToEndCase


class PlainFileTest(EndToEndCase):
    def test_whole_file_plays_as_ffmpeg_reads_it(self):
        sample = self.make_sample()
        server = self.serve()
        address = server.url("sample.ts")
        run = self.play_whole(address, sample)
        self.assertEqual(run.messages()[:2], [f"PLAY TS:{address}", f"PLAY TS OK:{address}"])

    def test_query_is_sent_and_its_marker_selects_the_user_agent(self):
        sample = self.make_sample()
        server = self.serve()
        self.play_whole(server.url("sample.ts?token=a%20b&pt=android&x=1"), sample)
        (request,) = server.requests(1)
        self.assertTrue(request.startswith("/sample.ts?token=a%20b&pt=android&x=1 206 "), request)
        self.assertIn("Android 4.0.3", request)


class ReplyFormTest(EndToEndCase):
    def test_chunked_reply_without_length_plays(self):
        sample = self.make_sample()
        # A filter that may change the body makes nginx send it in chunks.
        server = self.serve('sub_filter_types *; sub_filter "no such text in it" "";')
        self.play_whole(server.url("sample.ts"), sample)

    def test_server_without_ranges_plays(self):
        sample = self.make_sample()
        server = self.serve("max_ranges 0;")
        self.play_whole(server.url("sample.ts"), sample)
        self.assertEqual(server.requests(1), ["/sample.ts 200 range=bytes=0- agent=-"])

    def test_whole_file_is_requested_as_a_range(self):
        sample = self.make_sample()
        server = self.serve()
        self.play_whole(server.url("sample.ts"), sample)
        self.assertEqual(server.requests(1), ["/sample.ts 206 range=bytes=0- agent=-"])

    def test_slow_server_plays_whole(self):
        sample = self.make_sample(seconds=2)
        server = self.serve("limit_rate 100k; output_buffers 1 4k;")
        self.play_whole(server.url("sample.ts"), sample)
