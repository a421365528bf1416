"""Prints how many tests of a CTest run passed, failed and were skipped.

A CTest test that is a whole program writes what its cases did to a JUnit file of its own, named for
the test, in the directory of the results: then its cases count. One that failed without a failed
case, since it crashed or ran out of time, counts as one more failed test.
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
    """Of the cases of a CTest test, or of the test itself where it has none."""
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
