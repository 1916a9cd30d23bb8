# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Where a headless run's report goes: standard output, the output file, the upload, and in which order."""

import os
import select

import http_server
import isolation
import program_tests
import report_text

RESULTS_URL = b"http://results.halvik.example/1234"


class DestinationTest(program_tests.ProgramTest):
    # options, report printed, file written, uploaded
    COMBINATIONS = [
        ([], False, False, True),
        (["-c"], True, False, False),
        (["-o=F"], False, True, False),
        (["-c", "-o=F"], True, True, False),
        (["-i"], False, False, True),
        (["-i", "-c"], True, False, True),
        (["-i", "-o=F"], False, True, True),
        (["-i", "-c", "-o=F"], True, True, True),
        (["-o="], False, False, True),
        (["-c", "-o="], True, False, False),
        (["--console", "--internet", "--output=F"], True, True, True),
    ]
    OUTPUTS = [
        ("echo first", "first\n"),
        ("printf 'no line end'; echo problem >&2; exit 3", "no line end", "problem\n"),
        ("printf '\\303\\244\\360\\237\\230\\200\\r\\n\\t'", "\u00e4\U0001f600\r\n\t"),
        ("kill -9 $$",),
        ("echo only errors >&2", "", "only errors\n"),
        ("printf '\\n'", "\n"),
    ]

    def test_every_combination_of_destinations(self):
        commands = [line for line, *_ in self.OUTPUTS]
        report = report_text.report(self.OUTPUTS)
        for options, printed, written, uploaded in self.COMBINATIONS:
            with self.subTest(options):
                server = http_server.Server(http_server.reply(RESULTS_URL))
                ended = self.run_test_build(["-s", *options], commands, submit=server.url())
                server.close()
                expected = b""
                if printed:
                    expected += report + b"\n"
                if written:
                    expected += b"outputFile=F\n"
                    self.assert_same_text((self.work / "F").read_bytes(), report)
                    (self.work / "F").unlink()
                if uploaded:
                    expected += b"url=" + RESULTS_URL + b"\n"
                self.assert_same_text(ended.stdout, expected)
                self.assertEqual([request.submitted for request in server.requests], [report] * uploaded)
                self.assertEqual(ended.status, 0)
                self.assertEqual(ended.stderr, b"")
                self.assert_only_files(self.work, [])
                self.assert_only_files(self.home, [])

    def test_console_and_file_are_complete_before_the_upload_starts(self):
        report = report_text.report([("echo first", "first\n")])
        expected = report + b"\n" + b"outputFile=F\n"
        reader, writer = os.pipe()
        seen = {}

        def look(exchange):
            seen["file"] = (self.work / "F").read_bytes()
            seen["printed"] = b""
            while len(seen["printed"]) < len(expected) and select.select([reader], [], [], 20)[0]:
                seen["printed"] += os.read(reader, 65536)
            http_server.reply(RESULTS_URL)(exchange)

        server = http_server.Server(look)
        ended = self.run_test_build(["-s", "-i", "-c", "-o=F"], ["echo first"], submit=server.url(), stdout=writer)
        server.close()
        os.close(writer)
        with open(reader, "rb") as rest:
            self.assertEqual(rest.read(), b"url=" + RESULTS_URL + b"\n")
        self.assertEqual(ended.status, 0)
        self.assertEqual(seen, {"file": report, "printed": expected})

    def test_a_failed_upload_leaves_the_other_deliveries_as_they_were(self):
        report = report_text.report([("echo first", "first\n")])
        submit = f"http://127.0.0.1:{http_server.unreachable_port(self)}/diagnosticsubmit"
        ended = self.run_test_build(["-s", "-i", "-c", "-o=F"], ["echo first"], submit=submit)
        self.assert_submission_failed(ended, report, report + b"\noutputFile=F\n")
        self.assert_same_text((self.work / "F").read_bytes(), report)

    def test_the_reply_is_printed_as_it_came(self):
        for reply in (b"http://a.example/1\n", b"http://a.example/1\r\n\r\n", b"  two words  ", b"%s%d%n",
                      "http://\u00e4.example/\U0001f600".encode(), b"\n"):
            with self.subTest(reply):
                server = http_server.Server(http_server.reply(reply))
                ended = self.run_test_build(["-s"], submit=server.url())
                server.close()
                self.assertEqual(ended.stdout, b"url=" + reply + b"\n")
                self.assertEqual(ended.status, 0)


