"""HTTPS with and without a trusted certificate."""

import os
import unittest

from support import host
from support.case import EndToEndCase
from support.https import HttpsMixin

# wine's TLS accepts bad certificates, so their refusal is tested with the Linux library only.
refuses_certificates = unittest.skipIf(
    os.environ.get("REFUSES_CERTIFICATES") == "0", "this system's TLS accepts bad certificates"
)


class HttpsTest(HttpsMixin, EndToEndCase):
    @refuses_certificates
    def test_untrusted_certificate_gives_no_frame(self):
        self.make_sample()
        server = self.serve_https()
        address = server.url("sample.ts")
        run = self.play(address, until=host.TRANSFER_ENDED)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY TS:{address}"])

    def test_trusted_certificate_plays(self):
        sample = self.make_sample()
        server = self.serve_https()
        self.play_whole(server.url("sample.ts"), sample,
                        prefix=self.trusting_only_the_test_authority())

    @refuses_certificates
    def test_trusted_certificate_for_another_host_gives_no_frame(self):
        self.make_sample()
        server = self.serve_https("DNS:another.example")
        address = server.url("sample.ts")
        run = self.play(address, prefix=self.trusting_only_the_test_authority(),
                        until=host.TRANSFER_ENDED)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY TS:{address}"])
