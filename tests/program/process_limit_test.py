# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs of a user who may have few processes, and of a program that is setuid."""

import os
import shutil
import signal
import subprocess
import sys
import unittest

import builds
import http_server
import isolation
import polling
import report_text
from environment_runs import ALL, ENDED_BY_ERROR, URL, EnvironmentTest


@unittest.skipUnless(os.geteuid() == 0, "only root can become a user without any other process")
class ProcessLimitTest(EnvironmentTest):
    # Nobody is given numbers as high as this, and every run of this file has its own: no other process counts for the
    # limits of this user.
    STRANGER = 2_000_000_000 + os.getpid()
    BECOME = ["setpriv", f"--reuid={STRANGER}", f"--regid={STRANGER}", "--clear-groups", "--"]
    # Takes every process that is to be had, from then on when the first one was refused.
    TAKE_ALL = """
import os, pathlib, signal
full = pathlib.Path("full")
while True:
    try:
        if os.fork() == 0:
            signal.pause()
    except OSError:
        if not full.exists():
            full.touch()
"""

    def setUp(self):
        super().setUp()
        for folder in (self.folder, self.work, self.home):
            folder.chmod(0o777)
        for tool in (builds.test_build(), sys.executable):
            if subprocess.run([*self.BECOME, "test", "-x", tool], capture_output=True).returncode != 0:
                self.skipTest(f"another user cannot run {tool}")
        self.assertEqual(self.processes(), [], "there is such a user")
        self.addCleanup(self.end_all)

    def run_with(self, processes, commands, **others):
        return self.run_test_build(["-s"], commands, prefix=[*self.BECOME, "prlimit", f"--nproc={processes}", "--"],
                                   **others)

    def processes(self):
        listed = subprocess.run(["ps", "-o", "stat=", "-U", str(self.STRANGER)], capture_output=True, text=True).stdout
        return [state for state in listed.split() if not state.startswith("Z")]

    def end_all(self):
        """Ends whatever is run by the user that only this test can be.

        Not by their numbers: these are old as soon as they are listed, and may be those of others by then.
        """
        subprocess.run([*self.BECOME, "sh", "-c", 'test "$(id -u)" = "$1" && kill -KILL -1', "sh", str(self.STRANGER)],
                       check=True)
        polling.wait_until(lambda: not self.processes(), "all processes have ended")

    @unittest.skipIf(builds.is_counting_branches(), "another user cannot write the counts")
    def test_too_few_for_the_commands(self):
        ended = self.run_with(20, ["exec sleep 1000"] * ALL)
        self.assertEqual((ended.status, ended.stdout), (-signal.SIGABRT, b""))
        self.assertEqual(ended.messages, [f"{ENDED_BY_ERROR} cannot run /bin/sh: Resource temporarily unavailable"])
        self.assert_only_files(self.home, [])
        polling.wait_until(lambda: not self.processes(), "the commands have ended")

    def test_setuid(self):
        """A setuid program does nothing with its owner's rights."""
        owned = self.folder / "owned"
        shutil.copy(builds.test_build(), owned)
        owned.chmod(0o4755)
        if os.statvfs(owned).f_flag & os.ST_NOSUID:
            self.skipTest("no program is setuid here")
        ended = self.finish(self.start(str(owned), ["-s", "-c", "-o=F"], prefix=self.BECOME))
        self.assertNotEqual(ended.status, 0)
        self.assertEqual(ended.stdout, b"")
        self.assert_only_files(self.work, [])

    def test_none_for_the_upload(self):
        """It has a thread of its own. Refused, it is a failed upload, and a process may have become free after all."""
        server = http_server.Server(http_server.reply(URL))
        take_all = self.folder / "take_all"
        take_all.write_text(self.TAKE_ALL)
        line = f"{sys.executable} {take_all} >/dev/null 2>&1 & until test -e full; do :; done"
        ended = self.run_with(120, [":"] * (ALL - 1) + [line], submit=server.url(), env={"TEST_BUILD_STALL_MS": 300})
        self.end_all()
        server.close()
        if server.requests:
            self.assertEqual((ended.status, ended.stdout), (0, b"url=" + URL + b"\n"))
        else:
            self.assert_submission_failed(ended, report_text.report([(":",)] * (ALL - 1) + [(line,)]))


isolation.run_tests()
