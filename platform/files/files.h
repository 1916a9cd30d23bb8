// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

// Files and folders of the machine that the program reads and writes. Paths are bytes, whatever
// they mean as text.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "text/utf8.h"

namespace platform {

/// Whether anything, file or folder, exists at `path`. Where the system cannot tell, nothing does,
/// and a line on standard error says so.
bool pathExists(const std::string& path);

/// One entry of a folder.
struct FolderEntry {
  std::string name;
  /// When the entry was created, in nanoseconds since 1970; where the file system keeps no creation
  /// time, when its status last changed. Of a symbolic link, the link's own.
  std::int64_t createdNs;
};

/// The entries of `folder`, in no order, with hidden ones and subfolders, without "." and "..".
/// Entries that vanish while they are read are left out; a folder that cannot be read has none.
std::vector<FolderEntry> listFolder(const std::string& folder);

/// Replaces the file at `path` by one that holds `bytes`, at once and whole, and returns whether it
/// worked; on failure nothing has changed. A link to a file stays a link, and anything but a
/// regular file is never replaced.
bool writeAtomically(const std::string& path, const text::Buffers& bytes);

/// `path` with a leading "~" or "~user" replaced by that user's home folder; any other path
/// unchanged.
std::string expandTilde(const std::string& path);

/// The folder that this desktop shows as the user's Desktop, by default "Desktop" in the home
/// folder; created if it is missing. Empty where none of these can be written to.
std::string desktopFolder();

/// A new private folder among the temporary files. Where none can be made, one that is not there.
std::string temporaryFolder();

}  // namespace platform
