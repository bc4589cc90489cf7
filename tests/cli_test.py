#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""luxvm from the outside: cli_test.py BIN_DIR SOURCE_DIR"""
import json
import math
import os
import pty
import re
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

BIN, SOURCE = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
RELEASE = ".".join(re.search(r"project\(luxvm VERSION (\d+)\.(\d+)",
                             (SOURCE / "CMakeLists.txt").read_text()).groups())
ATMOSPHERE = SOURCE / "examples/data/atmosphere.csv"

for ignored in signal.SIGINT, signal.SIGTERM, signal.SIGHUP:  # perhaps by whoever runs the tests
    signal.signal(ignored, signal.SIG_DFL)


def luxvm(*arguments, stdin=b"", **options):
    stdin = stdin.encode() if isinstance(stdin, str) else stdin
    return subprocess.run([BIN / "luxvm", *map(str, arguments)], input=stdin, timeout=300,
                          stdout=options.pop("stdout", subprocess.PIPE), stderr=subprocess.PIPE,
                          **options)


def npy(descr, shape, data, fortran=False):
    header = repr({"descr": descr, "fortran_order": fortran, "shape": shape}).encode()
    header += b" " * (53 - len(header) % 64 if len(header) % 64 <= 53 else 117 - len(header) % 64)
    return b"\x93NUMPY\x01\x00" + struct.pack("<H", len(header) + 1) + header + b"\n" + data


