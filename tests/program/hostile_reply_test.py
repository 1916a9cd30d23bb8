# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Servers whose redirects and replies mean harm: no report goes where it should not, and no text is obeyed."""

import http_server
import isolation
import report_text
from hostile_servers import RESULTS_URL, HostileTest, sends


class RedirectTest(HostileTest):
    def test_a_hundred_redirects(self):
        ended = self.submit(http_server.reply(b"", 302, ["Location: /again"]))
        self.assert_refused(ended, r"the redirect to /again is refused: Maximum \(20\) redirects followed", connections=21)

    def test_a_circle_that_asks_for_the_report_each_time(self):
        ended = self.submit(http_server.reply(b"", 307, ["Location: /diagnosticsubmit"]))
        self.assert_refused(ended, "the redirect to .* is refused: .*", connections=21)

    def test_long_heads(self):
        """The heads of all replies count together: sixteen of 4 KiB are as many bytes as they may have."""
        fields = ["Location: /again", "X: "]
        fields[1] += "x" * (4096 - len(http_server.head(302, 0, ["Connection: close", *fields])))
        ended = self.submit(http_server.reply(b"", 302, fields))
        self.assert_refused(ended, "no usable reply: its head is too long", connections=17)

    def test_to_other_protocols(self):
        for target in ("file:///etc/hostname", "data:text/plain,https://a", "ftp://127.0.0.1/a", "javascript:alert(1)",
                       "http://", "mailto:a@halvik.example", "qrc:/a"):
            for status in (302, 307):
                with self.subTest(target, status=status):
                    ended = self.submit(http_server.reply(b"", status, ["Location: " + target]))
                    self.assert_refused(ended, "the redirect to .* is refused: .*")

    def test_two_targets(self):
        """The first one counts."""
        server = self.serve(http_server.reply(b"", 302, ["Location: /a", "Location: /b"]),
                            http_server.reply(RESULTS_URL))
        self.assert_accepted(self.run_test_build(["-s"], submit=server.url()), RESULTS_URL)
        self.assertEqual(server.requests[1].target, "/a")

    def test_a_target_that_would_add_lines_to_the_request(self):
        target = "/a%0d%0aX-Added: 1 ?b=c d"
        server = self.serve(http_server.reply(b"", 302, ["Location: " + target]), http_server.reply(RESULTS_URL))
        self.assert_accepted(self.run_test_build(["-s"], submit=server.url()), RESULTS_URL)
        self.assertEqual(server.requests[1].target, "/a%0d%0aX-Added:%201%20?b=c+d")
        self.assertNotIn("x-added", server.requests[1].headers)

    def test_a_target_with_a_control(self):
        """Newer versions of libcurl encode it."""
        self.server = self.serve(http_server.reply(b"", 302, ["Location: /a\x01"]), http_server.reply(RESULTS_URL))
        ended = self.run_test_build(["-s"], submit=self.server.url())
        if ended.status == 0:
            self.assert_accepted(ended, RESULTS_URL)
            self.assertEqual(self.server.requests[1].target, "/a%01")
        else:
            self.assert_refused(ended, "the redirect to /a is refused: .*")

    def test_what_another_server_gets(self):
        """The report only where the same request is asked for again."""
        for status, method in ((301, "GET"), (302, "GET"), (303, "GET"), (307, "POST"), (308, "POST")):
            with self.subTest(status=status):
                other = self.serve(http_server.reply(RESULTS_URL))
                ended = self.submit(http_server.reply(b"", status, ["Location: " + other.url("/there")]))
                self.assert_accepted(ended, RESULTS_URL)
                request, = other.requests
                self.assertEqual(request.method, method)
                self.assertEqual(request.headers["host"], f"127.0.0.1:{other.port}")
                if method == "POST":
                    self.assertEqual(request.submitted, report_text.report())
                else:
                    self.assertEqual(request.body, b"")


class ReplyTextTest(HostileTest):
    """What the line url= holds is what the server sent, unchanged: a script that reads it must not trust it."""

    def test_whatever_stands_in_it(self):
        for reply in (b"file:///etc/passwd", b"javascript:alert(1)", b"\x1b]0;title\x07\x1b[2J", b"a\r\nurl=b\r\n",
                      "https://a/\u202egpj.exe".encode(), "\u2066\u200b\ufeff".encode(), b"\x01\x08\x7f",
                      b"$(touch x) `x` ; x", b" \t "):
            with self.subTest(reply):
                self.assert_accepted(self.submit(http_server.reply(reply)), reply)

    def test_a_long_one(self):
        """Sent in chunks as the network likes, it is represented by its end."""
        reply = b"https://a/" + b"x" * 60000
        ended = self.submit(http_server.reply(reply))
        self.assertEqual((ended.stderr, ended.status), (b"", 0))
        self.assertTrue(ended.stdout.startswith(b"url=") and ended.stdout.endswith(b"x\n"))
        self.assertTrue(reply.endswith(ended.stdout[4:-1]))

    def test_up_to_a_nul(self):
        self.assert_accepted(self.submit(http_server.reply(b"https://a/\0b")), b"https://a/")

    def test_what_is_no_utf8_is_left_out(self):
        for reply in (b"https://a/\xff", b"\xc3", b"\xed\xa0\x80"):
            self.assert_accepted(self.submit(http_server.reply(reply)), b"")

    def test_the_log_holds_nothing_that_a_terminal_obeys(self):
        words = "\x1b[31mred\x07\x9b31m\u202e\u2066\u200b\x7f".encode() + b"\x9b"
        ended = self.submit(sends(b"HTTP/1.1 500 " + words + b"\r\nContent-Length: 1\r\n\r\nx"))
        self.assert_refused(ended, "server replied: 500 \\[31mred31m")
        target = "ftp://a/".encode() + words[:-1]
        ended = self.submit(sends(b"HTTP/1.1 302 F\r\nLocation: " + target + b"\r\nContent-Length: 0\r\n\r\n"))
        self.assert_refused(ended, r"the redirect to [ -~]*")


isolation.run_tests()
