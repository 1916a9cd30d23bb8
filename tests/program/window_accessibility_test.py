# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The window as a screen reader meets it: names, roles and states of its controls in each phase of a run."""

import pathlib
import re
import shutil
import unittest

import accessibility  # first, as it skips the file where something is missing
import http_server
import isolation
import polling
import report_text
import windows
from accessibility import Atspi, Control, children

URL = windows.RESULT.decode()
PURPOSE = "Runs network tests on this computer and sends\nwhat they print to Halvik support."
FIELDS = ["Halvik account:", "Support ticket:", "Domain to test:"]
RESULTS = ("Results", "text view")

CAPTIONS = [(PURPOSE, "label"), *[(name, "label") for name in FIELDS]]
INPUTS = [*[(name, "text") for name in FIELDS], ("Start tests", "push button")]
CAPTION = ("Send this link to Halvik support:", "label")
BUTTONS = [("Copy link", "push button"), ("Open link", "push button")]


def status(done):
    return f"Please wait. Finished {done} out of {report_text.PLAN_LENGTH} tests."


class PhaseCase(accessibility.AccessibleTest):
    def start_run(self):
        """Starts a run of which 30 commands end, and the others when the gate is opened."""
        self.control("Start tests", "push button").press()
        self.wait_for_phase([(status(30), "label"), ("Progress", "progress bar")], inputs_are_enabled=False)

    def wait_for_phase(self, expected, inputs_are_enabled=True):
        """Waits until exactly the controls of one phase are there, and fails by saying what else there is."""
        everything = sorted([(name, role, True) for name, role in CAPTIONS + expected]
                            + [(name, role, inputs_are_enabled) for name, role in INPUTS])

        def present():
            return sorted((control.name, control.role, control.is_enabled) for control in self.controls())

        try:
            polling.wait_until(lambda: present() == everything, "the phase is reached", self.process)
        except AssertionError:
            self.assertEqual(present(), everything)

    def focused(self):
        return [control.name for control in self.controls() if control.is_focused]


class PhaseTest(PhaseCase):
    def setUp(self):
        super().setUp()
        self.server = self.serve(http_server.reply(windows.RESULT), http_server.reply(b"no", status=500))
        self.gate = windows.Gate(self)
        waiting = [":"] * 30 + [self.gate.line] * (report_text.PLAN_LENGTH - 30)
        self.open_window(commands=waiting, submit=self.server.url())

    def finish_run_with(self, controls):
        self.gate.open()
        self.may_reply.release()
        self.wait_for_phase(controls)

    def test_controls_of_each_phase(self):
        self.wait_for_phase([])
        self.start_run()
        self.finish_run_with([RESULTS, CAPTION, *BUTTONS])
        self.control("Start tests", "push button").press()
        self.finish_run_with([RESULTS, *BUTTONS])

    def test_fields_are_named_by_their_captions(self):
        self.wait_for_phase([])
        for name in FIELDS:
            field = self.control(name, "text")
            self.assertEqual(field.labels, [name])
            self.assertTrue(field.is_editable)

    def test_progress_has_its_value(self):
        self.wait_for_phase([])
        self.start_run()
        bar = self.control("Progress", "progress bar").accessible
        self.assertEqual(Atspi.Value.get_minimum_value(bar), 0)
        step = Atspi.Value.get_maximum_value(bar) / report_text.PLAN_LENGTH
        polling.wait_until(lambda: Atspi.Value.get_current_value(bar) == 30 * step, "30 are shown",
                           self.process)

    def test_results_can_be_read(self):
        self.wait_for_phase([])
        self.start_run()
        self.finish_run_with([RESULTS, CAPTION, *BUTTONS])
        self.assertEqual(self.control(*RESULTS).text, "See results at " + URL)
        self.control("Start tests", "push button").press()
        self.finish_run_with([RESULTS, *BUTTONS])
        self.assertEqual(self.control(*RESULTS).text, "There was an error submitting the results")

    def test_after_a_run_the_keyboard_is_not_lost(self):
        self.wait_for_phase([])
        self.assertEqual(self.focused(), ["Halvik account:"])
        self.window.press("Return")
        self.finish_run_with([RESULTS, CAPTION, *BUTTONS])
        self.assertEqual(len(self.focused()), 1, "something has the focus after a run")
        self.window.press("alt+s")
        self.finish_run_with([RESULTS, *BUTTONS])
        self.assertEqual(len(self.focused()), 1, "something has the focus after a run that failed")


