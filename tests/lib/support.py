# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the whole-program tests share: isolation from the machine, runs of the program, and the form of what it writes.

Every test file runs inside a network and a mount namespace of its own, with the loopback interface as the only way
to anywhere: no packet leaves the machine whatever a test does, ports cannot clash with other jobs, and a test may put
other files in the place of the machine's own. Where a machine forbids such namespaces, the files that cannot do
without are skipped whole, and of the others the single tests that need one.
"""

import fcntl
import os
import pathlib
import re
import resource
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest

import endpoints
import plan
from project import ROOT

GUARD_SECONDS = 300  # ends a run that hangs, on a machine with much else to do; no test waits for it otherwise
SKIPPED = 77  # the status by which a test file says that it was skipped whole

PLAN_LENGTH = 52  # commands of a run without a domain and without the Skivra section
SEPARATOR = b"-" * 45

# A prefix for the program: permissions bind it, whoever runs the tests.
UNPRIVILEGED = ["setpriv", "--bounding-set=-all", "--inh-caps=-all", "--"]

PLATFORM = os.environ.get("HALVIK_PLATFORM", "linux")  # what the program was built for
TOOL_SCRIPTS = ROOT / "platform/linux"

ISOLATED = "HALVIK_TEST_ISOLATED"  # set, in a test file's own environment, once it runs inside its namespaces


# Isolation

def run_tests(needs_namespaces=False):
    """Runs the calling test file. Call this from its last line."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    for path in (program(), stand_in()):
        if not os.access(path, os.X_OK):
            sys.exit(f"{path} is not an executable")
    if ISOLATED in os.environ:
        raise_loopback()
        if PLATFORM == "posix":
            place_planned_tools()
    else:
        prefix = namespace_prefix()
        if prefix:
            os.environ[ISOLATED] = "1"
            os.execvp(prefix[0], prefix + [sys.executable, *sys.orig_argv[1:]])
        if needs_namespaces:
            skip_file("this machine permits no network and mount namespaces")
    unittest.main(module="__main__")


def namespace_prefix():
    """The command that starts another one inside new namespaces, or None where the machine forbids them."""
    own = ["unshare", "--net", "--mount", "--propagation", "private"]
    as_user = ["unshare", "--user", "--map-root-user", *own[1:]]
    for prefix in [own, as_user] if os.geteuid() == 0 else [as_user]:
        attempt = prefix + ["mount", "-t", "tmpfs", "none", tempfile.gettempdir()]
        try:
            if subprocess.run(attempt, capture_output=True).returncode == 0:
                return prefix
        except FileNotFoundError:
            return None
    return None


needs_namespaces = unittest.skipUnless(ISOLATED in os.environ, "this machine permits no network and mount namespaces")


def skip_file(reason):
    print(f"SKIPPED: {reason}", flush=True)
    sys.exit(SKIPPED)


def require_tools(*names):
    """Skips the calling test file where one of these is not installed."""
    os.environ["PATH"] += ":/usr/sbin:/sbin"
    missing = [name for name in names if not shutil.which(name)]
    if missing:
        skip_file(f"not installed: {', '.join(missing)}")


def place_planned_tools():
    """Puts the tools where the plan names them, for a program that does not know where Linux keeps them.

    The machine's folder itself is seen below a mount that ends with this test file: nobody ever removes it.
    """
    mount("-t", "tmpfs", "none", "/mnt")
    planned = pathlib.Path("/mnt")
    machines = planned / ".machines"
    machines.mkdir()
    mount("--bind", "/usr/sbin", machines)
    for name in ("scutil", "system_profiler"):
        shutil.copy(TOOL_SCRIPTS / name, planned)
    for name in ("ping", "netstat", "traceroute"):
        (planned / name).symlink_to(f"/usr/bin/{name}")
    for name in os.listdir(machines):
        if not (planned / name).exists():
            (planned / name).symlink_to(f".machines/{name}")
    mount("--move", planned, "/usr/sbin")


def raise_loopback():
    set_flags, up_and_running = 0x8914, 0x41
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        fcntl.ioctl(any_socket, set_flags, struct.pack("16sh22x", b"lo", up_and_running))


def mount(*arguments):
    # Without a word in the system's table of mounts, which is not this user's to write.
    subprocess.run(["mount", "--no-mtab", *map(str, arguments)], check=True)


