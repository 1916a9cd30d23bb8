# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the manual page, the README and the lists of changes say about the program, held against the program itself."""

import datetime
import email.utils
import pathlib
import re
import subprocess
import tempfile
import unittest
import unittest.mock
import xml.etree.ElementTree

import manual_page
import option_table
import result_pages
import skipping
from project import ROOT, version

METAINFO = ROOT / "share/linux/example.halvik.Diagnostic.metainfo.xml"


class Options(unittest.TestCase):
    """Each place lists each option, in every way to write it, and of no other."""

    def assert_complete(self, written):
        self.assertEqual(sorted(map(sorted, written)), sorted(map(sorted, option_table.signatures())))

    def test_manual_page(self):
        self.assert_complete(manual_page.options())

    def test_synopsis(self):
        """It shows the short way, and may leave the other ways out."""
        shown = manual_page.words_of_synopsis()
        for written in option_table.signatures():
            self.assertIn(written[0], shown)
        self.assertLessEqual(set(shown), set(option_table.words()))

    def test_readme(self):
        table = re.search(r"^\| Option \| Effect \|\n\|---\|---\|\n((?:\|.*\n)+)", (ROOT / "README.md").read_text(),
                          re.MULTILINE)[1]
        cells = [row.split("|")[1] for row in table.splitlines()]
        self.assert_complete([[re.sub("=[A-Z]+$", "=", word) for word in re.findall(r"`(\S+)`", cell)]
                              for cell in cells])


class Playbooks(unittest.TestCase):
    """Each option of the Ansible role is described, has a value of its own and is in the administrators' page."""

    def names(self, path, pattern):
        return sorted(re.findall(pattern, (ROOT / path).read_text(), re.MULTILINE))

    def test_options(self):
        role = "share/ansible/roles/halvik_diagnostic"
        described = self.names(f"{role}/meta/argument_specs.yml", r"^      (halvik_diagnostic_\w+):$")
        self.assertGreater(len(described), 10)
        self.assertEqual(self.names(f"{role}/defaults/main.yml", r"^(halvik_diagnostic_\w+):"), described)
        self.assertEqual(self.names("docs/many-machines.md", r"^\| `(halvik_diagnostic_\w+)` \|"), described)


class Pages(unittest.TestCase):
    PAGES = [path for pattern in ("*.md", "docs/**/*.md", "lab/*.md", "reader/page/*.md")
             for path in ROOT.glob(pattern)]

    def test_each_says_whom_it_is_for(self):
        self.assertGreater(len(self.PAGES), 10)
        for path in self.PAGES:
            with self.subTest(path):
                self.assertRegex(path.read_text().split("\n\n")[1], "^For |is for ")

    def test_links_lead_to_files(self):
        for path in self.PAGES:
            for link in re.findall(r"\]\(([^)#]+)", path.read_text()):
                with self.subTest(path, link=link):
                    self.assertTrue(link.startswith("https:") or (path.parent / link).exists())

    def test_saved_results_say_how_they_came_about(self):
        with tempfile.TemporaryDirectory() as name, \
                unittest.mock.patch.object(result_pages, "FOLDER", pathlib.Path(name) / "new"), \
                unittest.mock.patch.object(result_pages, "commit", lambda: "abc1234-dirty"):
            result_pages.save("some", "Some", "bench/some -r 3", "\n## Table\n", ["libc6"])
            text = (result_pages.FOLDER / "some.md").read_text()
        self.assertRegex(text, r"\A# Some\n\nFor developers\. Written by `bench/some -r 3`,\n"
                               r"with commit abc1234-dirty on \d{4}-\d\d-\d\d\.\n\n"
                               r"Machine: .+; libc6 \S+\n\n## Table\n\Z")


class ManualPage(unittest.TestCase):
    def test_is_well_formed(self):
        ended = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", manual_page.path()], capture_output=True,
                               text=True)
        self.assertEqual(ended.stdout, "")

    def test_foot_bears_the_version(self):
        self.assertEqual(manual_page.foot(), f"Halvik Diagnostic {version()}")

    def test_sections(self):
        for section in ("OPTIONS", "WHAT IS COLLECTED", "WHERE IT GOES", "ENVIRONMENT", "FILES", "EXIT STATUS",
                        "EXAMPLES"):
            self.assertTrue(manual_page.section(section), section)

    def test_messages_are_those_of_the_program(self):
        sources = "".join(path.read_text() for folder in ("app", "platform", "report")
                          for path in (ROOT / folder).rglob("*.cpp"))
        literals = re.sub(r'"\s*\n\s*"', "", sources)
        messages = manual_page.items("DIAGNOSTICS")
        self.assertGreater(len(messages), 2)
        for message in messages:
            self.assertIn(f'"{message}', literals)


class Releases(unittest.TestCase):
    """The version and the day of the latest release, wherever they are written down."""

    def test_changelogs(self):
        release = xml.etree.ElementTree.parse(METAINFO).getroot().find("releases/release")
        self.assertEqual(release.get("version"), version())
        day = datetime.date.fromisoformat(release.get("date"))

        headings = re.findall(r"^## (.*)$", (ROOT / "CHANGELOG.md").read_text(), re.MULTILINE)
        self.assertEqual([line for line in headings if line != "Unreleased"][0], f"{version()} ({day})")

        entry = (ROOT / "packaging/debian/changelog").read_text().split("\n\nhalvik-diagnostic (")[0]
        self.assertIn(f"halvik-diagnostic ({version()}) ", entry.splitlines()[0])
        time = re.search(r"^ -- .*>  (.*)$", entry, re.MULTILINE)[1]
        self.assertEqual(email.utils.parsedate_to_datetime(time).date(), day)


if __name__ == "__main__":
    skipping.require_tools("mandoc")
    unittest.main()
