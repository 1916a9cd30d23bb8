# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""An office of twenty machines, whose administrator collects their reports as in docs/many-machines.md."""

import re
import shutil
import unittest

import expected_findings
import labs
import office_example
import reader
import scenarios
from office_example import COUNT, NAMES, TROUBLES

SWITCHED_OFF = "pc-01"  # among the first to begin
FOLDER = "/lab/visitor/halvik"
NAME = "office"

# The two processors of a small machine carry all packets of the runs that go on at the same time.
SETTINGS = "halvik_diagnostic_at_once=4\nhalvik_diagnostic_delay_seconds_max=2\n"


class Office:
    """The lab of all tests, and its two runs of the playbook, one after the other."""

    def __init__(self):
        self.do(*office_example.START)
        unittest.addModuleCleanup(self.do, "down")
        for name in TROUBLES:
            self.do(*office_example.scenario_words(name))
        self.at_administrators(f"printf '{SETTINGS}' >>office.ini")
        self.first = self.collect()
        self.before = {name: self.files(name) for name in NAMES[1:]}
        self.second = self.collect(while_running=self.switch_one_off)
        self.after = {name: self.files(name) for name in NAMES[1:]}
        self.folders = self.at_administrators("ls reports").stdout.split()

    def do(self, *words):
        ended = labs.run("--name", NAME, *words)
        if ended.returncode != 0:
            raise AssertionError(f"lab/lab {words} ended with {ended.returncode}: {ended.stdout}{ended.stderr}")
        return ended.stdout

    def start_at_administrators(self, command):
        return labs.start("--name", NAME, "shell", "sh", "-c", f"cd {FOLDER} && {command}")

    def at_administrators(self, command):
        return labs.finish(self.start_at_administrators(command))

    def collect(self, while_running=lambda: None):
        running = self.start_at_administrators(office_example.COLLECT)
        while_running()
        return labs.finish(running)

    def switch_one_off(self):
        """In the middle of its run, which waits for that."""
        self.do("shell", "--on", SWITCHED_OFF, "--root", "sh", "-c",
                "until kill -STOP $(pgrep -o -f ^/lab/program/halvik-diagnostic) 2>/dev/null; do sleep 0.05; done")
        self.do("off", SWITCHED_OFF)

    def files(self, name):
        """All files on a machine's disk, with their times and sizes, and its processes but those of the connection."""
        listed = self.do("shell", "--on", name, "--root", "sh", "-c",
                         "find /lab/visitor /tmp /etc -type d -print -o -printf '%p %s %t\\n'; ps -e -o comm=")
        return {line for line in listed.splitlines() if line != "sshd"}

    def reports(self, index):
        return self.at_administrators(f"ls reports/{self.folders[index]}").stdout.split()


def setUpModule():
    global office
    missing = [tool for tool in ("ansible-playbook", "sshd") if not shutil.which(tool, path="/usr/bin:/usr/sbin")]
    if missing or not reader.program().is_file():
        raise unittest.SkipTest(f"not there: {missing or reader.program()}")
    office = Office()


def message(ended, task):
    """The message that a task printed."""
    found = re.search(rf"^TASK \[halvik_diagnostic : {task}\] \*+\n.*\n(?:    changed: false\n)?    msg: \|-\n"
                      r"((?:        .*\n|\n)+)", ended.stdout, re.MULTILINE)
    return re.sub("^ {8}", "", found[1], flags=re.MULTILINE).rstrip() if found else ended.stdout


def recap(ended):
    """The counts of each machine."""
    found = re.findall(r"^(pc-\d+) +: (.*)$", ended.stdout, re.MULTILINE)
    return {name: dict(re.findall(r"(\w+)=(\d+)", counts)) for name, counts in found}


class FirstRunTest(unittest.TestCase):
    maxDiff = None

    def test_a_report_of_each_machine(self):
        self.assertEqual((office.first.returncode, office.first.stderr), (0, ""), office.first.stdout)
        self.assertEqual(office.reports(0), [f"{name}.txt" for name in NAMES])

    def test_only_the_administrator_can_read_them(self):
        modes = office.at_administrators(f"find reports/{office.folders[0]} -printf '%M\\n' | sort -u").stdout
        self.assertEqual(modes, "-rw-------\ndrwx------\n")

    def test_the_five_machines_and_what_they_have(self):
        self.assertEqual(len(TROUBLES), 5)
        lines = message(office.first, "Say what the reports mean").splitlines()
        problems = {line.split()[0].removesuffix(".txt"): line.split()[1] for line in lines[1:COUNT + 1]}
        expected = {name: "nothing" for name in NAMES}
        for name, scenario in TROUBLES.items():
            expected[name], = expected_findings.expected(scenario)
        self.assertEqual(problems, expected)

    def test_the_table_of_the_reports(self):
        printed = message(office.first, "Say what the reports mean")
        self.assertEqual(*map(office_example.without_uptime, (printed, office_example.REPORT)))

    def test_the_reports_can_be_read_again(self):
        again = office.at_administrators(f"cd reports/{office.folders[0]} && halvik-report *.txt")
        self.assertEqual(again.stdout.rstrip(), message(office.first, "Say what the reports mean"))


