"""Servers on the loopback interface that answer every connection in the same way."""

import socketserver
import ssl
import threading

from support.waiting import STOP_POLL_SECONDS

_HEAD = b"HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n"
_PACKET = b"\x47\x1f\xff\x10" + bytes(184)  # a transport stream packet without content


def unfinished_body(connection):
    """Answers every request with the beginning of a body. The rest never follows."""
    while connection.recv(4096):
        connection.sendall(_HEAD + 20 * _PACKET)


def nothing(connection):
    """Sends nothing until the client disconnects."""
    while connection.recv(4096):
        pass


class Server:
    """Speaks TLS if it has a `certificate`, a pair of PEM files."""

    def __init__(self, answer, certificate=None):
        self._answer = answer
        self._context = None
        if certificate is not None:
            self._context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            self._context.load_cert_chain(*certificate)
        self._connections = 0
        self._changed = threading.Condition()
        self._server = None
        self._serving = None

    def start(self):
        server = socketserver.ThreadingTCPServer(("127.0.0.1", 0), self._handler())
        server.daemon_threads = True
        self._server = server
        self._serving = threading.Thread(target=server.serve_forever, args=(STOP_POLL_SECONDS,))
        self._serving.start()
        return self

    def url(self, path):
        scheme = "https" if self._context else "http"
        return f"{scheme}://127.0.0.1:{self._server.server_address[1]}/{path}"

    def connections(self):
        with self._changed:
            return self._connections

    def wait_for_connection(self, limit_seconds=30):
        with self._changed:
            if not self._changed.wait_for(lambda: self._connections > 0, limit_seconds):
                raise TimeoutError("no client connects")

    def stop(self):
        self._server.shutdown()
        self._serving.join()
        self._server.server_close()

    def _serve(self, connection):
        with self._changed:
            self._connections += 1
            self._changed.notify_all()
        try:
            if self._context is not None:
                connection = self._context.wrap_socket(connection, server_side=True)
            self._answer(connection)
        except OSError:
            pass  # the client has disconnected, or does not trust the certificate
        finally:
            connection.close()

    def _handler(self):
        serve = self._serve

        class Handler(socketserver.BaseRequestHandler):
            def handle(self):
                serve(self.request)

        return Handler
