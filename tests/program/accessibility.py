# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The controls of the window as a screen reader knows them.

Import this first: it skips the calling test file where something is missing.
"""

import os
import re
import subprocess
import tempfile
import unittest

import polling
import skipping

skipping.require_tools("Xvfb", "xdotool", "xclip", "dbus-daemon")
skipping.require_modules("PIL", "Xlib", "gi")
import gi
import windows

try:
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
except (ImportError, ValueError) as error:
    skipping.skip_file(f"not installed: {error}")
if not os.path.exists("/usr/share/dbus-1/services/org.a11y.Bus.service"):
    skipping.skip_file("not installed: the bus of the assistive technologies")


def start_bus():
    """Starts a session bus, on which the bus of the assistive technologies starts as soon as it is asked for.

    Call this from setUpModule: the library goes to the first bus that it finds, and to no other.
    """
    runtime = tempfile.TemporaryDirectory(prefix="halvik-")
    unittest.addModuleCleanup(runtime.cleanup)
    os.environ["XDG_RUNTIME_DIR"] = runtime.name
    for name in ("DISPLAY", "WAYLAND_DISPLAY", "AT_SPI_BUS_ADDRESS"):
        os.environ.pop(name, None)
    bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True)
    unittest.addModuleCleanup(bus.communicate)
    unittest.addModuleCleanup(bus.terminate)
    os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()
    Atspi.init()


class Control:
    """What a screen reader knows of one control."""

    def __init__(self, accessible):
        self.accessible = accessible
        self.name = accessible.get_name()
        states = accessible.get_state_set()
        self.is_showing = states.contains(Atspi.StateType.SHOWING)
        self.is_enabled = states.contains(Atspi.StateType.ENABLED) and states.contains(Atspi.StateType.SENSITIVE)
        self.is_focused = states.contains(Atspi.StateType.FOCUSED)
        self.is_editable = states.contains(Atspi.StateType.EDITABLE)
        role = accessible.get_role_name()
        # Of a text that nobody can edit Qt says that it is a label, but one with many lines that the keyboard
        # reaches, and whose text can be read piece by piece.
        if ("Text" in accessible.get_interfaces() and states.contains(Atspi.StateType.MULTI_LINE)
                and states.contains(Atspi.StateType.FOCUSABLE) and not self.is_editable):
            role = "text view"
        self.role = {"entry": "text", "button": "push button"}.get(role, role)

    @property
    def middle(self):
        """Where it is on the screen."""
        return middle(Atspi.Component.get_extents(self.accessible, Atspi.CoordType.SCREEN))

    @property
    def labels(self):
        return [relation.get_target(number).get_name() for relation in self.accessible.get_relation_set()
                if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY
                for number in range(relation.get_n_targets())]

    @property
    def text(self):
        return Atspi.Text.get_text(self.accessible, 0, Atspi.Text.get_character_count(self.accessible))

    def beginning_of(self, text):
        """Where the first character of a part of its text is on the screen."""
        return middle(Atspi.Text.get_character_extents(self.accessible, self.text.index(text), Atspi.CoordType.SCREEN))

    def press(self):
        if not Atspi.Action.do_action(self.accessible, 0):
            raise AssertionError(f"{self.name} cannot be pressed")


def middle(place):
    return place.x + place.width // 2, place.y + place.height // 2


class Events:
    """The events that a screen reader gets, in order: a kind, the name of the control, and the event's number or text."""

    KINDS = {"object:state-changed:showing": "showing", "object:text-changed:insert": "inserted",
             "object:property-change:accessible-name": "named", "object:property-change:accessible-value": "value",
             "object:state-changed:focused": "focused", "object:announcement": "announced"}

    def __init__(self, test):
        self._seen = []
        self._listener = Atspi.EventListener.new(self._note)
        for kind in self.KINDS:
            self._listener.register(kind)
            test.addCleanup(self._listener.deregister, kind)

    def wait_until_reported(self, window, keys, name, process):
        """Presses keys that move the focus to a control of this name until that is reported: before the program knows of
        the last one of the kinds, it reports nothing."""
        def is_reported():
            window.press(*keys)
            return ("focused", name, 1) in self.seen()

        polling.wait_until(is_reported, "the program reports what has the focus", process)

    def _note(self, event):
        kind = self.KINDS[":".join(event.type.split(":")[:3]).rstrip(":")]
        # Newer versions of Qt send the name, too.
        detail = event.any_data if kind in ("announced", "inserted") else event.detail1
        self._seen.append((kind, event.source.get_name(), detail))

    def seen(self):
        while GLib.MainContext.default().iteration(False):
            pass
        return self._seen

    def wait_for(self, expected, process):
        """Waits for one, and returns what has been seen until then."""
        polling.wait_until(lambda: expected in self.seen(), f"{expected} has been seen", process)
        return self._seen[:self._seen.index(expected) + 1]


def children(accessible):
    accessible.clear_cache()
    found = [accessible.get_child_at_index(number) for number in range(accessible.get_child_count())]
    return [child for child in found if child]


class AccessibleTest(windows.WindowedTest):
    """A test that finds the window's controls by their names and roles."""

    def environment(self, changes=None):
        return super().environment({"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                                    "DBUS_SESSION_BUS_ADDRESS": os.environ["DBUS_SESSION_BUS_ADDRESS"],
                                    **(changes or {})})

    def controls(self, title=windows.TITLE):
        """The showing controls of the program's window with that title; none while there is no such window."""
        try:
            for application in children(Atspi.get_desktop(0)):
                if application.get_process_id() == self.process.pid:
                    for window in children(application):
                        if re.fullmatch(title, window.get_name()):
                            return [control for control in map(Control, children(window)) if control.is_showing]
        except GLib.Error:
            pass  # something has gone while it was looked at
        return []

    def wait_for_control(self, name, role):
        polling.wait_until(lambda: (name, role) in [(control.name, control.role) for control in self.controls()],
                           f"{name} is shown", self.process)
        return self.control(name, role)

    def click(self, control):
        self.window.click(*control.middle)

    def control(self, name, role):
        found = [control for control in self.controls() if (control.name, control.role) == (name, role)]
        self.assertEqual(len(found), 1, f"{name}, {role}")
        return found[0]
