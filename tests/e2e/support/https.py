"""HTTPS servers, and runs of the host that trust only the certificate authority of the tests."""

import pathlib

from support import namespaces
from support.certificates import make_certificates

_SERVER = "ssl_certificate {directory}/server.pem; ssl_certificate_key {directory}/server.key;"
_TRUST_STORE = pathlib.Path("/etc/ssl/certs")  # where the system's libcurl looks for authorities


class HttpsMixin:
    """For an EndToEndCase."""

    def serve_https(self, subject_alternative_name="IP:127.0.0.1"):
        make_certificates(self.directory, subject_alternative_name)
        return self.serve(_SERVER.format(directory=self.directory), tls=True)

    def trusting_only_the_test_authority(self):
        """The beginning of a command line. The program in it trusts no other authority."""
        if not namespaces.is_permitted("--mount"):
            self.skipTest("this machine permits no private mount namespace (unshare)")
        if not _TRUST_STORE.is_dir():
            self.skipTest(f"{_TRUST_STORE} does not exist, so it cannot be mounted over")
        store = self.directory / "trusted"
        store.mkdir()
        authority = (self.directory / "authority.pem").read_bytes()
        (store / "ca-certificates.crt").write_bytes(authority)
        return namespaces.with_mount(store, _TRUST_STORE)
