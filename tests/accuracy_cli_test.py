#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""luxvm accuracy, luxvm diff and what the documents say of errors: accuracy_cli_test.py BIN_DIR SOURCE_DIR"""
import copy
import json
import os
import shutil
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

from cli_test import BIN, SOURCE, Cli, luxvm

FEW = ("--samples", 500)


class Measured(Cli):
    def measured(self, *arguments):
        path = self.path("errors.json")
        self.fine("accuracy", *arguments, *FEW, "--json", path)
        with open(path) as file:
            return json.load(file)

    def setUp(self):
        super().setUp()
        os.environ["XDG_STATE_HOME"] = self.path("state")

    def path(self, name):
        return str(self.dir / name)

    def fails(self, words, *arguments):
        """A failed check: something was shown before."""
        result = luxvm(*arguments)
        self.assertEqual(result.returncode, 1, arguments)
        self.assertIn(words, result.stderr.decode())


class Accuracy(Measured):
    def test_refusals(self):
        for words, arguments in [
            ("no function matches 'Foo'", ["Foo"]), ("no function matches 'Foo'", ["Exp", "Foo"]),
            ("excludes", ["Exp", "--clear"]),
            ("/none/x", ["Floor_32f", "--json", self.path("none/x.json")]),
            ("/none/x", ["Floor_32f", "--plot", self.path("none/x.svg")]),
            ("name of a file", ["Floor_32f", "--plot", "-"]),
            ("not a whole number", ["Exp", "--samples", "1e2.5"]),
            ("colon", ["Exp", "--range", "1"]), ("no number", ["Exp", "--range", "a:1"]),
            ("must be below", ["Exp", "--range", "2:1"]),
            ("cannot be combined", ["Exp_32f", "--range", "1:2", "--exhaustive"]),
            ("cannot be combined", ["Exp_32f", "--at", "1", "--range", "1:2"]),
            ("takes 2 numbers", ["Pow_32f", "--at", "1"]), ("too many", ["Exp_32f", "--at", "1,2"]),
            ("name of a file", ["Floor_32f", "--record", "-"]),
            ("no function of two singles", ["Hypot_64f", "--pairs", "1"]),
        ]:
            with self.subTest(arguments):
                self.refused(words, "accuracy", *arguments)

    def test_pairs_tell_the_correctly_rounded(self):
        for family in "Pow", "Powx", "Atan2", "Div":
            self.assertIn(b"correctly rounded", luxvm("accuracy", f"luxs{family}_32f_A24", "--pairs", "50000").stdout)
        self.fails("not the nearest", "accuracy", "luxsPow_32f_A21", "--pairs", "5000")

    def test_figures_hang_together(self):
        document = self.measured("Exp_64f_", "Modf_32f")
        names = [entry["name"] for entry in document["functions"]]
        self.assertEqual(names, ["luxsExp_64f_A50", "luxsExp_64f_A53", "luxsModf_32f"])
        for entry in document["functions"]:
            count = entry["count"]
            self.assertEqual(sum(part["count"] for part in entry["histogram"]), count)
            self.assertEqual(sum(part["count"] for part in entry["ranges"]), count)
            self.assertLessEqual(entry["mean_ulp"], entry["max_ulp"])
            self.assertEqual(max(part["max_ulp"] for part in entry["ranges"]), entry["max_ulp"])
            self.assertGreater(entry["special_values"]["rows"], 0)
            self.assertTrue(entry["guarantee"]["met"])
        worst = document["functions"][0]["worst"]
        self.assertEqual([case["ulp"] for case in worst],
                         sorted((case["ulp"] for case in worst), reverse=True))
        # The worst one again, by the command that computes single values.
        shown = json.loads(self.fine("eval", "luxsExp_64f_A53", worst[0]["arguments"][0], "--json").stdout)
        self.assertEqual(shown["elements"][0]["results"][0]["bits"], worst[0]["result"])

    def test_same_seed_same_figures_and_range(self):
        first, again = self.measured("Exp_32f"), self.measured("Exp_32f")
        self.assertEqual(first["functions"][0]["worst"], again["functions"][0]["worst"])
        near_one = self.measured("Exp_32f_A24", "--range", "0.5:2", "--seed", 7)
        ranges = [part["range"] for part in near_one["functions"][0]["ranges"]]
        self.assertEqual(ranges, ["[2^-4, 1)", "[1, 2^2)"])

    def test_plot_and_details(self):
        plot = self.path("errors.svg")
        shown = self.fine("accuracy", "Exp_32f", *FEW, "--plot", plot).stdout.decode()
        for words in ("ten worst", "error up to", "first argument"):
            self.assertIn(words, shown)
        with open(plot) as file:
            self.assertIn("</svg>", file.read())

    def test_damaged_state_is_refused_and_can_be_forgotten(self):
        """The state that an interrupted run leaves, spoiled or with another content. The run is one in
        the background, which an interrupt from the keyboard does not concern."""
        folder = self.dir / "state" / "luxvm"
        for wait in 1, 4, 16, 64:
            run = self.start("accuracy", "Exp_32f", "--exhaustive", stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL,
                             preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_IGN))
            run.send_signal(signal.SIGINT)
            time.sleep(wait)
            run.send_signal(signal.SIGTERM)
            self.assertEqual(run.wait(300), -signal.SIGTERM)
            [state] = folder.iterdir()
            whole = state.read_bytes()
            if b"true" in whole:
                break
        done = json.loads(whole)["partial"]["done"]

        def with_digest(content):
            digest = 0xCBF29CE484222325
            for byte in json.dumps(content, separators=(",", ":")).encode():
                digest = (digest ^ byte) * 0x100000001B3 % 2**64
            return json.dumps(content | {"digest": f"{digest:016x}"}).encode()

        shapes = [{"finished": 5}, {"finished": {"luxsExp_32f_A11": []}}, {"finished": [[1]]},
                  {"finished": {"luxsExp_32f_A11": [{}, {}, {}]}},
                  {"finished": {"luxsExp_32f_A11": [1, "x", None]}}, {"partial": None},
                  {"partial": {"done": [True], "statistics": []}},
                  {"partial": {"done": done, "statistics": [{}]}},
                  {"partial": {"done": done, "statistics": 7}}]
        for content in [b"", whole[:-9], whole.replace(b"true", b"null"), whole.replace(b"1", b"2"), b"[]",
                        b"[" * 100000, b'{"finished":' * 100000, b"\xff\0", *map(with_digest, shapes)]:
            with self.subTest(content=content[:60]):
                state.write_bytes(content)
                result = luxvm("accuracy", "Exp_32f", "--exhaustive")
                message = result.stderr.decode().splitlines()
                self.assertEqual(result.returncode, 2, message)
                self.assertIn("is damaged", message[-1])
        (folder / "notes.txt").write_text("not ours")
        self.assertIn(b"1 interrupted run forgotten in", self.fine("accuracy", "--clear").stdout)
        self.assertEqual([p.name for p in folder.iterdir()], ["notes.txt"])

    def test_nothing_is_kept_without_a_home(self):
        nowhere = {k: v for k, v in os.environ.items() if k not in ("HOME", "XDG_STATE_HOME")}
        common = sorted(Path("/tmp/.local").rglob("*"))
        for more in {}, {"HOME": "relative"}, {"HOME": "/proc/none"}:
            told = self.fine("accuracy", "Floor_32f", *FEW, env={**nowhere, **more}, cwd=self.dir).stderr
            self.assertEqual(told.count(b"an interrupted run will not go on"), 1)
            self.assertEqual(list(self.dir.iterdir()), [])
        self.assertEqual(sorted(Path("/tmp/.local").rglob("*")), common)

    def test_interrupted_exhaustive_run_goes_on(self):
        done = [0]
        for wait in (0.3, 0.3, 2, 8, 30, 90):  # slow until there is something to keep: a build, a machine
            run = self.start("accuracy", "Exp_32f_A24", "--exhaustive", "--processors", "1",
                             stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
            time.sleep(wait)
            run.send_signal(signal.SIGINT)
            told = run.communicate()[1]
            self.assertEqual(run.returncode, -signal.SIGINT)
            self.assertIn("the same command goes on", told)
            folder = self.path("state/luxvm")
            (name,) = os.listdir(folder)
            with open(os.path.join(folder, name)) as file:
                kept = sum(json.load(file)["partial"]["done"])
            self.assertGreaterEqual(kept, done[-1])
            if kept > done[-1]:
                done.append(kept)
            if len(done) == 3:  # from nothing, and from what was kept
                return
        self.fail(f"no progress: {done}")


class Diff(Measured):
    def test_regressions(self):
        document = self.measured("Exp_32f", "Floor_32f")
        old = self.file("old.json", json.dumps(document))

        def differs(change):
            new = copy.deepcopy(document)
            change(new["functions"])
            return "diff", old, self.file("new.json", json.dumps(new))

        self.assertIn("0 worse", self.fine(*differs(lambda f: None)).stdout.decode())
        self.assertIn("fine", self.fine(*differs(lambda f: f[0].update(max_ulp=0.5))).stdout.decode())
        for change in [lambda f: f[0].update(max_ulp=0.7), lambda f: f.pop(),
                       lambda f: f[1].update(mismatches=1),
                       lambda f: f[3]["special_values"]["failures"].append("x"),
                       lambda f: f[2]["guarantee"].update(met=False)]:
            self.fails("regression", *differs(change))
        self.fine(*differs(lambda f: f[0].update(max_ulp=f[0]["max_ulp"] + 0.01)), "--ulp", 0.02)

    def test_speeds(self):
        def speeds(name, cycles):
            row = {"name": "luxsExp_32f_A24", "n": 2000, "threads": 1, "offset": 0,
                   "special_elements": 0, "cycles": {"minimum": cycles}}
            return self.file(name, json.dumps({"rows": [row]}))
        old = speeds("old.json", 8.0)
        self.fine("diff", old, speeds("new.json", 8.7))
        self.fails("regression", "diff", old, speeds("new.json", 9.0))
        self.refused("holds speeds", "diff", old, self.file("errors.json", '{"functions": []}'))

    def test_other_files_are_refused(self):
        entry = {"name": "luxsExp_32f_A24", "max_ulp": 0.5, "mismatches": 0,
                 "special_values": {"failures": []}, "guarantee": {"met": True}}
        row = {"name": "luxsExp_32f_A24", "n": 1, "threads": 1, "offset": 0, "special_elements": 0,
               "cycles": {"minimum": 1}}
        good = self.file("good.json", json.dumps({"functions": [entry]}))
        self.fine("diff", good, good)
        wrong = ["", "[]", "3", '{"functions": 3}', '{"functions": [{}]}', "\x00", "[" * 100000,
                 '{"functions":' * 100000, good.read_text()[:-3], '{"functions": [1e999]}']
        for kind, whole in ("functions", entry), ("rows", row):
            wrong += [json.dumps({kind: [{k: v for k, v in whole.items() if k != left_out}]})
                      for left_out in whole]
            wrong += [json.dumps({kind: [whole | {key: {"met": "x"}}]}) for key in whole]
            wrong.append(json.dumps({kind: [whole, whole]}))
        for content in wrong:
            path = self.file("other.json", content)
            self.refused("was not written by", "diff", path, path)
        self.refused("holds no figures", "diff", good, self.file("other.json", '{"functions": []}'))
        self.refused("cannot read", "diff", good, self.dir / "none")


class Figures(Measured):
    def recorded(self, *arguments, change=None):
        """The file's computations after a run; `change` edits them before it."""
        path = Path(self.path("figures.json"))
        if change:
            content = json.loads(path.read_text())
            change(content["computations"])
            path.write_text(json.dumps(content))
        self.fine("accuracy", *arguments, "--record", path)
        return json.loads(path.read_text())["computations"]

    def test_the_largest_stays_until_results_change(self):
        """An early larger error, a late larger one, another function's, and those of an older kernel."""
        worst, worse = "0xBB31DA1D", "0x3EEC143B"
        [first] = self.recorded("Exp_32f", "--at", worse)
        self.assertEqual(first["grades"], ["A24", "A21", "A11"])
        self.assertNotIn("survey", first)
        for at in worst, worse:
            [now] = self.recorded("Exp_32f_A11", "--at", at)
            self.assertEqual(now["largest"][0]["arguments"], [worst])
        self.assertEqual(now["largest"][0]["found"], "named")
        self.assertGreater(now["largest"][0]["error"], first["largest"][0]["error"])
        both = self.recorded("Floor_32f", *FEW)
        self.assertEqual([c["family"] for c in both], ["Exp", "Floor"])
        self.assertEqual((both[1]["largest"], both[1]["survey"]["method"]), ([], "sampled"))
        anew = self.recorded("Exp_32f", "--at", worse, change=lambda all: all[0].update(hash="0x0"))
        self.assertEqual(anew[0], first)

    def test_kinds_and_parts(self):
        for pattern, at, kinds in [
                ("Pow_64fc", "1,1,2,3", {("ulp", "real"), ("ulp", "imaginary"), ("normwise", None)}),
                ("SinCos_64f_A53", "1", {("ulp", "sine"), ("ulp", "cosine")}),
                ("InvCbrt_32f_A11", "3", {("ulp", None), ("relative", None)})]:
            [found] = [c["largest"] for c in self.recorded(pattern, "--at", at)
                       if c["family"] == pattern.split("_")[0]]
            self.assertEqual({(e["kind"], e.get("part")) for e in found}, kinds)

    def test_other_files_are_refused(self):
        for content in "", "[]", '{"computations": [{"family": "Exp"}]}':
            path = self.file("other.json", content)
            self.refused("was not written by", "accuracy", "Floor_32f", "--record", path)
            self.assertEqual(path.read_text(), content)

    def test_documents_are_held_to_the_file(self):
        """A figure that is too small, in each kind of place, is named with both figures, and renewed."""
        tree = self.dir / "tree"
        for name in ("tools", "accuracy", "conformance", "include", "docs", "kernels", "complex"):
            shutil.copytree(Path(SOURCE) / name, tree / name)
        shutil.copy(Path(SOURCE) / "README.md", tree)

        def check(*arguments):
            result = subprocess.run([sys.executable, tree / "tools/figures.py", *arguments],
                                    capture_output=True, text=True)
            return result.returncode, result.stdout
        self.assertEqual(check("--check"), (0, "\n"))
        for name, figure in [("include/luxvmk3.h", "0.7944"), ("kernels/explog/exp_64f.cpp", "0.7944"),
                             ("docs/accuracy.md", "0.7944"), ("kernels/erf/erfc_32f.cpp", "2^-21.77"),
                             ("kernels/trig/sine_64f.h", "0.5285")]:
            path = tree / name
            whole = path.read_text()
            smaller = "2^-21.99" if figure.startswith("2") else "0.5001"
            path.write_text(whole.replace(figure, smaller, 1))
            line = whole[:whole.index(figure)].count("\n") + 1
            with self.subTest(name):
                code, told = check("--check")
                self.assertEqual(code, 1)
                self.assertIn(name, told)
                if name != "docs/accuracy.md":
                    self.assertIn(smaller, told)
                    self.assertIn(figure, told)
                    self.assertLess(abs(int(told.split(":")[1]) - line), 9)
                check("--write")
                self.assertEqual(check("--check")[0], 0)
                self.assertEqual(path.read_text().count(figure), whole.count(figure))
        for name, old, new in [("README.md", "| 1.23 ulp,", "| 1.2 ulp,"),
                               ("conformance/result_hashes.def", "luxsErf_64f_A53, 0x", "luxsErf_64f_A53, 0x1"),
                               ("accuracy/figures.json", '"family":"Cosh"', '"family":"Foo"')]:
            path = tree / name
            whole = path.read_text()
            path.write_text(whole.replace(old, new, 1))
            with self.subTest(name):
                self.assertEqual(check("--check")[0], 1)
            path.write_text(whole)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
