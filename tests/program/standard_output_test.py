# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A standard output that does not take everything: its reader gone, its device full, or none there at all."""

import os
import signal
import socket

import http_server
import isolation
import program_tests
import report_text

RESULTS_URL = b"http://results.halvik.example/1234"
LARGE = [("head -c 3000000 /dev/zero | tr '\\0' x", b"x" * 3000000)]


class ReaderGoneTest(program_tests.ProgramTest):
    def run_with_reader(self, options, bytes_read, prefix=()):
        """Runs with a reader on standard output that takes a few bytes and closes."""
        report = report_text.report(LARGE)
        server = http_server.Server(http_server.reply(RESULTS_URL))
        reader, writer = os.pipe()
        process = self.start_test_build(options, [LARGE[0][0]], submit=server.url(), stdout=writer, prefix=prefix)
        os.close(writer)
        if bytes_read:
            os.read(reader, bytes_read)
        os.close(reader)
        ended = self.finish(process)
        server.close()
        return ended, report, server

    def test_the_rest_of_the_delivery_goes_on(self):
        quiet = ["sh", "-c", "trap '' PIPE; exec \"$@\"", "sh"]
        for prefix in ((), quiet):
            for bytes_read in (0, 1, 100000):
                with self.subTest(bytes_read=bytes_read, prefix=prefix):
                    ended, report, server = self.run_with_reader(["-s", "-c", "-i", "-o=F"], bytes_read, prefix)
                    self.assertEqual(ended.status, 0)
                    self.assertEqual(ended.stderr, b"")
                    self.assert_same_text((self.work / "F").read_bytes(), report)
                    self.assertEqual(len(server.requests), 1)
                    self.assert_only_files(self.home, [])

    def test_single_destinations(self):
        for options, uploads in ((["-s", "-c"], 0), (["-s", "-o=F"], 0), (["-s"], 1)):
            with self.subTest(options):
                ended, _, server = self.run_with_reader(options, 0)
                self.assertEqual(ended.status, 0)
                self.assertEqual(ended.stderr, b"")
                self.assertEqual(len(server.requests), uploads)


class FullDeviceTest(program_tests.ProgramTest):
    OUTPUTS = [("echo here", "here\n")]

    def run_with_full_output(self, options, reply):
        server = http_server.Server(reply)
        with open("/dev/full", "wb") as full:
            ended = self.run_test_build(options, ["echo here"], submit=server.url(), stdout=full)
        server.close()
        self.assertEqual(ended.status, -signal.SIGABRT)
        self.assertRegex("\n".join(ended.messages), "(?i)cannot write to standard output: no space left on device")
        return ended, server

    def test_a_write_error_costs_the_printed_copy_only(self):
        report = report_text.report(self.OUTPUTS)
        for options, uploads in ((["-s", "-o=F"], 0), (["-s", "-c", "-o=F"], 0), (["-s", "-i", "-o=F"], 1),
                                 (["-s", "-c", "-i", "-o=F"], 1)):
            with self.subTest(options):
                _, server = self.run_with_full_output(options, http_server.reply(RESULTS_URL))
                self.assert_same_text((self.work / "F").read_bytes(), report)
                (self.work / "F").unlink()
                self.assertEqual([request.submitted for request in server.requests], [report] * uploads)
                self.assert_only_files(self.home, [])

    def test_a_report_that_nobody_has_is_saved(self):
        """Nor does anybody have a report whose address could not be printed."""
        for options, uploads in ((["-s", "-c"], 0), (["-s"], 1), (["-s", "-c", "-i"], 1),
                                 (["-s", "-c", "-o=missing/F"], 0)):
            with self.subTest(options):
                ended, server = self.run_with_full_output(options, http_server.reply(RESULTS_URL))
                self.assertEqual(len(server.requests), uploads)
                self.assertIn(str(self.desktop_file), "\n".join(ended.messages))
                self.assert_same_text(self.desktop_file.read_bytes(), report_text.report(self.OUTPUTS))
                self.desktop_file.unlink()

    def test_an_upload_that_fails_as_well(self):
        ended, server = self.run_with_full_output(["-s", "-c", "-i"], http_server.reply(b"no", status=500))
        self.assertEqual(len(server.requests), 1)
        self.assertIn("could not send log, saved to Desktop", ended.messages)
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report(self.OUTPUTS))
        self.assertEqual("\n".join(ended.messages).count("saving the report"), 1)

    def test_each_line_that_can_be_printed_is_printed(self):
        """Such a socket takes lines, but no message of megabytes. A report whose address it took needs no other place."""
        url = b"url=" + RESULTS_URL + b"\n"
        for options, lines in ((["-s", "-c", "-o=F"], [b"outputFile=F\n"]),
                               (["-s", "-c", "-i", "-o=F"], [b"outputFile=F\n", url]),
                               (["-s", "-c", "-i"], [url])):
            with self.subTest(options):
                server = http_server.Server(http_server.reply(RESULTS_URL))
                reader, writer = socket.socketpair(socket.AF_UNIX, socket.SOCK_DGRAM)
                with reader:
                    with writer:
                        ended = self.run_test_build(options, [LARGE[0][0]], submit=server.url(), stdout=writer)
                    reader.setblocking(False)
                    self.assertEqual([reader.recv(1000) for _ in lines], lines)
                server.close()
                self.assertEqual(ended.status, -signal.SIGABRT)
                self.assertRegex(ended.messages[0], "cannot write to standard output: Message too long")
                if "-o=F" in options:
                    self.assert_same_text((self.work / "F").read_bytes(), report_text.report(LARGE))
                self.assert_only_files(self.home, [])

    def test_a_full_device_for_the_log_changes_nothing_else(self):
        submit = f"http://127.0.0.1:{http_server.unreachable_port(self)}/diagnosticsubmit"
        with open("/dev/full", "wb") as full:
            ended = self.run_test_build(["-s"], ["echo here"], submit=submit, stderr=full)
        self.assertEqual(ended.status, 1)
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report([("echo here", "here\n")]))

    def test_a_log_that_nobody_reads_changes_nothing_else(self):
        submit = f"http://127.0.0.1:{http_server.unreachable_port(self)}/diagnosticsubmit"
        reader, writer = os.pipe()
        os.close(reader)
        ended = self.run_test_build(["-s"], ["echo here"], submit=submit, stderr=writer)
        os.close(writer)
        self.assertEqual(ended.status, 1)
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report([("echo here", "here\n")]))


