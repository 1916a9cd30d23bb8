# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A lab's life: it comes, goes and leaves nothing behind, however it ends, and two labs do not meet."""

import contextlib
import os
import pathlib
import re
import select
import signal
import tempfile
import time
import unittest

import labs
import polling

# Where a lab, or one of its servers, could leave something.
PLACES = ["/run", "/etc", "/var/lib/knot", "/var/lib/nginx", "/var/lib/unbound", "/var/log", "/", labs.FOLDER,
          tempfile.gettempdir()]


def processes():
    return {name for name in os.listdir("/proc") if name.isdigit()}


def what_there_is():
    """Everything that a lab has while it is up."""
    unix_sockets = pathlib.Path("/proc/net/unix").read_text()
    return {
        "processes": processes(),
        "mounts": pathlib.Path("/proc/self/mountinfo").read_text(),
        "network devices": sorted(os.listdir("/sys/class/net")),
        "sockets": re.findall(r"@halvik.*", unix_sockets),
        "files": [sorted(os.listdir(place)) for place in PLACES if os.path.isdir(place)],
    }


def find(program, *words):
    """The numbers, in order, of the processes of a program whose arguments contain these words."""
    found = []
    for number in sorted(map(int, processes())):
        try:
            first, *others = pathlib.Path(f"/proc/{number}/cmdline").read_text().split("\0")
        except OSError:
            continue  # it has just ended
        if os.path.basename(first) == program and all(any(word in other for other in others) for word in words):
            found.append(number)
    return found


def end_leftovers(before):
    """Kills what a test that failed has left running, lest the next ones find it, and wait for it."""
    while left := processes() - before:
        for number in left:
            with contextlib.suppress(ProcessLookupError):
                os.kill(int(number), signal.SIGKILL)
        with contextlib.suppress(ChildProcessError):
            os.waitpid(-1, os.WNOHANG)  # those that nobody has waited for
        time.sleep(0.01)


def kill(number):
    """Kills a process, and waits until it has closed all that it held, such as the tunnels of the lab's lines."""
    descriptor = os.pidfd_open(number)
    os.kill(number, signal.SIGKILL)
    select.select([descriptor], [], [], labs.GUARD_SECONDS)
    os.close(descriptor)


class LabTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.before = what_there_is()
        self.addCleanup(end_leftovers, self.before["processes"])

    def assert_nothing_left(self):
        polling.wait_until(lambda: processes() == self.before["processes"], "all processes of the lab have ended")
        self.assertEqual(what_there_is(), self.before)

    def assert_ran(self, *words, stdout="", **others):
        ended = labs.run(*words, **others)
        self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, stdout, ""), words)

    def assert_refused(self, status, message, *words, **others):
        ended = labs.run(*words, **others)
        self.assertEqual((ended.returncode, ended.stdout), (status, ""))
        self.assertRegex(ended.stderr, f"^lab: {message}")


