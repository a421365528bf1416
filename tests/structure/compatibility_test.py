"""The check of docs/compatibility.md: what it reports and what it accepts.

usage: compatibility_test.py CHECKER [TEST...]   CHECKER is scripts/lib/compatibility.py
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

_CHECKER = sys.argv.pop(1)


class CompatibilityListTest(unittest.TestCase):
    """Each case has a tree with a list and some sources of its own."""

    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()  # pylint: disable=consider-using-with
        self.addCleanup(self.directory.cleanup)
        self.root = pathlib.Path(self.directory.name)
        self.write("cmake/Folders.cmake", "set(STREAM_COMPONENT_FOLDERS hls ts)\n"
                                          "set(STREAM_INTERFACE_FOLDERS c)\nset(STREAM_OTHER_FOLDERS host)\n")

    def write(self, name, text):
        """Writes a file of the tree."""
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def check(self):
        """Returns the exit status and the output."""
        run = subprocess.run([sys.executable, "-B", _CHECKER, str(self.root)], stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, check=False, text=True)
        return run.returncode, run.stdout

    def test_list_that_names_each_place_is_accepted(self):
        self.write("docs/compatibility.md", "| oddity | `ts/a.cc:A::~Stop` | hosts |\n")
        self.write("ts/a.cc", "// Kept for compatibility.\n  ~Stop();\n")
        self.write("ts/include/ts/a.h", "// kept for\n// compatibility\nint a;\n")
        self.assertEqual(self.check(), (0, ""))

    def test_file_that_does_not_exist_is_reported(self):
        self.write("docs/compatibility.md", "| oddity | `ts/a.cc:Stop` | hosts |\n")
        self.assertEqual(self.check(), (1, "docs/compatibility.md: there is no file ts/a.cc\n"))

    def test_name_that_the_file_does_not_contain_is_reported(self):
        self.write("docs/compatibility.md", "| oddity | `ts/a.cc:Stop` | hosts |\n")
        self.write("ts/a.cc", "void Start();\n")
        self.assertEqual(self.check(), (1, "docs/compatibility.md: ts/a.cc does not contain Stop\n"))

    def test_source_that_the_list_does_not_name_is_reported(self):
        self.write("docs/compatibility.md", "| oddity | `hls/a.cc` | hosts |\n")
        self.write("hls/a.cc", "")
        for name, text in (("ts/a.cc", "// Kept for compatibility.\n"),
                           ("hls/b.cc", "// kept\n// for compatibility\n"),
                           ("c/a.h", "/// kept for\n/// compatibility\n")):
            with self.subTest(text):
                self.write(name, text)
                self.assertEqual(self.check(), (1, f"{name}: says \"kept for compatibility\", but "
                                                   "docs/compatibility.md does not name it\n"))
                self.write(name, "")


if __name__ == "__main__":
    unittest.main()
