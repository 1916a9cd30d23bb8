# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The manual page of this build, taken apart."""

import re
import subprocess

import builds


def path():
    return builds.folder() / "halvik-diagnostic.1"


def section(name):
    """The source of a section, empty if there is none."""
    found = re.search(rf"^\.Sh {name}\n(.*?)(?=^\.Sh |\Z)", path().read_text(), re.MULTILINE | re.DOTALL)
    return found[1] if found else ""


def items(name):
    """The heads of a section's list."""
    return re.findall(r"^\.It (.*)$", section(name), re.MULTILINE)


def options():
    """The ways to write each option, as the list of options has them."""
    return [words(item) for item in items("OPTIONS")]


def words_of_synopsis():
    return [word for line in section("SYNOPSIS").splitlines() for word in words(line.replace(" | ", " , "))]


def words(line):
    """The options in a line of macros: "Fl o Ns = Ns Ar file , Fl -output Ns = Ns Ar file" is "-o=" and "--output="."""
    found = [re.match(r"(\S+)( Ns =)?", text) for text in line.replace(r"\&", "").split("Fl ")[1:]]
    return ["-" + match[1] + ("=" if match[2] else "") for match in found]


def foot():
    """What stands at the left of the last line."""
    text = subprocess.run(["mandoc", "-T", "ascii", path()], capture_output=True, check=True, text=True).stdout
    return re.sub(".\b", "", text).splitlines()[-1].split("  ")[0]
