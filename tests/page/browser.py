# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A real browser that shows pages of halvik-report from files, and lists every request and complaint."""

import base64
import json
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import polling
import skipping

skipping.require_tools("chromium", "chromedriver", "pdftotext")
skipping.require_modules("selenium")
from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

import pages

OPTIONS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
           "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage"]


class BrowserTest(unittest.TestCase):
    """Opens pages in one browser. After each test there was no request but for the page's file, and no complaint."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which("chromium")
        for option in [*OPTIONS, f"--user-data-dir={cls.folder}/profile"]:
            options.add_argument(option)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        cls.driver = webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)
        cls.addClassCleanup(cls.driver.quit)

    def setUp(self):
        self.media()
        self.resize(1280)
        self.driver.get("about:blank")
        self.complaints()
        self.requests()
        self.addCleanup(self.check_quiet)

    def check_quiet(self):
        self.assertEqual(self.complaints(), [])
        self.assertEqual([url for url in self.requests() if url != self.url], [])

    def complaints(self):
        """What the console says, violations of the page's policy among it."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self):
        """The addresses that were asked for since the last call, but for those that the page's policy forbade."""
        messages = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        forbidden = [message["params"]["requestId"] for message in messages
                     if message["method"] == "Network.loadingFailed" and message["params"].get("blockedReason") == "csp"]
        return [message["params"]["request"]["url"] for message in messages
                if message["method"] == "Network.requestWillBeSent" and message["params"]["requestId"] not in forbidden]

    def command(self, name, **parameters):
        return self.driver.execute_cdp_cmd(name, parameters)

    def resize(self, width, height=900):
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def media(self, scheme="light", kind="screen"):
        self.command("Emulation.setEmulatedMedia", media=kind, features=[{"name": "prefers-color-scheme", "value": scheme}])

    def open(self, report, hash=""):
        """Shows the page of a report, given as --json has it."""
        self.open_text(pages.page_of(report), hash)

    def open_text(self, page, hash=""):
        path = self.folder / "page.html"
        path.write_text(page, encoding="utf-8", newline="")
        self.url = path.as_uri()
        self.driver.get("about:blank")
        self.driver.get(self.url + hash)

    def run_script(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def wait(self, condition, what):
        WebDriverWait(self.driver, polling.GUARD_SECONDS, poll_frequency=0.02).until(lambda _: condition(), what)

    def one(self, selector):
        return self.driver.find_element("css selector", selector)

    def all(self, selector):
        return self.driver.find_elements("css selector", selector)

    def texts(self, selector):
        return self.run_script("return Array.from(document.querySelectorAll(arguments[0]), (one) => one.textContent)", selector)

    def press(self, *keys):
        webdriver.ActionChains(self.driver).send_keys(*keys).perform()

    def focused(self, property="id"):
        return self.run_script("return document.activeElement[arguments[0]]", property)

    def printed(self):
        """The text of the page on paper."""
        pdf = base64.b64decode(self.command("Page.printToPDF")["data"])
        return subprocess.run(["pdftotext", "-layout", "-", "-"], input=pdf, capture_output=True, check=True).stdout.decode()

    def found(self):
        return self.one("#found").text

    def search(self, text):
        self.one("#search").send_keys(text)
        self.wait_for_search()

    def wait_for_search(self):
        self.wait(lambda: not self.all("#blocks[aria-busy]"), "the search to end")

    def shown_blocks(self):
        return self.run_script("return Array.from(document.querySelectorAll('#block-list > :not([hidden])'), (one) => one.id)")
