# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Starts a run in the window of the installed program, by the keyboard, and waits for the link to its results."""

import subprocess

import Xlib.X

import virtual_screen
import windows
from clean_room_lib.summary import Failure
from clean_room_lib.tree import USER


def use(tree, receiver):
    virtual_screen.use_own_sockets()
    with open(tree.logs / "window.log", "wb") as log:
        screen = virtual_screen.Screen(options=["-ac"])
        variables = {"DISPLAY": screen.name, "DBUS_SESSION_BUS_ADDRESS": "disabled:"}
        process = subprocess.Popen(tree.command(["halvik-diagnostic"], USER, variables), stdin=subprocess.DEVNULL,
                                   stdout=log, stderr=log)
        try:
            start_tests(tree, screen, process, receiver)
        except AssertionError as error:
            raise Failure(str(error)) from error
        finally:
            process.kill()
            process.wait()
            screen.close()


def start_tests(tree, screen, process, receiver):
    received = len(receiver.files)
    window = screen.wait_for_window(windows.TITLE, process)
    window.fill(account="acme-office", ticket="48151")
    window.press("alt+s")
    window.wait_for(lambda picture: picture.link, "the link is shown").image.save(tree.logs / "window.png")
    icon = screen.display.intern_atom("_NET_WM_ICON")
    if window.window.get_full_property(icon, Xlib.X.AnyPropertyType) is None:
        raise Failure("the window has no icon")
    if len(receiver.files) != received + 1:
        raise Failure("no report was received")
    if not receiver.files[-1][2].startswith(b"Halvik account: acme-office\nHalvik ticket: 48151\n"):
        raise Failure("the report lacks account and ticket")
    window.close()
    if process.wait(60) != 0:
        raise Failure(f"status {process.returncode} after the window was closed")