def cover(path, with_path):
    """Puts another file or folder in the place of one of the machine's, for this test file only."""
    if not os.path.exists(path):
        # A bare system may lack the file, /etc/hosts for one; an empty one means the same.
        open(path, "w", encoding="utf-8").close()
    mount("--bind", with_path, path)


def uncover(path):
    subprocess.run(["umount", "--no-mtab", "--lazy", str(path)], check=True)


# The program

def program():
    """The program itself, with its real plan and its real submission endpoint: run it inside a namespace only."""
    return os.path.abspath(os.environ["HALVIK_DIAGNOSTIC"])


def stand_in():
    """The same program with a plan and a submission endpoint that the test chooses."""
    return os.path.abspath(os.environ["HALVIK_STAND_IN"])


def is_sanitized():
    """Whether the program was built with sanitizers, which take memory, system calls and descriptors of their own."""
    return b"__asan_init" in pathlib.Path(stand_in()).read_bytes()


def is_counting_branches():
    """Whether the program was built for scripts/coverage. It then writes its counts where it was built."""
    return b"__gcov_dump" in pathlib.Path(stand_in()).read_bytes()


class Ended:
    """What a run of the program left: its status and both of its streams."""

    def __init__(self, path, pid, status, stdout, stderr):
        self.name = os.path.basename(path)
        self.pid = pid
        self.status = status
        self.stdout = stdout
        self.stderr = stderr

    @property
    def messages(self):
        """The messages of the log lines on standard error, without a closing line feed; fails on any other output."""
        stamp = rb"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} " + re.escape(f"{self.name}[{self.pid}] ".encode())
        pieces = re.split(rb"^" + stamp, self.stderr, flags=re.MULTILINE)
        if pieces[0]:
            raise AssertionError(f"not a log line on standard error: {self.stderr!r}")
        for piece in pieces[1:]:
            if not piece.endswith(b"\n"):
                raise AssertionError(f"a log line without its end: {self.stderr!r}")
        return [piece[:-1].decode() for piece in pieces[1:]]


