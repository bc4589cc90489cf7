#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""luxvm bench and the page made from it, nothing of it timed: bench_cli_test.py BIN_DIR SOURCE_DIR"""
import json
import os
import re
import signal
import subprocess
import sys
import time
import unittest

from cli_test import BIN, SOURCE, Cli, luxvm, words_in

QUICK = ("--milliseconds", 1)


def figure(minimum, median=None):
    return {"minimum": minimum, "median": median or minimum, "kept": 5, "dropped": 0}


def row(name, minimum, **more):
    _, family, type_name, *grade = re.split("luxs|_", name)
    return {"name": name, "family": family, "type": type_name, "grade": (grade or [None])[0],
            "n": 2000, "threads": 1, "split": False, "offset": 0, "large": False,
            "special_elements": 0, "passes": 1, "reports": {}, "cycles": figure(minimum, minimum + 1)} | more


def document(rows, **settings):
    return {"date": "2020-02-02", "processor": "Test Processor", "compiler": "GCC 1.2",
            "libm": "glibc 3.4", "library": "0", "ticks_per_cycle": 0.5, "complete": True,
            "settings": {"patterns": [], "n": ["2000"], "threads": [1], "offset": [0],
                         "special": "", "large": False, "compare": True,
                         "milliseconds": 7, "passes": 2} | settings, "rows": rows}


EXPONENTIALS = [
    row("luxsExp_32f_A11", 9, libm=figure(27), one_call=figure(50)),
    row("luxsExp_32f_A24", 8, libm=figure(32), sleef=figure(4),
        one_call=figure(100)),
    row("luxsExp_64f_A50", 20, libm=figure(19), one_call=figure(50)),
    row("luxsExp_64f_A53", 20.004, libm=figure(180.036), one_call=figure(50)),
    row("luxsFloor_64f", 5, libm=figure(4), one_call=figure(50)),
]


class Bench(Cli):
    def json_of(self, *arguments, **options):
        return json.loads(self.fine("bench", *arguments, "--json", "-", *QUICK, **options).stdout)

    def write(self, name, content):
        return self.file(name, json.dumps(content))


