"""An MP4 file on a web server, and a local one."""

from support.mp4 import VERDICT, Mp4Case


class Mp4FileTest(Mp4Case):
    def assert_lines(self, run, address):
        self.assertEqual(run.messages(), [f"PLAY MP4:{address}", f"PLAY MP4 H264:{address}",
                                          f"PLAY MP4 OK:{address}"])
        self.assertEqual(run.values("result"), [f"PLAY:MP4 OK:{address}"])

    def test_index_after_the_data_plays_as_ffmpeg_reads_it(self):
        sample = self.make_mp4()
        server = self.serve()
        address = server.url("sample.mp4")
        run = self.play_whole(address, sample)
        self.assert_lines(run, address)
        self.assertEqual(server.requests(1), ["/sample.mp4 206 range=bytes=0- agent=-"])
        self.assertEqual(self.restart_file.read_bytes(), sample.read_bytes())

    def test_index_before_the_data_plays_as_ffmpeg_reads_it(self):
        sample = self.make_index_first()
        address = self.serve().url("sample.mp4")
        run = self.play_whole(address, sample)
        self.assert_lines(run, address)

    def test_address_without_a_known_extension_plays(self):
        sample = self.make_mp4(2, name="movie")
        self.play_whole(self.serve().url("movie?x=1"), sample)

    def test_megabyte_per_second_plays_whole(self):
        sample = self.make_index_first(2, "-b:v", "6M", "-minrate", "6M", "-maxrate", "6M",
                                       "-bufsize", "1M", "-x264-params", "nal-hrd=cbr")
        self.assertGreater(sample.stat().st_size, 1_000_000)
        server = self.serve("limit_rate 1m; output_buffers 1 16k;")
        self.play_whole(server.url("sample.mp4"), sample)

    def test_server_without_ranges_plays(self):
        sample = self.make_mp4()
        server = self.serve("max_ranges 0;")
        self.play_whole(server.url("sample.mp4"), sample)
        self.assertEqual(server.requests(1), ["/sample.mp4 200 range=bytes=0- agent=-"])

    def test_chunked_reply_without_length_plays(self):
        sample = self.make_mp4()
        server = self.serve('sub_filter_types *; sub_filter "no such text in it" "";')
        self.play_whole(server.url("sample.mp4"), sample)

    def test_redirect_is_followed(self):
        sample = self.make_mp4()
        server = self.serve("location /old { return 302 /sample.mp4; }")
        self.play_whole(server.url("old"), sample)

    def test_missing_page_gives_no_frame(self):
        address = self.serve().url("missing.mp4")
        run = self.play(address, line=VERDICT)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY MP4:{address}", f"PLAY MP4 NO:{address}"])

    def test_h265_is_reported_and_gives_no_frame(self):
        self.make_mp4(1, "-c:v", "libx265", "-preset", "ultrafast", "-x265-params",
                      "log-level=error:pools=1", "-tag:v", "hvc1")
        address = self.serve().url("sample.mp4")
        run = self.play(address, line=VERDICT)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY MP4:{address}", f"PLAY MP4 H265:{address}",
                                          f"PLAY MP4 NO:{address}"])


class Mp4LocalFileTest(Mp4Case):
    def test_file_address_plays_and_the_file_is_not_changed(self):
        sample = self.make_mp4()
        before = sample.read_bytes()
        run = self.play_whole(f"file://{sample}", sample)
        self.assertIn(f"PLAY MP4 OK:file://{sample}", run.messages())
        self.assertEqual(sample.read_bytes(), before)

    def test_missing_file_gives_no_frame(self):
        address = f"file://{self.www}/missing.mp4"
        run = self.play(address, line=VERDICT)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY MP4:{address}", f"PLAY MP4 NO:{address}"])