class ProgramTest(unittest.TestCase):
    """A test with a folder and a home of its own, in which it runs the program."""

    maxDiff = 2000

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.home = self.folder / "home"
        self.home.mkdir()
        self.work = self.folder / "work"
        self.work.mkdir()
        self.desktop_file = self.home / "Desktop" / "diagnostic_results.txt"

    def environment(self, changes=None):
        """The few variables that a run needs, so that the settings of whoever runs the tests do not count."""
        kept = ["PATH", "TMPDIR", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"]
        variables = {name: os.environ[name] for name in kept if name in os.environ}
        variables.update(HOME=str(self.home), LC_ALL="C.UTF-8", QT_QPA_PLATFORM="none")
        for name, value in (changes or {}).items():
            if value is None:
                variables.pop(name, None)
            else:
                variables[name] = str(value)
        return variables

    def start(self, path, options, env=None, prefix=(), stdin=subprocess.DEVNULL, **others):
        """Starts the program, behind another command that must end by becoming it."""
        others.setdefault("stdout", subprocess.PIPE)
        others.setdefault("stderr", subprocess.PIPE)
        others.setdefault("cwd", self.work)
        process = subprocess.Popen([*prefix, path, *options], env=self.environment(env), stdin=stdin, **others)
        process.path = path
        self.addCleanup(self.end, process)
        return process

    def finish(self, process, stdin=None):
        try:
            stdout, stderr = process.communicate(stdin, timeout=GUARD_SECONDS)
        except subprocess.TimeoutExpired:
            process.kill()
            stdout, stderr = process.communicate()
            self.fail(f"the program did not end; standard output {stdout[:500]!r}, standard error {stderr[:500]!r}")
        return Ended(process.path, process.pid, process.returncode, stdout, stderr)

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.communicate()

    def run_program(self, options, **others):
        return self.finish(self.start(program(), options, **others))

    def start_stand_in(self, options, commands=(), submit="http://127.0.0.1:1/diagnosticsubmit", env=None, **others):
        """Starts the stand-in with a shell command line for each of the plan's first commands."""
        lines = self.folder / "commands"
        lines.write_bytes(b"".join(as_bytes(command) + b"\n" for command in commands))
        env = {"STAND_IN_COMMANDS": lines, "STAND_IN_SUBMIT_URL": submit, **(env or {})}
        return self.start(stand_in(), options, env=env, **others)

    def run_stand_in(self, options, commands=(), stdin_bytes=None, **others):
        if stdin_bytes is not None:
            others["stdin"] = subprocess.PIPE
        return self.finish(self.start_stand_in(options, commands, **others), stdin_bytes)

    def assert_submission_failed(self, ended, report, stdout=b""):
        """The run lost its upload, said so, and kept the whole report on the Desktop."""
        self.assertEqual(ended.stdout, stdout)
        self.assertIn("could not send log, saved to Desktop", ended.messages)
        self.assertEqual(ended.status, 1)
        self.assert_same_text(self.desktop_file.read_bytes(), report)

    def assert_same_text(self, actual, expected):
        """Compares long texts, showing the first difference only."""
        if actual == expected:
            return
        at = next((i for i, (a, b) in enumerate(zip(actual, expected)) if a != b), min(len(actual), len(expected)))
        window = slice(max(0, at - 40), at + 80)
        self.fail(f"{len(actual)} bytes instead of {len(expected)}, differing at {at}: "
                  f"{actual[window]!r} instead of {expected[window]!r}")

    def assert_only_files(self, folder, names):
        self.assertEqual(sorted(os.listdir(folder)), sorted(names))


# The report

def as_bytes(text):
    return text if isinstance(text, bytes) else text.encode()


def block(name, stdout=b"", stderr=b""):
    """One command's part of the report."""
    text = SEPARATOR + b"Results for: " + as_bytes(name) + b"\n"
    for label, output in ((b"stdout:\n", stdout), (b"stderr:\n", stderr)):
        if output:
            text += label + as_bytes(output) + b"\n"
    return text


def report(outputs=()):
    """The report of a run of the stand-in.

    outputs holds, for each of the first commands, its line and what it prints: (line, stdout) or (line, stdout,
    stderr).
    The stand-in runs other commands than the plan, but under the plan's comments.
    """
    comments = plan.comments(endpoints.roles())
    outputs = list(outputs) + [(":",)] * (PLAN_LENGTH - len(outputs))
    return b"".join(block(b"/bin/sh -c " + as_bytes(line) + as_bytes(comment), *printed)
                    for (line, *printed), comment in zip(outputs, comments, strict=True))


def blocks(text):
    """The display names and the contents of a report's blocks, in order."""
    head, *rest = re.split(rb"^" + SEPARATOR + rb"Results for: ", text, flags=re.MULTILINE)
    if head:
        raise AssertionError(f"the report begins with {head[:200]!r}")
    return [tuple(part.partition(b"\n")[::2]) for part in rest]


# Waiting

def open_for_writing(fifo, process):
    """The writing end of a FIFO, once a command of the program has opened the other one."""
    ends = []

    def is_open():
        try:
            ends.append(os.open(fifo, os.O_WRONLY | os.O_NONBLOCK))
        except OSError:
            return False
        return True

    wait_until(is_open, f"{fifo} has a reader", process)
    return ends[0]


def thread_states(pid):
    states = {}
    for thread in os.listdir(f"/proc/{pid}/task"):
        try:
            text = pathlib.Path(f"/proc/{pid}/task/{thread}/status").read_text()
        except FileNotFoundError:
            continue  # it has just ended
        states[thread] = re.findall(r"^(?:State|\w*ctxt_switches):\s+(\w+)", text, re.MULTILINE)
    if states[str(pid)][0] == "Z":
        raise AssertionError("the program has ended")
    return states


def wait_until(condition, what, process=None):
    """Waits for something, which only this process, if there is one, can bring about: in vain once that has ended."""
    deadline = time.monotonic() + GUARD_SECONDS
    while True:
        has_ended = process and process.poll() is not None  # what it has done can be seen by now
        if condition():
            return
        if has_ended:
            raise AssertionError(f"the program has ended with {process.returncode} before {what}")
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain until {what}")
        time.sleep(0.005)


def wait_until_idle(pid):
    """Waits until nothing is left to do for a process: all of its threads sleep, and none has run between two looks."""
    looks = [None]

    def idle():
        looks.append(thread_states(pid))
        return looks[-1] == looks[-2] and all(state[0] == "S" for state in looks[-1].values())

    wait_until(idle, "the program is idle")
