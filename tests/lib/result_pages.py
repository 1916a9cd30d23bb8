# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The pages of docs/results/, which scripts write with their option --save."""

import datetime
import os
import subprocess

from project import ROOT

FOLDER = ROOT / "docs/results"


def machine(packages=()):
    """This machine, and the versions of those packages that it has."""
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        model = next(line.split(":")[1].strip() for line in lines if line.startswith("model name"))
    versions = []
    if packages:
        versions = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version}\\n", *packages], check=False,
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout.splitlines()
    return "; ".join([f"{os.cpu_count()} x {model}, Linux {os.uname().release}",
                      *filter(None, [", ".join(line for line in versions if not line.endswith(" "))])])


def commit():
    """The commit that is checked out, with "-dirty" when files other than these pages differ from it."""
    name = subprocess.run(["git", "rev-parse", "--short", "HEAD"], cwd=ROOT, check=True, stdout=subprocess.PIPE,
                          text=True).stdout.strip()
    differing = subprocess.run(["git", "diff", "--quiet", "HEAD", "--", ":!docs/results"], cwd=ROOT).returncode != 0
    return name + ("-dirty" if differing else "")


def save(name, title, command, tables, packages=()):
    """Writes the page, which says how its tables came about. Replaces an older one."""
    FOLDER.mkdir(exist_ok=True)
    (FOLDER / f"{name}.md").write_text(
        f"# {title}\n\nFor developers. Written by `{command}`,\nwith commit {commit()} on {datetime.date.today()}.\n\n"
        f"Machine: {machine(packages)}\n\n{tables.strip()}\n", encoding="utf-8")
