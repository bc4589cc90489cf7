#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The documents that are made: the manual's pages, and the pages of the site before they are laid out.

docs_test.py <source dir> <luxvm>
"""
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE, LUXVM = Path(sys.argv[1]), sys.argv[2]
DIRECTORY = tempfile.TemporaryDirectory()
OUT = Path(DIRECTORY.name)


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def functions():
    listed = json.loads(run(LUXVM, "list", "--json"))
    return listed["functions"] if isinstance(listed, dict) else listed


class Manual(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        run(sys.executable, SOURCE / "tools/man_pages.py", LUXVM, OUT / "man")

    def test_every_export_leads_to_its_familys_page(self):
        for f in functions():
            page = OUT / f"man/man3/{f['name']}.3"
            self.assertEqual(page.read_text(), f".so man3/luxs{f['family']}.3\n")
            names = (OUT / "man" / page.read_text().split()[1]).read_text().split(".SH SYNOPSIS")[0]
            self.assertRegex(names, rf"\b{f['name']}\b")

    def test_every_command_has_a_page(self):
        commands = re.findall(r"(?m)^  (\w+)  ", run(LUXVM, "--help").split("Subcommands:")[1])
        self.assertGreater(len(commands), 5)
        for command in set(commands) - {"help"}:
            self.assertTrue((OUT / f"man/man1/luxvm-{command}.1").exists(), command)

    def test_pages_are_laid_out_without_a_warning(self):
        pages = [p for p in OUT.glob("man/man?/*") if not p.read_text().startswith(".so ")]
        self.assertGreater(len(pages), 40)
        result = subprocess.run(["mandoc", "-Tlint", "-Wwarning", *pages], capture_output=True, text=True)
        self.assertEqual(result.stdout, "")
        shown = run("mandoc", "-Tascii", OUT / "man/man3/luxsExp.3")
        self.assertIn("-745.1332191019412", shown)  # nothing is eaten as an escape
        self.assertIn("0xC0874910D52D3052", shown)


class Site(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        run(sys.executable, SOURCE / "tools/docs_site.py", OUT / "site", "--pages-only")

    def test_a_page_has_every_export_and_every_part(self):
        parts = ["Declarations", "Accuracy", "Special values", "Environment", "In place", "Threads", "Speed",
                 "Method", "Related"]
        for f in functions():
            text = (OUT / f"site-source/functions/{f['family']}.md").read_text()
            self.assertRegex(text, rf"c:function}} LuxStatus {f['name']}\(")
            self.assertEqual(re.findall(r"(?m)^## (.*)", text), parts)
            self.assertNotRegex(text, r"(?m)^## (.*)\n+(?=## )", "an empty part")

    def test_texts_are_in_the_reference(self):
        linked = re.findall(r"\(functions/(\w+)\.md\)", (SOURCE / "docs/reference.md").read_text())
        self.assertEqual(sorted(linked), sorted(p.stem for p in SOURCE.glob("docs/functions/*.md")))

    def test_links_lead_to_a_page_or_a_file(self):
        pages = OUT / "site-source"
        count = 0
        for page in pages.rglob("*.md"):
            for goal in re.findall(r"\]\(([^)#:\s]+)(?:#[^)]*)?\)|href=\"([^\":#]+)\"", page.read_text()):
                goal = goal[0] or goal[1]
                count += 1
                goal = os.path.normpath(page.parent.relative_to(pages) / goal)
                found = (pages / goal).exists() or (pages / "extra" / goal).exists()
                self.assertTrue(found, f"{page.relative_to(pages)}: {goal}")
        self.assertGreater(count, 1000)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
