# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The proxy that the desktop is set to, as the command `proxy` of libproxy prints it. A script answers in its place."""

import os
import pathlib
import signal
import time
import unittest

import servers
import support

HOST = "diagnostic.halvik.example"
COMMAND = pathlib.Path("/usr/bin/proxy")


@unittest.skipUnless(COMMAND.exists(), "the command proxy of libproxy-tools is not installed")
class DesktopProxyTest(support.ProgramTest):
    def setUp(self):
        super().setUp()
        (self.folder / "hosts").write_text(f"127.0.0.1 localhost {HOST}\n")
        support.cover("/etc/hosts", self.folder / "hosts")
        self.addCleanup(support.uncover, "/etc/hosts")
        self.direct = self.serve(b"direct")
        self.proxy = self.serve(b"by proxy")
        self.url = f"http://{HOST}:{self.direct.port}/diagnosticsubmit"

    def serve(self, reply):
        server = servers.Server(servers.reply(reply))
        self.addCleanup(server.close)
        return server

    def answer(self, script):
        """Has the command run a shell script."""
        path = self.folder / "proxy"
        is_covered = path.exists()
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)
        if not is_covered:
            support.cover(COMMAND, path)
            self.addCleanup(support.uncover, COMMAND)

    def submit(self, **variables):
        return self.run_stand_in(["-s"], submit=self.url, env=variables)

    def assert_sent(self, ended, reply):
        self.assertEqual((ended.stdout, ended.stderr, ended.status), (b"url=" + reply + b"\n", b"", 0))

    def test_the_real_command_without_settings(self):
        self.assert_sent(self.submit(), b"direct")

    def test_its_answer_is_used(self):
        self.answer(f'echo "$@" > {self.folder}/asked; echo http://127.0.0.1:{self.proxy.port} direct://')
        self.assert_sent(self.submit(), b"by proxy")
        self.assertEqual((self.folder / "asked").read_text(), self.url + "\n")
        self.assertEqual([request.submitted for request in self.proxy.requests], [support.report()])
        self.assertEqual(self.proxy.requests[0].target, self.url)

    def test_what_is_no_proxy(self):
        for script in ("echo direct://", "exit 1", "echo failed >&2; exit 1", "kill -SEGV $$", ":"):
            with self.subTest(script):
                self.answer(script)
                self.assert_sent(self.submit(), b"direct")

    def test_a_proxy_that_cannot_be_used_is_a_failed_upload(self):
        for answer in ("nonsense://", f"http://127.0.0.1:{servers.unreachable_port(self)}"):
            with self.subTest(answer):
                self.answer(f"echo {answer}")
                self.assert_submission_failed(self.submit(), support.report())
                self.desktop_file.unlink()

    def test_the_environment_counts_first(self):
        self.answer(f"touch {self.folder}/asked; echo http://127.0.0.1:{servers.unreachable_port(self)}")
        self.assert_sent(self.submit(http_proxy=f"http://127.0.0.1:{self.proxy.port}"), b"by proxy")
        self.assert_sent(self.submit(http_proxy=""), b"direct")
        self.assertFalse((self.folder / "asked").exists())

    def test_a_command_that_does_not_end_is_given_five_seconds(self):
        """As a name server that does not answer would hold it up. Its descendant may hold its output open."""
        self.answer(f"sleep 600 & echo $! > {self.folder}/sleeper; exec sleep 600")
        began = time.monotonic()
        self.assert_sent(self.submit(), b"direct")
        self.assertGreaterEqual(time.monotonic() - began, 5)
        os.kill(int((self.folder / "sleeper").read_text()), signal.SIGKILL)

    def test_a_descendant_that_holds_its_output_open(self):
        self.answer(f"sleep 600 & echo $! > {self.folder}/sleeper; echo http://127.0.0.1:{self.proxy.port}")
        self.assert_sent(self.submit(), b"by proxy")
        os.kill(int((self.folder / "sleeper").read_text()), signal.SIGKILL)


support.run_tests(needs_namespaces=True)
