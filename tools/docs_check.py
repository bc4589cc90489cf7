#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Look at the built site in headless Chromium, as files.

usage: docs_check.py SITE [--screenshots FOLDER] [--quick]

Every page is opened: it must load without an error or warning in the console, nothing of it may come from
a network, no text may stand wider than the window of a telephone. Every link must lead to a file, and to
an anchor in it. The search must find an export of each type, and lead to its page.
--screenshots keeps pictures of some pages at two widths; --quick opens only those.
"""

import argparse
import json
import sys
import time
from pathlib import Path
from urllib.parse import unquote, urldefrag

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service

SHOWN = ["index", "functions/Erfc", "exports", "performance", "libm", "statuses"]
WIDTHS = [1280, 390]
SEARCHED = {"luxsErfc_64f_A50": "functions/Erfc.html", "luxsSin_32fc_A21": "functions/Sin.html",
            "luxsRint_32f": "functions/Rint.html", "noxsincosl_scalar": "reference.html"}


def browser():
    options = Options()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                     "--force-prefers-color-scheme=light"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class Check:
    def __init__(self, site):
        self.site, self.driver, self.faults = site, browser(), []
        self.pages = {}  # path to (links, anchors)

    def fault(self, page, text):
        self.faults.append(f"{page.relative_to(self.site)}: {text}")

    def width(self, pixels):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": pixels, "height": 900, "deviceScaleFactor": 1, "mobile": False})

    def open(self, page, query=""):
        self.driver.get(page.as_uri() + query)
        for entry in self.driver.get_log("browser"):
            self.fault(page, f"console: {entry['message']}")
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            url = message.get("params", {}).get("request", {}).get("url", "")
            if message["method"] == "Network.requestWillBeSent" and not url.startswith(("file:", "data:")):
                self.fault(page, f"asks for {url}")

    def look(self, page):
        self.open(page)
        links, anchors, wide = self.driver.execute_script("""
            const wide = document.documentElement.scrollWidth - window.innerWidth;
            return [[...document.querySelectorAll('a[href], img[src]')].map(e => e.href || e.src),
                    [...document.querySelectorAll('[id]')].map(e => e.id), wide];""")
        self.pages[page] = links, set(anchors)
        if wide > 0:
            self.fault(page, f"is {wide} pixels too wide at {WIDTHS[-1]}")
        broken = self.driver.execute_script("""
            return [...document.images].filter(i => i.complete && i.naturalWidth === 0).map(i => i.src);""")
        for source in broken:
            self.fault(page, f"picture does not load: {source}")

    def links(self):
        counted = 0
        for page, (links, _) in self.pages.items():
            for link in set(links):
                if not link.startswith("file:"):
                    continue  # opened by the reader, not by the page
                counted += 1
                path, anchor = urldefrag(link)
                path = Path(unquote(path.removeprefix("file://")).split("?")[0])
                if not path.is_file():
                    self.fault(page, f"leads to no file: {link}")
                elif anchor and path in self.pages and unquote(anchor) not in self.pages[path][1]:
                    self.fault(page, f"leads to no anchor: {link}")
        return counted

    def search(self):
        page = self.site / "search.html"
        for word, wanted in SEARCHED.items():
            self.open(page, f"?q={word}")
            for _ in range(50):
                found = self.driver.execute_script(
                    "return [...document.querySelectorAll('#search-results li a')].map(a => a.href)")
                if found:
                    break
                time.sleep(0.1)
            if not any(wanted in link for link in found):
                self.fault(page, f"'{word}' does not find {wanted}, but {found}")

    def screenshots(self, folder):
        folder.mkdir(parents=True, exist_ok=True)
        for width in WIDTHS:
            for name in SHOWN:
                self.width(width)
                self.open(self.site / f"{name}.html")
                height = self.driver.execute_script("return document.documentElement.scrollHeight")
                self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
                    "width": width, "height": min(height, 6000), "deviceScaleFactor": 1, "mobile": False})
                time.sleep(0.3)
                self.driver.save_screenshot(str(folder / f"{name.replace('/', '_')}_{width}.png"))


def main():
    parser = argparse.ArgumentParser(description="Look at the built site in headless Chromium.")
    parser.add_argument("site", type=Path)
    parser.add_argument("--screenshots", type=Path)
    parser.add_argument("--quick", action="store_true")
    options = parser.parse_args()
    check = Check(options.site.resolve())
    try:
        check.width(WIDTHS[-1])
        pages = [check.site / f"{name}.html" for name in SHOWN] if options.quick else \
            sorted(p for p in check.site.rglob("*.html") if "_static" not in p.parts)
        for page in pages:
            check.look(page)
        links = check.links()
        check.search()
        if options.screenshots:
            check.screenshots(options.screenshots)
    finally:
        check.driver.quit()
    print("\n".join(check.faults))
    print(f"{len(pages)} pages, {links} links, {len(SEARCHED)} searches: {len(check.faults)} faults")
    sys.exit(bool(check.faults))


if __name__ == "__main__":
    main()
