// SPDX-FileCopyrightText: 2026 Halvik
// SPDX-License-Identifier: Apache-2.0

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

#include "platform/files/files.h"
#include "platform/process/termination_signals.h"
#include "text/standard_streams.h"

// Not Qt's class for the same purpose: a run without a window has no Qt, and a file name is any run
// of bytes here.

namespace platform {

namespace {

namespace fs = std::filesystem;

struct Target {
  fs::path path;
  mode_t mode;
};

// Where the bytes go: behind a link, the file that it names. None if something else is there.
std::optional<Target> findTarget(const std::string& path) {
  std::error_code failed;
  const fs::file_status there = fs::status(path, failed);
  if (there.type() == fs::file_type::regular) {
    return Target{.path = fs::canonical(path, failed),
                  .mode = static_cast<mode_t>(there.permissions() & fs::perms::all)};
  }
  // A link that leads nowhere is not ours to replace, nor is what the system cannot tell about.
  if (fs::symlink_status(path, failed).type() != fs::file_type::not_found) {
    return std::nullopt;
  }
  // Widened below, as macOS has a mode_t that is narrower than an int.
  const mode_t mask = umask(0);
  umask(mask);
  return Target{.path = path, .mode = static_cast<mode_t>(0666U & ~unsigned{mask})};
}

bool fill(int fd, mode_t mode, const text::Buffers& bytes) {
  // Refused on some file systems that keep no modes.
  fchmod(fd, mode);
  const bool written = text::writeAll(fd, bytes) == 0 && fsync(fd) == 0;
  return close(fd) == 0 && written;
}

}  // namespace

bool writeAtomically(const std::string& path, const text::Buffers& bytes) {
  const std::optional<Target> target = findTarget(path);
  if (!target) {
    return false;
  }
  std::string temporary = (target->path.parent_path() / ".halvik-diagnostic-XXXXXX").string();
  // Before the file is there, so that there is no moment in which it would stay.
  const FileCleanup untilItIsRenamed(temporary.c_str());
  const int fd = mkstemp(temporary.data());
  if (fd < 0) {
    return false;
  }
  const bool replaced =
      fill(fd, target->mode, bytes) && rename(temporary.c_str(), target->path.c_str()) == 0;
  if (!replaced) {
    unlink(temporary.c_str());
  }
  return replaced;
}

}  // namespace platform
