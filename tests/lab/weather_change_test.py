# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The weather of a lab that is up: it changes, two come together, and none leaves a trace in the next one."""

import re
import unittest

import labs
import weathers


def joined():
    """All weathers, in few names, each of which joins what can be at once."""
    names = []
    for weather in weathers.WEATHERS:
        for index, name in enumerate(names):
            try:
                weathers.named(f"{name}+{weather}")
            except weathers.Contradiction:
                continue
            names[index] += f"+{weather}"
            break
        else:
            names.append(weather)
    return names


class WeatherChangeTest(unittest.TestCase):
    maxDiff = None

    # What a weather may change on the user's machine, and what it hears from others.
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

    def test_after_all_weathers_it_is_as_before(self):
        self.up()
        before = self.ask()
        for weather in [*joined(), "clear"]:
            self.do("weather", weather)
        self.assertEqual(self.ask(), before)

    def test_two_at_once(self):
        self.up("--weather", "small-mtu+clock-wrong")
        self.assertEqual(self.do("shell", "cat", "/sys/class/net/eth0/mtu"), "1000\n")
        self.assertRegex(self.do("shell", "date", "+%Y"), "^19")
        listed = self.do("weather")
        self.assertEqual(re.findall(r"^\* (\S+)", listed, re.MULTILINE), ["small-mtu", "clock-wrong"])
        self.do("weather", "clock-wrong")
        self.assertEqual(self.do("shell", "cat", "/sys/class/net/eth0/mtu"), "1500\n")

    def test_the_skivra_comes_into_the_weather_that_there_is(self):
        self.up("--weather", "skivra-no-state+skivra-bypassed")
        self.do("skivra", "on")
        self.assertEqual(self.do("shell", "cat", "/etc/resolv.conf"), "nameserver 192.168.1.1\n")
        state = "/Library/Application Support/Halvik Skivra/skv_state.plist"
        self.assertEqual(labs.run("shell", "test", "-e", state).returncode, 1)
        self.do("weather", "clear")
        self.assertEqual(self.do("shell", "cat", "/etc/resolv.conf"), "nameserver 127.0.0.1\n")
        self.do("shell", "test", "-e", state)

    def test_what_cannot_be_at_once_is_refused(self):
        for pair, subject in (("no-address+no-default-route", "the address and the route of the user's machine"),
                              ("dns-hijacked+port-53-blocked", "what becomes of queries at the home router"),
                              ("high-delay+uneven-delay", "the same line"),
                              ("routing-loop+path-ends-early", "the way to the same address")):
            with self.subTest(pair):
                self.assert_refused(f"{pair} cannot be: two of these change {subject}", pair)
        self.assert_refused("there is no weather fog; lab/lab weather lists them", "clear+fog")

    def assert_refused(self, message, weather):
        ended = labs.run("--weather", weather, "up")
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (2, "", f"lab: {message}\n"))

    def test_all_that_contradicts_has_a_name(self):
        for one in weathers.WEATHERS:
            for other in weathers.WEATHERS:
                try:
                    weathers.named(f"{one}+{other}")
                except weathers.Contradiction as contradiction:
                    self.assertRegex(str(contradiction), "change .")


labs.run_tests()
