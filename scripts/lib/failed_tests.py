"""Prints why the failed tests of a CTest run failed.

For a program that wrote the results of its cases (count_tests.py), prints the messages of the failed
cases. For any other test, and for a program that crashed or timed out, prints the end of its output.
"""

import pathlib
import sys

from count_tests import cases_of, is_failed

MOST_TESTS = 10
LAST_LINES = 60


def end_of(text):
    return "\n".join(text.splitlines()[-LAST_LINES:])


def reasons(test, results):
    """Yields pairs of a name and a text."""
    path = results / f"{test.get('name')}.xml"
    cases = [case for case in cases_of(path) if is_failed(case)] if path.exists() else []
    if not cases:
        yield test.get("name"), end_of(test.findtext("system-out") or "")
    for case in cases:
        texts = [failure.text or failure.get("message") or "" for failure in case.iter("failure")]
        yield f"{case.get('classname')}.{case.get('name')}", end_of("\n".join(texts))


def main(junit, results):
    failed = [reason for test in cases_of(junit) if is_failed(test)
              for reason in reasons(test, pathlib.Path(results))]
    for name, text in failed[:MOST_TESTS]:
        print(f"-- {name}:\n{text}")
    if len(failed) > MOST_TESTS:
        print(f"-- and {len(failed) - MOST_TESTS} more")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2])
