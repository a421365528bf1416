"""A server whose port accepts no more connections."""

import pathlib
import socket

from support.case import EndToEndCase

_SYN_SENT = "02"


def _connections_without_an_answer(port):
    """How many sockets of this machine are trying to connect to the port."""
    rows = [row.split() for row in pathlib.Path("/proc/net/tcp").read_text().splitlines()[1:]]
    return sum(remote.endswith(f":{port:04X}") and state == _SYN_SENT for _, _, remote, state, *_ in rows)


class ConnectTest(EndToEndCase):
    def test_stop_does_not_wait_for_a_connection_that_is_never_made(self):
        with socket.create_server(("127.0.0.1", 0), backlog=1) as server:
            port = server.getsockname()[1]
            waiting = []
            try:
                self.fill(port, waiting)
                tried = _connections_without_an_answer(port)
                run = self.play(f"http://127.0.0.1:{port}/sample.ts",
                                until=lambda _: _connections_without_an_answer(port) > tried)
            finally:
                for client in waiting:
                    client.close()
        self.assert_no_frame(run)

    def fill(self, port, waiting):
        """Connects until the queue of the server, which accepts no connection, is full."""
        for _ in range(16):
            client = socket.socket()
            client.settimeout(0.5)
            waiting.append(client)
            try:
                client.connect(("127.0.0.1", port))
            except TimeoutError:
                return
        self.fail("the queue of the server never filled")
