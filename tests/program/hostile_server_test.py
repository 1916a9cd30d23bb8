# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Servers that mean harm, or are broken as if they did: no lie, no lost report, no end of time or memory."""

import gzip
import os
import socket
import zlib

import http_server
import isolation
import polling
import program_tests
import report_text

RESULTS_URL = b"https://results.halvik.example/1"
STALL = {"STAND_IN_STALL_MS": 300}
PATIENCE = {"STAND_IN_STALL_MS": 1500}  # for what does move, and by a server that has to wait for a processor, too
OK = b"HTTP/1.1 200 OK\r\n"
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


class EndlessTest(HostileTest):
    """The memory is the most that the program had at any time, as the system measured it."""

    def memory_of(self, script):
        """Runs the test build; how it ended, and the most memory that it had, in KiB."""
        server = self.server = self.serve(script)
        process = self.start_test_build(["-s"], submit=server.url())
        stdout, stderr = process.stdout.read(), process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        return program_tests.Ended(process.path, process.pid, process.returncode, stdout, stderr), usage.ru_maxrss

    def test_what_never_ends(self):
        _, usual = self.memory_of(http_server.reply(RESULTS_URL))
        long_head = "no usable reply: its head is too long"
        long_body = "no usable reply: it is longer than 1048576 bytes"
        long_size = "no usable reply: the size of a chunk is too long"
        for name, start, piece, reason in [
            ("a first line", OK[:-2], b"x", long_head),
            ("no line at all", b"", b"x", long_head),
            ("a line of the head", OK + b"X: ", b"x", long_head),
            ("lines of the head", OK, b"X: y\r\n", long_head),
            ("interim replies", b"", b"HTTP/1.1 103 Early Hints\r\n\r\n", long_head),
            ("a body without a length", OK + b"\r\n", b"x", long_body),
            ("a body of a huge length", OK + b"Content-Length: 9000000000000000000\r\n\r\n", b"x", long_body),
            ("chunks", CHUNKED, b"4\r\nabcd\r\n", long_body),
            ("one chunk", CHUNKED + b"ffffffffffffff\r\n", b"x", long_body),
            ("the size of a chunk", CHUNKED, b"0", long_size),
            ("the extension of a chunk", CHUNKED + b"4;", b"x", long_size),
            ("the body of an error", b"HTTP/1.1 500 Broken\r\n\r\n", b"x", long_body),
        ]:
            with self.subTest(name):
                ended, memory = self.memory_of(floods(start, piece))
                self.assert_refused(ended, reason)
                self.assertLess(memory, usual + MEMORY_KB_MAX)

    def test_byte_by_byte(self):
        """A head must come whole within the time without progress; a body that does move, within ten times that."""
        for name, start, piece, env, reason in [
            ("a head", OK + b"X: ", b"x", STALL, "nothing has moved for too long"),
            ("interim replies", b"", b"HTTP/1.1 102 Processing\r\n\r\n", STALL, "nothing has moved for too long"),
            ("the size of a chunk", CHUNKED, b"0", STALL, "nothing has moved for too long"),
            ("a body", OK + b"\r\n", b"x", PATIENCE, "the reply takes too long"),
            ("chunks", CHUNKED, b"1\r\nx\r\n", PATIENCE, "the reply takes too long"),
        ]:
            with self.subTest(name):
                self.assert_refused(self.submit(trickles(start, piece), env=env), reason)

    def test_a_whole_reply_byte_by_byte(self):
        for data in (http_server.head(200, 3) + b"url", CHUNKED + b"3\r\nurl\r\n0\r\n"):
            def script(exchange):
                polling.wait_until(lambda: self.process, "the program is known")
                for byte in data:
                    exchange.wait_until_taken(self.process.pid)
                    exchange.send(bytes([byte]))

            self.process = None
            server = self.serve(script)
            # Whole heads have come late on a busy machine, as each byte waits until the last one is taken.
            self.process = self.start_test_build(["-s"], submit=server.url(), env={"STAND_IN_STALL_MS": 600_000})
            self.assert_accepted(self.finish(self.process), b"l")

    def test_compressed_bombs(self):
        _, usual = self.memory_of(http_server.reply(RESULTS_URL))
        packer = zlib.compressobj(9, zlib.DEFLATED, 31)
        bomb = b"".join(packer.compress(bytes(1 << 20)) for _ in range(1024)) + packer.flush()
        for coding, body in (("gzip", bomb), ("deflate", bomb), ("br", bomb), ("zstd", bomb), ("rot13", b"abc"),
                             ("gzip", gzip.compress(RESULTS_URL)), ("gzip, gzip", bomb)):
            with self.subTest(coding):
                ended, memory = self.memory_of(http_server.reply(body, fields=[f"Content-Encoding: {coding}"]))
                self.assert_refused(ended, "no usable reply: it is compressed, which nobody asked for")
                self.assertLess(memory, usual + MEMORY_KB_MAX)
                self.assertEqual(self.server.requests[0].headers["accept-encoding"], "identity")


