#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Build the site of the documents.

usage: docs_site.py OUTPUT [--plots FOLDER] [--pages-only]

The documents of the tree are its pages: README section by section, those of docs/, the changelog. A page
for each family puts together what the records, the header, accuracy/figures.json, docs/performance.md,
the rows of special values and the family's text in docs/functions say. Pages are laid out in
OUTPUT-source and made by Sphinx, which takes a warning for an error; --pages-only leaves Sphinx out.
A plot that is not in FOLDER (build/plots) is a grey box that says so.
"""

import argparse
import html
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import figures
import records
from records import ROOT

# Sections of the README and the page that shows them; those not named go to the page on installing.
README_PAGES = {"Surprises": "index", "What the grades promise": "index", "Licence": "index",
                "A first program": "first_program", "Status codes": "statuses", "Threads": "threads",
                "Checking an installation": "command", "Measuring": "command",
                "Adding a function": "contributing"}
# Other documents; those of docs/ that are not named here are pages, too, by their own names.
PAGES = {"docs/libm.md": "libm", "docs/when_not.md": "when_not", "docs/reference.md": "reference",
         "docs/accuracy.md": "accuracy", "docs/performance.md": "performance", "docs/design.md": "design",
         "CHANGELOG.md": "changelog", "CONTRIBUTING.md": "contributing"}
FURTHER = {f"docs/{path.name}": path.stem for path in sorted((ROOT / "docs").glob("*.md"))
           if f"docs/{path.name}" not in PAGES}
PAGES |= FURTHER
ENVIRONMENT = "Environment and traps"  # a section of the reference that is a page of its own
CONTENTS = {"Start": ["install", "first_program", "libm", "when_not"],
            "Using it": ["statuses", "environment", "threads", "command", *FURTHER.values()],
            "Functions": ["exports", "families", "reference"],
            "How good": ["accuracy", "performance"],
            "Inside": ["design", "contributing", "changelog"]}


def anchor(heading):
    """As the page's headings get them."""
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def sections(text):
    """What stands before the first heading of the second level, and the sections by heading."""
    text = re.sub(r"<!-- SPDX.*?-->\n", "", text)
    fenced = re.split(r"(?m)(^```.*?^```\n)", text, flags=re.S)  # a # in a program is no heading
    hidden = "".join(part if i % 2 == 0 else part.replace("\n#", "\n\0") for i, part in enumerate(fenced))
    head, *parts = re.split(r"(?m)^## ", hidden)
    found = {}
    for part in parts:
        heading, _, body = part.replace("\n\0", "\n#").partition("\n")
        found[heading] = body.strip() + "\n"
    return head.replace("\n\0", "\n#"), found


def raised(text):
    """Headings one level up, outside of programs."""
    parts = re.split(r"(?m)(^```.*?^```\n)", text, flags=re.S)
    return "".join(p if i % 2 else re.sub(r"(?m)^##(#+ )", r"#\1", p) for i, p in enumerate(parts))


