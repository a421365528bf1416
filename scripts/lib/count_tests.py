"""Prints how many tests of a CTest run passed, failed and were skipped.

If a CTest test is a whole program, the program writes the results of its cases to a JUnit file in the
results directory, named for the test; then its cases are counted. A program that failed without a failed
case, because it crashed or timed out, counts as one more failed test.
"""

import collections
import pathlib
import sys
from xml.etree import ElementTree


def is_failed(case):
    return case.find("failure") is not None or case.get("status") == "fail"


def is_skipped(case):
    return (case.find("skipped") is not None or case.get("result") == "skipped"
            or case.get("status") in ("notrun", "disabled"))


def outcome(case):
    if is_failed(case):
        return "failed"
    return "skipped" if is_skipped(case) else "passed"


def cases_of(path):
    return ElementTree.parse(path).getroot().iter("testcase")


def outcomes_of(test, results):
    """Returns the outcomes of the cases of a CTest test, or of the test itself if it has no cases."""
    path = results / f"{test.get('name')}.xml"
    if not path.exists():
        return [outcome(test)]
    outcomes = [outcome(case) for case in cases_of(path)]
    if is_failed(test) and "failed" not in outcomes:
        outcomes.append("failed")
    return outcomes


def count(junit, results):
    counts = collections.Counter()
    for test in cases_of(junit):
        counts.update(outcomes_of(test, pathlib.Path(results)))
    return counts


if __name__ == "__main__":
    total = count(sys.argv[1], sys.argv[2])
    print(total["passed"], total["failed"], total["skipped"])
