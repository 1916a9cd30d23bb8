# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The program with its real plan, on a network with no way out: which commands it launches, and in which order."""

import signal

import builds
import endpoints
import isolation
import plan
import program_tests
import report_text
import roots
import skipping


class PlanTest(program_tests.ProgramTest):
    """Starts a run for each row at once, since most of a run is waiting, and looks at one after the other."""

    def setUp(self):
        super().setUp()
        self.roles = endpoints.roles()
        self.library = roots.Library(self)

    def check(self, rows):
        """Each row: the options, and what the expected plan depends on."""
        running = [self.start(builds.program(), ["-s", "-c", *options], prefix=self.library.prefix)
                   for options, _ in rows]
        for process, (options, facts) in zip(running, rows):
            with self.subTest(options):
                ended = self.finish(process)
                self.assertEqual(ended.messages, [])
                self.assertEqual(ended.status, 0)
                names = [name.decode() for name, _ in report_text.blocks(ended.stdout)]
                self.assertEqual(names, plan.display_names(self.roles, **facts))

    def test_without_the_skivra(self):
        self.check([
            ([], {}),
            (["--noskv"], {}),
            (["--noskv", "--skv"], {}),
            (["-d="], {}),
            (["-d=word"], {"domain": "word"}),
            (["-d= "], {"domain": ""}),
            (["-d=example.com"], {"domain": "example.com"}),
            (["--domain=example.com"], {"domain": "example.com"}),
            (["-d= exa mple. com "], {"domain": "example.com"}),
            (["-d=http://www.example.com/a/b?c"], {"domain": "http://www.example.com/a/b?c"}),
            (["-d=."], {"domain": "."}),
            (["-d=word."], {"domain": "word."}),
            (["-d=dropped=kept.example"], {"domain": "kept.example"}),
            (["-d=tab\t.example\u00e4"], {"domain": "tab\t.example\u00e4"}),
            ([b"-d=caf\xe9.example"], {"domain": "caf\ufffd.example"}),
            (["-d=first.example", "-d=second.example"], {"domain": "second.example"}),
            (["-d", "example.com"], {}),
        ])

    def test_with_the_skivra_forced(self):
        self.check([
            (["--skv"], {"skivra": True}),
            (["--skv", "-d="], {"skivra": True}),
            (["--skv", "-d=word"], {"skivra": True, "domain": "word"}),
            (["--skv", "-d= "], {"skivra": True, "domain": ""}),
            (["--skv", "-d=example.com"], {"skivra": True, "domain": "example.com"}),
        ])

    def test_with_the_skivra_installed(self):
        self.library.skivra.mkdir(parents=True)
        self.check([
            ([], {"skivra": True}),
            (["-d=example.com"], {"skivra": True, "domain": "example.com"}),
            (["--noskv"], {}),
            (["--noskv", "--skv", "-d=example.com"], {"domain": "example.com"}),
        ])

    def test_a_file_in_the_place_of_the_skivras_folder_counts_as_well(self):
        self.library.skivra.parent.mkdir(parents=True)
        self.library.skivra.write_text("not a folder")
        self.check([([], {"skivra": True})])


class CommandTest(program_tests.ProgramTest):
    """What some commands of the plan print, to see that they were really run."""

    def test_what_the_commands_print(self):
        library = roots.Library(self)
        library.skivra.mkdir(parents=True)
        (library.skivra / "skv_state.plist").write_text("the state\n")
        (library.skivra / "resolv_orig.conf").write_text("nameserver 192.0.2.77\n")
        (library.skivra / "localdomains").write_text("lan.example\n")
        ended = self.run_program(["-s", "-c"], prefix=library.prefix)
        contents = {name.decode(): content.decode() for name, content in report_text.blocks(ended.stdout)}
        listing = "stdout:\nlocaldomains\nresolv_orig.conf\nskv_state.plist\n\n"
        for name, content in [
            (f"/bin/cat {plan.SKIVRA}/skv_state.plist", "stdout:\nthe state\n\n"),
            (f"/bin/cat {plan.SKIVRA}/resolv_orig.conf", "stdout:\nnameserver 192.0.2.77\n\n"),
            (f"/bin/sh -c /bin/cat '{plan.SKIVRA}/localdomains'", "stdout:\nlan.example\n\n"),
            (f"/bin/ls {plan.SKIVRA}", listing),
            (f"/bin/sh -c /bin/ls '{plan.SKIVRA}'", listing),
        ]:
            self.assertEqual(contents[name], content, name)
        for name, part in [
            ("/bin/ps wwaux", "halvik-diagnostic"),
            ("/sbin/ifconfig -a", "127.0.0.1"),
            ("/usr/sbin/netstat -rn", "Destination"),
            ("/usr/sbin/scutil --dns", "DNS configuration"),
            ("/usr/sbin/system_profiler SPSoftwareDataType", "Kernel"),
            ("/usr/bin/dig", "no servers could be reached"),
        ]:
            self.assertTrue(contents[name].startswith("stdout:\n"), name)
            self.assertIn(part, contents[name], name)


class LaunchFailureTest(program_tests.ProgramTest):
    def assert_launch_fails(self, script, path, reason):
        prefix = ["unshare", "--mount", "sh", "-e", "-c", script + '; exec "$@"', "sh"]
        ended = self.run_program(["-s", "-c"], prefix=prefix)
        self.assertEqual(ended.status, -signal.SIGABRT)
        self.assertEqual(ended.stdout, b"")
        self.assertEqual(len(ended.messages), 1)
        self.assertIn(path, ended.messages[0])
        self.assertRegex(ended.messages[0], reason)
        self.assert_only_files(self.home, [])

    def test_a_tool_that_is_nowhere(self):
        self.assert_launch_fails("mount -t tmpfs none /usr/bin", "/usr/bin/dig", "No such file or directory")

    def test_a_tool_that_may_not_be_executed(self):
        (self.folder / "dig").write_text("#!/bin/sh\n")
        self.assert_launch_fails(f"mount --bind {self.folder}/dig /usr/bin/dig", "/usr/bin/dig", "Permission denied")

    def test_a_tool_that_is_no_program(self):
        (self.folder / "dig").write_bytes(b"\0\1\2")
        (self.folder / "dig").chmod(0o755)
        self.assert_launch_fails(f"mount --bind {self.folder}/dig /usr/bin/dig", "/usr/bin/dig", "Exec format error")


skipping.require_tools(*plan.tools())
isolation.run_tests(needs_namespaces=True)
