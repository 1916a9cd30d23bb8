# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The window on Wayland, which GNOME and KDE use by default."""

import os
import pathlib
import shutil

import isolation
import polling
import report_text
import skipping
from project import ROOT

skipping.require_tools("Xvfb", "xdotool", "sway", "swaymsg", "wl-paste")
skipping.require_modules("PIL", "Xlib")
import wayland
import windows

URL = windows.RESULT.decode()
PLUGINS = list(pathlib.Path("/usr/lib").glob("*/qt6/plugins/platforms/libqwayland-generic.so"))
if not PLUGINS:
    skipping.skip_file("not installed: Qt's plugin for Wayland")
if not wayland.can_run():
    skipping.skip_file("this machine permits no user namespaces")


class WaylandTest(windows.WindowedTest):
    """A test with a compositor of its own, on which it runs the program."""

    def start_screen(self):
        return wayland.Compositor(self.folder)

    def screen_variables(self):
        # Qt's plugin for Wayland does not free all of its memory at the end.
        sanitizer = ":".join([os.environ.get("ASAN_OPTIONS", ""), "detect_leaks=0"])
        return {"WAYLAND_DISPLAY": self.screen.display, "XDG_SESSION_TYPE": "wayland", "QT_QPA_PLATFORM": None,
                "ASAN_OPTIONS": sanitizer}


class RunTest(WaylandTest):
    def test_the_desktop_finds_the_application_of_the_window(self):
        self.open_window()
        window, = self.screen.windows()
        self.assertRegex(window["name"], f"^{windows.TITLE}$")
        self.assertEqual([f"{window['app_id']}.desktop"], [path.name for path in (ROOT / "share").rglob("*.desktop")])

    def test_the_keyboard_alone_does_everything(self):
        server = self.serve()
        self.open_window(commands=["echo here"], submit=server.url())
        self.window.type("acme-office")
        self.window.press("Tab")
        self.window.type("48151")
        self.window.press("Tab")
        self.window.type("example.com")
        self.window.press("Tab", "space")
        self.finish_good_run()
        head = b"Halvik account: acme-office\nHalvik ticket: 48151\n"
        report = server.requests[0].submitted
        self.assertEqual(report[:len(head)], head)
        self.assertEqual(report_text.blocks(report[len(head):])[0][1], b"stdout:\nhere\n\n")
        self.window.press("alt+c")
        polling.wait_until(lambda: self.screen.paste() == windows.RESULT, "the link is in the clipboard", self.process)
        self.window.press("alt+o")
        self.assertEqual(self.desktop.wait_for(1), [URL])
        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout, ended.messages), (0, b"", []))

    def test_text_is_pasted_into_a_field(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.window.type("from here")
        self.window.press("ctrl+a", "ctrl+c", "Tab", "ctrl+v")
        self.run_once()
        head = b"Halvik account: from here\nHalvik ticket: from here\n"
        self.assertEqual(server.requests[0].submitted[:len(head)], head)

    def test_a_run_that_fails(self):
        self.open_window(commands=["echo here"])
        self.window.press("Return")
        self.assertIsNone(self.finish_run().link)
        self.assertEqual(self.desktop.wait_for(1), [str(self.desktop_file)])
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report([("echo here", "here\n")]))


class EndTest(WaylandTest):
    def test_closing_in_the_middle_of_a_run_ends_its_commands(self):
        server = self.serve()
        self.start_commands(server)
        ended = self.close_window()
        self.assertEqual((ended.status, ended.stdout, ended.messages), (0, b"", []))
        self.assert_run_was_ended(server)

    def test_a_compositor_that_ends_in_the_middle_of_a_run(self):
        server = self.serve()
        self.start_commands(server)
        self.screen.kill()
        self.assert_ended_without_display()
        self.assert_run_was_ended(server)

    def test_a_compositor_that_ends_while_the_report_is_uploaded(self):
        server = self.serve()
        self.start_upload(server)
        self.screen.kill()
        self.assert_ended_without_display(f"saving the report to {self.desktop_file}")
        self.assert_same_text(self.desktop_file.read_bytes(), report_text.report([("echo here", "here\n")]))

    def assert_ended_without_display(self, *others):
        ended = self.finish(self.process)
        self.assertEqual((ended.status, ended.stdout), (1, b""))
        self.assertEqual(ended.messages,
                         ["the program ends after an error: the connection to the display is lost", *others])


class MissingPluginTest(WaylandTest):
    def setUp(self):
        super().setUp()
        platforms = PLUGINS[0].parent
        others = self.folder / "platforms"
        shutil.copytree(platforms, others, ignore=shutil.ignore_patterns("libqwayland-*"))
        isolation.cover(platforms, others)
        self.addCleanup(isolation.uncover, platforms)

    def test_a_line_names_its_package(self):
        for env in ({}, {"QT_QPA_PLATFORM": "wayland"}, {"XDG_SESSION_TYPE": None}, {"DISPLAY": ":nonexistent"}):
            with self.subTest(env=env):
                ended = self.run_test_build([], ["touch started"], env=env)
                self.assertEqual((ended.status, ended.stdout), (1, b""))
                self.assertEqual(ended.messages, ["cannot open the window: Qt's plugin for Wayland is missing; install the "
                                                  "package qt6-wayland, or use the option -s, which runs without one"])
                self.assert_only_files(self.work, [])

    def test_a_display_for_x11_beside_it_gets_the_window(self):
        screen = self.screen.screen
        process = self.start_test_build([], env={"DISPLAY": screen.name})
        screen.wait_for_window(windows.TITLE, process).close()
        self.assertEqual(self.finish(process).messages, [])


isolation.run_tests(needs_namespaces=True)
