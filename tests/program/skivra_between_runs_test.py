# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The Skivra is installed, and removed, while the window is open: each run looks for it anew."""

import endpoints
import isolation
import plan
import report_text
import roots
import skipping

skipping.require_tools("Xvfb", "xdotool")
skipping.require_modules("PIL", "Xlib")
import windows


class SkivraBetweenRunsTest(windows.WindowedTest):
    def test_each_run_looks_for_it(self):
        library = roots.Library(self)
        server = self.serve()
        self.open_window(submit=server.url(), prefix=library.prefix)
        domain = ""  # the window's field is empty
        expected = [len(plan.display_names(endpoints.roles(), domain, skivra)) for skivra in (False, True, False)]
        counts = []
        for change in (lambda: None, lambda: library.skivra.mkdir(parents=True), library.skivra.rmdir):
            change()
            self.run_once()
            counts.append(len(report_text.blocks(server.requests[-1].submitted)))
        self.assertEqual(counts, expected)


isolation.run_tests(needs_namespaces=True)
