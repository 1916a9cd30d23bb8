# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""What a desktop knows about the program: its entry in the menu, its description and its icon."""

import configparser
import io
import subprocess
import unittest
import xml.etree.ElementTree

import project
import skipping

skipping.require_modules("PIL")
import PIL.Image
import PIL.ImageChops

SHARE = project.ROOT / "share/linux"
PROGRAM = "halvik-diagnostic"
ENTRY = SHARE / f"{PROGRAM}.desktop"
ICON = SHARE / f"{PROGRAM}.svg"
ID = "example.halvik.Diagnostic"
DESCRIPTION = SHARE / f"{ID}.metainfo.xml"

SVG = "{http://www.w3.org/2000/svg}"


def elements(path):
    return xml.etree.ElementTree.parse(path).getroot()


class Validators(unittest.TestCase):
    def check(self, *command):
        ended = subprocess.run(command, capture_output=True, text=True)
        self.assertEqual(ended.returncode, 0, ended.stdout + ended.stderr)
        return ended.stdout

    def test_entry(self):
        self.assertEqual(self.check("desktop-file-validate", ENTRY), "")

    def test_description(self):
        output = self.check("appstreamcli", "validate", "--no-net", "--no-color", DESCRIPTION)
        self.assertNotRegex(output, r"(?m)^[EW]:")


class Agreement(unittest.TestCase):
    def setUp(self):
        parser = configparser.ConfigParser(interpolation=None)
        parser.optionxform = str
        parser.read(ENTRY)
        self.entry = parser["Desktop Entry"]
        self.description = elements(DESCRIPTION)

    def text(self, path):
        return self.description.findtext(path)

    def test_entry(self):
        self.assertEqual(self.entry["Name"], "Halvik Diagnostic")
        # Without any option: the program opens its window.
        self.assertEqual(self.entry["Exec"], PROGRAM)
        self.assertEqual(self.entry["Icon"], ICON.stem)
        self.assertEqual(self.entry["StartupWMClass"], PROGRAM)
        self.assertEqual(self.entry["Terminal"], "false")

    def test_description(self):
        self.assertEqual(self.text("id"), ID)
        self.assertEqual(self.text("name"), self.entry["Name"])
        self.assertEqual(self.text("launchable"), ENTRY.name)
        self.assertEqual(self.text("icon"), self.entry["Icon"])
        self.assertEqual(self.text("provides/binary"), PROGRAM)
        self.assertEqual(self.text("metadata_license"), "CC0-1.0")
        self.assertEqual(self.text("project_license"), "Apache-2.0")
        categories = [element.text for element in self.description.findall("categories/category")]
        self.assertEqual(categories, self.entry["Categories"].rstrip(";").split(";"))

    def test_the_latest_release_is_the_version_that_is_built(self):
        name, version = project.name_and_version()
        self.assertEqual(name, PROGRAM)
        releases = self.description.findall("releases/release")
        self.assertEqual(releases[0].get("version"), version)
        dates = [release.get("date") for release in releases]
        self.assertEqual(dates, sorted(dates, reverse=True))


class Icon(unittest.TestCase):
    def test_is_a_square_picture_that_needs_nothing_else(self):
        root = elements(ICON)
        self.assertEqual(root.tag, SVG + "svg")
        left, top, width, height = map(float, root.get("viewBox").split())
        self.assertEqual((left, top, width), (0, 0, height))
        self.assertEqual(root.findtext(SVG + "title"), "Halvik Diagnostic")
        known = {"svg", "title", "defs", "linearGradient", "stop", "g", "rect", "circle", "ellipse", "path"}
        self.assertLessEqual({element.tag.removeprefix(SVG) for element in root.iter()}, known)
        self.assertNotIn("href", ICON.read_text())

    def test_is_there_in_the_sizes_that_desktops_ask_for(self):
        for size in (48, 64, 128):
            with self.subTest(size):
                kept = PIL.Image.open(ICON.with_name(f"{PROGRAM}-{size}.png"))
                drawn = subprocess.run(["rsvg-convert", f"--width={size}", f"--height={size}", ICON],
                                       stdout=subprocess.PIPE, check=True).stdout
                # Other versions smooth edges in other ways.
                difference = PIL.ImageChops.difference(kept, PIL.Image.open(io.BytesIO(drawn)))
                self.assertEqual((kept.size, kept.mode), ((size, size), "RGBA"))
                self.assertLess(max(high for _, high in difference.getextrema()), 32)


if __name__ == "__main__":
    skipping.require_tools("desktop-file-validate", "appstreamcli", "rsvg-convert")
    unittest.main()
