# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""One whole run of the program in each scenario: what it prints, what it leaves, what the receiver got, and whether its
report shows the scenario.
"""

import dataclasses
import functools
import itertools
import socket
import unittest

import endpoints
import labs
import packet_capture
import plan
import program_tests
import report_text
import scenarios
import skivra
import upload_form
from expected_outcomes import OUTCOMES
from expected_patterns import PATTERNS
from output_patterns import STDERR, STDOUT

# Those that wait longest begin first, so that the others fit beside them.
SLOW = ["submission-stalls", "resolver-down", "port-53-blocked", "gateway-silent", "line-down",
        "loss-and-delay", "loss-beyond-provider", "path-ends-early", "silent-city"]

# What a scenario may change without touching anything that the plan asks.
ABOUT_SUBMISSION = ("summary", "submission", "certificate", "disk_full")

DESKTOP_FILE = "/lab/visitor/Desktop/diagnostic_results.txt"
SUBMIT_URL = endpoints.roles()["submitUrl"]


@dataclasses.dataclass(frozen=True)
class Run:
    ended: program_tests.Ended
    report: bytes  # what was written to the file that the options named
    files_before: dict
    files: dict
    uploads: list

    def matches(self, pattern):
        streams = {STDOUT: self.ended.stdout.decode(), STDERR: "\n".join(self.ended.messages)}
        return pattern.matches(streams, [(name.decode(), content.decode()) for name, content in self.blocks])

    @property
    def blocks(self):
        return report_text.blocks(self.report)


def observe(scenario):
    options, skivra = labs.needed_options(scenario)
    with labs.Lab(scenario, scenario, skivra) as lab:
        before = lab.files()
        ended = lab.run_program("-s", "-i", "-o=F", *options)
        return Run(ended, (lab.work / "F").read_bytes(), before, lab.files(), lab.uploads())


def setUpModule():
    global capture, runs
    capture = packet_capture.PacketCapture()
    unittest.addModuleCleanup(capture.close)
    names = sorted(scenarios.SCENARIOS, key=lambda name: name not in SLOW)
    runs = labs.SideBySide({name: functools.partial(observe, name) for name in names})


def in_each_scenario(check):
    """A test that makes this check of the run in every scenario."""
    @functools.wraps(check)
    def test(self):
        for scenario in scenarios.SCENARIOS:
            with self.subTest(scenario):
                runs.check(scenario, functools.partial(check, self, scenario))
    return test


class OutcomeTest(unittest.TestCase):
    maxDiff = None

    @in_each_scenario
    def test_exit_status(self, scenario, run):
        self.assertEqual(run.ended.status, OUTCOMES[scenario].status)

    @in_each_scenario
    def test_standard_output(self, scenario, run):
        url = rb"url=\S+\n" if OUTCOMES[scenario].status == 0 else b""
        self.assertRegex(run.ended.stdout, rb"\AoutputFile=F\n" + url + rb"\Z")

    @in_each_scenario
    def test_standard_error(self, scenario, run):
        if OUTCOMES[scenario].status == 0:
            self.assertEqual(run.ended.messages, [])
            return
        not_saved = "could not save diagnostic_results.txt"
        # The place of last resort is on the same disk.
        tries = [f"saving the report to {DESKTOP_FILE}", *([
            not_saved, r"saving the report to /tmp/halvik-diagnostic-\w{6}/diagnostic_results.txt", not_saved,
        ] if is_disk_full(scenario) else [])]
        for message, expected in itertools.zip_longest(
                run.ended.messages[1:], [*tries, "could not send log, saved to Desktop"], fillvalue=""):
            self.assertRegex(message, rf"\A{expected}\Z")
        self.assertRegex(run.ended.messages[0], f"^sending to {SUBMIT_URL} failed: .")

    @in_each_scenario
    def test_files(self, scenario, run):
        is_on_desktop = OUTCOMES[scenario].status == 1 and not is_disk_full(scenario)
        self.assertEqual(run.files, {**run.files_before, **({DESKTOP_FILE: run.report} if is_on_desktop else {})})

    @in_each_scenario
    def test_what_the_receiver_got(self, scenario, run):
        self.assertEqual(len(run.uploads), OUTCOMES[scenario].is_submitted)
        for upload in run.uploads:
            self.assertEqual(upload.body, upload_form.around(run.report))
            self.assertEqual(upload.report, run.report)
            request, *headers = upload.head.splitlines()
            self.assertEqual(request, b"POST /diagnosticsubmit HTTP/1.1")
            for header in [b"Host: diagnostic.halvik.example", b"Content-Length: %d" % len(upload.body),
                           b"Content-Type: " + upload_form.CONTENT_TYPE]:
                self.assertIn(header, headers)

    @in_each_scenario
    def test_the_blocks_of_the_report(self, scenario, run):
        names = [name.decode() for name, _ in run.blocks]
        options, has_skivra = labs.needed_options(scenario)
        facts = {"domain": labs.DOMAIN} if options else {}
        if has_skivra:
            facts |= {"skivra": True, "beacon_logs": [path for path, _ in skivra.logs()]}
        self.assertEqual(names, plan.display_names(endpoints.roles(), **facts))

    def test_nothing_left_a_lab(self):
        runs.wait()
        self.assertEqual(capture.packets(), [])
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as from_here:
            from_here.sendto(b"a query", (endpoints.roles()["serviceResolverA"], 53))
        self.assertEqual(len(capture.packets()), 1, "what leaves would be seen")


class OutputTest(unittest.TestCase):
    """The report and what the program prints match the patterns of the scenario, and not all those of any other."""

    @in_each_scenario
    def test_a_scenario_matches_its_patterns(self, scenario, run):
        for pattern in PATTERNS[scenario]:
            self.assertTrue(run.matches(pattern), pattern)

    @in_each_scenario
    def test_no_other_scenario_matches_all_of_them(self, scenario, run):
        for other in scenarios.SCENARIOS:
            if other not in (scenario, "clear"):
                self.assertFalse(all(run.matches(pattern) for pattern in PATTERNS[other]), f"this could be {other}")

    @in_each_scenario
    def test_trouble_with_the_submission_alone_leaves_the_report_as_in_clear(self, scenario, run):
        usual = {field: getattr(scenarios.SCENARIOS["clear"], field) for field in ABOUT_SUBMISSION}
        if dataclasses.replace(scenarios.SCENARIOS[scenario], **usual) == scenarios.SCENARIOS["clear"]:
            for pattern in PATTERNS["clear"]:
                self.assertTrue(pattern.place in (STDOUT, STDERR) or run.matches(pattern), pattern)


def is_disk_full(scenario):
    return scenarios.SCENARIOS[scenario].disk_full


labs.run_tests()