class ClosedStreamTest(program_tests.ProgramTest):
    """Started without one of the three standard streams, the program puts nothing of its own in that place."""

    LOOK = "ls /proc/$$/fd; readlink /proc/$$/fd/0; echo complaint >&2; :"

    def run_without(self, redirection, options):
        return self.run_test_build(options, [self.LOOK] * report_text.PLAN_LENGTH,
                                   prefix=["sh", "-c", f'exec "$@" {redirection}', "sh"])

    def assert_commands_saw_only_their_own(self, report):
        contents = [content for _, content in report_text.blocks(report)]
        self.assertEqual(len(contents), report_text.PLAN_LENGTH)
        for content in contents:
            stdout, _, stderr = content.partition(b"stderr:\n")
            self.assertEqual(stderr, b"complaint\n\n")
            lines = stdout.split()[1:]
            self.assertIn(lines, [[b"0", b"1", b"2", b"/dev/null"], [b"1", b"2"]])

    def test_without_standard_input(self):
        ended = self.run_without("<&-", ["-s", "-c"])
        self.assertEqual(ended.status, 0)
        self.assert_commands_saw_only_their_own(ended.stdout[:-1])

    def test_without_standard_output(self):
        """That nothing can be written there is an error like any other; it spoils nothing that is written elsewhere."""
        ended = self.run_without(">&-", ["-s", "-c", "-o=F"])
        self.assertEqual(ended.status, -signal.SIGABRT)
        self.assertRegex(ended.messages[0], "(?i)bad file descriptor")
        self.assert_commands_saw_only_their_own((self.work / "F").read_bytes())
        self.assert_only_files(self.home, [])

    def test_without_standard_error(self):
        ended = self.run_without("2>&-", ["-s", "-c", "-o=F"])
        self.assertEqual(ended.status, 0)
        self.assert_commands_saw_only_their_own((self.work / "F").read_bytes())
        self.assert_same_text(ended.stdout, (self.work / "F").read_bytes() + b"\noutputFile=F\n")

    def test_without_any(self):
        ended = self.run_without("<&- >&- 2>&-", ["-s", "-o=F"])
        self.assertEqual(ended.status, -signal.SIGABRT)
        self.assert_commands_saw_only_their_own((self.work / "F").read_bytes())
        self.assert_only_files(self.home, [])


isolation.run_tests()
