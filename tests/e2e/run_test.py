"""Runs one test, named module.Class.method. Exits with 77 when it was skipped, for CTest."""

import sys
import unittest

_SKIPPED = 77


def main():
    suite = unittest.defaultTestLoader.loadTestsFromName(sys.argv[1])
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    if not result.wasSuccessful() or result.testsRun == 0:
        return 1
    return _SKIPPED if result.skipped else 0


if __name__ == "__main__":
    sys.exit(main())
