# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Servers that never come to an end or contradict themselves: no lost report, no end of time or memory."""

import gzip
import os
import socket
import zlib

import http_server
import isolation
import polling
import program_tests
import report_text
import upload_form
from hostile_servers import (CHUNKED, CUT, MEMORY_KB_MAX, OK, PATIENCE, RESULTS_URL, STALL, HostileTest, floods, sends,
                             trickles)


# The words of one version of libcurl, and of a later one.
LONG_LINE = "(Out of memory|A value or data field grew larger than allowed)"
COMPRESSED = (r"(no usable reply: it is compressed, which nobody asked for"
              r"|Unsolicited Transfer-Encoding \(gzip.*\) found)")
CUT_OF_SIX = "(transfer closed with 6 bytes remaining to read|end of response with 6 bytes missing)"


class EndlessTest(HostileTest):
    """The memory is the most that the program had at any time, as the system measured it."""

    def memory_of(self, script, **others):
        """Runs the test build; how it ended, and the most memory that it had, in KiB."""
        server = self.server = self.serve(script)
        process = self.start_test_build(["-s"], submit=server.url(), **others)
        stdout, stderr = process.stdout.read(), process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        return program_tests.Ended(process.path, process.pid, process.returncode, stdout, stderr), usage.ru_maxrss

    def test_what_never_ends(self):
        _, usual = self.memory_of(http_server.reply(RESULTS_URL))
        long_head = "(no usable reply: its head is too long|Too many response headers, 5000 is max)"
        long_body = "no usable reply: it is longer than 1048576 bytes"
        for name, start, piece, reason in [
            ("a first line", OK[:-2], b"x", LONG_LINE),
            ("no line at all", b"", b"x", "Received HTTP/0.9 when not allowed"),
            ("a line of the head", OK + b"X: ", b"x", LONG_LINE),
            ("lines of the head", OK, b"X: y\r\n", long_head),
            ("interim replies", b"", b"HTTP/1.1 103 Early Hints\r\n\r\n", long_head),
            ("a body without a length", OK + b"\r\n", b"x", long_body),
            ("a body of a huge length", OK + b"Content-Length: 9000000000000000000\r\n\r\n", b"x", long_body),
            ("chunks", CHUNKED, b"4\r\nabcd\r\n", long_body),
            ("one chunk", CHUNKED + b"ffffffffffffff\r\n", b"x", long_body),
            ("the size of a chunk", CHUNKED, b"0",
             "(Too long hexadecimal number in chunked-encoding|chunk hex-length longer than 16)"),
            ("the extension of a chunk", CHUNKED + b"4;", b"x", "nothing has moved for too long"),
            ("the body of an error", b"HTTP/1.1 500 Broken\r\n\r\n", b"x", long_body),
        ]:
            with self.subTest(name):
                ended, memory = self.memory_of(floods(start, piece), env=PATIENCE)
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
        for data in (http_server.head(200, 3) + b"url", CHUNKED + b"3\r\nurl\r\n0\r\n\r\n"):
            def script(exchange):
                polling.wait_until(lambda: self.process, "the program is known")
                for byte in data:
                    exchange.wait_until_taken(self.process.pid)
                    exchange.send(bytes([byte]))

            self.process = None
            server = self.serve(script)
            # Whole heads have come late on a busy machine, as each byte waits until the last one is taken.
            self.process = self.start_test_build(["-s"], submit=server.url(), env={"TEST_BUILD_STALL_MS": 600_000})
            self.assert_accepted(self.finish(self.process), b"l")

    def test_compressed_bombs(self):
        _, usual = self.memory_of(http_server.reply(RESULTS_URL))
        packer = zlib.compressobj(9, zlib.DEFLATED, 31)
        bomb = b"".join(packer.compress(bytes(1 << 20)) for _ in range(1024)) + packer.flush()
        for field, body in (("Content-Encoding: gzip", bomb), ("Content-Encoding: deflate", bomb),
                            ("Content-Encoding: br", bomb), ("Content-Encoding: zstd", bomb),
                            ("Content-Encoding: rot13", b"abc"), ("Content-Encoding: gzip", gzip.compress(RESULTS_URL)),
                            ("Content-Encoding: gzip, gzip", bomb), ("Transfer-Encoding: gzip", bomb),
                            ("Transfer-Encoding: gzip, chunked", b"%x\r\n%b\r\n0\r\n\r\n" % (len(bomb), bomb))):
            with self.subTest(field):
                ended, memory = self.memory_of(http_server.reply(body, fields=[field]))
                self.assert_refused(ended, COMPRESSED)
                self.assertLess(memory, usual + MEMORY_KB_MAX)
                self.assertEqual(self.server.requests[0].headers["accept-encoding"], "identity")


