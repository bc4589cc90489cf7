#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds the documents to accuracy/figures.json, the largest errors that `luxvm accuracy` has found.

usage: figures.py --write | --check

The header's clauses about accuracy, a promise with the largest error found beside it, are made from that
file. So are the figures behind "Worst error" in the kernels' comments, and
docs/accuracy.md. Figures are rounded up, so that none is below what was measured. --write renews all of
them; --check names each that differs, with both figures, and what of the file is older than the kernels.
"""

import json
import math
import re
import sys
import textwrap
from pathlib import Path

import accuracy_page

ROOT = Path(__file__).resolve().parent.parent
FIGURES = ROOT / "accuracy/figures.json"
WIDTH = 100


NEAREST = "0.5 ulp"


def stated(promise):
    """In the words of the documents."""
    return promise + ", correctly rounded" if promise == NEAREST else promise


class Computation:
    """Grades of a family and type that give the same results."""

    def __init__(self, entry):
        self.family, self.type, self.hash = entry["family"], entry["type"], entry["hash"]
        self.grades = [grade for grade in entry["grades"] if grade]
        self.promises, self.survey = entry["promises"], entry.get("survey")
        self.all = entry["largest"]

    @property
    def promise(self):
        return self.promises[0]  # of the best grade

    @property
    def stated(self):
        return stated(self.promise)

    @property
    def kind(self):
        if not self.promise.startswith("2^-"):
            return "ulp"
        return "normwise" if self.promise.endswith("normwise") else "relative"

    def largest(self, kind=None):
        """The part with the largest error of that kind; None where all results are exact."""
        found = [e for e in self.all if e["kind"] == (kind or self.kind)]
        return max(found, key=lambda e: e["error"], default=None)


def load():
    return [Computation(entry) for entry in json.loads(FIGURES.read_text())["computations"]]


def ulp_text(error, places=4):
    """Rounded up: a figure is never below what was measured."""
    if error >= 100:
        return f"{math.ceil(error)}"
    scale = 10**places
    return f"{math.ceil(error * scale - 1e-6) / scale:.{places}f}"


def bits_text(error, places=2):
    scale = 10**places
    return f"2^-{math.floor(-math.log2(error) * scale + 1e-6) / scale:.{places}f}"


def error_text(found):
    return ulp_text(found["error"]) if found["kind"] == "ulp" else bits_text(found["error"])


# ---- Clauses made from the file

CLAUSE = r"[^()]*?\(largest\s+(?:\*\s+)?found\s[^()]*\)"
CLAUSES = rf"{CLAUSE}(?:[,;]{CLAUSE})*"


def clause(computation, names):
    found, promise = computation.largest(), computation.promise
    bound = {"ulp": "correctly rounded, 0.5 ulp" if promise == NEAREST
                    else "at most " + promise, "relative": "relative " + promise,
             "normwise": "at most " + promise.split()[0] + " of the magnitude"}[computation.kind]
    return f"{names}{bound} (largest found {error_text(found)})"


def clauses(computations):
    """Of all its types."""
    parts = []
    for type_name in dict.fromkeys(c.type for c in computations):
        own = [c for c in computations if c.type == type_name]
        inner = []
        for c in reversed(own):
            grades = " and ".join(c.grades) + " " if len(own) > 1 else ""
            inner.append(clause(c, (type_name + " " if not inner else "") + grades))
        parts.append(", ".join(inner))
    return "; ".join(parts)


class Differences:
    def __init__(self):
        self.found = []

    def report(self, path, line, stated, measured):
        self.found.append(f"{path.relative_to(ROOT)}:{line}: says {stated}, is {measured}")


def plain(text):
    return re.sub(r"\s*\n\s*(?:\*\s|//)?\s*", " ", text).strip()


def hold_clauses(path, text, start, opening, made, prefix, differences):
    """The clauses behind `opening`, which stand from `start` on; the text with them renewed."""
    match = re.compile(re.escape(opening) + r"\s*" + CLAUSES).match(text, start)
    line = text.count("\n", 0, start) + 1
    if not match:
        differences.report(path, line, "nothing", made)
        return text
    stated = plain(match[0])[len(opening):].strip()
    if stated == made:
        return text
    old, new = stated.split("; "), made.split("; ")
    for pair in zip(old, new) if len(old) == len(new) else [(stated, made)]:
        if pair[0] != pair[1]:
            differences.report(path, line, *pair)
    first = text.rindex("\n", 0, start) + 1
    end = re.compile(r"(?<=[.:])\n| \*/").search(text, match.end()).start()
    before = text[first:start].removeprefix(prefix)
    behind = plain(text[match.end():end])
    lines = textwrap.wrap(before + f"{opening} {made}{behind if behind[:1] in '.,;' else ' ' + behind}",
                          WIDTH, break_long_words=False, break_on_hyphens=False,
                          initial_indent=prefix, subsequent_indent=prefix)
    return text[:first] + "\n".join(lines) + text[end:]


def hold_header(computations, differences):
    path = ROOT / "include/luxvmk3.h"
    text = path.read_text()
    exports = r"\*/\n(?:LUX_API LuxStatus luxs(\w+?)_(32fc?)_A\d\d\()"
    for family, type_name in re.findall(exports, text):
        declared = re.search(rf"\*/\nLUX_API LuxStatus luxs{family}_{type_name}_A", text).start()
        comment = text.rindex("/**", 0, declared)
        own = [c for c in computations if c.family == family
               and c.type.endswith("c") == type_name.endswith("c")]
        start = text.find("Accuracy:", comment, declared)
        if start < 0:
            differences.report(path, text.count("\n", 0, comment) + 1, "nothing", clauses(own))
            continue
        text = hold_clauses(path, text, start, "Accuracy:", clauses(own), " *  ", differences)
    return path, text


# ---- Figures in the kernels' comments

WORDS = {"sine": ["Sin"], "cosine": ["Cos"], "natural": ["Ln"], "decimal": ["Log10"], "asin": ["Asin"],
         "asinh": ["Asinh"]}
KERNEL_FILES = {"pow": ["Pow", "Powx"], "sine": ["Sin", "Cos"], "inv_div": ["Inv", "Div"]}
COMPLEX_FILES = {"pow": ["Pow", "Powx"], "log": ["Ln", "Log10"], "acos": ["Acos", "Acosh"],
                 "acosh": ["Acosh", "Acos"], "atanh": ["Atanh", "Atan"], "casinh": ["Asin", "Asinh"],
                 "hyper": ["Sin", "Cos", "Tan", "Sinh", "Cosh", "Tanh"]}
ARGUMENT = r"(?:0x[0-9A-F]{8,16}|-?0x[01][0-9a-f.]*p[+-]\d+)"
TOKEN = re.compile(
    rf"(?P<bits>2\^-\d+\.\d+)|(?P<figure>\b\d\.\d{{3,}})|(?P<grade>\bA\d\d\b)|(?P<word>\b(?:{'|'.join(WORDS)})\b)"
    rf"|(?P<at>(?<=at )\(?{ARGUMENT}(?:, {ARGUMENT})*\)?)|(?P<other>of normal arguments)")


def families_of(path, computations):
    """The families and the type that a file computes, by its name."""
    known = {c.family.lower(): [c.family] for c in computations}
    name, _, type_name = path.stem.rpartition("_")
    if path.parent.name != "complex":
        return KERNEL_FILES.get(name) or known.get(name, []), type_name
    known |= COMPLEX_FILES
    return known.get(path.stem) or known.get(path.stem.removeprefix("c"), []), "64fc"


def comment_regions(text):
    """From each line that speaks of the worst error to the end of its paragraph."""
    for match in re.finditer(r"^//.*\b[Ww]orst(?:\s|//)+(?:errors?|found)\b.*\n(?://[ ]?\S.*\n)*", text, re.M):
        yield match.start(), match.end()


def hold_comment(path, computations, dependent, differences):
    """Those with an argument must be the file's; others, and those of another processor, no less."""
    families, type_name = families_of(path, computations)
    text = path.read_text()
    pieces, last = [], 0
    for begin, end in comment_regions(text):
        if not families:
            differences.found.append(f"{path.relative_to(ROOT)}: whose worst error that is, is not known")
            break
        named, grades, behind, skip = families, [], False, False
        tokens = list(TOKEN.finditer(text, begin, end))
        for token, following in zip(tokens, tokens[1:] + [None]):
            if token["grade"]:
                grades, behind = ([] if behind else grades) + [token["grade"]], False
            elif token["word"]:
                named = [f for f in WORDS[token["word"]] if f in families] or named
            elif token["other"]:
                skip = True
            if not (token["figure"] or token["bits"]):
                continue
            behind = True
            if skip:
                skip = False
                continue
            of = [c for c in computations if c.family in named and c.type == type_name
                  and (set(grades) & set(c.grades) if grades else c is best(computations, c))]
            kind = "ulp" if token["figure"] else "normwise" if type_name.endswith("c") else "relative"
            found = [c.largest(kind) for c in of if c.largest(kind)]
            if not found:
                continue
            worst = max(found, key=lambda e: e["error"])
            measured = (ulp_text if kind == "ulp" else bits_text)(worst["error"],
                                                                  len(token[0].split(".")[1]))
            place = following if following and following["at"] else None
            more = value_of(token[0]) > value_of(measured)
            another = f"{of[0].family} {type_name}" in dependent and (more or not place)
            if token[0] == measured or another or more and not place:
                continue
            differences.report(path, text.count("\n", 0, token.start()) + 1, token[0], measured)
            pieces += [text[last:token.start()], measured]
            last = token.end()
            if place:
                arguments = ", ".join(worst["arguments"])
                pieces += [text[last:place.start()],
                           f"({arguments})" if place["at"].startswith("(") else arguments]
                last = place.end()
    return path, "".join(pieces) + text[last:]


