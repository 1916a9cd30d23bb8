# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The step package: makes the packages, installs each in a bare tree, and has the program of one run there."""

import os
import re
import shutil
import subprocess

from clean_room_lib.summary import LOGS, ROOT

NO_WAY_OUT = "--no-way-out"  # starts scripts/clean_room again, in a network that is the loopback interface alone
WITH_WINDOW = "--with-window"  # the program's window is tried there instead of its runs without one
UPDATE = "apt-get update"
INSTALL = "DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends"


def try_package(summary, bare, folder):
    packages = make_packages(summary, bare, folder)
    if packages is not None:
        program, reader = packages
        try_reader(summary, bare.copy(folder / "reader"), reader)
        try_installed_program(summary, bare.copy(folder / "installed"), program)


def make_packages(summary, bare, folder):
    """The packages of the program and of the reader of reports, or None."""
    tree = bare.copy(folder / "package")
    packages = None
    with summary.step("scripts/package") as facts:
        made = tree.file(tree.run([f"{tree.clone('root')}/scripts/package"], "package")).parent
        packages = [shutil.copy(path, LOGS) for name in ("diagnostic", "report")
                    for path in made.glob(f"halvik-{name}_*.deb")]
        facts += [f"{os.path.basename(path)}, {os.path.getsize(path):,} bytes" for path in packages]
    shutil.rmtree(tree.path)
    return packages


def try_reader(summary, tree, package):
    with summary.step("installing the reader of reports alone"):
        shutil.copy(package, tree.file("/var/tmp/halvik-report.deb"))
        tree.run(["sh", "-c", f"{UPDATE} && {INSTALL} /var/tmp/halvik-report.deb && "
                  "halvik-report --version && ! dpkg --list | grep qt6"], "install-reader")
    shutil.rmtree(tree.path)


def try_installed_program(summary, tree, package):
    installed = False
    with summary.step("installing the package with what it depends on"):
        tree.add_user("install", with_sudo=False)
        shutil.copy(package, tree.file("/var/tmp/halvik-diagnostic.deb"))
        tree.run(["sh", "-c", f"{UPDATE} && {INSTALL} /var/tmp/halvik-diagnostic.deb"], "install")
        installed = True
    if installed:
        try_without_network(summary, tree)
        with summary.step("installing what the package recommends"):
            recommended = subprocess.run(["dpkg-deb", "--field", package, "Recommends"], check=True,
                                         capture_output=True, text=True).stdout
            names = re.findall(r"(?:^|, )([a-z0-9.+-]+)", recommended)
            tree.run(["sh", "-c", f"{INSTALL} {' '.join(names)}"], "install")
        try_without_network(summary, tree, WITH_WINDOW)
        with summary.step("removing the package"):
            tree.run(["sh", "-c", "apt-get purge -y halvik-diagnostic && ! find /usr /etc /var/lib/dpkg/info "
                      "-name '*halvik-diagnostic*' | grep ."], "remove")
    shutil.rmtree(tree.path)


def try_without_network(summary, tree, *options):
    """Has the installed program run in a network that is the loopback interface alone."""
    ended = subprocess.run(["unshare", "--net", "--mount", "--propagation", "private", "--",
                            ROOT / "scripts/clean_room", NO_WAY_OUT, tree.path, *options],
                           stdout=subprocess.PIPE, text=True)
    summary.lines += ended.stdout.splitlines()
    summary.failed |= ended.returncode != 0
