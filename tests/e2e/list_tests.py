"""Prints each test class in a directory with its number of cases, as in "hls_live_test.LiveTest 2", one per
line."""

import collections
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
    classes = collections.Counter(name.rpartition(".")[0] for name in names(suite))
    for name, count in classes.items():
        print(name, count)


if __name__ == "__main__":
    main()
