# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs that deliver in each way or fail to, whatever the machine is like."""

import http_server
import program_tests
import report_text

ALL = report_text.PLAN_LENGTH
ENDED_BY_ERROR = "the program ends after an error:"
URL = b"http://results.halvik.example/1"
OUTPUTS = [("echo I i \u0130 \u0131; echo m\u00fcll >&2", "I i \u0130 \u0131\n", "m\u00fcll\n"), ("seq 3", "1\n2\n3\n")]
LINES = [line for line, *_ in OUTPUTS]
REPORT = report_text.report(OUTPUTS)


class EnvironmentTest(program_tests.ProgramTest):
    def fail_to_submit(self, **others):
        submit = f"http://127.0.0.1:{http_server.unreachable_port(self)}/diagnosticsubmit"
        return self.run_test_build(["-s"], LINES, submit=submit, **others)

    def deliver_everywhere(self, **others):
        server = http_server.Server(http_server.reply(URL))
        ended = self.run_test_build(["-s", "-c", "-o=F", "-i"], LINES, submit=server.url(), **others)
        server.close()
        return ended, server

    def assert_delivered_everywhere(self, ended, server):
        self.assertEqual((ended.status, ended.stderr), (0, b""))
        self.assert_same_text(ended.stdout, REPORT + b"\noutputFile=F\nurl=" + URL + b"\n")
        self.assertEqual([request.submitted for request in server.requests], [REPORT])
        self.assert_same_text((self.work / "F").read_bytes(), REPORT)
