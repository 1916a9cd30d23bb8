# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""One whole run of the program in each weather: what it says, what it leaves, what the receiver got, and whether its
report gives the weather away.
"""

import dataclasses
import functools
import itertools
import socket
import unittest

import endpoints
import labs
import outside
import plan
import program_tests
import report_text
import signs
import skivra
import upload_form
import weathers

# Those that wait longest begin first, so that the others fit beside them.
SLOW = ["submission-stalls", "resolver-down", "port-53-blocked", "gateway-silent", "line-down",
        "loss-and-delay", "loss-beyond-provider", "path-ends-early", "silent-city"]

# What a weather may change without touching anything that the plan asks.
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

    def shows(self, sign):
        streams = {"standard output": self.ended.stdout.decode(), "standard error": "\n".join(self.ended.messages)}
        return sign.is_seen(streams, [(name.decode(), content.decode()) for name, content in self.blocks])

    @property
    def blocks(self):
        return report_text.blocks(self.report)


def observe(weather):
    options, skivra = labs.needed_options(weather)
    with labs.Lab(weather, weather, skivra) as lab:
        before = lab.files()
        ended = lab.run_program("-s", "-i", "-o=F", *options)
        return Run(ended, (lab.work / "F").read_bytes(), before, lab.files(), lab.uploads())


def setUpModule():
    global around, runs
    around = outside.Outside()
    unittest.addModuleCleanup(around.close)
    names = sorted(weathers.WEATHERS, key=lambda name: name not in SLOW)
    runs = labs.SideBySide({name: functools.partial(observe, name) for name in names})


def in_each_weather(check):
    """A test that makes this check of the run in every weather."""
    @functools.wraps(check)
    def test(self):
        for weather in weathers.WEATHERS:
            with self.subTest(weather):
                runs.check(weather, functools.partial(check, self, weather))
    return test


class OutcomeTest(unittest.TestCase):
    maxDiff = None

    @in_each_weather
    def test_exit_status(self, weather, run):
        self.assertEqual(run.ended.status, promises[weather].status)

    @in_each_weather
    def test_standard_output(self, weather, run):
        url = rb"url=\S+\n" if promises[weather].status == 0 else b""
        self.assertRegex(run.ended.stdout, rb"\AoutputFile=F\n" + url + rb"\Z")

    @in_each_weather
    def test_standard_error(self, weather, run):
        if promises[weather].status == 0:
            self.assertEqual(run.ended.messages, [])
            return
        not_saved = "could not save diagnostic_results.txt"
        # The place of last resort is on the same disk.
        tries = [f"saving the report to {DESKTOP_FILE}", *([
            not_saved, r"saving the report to /tmp/halvik-diagnostic-\w{6}/diagnostic_results.txt", not_saved,
        ] if is_disk_full(weather) else [])]
        for message, expected in itertools.zip_longest(
                run.ended.messages[1:], [*tries, "could not send log, saved to Desktop"], fillvalue=""):
            self.assertRegex(message, rf"\A{expected}\Z")
        self.assertRegex(run.ended.messages[0], f"^sending to {SUBMIT_URL} failed: .")

    @in_each_weather
    def test_files(self, weather, run):
        is_on_desktop = promises[weather].status == 1 and not is_disk_full(weather)
        self.assertEqual(run.files, {**run.files_before, **({DESKTOP_FILE: run.report} if is_on_desktop else {})})

    @in_each_weather
    def test_what_the_receiver_got(self, weather, run):
        self.assertEqual(len(run.uploads), promises[weather].is_submitted)
        for upload in run.uploads:
            self.assertEqual(upload.body, upload_form.around(run.report))
            self.assertEqual(upload.report, run.report)
            request, *headers = upload.head.splitlines()
            self.assertEqual(request, b"POST /diagnosticsubmit HTTP/1.1")
            for header in [b"Host: diagnostic.halvik.example", b"Content-Length: %d" % len(upload.body),
                           b"Content-Type: " + upload_form.CONTENT_TYPE]:
                self.assertIn(header, headers)

    @in_each_weather
    def test_the_blocks_of_the_report(self, weather, run):
        names = [name.decode() for name, _ in run.blocks]
        options, has_skivra = labs.needed_options(weather)
        facts = {"domain": labs.DOMAIN} if options else {}
        if has_skivra:
            facts |= {"skivra": True, "beacon_logs": [path for path, _ in skivra.logs()]}
        self.assertEqual(names, plan.display_names(endpoints.roles(), **facts))

    def test_nothing_left_a_lab(self):
        runs.wait()
        self.assertEqual(around.take(), [])
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as from_here:
            from_here.sendto(b"a query", (endpoints.roles()["serviceResolverA"], 53))
        self.assertEqual(len(around.take()), 1, "what leaves would be seen")


class SignsTest(unittest.TestCase):
    """The report, and what the program says besides, give each weather away by the signs that the README names."""

    def test_the_readme_has_all_weathers(self):
        self.assertEqual(list(promises), list(weathers.WEATHERS))
        self.assertEqual(list(signs_of), list(weathers.WEATHERS))

    @in_each_weather
    def test_a_weather_shows_its_signs(self, weather, run):
        for sign in signs_of[weather]:
            self.assertTrue(run.shows(sign), sign)

    @in_each_weather
    def test_no_other_weather_shows_all_of_them(self, weather, run):
        for other in weathers.WEATHERS:
            if other not in (weather, "clear"):
                self.assertFalse(all(run.shows(sign) for sign in signs_of[other]), f"this could be {other}")

    @in_each_weather
    def test_trouble_with_the_submission_alone_leaves_the_report_as_in_clear_weather(self, weather, run):
        usual = {field: getattr(weathers.WEATHERS["clear"], field) for field in ABOUT_SUBMISSION}
        if dataclasses.replace(weathers.WEATHERS[weather], **usual) == weathers.WEATHERS["clear"]:
            for sign in signs_of["clear"]:
                self.assertTrue(sign.place in signs.STREAMS or run.shows(sign), sign)


def is_disk_full(weather):
    return weathers.WEATHERS[weather].disk_full


promises = signs.promises()
signs_of = signs.signs()

labs.run_tests()
