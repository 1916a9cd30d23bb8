# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Whole runs of the program in which one system call fails, and what is to be thought of their end.

A run may deliver the report or fail to, but it has to end, to leave nothing behind, and to tell the truth: what it
hands out as the report is the whole report, and where there is none, a line or a status says so.
"""

import collections
import contextlib
import errno
import functools
import os
import pathlib
import random
import resource
import signal
import subprocess
import tempfile

import builds
import http_server
import isolation
import report_text
import system_calls

GUARD_SECONDS = 60  # a run takes half a second, and ten more where the display is mute at the close
LEAVE_SECONDS = 20  # what the program has told to end needs no time at all
STALL_MS = 2000
# Enough for a run. Built for POSIX alone, the program looks at each number below the limit.
DESCRIPTORS = (256, 300)

# The errors that fit a call: a machine that has run out of something, a disk or a line that is broken, a signal.
ERRORS = {
    "EMFILE ENFILE": "dup eventfd2 epoll_create1 pidfd_open pipe pipe2 socketpair",
    "EMFILE ENFILE ENOMEM EIO EINTR": "open openat",
    "ENOBUFS EMFILE": "socket",
    "EBUSY EINTR": "dup2 dup3",
    "ENOMEM EAGAIN": "clone clone3 fork vfork execve",
    "ENOMEM": "close_range mmap mprotect mremap munmap madvise",
    "ENOMEM ENOSPC": "epoll_ctl",
    "EINTR": "epoll_pwait epoll_wait",
    "EINTR ENOMEM": "poll ppoll select pselect6",
    "EIO EINTR EAGAIN": "pread64 read readv",
    "ENOSPC EIO EINTR": "pwrite64 write writev",
    "ENOSPC EIO": "fchmod fsync fdatasync ftruncate link mkdir rename renameat2 unlink",
    "EIO ENOMEM EACCES": "access faccessat2 fstat getcwd lstat newfstatat readlink readlinkat stat statx",
    "EIO": "fcntl fstatfs getdents64 ioctl lseek statfs",
    "EPERM": "prlimit64",
    "ECHILD EINTR": "wait4 waitid",
    "ENOBUFS ECONNREFUSED EINTR": "bind connect getpeername getsockname getsockopt setsockopt",
    "ECONNRESET ENOBUFS EAGAIN EINTR": "sendmmsg sendmsg sendto",
    "ECONNRESET ENOMEM EAGAIN EINTR": "recvfrom recvmsg",
    "EAGAIN EINTR": "getrandom",
}
ERRORS_OF = {name: errors.split() for errors, names in ERRORS.items() for name in names.split()}
if builds.PLATFORM == "posix":
    # The handler of SIGCHLD wakes the loop by it, through a pipe that has room: only a signal can come in between.
    ERRORS_OF["write"] = ["EINTR"]
OTHER_ERRORS = ["EIO", "ENOMEM"]  # of a call that another library or system brings

# What is never made to fail.
NOT_FALLIBLE = {
    "a close that fails has closed all the same, which a call that is stopped could not":
        "close",
    "a refused brk gives the old end of the heap, and no error: the C library takes an error for the new end":
        "brk",
    "they do not fail with what the program gives them":
        "alarm arch_prctl clock_gettime clock_nanosleep exit exit_group getegid geteuid getgid getpid getppid getresgid"
        " getresuid gettid getuid gettimeofday kill prctl restart_syscall rseq rt_sigaction rt_sigprocmask"
        " rt_sigreturn sched_getaffinity sched_getparam sched_getscheduler sched_yield set_robust_list"
        " set_tid_address shutdown sigaltstack sysinfo tgkill umask uname",
    "the C library ends the program at once, by its own message, when one of these does":
        "futex",
}
EXEMPT = {name for names in NOT_FALLIBLE.values() for name in names.split()}
if builds.PLATFORM == "posix":
    EXEMPT.add("waitid")  # which the program asks about children that it has: docs/reliability.md

# What passes by definition, and whose callers try again until it has.
PASSING = ["EINTR", "EAGAIN"]
# The toolkit's loop asks again and again. The system refuses poll only when it has no room for the caller's list, which
# for lists of this length it never needs to look for.
NOT_FOREVER = ["poll", "ppoll"]

PHASES = ["loading", "setting up", "running", "delivering", "closing", "in a child"]

BIG = "".join(f"{number}\n" for number in range(190_000))  # more than a MiB
# The first command ends only with the last one. Should the last one never start, somebody has to end the first.
FIRST = [("exec cat gate", "opened\n"), ("exec cat big", BIG)]
LAST = ("echo opened >gate",)
# What any of the others has lost would be missed.
OUTPUTS = [*FIRST, *((f"echo {number}; echo {number} >&2", f"{number}\n", f"{number}\n")
                     for number in range(report_text.PLAN_LENGTH - len(FIRST) - 1)), LAST]
REPORT = report_text.report(OUTPUTS)
OLD = b"an older report\n"

WHOLE = "delivered"  # the whole report is where it had been asked for
KEPT = "kept"  # the whole report is on the Desktop or among the temporary files, and a line says so
TOLD = "told"  # no report, and a line or a status says so
BAD = "bad"

# The number is that among the calls of the same name since the run began, or since its window is to close.
Failure = collections.namedtuple("Failure", "scenario name by_child number error forever closing")
# reached: whether the run came to the call that was to fail.
Result = collections.namedtuple("Result", "failure verdict reached detail")


class Lie(Exception):
    """What the program has said or left is not so."""


class Scenario:
    """One way to run the program."""

    options = ["-s"]
    submit = "http://127.0.0.1:1/diagnosticsubmit"
    environment = {"QT_QPA_PLATFORM": "none"}
    runs = 1  # for which there are commands
    is_watched_from_start = True  # else from the moment on at which `use` says so
    is_closing = False
    is_mute = False  # whether standard error takes nothing

    def __init__(self, receiver=None):
        self.receiver = receiver

    def prepare(self, folder):
        """Puts into the folders of a run what is to be there."""

    def use(self, run):
        """What somebody does with the program while it runs."""

    def is_delivered(self, run):
        """Whether the whole report is where it had been asked for. Raises a Lie."""
        raise NotImplementedError


class Console(Scenario):
    name = "print"
    options = ["-s", "-c"]

    def is_delivered(self, run):
        whole = run.stdout == REPORT + b"\n"
        if run.status == 0 and not whole:
            raise Lie(f"status 0, but {len(run.stdout)} bytes printed instead of {len(REPORT) + 1}")
        return whole and run.status == 0


class File(Scenario):
    name = "file"
    options = ["-s", "-o=F"]

    def prepare(self, folder):
        (folder / "work/F").write_bytes(OLD)

    def is_delivered(self, run):
        content = (run.folder / "work/F").read_bytes()
        if content not in (OLD, REPORT):
            raise Lie(f"{len(content)} bytes in the file instead of {len(REPORT)}")
        whole = content == REPORT
        if run.status == 0 and not whole and "could not save diagnostic_results.txt" not in run.messages:
            raise Lie("status 0 and no message, but the file has not been written")
        return whole and run.status == 0


class Upload(Scenario):
    name = "upload"
    submit = "https://diagnostic.halvik.example/diagnosticsubmit"

    def prepare(self, folder):
        self.receiver.files.clear()

    def is_delivered(self, run):
        received = [content for _, _, content in self.receiver.files]
        if any(content != REPORT for content in received):
            raise Lie("the server has got something else than the report")
        if run.status == 0 and not received:
            raise Lie("status 0, but the server has got nothing")
        url = f"url=https://diagnostic.halvik.example/results/{len(received)}\n".encode()
        if run.status == 0 and run.stdout != url:
            raise Lie(f"status 0, but {run.stdout!r} printed")
        return run.status == 0


class Fallback(Scenario):
    name = "fallback"

    def is_delivered(self, run):
        if run.status == 0:
            raise Lie("status 0 after a failed upload")
        return run.status == 1 and run.desktop_file == REPORT


class Window(Scenario):
    """A run is started in the window, and the window is closed when the outcome is shown.

    What the toolkit, its fonts and the X server need before the window stands is none of this program's doing: calls
    fail from the moment on at which the start button is pressed. If the window then shows that the upload has failed,
    trouble is over, and a second run in the same window has to be delivered.
    """

    name = "window"
    options = []
    runs = 2
    is_watched_from_start = False

    def __init__(self, server, screen, desktop, person):
        super().__init__(server)
        self.person = functools.partial(person, screen)
        self.submit = server.url()
        self.environment = {"QT_QPA_PLATFORM": "xcb", "DISPLAY": screen.name, "DBUS_SESSION_BUS_ADDRESS": "disabled:",
                            "PATH": f"{desktop.programs}:{os.environ['PATH']}"}

    def prepare(self, folder):
        self.receiver.requests.clear()
        self.is_closing = False

    def use(self, run):
        self.outcomes = []
        person = self.person(run.process, GUARD_SECONDS)
        person.wait_for_idle_window()
        run.is_watched = True
        self.outcomes.append(person.start_and_look())
        if self.outcomes == ["failure"]:
            run.is_watched = False
            self.outcomes.append(person.start_and_look(before="failure"))
        self.is_closing = True
        person.close()

    def is_delivered(self, run):
        received = [request.submitted for request in self.receiver.requests]
        if any(content != REPORT for content in received):
            raise Lie("the server has got something else than the report")
        if len(received) < self.outcomes.count("link"):
            raise Lie("the window shows a link, but the server has got nothing")
        if self.outcomes[0] == "failure" and self.outcomes[1:] != ["link"]:
            raise Lie(f"a second run in the same window: {self.outcomes[1]}")
        if self.outcomes[-1] == "end" and not run.messages and not self.is_mute:
            raise Lie("the window has gone without a word")
        return self.outcomes == ["link"] and run.status == 0


SCENARIOS = {kind.name: kind for kind in (Console, File, Upload, Fallback, Window)}


@contextlib.contextmanager
def scenario(name):
    """The scenario with the server that it needs, inside namespaces of its own."""
    kind = SCENARIOS[name]
    if kind is Upload:
        yield from _with_upload()
    elif kind is Window:
        yield from _with_screen()
    else:
        yield kind()


def _with_screen():
    import windows  # for which not every machine has the libraries

    windows.use_own_sockets()
    with tempfile.TemporaryDirectory(prefix="halvik-screen-") as place, contextlib.ExitStack() as stack:
        screen = windows.Screen(place, size=(640, 640), options=["-nolock"])
        stack.callback(screen.close)
        server = http_server.Server(http_server.reply(windows.RESULT))
        stack.callback(server.close)
        yield Window(server, screen, windows.Desktop(pathlib.Path(place)), windows.Hurried)


def _with_upload():
    import tls  # the same

    with tempfile.TemporaryDirectory(prefix="halvik-tls-") as place, contextlib.ExitStack() as stack:
        folder = pathlib.Path(place)
        (folder / "authority").mkdir()
        authority = tls.Authority(folder / "authority")
        authority.trust(folder)
        stack.callback(isolation.uncover, tls.MACHINE_CERTIFICATES)
        (folder / "hosts").write_text(f"127.0.0.1 localhost {tls.HOST}\n")
        isolation.cover("/etc/hosts", folder / "hosts")
        stack.callback(isolation.uncover, "/etc/hosts")
        receiver = tls.Receiver()
        stack.callback(receiver.close)
        web = tls.WebServer(folder / "nginx", authority.issue(folder / "server"), receiver.port,
                            "client_max_body_size 8m;")
        stack.callback(web.close)
        yield Upload(receiver)


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
                   XDG_RUNTIME_DIR=str(self.folder / "runtime"), STAND_IN_COMMANDS="commands",
                   STAND_IN_SUBMIT_URL=self.scenario.submit, STAND_IN_STALL_MS=str(STALL_MS))
        env.update(self.scenario.environment)
        calls = system_calls.Gate(builds.test_build(), lambda call: decide(call) if self.is_watched else 0, **gate)

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
        told = f"status {self.status}: {self.messages.strip()[-300:]}"
        try:
            if self.hanging:
                raise Lie(f"hangs: {self.hanging}")
            if self.is_leaving_commands:
                raise Lie("a command is left behind")
            if self.status < 0 and self.status != -signal.SIGABRT and not self.may_crash:
                raise Lie("a crash")
            is_kept = self._look_at_files()
            if ("saved to Desktop" in self.messages and not is_kept
                    and "could not save diagnostic_results.txt" not in self.messages):
                raise Lie("the report has not been saved")
            if self.scenario.is_delivered(self):
                return WHOLE, told
        except Lie as lie:
            return BAD, f"{lie}; {told}"
        if is_kept and "saving the report to" in self.messages:
            return KEPT, told
        if self.status == 0 and not self.messages:
            return BAD, f"no word of a failure; {told}"
        return TOLD, told

    def _look_at_files(self):
        """Whether a whole report has been put into a safe place. Raises a Lie about any other file."""
        is_kept = False
        for path in self.folder.rglob("*"):
            if path.name == "diagnostic_results.txt" and path.is_file():
                if path.read_bytes() != REPORT:
                    raise Lie(f"{path} is not the whole report")
                is_kept = True
            elif path.is_file() and path.relative_to(self.folder).as_posix() not in (
                    "work/F", "work/big", "work/commands"):
                raise Lie(f"{path} is left behind")
        return is_kept


def count(kind):
    """The calls of an undisturbed run in their order, each with the phase of the run that it belongs to."""
    calls = []

    def note(call):
        calls.append((call.name, call.by_child, kind.is_closing))
        return 0

    run = Run(kind, note, let_through=EXEMPT)
    if run.verdict != WHOLE:
        raise AssertionError(f"{kind.name}: an undisturbed run: {run.verdict}: {run.detail}")
    ours = [name for name, by_child, _ in calls if not by_child]
    first_of_main = ours.index("fcntl") if kind.is_watched_from_start else 0
    first_pipe = next(place for place, name in enumerate(ours) if name in ("pipe", "pipe2"))
    last_wait = max(place for place, name in enumerate(ours) if name == "wait4")
    last_open = sum(not by_child and not closing for _, by_child, closing in calls)
    borders = [first_of_main, first_pipe, last_wait + 1, last_open, len(ours)]
    phases = [next(phase for phase, border in zip(PHASES, borders) if place < border) for place in range(len(ours))]
    children = [(name, True, PHASES[-1]) for name, by_child, _ in calls if by_child]
    return [(name, False, phase) for name, phase in zip(ours, phases)] + children


def failures(kind, calls, is_thorough=False):
    """Every failure to try, and the phase that it belongs to, by the calls that an undisturbed run makes.

    Each call fails by each of its errors. Of those that a run makes again and again, once for each command, the errors
    take turns, unless it is to be thorough.
    """
    seen = collections.Counter()
    for name, by_child, phase in calls:
        closing = phase == "closing"
        number = seen[name, by_child, closing] = seen[name, by_child, closing] + 1
        errors = ERRORS_OF.get(name, OTHER_ERRORS)
        if number > 20 and not is_thorough:
            errors = [errors[number % len(errors)]]
        for error in errors:
            for forever in ([False, True] if number <= 3 or is_thorough else [False]):
                if not (forever and (error in PASSING or name in NOT_FOREVER)):
                    yield Failure(kind.name, name, by_child, number, error, forever, closing), phase


def sample(plan, size, seed):
    """So many of them, the same for the same seed, in their order."""
    if size is None or size >= len(plan):
        return plan
    return [plan[place] for place in sorted(random.Random(seed).sample(range(len(plan)), size))]


def attempt(kind, failure):
    """Runs the program with this failure."""
    seen = 0

    def decide(call):
        nonlocal seen
        if (call.name, call.by_child) != (failure.name, failure.by_child) or failure.closing and not kind.is_closing:
            return 0
        seen += 1
        hit = seen >= failure.number if failure.forever else seen == failure.number
        return getattr(errno, failure.error) if hit else 0

    kind.is_mute = failure.forever and failure.name in ("write", "writev")
    # With no memory for itself, the loader falls over before anything of the program has run.
    is_loader = kind.is_watched_from_start and (failure.name, failure.by_child, failure.number) == ("mmap", False, 1)
    run = Run(kind, decide, may_crash=is_loader, stop=[failure.name])
    return Result(failure, run.verdict, seen >= failure.number, run.detail)


def describe(result, phase):
    failure = result.failure
    which = f"{failure.name} no. {failure.number}" + (" and all after it" if failure.forever else "")
    return f"{result.verdict}: {failure.scenario}: {which} ({phase}), {failure.error}: {result.detail}"


class Tally:
    """How runs have ended: by scenario, phase, call and error."""

    VERDICTS = [WHOLE, KEPT, TOLD, BAD]

    def __init__(self):
        self._rows = {}
        self.bad = 0
        self.not_reached = 0

    def add(self, result, phase):
        failure = result.failure
        key = (list(SCENARIOS).index(failure.scenario), PHASES.index(phase), failure.name, failure.error)
        self._rows.setdefault(key, collections.Counter())[result.verdict] += 1
        self.bad += result.verdict == BAD
        self.not_reached += not result.reached

    def table(self):
        """A row for each scenario, phase, call and error."""
        names = list(SCENARIOS)
        return self._lines("scenario | phase | call | error",
                           {f"{names[scenario]} | {PHASES[phase]} | `{name}` | {error}": row
                            for (scenario, phase, name, error), row in sorted(self._rows.items())})

    def summary(self):
        """A row for each phase and call."""
        rows, errors = {}, {}
        for (_, phase, name, error), row in self._rows.items():
            rows.setdefault((phase, name), collections.Counter()).update(row)
            errors.setdefault((phase, name), set()).add(error)
        return self._lines("phase | call | errors",
                           {f"{PHASES[phase]} | `{name}` | {', '.join(sorted(errors[phase, name]))}": row
                            for (phase, name), row in sorted(rows.items())})

    def _lines(self, head, rows):
        titles = [*head.split(" | "), "runs", *self.VERDICTS]
        lines = [" | ".join(titles), " | ".join(["---"] * (head.count("|") + 1) + ["--:"] * (len(self.VERDICTS) + 1))]
        total = sum(rows.values(), collections.Counter())
        for title, row in [*rows.items(), ("all" + " |" * head.count("|"), total)]:
            lines.append(" | ".join([title, str(row.total()), *(str(row[verdict]) for verdict in self.VERDICTS)]))
        return "\n".join(f"| {line} |" for line in lines)
