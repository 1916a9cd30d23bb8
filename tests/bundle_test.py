# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""What macOS knows about the program. CMake lays a bundle out on any system; nothing is compiled here."""

import pathlib
import plistlib
import re
import shutil
import struct
import subprocess
import tempfile
import unittest

from project import ROOT

ICON = ROOT / "share/macos/halvik-diagnostic.icns"
DESCRIPTION = ROOT / "share/linux/example.halvik.Diagnostic.metainfo.xml"

# A program of the same name and version, on a system that is said to be macOS, with a compiler that is never called.
PROJECT = """
cmake_minimum_required(VERSION 3.25)
{settings}
add_executable(halvik-diagnostic main.cpp)
add_executable(halvik-diagnostic-upload main.cpp)
set(halvik_companions halvik-diagnostic-upload)
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
        content = ICON.read_bytes()
        self.assertEqual((content[:4], *struct.unpack(">I", content[4:8])), (b"icns", len(content)))
        sizes = {}
        at = 8
        while at < len(content):
            name, length = content[at:at + 4], struct.unpack(">I", content[at + 4:at + 8])[0]
            picture = content[at + 8:at + length]
            self.assertEqual(picture[:8], b"\x89PNG\r\n\x1a\n")
            sizes[name] = struct.unpack(">II", picture[16:24])
            at += length
        expected = {b"ic11": 32, b"ic12": 64, b"ic07": 128, b"ic08": 256, b"ic09": 512, b"ic10": 1024}
        self.assertEqual(sizes, {name: (size, size) for name, size in expected.items()})


if __name__ == "__main__":
    unittest.main()
