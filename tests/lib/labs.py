# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the tests in the lab share.

Every test file runs in network, mount and process namespaces of its own: it sees only the labs that it starts, and what
they leave behind.
"""

import concurrent.futures
import dataclasses
import io
import os
import pathlib
import re
import subprocess
import sys
import tarfile
import tempfile
import time
import traceback
import unittest

import builds
import program_tests
import reaper
import scenarios
from project import ROOT

FOLDER = ROOT / "lab"
LAB = FOLDER / "lab"
DOMAIN = "shop.example"  # the one that some scenarios are about
SKIPPED = 77  # the status by which a test file says that it was skipped whole
UNABLE = 3  # the lab's, where a machine permits none
GUARD_SECONDS = 300  # after which a run that hangs is ended
CHECK_ATTEMPTS = 3  # of a result that load can change
LEAVE_SECONDS = 30  # within which all of a lab that could not be started, or a run in it, has gone

ISOLATED = "HALVIK_LAB_TEST_ISOLATED"  # set, in a test file's own environment, once it runs inside its namespaces
ISOLATE = ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc"]


def run_tests():
    """Runs the calling test file. Call this from its last line."""
    if ISOLATED in os.environ:
        reaper.run_below(run_isolated)
    elif os.geteuid() != 0:
        skip_file("only root can make the networks of a lab")
    elif not permits_namespaces():
        skip_file("this machine permits no namespaces")
    with tempfile.TemporaryDirectory(prefix="halvik-") as folder:
        environment = {**os.environ, ISOLATED: "1", "TMPDIR": folder}
        sys.exit(subprocess.run([*ISOLATE, sys.executable, *sys.orig_argv[1:]], env=environment).returncode)


def permits_namespaces():
    try:
        return subprocess.run([*ISOLATE, "true"], capture_output=True).returncode == 0
    except FileNotFoundError:
        return False


def run_isolated():
    attempt = run("shell", "true")
    if attempt.returncode == UNABLE:
        skip_file(attempt.stderr.strip())
    unittest.main(module="__main__")


def skip_file(reason):
    print(f"SKIPPED: {reason}", flush=True)
    sys.exit(SKIPPED)


def start(*words, prefix=(), text=True, **others):
    """Starts lab/lab with these words."""
    others.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.Popen([*prefix, LAB, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=text, **others)


def run(*words, **others):
    """Runs lab/lab with these words to its end. Its streams are text, unless text is False."""
    return finish(start(*words, **others))


def finish(process):
    """Waits until a started lab/lab has ended, and all who could write to its streams. After an error, not for long."""
    deadline = time.monotonic() + GUARD_SECONDS
    try:
        while True:
            try:
                stdout, stderr = process.communicate(timeout=1)
                break
            except subprocess.TimeoutExpired:
                if process.poll():
                    deadline = min(deadline, time.monotonic() + LEAVE_SECONDS)
                if time.monotonic() > deadline:
                    raise
    finally:
        process.kill()
    return subprocess.CompletedProcess(process.args, process.returncode, stdout, stderr)


class Lab:
    """A lab that is up, until the end of a with statement, and in which the program can be run."""

    def __init__(self, name, scenario="clear", skivra=False):
        self._name = name
        self._options = ["--scenario", scenario, *(["--skivra"] if skivra else [])]
        self._folder = tempfile.TemporaryDirectory(prefix="halvik-")
        # The lab's user writes here.
        self.work = pathlib.Path(self._folder.name)
        self.work.chmod(0o777)

    def __enter__(self):
        self._do(*self._options, "up")
        return self

    def __exit__(self, *_):
        self._do("down")
        self._folder.cleanup()

    def start_program(self, *options):
        return start("--name", self._name, "run", *options, cwd=self.work, text=False)

    def run_program(self, *options):
        return ended(self.start_program(*options))

    def shell(self, *words, cwd="/"):
        """What a command on the user's machine prints, in bytes."""
        return self._do("shell", *words, text=False, cwd=cwd)

    def files(self):
        """The path and the content of every file in the home folder and among the temporary files."""
        archive = io.BytesIO(self.shell("--root", "tar", "--create", "--absolute-names", "--exclude", self.work,
                                        "/lab/visitor", "/tmp"))
        with tarfile.open(fileobj=archive) as tar:
            return {member.name: tar.extractfile(member).read() for member in tar if member.isfile()}

    def uploads(self):
        """What the receiver got, in order."""
        folder = pathlib.Path(self._do("uploads").strip())
        count = len(os.listdir(folder))
        return [Upload(*((folder / str(number) / part).read_bytes() for part in ("head", "body", "report")))
                for number in range(1, count + 1)]

    def _do(self, *words, **others):
        process = run("--name", self._name, *words, **others)
        if process.returncode != 0 or process.stderr:
            raise AssertionError(f"lab/lab {words} ended with {process.returncode}: {process.stderr}")
        return process.stdout


def needed_options(scenario):
    """The options of a run that shows a scenario, and whether the Skivra has to be installed for it."""
    needs = scenarios.named(scenario).needs
    return ([f"-d={DOMAIN}"] if scenarios.DOMAIN in needs else []), scenarios.SKIVRA in needs


class SideBySide:
    """Functions that go on at the same time, since most of what labs do is waiting. Call this from setUpModule."""

    def __init__(self, functions, at_once=6):
        """The functions by name, in the order in which they begin. Starting a lab is work, so that not all do so at
        once."""
        self._executor = concurrent.futures.ThreadPoolExecutor(at_once)
        unittest.addModuleCleanup(self._executor.shutdown, cancel_futures=True)
        self._functions = functions
        self._futures = {name: self._executor.submit(function) for name, function in functions.items()}

    def __getitem__(self, name):
        """Waits for a function's result. Raises AssertionError if the function raised anything."""
        failure = self._futures[name].exception()
        if failure:
            raise AssertionError("".join(traceback.format_exception(failure)))
        return self._futures[name].result()

    def check(self, name, check):
        """Calls check with a function's result. If that fails, the function is called again with nothing beside it, and
        then its new result counts: on a busy machine, packets come as late as in a bad network."""
        for _ in range(CHECK_ATTEMPTS - 1):
            try:
                return check(self[name])
            except AssertionError:
                self.wait()
                self._futures[name] = self._executor.submit(self._functions[name])
        return check(self[name])

    def wait(self):
        """Waits for all."""
        concurrent.futures.wait(self._futures.values())


@dataclasses.dataclass(frozen=True)
class Upload:
    head: bytes
    body: bytes
    report: bytes  # as a parser of forms finds it in the body


def ended(process):
    """Waits for a run of the program; what it left."""
    process = finish(process)
    stamp = re.match(rb"\S+ \S+ \S+\[(\d+)\] ", process.stderr)
    pid = int(stamp[1]) if stamp else 0
    return program_tests.Ended(builds.program(), pid, process.returncode, process.stdout, process.stderr)
