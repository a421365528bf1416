"""A server that announces a whole body and closes the connection before its end."""

import contextlib
import socketserver
import threading

from support.waiting import STOP_POLL_SECONDS


@contextlib.contextmanager
def cut_off_server(body, length):
    """Answers every request with the first `length` bytes of `body`. Yields the port."""

    class Handler(socketserver.StreamRequestHandler):
        def handle(self):
            while self.rfile.readline().strip():
                pass
            head = f"HTTP/1.1 200 OK\r\nContent-Length: {len(body)}\r\n\r\n"
            self.wfile.write(head.encode() + body[:length])

    with socketserver.ThreadingTCPServer(("127.0.0.1", 0), Handler) as server:
        serving = threading.Thread(target=server.serve_forever, args=(STOP_POLL_SECONDS,))
        serving.start()
        try:
            yield server.server_address[1]
        finally:
            server.shutdown()
            serving.join()
