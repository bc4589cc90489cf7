#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Write the manual's pages.

usage: man_pages.py [LUXVM] OUTPUT

OUTPUT/man3 gets a page for each family, luxsErfc.3, with every export of it as a name, which is a page of
one line that leads there. It says what the family's page of the site does: declarations, accuracy, special
values, environment, threads, method. OUTPUT/man1 gets luxvm.1 and a page for each subcommand, from the
command's own help; without LUXVM, the program, there are none. Dates come from SOURCE_DATE_EPOCH, else from
the changelog or the file with the figures.
"""

import os
import re
import subprocess
import sys
import textwrap
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import figures
import records


def date():
    if epoch := os.environ.get("SOURCE_DATE_EPOCH"):
        return time.strftime("%Y-%m-%d", time.gmtime(int(epoch)))
    return max(re.findall(r"\d{4}-\d\d-\d\d", records.source("accuracy/figures.json")))


def release():
    return re.search(r"project\(luxvm VERSION (\d+\.\d+)", records.source("CMakeLists.txt"))[1]


# ---- Text to groff

LINE = 72  # of 80 columns, less the indentation

def escaped(text):
    """Any text as it is: hyphens that can be copied, no escapes, no requests."""
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("^", "\\(ha").replace("~", "\\(ti")
    text = text.replace("`", "\\(ga").replace("'", "\\(aq").replace('"', "\\(dq")
    return re.sub(r"(?m)^\.", r"\\&.", text)


def inline(text):
    """Code and strong words in bold, links as their words."""
    text = re.sub(r"\[([^\]]+)\]\([^)]*\)", r"\1", text).replace(r"\|", "|")
    parts = re.split(r"`([^`]*)`|\*\*([^*]+)\*\*", text)
    made = ""
    for i in range(0, len(parts), 3):
        made += escaped(parts[i])
        strong = next(filter(None, parts[i + 1:i + 3]), "") if i + 2 < len(parts) else ""
        if strong:
            made += f"\\fB{escaped(strong)}\\fR"
    return made


def cells(line):
    return [c.strip() for c in re.split(r"(?<!\\)\|", line.strip().strip("|"))]


def shown(text):
    """As long as it is on the page."""
    return re.sub(r"\\f.|\\&", "", re.sub(r"\\\(..|\\[-e]", "x", inline(text)))


def table(lines):
    """Columns as wide as their longest cell; the widest are wrapped where the line would be too long."""
    rows = [cells(line) for line in lines if not re.match(r"\|[ :|-]+\|$", line)]
    columns = [[row[i] if i < len(row) else "" for row in rows] for i in range(len(rows[0]))]
    widths = [max(len(shown(cell)) for cell in column) for column in columns]
    words = [max(len(word) for cell in column for word in (shown(cell).split() or [""])) for column in columns]
    wrapped = sum(widths) + 3 * len(widths) > LINE
    while sum(widths) + 3 * len(widths) > LINE and any(w > least for w, least in zip(widths, words)):
        widest = max((w, i) for i, w in enumerate(widths) if w > words[i])[1]
        widths[widest] -= 1
    share = [f"w({w}n)" if wrapped else "" for w in widths]
    layout = " ".join("lb" + s for s in share), " ".join("l" + s for s in share)
    body = "\n".join("\t".join(f"T{{\n{inline(c)}\nT}}" if wrapped and c else inline(c) for c in row) for row in rows)
    # A table that a page ends in draws a warning.
    return f".PP\n.na\n.nh\n.ne {min(body.count(chr(10)) + 3, 30)}\n.TS\n{layout[0]}\n{layout[1]}.\n{body}\n.TE\n.hy\n.ad"


def filled(text):
    """In lines that stay short; none of them may begin as a request does."""
    lines = textwrap.wrap(inline(" ".join(text.split())), 78, break_long_words=False, break_on_hyphens=False)
    return "\n".join(re.sub(r"^\.", r"\\&.", line) for line in lines)


def groff(text):
    made = []
    for block in re.split(r"\n\n+", text.strip()):
        if block.startswith("|"):
            made.append(table(block.split("\n")))
        elif block.startswith("- "):
            for item in re.split(r"(?m)^- ", block)[1:]:
                made.append(".IP \\(bu 2\n" + filled(item))
        elif block:
            made.append(".PP\n" + filled(block))
    return "\n".join(made)


def page(parts):
    """Without the paragraphs that a heading begins already."""
    return re.sub(r"(?m)^(\.S[HS] .*\n)(?:\.PP\n)+", r"\1", "\n".join(parts)) + "\n"


def head(title, section, day, manual):
    return f".TH {title} {section} {day} \"luxvm {release()}\" \"{manual}\"\n"


# ---- The functions

def accuracy_rows(own, computations):
    lines = ["| Type | Grade | Promised | Largest found |", "|---|---|---|---|"]
    for e in own:
        c = next(c for c in computations if (c.family, c.type) == (e.family, e.type)
                 and (not e.grade or e.grade in c.grades))
        found = c.largest()
        promised = figures.stated(c.promises[c.grades.index(e.grade)]) if e.grade else "exact"
        unit = " ulp" if found and found["kind"] == "ulp" else ""
        lines.append(f"| {e.type} | {e.grade or '-'} | {promised} | "
                     f"{figures.error_text(found) + unit if found else 'exact'} |")
    return lines


def function_page(family, own, texts, computations, day):
    own_texts = [records.text_of(texts, family, is_complex)
                 for is_complex in sorted({e.type.endswith("c") for e in own})]
    made = [f"'\\\" t\n.\\\" Made by tools/man_pages.py.\n{head('luxs' + family, 3, day, 'luxvm functions')}.SH NAME\n"
            + ",\n".join(e.name for e in own) + f" \\- {own_texts[0].words} of arrays"]
    made.append(".SH SYNOPSIS\n.nf\n.B #include <luxvmk3.h>\n.PP")
    made += [f".B {escaped(e.declaration)};" for e in own]
    made.append(".fi\n.PP\nLink with \\fB\\-l:libluxvmk3.so." + release() + "\\fR.")

    def section(title, *names, before="", after=""):
        body = before
        for text in own_texts:
            parts = [text.summary] if names == ("",) else [text.sections[n] for n in names if n in text.sections]
            if parts:
                kind = ("Complex" if text.complex else "Real") if len(own_texts) > 1 else None
                body += (f"\n.SS {kind}" if kind else "") + "\n" + groff("\n\n".join(parts))
        if body + after:
            made.append(f".SH {title}\n" + "\n".join(filter(None, [body.strip("\n"), after])))

    section("DESCRIPTION", "", after=groff(
        "`len` is the number of elements of each array, of any alignment. A destination may be exactly one of the "
        "sources. Long arrays are split over OpenMP threads; A11 and the rounding functions never are."))
    section("ACCURACY", "Accuracy", "Neighbours", "Special blocks",
            before=table(accuracy_rows(own, computations)))
    returned = ("The number of elements, 0 for a length below 1." if family in ("NearbyInt", "Rint") else
                "0 (`LUX_OK`), -6 (`LUX_BAD_LENGTH`: below 1) or -8 (`LUX_NULL_POINTER`), when nothing was written; "
                "otherwise the code of the last element reported, see below. `errno` is not set.")
    made.append(".SH \"RETURN VALUE\"\n" + groff(returned))
    section('"SPECIAL VALUES"', "Special values")
    section("ENVIRONMENT", "Environment", "In place")
    section("NOTES", "Method")
    related = dict.fromkeys(re.findall(r"\[(\w+(?:, \w+)*)\]", " ".join(t.sections.get("Related", "") for t in own_texts)))
    names = dict.fromkeys(n for r in related for n in r.split(", "))
    together = [f for f in own_texts[0].families if f != family]
    made.append(".SH \"SEE ALSO\"\n" + "".join(f".BR luxs{n} (3),\n" for n in [*together, *(n for n in names if n not in together)])
                + ".BR luxvm (1)")
    return page(made)


def function_pages(folder, day):
    texts, computations = records.texts(), figures.load()
    by_family = {}
    for e in records.exports():
        by_family.setdefault(e.family, []).append(e)
    for family, own in by_family.items():
        (folder / f"luxs{family}.3").write_text(function_page(family, own, texts, computations, day))
        for e in own:
            (folder / f"{e.name}.3").write_text(f".so man3/luxs{family}.3\n")


# ---- The command

def help_of(luxvm, *command):
    # A width of its own, whatever terminal there is.
    return subprocess.run([luxvm, *command, "--help"], check=True, capture_output=True, text=True).stdout


def options_part(lines):
    """Of the help's lists: an option or a subcommand, and below it what it means."""
    made = []
    for line in lines:
        match = re.match(r"  (\S.*?)(?:\s{2,}(.*))?$", line)
        if match and not line.startswith("    "):
            made.append(f".TP\n.B {escaped(match[1])}\n" + escaped(match[2] or ""))
        else:
            made[-1] = made[-1].rstrip("\n") + "\n" + escaped(line.strip())
    return "\n".join(m.rstrip("\n") for m in made)


