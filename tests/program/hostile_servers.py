# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Scripts of servers that mean harm, or are broken as if they did, and runs that meet them."""

import http_server
import program_tests
import report_text

RESULTS_URL = b"https://results.halvik.example/1"
STALL = {"TEST_BUILD_STALL_MS": 300}
PATIENCE = {"TEST_BUILD_STALL_MS": 1500}  # for what does move, and by a server that has to wait for a processor, too
OK = b"HTTP/1.1 200 OK\r\n"
CUT = "transfer closed with outstanding read data remaining"
CHUNKED = OK + b"Transfer-Encoding: chunked\r\n\r\n"
MEMORY_KB_MAX = 32 * 1024  # that a run may need beyond one that is answered well


def sends(data):
    """A script that sends these bytes and closes."""
    def script(exchange):
        exchange.send(data)
        exchange.close()
    return script


def floods(start, piece):
    """A script that sends a piece for ever, as fast as the client takes it."""
    block = piece * max(1, 65536 // len(piece))

    def script(exchange):
        exchange.send(start)
        while True:
            exchange.send(block)
    return script


def trickles(start, piece):
    """A script that sends a piece for ever, several times in each time without progress that ends an upload."""
    def script(exchange):
        exchange.send(start)
        while not closed_after(exchange, 0.05):
            exchange.send(piece)
    return script


def closed_after(exchange, seconds):
    """Waits for so long; whether the client has closed by then."""
    exchange.connection.settimeout(seconds)
    try:
        return not exchange.connection.recv(65536)
    except TimeoutError:
        return False


class HostileTest(program_tests.ProgramTest):
    def serve(self, *scripts, **others):
        server = http_server.Server(*scripts, **others)
        self.addCleanup(server.close)
        return server

    def submit(self, script, **others):
        self.server = self.serve(script)
        return self.run_test_build(["-s"], submit=self.server.url(), **others)

    def assert_refused(self, ended, reason, connections=1):
        """The upload failed for that reason, which is logged, and was tried once."""
        self.assert_submission_failed(ended, report_text.report())
        self.desktop_file.unlink()
        failed, saved, _ = ended.messages
        self.assertRegex(failed, "^sending to http://127.0.0.1:[0-9]+/diagnosticsubmit failed: " + reason + "$")
        self.assertRegex(saved, "^saving the report to ")
        self.assertEqual(self.server.connections, connections)

    def assert_accepted(self, ended, reply):
        self.assertEqual((ended.stdout, ended.stderr, ended.status), (b"url=" + reply + b"\n", b"", 0))
        self.assert_only_files(self.home, [])
