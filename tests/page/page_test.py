# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The page of halvik-report in a real browser: what is on it, its blocks and its search."""

import browser
import isolation
import pages
from selenium.webdriver.common.keys import Keys


class WhatIsOnIt(browser.BrowserTest):
    def test_the_verdict_is_first_as_word_and_sentence(self):
        self.open(pages.example())
        sentence = pages.EXAMPLE["findings"][0]["text"]
        self.assertTrue(self.one("main").text.startswith("Problem\n" + sentence))
        self.assertEqual(self.texts("h1"), [sentence])
        self.assertEqual(self.texts("#verdict p"), [pages.EXAMPLE["verdict"]["text"]])
        self.assertEqual(self.driver.title, "Problem: example.txt")

    def test_its_parts_come_in_the_order_of_their_weight(self):
        self.open(pages.example())
        titles = ["Findings", "Facts", "Round trips", "Paths", "Queries", "All blocks"]
        self.assertEqual(self.texts("h2"), titles)
        self.assertEqual(self.texts("nav a"), titles)

    def test_a_finding_has_its_word_text_meaning_advice_and_lines(self):
        self.open(pages.example())
        finding = pages.EXAMPLE["findings"][0]
        text = self.one("#finding-0").text
        for part in ["Problem", finding["text"], finding["meaning"], finding["advice"], "line 22",
                     finding["evidence"][0]["text"], pages.EXAMPLE["blocks"][2]["name"]]:
            self.assertIn(part, text)
        self.assertEqual(self.texts(".finding .badge"), ["Problem", "Warning", "Note"])

    def test_a_city_is_a_row_with_a_drawing_and_its_numbers(self):
        self.open(pages.example())
        cells = self.texts("#cities tbody tr:nth-child(2) > *")
        self.assertEqual(cells[2:6], ["85.0\u00a0ms", "85.5\u00a0ms", "86.1\u00a0ms", "60\u00a0%"])
        bar = self.one("#cities tbody tr:nth-child(2) rect.range")
        self.assertEqual([bar.get_attribute("x"), bar.get_attribute("width")], ["85.00%", "1.10%"])
        self.assertIn("no answer", self.one("#cities tbody tr:nth-child(3)").text)

    def test_a_path_marks_its_slowest_step_and_its_end(self):
        self.open(pages.example())
        self.assertIn("4 hops, reaches its end; slowest step at hop 4, 24.1 ms more.", self.one(".path").text)
        self.assertEqual(self.texts(".path .chip"), ["slowest step, +24.1\u00a0ms", "reached"])

    def test_hops_that_do_not_answer_are_one_row(self):
        report = pages.example()
        path = report["facts"]["paths"][0]
        path["hops"] = path["hops"][:2] + [path["hops"][2] | {"number": number} for number in range(3, 31)]
        path |= {"reached": False, "end": 2, "slowestStep": {"hop": 2, "ms": 5.1}}
        self.open(report)
        self.assertEqual(self.texts(".path tbody th"), ["1", "2", "3–30"])
        self.assertIn("ends at hop 2", self.one(".path").text)
        self.assertEqual(self.texts(".path .chip.stop"), ["ends here"])

    def test_what_the_report_lacks_or_has_besides_is_told(self):
        self.open(pages.example())
        self.assertIn("1 block of the plan is not in this report", self.one("#blocks").text)
        self.assertIn("In no block: printed after the report", self.one("#block-list").text)
        self.assertIn("cut", self.one("#B12").text)

    def test_nothing_found_has_no_empty_parts(self):
        self.open(pages.empty())
        self.assertEqual(self.texts(".verdict .badge"), ["Nothing wrong"])
        self.assertEqual(self.texts("h1"), ["Nothing was found."])
        self.assertEqual(self.texts("h2"), ["Findings", "Facts", "All blocks"])

    def test_without_a_script_a_sentence_says_why_nothing_is_shown(self):
        self.command("Emulation.setScriptExecutionDisabled", value=True)
        self.addCleanup(self.command, "Emulation.setScriptExecutionDisabled", value=False)
        self.open(pages.example())
        self.assertIn("This page draws the report with a script of its own", " ".join(self.printed().split()))


class Blocks(browser.BrowserTest):
    def test_evidence_leads_to_its_line(self):
        self.open(pages.example())
        self.one("#finding-1 .line-link").click()
        self.wait(lambda: self.focused() == "L56", "the line to have the focus")
        self.assertEqual(self.texts("#L56"), [pages.EXAMPLE["findings"][1]["evidence"][0]["text"]])
        self.assertTrue(self.run_script("return document.getElementById('B6').open"))

    def test_the_same_link_leads_there_again(self):
        self.open(pages.example())
        self.one("#finding-1 .line-link").click()
        self.wait(lambda: self.focused() == "L56", "the line to have the focus")
        self.search("dig" + Keys.TAB)
        self.assertEqual(self.shown_blocks(), ["B0", "B2", "B3"])
        self.one("#finding-1 .line-link").click()
        self.wait(lambda: self.focused() == "L56", "the line to have the focus again")

    def test_an_address_with_a_line_opens_its_block(self):
        self.open(pages.example(), "#L83")
        self.assertIn("No such file or directory", self.one(".target").text)

    def test_a_block_is_folded_and_shows_its_text_as_it_stands(self):
        self.open(pages.example())
        self.assertEqual(self.all("pre"), [])
        self.run_script("document.querySelector('#B5 summary').focus()")
        self.press(Keys.ENTER)
        self.wait(lambda: self.all("#B5 pre"), "the text")
        text = self.run_script("return document.querySelector('#B5 pre').textContent")
        self.assertEqual(text, pages.EXAMPLE["blocks"][5]["stdout"])

    def test_everything_opens_and_closes(self):
        self.open(pages.example())
        unfold, fold = [button for button in self.all(".search button") if button.text in ("Open all", "Close all")]
        unfold.click()
        self.assertEqual(len(self.all("#block-list > [open]")), 14)
        fold.click()
        self.assertEqual(len(self.all("#block-list > [open]")), 0)


