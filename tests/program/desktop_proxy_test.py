# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The proxy that the desktop is set to, as the command `proxy` of libproxy prints it. A script answers in its place."""

import os
import pathlib
import signal
import time
import unittest

import http_server
import isolation
import program_tests
import report_text

HOST = "diagnostic.halvik.example"
COMMAND = pathlib.Path("/usr/bin/proxy")


@unittest.skipUnless(COMMAND.exists(), "the command proxy of libproxy-tools is not installed")
class DesktopProxyTest(program_tests.ProgramTest):
    def setUp(self):
        super().setUp()
        (self.folder / "hosts").write_text(f"127.0.0.1 localhost {HOST}\n")
        isolation.cover("/etc/hosts", self.folder / "hosts")
        self.addCleanup(isolation.uncover, "/etc/hosts")
        self.direct = self.serve(b"direct")
        self.proxy = self.serve(b"by proxy")
        self.url = f"http://{HOST}:{self.direct.port}/diagnosticsubmit"

    def serve(self, reply):
        server = http_server.Server(http_server.reply(reply))
        self.addCleanup(server.close)
        return server

    def answer(self, script):
        """Has the command run a shell script."""
        path = self.folder / "proxy"
        is_covered = path.exists()
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)
        if not is_covered:
            isolation.cover(COMMAND, path)
            self.addCleanup(isolation.uncover, COMMAND)

    def submit(self, **variables):
        return self.run_test_build(["-s"], submit=self.url, env=variables)

    def assert_sent(self, ended, reply):
        self.assertEqual((ended.stdout, ended.stderr, ended.status), (b"url=" + reply + b"\n", b"", 0))

    def test_the_real_command_without_settings(self):
        self.assert_sent(self.submit(), b"direct")

    def test_its_answer_is_used(self):
        self.answer(f'echo "$@" > {self.folder}/asked; echo http://127.0.0.1:{self.proxy.port} direct://')
        self.assert_sent(self.submit(), b"by proxy")
        self.assertEqual((self.folder / "asked").read_text(), self.url + "\n")
        self.assertEqual([request.submitted for request in self.proxy.requests], [report_text.report()])
        self.assertEqual(self.proxy.requests[0].target, self.url)

    def test_what_is_no_proxy(self):
        for script in ("echo direct://", "exit 1", "echo failed >&2; exit 1", "kill -SEGV $$", ":"):
            with self.subTest(script):
                self.answer(script)
                self.assert_sent(self.submit(), b"direct")

    def test_a_proxy_that_cannot_be_used_is_a_failed_upload(self):
        for answer in ("nonsense://", f"http://127.0.0.1:{http_server.unreachable_port(self)}"):
            with self.subTest(answer):
                self.answer(f"echo {answer}")
                self.assert_submission_failed(self.submit(), report_text.report())
                self.desktop_file.unlink()

    def test_the_environment_counts_first(self):
        self.answer(f"touch {self.folder}/asked; echo http://127.0.0.1:{http_server.unreachable_port(self)}")
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


isolation.run_tests(needs_namespaces=True)
