#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""coverage.py BUILD: how much of the libraries ran, by the counts that a build with LUX_COVERAGE left.
Fails when a line never ran, or less than 95 % of the branches were taken.

A line of a header is compiled into many functions, each with branches of its own: it ran if it ran in
one of them, and the branches of its copies are joined in order. A line whose comment says "not counted:"
and why is left out.
"""
import gzip
import json
import subprocess
import sys
import tempfile
from collections import defaultdict
from itertools import zip_longest
from pathlib import Path

LEAST_BRANCHES = 0.95
ROOT = Path(__file__).resolve().parent.parent
LIBRARIES = {"core", "luxcore", "kernels", "extended", "complex"}


def counted_lines(counts):
    """(file, line, runs, how often each of its branches was taken) of one object."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["gcov", "--json-format", "--branch-probabilities", counts], cwd=folder, check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for output in Path(folder).iterdir():
            for file in json.loads(gzip.decompress(output.read_bytes()))["files"]:
                for line in file["lines"]:
                    taken = [branch["count"] for branch in line["branches"] if not branch["throw"]]
                    yield file["file"], line["line_number"], line["count"], taken


runs, branches, texts = defaultdict(int), defaultdict(list), {}
found = sorted(Path(sys.argv[1]).resolve().glob("*core/**/*.gcda"))
if not found:
    sys.exit(f"{sys.argv[1]} has no counts: no test has run in it")
for counts in found:
    for file, number, count, taken in counted_lines(counts):
        path = Path(file)
        if not path.is_relative_to(ROOT) or path.relative_to(ROOT).parts[0] not in LIBRARIES:
            continue
        if path not in texts:
            texts[path] = path.read_text().split("\n")
        if "not counted: " in texts[path][number - 1]:
            continue
        place = path, number
        runs[place] += count
        branches[place] = [a + b for a, b in zip_longest(branches[place], taken, fillvalue=0)]


def told(place, what):
    path, number = place
    print(f"{path.relative_to(ROOT)}:{number}: {what}: {texts[path][number - 1].strip()}")


for place in sorted(runs):
    missed = branches[place].count(0)
    if not runs[place]:
        told(place, "never ran")
    elif missed:
        told(place, f"{missed} of {len(branches[place])} branches never taken")
lines = sum(map(bool, runs.values())) / len(runs)
taken = [bool(count) for place in branches.values() for count in place]
print(f"lines {lines:.2%} of {len(runs)}, branches {sum(taken) / len(taken):.2%} of {len(taken)}")
if lines < 1 or sum(taken) < LEAST_BRANCHES * len(taken):
    sys.exit("all lines, and at least 95 % of the branches, are to be tried by the fast tests")
