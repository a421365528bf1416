"""Runs tests, named module.Class or module.Class.method, and writes the result of each case.

usage: run_test.py [--xml FILE] NAME...   Exits with 77 when all were skipped, for CTest.
"""

import argparse
import pathlib
import sys
import unittest

from case_results import CaseResults

_SKIPPED = 77


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--xml", type=pathlib.Path, help="the file for the results")
    parser.add_argument("names", nargs="+")
    arguments = parser.parse_args()
    if arguments.xml is not None:
        arguments.xml.unlink(missing_ok=True)  # of an older run, in case this one does not finish
    suite = unittest.defaultTestLoader.loadTestsFromNames(arguments.names)
    results = unittest.TextTestRunner(verbosity=2, resultclass=CaseResults).run(suite)
    if arguments.xml is not None:
        results.write(arguments.xml)
    if not results.wasSuccessful() or not results.cases:
        return 1
    return _SKIPPED if all(case.is_skipped for case in results.cases) else 0


if __name__ == "__main__":
    sys.exit(main())
