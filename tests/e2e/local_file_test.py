"""Addresses of local files."""

from support import host
from support.case import EndToEndCase

_DOWNLOAD_ENDED = "ts Download thread stop."


class LocalFileTest(EndToEndCase):
    def test_file_address_plays(self):
        sample = self.make_sample()
        run = self.play_whole(f"file://{sample}", sample)
        self.assertIn(f"PLAY TS OK:file://{sample}", run.messages())

    def test_missing_file_only_ends_the_download(self):
        address = f"file://{self.www}/missing.ts"
        run = self.play(address, until=host.TRANSFER_ENDED)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY TS:{address}"])
        self.assertEqual(run.output.count(_DOWNLOAD_ENDED), 1, run.output)

    def test_file_is_not_changed(self):
        sample = self.make_sample(seconds=2)
        before = sample.read_bytes()
        self.play_whole(f"file://{sample}", sample)
        self.assertEqual(sample.read_bytes(), before)
