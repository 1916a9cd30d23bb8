# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A user of the window of a program whose system calls fail."""

import contextlib
import time

import Xlib.error
import Xlib.ext.xtest
import Xlib.X
import Xlib.XK

import polling
import windows


class WindowUser:
    """Starts runs in the window of a program that may fail in any way. Needs no other programs than the X server."""

    LOOK_SECONDS = 0.01
    PATIENCE_SECONDS = 1

    def __init__(self, screen, process, guard_seconds):
        self.screen = screen
        self.process = process
        self.deadline = time.monotonic() + guard_seconds
        self.mouse_place = 10
        self.seen = None
        # What is asked of a window that has just gone is no error here.
        screen.display.set_error_handler(lambda *_: None)

    def _wait_for(self, look, what):
        patient_until = time.monotonic() + self.PATIENCE_SECONDS
        while True:
            has_ended = self.process.poll() is not None
            with contextlib.suppress(Xlib.error.BadWindow, Xlib.error.BadDrawable, Xlib.error.BadMatch):
                if seen := look():
                    return seen
            if has_ended or time.monotonic() > self.deadline:
                raise TimeoutError(f"waited in vain for {what}")
            if time.monotonic() > patient_until:
                # A user who sees nothing happen moves the mouse, by which the program hears of the display.
                patient_until = time.monotonic() + self.PATIENCE_SECONDS
                self._move_mouse()
            time.sleep(self.LOOK_SECONDS)

    def _move_mouse(self):
        self.mouse_place = 30 - self.mouse_place
        Xlib.ext.xtest.fake_input(self.screen.display, Xlib.X.MotionNotify, x=self.mouse_place, y=self.mouse_place)
        self.screen.display.sync()

    def wait_for_idle_window(self):
        self.window = self._wait_for(lambda: next(iter(self.screen.windows(windows.TITLE)), None), "the window")
        self._wait_for(lambda: self.screen.picture(self.window).is_painted, "what is in the window")
        polling.wait_until_idle(self.process.pid)

    def start_and_look(self, before=None):
        """Starts a run and waits for an outcome that is not the one before, whose picture may stay for long.

        It is "link", "failure", "message", which is then closed, or "end", as the program has ended.
        """
        self._press(self.window, Xlib.XK.XK_Alt_L, Xlib.XK.XK_s)
        outcome = self._wait_for(lambda: self._end() or self._shown(before), "the outcome")
        if outcome == "message":
            # A person reads first, and nothing may go on meanwhile.
            self._wait_for(self._is_idle, "the message to stand alone")
            for box in self.screen.windows(windows.MESSAGE_TITLE):
                self._press(box, Xlib.XK.XK_Return)
            self._wait_for(lambda: self.process.poll() is not None, "the end after a message")
        return outcome

    def close(self):
        self.screen.ask_to_close(self.window)

    def _is_idle(self):
        if self.process.poll() is None:
            polling.wait_until_idle(self.process.pid)
        return True

    def _end(self):
        if self.process.poll() is not None:
            return "end"
        return "message" if self.screen.windows(windows.MESSAGE_TITLE) else None

    def _shown(self, before):
        picture = self.screen.picture(self.window)
        shown = picture.text and ("link" if picture.link else "failure")
        seen, self.seen = self.seen, shown  # what is seen once only may be half painted
        return shown if shown == seen != before else None

    def _press(self, window, *symbols):
        display = self.screen.display
        window.set_input_focus(Xlib.X.RevertToParent, Xlib.X.CurrentTime)
        codes = [display.keysym_to_keycode(symbol) for symbol in symbols]
        for code in codes:
            Xlib.ext.xtest.fake_input(display, Xlib.X.KeyPress, code)
        for code in reversed(codes):
            Xlib.ext.xtest.fake_input(display, Xlib.X.KeyRelease, code)
        display.sync()
