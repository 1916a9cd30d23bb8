# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Commands that behave as badly as they can. What each prints is still its result, and that of the others is theirs."""

import os
import re
import shutil
import signal
import sys

import builds
import isolation
import polling
import program_tests
import report_text

ALL = report_text.PLAN_LENGTH
MEGABYTE = 1 << 20


class HostileCommandTest(program_tests.ProgramTest):
    def contents(self, lines, **others):
        """What stands in the report for each of these commands. All others have printed nothing."""
        ended = self.run_test_build(["-s", "-c"], lines, **others)
        self.assertEqual((ended.status, ended.stderr), (0, b""))
        found = [content for _, content in report_text.blocks(ended.stdout[:-1])]
        self.assertEqual(len(found), ALL)
        self.assertEqual(set(found[len(lines):]) - {b""}, set())
        return found[:len(lines)]


class OutputTest(HostileCommandTest):
    def test_far_more_output_than_anybody_reads(self):
        """It is kept once, and the program takes no more memory than for that."""
        kept = 256 * MEGABYTE
        peak = self.folder / "peak"
        # Measured while all but the last pipe full of it has been read.
        line = f"head -c {kept} /dev/zero; grep VmHWM /proc/$PPID/status >{peak}"
        with open("/dev/null", "wb") as nowhere:
            ended = self.run_test_build(["-s", "-c"], [line], stdout=nowhere)
        self.assertEqual((ended.status, ended.stderr), (0, b""))
        used = int(re.search(r"(\d+) kB", peak.read_text())[1]) * 1024
        self.assertLess(used, 1.1 * kept + (400 if builds.is_sanitized() else 96) * MEGABYTE)

    def test_a_writer_that_never_ends_is_read_until_it_is_ended(self):
        """The others do not wait for it meanwhile."""
        process = self.start_test_build(["-s", "-o=F"], ["echo $$ >pid; exec yes", *["echo >>ended"] * (ALL - 1)])
        number, ended = self.work / "pid", self.work / "ended"
        for path, size in ((ended, ALL - 1), (number, 1)):
            polling.wait_until(lambda: path.exists() and path.stat().st_size >= size, "the others have ended",
                               process)
        self.assertIsNone(process.poll())
        os.kill(int(number.read_text()), signal.SIGTERM)
        ended = self.finish(process)
        self.assertEqual((ended.status, ended.stdout, ended.stderr), (0, b"outputFile=F\n", b""))
        content = report_text.blocks((self.work / "F").read_bytes())[0][1]
        self.assertEqual(set(content.removeprefix(b"stdout:\n").splitlines()) - {b"y", b""}, set())

    def test_streams_that_are_closed_and_opened_again(self):
        self.assertEqual(self.contents(["exec 2>&-; echo lost >&2; echo kept", "exec 3>&1 >&- >&3; echo again",
                                        "exec >&- 2>&-"]),
                         [b"stdout:\nkept\n\n", b"stdout:\nagain\n\n", b""])

    def test_a_pipe_that_its_writer_has_changed(self):
        """A command may make it non-blocking, larger or smaller; the program reads what comes."""
        set_size = 1031
        code = (f"import fcntl, os; fcntl.fcntl(1, fcntl.F_SETFL, os.O_NONBLOCK); fcntl.fcntl(1, {set_size}, 4096); "
                "os.write(1, b'x' * 4096); fcntl.fcntl(1, fcntl.F_SETFL, 0); os.write(1, b'y' * 100000)")
        printed, = self.contents([f'{sys.executable} -I -c "{code}"'])
        self.assert_same_text(printed, b"stdout:\n" + b"x" * 4096 + b"y" * 100000 + b"\n")

    def test_a_report_within_a_report(self):
        """What a command prints may look like a block of the report, and is kept as it is."""
        fake = "-" * 45 + "Results for: fake"
        ended = self.run_test_build(["-s", "-c"], [f"echo {fake}"])
        self.assert_same_text(ended.stdout, report_text.report([(f"echo {fake}", f"{fake}\n")]) + b"\n")


