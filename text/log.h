// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The program's lines for people.

#pragma once

#include <string_view>

namespace text {

/// Names the process in its lines by the last part of `path`, as it was started. To be called
/// before the first line.
void setProcessName(std::string_view path);

/// Writes `message` to standard error behind date, time with milliseconds, the process's name and
/// its number, and ends it with a line feed unless it has one. One write for the whole, so that
/// lines of several programs do not mix. What standard error does not take is lost.
void log(std::string_view message);

}  // namespace text
