# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""How long an upload may take: as long as it gets on, and no longer than a set time without any progress."""

import socket
import time

import http_server
import isolation
import program_tests
import report_text
import upload_form

RESULTS_URL = b"http://results.halvik.example/1"
LARGE = b"x" * 16_000_000  # more than the buffers between two sockets take


class StallTest(program_tests.ProgramTest):
    def submit(self, server, large=False, **others):
        return self.run_test_build(["-s"], self.commands(large), submit=server.url(), **others)

    def commands(self, large):
        (self.work / "filler").write_bytes(LARGE)
        return ["cat filler"] if large else ["echo here"]

    def report(self, large):
        return report_text.report([("cat filler", LARGE)] if large else [("echo here", "here\n")])

    def test_a_server_that_falls_silent(self):
        def after(sent):
            def script(exchange):
                exchange.send(sent)
                exchange.wait_until_closed_by_client()
            return script

        whole = http_server.head(200, 100)
        for name, sent in [("without an answer", b""), ("inside the head", whole[:20]), ("after the head", whole),
                           ("inside the body", whole + b"http://results"),
                           ("inside an error", http_server.head(500, 9))]:
            with self.subTest(name):
                server = http_server.Server(after(sent))
                ended = self.submit(server, env={"TEST_BUILD_STALL_MS": 300})
                server.close()
                self.assert_submission_failed(ended, self.report(False))
                self.desktop_file.unlink()

    def test_a_server_that_does_not_read(self):
        listener = socket.socket()
        self.addCleanup(listener.close)
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        listener.bind(("127.0.0.1", 0))
        listener.listen()
        submit = f"http://127.0.0.1:{listener.getsockname()[1]}/diagnosticsubmit"
        for large in (False, True):
            with self.subTest(large=large):
                ended = self.run_test_build(["-s"], self.commands(large), submit=submit, env={"TEST_BUILD_STALL_MS": 300})
                self.assert_submission_failed(ended, self.report(large))
                self.desktop_file.unlink()

    def test_a_server_that_does_not_even_accept(self):
        """Its queue is full, so that further connection requests are dropped without an answer."""
        listener = socket.socket()
        self.addCleanup(listener.close)
        listener.bind(("127.0.0.1", 0))
        listener.listen(0)
        for _ in range(4):
            waiting = socket.socket()
            self.addCleanup(waiting.close)
            waiting.setblocking(False)
            waiting.connect_ex(listener.getsockname())
        submit = f"http://127.0.0.1:{listener.getsockname()[1]}/diagnosticsubmit"
        ended = self.run_test_build(["-s"], self.commands(False), submit=submit, env={"TEST_BUILD_STALL_MS": 300})
        self.assert_submission_failed(ended, self.report(False))

    def test_a_redirect_into_silence(self):
        silent = http_server.Server(lambda exchange: exchange.wait_until_closed_by_client())
        server = http_server.Server(http_server.reply(b"", 302, ["Location: " + silent.url("/page")]))
        ended = self.submit(server, env={"TEST_BUILD_STALL_MS": 300})
        server.close()
        silent.close()
        self.assert_submission_failed(ended, self.report(False))
        self.assertEqual(len(silent.requests), 1)


class SlowProgressTest(program_tests.ProgramTest):
    """The time-out is less than all pauses together, and so long that a busy machine does not reach it in one."""

    STALL_MS = 10_000
    PAUSE = 0.7
    CHUNKS = 16

    def submit(self, server, commands=()):
        ended = self.run_test_build(["-s"], commands, submit=server.url(), env={"TEST_BUILD_STALL_MS": self.STALL_MS})
        server.close()
        return ended

    def test_a_slow_answer(self):
        def script(exchange):
            exchange.send(http_server.head(200, self.CHUNKS))
            for i in range(self.CHUNKS):
                time.sleep(self.PAUSE)
                exchange.send(b"%x" % i)

        ended = self.submit(http_server.Server(script))
        self.assertEqual((ended.stdout, ended.status), (b"url=f\n", 0))

    def test_a_slow_reader(self):
        (self.work / "filler").write_bytes(LARGE)
        read = bytearray()

        def script(exchange):
            while not read.endswith(upload_form.TAIL):
                if len(read) // (len(LARGE) // self.CHUNKS) < len(pauses):
                    read.extend(exchange.connection.recv(65536))
                else:
                    time.sleep(self.PAUSE)
                    pauses.append(len(read))
            http_server.reply(RESULTS_URL)(exchange)

        pauses = [0]
        ended = self.submit(http_server.Server(script, at_connect=True, receive_buffer=4096), ["cat filler"])
        self.assertEqual((ended.stdout, ended.status), (b"url=" + RESULTS_URL + b"\n", 0))
        self.assertGreaterEqual(len(pauses), self.CHUNKS)
        self.assertTrue(read.endswith(upload_form.around(report_text.report([("cat filler", LARGE)]))))


isolation.run_tests()