class Cli(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.dir = Path(directory.name)

    def fine(self, *arguments, **options):
        result = luxvm(*arguments, **options)
        self.assertEqual(result.returncode, 0, (arguments, result.stderr))
        return result

    def refused(self, words, *arguments, **options):
        """Exit code 2, nothing on stdout, and one line on stderr that says these words."""
        result = luxvm(*arguments, **options)
        message = result.stderr.decode()
        self.assertEqual((result.returncode, result.stdout or b""), (2, b""), (arguments, message))
        self.assertTrue(message.startswith("luxvm: ") and message.count("\n") == 1, message)
        for word in [words] if isinstance(words, str) else words:
            self.assertIn(word, message)

    def file(self, name, content):
        path = self.dir / name
        path.write_bytes(content.encode() if isinstance(content, str) else content)
        return path

    def start(self, *arguments, **options):
        """A run that may be interrupted from now on without losing what it has done."""
        process = subprocess.Popen([BIN / "luxvm", *arguments], **options)
        self.addCleanup(process.kill)
        status = Path(f"/proc/{process.pid}/status")
        while not int(re.search(r"SigCgt:\s*(\w+)", status.read_text())[1], 16) >> signal.SIGTERM - 1 & 1:
            self.assertIsNone(process.poll())
            time.sleep(0.01)
        return process

    def results(self, *arguments):
        call = json.loads(self.fine("eval", *arguments, "--json").stdout)
        bits = [[r["bits"] for r in element["results"]] for element in call["elements"]]
        return bits, call["status"], [(r["code"], r["index"]) for r in call["reports"]]


def leaves(value, path=""):
    """The paths of a JSON document's fields, as `luxvm formats` writes them."""
    if isinstance(value, dict):
        for key, member in value.items():
            yield from leaves(member, f"{path}.{key}" if path else key)
    elif isinstance(value, list):
        for element in value:
            yield from leaves(element, path + "[]")
    else:
        yield re.sub(r"(reports|calls)\.\d+$|(classes)\.[^.]*", r"\1\2.*", path)


def words_in(picture):
    """The texts of an SVG."""
    return [re.sub(r"<[^>]*>", "", text).strip()
            for text in re.findall(r"<text.*?</text>", picture.read_text(), re.S)]


class Formats(Cli):
    # Only a fault, another library or another machine, perhaps one with AVX2, fills these.
    RARE = re.compile(r"missing|special_failures|depends_on|mismatched|failures|sleef|summary\.(slower|lower|calls)"
                      r"|controls.*\[\]$|settings.patterns|never_because"
                      r"|why|wide\.|compared|calls_that_differ|crashed|first")

    def documents(self):
        for arguments in [("list", "Inv"), ("list", "Floor"), ("eval", "luxsInv_32f_A24", "0"),
                          ("eval", "luxsPowx_64fc_A53", "1,1", "--scalar", "1,1"), ("env",),
                          ("eval", "luxsPowx_64f_A53", "1", "--scalar", "1"),
                          ("explain", "luxsExp_32f_A24", "--n", "9"), ("check", "Inv_32f_A24"),
                          ("check", "--paths", "Inv_32f_A24")]:
            yield self.fine(*arguments, "--json").stdout
        yield self.fine("apply", "luxsInv_32f_A24", "--json", stdin="0\n").stderr
        for more in [], ["--special", "1%"]:
            yield self.fine("bench", "luxsLn_32f_A24", "--compare", "--milliseconds", 1, *more,
                            "--json", "-").stdout
        yield self.fine("bench", "luxsLn_32f_A24", "--cliffs", "--milliseconds", 1, "--json", "-").stdout
        errors, figures = self.dir / "errors.json", self.dir / "figures.json"
        self.fine("accuracy", "Hypot_64f", "Exp_32fc", "--samples", 300, "--json", errors,
                  "--record", figures)
        yield figures.read_text()
        yield errors.read_text()
        self.fine("accuracy", "Floor_32f", "--samples", 300, "--range", "1:2", "--json", errors)
        yield errors.read_text()

    def test_every_field_is_described(self):
        text = self.fine("formats").stdout.decode()
        self.assertEqual(text, (SOURCE / "docs/json.md").read_text(), "luxvm formats > docs/json.md")
        described, printed = {}, {}
        for part in text.split("\n## ")[1:]:
            described[tuple(part.split("\n", 1)[0].split())] = set(re.findall(r"^\| `(.*?)`", part, re.M))
        for document in map(json.loads, self.documents()):
            self.assertEqual(next(iter(document)), "format")
            head = document.pop("format")
            printed.setdefault((head["name"], str(head["version"])), set()).update(leaves(document))
        self.assertEqual(printed.keys(), described.keys())
        for name, fields in printed.items():
            self.assertEqual(fields - described[name], set(), f"{name}: not described")
            lost = {path for path in described[name] - fields if not self.RARE.search(path)}
            self.assertEqual(lost, set(), f"{name}: described and never written")

    def test_other_versions_are_refused(self):
        for head in {"name": "luxvm-bench", "version": 99}, {"name": "luxvm-list", "version": 1}, 5:
            path = self.file("a.json", json.dumps({"format": head, "rows": []}))
            self.refused("format" if head == 5 else ["'", "was not written by"], "diff", path, path)


class Plots(Cli):
    def test_refusals(self):
        picture = self.dir / "a.svg"
        for words, arguments in [
                ("stands for 4 functions", ["Exp"]), ("no function matches", ["nothing_like_it"]),
                ("ends with .svg or .png", ["Exp_32f", "-o", self.dir / "a.gif"]),
                ("cannot write to", ["Exp_32f", "-o", self.dir / "none" / "a.svg"]),
                ("with a colon", ["Exp_32f", "--range", "5"]), ("below the second", ["Exp_32f", "--range", "5:1"]),
                ("takes one real argument", ["Exp_32f", "--second", "1"]),
                ("not a number", ["Pow_32f", "--second", "x"]), ("--from needs", ["Exp_32f", "--from", "x"])]:
            with self.subTest(arguments=arguments):
                self.refused(words, "plot", *arguments)
        for more in [], ["-o", picture]:
            self.refused("gnuplot, which is not installed", "plot", "Exp_32f", "--values", *more, env={"PATH": "/"})
        self.assertEqual(list(self.dir.iterdir()), [])

    def test_errors_beside_promises(self):
        """Over the typical interval, a range and the whole line; promises reach from side to side."""
        picture = self.dir / "a.svg"
        for command in [["plot", "Sin_32f", "--error", "-o"], ["plot", "Sin_32f", "--error", "--range=-inf:inf", "-o"],
                        ["plot", "Sin_32f", "--error", "--range", "2:2.5", "-o"],
                        ["accuracy", "Sin_32f", "--range", "2:2.5", "--plot"]]:
            self.fine(*command, picture, "--samples", 4000)
            words, svg = words_in(picture), picture.read_text()
            self.assertLess(len(svg), 60_000)
            for word in "A24", "promise 1 ulp", "promise 2⁻²¹", "promise 2⁻¹¹":
                self.assertIn(word, words)
            self.assertTrue(any(re.search(r", \d{4}-\d\d-\d\d, luxvm \d", word) for word in words))
            dashed = re.findall(r"<path[^>]*stroke-dasharray[^>]*d='M([\d.]+),([\d.]+) L([\d.]+),([\d.]+)", svg)
            across = [line for line in dashed if line[1] == line[3] and float(line[2]) - float(line[0]) > 400]
            self.assertEqual(len(across), 3)
            self.assertEqual("2.4" in words, "2:2.5" in command)

    def test_kinds_of_functions(self):
        for arguments in [["SinCos_64f"], ["Sqrt_32fc", "--second", "-1"], ["Pow_64fc", "--second", "1,2"],
                          ["Powx_32f"], ["Atan2_64f", "--values"], ["luxsFloor_32f"], ["Acosh_64f", "--range", "-5:0"]]:
            for name in "a.svg", "a.png":
                self.fine("plot", *arguments, "--samples", 1000, "-o", self.dir / name)
            self.assertIn(arguments[0].split("_")[0], " ".join(words_in(self.dir / "a.svg")))
            self.assertTrue((self.dir / "a.png").read_bytes().startswith(b"\x89PNG"))

    def test_text(self):
        lines = self.fine("plot", "Exp_64f", "--error", "--samples", 1000).stdout.decode().splitlines()
        self.assertLessEqual((len(lines), max(map(len, lines))), (26, 79))
        self.assertIn("A50, A53 ***", "\n".join(lines))


class List(Cli):
    def test_names(self):
        everything = json.loads(self.fine("list", "--json").stdout)["functions"]
        hashes = (SOURCE / "conformance/result_hashes.def").read_text()
        published = re.findall(r"^RESULT_HASH\((\w+)", hashes, re.M)
        self.assertEqual([f["name"] for f in everything], published)
        self.assertEqual({f["name"] for f in everything if f["grade"] is None},
                         {name for name in published if "_A" not in name})

    def test_patterns(self):
        for pattern, names in [("exp_64F_", ["luxsExp_64f_A50", "luxsExp_64f_A53"]),
                               ("luxsInv_*_A?4", ["luxsInv_32f_A24"]),
                               ("luxsdiv_32f_a11", ["luxsDiv_32f_A11"]),
                               ("Exp_32f", ["luxsExp_32f_A11", "luxsExp_32f_A21", "luxsExp_32f_A24"]),
                               ("inv_64*3", ["luxsInv_64f_A53"])]:
            listed = json.loads(self.fine("list", pattern, "--json").stdout)["functions"]
            self.assertEqual([f["name"] for f in listed], names)
        for pattern, families in [("Inv", {"Inv"}), ("luxsInv", {"Inv"}), ("invs", {"InvSqrt"}),
                                  ("luxsinvc", {"InvCbrt"}), ("cot", set())]:
            listed = json.loads(luxvm("list", pattern, "--json").stdout or "{}")
            self.assertEqual({f["family"] for f in listed.get("functions", [])}, families)
        sines = json.loads(self.fine("list", "sin", "--json").stdout)["functions"]
        self.assertFalse([f for f in sines if f["family"] == "Inv"])  # the s is the prefix's
        self.refused("no function matches", "list", "nothing_like_it")
        self.assertNotIn(b"\033", self.fine("list").stdout)


class Help(Cli):
    COMMANDS = ("list", "eval", "apply", "env", "explain", "accuracy", "diff", "check", "bench",
                "plot", "formats")

    def test_version_and_help(self):
        self.assertRegex(self.fine("--version").stdout, rf"^luxvm {RELEASE}\nlibluxvmk3.so.{RELEASE} version {RELEASE},".encode())
        self.assertEqual(self.fine("help").stdout, self.fine("--help").stdout)
        self.assertIn(b"Exit codes", self.fine("help").stdout)
        for command in self.COMMANDS:
            self.assertEqual(self.fine("help", command).stdout, self.fine(command, "--help").stdout)
        for command in ("list", "check", "bench", "accuracy"):
            self.assertIn(b"Inv is all of luxsInv_", self.fine("help", command).stdout)
        self.assertIn(b".local/state/luxvm", self.fine("help", "accuracy").stdout)

    def test_wrong_command_lines(self):
        for words, arguments in [(["'exlpain'", "explain"], ["exlpain", "--n", "1"]),
                                 (["'chek'", "check"], ["help", "chek"]),
                                 ("subcommand is required", []), ("not expected", ["list", "--no-such"]),
                                 (["required", "luxvm help eval"], ["eval", "luxsExp_32f_A24"])]:
            self.refused(words, *arguments)
        for count in ("0", "1.5", "1e10", "-1", "0x10", "1e", "inf", "", "1 2"):
            self.refused("is not a whole number from 1", "explain", "luxsExp_32f_A24", "--n", count)
        for count, n in ("1e6", 10**6), ("2.5e3", 2500), ("+7", 7), ("2147483647", 2**31 - 1):
            self.assertEqual(json.loads(self.fine("explain", "luxsExp_32f_A24", "--json", "--n", count,
                                                  "--threads", "2e0").stdout)["n"], n)


class Eval(Cli):
    def test_numbers_of_every_notation(self):
        for name, values, bits, status, reports in [
            ("luxsInv_32f_A24", ["-0", "0x7F800000", "0x1p-1", "-4e0"],
             ["0xFF800000", "0x00000000", "0x40000000", "0xBE800000"], 18, [(18, 0)]),
            ("luxsInv_64f_A53", ["-inf", "0x4000000000000000"],
             ["0x8000000000000000", "0x3FE0000000000000"], 0, []),
            ("luxsTrunc_32f", ["0x7FA00001", "nan", "-.5", "-0x1.8p1"],
             ["0x7FE00001", "0x7FC00000", "0x80000000", "0xC0400000"], 0, []),
            ("luxsExp_32f_A24", ["89", "0", "-104", "-inf"],
             ["0x7F800000", "0x3F800000", "0x00000000", "0x00000000"], 17, [(12, 0), (17, 2)]),
            ("luxsRint_32f", ["2.5", "-0.5"], ["0x40000000", "0x80000000"], 2, []),
        ]:
            got = self.results(name, *values)
            self.assertEqual(got, ([[b] for b in bits], status, reports), name)

    def test_shapes(self):
        self.assertEqual(self.results("luxsDiv_32f_A24", "1", "4", "-6", "3", "1", "0"),
                         ([["0x3E800000"], ["0xC0000000"], ["0x7F800000"]], 18, [(18, 2)]))
        self.assertEqual(self.results("luxsModf_64f", "-2.75"),
                         ([["0xC000000000000000", "0xBFE8000000000000"]], 0, []))

    def test_a_single_is_rounded_once(self):
        # Through double these would be ties, and end in the even neighbours.
        bits, _, _ = self.results("luxsTrunc_32f", "8388608.50000000000000001")
        self.assertEqual(bits, [["0x4B000001"]])
        bits, _, _ = self.results("luxsInv_32f_A24", "1.00000017881393432617187499")
        self.assertEqual(bits, self.results("luxsInv_32f_A24", "0x3F800001")[0])

    def test_refusals(self):
        for words, arguments in [
            (["luxsExp_64f_A53", "did you mean"], ["luxsExq_64f_A53", "1"]),
            ("did you mean luxsExp_64f_A53", ["exp_64f", "1"]),
            ("there is no function", ["", "1"]),
            ("'abc' is not a number", ["luxsExp_32f_A24", "1", "abc"]),
            ("'' is not a number", ["luxsExp_32f_A24", ""]),
            ("'1 2' is not a number", ["luxsExp_32f_A24", "1 2"]),
            ("too large for 32 bits", ["luxsExp_32f_A24", "1e39"]),
            ("no bit pattern of 16", ["luxsExp_64f_A53", "0x3F800000"]),
            ("in pairs", ["luxsDiv_64f_A53", "1", "2", "3"]),
            ("takes no scalar", ["luxsExp_64f_A53", "1", "--scalar", "2"]),
        ]:
            self.refused(words, "eval", *arguments)


class Apply(Cli):
    def test_text_and_summary(self):
        text = "# comment\r\n\r\n 4 \r\n0x1p-2\r\n-0\r\n"
        result = self.fine("apply", "luxsInv_64f_A53", "--json", stdin=text)
        self.assertEqual(result.stdout.split(), [b"0.25", b"4", b"-inf"])
        summary = json.loads(result.stderr)
        self.assertEqual((summary["elements"], summary["status"]), (3, 18))
        self.assertEqual([(r["code"], r["count"]) for r in summary["reports"]], [(18, 1)])
        self.assertGreater(summary["seconds"], 0)
        self.assertGreater(summary["cycles_per_element"], 0)
        two = self.fine("apply", "luxsDiv_32f_A24", "--quiet", stdin="1 8\n3\t2\n")
        self.assertEqual((two.stdout, two.stderr), (b"0.125\n1.5\n", b""))
        both = self.fine("apply", "luxsModf_32f", stdin="2.5\n-0.25")
        self.assertEqual(both.stdout, b"2 0.5\n-0 -0.25\n")

    def test_csv_columns(self):
        path = self.file("t.csv", '\ufeffa, "b"\n1,2\n"3",0.5\n')
        for columns, wanted in [(["a", "b"], b"0.5\n6\n"), (["2", "1"], b"2\n0.16666667\n")]:
            options = [o for c in columns for o in ("--column", c)]
            result = self.fine("apply", "luxsDiv_32f_A24", "--in", path, *options)
            self.assertEqual(result.stdout, b"luxsDiv_32f_A24\n" + wanted)
        bare = self.fine("apply", "--format", "csv", "--column", "2", "luxsFloor_64f",
                         stdin="1,2.5\n3,-0.5\n")
        self.assertEqual(bare.stdout, b"2\n-1\n")

    def test_binary_formats(self):
        doubles = struct.pack("<4d", 1, 2, 4, -8)
        inverse = struct.pack("<4d", 1, .5, .25, -.125)
        raw = self.fine("apply", "luxsInv_64f_A53", "--format", "raw", stdin=doubles)
        self.assertEqual(raw.stdout, inverse)
        pairs = self.fine("apply", "luxsDiv_64f_A53", "--format", "raw", stdin=doubles)
        self.assertEqual(pairs.stdout, struct.pack("<2d", .5, -.5))
        for shape, options, count, data in [
            ((4,), [], 4, inverse), ((4, 1), [], 4, inverse),
            ((2, 2), ["--column", "2"], 2, struct.pack("<2d", .5, -.125))]:
            path, out = self.file("a.npy", npy("<f8", shape, doubles)), self.dir / "b.npy"
            self.fine("apply", "luxsInv_64f_A53", "--in", path, "--out", out, *options)
            written = out.read_bytes()
            self.assertEqual(written[-len(data):], data)
            self.assertEqual((len(written) - len(data)) % 64, 0)
            self.assertIn(b"'descr': '<f8', 'fortran_order': False, 'shape': (%d,)" % count, written)
        path = self.file("s.npy", npy("<f4", (1,), struct.pack("<I", 0x7F800001)))
        out = self.dir / "q.raw"
        self.fine("apply", "luxsFloor_32f", "--in", path, "--out", out)
        self.assertEqual(out.read_bytes(), struct.pack("<I", 0x7FC00001))

    def test_bad_input_is_named_and_nothing_is_written(self):
        eight = struct.pack("<d", 1)
        for words, function, name, content, options in [
            (["line 3", "'x' is not"], "Exp_64f_A53", "a.txt", "1\n\nx\n", []),
            (["line 2", "1 column where line 1 has 2"], "Div_64f_A53", "a.txt", "1 2\n3\n", []),
            (["line 4", "3 columns"], "Div_64f_A53", "a.csv", "a,b\n1,2\n\n1,2,3\n", []),
            *[(["line 1", field], "Exp_64f_A53", "a.csv", f"{field}\n1\n", [])
              for field in ("1e400", "1.5.2", "1_000", "-.5x", "0x12", "-0x12", "0x1.8")],
            (["line 2, column 2", "''"], "Div_64f_A53", "a.csv", "a,b\n1,\n", []),
            (["line 1", "too large"], "Exp_32f_A24", "a.txt", "1e39\n", []),
            ("'????", "Exp_32f_A24", "a.txt", b"\0" * 100, []),
            ("choose with --column", "Exp_32f_A24", "a.txt", "1 2\n", []),
            (["no column 'c'", "a, b"], "Exp_32f_A24", "a.csv", "a,b\n1,2\n", ["--column", "c"]),
            ("not a column 3", "Exp_32f_A24", "a.csv", "a,b\n1,2\n", ["--column", "3"]),
            ("no header", "Exp_32f_A24", "a.csv", "1,2\n", ["--column", "x"]),
            ("needs 2 columns", "Div_32f_A24", "a.csv", "a,b\n1,2\n", ["--column", "a"]),
            ("holds no numbers", "Exp_32f_A24", "a.txt", "", []),
            ("holds no numbers", "Exp_32f_A24", "a.csv", "a\n", []),
            ("holds no numbers", "Exp_32f_A24", "a.raw", "", []),
            ("ends within an element", "Exp_64f_A53", "a.raw", b"1234567", []),
            ("ends within a pair", "Div_64f_A53", "a.raw", eight * 3, []),
            ("not an npy file", "Exp_64f_A53", "a.npy", b"\x93NUMPY\x01\x00\xff\xff{}", []),
            ("'<f4'", "Exp_64f_A53", "a.npy", npy("<f4", (2,), eight), []),
            ("'>f8'", "Exp_64f_A53", "a.npy", npy(">f8", (1,), eight), []),
            ("is short", "Exp_64f_A53", "a.npy", npy("<f8", (2,), eight), []),
            ("is short", "Exp_64f_A53", "a.npy", npy("<f8", (2**61 + 1,), eight), []),
            ("too long", "Exp_64f_A53", "a.npy", npy("<f8", (1,), eight * 2), []),
            ("3 dimensions", "Exp_64f_A53", "a.npy", npy("<f8", (1, 1, 1), eight), []),
            ("column by column", "Div_64f_A53", "a.npy", npy("<f8", (2, 2), eight * 4, True), []),
        ]:
            with self.subTest(content=content[:40], function=function):
                out = self.file("out", "kept")
                self.refused(words, "apply", "luxs" + function, "--in", self.file(name, content),
                             "--out", out, *options)
                self.assertEqual(out.read_text(), "kept")
        self.assertFalse(list(self.dir.glob("out?*")))

    def test_files_that_cannot_be_used(self):
        self.refused("No such file", "apply", "luxsExp_64f_A53", "--in", self.dir / "none")
        self.refused("Is a directory", "apply", "luxsExp_64f_A53", "--in", self.dir)
        for out in [self.dir / "no" / "x", "/dev/full"]:
            self.refused("cannot write to", "apply", "luxsExp_64f_A53", "--out", out, stdin="1")
        for out in self.dir / "no" / "x", self.dir:  # before anything is read
            self.refused("cannot write to", "apply", "luxsExp_64f_A53", "--in", self.dir / "none", "--out", out)
            self.refused("cannot write to", "check", "--publish", out)
        with open("/dev/full", "wb") as full:
            self.refused("No space", "apply", "luxsExp_64f_A53", stdin="1", stdout=full)
            self.refused("No space", "list", stdout=full)
        huge = self.dir / "huge.raw"
        with open(huge, "wb") as file:
            file.truncate(6 << 30)
        self.refused("not enough memory", "apply", "luxsExp_64f_A53", "--in", huge)

    def test_closed_standard_streams(self):
        """A file opened in the place of a closed stream must not be mistaken for it."""
        data, out = self.file("a.txt", "1\n"), self.dir / "out"
        command = f"'{BIN}/luxvm' apply luxsInv_64f_A53 --in '{data}'"
        for redirections, code in [(">&-", 2), ("2>&-", 0), (">&- 2>&-", 2),
                                   (f"--out '{out}' <&- >&- 2>&-", 0)]:
            shell = subprocess.run(["sh", "-c", f"{command} {redirections}"], capture_output=True)
            self.assertEqual(shell.returncode, code, (redirections, shell.stderr))
            self.assertEqual(data.read_text(), "1\n")
        self.assertEqual(out.read_text(), "1\n")
        bad = subprocess.run(["sh", "-c", f"'{BIN}/luxvm' eval x 1 2>&-"], capture_output=True)
        self.assertEqual(bad.returncode, 2)

    def test_output_replaces_in_one_step(self):
        out, link = self.file("out.txt", "old"), self.dir / "link.txt"
        os.chmod(out, 0o640)
        link.symlink_to(out)
        self.fine("apply", "luxsInv_64f_A53", "--in", self.file("in.txt", "8"), "--out", link)
        self.assertTrue(link.is_symlink())
        self.assertEqual((out.read_text(), out.stat().st_mode & 0o777), ("0.125\n", 0o640))
        self.fine("apply", "luxsInv_64f_A53", "--in", out, "--out", out)
        self.assertEqual(out.read_text(), "8\n")

    def test_interrupted_run_leaves_nothing(self):
        numbers, out = self.dir / "in.raw", self.dir / "out.txt"
        numbers.write_bytes(struct.pack("<d", 1.1) * 3000000)
        process = subprocess.Popen([BIN / "luxvm", "apply", "luxsInv_64f_A53", "--in", numbers,
                                    "--out", out], stderr=subprocess.DEVNULL,
                                   preexec_fn=lambda: os.nice(19))  # not done before it is interrupted
        deadline = time.time() + 30
        while not list(self.dir.glob("out*")) and time.time() < deadline:
            time.sleep(0.001)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(30), -signal.SIGTERM)
        self.assertEqual(sorted(p.name for p in self.dir.iterdir()), ["in.raw"])

    def test_threads_report_every_element(self):
        zeros = bytes(4 * 400000)
        for threads in (1, 2, 3):
            result = self.fine("apply", "luxsInv_32f_A24", "--format", "raw", "--threads", threads,
                               "--json", stdin=zeros)
            summary = json.loads(result.stderr)
            self.assertEqual([(r["code"], r["count"]) for r in summary["reports"]], [(18, 400000)])
            self.assertEqual(result.stdout, struct.pack("<f", math.inf) * 400000)


