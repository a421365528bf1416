"""The sources of the component, of the C interface and of the console host as Visual C++ would compile them.

Differences of its own standard library are not seen: the headers are those of GCC's library, which include
one another more freely.
"""

import fnmatch
import os
import pathlib
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor

from foreign_names import foreign_names
from visual_c_build import VisualCBuild

_ROOT = pathlib.Path(os.environ["SOURCE_DIR"])
_FOLDERS = os.environ["FOLDERS"].split(":")
_NOT_COMPILED = pathlib.Path(__file__).with_name("not_compiled.txt")


def _files(*patterns):
    """The files of the folders that match the patterns, relative to the project."""
    return {str(path.relative_to(_ROOT)) for folder in _FOLDERS for pattern in patterns
            for path in (_ROOT / folder).rglob(pattern)}


def _excluded():
    """The patterns of not_compiled.txt, in its order."""
    lines = _NOT_COMPILED.read_text().splitlines()
    return [line.split(": ")[0] for line in lines if not line.startswith("#")]

# Each of these must be refused, which shows that the check can fail.
_REFUSED = {
    "a GNU extension": "int f() { return ({ int a = 1; a; }); }",
    "a type of POSIX": "#include <windows.h>\nssize_t size = 0;",
    "a function of POSIX": "#include <string>\nvoid f() { usleep(1); }",
    "a long of 64 bits": "static_assert(sizeof(long) == 8);",
    "an unknown name in a template": "template <class T> void f(T) { NotDeclared(1); }",
    "an unused variable": "void f() { int a = 1; }",
    "no C++": "int f( {",
}


class VisualCTypesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.build = VisualCBuild(pathlib.Path(os.environ["WORK_DIR"]))
        cls.sources = cls.build.sources()

    def test_each_source_compiles_without_a_warning(self):
        self.assertGreater(len(self.sources), 100)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            complaints = dict(zip(self.sources, pool.map(
                self.build.complaints, self.sources.keys(), self.sources.values())))
        for source, complaint in sorted(complaints.items()):
            print(f"{source}: {'refused' if complaint else 'checked'}", file=sys.stderr)
            with self.subTest(source):
                self.assertEqual(complaint, "")

    def test_code_that_visual_c_refuses_is_refused(self):
        options = next(iter(self.sources.values()))
        source = pathlib.Path(os.environ["WORK_DIR"]) / "refused.cc"
        source.write_text("int f() { return 1; }\n")
        self.assertEqual(self.build.complaints(source, options), "")
        for situation, text in _REFUSED.items():
            with self.subTest(situation):
                source.write_text(text + "\n")
                self.assertIn("error:", self.build.complaints(source, options))

    def test_each_source_is_compiled_or_excluded_for_a_reason(self):
        not_compiled = _files("*.cc") - self.sources.keys()
        for pattern in _excluded():
            matching = set(fnmatch.filter(not_compiled, pattern))
            self.assertTrue(matching, f"{_NOT_COMPILED.name} lists '{pattern}', which matches no source")
            not_compiled -= matching
        self.assertEqual(not_compiled, set())
        self.assertEqual(self.sources.keys() - _files("*.cc"), set())

    def test_no_source_uses_names_that_visual_c_lacks(self):
        for path in sorted(_files("*.h") | self.sources.keys()):
            with self.subTest(path):
                self.assertEqual(foreign_names(path, (_ROOT / path).read_text()), [])


class ForeignNamesTest(unittest.TestCase):
    def test_headers_of_posix(self):
        self.assertEqual(foreign_names("a.cc", "#include <unistd.h>\n#include <string>\n"), ["<unistd.h>"])

    def test_extensions_of_gcc(self):
        self.assertEqual(foreign_names("a.cc", "__typeof__(1) x; int y __attribute__((used));"),
                         ["__attribute__", "__typeof__"])

    def test_functions_of_mingw(self):
        self.assertEqual(foreign_names("a.cc", "void f() { fseeko(file, 0, 0); }"), ["fseeko"])

    def test_comments_and_texts_are_no_code(self):
        self.assertEqual(foreign_names("a.cc", '// fseeko\n/* __asm */ const char* x = "ftello";'), [])


if __name__ == "__main__":
    unittest.main()
