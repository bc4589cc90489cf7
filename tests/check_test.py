#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""luxvm check on sound and on spoiled libraries:
check_test.py BIN_DIR SOURCE_DIR LIBRARY FAULTS_LIBRARY OBJECT..."""
import functools
import json
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

BIN, SOURCE, LIBRARY, FAULTS = (Path(a).resolve() for a in sys.argv[1:5])
OBJECTS = sys.argv[5:]
# What processors compute each in their own way.
OWN_WAY = r"\t(rcp[ps]s|rsqrt[ps]s|f2xm1|fyl2x|fyl2xp1|fsin|fcos|fsincos|fptan|fpatan)\b"


def check(*arguments, **environment):
    result = subprocess.run([BIN / "luxvm", "check", *arguments], capture_output=True, text=True,
                            timeout=300, env={**os.environ, **environment})
    return result.returncode, result.stdout, result.stderr


def check_json(*arguments, **environment):
    code, out, _ = check("--json", *arguments, **environment)
    return parsed(code, out)


def parsed(code, out):
    document = json.loads(out)
    assert document["passed"] == (code == 0)
    return document, {f["name"]: f for f in document["functions"]}


@functools.cache
def sound_library():
    """The one run over all functions, which publishes its results beside telling them."""
    with tempfile.TemporaryDirectory() as directory:
        path = Path(directory, "hashes")
        code, out, _ = check("--json", "--publish", path)
        return (*parsed(code, out), path.read_text())


class Sound(unittest.TestCase):
    def test_every_built_function_is_checked(self):
        document, functions, _ = sound_library()
        listed = subprocess.run([BIN / "luxvm", "list", "--json"], capture_output=True, text=True)
        self.assertEqual(list(functions), [f["name"] for f in json.loads(listed.stdout)["functions"]])
        self.assertEqual(Path(document["library"]["path"]), LIBRARY)
        self.assertEqual(document["missing"], [])
        for name, f in functions.items():
            self.assertTrue(f["passed"] and f["present"], name)
            self.assertNotEqual(f["results"], "unpublished", name)
            self.assertGreater(f["special_calls"], 0, name)
            self.assertGreater(f["elements"], 4000, name)

    def test_patterns_and_text(self):
        code, out, _ = check("luxsInv_*", "--verbose")
        self.assertEqual(code, 0)
        self.assertEqual(len(re.findall(r"^luxsInv_\w+ +\d+ +\d+ 0x[0-9A-F]{16}", out, re.M)), 5)
        self.assertRegex(out, r"functions +5 of 5 present\n(.*\n)+passed\n$")
        self.assertEqual(check("nothing_like_it")[0], 2)
        self.assertEqual(check("Exp", "--publish", "/dev/null")[0], 2)

    def test_publishing_writes_what_is_published(self):
        _, functions, published = sound_library()
        written = re.findall(r"RESULT_HASH\((\w+), (0x\w+)\)", published)
        self.assertEqual(written, [(n, f["hash"]) for n, f in functions.items()])
        with tempfile.TemporaryDirectory() as directory:
            path = Path(directory, "hashes")
            path.write_text("kept")
            code, _, error = check("--publish", path, LD_PRELOAD=str(FAULTS), FAULT="bound")
            self.assertEqual(code, 1)
            self.assertIn("luxsExp_32f_A24 does not pass", error)
            self.assertEqual(path.read_text(), "kept")


class Spoiled(unittest.TestCase):
    def test_each_fault_is_found_in_its_function_alone(self):
        sound = check_json("Exp_32f")[1]["luxsExp_32f_A24"]["hash"]
        for fault, special, moves, depends in [
            ("none", 0, False, []),
            ("lane", 0, True, []),
            ("bound", 1, False, []),
            ("value", 1, True, []),
            ("binade", 1, True, []),
            ("tail", 16, True, []),
            ("status", 5, True, []),
            ("alignment", 0, False, ["the arrays' alignment"]),
            ("precision", 0, False, ["the caller's precision"]),
            ("rounding", 0, False, ["the caller's x87 rounding"]),
            ("flush", 0, False, ["the caller's MXCSR"]),
        ]:
            with self.subTest(fault=fault):
                functions = check_json("Exp_32f", LD_PRELOAD=str(FAULTS), FAULT=fault)[1]
                spoiled = functions.pop("luxsExp_32f_A24")
                self.assertEqual(len(spoiled["special_failures"]), special, spoiled)
                self.assertEqual(spoiled["hash"] != sound, moves)
                self.assertEqual(spoiled["depends_on"], depends)
                self.assertEqual(spoiled["passed"], fault == "none")
                self.assertEqual(Path(spoiled["path"]), FAULTS)
                self.assertTrue(all(f["passed"] for f in functions.values()))

    def test_apply_does_not_time_the_first_call(self):
        applied = subprocess.run([BIN / "luxvm", "apply", "luxsExp_32f_A24", "--json"], input="1\n",
                                 capture_output=True, text=True, timeout=60,
                                 env={**os.environ, "LD_PRELOAD": str(FAULTS), "FAULT": "first_call"})
        self.assertEqual(applied.stdout, "2.7182817\n")
        self.assertLess(json.loads(applied.stderr)["seconds"], 1)  # of the two that it slept

    def test_a_fault_over_threads(self):
        explained = subprocess.run([BIN / "luxvm", "explain", "luxsExp_32f_A24", "--n", "1000000",
                                    "--threads", "2", "--json"], capture_output=True, text=True)
        if not json.loads(explained.stdout)["split"]:
            self.skipTest("this machine does not thread")
        spoiled = check_json("Exp_32f_A24", LD_PRELOAD=str(FAULTS), FAULT="threads")[1]
        self.assertEqual(spoiled["luxsExp_32f_A24"]["depends_on"], ["the number of threads"])

    def with_library(self, change, *arguments):
        """The outcome with a copy of the library that `change` has been applied to."""
        with tempfile.TemporaryDirectory() as directory:
            content = LIBRARY.read_bytes()
            spoiled = change(content)
            self.assertEqual(len(spoiled), len(content))
            self.assertNotEqual(spoiled, content)
            Path(directory, LIBRARY.name).write_bytes(spoiled)
            document, functions = check_json(*arguments, LD_LIBRARY_PATH=directory)
            self.assertEqual(document["library"]["path"],
                             str(Path(directory).resolve() / LIBRARY.name))
            return functions

    def test_one_bit_of_one_table_entry(self):
        table = (SOURCE / "kernels/explog/generated/exp_32f_table.h").read_text()
        entry = struct.pack("<d", float.fromhex(re.findall(r"-?0x1\.[0-9a-f]+p[+-]?\d+", table)[17]))
        self.assertEqual(LIBRARY.read_bytes().count(entry), 1)
        # A bit that a single result can show.
        changed = entry[:4] + bytes([entry[4] ^ 0x10]) + entry[5:]
        functions = self.with_library(lambda content: content.replace(entry, changed), "Exp")
        self.assertEqual({n for n, f in functions.items() if not f["passed"]},
                         {n for n in functions if "Exp_32f_" in n})
        for f in functions.values():
            self.assertEqual(f["results"], "as published" if f["passed"] else
                             "differ from the published ones")

    def test_a_missing_export(self):
        functions = self.with_library(
            lambda content: content.replace(b"\0luxsModf_64f\0", b"\0luxsModf_64F\0"), "Modf")
        missing = functions.pop("luxsModf_64f")
        self.assertEqual((missing["present"], missing["passed"]), (False, False))
        self.assertTrue(all(f["passed"] for f in functions.values()))


class Kernels(unittest.TestCase):
    def test_those_that_leave_bits_to_the_processor_are_marked(self):
        defines, needs, own_way = {}, {}, set()
        for path in OBJECTS:
            symbols = subprocess.run(["nm", "-P", path], capture_output=True, text=True).stdout
            names = [line.split()[:2] for line in symbols.splitlines()]
            defines.update({name: path for name, kind in names if kind not in "Uw"})
            needs[path] = [name for name, kind in names if kind == "U"]
            code = subprocess.run(["objdump", "-d", "--no-show-raw-insn", path],
                                  capture_output=True, text=True).stdout
            if re.search(OWN_WAY, code):
                own_way.add(path)
        found = set()
        for name, path in defines.items():
            kernel = re.fullmatch(r"(?:_noxomp_)?luxs(\w+?)_(32fc?|64fc?)(?:_A\d\d)?", name)
            if not kernel or path.endswith("entry.cpp.o"):
                continue
            reached, more = set(), [path]
            while more:
                at = more.pop()
                if at not in reached:
                    reached.add(at)
                    more += [defines[n] for n in needs[at] if n in defines]
            if reached & own_way:
                found.add(kernel.groups())
        marked = {tuple(re.search(r"luxs(\w+?)_(32fc?|64fc?)", n).groups())
                  for n, f in sound_library()[1].items() if f["processor_dependent"]}
        self.assertEqual(marked, found)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
