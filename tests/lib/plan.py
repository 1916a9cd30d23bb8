# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The plan that a run is expected to launch, as plan.json has it: a second time, apart from the program.

A command there is a path, the arguments and, if it has one, a comment; braces hold the name of a role of the endpoints,
or the domain to test.
"""

import json
import pathlib

from project import ROOT

SKIVRA = "/Library/Application Support/Halvik Skivra"
SECTIONS = json.loads(pathlib.Path(__file__).with_suffix(".json").read_text(encoding="utf-8"))


def display_names(roles, domain=None, skivra=False, beacon_logs=()):
    """The display names of a run's commands, in the order of their launch.

    domain is the domain to test without its blanks, or None when none was given; beacon_logs are the paths of the log
    entries in the order of their reading.
    """
    is_tested = domain is not None and "." in domain
    commands = [*SECTIONS["first"], *(SECTIONS["domain"] if is_tested else []), *SECTIONS["general"]]
    if skivra:
        if domain is None:
            commands += SECTIONS["skivra without a domain"]
        elif is_tested:
            commands += SECTIONS["skivra with a domain"]
        commands += SECTIONS["before the logs"]
    words = {**roles, "domain": domain}
    names = [display_name(command, words) for command in commands]
    if skivra:
        names += [f'/bin/sh -c cat "{path}"' for path in beacon_logs]
        names += [display_name(command, words) for command in SECTIONS["after the logs"]]
    return names


def display_name(command, words):
    path, arguments, *comment = command
    return " ".join(text.format_map(words) for text in [path, *arguments, *comment])


def comments(roles):
    """What follows the arguments in each display name of a run without domain and Skivra: a comment or nothing."""
    return ["".join(f" {text.format_map(roles)}" for text in comment)
            for _, _, *comment in SECTIONS["first"] + SECTIONS["general"]]


def tools():
    """The names of the tools that are started without a shell, but for those for which the program has scripts."""
    names = {pathlib.PurePath(path).name for commands in SECTIONS.values() for path, *_ in commands}
    return sorted(name for name in names if not (ROOT / "platform/process" / name).exists())
