"""MP4 over HTTPS."""

from support.https import HttpsMixin
from support.mp4 import Mp4Case


class Mp4HttpsTest(HttpsMixin, Mp4Case):
    def test_trusted_certificate_plays(self):
        sample = self.make_index_first()
        server = self.serve_https()
        self.play_whole(server.url("sample.mp4"), sample,
                        prefix=self.trusting_only_the_test_authority())