class Site:
    def __init__(self, folder, plots):
        self.folder, self.plots = folder, plots
        self.texts, self.exports = records.texts(), records.exports()
        self.families = list(dict.fromkeys(e.family for e in self.exports))
        self.computations = figures.load()
        self.rows, self.complex_rows = records.special_rows(), records.complex_rows()
        self.copied = set()
        self.readme_head, self.readme = sections(records.source("README.md"))
        self.anchors = {anchor(heading): README_PAGES.get(heading, "install") for heading in self.readme}
        self.speed = speed_tables()

    # ---- Links

    def target(self, path, link_anchor, page):
        """What a link to a file of the tree is on this page: a page, a copy of the source, or None."""
        depth = "../" * page.count("/")
        if path == "README.md":
            return depth + (f"{self.anchors.get(link_anchor, 'index')}.md" if link_anchor else "index.md")
        if path == "docs/reference.md" and link_anchor == anchor(ENVIRONMENT):
            return f"{depth}environment.md"
        if path in PAGES:
            return f"{depth}{PAGES[path]}.md" + (f"#{link_anchor}" if link_anchor else "")
        if path.startswith("docs/functions/"):
            text = records.Text(ROOT / path)
            return f"{depth}functions/{text.families[0]}.md"
        if path.startswith("docs/plots/"):
            return f"{depth}plots/{path.removeprefix('docs/plots/')}"
        if (ROOT / path).is_file():
            copy = self.folder / "extra/source" / f"{path}.txt"
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(ROOT / path, copy)
            return f"{depth}source/{path}.txt"
        return None

    def linked(self, text, base, page):
        """The links of a document that stands in the folder `base` of the tree, for that page."""
        def one(match):
            image, words, goal = match.groups()
            if goal.startswith("#") and page in self.anchors.values():  # another section of the README
                goal = f"README.md{goal}"
            elif re.match(r"\w+:|#", goal):
                return match[0]
            path, _, link_anchor = goal.partition("#")
            path = os.path.normpath(os.path.join(base, path))
            goal = self.target(path, link_anchor, page)
            if goal is None:
                return words
            if goal.endswith(".txt"):
                words = re.sub(r"`([^`]*)`", r"<code>\1</code>", words)
                return f'<a href="{goal}">{words}</a>'
            return f"{image}[{words}]({goal})"
        parts = re.split(r"(?m)(^```.*?^```$)", text, flags=re.S)
        return "".join(p if i % 2 else re.sub(r"(!?)\[([^\]]+)\]\(([^)\s]+)\)", one, p)
                       for i, p in enumerate(parts))

    def sources_linked(self, text, page):
        """Names of source files, each in the folder of the one before it."""
        folder = ""

        def one(match):
            nonlocal folder
            path = match[1] if "/" in match[1] else f"{folder}/{match[1]}"
            if not (ROOT / path).is_file():
                return match[0]
            folder = os.path.dirname(path)
            return f'<a href="{self.target(path, "", page)}"><code>{match[1]}</code></a>'
        return re.sub(r"`([\w/]+\.(?:cpp|h))`", one, text)

    def write(self, page, text):
        path = self.folder / f"{page}.md"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    # ---- Pages made of documents

    def readme_section(self, heading, page, level="# "):
        return f"{level}{heading}\n\n" + self.linked(raised(self.readme[heading]) if level == "# "
                                                      else self.readme[heading], "", page)

    def documents(self):
        introduction = self.readme_head.split("\n", 1)[1].strip()
        contents = "".join("```{toctree}\n:hidden:\n:caption: %s\n\n%s\n```\n" % (caption, "\n".join(pages))
                           for caption, pages in CONTENTS.items())
        ways = ("[Install](install.md) · [First program](first_program.md) · [Coming from libm](libm.md) · "
                "[When not to use it](when_not.md) · [All functions](families.md) · "
                "[Index of exports](exports.md) · [Accuracy](accuracy.md) · [Speed](performance.md)")
        self.write("index", f"# luxvm\n\n{introduction}\n\n{ways}\n\n"
                   + "\n".join(self.readme_section(s, "index", "## ") for s in self.readme
                               if README_PAGES.get(s) == "index") + contents)
        for page, title in ("install", "Install"), ("command", "The command"):
            own = [s for s in self.readme if README_PAGES.get(s, "install") == page
                   and not re.fullmatch(r"The \d+ functions", s)]
            self.write(page, f"# {title}\n\n" + "\n".join(self.readme_section(s, page, "## ") for s in own))
        self.write("first_program", self.readme_section("A first program", "first_program")
                   + self.other_languages("first_program"))
        self.write("threads", self.readme_section("Threads", "threads"))
        self.write("statuses", self.readme_section("Status codes", "statuses")
                   + "\n## Seeing every report\n\nA program that defines both functions:\n\n"
                   + self.program("examples/watch_reports.c", "c"))
        for path, page in PAGES.items():
            text = records.source(path)
            if page == "reference":
                text = self.reference(text)
            text = re.sub(r"<!-- (?:SPDX|figures).*?-->\n", "", text)
            self.write(page, self.linked(text, os.path.dirname(path), page))

    def reference(self, text):
        """Without what is a page of its own: families, environment."""
        _, own = sections(text)
        self.write("environment", f"# {ENVIRONMENT}\n\n" + self.linked(own.pop(ENVIRONMENT), "docs", "environment"))
        return ("# Arrays, scalar routines, other exports\n\nWhat holds for all functions of arrays, and the exports "
                "that are none.\n\n" + "\n".join(f"## {h}\n\n{body}" for h, body in own.items()))

    def program(self, path, language):
        return f"{self.linked(f'[{path}]({path})', '', 'x')}:\n\n```{language}\n{records.source(path)}```\n"

    def other_languages(self, page):
        found = ""
        for path, name, language, interface in (
                ("examples/first.cpp", "C++20", "c++", "include/luxvm.hpp"),
                ("examples/first.f90", "Fortran 2003", "fortran", "include/luxvm.f90")):
            found += f"\n## A program in {name}\n\n" + self.linked(f"By [{interface}]({interface}), which says more at its head.\n\n",
                                                      "", page) + self.program(path, language)
        return found

    # ---- Lists

    def family_list(self):
        lines = ["# Functions by family", "", "```{toctree}", ":hidden:", "",
                 *[f"functions/{family}" for family in self.families], "```", "",
                 "| Family | What | Types |", "|---|---|---|"]
        for family in self.families:
            own = [e for e in self.exports if e.family == family]
            words = self.text(family, own[0].type).words
            types = ", ".join(dict.fromkeys(e.type for e in own))
            lines.append(f"| [{family}](functions/{family}.md) | {words} | {types} |")
        self.write("families", "\n".join(lines) + "\n")

    def export_list(self):
        lines = ["# Index of exports", "",
                 f"The {len(self.exports)} functions of arrays; below them the other exports. The search on the left "
                 "finds each by its name, too.", "",
                 '<input id="filter" type="search" placeholder="Show names that contain ..." '
                 'aria-label="Show names that contain">', "",
                 "| Export | Promised | What |", "|---|---|---|"]
        for e in self.exports:
            lines.append(f"| {{c:func}}`{e.name}` | {self.promise(e)} | [{self.text(e.family, e.type).words}]"
                         f"(functions/{e.family}.md) |")
        lines += ["", "## Other exports", "", "| Export | Page |", "|---|---|"]
        for name in records.other_exports():
            goal = "statuses.md" if name in ("noxsError", "noxdError") else \
                "reference.md#large-arguments" if "_SC_" in name or name == "noxreduce_pio2d" else \
                "reference.md#scalar-routines" if "_scalar" in name or name == "noxreduce_pi04l" else "reference.md"
            title = {"s": "statuses", "r": "reference"}[goal[0]]
            lines.append(f"| <code>{name}</code> | [{title}]({goal}) |")
        lines += ["", "<script>",
                  "document.getElementById('filter').addEventListener('input', e => {",
                  "  const wanted = e.target.value.toLowerCase();",
                  "  for (const row of document.querySelectorAll('table tbody tr'))",
                  "    row.hidden = !row.cells[0].textContent.toLowerCase().includes(wanted);",
                  "});", "</script>", ""]
        self.write("exports", "\n".join(lines))

    # ---- A family

    def text(self, family, type_name):
        return records.text_of(self.texts, family, type_name.endswith("c"))

    def computation(self, e):
        return next(c for c in self.computations if (c.family, c.type) == (e.family, e.type)
                    and (e.grade in c.grades if e.grade else True))

    def promise(self, e):
        c = self.computation(e)
        return figures.stated(c.promises[c.grades.index(e.grade)]) if e.grade else "exact"

    def family(self, family):
        page = f"functions/{family}"
        own = [e for e in self.exports if e.family == family]
        kinds = [("Real" if not is_complex else "Complex", [e for e in own if e.type.endswith("c") == is_complex])
                 for is_complex in (False, True)]
        kinds = [(name, of_kind, self.text(family, of_kind[0].type)) for name, of_kind in kinds if of_kind]

        def from_text(*names):
            """These sections of the family's texts, under a heading for each kind where there are two."""
            found = []
            for kind, _, text in kinds:
                body = "\n\n".join(text.sections[n] for n in names if n in text.sections)
                if body:
                    body = self.sources_linked(self.linked(body, "docs/functions", page), page)
                    found.append((f"### {kind}\n\n" if len(kinds) > 1 else "") + body)
            return "\n\n".join(found)

        summaries = "\n\n".join((f"{kind}: " if len(kinds) > 1 else "")
                                + self.linked(text.summary, "docs/functions", page) for kind, _, text in kinds)
        parts = [f"# {family}: {kinds[0][2].words}\n\n{summaries}"]
        together = [t for t in kinds[0][2].families if t != family]
        if together:
            others = ", ".join(f"[{t}]({t}.md)" for t in together)
            parts.append(f"What follows in words is about {others}, too.")
        parts.append("## Declarations\n\n" + "\n".join(f"```{{c:function}} {e.declaration}\n```" for e in own))
        parts.append("## Accuracy\n\n" + self.promises(own) + "\n" + from_text("Accuracy", "Neighbours", "Special blocks")
                     + "\n\n" + self.error_plots(family, own))
        parts.append("## Special values\n\n" + from_text("Special values") + "\n\n" + self.special(family, own))
        parts.append("## Environment\n\n" + from_text("Environment") + "\n\nSee also [environment and traps](../environment.md).")
        parts.append("## In place\n\nA destination may be exactly one of the sources.\n\n" + from_text("In place"))
        parts.append("## Threads\n\n" + self.threads(own))
        parts.append("## Speed\n\n" + self.speed_of(family, own))
        parts.append("## Method\n\n" + from_text("Method"))
        parts.append("## Related\n\n" + from_text("Related"))
        known = {"", "Accuracy", "Neighbours", "Special blocks", "Special values", "Environment", "In place",
                 "Method", "Related"}
        for _, _, text in kinds:
            for lost in set(text.sections) - known:
                sys.exit(f"{text.path}: no part of the page shows '{lost}'")
        self.write(page, "\n\n".join(parts) + "\n")

    def promises(self, own):
        lines = ["| Type | Grades | Promised | Largest error found | At | Found |", "|---|---|---|---|---|---|"]
        shown = []
        for e in own:
            c = self.computation(e)
            if c in shown:
                continue
            shown.append(c)
            words = [figures.stated(p) for p in c.promises]
            promised = " ".join(dict.fromkeys(
                words if len(set(words)) == 1 else [f"{g}: {w}," for g, w in zip(c.grades, words)]))
            found = [x for x in c.all if x["kind"] == c.kind] or [None]
            for i, x in enumerate(found):
                start = f"| {c.type} | {', '.join(c.grades) or '-'} | {promised.rstrip(',')} |" if i == 0 else "| | | |"
                if x is None:
                    lines.append(f"{start} exact | | |")
                    continue
                at = "<br>".join(f"{records.decimal(int(a, 16), c.type)} <code>{a}</code>" for a in x["arguments"])
                part = f"{x['part']}: " if x.get("part") else ""
                unit = "" if c.kind != "ulp" else " ulp"
                lines.append(f"{start} {part}{figures.error_text(x)}{unit} | {at} | {x['date']} |")
        return "\n".join(lines) + ("\n\nGrades on one line are one computation. [How errors are measured](../accuracy.md).\n")

    def error_plots(self, family, own):
        found = ""
        for type_name in dict.fromkeys(e.type for e in own if e.grade):
            name = f"{family.lower()}_{type_name}_error"
            found += '<div class="plots">' + "".join(
                self.image(f"{name}{end}", f"{family} {type_name}: error {words}, each grade, with its promise")
                for end, words in (("", "over the interval where the function is interesting"),
                                   ("_whole", "over the whole range"))) + "</div>\n\n"
        return found

    def image(self, name, words):
        self.plot(name)
        return f'<a href="../plots/{name}.svg"><img src="../plots/{name}.svg" alt="{words}" loading="lazy"></a>'

    def plot(self, name):
        path = self.folder / f"extra/plots/{name}.svg"
        path.parent.mkdir(parents=True, exist_ok=True)
        drawn = self.plots / f"{name}.svg"
        if drawn.exists():
            shutil.copyfile(drawn, path)
        else:
            path.write_text('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 600 300"><rect width="600" '
                            'height="300" fill="#ddd"/><text x="300" y="150" text-anchor="middle" '
                            f'font-family="sans-serif">{name}: not drawn</text></svg>\n')

    def special(self, family, own):
        found = ""
        for type_name in dict.fromkeys(e.type for e in own):
            if type_name in ("32f", "64f"):
                found += self.real_rows(family, type_name, own)
        if own[-1].type.endswith("c"):
            found += self.rows_of_complex(family)
        return found

    def real_rows(self, family, type_name, own):
        rows = self.rows[family, type_name]
        shape = own[0].shape
        sources, results = {"1_1": (1, 1), "2_1": (2, 1), "2_1_1": (2, 1), "1_2": (1, 2)}[shape]
        heads = [["Argument"], ["First", "Second" if shape == "2_1" else "Scalar"]][sources - 1] \
            + [["Result"], ["First result", "Second result"]][results - 1] + ["Code", "Flag"]
        graded = any(grades != "ALL" for grades, *_ in rows)
        lines = []
        for grades, arguments, values, code in rows:
            cells = [" ".join(filter(None, (words, f"<code>{bits}</code>" if bits else "")))
                     for words, bits in (records.number(n, type_name) for n in arguments + values)]
            lines.append(cells + [str(code or ""), records.CODES.get(code, "")]
                         + ([grades.replace("ALL", "all")] if graded else []))
        return folded(f"{type_name}: {len(rows)} rows with bits, as every build is tested with them",
                      heads + (["Grades"] if graded else []), lines)

    def rows_of_complex(self, family):
        found = ""
        for rows, symmetry, of, relation in self.complex_rows[family]:
            name = "both types" if of == family else f"both types, of {of}"
            note = f"{len(rows)} rows" + (f"; {relation}, f = {of}, g = {family}" if relation else "") \
                + (f"; {symmetry}" if symmetry else "")
            lines = [[html.escape(records.complex_text(a)) for a in arguments]
                     + [html.escape(records.complex_text(records.split_arguments(result[2:-1])))]
                     for arguments, result in rows]
            heads = (["Base", "Exponent"] if lines and len(lines[0]) == 3 else ["Argument"]) + ["Result"]
            found += folded(f"Complex, {name}: {note}", heads, lines)
        return found

    def threads(self, own):
        if not any(e.cycles for e in own):
            return "Never split: a call computes everything on the calling thread."
        lines = ["| Export | Row | Cycles per element | Threshold, cores of a package | Threshold, one core |",
                 "|---|---|---|---|---|"]
        for e in own:
            if e.cycles:
                lines.append(f"| <code>{e.name}</code> | {e.row} | {e.cycles:g} | {int(60000 / e.cycles)} | "
                             f"{int(500000 / e.cycles)} |")
        return ("\n".join(lines) + "\n\nA call of more elements than the threshold, and than 100 for each thread, is split; A11 "
                "never. The threshold is the cost of starting the threads over the cycles per element: the columns are for "
                "two threads on two cores (60000 cycles), and where the processors count as one core (500000 cycles), as in "
                f"many virtual machines. `luxvm explain {next(e.name for e in own if e.cycles)} --n 1e6` "
                "shows it for a machine. The shape of the calls is "
                + ", ".join(f"`{s}`" for s in dict.fromkeys(e.shape for e in own))
                + ": sources, scalar if there is one, destinations. [More on threads](../threads.md).")

    def speed_of(self, family, own):
        names = {e.name for e in own}
        found = before = ""
        for heading, heads, rows in self.speed:
            mine = [row for row in rows if any(cell.strip("`") in names for cell in row[:2])]
            if mine:
                lines = [heads, ["---"] + ["---:"] * (len(heads) - 1), *mine]
                found += (f"### {heading}\n\n" if heading != before else "") \
                    + "\n".join("| " + " | ".join(line) + " |" for line in lines) + "\n\n"
                before = heading
        found += '<div class="plots even">' + "".join(
            self.image(f"{family.lower()}_{type_name}_speed", f"{family} {type_name}: cycles per element over the length")
            for type_name in dict.fromkeys(e.type for e in own)) + "</div>\n\n"
        return ("Cycles per element; what the columns mean and on which machine it was: [speed](../performance.md).\n\n"
                + found)


