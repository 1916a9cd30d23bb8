# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Signals to a run, at each of its stages: who ends, who is left, and what becomes of the report."""

import os
import pty
import signal
import socket
import unittest

import builds
import http_server
import isolation
import polling
from signal_runs import ALL, ENDING, IGNORING, LARGE_BYTES, WAIT, SignalTest, children, libc


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

    @isolation.needs_namespaces
    def test_the_first_process_of_a_container(self):
        """No signal ends that by its default action."""
        for number in ENDING:
            with self.subTest(number.name):
                self.renew_input()
                prefix = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]
                process = self.start_run(["-s", "-c", "-o=F"], [WAIT] * ALL, prefix=prefix)
                self.wait_for_commands(ALL)
                program, = children(process.pid)
                os.kill(program, number)
                ended = self.finish(process)
                self.assertEqual((ended.status, ended.stdout, ended.stderr), (128 + number, b"", b""))
                self.assert_nobody_is_left()
                self.assert_only_files(self.work, ["started"])

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
        """A thread of libcurl does that, and the system may deliver the signal to it."""
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
            os.execve("/bin/sh", ["sh", str(path), program, "-s", "-c"], self.environment({"TEST_BUILD_COMMANDS": lines}))
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


isolation.run_tests()