class MalformedReplyTest(HostileTest):
    def test_a_body_that_is_not_what_the_head_says(self):
        for name, data, reason in [
            ("shorter than its length", OK + b"Content-Length: 9\r\n\r\nurl",
             CUT_OF_SIX),
            ("a length that is no number", OK + b"Content-Length: nine\r\n\r\nurl", "Invalid Content-Length: value"),
            ("a negative length", OK + b"Content-Length: -3\r\n\r\nurl", "Invalid Content-Length: value"),
            ("two lengths", OK + b"Content-Length: 3\r\nContent-Length: 9\r\n\r\nurl",
             CUT_OF_SIX),
            ("inside a chunk", CHUNKED + b"9\r\nurl", CUT),
            ("behind a chunk", CHUNKED + b"3\r\nurl", CUT),
            ("before the last chunk", CHUNKED + b"3\r\nurl\r\n", CUT),
            ("a chunk that is too long", CHUNKED + b"2\r\nurl\r\n0\r\n\r\n",
             "Malformed encoding found in chunked-encoding"),
            ("a chunk without a size", CHUNKED + b"url\r\n0\r\n\r\n",
             "(Illegal or missing hexadecimal sequence in chunked-encoding|"
             "chunk hex-length char not a hex digit: 0x75)"),
            ("an unknown form of transfer", OK + b"Transfer-Encoding: gzip, chunked\r\n\r\n",
             COMPRESSED),
            ("nothing", b"", "Empty reply from server"),
            ("another protocol", b"SSH-2.0-x\r\n", "Received HTTP/0.9 when not allowed"),
            ("HTTP/2", b"HTTP/2 200\r\n\r\n", "the reply is empty"),
            ("a change to HTTP/2", b"HTTP/1.1 101 Switching Protocols\r\nUpgrade: h2c\r\n\r\n",
             "Empty reply from server"),
        ]:
            with self.subTest(name):
                self.assert_refused(self.submit(sends(data)), reason)

    def test_a_status_of_four_digits(self):
        """Newer versions of libcurl read the first three."""
        ended = self.submit(sends(b"HTTP/1.1 2000 OK\r\n\r\nurl"))
        if ended.status == 0:
            self.assert_accepted(ended, b"url")
        else:
            self.assert_refused(ended, "Unsupported response code in HTTP response")

    def test_more_than_the_head_says(self):
        """What stands behind the end of the reply is not part of it. A length beyond all numbers does not count."""
        for data in (OK + b"Content-Length: 3\r\n\r\nurl and more", CHUNKED + b"3\r\nurl\r\n0\r\n\r\nand more",
                     OK + b"Content-Length: 9\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nurl\r\n0\r\n\r\n",
                     OK + b"Content-Length: 3\r\ncontent-length: 3\r\nX: 1\r\nX: 2\r\n\r\nurl",
                     OK + b"Content-Length: 99999999999999999999\r\n\r\nurl"):
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

    def test_an_answer_before_a_small_report_was_read(self):
        """The system has taken all of it by then; whether the server has read it, a client cannot know."""
        def script(exchange):
            polling.wait_until(lambda: exchange.connection.recv(65536, socket.MSG_PEEK).endswith(upload_form.TAIL),
                               "the system has the report")
            exchange.send(http_server.head(200, len(RESULTS_URL)) + RESULTS_URL)
            exchange.wait_until_closed_by_client()

        server = self.serve(script, at_connect=True)
        self.assert_accepted(self.run_test_build(["-s"], submit=server.url()), RESULTS_URL)


isolation.run_tests()
