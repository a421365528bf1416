"""Programs that return from main without a stop, at different moments of a start."""

import pathlib
import sys

import programs
import servers
from support import namespaces, silent_name_server
from support.case import EndToEndCase
from support.certificates import make_certificates
from support.https import HttpsMixin
from support.waiting import wait_until

_FORMATS = ("ts", "m3u8", "flv", "mp4")
_RUNS = 24
_START_MICROSECONDS = 30_000  # setting up TLS takes less
_NAMESPACES = ("--mount", "--net")


def moments(runs=_RUNS):
    """Moments of a start in microseconds, one for each of `runs` runs."""
    return [run * _START_MICROSECONDS // runs for run in range(runs)]


class ExitTest(HttpsMixin, EndToEndCase):
    def start_server(self, answer, tls):
        certificate = None
        if tls:
            make_certificates(self.directory, "IP:127.0.0.1")
            certificate = (self.directory / "server.pem", self.directory / "server.key")
        server = servers.Server(answer, certificate).start()
        self.addCleanup(server.stop)
        return server

    def assert_exits(self, run):
        self.assertEqual(run.returncode, 0, f"{run.args}\n{run.stdout}{run.stderr}")

    def test_exit_while_tls_starts(self):
        server = self.start_server(servers.unfinished_body, tls=True)
        for moment in moments():
            self.assert_exits(programs.run("never", moment, server.url("a.ts")))
        self.assertGreater(server.connections(), 0)

    def test_exit_of_every_format_over_tls(self):
        server = self.start_server(servers.unfinished_body, tls=True)
        for kind in _FORMATS:
            for moment in moments(_RUNS // 4):
                with self.subTest(kind):
                    self.assert_exits(programs.run("never", moment, server.url(f"a.{kind}")))

    def test_exit_while_a_tls_transfer_receives(self):
        server = self.start_server(servers.unfinished_body, tls=True)
        trusting = self.trusting_only_the_test_authority()
        for _ in range(_RUNS // 4):
            run = programs.run("never", "PLAY TS OK:", server.url("a.ts"), trusting)
            self.assert_exits(run)

    def test_exit_of_every_format_over_plain_http(self):
        server = self.start_server(servers.unfinished_body, tls=False)
        for kind in _FORMATS:
            for moment in moments(3):
                with self.subTest(kind):
                    self.assert_exits(programs.run("never", moment, server.url(f"a.{kind}")))

    def test_exit_of_a_program_that_loaded_the_library(self):
        server = self.start_server(servers.unfinished_body, tls=True)
        for moment in moments():
            self.assert_exits(programs.run_loader(moment, server.url("a.ts")))

    def test_exit_that_destroys_the_facade(self):
        server = self.start_server(servers.unfinished_body, tls=True)
        for kind in _FORMATS:
            for moment in moments(_RUNS // 4):
                with self.subTest(kind):
                    self.assert_exits(programs.run("static", moment, server.url(f"a.{kind}")))

    def test_exit_while_a_server_does_not_answer(self):
        server = self.start_server(servers.nothing, tls=False)
        address = server.url("a.ts").replace("http:", "https:")
        with programs.start("never", "stdin", address) as program:
            server.wait_for_connection()
            program.stdin.close()
            self.assertEqual(program.wait(timeout=programs.LIMIT_SECONDS), 0)

    def test_exit_while_a_name_is_looked_up(self):
        if not namespaces.is_permitted(*_NAMESPACES):
            self.skipTest("this machine permits no private network namespace (unshare)")
        if not pathlib.Path("/etc/resolv.conf").exists():
            self.skipTest("/etc/resolv.conf does not exist, so it cannot be mounted over")
        script = str(pathlib.Path(silent_name_server.__file__))
        prefix = [*namespaces.unshare(*_NAMESPACES), sys.executable, script, str(self.directory)]
        questions = self.directory / "questions"
        with programs.start("never", "stdin", "https://stream.example/a.ts", prefix) as program:
            wait_until(questions.exists, "the name look-up")
            program.stdin.close()
            self.assertEqual(program.wait(timeout=programs.LIMIT_SECONDS), 0)
