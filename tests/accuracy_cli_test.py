#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""luxvm accuracy, luxvm diff and the page made from them: accuracy_cli_test.py BIN_DIR SOURCE_DIR"""
import copy
import json
import os
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
            ("/nonexistent", ["Floor_32f", "--json", "/nonexistent/x.json"]),
            ("/nonexistent", ["Floor_32f", "--plot", "/nonexistent/x.svg"]),
            ("name of a file", ["Floor_32f", "--plot", "-"]),
            ("not a whole number", ["Exp", "--samples", "1e2.5"]),
            ("colon", ["Exp", "--range", "1"]), ("no number", ["Exp", "--range", "a:1"]),
            ("must be below", ["Exp", "--range", "2:1"]),
            ("cannot be combined", ["Exp_32f", "--range", "1:2", "--exhaustive"]),
        ]:
            with self.subTest(arguments):
                self.refused(words, "accuracy", *arguments)

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
        """The state that an interrupted run leaves, spoiled or with another content."""
        folder = self.dir / "state" / "luxvm"
        run = subprocess.Popen([BIN / "luxvm", "accuracy", "Exp_32f", "--exhaustive"],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(2)
        run.send_signal(signal.SIGINT)
        self.assertEqual(run.wait(60), -signal.SIGINT)
        [state] = folder.iterdir()
        whole = state.read_bytes()
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
        command = [os.path.join(BIN, "luxvm"), "accuracy", "Exp_32f_A24", "--exhaustive",
                   "--processors", "1"]
        done = [0]
        for wait in (0.3, 0.3, 2, 8):  # a slow build needs longer before there is something to keep
            run = subprocess.Popen(command, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE, text=True)
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
        self.refused("cannot read", "diff", "/nonexistent", "/nonexistent")


class Page(Measured):
    def test_page(self):
        document = self.measured("Exp_32f_", "luxsInv_64f_")
        document["functions"][-1]["goal"]["met"] = False
        page = self.file("page.md", "# Title\n\nText.\n\n<!-- figures -->\nold\n")
        figures = self.file("figures.json", json.dumps(document))
        subprocess.run([sys.executable, f"{SOURCE}/tools/accuracy_page.py", page, figures], check=True)
        with open(page) as file:
            text = file.read()
        self.assertTrue(text.startswith("# Title\n\nText.\n\n<!-- figures -->\n"))
        self.assertNotIn("old", text)
        self.assertIn("| Exp | A24, A21, A11 |", text)  # one computation, one row
        self.assertIn(document["functions"][0]["worst"][0]["arguments"][0], text)
        self.assertIn("0.612 ulp **missed**", text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
