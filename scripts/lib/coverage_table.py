"""Prints the coverage of each folder from a CSV file of gcovr.

  coverage_table.py CSV REQUIRED FOLDERS

Fails if fewer than REQUIRED percent of the lines in all folders together were run, or if one of the
folders is missing.
"""

import collections
import csv
import pathlib
import sys

COUNTED = ("line_total", "line_covered", "branch_total", "branch_covered")


def counts_by_folder(path):
    counts = collections.defaultdict(collections.Counter)
    with open(path, encoding="utf-8", newline="") as file:
        for row in csv.DictReader(file):
            counts[pathlib.Path(row["filename"]).parts[0]].update({name: int(row[name]) for name in COUNTED})
    return counts


def share(covered, total):
    return 100 * covered / total if total else 100.0


def line_of(name, count):
    lines = share(count["line_covered"], count["line_total"])
    branches = share(count["branch_covered"], count["branch_total"])
    return (f"{name:11} {count['line_covered']:6} of {count['line_total']:6} lines {lines:6.1f} %   "
            f"{count['branch_covered']:6} of {count['branch_total']:6} branches {branches:6.1f} %")


def main(path, required, folders):
    counts = counts_by_folder(path)
    missing = set(folders) - counts.keys()
    if missing:
        sys.exit(f"no line was counted in: {' '.join(sorted(missing))}")
    for folder in folders:
        print(line_of(folder, counts[folder]))
    total = sum((counts[folder] for folder in folders), collections.Counter())
    print(line_of("component", total))
    if share(total["line_covered"], total["line_total"]) < required:
        sys.exit(f"fewer than {required:g} % of the lines were run")


if __name__ == "__main__":
    main(sys.argv[1], float(sys.argv[2]), sys.argv[3].split())
