# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""scutil --dns: the resolvers in use, from /etc/resolv.conf or, where that names systemd-resolved, from resolvectl.

Each run sees an /etc of its own, mounted over the machine's in a mount namespace that ends with the run.
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

SCRIPT = ROOT / "platform/process/scutil"
NO_CONFIGURATION = "No DNS configuration available\n"
STUB = "nameserver 127.0.0.53\noptions edns0 trust-ad\nsearch .\n"


class ScutilTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.etc = self.folder / "etc"
        self.tools = self.folder / "tools"
        for folder in (self.etc, self.tools):
            folder.mkdir()
        # Debian's awk is one of these.
        shutil.copytree("/etc/alternatives", self.etc / "alternatives", symlinks=True)
        # Whatever resolvectl the machine has is not to be asked.
        self.write_resolvectl("exit 1")

    def write_resolvectl(self, script):
        path = self.tools / "resolvectl"
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)

    def write_links(self, dns, domains, status=0):
        (self.tools / "dns").write_text(dns)
        (self.tools / "domain").write_text(domains)
        self.write_resolvectl(f'cat "{self.tools}/$1"\nexit {status}')

    def write_resolv_conf(self, content):
        (self.etc / "resolv.conf").write_bytes(content if isinstance(content, bytes) else content.encode())

    def run_script(self, *arguments):
        command = [*PREFIX, "sh", "-c", 'mount --bind "$0" /etc && exec "$@"', self.etc, SCRIPT, *arguments]
        env = {"PATH": f"{self.tools}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"}
        ended = subprocess.run(command, env=env, stdin=subprocess.DEVNULL, capture_output=True, timeout=30)
        return ended.stdout.decode(), ended.stderr.decode(), ended.returncode

    def assert_answer(self, stdout, status=0):
        self.assertEqual(self.run_script("--dns"), (stdout, "", status))

    def assert_facts(self, *lines):
        """The answer is one resolver with these lines."""
        self.assert_answer("DNS configuration\n\nresolver #1\n" + "".join(f"  {line}\n" for line in lines))


class ResolvConf(ScutilTest):
    def test_all_kinds_of_lines(self):
        self.write_resolv_conf("search example.org corp.example\nnameserver 192.0.2.53\nnameserver 2001:db8::53\n"
                               "options ndots:2 timeout:1\n")
        self.assert_facts("search domain[0] : example.org",
                          "search domain[1] : corp.example",
                          "nameserver[0] : 192.0.2.53",
                          "nameserver[1] : 2001:db8::53",
                          "options  : ndots:2 timeout:1")

    def test_says_nothing_that_the_file_does_not(self):
        self.write_resolv_conf("nameserver 192.0.2.53\n")
        self.assert_facts("nameserver[0] : 192.0.2.53")

    def test_many_name_servers(self):
        self.write_resolv_conf("".join(f"nameserver 192.0.2.{n}\n" for n in range(12)))
        self.assert_facts(*(f"nameserver[{n}] : 192.0.2.{n}" for n in range(12)))

    def test_link_local_name_server_keeps_its_zone(self):
        self.write_resolv_conf("nameserver fe80::1%eth0\n")
        self.assert_facts("nameserver[0] : fe80::1%eth0")

    def test_tabs_line_ends_of_windows_and_no_last_line_end(self):
        self.write_resolv_conf(b"search\texample.org\r\nnameserver\t 192.0.2.1 \r\n\r\nnameserver 192.0.2.2")
        self.assert_facts("search domain[0] : example.org",
                          "nameserver[0] : 192.0.2.1",
                          "nameserver[1] : 192.0.2.2")

    def test_comments(self):
        self.write_resolv_conf("# nameserver 192.0.2.1\n;nameserver 192.0.2.2\nnameserver 192.0.2.3 # router\n"
                               "nameserver 192.0.2.4;old\nsearch example.org # home\n")
        self.assert_facts("search domain[0] : example.org",
                          "nameserver[0] : 192.0.2.3",
                          "nameserver[1] : 192.0.2.4")

    def test_last_of_domain_and_search_counts(self):
        self.write_resolv_conf("search a.example b.example\ndomain c.example\nnameserver 192.0.2.1\n")
        self.assert_facts("search domain[0] : c.example", "nameserver[0] : 192.0.2.1")
        self.write_resolv_conf("domain c.example\nsearch a.example b.example\nnameserver 192.0.2.1\n")
        self.assert_facts("search domain[0] : a.example", "search domain[1] : b.example", "nameserver[0] : 192.0.2.1")

    def test_options_of_several_lines(self):
        self.write_resolv_conf("nameserver 192.0.2.1\noptions rotate\noptions ndots:1\n")
        self.assert_facts("nameserver[0] : 192.0.2.1", "options  : rotate ndots:1")

    def test_incomplete_and_unknown_lines(self):
        self.write_resolv_conf("nameserver\nsearch\noptions\nnameservers 192.0.2.1\nsortlist 192.0.2.0\n"
                               "nameserver 192.0.2.2\n")
        self.assert_facts("nameserver[0] : 192.0.2.2")

    def test_search_domain_without_name_server(self):
        self.write_resolv_conf("search example.org\n")
        self.assert_facts("search domain[0] : example.org")

    def test_no_configuration(self):
        self.assert_answer(NO_CONFIGURATION, status=1)
        for content in ("", "\n\n", "# nameserver 192.0.2.1\n", "nameserver\n"):
            with self.subTest(content):
                self.write_resolv_conf(content)
                self.assert_answer(NO_CONFIGURATION, status=1)

    def test_resolv_conf_is_no_file(self):
        (self.etc / "resolv.conf").mkdir()
        self.assert_answer(NO_CONFIGURATION, status=1)

    def test_link_to_a_missing_file(self):
        (self.etc / "resolv.conf").symlink_to("/run/nothing/resolv.conf")
        self.assert_answer(NO_CONFIGURATION, status=1)


