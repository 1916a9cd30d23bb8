# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Signals that stop and continue a run or its commands, and one that goes to all of them."""

import os
import signal
import subprocess

import http_server
import isolation
import polling
import report_text
from signal_runs import ALL, WAIT, SignalTest, children


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
        """It arrived in time; that nobody looked for longer than the stall limit is not the network's fault."""
        url = b"http://results.halvik.example/1"
        replied = []

        def reply_to_a_sleeper(exchange):
            process.send_signal(signal.SIGSTOP)
            os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WNOWAIT)
            http_server.reply(url)(exchange)
            replied.append(exchange)

        server = http_server.Server(reply_to_a_sleeper)
        process = self.start_run(["-s"], ["echo one"], submit=server.url(), env={"TEST_BUILD_STALL_MS": 3000})
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
