# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Which files hold the rules, and which tests of the whole program see what they do."""

FILES = [
    "app/entry.cpp",
    "app/main_controller.cpp",
    "app/options.cpp",
    "diagnostics/*.cpp",
    "reader/rules/*.cpp",
    "report/*.cpp",
    "ui/links.cpp",
    "ui/main_controller_window.cpp",
]

# Suites of unit tests that see the rules stand here; those of the platform see none of them.
TEST_FOLDERS = ["app", "diagnostics", "reader/facts", "reader/output", "reader/parse", "reader/rules", "report", "ui"]

PROGRAM_TARGETS = ["diagnostic_test_build", "halvik-diagnostic", "halvik-upload", "halvik-diagnostic-window"]

# Files of tests/program, the quickest first. No unit test sees what they alone see.
PROGRAM_TESTS = {
    "app/entry.cpp": ["helper_executables", "output_file", "standard_output", "command_line"],
    "app/main_controller.cpp": ["output_file", "trimming", "command_line", "delivery", "signals"],
    "app/options.cpp": ["output_file", "command_line"],
    "diagnostics/process.cpp": ["output_file", "children", "hostile_commands"],
    "diagnostics/main_controller_tracking.cpp": ["output_file", "standard_output", "delivery", "upload"],
    "diagnostics/plan.cpp": ["real_plan", "beacon_log"],
    "diagnostics/main_controller_plan.cpp": ["output_file", "command_line", "beacon_log", "real_plan"],
    "report/main_controller_delivery.cpp": ["trimming", "output_file", "desktop_fallback", "delivery",
                                            "standard_output", "upload",
                                            "hostile_server", "hostile_reply"],
    "report/http.cpp": ["upload"],
    "report/multipart.cpp": ["upload"],
    "report/report.cpp": ["output_file"],
    "report/trim.cpp": ["trimming"],
}


def unit_targets(file):
    """The executables with the unit tests that see a file."""
    return ["reader_tests"] if file.startswith("reader/") else ["unit_tests", "window_tests"]


def targets(files):
    """All executables that the tests of these files need."""
    units = {target for file in files for target in unit_targets(file)}
    return [*sorted(units), *(PROGRAM_TARGETS if PROGRAM_TESTS.keys() & set(files) else [])]
