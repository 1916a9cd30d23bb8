# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""halvik-report as a user runs it: what it prints, how it ends, and what it makes of bad input."""

import base64
import hashlib
import json
import os
import pathlib
import re
import resource
import subprocess
import tempfile
import unittest

import jsonschema

from project import ROOT

DATA = ROOT / "tests/reader/data"
SEPARATOR = "-" * 45 + "Results for: "
NOTHING, PROBLEM, UNREADABLE = 0, 1, 2


def run(*arguments, stdin=b"", **options):
    return subprocess.run([os.environ["HALVIK_REPORT"], *arguments], input=stdin, capture_output=True, timeout=300,
                          check=False, **options)


def report(name="clear.txt"):
    return (DATA / name).read_text()


def changed(text, old, new):
    if old not in text:
        raise AssertionError(old)
    return text.replace(old, new)


SMALL_MTU = ("mtu 1500", "mtu 1000")


class ReaderTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="halvik-report-")
        self.addCleanup(folder.cleanup)
        self.work = pathlib.Path(folder.name)

    def file(self, name, content):
        path = self.work / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def assert_harmless(self, output):
        """Nothing in it would be obeyed by a terminal."""
        self.assertNotRegex(output.decode(), "[^\n\x20-\x7e\xa0-\U0010ffff]")


class Summary(ReaderTest):
    def test_clear_reports(self):
        for name in ("clear.txt", "clear_bare.txt", "macos.txt"):
            ended = run(DATA / name)
            self.assertEqual((ended.returncode, ended.stderr), (NOTHING, b""))
            self.assertIn(b"Nothing found.", ended.stdout.splitlines()[0])

    def test_standard_input(self):
        for arguments in ([], ["-"]):
            ended = run(*arguments, stdin=report().encode())
            self.assertEqual((ended.returncode, ended.stdout.splitlines()[0]), (NOTHING, b"-: Nothing found."))

    def test_a_problem_with_its_line(self):
        text = changed(report(), *SMALL_MTU)
        number = text[:text.index("mtu 1000")].count("\n") + 1
        ended = run(stdin=text.encode())
        self.assertEqual(ended.returncode, PROBLEM)
        self.assertRegex(ended.stdout.decode(), rf"Problem: .*\[small-mtu\]\n    line {number}: eth0: .* mtu 1000\n")


class Json(ReaderTest):
    def check(self, text):
        ended = run("--json", stdin=text if isinstance(text, bytes) else text.encode())
        self.assertEqual(ended.stderr, b"")
        self.assertRegex(ended.stdout, rb"\A[ -~]*\n\Z")
        document = json.loads(ended.stdout)
        schema = json.loads((ROOT / "docs/halvik-report.schema.json").read_text())
        jsonschema.Draft202012Validator(schema).validate(document)
        return document

    def test_fits_its_description(self):
        for name in ("clear.txt", "clear_bare.txt", "macos.txt"):
            document = self.check("Halvik account: a\n" + report(name))
            self.assertEqual(document["head"], {"account": "a", "ticket": None})
            self.assertEqual(document["missing"], [])

    def test_says_what_the_report_says(self):
        text = report()
        document = self.check(text)
        rebuilt = ""
        for block in document["blocks"]:
            rebuilt += SEPARATOR + block["name"] + "\n"
            for stream in ("stdout", "stderr"):
                if block[stream] is not None:
                    self.assertEqual(rebuilt.count("\n") + 2, block[f"{stream}Line"])
                    rebuilt += f"{stream}:\n{block[stream]}\n"
        self.assertEqual(rebuilt, text)

    def test_evidence_stands_in_its_line(self):
        text = changed(report(), *SMALL_MTU)
        lines = text.split("\n")
        findings = self.check(text)["findings"]
        self.assertEqual([finding["id"] for finding in findings], ["small-mtu"])
        for evidence in findings[0]["evidence"]:
            self.assertEqual(lines[evidence["line"] - 1], evidence["text"])

    def test_hostile_reports(self):
        self.check(changed(report(), "monitor: ok", "</script>\x1b[31m\x00\x7f\u2028\u202e"))
        self.check(report().encode().replace(b"monitor: ok", b"\xff\xfe\xc3"))
        self.check(report()[:20000])


