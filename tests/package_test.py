# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The Debian package that cpack makes of this build."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import builds
import endpoints
import plan
import project
import skipping

BUILD = builds.folder()
LIBRARIES = "usr/lib/*/qt6/plugins"

FILES = """
usr/bin/halvik-diagnostic
usr/libexec/halvik-diagnostic/halvik-diagnostic-window
usr/libexec/halvik-diagnostic/halvik-upload.so
usr/libexec/halvik-diagnostic/open_in_text_editor
usr/libexec/halvik-diagnostic/scutil
usr/libexec/halvik-diagnostic/system_profiler
usr/share/applications/halvik-diagnostic.desktop
usr/share/bash-completion/completions/halvik-diagnostic
usr/share/doc/halvik-diagnostic/changelog.gz
usr/share/doc/halvik-diagnostic/copyright
usr/share/fish/vendor_completions.d/halvik-diagnostic.fish
usr/share/halvik-diagnostic/ansible/ansible.cfg
usr/share/halvik-diagnostic/ansible/collect.yml
usr/share/halvik-diagnostic/ansible/install.yml
usr/share/halvik-diagnostic/ansible/roles/halvik_diagnostic/defaults/main.yml
usr/share/halvik-diagnostic/ansible/roles/halvik_diagnostic/meta/argument_specs.yml
usr/share/halvik-diagnostic/ansible/roles/halvik_diagnostic/meta/main.yml
usr/share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/collect.yml
usr/share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/install.yml
usr/share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/main.yml
usr/share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/prepare.yml
usr/share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/read.yml
usr/share/icons/hicolor/128x128/apps/halvik-diagnostic.png
usr/share/icons/hicolor/48x48/apps/halvik-diagnostic.png
usr/share/icons/hicolor/64x64/apps/halvik-diagnostic.png
usr/share/icons/hicolor/scalable/apps/halvik-diagnostic.svg
usr/share/man/man1/halvik-diagnostic.1.gz
usr/share/metainfo/example.halvik.Diagnostic.metainfo.xml
usr/share/zsh/vendor-completions/_halvik-diagnostic
""".split()


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, env={**os.environ, "LC_ALL": "C"}).stdout