class LyingTest(HostileTest):
    def test_a_body_that_is_not_what_the_head_says(self):
        for name, data, reason in [
            ("shorter than its length", OK + b"Content-Length: 9\r\n\r\nurl", "it breaks off"),
            ("a length that is no number", OK + b"Content-Length: nine\r\n\r\nurl", "its length is no number"),
            ("a negative length", OK + b"Content-Length: -3\r\n\r\nurl", "its length is no number"),
            ("a length beyond all numbers", OK + b"Content-Length: 99999999999999999999\r\n\r\nurl",
             "its length is no number"),
            ("two lengths", OK + b"Content-Length: 3\r\nContent-Length: 9\r\n\r\nurl",
             "it contradicts itself in content-length"),
            ("inside a chunk", CHUNKED + b"9\r\nurl", "it breaks off"),
            ("behind a chunk", CHUNKED + b"3\r\nurl", "it breaks off"),
            ("before the last chunk", CHUNKED + b"3\r\nurl\r\n", "it breaks off"),
            ("a chunk that is too long", CHUNKED + b"2\r\nurl\r\n0\r\n\r\n", "a chunk is longer than it says"),
            ("a chunk without a size", CHUNKED + b"url\r\n0\r\n\r\n", "the size of a chunk is no number"),
            ("an unknown form of transfer", OK + b"Transfer-Encoding: gzip, chunked\r\n\r\n",
             "its transfer encoding is unknown"),
            ("nothing", b"", "the connection was closed without one"),
            ("another protocol", b"SSH-2.0-x\r\n", "what came is none of HTTP/1"),
            ("HTTP/2", b"HTTP/2 200\r\n\r\n", "what came is none of HTTP/1"),
            ("a change to HTTP/2", b"HTTP/1.1 101 Switching Protocols\r\nUpgrade: h2c\r\n\r\n",
             "it switches to a protocol that nobody asked for"),
            ("a status of four digits", b"HTTP/1.1 2000 OK\r\n\r\nurl", "what came is none of HTTP/1"),
        ]:
            with self.subTest(name):
                self.assert_refused(self.submit(sends(data)), "no usable reply: " + reason)

    def test_more_than_the_head_says(self):
        """What stands behind the end of the reply is none of it."""
        for data in (OK + b"Content-Length: 3\r\n\r\nurl and more", CHUNKED + b"3\r\nurl\r\n0\r\n\r\nand more",
                     OK + b"Content-Length: 9\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nurl\r\n0\r\n\r\n",
                     OK + b"Content-Length: 3\r\ncontent-length: 3\r\nX: 1\r\nX: 2\r\n\r\nurl"):
            with self.subTest(data):
                self.assert_accepted(self.submit(sends(data)), b"url")

    def test_an_empty_reply(self):
        self.assert_refused(self.submit(http_server.reply(b"")), "the reply is empty")

    def test_an_answer_before_the_report_was_read(self):
        """One that refuses it counts; no other can be about this report."""
        (self.work / "filler").write_bytes(b"x" * 16_000_000)
        report = report_text.report([("cat filler", b"x" * 16_000_000)])
        for status, then, reason in [
            (200, http_server.Exchange.close, ""),
            (200, http_server.Exchange.wait_until_closed_by_client,
             "the server answered before it had the whole request"),
            (413, http_server.Exchange.wait_until_closed_by_client, "server replied: 413 Reply"),
        ]:
            with self.subTest(status=status, then=then.__name__):
                def script(exchange):
                    exchange.connection.recv(100)
                    exchange.send(http_server.head(status, len(RESULTS_URL)) + RESULTS_URL)
                    then(exchange)

                server = self.serve(script, at_connect=True)
                ended = self.run_test_build(["-s"], ["cat filler"], submit=server.url())
                self.assert_submission_failed(ended, report)
                self.assertRegex(ended.messages[0], reason + "$")


