#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Which part of the tree may include which.

Usage: include_rules.py SOURCE-DIRECTORY. Names every #include line that breaks a rule, and the
rule. Each part may include its own files and the public headers, and what stands here; what is
shared moves down to a part that both may include.
"""

import pathlib
import re
import sys

TABLES = r"(core|tables)/generated/\w+\.h"
RECORDS = r"core/\w+\.def"

# Part: what else it may include, and why no more.
RULES = {
    "include": (r"$^", "a public header stands on public headers alone"),
    "core": (r"$^", "core/ stands on nothing"),
    "luxcore": (r"$^", "luxcore/ stands on nothing"),
    "wide": (r"core/wide\.(h|def)", "wide/ is an export; its steps stand beside their kernels"),
    "kernels": (rf"core/(bits|control|shapes|wide|wide_walk)\.h|{TABLES}",
                "a kernel includes the words in kernels/, its own folder, bits, control, shapes and wide of core/"),
    "extended": (r"core/.*", "extended/ stands on core/ alone"),
    "complex": (r"core/.*|extended/.*|kernels/(frame|lanes)\.h",
                "complex/ stands on extended/, the frame and packed singles"),
    "catalog": (rf"core/(shapes|wide_head)\.h|{RECORDS}", "catalog/ knows the records, shapes and wide_head of core/ and no more"),
    "conformance": (rf"catalog/.*|{RECORDS}", "conformance/ stands on catalog/ and the records"),
    "accuracy": (rf"catalog/.*|{RECORDS}", "accuracy/ stands on catalog/ and the records"),
    "bench": (rf"catalog/.*|{RECORDS}", "bench/ stands on catalog/ and the records"),
    "cli": (rf"(catalog|conformance|accuracy|bench)/.*|{RECORDS}",
            "cli/ knows of the library what is public, and the records"),
    "examples": (r"$^", "examples include what a user has"),
    "tests": (r"(catalog|conformance|accuracy|bench|cli|core|extended|complex)/.*|.*/generated/.*",
              "tests reach kernels by their exports; of their sources they include generated tables only"),
}


def broken_rule(source, included):
    """The rule that the file `source` breaks when it includes `included`, or None."""
    part, target = source.parts[0], included.split("/")
    if part not in RULES:
        return f"{part}/ has no rule; give it one in {pathlib.Path(__file__).name}"
    if len(target) == 1:
        # An example stands for itself, and so do its folder's headers.
        if target[0].startswith("lux") or part == "examples":
            return None
        return "files are included by their path from the root"
    allowed, rule = RULES[part]
    if target[0] == part:
        # A family's kernels share with one another what stands in kernels/ itself.
        apart = part == "kernels" and len(target) > 2 and list(source.parts[1:2]) != target[1:2]
        return "what kernels of two folders share stands in kernels/" if apart else None
    return None if re.fullmatch(allowed, included) else rule


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if match := re.match(r'\s*#\s*include\s*"([^"]+)"', line):
            yield number, match[1]


def main():
    root = pathlib.Path(sys.argv[1])
    files = sorted(path for part in root.iterdir() if part.is_dir() and part.name != "build"
                   for path in part.rglob("*") if path.suffix in (".h", ".c", ".cpp", ".def"))
    count = broken = 0
    for path in files:
        source = path.relative_to(root)
        for number, included in includes(path):
            count += 1
            if rule := broken_rule(source, included):
                broken += 1
                print(f"{source}:{number}: includes {included}: {rule}")
    # Lines that break rules, so that a reader who finds nothing is noticed.
    wrong = [("extended/expl.cpp", "kernels/frame.h"), ("cli/list.cpp", "core/bits.h"),
             ("kernels/trig/sin.cpp", "kernels/roots/root_32f.h"), ("bench/libm.cpp", "accuracy/ulp.h"),
             ("tests/x.cpp", "kernels/frame.h"), ("kernels/frame.h", "kernels/trig/turns.h")]
    missed = [pair for pair in wrong if not broken_rule(pathlib.PurePath(pair[0]), pair[1])]
    if missed or count < 100:
        print(f"this check sees too little: {count} lines, {missed}")
    return 1 if broken or missed or count < 100 else 0


if __name__ == "__main__":
    sys.exit(main())
