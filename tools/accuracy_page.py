#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes docs/accuracy.md from the files of `luxvm accuracy --json`.

usage: accuracy_page.py PAGE FILE.json...

The page's text up to the line <!-- figures --> stays as it is.
"""

import json
import math
import pathlib
import sys

TYPES = {
    "32f": "Single precision",
    "64f": "Double precision",
    "32fc": "Complex, single precision",
    "64fc": "Complex, double precision",
}
MARK = "<!-- figures -->"


def measured(entry):
    """The largest error, in the terms of the guarantee if these are not units in the last place."""
    if entry["max_ulp"] == 0:
        return "exact"
    ulp = f"{entry['max_ulp']:.4f}" if entry["max_ulp"] < 1000 else f"{entry['max_ulp']:.3g}"
    bound = entry["guarantee"]["bound"]
    if not bound.startswith("2^-"):
        return ulp + " ulp"
    normwise = bound.endswith("normwise")
    value = entry["max_normwise" if normwise else "max_relative"]
    return f"2^{math.log2(value):.2f}{' normwise' if normwise else ''} ({ulp} ulp)"


def verdict(judged):
    return judged["bound"] + ("" if judged["met"] else " **missed**")


def merged(entries):
    """Grades that share one computation have the same figures: one row."""
    rows = []
    for entry in entries:
        last = rows[-1] if rows else None
        if last and last[0]["family"] == entry["family"] and last[0]["worst"] == entry["worst"]:
            last.append(entry)
        else:
            rows.append([entry])
    return rows


def row(entries):
    entry = entries[-1]  # the best grade
    grades = ", ".join(e["grade"] for e in reversed(entries)) or "-"
    worst = entry["worst"][0]["arguments"] if entry["worst"] else []
    argument = " ".join(f"`{x}`" for x in worst) or "-"
    special = entry["special_values"]
    wrong = len(special["failures"])
    return "| {} | {} | {} | {} | {:.4f} | {} | {} | {} |".format(
        entry["family"],
        grades,
        verdict(entry["guarantee"]),
        measured(entry) + (", all arguments" if entry["method"] == "exhaustive" else ""),
        entry["mean_ulp"],
        argument,
        verdict(entry["goal"]) if "goal" in entry else "-",
        f"{special['rows']}" + (f", **{wrong} wrong**" if wrong else ""),
    )


def section(kind, entries):
    lines = [
        f"## {TYPES[kind]} ({kind})",
        "",
        "| Function | Grades | Guaranteed | Measured | Mean ulp | At | Goal | Special rows |",
        "|---|---|---|---|---|---|---|---|",
    ]
    lines += [row(group) for group in merged(entries)]
    beside = [e for e in entries if "exceptions" in e]
    for entry in beside:
        lines += [
            "",
            f"`{entry['name']}`: besides, {entry['exceptions']['count']} results among the documented "
            f"exceptions, up to {entry['exceptions']['max_ulp']:.3g} ulp.",
        ]
    if (pathlib.Path(sys.argv[1]).parent / f"plots/accuracy_{kind}.svg").exists():
        lines += ["", f"![Errors over the argument](plots/accuracy_{kind}.svg)"]
    return lines + [""]


def main():
    page = pathlib.Path(sys.argv[1])
    documents = [json.loads(pathlib.Path(name).read_text()) for name in sys.argv[2:]]
    entries = [entry for document in documents for entry in document["functions"]]
    text = page.read_text()
    if MARK not in text:
        sys.exit(f"{page} lacks the line {MARK}")
    results = sum(entry["count"] for entry in entries)
    lines = [
        "",
        f"Measured {documents[0]['date']}, library {documents[0]['library']['version']}: "
        f"{len(entries)} functions, {results:,} results, {documents[0]['samples']:,} sampled "
        f"arguments for a function and type besides its steps, seed {documents[0]['seed']}.",
        "",
    ]
    for kind in TYPES:
        of_kind = [entry for entry in entries if entry["type"] == kind]
        if of_kind:
            lines += section(kind, of_kind)
    page.write_text(text.split(MARK)[0] + MARK + "\n" + "\n".join(lines))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main()
