# SPDX-License-Identifier: MIT
"""What the made documents know of the functions: the records of core/functions.def, the header's
declarations, the rows of special values, the texts of docs/functions. Read as text, so that pages can
be made where nothing was built."""

import math
import re
import struct
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TYPES = {"32f": "float", "64f": "double", "32fc": "Lux32fc", "64fc": "Lux64fc"}
GRADES = {"32f": ["A11", "A21", "A24"], "64f": ["A50", "A53"], "32fc": ["A11", "A21", "A24"],
          "64fc": ["A50", "A53"]}
CODES = {12: "overflow", 17: "underflow", 18: "division by zero", 19: "invalid"}


class Export:
    def __init__(self, family, type_name, grade, shape, row):
        self.family, self.type, self.grade, self.shape, self.row = family, type_name, grade, shape, row
        self.name = f"luxs{family}_{type_name}" + (f"_{grade}" if grade else "")
        self.declaration = None  # without the semicolon
        self.cycles = None       # of the cost model, where it may be split


class Text:
    """A file of docs/functions: one or more families, real or complex."""

    def __init__(self, path):
        self.path, self.stem = path, path.stem
        names = path.stem.split("_")
        self.complex = names[-1] == "complex"
        self.families = names[:-1] if self.complex else names
        body = re.sub(r"<!--.*?-->\n", "", path.read_text(), flags=re.S)
        heading, *parts = re.split(r"(?m)^## ", body)
        first, _, self.summary = heading.strip().partition("\n")
        self.title, _, self.words = first.removeprefix("# ").partition(": ")
        self.summary = self.summary.strip()
        self.sections = {}
        for part in parts:
            name, _, content = part.partition("\n")
            self.sections[name.strip()] = content.strip()

    def types(self):
        return ["32fc", "64fc"] if self.complex else ["32f", "64f"]


def source(name):
    return (ROOT / name).read_text()


def exports():
    """Of all vector functions, in the order of the records."""
    records = source("core/functions.def")
    lines = re.findall(r"(?m)^LUX_(32f|64f|32fc|64fc)\((\w+), (\w+), (\d+)\)|^LUX_ROUNDING\((\w+), (\w+), (\w+)\)",
                       records)
    found = []
    for type_name, family, shape, row, exact, exact_shape, _ in lines:
        if exact:
            found += [Export(exact, t, "", exact_shape, None) for t in ("32f", "64f")]
        else:
            found += [Export(family, type_name, g, shape, int(row)) for g in GRADES[type_name]]
    cycles = {(family, type_name): (float(best), float(lower)) for family, type_name, best, lower in re.findall(
        r"(?m)^LUX_CYCLES\((\w+), (\w+), ([\d.]+), ([\d.]+)\)", records)}
    declared = {name: f"LuxStatus {name}({' '.join(arguments.split())})" for name, arguments in re.findall(
        r"LUX_API LuxStatus (\w+)\(([^;]*)\);", source("include/luxvmk3.h"))}
    for e in found:
        e.declaration = declared[e.name]
        if e.grade and e.grade != "A11":
            e.cycles = cycles[e.family, e.type][e.grade not in ("A24", "A53")]
    return found


def other_exports():
    """Of arrays of one element and less: name, and its declaration where a header has one."""
    names = []
    text = source("core/exports.def")
    for letter in "sdcz":
        names += [f"nox{letter}MinN"] + [f"nox{letter}Threading_{shape}" for shape in ("1_1", "2_1", "1_2", "2_1_1")]
    for letter in "sd":
        names += [f"nox{letter}{f}_SC_{g}" for f in ("Sin", "Cos", "SinCos", "Tan") for g in ("HA", "LA", "A11")]
    names += [n for n in re.findall(r"(?m)^LUX_(?:EXPORT|SCALAR_ROUTINE)\((\w+)\)", text)]
    return sorted(names, key=str.lower)


def texts():
    return [Text(path) for path in sorted((ROOT / "docs/functions").glob("*.md"))]


def text_of(all_texts, family, is_complex):
    [text] = [t for t in all_texts if family in t.families and t.complex == is_complex]
    return text


# ---- Numbers ---------------------------------------------------------------------------------------

def pattern(text, type_name):
    """The bits of a number of the tables, or None for ANY and its like."""
    double = type_name.startswith("64")
    if match := re.fullmatch(r"([DF])\((.*)\)", text):
        value = sum(float.fromhex(v) if "0x" in v else float(v) for v in match[2].split(" + "))
        return struct.unpack("<Q", struct.pack("<d", value))[0] if double \
            else struct.unpack("<I", struct.pack("<f", value))[0]
    if re.fullmatch(r"0x[0-9A-Fa-f]+", text):
        return int(text, 16)
    return None


