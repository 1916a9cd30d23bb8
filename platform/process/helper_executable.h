// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The executables, modules and scripts that are installed with this program, for itself alone.

#pragma once

#include <string>

namespace platform {

/// The path of the helper called `name`. Throws std::system_error if the system does not say where
/// the program is.
std::string helperPath(const std::string& name);

/// Executes the helper called `name` in place of this program, before there is an EventLoop, with
/// the arguments `argv`. Returns only if that fails, with the error number.
int executeHelper(const std::string& name, char* const* argv);

/// Why the window's libraries cannot be loaded, and which package to install, which the system's
/// loader would not say; empty if they can be.
std::string windowLibraryProblem();

}  // namespace platform
