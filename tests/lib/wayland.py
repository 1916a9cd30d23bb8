# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A Wayland compositor of a test's own, on an X server that takes its user's keys and shows its picture."""

import json
import os
import re
import subprocess

import PIL.ImageGrab
import Xlib.X

import polling
import virtual_screen
from pictures import Picture

SIZE = (1024, 768)  # the compositor's own on an X server
# The compositor refuses to run as a user who could become root.
AS_ANYBODY = ["unshare", "--user", "--map-user=1", "--map-group=1", "--"]
# One window fills the screen.
KIOSK = ["default_border none"]
# A window has its own size and draws its own frame, as on GNOME.
FRAMED = ['for_window [app_id=".*"] floating enable, border csd']


def can_run():
    return subprocess.run([*AS_ANYBODY, "true"], stderr=subprocess.DEVNULL).returncode == 0


class Compositor:
    """Sway, whose sockets are in its own folder: its display's number meets no other."""

    def __init__(self, folder, settings=()):
        self.folder = folder / "wayland"
        self.folder.mkdir(mode=0o700)
        self.screen = virtual_screen.Screen(size=SIZE, options=["-nolock"])
        self.control_socket = self.folder / "control"
        (self.folder / "settings").write_text("\n".join(["xwayland disable", *(settings or KIOSK), ""]))
        variables = {"PATH": os.environ["PATH"], "HOME": str(self.folder), "DISPLAY": self.screen.name,
                     "XDG_RUNTIME_DIR": str(self.folder), "SWAYSOCK": str(self.control_socket), "WLR_BACKENDS": "x11",
                     "WLR_RENDERER": "pixman"}
        self.process = subprocess.Popen([*AS_ANYBODY, "sway", "--config", self.folder / "settings"], env=variables,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        polling.wait_until(self._is_ready, "the compositor is ready", self.process)
        self.display = self.folder / next(name for name in os.listdir(self.folder) if re.fullmatch(r"wayland-\d+", name))

    def close(self):
        self.kill()
        self.screen.close()

    def kill(self):
        self.process.kill()
        self.process.wait()

    def ask(self, *words):
        """The compositor's answer to a message."""
        answer = subprocess.run(["swaymsg", "--socket", self.control_socket, "--raw", *words], check=True,
                                capture_output=True, timeout=polling.GUARD_SECONDS).stdout
        return json.loads(answer)

    def windows(self):
        """What the compositor knows of each window."""
        def below(node):
            children = node["nodes"] + node["floating_nodes"]
            return [node] if "app_id" in node else [window for child in children for window in below(child)]

        return below(self.ask("--type", "get_tree"))

    def wait_for_window(self, title, process):
        """Waits until the window has the keyboard, which only this program can bring about."""
        self.screen.process = process

        def is_there():
            return any(window["focused"] and re.fullmatch(title, window["name"]) for window in self.windows())

        polling.wait_until(is_there, f"{title} has the keyboard", process)
        return Window(self, self._output())

    def paste(self):
        """What the clipboard holds, or None."""
        pasted = subprocess.run(["wl-paste", "--no-newline"], env={**os.environ, "WAYLAND_DISPLAY": str(self.display)},
                                capture_output=True, timeout=polling.GUARD_SECONDS)
        return None if pasted.returncode else pasted.stdout

    def _is_ready(self):
        return self.control_socket.exists() and self._output() is not None and self.ask("--type", "get_outputs")

    def _output(self):
        """The compositor's window on the X server."""
        shown = [window for window in self.screen.display.screen().root.query_tree().children
                 if window.get_attributes().map_state == Xlib.X.IsViewable]
        return shown[0] if shown else None


class Window(virtual_screen.Window):
    """The window that has the keyboard."""

    def __init__(self, compositor, output):
        self.compositor = compositor
        super().__init__(compositor.screen, output)

    def picture(self):
        place = next(window["rect"] for window in self.compositor.windows() if window["focused"])
        box = place["x"], place["y"], place["x"] + place["width"], place["y"] + place["height"]
        return Picture(PIL.ImageGrab.grab(box, xdisplay=self.screen.name))

    def close(self):
        """Closes it as the compositor's user does."""
        self.compositor.ask("kill")
