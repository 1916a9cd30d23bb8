// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Log lines on standard error, and a progress line on a terminal.

#pragma once

#include <string_view>

namespace text {

/// Names the process in its lines by the last part of `path`, as it was started. To be called
/// before the first line.
void setProcessName(std::string_view path);

/// Writes `message` as a line to standard error, behind date, time with milliseconds, process name
/// and number. It is one write, so that lines do not mix; what cannot be written is lost.
void log(std::string_view message);

// One line on the terminal that is rewritten in place while a run without a window goes on.

/// Whether standard error is a terminal that can do it.
bool canShowProgressLine();

/// Shows `line` in place of the one before, cut to the width of the terminal. What is not printable
/// ASCII is replaced, so that it holds nothing that a terminal obeys.
void showProgressLine(std::string_view line);

/// Removes the line if one is shown, to print something else; async-signal-safe.
void eraseProgressLine();

}  // namespace text
