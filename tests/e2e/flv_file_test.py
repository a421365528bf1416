"""FLV files on web servers, and local ones."""

from support import host
from support.flv import FlvCase, frames_of_whole_tags
from support.https import HttpsMixin


class FlvFileTest(FlvCase):
    def test_whole_file_plays_as_ffmpeg_reads_it(self):
        sample = self.make_flv()
        server = self.serve()
        address = server.url("sample.flv")
        run = self.play_flv(address, sample)
        self.assertEqual(run.messages(), [f"PLAY FLV:{address}", f"PLAY FLV CACHE_NO OK:{address}"])
        self.assertEqual(server.requests(1), ["/sample.flv 206 range=bytes=0- agent=-"])
        for line in ("headlength:9", f"[DOWNLOAD]: {address}", "read over"):
            self.assertEqual(run.output.splitlines().count(line), 1, run.output)

    def test_chunked_reply_without_length_plays(self):
        sample = self.make_flv()
        # A filter that may change the body makes nginx send it in chunks.
        server = self.serve('sub_filter_types *; sub_filter "no such text in it" "";')
        self.play_flv(server.url("sample.flv"), sample)

    def test_slow_server_plays_whole(self):
        sample = self.make_flv(seconds=2)
        server = self.serve("limit_rate 100k; output_buffers 1 4k;")
        self.play_flv(server.url("sample.flv"), sample)

    def test_redirect_plays_under_the_first_address(self):
        sample = self.make_flv(seconds=2)
        server = self.serve("location = /first.flv { return 302 /sample.flv; }")
        address = server.url("first.flv")
        run = self.play_flv(address, sample)
        self.assertIn(f"PLAY FLV CACHE_NO OK:{address}", run.messages())

    def test_local_file_plays_once_and_is_not_changed(self):
        sample = self.make_flv()
        before = sample.read_bytes()
        address = f"file://{sample}"
        run = self.play_flv(address, sample)
        self.assertEqual(run.messages(), [f"PLAY FLV:{address}", f"PLAY FLV CACHE_NO OK:{address}"])
        self.assertEqual(sample.read_bytes(), before)

    def test_start_position_is_reported_and_the_file_plays_from_its_beginning(self):
        sample = self.make_flv(seconds=3)
        server = self.serve()
        address = server.url("sample.flv")
        run = self.play_flv(address, sample, "--start", "3725.5")
        messages = [line.partition(" Q:")[0] for line in run.messages()]
        self.assertIn("PLAY FLV StartPostion:01:02:05.500", messages)
        self.assertIn(f"PLAY FLV RE:{address}", messages)

    def test_same_address_again_plays_from_its_beginning(self):
        sample = self.make_flv(seconds=2)
        server = self.serve()
        address = server.url("sample.flv")
        once = self.play_flv(address, sample)
        (self.directory / "dump").rename(self.directory / "dump of the first")
        twice = self.play(address, "--repeat", "1", frames=self.frames_of(sample))
        self.assertEqual(twice.messages().count(f"PLAY FLV RE:{address}"), 1)
        for kind in ("video", "audio"):
            self.assertEqual(twice.frames_of(kind), 2 * once.frames_of(kind))
        ranges = [request.split()[2] for request in server.requests(3)]
        self.assertEqual(ranges, ["range=bytes=0-"] * 3)


class FlvHttpsTest(HttpsMixin, FlvCase):
    def test_trusted_certificate_plays(self):
        sample = self.make_flv(seconds=2)
        server = self.serve_https()
        self.play_flv(server.url("sample.flv"), sample,
                      prefix=self.trusting_only_the_test_authority())


class FlvRefusedTest(FlvCase):
    def assert_is_no_flv(self, run, address):
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY FLV:{address}", f"PLAY FLV NO:{address}"])
        self.assertEqual(run.values("result"), [f"PLAY:FLV NO:{address}"])
        self.assertIn("ReadHead Err", run.output)

    def test_html_page(self):
        address = self.serve().url("missing.flv")
        run = self.play(address, line="PLAY:FLV NO:")
        self.assert_is_no_flv(run, address)
        self.assertNotIn("not flv file", run.output)

    def test_empty_body(self):
        (self.www / "empty.flv").write_bytes(b"")
        address = self.serve("max_ranges 0;").url("empty.flv")
        self.assert_is_no_flv(self.play(address, line="PLAY:FLV NO:"), address)

    def test_other_file(self):
        self.make_sample("video.flv")
        address = self.serve().url("video.flv")
        run = self.play(address, line="PLAY:FLV NO:")
        self.assert_is_no_flv(run, address)
        self.assertIn("not flv file", run.output)

    def test_missing_local_file(self):
        address = f"file://{self.www}/missing.flv"
        self.assert_is_no_flv(self.play(address, line="PLAY:FLV NO:"), address)

    def test_header_alone_is_a_stream_without_frames(self):
        sample = self.make_flv(seconds=1)
        sample.write_bytes(sample.read_bytes()[:13])
        address = self.serve().url("sample.flv")
        run = self.play(address, until=host.Prints("read over"))
        self.assert_no_frame(run)
        self.assertEqual(run.values("result"), [f"PLAY:FLV CACHE_NO OK:{address}"])

    def test_file_cut_inside_a_tag_plays_up_to_the_cut(self):
        sample = self.make_flv(seconds=3)
        whole = sample.read_bytes()
        part = whole[: len(whole) // 2]
        sample.write_bytes(part)
        run = self.play(self.serve().url("sample.flv"), frames=frames_of_whole_tags(part))
        self.assertEqual(len(run.frames), frames_of_whole_tags(part))
        sample.write_bytes(whole)
        self.assert_frames_are_those_of(run, sample)
        self.assertGreater(len(run.frames_of("video")), 20)
