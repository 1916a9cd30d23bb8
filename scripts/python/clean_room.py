# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Tries the program on machines that have nothing: bare trees of Debian 12. Run it before a release, as root.

usage: scripts/clean_room [run|test|check|package]...      (all by default)

run      scripts/run -h from a clean clone, as root and as a user with sudo, each in a tree of its own
test     scripts/test in the same trees
check    scripts/check in the same trees
package  scripts/package in one more tree; then, in another one, the package it made is installed with no more than what
         it depends on, and the program runs without a window and sends its reports over TLS; then, with what the
         package recommends, it does so with a window

The clone holds what is committed. Commands run inside mount and process namespaces, of which nothing stays behind;
where the packages are in and the program itself runs, the network is the loopback interface alone. What commands print
is kept in build/clean_room, with a picture of the window. Standard output gets the summary; the exit status is 0 if
every step succeeded.

Needs the packages that `scripts/install_packages release` installs. Trees take apt's sources and settings from this
machine where they are for Debian 12.
"""

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

STEPS = ("run", "test", "check", "package")


def require(*tools):
    if os.geteuid() != 0:
        sys.exit("clean_room: only root can make trees and namespaces")
    missing = [tool for tool in tools if not shutil.which(tool)]
    if missing:
        sys.exit(f"clean_room: not installed: {', '.join(missing)}; see scripts/install_packages release")


def main(steps):
    require("apt-get", "debootstrap", "git", "nginx", "openssl", "unshare", "xdotool", "Xvfb")
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("clean_room: terminated"))
    shutil.rmtree(LOGS, ignore_errors=True)
    LOGS.mkdir(parents=True)
    commit = subprocess.run(["git", "-C", ROOT, "rev-parse", "--short", "HEAD"], check=True, capture_output=True,
                            text=True).stdout.strip()
    if subprocess.run(["git", "-C", ROOT, "status", "--porcelain"], check=True, capture_output=True).stdout:
        say("what is not committed is not tried")
    summary = Summary()
    with tempfile.TemporaryDirectory(prefix="halvik-clean-room-") as name:
        try_steps(summary, steps, pathlib.Path(name))
    print("\n".join([f"clean room of commit {commit}", *summary.lines]))
    sys.exit(summary.failed)


def try_steps(summary, steps, folder):
    bare = None
    with summary.step("a bare tree") as facts:
        bare = bare_tree.make(folder / "bare")
        facts.append("Debian " + bare.file("/etc/debian_version").read_text().strip())
    if bare is not None:
        if {"run", "test", "check"} & set(steps):
            sources.try_sources(summary, steps, bare, folder)
        if "package" in steps:
            package.try_package(summary, bare, folder)


def main_with_no_way_out(path, *options):
    from clean_room_lib import installed_program  # the only one that needs the tests' modules

    summary = Summary()
    installed_program.try_program(summary, Tree(pathlib.Path(path)), package.WITH_WINDOW in options)
    print("\n".join(summary.lines))
    sys.exit(summary.failed)


if __name__ == "__main__":
    if sys.argv[1:2] == [package.NO_WAY_OUT]:
        main_with_no_way_out(*sys.argv[2:])
    elif set(sys.argv[1:]) <= set(STEPS):
        main(sys.argv[1:] or STEPS)
    else:
        sys.exit(__doc__)
