# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Everybody can read the page of halvik-report: in both themes, in any width, by keyboard, aloud and on paper."""

import os
import pathlib
import unittest

import browser
import isolation
import pages
from project import ROOT
from selenium.webdriver.common.keys import Keys

FOLDER = ROOT / "tests/page"
AXE = pathlib.Path(os.environ.get("HALVIK_AXE", ROOT / "build/axe/package/axe.min.js"))


class Reading(browser.BrowserTest):
    def open_everything(self, report):
        self.open(report)
        self.run_script("document.querySelectorAll('details').forEach((one) => { one.open = true; })")
        self.wait(lambda: self.all("#block-list > :last-child pre"), "the text")
        # What scrolls is known once it was laid out.
        self.driver.execute_async_script("requestAnimationFrame(() => setTimeout(arguments[0]))")

    def test_both_themes_can_be_read(self):
        backgrounds = []
        for scheme in ("light", "dark"):
            for width in (360, 1280):
                with self.subTest(scheme=scheme, width=width):
                    self.media(scheme)
                    self.resize(width)
                    self.open_everything(pages.example())
                    self.search("192")
                    self.assertEqual(self.run_script((FOLDER / "accessibility.js").read_text()), [])
                    backgrounds.append(self.run_script("return getComputedStyle(document.body).backgroundColor"))
        self.assertEqual(len(set(backgrounds)), 2)

    @unittest.skipUnless(AXE.exists(), "not installed: axe-core, which scripts/install_axe fetches")
    def test_axe_finds_no_violation(self):
        for scheme, width in (("light", 1280), ("dark", 1280), ("light", 360)):
            with self.subTest(scheme=scheme, width=width):
                self.media(scheme)
                self.resize(width)
                self.open_everything(pages.example())
                self.run_script(AXE.read_text())
                found = self.driver.execute_async_script("axe.run({resultTypes: ['violations']}).then(arguments[0])")
                self.assertEqual([(one["id"], [node["html"] for node in one["nodes"]]) for one in found["violations"]], [])
                self.assertGreater(len(found["passes"]), 20)

    def test_the_page_is_never_wider_than_the_window(self):
        long = pages.with_texts(pages.example(), lambda text: "W" * 400 + text)
        for report in (pages.example(), long):
            for width in (360, 1280, 2560):
                with self.subTest(width=width, long=report is long):
                    self.resize(width)
                    self.open_everything(report)
                    self.assertLessEqual(self.run_script("return document.documentElement.scrollWidth"), width)

    def test_no_table_is_cut_off_where_there_is_room(self):
        report = pages.html((ROOT / "tests/unit/reader/data/clear.txt").read_bytes())
        for width in (1280, 1600, 1920, 2560):
            with self.subTest(width=width):
                self.resize(width)
                self.open_text(report)
                cut = "return Array.from(document.querySelectorAll('.scroll')).filter((one) => one.scrollWidth > one.clientWidth)"
                self.assertEqual([one.get_attribute("data-title") for one in self.run_script(cut)], [])

    def test_tab_begins_with_the_way_past_the_contents(self):
        self.open(pages.example())
        self.press(Keys.TAB)
        self.assertEqual(self.focused("innerText"), "Skip to the report")
        self.assertNotEqual(self.run_script("return getComputedStyle(document.activeElement).outlineStyle"), "none")
        self.press(Keys.ENTER)
        self.assertEqual(self.focused(), "main")
        self.press(Keys.TAB)
        self.assertEqual(self.focused("hash"), "#L22")

    def test_paper_is_white_and_has_the_verdict_and_open_blocks(self):
        self.media("dark", "print")
        self.open(pages.example(), "#B5")
        self.assertEqual(self.run_script("return getComputedStyle(document.body).backgroundColor"), "rgb(255, 255, 255)")
        self.media("dark", kind="")
        text = " ".join(self.printed().split())
        for part in (pages.EXAMPLE["verdict"]["text"], pages.EXAMPLE["findings"][2]["advice"], "icmp_seq=2 ttl=61"):
            self.assertIn(part, text)
        self.assertNotIn("icmp_seq=3", text)
        self.assertNotIn("Search the blocks", text)

    def test_nothing_moves(self):
        self.open(pages.example(), "#L22")
        self.assertEqual(self.run_script("return [document.getAnimations().length, "
                                         "getComputedStyle(document.documentElement).scrollBehavior]"), [0, "auto"])


isolation.run_tests()
