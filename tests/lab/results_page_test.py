# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The results page is what the reader makes of the report that was submitted, and a browser shows it."""

import html.parser
import subprocess
import unittest

import labs
import reader
import skipping
from expected_findings import expected

skipping.require_tools("chromium")

SCENARIO = "small-mtu+slow-city"
BROWSER = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
           "--disable-background-networking", "--disable-component-update", "--disable-sync", "--dump-dom"]


class VisibleText(html.parser.HTMLParser):
    """What a page shows, but for its scripts and styles, with single blanks."""

    def __init__(self, page):
        super().__init__()
        self._hidden = False
        self._texts = []
        self.feed(page)
        self.close()

    def __str__(self):
        return " ".join(" ".join(self._texts).split())

    def handle_starttag(self, tag, attrs):
        self._hidden = tag in ("script", "style")

    def handle_endtag(self, tag):
        self._hidden = False

    def handle_data(self, data):
        if not self._hidden:
            self._texts.append(data)


class ResultsPageTest(unittest.TestCase):
    def setUp(self):
        if not reader.program().is_file():
            self.skipTest(f"{reader.program()} is not built")

    def test_a_browser_shows_what_the_reader_makes_of_a_report(self):
        with labs.Lab("results page", SCENARIO) as lab:
            ended = lab.run_program("-s")
            address = ended.stdout.decode().strip().removeprefix("url=")
            page = lab.shell("curl", "--silent", address)
            shown = str(VisibleText(lab.shell("sh", "-c", 'cd; "$@" 2>/dev/null', "sh", *BROWSER, address).decode()))
            upload, = lab.uploads()
        made = subprocess.run([reader.program(), "--html"], input=upload.report, capture_output=True, check=False)
        self.assertEqual(page, made.stdout)
        found = reader.findings(upload.report)
        self.assertCountEqual(reader.problems(found), expected(SCENARIO), reader.text_of(found))
        for finding in found:
            self.assertIn(" ".join(finding["text"].split()), shown)


labs.run_tests()