def value_of(figure):
    return 2.0 ** float(figure[2:]) if figure.startswith("2^") else float(figure)


def best(computations, computation):
    same = [c for c in computations if (c.family, c.type) == (computation.family, computation.type)]
    return same[-1]  # grades go up in the file


# ---- The file itself and the README

def check_file(computations, differences):
    hashes = dict(re.findall(r"RESULT_HASH\(luxs(\w+), (\w+)\)",
                             (ROOT / "conformance/result_hashes.def").read_text()))
    for c in computations:
        for grade in c.grades or [""]:
            name = f"{c.family}_{c.type}" + (f"_{grade}" if grade else "")
            if hashes.pop(name, None) != c.hash:
                differences.found.append(
                    f"accuracy/figures.json: {name} is that of older results; measure it anew: "
                    f"luxvm accuracy {c.family}_{c.type} --record accuracy/figures.json")
        for promise in c.promises:
            kind = "normwise" if promise.endswith("normwise") else "relative" if promise[0] == "2" else "ulp"
            bound = 0 if promise == "exact" else 2.0 ** float(promise.split()[0][2:]) if kind != "ulp" \
                else float(promise.split()[0])
            worst = c.largest(kind)
            if worst and worst["error"] > bound * (1 + 1e-9):
                differences.found.append(f"accuracy/figures.json: {c.family} {c.type} promises {promise}, "
                                         f"is {error_text(worst)}")
    for name in hashes:
        differences.found.append(f"accuracy/figures.json: {name} is missing")


