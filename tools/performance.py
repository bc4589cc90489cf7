#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measure every function and renew docs/performance.md and its plots.

The figures of each run are kept under --figures until all are there; a run that is interrupted goes
on where it stopped, unless the library was built anew since. Then they are put together into the
machine's file under bench/machines/, and the page is made from the files of all machines. What the page
says above its marker line is left as it is. --check says whether the page is what the files give.
"""
import argparse
import fnmatch
import json
import math
import os
import re
import subprocess
import sys
import tempfile
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
    root = Path(__file__).resolve().parent.parent
    parser.add_argument("luxvm", type=Path, help="the program")
    parser.add_argument("page", type=Path, help="docs/performance.md; plots go to plots/ beside it")
    parser.add_argument("--figures", type=Path, help="folder of the runs' JSON files")
    parser.add_argument("--machines", type=Path, default=root / "bench/machines",
                        help="folder of the machines' files")
    parser.add_argument("--explanations", type=Path, default=root / "bench/cliffs.json",
                        help="why cliffs are there")
    parser.add_argument("--milliseconds", type=int, default=50, help="spent on one figure a pass")
    parser.add_argument("--passes", type=int, default=3, help="of which the best figures count")
    what = parser.add_mutually_exclusive_group()
    what.add_argument("--no-measuring", action="store_true",
                      help="put together the runs' files that are there")
    what.add_argument("--page-only", action="store_true", help="write the page from the machines' files")
    what.add_argument("--check", action="store_true", help="fail unless the page is what they give")
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
    narrow = ["--path", "narrow"]
    yield "all", ["--compare"]
    yield "without_sse2", ["--compare", "--without-sse2", *narrow]
    yield "cliffs", ["--cliffs", *narrow]
    yield "special", [*best, "--special", "1%", *narrow]
    yield "blocks", [*best, "--special", "4", *narrow]
    yield "offset", [*best, "--offset", "0,1", *narrow]
    if any(f["family"] in ("Sin", "Cos", "SinCos", "Tan") and f["type"] in ("32f", "64f")
           for f in functions):
        yield "large", ["--large", "--compare", *narrow]
    for type_name in TYPES:
        if names := curve_names(functions, type_name):
            # A call over a million complex powers takes a tenth of a second.
            longest = 100000 if type_name.endswith("c") else 1000000
            yield f"length_{type_name}", [*names, "--n", f"1:{longest}", *narrow]
    processors = len(os.sched_getaffinity(0))
    names = [f["name"] for f in functions if f["name"] in THREADED]
    if processors > 1 and names:
        yield "threads", [*names, "--n", "threshold", "--threads", f"1,{processors}", *narrow]


def is_complete(path, newer_than):
    return (path.exists() and path.stat().st_mtime > newer_than
            and json.loads(path.read_text()).get("complete", True))


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
        resume = [] if name == "cliffs" else ["--resume"]
        result = subprocess.run([options.luxvm, "bench", *told, "--milliseconds", str(options.milliseconds),
                                 "--passes", str(options.passes), "--json", path, *resume])
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


# ---- A machine's file ------------------------------------------------------------------------------

PEERS = ("libm", "libm_sse2", "sleef", "sleef_avx2", "sleef_avx512")


def least(row, key="cycles"):
    figure = row.get(key)
    return None if figure is None or figure["minimum"] is None else round(figure["minimum"], 3)


def rounded(value, places=3):
    return None if value is None else round(value, places)


def compared(rows, without):
    """Per export its cycles and those of what it is compared with, from the run with the C library as it
    is and the one without its SSE2 variants. The lesser figure of the export itself counts."""
    exports = {}
    for row in rows:
        other = without.get(row["name"], {})
        own = [c for c in (least(row), least(other) if other else None) if c is not None]
        exports[row["name"]] = {
            "type": row["type"], "family": row["family"], "grade": row["grade"],
            "cycles": min(own, default=None), "median": rounded(row["cycles"]["median"])}
        figures = {"one_call": rounded(row.get("call_beyond_element"), 1)}
        figures |= {peer: least(row, peer) for peer in ("wide", *PEERS)}
        figures["libm_without_sse2"] = least(other, "libm") if other else None
        exports[row["name"]] |= {key: value for key, value in figures.items() if value is not None}
    return exports


def machine_from(documents):
    """What the runs' files say of this machine, as its file keeps it."""
    everything = documents["all"]
    machine = {key: everything.get(key) for key in
               ("processor", "signature", "date", "compiler", "libm", "sleef", "ticks_per_cycle")}
    machine["settings"] = {key: everything["settings"][key] for key in ("milliseconds", "passes")}
    by_name = {name: {row["name"]: row for row in document["rows"]} for name, document in documents.items()}
    machine["exports"] = compared(everything["rows"], by_name.get("without_sse2", {}))
    if "large" in documents:
        machine["large"] = compared(documents["large"]["rows"], {})
    if "special" in documents and "blocks" in documents:
        machine["special"] = {
            name: [least(row, "plain"), least(row), rounded(row["cycles_of_a_special_element"], 1),
                   least(by_name["blocks"][name]), rounded(by_name["blocks"][name]["cycles_of_a_special_element"], 1)]
            for name, row in by_name["special"].items() if name in by_name["blocks"]}
    if "offset" in documents:
        machine["offset"] = {}
        for row in documents["offset"]["rows"]:
            machine["offset"].setdefault(row["name"], {})[str(row["offset"])] = least(row)
    for name, document in documents.items():
        if name.startswith("length_"):
            curves = machine.setdefault("lengths", {}).setdefault(name[7:], {})
            for row in document["rows"]:
                curves.setdefault(row["name"], {})[str(row["n"])] = least(row)
    if "threads" in documents:
        machine["threads"] = [[row["name"], row["n"], row["threads"], row["split"], least(row),
                               rounded(row["cycles"]["median"])] for row in documents["threads"]["rows"]]
    if "cliffs" in documents:
        machine["cliffs"] = {row["name"]: {
            "ordinary": rounded(row["ordinary"]), "loop_of_one": rounded(row["loop_of_one"], 1),
            "calls": {n: rounded(c, 1) for n, c in row["calls"].items()},
            "classes": {name: [rounded(c["one_percent"], 2), rounded(c["all"], 2)]
                        for name, c in row["classes"].items()}} for row in documents["cliffs"]["rows"]}
    return machine