class DescendantTest(HostileCommandTest):
    def test_a_thousand_children_of_one_command(self):
        """They outlive it. The run waits for the last one that can still print."""
        # Each waits for the command to end: only then the last one that could write into the FIFO is gone.
        line = ("mkfifo end; exec 4<>end 3<end; i=0; "
                "while [ $i -lt 1000 ]; do (exec 4>&-; read _ <&3; echo late) & i=$((i+1)); done; echo early")
        printed, beside = self.contents([line, "echo beside"])
        self.assertEqual(printed, b"stdout:\nearly\n" + b"late\n" * 1000 + b"\n")
        self.assertEqual(beside, b"stdout:\nbeside\n\n")

    def test_sessions_and_groups_of_their_own(self):
        leave = "import os; os.{}; print('left')"
        self.assertEqual(self.contents([
            f'{sys.executable} -I -c "{leave.format("setsid()")}"',
            f'{sys.executable} -I -c "{leave.format("setpgid(0, 0)")}"',
            "setsid sh -c 'echo own; sleep 0.1; echo session'",
            "(setsid sh -c 'sleep 0.1; echo late' &) & echo early",
        ]), [b"stdout:\nleft\n\n", b"stdout:\nleft\n\n", b"stdout:\nown\nsession\n\n", b"stdout:\nearly\nlate\n\n"])

    def test_a_command_that_ends_itself_by_a_signal(self):
        numbers = [1, 2, 3, 6, 8, 9, 11, 13, 14, 15, 24, 31, 40, 64]
        printed = self.contents([f"ulimit -c 0; echo before; kill -{number} $$; echo after" for number in numbers])
        self.assertEqual(printed, [b"stdout:\nbefore\n\n"] * len(numbers))


class FileTest(HostileCommandTest):
    def test_a_command_that_is_replaced_while_it_runs(self):
        """What has started goes on; the file that another run starts is the new one."""
        tool = self.work / "tool"
        tool.write_text("#!/bin/sh\necho >running\nuntil test -e replaced; do sleep 0.01; done\necho old\n")
        tool.chmod(0o755)
        replace = ("until test -e running; do sleep 0.01; done; printf '#!/bin/sh\\necho new\\n' >next; "
                   "chmod 755 next; mv next tool; touch replaced")
        self.assertEqual(self.contents(["exec ./tool", replace])[0], b"stdout:\nold\n\n")
        self.assertEqual(self.contents(["exec ./tool"]), [b"stdout:\nnew\n\n"])

    def test_the_program_itself_is_removed_while_it_runs(self):
        """As when a package is upgraded in the middle of a run."""
        copy = self.folder / "copy"
        shutil.copy(builds.test_build(), copy)
        lines = self.folder / "commands"
        lines.write_text(f"rm {copy}; echo removed\n")
        ended = self.finish(self.start(copy, ["-s", "-c"], env={"TEST_BUILD_COMMANDS": lines}))
        self.assertEqual((ended.status, ended.stderr), (0, b""))
        self.assertEqual(report_text.blocks(ended.stdout)[0][1], b"stdout:\nremoved\n\n")

    def test_the_working_directory_is_removed_while_it_runs(self):
        """The output file has no place any more, which is said."""
        inner = self.work / "inner"
        inner.mkdir()
        ended = self.run_test_build(["-s", "-c", "-o=F"], ["rmdir ../inner; echo removed"], cwd=inner)
        self.assertEqual(ended.status, 0)
        self.assertEqual(ended.messages, ["could not save diagnostic_results.txt"])
        self.assertEqual(report_text.blocks(ended.stdout)[0][1], b"stdout:\nremoved\n\n")


class FifoTest(HostileCommandTest):
    def test_a_fifo_without_a_writer_is_waited_for(self):
        os.mkfifo(self.work / "fifo")
        process = self.start_test_build(["-s", "-c"], ["cat fifo", "echo beside"])
        writer = polling.open_for_writing(self.work / "fifo", process)
        polling.wait_until_idle(process.pid)
        self.assertIsNone(process.poll())
        os.write(writer, b"at last\n")
        os.close(writer)
        ended = self.finish(process)
        self.assertEqual(ended.status, 0)
        contents = [content for _, content in report_text.blocks(ended.stdout)]
        self.assertEqual(contents[:2], [b"stdout:\nat last\n\n", b"stdout:\nbeside\n\n"])


isolation.run_tests()
