"""A name server that does not answer."""

import pathlib
import sys

from support import namespaces, silent_name_server
from support.case import EndToEndCase

_NAMESPACES = ("--mount", "--net")


class NameServerTest(EndToEndCase):
    def test_stop_does_not_wait_for_a_name_server_that_never_answers(self):
        if not namespaces.is_permitted(*_NAMESPACES):
            self.skipTest("this machine permits no private network namespace (unshare)")
        if not pathlib.Path("/etc/resolv.conf").exists():
            self.skipTest("/etc/resolv.conf does not exist, so it cannot be mounted over")
        script = str(pathlib.Path(silent_name_server.__file__))
        prefix = [*namespaces.unshare(*_NAMESPACES), sys.executable, script, str(self.directory)]
        questions = self.directory / "questions"  # exists only if this name server was asked
        run = self.play("http://stream.example/sample.ts", prefix=prefix,
                        until=lambda _: questions.exists())
        self.assert_no_frame(run)
