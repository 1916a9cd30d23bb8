# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the submission endpoint receives of a report that is too large for it."""

import signal

import http_server
import isolation
import program_tests
import report_text
from report_text import SEPARATOR

LIMIT = 1_000_000
MARKER = b"<This log has been trimmed>"
RESULTS_URL = b"http://results.halvik.example/1"


class TrimmingTest(program_tests.ProgramTest):
    def setUp(self):
        super().setUp()
        self.server = http_server.Server(http_server.reply(RESULTS_URL))
        self.addCleanup(self.server.close)

    def outputs_of_size(self, size, *outputs):
        """Outputs for a report of exactly that many bytes: the given ones, and a filler before them."""
        missing = size - len(report_text.report([("cat filler", "x"), *outputs])) + 1
        self.assertGreater(missing, 0)
        return [("cat filler", "x" * missing), *outputs]

    def submit(self, outputs, options=("-s",)):
        for name, text in ((line.split()[1], text) for line, text in outputs):
            (self.work / name).write_bytes(report_text.as_bytes(text))
        ended = self.run_test_build(options, [line for line, _ in outputs], submit=self.server.url())
        return ended, report_text.report(outputs)

    def submitted(self, outputs, size):
        """What arrives for these outputs, whose report has the given size; the file gets the whole of it."""
        self.server.requests.clear()
        ended, report = self.submit(outputs, ["-s", "-i", "-o=F"])
        self.assertEqual(len(report), size)
        self.assert_same_text((self.work / "F").read_bytes(), report)
        self.assertEqual(ended.stdout, b"outputFile=F\nurl=" + RESULTS_URL + b"\n")
        self.assertEqual(ended.status, 0)
        return self.server.requests[0].submitted, report

    def test_up_to_the_limit_nothing_is_cut(self):
        log = ("cat log # tail", "a line\n" * 1000)
        for size in (LIMIT - 1, LIMIT):
            with self.subTest(size):
                sent, report = self.submitted(self.outputs_of_size(size, log), size)
                self.assert_same_text(sent, report)

    def test_one_byte_too_many_costs_28_of_the_log(self):
        log = ("cat log # tail", "".join(f"line {i:04}\n" for i in range(1000)))
        sent, report = self.submitted(self.outputs_of_size(LIMIT + 1, log), LIMIT + 1)
        end = report.index(b"line 0999\n\n") + len(b"line 0999\n\n")
        self.assert_same_text(sent, report[:end - 28] + MARKER + report[end:])
        self.assertEqual(len(sent), LIMIT)
        # What goes: the closing line feed, the two last lines, and seven bytes of the line before them.
        self.assertIn(b"line 0996\nlin" + MARKER + SEPARATOR, sent)

    def test_without_a_section_to_cut_all_of_it_is_sent(self):
        for excess in (1, 500_000):
            with self.subTest(excess):
                log = ("cat log", "Tail TAIL tai l ail\n" * 1000)
                sent, report = self.submitted(self.outputs_of_size(LIMIT + excess, log), LIMIT + excess)
                self.assert_same_text(sent, report)

    def test_each_section_with_the_word_loses_the_whole_excess(self):
        logs = [("cat first # tail", "1" * 5000), ("cat second", "2" * 2500 + "entailed" + "2" * 2500),
                ("cat third", "3" * 5000)]
        sent, report = self.submitted(self.outputs_of_size(LIMIT + 1000, *logs), LIMIT + 1000)
        expected = report.replace(b"1" * 5000 + b"\n", b"1" * (5000 - 1026) + MARKER)
        expected = expected.replace(b"2" * 2500 + b"\n", b"2" * (2500 - 1026) + MARKER)
        self.assert_same_text(sent, expected)
        self.assertEqual(len(sent), LIMIT - 1000)

    def test_a_section_one_unit_too_short_stays_whole(self):
        line = "cat log # tail"
        around = len(f"Results for: /bin/sh -c {line}\nstdout:\n\n")
        for length, cut in ((100 + 27, False), (100 + 28, True)):
            with self.subTest(length):
                log = (line, "z" * (length - around))
                sent, report = self.submitted(self.outputs_of_size(LIMIT + 100, log), LIMIT + 100)
                section = report[report.index(b"Results for: /bin/sh -c cat log # tail"):].split(SEPARATOR)[0]
                self.assertEqual(len(section), length)
                self.assert_same_text(sent, report.replace(section, b"R" + MARKER) if cut else report)

    def test_the_nul_is_cut_off_before_the_size_counts(self):
        outputs = self.outputs_of_size(LIMIT + 5000, ("cat log # tail", "a" * 1000 + "\0" + "b" * 8000))
        sent, report = self.submitted(outputs, LIMIT + 5000)
        self.assertLess(report.index(b"\0"), LIMIT)
        self.assert_same_text(sent, report[:report.index(b"\0")])

    def test_hyphens_in_output_make_sections_of_their_own(self):
        hyphens = "-" * 45
        text = "head tail" + "a" * 500 + hyphens + hyphens + "b" * 500 + hyphens + "-----" + "c" * 500 + "tail"
        sent, report = self.submitted(self.outputs_of_size(LIMIT + 10, ("cat log", text)), LIMIT + 10)
        expected = report.replace(b"a" * 500 + SEPARATOR * 2, b"a" * (500 - 37) + MARKER + SEPARATOR)
        expected = expected.replace(b"c" * 500 + b"tail\n", b"c" * (500 - 32) + MARKER)
        self.assert_same_text(sent, expected)

    def outputs_with_characters(self, excess):
        """A log of 2000 two-byte characters; the cut leaves of it as many bytes as there are units left."""
        kept = 2000 + 1 - 27 - excess
        return self.outputs_of_size(LIMIT + excess, ("cat log # tail", "\u00e9" * 2000)), kept

    def test_characters_are_counted_but_bytes_are_cut(self):
        outputs, kept = self.outputs_with_characters(100)
        self.assertEqual(kept, 2 * 937)
        sent, report = self.submitted(outputs, LIMIT + 100)
        whole, half = ("\u00e9" * 2000 + "\n").encode(), ("\u00e9" * 937).encode()
        self.assert_same_text(sent, report.replace(whole, half + MARKER))

    def test_a_cut_inside_a_character_saves_the_report_and_sends_nothing(self):
        outputs, kept = self.outputs_with_characters(101)
        self.assertEqual(kept, 2 * 936 + 1)
        ended, report = self.submit(outputs)
        self.assertEqual(len(report), LIMIT + 101)
        self.assertEqual(ended.status, -signal.SIGABRT)
        self.assertEqual(ended.stdout, b"")
        self.assertIn(str(self.desktop_file), "\n".join(ended.messages))
        self.assertGreaterEqual(len(ended.messages), 2, "the reason and the place of the report")
        self.assert_same_text(self.desktop_file.read_bytes(), report)
        self.assertEqual(self.server.requests, [])

    def test_with_the_console_the_uncut_report_is_there_already(self):
        outputs, _ = self.outputs_with_characters(101)
        ended, report = self.submit(outputs, ["-s", "-i", "-c", "-o=F"])
        self.assertEqual(ended.status, -signal.SIGABRT)
        self.assert_same_text(ended.stdout, report + b"\noutputFile=F\n")
        self.assert_same_text((self.work / "F").read_bytes(), report)
        self.assert_same_text(self.desktop_file.read_bytes(), report)
        self.assertEqual(self.server.requests, [])


isolation.run_tests()
