# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The steps package and upgrade: the packages in bare trees, where the program of one runs."""

import os
import shutil
import subprocess

from clean_room_lib import bare_tree
from clean_room_lib.summary import ROOT

BUILT_ON = "bookworm"  # where the packages are made that are released: what depends on its libraries suits later ones
NO_WAY_OUT = "--no-way-out"  # starts scripts/clean_room again, in a network that is the loopback interface alone
WITH_WINDOW = "--with-window"  # the program's window is tried there instead of its runs without one
UPDATE = "apt-get update"
WITHOUT_RECOMMENDS = "DEBIAN_FRONTEND=noninteractive apt-get -y --no-install-recommends"
INSTALL = f"{WITHOUT_RECOMMENDS} install"
SATISFY = f"{WITHOUT_RECOMMENDS} satisfy"


def make_packages(summary, bare, folder):
    """The packages of the program and of the reader of reports, or None."""
    tree = bare.copy(folder / "package")
    packages = None
    with summary.step("scripts/package") as facts:
        made = tree.file(tree.run([f"{tree.clone('root')}/scripts/package"], "package")).parent
        packages = [shutil.copy(path, tree.logs) for name in ("diagnostic", "report")
                    for path in made.glob(f"halvik-{name}_*.deb")]
        facts += [f"{os.path.basename(path)}, {os.path.getsize(path):,} bytes" for path in packages]
    shutil.rmtree(tree.path)
    return packages


def try_packages(summary, bare, folder, packages):
    """Installs each package in a copy of a bare tree, and has the program run."""
    program, reader = packages
    try_reader(summary, bare.copy(folder / "reader"), reader)
    tree = bare.copy(folder / "installed")
    if install(summary, tree, program):
        try_without_network(summary, tree)
        if install_recommended(summary, tree, program):
            try_without_network(summary, tree, WITH_WINDOW)
        remove(summary, tree)
    shutil.rmtree(tree.path)


def try_upgrade(summary, bare, folder, packages, release):
    """Installs the program in a copy of a bare tree, upgrades that to a later release, and has the program run."""
    tree = bare.copy(folder / "upgraded")
    program = packages[0]
    upgraded = None
    if install(summary, tree, program) and install_recommended(summary, tree, program):
        with summary.step(f"upgrading Debian from {bare.release}") as facts:
            upgraded = bare_tree.upgrade(tree, release)
            facts.append(upgraded.run(["dpkg-query", "--show", "halvik-diagnostic"], "upgrade"))
    if upgraded:
        try_without_network(summary, upgraded)
        try_without_network(summary, upgraded, WITH_WINDOW)
        remove(summary, upgraded)
    shutil.rmtree(tree.path)


def try_reader(summary, tree, package):
    with summary.step("installing the reader of reports alone"):
        shutil.copy(package, tree.file("/var/tmp/halvik-report.deb"))
        tree.run(["sh", "-c", f"{UPDATE} && {INSTALL} /var/tmp/halvik-report.deb && "
                  "halvik-report --version && ! dpkg --list | grep qt6"], "install-reader")
    shutil.rmtree(tree.path)


def install(summary, tree, package):
    installed = False
    with summary.step("installing the package with what it depends on"):
        tree.add_user("install", with_sudo=False)
        shutil.copy(package, tree.file("/var/tmp/halvik-diagnostic.deb"))
        tree.run(["sh", "-c", f"{UPDATE} && {INSTALL} /var/tmp/halvik-diagnostic.deb"], "install")
        installed = True
    return installed


def install_recommended(summary, tree, package):
    installed = False
    with summary.step("installing what the package recommends"):
        recommended = subprocess.run(["dpkg-deb", "--field", package, "Recommends"], check=True, capture_output=True,
                                     text=True).stdout
        tree.run(["sh", "-c", f'{SATISFY} "$1"', "sh", recommended], "install")
        installed = True
    return installed


def remove(summary, tree):
    with summary.step("removing the package"):
        tree.run(["sh", "-c", "apt-get purge -y halvik-diagnostic && ! find /usr /etc /var/lib/dpkg/info "
                  "-name '*halvik-diagnostic*' | grep ."], "remove")


def try_without_network(summary, tree, *options):
    """Has the installed program run in a network that is the loopback interface alone."""
    ended = subprocess.run(["unshare", "--net", "--mount", "--propagation", "private", "--",
                            ROOT / "scripts/clean_room", NO_WAY_OUT, tree.path, tree.release, *options],
                           stdout=subprocess.PIPE, text=True)
    summary.lines += ended.stdout.splitlines()
    summary.failed |= ended.returncode != 0
