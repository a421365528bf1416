"""HTTPS with and without a certificate that is trusted."""

import os
import pathlib
import unittest

from support import namespaces
from support.case import EndToEndCase
from support.certificates import make_certificates

_SERVER = "ssl_certificate ../server.pem; ssl_certificate_key ../server.key;"
_TRUST_STORE = pathlib.Path("/etc/ssl/certs")  # where the system's libcurl looks

# wine's TLS takes bad certificates; there the refusal is left to the tests of the Linux library.
refuses_certificates = unittest.skipIf(
    os.environ.get("REFUSES_CERTIFICATES") == "0", "this system's TLS takes bad certificates"
)


class HttpsTest(EndToEndCase):
    def serve_https(self, subject_alternative_name):
        make_certificates(self.directory, subject_alternative_name)
        directory = str(self.directory)
        return self.serve(_SERVER.replace("..", directory), tls=True)

    def trusting_only_the_test_authority(self):
        """The beginning of a command line whose program trusts nobody else."""
        if not namespaces.is_permitted("--mount"):
            self.skipTest("this machine permits no private mount namespace (unshare)")
        if not _TRUST_STORE.is_dir():
            self.skipTest(f"{_TRUST_STORE} is not there to be mounted over")
        store = self.directory / "trusted"
        store.mkdir()
        authority = (self.directory / "authority.pem").read_bytes()
        (store / "ca-certificates.crt").write_bytes(authority)
        return namespaces.with_mount(store, _TRUST_STORE)

    @refuses_certificates
    def test_untrusted_certificate_gives_no_frame(self):
        self.make_sample()
        server = self.serve_https("IP:127.0.0.1")
        address = server.url("sample.ts")
        run = self.play(address)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY TS:{address}"])

    def test_trusted_certificate_plays(self):
        sample = self.make_sample()
        server = self.serve_https("IP:127.0.0.1")
        run = self.play(server.url("sample.ts"), prefix=self.trusting_only_the_test_authority())
        self.assert_plays_whole(run, sample)

    @refuses_certificates
    def test_trusted_certificate_for_another_host_gives_no_frame(self):
        self.make_sample()
        server = self.serve_https("DNS:another.example")
        run = self.play(server.url("sample.ts"), prefix=self.trusting_only_the_test_authority())
        self.assert_no_frame(run)