class Searching(browser.BrowserTest):
    def test_filters_marks_and_counts(self):
        self.open(pages.example())
        self.search("ICMP_seq=")
        self.assertEqual(self.found(), "7 matches in 2 of 14 blocks.")
        self.assertEqual(self.one("#found").get_attribute("role"), "status")
        self.assertEqual(self.shown_blocks(), ["B4", "B5"])
        self.run_script("document.getElementById('B5').open = true")
        self.wait(lambda: self.texts("#B5 pre mark") == ["icmp_seq="] * 2, "marks")

    def test_an_open_block_follows_the_search(self):
        self.open(pages.example(), "#B5")
        self.search("time=85")
        self.assertEqual(self.texts("#B5 mark"), ["time=85"])
        self.search(Keys.BACKSPACE)
        self.assertEqual(self.texts("#B5 mark"), ["time=8"] * 2)
        self.search(Keys.ESCAPE)
        self.assertEqual(self.texts("#B5 mark"), [])

    def test_a_name_is_found_and_signs_are_only_signs(self):
        self.open(pages.example())
        self.search("(sydney router)")
        self.assertEqual(self.shown_blocks(), ["B6"])
        self.assertEqual(self.texts("#B6 summary mark"), ["(sydney router)"])
        self.search(Keys.ESCAPE + ".*")
        self.assertEqual(self.found(), "No match in 14 blocks.")

    def test_a_slash_leads_to_it_and_escape_clears_it(self):
        self.open(pages.example())
        self.press("/")
        self.assertEqual(self.focused(), "search")
        self.press("l", "/")
        self.assertEqual(self.focused("value"), "l/")
        self.press(Keys.ESCAPE)
        self.wait_for_search()
        self.assertEqual((self.focused("value"), self.focused()), ("", "search"))
        self.assertEqual(len(self.shown_blocks()), 14)

    def test_enter_goes_from_match_to_match(self):
        self.open(pages.example())
        self.search("icmp_seq=")
        for expected in ["Match 1 of 7, in " + pages.EXAMPLE["blocks"][4]["name"] + "."] + [None] * 4 + [
                "Match 6 of 7, in " + pages.EXAMPLE["blocks"][5]["name"] + "."]:
            self.press(Keys.ENTER)
            self.assertEqual(len(self.all("mark.current")), 1)
            if expected:
                self.assertEqual(self.found(), expected)
        self.one("#search").send_keys(Keys.SHIFT + Keys.ENTER)
        self.assertIn("Match 5 of 7", self.found())

    def test_a_line_that_a_search_hides_is_shown_all_the_same(self):
        self.open(pages.example())
        self.search("sydney")
        self.one("#finding-0 .line-link").click()
        self.wait(lambda: self.focused() == "L22", "the line to have the focus")
        self.assertEqual(self.one("#search").get_attribute("value"), "")


class Large(browser.BrowserTest):
    def test_five_thousand_blocks(self):
        report = pages.empty()
        report["blocks"] = [pages.block(index, 10 * index + 3, f"line one\nneedle {index}\n") for index in range(5000)]
        self.open(report)
        self.assertEqual(len(self.all("#block-list > details")), 5000)
        self.assertEqual(self.all("pre"), [])
        self.search("needle 49")
        self.assertEqual(self.found(), "111 matches in 111 of 5,000 blocks.")

    def test_megabytes_are_drawn_a_portion_at_a_time(self):
        report = pages.empty()
        report["blocks"] = [pages.block(0, 1, "".join(f"{number}\n" for number in range(100000)) + "needle\n")]
        self.open(report)
        self.run_script("document.querySelector('details').open = true")
        self.wait(lambda: self.all("pre .line"), "the text")
        drawn = len(self.all("pre .line"))
        self.assertLess(drawn, 10000)
        self.one(".part button").click()
        self.assertGreater(len(self.all("pre .line")), drawn)
        self.search("needle" + Keys.ENTER)
        self.wait(lambda: self.texts("mark.current") == ["needle"], "the match")
        self.assertFalse(self.one(".part button").is_displayed())

    def test_an_endless_line(self):
        report = pages.empty()
        report["blocks"] = [pages.block(0, 1, "x" * 3000000 + "needle")]
        self.open(report)
        self.run_script("document.querySelector('details').open = true")
        self.wait(lambda: self.all("pre .line"), "the text")
        self.assertLess(len(self.run_script("return document.querySelector('pre').textContent")), 1000000)
        self.assertEqual(self.run_script("return document.querySelectorAll('[data-number]').length"), 1)
        self.search("needle")
        self.assertEqual(self.found(), "1 match in 1 of 1 block.")


isolation.run_tests()
