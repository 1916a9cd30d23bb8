# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Makes the trees of which all others are copies: a release of Debian with nothing added."""

import os
import pathlib
import platform
import re
import shutil
import subprocess

from clean_room_lib.summary import Failure
from clean_room_lib.tree import Tree

SCRIPTS = pathlib.Path("/usr/share/debootstrap/scripts")


def apt_sources(release):
    """This machine's sources of Debian, for another release, as lines of sources.list."""
    own = platform.freedesktop_os_release().get("VERSION_CODENAME", release)
    targets = subprocess.run(
        ["apt-get", "indextargets", "--format", "deb $(REPO_URI) $(CODENAME) $(COMPONENT)", "Created-By: Packages",
         "Origin: Debian"], check=True, capture_output=True, text=True).stdout.splitlines()
    lines = [re.sub(rf" {own}\b", f" {release}", line) for line in targets if re.search(rf" {own}\b", line)]
    return lines or [f"deb http://deb.debian.org/debian {release} main"]


def apt_settings():
    """How this machine's apt fetches: proxies and the like."""
    dump = subprocess.run(["apt-config", "dump"], check=True, capture_output=True, text=True).stdout
    return re.findall(r"^Acquire::(?:https?|Retries|Check-)[^ ]* .*;$", dump, re.MULTILINE)


def make(path, release):
    tree = Tree(path, release)
    tree.logs.mkdir(parents=True, exist_ok=True)
    sources = apt_sources(release)
    mirror = next(line.split()[1] for line in sources if line.split()[2] == release)
    environment = dict(os.environ)
    for setting in apt_settings():
        if proxy := re.fullmatch(r'Acquire::http::Proxy "(.+)";', setting):
            environment["http_proxy"] = proxy[1]
    # A release that is younger than debootstrap is made as the development version is.
    script = SCRIPTS / release if (SCRIPTS / release).exists() else SCRIPTS / "sid"
    with open(tree.logs / "bare-tree.log", "ab") as log:
        ended = subprocess.run(["debootstrap", "--variant=minbase", release, path, mirror, script], env=environment,
                               stdin=subprocess.DEVNULL, stdout=log, stderr=log)
    if ended.returncode != 0:
        raise Failure(f"debootstrap, see build/clean_room/{release}/bare-tree.log")
    write_settings(tree, sources)
    shutil.copy("/etc/resolv.conf", tree.file("/etc/resolv.conf"))
    tree.file("/etc/hosts").write_text("127.0.0.1 localhost clean-room\n")
    return tree


def write_settings(tree, sources):
    tree.file("/etc/apt/sources.list").write_text("".join(f"{line}\n" for line in sources))
    tree.file("/etc/apt/apt.conf.d/90clean-room").write_text("".join(f"{line}\n" for line in apt_settings()))


def upgrade(tree, release):
    """Makes a tree one of a later release, as a user would who follows Debian's release notes."""
    upgraded = Tree(tree.path, release)
    write_settings(upgraded, apt_sources(release))
    quietly = "DEBIAN_FRONTEND=noninteractive apt-get -y -o Dpkg::Options::=--force-confdef"
    upgraded.run(["sh", "-c", f"apt-get update && {quietly} upgrade --without-new-pkgs && {quietly} full-upgrade && "
                  "dpkg --audit"], "upgrade")
    return upgraded