class RedirectTest(HostileTest):
    def test_a_hundred_redirects(self):
        ended = self.submit(http_server.reply(b"", 302, ["Location: /again"]))
        self.assert_refused(ended, r"the redirect to http://127.0.0.1:[0-9]+/again is refused", connections=21)

    def test_a_circle_that_asks_for_the_report_each_time(self):
        ended = self.submit(http_server.reply(b"", 307, ["Location: /diagnosticsubmit"]))
        self.assert_refused(ended, "the redirect to .* is refused", connections=21)

    def test_to_other_protocols(self):
        for target in ("file:///etc/hostname", "data:text/plain,https://a", "ftp://127.0.0.1/a", "javascript:alert(1)",
                       "http://", "mailto:a@halvik.example", "qrc:/a"):
            for status in (302, 307):
                with self.subTest(target, status=status):
                    ended = self.submit(http_server.reply(b"", status, ["Location: " + target]))
                    self.assert_refused(ended, "the redirect to .* is refused")

    def test_two_targets(self):
        ended = self.submit(http_server.reply(b"", 302, ["Location: /a", "Location: /b"]))
        self.assert_refused(ended, "no usable reply: it contradicts itself in location")

    def test_a_target_that_would_add_lines_to_the_request(self):
        target = "/a%0d%0aX-Added: 1 \x01?b=c d"
        server = self.serve(http_server.reply(b"", 302, ["Location: " + target]), http_server.reply(RESULTS_URL))
        self.assert_accepted(self.run_test_build(["-s"], submit=server.url()), RESULTS_URL)
        self.assertEqual(server.requests[1].target, "/a%0D%0AX-Added:%201%20%01?b=c%20d")
        self.assertNotIn("x-added", server.requests[1].headers)

    def test_what_another_server_gets(self):
        """The report only where the same request is asked for again."""
        for status, method in ((302, "GET"), (303, "GET"), (307, "POST"), (308, "POST")):
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
    """What the line url= holds is what the server sent, for better or worse: whoever reads it must not trust it."""

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
        self.assert_refused(ended, "server replied: 500 \\[31mred31m\ufffd")
        target = "ftp://a/".encode() + words[:-1]
        ended = self.submit(sends(b"HTTP/1.1 302 F\r\nLocation: " + target + b"\r\nContent-Length: 0\r\n\r\n"))
        self.assert_refused(ended, r"the redirect to [ -~]* is refused")


class FamilyTest(program_tests.ProgramTest):
    """The two families of addresses, of which a host may have one or both, and only one may lead anywhere."""

    NAME = "families.halvik.example"

    def submit(self, *addresses, family, prepare=lambda server: None):
        hosts = self.folder / "hosts"
        hosts.write_text("".join(f"{address} {self.NAME}\n" for address in addresses))
        isolation.cover("/etc/hosts", hosts)
        self.addCleanup(isolation.uncover, "/etc/hosts")
        server = http_server.Server(http_server.reply(RESULTS_URL), family=family)
        self.addCleanup(server.close)
        prepare(server)
        ended = self.run_test_build(["-s"], submit=f"http://{self.NAME}:{server.port}/diagnosticsubmit")
        self.assertEqual((ended.stdout, ended.stderr, ended.status), (b"url=" + RESULTS_URL + b"\n", b"", 0))
        self.assertEqual(server.requests[0].headers["host"], f"{self.NAME}:{server.port}")

    @isolation.needs_namespaces
    def test_a_host_with_addresses_of_one_family(self):
        self.submit("::1", family=socket.AF_INET6)
        self.submit("127.0.0.1", family=socket.AF_INET)

    @isolation.needs_namespaces
    def test_a_host_that_refuses_by_one_family(self):
        for family in (socket.AF_INET, socket.AF_INET6):
            with self.subTest(family):
                self.submit("::1", "127.0.0.1", family=family)

    @isolation.needs_namespaces
    def test_a_host_that_swallows_what_is_sent_by_one_family(self):
        """Its queue is full, so that connection requests go unanswered: a moment lost, not the upload."""
        def swallow(server):
            listener = socket.socket(socket.AF_INET6)
            self.addCleanup(listener.close)
            listener.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
            listener.bind(("::1", server.port))
            listener.listen(0)
            for _ in range(4):
                waiting = socket.socket(socket.AF_INET6)
                self.addCleanup(waiting.close)
                waiting.setblocking(False)
                waiting.connect_ex(listener.getsockname())

        self.submit("::1", "127.0.0.1", family=socket.AF_INET, prepare=swallow)

    def test_an_address_in_place_of_a_name(self):
        server = http_server.Server(http_server.reply(RESULTS_URL), family=socket.AF_INET6)
        self.addCleanup(server.close)
        ended = self.run_test_build(["-s"], submit=f"http://[::1]:{server.port}/diagnosticsubmit")
        self.assertEqual((ended.stdout, ended.status), (b"url=" + RESULTS_URL + b"\n", 0))
        self.assertEqual(server.requests[0].headers["host"], f"[::1]:{server.port}")


isolation.run_tests()
