# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A screen for the windowed program, with a user's hands and eyes, and a desktop that notes what it is to open."""

import contextlib
import os
import pathlib
import re
import socket
import subprocess
import threading
import time

import Xlib.display
import Xlib.error
import Xlib.ext.xtest
import Xlib.protocol.event
import Xlib.X
import Xlib.XK

import builds
import http_server
import isolation
import polling
import program_tests

TITLE = r"Halvik Diagnostic v\d+\.\d+\.\d+"
MESSAGE_TITLE = "Halvik Diagnostic"
RESULT = b"https://results.halvik.example/r/4f2a91c07b"

ORANGE = (255, 165, 0)
DARK = (0x16, 0x16, 0x16)
WHITE = (255, 255, 255)


class Screen:
    """An X server of its own, which picks its own number. Its picture is kept in a file in `folder`."""

    def __init__(self, folder, size=(1000, 800), options=()):
        reader, writer = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{size[0]}x{size[1]}x24", "-nolisten", "tcp",
             "-nocursor", "-fbdir", folder, *options],
            pass_fds=[writer], stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as number:
            self.name = ":" + number.readline().strip()
        if self.name == ":":
            raise AssertionError("the X server did not start")
        self.display = Xlib.display.Display(self.name)
        self.process = None  # the program whose window came last
        self.memory = pathlib.Path(folder) / "Xvfb_screen0"

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

    def pixels(self, left, top, width, height):
        """The rows of a part of the screen, three bytes a pixel: blue, green, red."""
        with open(self.memory, "rb") as file:
            head = [int.from_bytes(file.read(4), "big") for _ in range(25)]
            start, bytes_per_row = head[0] + head[19] * 12, head[12]
            rows = []
            for y in range(max(top, 0), min(top + height, head[5])):
                file.seek(start + y * bytes_per_row + left * 4)
                row = bytearray(file.read(width * 4))
                del row[3::4]
                rows.append(bytes(row))
            return rows


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

    def click(self, box):
        place = self.window.get_geometry()
        self.xdotool("mousemove", place.x + box.middle[0], place.y + box.middle[1])
        self.xdotool("click", 1)

    def picture(self):
        place = self.window.get_geometry()
        return Picture(self.screen.pixels(place.x, place.y, place.width, place.height))

    def wait_for(self, condition, what):
        polling.wait_until(lambda: condition(self.picture()), what, self.screen.process)
        return self.picture()

    def close(self):
        self.screen.ask_to_close(self.window)

    def resize(self, width, height):
        self.window.configure(width=width, height=height)
        self.screen.display.sync()

    def lose(self):
        """Breaks the program's connection to the display, as the end of the display would."""
        self.window.kill_client()
        self.screen.display.flush()


class Hurried:
    """A person who starts runs in the window of a program that may fail in any way, and needs no other programs."""

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
                # Whoever sees nothing happen moves the mouse, by which the program hears of the display.
                patient_until = time.monotonic() + self.PATIENCE_SECONDS
                self._move_mouse()
            time.sleep(self.LOOK_SECONDS)

    def _move_mouse(self):
        self.mouse_place = 30 - self.mouse_place
        Xlib.ext.xtest.fake_input(self.screen.display, Xlib.X.MotionNotify, x=self.mouse_place, y=self.mouse_place)
        self.screen.display.sync()

    def wait_for_idle_window(self):
        self.window = self._wait_for(lambda: next(iter(self.screen.windows(TITLE)), None), "the window")
        self._wait_for(lambda: len(self._picture().bands()) > 4, "what is in the window")
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
            for box in self.screen.windows(MESSAGE_TITLE):
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
        return "message" if self.screen.windows(MESSAGE_TITLE) else None

    def _shown(self, before):
        picture = self._picture()
        shown = picture.text and ("link" if picture.link else "failure")
        seen, self.seen = self.seen, shown  # what is seen once only may be half painted
        return shown if shown == seen != before else None

    def _picture(self):
        place = self.window.get_geometry()
        return Picture(self.screen.pixels(place.x, place.y, place.width, place.height))

    def _press(self, window, *symbols):
        display = self.screen.display
        window.set_input_focus(Xlib.X.RevertToParent, Xlib.X.CurrentTime)
        codes = [display.keysym_to_keycode(symbol) for symbol in symbols]
        for code in codes:
            Xlib.ext.xtest.fake_input(display, Xlib.X.KeyPress, code)
        for code in reversed(codes):
            Xlib.ext.xtest.fake_input(display, Xlib.X.KeyRelease, code)
        display.sync()