def command_page(luxvm, command, commands, day):
    text = help_of(luxvm, *command)
    name = "-".join(["luxvm", *command])
    description, _, rest = text.partition("\nUsage: ")
    usage, _, rest = rest.partition("\n")
    made = [f".\\\" Made by tools/man_pages.py.\n{head(name, 1, day, 'luxvm')}.SH NAME\n{escaped(name)} \\- "
            + escaped(description.strip().rstrip(".").replace("\n", " ")),
            ".SH SYNOPSIS\n.B " + escaped(usage.strip())]
    lines = rest.split("\n")
    while lines:
        line = lines.pop(0)
        if re.fullmatch(r"(Positionals|Options|Subcommands):", line):
            part = []
            while lines and lines[0].startswith("  "):
                part.append(lines.pop(0))
            title = {"Positionals": "ARGUMENTS", "Options": "OPTIONS", "Subcommands": "COMMANDS"}[line[:-1]]
            made.append(f".SH {title}\n" + options_part(part))
        elif line:
            # As it stands: it is laid out in columns.
            footer = [line, *lines]
            made.append(".SH DETAILS\n.nf\n" + "\n".join(escaped(l) for l in footer).rstrip("\n") + "\n.fi")
            break
    others = [c for c in commands if [c] != command and c != "help"]
    pages = [f"luxvm\\-{c}" for c in others] if not command else ["luxvm"]
    made.append(".SH \"SEE ALSO\"\n" + ",\n".join(f".BR {p} (1)" for p in pages))
    return name, page(made)


def command_pages(luxvm, folder, day):
    listed = help_of(luxvm).split("Subcommands:\n")[1]
    commands = re.findall(r"(?m)^  (\w+)  ", listed.split("\n\n")[0])
    for command in [[], *([c] for c in commands if c != "help")]:
        name, text = command_page(luxvm, command, commands, day)
        (folder / f"{name}.1").write_text(text)


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    output = Path(sys.argv[-1])
    for section in ("man3", "man1"):
        (output / section).mkdir(parents=True, exist_ok=True)
    function_pages(output / "man3", date())
    if len(sys.argv) == 3:
        command_pages(Path(sys.argv[1]).resolve(), output / "man1", date())


if __name__ == "__main__":
    main()