class Page(ReaderTest):
    def test_is_complete_and_allows_nothing_else(self):
        hostile = "</script><script>alert(1)</script><img src=x onerror=alert(1)>&\u2028"
        ended = run("--html", stdin=changed(report(), "monitor: ok", hostile).encode())
        page = ended.stdout.decode()
        self.assertEqual(ended.stderr, b"")
        self.assertNotIn("alert(1)<", page)
        self.assertNotIn("<img src=x", page)
        policy = re.search('<meta http-equiv="Content-Security-Policy" content="([^"]*)"', page)[1]
        self.assertIn("default-src 'none'", policy)
        for tag, content in re.findall(r"<(style|script)>(.*?)</\1>", page, re.DOTALL):
            digest = base64.b64encode(hashlib.sha256(content.encode()).digest()).decode()
            self.assertIn(f"{tag}-src 'sha256-{digest}'", policy)
        data = re.search(r'<script type="application/json" id="data">(.*?)</script>', page, re.DOTALL)[1]
        monitor, = [block for block in json.loads(data)["blocks"] if block["key"] == "web-monitor"]
        self.assertIn(hostile, monitor["stdout"])


class SeveralReports(ReaderTest):
    def test_comparison(self):
        old = self.file("old", report())
        new = self.file("new", changed(changed(report(), *SMALL_MTU), "A\t198.18.7.20", "A\t198.18.7.21"))
        ended = run("--compare", old, new)
        self.assertEqual(ended.returncode, PROBLEM)
        self.assertIn("new: The MTU is below 1280 on eth0 (1000). [small-mtu]", ended.stdout.decode())
        self.assertIn("public address: 198.18.7.20 -> 198.18.7.21", ended.stdout.decode())
        back = run("--compare", new, old)
        self.assertEqual(back.returncode, NOTHING)
        self.assertIn("gone: The MTU", back.stdout.decode())
        same = run("--compare", old, old)
        self.assertIn("Nothing is different.", same.stdout.decode())

    def test_table(self):
        usual = [self.file(f"machine{number}", report()) for number in range(3)]
        odd = self.file("odd", changed(report(), *SMALL_MTU))
        ended = run(*usual[:2], odd, usual[2])
        self.assertEqual(ended.returncode, PROBLEM)
        lines = ended.stdout.decode().splitlines()
        self.assertIn("odd", lines[1])
        self.assertIn("small-mtu", lines[1])
        self.assertIn("nothing", lines[2])
        self.assertIn("All 4 have in common", lines)
        self.assertIn("public address: 198.18.7.20", lines)
        self.assertNotIn("problem: small-mtu", lines)

    def test_table_goes_on_without_what_is_unreadable(self):
        ended = run(self.file("a", report()), self.work / "missing", self.file("b", "no report"))
        self.assertEqual(ended.returncode, UNREADABLE)
        self.assertIn(b"nothing", ended.stdout)
        self.assertNotIn(b"in common", ended.stdout)
        self.assertEqual(len(ended.stderr.splitlines()), 2)


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
        # Nothing is forbidden to root.
        self.work.chmod(0o755)
        other = {"user": 65534} if os.geteuid() == 0 else {}
        self.assert_refused(run(file, **other), "Permission denied")

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
        with subprocess.Popen([os.environ["HALVIK_REPORT"], pipe], stdout=subprocess.PIPE) as reader:
            pipe.write_text(report())
            self.assertIn(b"Nothing found.", reader.communicate(timeout=300)[0])
        self.assertEqual(reader.returncode, NOTHING)

    @unittest.skipIf(b"__asan_init" in pathlib.Path(os.environ["HALVIK_REPORT"]).read_bytes(), "the sanitizer takes memory of its own")
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
                ended = subprocess.run([os.environ["HALVIK_REPORT"], form, file], stdout=subprocess.DEVNULL,
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
                ended = subprocess.run(["sh", "-c", f'exec "$@" {redirection}', "sh", os.environ["HALVIK_REPORT"], *arguments],
                                       capture_output=True, check=False)
                self.assert_refused(ended, f"standard output: {message}")


if __name__ == "__main__":
    unittest.main()
