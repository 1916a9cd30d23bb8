# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A screen of a test's own, and a window on it as its user sees and uses it."""

import os
import pathlib
import re
import subprocess

import PIL.ImageGrab
import Xlib.display
import Xlib.error
import Xlib.protocol.event
import Xlib.X

import isolation
import polling
from pictures import Picture


ATTEMPTS = 5


class Screen:
    """An X server of its own, which picks its own number."""

    def __init__(self, size=(1000, 800), options=()):
        # Two servers that start at the same moment may try the same number, and both end.
        for _ in range(ATTEMPTS):
            if self._start(["-screen", "0", f"{size[0]}x{size[1]}x24", "-nolisten", "tcp", "-nocursor", *options]):
                break
        else:
            raise AssertionError("the X server did not start")
        self.display = Xlib.display.Display(self.name)
        self.process = None  # the program whose window came last

    def _start(self, options):
        reader, writer = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), *options], pass_fds=[writer],
                                       stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as pipe:
            number = pipe.readline().strip()
        if not number:
            self.server.wait()
        self.name = f":{number}"
        return number

    def close(self):
        self.display.close()
        self.server.terminate()
        self.server.wait()

    def run(self, *words, **options):
        environment = {**os.environ, "DISPLAY": self.name}
        return subprocess.run([str(word) for word in words], env=environment, check=True, capture_output=True,
                              timeout=polling.GUARD_SECONDS, **options).stdout

    def windows(self, title):
        """The windows that can be seen and whose whole title matches."""
        found = []
        for window in self.display.screen().root.query_tree().children:
            try:
                name = window.get_wm_name()
                is_viewable = window.get_attributes().map_state == Xlib.X.IsViewable
            except Xlib.error.BadWindow:
                continue  # it has just gone
            if is_viewable and isinstance(name, str) and re.fullmatch(title, name):
                found.append(window)
        return found

    def wait_for_window(self, title, process):
        self.process = process
        polling.wait_until(lambda: self.windows(title), f"{title} is on the screen", process)
        return Window(self, self.windows(title)[0])

    def ask_to_close(self, window):
        """Asks as a window manager does for the button in the window's frame."""
        atom = self.display.intern_atom
        window.send_event(Xlib.protocol.event.ClientMessage(
            window=window, client_type=atom("WM_PROTOCOLS"),
            data=(32, [atom("WM_DELETE_WINDOW"), Xlib.X.CurrentTime, 0, 0, 0])))
        self.display.flush()

    def clipboard(self):
        """What it holds, or None: a program that copies may empty it first."""
        try:
            return self.run("xclip", "-selection", "clipboard", "-out")
        except subprocess.CalledProcessError:
            return None

    def wait_for_clipboard(self, text):
        polling.wait_until(lambda: self.clipboard() == text, f"the clipboard holds {text}", self.process)

    def copy(self, text):
        # It goes on in the background for as long as it holds the clipboard: no pipe of ours may stay open in it.
        subprocess.run(["xclip", "-selection", "clipboard", "-in"], input=text, check=True,
                       env={**os.environ, "DISPLAY": self.name}, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

    def picture(self, window):
        """What a window shows now."""
        place = window.get_geometry()
        box = place.x, place.y, place.x + place.width, place.y + place.height
        return Picture(PIL.ImageGrab.grab(box, xdisplay=self.name))


class Window:
    """One window of the program, as its user sees and uses it."""

    def __init__(self, screen, window):
        self.screen = screen
        self.window = window
        self.focus()

    def xdotool(self, *words):
        self.screen.run("xdotool", *words)

    def focus(self):
        self.xdotool("windowfocus", "--sync", self.window.id)

    def press(self, *keys):
        self.xdotool("key", *keys)

    def type(self, text):
        self.xdotool("type", "--delay", "1", text)

    def fill(self, **texts):
        """Types over what the fields account, ticket and domain hold."""
        for field, text in texts.items():
            self.press("alt+" + field[0])
            self.type(text)

    def click(self, x, y):
        """Clicks at a place of the screen."""
        self.xdotool("mousemove", x, y)
        self.xdotool("click", 1)

    def picture(self):
        return self.screen.picture(self.window)

    def wait_for(self, condition, what):
        polling.wait_until(lambda: condition(self.picture()), what, self.screen.process)
        return self.picture()

    def close(self):
        self.screen.ask_to_close(self.window)

    def resize(self, width, height):
        self.window.configure(width=width, height=height)
        self.screen.display.sync()

    def break_connection(self):
        """Breaks the program's connection to the display, as the end of the display would."""
        self.window.kill_client()
        self.screen.display.flush()


_has_own_sockets = False


def use_own_sockets():
    """Keeps the sockets of this file's X servers from meeting those of others, which chose the same numbers."""
    global _has_own_sockets
    if not _has_own_sockets:
        folder = pathlib.Path("/tmp/.X11-unix")
        folder.mkdir(mode=0o1777, exist_ok=True)
        isolation.mount("-t", "tmpfs", "none", folder)
        _has_own_sockets = True
