# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""One run of the program in which calls may fail, and the verdict on its end."""

import os
import pathlib
import resource
import signal
import subprocess
import tempfile

import builds
import system_calls
from failing_calls.errors import is_fallible
from failing_calls.scenarios import BIG, GUARD_SECONDS, OUTPUTS, REPORT, BadOutcome

LEAVE_SECONDS = 20  # what the program has asked to end needs no time at all
STALL_MS = 2000
# Enough for a run. Built for POSIX alone, the program looks at each number below the limit.
DESCRIPTORS = (256, 300)

WHOLE = "delivered"  # the whole report is where it had been asked for
SAVED = "saved"  # the whole report is on the Desktop or among the temporary files, and a line says so
REPORTED = "reported"  # no report, and a line or a status says so
BAD = "bad"


class Run:
    """One run in folders of its own, each of its calls passed to `decide`."""

    def __init__(self, kind, decide, may_crash=False, **gate):
        self.scenario = kind
        self.may_crash = may_crash
        self.is_watched = kind.is_watched_from_start
        with tempfile.TemporaryDirectory(prefix="halvik-") as name:
            self.folder = pathlib.Path(name)
            for sub in ("home", "work", "tmp", "runtime"):
                (self.folder / sub).mkdir(mode=0o700)
            os.mkfifo(self.folder / "work/gate")
            (self.folder / "work/big").write_text(BIG)
            (self.folder / "work/commands").write_text("".join(f"{line}\n" for line, *_ in OUTPUTS * kind.runs))
            kind.prepare(self.folder)
            self._start(decide, gate)
            self.verdict, self.detail = self._judge()

    def _start(self, decide, gate):
        kept = ["PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"]
        env = {name: os.environ[name] for name in kept if name in os.environ}
        env.update(HOME=str(self.folder / "home"), TMPDIR=str(self.folder / "tmp"), LC_ALL="C.UTF-8",
                   XDG_RUNTIME_DIR=str(self.folder / "runtime"), TEST_BUILD_COMMANDS="commands",
                   TEST_BUILD_SUBMIT_URL=self.scenario.submit, TEST_BUILD_STALL_MS=str(STALL_MS))
        env.update(self.scenario.environment)
        calls = system_calls.Gate(builds.test_build(),
                                  lambda call: decide(call) if self.is_watched and is_fallible(call) else 0, **gate)

        def enter():
            resource.setrlimit(resource.RLIMIT_NOFILE, DESCRIPTORS)
            calls.enter()

        try:
            process = self.process = subprocess.Popen(
                [builds.test_build(), *self.scenario.options], env=env, stdin=subprocess.DEVNULL,
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=self.folder / "work", preexec_fn=enter,
                start_new_session=True)
            try:
                self.scenario.use(self)
                self.stdout, self.stderr = process.communicate(timeout=GUARD_SECONDS)
                self.hanging = None
            except (subprocess.TimeoutExpired, TimeoutError) as error:
                process.kill()
                self.stdout, self.stderr = process.communicate()
                self.hanging = str(error)
            self.status = process.returncode
            self.is_leaving_commands = not calls.all_ended(LEAVE_SECONDS)
            if self.is_leaving_commands:
                os.killpg(process.pid, signal.SIGKILL)
        finally:
            calls.close()

    @property
    def messages(self):
        return self.stderr.decode(errors="replace")

    @property
    def desktop_file(self):
        path = self.folder / "home/Desktop/diagnostic_results.txt"
        return path.read_bytes() if path.is_file() else None

    def _judge(self):
        ending = f"status {self.status}: {self.messages.strip()[-300:]}"
        try:
            if self.hanging:
                raise BadOutcome(f"hangs: {self.hanging}")
            if self.is_leaving_commands:
                raise BadOutcome("a command is left behind")
            if self.status < 0 and self.status != -signal.SIGABRT and not self.may_crash:
                raise BadOutcome("a crash")
            is_kept = self._look_at_files()
            if ("saved to Desktop" in self.messages and not is_kept
                    and "could not save diagnostic_results.txt" not in self.messages):
                raise BadOutcome("the report has not been saved")
            if self.scenario.is_delivered(self):
                return WHOLE, ending
        except BadOutcome as outcome:
            return BAD, f"{outcome}; {ending}"
        if is_kept and "saving the report to" in self.messages:
            return SAVED, ending
        if self.status == 0 and not self.messages:
            return BAD, f"no message about a failure; {ending}"
        return REPORTED, ending

    def _look_at_files(self):
        """Whether a whole report has been put into a safe place. Raises BadOutcome about any other file."""
        is_kept = False
        for path in self.folder.rglob("*"):
            if path.name == "diagnostic_results.txt" and path.is_file():
                if path.read_bytes() != REPORT:
                    raise BadOutcome(f"{path} is not the whole report")
                is_kept = True
            elif path.is_file() and path.relative_to(self.folder).as_posix() not in (
                    "work/F", "work/big", "work/commands"):
                raise BadOutcome(f"{path} is left behind")
        return is_kept