class Box:
    def __init__(self, left, top, right, bottom):
        self.left, self.top, self.right, self.bottom = left, top, right, bottom

    @property
    def middle(self):
        return (self.left + self.right) // 2, (self.top + self.bottom) // 2


class Picture:
    """What a window shows at one moment, and where its controls are."""

    def __init__(self, rows):
        self.rows = rows
        self.background = rows[1][3:6]

    def box(self, colour, run=1):
        """The smallest box around what has one colour over at least `run` pixels side by side, or None."""
        pixel = bytes(reversed(colour))
        found = [(y, x) for y, row in enumerate(self.rows) if pixel * run in row for x in self._outermost(row, pixel)]
        if not found:
            return None
        columns = [x for _, x in found]
        return Box(min(columns), found[0][0], max(columns), found[-1][0])

    @staticmethod
    def _outermost(row, pixel):
        first = row.find(pixel)
        while first >= 0 and first % 3:
            first = row.find(pixel, first + 1)
        if first < 0:
            return []
        last = row.rfind(pixel)
        while last % 3:
            last = row.rfind(pixel, 0, last + 2)
        return [first // 3, last // 3]

    def bands(self, first=0):
        """Where rows of controls are: each box reaches from one empty line to the next, over the whole width."""
        empty = self.background * (len(self.rows[0]) // 3)
        used = [y for y in range(first, len(self.rows)) if self.rows[y] != empty]
        return [Box(0, top, len(self.rows[0]) // 3, bottom) for top, bottom in self._runs(used)]

    def pieces(self, band):
        """What stands beside each other in a band, parted by empty columns."""
        used = [x for x in range(band.right)
                if any(self.rows[y][3 * x:3 * x + 3] != self.background for y in range(band.top, band.bottom + 1))]
        return [Box(left, band.top, right, band.bottom) for left, right in self._runs(used)]

    @staticmethod
    def _runs(numbers):
        runs = []
        for number in numbers:
            if runs and runs[-1][1] == number - 1:
                runs[-1][1] = number
            else:
                runs.append([number, number])
        return runs

    @property
    def results(self):
        """The dark view with the results, or None. Letters hold that colour too, but none is as wide."""
        return self.box(DARK, run=100)

    @property
    def link(self):
        return self.box(ORANGE) if self.results else None

    @property
    def text(self):
        """Whether the results hold text that is no link."""
        results = self.results
        pixel = bytes(reversed(WHITE))
        return bool(results) and any(pixel in row[3 * results.left + 6:3 * results.right - 6]
                                     for row in self.rows[results.top + 2:results.bottom - 1])

    @property
    def start_button(self):
        """Before the first run only, when nothing stands below."""
        return self.pieces(self.bands()[-1])[-1]

    def reaches_below(self, box):
        return self.bands()[-1].bottom > box.bottom

    @property
    def link_buttons(self):
        """The copy and the open button, below the results."""
        return self.pieces(self.bands(first=self.results.bottom + 3)[0])[-2:]


class Desktop:
    """Programs that only note what they are to open: one in place of xdg-open, and the user's editor for plain text."""

    def __init__(self, folder):
        self.programs = folder / "programs"
        self.programs.mkdir()
        self.notes = folder / "opened"
        for name in ("xdg-open", "editor"):
            opener = self.programs / name
            opener.write_text(f'#!/bin/sh\nprintf "%s\\n" "$#:$*" >>"{self.notes}"\n')
            opener.chmod(0o755)
        self.data = folder / "data"
        applications = self.data / "applications"
        applications.mkdir(parents=True)
        (applications / "editor.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName=Editor\nExec={self.programs}/editor %f\n")
        (applications / "mimeapps.list").write_text("[Default Applications]\ntext/plain=editor.desktop\n")

    @property
    def opened(self):
        """The arguments of every call so far, each of which must have had exactly one."""
        if not self.notes.exists():
            return []
        calls = [line.partition(":") for line in self.notes.read_text().split("\n")[:-1]]
        if any(count != "1" for count, _, _ in calls):
            raise AssertionError(f"opened with another number of arguments: {calls}")
        return [argument for _, _, argument in calls]

    def wait_for(self, count):
        polling.wait_until(lambda: len(self.opened) >= count, f"the desktop has been asked to open {count}")
        return self.opened


class Gate:
    """Lets commands wait: each line that `waiting` returns ends when the gate is opened."""

    def __init__(self, test):
        self.path = test.folder / "gate"
        os.mkfifo(self.path)
        self.line = f"read line <{self.path}"
        self.descriptor = None
        test.addCleanup(self.open)

    def open(self):
        if self.descriptor is None:
            self.descriptor = os.open(self.path, os.O_RDWR | os.O_NONBLOCK)
            os.write(self.descriptor, b"\n" * 1024)


class WindowedTest(program_tests.ProgramTest):
    """A test with a screen of its own, on which it runs the program."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        use_own_sockets()

    def setUp(self):
        super().setUp()
        memory = self.folder / "memory"
        memory.mkdir()
        # Two servers in different networks could both take a number for free, and a lock's file would be in the way of
        # the second one.
        self.screen = Screen(memory, options=["-nolock"])
        self.addCleanup(self.screen.close)
        self.desktop = Desktop(self.folder)
        self.may_reply = threading.Semaphore(0)

    def environment(self, changes=None):
        self.folder.chmod(0o700)
        return super().environment({
            "DISPLAY": self.screen.name, "QT_QPA_PLATFORM": "xcb", "XDG_RUNTIME_DIR": self.folder,
            # Without a bus the toolkit's library would start one, which nobody would end.
            "DBUS_SESSION_BUS_ADDRESS": "disabled:", "PATH": f"{self.desktop.programs}:{os.environ['PATH']}",
            "XDG_DATA_HOME": self.desktop.data,
            **(changes or {})})

    def open_program(self, prefix=()):
        """Starts the program with its real plan and waits for its window."""
        if [name for _, name in socket.if_nameindex()] != ["lo"]:
            raise AssertionError("the real plan is for a network with no way out only")
        self.process = self.start(builds.program(), [], prefix=prefix)
        self.window = self.screen.wait_for_window(TITLE, self.process)

    def serve(self, *scripts):
        """A server whose n-th reply is the n-th script's, the last one for ever, as soon as `may_reply` lets it."""
        def held_back(script):
            def run(exchange):
                self.may_reply.acquire(timeout=polling.GUARD_SECONDS)
                script(exchange)
            return run

        server = http_server.Server(*map(held_back, scripts or [http_server.reply(RESULT)]))
        self.addCleanup(server.close)
        self.addCleanup(self.may_reply.release, 100)
        return server

    def open_window(self, options=(), commands=(), **others):
        """Starts the test build and waits for its window."""
        self.process = self.start_test_build(options, commands, **others)
        self.window = self.screen.wait_for_window(TITLE, self.process)

    def start_button(self):
        """Where it is. Call this before the first run."""
        return self.window.wait_for(lambda picture: len(picture.bands()) > 4, "the window is painted").start_button

    def finish_run(self):
        """Lets the run that has been started end, and waits until its outcome is on the screen."""
        self.window.wait_for(lambda picture: not picture.results, "the results of the run before are gone")
        self.may_reply.release()
        return self.window.wait_for(lambda picture: picture.text, "the outcome is shown")

    def finish_good_run(self):
        self.finish_run()
        return self.window.wait_for(lambda picture: picture.link, "the link is shown")

    def run_once(self):
        self.window.press("alt+s")
        return self.finish_good_run()

    def close_window(self):
        """Closes the window; what is left of the program."""
        self.window.close()
        return self.finish(self.process)


_has_own_sockets = False


def use_own_sockets():
    """Keeps the sockets of this file's X servers from meeting those of others, which chose the same numbers."""
    global _has_own_sockets
    if not _has_own_sockets:
        folder = pathlib.Path("/tmp/.X11-unix")
        folder.mkdir(mode=0o1777, exist_ok=True)
        isolation.mount("-t", "tmpfs", "none", folder)
        _has_own_sockets = True
