"""The result of each case in the format of GoogleTest: one <testcase> per case, whatever its subtests."""

import dataclasses
import time
import unittest
from xml.etree import ElementTree


@dataclasses.dataclass
class Case:
    suite: str
    name: str
    seconds: float = 0
    failures: list = dataclasses.field(default_factory=list)
    skipped: str | None = None

    @property
    def is_skipped(self):
        return self.skipped is not None and not self.failures


class CaseResults(unittest.TextTestResult):
    def __init__(self, *arguments, **settings):
        super().__init__(*arguments, **settings)
        self.cases = []
        self._running = None
        self._started = 0.0

    def startTest(self, test):
        super().startTest(test)
        suite, _, name = test.id().rpartition(".")
        self._running = Case(suite, name)
        self._started = time.monotonic()
        self.cases.append(self._running)

    def stopTest(self, test):
        self._running.seconds = time.monotonic() - self._started
        self._running = None
        super().stopTest(test)

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self._case(test).failures.append(self.failures[-1][1])

    def addError(self, test, err):
        super().addError(test, err)
        self._case(test).failures.append(self.errors[-1][1])

    def addSubTest(self, test, subtest, err):
        super().addSubTest(test, subtest, err)
        if err is not None:
            self._case(test).failures.append(f"{subtest}\n{self._exc_info_to_string(err, test)}")

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        self._case(test).skipped = reason

    def addUnexpectedSuccess(self, test):
        super().addUnexpectedSuccess(test)
        self._case(test).failures.append("unexpected success")

    def write(self, path):
        """Writes a file that appears only when it is complete."""
        root = ElementTree.Element("testsuites", self._counts(self.cases))
        for suite in dict.fromkeys(case.suite for case in self.cases):
            cases = [case for case in self.cases if case.suite == suite]
            element = ElementTree.SubElement(root, "testsuite", name=suite, **self._counts(cases))
            for case in cases:
                _add_case(element, case)
        path.parent.mkdir(parents=True, exist_ok=True)
        part = path.with_suffix(".part")
        ElementTree.ElementTree(root).write(part, encoding="utf-8", xml_declaration=True)
        part.replace(path)

    def _case(self, test):
        """The running case. A set-up of a class or module that fails or is skipped belongs to no case and
        becomes one."""
        if self._running is None:
            self.cases.append(Case("setup", test.id()))
            return self.cases[-1]
        return self._running

    @staticmethod
    def _counts(cases):
        return {"tests": str(len(cases)),
                "failures": str(sum(bool(case.failures) for case in cases)),
                "skipped": str(sum(case.is_skipped for case in cases)),
                "errors": "0", "time": f"{sum(case.seconds for case in cases):.3f}"}


def _printable(text):
    """Replaces the characters that XML cannot represent."""
    return "".join(c if c in "\n\t" or " " <= c < "\ud800" or "\ue000" <= c < "\ufffe" else "?"
                   for c in text)


def _add_case(suite, case):
    result = "skipped" if case.is_skipped else "completed"
    element = ElementTree.SubElement(suite, "testcase", name=case.name, classname=case.suite,
                                     status="run", result=result, time=f"{case.seconds:.3f}")
    for failure in case.failures:
        text = _printable(failure)
        ElementTree.SubElement(element, "failure", message=text, type="").text = text
    if case.is_skipped:
        ElementTree.SubElement(element, "skipped", message=_printable(case.skipped))
