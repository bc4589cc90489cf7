#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draw every family's errors and speed, for the documentation.

usage: plots.py LUXVM FOLDER [--speed FILE]... [--samples N] [--family PATTERN]

Writes erfc_64f_error.svg over the family's typical interval, erfc_64f_error_whole.svg over all numbers
and erfc_64f_speed.svg for every family and type into the folder. Speed comes from the files of
`luxvm bench --json`; without any it is measured, once, and kept in the folder as speed.json.
"""
import argparse
import json
import subprocess
from pathlib import Path

LENGTHS = "10,30,100,300,1000,3000,10000,100000"


def parsed():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("luxvm", type=Path)
    parser.add_argument("folder", type=Path)
    parser.add_argument("--speed", type=Path, action="append", default=[], help="a file of `luxvm bench --json`")
    parser.add_argument("--samples", type=int, default=30_000, help="arguments of an error picture")
    parser.add_argument("--family", nargs="*", default=[], help="only these, as in `luxvm list`")
    return parser.parse_args()


def measured(options):
    path = options.folder / "speed.json"
    subprocess.run([options.luxvm, "bench", *options.family, "--n", LENGTHS, "--compare",
                    "--milliseconds", "3", "--resume", "--json", path], check=True,
                   stdout=subprocess.DEVNULL)
    return path


def main():
    options = parsed()
    options.folder.mkdir(parents=True, exist_ok=True)
    listed = json.loads(subprocess.run([options.luxvm, "list", *options.family, "--json"], check=True,
                                       stdout=subprocess.PIPE).stdout)["functions"]
    kinds = dict.fromkeys(f"{f['family']}_{f['type']}" for f in listed)
    files = options.speed or [measured(options)]
    samples = ["--samples", str(options.samples)]
    pictures = {"error": ["--error", *samples],
                "error_whole": ["--error", "--range=-inf:inf", *samples],
                "speed": ["--speed", *[word for file in files for word in ("--from", file)]]}
    for kind in kinds:
        for name, words in pictures.items():
            subprocess.run([options.luxvm, "plot", kind, *words,
                            "-o", options.folder / f"{kind.lower()}_{name}.svg"], check=True)
    print(f"{len(kinds) * len(pictures)} pictures in {options.folder}")


if __name__ == "__main__":
    main()
