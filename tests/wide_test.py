#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The wide library beside the main one: when it is taken in, that nothing depends on it but time, and that
a difference would be seen. wide_test.py <build tree's bin> <libluxvmk3> <libluxvmk3-wide>"""
import json
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

if len(sys.argv) < 4:
    sys.exit(__doc__)
BIN, LIBRARY, WIDE = (Path(sys.argv.pop(1)).resolve() for _ in range(3))


def luxvm(*arguments, library=LIBRARY.parent, **environment):
    return subprocess.run([BIN / "luxvm", *arguments], capture_output=True, text=True, cwd=LIBRARY.parent,
                          env={**os.environ, "LD_LIBRARY_PATH": str(library), **environment})


def wide(**where):
    return json.loads(luxvm("env", "--json", **where).stdout)["wide"]


HERE = wide()
HAS_AVX2 = not (HERE["why"] or "").startswith(("the processor", "the system"))


class Wide(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.dir = Path(directory.name)
        for library in LIBRARY.parent.glob("*.so.*"):
            shutil.copy(library, self.dir)
        self.copy = self.dir / WIDE.name

    def patch(self, old, new):
        data = self.copy.read_bytes()
        self.assertEqual(data.count(old), 1)
        self.copy.write_bytes(data.replace(old, new))

    def assert_alone(self, why, **environment):
        told = wide(library=self.dir, **environment)
        self.assertEqual((told["taken"], told["exports"]), (False, 0))
        self.assertIn(why, told["why"] if HAS_AVX2 else why)
        result = luxvm("check", "Exp_32f", library=self.dir, **environment)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_taken_in_where_the_processor_allows(self):
        told = wide(library=self.dir)
        print(told["why"] or f"wide steps for {told['exports']} functions")
        self.assertEqual(told["taken"], HAS_AVX2)
        self.assertEqual(told["file"], str(self.copy))
        path = json.loads(luxvm("explain", "luxsExp_32f_A11", "--n", "32", "--json").stdout)["path"]
        self.assertEqual(path, "wide" if HAS_AVX2 else "narrow")

    def test_of_the_own_folder_alone(self):
        self.assert_alone("LUXVM_WIDE is 0", LUXVM_WIDE="0")
        (self.dir / "other").mkdir()
        self.copy.rename(self.dir / "other" / self.copy.name)
        self.assert_alone("there is no wide library", LD_LIBRARY_PATH=f"{self.dir}:{self.dir}/other")

    def test_of_the_same_build_alone(self):
        [identity] = re.findall(rb"\0([0-9a-f]{40})\0", self.copy.read_bytes())
        self.patch(identity, identity[::-1])
        self.assert_alone("of another build")

    def test_no_library(self):
        self.copy.write_text("of another kind\n")
        self.assert_alone("cannot be loaded")

    @unittest.skipUnless(HAS_AVX2, HERE["why"])
    def test_a_difference_is_seen(self):
        """A table of the wide library's own, off by 2^-20 in one cell, and the true one."""
        self.patch(struct.pack("<d", float.fromhex("0x1.1821df7044067p-2")), struct.pack("<d",
                   float.fromhex("0x1.1821ef7044067p-2")))
        result = luxvm("check", "--paths", "Exp", library=self.dir)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stdout, r"luxsExp_32f_A24 .*DIFFER \(0x[0-9A-F]{8}\): 0x")

    @unittest.skipUnless(HAS_AVX2, HERE["why"])
    def test_paths_give_the_same(self):
        result = luxvm("check", "--paths", "--json", "--pairs", "200000")
        functions = json.loads(result.stdout)["functions"]
        self.assertGreater(len(functions), 60)
        for f in functions:
            self.assertEqual((f["calls_that_differ"], f["crashed"], f["first"]), (0, False, ""), f["name"])
            self.assertGreater(f["compared"], 1_000_000)
        self.assertEqual(result.returncode, 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
