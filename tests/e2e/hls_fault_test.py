"""Playlists and segments that cannot be fetched, and bodies that are no playlist or segment."""

from support.cut_off_server import cut_off_server
from support.hls import HlsCase

_PACKET = 188
_NULL_PACKET = b"\x47\x1f\xff\x10" + b"\xff" * 184  # without content
_LARGEST_SEGMENT = 15_728_640
_PAGE = b"<html><body>Not today.</body></html>\n" * 50
_CLOSED_PORT = "http://127.0.0.1:1"


def _fill_up(segment, size):
    """Pads a segment to this size without changing its content."""
    missing = size - segment.stat().st_size
    with segment.open("ab") as file:
        file.write((_NULL_PACKET * (missing // _PACKET + 1))[:missing])


class PlaylistTest(HlsCase):
    def test_closed_port_is_tried_twice(self):
        address = f"{_CLOSED_PORT}/list.m3u8"
        run = self.play(address, line="PLAY Failed:")
        self.assert_no_frame(run)
        lines = [f"PLAY M3U8:{address}", f"PLAY Try:{address}", f"PLAY Failed:{address}"]
        self.assertEqual(run.messages()[:3], lines)
        # The other lines belong to the stop, whose first line races with those of the tasks.
        self.assertIn("PLAY STOP...", run.messages()[3:])
        self.assertEqual(run.values("result"), [])

    def test_missing_local_file_is_tried_twice(self):
        address = f"file://{self.www}/list.m3u8"
        run = self.play(address, line="PLAY Failed:")
        self.assert_no_frame(run)
        lines = [f"PLAY M3U8:{address}", f"PLAY Try:{address}", f"PLAY Failed:{address}"]
        self.assertEqual(run.messages()[:3], lines)

    def test_page_instead_of_a_playlist_is_reported_and_requested_again(self):
        server = self.serve()
        address = server.url("missing.m3u8")
        run = self.play(address, until=lambda _: len(server.requests_so_far()) >= 2)
        self.assert_no_frame(run)
        self.assertEqual(run.messages()[:2], [f"PLAY M3U8:{address}", f"PLAY M3U8 NO:{address}"])
        self.assertEqual(run.values("result"), [f"PLAY:M3U8 NO:{address}"])


class NoSegmentTest(HlsCase):
    """One of three bodies is no segment."""

    def setUp(self):
        super().setUp()
        self.kept = self.directory / "host" / "tmp" / "tmpE.ts"
        self.kept.parent.mkdir()

    def test_missing_segment_is_skipped_and_its_page_kept(self):
        sample = self.make_hls(3)
        first, missing, last = sample.segments
        missing.unlink()
        self.play_segments(self.serve().url(sample.playlist.name), [first, last])
        page = self.kept.read_bytes()
        self.assertTrue(page.startswith(b"<html>"), page)
        self.assertIn(b"404 Not Found", page)

    def test_page_instead_of_a_segment_is_skipped_and_kept(self):
        sample = self.make_hls(3)
        first, page, last = sample.segments
        page.write_bytes(_PAGE)
        run = self.play_segments(self.serve().url(sample.playlist.name), [first, last])
        self.assertIn("The ts packet has not sync byte", run.output)
        self.assertEqual(self.kept.read_bytes(), _PAGE)

    def test_page_instead_of_the_first_segment_is_reported(self):
        sample = self.make_hls(3)
        page, *others = sample.segments
        page.write_bytes(_PAGE)
        address = self.serve().url(sample.playlist.name)
        run = self.play_segments(address, others)
        messages = [line for line in run.messages() if line.startswith("PLAY M3U8 DATAERR ")]
        self.assertEqual(messages, [f"PLAY M3U8 DATAERR 0:{address}"])
        self.assertEqual(self.kept.read_bytes(), _PAGE)

    def test_good_segments_are_not_kept(self):
        sample = self.make_hls(3)
        self.play_segments(self.serve().url(sample.playlist.name), sample.segments)
        self.assertFalse(self.kept.exists())


class RefusedSegmentTest(HlsCase):
    def test_segment_on_a_closed_port_is_skipped(self):
        sample = self.make_hls(3)
        first, unreachable, last = sample.segments
        text = sample.playlist.read_text()
        text = text.replace(unreachable.name, f"{_CLOSED_PORT}/{unreachable.name}")
        sample.playlist.write_text(text)
        run = self.play_segments(self.serve().url(sample.playlist.name), [first, last])
        self.assertEqual(len(run.values("buffered")), 3)


class CutOffTest(HlsCase):
    """The whole packets that were received stay before the next segment; there is no retry."""

    def test_cut_between_packets_plays_up_to_the_cut_and_continues_with_the_next_segment(self):
        run = self.play_truncated(0)
        self.assertNotIn("The ts packet has not sync byte", run.output)

    def test_cut_inside_a_packet_plays_its_whole_packets_and_continues_with_the_next_segment(self):
        run = self.play_truncated(100)
        self.assertNotIn("The ts packet has not sync byte", run.output)

    def play_truncated(self, extra_bytes):
        """Cuts off the second segment, `extra_bytes` bytes after a packet boundary."""
        sample = self.make_hls(4)
        first, cut, after_cut, last = sample.segments
        body = cut.read_bytes()
        whole = len(body) // 2 // _PACKET * _PACKET
        received = self.directory / "received.ts"
        received.write_bytes(body[:whole] + after_cut.read_bytes())
        with cut_off_server(body, whole + extra_bytes) as port:
            server = self.serve(
                f"location = /{cut.name} {{ return 302 http://127.0.0.1:{port}/; }}")
            run = self.play_segments(server.url(sample.playlist.name), [first, received, last])
        self.assertEqual(len(server.requests(5)), 5)
        return run


class LargeSegmentTest(HlsCase):
    _DISCARDED_LINE = f"A segment of more than {_LARGEST_SEGMENT} bytes is given up."

    def test_largest_size_plays(self):
        sample = self.make_hls(3)
        _fill_up(sample.segments[1], _LARGEST_SEGMENT)
        run = self.play_segments(self.serve().url(sample.playlist.name), sample.segments)
        self.assertNotIn(self._DISCARDED_LINE, run.output)

    def test_one_byte_more_is_dropped_and_the_next_segment_plays(self):
        sample = self.make_hls(3)
        first, large, last = sample.segments
        _fill_up(large, _LARGEST_SEGMENT + 1)
        run = self.play_segments(self.serve().url(sample.playlist.name), [first, last])
        self.assertEqual(run.output.count(self._DISCARDED_LINE), 1)