class Environment(Cli):
    def test_env(self):
        env = json.loads(self.fine("env", "--json").stdout)
        self.assertEqual(env["library"]["name"], f"libluxvmk3.so.{RELEASE}")
        self.assertEqual(env["threads"], len(os.sched_getaffinity(0)))
        self.assertEqual(env["processor"]["available"], env["threads"])
        cpuinfo = Path("/proc/cpuinfo").read_text().splitlines()
        vendor = next(line.split(":")[1].strip() for line in cpuinfo if line.startswith("vendor_id"))
        self.assertEqual(env["processor"]["vendor"], vendor)
        self.assertEqual(env["controls"]["x87"]["precision"], "64 bits")
        self.assertEqual(len(env["controls"]["mxcsr"]["masked"]), 6)
        text = self.fine("env").stdout.decode()
        self.assertIn(env["controls"]["x87"]["word"], text)

    def test_core_library_of_a_program(self):
        """The variable is all that it must have; where its value comes from it may tell."""
        variable = "int threads_omp_of_n_lux = 3;\n"
        tell = 'const char* luxcoreThreadSource(void) { return "a file"; }\n'
        for content, source in (variable, None), (variable + tell, "a file"):
            code = self.file("core.c", content)
            subprocess.run(["gcc", "-m32", "-shared", "-fPIC", code, f"-Wl,-soname,libluxcore.so.{RELEASE}",
                            "-o", self.dir / f"libluxcore.so.{RELEASE}"], check=True)
            own = {"env": {**os.environ, "LD_LIBRARY_PATH": str(self.dir), "LD_BIND_NOW": "1",
                           "XDG_STATE_HOME": str(self.dir / "state")}}
            env = json.loads(self.fine("env", "--json", **own).stdout)
            self.assertEqual((env["threads"], env["threads_source"]), (3, source))
            self.assertIn(f"from {source}" if source else "does not tell",
                          self.fine("env", **own).stdout.decode())
            explained = self.fine("explain", "luxsInv_32f_A24", "--n", 9, "--json", **own)
            self.assertEqual(json.loads(explained.stdout)["threads"], 3)
            self.fine("apply", "luxsInv_32f_A24", "--threads", 2, stdin="1", **own)
            checked = json.loads(self.fine("check", "Inv_32f_A24", "--json", **own).stdout)
            self.assertEqual(checked["core"], {"path": str(self.dir.resolve() / f"libluxcore.so.{RELEASE}"),
                                               "threads": 3})
            self.fine("accuracy", "Floor_32f", "--samples", 200, **own)
            self.fine("bench", "Inv_32f_A24", "--threads", 2, "--milliseconds", 1, **own)

    def test_one_processor_never_threads(self):
        processor = min(os.sched_getaffinity(0))
        alone = self.fine("explain", "luxsExp_64f_A53", "--n", 2**31 - 1, "--threads", 2, "--json",
                          preexec_fn=lambda: os.sched_setaffinity(0, {processor}))
        decision = json.loads(alone.stdout)
        self.assertEqual((decision["threshold"], decision["split"]), (None, False))

    def test_explained_cost_is_the_librarys(self):
        """The threshold comes from the library, the start-up cost from the program's own probe."""
        def explain(*more):
            return json.loads(self.fine("explain", *map(str, more), "--json").stdout)

        one = explain("luxsInv_32f_A24", "--n", 2**31 - 1, "--threads", 2)
        if one["threshold"] is None:
            self.skipTest("threading is off on this machine")
        cycles_per_inv = 4.61
        self.assertEqual(one["threshold"], int(one["start_cost"] / cycles_per_inv))
        self.assertTrue(one["split"])
        edge = explain("luxsInv_32f_A24", "--n", one["threshold"], "--threads", 2)
        self.assertFalse(edge["split"])
        slices = explain("luxsInv_32f_A24", "--n", 10**6 + 3, "--threads", 3)["slices"]
        self.assertEqual((slices["count"], slices["length"], slices["last_length"]),
                         (3, 333332, 333339))
        for name, threads in [("luxsInv_32f_A11", 2), ("luxsFloor_32f", 2),
                              ("luxsInv_32f_A24", one["topology"]["n"] + 2)]:
            never = explain(name, "--n", 2**31 - 1, "--threads", threads)
            self.assertEqual((never["threshold"], never["split"]), (None, False))
            self.assertTrue(never["never_because"])


