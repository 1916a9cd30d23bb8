# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""system_profiler SPSoftwareDataType: what the system is and how long it has been up.

Each run sees files of its own, mounted over the machine's in a mount namespace that ends with the run.
"""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from isolation import namespace_prefix
from project import ROOT
from skipping import skip_file

SCRIPT = ROOT / "platform/process/system_profiler"
MINUTE, HOUR, DAY = 60, 3600, 86400


class SystemProfilerTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.etc = self.folder / "etc"
        self.etc.mkdir()
        # Debian's awk is one of these.
        shutil.copytree("/etc/alternatives", self.etc / "alternatives", symlinks=True)
        self.account_names("tester")
        self.write_os_release('PRETTY_NAME="Debian GNU/Linux 12 (bookworm)"\n')
        self.write_vendor_os_release("")
        self.write_uptime(5 * MINUTE)

    def account_names(self, *names):
        ids = {os.getuid(), 0}
        lines = [f"{name}:x:{user}:{user}::/:/bin/sh\n" for name in names for user in ids]
        (self.etc / "passwd").write_text("".join(lines))
        (self.etc / "nsswitch.conf").write_text("passwd: files\n")

    def write_os_release(self, content):
        (self.etc / "os-release").write_text(content)

    def write_vendor_os_release(self, content):
        (self.folder / "os-release").write_text(content)

    def write_uptime(self, seconds):
        (self.folder / "uptime").write_text(f"{seconds} 123456.78\n")

    def run_script(self, *arguments):
        mounts = ('mount --bind "$0/etc" /etc && mount --bind "$0/os-release" /usr/lib/os-release && '
                  'mount --bind "$0/uptime" /proc/uptime && exec "$@"')
        env = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"}
        ended = subprocess.run([*PREFIX, "sh", "-c", mounts, self.folder, SCRIPT, *arguments], env=env,
                               stdin=subprocess.DEVNULL, capture_output=True, timeout=30)
        return ended.stdout.decode(), ended.stderr.decode(), ended.returncode

    def answer(self):
        stdout, stderr, status = self.run_script("SPSoftwareDataType")
        self.assertEqual((stderr, status), ("", 0))
        return stdout

    def fact(self, label):
        values = [line.partition(": ")[2] for line in self.answer().splitlines() if line.startswith(f"      {label}: ")]
        self.assertLessEqual(len(values), 1)
        return values[0] if values else None

    def test_whole_answer(self):
        system = os.uname()
        self.assertEqual(self.answer(), "Software:\n"
                                        "\n"
                                        "    System Software Overview:\n"
                                        "\n"
                                        "      System Version: Debian GNU/Linux 12 (bookworm)\n"
                                        f"      Kernel Version: {system.sysname} {system.release}\n"
                                        f"      Computer Name: {system.nodename}\n"
                                        "      User Name: tester\n"
                                        "      Time since boot: 5 minutes\n"
                                        "\n")

    def test_forms_of_the_system_name(self):
        for line, name in (("PRETTY_NAME=Plain", "Plain"),
                           ("PRETTY_NAME='Single \\\"quoted\\\"'", 'Single \\"quoted\\"'),
                           (r'PRETTY_NAME="An \"odd\" \$name \`with\` \\ it"', 'An "odd" $name `with` \\ it'),
                           ('NAME=other\nPRETTY_NAME="Windows line ends"\r\nID=x\r', "Windows line ends"),
                           ("PRETTY_NAME=first\nPRETTY_NAME=last\n# PRETTY_NAME=comment", "last"),
                           ('PRETTY_NAME="$(echo command)"', "$(echo command)"),
                           ("PRETTY_NAME=\"100% s'il vous plaît\"", "100% s'il vous plaît")):
            with self.subTest(line):
                self.write_os_release(line + "\n")
                self.assertEqual(self.fact("System Version"), name)

    def test_system_name_of_the_vendors_file(self):
        self.write_vendor_os_release('PRETTY_NAME="From the vendor"\n')
        for content in ("", "NAME=Debian\n", 'PRETTY_NAME=""\n'):
            with self.subTest(content):
                self.write_os_release(content)
                self.assertEqual(self.fact("System Version"), "From the vendor")
        (self.etc / "os-release").unlink()
        self.assertEqual(self.fact("System Version"), "From the vendor")

    def test_kernel_in_place_of_a_system_name(self):
        (self.etc / "os-release").unlink()
        system = os.uname()
        self.assertEqual(self.fact("System Version"), f"{system.sysname} {system.release}")

    def test_user_without_a_name(self):
        self.account_names()
        user = 0 if "--map-root-user" in PREFIX else os.getuid()
        self.assertEqual(self.fact("User Name"), str(user))

    def test_time_since_boot(self):
        for seconds, text in ((0.42, "0 minutes"),
                              (59.99, "0 minutes"),
                              (MINUTE, "1 minute"),
                              (8 * MINUTE + 30, "8 minutes"),
                              (HOUR - 1, "59 minutes"),
                              (HOUR, "1:00"),
                              (4 * HOUR + 5 * MINUTE, "4:05"),
                              (DAY - 0.5, "23:59"),
                              (DAY, "1 day 0 minutes"),
                              (DAY + HOUR + MINUTE, "1 day 1:01"),
                              (3 * DAY + 4 * HOUR + 5 * MINUTE, "3 days 4:05"),
                              (400 * DAY + MINUTE, "400 days 1 minute")):
            with self.subTest(seconds):
                self.write_uptime(seconds)
                self.assertEqual(self.fact("Time since boot"), text)

    def test_unknown_time_since_boot(self):
        (self.folder / "uptime").write_text("")
        self.assertIsNone(self.fact("Time since boot"))

    def test_anything_but_the_software_overview_is_refused(self):
        for arguments in ((), ("SPHardwareDataType",), ("SPSoftwareDataType", "-xml"), ("",)):
            with self.subTest(arguments):
                self.assertEqual(self.run_script(*arguments), ("", "usage: system_profiler SPSoftwareDataType\n", 1))


PREFIX = namespace_prefix()
if PREFIX is None:
    skip_file("this machine permits no mount namespace")
unittest.main()
