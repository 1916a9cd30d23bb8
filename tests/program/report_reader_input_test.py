# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""halvik-report with input that is no report, or means harm."""

import os
import resource
import subprocess
import unittest

import builds
import program_tests
from reader_runs import DATA, NOTHING, PROBLEM, SEPARATOR, UNREADABLE, ReaderTest, changed, report, run


class BadInput(ReaderTest):
    def assert_refused(self, ended, message):
        self.assertEqual((ended.returncode, ended.stdout), (UNREADABLE, b""))
        self.assertRegex(ended.stderr.decode(), message)
        self.assert_harmless(ended.stderr)

    def test_what_is_no_report(self):
        for arguments in ([], ["-"]):
            self.assert_refused(run(*arguments, stdin=b""), "standard input is empty")
        self.assert_refused(run(self.file("nothing", "")), "nothing is empty")
        self.assert_refused(run(self.work), "Is a directory")
        self.assert_refused(run(self.work / "missing"), "No such file")
        self.assert_refused(run(self.work / "\x1b[31m"), "No such file")
        for text in (b"hello\n", b"\0" * 5000, bytes(range(256)) * 50, b"-" * 100000, b"Results for: x\n"):
            self.assert_refused(run(stdin=text), "no report")

    def test_what_is_not_ours_to_read(self):
        file = self.file("a", report())
        file.chmod(0)
        # Nothing is forbidden to root. Another user may be unable to reach the build.
        prefix = program_tests.UNPRIVILEGED if os.geteuid() == 0 else ()
        self.assert_refused(run(file, prefix=prefix), "Permission denied")

    def test_options_that_make_no_sense(self):
        file = self.file("a", report())
        for arguments in (["--unknown"], ["--json", "--html"], ["--compare", file], ["--json", file, file],
                          ["--\x1b[31m"], ["--json=\x1b[31m"], ["-\u202e"]):
            self.assert_refused(run(*arguments), "halvik-report: .")

    def test_standard_input_is_read_once(self):
        for arguments in (["-", "-"], ["--compare", "-", "-"], ["-", self.file("a", report()), "-"]):
            self.assert_refused(run(*arguments, stdin=report().encode()), "standard input can be read once only")
        ended = run("--compare", "-", self.file("a", report()), stdin=report().encode())
        self.assertEqual((ended.returncode, ended.stderr), (NOTHING, b""))

    def test_a_pipe_with_a_name(self):
        pipe = self.work / "pipe"
        os.mkfifo(pipe)
        with subprocess.Popen([builds.report_reader(), pipe], stdout=subprocess.PIPE) as reader:
            pipe.write_text(report())
            self.assertIn(b"Nothing found.", reader.communicate(timeout=300)[0])
        self.assertEqual(reader.returncode, NOTHING)

    @unittest.skipIf(builds.is_sanitized(), "the sanitizer takes memory of its own")
    def test_too_little_memory(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_AS, (200 << 20, 200 << 20))

        zeros = self.file("zeros", b"")
        os.truncate(zeros, 1 << 30)
        self.assert_refused(run(zeros, preexec_fn=limit), "zeros: Cannot allocate memory")
        blocks = self.file("blocks", (SEPARATOR + "x\n") * 1_000_000)
        self.assert_refused(run(blocks, preexec_fn=limit), "not enough memory")
        # Whatever is long in a report is not copied as a whole.
        account = self.file("account", f"Halvik account: {'x' * (64 << 20)}\n" + report())
        name = self.file("name", report() + SEPARATOR + "x" * (64 << 20))
        for file in (account, name):
            for form in ("--json", "--html"):
                ended = subprocess.run([builds.report_reader(), form, file], stdout=subprocess.DEVNULL,
                                       stderr=subprocess.PIPE, preexec_fn=limit, check=False)
                self.assertEqual((ended.returncode, ended.stderr), (NOTHING, b""))

    def test_nothing_of_a_report_reaches_the_terminal_as_a_command(self):
        hostile = "\x1b]0;title\x07\x1b[2J\x9b31m\x00\x08\r\x7f\u202e\u2066"
        text = report()
        for old in ("mtu 1500", "198.18.40.80", "monitor: ok", "workstation", "shop.example"):
            text = changed(text, old, hostile + old[:3])
        file = self.file("a" + "\x1b[31m", f"Halvik account: {hostile}\n" + text)
        for arguments in ([file], [file, file], ["--compare", file, self.file("b", report())], ["--json", file], ["--html", file]):
            ended = run(*arguments)
            self.assertIn(ended.returncode, (NOTHING, PROBLEM))
            self.assert_harmless(ended.stdout + ended.stderr)

    def test_texts_that_are_no_utf8(self):
        ended = run(stdin=report().encode().replace(b"workstation", b"\xff\xfe\xf0\x9f"))
        self.assertIn("computer: \ufffd\ufffd\ufffd\ufffd", ended.stdout.decode())

    def test_many_blocks_and_endless_lines(self):
        at = report().index(SEPARATOR + "/bin/sh -c /usr/bin/tail")
        log = SEPARATOR + '/bin/sh -c cat "/Library/Application Support/Halvik Skivra/beacon-logs/service/{}"\n'
        logs = "".join(log.format(number) for number in range(100_000))
        logs += log.format("endless") + "stdout:\n" + "x" * 20_000_000 + "\n\n"
        ended = run(stdin=(report()[:at] + logs + report()[at:]).encode())
        self.assertEqual((ended.returncode, ended.stderr), (NOTHING, b""))

    def test_standard_output_that_takes_nothing(self):
        file = DATA / "clear.txt"
        for arguments in ([file], ["--json", file], ["--html", file], ["--compare", file, file], [file, file], ["--help"],
                          ["--version"]):
            for redirection, message in ((">/dev/full", "No space left"), (">&-", "Bad file descriptor")):
                ended = subprocess.run(["sh", "-c", f'exec "$@" {redirection}', "sh", builds.report_reader(), *arguments],
                                       capture_output=True, check=False)
                self.assert_refused(ended, f"standard output: {message}")


if __name__ == "__main__":
    unittest.main()
