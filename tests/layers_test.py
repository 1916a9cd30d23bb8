# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Every include points to a lower layer, or stays in its layer without going in a circle. What only some systems have
stays in the folder of those systems."""

import re
import unittest

from project import ROOT

# From the bottom to the top. An include points down this list, or stays in its folder.
LAYERS = ("text", "platform", "ui", "report", "diagnostics", "app")
# The reader of reports stands beside the program, in layers of its own.
READER_LAYERS = ("reader/parse/", "reader/facts/", "reader/rules/", "reader/output/", "reader/")
# What it uses of the program: the plan and its endpoints.
SHARED = "diagnostics/"
SYSTEM_INCLUDE = re.compile(r"^#include <([^>]+)>", re.M)
# Headers of the language, but for that of signals, and of Qt.
EVERYWHERE = re.compile(r"(?!csignal$)[a-z_]+|Q(?!Network|Ssl)\w+")
READER_LIBRARIES = re.compile(r"CLI/CLI\.hpp|nlohmann/json(_fwd)?\.hpp")
# Headers of POSIX, and that of a terminal's size, which Linux and macOS share.
POSIX = re.compile(r"(dlfcn|fcntl|poll|pthread|pwd|spawn|strings|unistd|sys/(ioctl|resource|stat|time|types|uio|wait))\.h")
# What the C library of Linux offers besides, in headers that POSIX has as well.
ONLY_ON_LINUX = re.compile(
    r"\b(accept4|clone|close_range|dup3|mkostemp|pipe2|program_invocation\w*|splice|statx|syscall|\w+_np|F_SETPIPE_SZ"
    r"|MADV_\w+|O_PATH)\b|/proc/"
)


def layer(name):
    """Its methods stand in the folders of their subjects, but the controller belongs to the highest layer."""
    folder, _, file = name.partition("/")
    return len(LAYERS) if file.startswith("main_controller_") else LAYERS.index(folder)


def sources():
    for folder in (*LAYERS, "reader"):
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(ROOT).as_posix(), path.read_text()


class Layers(unittest.TestCase):
    def setUp(self):
        self.sources = dict(sources())
        self.includes = {
            name: re.findall(r'^#include "([^"]+)"', text, re.M)
            for name, text in self.sources.items()
        }
        self.assertGreater(len(self.sources), 40)

    def test_includes_never_point_up(self):
        wrong = [
            f"{name} includes {included}"
            for name, all_included in self.includes.items()
            for included in all_included
            if not name.startswith("reader/") and layer(included) > layer(name)
        ]
        self.assertEqual(wrong, [])

    def test_the_reader_stands_beside_the_program(self):
        def reader_layer(name):
            return next(number for number, folder in enumerate(READER_LAYERS) if name.startswith(folder))

        for name, all_included in self.includes.items():
            for included in all_included:
                if not name.startswith("reader/"):
                    self.assertFalse(included.startswith("reader/"), f"{name} includes {included}")
                elif included.startswith("reader/"):
                    self.assertLessEqual(reader_layer(included), reader_layer(name), f"{name} includes {included}")
                else:
                    self.assertTrue(included.startswith(SHARED), f"{name} includes {included}")

    def test_includes_go_in_no_circle(self):
        done = set()

        def visit(name, path):
            self.assertNotIn(name, path)
            if name not in done:
                for included in self.includes[name]:
                    visit(included, path + [name])
                done.add(name)

        for name in self.includes:
            visit(name, [])

    def foreign_includes(self, sources, allowed):
        return [
            f"{name} includes <{header}>"
            for name in sources
            for header in SYSTEM_INCLUDE.findall(self.sources[name])
            if not any(headers.fullmatch(header) for headers in allowed)
        ]

    def test_system_headers_stay_in_platform(self):
        above = [name for name in self.sources if not name.startswith(("text/", "platform/", "reader/"))]
        self.assertEqual(self.foreign_includes(above, [EVERYWHERE]), [])
        reader = [name for name in self.sources if name.startswith("reader/")]
        self.assertEqual(self.foreign_includes(reader, [re.compile("[a-z_]+"), READER_LIBRARIES]), [])

    def test_libraries_stay_in_their_folders(self):
        def users(pattern):
            return {name.rpartition("/")[0] for name, text in self.sources.items()
                    if any(re.fullmatch(pattern, header) for header in SYSTEM_INCLUDE.findall(text))}

        self.assertEqual(users(r"curl/.*"), {"platform/http"})
        self.assertLessEqual(users(r"uv\.h"), {"platform/event_loop", "platform/files", "platform/process"})
        self.assertEqual(users(r"Q\w+"), {"platform/desktop", "ui"})

    def test_what_is_linuxs_own_is_in_files_that_say_so(self):
        portable = [name for name in self.sources
                    if not name.endswith("_linux.cpp") and not name.startswith("reader/")]
        libraries = re.compile(r"csignal|curl/curl\.h|uv\.h")
        self.assertEqual(self.foreign_includes(portable, [EVERYWHERE, POSIX, libraries]), [])
        wrong = [
            f"{name} uses {found.group()}"
            for name in portable
            for found in ONLY_ON_LINUX.finditer(self.sources[name])
        ]
        self.assertEqual(wrong, [])

    def test_each_system_has_the_same_parts(self):
        def parts(system):
            return {name.removesuffix(f"_{system}.cpp") for name in self.sources if name.endswith(f"_{system}.cpp")}

        self.assertEqual(parts("linux"), parts("posix"))
        for part in parts("linux"):
            self.assertIn(f"{part}.h", self.sources)


if __name__ == "__main__":
    unittest.main()
