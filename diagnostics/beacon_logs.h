// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// The Skivra's beacon logs: where they are, in which order they are read, and by which command.

#pragma once

#include <string>
#include <vector>

#include "platform/files/files.h"

namespace diagnostics {

/// The three log folders, in the order of the report, each with a trailing "/".
std::vector<std::string> beaconLogFolders();

/// The full paths of `entries` of `folder` (which ends in "/"), the oldest entry first. Entries
/// that were created at the same moment are ordered by name.
std::vector<std::string> orderByCreation(const std::string& folder,
                                         std::vector<platform::FolderEntry> entries);

/// The shell command line that prints the file at `path`. The path stands between double quotes and
/// is not escaped.
std::string readerCommandLine(const std::string& path);

}  // namespace diagnostics
