# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Beacon logs of a Skivra of the test's own, and the report of a run that reads them."""

import os
import pathlib
import socket
import stat
import subprocess

import endpoints
import plan
import program_tests
import report_text
import roots

FOLDERS = ["ipblock", "probe", "service"]
SHOWN_FOLDER = f"{plan.SKIVRA}/beacon-logs"
NOT_TOLD = ("-", "0", "0.000000000")
FOLDER = object()  # stands for the content of an entry that is a folder
SOCKET = object()  # and of one that is a socket


class LinkTo(str):
    """The content of an entry that is a symbolic link."""


class Device(tuple):
    """The content of an entry that is a device, by its numbers."""

    def __new__(cls, *numbers):
        return super().__new__(cls, numbers)


def creation_times(paths, **others):
    """When the entries were created, or, where the file system does not keep that, when their status last changed."""
    lines = subprocess.run(["stat", "-c", "%.9W %.9Z", "--", *paths], capture_output=True, check=True, text=True,
                           **others).stdout
    times = (line.split() for line in lines.splitlines())
    return [birth if birth not in NOT_TOLD else change for birth, change in times]


class BeaconLogCase(program_tests.ProgramTest):
    def setUp(self):
        super().setUp()
        library = roots.Library(self)
        self.prefix = library.prefix
        self.logs = library.skivra / "beacon-logs"
        self.logs.mkdir(parents=True)
        self.newest = ""

    def create(self, folder, name, content):
        """Creates an entry that is younger than all before it, which takes a while: time stamps move in steps."""
        path = os.fsencode(self.logs / folder) + b"/" + report_text.as_bytes(name)
        while True:
            if content is FOLDER:
                os.mkdir(path)
            elif isinstance(content, LinkTo):
                os.symlink(content, path)
            elif content is SOCKET:
                with socket.socket(socket.AF_UNIX) as listener:
                    listener.bind(path)
            elif isinstance(content, Device):
                os.mknod(path, stat.S_IFCHR | 0o666, os.makedev(*content))
            else:
                pathlib.Path(os.fsdecode(path)).write_bytes(report_text.as_bytes(content))
            created = creation_times([path])[0]
            if created > self.newest:
                self.newest = created
                return
            os.rmdir(path) if content is FOLDER else os.remove(path)

    def run_plan(self, *options, prefix=()):
        ended = self.run_program(["-s", "-c", *options], prefix=[*prefix, *self.prefix])
        self.assertEqual(ended.messages, [])
        self.assertEqual(ended.status, 0)
        return [(name.decode(), content) for name, content in report_text.blocks(ended.stdout[:-1])]

    def assert_readers(self, entries):
        """entries: the folder, the shown name and what the reader prints, in the expected order."""
        blocks = self.run_plan()
        paths = [f"{SHOWN_FOLDER}/{folder}/{name}" for folder, name, _ in entries]
        expected = plan.display_names(endpoints.roles(), skivra=True, beacon_logs=paths)
        self.assertEqual([name for name, _ in blocks], expected)
        readers = [content for name, content in blocks if name.startswith('/bin/sh -c cat "')]
        for (folder, name, printed), content in zip(entries, readers, strict=True):
            with self.subTest(folder=folder, name=name):
                if callable(printed):
                    self.assertTrue(printed(content), content)
                else:
                    output = report_text.as_bytes(printed)
                    self.assertEqual(content, b"stdout:\n" + output + b"\n" if output else b"")
