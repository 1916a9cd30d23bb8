# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A customer's machine, seen from the supervisor: its processes and its files."""

import os
import pathlib
import subprocess

import machine
import namespaces
import servers


class CustomerMachine:
    """Its network namespace exists before it does."""

    def __init__(self, name, address, line, host_name):
        self.name = name  # of its network namespace
        self.address = address
        self.line = line  # that joins it with the home router
        self.pid = 0  # of its first process
        self._host_name = host_name
        self._process = None

    def start(self, certificate, uid, gid):
        self._process = subprocess.Popen(
            namespaces.command(self.name, "unshare", "--mount", "--pid", "--fork", "--kill-child", "--uts", "--ipc",
                               "/usr/bin/python3", "-B", servers.CONFIG / "machine.py",
                               certificate, uid, gid, self._host_name),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def finish(self):
        """Waits until it is there."""
        if self._process.stdout.readline() != "ready\n":
            raise servers.ServerFailed(f"{self} did not start; it said:\n{self._process.stderr.read()}")
        unshare = self._process.pid
        self.pid = int(pathlib.Path(f"/proc/{unshare}/task/{unshare}/children").read_text())

    def check(self):
        if self._process.poll() is not None:
            raise servers.ServerFailed(f"{self} has ended, with status {self._process.returncode}")

    def switch_off(self):
        """Its connections are not closed: the other end notices by its own time-out."""
        namespaces.ip(["link set eth0 down"], self.name)
        self._process.kill()
        self._process.wait()

    @property
    def root(self):
        return pathlib.Path(f"/proc/{self.pid}/root")

    def command(self, *words):
        """The command that runs another one on the machine, as root."""
        return ["nsenter", "--target", str(self.pid), "--mount", "--net", "--pid", "--uts", "--ipc", "--",
                *map(str, words)]

    def set_disk(self, full):
        room = os.statvfs(self.root / "lab")
        size = (room.f_blocks - room.f_bfree) * room.f_frsize if full else machine.DISK_SIZE
        subprocess.run(self.command("mount", "-o", f"remount,size={size}", "/lab"), check=True, capture_output=True)

    def __str__(self):
        return "the user's machine" if self.name == namespaces.MACHINE else f"the machine {self.name}"
