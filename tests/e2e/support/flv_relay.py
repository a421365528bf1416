"""A live HTTP-FLV stream: ffmpeg pushes it in real time to a relay. The relay sends it to every viewer from
its beginning, in chunks and without a length."""

import http.server
import signal
import socket
import subprocess
import threading

from support.samples import encoder
from support.waiting import STOP_POLL_SECONDS


class FlvRelay:
    """`directory`/pushed.flv is a copy of what was pushed."""

    def __init__(self, directory, seconds):
        self.pushed = directory / "pushed.flv"
        self._seconds = seconds
        self._chunks = []
        self._ended = False
        self._changed = threading.Condition()
        self._push_socket = None
        self._encoder = None
        self._server = None
        self._threads = []

    def start(self):
        self._push_socket = socket.create_server(("127.0.0.1", 0))
        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), self._viewer_handler())
        self._begin(self._receive)
        self._begin(lambda: self._server.serve_forever(STOP_POLL_SECONDS))
        port = self._push_socket.getsockname()[1]
        command = [*encoder(self._seconds, "-re"), "-f", "flv", f"tcp://127.0.0.1:{port}"]
        self._encoder = subprocess.Popen(command, stdin=subprocess.DEVNULL)
        return self

    def url(self, path):
        return f"http://127.0.0.1:{self._server.server_address[1]}/{path}"

    def is_still_pushed(self):
        return self._encoder.poll() is None

    def end_push(self):
        """Ends the broadcast. Viewers receive the rest and the end of the stream."""
        if self.is_still_pushed():
            self._encoder.send_signal(signal.SIGINT)
        self._encoder.wait(timeout=30)
        self._threads[0].join(timeout=30)

    def stop(self):
        try:
            self.end_push()
        finally:
            self._encoder.kill()
            self._encoder.wait()
            self._server.shutdown()
            self._server.server_close()
            self._push_socket.close()
            for thread in self._threads:
                thread.join(timeout=30)

    def _begin(self, work):
        thread = threading.Thread(target=work, daemon=True)
        thread.start()
        self._threads.append(thread)

    def _receive(self):
        """Receives from the encoder until it ends."""
        connection, _ = self._push_socket.accept()
        with connection, self.pushed.open("wb") as copy:
            while chunk := connection.recv(65536):
                copy.write(chunk)
                copy.flush()
                self._add(chunk)
        self._add(None)

    def _add(self, chunk):
        with self._changed:
            if chunk is None:
                self._ended = True
            else:
                self._chunks.append(chunk)
            self._changed.notify_all()

    def _chunk(self, index):
        """Waits for the block with this index. None at the end."""
        with self._changed:
            self._changed.wait_for(lambda: self._ended or index < len(self._chunks))
            return self._chunks[index] if index < len(self._chunks) else None

    def _viewer_handler(self):
        chunk_at = self._chunk

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                self.send_response(200)
                self.send_header("Content-Type", "video/x-flv")
                self.send_header("Transfer-Encoding", "chunked")
                self.end_headers()
                try:
                    index = 0
                    while (chunk := chunk_at(index)) is not None:
                        self.wfile.write(b"%x\r\n%b\r\n" % (len(chunk), chunk))
                        index += 1
                    self.wfile.write(b"0\r\n\r\n")
                except ConnectionError:
                    self.close_connection = True  # the viewer has disconnected

            def log_message(self, *_):
                pass

        return Handler
