# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The Debian package of the reader of reports, which needs no Qt and works from where it is unpacked."""

import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import builds
from project import ROOT

BUILD = builds.folder()
FILES = """
usr/bin/halvik-report
usr/share/bash-completion/completions/halvik-report
usr/share/doc/halvik-report/changelog.gz
usr/share/doc/halvik-report/copyright
usr/share/doc/halvik-report/halvik-report.schema.json
usr/share/fish/vendor_completions.d/halvik-report.fish
usr/share/man/man1/halvik-report.1.gz
usr/share/zsh/vendor-completions/_halvik-report
""".split()


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class ReaderPackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-reader-package-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        output("cpack", "--config", BUILD / "CPackReaderConfig.cmake", "-B", cls.folder / "made")
        cls.package, = (cls.folder / "made").glob("*.deb")
        output("dpkg-deb", "--extract", cls.package, cls.folder / "tree")

    def test_files(self):
        tree = self.folder / "tree"
        found = [path.relative_to(tree) for path in tree.rglob("*") if not path.is_dir()]
        self.assertEqual(sorted(map(str, found)), FILES)

    def test_needs_no_qt(self):
        depends = output("dpkg-deb", "--field", self.package, "Depends")
        self.assertRegex(depends, "libstdc")
        self.assertNotRegex(depends, "(?i)qt|curl|dnsutils")

    def test_works(self):
        program = self.folder / "tree/usr/bin/halvik-report"
        self.assertIn("Nothing found.", output(program, ROOT / "tests/unit/reader/data/clear.txt"))

    def test_what_checks_packages_finds_nothing_wrong(self):
        ended = subprocess.run(["lintian", "--fail-on", "error,warning", self.package], capture_output=True, text=True)
        self.assertEqual((ended.stdout, ended.returncode), ("", 0))


class ManualPage(unittest.TestCase):
    def test_is_well_formed(self):
        page = BUILD / "halvik-report.1"
        self.assertEqual(subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page], capture_output=True,
                                        text=True).stdout, "")

    def test_options_are_those_of_the_program(self):
        usage = output(builds.report_reader(), "--help")
        options = set(re.findall(r"(?<![\w-])--[a-z]+", usage))
        self.assertIn("--json", options)
        page = (ROOT / "docs/halvik-report.1.in").read_text()
        self.assertEqual({f"--{word}" for word in re.findall(r"Fl -(\w+)", page)}, options)
        for shell in ("bash", "zsh"):
            completions = (ROOT / f"share/completions/halvik-report.{shell}").read_text()
            self.assertEqual(set(re.findall(r"(?<![\w-])--[a-z]+", completions)), options)

    def test_findings_are_those_of_the_rules(self):
        rules = "".join(path.read_text() for path in (ROOT / "reader/rules").glob("*.cpp"))
        ids = re.findall(r'\.id = "([a-z0-9-]+)"', rules)
        self.assertGreater(len(ids), 30)
        table = re.findall(r"^\| `([a-z0-9-]+)` \|", (ROOT / "docs/reading-reports.md").read_text(), re.MULTILINE)
        self.assertEqual(sorted(table), sorted(ids))


if __name__ == "__main__":
    unittest.main()
