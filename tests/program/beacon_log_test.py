# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The Skivra's beacon logs in the report: every entry of the three folders, oldest first."""

import os
import resource
import subprocess

import builds
import endpoints
import isolation
import plan
import polling
import report_text
import skipping
from beacon_logs import FOLDER, FOLDERS, SHOWN_FOLDER, SOCKET, BeaconLogCase, Device, LinkTo, creation_times


class BeaconLogTest(BeaconLogCase):
    def test_no_logs(self):
        self.assert_readers([])
        for folder in FOLDERS:
            (self.logs / folder).mkdir()
        self.assert_readers([])

    def test_a_file_in_the_place_of_a_log_folder(self):
        (self.logs / "ipblock").write_text("not a folder")
        (self.logs / "service").mkdir()
        self.create("service", "log", "text")
        self.create(".", "beside.log", "not read")
        self.assert_readers([("service", "log", "text")])

    def test_the_oldest_comes_first_in_each_folder(self):
        for folder in FOLDERS:
            (self.logs / folder).mkdir()
        created = [("service", "m"), ("ipblock", "z"), ("probe", "b"), ("ipblock", "a"), ("service", "c"),
                   ("ipblock", "y"), ("service", "a"), ("probe", "a"), ("ipblock", "B")]
        for folder, name in created:
            self.create(folder, name, f"{folder} {name}\n")
        older = creation_times([self.logs / "probe" / "b"])
        for folder, name in created[:4]:  # younger by every time stamp but that of the creation
            with open(self.logs / folder / name, "a") as file:
                file.write("later\n")
        if creation_times([self.logs / "probe" / "b"]) != older:
            self.skipTest("the program cannot ask when a file was created")
        expected = sorted(created, key=lambda entry: FOLDERS.index(entry[0]))
        self.assert_readers([(folder, name, f"{folder} {name}\n" + "later\n" * ((folder, name) in created[:4]))
                             for folder, name in expected])

    def test_every_kind_of_entry(self):
        def complaint(about):
            return lambda content: content.startswith(b"stderr:\n") and about in content

        (self.logs / "probe").mkdir()
        entries = [
            ("z first.log", "with blank\n", "with blank\n"),
            (".hidden", "hidden", "hidden"),
            ("folder", FOLDER, complaint(b"directory")),
            ("empty.log", "", ""),
            ('quote".log', "never read", complaint(b"nterminated")),
            (b"caf\xe9 \xff.log", "latin name\n", "latin name\n"),
            ("caf\u00e9 \U0001f600.log", "utf-8 name\n", "utf-8 name\n"),
            ("not text.log", b"\xff\xfe", ""),
            ("$$HOME.log", "never read", complaint(b"o such file")),
            ("`exit`", "never read", complaint(b"directory")),
            ("it's; (one) & 'name' * ? #", "marks\n", "marks\n"),
            ("tab\tname", "tab\n", "tab\n"),
            ("link.log", LinkTo("empty.log"), ""),
            ("dangling.log", LinkTo("nowhere"), complaint(b"o such file")),
            ("-n", "option\n", "option\n"),
            ("last", "last\n" * 100000, "last\n" * 100000),
        ]
        for name, content, _ in entries:
            self.create("probe", name, content)
        self.assert_readers([("probe", report_text.as_bytes(name).decode(errors="replace"), printed)
                             for name, _, printed in entries])

    def test_a_name_with_a_line_feed(self):
        (self.logs / "probe").mkdir()
        self.create("probe", "two\nlines", "read\n")
        blocks = self.run_plan()
        self.assertEqual(len(blocks), 68)
        self.assertIn((f'/bin/sh -c cat "{SHOWN_FOLDER}/probe/two', b'lines"\nstdout:\nread\n\n'), blocks)

    def test_a_name_with_each_byte(self):
        """Two of them mean something to the shell in this place, and the display name shows a line feed as it is."""
        (self.logs / "probe").mkdir()
        numbers = [number for number in range(1, 256) if number != ord("/")]
        for number in numbers:
            with open(os.fsencode(self.logs / "probe") + b"/before %c after" % number, "wb") as file:
                file.write(b"log %d\n" % number)
        readers = [content for name, content in self.run_plan() if name.startswith('/bin/sh -c cat "')]
        complaints = [content for content in readers if content.startswith(b"stderr:\n")]
        self.assertEqual(len(complaints), 2, complaints)
        for complaint in complaints:
            self.assertIn(b"yntax error", complaint)
        read = {number: b"stdout:\nlog %d\n\n" % number for number in numbers if number not in b"\"`"}
        read[ord("\n")] = b' after"\n' + read[ord("\n")]
        self.assertEqual(sorted(set(readers) - set(complaints)), sorted(read.values()))
        self.assertEqual(len(readers), len(numbers))

    def test_entries_that_are_no_files(self):
        def complaint(about):
            return lambda content: content.startswith(b"stderr:\n") and about in content

        (self.logs / "probe").mkdir()
        loop = complaint(b"oo many levels of symbolic links")
        entries = [
            ("before", "text\n", "text\n"),
            ("circle", LinkTo("circle"), loop),
            ("there", LinkTo("back"), loop),
            ("back", LinkTo("there"), loop),
            ("up", LinkTo(".."), complaint(b"s a directory")),
            ("socket", SOCKET, complaint(b"o such device or address")),
            ("empty device", Device(1, 3), ""),
            ("dead device", Device(250, 250), complaint(b"o such device")),
            ("after", "text\n", "text\n"),
        ]
        try:
            for name, content, _ in entries:
                self.create("probe", name, content)
        except PermissionError:
            self.skipTest("this user makes no devices")
        self.assert_readers([("probe", name, printed) for name, _, printed in entries])

    def test_a_fifo_is_read_until_its_writer_closes(self):
        """It is an entry like any other: without a writer, its reader waits, and the run with it."""
        probe = self.logs / "probe"
        probe.mkdir()
        os.mkfifo(probe / "fifo")
        process = self.start(builds.program(), ["-s", "-c"], prefix=self.prefix)
        writer = polling.open_for_writing(probe / "fifo", process)
        polling.wait_until(lambda: not self.others_that_run(process.pid), "only the reader is left", process)
        self.assertIsNone(process.poll())
        os.write(writer, b"at last\n")
        os.close(writer)
        ended = self.finish(process)
        self.assertEqual(ended.status, 0)
        self.assertIn(f'cat "{SHOWN_FOLDER}/probe/fifo"\nstdout:\nat last\n\n'.encode(), ended.stdout)

    @staticmethod
    def others_that_run(pid):
        lines = subprocess.run(["ps", "-o", "stat=,args=", "--ppid", str(pid)], capture_output=True, text=True).stdout
        return [line for line in lines.splitlines() if not line.startswith("Z") and "/probe/fifo" not in line]

    def test_folders_that_cannot_be_read(self):
        for folder in FOLDERS:
            (self.logs / folder).mkdir()
            self.create(folder, "log", "text\n")
            self.addCleanup((self.logs / folder).chmod, 0o755)
        (self.logs / "ipblock").chmod(0o111)  # cannot be listed
        (self.logs / "probe").chmod(0o444)  # can be listed, but its entries cannot be looked at
        (self.logs / "service" / "log").chmod(0)
        # Permissions bind root as well then, and ping can still be run, to which some systems give a privilege.
        self.prefix = [*self.prefix, "setpriv", "--bounding-set=-dac_override,-dac_read_search", "--"]
        self.assert_readers([("service", "log",
                              lambda content: content.startswith(b"stderr:\n") and b"ermission denied" in content)])

    def test_thousands_of_logs(self):
        soft, hard, wanted = 1024, 20000, 5000
        if resource.getrlimit(resource.RLIMIT_NOFILE)[1] < hard:
            self.skipTest(f"fewer than {hard} open descriptors are permitted here")
        folder = self.logs / "probe"
        folder.mkdir()
        for i in range(wanted):
            (folder / f"{(i * 7919) % wanted}.log").write_text(f"line of log {i}\n" * 50)
        blocks = self.run_plan(prefix=["prlimit", f"--nofile={soft}:{hard}"])
        first = len(blocks) - wanted - len(plan.SECTIONS["after the logs"])
        logs = blocks[first:first + wanted]
        self.assertEqual([name for name, _ in blocks[:first] + blocks[first + wanted:]],
                         plan.display_names(endpoints.roles(), skivra=True))
        contents = {name: content for name, content in logs}
        expected = {f'/bin/sh -c cat "{SHOWN_FOLDER}/probe/{(i * 7919) % wanted}.log"':
                    b"stdout:\n" + f"line of log {i}\n".encode() * 50 + b"\n" for i in range(wanted)}
        self.assertEqual(contents, expected)
        times = creation_times([name.split("/")[-1][:-1] for name, _ in logs], cwd=folder)
        self.assertEqual(times, sorted(times), "the logs are not in the order of their creation")


skipping.require_tools(*plan.tools())
isolation.run_tests(needs_namespaces=True)
