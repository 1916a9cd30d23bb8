# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The ways in which the program is run while its calls fail, and what it has to deliver in each."""

import functools
import os

import report_text

GUARD_SECONDS = 60  # a run takes half a second, and ten more where the display is mute at the close

BIG = "".join(f"{number}\n" for number in range(190_000))  # more than a MiB
# The first command ends only with the last one. Should the last one never start, somebody has to end the first.
FIRST = [("exec cat gate", "opened\n"), ("exec cat big", BIG)]
LAST = ("echo opened >gate",)
# What any of the others has lost would be missed.
OUTPUTS = [*FIRST, *((f"echo {number}; echo {number} >&2", f"{number}\n", f"{number}\n")
                     for number in range(report_text.PLAN_LENGTH - len(FIRST) - 1)), LAST]
REPORT = report_text.report(OUTPUTS)
OLD = b"an older report\n"


class BadOutcome(Exception):
    """The run hangs, leaves something behind, or claims what is not so."""


class Scenario:
    """One way to run the program."""

    options = ["-s"]
    submit = "http://127.0.0.1:1/diagnosticsubmit"
    environment = {"QT_QPA_PLATFORM": "none"}
    runs = 1  # for which there are commands
    unprotected = ()  # calls of the program whose failure it does not survive, known limits
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
        """Whether the whole report is where it had been asked for. Raises BadOutcome."""
        raise NotImplementedError


class Console(Scenario):
    name = "print"
    options = ["-s", "-c"]

    def is_delivered(self, run):
        whole = run.stdout == REPORT + b"\n"
        if run.status == 0 and not whole:
            raise BadOutcome(f"status 0, but {len(run.stdout)} bytes printed instead of {len(REPORT) + 1}")
        return whole and run.status == 0


class File(Scenario):
    name = "file"
    options = ["-s", "-o=F"]

    def prepare(self, folder):
        (folder / "work/F").write_bytes(OLD)

    def is_delivered(self, run):
        content = (run.folder / "work/F").read_bytes()
        if content not in (OLD, REPORT):
            raise BadOutcome(f"{len(content)} bytes in the file instead of {len(REPORT)}")
        whole = content == REPORT
        if run.status == 0 and not whole and "could not save diagnostic_results.txt" not in run.messages:
            raise BadOutcome("status 0 and no message, but the file has not been written")
        return whole and run.status == 0


class Upload(Scenario):
    name = "upload"
    submit = "https://diagnostic.halvik.example/diagnosticsubmit"

    def prepare(self, folder):
        self.receiver.files.clear()

    def is_delivered(self, run):
        received = [content for _, _, content in self.receiver.files]
        if any(content != REPORT for content in received):
            raise BadOutcome("the server has got something else than the report")
        if run.status == 0 and not received:
            raise BadOutcome("status 0, but the server has got nothing")
        url = f"url=https://diagnostic.halvik.example/results/{len(received)}\n".encode()
        if run.status == 0 and run.stdout != url:
            raise BadOutcome(f"status 0, but {run.stdout!r} printed")
        return run.status == 0


class Fallback(Scenario):
    name = "fallback"

    def is_delivered(self, run):
        if run.status == 0:
            raise BadOutcome("status 0 after a failed upload")
        return run.status == 1 and run.desktop_file == REPORT


class Window(Scenario):
    """A run is started in the window, and the window is closed when the outcome is shown.

    Calls fail once the start button is pressed, as what Qt needs before is not this program's; after a failed upload
    they succeed again, and a second run in the same window has to be delivered.
    """

    name = "window"
    options = []
    runs = 2
    is_watched_from_start = False
    # Qt waits for ever for a thread that the system refuses, also by refusing its stack. libuv aborts without a message.
    unprotected = ("clone3", "mmap", "mprotect", "epoll_ctl", "epoll_pwait", "epoll_wait")

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
            raise BadOutcome("the server has got something else than the report")
        if len(received) < self.outcomes.count("link"):
            raise BadOutcome("the window shows a link, but the server has got nothing")
        if self.outcomes[0] == "failure" and self.outcomes[1:] != ["link"]:
            raise BadOutcome(f"a second run in the same window: {self.outcomes[1]}")
        if self.outcomes[-1] == "end" and not run.messages and not self.is_mute:
            raise BadOutcome("the window has gone without a message")
        return self.outcomes == ["link"] and run.status == 0


SCENARIOS = {kind.name: kind for kind in (Console, File, Upload, Fallback, Window)}
