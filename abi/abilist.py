#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What a shared library exports, as text: name, symbol version if it has one, and the size of a
variable, which programs that are linked with it copy.

abilist.py LIBRARY LIST            compare; exit code 1 and a line for each difference
abilist.py LIBRARY LIST --renew    write the list; refused where a name would be lost
"""
import re
import subprocess
import sys
from pathlib import Path


def entries(library):
    """Lines of the list as the library would have them, by name."""
    text = subprocess.run(["readelf", "--dyn-syms", "-W", library], check=True, capture_output=True,
                          text=True).stdout
    found = {}
    for size, kind, where, name in re.findall(
            r"^\s*\d+:\s+\w+\s+(\w+)\s+(\w+)\s+(?:GLOBAL|WEAK)\s+\w+\s+(\w+)\s+(\S+)", text, re.M):
        if where != "UND":
            found[name.split("@")[0]] = name.replace("@@", "@") + (
                f" variable {int(size, 0)}" if kind == "OBJECT" else " function")
    return found


def published(path):
    lines = [line for line in Path(path).read_text().splitlines() if not line.startswith("#")]
    return {re.split("[ @]", line)[0]: line for line in lines}


def differences(library, path):
    now, before = entries(library), published(path)
    lost = [f"{name}: no longer exported; the ABI would break: programs linked with it do not start"
            for name in sorted(before.keys() - now.keys())]
    lost += [f"{before[name]}: is now '{now[name]}'; the ABI would break"
             for name in sorted(before.keys() & now.keys()) if before[name] != now[name]]
    new = [f"{name}: exported and not in {Path(path).name}; `make abi` adds it"
           for name in sorted(now.keys() - before.keys())]
    return lost, new


def main():
    if len(sys.argv) not in (3, 4) or sys.argv[3:] not in ([], ["--renew"]):
        sys.exit(__doc__)
    library, path = sys.argv[1:3]
    renew = len(sys.argv) == 4
    lost, new = differences(library, path) if Path(path).exists() else ([], [])
    for line in lost + ([] if renew else new):
        print(line, file=sys.stderr)
    if lost or (new and not renew):
        sys.exit(1)
    if renew:
        head = f"# Exports of {Path(library).name}. Renewed by `make abi`; a line may be added, never lost.\n"
        Path(path).write_text(head + "".join(f"{line}\n" for _, line in sorted(entries(library).items())))


if __name__ == "__main__":
    main()