def same_single(x, single):
    try:
        return struct.pack("<f", x) == struct.pack("<f", single)
    except OverflowError:
        return False


def decimal(bits, type_name):
    """The shortest text that means this number among its type."""
    if type_name.startswith("64"):
        value = struct.unpack("<d", struct.pack("<Q", bits))[0]
        shortest = repr(value)
    else:
        value = struct.unpack("<f", struct.pack("<I", bits))[0]
        shortest = next((t for t in (f"{value:.{n}g}" for n in range(1, 10)) if same_single(float(t), value)), "")
    if math.isnan(value):
        return "NaN"
    if math.isinf(value):
        return "-infinity" if value < 0 else "+infinity"
    if value == 0:
        return "-0" if math.copysign(1, value) < 0 else "+0"
    return shortest.removesuffix(".0").replace("e+", "e")


def number(text, type_name):
    """A number of the tables as decimal and bits."""
    words = {"ANY": "anything", "ANY_NAN": "a quiet NaN", "ANY_ZERO": "a zero"}
    if text in words:
        return words[text], ""
    bits = pattern(text, type_name)
    return decimal(bits, type_name), f"0x{bits:0{16 if type_name.startswith('64') else 8}X}"


# ---- Special values --------------------------------------------------------------------------------

def split_arguments(text):
    """At the commas that stand in no parenthesis."""
    parts, depth = [""], 0
    for c in text:
        depth += (c == "(") - (c == ")")
        if c == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += c
    return [p.strip() for p in parts]


def special_rows():
    """(family, type) to rows of (grades, arguments, results, code); numbers as they are written."""
    rows, of, rounding = {}, [], ["Floor", "Ceil", "Trunc", "Round", "NearbyInt", "Rint"]
    for line in source("conformance/special_values.def").splitlines():
        match = re.match(r"(\w+)\((.*)\)", line)
        if not match:
            continue
        name, arguments = match[1], split_arguments(match[2])
        if name == "OF":
            of = arguments
        elif name == "ROUNDING":
            for family, result in zip(rounding, [*arguments[2:], arguments[-1]]):
                rows.setdefault((family, arguments[0]), []).append(("ALL", [arguments[1]], [result], 0))
        elif name.startswith("ROW_"):
            sources = 1 if name in ("ROW_1_1", "ROW_1_2") else 2
            *numbers, code = arguments
            rows.setdefault((of[0], of[1]), []).append((of[2], numbers[:sources], numbers[sources:], int(code)))
    return merged(rows)


def merged(rows):
    """The same row of several grades once."""
    for key, all_rows in rows.items():
        kept = {}
        for grades, arguments, results, code in all_rows:
            kept.setdefault((tuple(arguments), tuple(results), code), []).append(grades)
        rows[key] = [(" ".join(dict.fromkeys(g)), a, r, c) for (a, r, c), g in kept.items()]
    return rows


RELATIONS = {"kTurned": "g(z) = -i f(iz)", "kTurnedIn": "g(z) = f(iz)", "kArea": "g(z) = i f(z) or -i f(z)",
             "kDecimal": "g(z) = f(z) log10 e", "kSame": "g(z) = f(z)"}
SYMMETRIES = {"kConjugate": "f(conj z) = conj f(z)", "kOdd": "f(conj z) = conj f(z), f(-z) = -f(z)",
              "kEven": "f(conj z) = conj f(z), f(-z) = f(z)", "kNone": ""}


def complex_rows():
    """family to blocks of (rows of (arguments, result), symmetry, the family f of the rows, relation)."""
    found, rows = {}, []
    for line in source("conformance/complex_values.def").splitlines():
        match = re.match(r"(\w+)\((.*)\)", line)
        if not match:
            continue
        name, a = match[1], split_arguments(match[2])
        if name in ("FUNCTION", "FUNCTIONS"):
            rows = []
            found.setdefault(a[0], []).append((rows, SYMMETRIES[a[1]], a[0], ""))
            if name == "FUNCTIONS":
                found.setdefault(a[2], []).append((rows, SYMMETRIES[a[1]], a[0], RELATIONS[a[3]]))
        elif name == "ACROSS":
            rows += [([(a[0], y)], r) for y, r in zip(("0", a[1], "Inf", "NaN"), a[2:])]
        elif name in ("AT", "ALONE"):
            rows.append(([(a[0], a[1])], a[2]))
        elif name == "POWER":
            rows.append(([tuple(split_arguments(z[2:-1])) for z in a[:2]], a[2]))
    return found


def complex_text(parts):
    x, y = (part.replace("Inf", "infinity").replace("Zero", "(a zero)") for part in parts)
    return f"{x} - {y[1:]} i" if y.startswith("-") else f"{x} + {y} i"