def folded(title, heads, lines):
    body = "".join("<tr>" + "".join(f"<td>{cell}</td>" for cell in line) + "</tr>" for line in lines)
    head = "".join(f"<th>{h}</th>" for h in heads)
    return (f'<details><summary>{html.escape(title)}</summary><div><table class="rows"><thead><tr>{head}</tr></thead>'
            f"<tbody>{body}</tbody></table></div></details>\n\n")


def speed_tables():
    """The tables of docs/performance.md whose lines are of an export each: heading, heads, lines."""
    found, heading = [], ""
    lines = records.source("docs/performance.md").splitlines()
    for i, line in enumerate(lines):
        if line.startswith("#"):
            heading = line.lstrip("# ")
        if line.startswith("|") and i + 1 < len(lines) and re.match(r"\|[ :|-]+\|$", lines[i + 1]):
            rows = []
            for row in lines[i + 2:]:
                if not row.startswith("|"):
                    break
                rows.append(cells_of(row))
            if any(cell.startswith("`luxs") for row in rows for cell in row[:2]):
                found.append((heading, cells_of(line), rows))
    return found


def cells_of(line):
    return [cell.strip() for cell in line.strip().strip("|").split("|")]


def main():
    parser = argparse.ArgumentParser(description="Build the site of the documents.")
    parser.add_argument("output", type=Path)
    parser.add_argument("--plots", type=Path, default=ROOT / "build/plots")
    parser.add_argument("--pages-only", action="store_true", help="without Sphinx")
    options = parser.parse_args()
    folder = options.output.with_name(options.output.name + "-source")
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "_static").mkdir(parents=True)
    (folder / "extra").mkdir()
    shutil.copy(ROOT / "docs/site/conf.py", folder)
    shutil.copy(ROOT / "docs/site/style.css", folder / "_static")
    shutil.copytree(ROOT / "docs/plots", folder / "plots")
    site = Site(folder, options.plots)
    site.documents()
    site.family_list()
    site.export_list()
    for family in site.families:
        site.family(family)
    if not options.pages_only:
        shutil.rmtree(options.output, ignore_errors=True)
        subprocess.run(["sphinx-build", "-b", "html", "-W", "--keep-going", "-q",
                        "-d", folder / "doctrees", folder, options.output], check=True)
        for font in options.output.glob("_static/**/*.woff2"):  # every browser's; the others are not asked for
            for other in font.parent.glob(f"{font.stem}.*"):
                if other != font:
                    other.unlink()


if __name__ == "__main__":
    main()
