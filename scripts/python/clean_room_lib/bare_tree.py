# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Makes the tree of which all others are copies: Debian 12 with nothing added."""

import os
import re
import shutil
import subprocess

from clean_room_lib.summary import LOGS, Failure
from clean_room_lib.tree import Tree

RELEASE = "bookworm"


def apt_sources():
    """This machine's sources of Debian 12, as lines of sources.list."""
    targets = subprocess.run(
        ["apt-get", "indextargets", "--format", "$(CODENAME) deb $(REPO_URI) $(RELEASE) $(COMPONENT)",
         "Created-By: Packages", "Origin: Debian"], check=True, capture_output=True, text=True).stdout.splitlines()
    lines = [line.partition(" ")[2] for line in targets if line.startswith(RELEASE)]
    return lines or [f"deb http://deb.debian.org/debian {RELEASE} main"]


def apt_settings():
    """How this machine's apt fetches: proxies and the like."""
    dump = subprocess.run(["apt-config", "dump"], check=True, capture_output=True, text=True).stdout
    return re.findall(r"^Acquire::(?:https?|Retries|Check-)[^ ]* .*;$", dump, re.MULTILINE)


def make(path):
    sources = apt_sources()
    mirror = next(line.split()[1] for line in sources if line.split()[2] == RELEASE)
    environment = dict(os.environ)
    for setting in apt_settings():
        if proxy := re.fullmatch(r'Acquire::http::Proxy "(.+)";', setting):
            environment["http_proxy"] = proxy[1]
    with open(LOGS / "bare-tree.log", "wb") as log:
        ended = subprocess.run(["debootstrap", "--variant=minbase", RELEASE, path, mirror], env=environment,
                               stdin=subprocess.DEVNULL, stdout=log, stderr=log)
    if ended.returncode != 0:
        raise Failure("debootstrap, see build/clean_room/bare-tree.log")
    tree = Tree(path)
    tree.file("/etc/apt/sources.list").write_text("".join(f"{line}\n" for line in sources))
    tree.file("/etc/apt/apt.conf.d/90clean-room").write_text("".join(f"{line}\n" for line in apt_settings()))
    shutil.copy("/etc/resolv.conf", tree.file("/etc/resolv.conf"))
    tree.file("/etc/hosts").write_text("127.0.0.1 localhost clean-room\n")
    return tree