class Terminal(Cli):
    def on_terminal(self, *arguments, pause=0, **environment):
        """stdout and stderr are a terminal; what it shows. In the midst of its work it is held up."""
        try:
            master, slave = pty.openpty()
        except OSError as reason:
            self.skipTest(f"this system has no terminals to give: {reason}")
        process = subprocess.Popen([BIN / "luxvm", *map(str, arguments)], stdin=subprocess.DEVNULL,
                                   stdout=slave, stderr=slave,
                                   env={**os.environ, "TERM": "xterm", **environment})
        os.close(slave)
        if pause:
            time.sleep(0.1)
            process.send_signal(signal.SIGSTOP)
            time.sleep(pause)
            process.send_signal(signal.SIGCONT)
        shown = b""
        try:
            while part := os.read(master, 65536):
                shown += part
        except OSError:  # the other side is closed
            pass
        os.close(master)
        self.assertEqual(process.wait(60), 0)
        return shown

    def test_colour_only_when_wanted(self):
        self.assertIn(b"\033[", self.on_terminal("list", "Exp", NO_COLOR=""))
        self.assertNotIn(b"\033[", self.on_terminal("list", "Exp", NO_COLOR="1"))
        self.assertNotIn(b"\033[", self.on_terminal("list", "Exp", TERM="dumb"))

    def test_progress_of_long_work(self):
        numbers = self.file("long.txt", "0.123456789012345\n" * 2000000)
        shown = self.on_terminal("apply", "luxsExp_64f_A53", "--in", numbers, "--out", "/dev/null", pause=0.6)
        self.assertRegex(shown, rb"reading +\[#+ *\] +\d+%")
        self.assertNotIn(b"[", self.on_terminal("apply", "luxsInv_64f_A53", "--in",
                                                self.file("short.txt", "1"), "--out", "/dev/null",
                                                NO_COLOR="1"))


