#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measure every function and renew docs/performance.md and its plots.

The figures of each run are kept under --figures until all are there; a run that is interrupted goes
on where it stopped, unless the library was built anew since. What the page says above its marker
line is left as it is.
"""
import argparse
import json
import os
import shlex
import subprocess
import sys
from pathlib import Path

MARKER = "<!-- figures -->"
TYPES = {"32f": "Single precision", "64f": "Double precision", "32fc": "Single precision, complex",
         "64fc": "Double precision, complex"}
BEST = ("A24", "A53", None)
CURVES = 8
CURVE_FAMILIES = ["Inv", "Sqrt", "Exp", "Ln", "Pow", "Sin", "Atan2", "Tanh", "Erf", "Floor"]
THREADED = ["luxsInv_32f_A24", "luxsExp_32f_A24", "luxsExp_64f_A53"]


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("luxvm", type=Path, help="the program")
    parser.add_argument("page", type=Path, help="docs/performance.md; plots go to plots/ beside it")
    parser.add_argument("--figures", type=Path, required=True, help="folder of the JSON files")
    parser.add_argument("--milliseconds", type=int, default=50, help="spent on one figure a pass")
    parser.add_argument("--passes", type=int, default=3, help="of which the best figures count")
    parser.add_argument("--no-measuring", action="store_true",
                        help="write the page from the JSON files that are there")
    return parser.parse_args()


# ---- Measuring -------------------------------------------------------------------------------------

def function_list(luxvm):
    return json.loads(subprocess.run([luxvm, "list", "--json"], check=True,
                                     stdout=subprocess.PIPE).stdout)["functions"]


def curve_names(functions, type_name):
    of_type = {f["family"]: f["name"] for f in functions
               if f["type"] == type_name and f["grade"] in BEST}
    preferred = [f for f in CURVE_FAMILIES if f in of_type]
    return [of_type[family] for family in (preferred + [f for f in of_type if f not in preferred])[:CURVES]]


def runs(functions):
    """The name of each run's file, and what `luxvm bench` is told."""
    best = [f["name"] for f in functions if f["grade"] in BEST]
    yield "all", ["--compare"]
    yield "special", [*best, "--special", "1%"]
    yield "blocks", [*best, "--special", "4"]
    yield "offset", [*best, "--offset", "0,1"]
    if any(f["family"] in ("Sin", "Cos", "SinCos", "Tan") and f["type"] in ("32f", "64f")
           for f in functions):
        yield "large", ["--large", "--compare"]
    for type_name in TYPES:
        if names := curve_names(functions, type_name):
            yield f"length_{type_name}", [*names, "--n", "1:1000000"]
    processors = len(os.sched_getaffinity(0))
    names = [f["name"] for f in functions if f["name"] in THREADED]
    if processors > 1 and names:
        yield "threads", [*names, "--n", "threshold", "--threads", f"1,{processors}"]


def is_complete(path, newer_than):
    return (path.exists() and path.stat().st_mtime > newer_than
            and json.loads(path.read_text())["complete"])


def measure(options):
    programs = [options.luxvm, *options.luxvm.parent.parent.glob("lib*/**/lib*.so*")]
    newest = max(p.stat().st_mtime for p in programs)
    running = options.figures / "running"
    running.mkdir(parents=True, exist_ok=True)
    kept = set()
    for name, told in runs(function_list(options.luxvm)):
        path = running / f"{name}.json"
        kept.add(path)
        if is_complete(path, newest):
            print(f"-- {name}: measured before the interruption")
            continue
        print(f"-- {name}", flush=True)
        result = subprocess.run([options.luxvm, "bench", *told, "--milliseconds",
                                 str(options.milliseconds), "--passes", str(options.passes), "--json", path, "--resume"])
        if result.returncode != 0 and name != "threads":  # where nothing ever threads there is none
            sys.exit(f"performance: the run '{name}' failed; the figures so far are in {running}")
    for old in options.figures.glob("*.json"):
        old.unlink()
    for path in running.iterdir():
        if path in kept:
            path.rename(options.figures / path.name)
        else:
            path.unlink()
    running.rmdir()


# ---- Writing ---------------------------------------------------------------------------------------

