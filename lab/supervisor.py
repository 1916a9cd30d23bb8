# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The process that holds a lab: everything lives in its namespaces and ends with it.

It is started in new mount, network, process, host name and IPC namespaces, builds the lab, reports that on a socket to
the command that starts the lab, and then serves its control socket; it ends with that command unless asked to stay.
"""

import os
import pathlib
import socket
import subprocess
import sys
import threading

import control_socket
import lab
import reaper
import servers

FAILURES = (OSError, subprocess.CalledProcessError, servers.ServerFailed)


def message_of(failure):
    """What went wrong, with the standard error of a failed command."""
    stderr = getattr(failure, "stderr", None) or b""
    return f"{failure}\n{stderr if isinstance(stderr, str) else stderr.decode(errors='replace')}".rstrip()


class Service:
    """Answers requests. Each is a method here, with the request's further words as its arguments."""

    def __init__(self, the_lab):
        self._lab = the_lab
        self.ended = False

    def answer(self, connection):
        (request, *words), _ = control_socket.receive(connection)
        try:
            if request != "down":
                self._lab.check()
            reply = getattr(self, f"do_{request}")(*words) or {}
        except FAILURES as failure:
            reply = {"error": message_of(failure)}
        descriptors = [reply.pop("descriptor")] if "descriptor" in reply else []
        control_socket.send(connection, reply, descriptors)
        for descriptor in descriptors:
            os.close(descriptor)

    def do_state(self):
        return {"scenario": self._lab.scenario, "skivra": self._lab.has_skivra}

    def do_machine(self, name):
        """A descriptor of the first process of a machine, and the ids of its user and group."""
        return {"descriptor": os.pidfd_open(self._lab.machine(name).pid), "uid": self._lab.uid, "gid": self._lab.gid}

    def do_scenario(self, name, machine):
        self._lab.change_scenario(name, machine)

    def do_off(self, machine):
        self._lab.switch_off(machine)

    def do_skivra(self, installed):
        self._lab.change_skivra(installed)

    def do_down(self):
        self.ended = True


def end_with(starter):
    """Ends the lab as soon as the command that started it does, unless that asks it to stay."""
    while word := starter.recv(16):
        if word == control_socket.STAY:
            return
    os._exit(1)


def serve(starter, listener, *settings):
    listener.listen()  # here: callers get the process id of the one that calls listen
    threading.Thread(target=end_with, args=[starter], daemon=True).start()
    the_lab = lab.Lab(*settings)
    try:
        the_lab.build()
    except FAILURES as failure:
        control_socket.send(starter, {"error": message_of(failure)})
        sys.exit(1)
    control_socket.send(starter, {})
    service = Service(the_lab)
    while not service.ended:
        connection, _ = listener.accept()
        with connection:
            if control_socket.is_from_root(connection):
                try:
                    service.answer(connection)
                except ConnectionError:
                    pass  # the caller went away


def main(starter, listener, uid, gid, reader, program, machines):
    starter, listener = socket.socket(fileno=int(starter)), socket.socket(fileno=int(listener))
    serve(starter, listener, int(uid), int(gid), pathlib.Path(reader), pathlib.Path(program), int(machines))


if __name__ == "__main__":
    reaper.run_below(lambda: main(*sys.argv[1:]))