class LifeTest(LabTest):
    def test_twice_in_a_row(self):
        for _ in range(2):
            self.assert_ran("up")
            self.assertNotEqual(processes(), self.before["processes"])
            self.assert_ran("shell", "dig", "+short", "www.halvik.example", stdout="203.0.113.10\n")
            self.assert_ran("down")
            self.assertEqual(what_there_is(), self.before)

    def test_a_command_without_a_lab_has_one_of_its_own(self):
        self.assert_ran("shell", "dig", "+short", "www.halvik.example", stdout="203.0.113.10\n")
        self.assertEqual(what_there_is(), self.before)

    def test_the_status_of_a_command(self):
        self.assert_ran("up")
        self.assertEqual(labs.run("shell", "sh", "-c", "exit 3").returncode, 3)
        self.assertEqual(labs.run("shell", "sh", "-c", "kill -9 $$").returncode, 128 + signal.SIGKILL)
        self.assert_ran("down")

    def test_the_working_directory_is_the_same_for_every_command(self):
        self.assert_ran("up")
        with tempfile.TemporaryDirectory() as folder:
            os.chmod(folder, 0o755)
            pathlib.Path(folder, "note").write_text("a note")
            for _ in range(2):
                self.assert_ran("shell", "cat", "note", stdout="a note", cwd=folder)
        self.assert_ran("shell", "touch", "the lab's own", cwd="/tmp")
        self.assert_ran("shell", "ls", "the lab's own", stdout="the lab's own\n", cwd="/tmp")
        self.assert_ran("down")

    def test_what_is_refused(self):
        self.assert_refused(2, "there is no lab named lab", "down")
        self.assert_refused(2, "there is no lab named other", "--name", "other", "weather", "clear")
        self.assert_refused(2, "there is no weather fog", "weather", "fog")
        self.assert_ran("up")
        self.assert_refused(2, "there is a lab named lab already", "up")
        self.assert_ran("down")
        self.assert_nothing_left()

    def test_only_root_has_a_lab(self):
        user = ["setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups"]
        self.assert_refused(3, "only root can make networks", "up", prefix=user)
        self.assert_nothing_left()

    def test_a_program_for_another_network_is_refused(self):
        with tempfile.NamedTemporaryFile("w", suffix=".cpp") as endpoints:
            endpoints.write('.serviceResolverA = "192.0.2.99",\n.submitUrl = "https://other.example/diagnosticsubmit"')
            endpoints.flush()
            ended = labs.run("up", env={**os.environ, "HALVIK_ENDPOINTS": endpoints.name})
        self.assertEqual(ended.returncode, 2)
        self.assertIn("the program's serviceResolverA is 192.0.2.99\n", ended.stderr)
        self.assertIn("the program's submitUrl is https://other.example/diagnosticsubmit\n", ended.stderr)


    def test_a_wrong_command_line_is_told_why(self):
        for words, reason in ((["fly"], "invalid choice: 'fly'"), (["--name"], "argument --name: expected one"),
                              (["--name", "x" * 65, "up"], "no more than 64 bytes"),
                              (["shell", "--at", "nowhere", "true"], "there is no place nowhere")):
            with self.subTest(words):
                ended = labs.run(*words)
                self.assertEqual((ended.returncode, ended.stdout), (2, ""))
                self.assertIn(reason, ended.stderr.splitlines()[-1])

    def test_what_is_not_installed_is_named(self):
        with tempfile.TemporaryDirectory() as folder:
            for path, missing in (("/usr/sbin/knotd", "knotd"), ("/usr/lib/python3/dist-packages", "werkzeug")):
                without = ["unshare", "--mount", "sh", "-e", "-c", f"""
                           if [ -d {path} ]; then mount -t tmpfs none {path}
                           else touch {folder}/file; mount --bind {folder}/file {path}; fi
                           exec "$@" """, "sh"]
                with self.subTest(missing):
                    self.assert_refused(3, f"not installed: {missing}; scripts/install_packages lab", "up",
                                        prefix=without)


class PlaceTest(LabTest):
    """Wherever a lab is started from."""

    def test_closed_standard_streams(self):
        for closing in ("<&-", ">&-", "<&- >&- 2>&-"):
            with self.subTest(closing):
                ended = labs.run("shell", "true", prefix=["sh", "-c", f'exec "$@" {closing}', "sh"])
                self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, "", ""))
        self.assert_nothing_left()

    def test_an_odd_working_directory(self):
        with tempfile.TemporaryDirectory(suffix=" \u00fc '$(id)") as folder:
            ended = labs.run("shell", "pwd", cwd=folder)
            self.assertEqual((ended.returncode, ended.stdout, ended.stderr), (0, f"{folder}\n", ""))

    def test_a_working_directory_that_is_gone(self):
        with tempfile.TemporaryDirectory() as folder:
            gone = ["sh", "-c", f'cd {folder} && mkdir gone && cd gone && rmdir ../gone && exec "$@"', "sh"]
            self.assert_refused(2, "the working directory is no longer there", "shell", "pwd", prefix=gone)

    def test_no_room_for_temporary_files(self):
        copy = "/mnt"  # the lab may itself be in the folder that is covered
        for folder in ("/tmp", tempfile.gettempdir()):
            with self.subTest(folder):
                ended = labs.run("shell", "true", prefix=["unshare", "--mount", "sh", "-e", "-c", f"""
                    mount --bind {labs.FOLDER.parent} {copy}
                    mount -t tmpfs -o ro none {folder}
                    cd /
                    unset HALVIK_ENDPOINTS
                    shift
                    exec {copy}/lab/lab "$@" """, "sh"])
                self.assertEqual((ended.returncode, ended.stderr), (0, ""))


