# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The scenario of a lab that is up: it changes, two are combined, and none leaves a trace in the next one."""

import re
import unittest

import labs
import scenarios


def joined():
    """All scenarios, combined into few names."""
    names = []
    for scenario in scenarios.SCENARIOS:
        for index, name in enumerate(names):
            try:
                scenarios.named(f"{name}+{scenario}")
            except scenarios.Contradiction:
                continue
            names[index] += f"+{scenario}"
            break
        else:
            names.append(scenario)
    return names


class ScenarioChangeTest(unittest.TestCase):
    maxDiff = None

    # What a scenario may change on the user's machine, and what it hears from others.
    ASK = """
        ip address; ip route; cat /etc/resolv.conf; ls -l /etc/localtime*; date +%Y; stat -f -c %b /lab
        for server in 192.0.2.53 198.51.100.53 8.8.8.8 192.168.1.1; do
          dig +short +time=2 +tries=10 @$server shop.example; dig +short @$server debug.halvik.example txt | sort
        done
        for page in block.halvik.example monitor.halvik.example/monitor/ https://diagnostic.halvik.example/; do
          curl -sL $page
        done
        traceroute -n -q 1 -N 1 203.0.113.11 | sed "s/ [0-9.]* ms//"; ls /Library
    """

    def up(self, *options):
        self.do(*options, "up")
        self.addCleanup(labs.run, "down")

    def do(self, *words):
        ended = labs.run(*words)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""), words)
        return ended.stdout

    def ask(self):
        return re.sub("valid_lft.*", "", self.do("shell", "sh", "-c", self.ASK))

    def test_after_all_scenarios_it_is_as_before(self):
        self.up()
        before = self.ask()
        for scenario in [*joined(), "clear"]:
            self.do("scenario", scenario)
        self.assertEqual(self.ask(), before)

    def test_two_at_once(self):
        self.up("--scenario", "small-mtu+clock-wrong")
        self.assertEqual(self.do("shell", "cat", "/sys/class/net/eth0/mtu"), "1000\n")
        self.assertRegex(self.do("shell", "date", "+%Y"), "^19")
        listed = self.do("scenario")
        self.assertEqual(re.findall(r"^\* (\S+)", listed, re.MULTILINE), ["small-mtu", "clock-wrong"])
        self.do("scenario", "clock-wrong")
        self.assertEqual(self.do("shell", "cat", "/sys/class/net/eth0/mtu"), "1500\n")

    def test_the_skivra_comes_into_the_scenario_that_there_is(self):
        self.up("--scenario", "skivra-no-state+skivra-bypassed")
        self.do("skivra", "on")
        self.assertEqual(self.do("shell", "cat", "/etc/resolv.conf"), "nameserver 192.168.1.1\n")
        state = "/Library/Application Support/Halvik Skivra/skv_state.plist"
        self.assertEqual(labs.run("shell", "test", "-e", state).returncode, 1)
        self.do("scenario", "clear")
        self.assertEqual(self.do("shell", "cat", "/etc/resolv.conf"), "nameserver 127.0.0.1\n")
        self.do("shell", "test", "-e", state)

    def test_what_cannot_be_at_once_is_refused(self):
        for pair, subject in (("no-address+no-default-route", "the address and the route of the user's machine"),
                              ("dns-hijacked+port-53-blocked", "what the home router does with queries"),
                              ("high-delay+uneven-delay", "the same line"),
                              ("routing-loop+path-ends-early", "the route to the same address")):
            with self.subTest(pair):
                self.assert_refused(f"{pair} cannot be combined: two of them change {subject}", pair)
        self.assert_refused("there is no scenario fog; lab/lab scenario lists them", "clear+fog")

    def assert_refused(self, message, scenario):
        ended = labs.run("--scenario", scenario, "up")
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (2, "", f"lab: {message}\n"))

    def test_all_that_contradicts_has_a_name(self):
        for one in scenarios.SCENARIOS:
            for other in scenarios.SCENARIOS:
                try:
                    scenarios.named(f"{one}+{other}")
                except scenarios.Contradiction as contradiction:
                    self.assertRegex(str(contradiction), "change .")


labs.run_tests()