class TextTest(program_tests.ProgramTest):
    def test_a_nul_ends_console_and_upload_but_not_the_files(self):
        outputs = [("echo before", "before\n"), ("printf 'left\\0right\\0'", "left\0right\0"),
                   ("echo after", "after\n")]
        commands = [line for line, *_ in outputs]
        report = report_text.report(outputs)
        shown = report[:report.index(b"\0")]
        self.assertTrue(shown.endswith(b"left"))

        server = http_server.Server(http_server.reply(RESULTS_URL), http_server.reply(b""))
        ended = self.run_test_build(["-s", "-c", "-i", "-o=F"], commands, submit=server.url())
        self.assertEqual(ended.stdout, shown + b"\noutputFile=F\nurl=" + RESULTS_URL + b"\n")
        self.assert_same_text((self.work / "F").read_bytes(), report)

        ended = self.run_test_build(["-s"], commands, submit=server.url())
        server.close()
        self.assert_submission_failed(ended, report)
        self.assertEqual([request.submitted for request in server.requests], [shown, shown])

    def test_a_stream_that_is_not_utf8_is_left_out(self):
        good = [b"\xef\xbb\xbfmark", b"\xef\xbf\xbf", b"\xed\x9f\xbf\xee\x80\x80", b"\xf4\x8f\xbf\xbf",
                b"\x7f\x01\x1b[0m", b"\xc2\x80", b"\xdf\xbf\xe0\xa0\x80\xf0\x90\x80\x80", b"\xef\xbf\xbd"]
        bad = [b"\xff", b"\x80", b"ok \xc3", b"\xc3 ok", b"\xc0\x80", b"\xe0\x80\x80", b"\xed\xa0\x80", b"\xed\xbf\xbf",
               b"\xf4\x90\x80\x80", b"\xf5\x80\x80\x80", b"\xf0\x80\x80\x80", b"\xe2\x82", b"long " * 50000 + b"\xfe",
               b"caf\xe9\n"]
        outputs = []
        for i, text in enumerate(good + bad):
            (self.work / f"text-{i}").write_bytes(text)
            shown = text if text in good else b""
            outputs.append((f"cat text-{i}; echo errors {i} >&2", shown, f"errors {i}\n"))
            outputs.append((f"echo out {i}; cat text-{i} >&2", f"out {i}\n", shown))
        ended = self.run_test_build(["-s", "-c"], [line for line, *_ in outputs])
        self.assert_same_text(ended.stdout, report_text.report(outputs) + b"\n")
        self.assertEqual(ended.status, 0)

    def test_output_that_looks_like_the_report_itself(self):
        text = report_text.block("/bin/false", "made up\n") + report_text.SEPARATOR * 3
        text += b"\nstdout:\nurl=none\noutputFile=none\n"
        (self.work / "text").write_bytes(text)
        outputs = [("cat text", text), ("cat text >&2", "", text)]
        ended = self.run_test_build(["-s", "-c"], ["cat text", "cat text >&2"])
        self.assert_same_text(ended.stdout, report_text.report(outputs) + b"\n")


class AmountTest(program_tests.ProgramTest):
    def test_every_byte_of_many_talkative_commands(self):
        """Each command writes a megabyte to either stream, to both at once and in the chunks that pipes make of it."""
        def numbers(first):
            return range(first, first + 130000)

        def text(first):
            return "".join(f"{number}\n" for number in numbers(first))

        outputs = []
        for i in range(report_text.PLAN_LENGTH):
            out, err = 1000000 + 1000 * i, 3000000 + 1000 * i
            line = f"seq {out} {numbers(out)[-1]} & seq {err} {numbers(err)[-1]} >&2; wait"
            outputs.append((line, text(out), text(err)))
        ended = self.run_test_build(["-s", "-c", "-o=F"], [line for line, *_ in outputs])
        expected = report_text.report(outputs)
        self.assertGreater(len(expected), 100_000_000)
        self.assert_same_text((self.work / "F").read_bytes(), expected)
        self.assert_same_text(ended.stdout, expected + b"\noutputFile=F\n")
        self.assertEqual(ended.status, 0)

    def test_pieces_that_end_inside_characters(self):
        chunks = "; ".join(f"printf '\\{byte:o}'; /bin/true" for byte in "\u00e9\u20ac\U0001f600".encode() * 20)
        outputs = [(chunks, "\u00e9\u20ac\U0001f600" * 20), ("exec >&2; " + chunks, "", "\u00e9\u20ac\U0001f600" * 20)]
        ended = self.run_test_build(["-s", "-c"], [line for line, *_ in outputs])
        self.assert_same_text(ended.stdout, report_text.report(outputs) + b"\n")


isolation.run_tests()
