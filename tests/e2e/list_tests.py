"""Prints the names of all tests in a directory, one a line, as run_test.py takes them."""

import sys
import unittest


def names(suite):
    for item in suite:
        if isinstance(item, unittest.TestSuite):
            yield from names(item)
        else:
            yield item.id()


def main():
    loader = unittest.TestLoader()
    suite = loader.discover(sys.argv[1], pattern="*_test.py")
    if loader.errors:
        sys.exit("\n".join(loader.errors))
    print("\n".join(names(suite)))


if __name__ == "__main__":
    main()
