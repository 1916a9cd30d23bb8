// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// One line on the terminal that is rewritten in place while a run without a window goes on.

#pragma once

#include <string_view>

namespace text {

/// Whether standard error is a terminal that can do it.
bool canShowProgressLine();

/// Shows `line` in place of the one before, cut to the width of the terminal. What is not printable
/// ASCII is replaced, so that it holds nothing that a terminal obeys.
void showProgressLine(std::string_view line);

/// Removes the line if one is shown, so that something else can be printed. It is
/// async-signal-safe.
void eraseProgressLine();

}  // namespace text