class Resolved(ScutilTest):
    def setUp(self):
        super().setUp()
        self.write_resolv_conf(STUB)

    def test_resolver_of_each_link(self):
        self.write_links(dns="Global: 192.0.2.1\nLink 2 (eth0): 192.0.2.53 2001:db8::53\nLink 3 (wlan0):\n"
                             "Link 7 (tun0): 198.51.100.53#dns.example\n",
                         domains="Global:\nLink 2 (eth0): example.org home.example\nLink 3 (wlan0):\n"
                                 "Link 7 (tun0): work.example ~corp.example ~.\n")
        self.assert_answer("DNS configuration\n"
                           "\n"
                           "resolver #1\n"
                           "  nameserver[0] : 192.0.2.1\n"
                           "\n"
                           "resolver #2\n"
                           "  search domain[0] : example.org\n"
                           "  search domain[1] : home.example\n"
                           "  nameserver[0] : 192.0.2.53\n"
                           "  nameserver[1] : 2001:db8::53\n"
                           "  if_index : 2 (eth0)\n"
                           "\n"
                           "resolver #3\n"
                           "  domain   : corp.example\n"
                           "  domain   : .\n"
                           "  search domain[0] : work.example\n"
                           "  nameserver[0] : 198.51.100.53#dns.example\n"
                           "  if_index : 7 (tun0)\n")

    def test_wrapped_list(self):
        self.write_links(dns="Global:\nLink 12 (enp0s31f6): 192.0.2.1\n        192.0.2.2 192.0.2.3\n"
                             "        192.0.2.4\n",
                         domains="Global:\nLink 12 (enp0s31f6): a.example\n        ~b.example\n")
        self.assert_facts("domain   : b.example",
                          "search domain[0] : a.example",
                          *(f"nameserver[{n}] : 192.0.2.{n + 1}" for n in range(4)),
                          "if_index : 12 (enp0s31f6)")

    def test_search_domain_of_all_links(self):
        self.write_links(dns="Global:\nLink 2 (eth0): 192.0.2.1\n", domains="Global: example.org\nLink 2 (eth0):\n")
        self.assert_answer("DNS configuration\n\nresolver #1\n  search domain[0] : example.org\n\n"
                           "resolver #2\n  nameserver[0] : 192.0.2.1\n  if_index : 2 (eth0)\n")

    def assert_answer_of_resolv_conf(self):
        self.assert_facts("search domain[0] : .", "nameserver[0] : 127.0.0.53", "options  : edns0 trust-ad")

    def test_resolvectl_fails(self):
        self.write_links(dns="Global: 192.0.2.1\n", domains="Global:\n", status=1)
        self.assert_answer_of_resolv_conf()

    def test_resolvectl_complains(self):
        self.write_resolvectl("echo 'Failed to get global data' >&2; exit 1")
        self.assert_answer_of_resolv_conf()

    def test_resolvectl_hangs(self):
        self.write_resolvectl("exec sleep 60")
        self.assert_answer_of_resolv_conf()

    def test_no_resolvectl(self):
        (self.tools / "resolvectl").unlink()
        os.environ["PATH"], path = "/usr/bin:/bin", os.environ["PATH"]
        self.addCleanup(os.environ.update, PATH=path)
        if shutil.which("resolvectl"):
            self.skipTest("this machine has a resolvectl")
        self.assert_answer_of_resolv_conf()

    def test_resolved_knows_no_server(self):
        self.write_links(dns="Global:\nLink 2 (eth0):\n", domains="Global: example.org\nLink 2 (eth0):\n")
        self.assert_answer_of_resolv_conf()

    def test_resolved_is_not_asked_unless_resolv_conf_names_it_alone(self):
        self.write_links(dns="Global: 192.0.2.1\n", domains="Global:\n")
        for content, *servers in (("nameserver 192.0.2.9\n", "192.0.2.9"),
                                  ("nameserver 192.0.2.9\nnameserver 127.0.0.53\n", "192.0.2.9", "127.0.0.53"),
                                  ("nameserver 127.0.0.1\n", "127.0.0.1")):
            with self.subTest(content):
                self.write_resolv_conf(content)
                self.assert_facts(*(f"nameserver[{n}] : {server}" for n, server in enumerate(servers)))

    def test_odd_spellings_of_the_stub(self):
        self.write_links(dns="Global: 192.0.2.1\n", domains="Global:\n")
        for content in (b"nameserver\t127.0.0.53\r\n",
                        b"nameserver 127.0.0.53# stub\n",
                        b"nameserver\nnameserver 127.0.0.53\n"):
            with self.subTest(content):
                self.write_resolv_conf(content)
                self.assert_facts("nameserver[0] : 192.0.2.1")


class Usage(ScutilTest):
    def test_anything_but_dns_is_refused(self):
        self.write_resolv_conf("nameserver 192.0.2.1\n")
        for arguments in ((), ("--proxy",), ("--dns", "--dns"), ("",)):
            with self.subTest(arguments):
                self.assertEqual(self.run_script(*arguments), ("", "usage: scutil --dns\n", 1))


PREFIX = namespace_prefix()
if PREFIX is None:
    skip_file("this machine permits no mount namespace")
unittest.main()
