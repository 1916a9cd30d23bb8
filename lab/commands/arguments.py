# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The command line of the lab: its usage, and how it is read."""

import argparse
import os

import namespaces
import network
import scenarios
from commands.failures import Refused, UsageError

NAME_BYTES_MAX = 64  # fits into a socket's name

USAGE = """usage: lab/lab [--name NAME] [--scenario NAME] [--skivra] [--machines N] COMMAND

The whole network that Halvik Diagnostic asks for, on this machine and with no
way out. Needs root.

  up                    start a lab
  run [OPTION...]       run the program in it
  shell [COMMAND...]    a shell, or a command, on the user's machine in it; run
                        and shell start a lab of their own if there is none
  scenario [NAME]       change its scenario, or list them all
  skivra on|off         install or remove the Skivra on the user's machine
  off MACHINE           switch off a machine of the office, for good
  uploads               print the folder of what was submitted
  down                  end the lab

  --name NAME           which of several labs (lab)
  --scenario NAME       begin with this scenario; NAME+NAME combines two
  --skivra              begin with the Skivra installed
  --machines N          start an office of N further machines: pc-01 and so
                        on, which the user's machine reaches by ssh

Exit status: that of the program or the command; 2 if it could not be started,
3 if this machine permits no lab.

Further forms of shell:
  shell --root [COMMAND...]         as root
  shell --at PLACE [COMMAND...]     as root, in the network of a place: home
  shell --on MACHINE [COMMAND...]   on a machine of the office
And of scenario:
  scenario --on MACHINE NAME        on a machine of the office alone
"""


class Parser(argparse.ArgumentParser):
    def error(self, message):
        raise UsageError(message)


def expect(condition):
    if not condition:
        raise UsageError("")


def parse(arguments, commands):
    """The options, with the command, which is one of these, and its own words."""
    parser = Parser(add_help=False, allow_abbrev=False)
    parser.add_argument("-h", "--help", action="store_true")
    parser.add_argument("--name", type=short_name, default="lab")
    parser.add_argument("--scenario", type=known_scenario)
    parser.add_argument("--skivra", action="store_true")
    parser.add_argument("--machines", type=office_size)
    parser.add_argument("command", nargs="?", choices=commands)
    parser.add_argument("words", nargs=argparse.REMAINDER)
    return parser.parse_args(arguments)


def known_scenario(name, on=namespaces.MACHINE):
    try:
        scenarios.named(name) if on == namespaces.MACHINE else scenarios.of_a_machine(name, on)
    except scenarios.Unknown as unknown:
        raise Refused(f"there is no scenario {unknown}; lab/lab scenario lists them") from None
    except scenarios.Contradiction as contradiction:
        raise Refused(contradiction) from None
    return name


def short_name(name):
    if len(os.fsencode(name)) > NAME_BYTES_MAX:
        raise Refused(f"the name of a lab has no more than {NAME_BYTES_MAX} bytes")
    return name


def office_size(text):
    if not (text.isdecimal() and int(text) <= network.OFFICE_MACHINES_MAX):
        raise Refused(f"an office has up to {network.OFFICE_MACHINES_MAX} machines")
    return int(text)
