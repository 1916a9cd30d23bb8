# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The window in the lab: from what its user types to the page on which support reads the report."""

import html.parser
import os
import pathlib

import builds
import endpoints
import labs
import plan
import polling
import report_text
import skipping

skipping.require_tools("Xvfb", "xdotool", "xclip", "chromium", "xdg-open", "file")
skipping.require_modules("PIL", "Xlib")
import windows

import machine

# The results page shows the report as it came, not the page that halvik-report makes.
os.environ["HALVIK_REPORT"] = os.devnull
DOMAIN = "shop.example"
ADDRESS = "https://diagnostic.halvik.example/results/1"
FALLBACK = f"{machine.HOME}/Desktop/diagnostic_results.txt"
HEAD = b"Halvik account: acme-office\nHalvik ticket: 48151\n"

# What the user of the lab has chosen: for pages a browser that needs no screen, and writes down what it shows; for text
# an editor that notes the file and what is in it.
APPLICATIONS = {
    "browser": 'chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run '
               '--disable-background-networking --disable-component-update --disable-sync --dump-dom "$1"',
    "editor": 'echo "$1"; cat "$1"',
}
CHOICES = """[Default Applications]
x-scheme-handler/https=browser.desktop
text/plain=editor.desktop
"""


class Page(html.parser.HTMLParser):
    """The title of a results page, and the report on it."""

    def __init__(self, text):
        super().__init__()
        self.texts = {"title": "", "pre": ""}
        self._tag = None
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attrs):
        self._tag = tag

    def handle_endtag(self, tag):
        self._tag = None

    def handle_data(self, data):
        if self._tag in self.texts:
            self.texts[self._tag] += data


class LabWindowTest(windows.WindowedTest):
    def setUp(self):
        super().setUp()
        self.lab("up")
        self.addCleanup(self.lab, "down")
        self.uploads = pathlib.Path(self.lab("uploads").rstrip("\n"))
        for name, line in APPLICATIONS.items():
            # Whole, or not there: the test looks for what an application has written.
            self.write(f"programs/{name}",
                       f"#!/bin/sh\ncd\n{{ {line}; }} >{name}.new 2>/dev/null && mv {name}.new {name}.shown\n")
            self.lab("shell", "chmod", "755", f"{machine.HOME}/programs/{name}")
            self.write(f".local/share/applications/{name}.desktop",
                       f"[Desktop Entry]\nType=Application\nName={name}\nExec={machine.HOME}/programs/{name} %u\n")
        self.write(".config/mimeapps.list", CHOICES)

    def lab(self, *words):
        ended = labs.run(*words)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""), words)
        return ended.stdout

    def write(self, path, text):
        """Writes a file into the home of the lab's user."""
        self.lab("shell", "sh", "-c", 'cd; mkdir -p "$(dirname "$1")"; printf %s "$2" >"$1"', "sh", path, text)

    def read(self, path):
        return labs.run("shell", "cat", path, text=False).stdout

    def shown(self, name):
        """What an application has shown, as soon as it has shown something new."""
        path = f"{machine.HOME}/{name}.shown"
        polling.wait_until(lambda: labs.run("shell", "test", "-e", path).returncode == 0, f"the {name} shows something",
                           self.process)
        return self.read(path)

    def open_program(self):
        self.process = self.start(labs.LAB, ["run"], env={
            "HALVIK_DIAGNOSTIC": builds.program(), "HALVIK_ENDPOINTS": os.environ.get("HALVIK_ENDPOINTS")})
        self.window = self.screen.wait_for_window(windows.TITLE, self.process)

    def watch_progress(self, row):
        """What the window shows, one after the other, in the left half of this row until a run has ended."""
        seen = []

        def has_ended():
            picture = self.window.picture()
            line = picture.image.crop((row.left, row.top, row.right // 2, row.bottom))
            if line not in seen:
                seen.append(line)
            return picture.text

        polling.wait_until(has_ended, "the outcome is shown", self.process)
        return seen

    def outcome(self):
        """The text of the results, as its user takes it into another program."""
        self.screen.copy(b"of another program")
        self.window.press("alt+d", "Tab", "Tab", "ctrl+a", "ctrl+c")
        polling.wait_until(lambda: self.screen.clipboard() not in (None, b"of another program"), "it is copied",
                           self.process)
        return self.screen.clipboard()

    def assert_whole_report(self, report):
        self.assertEqual(report[:len(HEAD)], HEAD)
        names = [name.decode() for name, _ in report_text.blocks(report[len(HEAD):])]
        self.assertEqual(names, plan.display_names(endpoints.roles(), domain=DOMAIN))

    def test_from_the_fields_to_the_results_page_and_to_the_fallback(self):
        self.open_program()
        *_, status = self.wait_until_painted().rows()  # later on the left of the start button
        self.window.fill(account="acme-office", ticket="48151", domain=DOMAIN)
        self.window.press("Return")
        self.assertGreater(len(self.watch_progress(status)), 3)
        self.window.wait_for(lambda picture: picture.link, "the link is shown")
        self.assertEqual(self.outcome(), f"See results at {ADDRESS}".encode())
        self.window.press("alt+c")
        self.screen.wait_for_clipboard(ADDRESS.encode())
        self.window.press("alt+o")
        page = Page(self.shown("browser").decode())
        report = (self.uploads / "1/report").read_bytes()
        self.assert_whole_report(report)
        self.assertEqual(page.texts["title"], "Results 1")
        self.assert_same_text(page.texts["pre"].encode(), report)

        self.lab("scenario", "submission-500")
        self.window.press("alt+s")
        self.window.wait_for(lambda picture: not picture.results, "the results of the run before are gone")
        self.watch_progress(status)
        opened, _, text = self.shown("editor").partition(b"\n")
        self.assertIsNone(self.window.picture().link)
        self.assertEqual(self.outcome(), b"There was an error submitting the results")
        self.assertEqual(opened.decode(), FALLBACK)
        self.assert_whole_report(text)
        self.assert_same_text(self.read(FALLBACK), text)
        self.assert_same_text((self.uploads / "2/report").read_bytes(), text)

        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout), (0, b""))
        refused, saved = ended.stderr.decode().splitlines()
        self.assertRegex(refused, "server replied: 500 Internal Server Error$")
        self.assertRegex(saved, f"saving the report to {FALLBACK}$")


labs.run_tests()
