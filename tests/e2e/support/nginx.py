"""nginx on a free port of the loopback interface. All files that it reads or writes are in one directory."""

import os
import pathlib
import shutil
import signal
import socket
import subprocess

from support.waiting import wait_until

_CONFIG = """
{user}
worker_processes 1;
pid nginx.pid;
error_log error.log;
events {{}}
http {{
  types {{ text/html html; video/mp2t ts; }}
  default_type application/octet-stream;
  log_format requests '$request_uri $status range=$http_range agent=$http_user_agent';
  access_log access.log requests;
  client_body_temp_path temp_body;
  proxy_temp_path temp_proxy;
  fastcgi_temp_path temp_fastcgi;
  uwsgi_temp_path temp_uwsgi;
  scgi_temp_path temp_scgi;
  server {{
    listen 127.0.0.1:{port}{listen_options};
    root www;
    {directives}
  }}
}}
"""


def _executable():
    path = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"
    found = shutil.which("nginx", path=path)
    if found is None:
        raise FileNotFoundError("nginx is not installed")
    return found


def _free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Nginx:
    """Serves DIRECTORY/www. `directives` goes into the server block; $PORT in it is replaced by the port."""

    def __init__(self, directory, directives="", tls=False):
        self.directory = pathlib.Path(directory)
        self.port = None
        self._directives = directives
        self._scheme = "https" if tls else "http"

    def url(self, path):
        return f"{self._scheme}://127.0.0.1:{self.port}/{path}"

    def start(self):
        """nginx goes to the background only once it listens. If another program has taken the port since it
        was found to be free, another port is tried."""
        for _ in range(10):
            self.port = _free_port()
            self._write_config()
            started = subprocess.run(self._command(), capture_output=True, check=False, text=True,
                                     timeout=60)
            if started.returncode == 0:
                return self
            if "Address already in use" not in started.stderr:
                break
        raise RuntimeError(f"nginx does not start: {started.stderr}")

    def requests(self, count):
        """The requests that have ended, one line each: path, status, range and user agent. Waits for `count`
        of them, because nginx may log the end of a request after the client has seen it."""
        wait_until(lambda: len(self.requests_so_far()) >= count, f"nginx logs {count} requests")
        return self.requests_so_far()

    def requests_so_far(self):
        """The requests that have been logged."""
        return (self.directory / "access.log").read_text().splitlines()

    def stop(self):
        pid = int((self.directory / "nginx.pid").read_text())
        os.kill(pid, signal.SIGTERM)
        wait_until(lambda: not (self.directory / "nginx.pid").exists(), "nginx ends")

    def _command(self):
        return [_executable(), "-p", f"{self.directory}/", "-e", "error.log", "-c", "nginx.conf"]

    def _write_config(self):
        text = _CONFIG.format(
            user="user root;" if os.geteuid() == 0 else "",
            port=self.port,
            listen_options=" ssl" if self._scheme == "https" else "",
            directives=self._directives.replace("$PORT", str(self.port)),
        )
        (self.directory / "nginx.conf").write_text(text)
