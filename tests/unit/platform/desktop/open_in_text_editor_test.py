# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""open_in_text_editor: a file in the application for plain text, with applications that only note what they open."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from project import ROOT
from skipping import require_tools

SCRIPT = ROOT / "platform/desktop/open_in_text_editor"
WEB_PAGE = "<!DOCTYPE html>\n<html><body>Hotel network</body></html>\n"


class OpenInTextEditorTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.data = self.folder / "data"
        self.shared = self.folder / "shared"
        self.tools = self.folder / "tools"
        for folder in (self.data / "applications", self.shared / "applications", self.tools):
            folder.mkdir(parents=True)
        self.notes = self.folder / "notes"
        os.mkfifo(self.notes)
        self.write_application(self.data, "browser")
        self.write_tool("xdg-open")

    def write_tool(self, name, line=""):
        tool = self.tools / name
        tool.write_text(f'#!/bin/sh\n{line}\necho "{name} $#:$*" >"{self.notes}"\n')
        tool.chmod(0o755)

    def write_application(self, data, name):
        self.write_tool(name)
        (data / "applications" / f"{name}.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName={name}\nExec={self.tools}/{name} %f\n")

    def choose(self, choices):
        (self.data / "applications" / "mimeapps.list").write_text(f"[Default Applications]\n{choices}\n")

    def opened(self, name="diagnostic_results.txt", path=None):
        """What is started for a file of this name that looks like a web page."""
        file = self.folder / name
        file.write_text(WEB_PAGE)
        environment = {"PATH": path or f"{self.tools}:/usr/bin:/bin", "HOME": str(self.folder),
                       "XDG_DATA_HOME": str(self.data), "XDG_DATA_DIRS": f"/nonexistent:{self.shared}"}
        process = subprocess.Popen([SCRIPT, file], env=environment, stdin=subprocess.DEVNULL)
        with open(self.notes) as notes:
            noted = notes.read()
        process.wait()
        application, _, arguments = noted.rstrip("\n").partition(" ")
        self.assertEqual(arguments, f"1:{file}")
        return application

    def test_a_report_that_looks_like_a_web_page(self):
        self.write_application(self.data, "editor")
        self.choose("text/html=browser.desktop\ntext/plain=editor.desktop")
        self.assertEqual(self.opened(), "editor")
        self.assertEqual(self.opened("results of $HOME;'\"`x`.txt"), "editor")

    def test_an_application_of_the_whole_system(self):
        self.write_application(self.shared, "editor")
        self.choose("text/html=browser.desktop\ntext/plain=editor.desktop")
        self.assertEqual(self.opened(), "editor")

    def test_without_an_application_for_text(self):
        self.choose("text/html=browser.desktop")
        self.assertEqual(self.opened(), "xdg-open")

    def test_an_application_that_is_not_there(self):
        self.choose("text/plain=editor.desktop")
        self.assertEqual(self.opened(), "xdg-open")

    def test_without_gio(self):
        self.write_application(self.data, "editor")
        self.choose("text/plain=editor.desktop")
        (self.tools / "xdg-mime").write_text("#!/bin/sh\necho editor.desktop\n")
        (self.tools / "xdg-mime").chmod(0o755)
        (self.tools / "sh").symlink_to("/bin/sh")
        self.assertEqual(self.opened(path=str(self.tools)), "xdg-open")


if __name__ == "__main__":
    require_tools("gio", "xdg-mime")
    unittest.main()
