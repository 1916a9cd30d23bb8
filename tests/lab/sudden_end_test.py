# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Whichever process of a lab is killed, and whenever: nothing is left."""

import os
import signal

import lab_case
import labs
import polling


class SuddenEndTest(lab_case.LabTest):
    def start_and_wait(self, *words, until):
        process = labs.start(*words)
        self.addCleanup(process.kill)
        polling.wait_until(lambda: lab_case.find(until), f"{until} runs", process)
        return process

    def test_killed_while_it_starts(self):
        for sent in (signal.SIGINT, signal.SIGTERM, signal.SIGKILL):
            with self.subTest(sent.name):
                process = self.start_and_wait("up", until="knotd")
                process.send_signal(sent)
                labs.finish(process)
                self.assert_nothing_left()

    def test_killed_while_a_command_runs_in_a_lab_of_its_own(self):
        for sent in (signal.SIGINT, signal.SIGTERM, signal.SIGKILL):
            with self.subTest(sent.name):
                process = self.start_and_wait("shell", "sleep", "1h", until="sleep")
                process.send_signal(sent)
                labs.finish(process)
                self.assert_nothing_left()

    def test_ctrl_c_at_the_terminal(self):
        process = labs.start("shell", "sleep", "1h", start_new_session=True)
        self.addCleanup(process.kill)
        polling.wait_until(lambda: lab_case.find("sleep"), "the command runs", process)
        os.killpg(process.pid, signal.SIGINT)
        labs.finish(process)
        self.assertEqual(process.returncode, 128 + signal.SIGINT)
        self.assert_nothing_left()

    def test_ctrl_c_while_it_ends(self):
        self.assert_ran("up")
        number = lab_case.find("knotd", "root.conf")[0]
        process = labs.start("down")
        polling.wait_until(lambda: not os.path.exists(f"/proc/{number}"), "the lab is ending", process)
        process.send_signal(signal.SIGINT)
        self.assertEqual(labs.finish(process).returncode, 0)
        self.assertEqual(lab_case.what_there_is(), self.before)

    def test_a_killed_command_leaves_the_lab_alone(self):
        self.assert_ran("up")
        process = self.start_and_wait("shell", "sleep", "1h", until="sleep")
        process.kill()
        labs.finish(process)
        polling.wait_until(lambda: not lab_case.find("sleep"), "the command has ended with who started it")
        self.assert_ran("shell", "dig", "+short", "www.halvik.example", stdout="203.0.113.10\n")
        self.assert_ran("down")
        self.assert_nothing_left()

    def test_one_of_the_processes_that_hold_the_lab_is_killed(self):
        for program, index in (("unshare", 0), ("python3", 0), ("python3", 1)):
            with self.subTest(program, index=index):
                self.assert_ran("up")
                os.kill(lab_case.find(program, "supervisor.py")[index], signal.SIGKILL)
                self.assert_nothing_left()

    def test_a_lab_that_ends_under_a_command_says_so(self):
        process = self.start_and_wait("shell", "sleep", "1h", until="sleep")
        os.kill(lab_case.find("python3", "supervisor.py")[0], signal.SIGKILL)
        ended = labs.finish(process)
        self.assertEqual(ended.returncode, 128 + signal.SIGKILL)
        self.assertEqual(ended.stderr, "lab: the lab has ended before the command did\n")
        self.assert_nothing_left()

    def test_what_ends_under_a_command_is_named(self):
        for words, missing in ((["knotd", "root.conf"], "knot root has ended, with status -9"),
                               (["python3", "line.py"], "what carries the packets has ended, with status -9")):
            with self.subTest(missing):
                process = self.start_and_wait("shell", "sleep", "1h", until="sleep")
                lab_case.kill(lab_case.find(*words)[0])
                os.kill(lab_case.find("sleep")[0], signal.SIGTERM)
                ended = labs.finish(process)
                self.assertEqual(ended.returncode, 128 + signal.SIGTERM)
                self.assertIn(f"lab: something of the lab was missing at the end of the command: {missing}",
                              ended.stderr)
                self.assert_nothing_left()

    def test_a_server_that_ends_is_named(self):
        self.assert_ran("up")
        os.kill(lab_case.find("knotd", "root.conf")[0], signal.SIGKILL)
        polling.wait_until(lambda: labs.run("scenario", "clear").returncode == 2, "the lab has seen it")
        self.assert_refused(2, "knot root has ended", "scenario", "clear")
        self.assert_ran("down")
        self.assert_nothing_left()


labs.run_tests()
