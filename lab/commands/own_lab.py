# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Starts a lab, and ends it with the command that started it."""

import importlib.util
import os
import shutil
import signal
import socket
import subprocess

import control_socket
import network
import reaper
from commands import executables
from commands.failures import Refused, Unable

TOOLS = ["certutil", "dig", "ip", "knotd", "nft", "nginx", "nsenter", "openssl", "setpriv", "unbound", "unshare"]
MODULES = ["werkzeug"]
OFFICE_TOOLS = ["ssh-keygen", "sshd"]
USERS_NUMBER = 20053  # of the lab's user without sudo; no distribution assigns it


class OwnLab:
    """A lab that ends with this process, unless stay() is called."""

    def __init__(self, name, machines):
        require_tools(machines)
        network.check()
        listener = control_socket.claim(name)
        self._starter, theirs = socket.socketpair()
        self._stderr = open(os.memfd_create("stderr"), "w+b")
        uid, gid = user()
        with listener, theirs:
            arguments = map(str, [theirs.fileno(), listener.fileno(), uid, gid, executables.reader(),
                                  executables.program(), machines])
            self._process = subprocess.Popen(
                ["unshare", "--mount", "--net", "--uts", "--ipc", "--pid", "--fork", "--kill-child", "--mount-proc",
                 "/usr/bin/python3", "-B", network.FOLDER / "supervisor.py", *arguments],
                pass_fds=[theirs.fileno(), listener.fileno()], start_new_session=True, cwd="/",
                env={**os.environ, "PYTHONPATH": network.LIBRARY},
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=self._stderr)

    def wait_until_ready(self):
        try:
            answer, _ = control_socket.receive(self._starter)
        except ConnectionError:
            self.end()
            self._stderr.seek(0)
            raise Refused(f"the lab ended while it started:\n{self._stderr.read().decode(errors='replace')}") from None
        if "error" in answer:
            raise Refused(f"the lab did not start: {answer['error']}")

    def stay(self):
        self._starter.sendall(control_socket.STAY)

    def end(self):
        """Returns when nothing of the lab is left."""
        signal.signal(signal.SIGINT, signal.SIG_IGN)  # it asks for nothing else
        self._starter.close()
        if self._process.returncode is None:
            self._process.returncode = reaper.wait_for(self._process.pid)


def require_tools(machines):
    missing = [tool for tool in TOOLS + (OFFICE_TOOLS if machines else []) if not shutil.which(tool)]
    missing += [module for module in MODULES if not importlib.util.find_spec(module)]
    if missing:
        raise Unable(f"not installed: {', '.join(missing)}; scripts/install_packages lab installs them")
    if not os.path.exists("/dev/net/tun"):
        raise Unable("this machine has no /dev/net/tun, which carries the lab's lines")


def user():
    """The user and group that the program runs as: those who called sudo, or else the lab's own."""
    numbers = int(os.environ.get("SUDO_UID", 0)), int(os.environ.get("SUDO_GID", 0))
    return numbers if all(numbers) else (USERS_NUMBER, USERS_NUMBER)
