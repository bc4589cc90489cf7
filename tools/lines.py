#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Lines of the tests beside those of all other code: fails when they are more than a third.

Counted is what is written by hand and has a logic: not tables, data in rows, documents, nor what is
built.
"""
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
CODE = {".c", ".cpp", ".h", ".hpp", ".py", ".sh", ".cmake"}
NAMES = {"CMakeLists.txt", "Makefile", "run"}


def is_code(path):
    parts = path.relative_to(ROOT).parts
    return (parts[0] not in ("build", ".git") and "generated" not in parts
            and (path.suffix in CODE or path.name in NAMES) and path.is_file())


counts = {True: 0, False: 0}
for path in ROOT.rglob("*"):
    if is_code(path):
        counts[path.relative_to(ROOT).parts[0] == "tests"] += path.read_bytes().count(b"\n")
share = counts[True] / counts[False]
print(f"{counts[True]} lines in tests/, {counts[False]} elsewhere: {share:.1%}")
if share > 1 / 3:
    sys.exit("The tests are more than a third of the other code: say more with tables of cases.")
