"""The results of the Python tests, as the check counts them."""

import pathlib
import subprocess
import sys
import tempfile
import unittest
from xml.etree import ElementTree

_CASES = '''
import unittest

class Cases(unittest.TestCase):
    def test_that_passes(self):
        pass
    def test_that_fails_with_text_that_xml_cannot_hold(self):
        self.fail("\\x1b \\udcff")
    def test_that_fails_in_two_subtests(self):
        for number in range(2):
            with self.subTest(number):
                self.fail()
    def test_that_fails_in_its_clean_up(self):
        self.addCleanup(self.fail)
    def test_that_raises(self):
        raise OSError
    @unittest.expectedFailure
    def test_that_should_fail(self):
        pass
    def test_that_is_skipped(self):
        self.skipTest("a reason")

class Skipped(unittest.TestCase):
    def test_that_is_skipped(self):
        self.skipTest("a reason")

class NotSetUp(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        raise OSError
    def test_that_does_not_run(self):
        pass
'''


class CaseResultsTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory(prefix="stream-results-")
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)
        (self.directory / "made_up.py").write_text(_CASES)
        self.xml = self.directory / "results" / "made_up.xml"

    def run_tests(self, name):
        """The exit code."""
        runner = pathlib.Path(__file__).with_name("run_test.py")
        return subprocess.run(
            [sys.executable, "-B", str(runner), "--xml", str(self.xml), name], capture_output=True,
            check=False, cwd=self.directory, env={"PYTHONPATH": str(self.directory)}, timeout=60).returncode

    def cases(self):
        """Whether each case failed, was skipped or passed."""
        results = {}
        for case in ElementTree.parse(self.xml).getroot().iter("testcase"):
            failed, skipped = case.findall("failure"), case.findall("skipped")
            results[case.get("name")] = "failed" if failed else "skipped" if skipped else "passed"
        return results

    def test_each_case_has_one_result(self):
        self.assertEqual(self.run_tests("made_up.Cases"), 1)
        self.assertEqual(self.cases(), {
            "test_that_passes": "passed",
            "test_that_fails_with_text_that_xml_cannot_hold": "failed",
            "test_that_fails_in_two_subtests": "failed",
            "test_that_fails_in_its_clean_up": "failed",
            "test_that_raises": "failed",
            "test_that_should_fail": "failed",
            "test_that_is_skipped": "skipped",
        })
        root = ElementTree.parse(self.xml).getroot()
        self.assertEqual([root.get(name) for name in ("tests", "failures", "skipped")], ["7", "5", "1"])

    def test_cases_that_pass_exit_with_zero(self):
        self.assertEqual(self.run_tests("made_up.Cases.test_that_passes"), 0)

    def test_cases_that_are_all_skipped_exit_with_77(self):
        self.assertEqual(self.run_tests("made_up.Skipped"), 77)

    def test_set_up_of_a_class_that_fails_is_a_failed_case(self):
        self.assertEqual(self.run_tests("made_up.NotSetUp"), 1)
        self.assertEqual(list(self.cases().values()), ["failed"])

    def test_name_that_does_not_exist_is_a_failed_case(self):
        self.assertEqual(self.run_tests("made_up.Nothing"), 1)
        self.assertEqual(list(self.cases().values()), ["failed"])

    def test_results_of_an_older_run_are_removed(self):
        self.run_tests("made_up.Skipped")
        self.run_tests("made_up.Cases.test_that_passes")
        self.assertEqual(self.cases(), {"test_that_passes": "passed"})
