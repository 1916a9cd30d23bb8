# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The example of docs/many-machines.md: an office of twenty machines, five of which have a fault."""

import pathlib
import re

COUNT = 20
NAMES = [f"pc-{number:02}" for number in range(1, COUNT + 1)]
TROUBLES = {
    "pc-03": "no-default-route",
    "pc-07": "small-mtu",
    "pc-11": "other-resolver",
    "pc-14": "uneven-delay",
    "pc-18": "high-delay",
}
START = ["--machines", str(COUNT), "up"]
COLLECT = "ansible-playbook -i office.ini collect.yml\n"

# What halvik-report says of the twenty reports.
REPORT = pathlib.Path(__file__).with_name("office_report.txt").read_text(encoding="utf-8")


def scenario_words(name):
    """The words of lab/lab that set a machine's scenario."""
    return ["scenario", "--on", name, TROUBLES[name]]


def without_uptime(text):
    """The text, but for the line that differs with every run."""
    return re.sub("(?m)^time since boot: .*\n", "", text).rstrip()
