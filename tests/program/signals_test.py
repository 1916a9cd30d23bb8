# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Signals to a run, at each of its stages: who ends, who is left, and what becomes of the report."""

import ctypes
import os
import pty
import select
import signal
import socket
import subprocess
import unittest

import builds
import http_server
import isolation
import polling
import program_tests
import report_text

ALL = report_text.PLAN_LENGTH
ENDING = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP]
WAIT = "echo >>started; exec cat"  # until standard input ends
LARGE_BYTES = 100_000_000
libc = ctypes.CDLL(None)
IGNORING = ["sh", "-c", "trap '' HUP INT QUIT; exec \"$@\"", "sh"]


def children(pid):
    """Those that have not ended."""
    listed = subprocess.run(["ps", "-o", "pid=,stat=", "--ppid", str(pid)], capture_output=True, text=True).stdout
    return [int(child) for child, state in map(str.split, listed.splitlines()) if not state.startswith("Z")]


class SignalTest(program_tests.ProgramTest):
    """The program's standard input is a pipe, which everyone whom it starts inherits and holds until the end."""

    def setUp(self):
        super().setUp()
        self.renew_input()

    def renew_input(self):
        reader, self.input = os.pipe()
        self.reader = os.fdopen(reader)
        self.addCleanup(self.reader.close)
        self.addCleanup(self.close_input)

    def close_input(self):
        """Ends what waits for its standard input to end."""
        if self.input is not None:
            os.close(self.input)
            self.input = None

    process = None  # the program, where it is a child of the test's own

    def start_run(self, options, commands, **others):
        (self.work / "started").unlink(missing_ok=True)
        self.process = self.start_test_build(options, commands, stdin=self.reader, process_group=0, **others)
        return self.process

    def wait_for_commands(self, count):
        started = self.work / "started"
        polling.wait_until(lambda: started.exists() and started.stat().st_size >= count, f"{count} commands run",
                           self.process)

    def assert_nobody_is_left(self):
        self.reader.close()
        poll = select.poll()
        poll.register(self.input, 0)
        events = poll.poll(polling.GUARD_SECONDS * 1000)
        self.assertTrue(events and events[0][1] & select.POLLERR, "somebody still holds the standard input")

    def assert_ended_by(self, process, number, stdout=b""):
        ended = self.finish(process)
        self.assertEqual((ended.status, ended.stdout, ended.stderr), (-number, stdout, b""))
        self.assert_only_files(self.home, [])


