# SPDX-License-Identifier: MIT
"""docs/accuracy.md from accuracy/figures.json: the text up to the line <!-- figures --> stays as it is."""

TYPES = {
    "32f": "Single precision",
    "64f": "Double precision",
    "32fc": "Complex, single precision",
    "64fc": "Complex, double precision",
}
MARK = "<!-- figures -->"


def error(found, ulp_text, bits_text):
    if found["kind"] == "ulp":
        return ulp_text(found["error"]) + " ulp"
    return bits_text(found["error"]) + (" normwise" if found["kind"] == "normwise" else "")


def how(computation, found):
    if computation.survey and computation.survey["method"] == "exhaustive":
        return f"all arguments, {computation.survey['date']}"
    words = {"sampled": "sample", "named": "by name", "exhaustive": "all arguments"}
    return f"{words[found['found']]}, {found['date']}"


def rows(computation, ulp_text, bits_text):
    """The largest error in the terms of the promise, of each part."""
    mean = f"{computation.survey['mean_ulp']:.4f}" if computation.survey else "-"
    head = [computation.family, ", ".join(computation.grades) or "-", computation.stated]
    found = [e for e in computation.all if e["kind"] == computation.kind]
    for e in found:
        part = f"{e['part']}: " if "part" in e else ""
        yield head + [part + error(e, ulp_text, bits_text), mean,
                      " ".join(f"`{a}`" for a in e["arguments"]), how(computation, e), e["processor"]]
        head, mean = ["", "", ""], ""
    if not found:
        yield head + ["exact", mean, "-", "sample" if computation.survey else "-", ""]


def section(kind, computations, dependent, ulp_text, bits_text):
    lines = [f"## {TYPES[kind]} ({kind})", "",
             "| Function | Grades | Promised | Largest error found | Mean ulp | At | Found |",
             "|---|---|---|---|---|---|---|"]
    processors = []
    for computation in computations:
        for row in rows(computation, ulp_text, bits_text):
            lines.append("| " + " | ".join(row[:-1]) + " |")
            if f"{computation.family} {kind}" in dependent and row[-1]:
                processors.append(f"{computation.family} on {row[-1]}")
    if processors:
        lines += ["", "Results that depend on the processor were measured on one: " +
                  "; ".join(processors) + "."]
    return lines + [""]


def page(path, computations, dependent, ulp_text, bits_text):
    text = path.read_text()
    lines = [""]
    for kind in TYPES:
        lines += section(kind, [c for c in computations if c.type == kind], dependent, ulp_text, bits_text)
    return text.split(MARK)[0] + MARK + "\n" + "\n".join(lines)
