// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Where this system keeps the tools that the plan names by fixed paths.

#pragma once

#include <string>
#include <vector>

namespace platform {

/// A program file and its arguments, without the program's own name.
struct Command {
  std::string path;
  std::vector<std::string> args;
};

/// The command to run in place of the given one on this system: the same where `path` exists or is
/// not known to live elsewhere, otherwise with the path under which this system keeps the tool. The
/// first word of a command line that a shell gets with "-c" is looked up in the same way.
Command locateCommand(const std::string& path, const std::vector<std::string>& args);

}  // namespace platform