class EndTest(SignalTest):
    """The program ends by the signal, so that whoever waits for it sees which one it was. Its commands end as well."""

    def test_while_commands_run(self):
        for number in ENDING:
            for count in (0, 1, ALL):
                with self.subTest(number.name, commands=count):
                    self.renew_input()
                    process = self.start_run(["-s", "-c", "-i", "-o=F"], [WAIT] * ALL)
                    if count:
                        self.wait_for_commands(count)
                    process.send_signal(number)
                    self.assert_ended_by(process, number)
                    self.assert_nobody_is_left()
                    self.assertFalse((self.work / "F").exists())

    @unittest.skipUnless(builds.PLATFORM == "linux", "only Linux signals the end of a parent to its children")
    def test_an_end_without_a_warning(self):
        process = self.start_run(["-s", "-o=F"], [WAIT] * ALL)
        self.wait_for_commands(ALL)
        process.kill()
        self.assert_ended_by(process, signal.SIGKILL)
        self.assert_nobody_is_left()
        self.assert_only_files(self.work, ["started"])

    def test_a_command_that_is_stopped(self):
        process = self.start_run(["-s", "-c"], ["echo >>started; kill -STOP $$; exec cat"])
        self.wait_for_commands(1)
        process.terminate()
        self.assert_ended_by(process, signal.SIGTERM)
        self.assert_nobody_is_left()

    def test_a_command_in_a_session_of_its_own(self):
        process = self.start_run(["-s", "-c"], [f"exec setsid sh -c '{WAIT}'", f"exec setsid --wait sh -c '{WAIT}'"])
        self.wait_for_commands(2)
        process.terminate()
        self.assert_ended_by(process, signal.SIGTERM)
        self.assert_nobody_is_left()

    def test_while_the_program_waits_for_a_descendant(self):
        """The command has ended, and what it left behind keeps its output open."""
        process = self.start_run(["-s", "-c"], ["exec 3<&0; cat <&3 2>/dev/null & echo >>started"])
        self.wait_for_commands(1)
        polling.wait_until_idle(process.pid)
        process.terminate()
        self.assertEqual(process.wait(polling.GUARD_SECONDS), -signal.SIGTERM)
        self.close_input()

    def test_while_nobody_reads_the_report(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        process = self.start_run(["-s", "-c", "-o=F"], ["seq 100000"], stdout=writer)
        os.close(writer)
        os.read(reader, 1)
        polling.wait_until_idle(process.pid)
        process.terminate()
        self.assert_ended_by(process, signal.SIGTERM, None)
        self.assert_nobody_is_left()
        self.assert_only_files(self.work, [])

    def test_while_the_report_is_uploaded(self):
        for number in ENDING:
            with self.subTest(number.name):
                self.renew_input()
                gone = []

                def wait(exchange):
                    exchange.wait_until_closed_by_client()
                    gone.append(exchange)

                server = http_server.Server(wait)
                process = self.start_run(["-s"], ["echo one"], submit=server.url())
                polling.wait_until(lambda: server.requests, "the report has been received", process)
                process.send_signal(number)
                self.assert_ended_by(process, number)
                self.assert_nobody_is_left()
                polling.wait_until(lambda: gone, "the connection is closed")
                server.close()

    @isolation.needs_namespaces
    def test_while_the_name_of_the_server_is_looked_up(self):
        """That is done by a thread of Qt's, which the system may choose to hand the signal to."""
        self.look_up_names_at_port_53()
        for number in ENDING:
            with self.subTest(number.name), socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as mute:
                self.renew_input()
                mute.bind(("127.0.0.1", 53))
                mute.settimeout(polling.GUARD_SECONDS)
                process = self.start_run(["-s"], ["echo one"], submit="http://server.halvik.example/diagnosticsubmit")
                mute.recv(512)
                others = polling.thread_states(process.pid).keys() - {str(process.pid)}
                self.assertTrue(others, "the name is looked up by the only thread")
                libc.tgkill(process.pid, int(others.pop()), number)
                self.assert_ended_by(process, number)
                self.assert_nobody_is_left()

    def look_up_names_at_port_53(self):
        """Of this namespace, and not by a service of the machine."""
        if os.path.exists("/run/nscd/socket"):
            self.skipTest("this machine looks up names by a service")
        settings = {"/etc/resolv.conf": "nameserver 127.0.0.1\n", "/etc/nsswitch.conf": "hosts: files dns\n"}
        for path, text in settings.items():
            own = self.folder / os.path.basename(path)
            own.write_text(text)
            isolation.cover(path, own)
            self.addCleanup(isolation.uncover, path)

    def test_while_the_output_file_is_written(self):
        """The old file stays, and the new one that was being filled beside it goes."""
        for number in ENDING:
            with self.subTest(number.name):
                process = self.stop_in_the_middle_of_writing()
                process.send_signal(number)
                process.send_signal(signal.SIGCONT)
                self.assert_ended_by(process, number)
                self.assert_only_files(self.work, ["F"])
                self.assertEqual((self.work / "F").read_text(), "old")

    def stop_in_the_middle_of_writing(self):
        """A run that is stopped while the file beside the output file is there. It may have been too fast for that."""
        for _ in range(20):
            (self.work / "F").write_text("old")
            process = self.start_run(["-s", "-o=F"], [f"head -c {LARGE_BYTES} /dev/zero"])
            while process.poll() is None:
                if len(os.listdir(self.work)) > 1:
                    process.send_signal(signal.SIGSTOP)
                    os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
                    break
            if len(os.listdir(self.work)) > 1:
                return process
            process.send_signal(signal.SIGCONT)
            self.finish(process)
        self.skipTest("the file was always written before anybody could look")


class ShellTest(SignalTest):
    def test_status(self):
        for number in ENDING:
            with self.subTest(number.name):
                self.renew_input()
                prefix = ["sh", "-c", '"$@"; echo $?', "sh"]
                process = self.start_run(["-s", "-o=F"], [WAIT] * ALL, prefix=prefix)
                self.wait_for_commands(ALL)
                os.kill(children(process.pid)[0], number)
                self.assertEqual(self.finish(process).stdout, b"%d\n" % (128 + number))
                self.assert_nobody_is_left()

    def test_a_terminals_interrupt_key(self):
        """The shell script in which the program runs ends as well, since it sees that the program was interrupted."""
        path = self.folder / "script"
        path.write_text('"$@"\necho not reached\n')
        lines = self.folder / "commands"
        lines.write_text("echo >>started; exec sleep 1000\n" * ALL)
        program = builds.test_build()
        pid, terminal = pty.fork()
        if pid == 0:
            os.chdir(self.work)
            os.execve("/bin/sh", ["sh", str(path), program, "-s", "-c"], self.environment({"STAND_IN_COMMANDS": lines}))
        self.wait_for_commands(ALL)
        os.write(terminal, b"\x03")
        shown = b""
        try:
            while piece := os.read(terminal, 1000):  # until the last of them has closed the terminal
                shown += piece
        except OSError:
            pass
        os.close(terminal)
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), -signal.SIGINT)
        self.assertEqual(shown, b"^C")