class Examples(Cli):
    def test_programs(self):
        first = subprocess.run([BIN / "first"], capture_output=True, text=True)
        self.assertIn("exp(1) = 2.718281828459045", first.stdout)
        watch = subprocess.run([BIN / "watch_reports"], capture_output=True, text=True)
        for line in ["double: code 12 (overflow) at index 2, argument 710",
                     "double: code 17 (underflow to zero) at index 4, argument -746",
                     "double: code 18 (infinite result at a pole) at index 0, argument 0",
                     "single: code 18 (infinite result at a pole) at index 3"]:
            self.assertIn(line, watch.stdout)

    def test_atmosphere_is_remade_and_is_the_published_one(self):
        made = subprocess.run([sys.executable, SOURCE / "examples/data/make_atmosphere.py"],
                              capture_output=True, text=True).stdout
        self.assertEqual(made, ATMOSPHERE.read_text())
        rows = {row.split(",")[0]: row.split(",") for row in made.splitlines()}
        for altitude, kelvins, pascals in [("11000", 216.65, 22632.1), ("20000", 216.65, 5474.89),
                                           ("32000", 228.65, 868.019), ("47000", 270.65, 110.906),
                                           ("51000", 270.65, 66.9389), ("71000", 214.65, 3.95642)]:
            self.assertEqual(float(rows[altitude][1]), kelvins)
            self.assertAlmostEqual(float(rows[altitude][3]) / pascals, 1, delta=3e-6)

    def test_demonstration(self):
        demo = subprocess.run([SOURCE / "examples/run_demo.sh", BIN], capture_output=True, text=True)
        self.assertEqual(demo.returncode, 0, demo.stderr)
        largest = [int(line.split("largest difference ")[1].split()[0])
                   for line in demo.stdout.splitlines() if "largest difference" in line]
        self.assertEqual(len(largest), 4)
        self.assertLessEqual(max(largest), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
