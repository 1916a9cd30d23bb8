# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What each command of the lab does."""

import argparse
import os
import select
import signal
import sys

import control_socket
import namespaces
import network
import scenarios
from commands import arguments, executables, execution, own_lab, running_lab
from commands.failures import Refused

PLACES = [*(place.name for place in network.PLACES), namespaces.MACHINE]


def say(message):
    print(f"lab: {message}", file=sys.stderr)


def do_up(options, words):
    arguments.expect(not words)
    if running_lab.is_up(options.name):
        raise control_socket.LabExists(options.name)
    lab = own_lab.OwnLab(options.name, options.machines or 0)
    try:
        lab.wait_until_ready()
        prepare(options)
        lab.stay()
    except BaseException:
        lab.end()
        raise


def do_run(options, words):
    if not (executables.program().is_file() and os.access(executables.program(), os.X_OK)):
        raise Refused(f"{executables.program()} is not built: scripts/run -h builds it")
    command = [f"/lab/program/{executables.program().name}", *words]
    return in_some_lab(options, lambda name: execution.run_in_machine(name, command))


def do_shell(options, words):
    parser = arguments.Parser(add_help=False)
    parser.add_argument("--root", action="store_true")
    parser.add_argument("--at")
    parser.add_argument("--on", default=namespaces.MACHINE)
    parser.add_argument("words", nargs=argparse.REMAINDER)
    shell = parser.parse_args(words)
    command = shell.words or ["/bin/bash"]
    if shell.at:
        if shell.at not in PLACES:
            raise Refused(f"there is no place {shell.at}; there are {', '.join(PLACES)}")
        return in_some_lab(options, lambda name: execution.run_at_place(name, shell.at, command))
    return in_some_lab(options, lambda name: execution.run_in_machine(name, command, not shell.root, shell.on))


def in_some_lab(options, function):
    """Calls the function with the name of the lab that is up or, where there is none, of one that ends afterwards."""
    try:
        os.getcwd()
    except FileNotFoundError:
        raise Refused("the working directory is no longer there") from None
    if running_lab.is_up(options.name):
        if options.machines is not None:
            raise Refused("the lab is up already: it keeps the machines that it has")
        return in_lab(options, function)
    options.name = f"{options.name} of {os.getpid()}"
    lab = own_lab.OwnLab(options.name, options.machines or 0)
    try:
        lab.wait_until_ready()
        return in_lab(options, function)
    finally:
        lab.end()


def in_lab(options, function):
    prepare(options)
    status = function(options.name)
    try:
        control_socket.request(options.name, "state")
    except control_socket.NoLab:
        say("the lab has ended before the command did")
    except control_socket.RequestFailed as refusal:
        say(f"something of the lab was missing at the end of the command: {refusal}")
    return status


def prepare(options):
    if options.skivra:
        control_socket.request(options.name, "skivra", True)
    if options.scenario:
        control_socket.request(options.name, "scenario", options.scenario, namespaces.MACHINE)


def do_scenario(options, words):
    parser = arguments.Parser(add_help=False)
    parser.add_argument("--on", default=namespaces.MACHINE)
    parser.add_argument("scenario", nargs="?")
    chosen = parser.parse_args(words)
    if chosen.scenario:
        scenario = arguments.known_scenario(chosen.scenario, chosen.on)
        control_socket.request(options.name, "scenario", scenario, chosen.on)
        return
    arguments.expect(chosen.on == namespaces.MACHINE)
    present = []
    if running_lab.is_up(options.name):
        present = control_socket.request(options.name, "state")[0]["scenario"].split("+")
    for name, scenario in scenarios.SCENARIOS.items():
        print(f"{'*' if name in present else ' '} {name:24} {scenario.summary}")


def do_off(options, words):
    arguments.expect(len(words) == 1)
    control_socket.request(options.name, "off", *words)


def do_skivra(options, words):
    arguments.expect(words in (["on"], ["off"]))
    control_socket.request(options.name, "skivra", words == ["on"])


def do_uploads(options, words):
    arguments.expect(not words)
    print(f"/proc/{running_lab.processes(options.name)[0]}/root/run/lab/uploads")


def do_down(options, words):
    arguments.expect(not words)
    ends = [os.pidfd_open(number) for number in running_lab.processes(options.name)]
    control_socket.request(options.name, "down")
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # it asks for nothing else
    for descriptor in ends:
        select.select([descriptor], [], [])


COMMANDS = {"up": do_up, "run": do_run, "shell": do_shell, "scenario": do_scenario, "skivra": do_skivra,
            "off": do_off, "uploads": do_uploads, "down": do_down}