class OrderTest(PhaseCase):
    def test_what_is_reported_from_the_start_button_to_the_results(self):
        server = self.serve()
        gate = windows.Gate(self)
        self.open_window(commands=[":"] + [gate.line] * (report_text.PLAN_LENGTH - 1), submit=server.url())
        self.wait_for_phase([])
        events = accessibility.Events(self)
        events.wait_until_reported(self.window, ["alt+a", "alt+t"], FIELDS[1], self.process)
        self.window.press("alt+d", "Tab", "space")
        events.wait_for(("named", status(1), 0), self.process)
        gate.open()
        self.may_reply.release()
        seen = events.wait_for(("focused", "Results", 1), self.process)
        # Qt repeats what has the focus when it is about to go.
        focused = list(dict.fromkeys(name for kind, name, detail in seen if kind == "focused" and detail))
        self.assertEqual(focused[focused.index(FIELDS[-1]):], [FIELDS[-1], INPUTS[-1][0], "Results"])
        for name in ("Results", CAPTION[0], *[name for name, _ in BUTTONS]):
            self.assertIn(("showing", name, 1), seen)
        names = list(dict.fromkeys(name for kind, name, _ in seen if kind == "named"))
        self.assertEqual(names[-1], status(report_text.PLAN_LENGTH))
        link = next(number for number, event in enumerate(seen) if event[0] == "inserted" and URL in event[2])
        order = [seen.index(("showing", "Progress", 1)), max(at for at, event in enumerate(seen) if event[0] == "value"),
                 seen.index(("showing", "Progress", 0)), link, seen.index(("showing", "Results", 1)), len(seen) - 1]
        self.assertEqual(order, sorted(order))

    def test_results_are_announced_when_the_focus_is_elsewhere(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.wait_for_phase([])
        if self.qt_version() < (6, 8):
            self.skipTest("Qt before 6.8 announces nothing")
        events = accessibility.Events(self)
        events.wait_until_reported(self.window, ["alt+a", "alt+t"], FIELDS[1], self.process)
        self.window.press("alt+s")
        self.may_reply.release()
        events.wait_for(("announced", "Results", "See results at " + URL), self.process)

    def qt_version(self):
        """Of the library that the program has loaded."""
        maps = pathlib.Path(f"/proc/{self.process.pid}/maps").read_text()
        return tuple(map(int, re.search(r"libQt6Core\.so\.(\d+)\.(\d+)", maps).groups()))


class ActionTest(PhaseCase):
    def test_a_run_without_keys_and_mouse(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.wait_for_phase([])
        for name, text in zip(FIELDS, ["acme", "48151", "example.com"]):
            field = self.control(name, "text").accessible
            self.assertTrue(Atspi.EditableText.set_text_contents(field, text))
        self.may_reply.release()
        self.control("Start tests", "push button").press()
        self.wait_for_phase([RESULTS, CAPTION, *BUTTONS])
        head = b"Halvik account: acme\nHalvik ticket: 48151\n"
        report = server.requests[0].submitted
        self.assertEqual(report[:len(head)], head)
        self.assertEqual(len(report_text.blocks(report[len(head):])), report_text.PLAN_LENGTH_WITH_DOMAIN)
        self.screen.copy(b"of another program")
        self.control("Copy link", "push button").press()
        self.screen.wait_for_clipboard(windows.RESULT)
        self.control("Open link", "push button").press()
        self.assertEqual(self.desktop.wait_for(1), [URL])


@unittest.skipUnless(shutil.which("dig"), "the tools of the plan are not installed")
class MessageTest(PhaseCase):
    """With the real plan, on a network with no way out."""

    def test_the_message_about_a_command_that_cannot_be_launched(self):
        (self.folder / "tool").write_text("#!/bin/sh\n")
        prefix = ["unshare", "--mount", "sh", "-e", "-c",
                  f'mount --bind {self.folder}/tool /usr/bin/dig; exec "$@"', "sh"]
        self.open_program(prefix)
        self.wait_for_phase([])
        self.control("Start tests", "push button").press()
        polling.wait_until(lambda: self.controls(windows.MESSAGE_TITLE), "a message is shown", self.process)
        controls = self.controls(windows.MESSAGE_TITLE)
        text = "".join(control.name for control in controls if control.role == "label")
        self.assertIn("has to end because of an error", text)
        self.assertIn("/usr/bin/dig: Permission denied", text)
        for button in self.buttons():
            button.press()
        self.assertEqual(self.finish(self.process).status, 1)

    def buttons(self):
        """The buttons of the message, which stand in a row of their own."""
        found = []
        for application in children(Atspi.get_desktop(0)):
            if application.get_process_id() == self.process.pid:
                for window in children(application):
                    if window.get_name() == windows.MESSAGE_TITLE:
                        found += [Control(button) for group in children(window) for button in children(group)]
        buttons = [control for control in found if control.role == "push button"]
        self.assertEqual([button.name for button in buttons], ["OK"])
        return buttons


setUpModule = accessibility.start_bus
isolation.run_tests(needs_namespaces=True)