def make(folder, umask=0o022, **settings):
    """Has cpack make the package in a folder; its path."""
    environment = {name: value for name, value in os.environ.items() if name != "SOURCE_DATE_EPOCH"}
    ended = subprocess.run(["cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder], umask=umask,
                           env={**environment, **settings}, capture_output=True, text=True)
    if ended.returncode != 0:
        raise AssertionError(ended.stdout + ended.stderr)
    path, = folder.glob("*.deb")
    return path


def setUpModule():
    global folder, package
    folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-package-"))
    unittest.addModuleCleanup(shutil.rmtree, folder)
    package = make(folder / "first")
    output("dpkg-deb", "--extract", package, folder / "tree")


def field(name):
    return output("dpkg-deb", "--field", package, name).decode().strip()


def packages_in(name):
    return {re.split("[ (]", entry)[0] for entry in field(name).split(", ")}


def owners(*paths):
    """The packages of this machine that a file is from, which may bear its name with or without /usr."""
    names = {str(path) for path in paths} | {str(path).removeprefix("/usr") for path in paths}
    found = subprocess.run(["dpkg-query", "--search", *names], capture_output=True, text=True).stdout
    return {line.split(":")[0] for line in found.splitlines()}


class Contents(unittest.TestCase):
    def test_name(self):
        architecture = output("dpkg", "--print-architecture").decode().strip()
        self.assertEqual(package.name, f"halvik-diagnostic_{project.version()}_{architecture}.deb")

    def test_files(self):
        found = [path for path in (folder / "tree").rglob("*") if not path.is_dir()]
        self.assertEqual(sorted(str(path.relative_to(folder / "tree")) for path in found), FILES)

    def test_no_file_grants_rights(self):
        """All are root's, and nobody else's to change; none is setuid."""
        listed = output("dpkg-deb", "--contents", package).decode().splitlines()
        self.assertGreater(len(listed), len(FILES))
        for line in listed:
            mode, owner = line.split()[:2]
            self.assertRegex(mode, "^(d|-)rw[x-]r-[x-]r-[x-]$", line)
            self.assertEqual(owner, "root/root", line)

    def test_nothing_runs_during_the_installation(self):
        listed = subprocess.run(["tar", "--list"], input=output("dpkg-deb", "--ctrl-tarfile", package),
                                capture_output=True, check=True).stdout
        self.assertEqual(sorted(listed.decode().split()), ["./control", "./md5sums"])

    def test_what_checks_packages_finds_nothing_wrong(self):
        ended = subprocess.run(["lintian", "--fail-on", "error,warning", package], capture_output=True, text=True)
        self.assertEqual((ended.stdout, ended.returncode), ("", 0))

    def test_settings_of_whoever_makes_it_do_not_count(self):
        other = make(folder / "second", LC_ALL="C", TZ="Pacific/Kiritimati")
        self.assertEqual(other.read_bytes(), package.read_bytes())

    def test_compressed_files_bear_no_time_of_the_build(self):
        for name in FILES:
            if name.endswith(".gz"):
                flags_and_time = (folder / "tree" / name).read_bytes()[3:8]
                self.assertEqual(flags_and_time, bytes(5), name)

    def test_no_file_bears_the_umask(self):
        other = make(folder / "third", umask=0o077)
        for part in ("--ctrl-tarfile", "--fsys-tarfile"):
            self.assertEqual(output("dpkg-deb", part, other), output("dpkg-deb", part, package))


class Dependencies(unittest.TestCase):
    def test_every_tool_of_the_plan(self):
        """Or it is in a package that every system has."""
        names = plan.display_names(endpoints.roles(), domain="example.com", skivra=True)
        words = {word for name in names for word in re.findall(r"(?:^|^/bin/sh -c |\| )(/\S+)", name)}
        scripts = {path.name for path in (folder / "tree/usr/libexec/halvik-diagnostic").iterdir()}
        tools = {os.path.basename(word) for word in words} - scripts
        self.assertGreater(len(tools), 10)
        for tool in tools:
            path = shutil.which(tool, path="/usr/bin:/usr/sbin:/bin:/sbin")
            holders = owners(os.path.realpath(path))
            self.assertTrue(holders, tool)
            essential = output("dpkg-query", "--show", "--showformat", "${Essential}", *holders) == b"yes"
            self.assertTrue(essential or holders & packages_in("Depends"), f"{tool} is in {holders}")

    def test_what_qt_loads_by_itself(self):
        self.assertTrue(owners(f"/{LIBRARIES}/platforms/libqxcb.so") & packages_in("Recommends"))

    def test_every_library(self):
        """What only the window needs is left out where nobody sits."""
        libexec = "usr/libexec/halvik-diagnostic"
        for program, fields in (("usr/bin/halvik-diagnostic", ["Depends"]),
                                (f"{libexec}/halvik-upload.so", ["Depends"]),
                                (f"{libexec}/halvik-diagnostic-window", ["Depends", "Recommends"])):
            needed = re.findall(r"\(NEEDED\) .*\[(.*)\]",
                                output("readelf", "--wide", "--dynamic", folder / "tree" / program).decode())
            self.assertGreater(len(needed), 2)
            for library in needed:
                holders = owners(f"/usr/lib/*/{library}", f"/lib/*/{library}")
                self.assertTrue(holders & set().union(*map(packages_in, fields)), f"{library} is in {holders}")

    def test_nothing_of_a_desktop_is_needed(self):
        self.assertEqual([package for package in packages_in("Depends") if "qt6" in package], [])

    def test_what_else_is_needed(self):
        self.assertIn("ca-certificates", packages_in("Depends"))
        self.assertEqual(packages_in("Recommends"), {"hicolor-icon-theme", "libglib2.0-bin", "libproxy-tools",
                                                     "libqt6core6", "libqt6gui6", "libqt6svg6", "libqt6widgets6",
                                                     "qt6-wayland", "xdg-utils"})


class Hardening(unittest.TestCase):
    path = "usr/bin/halvik-diagnostic"

    def read(self, *options):
        return output("readelf", "--wide", *options, folder / "tree" / self.path).decode()

    def test_position_independent(self):
        self.assertRegex(self.read("--file-header"), r"Type: +DYN")
        self.assertRegex(self.read("--dynamic"), r"\(FLAGS_1\) .*\bPIE\b")

    def test_addresses_of_functions_are_read_only(self):
        self.assertIn("GNU_RELRO", self.read("--segments"))
        self.assertRegex(self.read("--dynamic"), r"\(FLAGS\) +BIND_NOW")

    def test_stack(self):
        self.assertRegex(self.read("--segments"), r"GNU_STACK .* RW ")
        self.assertIn("__stack_chk_fail", self.read("--dyn-syms"))

    def test_bounds_of_buffers_are_checked(self):
        self.assertRegex(self.read("--dyn-syms"), r"__\w+_chk@")

    def test_bears_neither_symbols_nor_folders_of_the_build(self):
        self.assertNotIn(".symtab", self.read("--sections"))
        program = (folder / "tree" / self.path).read_bytes()
        self.assertNotIn(os.fsencode(project.ROOT), program)


class HardeningOfTheUpload(Hardening):
    path = "usr/libexec/halvik-diagnostic/halvik-upload.so"

    def test_position_independent(self):
        self.assertRegex(self.read("--file-header"), r"Type: +DYN")

    def test_bounds_of_buffers_are_checked(self):
        """It calls none of the functions that this is about."""


class HardeningOfTheWindow(Hardening):
    path = "usr/libexec/halvik-diagnostic/halvik-diagnostic-window"


if __name__ == "__main__":
    skipping.require_tools("cpack", "dpkg-shlibdeps", "file", "lintian")
    unittest.main()
