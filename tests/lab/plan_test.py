# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Which commands a run launches, and in which order, on a machine with the Skivra and on one without; and that the lab
has an answer for each of them.
"""

import re
import unittest

import endpoints
import labs
import plan
import report_text
import skivra

DOMAIN = "shop.example"
LOG_FOLDER = f"/{skivra.FOLDER}/beacon-logs"
LOGS = skivra.logs()

# Options, and what the plan depends on.
GENERAL = [
    ([], {}),
    (["-d="], {}),
    (["-d=word"], {"domain": "word"}),
    ([f"-d={DOMAIN}"], {"domain": DOMAIN}),
    (["-d= shop .example"], {"domain": DOMAIN}),
]
WITH_SKIVRA = [
    (["-d=word"], {"domain": "word", "skivra": True}),
    ([], {"skivra": True}),
    (["-d="], {"skivra": True}),
    ([f"-d={DOMAIN}"], {"domain": DOMAIN, "skivra": True}),
]

# What commands say that got an answer, by the beginning of their names. The first that fits counts.
ANSWERED = {
    "/usr/bin/dig": r"status: NOERROR,.*\n.*ANSWER: [1-9]",
    "/usr/bin/nslookup": r"text = ",
    "/usr/sbin/traceroute": r"^ *\d+  \S+ \(\S+\)  .* ms( \*)*\n*\Z",
    "/sbin/ping": r" [1-5] received",
    # Its time to live lets it see the first router only.
    "/bin/sh -c /sbin/ping": r"From 192\.168\.1\.1 icmp_seq=1 Time to live exceeded",
    # On Linux it knows no such command.
    "/bin/sh -c /sbin/route": r"\Astderr:\nUsage: route",
    # It prints everything on standard error.
    "/bin/sh -c /usr/bin/curl": r"^< HTTP/1\.1 200 OK",
    "": r"\Astdout:\n(?!(?s:.*)^stderr:)",
}


def with_option(option, rows):
    return [([option, *options], facts) for options, facts in rows]


WITHOUT = [*GENERAL, *with_option("--noskv", GENERAL[:1]), *with_option("--skv", WITH_SKIVRA),
           (["--skv", "--noskv"], {})]
INSTALLED = [*with_option("--noskv", GENERAL), (["--noskv", "--skv"], {}), *WITH_SKIVRA]
WHOLE = WITH_SKIVRA[-1:]

# The plan gives some of its commands two seconds, which a busy machine may take for other things.
ATTEMPTS = 5

ADDED_LOG = f"{LOG_FOLDER}/service/.last one", "the last\n"
CHANGED_LOGS = [log for log in LOGS if "/probe/" not in log[0]] + [ADDED_LOG]
CHANGE = f"""rm -r "{LOG_FOLDER}/probe"; echo "the last" >"{ADDED_LOG[0]}" """


def run_rows(name, rows):
    with labs.Lab(name) as lab:
        return run_in(lab, rows)


def run_before_and_after_a_change():
    with labs.Lab("installed", skivra=True) as lab:
        before = run_in(lab, INSTALLED)
        lab.shell("--root", "sh", "-c", CHANGE)
        return before, run_in(lab, WITH_SKIVRA)


def run_until_all_are_answered():
    """Repeats the whole plan for those commands that got no answer. Returns what each answered, by its name."""
    with labs.Lab("whole", skivra=True) as lab:
        contents = {}
        for _ in range(ATTEMPTS):
            ended, = run_in(lab, WHOLE)
            for name, content in report_text.blocks(ended.stdout):
                if not is_answered(name.decode(), contents.get(name.decode(), "")):
                    contents[name.decode()] = content.decode()
            if all(is_answered(*block) for block in contents.items()):
                break
        return contents


def is_answered(name, content):
    pattern = next(pattern for start, pattern in ANSWERED.items() if name.startswith(start))
    return re.search(pattern, content, re.MULTILINE) is not None


def run_in(lab, rows):
    """Makes a run for each row, all at once."""
    return [labs.ended(process) for process in [lab.start_program("-s", "-c", *options) for options, _ in rows]]


def setUpModule():
    global runs
    runs = labs.SideBySide({
        "installed": run_before_and_after_a_change,
        "without": lambda: run_rows("without", WITHOUT),
        "whole": run_until_all_are_answered,
    })


class PlanTest(unittest.TestCase):
    maxDiff = None

    def check(self, rows, runs_of_rows, logs=()):
        for (options, facts), ended in zip(rows, runs_of_rows, strict=True):
            with self.subTest(options, logs=len(logs)):
                self.assertEqual((ended.status, ended.messages), (0, []))
                names = [name.decode() for name, _ in report_text.blocks(ended.stdout)]
                paths = [path for path, _ in logs] if "skivra" in facts else []
                self.assertEqual(names, plan.display_names(endpoints.roles(), beacon_logs=paths, **facts))

    def test_without_the_skivra(self):
        self.check(WITHOUT, runs["without"])

    def test_with_the_skivra(self):
        before, after = runs["installed"]
        self.check(INSTALLED, before, LOGS)
        self.check(WITH_SKIVRA, after, CHANGED_LOGS)

    def test_every_command_has_an_answer(self):
        contents = runs["whole"]
        paths = [path for path, _ in LOGS]
        names = plan.display_names(endpoints.roles(), beacon_logs=paths, **WHOLE[0][1])
        self.assertEqual(list(contents), names)
        for name, content in contents.items():
            self.assertTrue(is_answered(name, content), f"{name}:\n{content}")
        self.assertEqual([contents[f'/bin/sh -c cat "{path}"'] for path, _ in LOGS],
                         [f"stdout:\n{text}\n" for _, text in LOGS])


labs.run_tests()