def file_of(machine):
    words = f"{machine['processor']} {machine['signature'] or ''}".lower()
    return "-".join(re.findall(r"[a-z0-9]+", words)) + ".json"


def machine_text(machine):
    """JSON with a line for each export, so that what changed can be read."""
    lines = []
    for key, value in machine.items():
        if isinstance(value, dict) and key not in ("settings",):
            inner = ",\n".join(f"  {json.dumps(k)}: {json.dumps(v)}" for k, v in value.items())
            lines.append(f" {json.dumps(key)}: {{\n{inner}\n }}")
        else:
            lines.append(f" {json.dumps(key)}: {json.dumps(value)}")
    return "{\n" + ",\n".join(lines) + "\n}\n"


def keep_machine(options):
    documents = {path.stem: json.loads(path.read_text())
                 for path in sorted(options.figures.glob("*.json"))}
    if "all" not in documents:
        sys.exit(f"performance: {options.figures} holds no all.json")
    machine = machine_from(documents)
    options.machines.mkdir(parents=True, exist_ok=True)
    path = options.machines / file_of(machine)
    if path.exists() and (note := json.loads(path.read_text()).get("note")):
        machine["note"] = note  # written by hand
    path.write_text(machine_text(machine))


def read_machines(options):
    """The newest first; letters stand for them."""
    machines = [json.loads(path.read_text()) for path in sorted(options.machines.glob("*.json"))]
    if not machines:
        sys.exit(f"performance: no machine's file in {options.machines}")
    machines.sort(key=lambda m: m["date"], reverse=True)
    for letter, machine in zip("ABCDEFGHIJKLMNOPQRSTUVWXYZ", machines):
        machine["letter"] = letter
    return machines


# ---- The page --------------------------------------------------------------------------------------

PREFER = 1.2  # a plain loop must take so many times as long for the library to be worth a call
NOISE = 0.05  # two measurements of one computation differ by less
CLIFF = 2     # times the ordinary: shown
EXPLAINED = 5  # shown with a reason
SHORT = 1.3   # lengths 5 to 7 beside 4 and 8
CALL = 60     # cycles of a call beyond the element