def check_readme(computations, differences):
    """The table of grades, and that of the functions which promise something else."""
    path = ROOT / "README.md"
    text = path.read_text()
    promised = {}
    for grades, bound in re.findall(r"^\| (A\d\d(?:, A\d\d)*) \|.*\| (.*) \|$", text, re.M):
        for grade in grades.split(", "):
            promised[grade] = re.sub(r"(\d+) units? in the last place", r"\1 ulp", bound).removeprefix("relative ")
    line = text.count("\n", 0, text.index("| A24, A53")) + 1
    others = [row for row in text.splitlines() if re.match(r"\| .*\b(?:32f|64f)c? \| A", row)]
    for c in computations:
        own = [row for row in others if re.search(rf"\b{c.family}\b", row)
               and re.search(rf"\b{c.type} ", row.replace(",", " "))]
        for grade, promise in zip(c.grades, c.promises):
            if promise != promised[grade] and not (own and re.search(rf"\b{re.escape(promise)}\b", own[0])):
                differences.report(path, line, f"{grade} {promised[grade]}",
                                   f"{promise} for {c.family} {c.type}")


def main():
    if len(sys.argv) != 2 or sys.argv[1] not in ("--write", "--check"):
        sys.exit(__doc__)
    write = sys.argv[1] == "--write"
    computations = load()
    dependent = {" ".join(pair) for pair in re.findall(
        r"PROCESSOR_DEPENDENT\((\w+),\s+(\w+)\)",
        (ROOT / "conformance/processor_dependent.def").read_text())}
    differences = Differences()
    check_file(computations, differences)
    check_readme(computations, differences)
    renewed = [hold_header(computations, differences)]
    for folder in "kernels", "complex":
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp") and path.parent.name != "generated":
                renewed.append(hold_comment(path, computations, dependent, differences))
    page = ROOT / "docs/accuracy.md"
    renewed.append((page, accuracy_page.page(page, computations, dependent, ulp_text, bits_text)))
    if renewed[-1][1] != page.read_text():
        differences.found.append("docs/accuracy.md: is not what the file gives")
    print("\n".join(differences.found))
    if write:
        for path, text in renewed:
            if text != path.read_text():
                path.write_text(text)
    elif differences.found:
        sys.exit("tools/figures.py --write renews the documents")


if __name__ == "__main__":
    main()
