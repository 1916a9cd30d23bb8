# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The lab's servers: real ones, each with its settings in a file of this folder, none with any privilege."""

import dataclasses
import pathlib
import shutil
import subprocess
import time

import namespaces

LAB = pathlib.Path("/run/lab")
CONFIG = LAB / "config"
LIBRARY = LAB / "lib"
STATE = LAB / "state"
UPLOADS = LAB / "uploads"
RESULTS = LAB / "results"
BEHAVIOUR = LAB / "behaviour"
READER = LAB / "halvik-report"
RESULTS_ADDRESS = "https://diagnostic.halvik.example/results/"

TIMEOUT_SECONDS = 120  # on a busy machine; a server that has ended is not waited for
USER, GROUP = "nobody", "nogroup"
UNPRIVILEGED = ["setpriv", "--reuid", USER, "--regid", GROUP, "--clear-groups", "--no-new-privs", "--inh-caps=-all",
                "--bounding-set=-all", "--pdeathsig", "TERM", "--"]


class ServerFailed(Exception):
    """A server did not start, or has ended. The message has its output."""


@dataclasses.dataclass(frozen=True)
class Server:
    program: str
    name: str  # that of its settings
    place: str
    command: tuple
    address: str
    port: int

    def __str__(self):
        return f"{self.program} {self.name}"

    def accepts(self):
        return namespaces.accepts(self.place, self.address, self.port)


def knot(name, address):
    return Server("knot", name, name, ("knotd", "-c", CONFIG / "knot" / f"{name}.conf"), address, 53)


def unbound(name, address, port=53, place=None):
    command = ("unbound", "-d", "-c", CONFIG / "unbound" / f"{name}.conf")
    return Server("unbound", name, place or name, command, address, port)


def nginx(name, address, port=80, place=None):
    command = ("nginx", "-e", "stderr", "-p", STATE / name, "-c", CONFIG / "nginx" / f"{name}.conf",
               "-g", f"daemon off; master_process off; pid {STATE / name / 'pid'};")
    return Server("nginx", name, place or name, command, address, port)


SERVERS = [
    knot("root", "192.5.5.241"),
    knot("names", "203.0.113.53"),
    knot("akamai", "198.18.31.53"),
    knot("ultradns", "198.18.32.53"),
    knot("resolver-a", "192.0.2.53"),
    knot("resolver-b", "198.51.100.53"),
    unbound("resolver-a", "127.0.0.1", 5300),
    unbound("resolver-b", "127.0.0.1", 5300),
    unbound("third-party", "8.8.8.8"),
    unbound("anycast", "1.1.1.1"),
    unbound("isp-resolver", "198.18.7.53"),
    unbound("home", "192.168.1.1"),
    nginx("web", "203.0.113.80"),
    nginx("filter", "203.0.113.20"),
    nginx("portal", "192.168.1.1", place="home"),
    nginx("submission", "203.0.113.13", 443),
    Server("python3", "receiver", "submission",
           ("env", f"PYTHONPATH={LIBRARY}", "/usr/bin/python3", "-B", CONFIG / "receiver.py", UPLOADS, RESULTS,
            BEHAVIOUR, RESULTS_ADDRESS, READER),
           "127.0.0.1", 8000),
]
SKIVRA = unbound("skivra", "127.0.0.1", place=namespaces.MACHINE)


def prepare():
    """Makes the folders that servers write to."""
    for folder in [UPLOADS, RESULTS, *(STATE / server.name for server in SERVERS)]:
        folder.mkdir(parents=True, exist_ok=True)
        shutil.chown(folder, USER, GROUP)


class Running:
    """The servers that run."""

    def __init__(self):
        self._processes = {}

    def start(self, servers, prefix=None):
        """Starts those that do not run yet, and waits until they answer. By default, the prefix of their commands leads
        to their place and drops all privileges."""
        starting = [server for server in servers if server not in self._processes]
        for server in starting:
            with open(_log(server), "wb") as log:
                self._processes[server] = subprocess.Popen(
                    [*(prefix or unprivileged(namespaces.command(server.place))), *map(str, server.command)],
                    stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        for server in starting:
            self._wait_for(server)

    def stop(self, servers):
        """Ends those that run, and waits until their ports are free."""
        ending = [server for server in servers if server in self._processes]
        for server in ending:
            self._processes[server].terminate()
        for server in ending:
            self._processes.pop(server).wait()
            _wait_until(lambda server=server: not server.accepts(), lambda server=server: f"{server} does not end")

    def forget(self, server):
        """Waits for a server whose machine was switched off."""
        self._processes.pop(server).wait()

    def check(self):
        """Raises ServerFailed if one has ended by itself."""
        for server, process in self._processes.items():
            if process.poll() is not None:
                raise ServerFailed(f"{server} has ended, with status {process.returncode}; it said:\n"
                                   f"{_log_text(server)}")

    def _wait_for(self, server):
        def answers():
            self.check()
            return server.accepts()
        _wait_until(answers, lambda: f"{server} does not answer; it said:\n{_log_text(server)}")


def unprivileged(prefix):
    return [*prefix, *UNPRIVILEGED]


def _wait_until(condition, complaint):
    deadline = time.monotonic() + TIMEOUT_SECONDS
    while not condition():
        if time.monotonic() > deadline:
            raise ServerFailed(complaint())
        time.sleep(0.01)


def _log(server):
    return STATE / f"{server}.log"


def _log_text(server):
    return _log(server).read_text(errors="replace").rstrip() or "(nothing)"
