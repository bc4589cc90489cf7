#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""luxvm's readers under damage that a generator makes: damage_test.py BIN_DIR SOURCE_DIR [COUNT [SEED]]

A damaged file is refused with exit code 2 and one line, or read for what it still says."""
import csv
import json
import math
import random
import os
import re
import struct
import subprocess
import sys
import time
import unittest
from concurrent.futures import ThreadPoolExecutor

COUNT, SEED = (int(a) for a in (sys.argv[3:] + ["100", "1"][len(sys.argv[3:]):]))
sys.argv = sys.argv[:3]

from cli_test import BIN, SOURCE, Cli, luxvm, npy  # noqa: E402

VALUES = [1.5, -2.25, 3e300, 0.0, -7e-300, 65536.0, 12345678.5, -1.0, 4.0, 99.0, -3.5, 8.0]
NUMBER = re.compile(r"[+-]?(\d+\.?\d*([eE][+-]?\d+)?|\.\d+([eE][+-]?\d+)?|0[xX][0-9a-fA-F]+(\.[0-9a-fA-F]*)?"
                    r"[pP][+-]?\d+|inf|infinity|nan)", re.I)
STUFF = [b"\0", b"\xef\xbb\xbf", b"\r\n", b"\r", b"\n", b'"', b",", b"9" * 400, b"1e999", b"-", b"{", b"}", b"]",
         b" ", b"#", b"'", b"(", b"true", b"null", b"\xff\xfe", b"." * 3, b"x" * 70000, b"0x", b"nan"]


def damaged(whole, draw):
    """A few changes: cut, flip, repeat, remove, insert, or a longer number."""
    content = bytearray(whole)
    for _ in range(draw.choice((1, 1, 1, 2, 4))):
        at = draw.randrange(len(content) + 1)
        to = min(len(content), at + draw.choice((1, 1, 2, 8, 64)))
        kind = draw.randrange(6)
        if kind == 0:
            del content[at:]
        elif kind == 1 and at < len(content):
            content[at] ^= 1 << draw.randrange(8)
        elif kind == 2:
            content[at:at] = content[at:to]
        elif kind == 3:
            del content[at:to]
        elif kind == 4:
            content[at:at] = draw.choice(STUFF)
        elif digits := list(re.finditer(rb"\d+", content)):
            place = draw.choice(digits)
            content[place.start():place.end()] = draw.choice([b"9" * 25, b"4294967297", b"-1", b"0", b"1e5"])
    return bytes(content)


def number(text):
    """As luxvm's help says: a decimal or hex float, or 16 hex digits."""
    text = text.strip(" \t\r\n\v\f")
    if re.fullmatch(r"0[xX][0-9a-fA-F]{16}", text):
        return struct.unpack(">d", bytes.fromhex(text[2:]))[0]
    if not NUMBER.fullmatch(text):
        raise ValueError(text)
    value = float.fromhex(text) if "x" in text.lower() else float(text)
    if math.isinf(value) and "i" not in text.lower():
        raise ValueError(text)
    return value


def table(content, comma):
    """The numbers of a file of one or two columns; the first line of a CSV may name them."""
    rows = []
    for i, line in enumerate(content.decode("latin-1").removeprefix("\xef\xbb\xbf").split("\n")):
        line = line.replace("\r", " ").strip()
        if not line or line.startswith("#"):
            continue
        if comma and not rows:  # names may be quoted as they like, numbers not
            names = [re.sub(r'^"([^"]*)"\s*$', r"\1", f.strip()).strip() for f in line.split(",")]
            if not any(re.match(r"[+-]?\.?\d|([+-]?(inf|infinity|nan))?$", name, re.I) for name in names):
                rows.append(len(names))
                continue
        fields = next(csv.reader([line], skipinitialspace=True, strict=True)) if comma else line.split()
        rows.append([number(f) for f in fields])
    return [x for row in rows if isinstance(row, list) for x in row]


def truncated(x):
    return math.copysign(math.trunc(x), x) if math.isfinite(x) else x


def strict(content):
    def unique(members):
        assert len(dict(members)) == len(members), members
        return dict(members)
    return json.loads(content, object_pairs_hook=unique)


