"""Prints the end of what each failed test of a CTest JUnit file wrote."""

import sys
import xml.etree.ElementTree as ElementTree

from count_tests import is_failed

MOST_TESTS = 10
LAST_LINES = 60


def failed(path):
    for case in ElementTree.parse(path).getroot().iter("testcase"):
        if is_failed(case):
            yield case.get("name"), case.findtext("system-out") or ""


def main(path):
    tests = list(failed(path))
    for name, output in tests[:MOST_TESTS]:
        print(f"-- {name}:")
        print("\n".join(output.splitlines()[-LAST_LINES:]))
    if len(tests) > MOST_TESTS:
        print(f"-- and {len(tests) - MOST_TESTS} more")


if __name__ == "__main__":
    main(sys.argv[1])