class IgnoredTest(SignalTest):
    """Who starts the program so that it ignores a signal of the terminal wants the run to go on without one."""

    def test_the_run_outlives_its_terminal(self):
        process = self.start_run(["-s", "-o=F"], [WAIT] * ALL, prefix=IGNORING)
        self.wait_for_commands(ALL)
        for number in (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):
            os.killpg(process.pid, number)
        os.write(self.input, b"on\n")
        self.close_input()
        ended = self.finish(process)
        self.assertEqual((ended.status, ended.stdout, ended.stderr), (0, b"outputFile=F\n", b""))
        self.assertEqual((self.work / "F").read_bytes().count(b"on\n"), 1)

    def test_it_still_ends_when_asked_to(self):
        process = self.start_run(["-s", "-o=F"], [WAIT] * ALL, prefix=IGNORING)
        self.wait_for_commands(ALL)
        process.terminate()
        self.assert_ended_by(process, signal.SIGTERM)
        self.assert_nobody_is_left()


class SuspendTest(SignalTest):
    OUTPUTS = [("echo >>started; cat; echo after", "typed\nafter\n"),
               ("echo >>started; until test -e continued; do sleep 0.01; done; seq 1000",
                "".join(f"{number}\n" for number in range(1, 1001)))]

    def suspend(self, number, whole_group):
        process = self.start_run(["-s", "-c"], [line for line, _ in self.OUTPUTS])
        self.wait_for_commands(2)
        polling.wait_until(lambda: len(children(process.pid)) == 2, "no command is being started any more",
                           process)
        polling.wait_until_idle(process.pid)
        send = os.killpg if whole_group else os.kill
        send(process.pid, number)
        os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WNOWAIT)
        return process, send

    def test_a_run_that_is_suspended_and_continued(self):
        for number in (signal.SIGSTOP, signal.SIGTSTP):
            for whole_group in (True, False):
                with self.subTest(number.name, whole_group=whole_group):
                    self.renew_input()
                    (self.work / "continued").unlink(missing_ok=True)
                    process, send = self.suspend(number, whole_group)
                    os.write(self.input, b"typed\n")
                    self.close_input()
                    (self.work / "continued").touch()
                    if not whole_group:
                        # The commands end while the program is stopped.
                        polling.wait_until(lambda: not children(process.pid), "all commands have ended")
                    send(process.pid, signal.SIGCONT)
                    ended = self.finish(process)
                    self.assertEqual((ended.status, ended.stderr), (0, b""))
                    self.assert_same_text(ended.stdout, report_text.report(self.OUTPUTS) + b"\n")

    def test_a_command_that_stops_itself_is_waited_for(self):
        process = self.start_run(["-s", "-c"], ["echo $$ >pid; echo before; kill -STOP $$; echo after"])
        number = self.work / "pid"
        polling.wait_until(lambda: number.exists() and number.stat().st_size, "the command runs", process)
        pid = int(number.read_text())
        polling.wait_until(lambda: polling.thread_states(pid)[str(pid)][0] == "T", "the command is stopped")
        polling.wait_until_idle(process.pid)
        self.assertIsNone(process.poll())
        os.kill(pid, signal.SIGCONT)
        ended = self.finish(process)
        self.assertEqual(ended.status, 0)
        self.assertEqual(report_text.blocks(ended.stdout)[0][1], b"stdout:\nbefore\nafter\n\n")

    def test_a_reply_that_came_during_a_suspension_counts(self):
        """It arrived in time; that nobody looked for longer than an upload may stand still is not the line's fault."""
        url = b"http://results.halvik.example/1"
        replied = []

        def reply_to_a_sleeper(exchange):
            process.send_signal(signal.SIGSTOP)
            os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WNOWAIT)
            http_server.reply(url)(exchange)
            replied.append(exchange)

        server = http_server.Server(reply_to_a_sleeper)
        process = self.start_run(["-s"], ["echo one"], submit=server.url(), env={"STAND_IN_STALL_MS": 3000})
        polling.wait_until(lambda: replied, "the server has replied", process)
        with self.assertRaises(subprocess.TimeoutExpired):
            process.wait(4)  # longer than the limit
        process.send_signal(signal.SIGCONT)
        ended = self.finish(process)
        server.close()
        self.assertEqual((ended.status, ended.stdout, ended.stderr), (0, b"url=" + url + b"\n", b""))


class GroupTest(SignalTest):
    def test_a_command_that_ends_its_whole_group(self):
        """The program is one of them: it ends by the signal like the others, and nothing passes for a report."""
        last = f"until test $(wc -c <started) = {ALL - 1}; do :; done; kill -TERM 0"
        process = self.start_run(["-s", "-c", "-o=F"], [WAIT] * (ALL - 1) + [last])
        self.assert_ended_by(process, signal.SIGTERM)
        self.assert_nobody_is_left()
        self.assertFalse((self.work / "F").exists())


isolation.run_tests()
