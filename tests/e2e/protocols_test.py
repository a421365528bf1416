"""Addresses with protocols other than HTTP, HTTPS and local files."""

import socket

from support import host
from support.case import EndToEndCase


class ProtocolsTest(EndToEndCase):
    def setUp(self):
        super().setUp()
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(self._listener.close)
        self._listener.setblocking(False)

    def ftp(self, path):
        return f"ftp://127.0.0.1:{self._listener.getsockname()[1]}/{path}"

    def assert_nobody_has_connected(self):
        with self.assertRaises(BlockingIOError):
            self._listener.accept()

    def test_ftp_address_that_is_accepted_is_not_fetched(self):
        for kind, ending in host.NOTHING_IS_FETCHED.items():
            with self.subTest(kind):
                directory = self.directory / kind
                directory.mkdir()
                run = self.play(self.ftp(f"http.{kind}"), directory=directory, **ending)
                self.assert_no_frame(run)
                self.assert_nobody_has_connected()

    def test_redirect_to_ftp_is_not_followed(self):
        server = self.serve(f"location = /a.ts {{ return 302 {self.ftp('a.ts')}; }}")
        self.assert_nothing_is_received(server.url("a.ts"))
        self.assert_nobody_has_connected()

    def test_redirect_to_a_local_file_is_not_followed(self):
        sample = self.make_sample("other.ts")
        server = self.serve(f"location = /a.ts {{ return 302 file://{sample}; }}")
        self.assert_nothing_is_received(server.url("a.ts"))

    def assert_nothing_is_received(self, address):
        run = self.play(address, until=host.TRANSFER_ENDED)
        self.assert_no_frame(run)
        self.assertEqual(run.messages(), [f"PLAY TS:{address}"])
