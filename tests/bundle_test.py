# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""What macOS knows about the program. CMake lays a bundle out on any system; nothing is compiled here."""

import pathlib
import plistlib
import re
import shutil
import subprocess
import tempfile
import unittest

import skipping
from project import ROOT

skipping.require_modules("PIL")
import PIL.Image

ICON = ROOT / "share/macos/halvik-diagnostic.icns"
PNG = b"\x89PNG\r\n\x1a\n"  # how each picture of the icon begins
DESCRIPTION = ROOT / "share/linux/example.halvik.Diagnostic.metainfo.xml"

# A program of the same name and version, on a system that is said to be macOS, with a compiler that is never called.
PROJECT = """
cmake_minimum_required(VERSION 3.25)
{settings}
add_executable(halvik-diagnostic main.cpp)
add_executable(halvik-diagnostic-window main.cpp)
set(halvik_helpers halvik-diagnostic-window)
include("{root}/cmake/macos_bundle.cmake")
"""
PRETENCE = ["-D", "CMAKE_SYSTEM_NAME=Darwin", "-D", "CMAKE_CXX_COMPILER_FORCED=ON"]
TOOLS = ["CMAKE_CXX_COMPILER", "CMAKE_AR", "CMAKE_RANLIB", "CMAKE_INSTALL_NAME_TOOL"]


def settings():
    """What comes before the bundle in the build file: the oldest macOS and the version."""
    text = (ROOT / "CMakeLists.txt").read_text()
    return "\n".join(re.search(pattern, text, re.M).group()
                     for pattern in (r"^set\(CMAKE_OSX_DEPLOYMENT_TARGET[^)]*\)", r"^project\([^)]*\)"))


class Bundle(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        (cls.folder / "share").symlink_to(ROOT / "share")
        (cls.folder / "main.cpp").touch()
        (cls.folder / "CMakeLists.txt").write_text(PROJECT.format(root=ROOT, settings=settings()))
        tools = [f"-D{tool}=/bin/true" for tool in TOOLS]
        subprocess.run(["cmake", "-G", "Ninja", "-S", cls.folder, "-B", cls.folder / "build", *PRETENCE, *tools],
                       check=True, capture_output=True)
        cls.bundle = cls.folder / "build/halvik-diagnostic.app"
        cls.facts = plistlib.loads((cls.bundle / "Contents/Info.plist").read_bytes())

    def test_facts(self):
        description = DESCRIPTION.read_text()
        version = re.search(r"^project\(\S+ VERSION (\S+)", settings(), re.M).group(1)
        self.assertIn(f"<id>{self.facts['CFBundleIdentifier']}</id>", description)
        self.assertIn(f"<name>{self.facts['CFBundleName']}</name>", description)
        self.assertEqual(self.facts["CFBundleDisplayName"], self.facts["CFBundleName"])
        self.assertEqual(self.facts["CFBundleVersion"], version)
        self.assertEqual(self.facts["CFBundleShortVersionString"], version)
        self.assertEqual(self.facts["CFBundleExecutable"], "halvik-diagnostic")
        self.assertEqual(self.facts["CFBundlePackageType"], "APPL")
        self.assertEqual(self.facts["LSMinimumSystemVersion"], "11.0")
        self.assertNotIn("", self.facts.values())

    def test_the_icon_is_built_into_it(self):
        self.assertEqual(self.facts["CFBundleIconFile"], ICON.name)
        rules = (self.folder / "build/build.ninja").read_text()
        self.assertIn(f"build halvik-diagnostic.app/Contents/Resources/{ICON.name}:", rules)


class Icon(unittest.TestCase):
    def test_has_a_picture_of_each_size(self):
        with PIL.Image.open(ICON) as icon:
            sizes = sorted(icon.info["sizes"])
        self.assertEqual(sizes, [(16, 16, 2), (32, 32, 2), *((side, side, scale) for side in (128, 256, 512)
                                                             for scale in (1, 2))])
        for width, height, scale in sizes:
            with PIL.Image.open(ICON) as icon:
                icon.size = width, height, scale
                icon.load()
                self.assertEqual(icon.size, (width * scale, height * scale))
        self.assertEqual(ICON.read_bytes().count(PNG), len(sizes))


if __name__ == "__main__":
    unittest.main()
