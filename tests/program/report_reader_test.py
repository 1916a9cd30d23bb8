# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""halvik-report as a user runs it: what it prints and how it ends."""

import base64
import hashlib
import json
import re
import unittest

import jsonschema
from project import ROOT
from reader_runs import DATA, NOTHING, PROBLEM, SEPARATOR, SMALL_MTU, UNREADABLE, ReaderTest, changed, report, run


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


if __name__ == "__main__":
    unittest.main()
