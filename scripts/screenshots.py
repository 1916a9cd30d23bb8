# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Takes pictures of the window, one of each phase, on a screen of its own.

usage: scripts/screenshots                   into docs/images
       scripts/screenshots --looks FOLDER    into subfolders of FOLDER: enlarged, in a dark theme, with a long link,
                                             on Wayland

Build the preset release first. Needs the packages that `scripts/install_packages test` installs; the dark theme needs
qt6ct as well. The commands are fakes and the submission endpoint is on the loopback interface: no packet leaves the
machine.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import time

import http_server
import pictures
import polling
import virtual_screen
import wayland
import windows
from project import ROOT

PROGRAM = ROOT / "build/release/diagnostic_test_build"
LONG_RESULT = (windows.RESULT + b"?token=" + b"4f2a91c07b" * 30)[:300]

DARK_COLOURS = pathlib.Path("/usr/share/qt6ct/colors/darker.conf")
DARK = {"QT_QPA_PLATFORMTHEME": "qt6ct"}
WAYLAND = {"QT_QPA_PLATFORM": "wayland"}
LOOKS = {
    "scale-125": ({"QT_SCALE_FACTOR": "1.25"}, windows.RESULT),
    "scale-200": ({"QT_SCALE_FACTOR": "2"}, windows.RESULT),
    "dark": (DARK, windows.RESULT),
    "long-link": ({}, LONG_RESULT),
    "scale-125-dark-long-link": ({"QT_SCALE_FACTOR": "1.25", **DARK}, LONG_RESULT),
    "scale-200-dark-long-link": ({"QT_SCALE_FACTOR": "2", **DARK}, LONG_RESULT),
    "wayland": (WAYLAND, windows.RESULT),
}


def take_picture(window, path):
    """Takes it as soon as nothing moves any more."""
    before = None
    while (image := window.picture().image) != before:
        before = image
        time.sleep(0.3)
    image.save(path, optimize=True)


def write_dark_theme(home):
    settings = home / ".config/qt6ct"
    settings.mkdir(parents=True)
    (settings / "qt6ct.conf").write_text(
        f"[Appearance]\ncustom_palette=true\ncolor_scheme_path={DARK_COLOURS}\nstyle=Fusion\n")


def open_screen(home, settings):
    """A screen, and the variables by which a program finds it."""
    if settings.items() >= WAYLAND.items():
        compositor = wayland.Compositor(home, wayland.FRAMED)
        return compositor, {"WAYLAND_DISPLAY": str(compositor.display)}
    screen = virtual_screen.Screen(size=(1600, 1200))
    return screen, {"DISPLAY": screen.name, "QT_QPA_PLATFORM": "xcb"}


def take(folder, settings, result):
    """Takes four: before, in the middle and at the end of a good run, and at the end of one that failed."""
    if settings.items() >= DARK.items() and not DARK_COLOURS.exists():
        sys.exit("no dark theme: qt6ct is not installed")
    folder.mkdir(parents=True, exist_ok=True)
    server = http_server.Server(http_server.reply(result), http_server.reply(b"no", status=500))
    with tempfile.TemporaryDirectory() as name:
        home = pathlib.Path(name)
        home.chmod(0o700)
        write_dark_theme(home)
        gate = home / "gate"
        commands = home / "commands"
        waiting = f"while [ ! -e {gate} ]; do sleep 0.05; done"
        commands.write_text(":\n" * 31 + f"{waiting}\n" * 26)
        screen, place = open_screen(home, settings)
        environment = {**os.environ, **place, "HOME": name, "XDG_RUNTIME_DIR": name,
                       "XDG_CONFIG_HOME": str(home / ".config"), "TEST_BUILD_SUBMIT_URL": server.url(),
                       "TEST_BUILD_COMMANDS": str(commands), **settings}
        process = subprocess.Popen([PROGRAM], env=environment, stderr=subprocess.DEVNULL)
        window = screen.wait_for_window(windows.TITLE, process)
        take_picture(window, folder / "idle.png")
        window.fill(account="acme-office", ticket="48151", domain="example.com")
        window.press("Return")
        # The shade over the progress bar never stands still, but everything else does by then.
        time.sleep(3)
        window.picture().image.save(folder / "running.png", optimize=True)
        gate.touch()
        window.wait_for(lambda picture: picture.box(pictures.ORANGE), "the link is shown")
        take_picture(window, folder / "finished.png")
        window.press("alt+s")
        polling.wait_until(lambda: len(server.requests) == 2, "the second report has been received")
        window.wait_for(lambda picture: not picture.box(pictures.ORANGE), "the former link is gone")
        polling.wait_until((home / "Desktop/diagnostic_results.txt").exists, "the second report has been saved")
        take_picture(window, folder / "failed.png")
        process.terminate()
        process.wait()
        screen.close()
    server.close()


def main():
    if len(sys.argv) == 1:
        take(ROOT / "docs/images", {}, windows.RESULT)
    elif len(sys.argv) == 3 and sys.argv[1] == "--looks":
        for name, (settings, result) in LOOKS.items():
            take(pathlib.Path(sys.argv[2]) / name, settings, result)
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
