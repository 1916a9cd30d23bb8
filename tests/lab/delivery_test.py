# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Where reports go when the network is in order: to standard output, a file, and a results page."""

import html
import os
import re

import labs
import program_tests
import report_text
import skivra
import upload_form

# Results pages show each report as it came, not the page that halvik-report makes.
os.environ["HALVIK_REPORT"] = os.devnull
RESULTS = "https://diagnostic.halvik.example/results/"
SIZE_MAX = 1_000_000
MARKER = b"<This log has been trimmed>"

# Options, and whether the report is printed, written to a file, and submitted. Each run has a file of its own.
DELIVERIES = [
    ([], False, False, True),
    (["-i"], False, False, True),
    (["-c"], True, False, False),
    (["-c", "-i"], True, False, True),
    (["-o=A"], False, True, False),
    (["-o=B", "-i"], False, True, True),
    (["-o=C", "-c"], True, True, False),
    (["-o=D", "-c", "-i"], True, True, True),
]


# A large report consists of these, and of little else.
SYSTEM_LOG = b"".join(b"dns: line %05d of the system log\n" % number for number in range(16_000))
LOGS = {"long": b"no word to cut at\n" * 15_000, "entailed": b"entailed\n" * 45_000, "short": b"tail\n" * 1000}


def submit_twice():
    with labs.Lab("twice") as lab:
        runs = [lab.run_program("-s") for _ in range(2)]
        pages = [lab.shell("curl", "--silent", f"{RESULTS}{number}").decode() for number in (1, 2)]
        return runs, pages, lab.uploads()


def deliver():
    """A run with each row of options, all at once; the files that they left in the lab, and the working directory."""
    with labs.Lab("options") as lab:
        before = lab.files()
        processes = [lab.start_program("-s", *options) for options, *_ in DELIVERIES]
        runs = [labs.ended(process) for process in processes]
        left = {path: content for path, content in lab.files().items() if path not in before}
        return runs, left, {path.name: path.read_bytes() for path in lab.work.iterdir()}, lab.uploads()


def submit_large():
    with labs.Lab("large", skivra=True) as lab:
        for name, text in LOGS.items():
            put(lab, f"/{skivra.FOLDER}/beacon-logs/service/{name}", text)
        put(lab, "/var/log/system.log", SYSTEM_LOG)
        return lab.run_program("-s", "-i", "-o=F"), (lab.work / "F").read_bytes(), lab.uploads()


def put(lab, path, text):
    """Gives a file of the user's machine this content."""
    (lab.work / "content").write_bytes(text)
    lab.shell("--root", "cp", "content", path, cwd=lab.work)


def setUpModule():
    global observed
    observed = labs.SideBySide({"twice": submit_twice, "options": deliver, "large": submit_large})


class DeliveryTest(program_tests.ProgramTest):
    def test_two_uploads_after_each_other(self):
        runs, pages, uploads = observed["twice"]
        self.assertEqual(len(uploads), 2)
        self.assertNotEqual(uploads[0].report, uploads[1].report, "the second is that of the second run")
        for number, (ended, page, upload) in enumerate(zip(runs, pages, uploads), 1):
            self.assertEqual((ended.status, ended.messages), (0, []))
            self.assertEqual(ended.stdout.decode(), f"url={RESULTS}{number}\n")
            # A line feed right behind the tag is none of the text.
            shown = re.search("<pre>\n(.*)</pre>", page, re.DOTALL)[1]
            self.assert_same_text(html.unescape(shown), upload.report.decode())

    def test_what_the_options_deliver(self):
        runs, left, files, uploads = observed["options"]
        self.assertEqual(left, {})
        self.assertEqual(len(files), sum(is_written for *_, is_written, _ in DELIVERIES))
        self.assertEqual(len(uploads), sum(is_submitted for *_, is_submitted in DELIVERIES))
        for (options, *what), ended in zip(DELIVERIES, runs):
            with self.subTest(options):
                self.assertEqual((ended.status, ended.messages), (0, []))
                self.check_delivery(files, uploads, ended.stdout, options, *what)

    def check_delivery(self, files, uploads, stdout, options, is_printed, is_written, is_submitted):
        """All places got the same report, and standard output has nothing else."""
        reports, lines = [], []
        if is_written:
            name = options[0].removeprefix("-o=")
            lines.append(f"outputFile={name}\n".encode())
            reports.append(files[name])
        if is_submitted:
            url, number = re.search(rf"^url={RESULTS}(\d+)\n\Z".encode(), stdout, re.MULTILINE).group(0, 1)
            lines.append(url)
            upload = uploads[int(number) - 1]
            reports.append(upload.report)
            self.assert_same_text(upload.body, upload_form.around(upload.report))
        if is_printed:
            self.assertTrue(stdout.endswith(b"".join([b"\n", *lines])))
            reports.append(stdout.removesuffix(b"".join([b"\n", *lines])))
        else:
            self.assertEqual(stdout, b"".join(lines))
        self.assertEqual(len(report_text.blocks(reports[0])), report_text.PLAN_LENGTH)
        for other in reports[1:]:
            self.assert_same_text(other, reports[0])


class LargeReportTest(program_tests.ProgramTest):
    def test_it_arrives_trimmed(self):
        ended, report, (upload,) = observed["large"]
        self.assertEqual((ended.status, ended.messages), (0, []))
        self.assertEqual(ended.stdout.decode(), f"outputFile=F\nurl={RESULTS}1\n")
        whole, sent = blocks_by_end(report), blocks_by_end(upload.report)
        excess = len(report) - SIZE_MAX
        self.assertGreater(excess, 0)
        for name, text in LOGS.items():
            self.assert_same_text(whole[f'{name}"'], b"stdout:\n" + text + b"\n")
        # Of the system log, the last 15,000 lines were read; what they lose are the newest of them.
        self.assertTrue(whole['brontel"'].startswith(b"stdout:\ndns: line 01000 "))
        self.assert_same_text(sent['brontel"'], cut(whole['brontel"'], excess))
        self.assert_same_text(sent['entailed"'], cut(whole['entailed"'], excess))
        # Everything else arrives whole, and in its place.
        trimmed = report
        for name in ('brontel"', 'entailed"'):
            trimmed = trimmed.replace(whole[name], cut(whole[name], excess))
        self.assert_same_text(upload.report, trimmed)
        self.assert_same_text(upload.body, upload_form.around(trimmed))
        self.assertEqual(len(upload.report), SIZE_MAX - excess)


def cut(content, excess):
    return content[:-excess - len(MARKER)] + MARKER


def blocks_by_end(report):
    """The contents of blocks, by the last word of their names without its path."""
    # Not by lines: a block that was cut does not end in a line feed.
    blocks = (part.partition(b"\n") for part in report.split(report_text.SEPARATOR + b"Results for: ")[1:])
    return {re.split("[ /|]", name.decode())[-1]: content for name, _, content in blocks}


labs.run_tests()
