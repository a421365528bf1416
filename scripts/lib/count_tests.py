"""Prints how many tests of a CTest JUnit file passed, failed and were skipped."""

import sys
import xml.etree.ElementTree as ElementTree


def is_failed(case):
    return case.find("failure") is not None or case.get("status") == "fail"


def count(path):
    counts = {"passed": 0, "failed": 0, "skipped": 0}
    for case in ElementTree.parse(path).getroot().iter("testcase"):
        if is_failed(case):
            counts["failed"] += 1
        elif case.find("skipped") is not None or case.get("status") in ("notrun", "disabled"):
            counts["skipped"] += 1
        else:
            counts["passed"] += 1
    return counts


if __name__ == "__main__":
    print(*count(sys.argv[1]).values())
