# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Tries the program on machines that have nothing: bare trees of Debian. Run it before a release, as root.

usage: scripts/clean_room [--release NAME]... [run|test|check|package|upgrade]...

A release is bookworm, trixie or a later one; bookworm unless named. The steps, all by default:

run      scripts/run -h from a clean clone, as root and as a user with sudo, each in a tree of its own; then a run in a
         network without interfaces
test     scripts/test in the same trees
check    scripts/check in the same trees
package  scripts/package in a tree of bookworm, whatever the release; then the package of each is installed in a tree of
         the release with no more than what it depends on, and the program runs without a window and sends its reports
         over TLS; then, with what the package recommends, it does so with a window
upgrade  the same package, installed in a tree of bookworm that is then upgraded to the release, if that is a later one

The clone holds what is committed. Commands run inside mount and process namespaces, of which nothing stays behind;
where the packages are in and the program itself runs, the network is the loopback interface alone. What commands print
is kept in build/clean_room/RELEASE, with a picture of the window. Standard output gets the summary; the exit status is
0 if every step succeeded.

Needs the packages that `scripts/install_packages release` installs. Trees take apt's mirror and settings from this
machine if it is a Debian.
"""

import argparse
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile

from clean_room_lib import bare_tree, package, sources
from clean_room_lib.summary import LOGS, ROOT, Summary, say
from clean_room_lib.tree import Tree

STEPS = ("run", "test", "check", "package", "upgrade")


def require(*tools):
    if os.geteuid() != 0:
        sys.exit("clean_room: only root can make trees and namespaces")
    missing = [tool for tool in tools if not shutil.which(tool)]
    if missing:
        sys.exit(f"clean_room: not installed: {', '.join(missing)}; see scripts/install_packages release")


def main(releases, steps):
    require("apt-get", "debootstrap", "git", "nginx", "openssl", "unshare", "xdotool", "Xvfb")
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("clean_room: terminated"))
    for release in releases:
        shutil.rmtree(LOGS / release, ignore_errors=True)
    commit = subprocess.run(["git", "-C", ROOT, "rev-parse", "--short", "HEAD"], check=True, capture_output=True,
                            text=True).stdout.strip()
    if subprocess.run(["git", "-C", ROOT, "status", "--porcelain"], check=True, capture_output=True).stdout:
        say("what is not committed is not tried")
    with tempfile.TemporaryDirectory(prefix="halvik-clean-room-") as name:
        room = Room(pathlib.Path(name))
        summaries = [room.try_release(release, steps) for release in releases]
    print("\n".join([f"clean room of commit {commit}", *(line for summary in summaries for line in summary.lines)]))
    sys.exit(any(summary.failed for summary in summaries))


class Room:
    """The bare trees and the packages, each made when it is first needed."""

    def __init__(self, folder):
        self._folder = folder
        self._trees = {}
        self._packages = None

    def try_release(self, release, steps):
        summary = Summary(release)
        bare = self._bare_tree(summary, release)
        if bare is not None:
            if {"run", "test", "check"} & set(steps):
                sources.try_sources(summary, steps, bare, self._folder)
            if {"package", "upgrade"} & set(steps):
                self._try_packages(summary, steps, bare)
        return summary

    def _bare_tree(self, summary, release):
        if release not in self._trees:
            with summary.step(f"a bare tree of {release}") as facts:
                tree = bare_tree.make(self._folder / f"bare-{release}", release)
                facts.append("Debian " + tree.file("/etc/debian_version").read_text().strip())
                self._trees[release] = tree
        return self._trees.get(release)

    def _try_packages(self, summary, steps, bare):
        oldest = self._bare_tree(summary, package.BUILT_ON)
        if oldest is not None and self._packages is None:
            self._packages = package.make_packages(summary, oldest, self._folder)
        if self._packages is not None:
            if "package" in steps:
                package.try_packages(summary, bare, self._folder, self._packages)
            if "upgrade" in steps and bare.release != package.BUILT_ON:
                package.try_upgrade(summary, oldest, self._folder, self._packages, bare.release)


def main_with_no_way_out(path, release, *options):
    from clean_room_lib import installed_program  # the only one that needs the tests' modules

    summary = Summary(release)
    installed_program.try_program(summary, Tree(pathlib.Path(path), release), package.WITH_WINDOW in options)
    print("\n".join(summary.lines))
    sys.exit(summary.failed)


def parse():
    parser = argparse.ArgumentParser(add_help=False)
    parser.add_argument("--release", action="append", dest="releases")
    parser.add_argument("steps", nargs="*")
    options, unknown = parser.parse_known_args()
    if unknown or not set(options.steps) <= set(STEPS):
        sys.exit(__doc__)
    return options


if __name__ == "__main__":
    if sys.argv[1:2] == [package.NO_WAY_OUT]:
        main_with_no_way_out(*sys.argv[2:])
    else:
        options = parse()
        main(options.releases or [package.BUILT_ON], options.steps or STEPS)