class SecondRunTest(unittest.TestCase):
    maxDiff = None

    def test_changes_nothing_but_the_reports(self):
        for name in NAMES[1:]:
            self.assertEqual(office.after[name] ^ office.before[name], set(), name)
        counts = recap(office.second)
        self.assertEqual([counts[name]["changed"] for name in NAMES[1:]], ["1"] * (COUNT - 1), office.second.stdout)

    def test_has_a_folder_of_its_own(self):
        self.assertEqual(len(office.folders), 2)
        for folder in office.folders:
            self.assertRegex(folder, r"^\d{4}-\d\d-\d\dT\d\d-\d\d(-\d\d)?$")

    def test_names_the_machine_that_was_switched_off(self):
        self.assertEqual(office.second.returncode, 2)
        self.assertEqual(message(office.second, "Name the machines without a report"), f"{SWITCHED_OFF}: unreachable")

    def test_has_the_reports_of_all_others(self):
        self.assertEqual(office.reports(1), [f"{name}.txt" for name in NAMES if name != SWITCHED_OFF])


class OptionsTest(unittest.TestCase):
    """A third run, on two machines."""

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        office.do("scenario", "--on", "pc-20", "disk-full")
        cls.ended = office.at_administrators(
            "ansible-playbook -i office.ini collect.yml --limit pc-19,pc-20 -e halvik_diagnostic_domain=shop.example "
            "-e halvik_diagnostic_skivra=with -e halvik_diagnostic_upload=true")
        folder = office.at_administrators("ls reports").stdout.split()[-1]
        cls.report = office.at_administrators(f"cat reports/{folder}/pc-19.txt").stdout

    def test_a_full_disk_is_named_and_does_not_spoil_the_others(self):
        self.assertEqual(message(self.ended, "Name the machines without a report"),
                         "pc-20: no room for the report on its disk")
        self.assertIn("nslookup", self.report)

    def test_a_domain_and_the_skivra_are_tested(self):
        self.assertIn("/usr/bin/dig +time=10 shop.example\n", self.report)
        self.assertIn("@127.0.0.1", self.report)

    def test_the_report_is_uploaded_as_well(self):
        self.assertRegex(message(self.ended, "Say where the reports are"),
                         r"(?m)^pc-19: https://diagnostic\.halvik\.example/results/1$")

    def test_a_run_that_takes_too_long_is_ended_and_named(self):
        ended = office.at_administrators("ansible-playbook -i office.ini collect.yml --limit pc-19 "
                                         "-e halvik_diagnostic_seconds_max=1")
        self.assertEqual(message(ended, "Name the machines without a report"), "pc-19: not done after 1 seconds")
        count = office.do("shell", "--on", "pc-19", "--root", "sh", "-c", "pgrep -c 'halvik|ping|dig' || :")
        self.assertEqual(count, "0\n")

    def test_check_mode_runs_nothing(self):
        before = office.at_administrators("ls reports").stdout
        ended = office.at_administrators("ansible-playbook -i office.ini collect.yml --check --limit pc-19")
        self.assertEqual(ended.returncode, 0, ended.stdout)
        self.assertEqual(office.at_administrators("ls reports").stdout, before)


class ScenarioOfAMachineTest(unittest.TestCase):
    def test_what_is_not_of_one_machine_is_refused(self):
        ended = labs.run("--name", NAME, "scenario", "--on", "pc-19", "captive-portal")
        self.assertEqual((ended.returncode, ended.stderr),
                         (2, "lab: captive-portal is not a scenario of one machine\n"))

    def test_clear_can_be_had_by_each(self):
        for name in scenarios.SCENARIOS:
            try:
                scenarios.of_a_machine(name, "pc-19")
            except scenarios.Contradiction:
                continue
            self.assertEqual(scenarios.of_a_machine("clear", "pc-19"), scenarios.SCENARIOS["clear"])

    def test_a_machine_that_is_off_has_none(self):
        ended = labs.run("--name", NAME, "scenario", "--on", SWITCHED_OFF, "small-mtu")
        self.assertEqual(ended.returncode, 2)
        self.assertIn(f"there is no machine {SWITCHED_OFF}", ended.stderr)


labs.run_tests()
