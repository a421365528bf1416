"""The word list of the check: what it reports and what it ignores.

usage: words_test.py CHECKER [TEST...]   CHECKER is scripts/lib/words.py
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

_CHECKER = sys.argv.pop(1)

# The words of the list, by the words to use instead.
_WORDS = {
    "received bytes, pending frames": ("what came", "what waits"),
    "receive, arrive, be available": ("come", "comes", "came", "coming", "Came"),
    "again, restart, reset, retry": ("anew", "afresh", "once more"),
    "skip, drop, discard, release": ("pass over", "passes over", "passed over", "left out", "let go of"),
    "producer, source": ("giver", "givers"),
    "consumer, sink": ("taker", "takers"),
    "be stored, be at": ("lies", "lay", "lying"),
    "before": ("in front of",),
    "has finished": ("is over", "are over"),
    "fetch, succeed, fail": ("could be had", "could not be had", "was had", "were had", "to be had"),
    "space, capacity": ("room", "rooms"),
    "report, notify, log, print": ("tell", "tells", "told", "telling"),
    "Kept for compatibility": ("on purpose", "deliberate", "deliberately"),
}

# The text of a file in which the word is on the third line.
_KINDS = {
    "a.h": "#pragma once\n\n// Starts anew.\n",
    "b.cc": "int a;\n\nint b = 1'000;  // it's anew\n",
    "c.c": "/* Starts,\n   stops and\n   starts anew. */\n",
    "d_test.cc": "// A test.\n\nTEST(StartTest, StreamStartsAnew) {}\n",
    "e.js": "const a = `// anew`;\n\nconst b = 'x';  // anew\n",
    "e.mjs": "const a = 1;\n\n/* anew */\n",
    "e.css": "p {\n}\n/* anew */\n",
    "f.py": '"""A\ndocstring,\nanew."""\n',
    "g_test.py": "class A:\n\n    def test_start_anew(self):\n        pass\n",
    "h.py": "A = 1\n\nB = 2  # anew\n",
    "i.cmake": "set(a b)\n\nset(c d)  # anew\n",
    "i.txt": "set(a b)\n\n# anew\n",
    "i.in": "set(a b)\n\n# anew\n",
    "i.yml": "a: b\n\n# anew\n",
    "j.sh": "a=1\n\n# anew\n",
    ".settings": "a: b\n\n# anew\n",
    "script": "#!/bin/sh\n\n# anew\n",
    "k.md": "# Title\n\nStarts anew.\n",
}


class WordsTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self._root = pathlib.Path(directory.name)

    def _write(self, name, text):
        path = self._root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def _assert_reports(self, *lines):
        """Expects exactly these lines, and failure if there are any."""
        ended = subprocess.run([sys.executable, "-B", _CHECKER, str(self._root)], check=False,
                               capture_output=True, text=True, timeout=60)
        self.assertEqual((ended.stdout.splitlines(), ended.stderr), (list(lines), ""))
        self.assertEqual(ended.returncode, 1 if lines else 0)

    def test_each_word_is_reported_with_better_ones(self):
        lines = [f'"{word}": {instead}' for instead, words in _WORDS.items() for word in words]
        words = [word for words in _WORDS.values() for word in words]
        self._write("a.md", "".join(f"The {word} in a sentence.\n" for word in words))
        self._assert_reports(*(f"a.md:{number}: {line}" for number, line in enumerate(lines, 1)))

    def test_each_kind_of_file_is_read_and_the_line_is_named(self):
        for name, text in _KINDS.items():
            self._write(name, text)
        words = {name: "Anew" if name == "d_test.cc" else "anew" for name in sorted(_KINDS)}
        self._assert_reports(*(f'{name}:3: "{word}": again, restart, reset, retry'
                               for name, word in words.items()))

    def test_words_on_two_lines_of_a_comment_are_reported(self):
        self._write("a.h", "// The first segments are passed\n// over by the parser.\n")
        self._write("b.py", "# Starts once\n# more.\n")
        self._write("c.md", "The others are left\nout.\n")
        self._assert_reports('a.h:1: "passed over": skip, drop, discard, release',
                             'b.py:1: "once more": again, restart, reset, retry',
                             'c.md:1: "left out": skip, drop, discard, release')

    def test_words_inside_other_words_are_no_words_of_the_list(self):
        self._write("a.h", "// Broom, income, intellectual, layout, lay out, takeover.\n")
        self._assert_reports()

    def test_strings_and_code_are_ignored(self):
        self._write("a.cc", 'const char* told = "came";  // received\nprint("// came");\n')
        self._write("b.cc", 'const char* text = R"(\nsee http://host/ for what came\n)";\n')
        self._write("c.py", 'print("# came")\ncame = "came"\n')
        self._write("d.md", "The line `nothing came` and the text \"nothing came\".\n")
        self._assert_reports()

    def test_built_files_are_ignored(self):
        self._write("build/a.h", "// came\n")
        self._write("host/build/a.h", "// came\n")
        self._assert_reports()


if __name__ == "__main__":
    unittest.main()