def cycles(figure):
    if figure is None or figure["minimum"] is None:
        return "-"
    return f"{figure['minimum']:.2f}" if figure["minimum"] < 99.995 else f"{figure['minimum']:.0f}"


def number(value, places=2):
    text = "-" if value is None else f"{value:.{places}f}"
    return "0" if text == "-0" else text


def table(heads, rows):
    """A Markdown table: first column to the left, the others to the right."""
    lines = [heads, ["---"] + ["---:"] * (len(heads) - 1), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def main_table(rows):
    heads = ["Export", "Least", "Median", "Call of one", "libm", "Ratio"]
    sleef = any("sleef" in row for row in rows)
    lines = []
    for row in rows:
        median = row["cycles"]["median"]
        line = [f"`{row['name']}`", cycles(row["cycles"]), number(median),
                number(row.get("call_beyond_element"), 0), cycles(row.get("libm")),
                number(row.get("libm_ratio"))]
        lines.append(line + ([cycles(row.get("sleef")), number(row.get("sleef_ratio"))]
                             if sleef else []))
    return table(heads + (["SLEEF", "Ratio"] if sleef else []), lines)


def code_list(names):
    return ", ".join(f"`{n}`" if isinstance(n, str) else f"`{n[0]}` than `{n[1]}`" for n in names)


def summary_text(summary):
    lines = []
    if summary["mean_of"]:
        lines.append(f"- The C library's loops take {summary['mean_libm_ratio']:.2f} times as long in "
                     f"the geometric mean of the {summary['mean_of']} real A24 and A53 functions that "
                     "have a counterpart.")
    for key, good, bad in [
            ("slower_than_libm", "Every graded export is faster than the C library's loop",
             "Not faster than the C library's loop"),
            ("lower_grade_slower", "No lower grade is slower than a higher one by more than 5 %",
             "Slower than a higher grade by more than 5 %"),
            ("calls_above_goal",
             "Every call with one element costs at most 60 cycles beyond the element's work",
             "A call with one element costs more than 60 cycles beyond the element's work")]:
        lines.append(f"- {bad}: {code_list(summary[key])}." if summary[key] else f"- {good}.")
    return "\n".join(lines) + "\n"


def command_text(document):
    settings = document["settings"]
    names = settings["patterns"]
    words = names if len(names) <= 8 else ["..."]
    if settings["n"] != ["2000"]:
        words = words + ["--n", ",".join(settings["n"])]
    for option, plain in [("threads", [1]), ("offset", [0])]:
        if settings[option] != plain:
            words = words + [f"--{option}", ",".join(map(str, settings[option]))]
    if settings["special"]:
        words = words + ["--special", settings["special"]]
    words = words + [f"--{o}" for o in ("large", "compare") if settings[o]]
    for option in ("milliseconds", "passes"):
        words = words + [f"--{option}", str(settings[option])]
    return "`luxvm bench " + " ".join(w if w == "..." else shlex.quote(w) for w in words) + "`"


def picture(options, figures, name, patterns, alt):
    """Draws from a run's file; what to put into the page."""
    path = options.page.parent / "plots" / f"{name}.svg"
    path.parent.mkdir(exist_ok=True)
    subprocess.run([options.luxvm, "bench", *patterns, "--from", figures, "--plot", path],
                   check=True, stdout=subprocess.DEVNULL)
    return f"![{alt}](plots/{path.name})\n"


def page_parts(options, documents):
    everything = documents["all"]
    yield (f"Measured {everything['date']} on {everything['processor']} "
           f"({everything['ticks_per_cycle']:.3f} time-stamp ticks per core cycle), compiler "
           f"{everything['compiler']}, C library {everything['libm']}. Arrays of 2000 elements and one "
           "thread where nothing else is said.\n")
    yield "## The whole\n"
    yield summary_text(everything["summary"])
    for type_name, title in TYPES.items():
        rows = [r for r in everything["rows"] if r["type"] == type_name]
        if not rows:
            continue
        yield f"## {title} ({type_name})\n"
        yield picture(options, options.figures / "all.json", f"speed_{type_name}",
                      [f"luxs*_{type_name}", f"luxs*_{type_name}_*"],
                      f"Cycles per element of every {type_name} family, bars on a logarithmic scale")
        yield f"{command_text(everything)}\n\n" + main_table(rows)
    yield from length_part(options, documents)
    yield from special_part(documents)
    if "large" in documents:
        yield "## Large arguments\n"
        yield ("All arguments miss the fast reduction: magnitudes from 1e6 to 1e30.\n\n"
               f"{command_text(documents['large'])}\n\n" + main_table(documents["large"]["rows"]))
    yield from offset_part(documents)
    yield from thread_part(documents)


def length_part(options, documents):
    names = [n for n in documents if n.startswith("length_")]
    if names:
        yield "## Over the length\n"
        yield ("Short arrays pay for the call; beyond some 10 000 elements the arrays leave the first "
               "caches. Where a curve of a graded export rises by a step, the array has become long "
               "enough to be split: that costs a little even with one thread.\n")
    for name in names:
        yield f"{command_text(documents[name])}\n"
        yield picture(options, options.figures / f"{name}.json", name, [],
                      f"Cycles per element of {name[7:]} functions over arrays of 1 to 10^6 elements")


def special_part(documents):
    if "special" not in documents or "blocks" not in documents:
        return
    blocks = {row["name"]: row for row in documents["blocks"]["rows"]}
    yield "## Special elements\n"
    yield (f"{command_text(documents['special'])}, and the same with `--special 4`. \"Each adds\" is "
           "what the array takes longer, over the number of its special elements: their own work, "
           "their report, and the rest of the block that takes the slow path with them.\n\n"
           + table(["Export", "None", "1 %", "Each adds", "One in 4", "Each adds"],
                   [[f"`{row['name']}`", cycles(row["plain"]), cycles(row["cycles"]),
                     number(row["cycles_of_a_special_element"], 0),
                     cycles(blocks[row["name"]]["cycles"]),
                     number(blocks[row["name"]]["cycles_of_a_special_element"], 0)]
                    for row in documents["special"]["rows"] if row["name"] in blocks]))


def offset_part(documents):
    if "offset" not in documents:
        return
    by_offset = {(row["name"], row["offset"]): row["cycles"] for row in documents["offset"]["rows"]}
    names = [name for name, offset in by_offset if offset == 0]
    yield "## Odd addresses\n"
    yield (f"{command_text(documents['offset'])}: all arrays at a cache line's start, and one byte "
           "beyond it.\n\n"
           + table(["Export", "At the start", "One byte beyond"],
                   [[f"`{n}`", cycles(by_offset[n, 0]), cycles(by_offset[n, 1])] for n in names]))


def thread_part(documents):
    if "threads" not in documents:
        return
    yield "## Threads\n"
    yield (f"{command_text(documents['threads'])}: lengths around that from which the library splits "
           "a call. Cycles are those that pass on the calling thread. They hold for this machine "
           "only: on a virtual one, whose processors may share a core or be taken away, starting a "
           "thread can take far longer than the library reckons.\n\n"
           + table(["Export", "Elements", "Threads", "Split", "Least", "Median"],
                   [[f"`{row['name']}`", str(row["n"]), str(row["threads"]),
                     "yes" if row["split"] else "no", cycles(row["cycles"]),
                     number(row["cycles"]["median"])] for row in documents["threads"]["rows"]]))


def write_page(options):
    documents = {path.stem: json.loads(path.read_text())
                 for path in sorted(options.figures.glob("*.json"))}
    if "all" not in documents:
        sys.exit(f"performance: {options.figures} holds no all.json")
    prose = options.page.read_text()
    if MARKER not in prose:
        sys.exit(f"performance: {options.page} has no line {MARKER}")
    text = prose[:prose.index(MARKER)] + MARKER + "\n\n" + "\n".join(page_parts(options, documents))
    unfinished = options.page.with_suffix(".new")
    unfinished.write_text(text)
    unfinished.replace(options.page)


def main():
    options = arguments()
    if not options.no_measuring:
        try:
            measure(options)
        except KeyboardInterrupt:
            sys.exit("\nperformance: interrupted; the next run goes on from here")
    write_page(options)
    print(f"wrote {options.page}")


if __name__ == "__main__":
    main()