def cycles(value):
    if value is None:
        return "-"
    return f"{value:.2f}" if value < 99.995 else f"{value:.0f}"


def number(value, places=2):
    text = "-" if value is None else f"{value:.{places}f}"
    return text.removeprefix("-") if text.strip("-0.") == "" and text != "-" else text


def table(heads, rows, left=1):
    """A Markdown table: the first columns to the left, the others to the right."""
    lines = [heads, ["---"] * left + ["---:"] * (len(heads) - left), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def quotient(export, key):
    if export is None or export.get(key) is None or not export["cycles"]:
        return None
    return export[key] / export["cycles"]


def verdict(ratios):
    """By the machine where it comes out worst for whoever would be preferred."""
    if min(ratios) >= PREFER * (1 + NOISE):
        return 0
    return 2 if max(ratios) <= 1 + NOISE else 1


LOOPS = {"libm": "`gcc -m32 -O2`", "libm_sse2": "`gcc -m32 -O2 -msse2 -mfpmath=sse`",
         "libm_without_sse2": "`gcc -m32 -O2`, no SSE2 in the C library"}


def verdict_part(machines):
    names = dict.fromkeys(n for m in machines for n, e in m["exports"].items() if e["grade"] in BEST)
    present = [t for t in TYPES if any(n.split("_")[1] == t for n in names)]
    lines = []
    for key, title in LOOPS.items():
        cells = {(v, t): [] for v in range(3) for t in present}
        for name in names:
            ratios = [r for m in machines if (r := quotient(m["exports"].get(name), key)) is not None]
            if ratios:
                family, type_name = name.removeprefix("luxs").split("_")[:2]
                cells[verdict(ratios), type_name].append(f"{family} {min(ratios):.1f}")
        if not any(cells.values()):
            continue
        for v, what in enumerate(["**this library**", "little in it", "**a plain loop**"]):
            lines.append([title, what, *(", ".join(cells[v, t]) or "-" for t in present)])
    without = [n for n in names if all(quotient(m["exports"].get(n), "libm") is None for m in machines)]
    yield "## This library, or a plain loop\n"
    yield (f"A24, A53 and the rounding functions over 2000 elements in cache; the figure is how many times "
           f"as long the loop takes. This library where the loop takes at least {PREFER:g} times as long "
           f"even if {NOISE:.0%} of the quotient is noise; a plain loop where it takes at most as long, with "
           "the same allowance; on several machines, where that holds on all of them, with the least "
           "figure.\n\n" + table(["Loop compiled by", "Prefer", *present], lines, 2 + len(present)))
    if without:
        yield f"A plain loop has no counterpart to {code_list(without)}.\n"


def code_list(names):
    return ", ".join(f"`{n}`" for n in names)


def machines_part(machines):
    yield "## Machines\n"
    yield "".join(
        f"- **{m['letter']}**: {m['processor']}"
        + (f", CPUID signature {m['signature']}" if m.get("signature") else "")
        + f", {m['date']}; {m['ticks_per_cycle']:.3f} time-stamp ticks per core cycle; {m['compiler']}, "
        f"{m['libm']}{', ' + m['sleef'] if m.get('sleef') else ''}; best of {m['settings']['passes']} passes of {m['settings']['milliseconds']} ms a figure."
        + (f" {m['note']}" if m.get("note") else "") + "\n" for m in machines)


COLUMNS = {"libm": "loop", "libm_without_sse2": "loop, no SSE2", "libm_sse2": "loop -msse2",
           "sleef": "SLEEF SSE2", "sleef_avx2": "SLEEF AVX2", "sleef_avx512": "SLEEF AVX-512"}


def comparison(machines, section, keep):
    """Every export: per machine its cycles, and how many times as long the others take."""
    heads, columns = ["Export"], []
    for m in machines:
        exports = m.get(section, {})
        shown = [e for n, e in exports.items() if keep(e)]
        if not shown:
            continue
        columns.append((exports, "cycles"))
        heads.append(f"{m['letter']}: cycles")
        if any("one_call" in e for e in shown):
            columns.append((exports, "one_call"))
            heads.append("call")
        for key, title in COLUMNS.items():
            if any(key in e for e in shown):
                columns.append((exports, key))
                heads.append(title)
    names = dict.fromkeys(n for m in machines for n, e in m.get(section, {}).items() if keep(e))
    rows = []
    for name in names:
        cells = [f"`{name}`"]
        for exports, key in columns:
            export = exports.get(name)
            if export is None:
                cells.append("-")
            elif key == "cycles":
                cells.append(cycles(export["cycles"]))
            elif key == "one_call":
                cells.append(number(export.get(key), 0))
            else:
                cells.append(number(quotient(export, key)))
        rows.append(cells)
    return table(heads, rows)


def geometric_mean(values):
    return math.exp(sum(map(math.log, values)) / len(values)) if values else None


def wide_part(machines):
    """The exports that have wide steps, and how the two paths compare."""
    for m in machines:
        wide = {n: e for n, e in m["exports"].items() if e.get("wide") and e["cycles"]}
        if not wide:
            continue
        means = []
        for title, names in (("A24", [n for n in wide if n.endswith("_A24")]),
                             ("A21 and A11", [n for n in wide if n.endswith(("_A21", "_A11"))]),
                             ("rounding", [n for n in wide if wide[n]["grade"] is None])):
            times = {n: wide[n]["cycles"] / wide[n]["wide"] for n in names}
            beside = [wide[n]["sleef_avx2"] / wide[n]["wide"] for n in names if wide[n].get("sleef_avx2")]
            if times:
                worst = min(times, key=times.get)
                means.append([title, str(len(times)), number(geometric_mean(list(times.values()))),
                              f"{number(times[worst])} (`{worst}`)", str(len(beside)),
                              number(geometric_mean(beside))])
        yield f"## Wide steps, machine {m['letter']}\n"
        yield ("Cycles per element without and with the optional library of AVX2 steps, which give the same "
               "bits, and how many times as long SLEEF's AVX2 function takes as the wide step. All other "
               "sections are without it.\n\n"
               + table(["Exports", "Number", "Geometric mean of the gain", "Least", "With a SLEEF function",
                        "Geometric mean beside it"], means)
               + "\n"
               + table(["Export", "Without", "With", "Times", "SLEEF AVX2"],
                       [[f"`{n}`", cycles(e["cycles"]), cycles(e["wide"]), number(e["cycles"] / e["wide"]),
                         number(e["sleef_avx2"] / e["wide"] if e.get("sleef_avx2") else None)]
                        for n, e in wide.items()]))


def plot_file(rows, n, directory, name):
    """A machine's figures in the form that luxvm draws from."""
    def figure(value):
        return {"minimum": value, "median": value, "kept": 1, "dropped": 0}

    def made(export, length, values):
        row = {"name": export, "n": length, "threads": 1, "split": False, "offset": 0, "large": False,
               "special_elements": 0, "passes": 1, "reports": {}, "cycles": figure(values["cycles"])}
        return row | {key: figure(values[key]) for key in PEERS if key in values}

    document = {"processor": "", "ticks_per_cycle": 1, "complete": True,
                "settings": {"n": n, "threads": [1], "offset": [0], "special": "", "large": False,
                             "compare": True},
                "rows": [made(*row) for row in rows]}
    path = Path(directory) / f"{name}.json"
    path.write_text(json.dumps(document))
    return path


def draw(options, machine):
    with tempfile.TemporaryDirectory() as directory:
        files = []
        for type_name in TYPES:
            rows = [(n, 2000, e) for n, e in machine["exports"].items() if e["type"] == type_name]
            if rows:
                files.append(plot_file(rows, ["2000"], directory, f"speed_{type_name}"))
        for type_name, curves in machine.get("lengths", {}).items():
            rows = [(name, int(n), {"cycles": c}) for name, curve in curves.items() for n, c in curve.items()]
            files.append(plot_file(rows, ["1:1000000"], directory, f"length_{type_name}"))
        plots = options.page.parent / "plots"
        plots.mkdir(exist_ok=True)
        for path in files:
            subprocess.run([options.luxvm, "bench", "--from", path, "--plot", plots / f"{path.stem}.svg"],
                           check=True, stdout=subprocess.DEVNULL)


def picture(name, alt):
    return f"![{alt}](plots/{name}.svg)\n"


def page_parts(machines, explanations):
    newest = machines[0]
    letter = newest["letter"]
    yield from verdict_part(machines)
    yield from machines_part(machines)
    for type_name, title in TYPES.items():
        if not any(e["type"] == type_name for m in machines for e in m["exports"].values()):
            continue
        yield f"## {title} ({type_name})\n"
        yield picture(f"speed_{type_name}", f"Cycles per element of every {type_name} family on machine "
                      f"{letter}, bars on a logarithmic scale")
        yield comparison(machines, "exports", lambda e: e["type"] == type_name)
    yield from wide_part(machines)
    if "lengths" in newest:
        yield "## Over the length\n"
        yield ("Short arrays pay for the call; beyond some 10 000 elements the arrays leave the first "
               "caches. Where a curve of a graded export rises by a step, the array has become long "
               f"enough to be split: that costs a little even with one thread. Machine {letter}.\n")
        for type_name in newest["lengths"]:
            yield picture(f"length_{type_name}", f"Cycles per element of {type_name} functions over arrays "
                          "of one element to many")
    yield from cliff_part(machines, explanations)
    yield from short_part(machines)
    if "special" in newest:
        yield "## Special elements\n"
        yield (f"`luxvm bench --special 1%`, and the same with `--special 4`, machine {letter}. \"Each "
               "adds\" is what the array takes longer, over the number of its special elements: their own "
               "work, their report, and the rest of the block that takes the slow path with them.\n\n"
               + table(["Export", "None", "1 %", "Each adds", "One in 4", "Each adds"],
                       [[f"`{n}`", cycles(v[0]), cycles(v[1]), number(v[2], 0), cycles(v[3]), number(v[4], 0)]
                        for n, v in newest["special"].items()]))
    if any("large" in m for m in machines):
        yield "## Large arguments\n"
        yield ("All arguments miss the fast reduction: magnitudes from 1e6 to 1e30.\n\n"
               + comparison(machines, "large", lambda e: True))
    if "offset" in newest:
        yield "## Odd addresses\n"
        yield (f"All arrays at a cache line's start, and one byte beyond it, machine {letter}.\n\n"
               + table(["Export", "At the start", "One byte beyond"],
                       [[f"`{n}`", cycles(v["0"]), cycles(v["1"])] for n, v in newest["offset"].items()]))
    if "threads" in newest:
        yield "## Threads\n"
        yield ("Lengths around that from which the library splits a call. Cycles are those that pass on "
               f"the calling thread. They hold for machine {letter} only: on a virtual one, whose processors may "
               "share a core or be taken away, starting a thread can take far longer than the library "
               "reckons.\n\n"
               + table(["Export", "Elements", "Threads", "Split", "Least", "Median"],
                       [[f"`{n}`", str(length), str(threads), "yes" if split else "no", cycles(c), number(median)]
                        for n, length, threads, split, c, median in newest["threads"]]))


# ---- Cliffs

def cliffs_of(machines):
    """{(family, type, class): {letter: (worst of the grades at one percent, at all)}}"""
    found = {}
    for m in machines:
        for name, row in m.get("cliffs", {}).items():
            family, type_name = name.removeprefix("luxs").split("_")[:2]
            for what, values in row["classes"].items():
                by_machine = found.setdefault((family, type_name, what), {})
                worst = by_machine.get(m["letter"], (None, None))
                by_machine[m["letter"]] = tuple(max((v for v in pair if v is not None), default=None)
                                                for pair in zip(worst, values))
    return {key: value for key, value in found.items() if height(value) >= CLIFF}


def height(by_machine):
    return max((v for pair in by_machine.values() for v in pair if v is not None), default=0)


def explanation_of(key, explanations):
    family, type_name, what = key
    for entry in explanations:
        if (any(fnmatch.fnmatchcase(f"{family} {type_name}", f) for f in entry["functions"])
                and any(fnmatch.fnmatchcase(what, c) for c in entry["classes"])):
            return entry
    return None


def cliff_part(machines, explanations):
    letters = [m["letter"] for m in machines if "cliffs" in m]
    if not letters:
        return
    rows, used, reasons, missing = [], [], {}, []
    for key, by_machine in cliffs_of(machines).items():
        entry = explanation_of(key, explanations)
        if entry is not None:
            used.append(id(entry))
            reasons.setdefault(id(entry), (len(reasons) + 1, entry["why"]))
        elif height(by_machine) >= EXPLAINED:
            missing.append(" ".join(key))
        values = [number(v, 1) for letter in letters for v in by_machine.get(letter, (None, None))]
        rows.append([f"{key[0]} {key[1]}", key[2], *values, str(reasons[id(entry)][0]) if entry else ""])
    if missing:
        sys.exit(f"performance: a cliff above {EXPLAINED} needs a reason in the file of explanations: "
                 + "; ".join(missing))
    if stale := [e for e in explanations if id(e) not in used]:
        sys.exit(f"performance: explains no cliff: {stale[0]}")
    yield "## Cliffs\n"
    yield (f"`luxvm bench --cliffs`: arrays of which one element in a hundred, or all, are of a special class, "
           f"as a multiple of the cycles of ordinary ones; the worst of the grades, from {CLIFF:g} on. From "
           f"{EXPLAINED:g} on a reason stands below the table. One percent of a class that changes the scalar "
           "cannot be.\n\n"
           + table(["Function", "Class", *(f"{letter}: {share}" for letter in letters for share in ("1 %", "all")),
                    "Reason"], rows, 2))
    yield "".join(f"{k}. {why}\n" for k, why in reasons.values())


def short_part(machines):
    measured = [m for m in machines if "cliffs" in m]
    if not measured:
        return
    lengths, calls = [], []
    for m in measured:
        for name, row in m["cliffs"].items():
            each = {int(n): c / int(n) for n, c in row["calls"].items() if c is not None}
            if {4, 5, 6, 7, 8} <= set(each):
                beside = (each[4] + each[8]) / 2
                worst = max(each[n] for n in (5, 6, 7)) / beside
                if worst >= SHORT * (1 + NOISE):
                    lengths.append([m["letter"], f"`{name}`", *(number(each[n], 1) for n in (4, 5, 6, 7, 8)),
                                    number(worst)])
            loop = row["loop_of_one"]
            if loop is not None and 1 in each and each[1] > loop * (1 + NOISE):
                calls.append([m["letter"], f"`{name}`", number(each[1], 0), number(loop, 0),
                              number(each[1] / loop)])
    total = sum(len(m["cliffs"]) for m in measured)
    yield "## Short arrays\n"
    yield (f"Lengths 5, 6 and 7 beside 4 and 8, in cycles per element: {total - len(lengths)} of {total} exports "
           f"stay below {SHORT:g} times the mean of 4 and 8, give or take {NOISE:.0%}. The others:\n\n"
           + table(["Machine", "Export", "4", "5", "6", "7", "8", "Worst"], lengths, 2))
    yield ("One element beside the plain loop's call (`gcc -m32 -O2`), in cycles. Where the library takes "
           f"longer:\n\n" + table(["Machine", "Export", "Call", "Loop", "Times"], calls, 2))


def page_text(options, machines):
    prose = options.page.read_text()
    if MARKER not in prose:
        sys.exit(f"performance: {options.page} has no line {MARKER}")
    explanations = json.loads(options.explanations.read_text())
    return (prose[:prose.index(MARKER)] + MARKER + "\n\n"
            + "\n".join(page_parts(machines, explanations)))


def write_page(options):
    machines = read_machines(options)
    text = page_text(options, machines)
    draw(options, machines[0])
    unfinished = options.page.with_suffix(".new")
    unfinished.write_text(text)
    unfinished.replace(options.page)


def main():
    options = arguments()
    if options.check:
        if page_text(options, read_machines(options)) != options.page.read_text():
            sys.exit(f"{options.page} is not what the machines' files give; "
                     "tools/performance.py --page-only renews it")
        return
    if not options.page_only:
        if not options.figures:
            sys.exit("performance: --figures is needed")
        try:
            if not options.no_measuring:
                measure(options)
        except KeyboardInterrupt:
            sys.exit("\nperformance: interrupted; the next run goes on from here")
        keep_machine(options)
    write_page(options)
    print(f"wrote {options.page}")


if __name__ == "__main__":
    main()