class SideBySideTest(LabTest):
    def test_two_labs_do_not_meet(self):
        self.assert_ran("--name", "first", "up")
        self.assert_ran("--name", "second", "up")
        self.assert_ran("--name", "first", "weather", "no-default-route")
        self.assert_ran("--name", "first", "skivra", "on")
        self.assertNotEqual(labs.run("--name", "first", "shell", "ping", "-c", "1", "8.8.8.8").returncode, 0)
        self.assertEqual(labs.run("--name", "second", "shell", "ping", "-c", "1", "8.8.8.8").returncode, 0)
        self.assertNotEqual(labs.run("--name", "second", "shell", "ls", "/Library/Application Support").returncode, 0)
        self.assert_ran("--name", "first", "down")
        self.assertEqual(labs.run("--name", "second", "shell", "ping", "-c", "1", "8.8.8.8").returncode, 0)
        self.assert_ran("--name", "second", "down")
        self.assertEqual(what_there_is(), self.before)


class SuddenEndTest(LabTest):
    """Whoever is killed, and whenever: nothing stays."""

    def start_and_wait(self, *words, until):
        process = labs.start(*words)
        self.addCleanup(process.kill)
        polling.wait_until(lambda: find(until), f"{until} runs", process)
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
        polling.wait_until(lambda: find("sleep"), "the command runs", process)
        os.killpg(process.pid, signal.SIGINT)
        labs.finish(process)
        self.assertEqual(process.returncode, 128 + signal.SIGINT)
        self.assert_nothing_left()

    def test_ctrl_c_while_it_ends(self):
        self.assert_ran("up")
        number = find("knotd", "root.conf")[0]
        process = labs.start("down")
        polling.wait_until(lambda: not os.path.exists(f"/proc/{number}"), "the lab is ending", process)
        process.send_signal(signal.SIGINT)
        self.assertEqual(labs.finish(process).returncode, 0)
        self.assertEqual(what_there_is(), self.before)

    def test_a_killed_command_leaves_the_lab_alone(self):
        self.assert_ran("up")
        process = self.start_and_wait("shell", "sleep", "1h", until="sleep")
        process.kill()
        labs.finish(process)
        polling.wait_until(lambda: not find("sleep"), "the command has ended with who started it")
        self.assert_ran("shell", "dig", "+short", "www.halvik.example", stdout="203.0.113.10\n")
        self.assert_ran("down")
        self.assert_nothing_left()

    def test_one_of_the_processes_that_hold_the_lab_is_killed(self):
        for program, index in (("unshare", 0), ("python3", 0), ("python3", 1)):
            with self.subTest(program, index=index):
                self.assert_ran("up")
                os.kill(find(program, "supervisor.py")[index], signal.SIGKILL)
                self.assert_nothing_left()

    def test_a_lab_that_ends_under_a_command_says_so(self):
        process = self.start_and_wait("shell", "sleep", "1h", until="sleep")
        os.kill(find("python3", "supervisor.py")[0], signal.SIGKILL)
        ended = labs.finish(process)
        self.assertEqual(ended.returncode, 128 + signal.SIGKILL)
        self.assertEqual(ended.stderr, "lab: the lab has ended before the command did\n")
        self.assert_nothing_left()

    def test_what_ends_under_a_command_is_named(self):
        for words, missing in ((["knotd", "root.conf"], "knot root has ended, with status -9"),
                               (["python3", "line.py"], "what carries the packets has ended, with status -9")):
            with self.subTest(missing):
                process = self.start_and_wait("shell", "sleep", "1h", until="sleep")
                kill(find(*words)[0])
                os.kill(find("sleep")[0], signal.SIGTERM)
                ended = labs.finish(process)
                self.assertEqual(ended.returncode, 128 + signal.SIGTERM)
                self.assertIn(f"lab: something of the lab was missing at the end of the command: {missing}",
                              ended.stderr)
                self.assert_nothing_left()

    def test_a_server_that_ends_is_named(self):
        self.assert_ran("up")
        os.kill(find("knotd", "root.conf")[0], signal.SIGKILL)
        polling.wait_until(lambda: labs.run("weather", "clear").returncode == 2, "the lab has seen it")
        self.assert_refused(2, "knot root has ended", "weather", "clear")
        self.assert_ran("down")
        self.assert_nothing_left()


labs.run_tests()