class Damage(Cli):
    def outcomes(self, run, whole, wanted):
        """`run(path)` for damaged copies; `wanted(content, result)` says what is wrong with a result."""
        draw = random.Random(SEED)
        contents = [damaged(whole, draw) for _ in range(COUNT)]

        def one(numbered):
            i, content = numbered
            path = self.file(f"{i}.in", content)
            return content, run(path)
        read = 0
        with ThreadPoolExecutor(2) as pool:
            for content, result in pool.map(one, enumerate(contents)):
                message = result.stderr.decode(errors="replace")
                with self.subTest(content[:2000]):
                    self.assertIn(result.returncode, (0, 1, 2), message)
                    if result.returncode == 2:
                        self.assertRegex(message, r"\A(luxvm: an interrupted.*\n)?luxvm: [^\n]+\n\Z")
                        self.assertEqual(result.stdout, b"")
                    else:
                        read += 1
                        wanted(content, result)
        self.assertLess(read, COUNT)

    def test_text(self):
        def wanted(content, result):
            got = [float(x) for x in result.stdout.split()]
            self.assertEqual(repr(got), repr([truncated(x) for x in table(content, False)]))
        self.outcomes(lambda path: luxvm("apply", "luxsTrunc_64f", "--format", "text", "--in", path, "--quiet"),
                      "".join(f"{x!r}\n" for x in VALUES).encode(), wanted)

    def test_csv(self):
        def wanted(content, result):
            rows = table(content, True)
            pairs = list(zip(rows[::2], rows[1::2]))
            got = [float(x) for x in result.stdout.split(b"\n")[result.stdout[:1].isalpha():-1]]
            self.assertEqual(len(got), len(pairs))
            for y, (a, b) in zip(got, pairs):
                if math.isfinite(a) and math.isfinite(b) and b:
                    self.assertTrue(y == a / b or math.isclose(y, a / b, rel_tol=1e-14, abs_tol=1e-300))
        whole = ('a,"b"\n' + "".join(f'"{x!r}",{y!r}\n' for x, y in zip(VALUES[:6], VALUES[6:]))).encode()
        self.outcomes(lambda path: luxvm("apply", "luxsDiv_64f_A53", "--format", "csv", "--in", path, "--quiet"),
                      whole, wanted)

    def test_npy(self):
        """What is read has the size that the header states, in one piece at the end of the file."""
        data = struct.pack("<12d", *VALUES)

        def wanted(content, result):
            header = content[:content.index(b"\n", 10) + 1]
            self.assertIn(b"'<f8'", header)
            shape = [int(n) for n in re.findall(rb"\d+", re.search(rb"'shape': *\(([^)]*)\)", header)[1])]
            size = 8 * math.prod(shape)
            self.assertIn(b"False", header)
            got, source = (struct.unpack(f"<{size // 8}d", c[len(c) - size:]) for c in (result.stdout, content))
            self.assertEqual(repr(got), repr(tuple(truncated(x) for x in source)))
        self.outcomes(lambda path: luxvm("apply", "luxsTrunc_64f", "--format", "npy", "--in", path, "--quiet"),
                      npy("<f8", (12,), data), wanted)

    def test_json(self):
        """A comparison that is made is that of what a strict parser finds in the file."""
        entry = {"name": "luxsExp_32f_A24", "max_ulp": 0.5, "mismatches": 0,
                 "special_values": {"failures": []}, "guarantee": {"met": True}}
        old = json.dumps({"functions": [entry, entry | {"name": "luxsLn_32f_A24"}]}).encode()
        before = self.file("old.json", old)

        def wanted(content, result):
            functions = strict(content)["functions"]
            new = {f["name"]: f for f in functions}
            self.assertEqual(len(new), len(functions))
            worse = any(n not in new or new[n]["max_ulp"] > 0.5001 or new[n]["mismatches"] > 0 or
                        new[n]["special_values"]["failures"] or not new[n]["guarantee"]["met"]
                        for n in ("luxsExp_32f_A24", "luxsLn_32f_A24"))
            self.assertEqual(result.returncode, int(worse))
        self.outcomes(lambda path: luxvm("diff", before, path), old, wanted)

    def test_figures(self):
        """Errors that are known stay known, or nothing is written."""
        def known(figures):
            return {(c["family"], c["type"], c["hash"]): c["largest"] for c in figures["computations"]}
        figures = json.loads((SOURCE / "accuracy/figures.json").read_text())
        figures["computations"] = figures["computations"][:2]
        whole = json.dumps(figures).encode()

        def run(path):
            before = path.read_bytes()
            result = luxvm("accuracy", "Floor_32f", "--samples", 100, "--record", path,
                           env={**os.environ, "XDG_STATE_HOME": f"{path}.state"})
            result.stdout = b"" if path.read_bytes() == before else path.read_bytes()
            return result

        def wanted(content, result):
            before, after = known(strict(content)), known(strict(result.stdout))
            for key in known(figures):
                self.assertEqual(after.get(key), before.get(key))
            self.assertIn(("Floor", "32f"), [key[:2] for key in after])
        self.outcomes(run, whole, wanted)

    def test_checkpoint(self):
        """What an interrupted run has kept is refused, or says the same in other words."""
        def told(run, state):
            return luxvm(*run, env={**os.environ, "XDG_STATE_HOME": state})
        for samples in 30000, 300000, 3000000:  # until there is time to interrupt it
            run = ("accuracy", "Inv_32f", "InvCbrt_64f", "--processors", "1", "--samples", str(samples))
            process = subprocess.Popen([BIN / "luxvm", *run], stdout=subprocess.DEVNULL,
                                       env={**os.environ, "XDG_STATE_HOME": self.dir / "state"})
            while process.poll() is None and not list(self.dir.glob("state/luxvm/*.json")):
                time.sleep(0.001)
            process.kill()
            if process.wait(300) < 0:
                break
        [kept] = self.dir.glob("state/luxvm/*.json")
        whole, sound = kept.read_bytes(), told(run, self.dir / "sound").stdout
        self.assertEqual(told(run, self.dir / "state").stdout, sound)

        def resumed(path):
            state = self.dir / f"{path.name}.state"
            (state / "luxvm").mkdir(parents=True)
            (state / "luxvm" / kept.name).write_bytes(path.read_bytes())
            return told(run, state)

        def wanted(content, result):
            self.assertEqual(strict(content), strict(whole))
            self.assertEqual(result.stdout, sound)
        self.outcomes(resumed, whole, wanted)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