class Measuring(Bench):
    def test_refusals(self):
        for words, arguments in [
            ("whole numbers from 1", ["--n", "0"]), ("whole numbers from 1", ["--n", "1.5"]),
            ("x is no number of elements", ["--n", "5,x"]), ("above its end", ["--n", "9:5"]),
            ("percentage", ["--special", "0%"]), ("percentage", ["--special", "101%"]),
            ("percentage", ["--special", "0.5"]), ("ten is no", ["--special", "ten"]),
            ("no function matches", ["nothing_like_it"]),
            ("with a path for large arguments", ["Inv", "--large"]),
            ("no place for --special", ["--large", "--special", "1%"]),
            ("cannot write to", ["Inv", "--json", self.dir / "none" / "a.json"]),
            ("cannot write to", ["Inv", "--plot", self.dir / "none" / "a.svg"]),
            ("needs the name of a file", ["Inv", "--plot", "-"]),
            ("--resume needs the file", ["Inv", "--resume"]),
            ("not a whole number", ["--threads", "0"]), ("not a whole number", ["--offset", "-1"]),
            ("curves are too many", ["Exp", "Ln", "Sin", "--n", "1,2", "--threads", "1,2",
                                     "--plot", self.dir / "a.svg"]),
            ("ever threads", ["Floor_32f", "--n", "threshold"]),
            ("--cliffs goes with", ["Inv", "--cliffs", "--n", "5"]), ("--csv goes with", ["Inv", "--csv", "-"]),
            ("cannot read", ["--from", self.dir / "none"]),
        ]:
            with self.subTest(arguments=arguments):
                self.refused(words, "bench", *arguments)
        self.refused("gnuplot, which is not installed", "bench", "Inv", "--plot", self.dir / "a.svg",
                     env={"PATH": "/"})  # before measuring, as with the curves

    def test_files_that_bench_did_not_write(self):
        [exact] = [r for r in EXPONENTIALS if r["grade"] is None]
        wrong = ["", "[]", "[" * 100000, '{"a":' * 100000, '{"rows": 5}', "1e999", "\0",
                 json.dumps(document([exact]))[:-9], json.dumps(document([exact, 3]))]
        wrong += [document([exact], **{key: value}) for key, value in
                  [("n", []), ("n", [5]), ("n", ["x"]), ("n", "2000"), ("threads", []), ("offset", {}),
                   ("threads", ["1"]), ("special", 1), ("special", "x%"), ("large", 1), ("compare", None)]]
        wrong += [document([exact | {key: value}]) for key, value in
                  [("name", 3), ("name", "luxsNone"), ("n", 0), ("n", 1e300), ("n", -1), ("n", 2**64 - 1),
                   ("threads", "1"), ("split", 1), ("reports", []), ("passes", 0), ("libm", 4),
                   ("special_elements", None), ("cycles", {}), ("cycles", figure("x")),
                   ("sleef_avx2", 1)]]
        wrong += [document([exact]) | {key: value} for key, value in
                  [("processor", 3), ("ticks_per_cycle", "x"), ("complete", 0), ("settings", [])]]
        for content in wrong:
            with self.subTest(content=str(content)[:200]):
                path = self.file("a.json", content if isinstance(content, str) else json.dumps(content))
                self.refused("is not a file that", "bench", "--from", path)
                self.refused("is not a file that", "bench", "Inv", "--json", path, "--resume")

    def test_rows_and_fields(self):
        result = self.json_of("luxsInv_64f_A53", "luxsModf_32f", "--n", "3,1000:4000",
                              "--offset", "0,1")
        lengths = [3, 1000, 2000, 4000]
        self.assertEqual([(r["name"], r["offset"], r["n"]) for r in result["rows"]],
                         [(name, offset, n) for name in ("luxsInv_64f_A53", "luxsModf_32f")
                          for offset in (0, 1) for n in lengths])
        for r in result["rows"]:
            self.assertEqual("goal" in r, r["n"] >= 1000)
            if not r["cycles"]["kept"]:  # a busy machine
                self.assertIsNone(r["cycles"]["minimum"])
            else:
                if "goal" in r:
                    self.assertEqual(r["met"], round(r["cycles"]["minimum"], 2) <= r["goal"])
                self.assertGreater(r["cycles"]["minimum"], 0)
                self.assertGreaterEqual(r["cycles"]["median"], r["cycles"]["minimum"])
        self.assertTrue(result["complete"])
        for key in ("date", "processor", "compiler", "libm", "library", "ticks_per_cycle"):
            self.assertTrue(result[key], key)

    def test_special_elements_are_there(self):
        """A zero divisor is reported once each, so the reports count what was placed."""
        for name, special, n, count in [("luxsInv_32f_A24", "1%", 2000, 20),
                                        ("luxsDiv_64f_A53", "4", 1001, 250),
                                        ("luxsInv_64f_A50", "0.05%", 10000, 5),
                                        ("luxsInv_64f_A50", "100%", 50, 50),
                                        ("luxsDiv_32f_A24", "1000", 400000, 400)]:
            for threads in (1, 2):
                [r] = self.json_of(name, "--special", special, "--n", n, "--threads", threads)["rows"]
                self.assertEqual((r["special_elements"], r["reports"]), (count, {"18": count}), name)
                self.assertIn("cycles_of_a_special_element", r)
        [r] = self.json_of("luxsInv_32f_A24")["rows"]
        self.assertEqual((r["special_elements"], r["reports"]), (0, {}))
        self.assertNotIn("plain", r)

    def test_lengths_around_the_threshold(self):
        explained = json.loads(self.fine("explain", "luxsInv_32f_A24", "--n", 1, "--threads", 2,
                                         "--json").stdout)
        if explained["threshold"] is None:
            self.skipTest("threading is off on this machine")
        rows = self.json_of("luxsInv_32f_A24", "--n", "threshold", "--threads", "1,2")["rows"]
        t = max(explained["threshold"], 200)
        self.assertEqual([(r["n"], r["split"]) for r in rows if r["threads"] == 2],
                         [(t // 2, False), (t, False), (t + 1, True), (2 * t, True), (4 * t, True)])

    def test_compare_starts_anew_without_sse2_variants(self):
        for tunables in (None, "glibc.malloc.check=0"):
            environment = {k: v for k, v in os.environ.items() if k != "GLIBC_TUNABLES"}
            if tunables:
                environment["GLIBC_TUNABLES"] = tunables
            for more in ([], ["--without-sse2"]):
                result = self.json_of("Exp_32f_A24", "luxsErfInv_32f_A24", "--compare", *more, env=environment)
                self.assertEqual("without SSE2" in result["libm"], bool(more))
                exponential, inverse = result["rows"]
                self.assertNotIn("libm", inverse)
                for peer in ("libm", "libm_sse2"):
                    if exponential[peer]["kept"] and exponential["cycles"]["kept"]:
                        self.assertAlmostEqual(exponential[f"{peer}_ratio"], exponential[peer]["minimum"] /
                                               exponential["cycles"]["minimum"])

    def test_loops_have_built_in_functions(self):
        """The compared loops are compiled as a program's own would be."""
        for variant in ("387", "sse2"):
            path = BIN.parent / f"bench/CMakeFiles/lux_loops_{variant}.dir/loops.cpp.o"
            listing = subprocess.run(["objdump", "-dr", "--no-show-raw-insn", path], check=True,
                                     stdout=subprocess.PIPE).stdout.decode()
            bodies = dict(re.findall(r"_N_1\d+([A-Z]\w+?_\d\df)E.*>:\n((?:.+\n)+)", listing))
            called = {name: set(re.findall(r"R_386_(?:PLT32|PC32)\s+([a-z]\w*)$", body, re.M)) - {"modff"}
                      for name, body in bodies.items()}
            for name in ("Floor_32f", "Floor_64f", "Rint_32f", "Trunc_64f", "Inv_32f", "Div_64f"):
                self.assertEqual(called[name], set(), name)
            self.assertEqual(called["Exp_64f"], {"exp"})
            self.assertEqual("xmm" in listing, variant == "sse2")

    def test_cliffs(self):
        result = self.json_of("luxsPowx_32f_A24", "luxsErfInv_64f_A53", "--cliffs", "--csv", self.dir / "a.csv")
        powers, inverse = result["rows"]
        self.assertIn("loop_of_one", powers)
        self.assertIsNone(inverse["loop_of_one"])
        self.assertIsNone(powers["classes"]["whole second operand"]["one_percent"])
        self.assertLessEqual({"zeros", "NaNs", "infinities", "subnormals", "outside the domain", "poles"},
                             set(inverse["classes"]))
        self.assertEqual(set(powers["calls"]), set("145678"))
        for values in inverse["classes"].values():
            for value in values.values():
                self.assertTrue(value is None or value > 0)
        lines = (self.dir / "a.csv").read_text().splitlines()
        self.assertEqual(lines[0], "name,class,one_percent,all")
        self.assertEqual(len(lines) - 1, sum(len(r["classes"]) + len(r["calls"]) for r in result["rows"]))

    def test_resumed_run_keeps_what_is_there(self):
        path = self.dir / "a.json"
        run = ("bench", "luxsInv_32f", *QUICK, "--passes", 2, "--json", path, "--resume")
        self.fine(*run)
        whole = json.loads(path.read_text())

        def interrupted(**changes):
            part = json.loads(json.dumps(whole)) | {"complete": False} | changes
            part["rows"] = part["rows"][:2]
            part["rows"][1]["passes"] = 1
            for r in part["rows"]:
                r["cycles"]["minimum"] = 12345.0
            path.write_text(json.dumps(part))
            self.fine(*run)
            after = json.loads(path.read_text())
            self.assertTrue(after["complete"])
            self.assertEqual([r["name"] for r in after["rows"]], [r["name"] for r in whole["rows"]])
            self.assertEqual([r["passes"] for r in after["rows"]], [2] * len(whole["rows"]))
            return [r["cycles"]["minimum"] == 12345.0 for r in after["rows"]]

        self.assertEqual(interrupted(), [True, False, False])
        for other in ({"library": "another build's"}, {"complete": True},
                      {"settings": whole["settings"] | {"special": "1%"}}):
            self.assertFalse(any(interrupted(**other)))

    def test_interrupted_run_leaves_whole_files(self):
        for resume in ([], ["--resume"]):
            path = self.dir / "a.json"
            process = subprocess.Popen([BIN / "luxvm", "bench", "--json", path, *resume],
                                       stdout=subprocess.PIPE)
            while b"luxs" not in process.stdout.readline():
                pass
            deadline = time.time() + 30
            while resume and not path.exists() and time.time() < deadline:
                time.sleep(0.01)
            process.send_signal(signal.SIGINT)
            process.stdout.read()
            process.stdout.close()
            self.assertEqual(process.wait(30), -signal.SIGINT)
            self.assertEqual([p.name for p in self.dir.iterdir()], ["a.json"] if resume else [])
            if resume:
                self.assertFalse(json.loads(path.read_text())["complete"])


class Showing(Bench):
    def test_table_and_summary_of_known_figures(self):
        path = self.write("a.json", document(EXPONENTIALS))
        text = self.fine("bench", "--from", path).stdout.decode()
        lines = {line.split()[0]: line.split() for line in text.splitlines() if line.strip()}
        self.assertEqual(lines["luxsExp_32f_A24"][1:],
                         ["8.00", "9.00", "8.1", "92", "32.00", "4.00", "4.00", "0.50"])
        self.assertEqual(lines["luxsExp_64f_A53"][-4:], ["180.0", "9.00", "-", "-"])
        self.assertIn("met by 3 of 5", text)  # 20.004 shows as 20.00
        self.assertIn("6.00 times as long (geometric mean over 2", text)
        self.assertIn("slower than the loop: luxsExp_64f_A50\n", text)
        self.assertIn("slower than a higher grade: luxsExp_32f_A11 than luxsExp_32f_A24\n", text)
        self.assertIn("Test Processor", text)
        part = json.loads(self.fine("bench", "Exp_64f", "--from", path, "--json", "-").stdout)
        self.assertEqual([r["name"] for r in part["rows"]], ["luxsExp_64f_A50", "luxsExp_64f_A53"])
        self.assertAlmostEqual(part["summary"]["mean_libm_ratio"], 9)

    def test_plots(self):
        lengths = [row("luxsExp_64f_A53", 20, n=n, threads=t) for t in (1, 2) for n in (10, 100)]
        for rows, words in [(EXPONENTIALS, ["Exp 32f", "Floor 64f", "libm", "SLEEF"]),
                            (lengths, ["A53 T=1", "A53 T=2", "elements of an array"])]:
            path, picture = self.write("a.json", document(rows)), self.dir / "a.svg"
            self.fine("bench", "--from", path, "--plot", picture)
            self.assertIn("Test Processor, 2020-02-02; glibc 3.4", words_in(picture))
            for word in words:
                self.assertIn(word, words_in(picture))

    def test_plot_takes_the_figures_of_a_file(self):
        """The measurement with several lengths counts; of one length there are bars."""
        lengths = [row("luxsExp_64f_A53", 20, n=n, libm=figure(40), sleef=figure(5)) for n in (10, 100)]
        one, several = self.write("one.json", document(EXPONENTIALS)), self.write("b.json", document(lengths))
        picture = self.dir / "a.svg"
        for files, words in [([one], ["A53", "A50", "180", "20"]), ([one, several], ["A53", "libm", "SLEEF"])]:
            command = ["plot", "Exp_64f", "--speed", *[w for f in files for w in ("--from", f)]]
            self.fine(*command, "-o", picture)
            self.assertLessEqual(set(words), set(words_in(picture)))
            self.assertIn("A53 ", self.fine(*command).stdout.decode())
        self.refused("is not among the figures", "plot", "Sin_64f", "--speed", "--from", one)

    def test_plots_that_cannot_be_drawn(self):
        path, picture = self.write("a.json", document(EXPONENTIALS)), self.dir / "a.svg"
        many = [row(f"luxsExp_64f_A53", 1, n=n, offset=o) for o in range(17) for n in (1, 2)]
        for words, options, rows in [("gnuplot, which is not installed", {"env": {"PATH": "/"}}, 0),
                                     ("17 curves are too many", {}, many)]:
            path = self.write("a.json", document(rows or EXPONENTIALS))
            result = luxvm("bench", "--from", path, "--plot", picture, **options)
            self.assertEqual(result.returncode, 2)
            self.assertIn(words, result.stderr.decode())
            self.assertEqual([p.name for p in self.dir.iterdir()], ["a.json"])


def cliff_row(name, classes, calls=(), loop=None):
    return {"name": name, "ordinary": 2, "loop_of_one": loop,
            "classes": {what: {"one_percent": one, "all": all_} for what, (one, all_) in classes.items()},
            "calls": {str(n): c for n, c in calls}}


class Page(Bench):
    REASONS = [{"functions": ["Exp *"], "classes": ["NaNs"], "why": "Because of it."}]

    def setUp(self):
        super().setUp()
        (self.dir / "figures").mkdir()
        self.page = self.file("page.md", "Prose stays.\n<!-- figures -->\nold figures\n")

    def performance(self, *arguments, reasons=REASONS):
        return subprocess.run([sys.executable, SOURCE / "tools/performance.py", BIN / "luxvm", self.page,
                               "--machines", self.dir / "machines", "--figures", self.dir / "figures",
                               "--explanations", self.write("reasons.json", reasons), *arguments],
                              timeout=60, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)

    def make(self, documents, **options):
        for name, content in documents.items():
            path = self.dir / "figures" / f"{name}.json"
            if "cliffs" in name:
                path.write_text(json.dumps(content))
            else:  # through luxvm, which adds what it derives
                self.fine("bench", "--from", self.write("raw.json", content), "--json", path)
        return self.performance("--no-measuring", **options)

    def test_page_of_known_figures(self):
        special = [row("luxsFloor_64f", 6, plain=figure(5), special_elements=20)]
        blocks = [row("luxsFloor_64f", 10, plain=figure(5), special_elements=500)]
        offset = [row("luxsFloor_64f", 5 + o, offset=o) for o in (0, 1)]
        cliffs = [cliff_row("luxsExp_32f_A11", {"NaNs": (1.1, 5.5), "zeros": (1, 3)}),
                  cliff_row("luxsExp_32f_A24", {"NaNs": (2.5, 4)},
                            [(1, 100), (4, 4), (5, 15), (6, 6), (7, 7), (8, 8)], 50)]
        made = self.make({
            "all": document(EXPONENTIALS), "without_sse2": document([row("luxsExp_32f_A24", 8, libm=figure(80))]),
            "special": document(special, special="1%"),
            "blocks": document(blocks, special="4"), "offset": document(offset, offset=[0, 1]),
            "length_64f": document([row("luxsFloor_64f", 5, n=n) for n in (1, 10)], n=["1:10"]),
            "threads": document([row("luxsExp_64f_A53", 25, n=5000, threads=2, split=True)],
                                n=["threshold"], threads=[1, 2]),
            "cliffs": document(cliffs)})
        self.assertEqual(made.stderr, b"")
        text = self.page.read_text()
        self.assertTrue(text.startswith("Prose stays.\n<!-- figures -->\n"))
        self.assertNotIn("old figures", text)
        for words in ["**A**: Test Processor, 2020-02-02; 0.500", "GCC 1.2", "glibc 3.4",
                      "| `gcc -m32 -O2` | **this library** | Exp 4.0 | Exp 9.0 |",
                      "| `gcc -m32 -O2` | **a plain loop** | - | Floor 0.8 |",
                      "no SSE2 in the C library | **this library** | Exp 10.0 | - |",
                      "| `luxsExp_32f_A24` | 8.00 | 92 | 4.00 | 10.00 | 0.50 |",
                      "| `luxsFloor_64f` | 5.00 | 45 | 0.80 |\n",
                      "| `luxsFloor_64f` | 5.00 | 6.00 | 100 | 10.00 | 20 |",
                      "| `luxsFloor_64f` | 5.00 | 6.00 |\n",
                      "| `luxsExp_64f_A53` | 5000 | 2 | yes | 25.00 | 26.00 |",
                      "| Exp 32f | NaNs | 2.5 | 5.5 | 1 |", "| Exp 32f | zeros | 1.0 | 3.0 |  |",
                      "\n1. Because of it.\n",
                      "| A | `luxsExp_32f_A24` | 1.0 | 3.0 | 1.0 | 1.0 | 1.0 | 3.00 |",
                      "| A | `luxsExp_32f_A24` | 100 | 50 | 2.00 |"]:
            self.assertIn(words, text)
        self.assertNotIn("goal", text.lower())
        pictures = re.findall(r"\]\((plots/\S+)\)", text)
        self.assertEqual(pictures, ["plots/speed_32f.svg", "plots/speed_64f.svg",
                                    "plots/length_64f.svg"])
        for picture in pictures:
            self.assertIn("</svg>", (self.dir / picture).read_text())

        self.assertEqual(self.performance("--check").returncode, 0)
        self.page.write_text(text.replace("| 4.00 |", "| 4.01 |"))
        self.assertIn(b"is not what the machines' files give", self.performance("--check").stderr)
        for words, reasons in [(b"Exp 32f NaNs", []), (b"explains no cliff", self.REASONS * 2)]:
            self.assertIn(words, self.performance("--page-only", reasons=reasons).stderr)

    def test_machines_stand_side_by_side(self):
        """A verdict holds on all machines; one that did not measure a loop has no say."""
        for processor, loop in [("Slow One", 7), ("Quick One", 20), ("Silent One", None)]:
            rows = [row("luxsExp_32f_A24", 5, one_call=figure(50), **({"libm": figure(loop)} if loop else {}))]
            made = self.make({"all": document(rows) | {"processor": processor}}, reasons=[])
            self.assertEqual(made.stderr, b"")
        text = self.page.read_text()
        self.assertEqual(len(list((self.dir / "machines").iterdir())), 3)
        self.assertIn("| `luxsExp_32f_A24` | 5.00 | 45 | 4.00 | 5.00 | 45 | 5.00 | 45 | 1.40 |", text)
        self.assertIn("| **this library** | Exp 1.4 |", text)

    def test_the_page_is_what_the_files_give(self):
        subprocess.run([sys.executable, SOURCE / "tools/performance.py", BIN / "luxvm",
                        SOURCE / "docs/performance.md", "--check"], check=True, timeout=60)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
