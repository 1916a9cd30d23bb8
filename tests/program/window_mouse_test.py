# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The window used by a mouse, whose user finds the buttons as a screen reader does."""

import accessibility  # first, as it skips the file where something is missing
import http_server
import isolation
import polling
import report_text
import windows

URL = windows.RESULT.decode()
START, COPY, OPEN = (("Start tests", "push button"), ("Copy link", "push button"), ("Open link", "push button"))
RESULTS = ("Results", "text view")


class RunTest(accessibility.AccessibleTest):
    def test_return_in_each_field_and_the_start_button_start(self):
        server = self.serve()
        self.open_window(submit=server.url())
        start = self.wait_for_control(*START)
        self.click(start)
        self.finish_good_run()
        for number, field in enumerate(["account", "ticket", "domain"], 2):
            self.window.press("alt+" + field[0], "Return")
            self.finish_good_run()
            self.assertEqual(len(server.requests), number)
        self.click(start)
        self.finish_good_run()
        self.assertEqual(len(server.requests), 5)

    def test_while_a_run_goes_on_nothing_starts_another(self):
        server = self.serve()
        gate = windows.Gate(self)
        started = self.folder / "started"
        line = f"echo >>{started}; {gate.line}"
        self.open_window(commands=[line] * (2 * report_text.PLAN_LENGTH), submit=server.url())
        start = self.wait_for_control(*START)
        self.window.press("Return")
        polling.wait_until(lambda: started.exists() and started.stat().st_size == report_text.PLAN_LENGTH,
                           "all commands have started", self.process)
        self.window.press("Return", "alt+s", "alt+a", "Return", "Tab", "Return", "space")
        self.click(start)
        gate.open()
        self.finish_good_run()
        self.window.press("alt+o")
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.assertTrue(self.window.picture().results)
        self.assertEqual(len(server.requests), 1)
        self.assertEqual(started.stat().st_size, report_text.PLAN_LENGTH)

    def test_escape_changes_nothing(self):
        server = self.serve()
        gate = windows.Gate(self)
        self.open_window(commands=[gate.line], submit=server.url())
        self.window.press("Escape")
        self.window.fill(account="acme")
        self.window.press("Escape", "Return")
        self.wait_for_control("Progress", "progress bar")
        self.window.press("Escape")
        gate.open()
        self.finish_good_run()
        self.window.press("Escape", "alt+o")
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.assertTrue(server.requests[0].submitted.startswith(b"Halvik account: acme\n---"))
        self.assertIsNone(self.process.poll())


class LinkTest(accessibility.AccessibleTest):
    def click_link(self, address):
        self.window.click(*self.wait_for_control(*RESULTS).beginning_of(address))

    def test_the_copy_button(self):
        for reply in (windows.RESULT, windows.RESULT + b"\n", "https://r.example/\u00e4?b=1&c=%20#d".encode()):
            with self.subTest(reply):
                server = self.serve(http_server.reply(reply))
                self.open_window(submit=server.url())
                self.screen.copy(b"of another program")
                self.run_once()
                self.click(self.wait_for_control(*COPY))
                self.screen.wait_for_clipboard(reply)
                polling.wait_until_idle(self.process.pid)
                self.assertEqual(self.screen.clipboard(), reply)
                self.assertEqual(self.desktop.opened, [])
                self.assertEqual(self.close_window().status, 0)

    def test_the_open_button_and_links_go_to_the_desktop(self):
        server = self.serve(http_server.reply(windows.RESULT + b"\n"))
        self.open_window(submit=server.url())
        self.run_once()
        self.click(self.wait_for_control(*OPEN))
        self.assertEqual(self.desktop.wait_for(1), [URL])
        self.click_link(URL)
        self.assertEqual(self.desktop.wait_for(2), [URL] * 2)
        self.window.press("alt+d", "Tab", "Tab", "Tab", "Return")
        self.assertEqual(self.desktop.wait_for(3), [URL] * 3)
        self.window.press("alt+o")
        self.assertEqual(self.desktop.wait_for(4), [URL] * 4)

    def test_results_can_be_selected_and_copied(self):
        server = self.serve()
        self.open_window(submit=server.url())
        self.screen.copy(b"of another program")
        self.run_once()
        self.click(self.wait_for_control(*RESULTS))
        self.window.press("ctrl+a", "ctrl+c")
        self.screen.wait_for_clipboard(b"See results at " + windows.RESULT)

    def test_addresses_are_handed_on_as_they_are(self):
        for address, opened in (
            ("https://r.example/a?b=1&c=%20d;e='f'#g", None),
            ("https://r.example/" + "x" * 2000, None),
            ("https://r.example/x%20", None),
            ("https://r.example/?q=a%20", None),
            ("https://r.example/%C2%A0", None),
            ("https://r.example/a|b", "https://r.example/a%7Cb"),
        ):
            with self.subTest(address):
                server = self.serve(http_server.reply(address.encode()))
                self.open_window(submit=server.url())
                before = len(self.desktop.opened)
                self.run_once()
                self.window.press("alt+o")
                self.click_link(address)
                self.assertEqual(self.desktop.wait_for(before + 2)[before:], [opened or address] * 2)
                self.assertEqual(self.close_window().status, 0)


setUpModule = accessibility.start_bus
isolation.run_tests(needs_namespaces=True)
